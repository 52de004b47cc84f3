#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;
using kz::test::TCounted;
using kz::test::TCountedIntf;

namespace {

Pointer P(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }
std::intptr_t Num(Pointer Ptr) { return reinterpret_cast<std::intptr_t>(Ptr); }

std::vector<std::intptr_t> Items(const TList& L) {
  std::vector<std::intptr_t> R;
  for (std::int32_t i = 0; i < L.GetCount(); ++i) R.push_back(Num(L.GetItem(i)));
  return R;
}

// Records every notification as (item, action).
class TWatchedList : public TList {
 public:
  std::vector<std::pair<std::intptr_t, TListNotification>> Log;

 protected:
  void Notify(Pointer Ptr, TListNotification Action) override {
    Log.emplace_back(Num(Ptr), Action);
  }
};

}  // namespace

TEST(PointerList, EditingAndItsErrors) {
  TList L;
  EXPECT_EQ(MessageOf<EListError>([&] { L.First(); }), u"List index out of bounds (0)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Last(); }), u"List index out of bounds (-1)");
  for (int i = 1; i <= 4; ++i) L.Add(P(i));
  L.Insert(4, P(5));  // the end is a valid insertion point
  L.Insert(0, nullptr);
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(7, P(9)); }), u"List index out of bounds (7)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Exchange(0, 6); }), u"List index out of bounds (6)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCapacity(5); }), u"List capacity out of bounds (5)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCount(-1); }), u"List count out of bounds (-1)");

  L.Move(1, 4);
  L.Move(5, 0);
  L.Exchange(1, 5);
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{5, 1, 2, 3, 4, 0}));
  EXPECT_EQ(L.Remove(P(3)), 3);
  EXPECT_EQ(L.Remove(P(3)), -1);
  EXPECT_EQ(L.Extract(P(9)), nullptr);
  EXPECT_EQ(L.Extract(P(2)), P(2));
  L.SetCount(6);  // grows with nulls
  L.Pack();
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{5, 1, 4}));
}

TEST(PointerList, NotificationsFollowEveryItemInAndOut) {
  using V = std::vector<std::pair<std::intptr_t, TListNotification>>;
  TWatchedList L;
  L.Add(P(1));
  L.Add(nullptr);  // null items are never notified
  L.Insert(0, P(2));
  L.SetItem(0, P(3));
  L.SetItem(0, P(3));  // same item: nothing happens
  L.Extract(P(1));
  L.Remove(P(3));
  L.Delete(0);  // the null slot
  EXPECT_EQ(L.Log, (V{{1, lnAdded}, {2, lnAdded}, {2, lnDeleted}, {3, lnAdded}, {1, lnExtracted}, {3, lnDeleted}}));
  for (int i = 1; i <= 3; ++i) L.Add(P(i * 10));
  L.Log.clear();
  L.SetCount(1);  // from the last down
  L.Clear();
  EXPECT_EQ(L.Log, (V{{30, lnDeleted}, {20, lnDeleted}, {10, lnDeleted}}));
  EXPECT_EQ(L.GetCapacity(), 0);
}

TEST(PointerList, GrowthAndSorting) {
  TList L;
  std::vector<std::int32_t> Seen{L.GetCapacity()};
  for (int i = 0; i < 80; ++i) {
    L.Add(P(i * 37 % 80));
    if (L.GetCapacity() != Seen.back()) Seen.push_back(L.GetCapacity());
  }
  EXPECT_EQ(Seen, (std::vector<std::int32_t>{0, 4, 8, 12, 28, 44, 60, 76, 95}));

  // A comparison that is not an order keeps every item and stays inside the list.
  L.Sort([](Pointer, Pointer) { return 1; });
  L.Sort([](Pointer, Pointer) { return -1; });
  L.Sort([](Pointer A, Pointer B) { return static_cast<int>(Num(A) - Num(B)); });
  for (int i = 0; i < 80; ++i) ASSERT_EQ(L.GetItem(i), P(i));
}

