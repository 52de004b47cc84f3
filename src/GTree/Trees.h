// Rooted trees of nodes that each refer to one host object: the node and tree bases, the
// general tree with any number of ordered children, traversals and searches, and the unit's
// messages.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "Runtime/Lists.h"
#include "Runtime/Persistent.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

KZ_DECLARE_EXCEPTION(ETreeException, Exception)

namespace GTree {
KZ_UNIT_SCOPE(GTree)
KZ_RESOURCESTRING(SUnknownTreeNode, u"Unknown Tree Node")
KZ_RESOURCESTRING(SOwnerMismatch, u"Owner of Node does not match Self")
KZ_RESOURCESTRING(SNodeTypeLocked, u"Cannot change node types while any nodes exist")
KZ_RESOURCESTRING(SInvalidIndex, u"Invalid Index")
KZ_RESOURCESTRING(SNoMoreChildren, u"Cannot add any more children to node")
KZ_RESOURCESTRING(SDuplicatePriorities, u"Duplicate priorities in tree")
KZ_RESOURCESTRING(SNodeAlreadyLinked, u"The node already has a parent or is the root of a tree")
KZ_RESOURCESTRING(SNodeCycle, u"A node cannot become a child of itself or of one of its descendants")
KZ_RESOURCESTRING(SCopyIntoSubtree, u"A node cannot be copied into or from its own subtree")
KZ_RESOURCESTRING(SDuplicateCycle, u"Duplicate priorities cannot be accepted: the matching node would become its own child")
KZ_RESOURCESTRING(SDeleteNotAtRoot, u"Delete can start only at the root of the tree")
KZ_RESOURCESTRING(SDeleteRepeats, u"Delete would repeat for ever: the matching node has a single child")
KZ_RESOURCESTRING(SRotationAboveStart, u"The insertion would rotate a start node that is not the root")
KZ_RESOURCESTRING(SNotParentOfTop, u"The node given as parent does not hold the node to rotate")
KZ_RESOURCESTRING(SFreeDuringWalk, u"Nodes cannot be freed while a traversal of their tree is running")
}  // namespace GTree

/// The order in which a traversal visits a node and its children.
enum TTraversalOrder : std::uint8_t { toPreOrder, toInOrder, toPostOrder };

class TGCustomTree;
class TGCustomTreeNode;
class TGTree;

/// The callback of a traversal: the node visited and the caller's tag.
using TTreeIterator = std::function<void(TGCustomTreeNode* ANode, std::int32_t ATag)>;

