#include "GHashTable/GHashTable.h"
#include "Runtime/WithinUpdate.h"

#include <cmath>
#include <limits>

#include "GHashTable/internal/StringKeyHash.h"

namespace kz {

using namespace Runtime;
using namespace GHashTable;

namespace {

// Bucket indexes are signed 32-bit, so no table grows past this many buckets.
constexpr std::uint32_t MaxCapacity = 0x7FFFFFFF;

// The digit-string hash functions are defined on decimal text; these compute the same numbers
// arithmetically so that hashing never builds a string.

// Length of the decimal text of V, a minus sign included.
// The count of decimal digits; a minus sign is not a digit.
int DecimalLength(std::int64_t V) {
  int L = 1;
  for (std::uint64_t U = V < 0 ? static_cast<std::uint64_t>(-V) : static_cast<std::uint64_t>(V); U >= 10; U /= 10) ++L;
  return L;
}

std::int64_t Pow10(int N) {
  std::int64_t R = 1;
  while (N-- > 0) R *= 10;
  return R;
}

// Signed division as the bucket functions define it; a size of 0 is the runtime's
// integer-division error rather than undefined behaviour.
std::int32_t ModSize(std::int64_t V, std::int32_t Size) {
  if (Size == 0) throw EDivByZero(SDivByZero);
  return static_cast<std::int32_t>(V % Size);
}

// The key with its sign bit cleared.
std::int64_t Positive(std::int32_t Key) { return static_cast<std::int64_t>(static_cast<std::uint32_t>(Key) & 0x7FFFFFFFu); }

}  // namespace

// ---- TGHashtableEntry ----

Pointer TGHashtableEntry::GetKey() const { return FKey; }

void TGHashtableEntry::SetKey(Pointer Key) { FKey = Key; }

bool TGHashtableEntry::KeyEquals(Pointer Key) const { return FKey == Key; }

// ---- TGCustomHashtable ----

TGCustomHashtable::TGCustomHashtable(std::uint32_t InitialCapacity, float LoadFactor)
    : FLoadFactor(LoadFactor) {
  UpdateThreshold();
  FEnumerator = TIntfPtr<TGHashtableEnumerator>(new TGHashtableEnumerator(this, true));
  SetCapacity(InitialCapacity);
  ClearCache();
}

TGCustomHashtable::~TGCustomHashtable() {
  FOnChange = nullptr;
  try {
    Clear();
  } catch (...) {
    // An owner that raises while the table dies must not keep the entries alive.
  }
  FreeEntries();
  FBuckets.reset();
  FCapacity = 0;
  FEnumerator.reset();
  for (TGHashtableEnumerator* It = FIterators; It;) {
    TGHashtableEnumerator* Next = It->FNextIterator;
    It->FTable = nullptr;
    It->FEntry = nullptr;
    It->FPrevIterator = It->FNextIterator = nullptr;
    It = Next;
  }
}

std::int32_t TGCustomHashtable::HashCode(Pointer Key, std::int32_t Size) const {
  if (!Key) throw EGHashtableError(SNullArgument);
  return HashWord(static_cast<std::int32_t>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(Key))), Size);
}

std::int32_t TGCustomHashtable::HashWord(std::int32_t K, std::int32_t Size) const {
  switch (FHashType) {
    case htTruncation: return TruncationHash(K, Size);
    case htDivision: return DivisionHash(K, Size);
    case htMidSquare: return MidSquareHash(K, Size);
    case htFolding: return FoldingHash(K, Size);
  }
  throw EGHashtableError(SSubscriptOutOfRange);
}

std::int32_t TGCustomHashtable::DivisionHash(std::int32_t Key, std::int32_t Size) const {
  if (Size == 0) throw EDivByZero(SDivByZero);
  // 32-bit division: the key is not negative, so this is the signed remainder.
  return static_cast<std::int32_t>(Positive(Key)) % Size;
}

// The key's last d decimal digits, d being the length of Size's decimal text.
std::int32_t TGCustomHashtable::TruncationHash(std::int32_t Key, std::int32_t Size) const {
  return ModSize(Positive(Key) % Pow10(DecimalLength(Size)), Size);
}