TEST(ObjectList, OwnsExactlyWhatItHolds) {
  TCounted::Alive = 0;
  TCounted* Kept = nullptr;
  {
    TObjectList L;
    TCounted* Objs[6];
    for (int i = 0; i < 6; ++i) L.Add(Objs[i] = new TCounted(i));
    L.Delete(0);
    EXPECT_EQ(L.Remove(Objs[1]), 0);
    Kept = static_cast<TCounted*>(L.Extract(Objs[2]));  // handed back, not freed
    L.SetItem(0, new TCounted(10));                    // the replaced one is freed
    EXPECT_EQ(TCounted::Alive, 4);
    L.SetCount(1);
    EXPECT_EQ(TCounted::Alive, 2);
  }
  EXPECT_EQ(TCounted::Alive, 1);  // destruction freed the rest, not the extracted one
  delete Kept;

  TCounted Local;
  {
    TObjectList NotOwning(false);
    NotOwning.Add(&Local);
    NotOwning.Add(&Local);
    NotOwning.Delete(0);
  }
  EXPECT_EQ(TCounted::Alive, 1);
}

TEST(ObjectList, FindInstanceOfExactOrDerived) {
  TObjectList L;
  L.Add(new TStringList);
  L.Add(nullptr);
  L.Add(new TCounted);
  L.Add(new TStringList);
  EXPECT_EQ(L.FindInstanceOf(&TStringList::ClassInfo(), true, 1), 3);
  EXPECT_EQ(L.FindInstanceOf(&TStrings::ClassInfo()), -1);
  EXPECT_EQ(L.FindInstanceOf(&TObject::ClassInfo(), false, 1), 2);
}

TEST(InterfaceList, HoldsOneReferencePerSlotAndReleasesOnLeaving) {
  TCountedIntf::Alive = 0;
  TIntfPtr<IInterfaceList> List(new TInterfaceList);
  {
    TIntfPtr<IInterface> A(new TCountedIntf), B(new TCountedIntf);
    List->Add(A);
    List->Add(B);
    List->Insert(0, A);
    EXPECT_EQ(List->Remove(A), 0);
    EXPECT_EQ(dynamic_cast<TCountedIntf*>(A.get())->RefCount(), 2);
  }
  List->Put(0, nullptr);  // A, held by that slot alone, goes
  EXPECT_EQ(TCountedIntf::Alive, 1);
  List->SetCount(3);
  EXPECT_EQ(List->Get(2), nullptr);
  List->SetCount(0);
  EXPECT_EQ(TCountedIntf::Alive, 0);
  EXPECT_EQ(MessageOf<EListError>([&] { List->Get(0); }), u"List index out of bounds (0)");
  List->Add(TIntfPtr<IInterface>(new TCountedIntf));
  List.reset();  // destroying the list releases what it holds
  EXPECT_EQ(TCountedIntf::Alive, 0);
}

TEST(InterfaceList, IsQueryableAndGuardsConcurrentUse) {
  TIntfPtr<IInterface> Base(static_cast<TInterfacedObject*>(new TInterfaceList));
  TIntfPtr<IInterfaceList> List = Query<IInterfaceList>(Base);
  TIntfPtr<IInterface> Item(new TCountedIntf);
  std::vector<std::thread> Threads;
  for (int t = 0; t < 4; ++t)
    Threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        List->Add(Item);
        List->Lock();  // compound step: the lock is re-entrant
        List->Delete(List->GetCount() - 1);
        List->Add(Query<IInterface>(Item));
        List->Unlock();
      }
    });
  for (auto& T : Threads) T.join();
  EXPECT_EQ(List->GetCount(), 4 * 500);
  EXPECT_EQ(List->IndexOf(Item), 0);  // identity holds across the interfaces an item is seen through
  List->Clear();
  EXPECT_EQ(dynamic_cast<TCountedIntf*>(Item.get())->RefCount(), 1);
}