/// A node of a tree: one host object (Item, never owned) and the node's children. Node
/// classes form a family with the virtual constructor (AOwner); the tree makes its nodes
/// through its node type. Nodes keep no public parent link: GetParent searches from the
/// root (O(n)).
///
/// Ownership: a node owns the children linked to it, so freeing a node frees its subtree.
/// Linking (AddChild, SetChild, InsertParent, the binary sides) takes a node that is free:
/// neither any node's child nor a tree's root; on success the receiver owns it, on failure
/// the caller keeps it. A node already placed elsewhere raises "The node already has a
/// parent ...", a link that would close a cycle raises SNodeCycle. A node replaced in its slot
/// (SetChild, SetLeft, SetRight) is not freed: it is unlinked and kept by its owner tree
/// until the tree is destroyed, or until it is linked again. Destroying a node frees its
/// subtree without notifications and without stack depth; a node must not outlive its owner
/// tree when it still calls on it (Change, GetParent, NewChild).
class TGCustomTreeNode : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TGCustomTreeNode, TGCustomTree*>;
  KZ_CLASS(TGCustomTreeNode, TPersistent)
 public:
  explicit TGCustomTreeNode(TGCustomTree* AOwner);
  /// A node holding AItem.
  TGCustomTreeNode(TGCustomTree* AOwner, TObject* AItem);
  ~TGCustomTreeNode() override;

  [[nodiscard]] TObject* GetItem() const { return FItem; }
  void SetItem(TObject* Value) { FItem = Value; }
  /// The tree that made the node (its Owner).
  [[nodiscard]] TGCustomTree* GetTree() const { return FOwner; }
  /// The owner tree, for name paths.
  TPersistent* GetOwner() override;

  /// Child at Index (0-based); a bad index raises the node class's index error.
  [[nodiscard]] virtual TGCustomTreeNode* GetChild(std::int32_t Index) const = 0;
  /// Puts ANode in slot Index. The same node changes nothing; otherwise the previous child
  /// is unlinked but not freed (see the class comment) and Change is called.
  virtual void SetChild(std::int32_t Index, TGCustomTreeNode* ANode) = 0;
  [[nodiscard]] virtual std::int32_t GetChildCount() const = 0;
  /// The parent, found by searching the owner tree from its root; null for the root and
  /// for nodes outside the tree. Raises "Owner of Node does not match Self" when the node is
  /// not its owner's.
  [[nodiscard]] virtual TGCustomTreeNode* GetParent() const;
  /// Tells the owner tree that this node changed (nothing without an owner).
  virtual void Change();
  /// Copies the node's own fields (Item here; subclasses add theirs), not the children.
  virtual void AssignFields(const TGCustomTreeNode* Source);
  /// Appends ANode to the children, calls Change and answers ANode.
  virtual TGCustomTreeNode* AddChild(TGCustomTreeNode* ANode) = 0;
  /// Appends a deep copy of each child of ANode, in order (a new child of the owner's node
  /// type per source node). Raises SCopyIntoSubtree when this node lies below ANode.
  virtual void AddChildren(TGCustomTreeNode* ANode);
  /// Frees the children from the last to the first, each with its subtree, then calls
  /// Change. Notifies as the nested deletions would (each freed node's Change, then its
  /// parent's), but walks an explicit stack, so any depth is fine.
  virtual void Clear();
  /// Frees Node (a child of this node) with its subtree, removes its slot and calls Change.
  /// Raises "Unknown Tree Node" when Node is not a child.
  virtual void DeleteChild(TGCustomTreeNode* Node);
  /// Position of Node among the children (identity), or -1.
  [[nodiscard]] virtual std::int32_t IndexOf(const TGCustomTreeNode* Node) const;
  /// A new node of the owner's node type inserted at Index; answers it.
  virtual TGCustomTreeNode* InsertChild(std::int32_t Index) = 0;
  /// Puts the free node Node in this node's place and this node below it: Node gets this
  /// node as its last child and takes its slot in the parent. Answers this node. The root
  /// (no parent) raises EAccessViolation before anything changes.
  virtual TGCustomTreeNode* InsertParent(TGCustomTreeNode* Node);
  /// A new child of the owner's node type, appended; answers it.
  virtual TGCustomTreeNode* NewChild();
  /// From a tree node: Clear, AssignFields, then deep copies of its children. Copying from a
  /// node of this node's own subtree, or into a node below Source, raises SCopyIntoSubtree
  /// before anything changes. Other sources raise the assign error.
  void Assign(TPersistent* Source) override;

 protected:
  /// Takes the child at Index out of its slot without freeing it (no notification).
  virtual void DetachChild(std::int32_t Index) = 0;
  /// Makes a child for the deep copy of Source's child at Index: NewChild here; binary
  /// nodes keep the side.
  virtual TGCustomTreeNode* NewCopyChild(const TGCustomTreeNode* Source, std::int32_t Index);
  /// Checks that ANode may become a child of this node (free, not an ancestor); null passes.
  void CheckLinkable(const TGCustomTreeNode* ANode) const;
  /// Records that ANode (checked, may be null) now sits in a slot of this node.
  void Linked(TGCustomTreeNode* ANode);
  /// Records that Old left a slot of this node: unless it has been linked elsewhere since,
  /// its owner tree keeps it.
  void Unlinked(TGCustomTreeNode* Old);
  /// Puts ANode in Slot (nothing when it is already there): the link checks, the old node
  /// unlinked and kept, Change.
  template <class TNode>
  void ReplaceInSlot(TNode*& Slot, TNode* ANode) {
    if (Slot == ANode) return;
    CheckLinkable(ANode);
    Unlinked(Slot);
    Slot = ANode;
    Linked(ANode);
    Change();
  }
  /// Frees every descendant without notifications, iteratively; for destructors.
  void FreeDescendants() noexcept;

 private:
  friend class TGCustomTree;
  friend class TGHeightBalancedTree;
  /// Frees the children at First..Last of Start, last first, notifying as nested
  /// DeleteChild calls would.
  static void ReleaseChildren(TGCustomTreeNode* Start, std::int32_t First, std::int32_t Last);
  /// Deep copy of Source's children into Dest, in the order nested Assign calls would.
  static void CopyChildren(TGCustomTreeNode* Dest, const TGCustomTreeNode* Source);
  /// The running-walk count of Node's tree (a dummy without a tree).
  static std::int32_t& WalksOf(const TGCustomTreeNode* Node);
  /// True when Node is this node or one of its ancestors (through the link records).
  bool HasAncestor(const TGCustomTreeNode* Node) const;
  [[nodiscard]] bool IsFree() const { return !FLinkParent && !FIsRoot; }

  TObject* FItem = nullptr;
  TGCustomTree* FOwner;
  // Link record for ownership checks only; the public parent stays a search from the root.
  TGCustomTreeNode* FLinkParent = nullptr;
  bool FIsRoot = false;
  bool FKept = false;  // unlinked and kept by the owner tree
};

