#include <gtest/gtest.h>

#include <thread>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::test::MessageOf;
using kz::test::TCounted;

namespace {

Pointer P(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }

// Records every notification as (item, action).
class TWatchedList : public TList {
 public:
  std::vector<std::pair<std::intptr_t, TListNotification>> Log;

 protected:
  void Notify(Pointer Ptr, TListNotification Action) override {
    Log.emplace_back(reinterpret_cast<std::intptr_t>(Ptr), Action);
  }
};

class TCountedIntf : public TInterfacedObject {
 public:
  TCountedIntf() { ++Alive; }
  ~TCountedIntf() override { --Alive; }
  static inline int Alive = 0;
};

std::vector<std::intptr_t> Items(const TList& L) {
  std::vector<std::intptr_t> R;
  for (std::int32_t i = 0; i < L.GetCount(); ++i) R.push_back(reinterpret_cast<std::intptr_t>(L.GetItem(i)));
  return R;
}

}  // namespace

TEST(PointerList, EditingAndItsErrors) {
  TList L;
  EXPECT_EQ(MessageOf<EListError>([&] { L.First(); }), u"List index out of bounds (0)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Last(); }), u"List index out of bounds (-1)");
  for (int i = 1; i <= 4; ++i) EXPECT_EQ(L.Add(P(i)), i - 1);
  L.Insert(4, P(5));
  L.Insert(0, nullptr);
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(MessageOf<EListError>([&] { L.Insert(7, P(9)); }), u"List index out of bounds (7)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.GetItem(6); }), u"List index out of bounds (6)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetItem(-1, P(1)); }), u"List index out of bounds (-1)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Delete(6); }), u"List index out of bounds (6)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Exchange(6, 0); }), u"List index out of bounds (6)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.Move(0, 6); }), u"List index out of bounds (6)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCapacity(5); }), u"List capacity out of bounds (5)");
  EXPECT_EQ(MessageOf<EListError>([&] { L.SetCount(-1); }), u"List count out of bounds (-1)");
  EXPECT_EQ(L.GetCount(), 6);

  L.Move(1, 4);
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{0, 2, 3, 4, 1, 5}));
  L.Move(5, 0);
  L.Exchange(1, 5);
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{5, 1, 2, 3, 4, 0}));
  EXPECT_EQ(L.Remove(P(3)), 3);
  EXPECT_EQ(L.Remove(P(3)), -1);
  EXPECT_EQ(L.Extract(P(9)), nullptr);
  EXPECT_EQ(L.Extract(P(2)), P(2));
  EXPECT_EQ(L.IndexOf(P(4)), 2);
  EXPECT_EQ(L.First(), P(5));
  EXPECT_EQ(L.Last(), nullptr);

  L.SetCount(6);  // grows with nulls
  L.SetItem(1, nullptr);
  L.Pack();
  EXPECT_EQ(Items(L), (std::vector<std::intptr_t>{5, 4}));
}

TEST(PointerList, NotificationsFollowEveryItemInAndOut) {
  using V = std::vector<std::pair<std::intptr_t, TListNotification>>;
  TWatchedList L;
  L.Add(P(1));
  L.Add(nullptr);  // null items are never notified
  L.Insert(0, P(2));
  L.SetItem(0, P(3));
  L.SetItem(0, P(3));  // same item: nothing happens
  EXPECT_EQ(L.Log, (V{{1, lnAdded}, {2, lnAdded}, {2, lnDeleted}, {3, lnAdded}}));
  L.Log.clear();
  L.Extract(P(1));
  L.Remove(P(3));
  L.Delete(0);  // the null slot
  EXPECT_EQ(L.Log, (V{{1, lnExtracted}, {3, lnDeleted}}));
  L.Log.clear();
  for (int i = 1; i <= 3; ++i) L.Add(P(i * 10));
  L.Log.clear();
  L.SetCount(1);  // from the last down
  EXPECT_EQ(L.Log, (V{{30, lnDeleted}, {20, lnDeleted}}));
  L.Log.clear();
  L.Clear();
  EXPECT_EQ(L.Log, (V{{10, lnDeleted}}));
  EXPECT_EQ(L.GetCapacity(), 0);
}

