#include "Runtime/Lists.h"

#include <algorithm>

#include "Runtime/ListStorage.h"

namespace kz {

using namespace Runtime;

// ---------------------------------------------------------------------------------------------
// TList

TList::~TList() { TList::Clear(); }

void TList::Error(const TResourceString& Msg, std::int32_t Data) { throw EListError(Msg, {Data}); }

std::int32_t TList::Add(Pointer Item) {
  const std::int32_t Result = GetCount();
  if (Result == FCapacity) Grow();
  FList.push_back(Item);
  if (Item) Notify(Item, lnAdded);
  return Result;
}

void TList::Insert(std::int32_t Index, Pointer Item) {
  if (Index < 0 || Index > GetCount()) Error(SListIndexError, Index);
  if (GetCount() == FCapacity) Grow();
  FList.insert(FList.begin() + Index, Item);
  if (Item) Notify(Item, lnAdded);
}

void TList::Delete(std::int32_t Index) {
  CheckIndex(Index);
  const Pointer Item = FList[static_cast<std::size_t>(Index)];
  FList.erase(FList.begin() + Index);
  if (Item) Notify(Item, lnDeleted);
}

std::int32_t TList::Remove(Pointer Item) {
  const std::int32_t Result = IndexOf(Item);
  if (Result >= 0) Delete(Result);
  return Result;
}

Pointer TList::Extract(Pointer Item) {
  const std::int32_t Index = IndexOf(Item);
  if (Index < 0) return nullptr;
  FList.erase(FList.begin() + Index);
  if (Item) Notify(Item, lnExtracted);
  return Item;
}

void TList::Clear() {
  SetCount(0);
  SetCapacity(0);
}

std::int32_t TList::IndexOf(Pointer Item) const {
  const auto Pos = std::find(FList.begin(), FList.end(), Item);
  return Pos == FList.end() ? -1 : static_cast<std::int32_t>(Pos - FList.begin());
}

Pointer TList::GetItem(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)];
}

void TList::SetItem(std::int32_t Index, Pointer Item) {
  CheckIndex(Index);
  Pointer& Slot = FList[static_cast<std::size_t>(Index)];
  if (Slot == Item) return;
  const Pointer Old = Slot;
  Slot = Item;
  if (Old) Notify(Old, lnDeleted);
  if (Item) Notify(Item, lnAdded);
}

void TList::Exchange(std::int32_t Index1, std::int32_t Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
}

void TList::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  const auto First = FList.begin();
  if (CurIndex < NewIndex)
    std::rotate(First + CurIndex, First + CurIndex + 1, First + NewIndex + 1);
  else
    std::rotate(First + NewIndex, First + CurIndex, First + CurIndex + 1);
}

void TList::Pack() { FList.erase(std::remove(FList.begin(), FList.end(), nullptr), FList.end()); }

void TList::Sort(const TListSortCompare& Compare) {
  if (!Compare) RaiseNullAccess(u"sort comparison");
  if (GetCount() < 2) return;
  auto ByIndex = [&](std::int32_t I, std::int32_t J) {
    return Compare(FList[static_cast<std::size_t>(I)], FList[static_cast<std::size_t>(J)]);
  };
  auto Swap = [&](std::int32_t I, std::int32_t J) {
    std::swap(FList[static_cast<std::size_t>(I)], FList[static_cast<std::size_t>(J)]);
  };
  detail::QuickSortPositions(0, GetCount() - 1, ByIndex, Swap);
}

TList* TList::Expand() {
  if (GetCount() == FCapacity) Grow();
  return this;
}

void TList::SetCount(std::int32_t NewCount) {
  if (NewCount < 0 || NewCount > detail::MaxListSize) Error(SListCountError, NewCount);
  if (NewCount > FCapacity) SetCapacity(NewCount);
  if (NewCount > GetCount()) {
    FList.resize(static_cast<std::size_t>(NewCount), nullptr);
    return;
  }
  // From the last down, through Delete, so that each departing item is notified.
  for (std::int32_t i = GetCount() - 1; i >= NewCount; --i) Delete(i);
}

void TList::SetCapacity(std::int32_t NewCapacity) {
  if (NewCapacity < GetCount() || NewCapacity > detail::MaxListSize) Error(SListCapacityError, NewCapacity);
  detail::ReserveExactly(FList, NewCapacity);
  FCapacity = NewCapacity;
}

void TList::Notify(Pointer, TListNotification) {}

void TList::Grow() { SetCapacity(FCapacity + detail::ListGrowDelta(FCapacity)); }

// ---------------------------------------------------------------------------------------------
// TObjectList

TObjectList::~TObjectList() { Clear(); }

void TObjectList::Notify(Pointer Ptr, TListNotification Action) {
  if (FOwnsObjects && Action == lnDeleted) delete static_cast<TObject*>(Ptr);
  inherited::Notify(Ptr, Action);
}

