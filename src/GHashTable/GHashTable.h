// Chained hash tables keyed by machine words, 32-bit integers or strings, with four selectable
// hash functions, load-factor driven growth, positional access through a cursor, owner and
// change notification, and reference-counted iterators.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "CommonInterfaces/CommonInterfaces.h"
#include "Runtime/Enumerable.h"
#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Object.h"
#include "Runtime/Persistent.h"
#include "Runtime/Types.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

/// The bucket function of a table. It belongs to a table's observable state: it fixes the order
/// of iteration and of positions.
enum TGHashType : std::uint8_t { htTruncation, htDivision, htMidSquare, htFolding };

KZ_DECLARE_EXCEPTION(EGHashtableError, Exception)

namespace GHashTable {
KZ_UNIT_SCOPE(GHashTable)
KZ_RESOURCESTRING(SNullArgument, u"Argument is null")
KZ_RESOURCESTRING(SSubscriptOutOfRange, u"Subscript out of range")
KZ_RESOURCESTRING(STableEmpty, u"Table is empty")
KZ_RESOURCESTRING(SNoSuchElement, u"No such element")
KZ_RESOURCESTRING(SNonEmptyTable, u"Cannot perform this operation with non-empty table")
KZ_RESOURCESTRING(SInvalidLoadFactor, u"Load factor must be between 0.0 and 0.1")
KZ_RESOURCESTRING(SIllegalNextElement, u"Illegal NextElement Call, must be iterating over the keys")
KZ_RESOURCESTRING(SCannotGrow, u"Load factor too small: the table cannot grow to take another entry")
}  // namespace GHashTable

class TGCustomHashtable;
class TGHashtableEnumerator;
class TGStringHashtable;

/// Told by a table of its changes. A table holds a counted reference to its owner
/// (TGCustomHashtable::SetOwner); the core itself never attaches one. Keys are the table's
/// key words (for string tables a pointer to the String, valid during the call). The
/// identifier is this library's own.
class IHashTableOwner : public virtual IInterface {
  KZ_INTERFACE(IHashTableOwner, IInterface, "{7C1D52E4-3A9B-4F60-8E27-B4D019A6C5F3}")
 public:
  /// After every change, when the table is not inside BeginUpdate/EndUpdate.
  virtual void TableChanged(TGCustomHashtable* Table) = 0;
  /// Before each put, ahead of hashing (a put that grows the table tells twice).
  virtual void BeforePut(TGCustomHashtable* Table, Pointer Key, Pointer Value) = 0;
  /// Before each removal of a key from a non-empty table, ahead of the lookup.
  virtual void BeforeRemove(TGCustomHashtable* Table, Pointer Key) = 0;
  /// Before a non-empty table is cleared.
  virtual void BeforeClear(TGCustomHashtable* Table) = 0;
};

/// One node of a bucket chain: the key, the value (not owned) and the bucket it is filed
/// under. Entry classes decide what a key word means (GetKey/SetKey/KeyEquals).
class TGHashtableEntry : public TObject {
  KZ_CLASS(TGHashtableEntry, TObject)
 public:
  /// The key as the word the table passes around.
  virtual Pointer GetKey() const;
  virtual void SetKey(Pointer Key);
  /// Word keys are equal when the words are identical.
  virtual bool KeyEquals(Pointer Key) const;

  /// The bucket the entry is filed under.
  std::int32_t GetHash() const { return FHash; }
  Pointer GetItem() const { return FItem; }
  void SetItem(Pointer Value) { FItem = Value; }
  /// The entry behind this one in its bucket, or null.
  TGHashtableEntry* GetNext() const { return FNext; }

 protected:
  std::int32_t FHash = 0;
  Pointer FKey = nullptr;
  Pointer FItem = nullptr;
  TGHashtableEntry* FNext = nullptr;

  friend class TGCustomHashtable;
};

