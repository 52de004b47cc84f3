#include "Runtime/StringLists.h"

#include <algorithm>

#include "Runtime/ListStorage.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {


}  // namespace

// ---------------------------------------------------------------------------------------------
// TStrings

TStrings::~TStrings() = default;

TObject* TStrings::GetObject(std::int32_t) const { return nullptr; }

void TStrings::Put(std::int32_t Index, String S) {
  TObject* Obj = GetObject(Index);
  WithinUpdate(*this, [&] {
    Delete(Index);
    InsertObject(Index, std::move(S), Obj);
  });
}

void TStrings::PutObject(std::int32_t, TObject*) {}

std::int32_t TStrings::GetCapacity() const { return GetCount(); }

void TStrings::SetCapacity(std::int32_t) {}

void TStrings::Insert(std::int32_t Index, String S) { InsertObject(Index, std::move(S), nullptr); }

std::int32_t TStrings::Add(String S) { return AddObject(std::move(S), nullptr); }

std::int32_t TStrings::AddObject(String S, TObject* AObject) {
  const std::int32_t Result = GetCount();
  InsertObject(Result, std::move(S), AObject);
  return Result;
}

void TStrings::Append(String S) { Add(std::move(S)); }

void TStrings::AddStrings(const TStrings* Strings) {
  if (!Strings) RaiseNullAccess(u"string list to add");
  WithinUpdate(*this, [&] {
    // Counted once: adding a list to itself copies its lines once.
    const std::int32_t N = Strings->GetCount();
    for (std::int32_t i = 0; i < N; ++i) AddObject(Strings->Get(i), Strings->GetObject(i));
  });
}

void TStrings::Exchange(std::int32_t Index1, std::int32_t Index2) {
  WithinUpdate(*this, [&] {
    String S1 = Get(Index1);
    TObject* O1 = GetObject(Index1);
    Put(Index1, Get(Index2));
    PutObject(Index1, GetObject(Index2));
    Put(Index2, std::move(S1));
    PutObject(Index2, O1);
  });
}

void TStrings::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  WithinUpdate(*this, [&] {
    String S = Get(CurIndex);
    TObject* Obj = GetObject(CurIndex);
    Delete(CurIndex);
    InsertObject(NewIndex, std::move(S), Obj);
  });
}

std::int32_t TStrings::IndexOf(StringView S) const {
  const std::int32_t N = GetCount();
  for (std::int32_t i = 0; i < N; ++i)
    if (CompareStrings(Get(i), S) == 0) return i;
  return -1;
}

std::int32_t TStrings::IndexOfObject(const TObject* AObject) const {
  const std::int32_t N = GetCount();
  for (std::int32_t i = 0; i < N; ++i)
    if (GetObject(i) == AObject) return i;
  return -1;
}

bool TStrings::Equals(const TStrings* Strings) const {
  if (!Strings) return false;
  const std::int32_t N = GetCount();
  if (N != Strings->GetCount()) return false;
  for (std::int32_t i = 0; i < N; ++i)
    if (Get(i) != Strings->Get(i)) return false;
  return true;
}

std::vector<String> TStrings::ToStringArray() const {
  std::vector<String> Result;
  const std::int32_t N = GetCount();
  Result.reserve(static_cast<std::size_t>(N));
  for (std::int32_t i = 0; i < N; ++i) Result.push_back(Get(i));
  return Result;
}

void TStrings::Assign(TPersistent* Source) {
  auto* Strings = dynamic_cast<TStrings*>(Source);
  if (!Strings) {
    inherited::Assign(Source);
    return;
  }
  if (Strings == this) return;
  WithinUpdate(*this, [&] {
    Clear();
    FLineBreak = Strings->FLineBreak;
    FDelimiter = Strings->FDelimiter;
    FQuoteChar = Strings->FQuoteChar;
    FNameValueSeparator = Strings->FNameValueSeparator;
    FStrictDelimiter = Strings->FStrictDelimiter;
    AddStrings(Strings);
  });
}

void TStrings::AssignTo(TPersistent* Dest) {
  if (auto* Strings = dynamic_cast<TStrings*>(Dest))
    Strings->Assign(this);
  else
    inherited::AssignTo(Dest);
}

void TStrings::BeginUpdate() {
  if (!FUpdates.Updating()) SetUpdateState(true);
  FUpdates.Begin();
}

