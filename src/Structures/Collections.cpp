#include <algorithm>

#include "Runtime/Text.h"
#include "Runtime/UpdateCounter.h"
#include "Runtime/WithinUpdate.h"
#include "Runtime/ListStorage.h"
#include "Structures/internal/StructuresSupport.h"

namespace kz {

using namespace Runtime;
using namespace Structures;

// ---- TGCollectionItem --------------------------------------------------------------------------

TGCollectionItem::TGCollectionItem(TCollection* Collection) : TCollectionItem(Collection) {}

TGCollectionItem::~TGCollectionItem() {
  NotifyAll();
  // Whatever the notified items did with their links (an override of Notification may keep
  // one, a one-way RemoveNotification leaves the other side), no list may keep this item.
  for (TGCollectionItem* Item : FNotifications) std::erase(Item->FReferrers, this);
  for (TGCollectionItem* Item : FReferrers) std::erase(Item->FNotifications, this);
}

void TGCollectionItem::FreeNotification(TGCollectionItem* Item) {
  if (!Item) RaiseNullAccess(u"collection item");
  if (std::find(FNotifications.begin(), FNotifications.end(), Item) != FNotifications.end()) return;
  FNotifications.push_back(Item);
  Item->FReferrers.push_back(this);
  Item->FreeNotification(this);
}

void TGCollectionItem::RemoveFreeNotification(TGCollectionItem* Item) {
  if (!Item) RaiseNullAccess(u"collection item");
  RemoveNotification(Item);
  Item->RemoveNotification(this);
}

void TGCollectionItem::Notification(TGCollectionItem* Item) { RemoveNotification(Item); }

void TGCollectionItem::RemoveNotification(TGCollectionItem* Item) {
  const auto It = std::find(FNotifications.begin(), FNotifications.end(), Item);
  if (It == FNotifications.end()) return;
  FNotifications.erase(It);
  std::erase(Item->FReferrers, this);
  if (FNotifications.empty()) FNotifications = std::vector<TGCollectionItem*>();
}

void TGCollectionItem::NotifyAll() {
  // A notified item may unlink others from this one: the bound is re-read at every step.
  std::size_t i = FNotifications.size();
  while (i > 0) {
    i = std::min(i, FNotifications.size());
    if (i == 0) break;
    --i;
    FNotifications[i]->Notification(this);
  }
}

// ---- TGCollection ------------------------------------------------------------------------------

TGCollection::TGCollection(TCollectionItemClass ItemClass) : TCollection(ItemClass) {}

std::int32_t TGCollection::IndexOf(StringView Name) const {
  for (std::int32_t i = 0; i < GetCount(); ++i)
    if (GetItem(i)->GetDisplayName() == Name) return i;
  return -1;
}

void TGCollection::AssignTo(TPersistent* Dest) {
  auto* Strings = dynamic_cast<TStrings*>(Dest);
  if (!Strings) return inherited::AssignTo(Dest);
  WithinUpdate(*Strings, [&] {
    Strings->Clear();
    for (std::int32_t i = 0; i < GetCount(); ++i) {
      TCollectionItem* Item = GetItem(i);
      Strings->AddObject(Item->GetDisplayName(), Item);
    }
  });
}

// ---- TSortedCollection -------------------------------------------------------------------------

TSortedCollection::TSortedCollection(TCollectionItemClass ItemClass) : TGCollection(ItemClass) {}

int TSortedCollection::Compare(TCollectionItem* Item1, TCollectionItem* Item2) {
  if (!FOnCompare) RaiseNullAccess(u"OnCompare handler");
  return FOnCompare(this, Item1, Item2);
}

bool TSortedCollection::IsSortable() { return static_cast<bool>(FOnCompare); }

void TSortedCollection::Sort() { CustomSort(FOnCompare); }

void TSortedCollection::CustomSort(const TCollectionItemCompareEvent& Compare) {
  if (GetCount() <= 1 || !IsSortable()) return;
  if (!Compare) RaiseNullAccess(u"comparison");
  WithinUpdate(*this, [&] {
    QuickSort(0, GetCount() - 1, Compare);
    FSorted = true;
  });
}

void TSortedCollection::QuickSort(std::int32_t L, std::int32_t R, const TCollectionItemCompareEvent& Compare) {
  auto ComparePositions = [&](std::int32_t I, std::int32_t J) { return Compare(this, GetItem(I), GetItem(J)); };
  auto Swap = [&](std::int32_t I, std::int32_t J) { Exchange(I, J); };
  detail::QuickSortPositions(L, R, ComparePositions, Swap);
}

void TSortedCollection::SetSorted(bool Value) {
  if (FSorted == Value) return;
  FSorted = Value;
  Sort();
}

void TSortedCollection::SetSortOrder(TSortOrder Value) {
  if (FSortOrder == Value) return;
  FSortOrder = Value;
  if (FSorted) Sort();
}

void TSortedCollection::Notify(TCollectionItem* Item, TCollectionNotification Action) {
  if (!FPlacing && Action == cnAdded && FSorted) SortItem(Item);
  inherited::Notify(Item, Action);
}

bool TSortedCollection::FitsNeighbours(TCollectionItem* Item, std::int32_t Index) {
  const bool Ascending = FSortOrder == soAscending;
  if (Index > 0) {
    const int C = Compare(Item, GetItem(Index - 1));
    if (Ascending ? C < 0 : C > 0) return false;
  }
  if (Index < GetCount() - 1) {
    const int C = Compare(Item, GetItem(Index + 1));
    if (Ascending ? C > 0 : C < 0) return false;
  }
  return true;
}

std::int32_t TSortedCollection::SearchPosition(TCollectionItem* Item) {
  // Ascending whatever SortOrder says, over the other items: the item is taken out for the
  // search and put back last, with placement suspended meanwhile.
  TRestoreValue Placing(FPlacing, true);
  std::int32_t L = 0;
  Item->SetCollection(nullptr);
  try {
    std::int32_t H = GetCount() - 1;
    while (L <= H) {
      const std::int32_t Mid = L + (H - L) / 2;
      const int R = Compare(Item, GetItem(Mid));
      if (R == -1) {
        H = Mid - 1;
      } else if (R == 0) {
        L = Mid;
        break;
      } else if (R == 1) {
        L = Mid + 1;
      } else {
        // Any other answer moves neither bound: the search would never end.
        throw EListError(SInvalidCompareResult, {R});
      }
    }
  } catch (...) {
    Item->SetCollection(this);
    throw;
  }
  Item->SetCollection(this);
  return L;
}

void TSortedCollection::SortItem(TCollectionItem* Item) {
  if (!Item) RaiseNullAccess(u"collection item");
  if (!IsSortable() || Item->GetCollection() != this) return;
  const std::int32_t Count = GetCount();
  if (Count <= 1) return;
  const std::int32_t Index = Item->GetIndex();
  if (!FitsNeighbours(Item, Index)) {
    if (Count == 2) {
      Item->SetIndex(1 - Index);
    } else {
      const std::int32_t Position = SearchPosition(Item);
      Item->SetIndex(Position);
    }
  }
  if (GetUpdateCount() == 0) Changed();
}

}  // namespace kz
