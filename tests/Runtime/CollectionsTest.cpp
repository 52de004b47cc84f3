#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;

namespace {

int GLive = 0;  // items currently alive

class TCountedItem : public TCollectionItem {
  KZ_CLASS(TCountedItem, TCollectionItem)
 public:
  explicit TCountedItem(TCollection* Collection) : TCollectionItem(Collection) { ++GLive; }
  ~TCountedItem() override { --GLive; }
  void Assign(TPersistent* Source) override {
    if (auto* S = dynamic_cast<TCountedItem*>(Source)) return void(Value = S->Value);
    inherited::Assign(Source);
  }
  void Touch() { Changed(false); }
  int Value = 0;
};

class TOtherItem : public TCountedItem {
  KZ_CLASS(TOtherItem, TCountedItem)
 public:
  using TCountedItem::TCountedItem;
};

// Records Notify and Update calls, each with the item's index and the count at that time.
class TLogCollection : public TCollection {
  KZ_CLASS(TLogCollection, TCollection)
 public:
  TLogCollection() : TCollection(&TCountedItem::ClassInfo()) {}
  ~TLogCollection() override { Clear(); }
  std::vector<std::string> Log;
  bool ThrowOnAdd = false;

 protected:
  void Notify(TCollectionItem* Item, TCollectionNotification Action) override {
    static const char* Names[] = {"added", "extracting", "deleting"};
    Log.push_back(std::string(Names[Action]) + "@" + std::to_string(Item->GetIndex()) + "/" +
                  std::to_string(GetCount()) + (dynamic_cast<TCountedItem*>(Item) ? "" : " partial"));
    if (ThrowOnAdd && Action == cnAdded) throw EInvalidOperation(u"refused");
  }
  void Update(TCollectionItem* Item) override { Log.push_back(Item ? "update item" : "update all"); }
};

std::vector<int> Values(const TCollection& C) {
  std::vector<int> R;
  for (std::int32_t i = 0; i < C.GetCount(); ++i) R.push_back(static_cast<TCountedItem*>(C.GetItem(i))->Value);
  return R;
}

void Fill(TCollection& C, std::initializer_list<int> Vs) {
  for (int V : Vs) static_cast<TCountedItem*>(C.Add())->Value = V;
}

}  // namespace

TEST(Collections, OwnsItsItemsAndMovesThemByIndex) {
  {
    TCollection C(&TCountedItem::ClassInfo());
    Fill(C, {0, 1, 2, 3, 4});
    C.GetItem(0)->SetIndex(3);
    C.Move(4, 0);
    C.Exchange(1, 4);
    static_cast<TCountedItem*>(C.Insert(5))->Value = 9;
    EXPECT_EQ(Values(C), (std::vector<int>{4, 0, 2, 3, 1, 9}));
    EXPECT_EQ(MessageOf<EListError>([&] { C.GetItem(6); }), u"List index out of bounds (6)");
    EXPECT_EQ(MessageOf<EListError>([&] { C.Insert(7); }), u"List index out of bounds (7)");
    EXPECT_THROW(C.GetItem(0)->SetIndex(-1), EListError);
    EXPECT_EQ(GLive, 6);  // a refused insert creates nothing

    C.Delete(1);
    std::unique_ptr<TCollectionItem> Out(C.GetItem(0));  // taken out, it is the caller's
    Out->SetCollection(nullptr);
    delete C.GetItem(0);  // freeing an item takes it out of its collection
    EXPECT_EQ(Values(C), (std::vector<int>{3, 1, 9}));
    EXPECT_EQ(GLive, 4);
    new TCountedItem(&C);  // built with a collection, it is the collection's
  }
  EXPECT_EQ(GLive, 0);
  EXPECT_THROW(TCollection(nullptr), EInvalidOperation);
}

TEST(Collections, NotifiesAroundInsertionAndRemoval) {
  TLogCollection C, Other;
  C.Add();
  C.Add();
  C.Delete(0);
  C.GetItem(0)->SetCollection(&Other);
  EXPECT_EQ(C.Log, (std::vector<std::string>{"added@0/1", "update all", "added@1/2", "update all", "deleting@0/2",
                                             "update all", "extracting@0/1", "update all"}));
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"added@0/1", "update all"}));

  // Inside nested updates Notify still comes, Update once at the end.
  Other.Log.clear();
  Other.BeginUpdate();
  Other.BeginUpdate();
  Other.Add();
  static_cast<TCountedItem*>(Other.GetItem(0))->Touch();
  Other.EndUpdate();
  Other.EndUpdate();
  static_cast<TCountedItem*>(Other.GetItem(1))->Touch();
  Other.Clear();  // last first, inside one update
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"added@1/2", "update all", "update item", "deleting@1/2",
                                                 "deleting@0/1", "update all"}));
  EXPECT_THROW(Other.EndUpdate(), EInvalidOperation);

  // A refused addition leaves nothing behind, whichever way the item was made.
  Other.ThrowOnAdd = true;
  EXPECT_THROW(Other.Add(), EInvalidOperation);
  EXPECT_THROW(new TCountedItem(&Other), EInvalidOperation);
  EXPECT_EQ(Other.GetCount(), 0);
}

TEST(Collections, AssignRemakesEachItemOfItsOwnClassAndIdsAreNeverReused) {
  TPersistent Holder;
  TOwnedCollection Source(&Holder, &TCountedItem::ClassInfo());
  Fill(Source, {1});
  static_cast<TCountedItem*>(Source.Add(&TOtherItem::ClassInfo()))->Value = 2;
  EXPECT_EQ(Source.GetItem(1)->GetNamePath(), u"TOwnedCollection[1]");

  TCollection Dest(&TCountedItem::ClassInfo());
  Fill(Dest, {7, 7, 7});
  Dest.Assign(&Source);
  EXPECT_EQ(Values(Dest), (std::vector<int>{1, 2}));
  EXPECT_EQ(Dest.GetItem(1)->GetDisplayName(), u"TOtherItem");

  const std::int32_t Id = Dest.GetItem(1)->GetID();
  Dest.Delete(1);
  EXPECT_EQ(Dest.FindItemID(Id), nullptr);
  EXPECT_GT(Dest.Add()->GetID(), Id);
}
