#include <algorithm>
#include <utility>

#include "Runtime/Text.h"
#include "Runtime/UpdateCounter.h"
#include "Runtime/WithinUpdate.h"
#include "Runtime/ListStorage.h"
#include "Structures/internal/StructuresSupport.h"

namespace kz {

using namespace Runtime;
using namespace Structures;

namespace {

TCompareTextProc CompareProcOf(TStringOpsType Ops) {
  switch (Ops) {
    case soCaseSensitive:
      return &CompareStr;
    case soCaseInsensitive:
      return &CompareText;
    case soCaseSensitiveLocale:
      return &AnsiCompareStr;
    case soCaseInsensitiveLocale:
      break;
  }
  return &AnsiCompareText;
}

}  // namespace

// ---- ForEach, shared with TSFCList -----------------------------------------------------------

void detail::ForEachLine(TStrings* List, const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter,
                         NativeInt Data) {
  if (!Proc) RaiseNullAccess(u"ForEach procedure");
  // From the end, so that a callback deleting the line it is given leaves the lines still
  // to come where they were.
  for (std::int32_t i = List->GetCount() - 1; i >= 0; --i) {
    // A copy: the callback may delete the line whose string it receives.
    const String S = List->Get(i);
    TObject* Obj = List->GetObject(i);
    if (Filter && !Filter(List, i, S, Obj, Data)) continue;
    Proc(List, i, S, Obj, Data);
  }
}

void detail::ForEachLine(TStrings* List, TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data) {
  if (!Proc) RaiseNullAccess(u"ForEach procedure");
  ForEachLine(List, TForEachObjectMethod(Proc), Filter ? TForEachFilterMethod(Filter) : TForEachFilterMethod(),
              Data);
}

// ---- TGStringList ------------------------------------------------------------------------------

TGStringList::TGStringList() : FCompareTextProc(CompareProcOf(soCaseInsensitiveLocale)) {}

TGStringList::~TGStringList() {
  FOwner.reset();
  FOnChange = nullptr;
  FOnChanging = nullptr;
  Clear();
}

void TGStringList::CheckIndex(std::int32_t Index) const {
  if (Index < 0 || Index >= FCount) Error(SListIndexError, Index);
}

const String& TGStringList::Get(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)].FString;
}

TObject* TGStringList::GetObject(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)].FObject;
}

TObject* TGStringList::GetData(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)].FData;
}

void TGStringList::Put(std::int32_t Index, String S) {
  if (FOwner) FOwner->BeforePut(this, Index, S);
  if (FSorted) Error(SSortedListError, 0);
  CheckIndex(Index);
  Changing();
  FList[static_cast<std::size_t>(Index)].FString = std::move(S);
  Changed();
}

// A pointer that is both a line's object and its datum belongs to the datum column, so that
// an owning list frees it once.
bool TGStringList::OwnsObject(const TGStringItem& Line) const {
  return FFreeObjects && !(FFreeData && Line.FObject == Line.FData);
}

void TGStringList::PutObject(std::int32_t Index, TObject* AObject) {
  if (FOwner) FOwner->BeforePutObject(this, Index, AObject);
  CheckIndex(Index);
  Changing();
  TGStringItem& Line = FList[static_cast<std::size_t>(Index)];
  if (OwnsObject(Line) && Line.FObject != AObject) delete Line.FObject;
  // The old object's destructor may have changed the list: the line is looked up again.
  if (Index < FCount) FList[static_cast<std::size_t>(Index)].FObject = AObject;
  Changed();
}

void TGStringList::PutData(std::int32_t Index, TObject* AData) {
  CheckIndex(Index);
  Changing();
  TGStringItem& Line = FList[static_cast<std::size_t>(Index)];
  // The old datum may live on as the line's object when that column owns it.
  const bool Free = FFreeData && Line.FData != AData && !(FFreeObjects && Line.FData == Line.FObject);
  TObject* Old = Free ? Line.FData : nullptr;
  Line.FData = AData;
  delete Old;
  Changed();
}

void TGStringList::SetCapacity(std::int32_t NewCapacity) {
  if (NewCapacity < FCount || NewCapacity > detail::MaxListSize) Error(SListCapacityError, NewCapacity);
  if (NewCapacity == FCapacity) return;
  // The vector's size is the capacity: slots past Count stay empty lines.
  if (NewCapacity < FCapacity) FList.resize(static_cast<std::size_t>(NewCapacity));
  detail::ReserveExactly(FList, NewCapacity);
  FList.resize(static_cast<std::size_t>(NewCapacity));
  FCapacity = NewCapacity;
}