// d digits from the middle of the square's decimal text (the text of length L is cut from
// character L - L div 2 + 1 on), when its half length exceeds d.
std::int32_t TGCustomHashtable::MidSquareHash(std::int32_t Key, std::int32_t Size) const {
  const std::uint32_t U = static_cast<std::uint32_t>(Key);
  const std::int64_t S = (U * U) & 0x7FFFFFFFu;
  const int D = DecimalLength(Size);
  const int M = DecimalLength(S) / 2;
  const std::int64_t Kept = M > D ? S / Pow10(M - D) % Pow10(D) : S;
  return ModSize(Kept, Size);
}

// The first digit, then every digit at an even position or a position divisible by 3
// (1-based, from the left).
std::int32_t TGCustomHashtable::FoldingHash(std::int32_t Key, std::int32_t Size) const {
  std::int64_t K = Positive(Key);
  int Digits[10];
  int L = 0;
  do {
    Digits[L++] = static_cast<int>(K % 10);
    K /= 10;
  } while (K > 0);
  std::int64_t R = Digits[L - 1];
  for (int I = 1; I <= L; ++I)
    if (I % 2 == 0 || I % 3 == 0) R = R * 10 + Digits[L - I];
  return ModSize(R, Size);
}

std::int32_t TGCustomHashtable::BucketOf(Pointer Key) const {
  const std::int32_t B = HashCode(Key, static_cast<std::int32_t>(FCapacity));
  // An index past the buckets can only come from an overriding HashCode; refusing it keeps
  // the table from writing outside its bucket array.
  if (B < 0 || static_cast<std::uint32_t>(B) >= FCapacity) throw EGHashtableError(SSubscriptOutOfRange);
  return B;
}

TGHashtableEntry* TGCustomHashtable::FindInBucket(std::int32_t Bucket, Pointer Key) const {
  for (TGHashtableEntry* E = FBuckets[Bucket]; E; E = E->FNext)
    if (E->FHash == Bucket && E->KeyEquals(Key)) return E;
  return nullptr;
}

TGCustomHashtable::TKeyPath TGCustomHashtable::DecideKeyPath() const {
  // The complete object's class (while a base is being constructed it would be that base,
  // and no constructor of the library looks a key up).
  if (IsExactly<TGCustomHashtable>(this) || IsExactly<TGHashtable>(this) || IsExactly<TGHashIntTable>(this))
    FKeyPath = kpWord;
  else if (IsExactly<TGStringHashtable>(this))
    FKeyPath = kpString;
  else
    FKeyPath = kpOverridable;
  UpdateDivisionPath();
  return FKeyPath;
}

void TGCustomHashtable::UpdateDivisionPath() const {
  FDivisionPath = FHashType == htDivision && FCapacity > 0 && FCapacity <= MaxCapacity && FKeyPath != kpOverridable
                      ? FKeyPath
                      : kpUndecided;
}


std::int32_t TGCustomHashtable::DirectBucket(Pointer Key, std::uint32_t Capacity) const {
  std::uint32_t K;
  if (FKeyPath == kpString) {
    K = detail::StringKeyHash(*static_cast<const String*>(Key));
    if (K == 0) throw EGHashtableError(SNullArgument);  // what the string table's HashCode says
    Key = reinterpret_cast<Pointer>(static_cast<std::uintptr_t>(K));
  } else {
    K = static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(Key));
  }
  // The same numbers as HashCode: division in line, the digit functions through it.
  if (FHashType == htDivision)
    return static_cast<std::int32_t>(Capacity == FCapacity ? DivisionBucket(K & 0x7FFFFFFFu) : (K & 0x7FFFFFFFu) % Capacity);
  return TGCustomHashtable::HashCode(Key, static_cast<std::int32_t>(Capacity));
}

TGHashtableEntry* TGCustomHashtable::DirectFind(std::int32_t Bucket, Pointer Key) const {
  TGHashtableEntry* E = FBuckets[Bucket];
  if (FKeyPath == kpWord) {
    while (E && !(E->FKey == Key && E->FHash == Bucket)) E = E->FNext;
  } else {
    const String& S = *static_cast<const String*>(Key);
    while (E && !(E->FHash == Bucket && static_cast<TGStringHashtableEntry*>(E)->GetKeyString() == S)) E = E->FNext;
  }
  return E;
}

TGHashtableEntry* TGCustomHashtable::Locate(Pointer Key, std::int32_t& Bucket) const {
  if (Direct() && FCapacity > 0 && FCapacity <= MaxCapacity) {
    Bucket = DirectBucket(Key, FCapacity);
    return DirectFind(Bucket, Key);
  }
  Bucket = BucketOf(Key);
  return FindInBucket(Bucket, Key);
}