using TTreeNodeClass = const TGCustomTreeNode::TMeta*;

/// A node with any number of ordered children in a growable list. Bad indexes raise
/// EArgumentOutOfRangeException. Null children are allowed and skipped by traversals.
class TGTreeNode : public TGCustomTreeNode {
  KZ_CLASS(TGTreeNode, TGCustomTreeNode)
 public:
  explicit TGTreeNode(TGCustomTree* AOwner);
  TGTreeNode(TGCustomTree* AOwner, TObject* AItem);
  ~TGTreeNode() override;

  [[nodiscard]] TGCustomTreeNode* GetChild(std::int32_t Index) const override;
  void SetChild(std::int32_t Index, TGCustomTreeNode* ANode) override;
  [[nodiscard]] std::int32_t GetChildCount() const override;
  TGCustomTreeNode* AddChild(TGCustomTreeNode* ANode) override;
  [[nodiscard]] std::int32_t IndexOf(const TGCustomTreeNode* Node) const override;
  /// Index in 0..ChildCount (checked before the node is made). No Change.
  TGCustomTreeNode* InsertChild(std::int32_t Index) override;

  /// Typed views; a node of another class raises EInvalidCast.
  [[nodiscard]] TGTree* GetTreeOwner() const;
  [[nodiscard]] TGTreeNode* GetTreeParent() const;
  [[nodiscard]] TGTreeNode* GetTreeChild(std::int32_t Index) const;
  void SetTreeChild(std::int32_t Index, TGTreeNode* ANode) { SetChild(Index, ANode); }

 protected:
  void DetachChild(std::int32_t Index) override;

 private:
  void CheckIndex(std::int32_t Index, std::size_t Limit) const;
  std::vector<TGCustomTreeNode*> FChildren;
};

/// A tree of nodes of a configurable node class. The tree owns the root and, through it,
/// every linked node, plus the nodes unlinked by slot replacement (freed with the tree).
/// Traversals, searches, copies and destruction walk explicit stacks: a chain of millions of
/// nodes is fine. Searches are O(n); Count is the root plus its direct children, not the
/// number of nodes. BeginUpdate calls Changing before the outermost bracket opens; an
/// EndUpdate without a bracket is ignored. A search keeps its result in the tree, so two
/// searches on one tree must not overlap.
class TGCustomTree : public TPersistent {
  KZ_CLASS(TGCustomTree, TPersistent)
 public:
  /// Answers true to stop a walk.
  using TTreeVisitor = std::function<bool(TGCustomTreeNode* ANode)>;

  TGCustomTree();
  /// Clears the tree (OnChanging and OnChange still fire; an exception from them is
  /// swallowed and the nodes are freed all the same), then frees the unlinked nodes kept.
  ~TGCustomTree() override;

  [[nodiscard]] TTreeNodeClass GetNodeType() const { return FNodeType; }
  /// Raises "Cannot change node types while any nodes exist" while there is a root.
  void SetNodeType(TTreeNodeClass Value);
  [[nodiscard]] TGCustomTreeNode* GetRoot() const { return FRoot; }
  /// Frees the old root with its subtree and takes Value (a free node, or null) as the root,
  /// inside one update. A node that is linked elsewhere raises before anything changes.
  void SetRoot(TGCustomTreeNode* Value);
  /// 0 without a root, else the root's ChildCount + 1.
  [[nodiscard]] std::int32_t GetCount() const;