TEST(PointerList, GrowthAndSorting) {
  TList L;
  std::vector<std::int32_t> Seen{L.GetCapacity()};
  for (int i = 0; i < 80; ++i) {
    L.Add(P(i));
    if (L.GetCapacity() != Seen.back()) Seen.push_back(L.GetCapacity());
  }
  EXPECT_EQ(Seen, (std::vector<std::int32_t>{0, 4, 8, 12, 28, 44, 60, 76, 95}));
  TList E;
  EXPECT_EQ(E.Expand(), &E);
  EXPECT_EQ(E.GetCapacity(), 4);
  E.Expand();  // not full: no growth
  EXPECT_EQ(E.GetCapacity(), 4);

  auto Ascending = [](Pointer A, Pointer B) {
    const auto X = reinterpret_cast<std::intptr_t>(A), Y = reinterpret_cast<std::intptr_t>(B);
    return X < Y ? -1 : X > Y ? 1 : 0;
  };
  TList S;
  for (int i = 0; i < 100; ++i) S.Add(P(i * 37 % 100));
  S.Sort(Ascending);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(S.GetItem(i), P(i));
  // A comparison that is not an order keeps every item and stays inside the list.
  S.Sort([](Pointer, Pointer) { return 1; });
  S.Sort([](Pointer, Pointer) { return -1; });
  S.Sort(Ascending);
  for (int i = 0; i < 100; ++i) ASSERT_EQ(S.GetItem(i), P(i));
}

TEST(ObjectList, OwnsExactlyWhatItHolds) {
  TCounted::Alive = 0;
  TCounted* Kept = nullptr;
  {
    TObjectList L;
    EXPECT_TRUE(L.GetOwnsObjects());
    TCounted* Objs[6];
    for (int i = 0; i < 6; ++i) L.Add(Objs[i] = new TCounted(i));
    L.Delete(0);
    EXPECT_EQ(TCounted::Alive, 5);
    EXPECT_EQ(L.Remove(Objs[1]), 0);
    EXPECT_EQ(TCounted::Alive, 4);
    Kept = static_cast<TCounted*>(L.Extract(Objs[2]));
    EXPECT_EQ(TCounted::Alive, 4);  // extracted: handed back, not freed
    L.SetItem(0, new TCounted(10));  // the replaced one is freed
    EXPECT_EQ(TCounted::Alive, 4);
    L.Move(0, 2);
    L.Exchange(0, 1);
    L.Sort([](Pointer A, Pointer B) { return static_cast<TCounted*>(A)->Tag() - static_cast<TCounted*>(B)->Tag(); });
    EXPECT_EQ(TCounted::Alive, 4);
    EXPECT_EQ(static_cast<TCounted*>(L.Last())->Tag(), 10);
    L.SetCount(1);
    EXPECT_EQ(TCounted::Alive, 2);
    EXPECT_EQ(L.IndexOf(Objs[4]), 0);
  }
  EXPECT_EQ(TCounted::Alive, 1);  // destruction freed the rest, not the extracted one
  delete Kept;

  TCounted Local;
  {
    TObjectList NotOwning(false);
    NotOwning.Add(&Local);
    NotOwning.Add(&Local);
    NotOwning.Delete(0);
    NotOwning.Clear();
    NotOwning.Add(&Local);
  }
  EXPECT_EQ(TCounted::Alive, 1);
}

TEST(ObjectList, FindInstanceOfExactOrDerived) {
  TObjectList L;
  L.Add(new TStringList);
  L.Add(nullptr);
  L.Add(new TCounted);
  L.Add(new TStringList);
  EXPECT_EQ(L.FindInstanceOf(&TStringList::ClassInfo()), 0);
  EXPECT_EQ(L.FindInstanceOf(&TStringList::ClassInfo(), true, 1), 3);
  EXPECT_EQ(L.FindInstanceOf(&TStrings::ClassInfo()), -1);
  EXPECT_EQ(L.FindInstanceOf(&TStrings::ClassInfo(), false), 0);
  EXPECT_EQ(L.FindInstanceOf(&TObject::ClassInfo(), false, 1), 2);
  EXPECT_EQ(L.FindInstanceOf(&TCounted::ClassInfo(), true, 3), -1);
}