void TGStringList::Grow() { SetCapacity(FCapacity + detail::ListGrowDelta(FCapacity)); }

std::int32_t TGStringList::Add(String S) { return AddObject(std::move(S), nullptr, nullptr); }

std::int32_t TGStringList::AddObject(String S, TObject* AObject) { return AddObject(std::move(S), AObject, nullptr); }

std::int32_t TGStringList::AddObject(String S, TObject* AObject, TObject* AData) {
  std::int32_t Index = FCount;
  // While copying another TGStringList its lines arrive in their final order.
  if (FSorted && !FAssigning && Find(S, Index)) {
    if (FDuplicates == dupIgnore) return Index;
    if (FDuplicates == dupError) Error(SDuplicateString, 0);
  }
  InsertItem(Index, std::move(S));
  TGStringItem& Line = FList[static_cast<std::size_t>(Index)];
  Line.FObject = AObject;
  Line.FData = AData;
  return Index;
}

void TGStringList::Insert(std::int32_t Index, String S) { InsertObject(Index, std::move(S), nullptr, nullptr); }

void TGStringList::InsertObject(std::int32_t Index, String S, TObject* AObject) {
  InsertObject(Index, std::move(S), AObject, nullptr);
}

void TGStringList::InsertObject(std::int32_t Index, String S, TObject* AObject, TObject* AData) {
  if (FSorted) Error(SSortedListError, 0);
  if (Index < 0 || Index > FCount) Error(SListIndexError, Index);
  InsertItem(Index, std::move(S));
  TGStringItem& Line = FList[static_cast<std::size_t>(Index)];
  Line.FObject = AObject;
  Line.FData = AData;
}

void TGStringList::InsertItem(std::int32_t Index, String S) {
  Changing();
  if (FCount == FCapacity) Grow();
  // A descendant's SetCapacity may decline to grow without raising: refuse rather than
  // write past the last slot.
  if (FCount >= FCapacity) Error(SListCapacityError, FCapacity);
  const auto First = FList.begin() + Index;
  std::move_backward(First, FList.begin() + FCount, FList.begin() + FCount + 1);
  *First = TGStringItem{std::move(S), nullptr, nullptr};
  ++FCount;
  Changed();
}

void TGStringList::AddStrings(const TStrings* Strings) {
  if (!Strings) RaiseNullAccess(u"string list");
  const auto* Other = dynamic_cast<const TGStringList*>(Strings);
  // Counted up front: adding a list to itself adds each of its lines once.
  const std::int32_t N = Strings->GetCount();
  WithinUpdate(*this, [&] {
    for (std::int32_t i = 0; i < N; ++i)
      AddObject(Strings->Get(i), Strings->GetObject(i), Other ? Other->GetData(i) : nullptr);
  });
}

void TGStringList::Delete(std::int32_t Index) {
  if (FOwner) FOwner->BeforeDelete(this, Index);
  CheckIndex(Index);
  Changing();
  TGStringItem& Line = FList[static_cast<std::size_t>(Index)];
  TObject* Data = FFreeData ? Line.FData : nullptr;
  TObject* Obj = OwnsObject(Line) ? Line.FObject : nullptr;
  Line.FData = nullptr;
  Line.FObject = nullptr;
  delete Data;
  delete Obj;
  std::move(FList.begin() + Index + 1, FList.begin() + FCount, FList.begin() + Index);
  --FCount;
  FList[static_cast<std::size_t>(FCount)] = TGStringItem{};
  Changed();
}

void TGStringList::Clear() {
  if (FOwner) FOwner->BeforeClear(this);
  if (FCount == 0) return;
  Changing();
  TGStringItemList Old;
  Old.swap(FList);
  const std::int32_t N = FCount;
  FCount = 0;
  FCapacity = 0;
  for (std::int32_t i = 0; i < N; ++i) {
    const TGStringItem& Line = Old[static_cast<std::size_t>(i)];
    if (FFreeData) delete Line.FData;
    if (OwnsObject(Line)) delete Line.FObject;
  }
  Old = TGStringItemList();
  Changed();
}

void TGStringList::Exchange(std::int32_t Index1, std::int32_t Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  Changing();
  ExchangeItems(Index1, Index2);
  Changed();
}

void TGStringList::ExchangeItems(std::int32_t Index1, std::int32_t Index2) {
  std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
}