/// The whole chained-table mechanism over word keys and word values. The table owns its
/// entries and buckets, never the values. Insert, lookup and removal are O(1) on average;
/// walking positions forward or backward one at a time is O(1) per step. Subclasses change
/// the entry class (NewHashtableEntry) and the key hash (HashCode).
class TGCustomHashtable : public TPersistent {
  KZ_CLASS(TGCustomHashtable, TPersistent)
 public:
  /// A table of InitialCapacity buckets using htDivision. LoadFactor is taken as given.
  TGCustomHashtable(std::uint32_t InitialCapacity, float LoadFactor);
  /// Frees the entries (not the values), without firing OnChange. Iterators still alive
  /// raise EAccessViolation when used afterwards.
  ~TGCustomHashtable() override;

  /// The value of Key. Raises "Table is empty", "Argument is null", "No such element".
  [[nodiscard]] virtual Pointer GetValue(Pointer Key) const;
  /// Finds Key; Entry is the entry found or null. An empty table answers false for any key;
  /// otherwise a null key raises "Argument is null".
  virtual bool HasKey(Pointer Key, TGHashtableEntry*& Entry) const;
  /// The bucket of Key among Size buckets, by the table's hash type. Raises "Argument is
  /// null" for a null key, EDivByZero for Size 0. Overrides must answer 0 .. Size-1.
  virtual std::int32_t HashCode(Pointer Key, std::int32_t Size) const;
  /// A fresh entry of the table's entry class.
  virtual std::unique_ptr<TGHashtableEntry> NewHashtableEntry();
  /// Grows to Capacity * 2 + 1 buckets.
  virtual void Rehash();
  /// Removes Key and answers its value. Raises "Table is empty", "Argument is null",
  /// "No such element".
  virtual Pointer RemoveValue(Pointer Key);
  /// Stores Value under Key, replacing the value of an existing key (which never grows the
  /// table). A new key first grows the table while Count has reached the threshold. Raises
  /// "Argument is null", EDivByZero at capacity 0, and "Load factor too small ..." when no
  /// growth could make room.
  virtual void PutValue(Pointer Key, Pointer Value);
  // The four bucket functions, over the key's low 32 bits with the sign bit cleared.
  // Size 0 raises EDivByZero.
  virtual std::int32_t DivisionHash(std::int32_t Key, std::int32_t Size) const;
  virtual std::int32_t TruncationHash(std::int32_t Key, std::int32_t Size) const;
  virtual std::int32_t MidSquareHash(std::int32_t Key, std::int32_t Size) const;
  virtual std::int32_t FoldingHash(std::int32_t Key, std::int32_t Size) const;
  /// True when some entry holds Value (identity). O(Count).
  [[nodiscard]] virtual bool ContainsItem(Pointer Value) const;
  virtual void BeginUpdate();
  /// Frees every entry (not the values); Capacity stays. An empty table does nothing.
  virtual void Clear();
  /// Ends an update; at update count exactly 0 the table signals Change. An unmatched call
  /// takes the count below 0, where changes are reported again.
  virtual void EndUpdate();
  /// The next key of the table's own iterator ("No such element" past the end).
  virtual Pointer NextElement();
  /// Restarts the table's own iterator.
  virtual void Reset();

  [[nodiscard]] bool HasKey(Pointer Key) const;
  /// The entry of Key, or null (an empty table answers null for any key). The entry stays
  /// owned by the table.
  [[nodiscard]] TGHashtableEntry* FindEntry(Pointer Key) const;
  [[nodiscard]] bool IsEmpty() const { return FCount == 0; }

