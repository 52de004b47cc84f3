#include "GHashTable/GHashTable.h"
#include "GHashTable/internal/StringKeyHash.h"
#include "Runtime/StringLists.h"
#include "Runtime/WithinUpdate.h"

namespace kz {

using namespace Runtime;
using namespace GHashTable;

// ---- TGStringHashtableEntry ----

Pointer TGStringHashtableEntry::GetKey() const { return TGStringHashtable::KeyWord(FKeyString); }

void TGStringHashtableEntry::SetKey(Pointer Key) { FKeyString = TGStringHashtable::KeyText(Key); }

bool TGStringHashtableEntry::KeyEquals(Pointer Key) const {
  return Key ? FKeyString == *static_cast<const String*>(Key) : FKeyString.empty();
}

// ---- TGStringHashtable ----

std::int32_t TGStringHashtable::HashCode(Pointer Key, std::int32_t Size) const {
  if (!Key) throw EGHashtableError(SNullArgument);
  // The same number as the tables' in-line path; a sum of 0 is refused as the word hash
  // refuses a null key.
  const std::uint32_t H = detail::StringKeyHash(*static_cast<const String*>(Key));
  if (H == 0) throw EGHashtableError(SNullArgument);
  return HashWord(static_cast<std::int32_t>(H), Size);
}

std::unique_ptr<TGHashtableEntry> TGStringHashtable::NewHashtableEntry() {
  return std::make_unique<TGStringHashtableEntry>();
}

// As for word tables, the library's own class calls the core without virtual dispatch.
Pointer TGStringHashtable::Get(const String& Key) const {
  if (FDivisionPath == kpString && !Key.empty()) {
    // A present key in one walk; a hash of 0, misses and errors take the full path.
    if (const std::uint32_t H = detail::StringKeyHash(Key)) {
      const std::uint32_t B = DivisionBucket(H & 0x7FFFFFFFu);
      for (const TGHashtableEntry* E = FBuckets[B]; E; E = E->GetNext())
        if (static_cast<const TGStringHashtableEntry*>(E)->GetKeyString() == Key) return E->GetItem();
    }
  }
  return Direct() ? TGCustomHashtable::GetValue(KeyWord(Key)) : GetValue(KeyWord(Key));
}

void TGStringHashtable::Put(const String& Key, Pointer Value) {
  if (Direct())
    TGCustomHashtable::PutValue(KeyWord(Key), Value);
  else
    PutValue(KeyWord(Key), Value);
}

Pointer TGStringHashtable::Remove(const String& Key) {
  return Direct() ? TGCustomHashtable::RemoveValue(KeyWord(Key)) : RemoveValue(KeyWord(Key));
}

bool TGStringHashtable::ContainsKey(const String& Key) const { return !Key.empty() && HasKey(KeyWord(Key)); }

bool TGStringHashtable::ContainsKey(const String& Key, Pointer& Value) const {
  TGHashtableEntry* E = nullptr;
  const bool Found =
      !Key.empty() && (Direct() ? TGCustomHashtable::HasKey(KeyWord(Key), E) : HasKey(KeyWord(Key), E));
  Value = Found ? E->GetItem() : nullptr;
  return Found;
}

String TGStringHashtable::GetKeyByIndex(std::int32_t Index) const { return KeyText(TGCustomHashtable::GetKeyByIndex(Index)); }

String TGStringHashtable::Next() { return KeyText(NextElement()); }

TIntfPtr<IIterator> TGStringHashtable::Elements() {
  return TIntfPtr<IIterator>(new TGStringHashTableEnumerator(this, false));
}

TIntfPtr<IStringIterator> TGStringHashtable::Indices() {
  return TIntfPtr<IStringIterator>(new TGStringHashTableEnumerator(this, true));
}

std::vector<String> TGStringHashtable::ToArray() {
  std::vector<String> Keys;
  Keys.reserve(static_cast<std::size_t>(GetCount()));
  Reset();
  while (!GetEOT()) Keys.push_back(KeyText(NextElement()));
  return Keys;
}

void TGStringHashtable::Assign(TPersistent* Source) {
  auto* Lines = dynamic_cast<TStrings*>(Source);
  if (!Lines) {
    inherited::Assign(Source);
    return;
  }
  WithinUpdate(*this, [&] {
    Clear();
    for (std::int32_t I = 0; I < Lines->GetCount(); ++I) Put(Lines->Get(I), Lines->GetObject(I));
  });
}

void TGStringHashtable::AssignTo(TPersistent* Dest) {
  auto* Lines = dynamic_cast<TStrings*>(Dest);
  if (!Lines) {
    inherited::AssignTo(Dest);
    return;
  }
  // A fresh iterator, so that the table's own one keeps its place.
  TIntfPtr<TGHashtableEnumerator> Keys(new TGHashtableEnumerator(this, true));
  WithinUpdate(*Lines, [&] {
    Lines->Clear();
    while (Keys->HasMoreElements()) {
      const Pointer Key = Keys->NextElement();
      Lines->AddObject(KeyText(Key), static_cast<TObject*>(FindEntry(Key)->GetItem()));
    }
  });
}

// ---- TGStringHashTableEnumerator ----

TGStringHashTableEnumerator::TGStringHashTableEnumerator(TGStringHashtable* Table, bool Keys)
    : TGHashtableEnumerator(Table, Keys) {}

Pointer TGStringHashTableEnumerator::NextElement() {
  const Pointer Element = TGHashtableEnumerator::NextElement();
  // The key text is kept so that CurrentElementS never reads an entry removed since.
  if (FKeys) FCurrentKey = TGStringHashtable::KeyText(Element);
  return Element;
}

String TGStringHashTableEnumerator::NextElementS() {
  if (!FKeys) throw EGHashtableError(SIllegalNextElement);
  NextElement();
  return FCurrentKey;
}

bool TGStringHashTableEnumerator::MoveNext() {
  if (!HasMoreElements()) return false;
  NextElementS();
  return true;
}

}  // namespace kz
