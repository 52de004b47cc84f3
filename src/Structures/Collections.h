// Collections with free notifications between items, lookup by name and host-ordered sorting.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "Runtime/Collections.h"
#include "Structures/Messages.h"
#include "Runtime/Types.h"

namespace kz {

/// A collection item that can watch other items: linked items tell each other when they
/// are destroyed. Links are mutual and dropped automatically on destruction; an item that
/// dies leaves no link to itself in any other item, also where a link was one-way.
class TGCollectionItem : public TCollectionItem {
  KZ_CLASS(TGCollectionItem, TCollectionItem)
 public:
  explicit TGCollectionItem(TCollection* Collection);
  /// Tells every linked item (last linked first), then leaves the collection.
  ~TGCollectionItem() override;

  /// Links this item and Item both ways; linking twice is harmless.
  void FreeNotification(TGCollectionItem* Item);
  /// Unlinks this item and Item both ways.
  void RemoveFreeNotification(TGCollectionItem* Item);
  /// Item is being destroyed. Overrides react and call this one, which drops the link.
  virtual void Notification(TGCollectionItem* Item);
  /// Drops Item from this item's links (one way).
  void RemoveNotification(TGCollectionItem* Item);
  /// Calls Notification(this) on every linked item, the last linked first.
  void NotifyAll();

 private:
  std::vector<TGCollectionItem*> FNotifications;
  std::vector<TGCollectionItem*> FReferrers;  // the items whose FNotifications hold this one
};

/// A collection with lookup by display name and export to a string list.
class TGCollection : public TCollection {
  KZ_CLASS(TGCollection, TCollection)
 public:
  explicit TGCollection(TCollectionItemClass ItemClass);

  /// The first item whose display name equals Name exactly, or -1. Linear.
  [[nodiscard]] std::int32_t IndexOf(StringView Name) const;
  /// Into a string list: cleared, then one line per item (display name, item as object) in
  /// index order, inside one update. Other destinations: the persistent rules.
  void AssignTo(TPersistent* Dest) override;
};

enum TSortOrder : std::uint8_t { soAscending, soDescending };

/// Orders two items for a sorted collection.
using TCollectionItemCompareEvent =
    std::function<int(TObject* Sender, TCollectionItem* Item1, TCollectionItem* Item2)>;

/// A collection kept in the order of OnCompare. Sort orders ascending by OnCompare (the
/// handler decides the direction); SortOrder only says which neighbours an added item must
/// fit before it is moved. An item added to a sorted collection is placed by binary search,
/// which needs OnCompare to answer exactly -1, 0 or 1: any other answer raises EListError
/// SInvalidCompareResult (the item then stays last).
class TSortedCollection : public TGCollection {
  KZ_CLASS(TSortedCollection, TGCollection)
 public:
  explicit TSortedCollection(TCollectionItemClass ItemClass);

  /// OnCompare(this, Item1, Item2); without a handler raises EAccessViolation.
  virtual int Compare(TCollectionItem* Item1, TCollectionItem* Item2);
  virtual void Sort();
  /// Quicksort by Compare (not stable), then Sorted is true; only with more than one item
  /// and when IsSortable.
  virtual void CustomSort(const TCollectionItemCompareEvent& Compare);
  /// True when OnCompare is assigned.
  virtual bool IsSortable();
  /// Places Item among its neighbours (see the class comment). Items of other collections
  /// are left alone.
  virtual void SortItem(TCollectionItem* Item);

  bool GetSorted() const { return FSorted; }
  /// Any change sorts, also switching off; since a sort leaves Sorted true, switching off a
  /// sortable collection of more than one item leaves it on.
  void SetSorted(bool Value);
  TSortOrder GetSortOrder() const { return FSortOrder; }
  /// A sorted collection is sorted again.
  void SetSortOrder(TSortOrder Value);
  const TCollectionItemCompareEvent& GetOnCompare() const { return FOnCompare; }
  void SetOnCompare(TCollectionItemCompareEvent Handler) { FOnCompare = std::move(Handler); }

 protected:
  void QuickSort(std::int32_t L, std::int32_t R, const TCollectionItemCompareEvent& Compare);
  void Notify(TCollectionItem* Item, TCollectionNotification Action) override;

 private:
  bool FitsNeighbours(TCollectionItem* Item, std::int32_t Index);
  std::int32_t SearchPosition(TCollectionItem* Item);

  bool FSorted = false;
  TCollectionItemCompareEvent FOnCompare;
  TSortOrder FSortOrder = soAscending;
  bool FPlacing = false;  // an own move is under way: added items are not placed
};

}  // namespace kz
