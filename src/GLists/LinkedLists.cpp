#include "GLists/GLists.h"

#include <new>
#include <utility>

#include "GLists/internal/FreshNode.h"
#include "GLists/NodePool.h"
#include "Runtime/Lists.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

using namespace Runtime;
using namespace GLists;

namespace detail {
// A node a list took from elsewhere: the ring of these keeps the order of adoption, in which
// they are freed (their classes may watch it).
struct TOwnRecord {
  TGCustomLinkedList* List;
  TSQNode* Node;
  std::uintptr_t Word;  // the node's store word, put back before the node is freed
  TOwnRecord* Prev;
  TOwnRecord* Next;
};
}  // namespace detail

namespace {
// A class not recognised here is only treated as foreign, which is always safe.
bool IsLibraryNode(const TSQNode& Node) {
  return IsExactly<TSQNode>(&Node) || IsExactly<TSQStringNode>(&Node) || IsExactly<TSQPriorityNode>(&Node) ||
         IsExactly<TSQPriorityStringNode>(&Node) || IsExactly<TSQDoubleNode>(&Node);
}
}  // namespace

// ---------------------------------------------------------------------------------------------
// Nodes

TSQNode::~TSQNode() = default;

TGCustomLinkedList* TSQNode::GetOwnerList() const {
  const std::uintptr_t Word = detail::TNodePool::Word(this);
  if (Word & detail::OwnRecord) return reinterpret_cast<const detail::TOwnRecord*>(Word & ~detail::OwnMarks)->List;
  if (Word & detail::OwnStore) return detail::TNodePool::PoolOf(Word)->List();
  return nullptr;
}

void* TSQNode::operator new(std::size_t Size) { return detail::TNodePool::Allocate(Size, nullptr); }
void* TSQNode::operator new(std::size_t Size, detail::TNodePool* Pool) { return detail::TNodePool::Allocate(Size, Pool); }
void TSQNode::operator delete(void* P, std::size_t Size) noexcept { detail::TNodePool::Free(P, Size); }
void TSQNode::operator delete(void* P, detail::TNodePool*) noexcept { detail::TNodePool::Abandon(P); }

void TSQNode::Assign(TPersistent* Source) {
  if (auto* Node = dynamic_cast<TSQNode*>(Source))
    FItem = Node->FItem;
  else
    inherited::Assign(Source);
}

void TSQStringNode::Assign(TPersistent* Source) {
  if (auto* Node = dynamic_cast<TSQStringNode*>(Source)) FValue = Node->FValue;
  inherited::Assign(Source);
}

// ---------------------------------------------------------------------------------------------
// Ownership, enumerators and walking

TGCustomLinkedList::~TGCustomLinkedList() {
  FOnChange = nullptr;
  NoteInline();
  FreeAll();
  for (TGCustomLinkedListEnumerator* E = FEnumerators; E; E = E->FNextEnum) E->FList = nullptr;
  delete FSpareRecord;
  if (FPool) FPool->Release();
}

TGCustomLinkedList::TExact TGCustomLinkedList::FindExact() const {
  if (IsExactly<TGQueue>(this))
    FExact = TExact::Queue;
  else if (IsExactly<TGStack>(this))
    FExact = TExact::Stack;
  else if (IsExactly<TGCustomLinkedList>(this) || IsExactly<TGLinkedList>(this) || IsExactly<TGStringQueue>(this) ||
           IsExactly<TGStringStack>(this) || IsExactly<TGPriorityQueue>(this) || IsExactly<TGPriorityStringQueue>(this))
    FExact = TExact::List;
  else
    FExact = TExact::Other;
  NoteInline();
  return FExact;
}

detail::TNodePool* TGCustomLinkedList::MakeNodePool() const {
  FPool = new detail::TNodePool(const_cast<TGCustomLinkedList*>(this));
  NoteInline();
  return FPool;
}

void TGCustomLinkedList::CheckFree(const TSQNode* ANode) {
  if (!ANode) RaiseNullAccess(u"list node");
  if (detail::TNodePool::Word(ANode) & (detail::OwnRecord | detail::OwnStore)) throw EListError(SNodeInList);
  PrepareAdopt(ANode);
}

bool TGCustomLinkedList::InOwnStore(const TSQNode* ANode) const noexcept {
  return FPool && detail::TNodePool::Word(ANode) == reinterpret_cast<std::uintptr_t>(FPool) && IsLibraryNode(*ANode);
}