bool TGCustomHashtable::HasKey(Pointer Key, TGHashtableEntry*& Entry) const {
  Entry = nullptr;
  if (FCount == 0) return false;
  if (!Key) throw EGHashtableError(SNullArgument);
  std::int32_t Bucket;
  Entry = Locate(Key, Bucket);
  return Entry != nullptr;
}

bool TGCustomHashtable::HasKey(Pointer Key) const {
  if (FDivisionPath == kpWord && Key) return FindWord(Key) != nullptr;
  TGHashtableEntry* Entry;
  return Direct() ? TGCustomHashtable::HasKey(Key, Entry) : HasKey(Key, Entry);
}

TGHashtableEntry* TGCustomHashtable::FindEntry(Pointer Key) const {
  if (FCount == 0) return nullptr;
  if (!Key) throw EGHashtableError(SNullArgument);
  std::int32_t Bucket;
  return Locate(Key, Bucket);
}

Pointer TGCustomHashtable::GetValue(Pointer Key) const {
  if (FCount == 0) throw EGHashtableError(STableEmpty);
  TGHashtableEntry* E = FindEntry(Key);
  if (!E) throw EGHashtableError(SNoSuchElement);
  return E->FItem;
}

std::unique_ptr<TGHashtableEntry> TGCustomHashtable::NewHashtableEntry() {
  return std::make_unique<TGHashtableEntry>();
}

TGHashtableEntry* TGCustomHashtable::AddEntry(std::int32_t Bucket, Pointer Key, Pointer Value) {
  const bool Word = KeyPath() == kpWord;
  std::unique_ptr<TGHashtableEntry> New = Word ? std::make_unique<TGHashtableEntry>() : NewHashtableEntry();
  New->FHash = Bucket;
  if (Word)
    New->FKey = Key;
  else
    New->SetKey(Key);
  New->FItem = Value;
  TGHashtableEntry* E = New.release();
  E->FNext = FBuckets[Bucket];
  FBuckets[Bucket] = E;
  ++FCount;
  if (E->FNext) ++FCollisions;
  if (FCachedIndex >= 0 && Bucket <= FCachedHashIndex) ClearCache();
  return E;
}

std::int64_t TGCustomHashtable::GetThreshold() const {
  if (FThresholdNaN) throw EGHashtableError(SInvalidLoadFactor);
  return FThreshold;
}

// The threshold only changes with the capacity or the load factor, so puts read it cached.
void TGCustomHashtable::UpdateThreshold() {
  const long double T = static_cast<long double>(FCapacity) * static_cast<long double>(FLoadFactor);
  FThresholdNaN = std::isnan(T);
  constexpr long double Limit = 9223372036854775807.0L;
  if (FThresholdNaN)
    FThreshold = 0;
  else if (T >= Limit)
    FThreshold = std::numeric_limits<std::int64_t>::max();
  else if (T <= -Limit)
    FThreshold = std::numeric_limits<std::int64_t>::min();
  else  // nearbyint rounds in the default mode: to nearest, ties to even
    FThreshold = static_cast<std::int64_t>(std::nearbyint(T));
}

void TGCustomHashtable::CheckCanGrow() const {
  // The threshold grows with the capacity for a positive load factor, so the largest
  // capacity that growth can reach decides; a load factor of 0 or below never makes room,
  // and growing for ever is refused up front.
  std::uint32_t Largest = FCapacity;
  while (Largest <= (MaxCapacity - 1) / 2) Largest = Largest * 2 + 1;
  const long double Best = static_cast<long double>(Largest) * static_cast<long double>(FLoadFactor);
  if (!(std::nearbyint(Best) > static_cast<long double>(FCount))) throw EGHashtableError(SCannotGrow);
}

void TGCustomHashtable::PutValue(Pointer Key, Pointer Value) {
  if (!Key) throw EGHashtableError(SNullArgument);
  if (FOwner) FOwner->BeforePut(this, Key, Value);
  std::int32_t B;
  if (TGHashtableEntry* E = Locate(Key, B)) {
    E->FItem = Value;
    Change();
    return;
  }
  if (FCount < GetThreshold()) {
    AddEntry(B, Key, Value);
    Change();
    return;
  }
  CheckCanGrow();
  Rehash();
  PutValue(Key, Value);
  Change();
}

