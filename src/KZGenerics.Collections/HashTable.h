// The dictionary with a change event, update brackets and positional access, and its
// string-keyed forms that copy to and from string lists and hand out iterators.
#pragma once

#include <cstdint>
#include <utility>

#include "CommonInterfaces/CommonInterfaces.h"
#include "GHashTable/GHashTable.h"
#include "KZGenerics.Collections/Dictionary.h"
#include "Runtime/Filer.h"
#include "Runtime/StringLists.h"
#include "Runtime/UpdateCounter.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

/// TKZDictionary with OnChange after every change, BeginUpdate/EndUpdate (inside a bracket no
/// key or value notifications are delivered at all, and OnChange waits for the outermost
/// EndUpdate; an unmatched EndUpdate counts below zero), positional access that is O(1) per
/// step for sequential runs, and EGHashtableError "Table is empty" on Remove/ExtractPair of an
/// empty table. Clear tells no entries, only one change; destruction tells nothing. Positional
/// reads out of 0..Count-1 raise EListError with the index.
template <class K, class V>
class TKZHashTable : public TKZDictionary<K, V> {
  using TDictionaryBase = TKZDictionary<K, V>;
 public:
  using TMeta = typename TDictionaryBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TKZHashTable, TDictionaryBase)
 public:
  using TPairType = typename TDictionaryBase::TPairType;
  using TItem = typename TDictionaryBase::TItem;
  using TDictionaryBase::TDictionaryBase;

  ~TKZHashTable() override {
    FUpdate.Begin();
    try {
      Clear();
    } catch (...) {
    }
  }

  /// Declares the stored properties "LoadFactor", "HashType" and "Capacity" of older stored
  /// forms: never written, read (as a float and two integers) and discarded.
  void DefineProperties(TFiler* Filer) override {
    TDictionaryBase::DefineProperties(Filer);
    Filer->DefineProperty(u"LoadFactor", [](TReader* R) { (void)R->ReadFloat(); }, nullptr, false);
    Filer->DefineProperty(u"HashType", [](TReader* R) { (void)R->ReadInteger(); }, nullptr, false);
    Filer->DefineProperty(u"Capacity", [](TReader* R) { (void)R->ReadInteger(); }, nullptr, false);
  }

  /// Empties the table inside an update: no entry is told, one OnChange follows.
  void Clear() override {
    WithinUpdate(*this, [this] { TDictionaryBase::Clear(); });
  }
  virtual void BeginUpdate() { FUpdate.Begin(); }
  virtual void EndUpdate() {
    if (FUpdate.End()) Change();
  }
  std::int32_t GetUpdateCount() const { return FUpdate.Count(); }

  [[nodiscard]] bool IsEmpty() const { return this->GetCount() == 0; }
  [[nodiscard]] bool ContainsKey(const K& Key) const { return TDictionaryBase::ContainsKey(Key); }
  [[nodiscard]] bool ContainsKey(const K& Key, V& Value) const { return this->TryGetValue(Key, Value); }
  [[nodiscard]] bool ContainsItem(const V& Value) const { return this->ContainsValue(Value); }
  [[nodiscard]] const V& Get(const K& Key) const { return this->GetItem(Key); }
  void PutItem(K Key, V Value) { this->AddOrSetValue(std::move(Key), std::move(Value)); }
  /// Stores Value under Key and answers the value it replaced, V{} for a new key.
  V Put(K Key, V Value) {
    V Previous{};
    (void)this->TryGetValue(Key, Previous);
    this->AddOrSetValue(std::move(Key), std::move(Value));
    return Previous;
  }

  /// The pair at position Index of the enumeration order.
  [[nodiscard]] TPairType GetPairByIndex(std::int32_t Index) const {
    const TItem& Item = EntryAt(Index);
    return TPairType{Item.Key, Item.Value};
  }
  [[nodiscard]] const V& GetItemByIndex(std::int32_t Index) const { return EntryAt(Index).Value; }
  [[nodiscard]] const K& GetKeyByIndex(std::int32_t Index) const { return EntryAt(Index).Key; }

  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }

 protected:
  /// OnChange, unless an update is open.
  virtual void Change() {
    if (FUpdate.Count() <= 0 && FOnChange) FOnChange(this);
  }
  void DoAdd(std::int32_t HashCode, std::int32_t Index, K Key, V Value) override {
    TDictionaryBase::DoAdd(HashCode, Index, std::move(Key), std::move(Value));
    Change();
  }
  void DoSetValue(std::int32_t Index, V Value) override {
    TDictionaryBase::DoSetValue(Index, std::move(Value));
    Change();
  }
  /// Raises "Table is empty" on an empty table; otherwise removes and signals a change,
  /// also when the key was absent.
  V DoRemove(const K& Key, std::int32_t HashCode, TKZNotifyAction Action) override {
    if (this->GetCount() == 0) throw EGHashtableError(KZGenericsCollections::STableEmpty);
    V Result = TDictionaryBase::DoRemove(Key, HashCode, Action);
    Change();
    return Result;
  }
  void KeyNotify(const K& Key, TKZNotifyAction Action) override {
    ClearCache();
    if (FUpdate.Count() < 1) TDictionaryBase::KeyNotify(Key, Action);
  }
  void ValueNotify(const V& Value, TKZNotifyAction Action) override {
    if (FUpdate.Count() < 1) TDictionaryBase::ValueNotify(Value, Action);
  }

  /// The cursor on ordinal 0 at the first live bucket.
  void ResetEntry() const {
    FCacheOrdinal = 0;
    FCacheBucket = -1;
    GetEntry(1);
    FCacheOrdinal = 0;
  }
  /// Moves the cursor one live bucket forward (Step 1) or back (Step -1).
  void GetEntry(std::int32_t Step) const {
    const auto& Items = this->GetItems();
    const auto Length = static_cast<std::int32_t>(Items.size());
    do FCacheBucket += Step;
    while (FCacheBucket >= 0 && FCacheBucket < Length && Items[static_cast<std::size_t>(FCacheBucket)].HashCode == -1);
    FCacheOrdinal += Step;
  }
  void ClearCache() const { FCacheOrdinal = -1; }

 private:
  const TItem& EntryAt(std::int32_t Index) const {
    if (Index < 0 || Index >= this->GetCount()) throw EListError(Runtime::SListIndexError, {Index});
    // A rehash moves entries without telling any key, so the cursor remembers the layout.
    if (FCacheLayout != this->GetLayoutVersion()) {
      FCacheLayout = this->GetLayoutVersion();
      FCacheOrdinal = -1;
    }
    if (FCacheOrdinal == -1) ResetEntry();
    if (Index == FCacheOrdinal) {
    } else if (Index == FCacheOrdinal + 1) {
      GetEntry(1);
    } else if (Index != FCacheOrdinal - 1) {
      ResetEntry();
      for (std::int32_t i = 0; i < Index; ++i) GetEntry(1);
    } else {
      GetEntry(-1);
    }
    return this->GetItems()[static_cast<std::size_t>(FCacheBucket)];
  }

  TNotifyEvent FOnChange;
  TUpdateCounter<ueCountNegative> FUpdate;
  mutable std::int32_t FCacheOrdinal = -1;
  mutable std::int32_t FCacheBucket = -1;
  mutable std::uint32_t FCacheLayout = 0;
};