  std::uint32_t GetCapacity() const { return FCapacity; }
  /// Moves every entry into NewCapacity buckets (their chains rebuilt, Collisions
  /// recounted). Capacity 0 frees the entries and the buckets.
  void SetCapacity(std::uint32_t NewCapacity);
  std::int32_t GetCount() const { return FCount; }
  /// Entries that share their bucket with an entry in front of them.
  std::int32_t GetCollisions() const { return FCollisions; }
  TGHashType GetHashType() const { return FHashType; }
  /// Raises "Cannot perform this operation with non-empty table" when Value differs and
  /// the table holds entries.
  void SetHashType(TGHashType Value);
  float GetLoadFactor() const { return FLoadFactor; }
  /// Accepts every number, negative ones and those above 1 included; only NaN raises
  /// "Load factor must be between 0.0 and 0.1".
  void SetLoadFactor(float Value);
  /// Capacity * LoadFactor rounded to the nearest integer, ties to even (saturated to the
  /// 64-bit range). A NaN load factor raises "Load factor must be between 0.0 and 0.1".
  std::int64_t GetThreshold() const;
  /// True when the table's own iterator has nothing more to give.
  [[nodiscard]] bool GetEOT() const;

  /// The entry at Index in positional order: buckets ascending, each chain from its head.
  /// Raises EListError (list index) outside 0 .. Count-1.
  TGHashtableEntry* GoToEntry(std::int32_t Index);
  /// As GoToEntry; only the cursor, a cache, moves.
  [[nodiscard]] Pointer GetItemByIndex(std::int32_t Index) const;
  [[nodiscard]] Pointer GetKeyByIndex(std::int32_t Index) const;
  /// Forgets the positional cursor.
  void ClearCache() const;

  /// Signals a change: unless inside an update, tells the owner, then calls OnChange.
  virtual void Change();
  const TNotifyEvent& GetOnChange() const { return FOnChange; }
  void SetOnChange(TNotifyEvent Handler) { FOnChange = std::move(Handler); }
  /// Attaches (or, with null, detaches) the owner told of changes.
  void SetOwner(TIntfPtr<IHashTableOwner> Owner) { FOwner = std::move(Owner); }

  /// A new iterator over the values: buckets from the highest down, chains from the head.
  TIntfPtr<IIterator> Elements();
  /// A new iterator over the keys, in the same order.
  TIntfPtr<IIterator> Indices();
  /// A new iterator over the values for a MoveNext/GetCurrent loop, owned by the caller.
  std::unique_ptr<TGHashtableEnumerator> GetEnumerator();

  /// Copies a like table: load factor, capacity, hash type, then every pair in the source's
  /// iteration order. A table with string keys copies only from one with string keys and a
  /// word-keyed table only from a word-keyed one; anything else raises the assign error.
  void Assign(TPersistent* Source) override;

 protected:
  /// The bucket of the integer Key among Size buckets by the table's hash type: what
  /// HashCode does with a word key once it is known not to be null, for key families whose
  /// hash is an integer (the string tables).
  std::int32_t HashWord(std::int32_t Key, std::int32_t Size) const;
  void SetCount(std::int32_t Value) { FCount = Value; }
  void SetCollisions(std::int32_t Value) { FCollisions = Value; }
  /// The bucket that HashCode(Key, Capacity) gives; raises "Subscript out of range" for an
  /// index outside the buckets.
  std::int32_t BucketOf(Pointer Key) const;
  /// The entry of bucket Bucket filed with Key, or null.
  TGHashtableEntry* FindInBucket(std::int32_t Bucket, Pointer Key) const;
  /// Pushes a new entry (Key, Value) at the head of Bucket and counts it; no growth test
  /// and no Change. For subclasses that write their own put.
  TGHashtableEntry* AddEntry(std::int32_t Bucket, Pointer Key, Pointer Value);
  /// Raises "Load factor too small ..." when no reachable capacity would lift the threshold
  /// above Count, so that growing could never make room.
  void CheckCanGrow() const;
  /// Whether this table's keys are strings (fixes what a key word points to).
  virtual bool HasStringKeys() const { return false; }

 private:
  void FreeEntries();
  void UpdateThreshold();
  void StepForward() const;
  void StepBack() const;
  void CursorToFirst() const;
  // The positional cursor's walk to Index, shared by GoToEntry and the const readers.
  TGHashtableEntry* SeekEntry(std::int32_t Index) const;

