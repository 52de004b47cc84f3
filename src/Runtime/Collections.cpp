#include "Runtime/Collections.h"

#include <algorithm>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

// ---- TCollectionItem ----------------------------------------------------------------------

TCollectionItem::TCollectionItem(TCollection* Collection) {
  if (!Collection) return;
  try {
    Collection->InsertItem(this);
  } catch (...) {
    // A failing Notify must not leave the collection holding an item that never existed.
    if (FCollection) FCollection->Unlink(this);
    throw;
  }
}

TCollectionItem::~TCollectionItem() {
  if (FCollection) FCollection->RemoveItem(this, cnDeleting);
}

void TCollectionItem::SetCollection(TCollection* Value) {
  if (Value == FCollection) return;
  if (FCollection) FCollection->RemoveItem(this, cnExtracting);
  if (Value) Value->InsertItem(this);
}

std::int32_t TCollectionItem::GetIndex() const {
  if (!FCollection) return -1;
  const auto& Items = FCollection->FItems;
  return static_cast<std::int32_t>(std::find(Items.begin(), Items.end(), this) - Items.begin());
}

void TCollectionItem::SetIndex(std::int32_t Value) {
  if (FCollection) FCollection->Move(GetIndex(), Value);
}

String TCollectionItem::GetDisplayName() { return ClassName(); }

void TCollectionItem::SetDisplayName(const String&) { Changed(false); }

TPersistent* TCollectionItem::GetOwner() { return FCollection; }

String TCollectionItem::GetNamePath() {
  if (!FCollection) return ClassName();
  return FCollection->GetNamePath() + u"[" + IntToStr(GetIndex()) + u"]";
}

void TCollectionItem::Changed(bool AllItems) {
  if (FCollection && !FCollection->FUpdates.Updating()) FCollection->Update(AllItems ? nullptr : this);
}

// ---- TCollection --------------------------------------------------------------------------

namespace {
// Every class below TCollectionItem is described by the family's metaclass type.
TCollectionItemClass ItemClassOf(const TCollectionItem* Item) {
  return static_cast<TCollectionItemClass>(Item->ClassType());
}

}  // namespace

TCollection::TCollection(TCollectionItemClass ItemClass) : FItemClass(ItemClass) {
  if (!ItemClass) throw EInvalidOperation(SNoCollectionItemClass);
}

TCollection::~TCollection() {
  // Items are freed without Update calls: nothing may observe a half-destroyed collection.
  FUpdates.Begin();
  while (!FItems.empty()) Delete(GetCount() - 1);
}

TCollectionItem* TCollection::Add() { return Add(FItemClass); }

TCollectionItem* TCollection::Add(TCollectionItemClass AClass) {
  if (!AClass) RaiseNullAccess(u"collection item class");
  // Built free-standing first, so that Notify sees the complete item, not its base part.
  std::unique_ptr<TCollectionItem> Item = AClass->Create(nullptr);
  Item->SetCollection(this);
  return Item.release();
}

TCollectionItem* TCollection::Insert(std::int32_t Index) {
  CheckIndex(Index, FItems.size() + 1);
  TCollectionItem* Item = Add();
  Item->SetIndex(Index);
  return Item;
}

void TCollection::Delete(std::int32_t Index) {
  TCollectionItem* Item = GetItem(Index);
  Notify(Item, cnDeleting);
  // Notify may have moved the item elsewhere, in which case it is no longer ours to free.
  if (!Unlink(Item)) return;
  delete Item;
  Changed();
}

void TCollection::Clear() {
  if (FItems.empty()) return;
  WithinUpdate(*this, [&] {
    while (!FItems.empty()) Delete(GetCount() - 1);
  });
}

TCollectionItem* TCollection::GetItem(std::int32_t Index) const {
  CheckIndex(Index, FItems.size());
  return FItems[static_cast<std::size_t>(Index)];
}

void TCollection::SetItem(std::int32_t Index, TCollectionItem* Value) { GetItem(Index)->Assign(Value); }

TCollectionItem* TCollection::FindItemID(std::int32_t ID) const {
  for (TCollectionItem* Item : FItems)
    if (Item->FID == ID) return Item;
  return nullptr;
}

void TCollection::Move(std::int32_t CurIndex, std::int32_t NewIndex) {
  CheckIndex(CurIndex, FItems.size());
  CheckIndex(NewIndex, FItems.size());
  if (CurIndex == NewIndex) return;
  auto First = FItems.begin();
  if (CurIndex < NewIndex)
    std::rotate(First + CurIndex, First + CurIndex + 1, First + NewIndex + 1);
  else
    std::rotate(First + NewIndex, First + CurIndex, First + CurIndex + 1);
  Changed();
}

void TCollection::Exchange(std::int32_t Index1, std::int32_t Index2) {
  CheckIndex(Index1, FItems.size());
  CheckIndex(Index2, FItems.size());
  if (Index1 == Index2) return;
  std::swap(FItems[static_cast<std::size_t>(Index1)], FItems[static_cast<std::size_t>(Index2)]);
  Changed();
}

void TCollection::BeginUpdate() { FUpdates.Begin(); }

void TCollection::EndUpdate() {
  if (FUpdates.End()) Changed();
}

void TCollection::Assign(TPersistent* Source) {
  auto* Other = dynamic_cast<TCollection*>(Source);
  if (!Other) return inherited::Assign(Source);
  if (Other == this) return;
  WithinUpdate(*this, [&] {
    Clear();
    for (std::int32_t i = 0; i < Other->GetCount(); ++i) {
      TCollectionItem* From = Other->GetItem(i);
      Add(ItemClassOf(From))->Assign(From);
    }
  });
}

TPersistent* TCollection::GetOwner() { return nullptr; }

void TCollection::Update(TCollectionItem*) {}

void TCollection::Notify(TCollectionItem*, TCollectionNotification) {}

void TCollection::Changed() {
  if (!FUpdates.Updating()) Update(nullptr);
}

void TCollection::InsertItem(TCollectionItem* Item) {
  FItems.push_back(Item);
  Item->FCollection = this;
  Item->FID = FNextID++;
  Notify(Item, cnAdded);
  Changed();
}

void TCollection::RemoveItem(TCollectionItem* Item, TCollectionNotification Action) {
  Notify(Item, Action);
  if (Unlink(Item)) Changed();
}

bool TCollection::Unlink(TCollectionItem* Item) {
  if (Item->FCollection != this) return false;
  FItems.erase(std::find(FItems.begin(), FItems.end(), Item));
  Item->FCollection = nullptr;
  return true;
}

void TCollection::CheckIndex(std::int32_t Index, std::size_t Limit) const {
  if (Index < 0 || static_cast<std::size_t>(Index) >= Limit) throw EListError(SListIndexError, {Index});
}

// ---- TOwnedCollection ---------------------------------------------------------------------

TOwnedCollection::TOwnedCollection(TPersistent* AOwner, TCollectionItemClass ItemClass)
    : TCollection(ItemClass), FOwner(AOwner) {}

TPersistent* TOwnedCollection::GetOwner() { return FOwner; }

}  // namespace kz
