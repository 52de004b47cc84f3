// The binary tree: nodes with a left and a right child, walked in order left, node, right.
#pragma once

#include "GTree/Trees.h"

namespace kz {

/// A node with at most two children, Left and Right. As a general node its children are the
/// ones present, left before right: ChildCount is 0..2 and Child[0] is the right child when
/// there is no left one. Indexes outside the children present raise ETreeException "Invalid
/// Index"; adding to a node whose free side is missing raises "Cannot add any more children
/// to node". Ownership and linking rules are those of TGCustomTreeNode.
class TGBinaryTreeNode : public TGCustomTreeNode {
  KZ_CLASS(TGBinaryTreeNode, TGCustomTreeNode)
 public:
  explicit TGBinaryTreeNode(TGCustomTree* AOwner);
  TGBinaryTreeNode(TGCustomTree* AOwner, TObject* AItem);
  ~TGBinaryTreeNode() override;

  [[nodiscard]] TGBinaryTreeNode* GetLeft() const { return FLeft; }
  [[nodiscard]] TGBinaryTreeNode* GetRight() const { return FRight; }
  /// Puts Value (a free node, or null) on that side. The node replaced is not freed: it is
  /// kept by the owner tree, as with SetChild. Change when the side changed.
  void SetLeft(TGBinaryTreeNode* Value);
  void SetRight(TGBinaryTreeNode* Value);
  /// Puts ANode on the left (right) side, which must be empty; Change; answers ANode.
  TGBinaryTreeNode* AddLeftChild(TGBinaryTreeNode* ANode);
  TGBinaryTreeNode* AddRightChild(TGBinaryTreeNode* ANode);

  [[nodiscard]] TGCustomTreeNode* GetChild(std::int32_t Index) const override;
  /// Replaces the child present at Index, on its side. ANode must be a binary node
  /// (EInvalidCast).
  void SetChild(std::int32_t Index, TGCustomTreeNode* ANode) override;
  [[nodiscard]] std::int32_t GetChildCount() const override;
  /// The left side when it is empty, else the right one. ANode must be a binary node.
  TGCustomTreeNode* AddChild(TGCustomTreeNode* ANode) override;
  /// A new node of the owner's node type at position Index (0..ChildCount) among the
  /// children present: the two children of a full node are left and right in that order.
  /// No Change.
  TGCustomTreeNode* InsertChild(std::int32_t Index) override;

 protected:
  void DetachChild(std::int32_t Index) override;
  /// Copies keep the side of the source child.
  TGCustomTreeNode* NewCopyChild(const TGCustomTreeNode* Source, std::int32_t Index) override;

 private:
  friend class TGHeightBalancedTree;
  TGBinaryTreeNode*& SlotAt(std::int32_t Index);
  TGBinaryTreeNode* AddSide(TGBinaryTreeNode*& Side, TGBinaryTreeNode* ANode);
  /// Moves a link without any check or notification (rotations only).
  void LinkSide(TGBinaryTreeNode*& Side, TGBinaryTreeNode* Value);

  TGBinaryTreeNode* FLeft = nullptr;
  TGBinaryTreeNode* FRight = nullptr;
};

/// A tree of binary nodes whose in-order walk is left subtree, node, right subtree.
class TGBinaryTree : public TGCustomTree {
  KZ_CLASS(TGBinaryTree, TGCustomTree)
 public:
  TGBinaryTree();
  /// The root as a binary node; a root of another class raises EInvalidCast.
  [[nodiscard]] TGBinaryTreeNode* GetRoot() const;

 protected:
  /// Left subtree, node, right subtree, on an explicit stack. Nodes of other classes raise
  /// EInvalidCast.
  bool Infix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const override;
};

}  // namespace kz