TEST(InterfaceList, HoldsOneReferencePerSlotAndReleasesOnLeaving) {
  TCountedIntf::Alive = 0;
  TIntfPtr<IInterfaceList> List(new TInterfaceList);
  {
    TIntfPtr<IInterface> A(new TCountedIntf), B(new TCountedIntf);
    EXPECT_EQ(List->Add(A), 0);
    EXPECT_EQ(List->Add(B), 1);
    List->Add(A);
    List->Insert(0, nullptr);
    EXPECT_EQ(dynamic_cast<TCountedIntf*>(A.get())->RefCount(), 3);
    EXPECT_EQ(List->IndexOf(A), 1);
    EXPECT_EQ(List->IndexOf(nullptr), 0);
    EXPECT_EQ(List->Remove(A), 1);
    EXPECT_EQ(dynamic_cast<TCountedIntf*>(A.get())->RefCount(), 2);
    EXPECT_EQ(List->First(), nullptr);
    EXPECT_TRUE(List->Last() == A);
    List->Exchange(0, 2);
    EXPECT_TRUE(List->First() == A);
  }
  EXPECT_EQ(TCountedIntf::Alive, 2);  // kept alive by the list alone
  List->Put(0, TIntfPtr<IInterface>(new TCountedIntf));
  EXPECT_EQ(TCountedIntf::Alive, 2);  // A, held by that slot alone, is gone
  List->Delete(1);
  List->SetCount(5);
  EXPECT_EQ(List->GetCount(), 5);
  EXPECT_EQ(List->Get(4), nullptr);
  List->SetCount(1);
  EXPECT_EQ(TCountedIntf::Alive, 1);
  List->Clear();
  EXPECT_EQ(TCountedIntf::Alive, 0);
  EXPECT_EQ(List->GetCapacity(), 0);

  EXPECT_EQ(MessageOf<EListError>([&] { List->Get(0); }), u"List index out of bounds (0)");
  EXPECT_EQ(MessageOf<EListError>([&] { List->Last(); }), u"List index out of bounds (-1)");
  EXPECT_EQ(MessageOf<EListError>([&] { List->Insert(1, nullptr); }), u"List index out of bounds (1)");
  EXPECT_EQ(MessageOf<EListError>([&] { List->SetCount(-2); }), u"List count out of bounds (-2)");
  List->Add(nullptr);
  EXPECT_EQ(MessageOf<EListError>([&] { List->SetCapacity(0); }), u"List capacity out of bounds (0)");

  // Destroying the list releases what it holds.
  List->Add(TIntfPtr<IInterface>(new TCountedIntf));
  List.reset();
  EXPECT_EQ(TCountedIntf::Alive, 0);
}

TEST(InterfaceList, IsQueryableAndGuardsConcurrentUse) {
  auto* Obj = new TInterfaceList;
  TIntfPtr<IInterface> Base(static_cast<TInterfacedObject*>(Obj));
  TIntfPtr<IInterfaceList> List = Query<IInterfaceList>(Base);
  ASSERT_TRUE(List);
  EXPECT_TRUE(Supports(Base, IInterfaceList::IID));

  // Identity holds across the interface types the item is seen through.
  TIntfPtr<IInterface> Item(new TCountedIntf);
  List->Add(Query<IInterface>(Item));
  EXPECT_EQ(List->IndexOf(Item), 0);

  std::vector<std::thread> Threads;
  for (int t = 0; t < 4; ++t)
    Threads.emplace_back([&] {
      for (int i = 0; i < 500; ++i) {
        List->Add(Item);
        List->Lock();  // compound step: the lock is re-entrant
        const std::int32_t Last = List->GetCount() - 1;
        List->Delete(Last);
        List->Add(Item);
        List->Unlock();
      }
    });
  for (auto& T : Threads) T.join();
  EXPECT_EQ(List->GetCount(), 1 + 4 * 500);
  List->Clear();
  EXPECT_EQ(dynamic_cast<TCountedIntf*>(Item.get())->RefCount(), 1);
}
