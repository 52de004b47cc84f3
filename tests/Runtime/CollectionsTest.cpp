#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Runtime/Runtime.h"

using namespace kz;

namespace {

int GLive = 0;  // items currently alive

class TCountedItem : public TCollectionItem {
  KZ_CLASS(TCountedItem, TCollectionItem)
 public:
  explicit TCountedItem(TCollection* Collection) : TCollectionItem(Collection) { ++GLive; }
  ~TCountedItem() override { --GLive; }
  void Assign(TPersistent* Source) override {
    if (auto* S = dynamic_cast<TCountedItem*>(Source)) {
      Value = S->Value;
      return;
    }
    inherited::Assign(Source);
  }
  void Touch() { Changed(false); }
  int Value = 0;
};

class TOtherItem : public TCountedItem {
  KZ_CLASS(TOtherItem, TCountedItem)
 public:
  explicit TOtherItem(TCollection* Collection) : TCountedItem(Collection) {}
  void Assign(TPersistent* Source) override {
    inherited::Assign(Source);
    if (auto* S = dynamic_cast<TOtherItem*>(Source)) Extra = S->Extra;
  }
  String GetDisplayName() override { return u"other " + IntToStr(Value); }
  std::string Extra;
};

// Records what the collection tells its subclasses, with the item's position at that time.
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
    const bool Complete = dynamic_cast<TCountedItem*>(Item) != nullptr;
    Log.push_back(std::string(Names[Action]) + "@" + std::to_string(Item->GetIndex()) + "/" +
                  std::to_string(GetCount()) + (Complete ? "" : " partial"));
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

TEST(Collections, OwnsExactlyItsItems) {
  {
    TCollection C(&TCountedItem::ClassInfo());
    Fill(C, {1, 2, 3, 4});
    EXPECT_EQ(GLive, 4);
    C.Delete(1);
    EXPECT_EQ(GLive, 3);
    EXPECT_EQ(Values(C), (std::vector<int>{1, 3, 4}));

    // Taken out, an item belongs to the caller and survives the collection.
    std::unique_ptr<TCollectionItem> Out(C.GetItem(0));
    Out->SetCollection(nullptr);
    EXPECT_EQ(C.GetCount(), 2);
    EXPECT_EQ(Out->GetIndex(), -1);

    // Freeing an item directly takes it out of its collection.
    delete C.GetItem(0);
    EXPECT_EQ(Values(C), (std::vector<int>{4}));
    EXPECT_EQ(GLive, 2);

    // Built with a collection, an item is the collection's.
    new TCountedItem(&C);
    EXPECT_EQ(C.GetCount(), 2);
    Out.reset();
    EXPECT_EQ(GLive, 2);
  }
  EXPECT_EQ(GLive, 0);

  TCollection C(&TCountedItem::ClassInfo());
  Fill(C, {1, 2, 3});
  C.Clear();
  EXPECT_EQ(C.GetCount(), 0);
  EXPECT_EQ(GLive, 0);
  EXPECT_THROW(TCollection(nullptr), EInvalidOperation);
}

TEST(Collections, NotifiesAroundInsertionAndRemoval) {
  TLogCollection C;
  C.Add();
  C.Add();
  // Added after insertion, with a fully built item; the change follows.
  EXPECT_EQ(C.Log, (std::vector<std::string>{"added@0/1", "update all", "added@1/2", "update all"}));

  C.Log.clear();
  C.Delete(0);
  // Deleting and extracting are told while the item is still in place.
  EXPECT_EQ(C.Log, (std::vector<std::string>{"deleting@0/2", "update all"}));

  C.Log.clear();
  TLogCollection Other;
  C.GetItem(0)->SetCollection(&Other);
  EXPECT_EQ(C.Log, (std::vector<std::string>{"extracting@0/1", "update all"}));
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"added@0/1", "update all"}));

  // Inside an update: notifications still come, Update only once at the end.
  Other.Log.clear();
  Other.BeginUpdate();
  Other.BeginUpdate();
  Other.Add();
  static_cast<TCountedItem*>(Other.GetItem(0))->Touch();
  Other.EndUpdate();
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"added@1/2"}));
  Other.EndUpdate();
  EXPECT_EQ(Other.Log.back(), "update all");
  EXPECT_THROW(Other.EndUpdate(), EInvalidOperation);

  Other.Log.clear();
  static_cast<TCountedItem*>(Other.GetItem(1))->Touch();
  Other.GetItem(1)->SetDisplayName(u"ignored");
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"update item", "update item"}));

  // Clear deletes last first, inside one update.
  Other.Log.clear();
  Other.Clear();
  EXPECT_EQ(Other.Log, (std::vector<std::string>{"deleting@1/2", "deleting@0/1", "update all"}));
}

