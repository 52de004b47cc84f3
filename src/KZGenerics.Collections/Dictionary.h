// The enumerable base and the open-addressing dictionary: linear probing over one array of
// (hash, key, value) buckets, power-of-two sizes, a 3/4 fill threshold and backward-shift
// removal, with key and value views and notifications per key and value.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "KZGenerics.Collections/Messages.h"
#include "Runtime/Generics.h"
#include "Runtime/OutOfMemory.h"
#include "Runtime/Persistent.h"

namespace kz {

using Generics::IEqualityComparer;
using Generics::TEqualityComparer;
using Generics::TPair;

/// What happened to a key or value a dictionary reports: added (0), removed (1), extracted (2).
enum TKZNotifyAction : std::uint8_t { naAdded, naRemoved, naExtracted };

/// A key or value notification: (sender, item, action).
template <class T>
using TKZNotifyEvent = std::function<void(TObject* Sender, const T& Item, TKZNotifyAction Action)>;

namespace detail {

// A byte per bucket beside the buckets: free, or the top seven bits of the stored hash. Lookups
// test a group of these at once, so a miss reads one short run of bytes instead of whole
// buckets, and a bucket is read only when its byte matches. Past the last bucket lie
// GroupWidth - 1 end bytes that neither match nor read as free, so a group read never leaves
// the array. A group's answers are bit masks, lowest bucket first.
struct TBucketTags {
  static constexpr std::uint8_t FreeTag = 0x80, EndTag = 0xFF;
  static constexpr std::uint8_t Of(std::int32_t HashCode) { return static_cast<std::uint8_t>(HashCode >> 24); }
#if defined(__SSE2__)
  static constexpr std::uint32_t GroupWidth = 16;
  using TGroup = __m128i;
  using TBits = std::uint32_t;
  static TGroup Load(const std::uint8_t* Tags) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(Tags)); }
  static TBits Matching(TGroup Group, std::uint8_t Tag) {
    // A multiply spreads the byte, a shuffle the word: fewer steps than broadcasting a byte.
    const auto Spread = static_cast<std::int32_t>(Tag * 0x01010101u);
    return static_cast<TBits>(_mm_movemask_epi8(_mm_cmpeq_epi8(Group, _mm_set1_epi32(Spread))));
  }
  static TBits Free(TGroup Group) {
    return static_cast<TBits>(_mm_movemask_epi8(_mm_cmpeq_epi8(Group, _mm_set1_epi8(static_cast<char>(FreeTag)))));
  }
  static std::uint32_t Position(TBits Bits) { return static_cast<std::uint32_t>(std::countr_zero(Bits)); }
  // The bits of the first N buckets of a group (N <= GroupWidth).
  static TBits First(std::uint32_t N) { return (TBits{1} << N) - 1u; }
#else
  static constexpr std::uint32_t GroupWidth = 8;
  using TGroup = std::uint64_t;
  using TBits = std::uint64_t;
  static constexpr std::uint64_t Ones = 0x0101010101010101ull, High = 0x8080808080808080ull;
  static TGroup Load(const std::uint8_t* Tags) {
    std::uint64_t Group = 0;
    if constexpr (std::endian::native == std::endian::little) {
      std::memcpy(&Group, Tags, sizeof Group);
    } else {
      for (std::uint32_t k = 0; k < GroupWidth; ++k) Group |= std::uint64_t{Tags[k]} << (8 * k);
    }
    return Group;
  }
  // The high bit of each byte equal to Tag. A borrow may also mark a live byte just above a
  // match, which the stored hash then turns down; free and end bytes are never marked.
  static TBits Matching(TGroup Group, std::uint8_t Tag) {
    const std::uint64_t X = Group ^ (Ones * Tag);
    return (X - Ones) & ~X & High;
  }
  // The high bit of each free byte: high bit set, the next one clear.
  static TBits Free(TGroup Group) { return Group & ~(Group << 1) & High; }
  static std::uint32_t Position(TBits Bits) { return static_cast<std::uint32_t>(std::countr_zero(Bits)) >> 3; }
  static TBits First(std::uint32_t N) { return N >= GroupWidth ? ~TBits{0} : (TBits{1} << (8 * N)) - 1u; }
#endif
  // The group a table without buckets reads: nothing matches and nothing is free.
  static constexpr std::uint8_t NoBuckets[GroupWidth] = {EndTag, EndTag, EndTag, EndTag, EndTag, EndTag, EndTag, EndTag
#if defined(__SSE2__)
    , EndTag, EndTag, EndTag, EndTag, EndTag, EndTag, EndTag, EndTag
#endif
  };
};

}  // namespace detail