  std::uint32_t FCapacity = 0;
  std::int32_t FCollisions = 0;
  std::int32_t FCount = 0;
  TGHashType FHashType = htDivision;
  // The table's own iterator; GetEOT asks it, which may advance it to the next bucket.
  TIntfPtr<TGHashtableEnumerator> FEnumerator;
  std::unique_ptr<TGHashtableEntry*[]> FBuckets;
  TNotifyEvent FOnChange;
  TUpdateCounter<ueCountNegative> FUpdating;
  float FLoadFactor = 0;
  std::int64_t FThreshold = 0;
  bool FThresholdNaN = false;
  TIntfPtr<IHashTableOwner> FOwner;
  // The positional cursor: a cache of the last position reached, moved by const readers.
  mutable std::int32_t FCachedIndex = -1;
  mutable TGHashtableEntry* FCachedEntry = nullptr;
  mutable std::int32_t FCachedHashIndex = -1;
  // Every live iterator over this table, so that removals and the table's end never leave
  // one holding a freed entry.
  TGHashtableEnumerator* FIterators = nullptr;

  // How keys are hashed and compared, fixed at the first use, when the object's class is
  // complete: a table of exactly one of the library's classes hashes and compares in line;
  // any subclass goes through its HashCode, NewHashtableEntry and KeyEquals.
  enum TKeyPath : std::uint8_t { kpUndecided, kpOverridable, kpWord, kpString };
  TKeyPath KeyPath() const { return FKeyPath != kpUndecided ? FKeyPath : DecideKeyPath(); }
  TKeyPath DecideKeyPath() const;
  bool Direct() const { return KeyPath() != kpOverridable; }
  // The in-line bucket and bucket search of a direct table (Key not null, Capacity > 0).
  std::int32_t DirectBucket(Pointer Key, std::uint32_t Capacity) const;
  TGHashtableEntry* DirectFind(std::int32_t Bucket, Pointer Key) const;
  // Key's bucket and entry (or null) on whichever path the table takes.
  TGHashtableEntry* Locate(Pointer Key, std::int32_t& Bucket) const;
  // The commonest tables, word or string keys under the division hash, find a present key
  // with one bucket read and a walk comparing keys; the reciprocal replaces the divide.
  void UpdateDivisionPath() const;
  TGHashtableEntry* FindWord(Pointer Key) const {
    // Every entry of a bucket is filed under it, so the word alone decides.
    TGHashtableEntry* E =
        FBuckets[DivisionBucket(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(Key)) & 0x7FFFFFFFu)];
    while (E && E->FKey != Key) E = E->FNext;
    return E;
  }
  // K mod Capacity by multiplying with the 64-bit reciprocal: exact for every 32-bit K and
  // Capacity (the remainder is the fraction K / Capacity scaled back by Capacity).
  std::uint32_t DivisionBucket(std::uint32_t K) const {
    __extension__ using TWide = unsigned __int128;
    const std::uint64_t Fraction = FCapacityReciprocal * K;
    return static_cast<std::uint32_t>((static_cast<TWide>(Fraction) * FCapacity) >> 64);
  }
  mutable TKeyPath FKeyPath = kpUndecided;
  // The key path when the table hashes by division over a usable capacity, else kpUndecided.
  mutable TKeyPath FDivisionPath = kpUndecided;
  std::uint64_t FCapacityReciprocal = 0;

  friend class TGHashtable;
  friend class TGStringHashtable;

  friend class TGHashtableEnumerator;
};

/// The core published under Get, Put, Remove and ContainsKey, keyed by machine words.
class TGHashtable : public TGCustomHashtable {
  KZ_CLASS(TGHashtable, TGCustomHashtable)
 public:
  using TGCustomHashtable::TGCustomHashtable;

  /// Inline for a word table of this class under the division hash when Key is present.
  [[nodiscard]] virtual Pointer Get(Pointer Key) const {
    if (FDivisionPath == kpWord && Key)
      if (const TGHashtableEntry* E = FindWord(Key)) return E->GetItem();
    return GetEntryValue(Key);
  }
  virtual void Put(Pointer Key, Pointer Value);
  virtual Pointer Remove(Pointer Key);

