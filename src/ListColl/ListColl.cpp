#include "ListColl/ListColl.h"

namespace kz {

using namespace Runtime;

TListCollection::~TListCollection() {
  while (GetCount() > 0) {
    TObject* Item = GetItem(0);
    Delete(0);
    delete Item;
  }
}

void TListCollection::ForEach(TListCollectionAction Action) {
  if (!Action) RaiseNullAccess(u"list collection action");
  const std::int32_t Count = GetCount();
  for (std::int32_t I = 0; I < Count; ++I) Action(GetItem(I));
}

TObject* TListCollection::Search(std::int32_t From, std::int32_t Step, TListCollectionTest Test) const {
  if (!Test) RaiseNullAccess(u"list collection test");
  for (std::int32_t I = From; I >= 0 && I < GetCount(); I += Step)
    if (TObject* Item = GetItem(I); Test(Item)) return Item;
  return nullptr;
}

TObject* TListCollection::FirstThat(TListCollectionTest Test) const { return Search(0, 1, Test); }

TObject* TListCollection::LastThat(TListCollectionTest Test) const { return Search(GetCount() - 1, -1, Test); }

TObject* TListCollection::NextThat(const TObject* Item, TListCollectionTest Test) const {
  if (!Test) RaiseNullAccess(u"list collection test");
  const std::int32_t Index = IndexOf(const_cast<TObject*>(Item));
  return Index < 0 ? nullptr : Search(Index + 1, 1, Test);
}

TObject* TListCollection::PrevThat(const TObject* Item, TListCollectionTest Test) const {
  if (!Test) RaiseNullAccess(u"list collection test");
  const std::int32_t Index = IndexOf(const_cast<TObject*>(Item));
  return Index < 0 ? nullptr : Search(Index - 1, -1, Test);
}

}  // namespace kz