/// True when Item lies in the circular half-open range (Bottom, TopInclusive] of bucket
/// indices: the test backward-shift removal uses to decide whether an entry may stay put.
constexpr bool InCircularRange(std::int32_t Bottom, std::int32_t Item, std::int32_t TopInclusive) {
  return (Bottom < Item && Item <= TopInclusive) || (TopInclusive < Bottom && Bottom < Item) ||
         (TopInclusive < Bottom && Item <= TopInclusive);
}

/// A walk over T: MoveNext steps (false once past the end), GetCurrent is the item reached.
/// Enumerators read their collection live; it must outlive them and not change meanwhile.
template <class T>
class TKZEnumerator : public TObject {
  KZ_CLASS(TKZEnumerator, TObject)
 public:
  virtual bool MoveNext() = 0;
  virtual T GetCurrent() const = 0;
};

/// Base of the collections that hand out enumerators of T; walkable by range-for.
template <class T>
class TKZEnumerable : public TPersistent {
  KZ_CLASS(TKZEnumerable, TPersistent)
 public:
  std::unique_ptr<TKZEnumerator<T>> GetEnumerator() const { return DoGetEnumerator(); }
  /// Every item in enumeration order.
  virtual std::vector<T> ToArray() const {
    std::vector<T> Result;
    Result.reserve(10);
    for (auto E = GetEnumerator(); E->MoveNext();) Result.push_back(E->GetCurrent());
    Result.shrink_to_fit();
    return Result;
  }

 protected:
  virtual std::unique_ptr<TKZEnumerator<T>> DoGetEnumerator() const = 0;
  /// The first Count items, for collections that know their count.
  std::vector<T> ToArrayImpl(std::int32_t Count) const {
    std::vector<T> Result;
    Result.reserve(static_cast<std::size_t>(Count > 0 ? Count : 0));
    for (auto E = GetEnumerator(); static_cast<std::int32_t>(Result.size()) < Count && E->MoveNext();)
      Result.push_back(E->GetCurrent());
    return Result;
  }
};