  [[nodiscard]] bool ContainsKey(Pointer Key) const;
  /// Value is the value found, or null when absent.
  bool ContainsKey(Pointer Key, Pointer& Value) const;
  [[nodiscard]] Pointer GetItem(Pointer Key) const { return Get(Key); }
  void SetItem(Pointer Key, Pointer Value) { Put(Key, Value); }
  /// The next key of the table's own iterator.
  Pointer Next();

 private:
  // Get past its in-line path: the full lookup, with its errors.
  Pointer GetEntryValue(Pointer Key) const;
};

/// A table keyed by 32-bit integers: each key is passed on as a machine word, so 0 is the
/// null key and the sign bit is cleared before hashing.
class TGHashIntTable : public TGHashtable {
  KZ_CLASS(TGHashIntTable, TGHashtable)
 public:
  using TGHashtable::TGHashtable;
  using TGHashtable::ContainsKey;
  using TGHashtable::Get;
  using TGHashtable::Put;
  using TGHashtable::Remove;
  using TGHashtable::GetItem;
  using TGHashtable::SetItem;

  [[nodiscard]] bool ContainsKey(std::int32_t Key) const { return TGHashtable::ContainsKey(KeyWord(Key)); }
  bool ContainsKey(std::int32_t Key, Pointer& Value) const { return TGHashtable::ContainsKey(KeyWord(Key), Value); }
  [[nodiscard]] Pointer Get(std::int32_t Key) const { return Get(KeyWord(Key)); }
  void Put(std::int32_t Key, Pointer Value) { Put(KeyWord(Key), Value); }
  Pointer Remove(std::int32_t Key) { return Remove(KeyWord(Key)); }
  [[nodiscard]] Pointer GetItem(std::int32_t Key) const { return Get(KeyWord(Key)); }
  void SetItem(std::int32_t Key, Pointer Value) { Put(KeyWord(Key), Value); }

  /// The word an integer key travels as.
  static Pointer KeyWord(std::int32_t Key) {
    return reinterpret_cast<Pointer>(static_cast<std::intptr_t>(Key));
  }
};

/// Iterates a table's keys or values: buckets from the highest index down, each chain from
/// its head (the most recent entry). GetCount is the number of elements not yet returned.
/// Reads the table live and does not keep it alive; a removal during the walk is skipped
/// over safely, other changes give an order of no meaning. Used after its table is destroyed,
/// it raises EAccessViolation.
class TGHashtableEnumerator : public TInterfacedObject, public IIterator {
  KZ_CLASS(TGHashtableEnumerator, TInterfacedObject)
  KZ_INTERFACES(IIterator)
 public:
  /// Keys true walks the keys, false the values. Starts reset.
  TGHashtableEnumerator(TGCustomHashtable* Table, bool Keys);
  ~TGHashtableEnumerator() override;

  Pointer CurrentElement() override { return FCurrentElement; }
  std::int32_t GetCount() override { return FCount; }
  bool HasMoreElements() override;
  /// Raises "No such element" past the end.
  Pointer NextElement() override;
  void Reset() override;

  /// For a MoveNext/GetCurrent loop: HasMoreElements, then NextElement when true.
  bool MoveNext();
  Pointer GetCurrent() { return FCurrentElement; }
  bool GetKeys() const { return FKeys; }
  void SetKeys(bool Value) { FKeys = Value; }

 protected:
  TGCustomHashtable* Table();

  TGCustomHashtable* FTable;
  bool FKeys;
  std::int32_t FIndex = 0;
  TGHashtableEntry* FEntry = nullptr;
  Pointer FCurrentElement = nullptr;
  std::int32_t FCount = 0;

 private:
  TGHashtableEnumerator* FPrevIterator = nullptr;
  TGHashtableEnumerator* FNextIterator = nullptr;

  friend class TGCustomHashtable;
};