void TStrings::EndUpdate() {
  if (FUpdates.End()) SetUpdateState(false);
}

void TStrings::SetUpdateState(bool) {}

String TStrings::GetText() const {
  const std::int32_t N = GetCount();
  std::size_t Size = 0;
  for (std::int32_t i = 0; i < N; ++i) Size += Get(i).size() + FLineBreak.size();
  String Result;
  Result.reserve(Size);
  for (std::int32_t i = 0; i < N; ++i) {
    Result += Get(i);
    Result += FLineBreak;
  }
  return Result;
}

void TStrings::SetText(StringView Value) {
  WithinUpdate(*this, [&] {
    Clear();
    std::size_t Pos = 0;
    const std::size_t N = Value.size();
    while (Pos < N) {
      std::size_t End = Pos;
      while (End < N && Value[End] != u'\r' && Value[End] != u'\n') ++End;
      Add(String(Value.substr(Pos, End - Pos)));
      Pos = End;
      if (Pos < N && Value[Pos] == u'\r' && Pos + 1 < N && Value[Pos + 1] == u'\n') ++Pos;
      ++Pos;
    }
  });
}

String TStrings::DelimitedText(Char Delimiter, Char Quote, bool Strict) const {
  const std::int32_t N = GetCount();
  if (N == 1 && Get(0).empty()) return String(2, Quote);
  String Result;
  for (std::int32_t i = 0; i < N; ++i) {
    const String& S = Get(i);
    const bool NeedsQuotes = std::any_of(S.begin(), S.end(), [&](Char C) {
      return C == Quote || C == Delimiter || (!Strict && C <= u' ');
    });
    if (i > 0) Result += Delimiter;
    if (!NeedsQuotes) {
      Result += S;
      continue;
    }
    Result += Quote;
    for (Char C : S) {
      if (C == Quote) Result += Quote;
      Result += C;
    }
    Result += Quote;
  }
  return Result;
}

void TStrings::SetDelimited(StringView Value, Char Delimiter, Char Quote, bool Strict) {
  const std::size_t N = Value.size();
  std::size_t Pos = 0;
  // Blanks are code units 1..32; 0 is kept as data.
  auto SkipBlanks = [&] {
    if (!Strict)
      while (Pos < N && Value[Pos] >= 1 && Value[Pos] <= u' ') ++Pos;
  };
  WithinUpdate(*this, [&] {
    Clear();
    SkipBlanks();
    while (Pos < N) {
      String Item;
      if (Value[Pos] == Quote) {
        // A doubled quote inside stands for one; an unterminated item runs to the end.
        ++Pos;
        while (Pos < N) {
          if (Value[Pos] == Quote) {
            if (Pos + 1 < N && Value[Pos + 1] == Quote) {
              Item += Quote;
              Pos += 2;
              continue;
            }
            ++Pos;
            break;
          }
          Item += Value[Pos++];
        }
      } else {
        const std::size_t Start = Pos;
        while (Pos < N && Value[Pos] != Delimiter && (Strict || Value[Pos] < 1 || Value[Pos] > u' ')) ++Pos;
        Item.assign(Value.substr(Start, Pos - Start));
      }
      Add(std::move(Item));
      SkipBlanks();
      if (Pos < N && Value[Pos] == Delimiter) {
        ++Pos;
        SkipBlanks();
        if (Pos == N) Add(String());
      }
    }
  });
}

String TStrings::GetDelimitedText() const { return DelimitedText(FDelimiter, FQuoteChar, FStrictDelimiter); }

void TStrings::SetDelimitedText(StringView Value) { SetDelimited(Value, FDelimiter, FQuoteChar, FStrictDelimiter); }

String TStrings::GetCommaText() const { return DelimitedText(u',', u'"', false); }

void TStrings::SetCommaText(StringView Value) { SetDelimited(Value, u',', u'"', false); }

String TStrings::GetName(std::int32_t Index) const {
  const String& S = Get(Index);
  const std::size_t P = S.find(FNameValueSeparator);
  return P == String::npos ? String() : S.substr(0, P);
}

String TStrings::GetValue(StringView Name) const { return GetValueFromIndex(IndexOfName(Name)); }

