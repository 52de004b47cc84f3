// Graphs: the common graph logic with its algorithms and stored form, the graph that keeps its
// nodes in a list and the one that keeps them by caption.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "CommonInterfaces/CommonInterfaces.h"
#include "GGraph/Nodes.h"
#include "KZGenerics.Collections/HashTable.h"
#include "Runtime/Components.h"
#include "Runtime/StringLists.h"

namespace kz {

class TFiler;

using TNodeNotifyEvent = std::function<void(TObject* Sender, TGGraphNode* Node)>;
using TNodeCaptionEvent = std::function<void(TObject* Sender, TGGraphNode* Node, const String& NewCaption)>;

namespace detail {
struct TShortestRun;
struct TDepthFirstWalk;
}  // namespace detail

/// The graph logic shared by the concrete graphs: wiring of nodes, events, direction,
/// assignment, the stored form ("NodeNEdges") and the algorithms. Algorithms keep their
/// state in the nodes (Visited, WorkTag, Weight, ShortestPath): each run overwrites the last.
///
/// Events: Change sets the need for an acyclic check and, outside updates, calls OnChange;
/// NodeChange likewise with OnNodeChange. A graph being destroyed calls no handler.
/// FUpdateNodesCount is raised by every BeginUpdateNodes (a direction change, a schedule)
/// and never lowered: each node added later starts with that many open updates, so its own
/// changes stay silent.
class TGCustomGraph : public TComponent {
  KZ_CLASS(TGCustomGraph, TComponent)
 public:
  explicit TGCustomGraph(TComponent* AOwner);
  ~TGCustomGraph() override;

  [[nodiscard]] virtual std::int32_t GetNodeCount() const = 0;
  /// A node of NodeClass, built whole, named "<class name><NewNodeId>", then added.
  virtual TGGraphNode* NewNode();
  /// Switches direction: mirrors are dropped (directed) or made (undirected) inside
  /// BeginUpdateNodes/EndUpdateNodes.
  virtual void SetDirected(bool Value);
  /// Called by TopologicalOrder for every edge it crosses: decrements Successor's WorkTag.
  virtual void ModifySuccessor(TGGraphNode* Node, TGGraphNode* Successor, TGGraphEdge* Edge);
  /// Frees every node (FastClear first), resets NewNodeId to 0.
  virtual void Clear() = 0;
  /// Takes Node in (re-entry from the node's SetGraph is ignored); here: opens
  /// FUpdateNodesCount updates on it and calls OnAddNode.
  virtual void AddNode(TGGraphNode* Node);
  /// NewNode, then SetCaption(Caption).
  virtual TGGraphNode* CreateNode(const String& Caption);
  virtual void BeginUpdate();
  /// Raises FUpdateNodesCount (for good) and opens an update on every node.
  virtual void BeginUpdateNodes();
  /// The lightest node other than ANode whose mark is Visited (first in GetNodes order on
  /// ties); ANode when none. ANode and every node looked at must be weighted (EInvalidCast).
  /// Inside ShortestPath it answers from the search's heap: the same node, in O(log n).
  [[nodiscard]] virtual TGGraphNode* ClosestNode(TGGraphNode* ANode, bool Visited);
  /// Marks every node reachable from ANode, in recursive pre-order along list order (each
  /// edge leads to its ToNode, or to its FromNode where ToNode is the node itself). The walk
  /// keeps its own stack, so a path of any length is safe; every node reached goes through
  /// this virtual method, and an override's work after its inherited call runs before the
  /// node's successors are walked.
  virtual void DepthFirstSearch(TGGraphNode* ANode);
  virtual void EndUpdate();
  /// Closes the update of every node; FUpdateNodesCount stays.
  virtual void EndUpdateNodes();
  [[nodiscard]] virtual TGGraphNode* FindNode(StringView Caption) const = 0;
  /// A live iterator over the nodes, in the graph's order.
  [[nodiscard]] virtual TIntfPtr<IObjectIterator> GetNodes() const = 0;
  /// Marks every node Value; weighted nodes get MaxGraphWeight and, while paths are
  /// enumerated, a path list of just StartNode.
  virtual void InitializeNodes(TGGraphNode* StartNode, bool Value);
  /// Node.RemovePredecessors().
  virtual void RemovePredecessors(TGGraphNode* Node);
  /// Calls OnRemoveNode and answers false; subclasses remove and free the node.
  virtual bool RemoveNode(TGGraphNode* Node);
  /// Takes Node out of the graph unfreed (the caller owns it), detached; null when absent.
  virtual TGGraphNode* Extract(TGGraphNode* Node) = 0;
  /// Single-source distances into the weighted nodes' Weight (MaxGraphWeight when
  /// unreachable; sums wrap in 32 bits), the selection by ClosestNode. O((n + e) log n)
  /// when the graph's own ClosestNode selects; an overriding ClosestNode is called n - 1
  /// times. Inside BeginUpdate/EndUpdate.
  virtual void ShortestPath(TGGraphNode* StartNode);
  /// Topological order by a stack (last ready first) into OrderedNodes as (caption, node)
  /// lines; sets Acyclic when every node was ordered. Undirected graphs give an empty list.
  virtual void TopologicalOrder(TStrings& OrderedNodes);
  /// The same into a new list.
  [[nodiscard]] std::unique_ptr<TStringList> TopologicalOrder();