/// An open-addressing hash map from K to V. It owns its buckets, never what a value points
/// to. Lookups, adds and removes are expected O(1); with the default comparer hashing and
/// equality are inline (no virtual call, no allocation). Enumeration follows bucket order,
/// which changes on every rehash and may change on removal. A missing value reads as V{}.
/// Errors: Add of a present key and GetItem/SetItem of a missing one raise EListError; a
/// negative capacity or SetCapacity below Count EArgumentOutOfRangeException; more than 2^30
/// buckets EOutOfMemory. A failed operation leaves the entries unchanged.
template <class K, class V>
class TKZDictionary : public TKZEnumerable<TPair<K, V>> {
  using TEnumerableBase = TKZEnumerable<TPair<K, V>>;
 public:
  using TMeta = typename TEnumerableBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TKZDictionary, TEnumerableBase)
 public:
  using TKeyType = K;
  using TValueType = V;
  using TPairType = TPair<K, V>;
  using TComparerRef = TIntfPtr<IEqualityComparer<K>>;

  /// The largest bucket count.
  static constexpr std::int32_t MaxBuckets = 1 << 30;

  /// One bucket: HashCode -1 marks a free one.
  struct TItem {
    std::int32_t HashCode = -1;
    K Key{};
    V Value{};
  };

  class TPairEnumerator;
  template <class T, T TItem::*Part>
  class TPartEnumerator;
  template <class T, T TItem::*Part>
  class TPartCollection;
  using TKeyEnumerator = TPartEnumerator<K, &TItem::Key>;
  using TValueEnumerator = TPartEnumerator<V, &TItem::Value>;
  using TKeyCollection = TPartCollection<K, &TItem::Key>;
  using TValueCollection = TPartCollection<V, &TItem::Value>;

  /// Room for Capacity entries without growing (0: no buckets until the first add). A null
  /// comparer means the default comparer of K.
  explicit TKZDictionary(std::int32_t Capacity = 0, TComparerRef Comparer = nullptr) {
    if (Capacity < 0) throw EArgumentOutOfRangeException(Runtime::SArgumentOutOfRange);
    SetComparer(std::move(Comparer));
    SetCapacity(Capacity);
  }
  explicit TKZDictionary(TComparerRef Comparer) : TKZDictionary(0, std::move(Comparer)) {}
  /// Every pair of Collection through AddOrSetValue: later duplicates overwrite earlier ones.
  explicit TKZDictionary(const TKZEnumerable<TPairType>* Collection, TComparerRef Comparer = nullptr)
      : TKZDictionary(0, std::move(Comparer)) {
    if (!Collection) RaiseNullAccess(u"pair collection");
    for (auto E = Collection->GetEnumerator(); E->MoveNext();) {
      TPairType P = E->GetCurrent();
      AddOrSetValue(std::move(P.Key), std::move(P.Value));
    }
    FQuiet = TQuiet::Unknown;  // found while a descendant's part was not yet built
  }
  TKZDictionary(std::initializer_list<TPairType> Pairs, TComparerRef Comparer = nullptr)
      : TKZDictionary(0, std::move(Comparer)) {
    for (const TPairType& P : Pairs) AddOrSetValue(P.Key, P.Value);
    FQuiet = TQuiet::Unknown;  // found while a descendant's part was not yet built
  }
  /// Clears (telling the handlers of every entry), then frees the views. A handler that
  /// raises here cannot stop the destruction; its exception is dropped.
  ~TKZDictionary() override {
    try {
      Clear();
    } catch (...) {
    }
  }

  // --- Changes ---
  /// Adds a new key; a present key raises EListError (after any growth).
  void Add(K Key, V Value) {
    if (FCount >= FGrowThreshold) Grow();
    const std::int32_t HashCode = Hash(Key);
    const std::int32_t Index = GetBucketIndex(Key, HashCode);
    if (Index >= 0) throw EListError(Runtime::SGenericDuplicateItem);
    DoAdd(HashCode, ~Index, std::move(Key), std::move(Value));
  }
  /// Adds Key or replaces its value.
  void AddOrSetValue(K Key, V Value) {
    if (FCount >= FGrowThreshold) Grow();
    const std::int32_t HashCode = Hash(Key);
    const std::int32_t Index = GetBucketIndex(Key, HashCode);
    if (Index >= 0)
      DoSetValue(Index, std::move(Value));
    else
      DoAdd(HashCode, ~Index, std::move(Key), std::move(Value));
  }
  /// Removes Key and answers its value; V{} when absent.
  V Remove(const K& Key) { return DoRemove(Key, Hash(Key), naRemoved); }
  /// Removes Key, told as extracted, and answers (Key, value); (Key, V{}) when absent.
  [[nodiscard]] TPairType ExtractPair(const K& Key) {
    const std::int32_t HashCode = Hash(Key);
    // An empty table still goes through DoRemove so that a descendant can refuse it.
    if (FCount != 0 && GetBucketIndex(Key, HashCode) < 0) return TPairType{Key, V{}};
    return TPairType{Key, DoRemove(Key, HashCode, naExtracted)};
  }
  /// Empties the table and drops its buckets, then tells each former entry as removed.
  virtual void Clear() {
    std::vector<TItem> Old;
    Old.swap(FItems);
    std::vector<std::uint8_t>().swap(FTags);
    FTagData = detail::TBucketTags::NoBuckets;
    FMask = 0;
    FFetchEarly = false;
    ++FLayoutVersion;
    FCount = 0;
    FGrowThreshold = 0;
    if (!Quiet())
      for (TItem& Item : Old)
        if (Item.HashCode != -1) Notify(Item.Key, Item.Value, naRemoved);
  }
  /// Shrinks to the smallest bucket count for Count + 1 entries.
  void TrimExcess() { SetCapacity(FCount + 1); }
  /// At least NewCapacity buckets (a power of two from 4; 0 drops them).
  void SetCapacity(std::int32_t NewCapacity) {
    if (NewCapacity < FCount || NewCapacity > MaxBuckets)
      throw EArgumentOutOfRangeException(Runtime::SArgumentOutOfRange);
    if (NewCapacity == 0) {
      Rehash(0);
      return;
    }
    std::int32_t Length = 4;
    while (Length < NewCapacity) Length *= 2;
    Rehash(Length);
  }
  /// Replaces the value of a present key; a missing key raises EListError.
  void SetItem(const K& Key, V Value) {
    const std::int32_t Index = Locate(Key);
    if (Index < 0) throw EListError(Runtime::SGenericItemNotFound);
    DoSetValue(Index, std::move(Value));
  }
  /// From a dictionary of this very class: Clear, then Add every pair in its order.
  void Assign(TPersistent* Source) override {
    if (Source == this) return;
    if (auto* Src = dynamic_cast<TKZDictionary*>(Source)) {
      Clear();
      for (const TItem& Item : Src->FItems)
        if (Item.HashCode != -1) Add(Item.Key, Item.Value);
      return;
    }
    TEnumerableBase::Assign(Source);
  }

  // --- Queries ---
  [[nodiscard]] bool TryGetValue(const K& Key, V& Value) const {
    const std::int32_t Index = Locate(Key);
    if (Index < 0) {
      Value = V{};
      return false;
    }
    Value = FItems[static_cast<std::size_t>(Index)].Value;
    return true;
  }
  /// The value of Key, or null when absent: no copy, no error.
  [[nodiscard]] const V* Find(const K& Key) const {
    const std::int32_t Index = Locate(Key);
    return Index < 0 ? nullptr : &FItems[static_cast<std::size_t>(Index)].Value;
  }
  [[nodiscard]] bool ContainsKey(const K& Key) const { return Locate(Key) >= 0; }
  /// Scans every bucket with the default equality of V. O(buckets).
  [[nodiscard]] bool ContainsValue(const V& Value) const {
    for (const TItem& Item : FItems)
      if (Item.HashCode != -1 && Item.Value == Value) return true;
    return false;
  }
  /// The value of a present key; a missing key raises EListError.
  [[nodiscard]] const V& GetItem(const K& Key) const {
    const std::int32_t Index = Locate(Key);
    if (Index < 0) throw EListError(Runtime::SGenericItemNotFound);
    return FItems[static_cast<std::size_t>(Index)].Value;
  }
  std::int32_t GetCount() const { return FCount; }
  /// The number of buckets (0 or a power of two from 4).
  std::int32_t GetBucketCount() const { return static_cast<std::int32_t>(FItems.size()); }
  /// The Count at which the next add first grows the table.
  std::int32_t GetGrowThreshold() const { return FGrowThreshold; }
  /// The buckets, for inspection.
  const std::vector<TItem>& GetItems() const { return FItems; }
  /// Changes whenever a rehash has moved the entries.
  std::uint32_t GetLayoutVersion() const { return FLayoutVersion; }
  const TComparerRef& GetComparer() const { return FComparer; }
  /// The keys as a live view, owned by the dictionary.
  TKeyCollection* GetKeys() const {
    if (!FKeys) FKeys.reset(new TKeyCollection(this));
    return FKeys.get();
  }
  /// The values as a live view, owned by the dictionary.
  TValueCollection* GetValues() const {
    if (!FValues) FValues.reset(new TValueCollection(this));
    return FValues.get();
  }
  std::unique_ptr<TPairEnumerator> GetEnumerator() const { return std::make_unique<TPairEnumerator>(this); }
  /// Exactly Count pairs in bucket order.
  std::vector<TPairType> ToArray() const override { return this->ToArrayImpl(FCount); }

  const TKZNotifyEvent<K>& GetOnKeyNotify() const { return FOnKeyNotify; }
  void SetOnKeyNotify(TKZNotifyEvent<K> Handler) {
    FOnKeyNotify = std::move(Handler);
    FQuiet = TQuiet::Unknown;
  }
  const TKZNotifyEvent<V>& GetOnValueNotify() const { return FOnValueNotify; }
  void SetOnValueNotify(TKZNotifyEvent<V> Handler) {
    FOnValueNotify = std::move(Handler);
    FQuiet = TQuiet::Unknown;
  }

  /// The stored hash of Key: never negative, so never the free marker.
  std::int32_t Hash(const K& Key) const {
    return StoredHash(FDefaultComparer ? Generics::detail::DefaultHashCode(Key) : FComparer->GetHashCode(Key));
  }
  /// The bucket holding Key, or the complement of the free bucket where it would go; the
  /// smallest int32 when there are no buckets, or when SetCapacity(Count) has filled every
  /// bucket and Key is absent (adds grow before they search, so they always find room).
  std::int32_t GetBucketIndex(const K& Key, std::int32_t HashCode) const { return SearchAny<true>(Key, HashCode); }

 protected:
  /// The bucket holding Key, or a negative number when it is absent (a lookup needs no
  /// insertion point), choosing the comparer once.
  std::int32_t Locate(const K& Key) const {
    if (FDefaultComparer) [[likely]]
      return Search<true, false>(Key, StoredHash(Generics::detail::DefaultHashCode(Key)));
    return Search<false, false>(Key, StoredHash(FComparer->GetHashCode(Key)));
  }
  std::unique_ptr<TKZEnumerator<TPairType>> DoGetEnumerator() const override { return GetEnumerator(); }

  /// Fills free bucket Index, counts it, then tells key and value as added.
  virtual void DoAdd(std::int32_t HashCode, std::int32_t Index, K Key, V Value) {
    TItem& Item = FItems[static_cast<std::size_t>(Index)];
    Item.Key = std::move(Key);
    Item.Value = std::move(Value);
    Item.HashCode = HashCode;
    FTags[static_cast<std::size_t>(Index)] = detail::TBucketTags::Of(HashCode);
    ++FCount;
    Notify(Item.Key, Item.Value, naAdded);
  }
  /// Stores Value in bucket Index, then tells the old value removed and the new one added.
  virtual void DoSetValue(std::int32_t Index, V Value) {
    V Old = std::exchange(FItems[static_cast<std::size_t>(Index)].Value, std::move(Value));
    if (Quiet()) return;
    ValueNotify(Old, naRemoved);
    ValueNotify(FItems[static_cast<std::size_t>(Index)].Value, naAdded);
  }
  /// Removes Key by shifting later entries of its probe run back into the gap; V{} when
  /// absent (and nothing told).
  virtual V DoRemove(const K& Key, std::int32_t HashCode, TKZNotifyAction Action) {
    // The common case, a quiet table with the default comparer whose key's run ends in the
    // home group, makes no call but the tail one: it saves no registers, and far beyond the
    // caches a shorter removal lets more of them wait for memory at once.
    if (FDefaultComparer && FQuiet == TQuiet::Yes) {
      const std::int32_t Index = Search<true, false, true, true>(Key, HashCode);
      if (Index >= 0) return TakeOut(static_cast<std::uint32_t>(Index));
      if (Index == -1) return V{};
    }
    return RemoveAny(Key, HashCode, Action);
  }
  /// KeyNotify, then ValueNotify, unless neither can do anything.
  void Notify(const K& Key, const V& Value, TKZNotifyAction Action) {
    if (Quiet()) return;
    KeyNotify(Key, Action);
    ValueNotify(Value, Action);
  }
  virtual void KeyNotify(const K& Key, TKZNotifyAction Action) {
    if (FOnKeyNotify) FOnKeyNotify(this, Key, Action);
  }
  virtual void ValueNotify(const V& Value, TKZNotifyAction Action) {
    if (FOnValueNotify) FOnValueNotify(this, Value, Action);
  }

  /// Twice the buckets, or 4 from none.
  void Grow() {
    const std::int32_t Length = GetBucketCount();
    if (Length >= MaxBuckets) throw EOutOfMemory(Runtime::SOutOfMemory);
    Rehash(Length == 0 ? 4 : Length * 2);
  }
  /// Moves every entry, in old bucket order, into NewLength fresh buckets; tells nothing.
  /// The new array is built before the old one is touched.
  void Rehash(std::int32_t NewLength) {
    if (NewLength == GetBucketCount()) return;
    std::vector<TItem> NewItems;
    std::vector<std::uint8_t> NewTags;
    detail::RaiseOutOfMemoryAsError([&] {
      NewItems.resize(static_cast<std::size_t>(NewLength));
      if (NewLength != 0) {
        NewTags.assign(static_cast<std::size_t>(NewLength) + detail::TBucketTags::GroupWidth - 1,
                       detail::TBucketTags::EndTag);
        std::fill_n(NewTags.begin(), NewLength, detail::TBucketTags::FreeTag);
      }
    });
    NewItems.swap(FItems);
    NewTags.swap(FTags);
    FTagData = NewLength == 0 ? detail::TBucketTags::NoBuckets : FTags.data();
    FMask = NewLength == 0 ? 0u : static_cast<std::uint32_t>(NewLength) - 1u;
    FFetchEarly = static_cast<std::size_t>(NewLength) * sizeof(TItem) > FetchEarlyBytes;
    ++FLayoutVersion;
    FGrowThreshold = (NewLength >> 1) + (NewLength >> 2);
    for (TItem& Item : NewItems)
      if (Item.HashCode != -1) RehashAdd(Item.HashCode, std::move(Item.Key), std::move(Item.Value));
  }
  void RehashAdd(std::int32_t HashCode, K&& Key, V&& Value) {
    using Tags = detail::TBucketTags;
    const std::uint32_t Mask = FMask;
    std::uint32_t I = static_cast<std::uint32_t>(HashCode) & Mask;
    Tags::TBits Free = Tags::Free(Tags::Load(FTags.data() + I));
    while (Free == 0) {
      I = I + Tags::GroupWidth > Mask ? 0u : I + Tags::GroupWidth;
      Free = Tags::Free(Tags::Load(FTags.data() + I));
    }
    I += Tags::Position(Free);
    FTags[I] = Tags::Of(HashCode);
    FItems[I].HashCode = HashCode;
    FItems[I].Key = std::move(Key);
    FItems[I].Value = std::move(Value);
  }

 private:
  [[gnu::noinline]] V RemoveAny(const K& Key, std::int32_t HashCode, TKZNotifyAction Action) {
    // A removal mostly finds its key, near its home bucket: the search fetches that while the
    // tags come, whatever the table's size.
    const std::int32_t Index = SearchAny<false, true>(Key, HashCode);
    if (Index < 0) return V{};
    K OldKey = std::move(FItems[static_cast<std::size_t>(Index)].Key);
    V Result = TakeOut(static_cast<std::uint32_t>(Index));
    Notify(OldKey, Result, Action);
    return Result;
  }
  // Empties bucket Gap by shifting later entries of its probe run back into it, and answers
  // the value it held.
  V TakeOut(std::uint32_t Gap) {
    const std::uint32_t Mask = FMask;
    TItem* Items = FItems.data();
    std::uint8_t* BucketTags = FTags.data();
    constexpr std::uint8_t Free = detail::TBucketTags::FreeTag;
    // Moved out so that its storage goes now rather than stay with the free bucket.
    [[maybe_unused]] const K Removed = std::move(Items[Gap].Key);
    V Result = std::move(Items[Gap].Value);
    BucketTags[Gap] = Free;
    // The gap's tag stays free, so the walk ends even in a table that had no other free bucket.
    for (std::uint32_t I = (Gap + 1u) & Mask; BucketTags[I] != Free; I = (I + 1u) & Mask) {
      // InCircularRange(Gap, home, I) as distances back from I: the entry stays when its home
      // lies nearer to I than the gap does.
      const std::uint32_t FromHome = (I - static_cast<std::uint32_t>(Items[I].HashCode)) & Mask;
      if (FromHome >= ((I - Gap) & Mask)) {
        Items[Gap] = std::move(Items[I]);
        BucketTags[Gap] = BucketTags[I];
        Gap = I;
        BucketTags[Gap] = Free;
      }
    }
    Items[Gap].HashCode = -1;
    Items[Gap].Key = K{};
    Items[Gap].Value = V{};
    --FCount;
    return Result;
  }
  // Whether the notification hooks can do nothing: the object is of this very class (no hook
  // overridden) and has no handler. Found on first need, and forgotten when a handler changes
  // or a constructor that adds returns (its class may not yet be the object's own).
  bool Quiet() const {
    if (FQuiet == TQuiet::Unknown)
      FQuiet = IsExactly<TKZDictionary>(this) && !FOnKeyNotify && !FOnValueNotify ? TQuiet::Yes : TQuiet::No;
    return FQuiet == TQuiet::Yes;
  }
  void SetComparer(TComparerRef Comparer) {
    const TComparerRef& Default = TEqualityComparer<K>::Default();
    FDefaultComparer = !Comparer || Comparer.get() == Default.get();
    FComparer = FDefaultComparer ? Default : std::move(Comparer);
  }
  // Bucket arrays above this size are mostly outside the caches (measured: below it the early
  // fetch costs a missing key more than it saves a present one).
  static constexpr std::size_t FetchEarlyBytes = std::size_t{8} << 20;
  // What a search told to stay in the home group answers when the key's run goes on past it.
  static constexpr std::int32_t NotInHomeGroup = -2;
  static std::int32_t StoredHash(std::int32_t HashCode) {
    return static_cast<std::int32_t>(((static_cast<std::uint32_t>(HashCode) & 0x7FFFFFFFu) + 1u) & 0x7FFFFFFFu);
  }
  template <bool Inline>
  bool KeyEquals(const K& Stored, const K& Key) const {
    if constexpr (!Inline)
      return FComparer->Equals(Stored, Key);
    else if constexpr (std::is_same_v<K, String>)
      // Equal code units are equal bytes; the library's block compare beats a unit loop.
      return Stored.size() == Key.size() && std::memcmp(Stored.data(), Key.data(), Key.size() * sizeof(Char)) == 0;
    else
      return Stored == Key;
  }
  // Search with the comparer chosen once.
  template <bool InsertionPoint, bool FetchHome = false>
  std::int32_t SearchAny(const K& Key, std::int32_t HashCode) const {
    return FDefaultComparer ? Search<true, InsertionPoint, FetchHome>(Key, HashCode)
                            : Search<false, InsertionPoint, FetchHome>(Key, HashCode);
  }
  // The bucket search, one copy per comparer kind so that the default one makes no call and
  // keeps its state in registers. Most searches end in the home group; the rest go on in
  // SearchOn, which also answers for a table without buckets or without a free one (HomeOnly:
  // NotInHomeGroup instead, for a caller that must make no call of its own).
  template <bool Inline, bool InsertionPoint = true, bool FetchHome = false, bool HomeOnly = false>
  std::int32_t Search(const K& Key, std::int32_t HashCode) const {
    using Tags = detail::TBucketTags;
    const TItem* Items = FItems.data();
    const std::uint32_t Home = static_cast<std::uint32_t>(HashCode) & FMask;
#if defined(__GNUC__)
    // Far beyond the caches, reading the tags and then the bucket would wait twice for memory:
    // fetch the home bucket, where a present key mostly sits, while the tags come.
    if (FetchHome || FFetchEarly) __builtin_prefetch(Items + Home);
#endif
    const Tags::TGroup Group = Tags::Load(FTagData + Home);
    Tags::TBits Match = Tags::Matching(Group, Tags::Of(HashCode));
    // The run ends at the first free bucket: later matches belong to other runs, whose keys a
    // comparer must not be asked about. The default comparer may look at them in a table
    // within the caches (no entry lies beyond the first free bucket after its home, so such a
    // key is never Key), which saves work on every hit; far beyond the caches the bucket read
    // costs a missing key more than the mask, unless the search fetches the home bucket anyway.
    if (!Inline || (!FetchHome && FFetchEarly)) {
      const Tags::TBits Free = Tags::Free(Group);
      Match &= Free ^ (Free - 1);
    }
    // Equal integers have equal hashes, so with the default comparer the key alone decides.
    constexpr bool KeyDecides = Inline && std::is_integral_v<K>;
    for (; Match != 0; Match &= Match - 1) {
      const std::uint32_t J = Home + Tags::Position(Match);
      if ((KeyDecides || Items[J].HashCode == HashCode) && KeyEquals<Inline>(Items[J].Key, Key)) [[likely]]
        return static_cast<std::int32_t>(J);
    }
    const Tags::TBits Free = Tags::Free(Group);
    if (Free != 0) [[likely]]
      return InsertionPoint ? ~static_cast<std::int32_t>(Home + Tags::Position(Free)) : -1;
    if constexpr (HomeOnly) return NotInHomeGroup;
    return SearchOn<Inline>(Key, HashCode, Home);
  }
  // Past the home group, group by group, until a free bucket or back at Home having visited
  // every bucket once (a table SetCapacity(Count) filled).
  template <bool Inline>
  [[gnu::noinline]] std::int32_t SearchOn(const K& Key, std::int32_t HashCode, std::uint32_t Home) const {
    using Tags = detail::TBucketTags;
    if (FItems.empty()) return INT32_MIN;
    const TItem* Items = FItems.data();
    const std::uint32_t Mask = FMask;
    std::uint32_t Left = Mask + 1u - std::min(Tags::GroupWidth, Mask + 1u - Home);
    std::uint32_t I = Home + Tags::GroupWidth > Mask ? 0u : Home + Tags::GroupWidth;
    const std::uint8_t Tag = Tags::Of(HashCode);
    while (Left > 0) {
      const std::uint32_t Span = std::min({Tags::GroupWidth, Mask + 1u - I, Left});
      const Tags::TGroup Group = Tags::Load(FTagData + I);
      const Tags::TBits Free = Tags::Free(Group) & Tags::First(Span);
      for (Tags::TBits Match = Tags::Matching(Group, Tag) & Tags::First(Span) & (Free ^ (Free - 1)); Match != 0;
           Match &= Match - 1) {
        const std::uint32_t J = I + Tags::Position(Match);
        if (Items[J].HashCode == HashCode && KeyEquals<Inline>(Items[J].Key, Key)) return static_cast<std::int32_t>(J);
      }
      if (Free != 0) return ~static_cast<std::int32_t>(I + Tags::Position(Free));
      Left -= Span;
      I = I + Tags::GroupWidth > Mask ? 0u : I + Tags::GroupWidth;
    }
    return INT32_MIN;
  }

  std::vector<TItem> FItems;
  std::vector<std::uint8_t> FTags;  // a TBucketTags byte per bucket, then the end bytes
  const std::uint8_t* FTagData = detail::TBucketTags::NoBuckets;  // FTags, or a group for no buckets
  std::uint32_t FMask = 0;  // bucket count - 1, or 0 when there are none
  bool FFetchEarly = false;  // the buckets take more than FetchEarlyBytes
  std::int32_t FCount = 0;
  std::int32_t FGrowThreshold = 0;
  std::uint32_t FLayoutVersion = 0;
  bool FDefaultComparer = true;
  TComparerRef FComparer;
  TKZNotifyEvent<K> FOnKeyNotify;
  TKZNotifyEvent<V> FOnValueNotify;
  enum class TQuiet : std::uint8_t { Unknown, Yes, No };
  mutable TQuiet FQuiet = TQuiet::Unknown;  // see Quiet
  mutable std::unique_ptr<TKeyCollection> FKeys;
  mutable std::unique_ptr<TValueCollection> FValues;
};