  [[nodiscard]] const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Value) { FOnChange = std::move(Value); }
  [[nodiscard]] const TNotifyEvent& GetOnChanging() const { return FOnChanging; }
  void SetOnChanging(TNotifyEvent Value) { FOnChanging = std::move(Value); }

  /// Node's parent, searched from the root in pre-order. Raises "Owner of Node does not
  /// match Self" for a node of another tree.
  [[nodiscard]] virtual TGCustomTreeNode* GetParentNode(const TGCustomTreeNode* Node) const;
  /// OnChange(Sender) when assigned and no update is open.
  virtual void Change(TObject* Sender);
  /// OnChanging(Sender) when assigned and no update is open.
  virtual void Changing(TObject* Sender);
  virtual void BeginUpdate();
  virtual void EndUpdate();
  /// Frees every node of the tree inside one update.
  virtual void Clear();
  /// Frees Node with its subtree through its parent's DeleteChild. The root has no parent:
  /// remove it with Clear or SetRoot.
  virtual void Delete(TGCustomTreeNode* Node);
  /// A new node of the node type, owned by the caller until it is linked.
  [[nodiscard]] virtual std::unique_ptr<TGCustomTreeNode> NewNode();
  /// Calls Iterator(node, ATag) for each node of CurrentNode's subtree in Order (nothing for
  /// null). An exception from Iterator ends the walk and propagates unchanged. While a walk,
  /// a clear or a copy runs, operations that would free nodes of the tree (from an iterator
  /// or a change handler) raise SFreeDuringWalk.
  virtual void Traverse(TGCustomTreeNode* CurrentNode, const TTreeIterator& Iterator, TTraversalOrder Order,
                        std::int32_t ATag) const;
  /// The first node of CurrentNode's subtree, in Order, that has Node among its children
  /// (Node's parent), or null. The search stops at the first match.
  [[nodiscard]] TGCustomTreeNode* FindNode(TGCustomTreeNode* CurrentNode, const TGCustomTreeNode* Node,
                                           TTraversalOrder Order) const;
  /// The first node of CurrentNode's subtree, in Order, whose Item is Item, or null.
  [[nodiscard]] TGCustomTreeNode* FindItemNode(TGCustomTreeNode* CurrentNode, const TObject* Item,
                                               TTraversalOrder Order) const;
  [[nodiscard]] bool IsLeaf(const TGCustomTreeNode* Node) const;
  [[nodiscard]] bool IsRoot(const TGCustomTreeNode* Node) const { return Node == FRoot; }

  /// From another tree: inside one update, a fresh root of the node type, then a deep copy
  /// of the source root onto it (a source without a root raises the assign error after the
  /// fresh root is in place). Other sources raise the assign error.
  void Assign(TPersistent* Source) override;
  using TPersistent::AssignTo;
  /// Clears Dest and appends the Item of every node in pre-order.
  void AssignTo(TList* Dest) const;

 protected:
  /// Visits Node's subtree: the first child's subtree, the node, then the other children's
  /// subtrees. Answers true when Visit stopped the walk.
  virtual bool Infix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const;
  bool Prefix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const;
  bool Postfix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const;
  /// Walks in Order; answers true when Visit stopped it.
  bool Walk(TGCustomTreeNode* Node, TTraversalOrder Order, const TTreeVisitor& Visit) const;
  /// Replaces the root slot without freeing anything (for restructuring subclasses).
  void LinkRoot(TGCustomTreeNode* Value);

 private:
  TGCustomTreeNode* FirstMatch(TGCustomTreeNode* CurrentNode, TTraversalOrder Order,
                               const std::function<bool(const TGCustomTreeNode*)>& Matches) const;

 private:
  friend class TGCustomTreeNode;
  /// Takes an unlinked node into the tree's keeping / out of it.
  void Keep(TGCustomTreeNode* Node);
  void Unkeep(TGCustomTreeNode* Node);

  TTreeNodeClass FNodeType = nullptr;
  TNotifyEvent FOnChange;
  TNotifyEvent FOnChanging;
  TUpdateCounter<ueIgnore> FUpdateCount;
  TGCustomTreeNode* FRoot = nullptr;
  mutable TGCustomTreeNode* MatchObject = nullptr;
  mutable std::int32_t FWalks = 0;  // traversals running: freeing nodes meanwhile is refused
  std::vector<TGCustomTreeNode*> FKept;
};

/// The general tree: nodes of class TGTreeNode unless the node type is changed.
class TGTree : public TGCustomTree {
  KZ_CLASS(TGTree, TGCustomTree)
 public:
  TGTree();
  /// The root as a general node; a root of another class raises EInvalidCast.
  [[nodiscard]] TGTreeNode* GetRoot() const;
};

}  // namespace kz