void TGCustomLinkedList::PrepareAdopt(const TSQNode* ANode) {
  if (FSpareRecord || InOwnStore(ANode)) return;
  FSpareRecord = new detail::TOwnRecord{};
}

void TGCustomLinkedList::Adopt(TSQNode* ANode) noexcept {
  if (ANode == FFresh) FFreshState |= fsAdopted;
  ++FOwnedCount;
  if (InOwnStore(ANode)) {
    detail::TNodePool::Word(ANode) |= detail::OwnStore | (IsExactly<TSQNode>(ANode) ? detail::OwnPlain : 0);
    return;
  }
  detail::TOwnRecord* R = std::exchange(FSpareRecord, nullptr);
  R->List = this;
  R->Node = ANode;
  R->Word = detail::TNodePool::Word(ANode);
  if (FRecords) {
    R->Next = FRecords;
    R->Prev = FRecords->Prev;
    FRecords->Prev->Next = R;
    FRecords->Prev = R;
  } else {
    R->Next = R->Prev = R;
    FRecords = R;
  }
  ++FRecordCount;
  detail::TNodePool::Word(ANode) = reinterpret_cast<std::uintptr_t>(R) | detail::OwnRecord;
}

void TGCustomLinkedList::DropRecord(detail::TOwnRecord* Record) noexcept {
  detail::TNodePool::Word(Record->Node) = Record->Word;
  if (Record->Next == Record) {
    FRecords = nullptr;
  } else {
    Record->Prev->Next = Record->Next;
    Record->Next->Prev = Record->Prev;
    if (FRecords == Record) FRecords = Record->Next;
  }
  --FRecordCount;
  delete Record;
}

void TGCustomLinkedList::Keep(TSQNode* ANode) {
  FKept.push_back(ANode);
  NoteInline();
}

void TGCustomLinkedList::NodeLeaving(TSQNode* ANode) noexcept {
  for (TGCustomLinkedListEnumerator* E = FEnumerators; E; E = E->FNextEnum)
    if (E->FNode == ANode) {
      E->FNode = ANode->FNext;
      E->FPending = true;
    }
}

void TGCustomLinkedList::KeptLinksPast(TSQNode* ANode) noexcept {
  for (TSQNode* K : FKept) {
    if (K->FNext == ANode) K->FNext = ANode->FNext;
    if (auto* D = dynamic_cast<TSQDoubleNode*>(K))
      if (D->GetPrevious() == ANode) D->SetPrevious(static_cast<TSQDoubleNode*>(ANode)->GetPrevious());
  }
}

void TGCustomLinkedList::FreeNode(TSQNode* ANode) noexcept {
  // The rare cases out of line, so that the common free stays small enough to inline.
  if (FEnumerators) NodeLeaving(ANode);
  if (!FKept.empty()) KeptLinksPast(ANode);
  if (const std::uintptr_t Word = detail::TNodePool::Word(ANode); Word & detail::OwnRecord)
    DropRecord(reinterpret_cast<detail::TOwnRecord*>(Word & ~detail::OwnMarks));
  --FOwnedCount;
  if (ANode == FFresh) FFreshState |= fsFreed;
  delete ANode;
}

void TGCustomLinkedList::FreeAll() noexcept {
  for (TGCustomLinkedListEnumerator* E = FEnumerators; E; E = E->FNextEnum) {
    E->FNode = nullptr;
    E->FPending = false;
    E->FEnded = true;
  }
  // Nodes taken from elsewhere first, in the order the list took them; then those of the
  // store (the library's classes, whose destructors nobody sees), in address order.
  std::int32_t Left = FOwnedCount - FRecordCount;
  for (detail::TOwnRecord* R = FRecords; FRecordCount > 0; --FRecordCount) {
    detail::TOwnRecord* Following = R->Next;
    detail::TNodePool::Word(R->Node) = R->Word;
    delete R->Node;
    delete R;
    R = Following;
  }
  FRecords = nullptr;
  if (Left > 0 && FPool)
    FPool->ForEachLive([&](void* Node, std::uintptr_t Word) {
      if (!(Word & detail::OwnStore)) return true;
      delete static_cast<TSQNode*>(Node);
      return --Left > 0;
    });
  FOwnedCount = 0;
  FKept.clear();
  NoteInline();
  // Every owned node is gone, the one being added among them if the list had taken it.
  if (FFreshState & fsAdopted) FFreshState |= fsFreed;
}