/// TKZHashTable keyed by String. Copies its keys to a string list (or to anything with a
/// published string property "Text", one key per line) and takes the lines of a string list
/// as keys with V{} values. Indices() is a fresh IStringIterator over the keys; iterators read
/// the table live, and one used after its table is destroyed raises EAccessViolation.
template <class V>
class TKZStringHashTable : public TKZHashTable<String, V> {
  using THashTableBase = TKZHashTable<String, V>;
 public:
  using TMeta = typename THashTableBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TKZStringHashTable, THashTableBase)
 public:
  using TItem = typename THashTableBase::TItem;
  using THashTableBase::THashTableBase;

  class TTableIterator;
  class TStringIterator;

  ~TKZStringHashTable() override {
    for (TTableIterator* It = FIterators; It; It = It->FNextIterator) It->FTable = nullptr;
  }

  /// A string list: Clear, then Add(line, V{}) for each line (a repeated line raises), in one
  /// update. Other sources as the dictionary.
  void Assign(TPersistent* Source) override {
    if (auto* Lines = dynamic_cast<TStrings*>(Source)) {
      WithinUpdate(*this, [&] {
        this->Clear();
        for (std::int32_t i = 0; i < Lines->GetCount(); ++i) this->Add(Lines->Get(i), V{});
      });
      return;
    }
    THashTableBase::Assign(Source);
  }
  /// A string list gets the keys in enumeration order (cleared first, in one update); an
  /// object with a published string property "Text" gets them one per line.
  void AssignTo(TPersistent* Dest) override {
    if (auto* Lines = dynamic_cast<TStrings*>(Dest)) {
      WithinUpdate(*Lines, [&] {
        Lines->Clear();
        for (auto E = this->GetKeys()->GetEnumerator(); E->MoveNext();) Lines->Add(E->GetCurrent());
      });
      return;
    }
    if (Dest)
      for (const TPropInfo& Prop : GetPropList(Dest->ClassType()))
        if (Prop.Kind == pkString && Prop.Set && Prop.Name == u"Text") {
          TStringList Temp;
          AssignTo(&Temp);
          Prop.Set(Dest, TVariant(Temp.GetText()));
          return;
        }
    THashTableBase::AssignTo(Dest);
  }

  [[nodiscard]] TIntfPtr<IStringIterator> Indices() { return TIntfPtr<IStringIterator>(new TStringIterator(this)); }

 protected:
  TTableIterator* FIterators = nullptr;
};

