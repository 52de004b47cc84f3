#include "GTree/BinaryTree.h"

namespace kz {

using namespace Runtime;
using namespace GTree;

// ---- TGBinaryTreeNode ---------------------------------------------------------------------

TGBinaryTreeNode::TGBinaryTreeNode(TGCustomTree* AOwner) : TGCustomTreeNode(AOwner) {}

TGBinaryTreeNode::TGBinaryTreeNode(TGCustomTree* AOwner, TObject* AItem) : TGCustomTreeNode(AOwner, AItem) {}

TGBinaryTreeNode::~TGBinaryTreeNode() { FreeDescendants(); }

TGBinaryTreeNode*& TGBinaryTreeNode::SlotAt(std::int32_t Index) {
  if (Index == 0 && FLeft) return FLeft;
  if (Index == 0 && FRight) return FRight;
  if (Index == 1 && FLeft && FRight) return FRight;
  throw ETreeException(SInvalidIndex);
}

TGCustomTreeNode* TGBinaryTreeNode::GetChild(std::int32_t Index) const {
  return const_cast<TGBinaryTreeNode*>(this)->SlotAt(Index);
}

std::int32_t TGBinaryTreeNode::GetChildCount() const { return (FLeft ? 1 : 0) + (FRight ? 1 : 0); }

void TGBinaryTreeNode::SetLeft(TGBinaryTreeNode* Value) { ReplaceInSlot(FLeft, Value); }

void TGBinaryTreeNode::SetRight(TGBinaryTreeNode* Value) { ReplaceInSlot(FRight, Value); }

void TGBinaryTreeNode::SetChild(std::int32_t Index, TGCustomTreeNode* ANode) {
  ReplaceInSlot(SlotAt(Index), As<TGBinaryTreeNode>(ANode));
}

TGBinaryTreeNode* TGBinaryTreeNode::AddSide(TGBinaryTreeNode*& Side, TGBinaryTreeNode* ANode) {
  if (!ANode) RaiseNullAccess(u"node to add");
  if (Side) throw ETreeException(SNoMoreChildren);
  CheckLinkable(ANode);
  Side = ANode;
  Linked(ANode);
  Change();
  return ANode;
}

TGBinaryTreeNode* TGBinaryTreeNode::AddLeftChild(TGBinaryTreeNode* ANode) { return AddSide(FLeft, ANode); }

TGBinaryTreeNode* TGBinaryTreeNode::AddRightChild(TGBinaryTreeNode* ANode) { return AddSide(FRight, ANode); }

TGCustomTreeNode* TGBinaryTreeNode::AddChild(TGCustomTreeNode* ANode) {
  return AddSide(FLeft ? FRight : FLeft, As<TGBinaryTreeNode>(ANode));
}

TGCustomTreeNode* TGBinaryTreeNode::InsertChild(std::int32_t Index) {
  const std::int32_t Count = GetChildCount();
  if (Index < 0 || Index > Count) throw ETreeException(SInvalidIndex);
  if (Count == 2) throw ETreeException(SNoMoreChildren);
  if (!GetTree()) RaiseNullAccess(u"owner tree of the node");
  std::unique_ptr<TGCustomTreeNode> Made = GetTree()->NewNode();
  TGBinaryTreeNode* Node = As<TGBinaryTreeNode>(Made.get());
  // The children keep their order: a new first child goes left, a new last one right.
  TGBinaryTreeNode* Present = FLeft ? FLeft : FRight;
  if (Count == 0) {
    FLeft = Node;
  } else if (Index == 0) {
    FLeft = Node;
    FRight = Present;
  } else {
    FLeft = Present;
    FRight = Node;
  }
  Linked(Node);
  return Made.release();
}

void TGBinaryTreeNode::DetachChild(std::int32_t Index) { SlotAt(Index) = nullptr; }

TGCustomTreeNode* TGBinaryTreeNode::NewCopyChild(const TGCustomTreeNode* Source, std::int32_t Index) {
  const auto* From = dynamic_cast<const TGBinaryTreeNode*>(Source);
  if (!From || From->GetChild(Index) == From->FLeft) return NewChild();
  // A right child stays right even when the copy has no left child yet.
  if (!GetTree()) RaiseNullAccess(u"owner tree of the node");
  std::unique_ptr<TGCustomTreeNode> Made = GetTree()->NewNode();
  AddRightChild(As<TGBinaryTreeNode>(Made.get()));
  Change();  // as NewChild does after adding
  return Made.release();
}

void TGBinaryTreeNode::LinkSide(TGBinaryTreeNode*& Side, TGBinaryTreeNode* Value) {
  Side = Value;
  Linked(Value);
}

// ---- TGBinaryTree -------------------------------------------------------------------------

TGBinaryTree::TGBinaryTree() { SetNodeType(&TGBinaryTreeNode::ClassInfo()); }

TGBinaryTreeNode* TGBinaryTree::GetRoot() const { return As<TGBinaryTreeNode>(inherited::GetRoot()); }

bool TGBinaryTree::Infix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const {
  std::vector<TGBinaryTreeNode*> Stack;
  TGBinaryTreeNode* Current = As<TGBinaryTreeNode>(Node);
  while (Current || !Stack.empty()) {
    while (Current) {
      Stack.push_back(Current);
      Current = Current->GetLeft();
    }
    Current = Stack.back();
    Stack.pop_back();
    if (Visit(Current)) return true;
    Current = Current->GetRight();
  }
  return false;
}

}  // namespace kz