TSQNode* TGCustomLinkedList::Step(TSQNode* N) {
  if (!N) RaiseNullAccess(u"list node");
  return N->FNext;
}

void TGCustomLinkedList::CheckSteps(std::int32_t Steps) const {
  if (Steps > FOwnedCount) throw EListError(SBrokenLinks);
}

TGCustomLinkedListEnumerator::TGCustomLinkedListEnumerator(TGCustomLinkedList* List) : FList(List) {
  if (!List) RaiseNullAccess(u"list");
  FNextEnum = List->FEnumerators;
  if (FNextEnum) FNextEnum->FPrevEnum = this;
  List->FEnumerators = this;
  List->NoteInline();
}

TGCustomLinkedListEnumerator::~TGCustomLinkedListEnumerator() {
  if (!FList) return;
  if (FPrevEnum)
    FPrevEnum->FNextEnum = FNextEnum;
  else
    FList->FEnumerators = FNextEnum;
  if (FNextEnum) FNextEnum->FPrevEnum = FPrevEnum;
  FList->NoteInline();
}

bool TGCustomLinkedListEnumerator::MoveNext() {
  if (!FList) RaiseNullAccess(u"list of the enumerator");
  if (FEnded) return false;
  if (FPending) {
    FPending = false;
    if (FNode) return true;
    FEnded = true;
    return false;
  }
  if (!FNode) {
    FNode = FList->FHead;
    return FNode != nullptr;
  }
  if (!FNode->FNext) return false;
  FNode = FNode->FNext;
  return true;
}

std::unique_ptr<TGCustomLinkedListEnumerator> TGCustomLinkedList::GetEnumerator() {
  return std::make_unique<TGCustomLinkedListEnumerator>(this);
}

// ---------------------------------------------------------------------------------------------
// TGCustomLinkedList

void TGCustomLinkedList::Change() { Changed(); }

void TGCustomLinkedList::BeginUpdate() { FUpdateCount.Begin(); }

void TGCustomLinkedList::EndUpdate() {
  const bool Closed = FUpdateCount.End();
  if (Closed || !FUpdateCount.Updating()) Change();
}

std::unique_ptr<TSQNode> TGCustomLinkedList::NewNode() const {
  return std::unique_ptr<TSQNode>(new (NodePool()) TSQNode());
}

TSQNode* TGCustomLinkedList::Add(TObject* AnObject) {
  detail::TFreshNode<TSQNode> Node(*this, NewNode().release());
  Node->SetItem(AnObject);
  AddNode(Node.get());
  return Node.release();
}

TSQNode* TGCustomLinkedList::AddNode(TSQNode* ANode) { return Insert(ANode, nullptr); }

TSQNode* TGCustomLinkedList::Insert(TSQNode* ANode, TSQNode* BeforeNode) {
  CheckFree(ANode);
  TSQNode* Prev = BeforeNode ? Find(BeforeNode) : nullptr;
  PrepareAdopt(ANode);  // again: an overriding Find may have adopted another node meanwhile
  LinkNode(ANode, BeforeNode, Prev);
  Change();
  return ANode;
}

TSQNode* TGCustomLinkedList::PushNewNodeSlow(TObject* Value, bool AtHead) {
  TSQNode* Before = AtHead ? FHead : nullptr;
  // Insert's Find of the head: the count check, then the head itself, with no predecessor.
  if (Before && FCount == 0) throw EListError(SListEmpty);
  auto* Node = new (NodePool()) TSQNode();
  LinkNode(Node, Before, nullptr);
  if (FOnChange) {
    // The handler runs before the item is stored and may free the node.
    const auto Watch = detail::TFreshNode<TSQNode>::Watch(*this, Node);
    Changed();
    Watch.Live()->FItem = Value;
  } else {
    Changed();
    Node->FItem = Value;
  }
  return Node;
}

void TGCustomLinkedList::DeleteHead() {
  // Find answers null for the head once Count and Head are checked.
  UnlinkNode(FHead, nullptr);
  Changed();
}

void TGCustomLinkedList::Delete(TSQNode* ANode) {
  if (!ANode) throw EListError(SInvalidIndex);
  UnlinkNode(ANode, Find(ANode));
  Change();
}

