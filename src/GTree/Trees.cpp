#include <algorithm>

#include "GTree/Trees.h"

namespace kz {

using namespace Runtime;
using namespace GTree;

// ---- TGCustomTreeNode ---------------------------------------------------------------------

TGCustomTreeNode::TGCustomTreeNode(TGCustomTree* AOwner) : FOwner(AOwner) {}

TGCustomTreeNode::TGCustomTreeNode(TGCustomTree* AOwner, TObject* AItem) : FItem(AItem), FOwner(AOwner) {}

TGCustomTreeNode::~TGCustomTreeNode() = default;

TPersistent* TGCustomTreeNode::GetOwner() { return FOwner; }

TGCustomTreeNode* TGCustomTreeNode::GetParent() const {
  if (!FOwner) RaiseNullAccess(u"owner tree of the node");
  return FOwner->GetParentNode(this);
}

void TGCustomTreeNode::Change() {
  if (FOwner) FOwner->Change(this);
}

void TGCustomTreeNode::AssignFields(const TGCustomTreeNode* Source) {
  if (!Source) RaiseNullAccess(u"source node");
  FItem = Source->FItem;
}

std::int32_t TGCustomTreeNode::IndexOf(const TGCustomTreeNode* Node) const {
  const std::int32_t Count = GetChildCount();
  for (std::int32_t I = 0; I < Count; ++I)
    if (GetChild(I) == Node) return I;
  return -1;
}

bool TGCustomTreeNode::HasAncestor(const TGCustomTreeNode* Node) const {
  for (const TGCustomTreeNode* P = this; P; P = P->FLinkParent)
    if (P == Node) return true;
  return false;
}

void TGCustomTreeNode::CheckLinkable(const TGCustomTreeNode* ANode) const {
  if (!ANode) return;
  if (ANode == this) throw ETreeException(SNodeCycle);
  if (!ANode->IsFree()) throw ETreeException(SNodeAlreadyLinked);
  // A free node with children may hold this node in its subtree; a leaf cannot.
  if (ANode->GetChildCount() > 0 && HasAncestor(ANode)) throw ETreeException(SNodeCycle);
}

void TGCustomTreeNode::Linked(TGCustomTreeNode* ANode) {
  if (!ANode) return;
  if (ANode->FKept) ANode->FOwner->Unkeep(ANode);
  ANode->FLinkParent = this;
}

void TGCustomTreeNode::Unlinked(TGCustomTreeNode* Old) {
  // InsertParent relinks the node before its old slot is overwritten: then it is not ours.
  if (!Old || Old->FLinkParent != this) return;
  if (!Old->FOwner) {
    Old->FLinkParent = nullptr;
    delete Old;  // nobody could keep it
    return;
  }
  Old->FOwner->Keep(Old);
  Old->FLinkParent = nullptr;
}

void TGCustomTreeNode::FreeDescendants() noexcept {
  // The nodes waiting to be freed are chained through their (no longer needed) link record,
  // so tearing down needs neither recursion nor memory.
  TGCustomTreeNode* Pending = nullptr;
  auto TakeChildren = [&Pending](TGCustomTreeNode* N) {
    for (std::int32_t I = N->GetChildCount() - 1; I >= 0; --I) {
      TGCustomTreeNode* C = N->GetChild(I);
      N->DetachChild(I);
      if (C) {
        C->FLinkParent = Pending;
        Pending = C;
      }
    }
  };
  TakeChildren(this);
  while (Pending) {
    TGCustomTreeNode* N = Pending;
    Pending = N->FLinkParent;
    N->FLinkParent = nullptr;
    TakeChildren(N);
    delete N;
  }
}

std::int32_t& TGCustomTreeNode::WalksOf(const TGCustomTreeNode* Node) {
  thread_local std::int32_t NoTree = 0;
  return Node->FOwner ? Node->FOwner->FWalks : NoTree;
}

void TGCustomTreeNode::ReleaseChildren(TGCustomTreeNode* Start, std::int32_t First, std::int32_t Last) {
  if (WalksOf(Start) > 0) throw ETreeException(SFreeDuringWalk);
  // The notifications below must not free what the stack still points at.
  TRestoreValue Busy(WalksOf(Start), WalksOf(Start) + 1);
  struct TFrame {
    TGCustomTreeNode* Node;
    std::int32_t Next;
    std::int32_t First;
  };
  // The frame's child at Next has been emptied: free it, drop its slot, tell the parent.
  auto FreeChild = [](TFrame& F, TGCustomTreeNode* C) {
    F.Node->DetachChild(F.Next);
    if (C) {
      C->FLinkParent = nullptr;
      delete C;
    }
    --F.Next;
    F.Node->Change();
  };
  std::vector<TFrame> Stack{{Start, Last, First}};
  for (;;) {
    TFrame& F = Stack.back();
    if (F.Next >= F.First) {
      TGCustomTreeNode* C = F.Node->GetChild(F.Next);
      if (C && C->GetChildCount() > 0) {
        Stack.push_back({C, C->GetChildCount() - 1, 0});
        continue;
      }
      if (C) C->Change();  // the leaf's own Clear
      FreeChild(F, C);
      continue;
    }
    if (Stack.size() == 1) return;
    TGCustomTreeNode* Done = F.Node;
    Stack.pop_back();
    Done->Change();
    FreeChild(Stack.back(), Done);
  }
}

void TGCustomTreeNode::Clear() {
  const std::int32_t Count = GetChildCount();
  if (Count > 0) ReleaseChildren(this, 0, Count - 1);
  Change();
}

void TGCustomTreeNode::DeleteChild(TGCustomTreeNode* Node) {
  const std::int32_t Index = IndexOf(Node);
  if (Index < 0) throw ETreeException(SUnknownTreeNode);
  ReleaseChildren(this, Index, Index);
}

TGCustomTreeNode* TGCustomTreeNode::NewChild() {
  if (!FOwner) RaiseNullAccess(u"owner tree of the node");
  std::unique_ptr<TGCustomTreeNode> Node = FOwner->NewNode();
  AddChild(Node.get());
  TGCustomTreeNode* Result = Node.release();
  Change();
  return Result;
}

TGCustomTreeNode* TGCustomTreeNode::NewCopyChild(const TGCustomTreeNode*, std::int32_t) { return NewChild(); }

void TGCustomTreeNode::CopyChildren(TGCustomTreeNode* Dest, const TGCustomTreeNode* Source) {
  struct TFrame {
    TGCustomTreeNode* Dest;
    const TGCustomTreeNode* Source;
    std::int32_t Next;
    std::int32_t End;
  };
  TRestoreValue DestBusy(WalksOf(Dest), WalksOf(Dest) + 1);
  TRestoreValue SourceBusy(WalksOf(Source), WalksOf(Source) + 1);
  std::vector<TFrame> Stack{{Dest, Source, 0, Source->GetChildCount()}};
  while (!Stack.empty()) {
    TFrame& F = Stack.back();
    if (F.Next >= F.End) {
      Stack.pop_back();
      continue;
    }
    const std::int32_t I = F.Next++;
    const TGCustomTreeNode* From = F.Source->GetChild(I);
    TGCustomTreeNode* To = F.Dest->NewCopyChild(F.Source, I);
    // What To->Assign(From) does, with the children left to this loop.
    if (!From) To->Assign(nullptr);
    To->Clear();
    To->AssignFields(From);
    Stack.push_back({To, From, 0, From->GetChildCount()});
  }
}

void TGCustomTreeNode::AddChildren(TGCustomTreeNode* ANode) {
  if (!ANode) RaiseNullAccess(u"source node");
  if (ANode != this && HasAncestor(ANode)) throw ETreeException(SCopyIntoSubtree);
  CopyChildren(this, ANode);
}

void TGCustomTreeNode::Assign(TPersistent* Source) {
  auto* From = dynamic_cast<TGCustomTreeNode*>(Source);
  if (!From) return inherited::Assign(Source);
  if (From != this && (HasAncestor(From) || From->HasAncestor(this))) throw ETreeException(SCopyIntoSubtree);
  Clear();
  AssignFields(From);
  CopyChildren(this, From);
}

TGCustomTreeNode* TGCustomTreeNode::InsertParent(TGCustomTreeNode* Node) {
  if (!Node) RaiseNullAccess(u"new parent node");
  if (Node == this) throw ETreeException(SNodeCycle);
  if (!Node->IsFree()) throw ETreeException(SNodeAlreadyLinked);
  if (Node->GetChildCount() > 0 && HasAncestor(Node)) throw ETreeException(SNodeCycle);
  // Found before Node takes this node, so a failure leaves everything as it was.
  TGCustomTreeNode* P = GetParent();
  if (!P) RaiseNullAccess(u"parent of the node (the root has none)");
  TGCustomTreeNode* Saved = FLinkParent;
  FLinkParent = nullptr;  // lets Node take this node while it still sits in P
  TGCustomTreeNode* Result;
  try {
    Result = Node->AddChild(this);
  } catch (...) {
    FLinkParent = Saved;
    throw;
  }
  P->SetChild(P->IndexOf(this), Node);
  return Result;
}

// ---- TGTreeNode ---------------------------------------------------------------------------

TGTreeNode::TGTreeNode(TGCustomTree* AOwner) : TGCustomTreeNode(AOwner) {}

TGTreeNode::TGTreeNode(TGCustomTree* AOwner, TObject* AItem) : TGCustomTreeNode(AOwner, AItem) {}

TGTreeNode::~TGTreeNode() { FreeDescendants(); }

void TGTreeNode::CheckIndex(std::int32_t Index, std::size_t Limit) const {
  if (Index < 0 || static_cast<std::size_t>(Index) >= Limit) throw EArgumentOutOfRangeException(SArgumentOutOfRange);
}

TGCustomTreeNode* TGTreeNode::GetChild(std::int32_t Index) const {
  CheckIndex(Index, FChildren.size());
  return FChildren[static_cast<std::size_t>(Index)];
}

void TGTreeNode::SetChild(std::int32_t Index, TGCustomTreeNode* ANode) {
  CheckIndex(Index, FChildren.size());
  ReplaceInSlot(FChildren[static_cast<std::size_t>(Index)], ANode);
}

std::int32_t TGTreeNode::GetChildCount() const { return static_cast<std::int32_t>(FChildren.size()); }

TGCustomTreeNode* TGTreeNode::AddChild(TGCustomTreeNode* ANode) {
  CheckLinkable(ANode);
  FChildren.push_back(ANode);
  Linked(ANode);
  Change();
  return ANode;
}

std::int32_t TGTreeNode::IndexOf(const TGCustomTreeNode* Node) const {
  const auto It = std::find(FChildren.begin(), FChildren.end(), Node);
  return It == FChildren.end() ? -1 : static_cast<std::int32_t>(It - FChildren.begin());
}

TGCustomTreeNode* TGTreeNode::InsertChild(std::int32_t Index) {
  CheckIndex(Index, FChildren.size() + 1);
  if (!GetTree()) RaiseNullAccess(u"owner tree of the node");
  std::unique_ptr<TGCustomTreeNode> Node = GetTree()->NewNode();
  FChildren.insert(FChildren.begin() + Index, Node.get());
  Linked(Node.get());
  return Node.release();
}

void TGTreeNode::DetachChild(std::int32_t Index) { FChildren.erase(FChildren.begin() + Index); }

TGTree* TGTreeNode::GetTreeOwner() const { return As<TGTree>(GetTree()); }

TGTreeNode* TGTreeNode::GetTreeParent() const { return As<TGTreeNode>(GetParent()); }

TGTreeNode* TGTreeNode::GetTreeChild(std::int32_t Index) const { return As<TGTreeNode>(GetChild(Index)); }

// ---- TGCustomTree -------------------------------------------------------------------------

TGCustomTree::TGCustomTree() = default;

TGCustomTree::~TGCustomTree() {
  try {
    Clear();
  } catch (...) {
    // A destructor cannot report; the nodes are freed below all the same.
  }
  if (FRoot) {
    FRoot->FIsRoot = false;
    delete FRoot;
  }
  for (TGCustomTreeNode* Node : FKept) {
    Node->FKept = false;
    delete Node;
  }
}

void TGCustomTree::SetNodeType(TTreeNodeClass Value) {
  if (FRoot) throw ETreeException(SNodeTypeLocked);
  FNodeType = Value;
}

void TGCustomTree::SetRoot(TGCustomTreeNode* Value) {
  if (Value == FRoot) return;
  if (Value && !Value->IsFree()) throw ETreeException(SNodeAlreadyLinked);
  if (FRoot && FWalks > 0) throw ETreeException(SFreeDuringWalk);
  WithinUpdate(*this, [&] {
    if (TGCustomTreeNode* Old = FRoot) {
      const std::int32_t Count = Old->GetChildCount();
      if (Count > 0) TGCustomTreeNode::ReleaseChildren(Old, 0, Count - 1);
      Old->Change();  // the end of the old root's own Clear
      FRoot = nullptr;
      Old->FIsRoot = false;
      delete Old;
    }
    LinkRoot(Value);
  });
}

void TGCustomTree::LinkRoot(TGCustomTreeNode* Value) {
  if (FRoot) FRoot->FIsRoot = false;
  FRoot = Value;
  if (!Value) return;
  if (Value->FKept) Value->FOwner->Unkeep(Value);
  Value->FLinkParent = nullptr;
  Value->FIsRoot = true;
}

std::int32_t TGCustomTree::GetCount() const { return FRoot ? FRoot->GetChildCount() + 1 : 0; }

TGCustomTreeNode* TGCustomTree::GetParentNode(const TGCustomTreeNode* Node) const {
  if (!Node) RaiseNullAccess(u"node");
  if (Node->FOwner != this) throw ETreeException(SOwnerMismatch);
  return FindNode(FRoot, Node, toPreOrder);
}

void TGCustomTree::Change(TObject* Sender) {
  if (FOnChange && !FUpdateCount.Updating()) FOnChange(Sender);
}

void TGCustomTree::Changing(TObject* Sender) {
  if (FOnChanging && !FUpdateCount.Updating()) FOnChanging(Sender);
}

void TGCustomTree::BeginUpdate() {
  if (!FUpdateCount.Updating()) Changing(this);
  FUpdateCount.Begin();
}

void TGCustomTree::EndUpdate() {
  if (FUpdateCount.End()) Change(this);
}

void TGCustomTree::Clear() {
  if (FRoot && FWalks > 0) throw ETreeException(SFreeDuringWalk);  // before any notification
  WithinUpdate(*this, [&] { SetRoot(nullptr); });
}

void TGCustomTree::Delete(TGCustomTreeNode* Node) {
  TGCustomTreeNode* Parent = GetParentNode(Node);
  if (!Parent) RaiseNullAccess(u"parent of the node (the root has none)");
  Parent->DeleteChild(Node);
}

std::unique_ptr<TGCustomTreeNode> TGCustomTree::NewNode() {
  if (!FNodeType) RaiseNullAccess(u"node type of the tree");
  return FNodeType->Create(this);
}

void TGCustomTree::Keep(TGCustomTreeNode* Node) {
  FKept.push_back(Node);
  Node->FKept = true;
}

void TGCustomTree::Unkeep(TGCustomTreeNode* Node) {
  // Searched from the back: a node is usually taken back soon after it was put there.
  const auto It = std::find(FKept.rbegin(), FKept.rend(), Node);
  if (It != FKept.rend()) FKept.erase(std::next(It).base());
  Node->FKept = false;
}

bool TGCustomTree::Walk(TGCustomTreeNode* Node, TTraversalOrder Order, const TTreeVisitor& Visit) const {
  TRestoreValue Walking(FWalks, FWalks + 1);
  switch (Order) {
    case toPreOrder: return Prefix(Node, Visit);
    case toInOrder: return Infix(Node, Visit);
    case toPostOrder: return Postfix(Node, Visit);
  }
  return false;
}

namespace {
// Walks Node's subtree on an explicit stack, visiting each node once the first
// VisitAfter(node) of its children's subtrees have been walked. True when Visit stopped it.
template <class TVisitAfter>
bool WalkSubtree(TGCustomTreeNode* Node, const TGCustomTree::TTreeVisitor& Visit, TVisitAfter VisitAfter) {
  struct TFrame {
    TGCustomTreeNode* Node;
    std::int32_t Next;
    bool Visited;
  };
  if (!Node) return false;
  std::vector<TFrame> Stack{{Node, 0, false}};
  while (!Stack.empty()) {
    TFrame& F = Stack.back();
    if (!F.Visited && F.Next >= VisitAfter(F.Node)) {
      F.Visited = true;
      if (Visit(F.Node)) return true;
    } else if (F.Next < F.Node->GetChildCount()) {
      if (TGCustomTreeNode* C = F.Node->GetChild(F.Next++)) Stack.push_back({C, 0, false});
    } else {
      Stack.pop_back();
    }
  }
  return false;
}
}  // namespace

bool TGCustomTree::Prefix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const {
  return WalkSubtree(Node, Visit, [](const TGCustomTreeNode*) { return 0; });
}

bool TGCustomTree::Postfix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const {
  return WalkSubtree(Node, Visit, [](const TGCustomTreeNode* N) { return N->GetChildCount(); });
}

bool TGCustomTree::Infix(TGCustomTreeNode* Node, const TTreeVisitor& Visit) const {
  // The first child's subtree, the node, then the other children's subtrees.
  return WalkSubtree(Node, Visit, [](const TGCustomTreeNode* N) { return N->GetChildCount() > 0 ? 1 : 0; });
}

void TGCustomTree::Traverse(TGCustomTreeNode* CurrentNode, const TTreeIterator& Iterator, TTraversalOrder Order,
                            std::int32_t ATag) const {
  if (!Iterator) RaiseNullAccess(u"tree iterator");
  Walk(CurrentNode, Order, [&](TGCustomTreeNode* N) {
    Iterator(N, ATag);
    return false;
  });
}

TGCustomTreeNode* TGCustomTree::FirstMatch(TGCustomTreeNode* CurrentNode, TTraversalOrder Order,
                                           const std::function<bool(const TGCustomTreeNode*)>& Matches) const {
  MatchObject = nullptr;
  // Stopping is a plain answer from the visitor: no signal has to be thrown and caught.
  Walk(CurrentNode, Order, [&](TGCustomTreeNode* N) {
    if (!Matches(N)) return false;
    MatchObject = N;
    return true;
  });
  return MatchObject;
}

TGCustomTreeNode* TGCustomTree::FindNode(TGCustomTreeNode* CurrentNode, const TGCustomTreeNode* Node,
                                         TTraversalOrder Order) const {
  return FirstMatch(CurrentNode, Order, [Node](const TGCustomTreeNode* N) { return N->IndexOf(Node) > -1; });
}

TGCustomTreeNode* TGCustomTree::FindItemNode(TGCustomTreeNode* CurrentNode, const TObject* Item,
                                             TTraversalOrder Order) const {
  return FirstMatch(CurrentNode, Order, [Item](const TGCustomTreeNode* N) { return N->GetItem() == Item; });
}

bool TGCustomTree::IsLeaf(const TGCustomTreeNode* Node) const {
  if (!Node) RaiseNullAccess(u"node");
  return Node->GetChildCount() == 0;
}

void TGCustomTree::Assign(TPersistent* Source) {
  auto* From = dynamic_cast<TGCustomTree*>(Source);
  if (!From) return inherited::Assign(Source);
  WithinUpdate(*this, [&] {
    std::unique_ptr<TGCustomTreeNode> Fresh = NewNode();
    SetRoot(Fresh.get());
    Fresh.release();
    FRoot->Assign(From->FRoot);
  });
}

void TGCustomTree::AssignTo(TList* Dest) const {
  if (!Dest) RaiseNullAccess(u"destination list");
  Dest->Clear();
  Walk(FRoot, toPreOrder, [&](TGCustomTreeNode* N) {
    Dest->Add(N->GetItem());
    return false;
  });
}

// ---- TGTree -------------------------------------------------------------------------------

TGTree::TGTree() { SetNodeType(&TGTreeNode::ClassInfo()); }

TGTreeNode* TGTree::GetRoot() const { return As<TGTreeNode>(inherited::GetRoot()); }

}  // namespace kz