void TGCustomHashtable::Rehash() { SetCapacity(FCapacity * 2 + 1); }

Pointer TGCustomHashtable::RemoveValue(Pointer Key) {
  if (FCount == 0) throw EGHashtableError(STableEmpty);
  if (!Key) throw EGHashtableError(SNullArgument);
  if (FOwner) FOwner->BeforeRemove(this, Key);
  std::int32_t B;
  TGHashtableEntry* const E = Locate(Key, B);
  if (!E) throw EGHashtableError(SNoSuchElement);
  TGHashtableEntry* Prev = nullptr;
  for (TGHashtableEntry* P = FBuckets[B]; P != E; P = P->FNext) Prev = P;
  // Removing the cursor entry while walking positions backward keeps the walk going.
  if (FCachedIndex > 0 && E == FCachedEntry && FCount > 1)
    GoToEntry(FCachedIndex - 1);
  else
    ClearCache();
  if (Prev) {
    Prev->FNext = E->FNext;
    --FCollisions;
  } else {
    FBuckets[B] = E->FNext;
    if (FBuckets[B]) --FCollisions;
  }
  for (TGHashtableEnumerator* It = FIterators; It; It = It->FNextIterator)
    if (It->FEntry == E) It->FEntry = E->FNext;
  --FCount;
  const Pointer Value = E->FItem;
  delete E;
  Change();
  return Value;
}

bool TGCustomHashtable::ContainsItem(Pointer Value) const {
  if (FCount == 0) return false;
  for (std::uint32_t B = FCapacity; B-- > 0;)
    for (TGHashtableEntry* E = FBuckets[B]; E; E = E->FNext)
      if (E->FItem == Value) return true;
  return false;
}

void TGCustomHashtable::FreeEntries() {
  for (TGHashtableEnumerator* It = FIterators; It; It = It->FNextIterator) It->FEntry = nullptr;
  for (std::uint32_t B = FCapacity; B-- > 0;) {
    TGHashtableEntry* E = FBuckets[B];
    FBuckets[B] = nullptr;
    while (E) {
      TGHashtableEntry* Next = E->FNext;
      delete E;
      E = Next;
    }
  }
  FCount = 0;
  FCollisions = 0;
}

void TGCustomHashtable::Clear() {
  if (FCount == 0) return;
  if (FOwner) FOwner->BeforeClear(this);
  ClearCache();
  FreeEntries();
  Change();
}

void TGCustomHashtable::SetCapacity(std::uint32_t NewCapacity) {
  ClearCache();
  if (NewCapacity == FCapacity) return;
  if (NewCapacity == 0) {
    // Entries still chained go with the buckets: nothing is kept that cannot be reached.
    FreeEntries();
    FBuckets.reset();
    FCapacity = 0;
    UpdateDivisionPath();
    UpdateThreshold();
    return;
  }
  const std::uint32_t OldCapacity = FCount == 0 ? 0 : FCapacity;
  // Every new bucket is computed before anything moves, so a raising HashCode leaves the
  // table as it was.
  std::vector<std::int32_t> NewBuckets;
  NewBuckets.reserve(static_cast<std::size_t>(FCount));
  const bool InLine = OldCapacity > 0 && NewCapacity <= MaxCapacity && Direct();
  for (std::uint32_t B = OldCapacity; B-- > 0;)
    for (TGHashtableEntry* E = FBuckets[B]; E; E = E->FNext) {
      const std::int32_t NB =
          !InLine ? HashCode(E->GetKey(), static_cast<std::int32_t>(NewCapacity))
          : FKeyPath == kpWord
              ? DirectBucket(E->FKey, NewCapacity)
              : DirectBucket(const_cast<String*>(&static_cast<TGStringHashtableEntry*>(E)->GetKeyString()), NewCapacity);
      if (NB < 0 || static_cast<std::uint32_t>(NB) >= NewCapacity) throw EGHashtableError(SSubscriptOutOfRange);
      NewBuckets.push_back(NB);
    }
  std::unique_ptr<TGHashtableEntry*[]> Buckets(new TGHashtableEntry*[NewCapacity]());
  FCollisions = 0;
  std::size_t I = 0;
  for (std::uint32_t B = OldCapacity; B-- > 0;) {
    TGHashtableEntry* E = FBuckets[B];
    while (E) {
      TGHashtableEntry* Next = E->FNext;
      const std::int32_t NB = NewBuckets[I++];
      E->FHash = NB;
      E->FNext = Buckets[NB];
      Buckets[NB] = E;
      if (E->FNext) ++FCollisions;
      E = Next;
    }
  }
  FBuckets = std::move(Buckets);
  FCapacity = NewCapacity;
  FCapacityReciprocal = ~std::uint64_t{0} / NewCapacity + 1;
  UpdateDivisionPath();
  UpdateThreshold();
}