void TGCustomLinkedList::UnlinkNode(TSQNode* ANode, TSQNode* Prev) noexcept {
  if (Prev) {
    Prev->FNext = ANode->FNext;
    if (ANode == FTail) FTail = Prev;
  } else {
    FHead = ANode->FNext;
    if (ANode == FTail) FTail = nullptr;
  }
  FreeNode(ANode);
  --FCount;
  // The cursor goes back to the head (also off a node that was just freed).
  Reset();
}

TSQNode* TGCustomLinkedList::Find(TSQNode* ANode) const {
  if (FCount == 0) throw EListError(SListEmpty);
  if (!ANode) throw EListError(SInvalidIndex);
  TSQNode* Prev = nullptr;
  std::int32_t Steps = 0;
  for (TSQNode* N = FHead; N; N = N->FNext) {
    if (N == ANode) return Prev;
    CheckSteps(++Steps);
    Prev = N;
  }
  throw EListError(SNodeNotFound);
}

TSQNode* TGCustomLinkedList::GetNode(std::int32_t Index) const {
  if (Index < 0 || Index >= FCount) throw EListError(SInvalidIndex);
  TSQNode* N;
  std::int32_t Steps;
  if (0 <= FLastAccessedIndex && FLastAccessedIndex <= Index) {
    N = FLastAccessedNode;
    Steps = Index - FLastAccessedIndex;
  } else {
    N = FHead;
    Steps = Index;
  }
  for (; Steps > 0; --Steps) N = Step(N);
  if (!N) RaiseNullAccess(u"list node");
  FLastAccessedIndex = Index;
  FLastAccessedNode = N;
  return N;
}

void TGCustomLinkedList::SetNode(std::int32_t Index, TSQNode* Value) {
  TSQNode* Old = GetNode(Index);
  if (Value == Old) return;
  CheckFree(Value);
  Value->FNext = Old->FNext;
  TSQNode* Prev = Find(Old);
  PrepareAdopt(Value);  // again, as in Insert
  Keep(Old);
  if (!Prev)
    FHead = Value;
  else
    Prev->FNext = Value;
  Adopt(Value);
  // Old stays owned (and the cursor and perhaps the tail on it) until Clear.
  NodeLeaving(Old);
  Change();
}

void TGCustomLinkedList::AddCopies(TGCustomLinkedList* Source, bool CopyPriority) {
  if (!Source) RaiseNullAccess(u"source list");
  WithinUpdate(*this, [&] {
    TSQNode* N = Source->FHead;
    // Bounded by the source's count at the start, so that a list copied into itself ends.
    for (std::int32_t Left = Source->FCount; N && Left > 0; --Left) {
      detail::TFreshNode<TSQNode> Copy(*this, NewNode().release());
      Copy->Assign(N);
      if (CopyPriority) {
        if (auto* From = dynamic_cast<TSQPriorityNode*>(N))
          if (auto* To = dynamic_cast<TSQPriorityNode*>(Copy.get())) To->SetPriority(From->GetPriority());
        if (auto* From = dynamic_cast<TSQPriorityStringNode*>(N))
          if (auto* To = dynamic_cast<TSQPriorityStringNode*>(Copy.get())) To->SetPriority(From->GetPriority());
      }
      N = N->FNext;
      AddNode(Copy.get());
      Copy.release();
    }
  });
}

void TGCustomLinkedList::AddLinkedList(TGCustomLinkedList* LinkedList) { AddCopies(LinkedList, false); }

void TGCustomLinkedList::AddStackCopies(TGCustomLinkedList* Source) {
  if (!Source) RaiseNullAccess(u"source stack");
  TSQNode* OldHead = FHead;
  TSQNode* Prev = nullptr;
  TSQNode* N = Source->FHead;
  for (std::int32_t Left = Source->FCount; N && Left > 0; --Left) {
    std::unique_ptr<TSQNode> Copy = NewNode();
    Copy->Assign(N);
    PrepareAdopt(Copy.get());
    TSQNode* New = Copy.release();
    Adopt(New);
    if (!Prev)
      FHead = New;
    else
      Prev->FNext = New;
    New->FNext = OldHead;
    Prev = New;
    ++FCount;
    N = N->FNext;
  }
  if (!OldHead && Prev) FTail = Prev;
  Change();
}

void TGCustomLinkedList::Assign(TPersistent* Source) {
  if (auto* List = dynamic_cast<TGCustomLinkedList*>(Source)) {
    WithinUpdate(*this, [&] {
      Clear();
      AddLinkedList(List);
    });
  } else {
    inherited::Assign(Source);
  }
}

