#include "InterfaceCollections/InterfaceCollections.h"

#include "Runtime/Text.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

using namespace Runtime;
using namespace GHashTable;
using namespace InterfaceCollections;

namespace {
IInterface* AsIntf(Pointer P) { return static_cast<IInterface*>(P); }
}  // namespace

TIHashtableEntry::~TIHashtableEntry() {
  if (IInterface* V = AsIntf(GetItem())) V->_Release();
}

TIStringHashtableEntry::~TIStringHashtableEntry() {
  if (IInterface* V = AsIntf(GetItem())) V->_Release();
}

// --- enumerators ---

TGHashtableEntry* TIHashtableEnumerator::NextEntry() {
  if (!TGHashtableEnumerator::HasMoreElements()) throw EGHashtableError(SNoSuchElement);
  TGHashtableEntry* E = FEntry;
  (void)NextElement();
  return E;
}

Pointer TIHashtableEnumerator::NextElement() {
  if (TGHashtableEnumerator::HasMoreElements()) FCurrentKey = FEntry->GetKey();
  const Pointer R = TGHashtableEnumerator::NextElement();
  if (FKeys)
    FCurrentKey = R;
  else
    FCurrentValue = TIntfPtr<IInterface>(AsIntf(R));
  return R;
}

TIntfPtr<IInterface> TIHashtableEnumerator::NextElementI() {
  if (FKeys) throw EGHashtableError(SValuesOnly);
  return TIntfPtr<IInterface>(AsIntf(NextElement()));
}

TIntfPtr<IInterface> TIHashtableEnumerator::CurrentElementI() {
  if (FKeys) throw EGHashtableError(SValuesOnly);
  return FCurrentValue;
}

// --- shared mechanics ---

namespace detail {

template <class TBase>
void TCountedValues<TBase>::PutValue(Pointer Key, Pointer Value) {
  // The core's growth puts again through this virtual: that inner put is the same one.
  if (FPutting) return TBase::PutValue(Key, Value);
  (void)PutCounted(Key, AsIntf(Value));
}

template <class TBase>
TIntfPtr<IInterface> TCountedValues<TBase>::PutCounted(Pointer Key, IInterface* Value) {
  if (!Key) throw EGHashtableError(SNullArgument);
  TGHashtableEntry* E = this->FindEntry(Key);
  IInterface* Old = E ? AsIntf(E->GetItem()) : nullptr;
  if (Value) Value->_AddRef();
  try {
    TRestoreValue Busy(FPutting, true);
    TBase::PutValue(Key, Value);
  } catch (...) {
    // Whatever the table holds now keeps exactly one reference.
    TGHashtableEntry* Now = nullptr;
    try {
      Now = this->FindEntry(Key);
    } catch (...) {
    }
    const bool Kept = Now && Now->GetItem() == Value;
    if (Kept && E && Old) Old->_Release();
    if (!Kept && Value) Value->_Release();
    throw;
  }
  return TIntfPtr<IInterface>::Adopt(E ? Old : nullptr);
}

template <class TBase>
TIntfPtr<IInterface> TCountedValues<TBase>::RemoveCounted(Pointer Key) {
  TIntfPtr<IInterface> Held;
  if (TGHashtableEntry* E = this->FindEntry(Key)) Held = TIntfPtr<IInterface>(AsIntf(E->GetItem()));
  (void)TBase::RemoveValue(Key);
  return Held;
}

template <class TBase>
Pointer TCountedValues<TBase>::RemoveValue(Pointer Key) {
  TIntfPtr<IInterface> R = RemoveCounted(Key);
  std::swap(FLastRemoved, R);
  return FLastRemoved.get();
}

template <class TBase>
void TCountedValues<TBase>::Clear() {
  FLastRemoved = nullptr;
  TBase::Clear();
}

template <class TBase>
TIntfPtr<IInterface> TCountedValues<TBase>::GetCounted(Pointer Key, const String& KeyText) const {
  if (this->IsEmpty()) throw EGHashtableError(STableEmpty);
  TGHashtableEntry* E = this->FindEntry(Key);
  if (!E) throw EGHashtableError(SNoSuchKey, {KeyText});
  return TIntfPtr<IInterface>(AsIntf(E->GetItem()));
}

template <class TBase>
bool TCountedValues<TBase>::ContainsCounted(Pointer Key, TIntfPtr<IInterface>& Value) const {
  TGHashtableEntry* E = nullptr;
  const bool Found = this->HasKey(Key, E);
  Value = Found ? TIntfPtr<IInterface>(AsIntf(E->GetItem())) : nullptr;
  return Found;
}

template <class TBase>
void TCountedValues<TBase>::AssignCounted(TPersistent* Source, bool LikeTable) {
  if (!LikeTable) return this->AssignError(Source);
  // The core copies pair by pair through PutValue, which counts each value here.
  TBase::Assign(Source);
}

template class TCountedValues<TGHashtable>;
template class TCountedValues<TGStringHashtable>;

}  // namespace detail

// --- TIHashTable ---

TIHashTable::~TIHashTable() = default;

std::unique_ptr<TGHashtableEntry> TIHashTable::NewHashtableEntry() { return std::make_unique<TIHashtableEntry>(); }

TIntfPtr<IInterface> TIHashTable::GetValueI(Pointer Key) const {
  return GetCounted(Key, IntToStr(static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(Key))));
}

TIntfPtr<IInterface> TIHashTable::GetItemByIndex(std::int32_t Index) const {
  return TIntfPtr<IInterface>(AsIntf(TGHashtable::GetItemByIndex(Index)));
}

TIntfPtr<TIHashtableEnumerator> TIHashTable::Elements() {
  return TIntfPtr<TIHashtableEnumerator>(new TIHashtableEnumerator(this, false));
}

// --- TIStringHashTable ---

TIStringHashTable::~TIStringHashTable() = default;

std::unique_ptr<TGHashtableEntry> TIStringHashTable::NewHashtableEntry() {
  return std::make_unique<TIStringHashtableEntry>();
}

bool TIStringHashTable::ContainsKey(const String& Key, TIntfPtr<IInterface>& Value) const {
  Value = nullptr;
  return !Key.empty() && ContainsCounted(KeyWord(Key), Value);
}

TIntfPtr<IInterface> TIStringHashTable::GetItemByIndex(std::int32_t Index) const {
  return TIntfPtr<IInterface>(AsIntf(TGStringHashtable::GetItemByIndex(Index)));
}

TIntfPtr<TIStringHashtableEnumerator> TIStringHashTable::Elements() {
  return TIntfPtr<TIStringHashtableEnumerator>(new TIStringHashtableEnumerator(this, false));
}

std::vector<TIntfPtr<IInterface>> TIStringHashTable::ToIntfArray() {
  std::vector<TIntfPtr<IInterface>> R;
  R.reserve(static_cast<std::size_t>(GetCount()));
  const TIntfPtr<TIStringHashtableEnumerator> It = Elements();
  while (It->HasMoreElements()) R.push_back(It->NextElementI());
  return R;
}

}  // namespace kz
