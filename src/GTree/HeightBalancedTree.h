// The height-balanced search tree ordered by an integer priority.
#pragma once

#include "GTree/BinaryTree.h"
#include "Runtime/StringLists.h"

namespace kz {

/// -1 .. +1: +1 when the left subtree is one level taller, -1 when the right one is.
using TBalanceFactor = std::int8_t;

class TGHeightBalancedTree;

/// A node of the height-balanced tree: a priority (the search key), a balance factor and the
/// host's Item.
class TGHeightBalancedTreeNode : public TGBinaryTreeNode {
  KZ_CLASS(TGHeightBalancedTreeNode, TGBinaryTreeNode)
 public:
  explicit TGHeightBalancedTreeNode(TGCustomTree* AOwner, std::int32_t Priority = 0);

  [[nodiscard]] TBalanceFactor GetBalanceFactor() const { return FBalanceFactor; }
  void SetBalanceFactor(TBalanceFactor Value) { FBalanceFactor = Value; }
  [[nodiscard]] std::int32_t GetPriority() const { return FPriority; }
  void SetPriority(std::int32_t Value) { FPriority = Value; }

  /// Typed views; a linked node of another class raises EInvalidCast.
  [[nodiscard]] TGHeightBalancedTreeNode* GetHBLeft() const;
  [[nodiscard]] TGHeightBalancedTreeNode* GetHBRight() const;
  void SetHBLeft(TGHeightBalancedTreeNode* Value) { SetLeft(Value); }
  void SetHBRight(TGHeightBalancedTreeNode* Value) { SetRight(Value); }
  [[nodiscard]] TGHeightBalancedTreeNode* GetHBParent() const;
  [[nodiscard]] TGHeightBalancedTree* GetHBOwner() const;

  /// Priority and balance factor from a height-balanced source, then the Item.
  void AssignFields(const TGCustomTreeNode* Source) override;

 private:
  TBalanceFactor FBalanceFactor = 0;
  std::int32_t FPriority;
};

/// A search tree of height-balanced nodes kept balanced on insertion by single and double
/// rotations. Insertion and FindNode are O(log n). Nodes leave the tree only through Clear,
/// SetRoot and the node deletion of the general tree: Delete finds but never removes.
///
/// Duplicates: dupIgnore (default) answers the node already holding the priority; dupError
/// raises EStringListError "Duplicate priorities in tree"; dupAccept would make the matching
/// node its own right child, a cycle no walk or teardown survives, so it raises
/// ETreeException SDuplicateCycle instead and leaves the tree unchanged.
///
/// The right-left double rotation sets the balance factors of the two lower nodes by the
/// same table as the left-right one, not by its mirror: after it the stored factors of those
/// nodes may differ from the true height differences. That is the tree's defined behaviour.
class TGHeightBalancedTree : public TGBinaryTree {
  KZ_CLASS(TGHeightBalancedTree, TGBinaryTree)
 public:
  TGHeightBalancedTree();

  [[nodiscard]] TDuplicates GetDuplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  /// The root as a height-balanced node; a root of another class raises EInvalidCast.
  [[nodiscard]] TGHeightBalancedTreeNode* GetRoot() const;
  void SetRoot(TGHeightBalancedTreeNode* Value) { TGCustomTree::SetRoot(Value); }

  /// Add(Item, Priority, Root).
  TGHeightBalancedTreeNode* Add(TObject* Item, std::int32_t Priority);
  /// Inserts a node for Item and Priority below ANode (the root when null), inside one
  /// update, and answers it (or, under dupIgnore, the node already holding Priority). A
  /// start node below the root whose own balance would need a rotation raises
  /// SRotationAboveStart before anything changes, since the rotated subtree could not be
  /// hung back in its place. Stored balances left by a right-left rotation can call for a
  /// double rotation at a node whose heavy side is empty: that raises EAccessViolation,
  /// also before anything changes.
  virtual TGHeightBalancedTreeNode* Add(TObject* Item, std::int32_t Priority, TGHeightBalancedTreeNode* ANode);
  /// Repairs the balance after NewNode was linked below S (F is S's parent, null for the
  /// root; Stop is unused). Answers the new top of S's subtree, or S's child towards NewNode
  /// when no rotation was needed. Arguments that do not describe such an insertion raise
  /// (EAccessViolation for a missing node on the way, ETreeException SNotParentOfTop or
  /// SRotationAboveStart for a wrong F) before anything changes.
  virtual TGHeightBalancedTreeNode* Rebalance(TGHeightBalancedTreeNode* NewNode, TGHeightBalancedTreeNode* Stop,
                                              TGHeightBalancedTreeNode* S, TGHeightBalancedTreeNode* F,
                                              std::int32_t Priority);
  using TGCustomTree::NewNode;
  /// A new node of the node type with Priority, owned by the caller until linked.
  [[nodiscard]] virtual std::unique_ptr<TGHeightBalancedTreeNode> NewNode(std::int32_t Priority);

  using TGCustomTree::FindNode;
  /// Descends from the root by Priority; answers the node reached only when its Item is
  /// Item, else null. AParent is the last node passed before it (null at the root).
  [[nodiscard]] TGHeightBalancedTreeNode* FindNode(TGHeightBalancedTreeNode*& AParent, std::int32_t Priority,
                                                   const TObject* Item) const;

  using TGCustomTree::Delete;
  /// Delete(Item, Priority, Root).
  void Delete(TObject* Item, std::int32_t Priority);
  /// Finds the node of Item and Priority and changes nothing. Where the search would go on
  /// for ever it raises instead: ETreeException SDeleteNotAtRoot for a start node below the
  /// root, SDeleteRepeats when the node found has a single child; EAccessViolation when the
  /// node found is a leaf (it has no child to look at) or when Item and the start node are
  /// both null.
  void Delete(TObject* Item, std::int32_t Priority, TGHeightBalancedTreeNode* ANode);

 private:
  TDuplicates FDuplicates = dupIgnore;
};

}  // namespace kz