/// What the table iterators share: the table (detached when it dies), the bucket index and
/// the number of elements handed out. NextElement advances to the next live bucket, stopping
/// at the last one; a read at a bucket outside the array (before the first NextElement, or
/// on a table without buckets) raises EListError with that bucket index.
template <class V>
class TKZStringHashTable<V>::TTableIterator : public TInterfacedObject {
  KZ_CLASS(TTableIterator, TInterfacedObject)
 public:
  ~TTableIterator() override {
    if (!FTable) return;
    (FPrevIterator ? FPrevIterator->FNextIterator : FTable->FIterators) = FNextIterator;
    if (FNextIterator) FNextIterator->FPrevIterator = FPrevIterator;
  }

 protected:
  explicit TTableIterator(TKZStringHashTable* Table) : FTable(Table) {
    if (!Table) RaiseNullAccess(u"table");
    FNextIterator = Table->FIterators;
    if (FNextIterator) FNextIterator->FPrevIterator = this;
    Table->FIterators = this;
  }
  TKZStringHashTable& Table() const {
    if (!FTable) RaiseNullAccess(u"table of an iterator (destroyed)");
    return *FTable;
  }
  const TItem& At(std::int32_t Index) const {
    const auto& Items = Table().GetItems();
    if (Index < 0 || Index >= static_cast<std::int32_t>(Items.size()))
      throw EListError(Runtime::SListIndexError, {Index});
    return Items[static_cast<std::size_t>(Index)];
  }
  const TItem& Next() {
    const auto& Items = Table().GetItems();
    const auto Length = static_cast<std::int32_t>(Items.size());
    while (FIndex < Length - 1) {
      ++FIndex;
      if (Items[static_cast<std::size_t>(FIndex)].HashCode != -1) break;
    }
    const TItem& Item = At(FIndex);
    ++FYielded;
    return Item;
  }
  std::int32_t TableCount() const { return Table().GetCount(); }
  bool More() const { return FYielded < Table().GetCount(); }
  void Restart() {
    FIndex = -1;
    FYielded = 0;
  }