void TStrings::SetValue(StringView Name, StringView Value) {
  const std::int32_t i = IndexOfName(Name);
  if (Value.empty()) {
    if (i >= 0) Delete(i);
    return;
  }
  String Line;
  Line.reserve(Name.size() + 1 + Value.size());
  Line.append(Name).append(1, FNameValueSeparator).append(Value);
  if (i >= 0)
    Put(i, std::move(Line));
  else
    Add(std::move(Line));
}

String TStrings::GetValueFromIndex(std::int32_t Index) const {
  if (Index < 0) return String();
  const String& S = Get(Index);
  const std::size_t P = S.find(FNameValueSeparator);
  return P == String::npos ? String() : S.substr(P + 1);
}

void TStrings::SetValueFromIndex(std::int32_t Index, StringView Value) {
  if (Value.empty()) {
    if (Index >= 0) Delete(Index);
    return;
  }
  String Line = Index >= 0 ? GetName(Index) : String();
  Line.append(1, FNameValueSeparator).append(Value);
  if (Index >= 0)
    Put(Index, std::move(Line));
  else
    Add(std::move(Line));
}

std::int32_t TStrings::IndexOfName(StringView Name) const {
  const std::int32_t N = GetCount();
  for (std::int32_t i = 0; i < N; ++i) {
    const StringView S = Get(i);
    const std::size_t P = S.find(FNameValueSeparator);
    if (P != StringView::npos && CompareStrings(S.substr(0, P), Name) == 0) return i;
  }
  return -1;
}

int TStrings::CompareStrings(StringView S1, StringView S2) const { return AnsiCompareText(S1, S2); }

void TStrings::Error(const TResourceString& Msg, std::int32_t Index) const { throw EListError(Msg, {Index}); }

// ---------------------------------------------------------------------------------------------
// TStringList

TStringList::~TStringList() {
  // No events while dying; owned objects go after the lines are gone.
  FOnChange = nullptr;
  FOnChanging = nullptr;
  std::vector<TStringItem> Items;
  Items.swap(FList);
  if (FOwnsObjects)
    for (TStringItem& Item : Items) delete Item.FObject;
}

const String& TStringList::Get(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)].FString;
}

TObject* TStringList::GetObject(std::int32_t Index) const {
  CheckIndex(Index);
  return FList[static_cast<std::size_t>(Index)].FObject;
}

void TStringList::Put(std::int32_t Index, String S) {
  if (FSorted) Error(SSortedListError, 0);
  CheckIndex(Index);
  Changing();
  FList[static_cast<std::size_t>(Index)].FString = std::move(S);
  Changed();
}

void TStringList::PutObject(std::int32_t Index, TObject* AObject) {
  CheckIndex(Index);
  Changing();
  TObject*& Slot = FList[static_cast<std::size_t>(Index)].FObject;
  TObject* Old = Slot;
  Slot = AObject;
  if (FOwnsObjects && Old != AObject) delete Old;
  Changed();
}

void TStringList::SetCapacity(std::int32_t NewCapacity) {
  if (NewCapacity < GetCount() || NewCapacity > detail::MaxListSize) Error(SListCapacityError, NewCapacity);
  detail::ReserveExactly(FList, NewCapacity);
  FCapacity = NewCapacity;
}

void TStringList::Grow() { SetCapacity(FCapacity + detail::ListGrowDelta(FCapacity)); }

void TStringList::Clear() {
  if (FList.empty()) return;
  Changing();
  // The lines are taken aside first so that a freed object that looks at the list sees it
  // empty.
  std::vector<TStringItem> Items;
  Items.swap(FList);
  FCapacity = 0;
  if (FOwnsObjects)
    for (TStringItem& Item : Items) delete Item.FObject;
  Changed();
}

void TStringList::Delete(std::int32_t Index) {
  CheckIndex(Index);
  Changing();
  const auto Pos = FList.begin() + Index;
  TObject* Obj = Pos->FObject;
  FList.erase(Pos);
  if (FOwnsObjects) delete Obj;
  Changed();
}

void TStringList::Insert(std::int32_t Index, String S) { InsertObject(Index, std::move(S), nullptr); }

void TStringList::InsertObject(std::int32_t Index, String S, TObject* AObject) {
  if (FSorted) Error(SSortedListError, 0);
  if (Index < 0 || Index > GetCount()) Error(SListIndexError, Index);
  InsertItem(Index, std::move(S), AObject);
}

std::int32_t TStringList::Add(String S) { return AddObject(std::move(S), nullptr); }

