// Graph nodes: the plain node, the node that also lists its incoming edges, the weighted node,
// and the node list.
#pragma once

#include <cstdint>
#include <memory>

#include "GGraph/Edges.h"
#include "Runtime/StringLists.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

namespace detail {
struct TShortestRun;
struct TGraphArrays;
}  // namespace detail

/// A named vertex with its incident edges. The family has a virtual constructor taking the
/// graph (TGGraphNodeClass). A node is free-standing (no graph, owned by its creator) or
/// belongs to a graph, which owns it. A node owns the edges whose FromNode it is; in a
/// directed graph Edges holds its outgoing edges, in an undirected one every incident edge
/// (a self-loop once).
///
/// Built directly with a graph, the node takes the default caption and joins while only
/// its base part exists, so the caption names TGGraphNode; the graph's NewNode/CreateNode and
/// the stored form build the node whole first and name it after its own class.
class TGGraphNode : public TPersistent {
 public:
  using TMeta = kz::TMetaClassOf<TGGraphNode, TGCustomGraph*>;
  KZ_CLASS(TGGraphNode, TPersistent)
 public:
  /// With a graph: caption "<class name><graph.NewNodeId>", then joins the graph. Without
  /// one: an empty caption.
  explicit TGGraphNode(TGCustomGraph* AGraph);
  /// Clears OnChange and leaves the graph (freeing every edge at the node). A subclass that
  /// overrides the edge bookkeeping leaves the graph in its own destructor.
  ~TGGraphNode() override;

  /// From another node: its caption (through SetCaption), then Change.
  void Assign(TPersistent* Source) override;

  // Edge bookkeeping, called by edges as they come and go.
  /// Counts the edge in InDegree; in an undirected graph, when FromNode is the edge's
  /// FromNode and not its ToNode, mirrors the edge at FromNode's side.
  virtual void AddingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge);
  /// Lists the edge unless it is listed already; then Change.
  virtual void AddingEdgeTo(TGGraphNode* ToNode, TGGraphEdge* Edge);
  /// Tears the node down with its graph: each edge is told FastClear, freed when this node
  /// made it, and dropped; the graph is forgotten. No events. Only for a whole graph's
  /// teardown: afterwards the graph's other nodes may hold edges with a forgotten end.
  virtual void FastClear();
  /// The node's stored data after its class name: the caption.
  virtual void WriteData(TWriter* Writer);
  virtual void ReadData(TReader* Reader);
  /// Undoes AddingEdgeFrom (the in-degree and, undirected, the mirror).
  virtual void RemovingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge);
  /// Drops the edge from the list; then Change.
  virtual void RemovingEdgeTo(TGGraphNode* ToNode, TGGraphEdge* Edge);
  /// Frees this node's edges to Target, last first, until Target's InDegree is 0.
  virtual void RemovePredecessors(TGGraphNode* Target);
  /// A new edge of this node's edge class (TGGraphEdge here).
  virtual TGGraphEdge* NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode);
  /// A new edge from this node to ToNode, owned by this node. Raises EGraphException
  /// "Node "X" is unconnected to any graph" on a node without a graph. Parallel edges are
  /// allowed.
  virtual TGGraphEdge* AddEdge(TGGraphNode* ToNode);
  virtual void BeginUpdate();
  /// Frees every edge in the list (first first), then in a directed graph every edge still
  /// arriving here (the graph's RemovePredecessors, then a sweep of the whole graph when the
  /// in-degree says some are left, e.g. edges of a node whose caption was taken over).
  virtual void Clear();
  /// Closes an update; at count 0 (also when none was open) Change.
  virtual void EndUpdate();
  /// Frees the edge at Index (EArgumentOutOfRangeException for a bad index).
  virtual void RemoveEdge(std::int32_t Index);
  void RemoveEdge(TGGraphEdge* Edge) { RemoveEdge(IndexOfEdge(Edge)); }
  /// Undirected: Clear. Directed with InDegree > 0: every node of the graph, in GetNodes
  /// order, frees its edges to this node (O(nodes + edges); TGLinkedGraphNode avoids it).
  virtual void RemovePredecessors();
  /// Nothing while updating; else the graph's NodeChange, then OnChange.
  virtual void Change();
  /// Called before the caption changes: forwards to the graph's TextChange.
  virtual void TextChange(const String& NewCaption);

  [[nodiscard]] const String& GetCaption() const { return FCaption; }
  /// When different: TextChange first, then the new caption is stored.
  void SetCaption(const String& Value);
  /// The node's own list: read it, change it only through edges and nodes.
  [[nodiscard]] TGGraphEdges* GetEdges() { return &FEdges; }
  [[nodiscard]] const TGGraphEdges* GetEdges() const { return &FEdges; }
  [[nodiscard]] TGGraphEdge* GetEdge(std::int32_t Index) const { return FEdges.GetItem(Index); }
  [[nodiscard]] std::int32_t GetEdgeCount() const { return FEdges.GetCount(); }
  [[nodiscard]] std::int32_t GetOutDegree() const { return FEdges.GetCount(); }
  /// -1 when absent. O(edges).
  [[nodiscard]] std::int32_t IndexOfEdge(const TGGraphEdge* Edge) const;
  /// The first edge whose ToNode is Node or, undirected, whose FromNode is; -1 when none.
  [[nodiscard]] std::int32_t IndexOfEdgeTo(const TGGraphNode* Node) const;
  [[nodiscard]] TGCustomGraph* GetGraph() const { return FGraph; }
  /// Leaves the current graph (an update around Clear and the old graph's Extract), then
  /// joins G through G's AddNode. When joining raises, the node stays free-standing.
  void SetGraph(TGCustomGraph* G);
  /// True when the graph is undirected (a node without a graph counts as directed).
  [[nodiscard]] bool IsUndirected() const;
  [[nodiscard]] std::int32_t GetInDegree() const { return FInDegree; }
  [[nodiscard]] std::int32_t GetUpdateCount() const { return FUpdateCount.Count(); }
  /// Scratch shared by the visited mark (low byte), the sort's counter and stream numbers.
  [[nodiscard]] std::int32_t GetWorkTag() const { return FWorkTag; }
  void SetWorkTag(std::int32_t Value) { FWorkTag = Value; }
  /// A cursor over Edges (range-for walks the node's edges).
  [[nodiscard]] std::unique_ptr<TGGraphEdgesEnumerator> GetEnumerator() const {
    return std::make_unique<TGGraphEdgesEnumerator>(&FEdges);
  }
  [[nodiscard]] bool GetVisited() const { return (FWorkTag & 0xFF) != 0; }
  void SetVisited(bool Value) { FWorkTag = Value ? 1 : 0; }
  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }

 protected:
  /// Frees every listed edge, first first.
  void FreeEdges();

 private:
  friend class TGGraphEdge;
  friend class TGCustomGraph;
  /// Edge's "listed here" flag, or null when this node is neither end.
  bool* ListedFlag(TGGraphEdge* Edge) const;

  friend class TGGraph;
  friend class TGLabelGraph;

  friend struct detail::TGraphArrays;
  // What a walk reads of a node it reaches over an edge (graph, counters) fills the 16 bytes
  // at offset 16, which the allocator's 16-byte alignment keeps inside one cache line; the
  // edge list follows.
  std::int64_t FOrder = 0;  // a TGGraph's insertion sequence number, for its caption index
  TGCustomGraph* FGraph = nullptr;
  std::int32_t FInDegree = 0;
  std::int32_t FWorkTag = 0;
  TGGraphEdges FEdges;
  TUpdateCounter<ueIgnore> FUpdateCount;
  String FCaption;
  TNotifyEvent FOnChange;
};