  TKZStringHashTable* FTable;
  std::int32_t FIndex = -1;
  std::int32_t FYielded = 0;

 private:
  TTableIterator* FPrevIterator = nullptr;
  TTableIterator* FNextIterator = nullptr;
  friend class TKZStringHashTable;
};

/// The keys of a string table; GetCount is the table's Count.
template <class V>
class TKZStringHashTable<V>::TStringIterator final : public TTableIterator, public IStringIterator {
 public:
  using TMeta = typename TTableIterator::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TStringIterator, TTableIterator)
  KZ_INTERFACES(IStringIterator)
 public:
  explicit TStringIterator(TKZStringHashTable* Table) : TTableIterator(Table) {}
  String CurrentElementS() override { return this->At(this->FIndex).Key; }
  std::int32_t GetCount() override { return this->TableCount(); }
  bool HasMoreElements() override { return this->More(); }
  String NextElementS() override { return this->Next().Key; }
  void Reset() override { this->Restart(); }
};

/// TKZStringHashTable from String to T* (T an object class). Copies (key, value) pairs to and
/// from string lists as (line, object); a line's object that is not a T raises EInvalidCast.
/// Elements() is a fresh IObjectIterator over the values. The table never frees its objects.
template <class T>
class TKZStringObjectHashTable : public TKZStringHashTable<T*> {
  using TStringTableBase = TKZStringHashTable<T*>;
 public:
  using TMeta = typename TStringTableBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TKZStringObjectHashTable, TStringTableBase)
 public:
  using TItem = typename TStringTableBase::TItem;
  using TStringTableBase::TStringTableBase;

  class TObjectIterator;

  /// A string list: Clear, then Add(line, object) for each line, in one update.
  void Assign(TPersistent* Source) override {
    if (auto* Lines = dynamic_cast<TStrings*>(Source)) {
      WithinUpdate(*this, [&] {
        this->Clear();
        for (std::int32_t i = 0; i < Lines->GetCount(); ++i) this->Add(Lines->Get(i), As<T>(Lines->GetObject(i)));
      });
      return;
    }
    TStringTableBase::Assign(Source);
  }
  /// A string list gets every pair as (line, object) in enumeration order, cleared first, in
  /// one update; other destinations as TKZStringHashTable.
  void AssignTo(TPersistent* Dest) override {
    if (auto* Lines = dynamic_cast<TStrings*>(Dest)) {
      WithinUpdate(*Lines, [&] {
        Lines->Clear();
        for (const TItem& Item : this->GetItems())
          if (Item.HashCode != -1) Lines->AddObject(Item.Key, Item.Value);
      });
      return;
    }
    TStringTableBase::AssignTo(Dest);
  }

  [[nodiscard]] TIntfPtr<IObjectIterator> Elements() { return TIntfPtr<IObjectIterator>(new TObjectIterator(this)); }
};

/// The values of a string-to-object table; GetCount is the table's Count.
template <class T>
class TKZStringObjectHashTable<T>::TObjectIterator final : public TStringTableBase::TTableIterator,
                                                           public IObjectIterator {
  using TIteratorBase = typename TStringTableBase::TTableIterator;
 public:
  using TMeta = typename TIteratorBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TObjectIterator, TIteratorBase)
  KZ_INTERFACES(IObjectIterator)
 public:
  explicit TObjectIterator(TKZStringObjectHashTable* Table) : TIteratorBase(Table) {}
  TObject* CurrentElementO() override { return this->At(this->FIndex).Value; }
  std::int32_t GetCount() override { return this->TableCount(); }
  bool HasMoreElements() override { return this->More(); }
  TObject* NextElementO() override { return this->Next().Value; }
  void Reset() override { this->Restart(); }
};

}  // namespace kz