void TGStringList::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  // Moving through Delete and Insert would free an owned object and lose the datum.
  if (FSorted) Error(SSortedListError, 0);
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  if (CurIndex == NewIndex) return;
  Changing();
  const auto First = FList.begin();
  if (CurIndex < NewIndex)
    std::rotate(First + CurIndex, First + CurIndex + 1, First + NewIndex + 1);
  else
    std::rotate(First + NewIndex, First + CurIndex, First + CurIndex + 1);
  Changed();
}

bool TGStringList::Find(StringView S, std::int32_t& Index) const {
  return detail::SortedFind(
      FCount, FDuplicates == dupAccept,
      [&](std::int32_t I) { return FCompareTextProc(FList[static_cast<std::size_t>(I)].FString, S); }, Index);
}

std::int32_t TGStringList::IndexOf(StringView S) const {
  if (FSorted) {
    std::int32_t Index;
    return Find(S, Index) ? Index : -1;
  }
  for (std::int32_t i = 0; i < FCount; ++i)
    if (FCompareTextProc(FList[static_cast<std::size_t>(i)].FString, S) == 0) return i;
  return -1;
}

std::int32_t TGStringList::IndexOfData(const TObject* AData) const {
  for (std::int32_t i = 0; i < FCount; ++i)
    if (FList[static_cast<std::size_t>(i)].FData == AData) return i;
  return -1;
}

int TGStringList::CompareStrings(StringView S1, StringView S2) const { return FCompareTextProc(S1, S2); }

void TGStringList::QuickSort(std::int32_t L, std::int32_t R) {
  auto Compare = [this](std::int32_t I, std::int32_t J) {
    return FCompareTextProc(FList[static_cast<std::size_t>(I)].FString, FList[static_cast<std::size_t>(J)].FString);
  };
  auto Swap = [this](std::int32_t I, std::int32_t J) { ExchangeItems(I, J); };
  detail::QuickSortPositions(L, R, Compare, Swap);
}

void TGStringList::Reorder() {
  Changing();
  QuickSort(0, FCount - 1);
  Changed();
}

void TGStringList::Sort() {
  if (!FSorted && FCount > 1) Reorder();
}

void TGStringList::SetSorted(bool Value) {
  if (FSorted == Value) return;
  if (Value) Sort();
  FSorted = Value;
}

void TGStringList::SetStringOpsType(TStringOpsType Value) {
  if (FStringOpsType == Value) return;
  FStringOpsType = Value;
  FCompareTextProc = CompareProcOf(Value);
  // Sort leaves a list flagged sorted alone, so the new order is made here.
  if (FSorted && FCount > 1) Reorder();
}

void TGStringList::Assign(TPersistent* Source) {
  if (auto* List = dynamic_cast<TStringList*>(Source)) {
    WithinUpdate(*this, [&] {
      SetSorted(false);
      FDuplicates = dupAccept;
      inherited::Assign(Source);
      SetSorted(List->GetSorted());
      FDuplicates = List->GetDuplicates();
    });
  } else if (auto* Other = dynamic_cast<TGStringList*>(Source)) {
    if (Other == this) return;
    WithinUpdate(*this, [&] {
      {
        TRestoreValue Assigning(FAssigning, true);
        inherited::Assign(Source);
      }
      FDuplicates = Other->FDuplicates;
      FSorted = Other->FSorted;
      FStringOpsType = Other->FStringOpsType;
      FCompareTextProc = Other->FCompareTextProc;
    });
  } else {
    inherited::Assign(Source);
  }
}

void TGStringList::ForEach(TForEachObjectProc Proc, TForEachFilterProc Filter, NativeInt Data) {
  detail::ForEachLine(this, Proc, Filter, Data);
}

void TGStringList::ForEach(const TForEachObjectMethod& Proc, const TForEachFilterMethod& Filter, NativeInt Data) {
  detail::ForEachLine(this, Proc, Filter, Data);
}

void TGStringList::SetUpdateState(bool Updating) {
  FUpdating = Updating;
  if (Updating)
    Changing();
  else
    Changed();
}

void TGStringList::Changed() {
  if (FUpdating) return;
  if (FOwner) FOwner->ListChanged(this);
  if (FOnChange) FOnChange(this);
}

void TGStringList::Changing() {
  if (FUpdating) return;
  if (FOwner) FOwner->ListChanging(this);
  if (FOnChanging) FOnChanging(this);
}

}  // namespace kz
