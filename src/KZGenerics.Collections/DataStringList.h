// A string list whose lines carry an object and a typed data value.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "KZGenerics.Collections/Messages.h"
#include "Runtime/ListStorage.h"
#include "Runtime/StringLists.h"
#include "Runtime/Text.h"
#include "Runtime/WithinUpdate.h"

namespace kz::KZGenericsCollections {

/// A sorted or unsorted list of lines (string, object, data: T) in one array. Comparison is the
/// locale's collation, case-insensitive unless CaseSensitive; turning Sorted on sorts at once
/// and changing CaseSensitive re-sorts a sorted list. With OwnsObjects (the Boolean
/// constructor) Delete, Clear, PutObject and destruction free the objects; data values are
/// only destroyed. An empty list grows straight to the size asked, a full one doubles.
/// Reads at a bad index raise EListError, inserts at one EArgumentOutOfRangeException. It
/// lives in the unit's scope because kz::TStringList is the runtime's plain string list.
template <class T>
class TStringList : public TStrings {
  KZ_CLASS(TStringList, TStrings)
 public:
  using TCompare = std::function<int(TStringList* List, std::int32_t Index1, std::int32_t Index2)>;

  TStringList() = default;
  explicit TStringList(bool OwnsObjects) : FOwnsObjects(OwnsObjects) {}
  ~TStringList() override {
    std::vector<TItem> Items;
    Items.swap(FList);
    if (FOwnsObjects)
      for (TItem& Item : Items) delete Item.FObject;
  }

  const String& Get(std::int32_t Index) const override { return ItemAt(Index).FString; }
  std::int32_t GetCount() const override { return static_cast<std::int32_t>(FList.size()); }
  TObject* GetObject(std::int32_t Index) const override { return ItemAt(Index).FObject; }
  [[nodiscard]] const T& GetData(std::int32_t Index) const { return ItemAt(Index).FData; }
  void PutData(std::int32_t Index, T Data) { ItemAt(Index).FData = std::move(Data); }
  /// Raises the sorted-list error on a sorted list.
  void Put(std::int32_t Index, String S) override {
    if (FSorted) Error(Runtime::SSortedListError, 0);
    ItemAt(Index).FString = std::move(S);
  }
  void PutObject(std::int32_t Index, TObject* AObject) override {
    TObject* Old = std::exchange(ItemAt(Index).FObject, AObject);
    if (FOwnsObjects && Old != AObject) delete Old;
  }
  std::int32_t GetCapacity() const override { return FCapacity; }
  void SetCapacity(std::int32_t NewCapacity) override {
    if (NewCapacity < GetCount() || NewCapacity > detail::MaxListSize) Error(Runtime::SListCapacityError, NewCapacity);
    detail::ReserveExactly(FList, NewCapacity);
    FCapacity = NewCapacity;
  }

  void Clear() override {
    std::vector<TItem> Items;
    Items.swap(FList);
    FCapacity = 0;
    if (FOwnsObjects)
      for (TItem& Item : Items) delete Item.FObject;
  }
  void Delete(std::int32_t Index) override {
    TObject* Obj = ItemAt(Index).FObject;
    FList.erase(FList.begin() + Index);
    if (FOwnsObjects) delete Obj;
  }
  void Insert(std::int32_t Index, String S) override { InsertObject(Index, std::move(S), nullptr); }
  void InsertObject(std::int32_t Index, String S, TObject* AObject) override {
    if (FSorted) Error(Runtime::SSortedListError, 0);
    InsertItem(Index, std::move(S), AObject, T{});
  }
  std::int32_t Add(String S) override { return AddObject(std::move(S), nullptr, T{}); }
  std::int32_t AddObject(String S, TObject* AObject) override { return AddObject(std::move(S), AObject, T{}); }
  /// On a sorted list the line goes where Find puts it; an equal line is then answered
  /// (dupIgnore), raises SDuplicateString (dupError) or is joined (dupAccept).
  std::int32_t AddObject(String S, TObject* AObject, T Data) {
    std::int32_t Result = GetCount();
    if (FSorted && Find(S, Result)) {
      if (FDuplicates == dupIgnore) return Result;
      if (FDuplicates == dupError) Error(Runtime::SDuplicateString, 0);
    }
    InsertItem(Result, std::move(S), AObject, std::move(Data));
    return Result;
  }
  void Exchange(std::int32_t Index1, std::int32_t Index2) override {
    std::swap(ItemAt(Index1), ItemAt(Index2));
  }
  /// Keeps object and data with the line (nothing is freed).
  void Move(std::int32_t CurIndex, std::int32_t NewIndex) override {
    if (CurIndex == NewIndex) return;
    (void)ItemAt(CurIndex);
    (void)ItemAt(NewIndex);
    const auto First = FList.begin();
    if (CurIndex < NewIndex)
      std::rotate(First + CurIndex, First + CurIndex + 1, First + NewIndex + 1);
    else
      std::rotate(First + NewIndex, First + CurIndex, First + CurIndex + 1);
  }
  std::int32_t IndexOf(StringView S) const override {
    if (FSorted) {
      std::int32_t Result;
      return Find(S, Result) ? Result : -1;
    }
    for (std::int32_t i = 0; i < GetCount(); ++i)
      if (CompareStrings(FList[static_cast<std::size_t>(i)].FString, S) == 0) return i;
    return -1;
  }
  /// Binary search of a sorted list: true when a line equals S; Index is that line (the
  /// first of equal lines under dupAccept) or the insertion point.
  bool Find(StringView S, std::int32_t& Index) const {
    return detail::SortedFind(
        GetCount(), FDuplicates == dupAccept,
        [&](std::int32_t I) { return CompareStrings(FList[static_cast<std::size_t>(I)].FString, S); }, Index);
  }
  /// Quicksort on the middle line by CompareStrings (not stable).
  void Sort() {
    auto Compare = [this](std::int32_t I, std::int32_t J) {
      return CompareStrings(FList[static_cast<std::size_t>(I)].FString, FList[static_cast<std::size_t>(J)].FString);
    };
    SortWith(Compare);
  }
  /// Quicksort on the middle line by Compare (not stable).
  void Sort(const TCompare& Compare) {
    if (!Compare) RaiseNullAccess(u"sort comparison");
    auto ByIndex = [&](std::int32_t I, std::int32_t J) { return Compare(this, I, J); };
    SortWith(ByIndex);
  }
  /// Another string list's lines, objects and text settings; from a TStringList<T> the data
  /// too. A sorted list places the lines as Add does.
  void Assign(TPersistent* Source) override {
    auto* Src = dynamic_cast<TStringList*>(Source);
    if (!Src) return TStrings::Assign(Source);
    if (Src == this) return;
    SetLineBreak(Src->GetLineBreak());
    SetDelimiter(Src->GetDelimiter());
    SetQuoteChar(Src->GetQuoteChar());
    SetNameValueSeparator(Src->GetNameValueSeparator());
    SetStrictDelimiter(Src->GetStrictDelimiter());
    WithinUpdate(*this, [&] {
      Clear();
      for (const TItem& Item : Src->FList) AddObject(Item.FString, Item.FObject, Item.FData);
    });
  }