std::int32_t TObjectList::FindInstanceOf(const TMetaClass* AClass, bool AExact, std::int32_t AStartAt) const {
  for (std::int32_t i = std::max(AStartAt, 0); i < GetCount(); ++i) {
    const TObject* Obj = GetItem(i);
    if (!Obj) continue;
    if (AExact ? Obj->ClassType() == AClass : Obj->InheritsFrom(AClass)) return i;
  }
  return -1;
}

// ---------------------------------------------------------------------------------------------
// TInterfaceList
//
// References leaving the list are moved into a local declared before the guard, so they are
// released after the lock is dropped.

TInterfaceList::~TInterfaceList() { TInterfaceList::Clear(); }

TIntfPtr<IInterface> TInterfaceList::Get(std::int32_t Index) {
  TGuard Guard(FLock);
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)];
}

void TInterfaceList::Put(std::int32_t Index, TIntfPtr<IInterface> Item) {
  TIntfPtr<IInterface> Old = std::move(Item);
  TGuard Guard(FLock);
  CheckIndex(Index);
  std::swap(Old, FList[static_cast<std::size_t>(Index)]);
}

std::int32_t TInterfaceList::GetCount() {
  TGuard Guard(FLock);
  return static_cast<std::int32_t>(FList.size());
}

void TInterfaceList::SetCount(std::int32_t NewCount) {
  std::vector<TIntfPtr<IInterface>> Old;
  TGuard Guard(FLock);
  if (NewCount < 0 || NewCount > detail::MaxListSize) TList::Error(SListCountError, NewCount);
  if (NewCount > FCapacity) SetCapacity(NewCount);
  const auto N = static_cast<std::size_t>(NewCount);
  if (N < FList.size()) Old.assign(std::make_move_iterator(FList.begin() + NewCount), std::make_move_iterator(FList.end()));
  FList.resize(N);
}

std::int32_t TInterfaceList::GetCapacity() {
  TGuard Guard(FLock);
  return FCapacity;
}

void TInterfaceList::SetCapacity(std::int32_t NewCapacity) {
  TGuard Guard(FLock);
  if (NewCapacity < static_cast<std::int32_t>(FList.size()) || NewCapacity > detail::MaxListSize)
    TList::Error(SListCapacityError, NewCapacity);
  detail::ReserveExactly(FList, NewCapacity);
  FCapacity = NewCapacity;
}

void TInterfaceList::GrowIfFull() {
  if (static_cast<std::int32_t>(FList.size()) == FCapacity) SetCapacity(FCapacity + detail::ListGrowDelta(FCapacity));
}

std::int32_t TInterfaceList::Add(TIntfPtr<IInterface> Item) {
  TGuard Guard(FLock);
  GrowIfFull();
  FList.push_back(std::move(Item));
  return static_cast<std::int32_t>(FList.size()) - 1;
}

void TInterfaceList::Insert(std::int32_t Index, TIntfPtr<IInterface> Item) {
  TGuard Guard(FLock);
  if (Index < 0 || Index > static_cast<std::int32_t>(FList.size())) TList::Error(SListIndexError, Index);
  GrowIfFull();
  FList.insert(FList.begin() + Index, std::move(Item));
}

void TInterfaceList::Delete(std::int32_t Index) {
  TIntfPtr<IInterface> Old;
  TGuard Guard(FLock);
  CheckIndex(Index);
  Old = std::move(FList[static_cast<std::size_t>(Index)]);
  FList.erase(FList.begin() + Index);
}

std::int32_t TInterfaceList::Remove(const TIntfPtr<IInterface>& Item) {
  TIntfPtr<IInterface> Old;
  TGuard Guard(FLock);
  const std::int32_t Index = IndexOf(Item);
  if (Index >= 0) {
    Old = std::move(FList[static_cast<std::size_t>(Index)]);
    FList.erase(FList.begin() + Index);
  }
  return Index;
}

std::int32_t TInterfaceList::IndexOf(const TIntfPtr<IInterface>& Item) {
  TGuard Guard(FLock);
  const auto Pos = std::find_if(FList.begin(), FList.end(), [&](const TIntfPtr<IInterface>& P) { return P.get() == Item.get(); });
  return Pos == FList.end() ? -1 : static_cast<std::int32_t>(Pos - FList.begin());
}

void TInterfaceList::Clear() {
  std::vector<TIntfPtr<IInterface>> Old;
  TGuard Guard(FLock);
  Old.swap(FList);
  FCapacity = 0;
}

TIntfPtr<IInterface> TInterfaceList::First() { return Get(0); }

TIntfPtr<IInterface> TInterfaceList::Last() {
  TGuard Guard(FLock);
  return Get(static_cast<std::int32_t>(FList.size()) - 1);
}

void TInterfaceList::Exchange(std::int32_t Index1, std::int32_t Index2) {
  TGuard Guard(FLock);
  CheckIndex(Index1);
  CheckIndex(Index2);
  std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
}

void TInterfaceList::Expand() {
  TGuard Guard(FLock);
  GrowIfFull();
}

}  // namespace kz
