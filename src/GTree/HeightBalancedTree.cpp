#include "GTree/HeightBalancedTree.h"

namespace kz {

using namespace Runtime;
using namespace GTree;

using THBNode = TGHeightBalancedTreeNode;

// ---- TGHeightBalancedTreeNode -------------------------------------------------------------

TGHeightBalancedTreeNode::TGHeightBalancedTreeNode(TGCustomTree* AOwner, std::int32_t Priority)
    : TGBinaryTreeNode(AOwner), FPriority(Priority) {}

THBNode* TGHeightBalancedTreeNode::GetHBLeft() const { return As<THBNode>(GetLeft()); }

THBNode* TGHeightBalancedTreeNode::GetHBRight() const { return As<THBNode>(GetRight()); }

THBNode* TGHeightBalancedTreeNode::GetHBParent() const { return As<THBNode>(GetParent()); }

TGHeightBalancedTree* TGHeightBalancedTreeNode::GetHBOwner() const { return As<TGHeightBalancedTree>(GetTree()); }

void TGHeightBalancedTreeNode::AssignFields(const TGCustomTreeNode* Source) {
  if (const auto* From = dynamic_cast<const THBNode*>(Source)) {
    FPriority = From->FPriority;
    FBalanceFactor = From->FBalanceFactor;
  }
  inherited::AssignFields(Source);
}

// ---- TGHeightBalancedTree -----------------------------------------------------------------

namespace {
// The side of S that an insertion of Priority goes to: -1 right, +1 left.
int SideOf(const THBNode* S, std::int32_t Priority) { return S->GetPriority() < Priority ? -1 : +1; }

bool NeedsRotation(const THBNode* S, std::int32_t Priority) {
  const int Balance = S->GetBalanceFactor();
  return Balance != 0 && Balance + SideOf(S, Priority) != 0;
}
}  // namespace

TGHeightBalancedTree::TGHeightBalancedTree() { SetNodeType(&TGHeightBalancedTreeNode::ClassInfo()); }

THBNode* TGHeightBalancedTree::GetRoot() const { return As<THBNode>(TGCustomTree::GetRoot()); }

std::unique_ptr<THBNode> TGHeightBalancedTree::NewNode(std::int32_t Priority) {
  std::unique_ptr<TGCustomTreeNode> Made = NewNode();
  As<THBNode>(Made.get())->SetPriority(Priority);
  return std::unique_ptr<THBNode>(static_cast<THBNode*>(Made.release()));
}

THBNode* TGHeightBalancedTree::Add(TObject* Item, std::int32_t Priority) { return Add(Item, Priority, GetRoot()); }

THBNode* TGHeightBalancedTree::Add(TObject* Item, std::int32_t Priority, THBNode* ANode) {
  THBNode* Result = nullptr;
  WithinUpdate(*this, [&] {
    if (!TGCustomTree::GetRoot()) {
      std::unique_ptr<THBNode> Made = NewNode(Priority);
      SetRoot(Made.get());
      Result = Made.release();
      Result->SetItem(Item);
      return;
    }
    THBNode* Start = ANode ? ANode : GetRoot();
    THBNode* S = Start;  // the last node on the path that was out of balance
    THBNode* F = nullptr;  // S's parent
    THBNode* Q = nullptr;  // the last node visited
    THBNode* P = Start;
    while (P) {
      if (P->GetBalanceFactor() != 0) {
        S = P;
        F = Q;
      }
      Q = P;
      if (P->GetPriority() > Priority)
        P = P->GetHBLeft();
      else if (P->GetPriority() < Priority)
        P = P->GetHBRight();
      else
        break;
    }
    if (P) {
      if (FDuplicates == dupError) throw EStringListError(SDuplicatePriorities);
      if (FDuplicates == dupAccept) throw ETreeException(SDuplicateCycle);
      Result = P;
      return;
    }
    if (NeedsRotation(S, Priority)) {
      if (!F && S != TGCustomTree::GetRoot()) throw ETreeException(SRotationAboveStart);
      // Stored balances that disagree with the heights (after a right-left rotation) can
      // call for a double rotation whose middle node would be missing.
      if (!(SideOf(S, Priority) < 0 ? S->GetRight() : S->GetLeft())) RaiseNullAccess(u"inner grandchild to rotate");
    }
    std::unique_ptr<THBNode> Made = NewNode(Priority);
    THBNode* N = Made.get();
    N->SetItem(Item);
    Q->LinkSide(Q->GetPriority() > Priority ? Q->FLeft : Q->FRight, Made.release());
    Rebalance(N, P, S, F, Priority);
    Result = N;
  });
  return Result;
}

THBNode* TGHeightBalancedTree::Rebalance(THBNode* NewNode, THBNode* /*Stop*/, THBNode* S, THBNode* F,
                                         std::int32_t Priority) {
  if (!S || !NewNode) RaiseNullAccess(u"node to rebalance or new node");
  const int D = SideOf(S, Priority);
  THBNode* A = D < 0 ? S->GetHBRight() : S->GetHBLeft();
  // Everything is checked before the first change, so bad arguments leave the tree as it was.
  for (const THBNode* X = A; X != NewNode; X = Priority > X->GetPriority() ? X->GetHBRight() : X->GetHBLeft())
    if (!X) RaiseNullAccess(u"node on the path to the new node");
  const bool Rotates = NeedsRotation(S, Priority);
  if (Rotates) {
    const int ABalance = A == NewNode ? A->GetBalanceFactor() : (Priority > A->GetPriority() ? -1 : +1);
    if (ABalance != D && !(D > 0 ? A->GetRight() : A->GetLeft())) RaiseNullAccess(u"inner grandchild to rotate");
    if (!F) {
      if (S != TGCustomTree::GetRoot()) throw ETreeException(SRotationAboveStart);
    } else if (F->GetLeft() != S && F->GetRight() != S) {
      throw ETreeException(SNotParentOfTop);
    }
  }

  for (THBNode* X = A; X != NewNode;) {
    if (Priority > X->GetPriority()) {
      X->SetBalanceFactor(-1);
      X = X->GetHBRight();
    } else {
      X->SetBalanceFactor(+1);
      X = X->GetHBLeft();
    }
  }
  if (S->GetBalanceFactor() == 0) {
    S->SetBalanceFactor(static_cast<TBalanceFactor>(D));
    return A;
  }
  if (S->GetBalanceFactor() + D == 0) {
    S->SetBalanceFactor(0);
    return A;
  }

  THBNode* Top;
  // The heavy side of S (left for D = +1) and the side facing away from it.
  const bool HeavyLeft = D > 0;
  auto Outer = [HeavyLeft](TGBinaryTreeNode* N) -> TGBinaryTreeNode*& { return HeavyLeft ? N->FLeft : N->FRight; };
  auto Inner = [HeavyLeft](TGBinaryTreeNode* N) -> TGBinaryTreeNode*& { return HeavyLeft ? N->FRight : N->FLeft; };
  if (A->GetBalanceFactor() == D) {  // single rotation
    S->LinkSide(Outer(S), Inner(A));
    A->LinkSide(Inner(A), S);
    S->SetBalanceFactor(0);
    A->SetBalanceFactor(0);
    Top = A;
  } else {  // double rotation through the inner grandchild B
    THBNode* B = As<THBNode>(Inner(A));
    A->LinkSide(Inner(A), Outer(B));
    S->LinkSide(Outer(S), Inner(B));
    B->LinkSide(Outer(B), A);
    B->LinkSide(Inner(B), S);
    // The balances by B's old balance, one table for both directions (not mirrored for the
    // right-left case).
    switch (B->GetBalanceFactor()) {
      case -1: S->SetBalanceFactor(0); A->SetBalanceFactor(+1); break;
      case +1: S->SetBalanceFactor(-1); A->SetBalanceFactor(0); break;
      default: S->SetBalanceFactor(0); A->SetBalanceFactor(0); break;
    }
    B->SetBalanceFactor(0);
    Top = B;
  }
  if (!F)
    LinkRoot(Top);
  else
    F->LinkSide(F->FLeft == S ? F->FLeft : F->FRight, Top);
  return Top;
}

THBNode* TGHeightBalancedTree::FindNode(THBNode*& AParent, std::int32_t Priority, const TObject* Item) const {
  AParent = nullptr;
  THBNode* Current = GetRoot();
  while (Current && Current->GetPriority() != Priority) {
    AParent = Current;
    Current = Current->GetPriority() > Priority ? Current->GetHBLeft() : Current->GetHBRight();
  }
  return Current && Current->GetItem() == Item ? Current : nullptr;
}

void TGHeightBalancedTree::Delete(TObject* Item, std::int32_t Priority) { Delete(Item, Priority, GetRoot()); }

void TGHeightBalancedTree::Delete(TObject* Item, std::int32_t Priority, THBNode* ANode) {
  THBNode* Parent;
  // Each round is what one nested call would do. A call below the root would wait for ever,
  // and a second round at the root or from null repeats the first exactly.
  for (int Round = 0;; ++Round) {
    if (static_cast<const TObject*>(ANode) == Item) {
      if (!ANode) RaiseNullAccess(u"start node of the deletion");
      if (ANode->GetPriority() == Priority) ANode = FindNode(Parent, Priority, Item);
    }
    if (ANode && ANode != TGCustomTree::GetRoot()) throw ETreeException(SDeleteNotAtRoot);
    if (Round > 0) throw ETreeException(SDeleteRepeats);
    THBNode* N = FindNode(Parent, Priority, Item);
    if (!N) return;
    THBNode* C = !N->GetLeft() ? N->GetHBRight() : !N->GetRight() ? N->GetHBLeft() : N;
    if (!C) RaiseNullAccess(u"child of the node found (it is a leaf)");
    if (C->GetPriority() < Priority)
      ANode = C->GetHBRight();
    else if (C->GetPriority() > Priority)
      ANode = C->GetHBLeft();
    else
      return;
  }
}

}  // namespace kz