/// Walks the live buckets of a dictionary in bucket order.
template <class K, class V>
class TKZDictionary<K, V>::TPairEnumerator final : public TKZEnumerator<TPair<K, V>> {
  using TBase = TKZEnumerator<TPair<K, V>>;

 public:
  using TMeta = typename TBase::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TPairEnumerator, TBase)
 public:
  explicit TPairEnumerator(const TKZDictionary* Dictionary) : FDictionary(Dictionary) {}
  bool MoveNext() override { return Step(FDictionary, FIndex); }
  TPair<K, V> GetCurrent() const override {
    const TItem& Item = At(FDictionary, FIndex);
    return TPair<K, V>{Item.Key, Item.Value};
  }

  // Shared by the enumerators: the next live bucket after Index, and a checked read.
  static bool Step(const TKZDictionary* D, std::int32_t& Index) {
    const auto Length = static_cast<std::int32_t>(D->FItems.size());
    while (Index < Length - 1) {
      ++Index;
      if (D->FItems[static_cast<std::size_t>(Index)].HashCode != -1) return true;
    }
    Index = Length;
    return false;
  }
  static const TItem& At(const TKZDictionary* D, std::int32_t Index) {
    if (Index < 0 || Index >= static_cast<std::int32_t>(D->FItems.size()))
      throw EListError(Runtime::SListIndexError, {Index});
    return D->FItems[static_cast<std::size_t>(Index)];
  }

 private:
  const TKZDictionary* FDictionary;
  std::int32_t FIndex = -1;
};

