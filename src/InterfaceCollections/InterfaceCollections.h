// Chained hash tables whose values are counted interface references.
#pragma once

#include <cstdint>
#include <vector>

#include "GHashTable/GHashTable.h"
#include "Runtime/Interfaces.h"

namespace kz {

namespace InterfaceCollections {
KZ_UNIT_SCOPE(InterfaceCollections)
KZ_RESOURCESTRING(SNoSuchKey, u"No such element: %s")
KZ_RESOURCESTRING(SValuesOnly, u"Illegal NextElementI call, must be iterating over the values")
}  // namespace InterfaceCollections

/// A word-keyed entry holding one counted reference to its value, released with the entry.
class TIHashtableEntry : public TGHashtableEntry {
  KZ_CLASS(TIHashtableEntry, TGHashtableEntry)
 public:
  ~TIHashtableEntry() override;
};

/// A string-keyed entry holding one counted reference to its value.
class TIStringHashtableEntry : public TGStringHashtableEntry {
  KZ_CLASS(TIStringHashtableEntry, TGStringHashtableEntry)
 public:
  ~TIStringHashtableEntry() override;
};

/// Walks an interface table: NextElementI answers the values as counted references (over
/// keys it raises EGHashtableError); NextKey and NextEntry step like NextElement and answer
/// the key word or the entry (a view, valid while the entry is in the table); CurrentKey is
/// the key of the last step. The value of the last step is held (counted) until the next
/// step, so CurrentElementI stays valid when its entry is removed meanwhile.
class TIHashtableEnumerator : public TGHashtableEnumerator, public IInterfaceIterator {
  KZ_CLASS(TIHashtableEnumerator, TGHashtableEnumerator)
  KZ_INTERFACES(IInterfaceIterator)
 public:
  TIHashtableEnumerator(TGCustomHashtable* Table, bool Keys) : TGHashtableEnumerator(Table, Keys) {}
  TIntfPtr<IInterface> CurrentElementI() override;
  TIntfPtr<IInterface> NextElementI() override;
  std::int32_t GetCount() override { return TGHashtableEnumerator::GetCount(); }
  bool HasMoreElements() override { return TGHashtableEnumerator::HasMoreElements(); }
  void Reset() override { TGHashtableEnumerator::Reset(); }
  Pointer NextElement() override;
  TGHashtableEntry* NextEntry();
  Pointer NextKey() { return NextEntry()->GetKey(); }
  Pointer CurrentKey() const { return FCurrentKey; }
  [[nodiscard]] TIntfPtr<IInterface> GetCurrent() { return CurrentElementI(); }

 private:
  Pointer FCurrentKey = nullptr;
  TIntfPtr<IInterface> FCurrentValue;
};

/// The string table's enumerator with keys as strings (NextKeyS, CurrentKeyS).
class TIStringHashtableEnumerator : public TIHashtableEnumerator {
  KZ_CLASS(TIStringHashtableEnumerator, TIHashtableEnumerator)
 public:
  using TIHashtableEnumerator::TIHashtableEnumerator;
  String NextKeyS() { return TGStringHashtable::KeyText(NextKey()); }
  String CurrentKeyS() const { return TGStringHashtable::KeyText(CurrentKey()); }
};

namespace detail {
/// The counted-value mechanics both interface tables share. The word-level operations of the
/// core stay safe on these tables: a value word put through them is an IInterface* of which
/// the table takes its own reference, and a value word removed through them stays valid
/// until the next removal, Clear or destruction.
template <class TBase>
class TCountedValues : public TBase {
 public:
  using TBase::TBase;
  void PutValue(Pointer Key, Pointer Value) override;
  Pointer RemoveValue(Pointer Key) override;
  void Clear() override;

 protected:
  /// Puts Value (counted) and answers the value it replaced, or null.
  TIntfPtr<IInterface> PutCounted(Pointer Key, IInterface* Value);
  TIntfPtr<IInterface> RemoveCounted(Pointer Key);
  /// "Table is empty", "Argument is null", "No such element: <KeyText>".
  TIntfPtr<IInterface> GetCounted(Pointer Key, const String& KeyText) const;
  bool ContainsCounted(Pointer Key, TIntfPtr<IInterface>& Value) const;
  /// Copies a like table's pairs with counted references; other sources raise the assign
  /// error, because their values are not interface references.
  void AssignCounted(TPersistent* Source, bool LikeTable);