TEST(Collections, RefusedAdditionLeavesNothingBehind) {
  TLogCollection C;
  C.ThrowOnAdd = true;
  EXPECT_THROW(C.Add(), EInvalidOperation);
  EXPECT_THROW(new TCountedItem(&C), EInvalidOperation);
  EXPECT_EQ(C.GetCount(), 0);
  EXPECT_EQ(GLive, 0);
}

TEST(Collections, MovesItemsByIndex) {
  TCollection C(&TCountedItem::ClassInfo());
  Fill(C, {0, 1, 2, 3, 4});
  C.GetItem(0)->SetIndex(3);
  EXPECT_EQ(Values(C), (std::vector<int>{1, 2, 3, 0, 4}));
  C.Move(4, 0);
  EXPECT_EQ(Values(C), (std::vector<int>{4, 1, 2, 3, 0}));
  C.Exchange(1, 4);
  EXPECT_EQ(Values(C), (std::vector<int>{4, 0, 2, 3, 1}));
  EXPECT_EQ(C.GetItem(2)->GetIndex(), 2);

  static_cast<TCountedItem*>(C.Insert(5))->Value = 9;
  static_cast<TCountedItem*>(C.Insert(0))->Value = 8;
  EXPECT_EQ(Values(C), (std::vector<int>{8, 4, 0, 2, 3, 1, 9}));

  try {
    C.GetItem(7);
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"List index out of bounds (7)");
  }
  EXPECT_THROW(C.Insert(8), EListError);
  EXPECT_THROW(C.Insert(-1), EListError);
  EXPECT_EQ(C.GetCount(), 7);  // a refused insert creates nothing
  EXPECT_THROW(C.GetItem(0)->SetIndex(7), EListError);
  EXPECT_THROW(C.Exchange(0, -1), EListError);
  EXPECT_THROW(C.Delete(7), EListError);
  EXPECT_EQ(Values(C), (std::vector<int>{8, 4, 0, 2, 3, 1, 9}));
}

TEST(Collections, CreatesItemsOfSeveralClasses) {
  RegisterClass(TOtherItem::ClassInfo());
  TPersistent Holder;
  TOwnedCollection Source(&Holder, &TCountedItem::ClassInfo());
  EXPECT_EQ(Source.GetOwner(), &Holder);
  Fill(Source, {1});
  // Items of a class found by name, as a reader of stored collections makes them.
  auto* Meta = dynamic_cast<TCollectionItemClass>(&FindClass(u"TOtherItem"));
  ASSERT_NE(Meta, nullptr);
  auto* O = static_cast<TOtherItem*>(Source.Add(Meta));
  O->Value = 2;
  O->Extra = "x";
  EXPECT_EQ(O->ClassName(), u"TOtherItem");
  EXPECT_EQ(O->GetDisplayName(), u"other 2");
  EXPECT_EQ(Source.GetItem(0)->GetDisplayName(), u"TCountedItem");
  EXPECT_EQ(O->GetNamePath(), u"TOwnedCollection[1]");

  // A metaclass without a collection makes a free-standing item for the caller.
  std::unique_ptr<TCollectionItem> Loose = TOtherItem::ClassInfo().Create(nullptr);
  EXPECT_EQ(Loose->GetCollection(), nullptr);
  EXPECT_EQ(Loose->GetID(), -1);

  TCollection Dest(&TCountedItem::ClassInfo());
  Fill(Dest, {7, 7, 7});
  Dest.Assign(&Source);
  ASSERT_EQ(Dest.GetCount(), 2);
  EXPECT_EQ(Dest.GetItem(0)->ClassName(), u"TCountedItem");
  auto* Copy = dynamic_cast<TOtherItem*>(Dest.GetItem(1));
  ASSERT_NE(Copy, nullptr);
  EXPECT_EQ(Copy->Value, 2);
  EXPECT_EQ(Copy->Extra, "x");

  // IDs are never reused, even after deletion.
  const std::int32_t Id = Dest.GetItem(1)->GetID();
  EXPECT_EQ(Dest.FindItemID(Id), Dest.GetItem(1));
  Dest.Delete(1);
  EXPECT_EQ(Dest.FindItemID(Id), nullptr);
  EXPECT_GT(Dest.Add()->GetID(), Id);

  Dest.SetItem(0, Source.GetItem(1));
  EXPECT_EQ(static_cast<TCountedItem*>(Dest.GetItem(0))->Value, 2);
  TCollection Plain(&TCountedItem::ClassInfo());
  EXPECT_THROW(Dest.Assign(nullptr), EConvertError);
  EXPECT_EQ(Plain.GetOwner(), nullptr);
  UnRegisterClass(TOtherItem::ClassInfo());
}