void TGCustomHashtable::SetHashType(TGHashType Value) {
  if (Value == FHashType) return;
  if (FCount > 0) throw EGHashtableError(SNonEmptyTable);
  FHashType = Value;
  UpdateDivisionPath();
}

void TGCustomHashtable::SetLoadFactor(float Value) {
  // Every number passes, out-of-range ones included; only NaN is refused, with the message
  // the table has always given.
  if (std::isnan(Value)) throw EGHashtableError(SInvalidLoadFactor);
  if (Value != FLoadFactor) {
    FLoadFactor = Value;
    UpdateThreshold();
  }
}

bool TGCustomHashtable::GetEOT() const { return !FEnumerator->HasMoreElements(); }

Pointer TGCustomHashtable::NextElement() { return FEnumerator->NextElement(); }

void TGCustomHashtable::Reset() { FEnumerator->Reset(); }

// ---- positional access ----

void TGCustomHashtable::ClearCache() const {
  FCachedIndex = -1;
  FCachedEntry = nullptr;
  FCachedHashIndex = -1;
}

void TGCustomHashtable::CursorToFirst() const {
  std::int32_t B = 0;
  while (!FBuckets[B]) ++B;
  FCachedIndex = 0;
  FCachedHashIndex = B;
  FCachedEntry = FBuckets[B];
}

void TGCustomHashtable::StepForward() const {
  if (FCachedEntry->FNext) {
    FCachedEntry = FCachedEntry->FNext;
  } else {
    std::int32_t B = FCachedHashIndex + 1;
    while (!FBuckets[B]) ++B;
    FCachedHashIndex = B;
    FCachedEntry = FBuckets[B];
  }
  ++FCachedIndex;
}

void TGCustomHashtable::StepBack() const {
  TGHashtableEntry* Head = FBuckets[FCachedHashIndex];
  if (Head != FCachedEntry) {
    TGHashtableEntry* E = Head;
    while (E->FNext != FCachedEntry) E = E->FNext;
    FCachedEntry = E;
  } else {
    std::int32_t B = FCachedHashIndex - 1;
    while (!FBuckets[B]) --B;
    TGHashtableEntry* E = FBuckets[B];
    while (E->FNext) E = E->FNext;
    FCachedHashIndex = B;
    FCachedEntry = E;
  }
  --FCachedIndex;
}

TGHashtableEntry* TGCustomHashtable::GoToEntry(std::int32_t Index) { return SeekEntry(Index); }

TGHashtableEntry* TGCustomHashtable::SeekEntry(std::int32_t Index) const {
  if (Index < 0 || Index >= FCount) throw EListError(SListIndexError, {Index});
  if (FCachedIndex < 0) CursorToFirst();
  if (Index == FCachedIndex + 1) {
    StepForward();
  } else if (Index == FCachedIndex - 1) {
    StepBack();
  } else if (Index != FCachedIndex) {
    if (FCachedIndex >= Index) CursorToFirst();
    while (FCachedIndex < Index) StepForward();
  }
  return FCachedEntry;
}

Pointer TGCustomHashtable::GetItemByIndex(std::int32_t Index) const { return SeekEntry(Index)->FItem; }

Pointer TGCustomHashtable::GetKeyByIndex(std::int32_t Index) const { return SeekEntry(Index)->GetKey(); }

// ---- notification ----

void TGCustomHashtable::BeginUpdate() { FUpdating.Begin(); }

void TGCustomHashtable::EndUpdate() {
  if (FUpdating.End()) Change();
}

void TGCustomHashtable::Change() {
  if (FUpdating.Updating()) return;
  if (FOwner) FOwner->TableChanged(this);
  if (FOnChange) FOnChange(this);
}

// ---- iterators and copies ----

TIntfPtr<IIterator> TGCustomHashtable::Elements() { return TIntfPtr<IIterator>(new TGHashtableEnumerator(this, false)); }

TIntfPtr<IIterator> TGCustomHashtable::Indices() { return TIntfPtr<IIterator>(new TGHashtableEnumerator(this, true)); }