void TGCustomLinkedList::Assign(TList* Source) {
  if (!Source) return Assign(static_cast<TPersistent*>(nullptr));
  WithinUpdate(*this, [&] {
    Clear();
    for (std::int32_t I = 0; I < Source->GetCount(); ++I) Add(static_cast<TObject*>(Source->GetItem(I)));
  });
}

void TGCustomLinkedList::Clear() {
  std::int32_t Steps = 0;
  for (TSQNode* N = FHead; N && Steps < FOwnedCount; N = N->FNext, ++Steps) --FCount;
  FreeAll();
  if (FPool) FPool->Trim();
  FHead = nullptr;
  FTail = nullptr;
  FLastAccessedIndex = -1;
  FLastAccessedNode = nullptr;
  Change();
}

std::int32_t TGCustomLinkedList::IndexOfItem(const TObject* AnObject) const {
  Reset();
  for (std::int32_t Steps = 0; !EndOfList(); CheckSteps(++Steps))
    if (Next()->GetItem() == AnObject) return FLastAccessedIndex - 1;
  return -1;
}

TSQNode* TGCustomLinkedList::FindItem(const TObject* AnObject) const {
  std::int32_t Steps = 0;
  for (TSQNode* N = FHead; N; N = N->FNext, CheckSteps(++Steps))
    if (N->FItem == AnObject) return N;
  return nullptr;
}

void TGCustomLinkedList::Reset() const {
  FLastAccessedIndex = 0;
  FLastAccessedNode = FHead;
}

TSQNode* TGCustomLinkedList::Next() const {
  TSQNode* Result = FLastAccessedNode;
  if (!Result) throw EListError(SEndOfList);
  FLastAccessedIndex = static_cast<std::int32_t>(static_cast<std::uint32_t>(FLastAccessedIndex) + 1u);
  FLastAccessedNode = Result->FNext;
  return Result;
}

// ---------------------------------------------------------------------------------------------
// TGDoublyLinkedList

std::unique_ptr<TSQNode> TGDoublyLinkedList::NewNode() const {
  return std::unique_ptr<TSQNode>(new (NodePool()) TSQDoubleNode());
}

TSQNode* TGDoublyLinkedList::GetNode(std::int32_t Index) const {
  if (Index < 0 || Index >= FCount) throw EListError(SInvalidIndex);
  const std::int32_t FromTail = FCount - Index - 1;
  if (FromTail > Index) return inherited::GetNode(Index);
  TSQNode* N = FTail;
  for (std::int32_t Steps = FromTail; Steps > 0; --Steps) {
    if (!N) RaiseNullAccess(u"list node");
    N = As<TSQDoubleNode>(N)->FPrevious;
  }
  if (!N) RaiseNullAccess(u"list node");
  FLastAccessedIndex = Index;
  FLastAccessedNode = N;
  return N;
}

void TGDoublyLinkedList::SetNode(std::int32_t Index, TSQNode* Value) {
  auto* New = As<TSQDoubleNode>(Value);
  auto* Old = As<TSQDoubleNode>(GetNode(Index));
  if (New == Old) return;
  CheckFree(New);
  Keep(New);
  New->FNext = Old->FNext;
  New->FPrevious = Old->FPrevious;
  // The neighbours still point at Old, so Old stays where it is; New is kept, unlinked.
  Adopt(New);
  Change();
}

void TGDoublyLinkedList::Delete(TSQNode* ANode) {
  TSQNode* Prev = Find(ANode);
  TSQNode* Following = ANode->GetNext();
  WithinUpdate(*this, [&] {
    inherited::Delete(ANode);
    if (Following) As<TSQDoubleNode>(Following)->FPrevious = As<TSQDoubleNode>(Prev);
  });
}

TSQNode* TGDoublyLinkedList::Insert(TSQNode* ANode, TSQNode* BeforeNode) {
  auto* Node = As<TSQDoubleNode>(ANode);
  CheckFree(Node);
  // Checked before the update opens, so that a refused insert does not notify.
  if (BeforeNode) (void)Find(BeforeNode);
  WithinUpdate(*this, [&] {
    if (!BeforeNode) Node->FPrevious = As<TSQDoubleNode>(FTail);
    inherited::Insert(Node, BeforeNode);
    if (BeforeNode) {
      auto* Before = As<TSQDoubleNode>(BeforeNode);
      Node->FPrevious = Before->FPrevious;
      Before->FPrevious = Node;
    }
  });
  return Node;
}

}  // namespace kz