  int CompareStrings(StringView S1, StringView S2) const override {
    return FCaseSensitive ? AnsiCompareStr(S1, S2) : AnsiCompareText(S1, S2);
  }
  bool GetSorted() const { return FSorted; }
  void SetSorted(bool Value) {
    if (Value && !FSorted) Sort();
    FSorted = Value;
  }
  TDuplicates GetDuplicates() const { return FDuplicates; }
  void SetDuplicates(TDuplicates Value) { FDuplicates = Value; }
  bool GetCaseSensitive() const { return FCaseSensitive; }
  void SetCaseSensitive(bool Value) {
    if (Value == FCaseSensitive) return;
    FCaseSensitive = Value;
    if (FSorted) Sort();
  }
  bool GetOwnsObjects() const { return FOwnsObjects; }
  void SetOwnsObjects(bool Value) { FOwnsObjects = Value; }

 protected:
  /// Inserts at Index in 0..Count (else EArgumentOutOfRangeException) without the sorted check.
  void InsertItem(std::int32_t Index, String S, TObject* AObject, T Data) {
    if (Index < 0 || Index > GetCount()) throw EArgumentOutOfRangeException(Runtime::SArgumentOutOfRange);
    if (GetCount() == FCapacity) Grow(GetCount() + 1);
    FList.insert(FList.begin() + Index, TItem{std::move(S), AObject, std::move(Data)});
  }
  /// Room for at least MinCapacity lines.
  void Grow(std::int32_t MinCapacity) {
    std::int64_t NewCapacity = FCapacity == 0 ? MinCapacity : FCapacity;
    while (NewCapacity < MinCapacity) NewCapacity *= 2;
    if (NewCapacity > detail::MaxListSize) throw EOutOfMemory(Runtime::SOutOfMemory);
    SetCapacity(static_cast<std::int32_t>(NewCapacity));
  }
  void ExchangeItems(std::int32_t Index1, std::int32_t Index2) {
    std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
  }

 private:
  struct TItem {
    String FString;
    TObject* FObject = nullptr;
    T FData{};
  };
  const TItem& ItemAt(std::int32_t Index) const {
    if (Index < 0 || Index >= GetCount()) Error(Runtime::SListIndexError, Index);
    return FList[static_cast<std::size_t>(Index)];
  }
  TItem& ItemAt(std::int32_t Index) { return const_cast<TItem&>(std::as_const(*this).ItemAt(Index)); }
  template <class TCompareIndex>
  void SortWith(TCompareIndex& Compare) {
    if (GetCount() < 2) return;
    auto Swap = [this](std::int32_t I, std::int32_t J) { ExchangeItems(I, J); };
    detail::QuickSortPositions(0, GetCount() - 1, Compare, Swap);
  }

  std::vector<TItem> FList;
  std::int32_t FCapacity = 0;
  bool FSorted = false;
  TDuplicates FDuplicates = dupIgnore;
  bool FCaseSensitive = false;
  bool FOwnsObjects = false;
};

}  // namespace kz::KZGenericsCollections