/// An entry keyed by a string it owns. Its key word points to that String (null for the
/// empty string); keys compare code unit by code unit, case-sensitively.
class TGStringHashtableEntry : public TGHashtableEntry {
  KZ_CLASS(TGStringHashtableEntry, TGHashtableEntry)
 public:
  Pointer GetKey() const override;
  /// Key points to a String (or is null for the empty string); the text is copied.
  void SetKey(Pointer Key) override;
  bool KeyEquals(Pointer Key) const override;
  const String& GetKeyString() const { return FKeyString; }

 private:
  String FKeyString;
};

/// A table keyed by strings; the empty string is the null key. Key words of this table
/// point to String objects. Lookups neither allocate nor convert text.
class TGStringHashtable : public TGCustomHashtable {
  KZ_CLASS(TGStringHashtable, TGCustomHashtable)
 public:
  using TGCustomHashtable::TGCustomHashtable;

  /// Copies a string list (lines become keys, their objects values; a later duplicate line
  /// replaces the earlier value) or another string-keyed table.
  void Assign(TPersistent* Source) override;
  /// Copies the pairs into a string list (cleared first), in iteration order.
  void AssignTo(TPersistent* Dest) override;
  /// Multiplicative hash over the code units (long strings sampled), then the table's hash
  /// type over that number; a string hashing to 0 raises "Argument is null".
  std::int32_t HashCode(Pointer Key, std::int32_t Size) const override;
  std::unique_ptr<TGHashtableEntry> NewHashtableEntry() override;

  [[nodiscard]] virtual Pointer Get(const String& Key) const;
  virtual void Put(const String& Key, Pointer Value);
  virtual Pointer Remove(const String& Key);

  /// False at once for the empty string.
  [[nodiscard]] bool ContainsKey(const String& Key) const;
  bool ContainsKey(const String& Key, Pointer& Value) const;
  [[nodiscard]] Pointer GetItem(const String& Key) const { return Get(Key); }
  void SetItem(const String& Key, Pointer Value) { Put(Key, Value); }
  [[nodiscard]] String GetKeyByIndex(std::int32_t Index) const;
  /// The next key of the table's own iterator.
  String Next();
  /// A new iterator over the values, usable through IIterator only.
  TIntfPtr<IIterator> Elements();
  /// A new iterator over the keys.
  TIntfPtr<IStringIterator> Indices();
  /// The keys in the table's own iteration order (the table's own iterator is reset and
  /// run to its end).
  std::vector<String> ToArray();

  /// The word a string key travels as: a pointer to it, or null for the empty string.
  static Pointer KeyWord(const String& Key) { return Key.empty() ? nullptr : const_cast<String*>(&Key); }
  /// The string a key word of this table points to.
  static String KeyText(Pointer Key) { return Key ? *static_cast<const String*>(Key) : String(); }

 protected:
  bool HasStringKeys() const override { return true; }
};

/// Iterates a string table; its string face (NextElementS) serves iterators over keys only
/// and raises "Illegal NextElement Call, must be iterating over the keys" for values.
class TGStringHashTableEnumerator : public TGHashtableEnumerator, public IStringIterator {
  KZ_CLASS(TGStringHashTableEnumerator, TGHashtableEnumerator)
  KZ_INTERFACES(IStringIterator)
 public:
  TGStringHashTableEnumerator(TGStringHashtable* Table, bool Keys);

  String CurrentElementS() override { return FCurrentKey; }
  String NextElementS() override;
  Pointer NextElement() override;
  std::int32_t GetCount() override { return TGHashtableEnumerator::GetCount(); }
  bool HasMoreElements() override { return TGHashtableEnumerator::HasMoreElements(); }
  void Reset() override { TGHashtableEnumerator::Reset(); }

  /// HasMoreElements, then NextElementS when true: raises on the first step over values.
  bool MoveNext();
  String GetCurrent() { return FCurrentKey; }

 private:
  String FCurrentKey;
};

}  // namespace kz