  virtual void Change();
  virtual void NodeChange(TGGraphNode* Node);
  virtual void TextChange(TGGraphNode* Node, const String& NewCaption);

  /// Acyclic, sorting again first when the graph changed since the last sort.
  [[nodiscard]] bool IsAcyclic();
  /// ShortestPath that also fills every weighted node's ShortestPath list.
  void EnumerateShortestPaths(TGGraphNode* StartNode);
  /// InitializeNodes(StartNode, false), then DepthFirstSearch(StartNode).
  void TraverseFrom(TGGraphNode* StartNode);
  /// The next default node number.
  std::int32_t NewNodeId() { return FNodeID++; }
  TGGraphNode* Extract(StringView Caption);
  bool RemoveNode(StringView Caption);
  /// From another graph: clears this one and copies direction, nodes (same classes) and
  /// edges (ends found by caption). Itself raises EGraphException.
  void Assign(TPersistent* Source) override;
  /// Declares "NodeNEdges".
  void DefineProperties(TFiler* Filer) override;
  void Loaded() override;

  [[nodiscard]] bool GetAcyclic() const { return FAcyclic; }
  [[nodiscard]] bool GetDirected() const { return FDirected; }
  [[nodiscard]] bool GetNeedAcyclicCheck() const { return FNeedAcyclicCheck; }
  [[nodiscard]] std::int32_t GetUpdateCount() const { return FUpdateCount.Count(); }
  [[nodiscard]] std::int32_t GetUpdateNodesCount() const { return FUpdateNodesCount; }
  [[nodiscard]] TGGraphNodeClass GetNodeClass() const { return FNodeClass; }
  /// Null raises EAccessViolation.
  void SetNodeClass(TGGraphNodeClass Value);
  /// A new node of AClass in this graph, named "<class name><NewNodeId>" (the stored form and
  /// Assign use it).
  TGGraphNode* NewNodeOf(TGGraphNodeClass AClass);

  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent H) { FOnChange = std::move(H); }
  const TNodeNotifyEvent& GetOnNodeChange() const { return FOnNodeChange; }
  void SetOnNodeChange(TNodeNotifyEvent H) { FOnNodeChange = std::move(H); }
  const TNodeCaptionEvent& GetOnNodeCaptionChange() const { return FOnNodeCaptionChange; }
  void SetOnNodeCaptionChange(TNodeCaptionEvent H) { FOnNodeCaptionChange = std::move(H); }
  const TNodeNotifyEvent& GetOnAddNode() const { return FOnAddNode; }
  void SetOnAddNode(TNodeNotifyEvent H) { FOnAddNode = std::move(H); }
  const TNodeNotifyEvent& GetOnRemoveNode() const { return FOnRemoveNode; }
  void SetOnRemoveNode(TNodeNotifyEvent H) { FOnRemoveNode = std::move(H); }

 protected:
  /// The literal selection: a scan over GetNodes (see ClosestNode).
  [[nodiscard]] TGGraphNode* ScanClosestNode(TGGraphNode* ANode, bool Visited);
  /// Calls Fn on every node the graph keeps, also those GetNodes does not show.
  virtual void ForEachKeptNode(const std::function<void(TGGraphNode*)>& Fn) const;
  /// Silences every handler (destructors call it before clearing).
  void DropHandlers();
  /// Takes Node out of the graph's keeping without freeing it; false when not kept here.
  virtual bool Forget(TGGraphNode* Node) = 0;
  /// RemoveNode's and Extract's work: Forget, detach, then free (or hand back), Change.
  bool RemoveKept(TGGraphNode* Node);
  TGGraphNode* ExtractKept(TGGraphNode* Node);

  bool FAcyclic = false;
  bool FDirected = false;
  bool FEnumeratingPaths = false;
  bool FNeedAcyclicCheck = true;
  bool FUpdatingNode = false;
  TUpdateCounter<ueIgnore> FUpdateCount;
  std::int32_t FUpdateNodesCount = 0;
  std::int32_t FNodeID = 0;
  TGGraphNodeClass FNodeClass;