/// Walks the keys (or the values) of a dictionary in bucket order.
template <class K, class V>
template <class T, T TKZDictionary<K, V>::TItem::*Part>
class TKZDictionary<K, V>::TPartEnumerator final : public TKZEnumerator<T> {
 public:
  using TMeta = typename TKZEnumerator<T>::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TPartEnumerator, TKZEnumerator<T>)
 public:
  explicit TPartEnumerator(const TKZDictionary* Dictionary) : FDictionary(Dictionary) {}
  bool MoveNext() override { return TPairEnumerator::Step(FDictionary, FIndex); }
  T GetCurrent() const override { return TPairEnumerator::At(FDictionary, FIndex).*Part; }

 private:
  const TKZDictionary* FDictionary;
  std::int32_t FIndex = -1;
};

/// The keys (or the values) of a dictionary as an enumerable view (no copy).
template <class K, class V>
template <class T, T TKZDictionary<K, V>::TItem::*Part>
class TKZDictionary<K, V>::TPartCollection final : public TKZEnumerable<T> {
 public:
  using TMeta = typename TKZEnumerable<T>::TMeta;  // a dependent base hides it from KZ_CLASS
  KZ_CLASS(TPartCollection, TKZEnumerable<T>)
 public:
  explicit TPartCollection(const TKZDictionary* Dictionary) : FDictionary(Dictionary) {}
  std::int32_t GetCount() const { return FDictionary->GetCount(); }
  std::unique_ptr<TPartEnumerator<T, Part>> GetEnumerator() const {
    return std::make_unique<TPartEnumerator<T, Part>>(FDictionary);
  }
  std::vector<T> ToArray() const override { return this->ToArrayImpl(GetCount()); }

 protected:
  std::unique_ptr<TKZEnumerator<T>> DoGetEnumerator() const override { return GetEnumerator(); }

 private:
  const TKZDictionary* FDictionary;
};

}  // namespace kz