using TGGraphNodeClass = const TGGraphNode::TMeta*;

/// A node that also lists its incoming edges while the graph is directed, so that clearing
/// it needs no scan of the whole graph.
class TGLinkedGraphNode : public TGGraphNode {
  KZ_CLASS(TGLinkedGraphNode, TGGraphNode)
 public:
  explicit TGLinkedGraphNode(TGCustomGraph* AGraph) : TGGraphNode(AGraph) {}
  ~TGLinkedGraphNode() override;

  /// Directed: lists the edge as incoming first.
  void AddingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) override;
  /// Also drops the edge from the incoming list.
  void RemovingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) override;
  using TGGraphNode::RemovePredecessors;
  /// Directed: each incoming edge, last first, is freed by its FromNode.
  void RemovePredecessors() override;

  [[nodiscard]] TGGraphEdges* GetInEdges() { return &FInEdges; }
  [[nodiscard]] const TGGraphEdges* GetInEdges() const { return &FInEdges; }

 private:
  TGGraphEdges FInEdges;
};

/// A node with an int32 weight (the distance found by the shortest-path search) and the path
/// list that search fills. It makes weighted edges.
class TWeightedNode : public TGGraphNode {
  KZ_CLASS(TWeightedNode, TGGraphNode)
 public:
  explicit TWeightedNode(TGCustomGraph* AGraph) : TGGraphNode(AGraph) {}

  /// From another weighted node: caption and weight.
  void Assign(TPersistent* Source) override;
  TGGraphEdge* NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode) override;
  void ReadData(TReader* Reader) override;
  void WriteData(TWriter* Writer) override;
  /// The neighbour over the lightest edge (strictly below the limit, first wins) whose mark
  /// is Visited: the ToNode when it qualifies and is not this node, else the FromNode when
  /// the ToNode's mark matches and the FromNode is not this node. Null when none.
  /// Every edge must be weighted (EInvalidCast).
  [[nodiscard]] virtual TGGraphNode* ClosestNode(bool Visited) const;

  [[nodiscard]] TGraphWeight GetWeight() const { return FWeight; }
  /// Stores Value; Change only when it differs.
  void SetWeight(TGraphWeight Value);
  /// (caption, node) lines from the search's start to this node; null until
  /// EnumerateShortestPaths first fills it. Owned by the node.
  [[nodiscard]] TStringList* GetShortestPath() const { return FShortestPath.get(); }

 private:
  friend class TGCustomGraph;
  friend struct detail::TShortestRun;
  TStringList& PathList();

  TGraphWeight FWeight = 0;
  std::unique_ptr<TStringList> FShortestPath;
  std::int32_t FSlot = -1;  // position in the running shortest-path search
};

/// A list of nodes; it does not own them.
class TGGraphNodes : public Generics::TList<TGGraphNode*> {
  KZ_CLASS(TGGraphNodes, Generics::TList<TGGraphNode*>)
};

using TGGraphNodesEnumeratorBase = TKZListEnumerator<TGGraphNode*, TGGraphNodes>;

/// Walks a TGGraph's nodes (read live, not owned).
class TGGraphNodesEnumerator : public TGGraphNodesEnumeratorBase {
  KZ_CLASS(TGGraphNodesEnumerator, TGGraphNodesEnumeratorBase)
 public:
  using TGGraphNodesEnumeratorBase::TGGraphNodesEnumeratorBase;
};

}  // namespace kz
