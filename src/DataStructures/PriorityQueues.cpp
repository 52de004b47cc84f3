#include "DataStructures/PriorityQueues.h"

#include <limits>
#include <memory>
#include <unordered_set>
#include <vector>

#include "DataStructures/internal/HeapCore.h"

namespace kz {

using namespace Runtime;
using namespace DataStructures;

namespace {
[[noreturn]] void QueueEmpty() { throw Exception(SQueueEmpty); }
}  // namespace

TObject* TPriorityQueue::Peek() const {
  if (HeapCount() == 0) QueueEmpty();
  return GetElement(0)->GetItem();
}

TObject* TIntPriorityQueue::Peek() const {
  if (HeapCount() == 0) QueueEmpty();
  return GetElement(0)->GetItem();
}

TObject* TFloatPriorityQueue::Peek() const {
  if (HeapCount() == 0) QueueEmpty();
  return GetElement(0)->GetItem();
}

TIntfPtr<IInterface> TIPriorityQueue::Peek() const {
  if (GetCount() == 0) QueueEmpty();
  return GetItem(0);
}

// ---- TPriorityList ----

TPriorityList::TPriorityList(TKZObjectOrderedListClass OrderedListClass) : FOrderedListClass(OrderedListClass) {
  if (!OrderedListClass) RaiseNullAccess(u"ordered list class");
}

TPriorityList::~TPriorityList() { Clear(); }

TKZObjectOrderedList* TPriorityList::ListAt(std::int32_t HeapIndex) const {
  auto* List = dynamic_cast<TKZObjectOrderedList*>(GetElement(HeapIndex)->GetItem());
  if (!List) throw EInvalidCast(SInvalidCast);  // an entry put in through the plain heap
  return List;
}

void TPriorityList::Add(TObject* Item, std::int32_t Priority) {
  if (FCount == std::numeric_limits<std::int32_t>::max()) throw EListError(SListCountError, {FCount});
  const std::int32_t I = IndexOf(Priority);
  if (I == -1) {
    std::unique_ptr<TKZObjectOrderedList> New = FOrderedListClass->Create();
    New->Push(Item);  // before the heap sees the container, so a failure leaves nothing behind
    TIntHeap::Add(New.get(), Priority);
    New.release();
  } else {
    ListAt(I)->Push(Item);
  }
  FLastList = nullptr;
  ++FCount;
}

TObject* TPriorityList::Locate(std::int32_t Index) const {
  if (Index < 0 || Index >= FCount) throw EListError(SListIndexError, {Index});
  if (Index == 0) {
    TKZObjectOrderedList* Top = ListAt(0);
    return Top->GetItem(Top->GetCount() - 1);
  }
  TIntHeap Copy;
  Copy.Assign(const_cast<TPriorityList*>(this));  // raises EOutOfMemory itself
  FLastIndex = Index;
  FLastListIndex = 0;
  auto Next = [&Copy] {
    auto* List = dynamic_cast<TKZObjectOrderedList*>(Copy.Delete(0));
    if (!List) throw EInvalidCast(SInvalidCast);
    return List;
  };
  do {
    FLastList = Next();
    Index -= FLastList->GetCount();
    if (Index == 0) FLastList = Next();
  } while (Index >= 1);
  FLastListIndex = Index == 0 ? FLastList->GetCount() - 1 : -Index - 1;
  return FLastList->GetItem(FLastListIndex);
}

TObject* TPriorityList::GetItem(std::int32_t Index) const { return Locate(Index); }

void TPriorityList::SetItem(std::int32_t Index, TObject* Item) {
  TObject* Old = Locate(Index);
  if (Index == 0) {
    FLastList = ListAt(0);
    FLastListIndex = FLastList->GetCount() - 1;
  }
  FLastList->SetItem(FLastListIndex, Item);
  if (FFreeIfNoPop && Old != Item) FreeItem(Old);
}

TObject* TPriorityList::Delete(std::int32_t Index) {
  if (Index == 0) {
    if (FCount <= 0) throw EListError(SListIndexError, {Index});
    TKZObjectOrderedList* Top = ListAt(0);
    TObject* Result = Top->Pop();
    --FCount;
    if (Top->IsEmpty()) {
      TIntHeap::Delete(0);
      FreeList(Top);
    }
    return Result;
  }
  TObject* Result = Locate(Index);
  TKZObjectOrderedList* List = FLastList;
  --FCount;
  List->Delete(FLastListIndex);
  if (FFreeIfNoPop) {
    FreeItem(Result);
    Result = nullptr;
  }
  if (List->IsEmpty()) {
    const std::int32_t Entry = IndexOf(List);  // finds it only at priority 0
    if (Entry >= 0) {
      TIntHeap::Delete(Entry);
      FreeList(List);
    }
  }
  return Result;
}

void TPriorityList::FreeList(TKZObjectOrderedList* List) {
  if (FLastList == List) FLastList = nullptr;
  delete List;
}

void TPriorityList::FreeItem(TObject* Item) {
  if (!Item) return;
  for (const TSlot& E : FHeap)
    if (auto* List = dynamic_cast<TKZObjectOrderedList*>(E.Element->GetItem()); List && List->Contains(Item)) return;
  delete Item;
}

void TPriorityList::Clear() {
  std::unordered_set<TObject*> Freed;
  for (const TSlot& Slot : FHeap) {
    THeapElement* E = Slot.Element;
    auto* List = dynamic_cast<TKZObjectOrderedList*>(E->GetItem());
    if (!List) continue;
    if (FFreeIfNoPop)
      while (!List->IsEmpty())
        if (TObject* Item = List->Pop(); Item && Freed.insert(Item).second) delete Item;
    E->SetItem(nullptr);
    delete List;
  }
  FLastList = nullptr;
  TIntHeap::Clear();
}

void TPriorityList::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TPriorityList*>(Source);
  if (!Other) AssignError(Source);
  if (Other == this) {
    Clear();
    return;
  }
  std::vector<std::unique_ptr<TKZObjectOrderedList>> Lists;
  Lists.reserve(Other->FHeap.size());
  for (std::int32_t I = 0; I < Other->HeapCount(); ++I) Lists.push_back(Other->ListAt(I)->Clone());
  TIntHeap::Assign(Source);
  for (std::size_t I = 0; I < Lists.size(); ++I) FHeap[I].Element->SetItem(Lists[I].release());
}

}  // namespace kz
