// Owned-item collections: a collection owns items of a chosen class family, keeps them in
// index order, gives each a lasting ID and tells subclasses of every addition and removal.
#pragma once

#include <cstdint>
#include <vector>

#include "Runtime/Persistent.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

class TCollection;

/// What Notify reports: an item was added (sent after insertion), is about to be taken out
/// without being freed (before removal) or is about to be freed (before removal).
enum TCollectionNotification : std::uint8_t { cnAdded, cnExtracting, cnDeleting };

namespace Runtime {
KZ_RESOURCESTRING(SNoCollectionItemClass, u"A collection needs an item class")
}  // namespace Runtime

/// An item of a TCollection. The family has a virtual constructor taking the collection:
/// every item class declares a constructor `(TCollection* Collection)` forwarding to its
/// parent's. Constructed with a collection, the item joins it at the end and the collection
/// owns it; constructed with null it is free-standing and owned by whoever created it.
/// Destroying an item that sits in a collection takes it out of the collection first.
class TCollectionItem : public TPersistent {
 public:
  using TMeta = TMetaClassOf<TCollectionItem, TCollection*>;
  KZ_CLASS(TCollectionItem, TPersistent)
 public:
  explicit TCollectionItem(TCollection* Collection);
  ~TCollectionItem() override;

  TCollection* GetCollection() const { return FCollection; }
  /// Moves the item to Value's end (or, with null, out of any collection: the caller then
  /// owns it). Ownership follows the item. Nothing happens when Value is the current one.
  virtual void SetCollection(TCollection* Value);
  /// Position in the collection, -1 when free-standing. Linear in the collection's count.
  std::int32_t GetIndex() const;
  /// Moves the item within its collection; raises EListError for a position out of range.
  /// A free-standing item ignores it.
  virtual void SetIndex(std::int32_t Value);
  /// The name shown for the item; the class name unless a subclass says otherwise.
  virtual String GetDisplayName();
  /// Display names are computed by subclasses; the base only reports a change.
  virtual void SetDisplayName(const String& Value);
  /// Unique within the collection that gave it, never reused there; -1 before an item has
  /// been in a collection.
  std::int32_t GetID() const { return FID; }
  /// The collection, for name paths.
  TPersistent* GetOwner() override;
  /// "<collection path>[<index>]" inside a collection, the class name otherwise.
  String GetNamePath() override;

 protected:
  /// Tells the collection that this item (or, with AllItems, the whole collection) changed;
  /// silent while the collection is inside an update.
  void Changed(bool AllItems);

 private:
  friend class TCollection;
  TCollection* FCollection = nullptr;
  std::int32_t FID = -1;
};

using TCollectionItemClass = const TCollectionItem::TMeta*;

/// An ordered collection that owns its items: Delete, Clear and destruction free them.
/// Indexed access is constant time; finding an item's index or ID is linear. Bad indexes
/// raise EListError "List index out of bounds (%d)".
class TCollection : public TPersistent {
  KZ_CLASS(TCollection, TPersistent)
 public:
  /// ItemClass is the class Add creates; null raises EInvalidOperation.
  explicit TCollection(TCollectionItemClass ItemClass);
  /// Frees the items, last first. Runs while only this base is alive, so subclasses that
  /// must hear of those removals clear the collection in their own destructor.
  ~TCollection() override;

  TCollectionItemClass GetItemClass() const { return FItemClass; }
  /// A new item of the item class, appended. The item is fully constructed when Notify
  /// hears of it.
  TCollectionItem* Add();
  /// A new item of AClass (any item class, not only the collection's), appended.
  TCollectionItem* Add(TCollectionItemClass AClass);
  /// A new item of the item class at Index (0..count); a bad index raises before anything
  /// is created.
  TCollectionItem* Insert(std::int32_t Index);
  /// Frees the item at Index (Notify cnDeleting first).
  void Delete(std::int32_t Index);
  /// Frees every item, last first, inside one update.
  void Clear();
  std::int32_t GetCount() const { return static_cast<std::int32_t>(FItems.size()); }
  TCollectionItem* GetItem(std::int32_t Index) const;
  /// Assigns Value to the item at Index (the item stays, its content changes).
  void SetItem(std::int32_t Index, TCollectionItem* Value);
  /// The item with that ID, or null.
  TCollectionItem* FindItemID(std::int32_t ID) const;
  /// Moves the item at CurIndex to NewIndex, shifting those between.
  void Move(std::int32_t CurIndex, std::int32_t NewIndex);
  void Exchange(std::int32_t Index1, std::int32_t Index2);

  /// Updates nest; Update runs once when the outermost one ends. An EndUpdate without a
  /// BeginUpdate raises EInvalidOperation.
  virtual void BeginUpdate();
  virtual void EndUpdate();
  std::int32_t GetUpdateCount() const { return FUpdates.Count(); }

  /// From another collection: clears this one and, inside one update, adds for each source
  /// item a new item of that item's own class and assigns the source item to it.
  void Assign(TPersistent* Source) override;
  /// Null for a plain collection; TOwnedCollection answers its owner.
  TPersistent* GetOwner() override;

 protected:
  /// Called when Item changed, or with null when the collection as a whole changed
  /// (structure or several items). Never called inside an update. Does nothing here.
  virtual void Update(TCollectionItem* Item);
  /// Hears of every addition (after insertion) and removal (before it). Does nothing here.
  virtual void Notify(TCollectionItem* Item, TCollectionNotification Action);
  /// Calls Update(null) unless inside an update.
  void Changed();

 private:
  friend class TCollectionItem;
  void InsertItem(TCollectionItem* Item);
  void RemoveItem(TCollectionItem* Item, TCollectionNotification Action);
  /// Takes Item out without telling anyone; false when it is not in this collection.
  bool Unlink(TCollectionItem* Item);
  void CheckIndex(std::int32_t Index, std::size_t Limit) const;

  TCollectionItemClass FItemClass;
  std::vector<TCollectionItem*> FItems;
  TUpdateCounter<ueRaise> FUpdates;
  std::int32_t FNextID = 0;
};

/// A collection with an owner for name paths and streaming (GetOwner answers it). The
/// owner is not owned.
class TOwnedCollection : public TCollection {
  KZ_CLASS(TOwnedCollection, TCollection)
 public:
  TOwnedCollection(TPersistent* AOwner, TCollectionItemClass ItemClass);
  TPersistent* GetOwner() override;

 private:
  TPersistent* FOwner;
};

}  // namespace kz