 private:
  bool FPutting = false;
  TIntfPtr<IInterface> FLastRemoved;
};
}  // namespace detail

/// Word keys, counted interface values: a value lives at least as long as its entry, and put
/// and remove hand the previous value back. Everything else is the core table's. The typed
/// lookups carry an I suffix where the core's word-valued virtual holds the plain name.
class TIHashTable : public detail::TCountedValues<TGHashtable> {
  KZ_CLASS(TIHashTable, TGHashtable)
 public:
  using TCountedValues::TCountedValues;
  ~TIHashTable() override;
  std::unique_ptr<TGHashtableEntry> NewHashtableEntry() override;

  TIntfPtr<IInterface> PutValue(Pointer Key, const TIntfPtr<IInterface>& Value) { return PutCounted(Key, Value.get()); }
  TIntfPtr<IInterface> Put(Pointer Key, const TIntfPtr<IInterface>& Value) { return PutValue(Key, Value); }
  void SetItem(Pointer Key, const TIntfPtr<IInterface>& Value) { (void)PutValue(Key, Value); }
  using TCountedValues::PutValue;
  using TGHashtable::Put;
  [[nodiscard]] TIntfPtr<IInterface> GetValueI(Pointer Key) const;
  [[nodiscard]] TIntfPtr<IInterface> GetI(Pointer Key) const { return GetValueI(Key); }
  [[nodiscard]] TIntfPtr<IInterface> GetItem(Pointer Key) const { return GetValueI(Key); }
  TIntfPtr<IInterface> RemoveValueI(Pointer Key) { return RemoveCounted(Key); }
  TIntfPtr<IInterface> RemoveI(Pointer Key) { return RemoveCounted(Key); }
  using TGHashtable::ContainsKey;
  bool ContainsKey(Pointer Key, TIntfPtr<IInterface>& Value) const { return ContainsCounted(Key, Value); }
  [[nodiscard]] TIntfPtr<IInterface> GetItemByIndex(std::int32_t Index) const;
  [[nodiscard]] TIntfPtr<TIHashtableEnumerator> Elements();
  [[nodiscard]] TIntfPtr<TIHashtableEnumerator> GetEnumerator() { return Elements(); }
  void Assign(TPersistent* Source) override { AssignCounted(Source, dynamic_cast<TIHashTable*>(Source) != nullptr); }
};

/// String keys, counted interface values; as TIHashTable otherwise.
class TIStringHashTable : public detail::TCountedValues<TGStringHashtable> {
  KZ_CLASS(TIStringHashTable, TGStringHashtable)
 public:
  using TCountedValues::TCountedValues;
  ~TIStringHashTable() override;
  std::unique_ptr<TGHashtableEntry> NewHashtableEntry() override;

  TIntfPtr<IInterface> PutValue(const String& Key, const TIntfPtr<IInterface>& Value) {
    return PutCounted(KeyWord(Key), Value.get());
  }
  TIntfPtr<IInterface> Put(const String& Key, const TIntfPtr<IInterface>& Value) { return PutValue(Key, Value); }
  void SetItem(const String& Key, const TIntfPtr<IInterface>& Value) { (void)PutValue(Key, Value); }
  using TCountedValues::PutValue;
  using TGStringHashtable::Put;
  [[nodiscard]] TIntfPtr<IInterface> GetValueI(const String& Key) const { return GetCounted(KeyWord(Key), Key); }
  [[nodiscard]] TIntfPtr<IInterface> GetI(const String& Key) const { return GetValueI(Key); }
  [[nodiscard]] TIntfPtr<IInterface> GetItem(const String& Key) const { return GetValueI(Key); }
  TIntfPtr<IInterface> RemoveValueI(const String& Key) { return RemoveCounted(KeyWord(Key)); }
  TIntfPtr<IInterface> RemoveI(const String& Key) { return RemoveCounted(KeyWord(Key)); }
  using TGStringHashtable::ContainsKey;
  /// False at once for the empty string.
  bool ContainsKey(const String& Key, TIntfPtr<IInterface>& Value) const;
  [[nodiscard]] TIntfPtr<IInterface> GetItemByIndex(std::int32_t Index) const;
  [[nodiscard]] TIntfPtr<TIStringHashtableEnumerator> Elements();
  [[nodiscard]] TIntfPtr<TIStringHashtableEnumerator> GetEnumerator() { return Elements(); }
  /// The values in the table's iteration order.
  [[nodiscard]] std::vector<TIntfPtr<IInterface>> ToIntfArray();
  void Assign(TPersistent* Source) override {
    AssignCounted(Source, dynamic_cast<TIStringHashTable*>(Source) != nullptr);
  }
  /// Values are interfaces, not objects: copying into a string list raises the assign error.
  void AssignTo(TPersistent* Dest) override { TPersistent::AssignTo(Dest); }
};

}  // namespace kz