std::int32_t TStringList::AddObject(String S, TObject* AObject) {
  std::int32_t Result = GetCount();
  if (FSorted && Find(S, Result)) {
    if (FDuplicates == dupIgnore) return Result;
    if (FDuplicates == dupError) Error(SDuplicateString, 0);
  }
  InsertItem(Result, std::move(S), AObject);
  return Result;
}

void TStringList::InsertItem(std::int32_t Index, String S, TObject* AObject) {
  Changing();
  if (GetCount() == FCapacity) Grow();
  // A descendant's SetCapacity may decline to grow without raising; the vector would then
  // reallocate behind the capacity rule, so refuse instead.
  if (GetCount() >= FCapacity) Error(SListCapacityError, FCapacity);
  FList.insert(FList.begin() + Index, TStringItem{std::move(S), AObject});
  Changed();
}

void TStringList::Exchange(std::int32_t Index1, std::int32_t Index2) {
  CheckIndex(Index1);
  CheckIndex(Index2);
  Changing();
  ExchangeItems(Index1, Index2);
  Changed();
}

void TStringList::ExchangeItems(std::int32_t Index1, std::int32_t Index2) {
  std::swap(FList[static_cast<std::size_t>(Index1)], FList[static_cast<std::size_t>(Index2)]);
}

void TStringList::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  if (CurIndex == NewIndex) return;
  CheckIndex(CurIndex);
  CheckIndex(NewIndex);
  // Rotating in place keeps the object: deleting and re-inserting would free an owned one.
  Changing();
  const auto First = FList.begin();
  if (CurIndex < NewIndex)
    std::rotate(First + CurIndex, First + CurIndex + 1, First + NewIndex + 1);
  else
    std::rotate(First + NewIndex, First + CurIndex, First + CurIndex + 1);
  Changed();
}

bool TStringList::Find(StringView S, std::int32_t& Index) const {
  return detail::SortedFind(
      GetCount(), FDuplicates == dupAccept,
      [&](std::int32_t I) { return CompareStrings(FList[static_cast<std::size_t>(I)].FString, S); }, Index);
}

std::int32_t TStringList::IndexOf(StringView S) const {
  if (!FSorted) {
    const std::int32_t N = GetCount();
    for (std::int32_t i = 0; i < N; ++i)
      if (CompareStrings(FList[static_cast<std::size_t>(i)].FString, S) == 0) return i;
    return -1;
  }
  std::int32_t Result;
  return Find(S, Result) ? Result : -1;
}

template <class TCompare>
void TStringList::SortWith(TCompare& Compare) {
  if (FSorted || GetCount() < 2) return;
  Changing();
  auto Swap = [this](std::int32_t I, std::int32_t J) { ExchangeItems(I, J); };
  detail::QuickSortPositions(0, GetCount() - 1, Compare, Swap);
  Changed();
}

void TStringList::Sort() {
  auto Compare = [this](std::int32_t I, std::int32_t J) {
    return CompareStrings(FList[static_cast<std::size_t>(I)].FString, FList[static_cast<std::size_t>(J)].FString);
  };
  SortWith(Compare);
}

void TStringList::CustomSort(const TStringListSortCompare& Compare) {
  if (!Compare) RaiseNullAccess(u"sort comparison");
  auto ByIndex = [&](std::int32_t I, std::int32_t J) { return Compare(this, I, J); };
  SortWith(ByIndex);
}

int TStringList::CompareStrings(StringView S1, StringView S2) const {
  return FCaseSensitive ? AnsiCompareStr(S1, S2) : AnsiCompareText(S1, S2);
}

void TStringList::SetSorted(bool Value) {
  if (Value == FSorted) return;
  if (Value) Sort();
  FSorted = Value;
}

void TStringList::SetCaseSensitive(bool Value) {
  if (Value == FCaseSensitive) return;
  FCaseSensitive = Value;
  if (FSorted) {
    FSorted = false;
    Sort();
    FSorted = true;
  }
}

void TStringList::Changed() {
  if (GetUpdateCount() == 0 && FOnChange) FOnChange(this);
}

void TStringList::Changing() {
  if (GetUpdateCount() == 0 && FOnChanging) FOnChanging(this);
}

void TStringList::SetUpdateState(bool Updating) {
  if (Updating)
    Changing();
  else
    Changed();
}

}  // namespace kz