 private:
  friend class TGGraphNode;
  void StoreNodesProperty(TWriter* Writer);
  void LoadNodesProperty(TReader* Reader);
  /// Frees every edge arriving at Node from any node the graph keeps.
  void DropEdgesTo(TGGraphNode* Node);
  void Relax(TGGraphNode* U, TGGraphNode* V, TGGraphEdge* E);
  /// TopologicalOrder over arrays when the outcome cannot differ; false when it would.
  bool DirectTopologicalOrder(TStrings& OrderedNodes);
  /// ShortestPath's search after InitializeNodes over arrays when the outcome cannot differ;
  /// false, having changed nothing, when it would.
  bool DirectShortestPath(TGGraphNode* StartNode);

  TNotifyEvent FOnChange;
  TNodeNotifyEvent FOnNodeChange;
  TNodeCaptionEvent FOnNodeCaptionChange;
  TNodeNotifyEvent FOnAddNode;
  TNodeNotifyEvent FOnRemoveNode;
  detail::TShortestRun* FShortestRun = nullptr;
  detail::TDepthFirstWalk* FWalk = nullptr;
};

/// A graph that keeps its nodes in an owning list, in insertion order; captions may repeat.
/// FindNode answers the first node of a caption through an index (O(1) expected).
class TGGraph : public TGCustomGraph {
  KZ_CLASS(TGGraph, TGCustomGraph)
 public:
  explicit TGGraph(TComponent* AOwner);
  ~TGGraph() override;

  [[nodiscard]] std::int32_t GetNodeCount() const override { return FNodes.GetCount(); }
  void AddNode(TGGraphNode* Node) override;
  void Clear() override;
  [[nodiscard]] TGGraphNode* FindNode(StringView Caption) const override;
  [[nodiscard]] TIntfPtr<IObjectIterator> GetNodes() const override;
  using TGCustomGraph::RemoveNode;
  bool RemoveNode(TGGraphNode* Node) override;
  using TGCustomGraph::Extract;
  TGGraphNode* Extract(TGGraphNode* Node) override;
  void TextChange(TGGraphNode* Node, const String& NewCaption) override;

  /// EArgumentOutOfRangeException for a bad index.
  [[nodiscard]] TGGraphNode* GetNode(std::int32_t Index) const { return FNodes.GetItem(Index); }
  [[nodiscard]] const TGGraphNodes& GetNodeList() const { return FNodes; }
  /// A cursor over the nodes in list order (range-for walks the graph).
  [[nodiscard]] std::unique_ptr<TGGraphNodesEnumerator> GetEnumerator() const {
    return std::make_unique<TGGraphNodesEnumerator>(&FNodes);
  }

 private:
  struct TCaptionEntry {
    TGGraphNode* First = nullptr;  // the first node of the caption in list order
    std::int32_t Count = 0;
    bool operator==(const TCaptionEntry&) const = default;
  };
  void IndexCaption(TGGraphNode* Node, const String& Caption);
  void UnindexCaption(TGGraphNode* Node, const String& Caption);
  bool Forget(TGGraphNode* Node) override;

  TGGraphNodes FNodes;
  TKZDictionary<String, TCaptionEntry> FCaptions;
  std::int64_t FNextOrder = 0;
};

/// A graph that keeps its nodes by caption in a string-to-node table: captions are unique
/// keys, FindNode is O(1), GetNodes walks the table's order. Adding a node whose caption
/// another node holds raises EListError "Duplicate node names not allowed". Renaming a node
/// onto another node's caption takes the key over: the other node stays in the graph (its
/// edges too) but is no longer found by name nor shown by GetNodes; it is freed with the
/// graph, and RemoveNode/Extract given that node act on it alone.
class TGLabelGraph : public TGCustomGraph {
  KZ_CLASS(TGLabelGraph, TGCustomGraph)
 public:
  explicit TGLabelGraph(TComponent* AOwner);
  ~TGLabelGraph() override;

  [[nodiscard]] std::int32_t GetNodeCount() const override;
  void AddNode(TGGraphNode* Node) override;
  void Clear() override;
  [[nodiscard]] TGGraphNode* FindNode(StringView Caption) const override;
  [[nodiscard]] TIntfPtr<IObjectIterator> GetNodes() const override;
  using TGCustomGraph::RemoveNode;
  bool RemoveNode(TGGraphNode* Node) override;
  using TGCustomGraph::Extract;
  TGGraphNode* Extract(TGGraphNode* Node) override;
  /// Moves the node's key to NewCaption (taking it over from another node), then the base.
  void TextChange(TGGraphNode* Node, const String& NewCaption) override;

  /// The node of that caption; EListError (item not found) for an unknown caption.
  [[nodiscard]] TGGraphNode* GetNode(StringView Caption) const;

 protected:
  void ForEachKeptNode(const std::function<void(TGGraphNode*)>& Fn) const override;
  /// Out of the table (when it holds the node's key) or out of the hidden nodes.
  bool Forget(TGGraphNode* Node) override;

 private:

  std::unique_ptr<TKZStringObjectHashTable<TGGraphNode>> FNodes;
  std::vector<TGGraphNode*> FOrphans;  // nodes whose key a rename took over
};

}  // namespace kz