std::unique_ptr<TGHashtableEnumerator> TGCustomHashtable::GetEnumerator() {
  return std::make_unique<TGHashtableEnumerator>(this, false);
}

void TGCustomHashtable::Assign(TPersistent* Source) {
  auto* Src = dynamic_cast<TGCustomHashtable*>(Source);
  // Key words mean different things to string-keyed and word-keyed tables; copying across
  // would hash pointers as strings or keep pointers into the source's entries.
  if (!Src || Src->HasStringKeys() != HasStringKeys()) {
    inherited::Assign(Source);
    return;
  }
  if (Src == this) return;
  TIntfPtr<TGHashtableEnumerator> Keys(new TGHashtableEnumerator(Src, true));
  Clear();
  SetLoadFactor(Src->GetLoadFactor());
  SetCapacity(Src->GetCapacity());
  SetHashType(Src->GetHashType());
  WithinUpdate(*this, [&] {
    while (Keys->HasMoreElements()) {
      const Pointer Key = Keys->NextElement();
      PutValue(Key, Src->GetValue(Key));
    }
  });
}

// ---- TGHashtable ----

// A table of the library's own class cannot have replaced the core operations, so they are
// called without the virtual dispatch.
Pointer TGHashtable::GetEntryValue(Pointer Key) const {
  return Direct() ? TGCustomHashtable::GetValue(Key) : GetValue(Key);
}

void TGHashtable::Put(Pointer Key, Pointer Value) {
  if (Direct())
    TGCustomHashtable::PutValue(Key, Value);
  else
    PutValue(Key, Value);
}

Pointer TGHashtable::Remove(Pointer Key) { return Direct() ? TGCustomHashtable::RemoveValue(Key) : RemoveValue(Key); }

bool TGHashtable::ContainsKey(Pointer Key) const { return HasKey(Key); }

bool TGHashtable::ContainsKey(Pointer Key, Pointer& Value) const {
  TGHashtableEntry* E;
  const bool Found = Direct() ? TGCustomHashtable::HasKey(Key, E) : HasKey(Key, E);
  Value = Found ? E->GetItem() : nullptr;
  return Found;
}

Pointer TGHashtable::Next() { return NextElement(); }

// ---- TGHashtableEnumerator ----

TGHashtableEnumerator::TGHashtableEnumerator(TGCustomHashtable* Table, bool Keys) : FTable(Table), FKeys(Keys) {
  if (!Table) RaiseNullAccess(u"hash table");
  FNextIterator = Table->FIterators;
  if (FNextIterator) FNextIterator->FPrevIterator = this;
  Table->FIterators = this;
  Reset();
}

TGHashtableEnumerator::~TGHashtableEnumerator() {
  if (!FTable) return;
  if (FPrevIterator)
    FPrevIterator->FNextIterator = FNextIterator;
  else
    FTable->FIterators = FNextIterator;
  if (FNextIterator) FNextIterator->FPrevIterator = FPrevIterator;
}

TGCustomHashtable* TGHashtableEnumerator::Table() {
  if (!FTable) RaiseNullAccess(u"hash table of an iterator whose table was destroyed");
  return FTable;
}

void TGHashtableEnumerator::Reset() {
  TGCustomHashtable* T = Table();
  FEntry = nullptr;
  FIndex = static_cast<std::int32_t>(T->FCapacity);
  FCount = T->FCount;
}

bool TGHashtableEnumerator::HasMoreElements() {
  TGCustomHashtable* T = Table();
  if (FEntry) return true;
  // The table may have shrunk since the walk began.
  if (FIndex > static_cast<std::int32_t>(T->FCapacity)) FIndex = static_cast<std::int32_t>(T->FCapacity);
  while (FIndex > 0) {
    --FIndex;
    if (T->FBuckets[FIndex]) {
      FEntry = T->FBuckets[FIndex];
      return true;
    }
  }
  return false;
}

Pointer TGHashtableEnumerator::NextElement() {
  if (!HasMoreElements()) throw EGHashtableError(SNoSuchElement);
  TGHashtableEntry* E = FEntry;
  FEntry = E->GetNext();
  FCurrentElement = FKeys ? E->GetKey() : E->GetItem();
  --FCount;
  return FCurrentElement;
}

bool TGHashtableEnumerator::MoveNext() {
  if (!HasMoreElements()) return false;
  NextElement();
  return true;
}

}  // namespace kz
