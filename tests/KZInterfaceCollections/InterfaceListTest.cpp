#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Items.h"
#include "KZInterfaceCollections/KZInterfaceCollections.h"

using namespace kz;

namespace {

class TLoggingList : public TInterfaceListPersistent {
  KZ_CLASS(TLoggingList, TInterfaceListPersistent)
 public:
  std::vector<std::string> Log;

 protected:
  void Notify(const TIntfPtr<IInterface>& Item, TListNotification Action) override {
    // Notifications run unlocked: another thread could take the lock here.
    Log.push_back((Action == lnAdded ? "+" : "-") + std::to_string(IdOf(Item)));
  }
};

std::string Ids(TInterfaceListPersistent& L) {
  std::string R;
  for (const TIntfPtr<IInterface>& P : L) R += std::to_string(IdOf(P));
  return R;
}

}  // namespace

TEST(InterfaceListPersistent, NotificationsCountsAndReleases) {
  {
    TIntfPtr<ICloneable> Keep(new TLoggingList);
    auto& L = dynamic_cast<TLoggingList&>(*Keep);
    TIntfPtr<IInterface> A = NewItem(1), Absent = NewItem(9);
    EXPECT_EQ(L.Add(A), 0);
    EXPECT_EQ(L.Add(nullptr), 1);
    L.Insert(0, NewItem(2));
    L.Delete(2);  // the nil slot: no notification
    EXPECT_EQ(L.Remove(Absent), -1);
    EXPECT_EQ(L.Remove(A), 1);
    L.Put(0, NewItem(3));  // no notification, the replaced item is released
    EXPECT_EQ(L.Log, (std::vector<std::string>{"+1", "+2", "-9", "-1"}));
    EXPECT_EQ(TItem::Alive, 3);  // A, Absent, 3
    L.Add(A);
    L.Clear();
    EXPECT_EQ(L.Log.size(), 5u);
    EXPECT_EQ(L.GetCount(), 0);
    L.Add(NewItem(4));
    EXPECT_THROW((void)L.Get(1), EListError);
    EXPECT_THROW((void)L.Get(-1), EListError);
    EXPECT_THROW(L.Delete(5), EListError);
    L.SetCount(3);
    EXPECT_EQ(IdOf(L.Last()), -1);
    EXPECT_EQ(IdOf(L.First()), 4);
  }
  EXPECT_EQ(TItem::Alive, 0);
  TInterfaceListPersistent Empty;
  EXPECT_THROW((void)Empty.First(), EListError);
  EXPECT_THROW((void)Empty.Last(), EListError);
}

TEST(InterfaceListPersistent, OrderSearchAssignAndClone) {
  TIntfPtr<ICloneable> Keep(new TInterfaceListPersistent);
  auto& L = dynamic_cast<TInterfaceListPersistent&>(*Keep);
  TIntfPtr<IInterface> A = NewItem(1);
  for (int i : {3, 1, 2}) L.Add(i == 1 ? A : NewItem(i));
  L.Add(A);
  EXPECT_EQ(L.IndexOfItem(A, FromBeginning), 1);
  EXPECT_EQ(L.IndexOfItem(A, FromEnd), 3);
  EXPECT_EQ(L.RemoveItem(A, FromEnd), 3);
  L.Move(0, 2);
  EXPECT_EQ(Ids(L), "123");
  L.Exchange(0, 2);
  EXPECT_EQ(Ids(L), "321");
  L.Sort([](const TIntfPtr<IInterface>& X, const TIntfPtr<IInterface>& Y) { return IdOf(X) - IdOf(Y); });
  EXPECT_EQ(Ids(L), "123");
  L.Sort([](const TIntfPtr<IInterface>&, const TIntfPtr<IInterface>&) { return -1; });  // not an order
  EXPECT_EQ(L.GetCount(), 3);
  EXPECT_THROW(L.Move(0, 3), EListError);
  L.SetCapacity(L.GetCount());
  EXPECT_EQ(L.Expand()->GetCount(), 4);

  TIntfPtr<ICloneable> C = L.Clone();
  auto& Copy = dynamic_cast<TInterfaceListPersistent&>(*C);
  EXPECT_EQ(Copy.GetCount(), 4);
  EXPECT_EQ(Copy.Get(0), L.Get(0));  // shared references
  EXPECT_FALSE(L.Equals(TIntfPtr<IInterface>(C)));
  EXPECT_TRUE(L.Equals(TIntfPtr<IInterface>(Keep)));

  TIntfPtr<TInterfaceList> Plain(new TInterfaceList);
  Plain->Add(A);
  Copy.Assign(TIntfPtr<IInterface>(Plain.get()));
  EXPECT_EQ(Ids(Copy), "1");
  Copy.Assign(A);  // not an interface list: unchanged
  EXPECT_EQ(Copy.GetCount(), 1);
  TStringList Other;
  EXPECT_THROW(Copy.Assign(&Other), EConvertError);
}

TEST(InterfaceListPersistent, QueueStackAndIterators) {
  TIQueue Q;
  TIStack S;
  for (int i : {1, 2, 3}) {
    Q.Push(NewItem(i));
    S.Push(NewItem(i));
  }
  std::string QO, SO;
  while (!Q.IsEmpty()) QO += std::to_string(IdOf(Q.Pop()));
  while (!S.IsEmpty()) SO += std::to_string(IdOf(S.Pop()));
  EXPECT_EQ(QO + SO, "123321");
  try {
    (void)S.Peek();
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"list is empty");
  }
  EXPECT_THROW((void)Q.Pop(), EListError);
  EXPECT_EQ(TItem::Alive, 0);

  TIntfPtr<IInterfaceIterator> It = Q.GetEnumerator();
  EXPECT_FALSE(It->HasMoreElements());
  Q.Push(NewItem(7));
  EXPECT_TRUE(It->HasMoreElements());  // the count is read afresh
  EXPECT_EQ(IdOf(It->NextElementI()), 7);
  EXPECT_FALSE(It->HasMoreElements());
  EXPECT_EQ(IdOf(It->CurrentElementI()), 7);
  EXPECT_EQ(It->Count(), 1);
  EXPECT_THROW((void)It->NextElementI(), EListError);

  TStringList Lines;
  TItem Obj(5);
  Lines.AddObject(u"a", &Obj);
  Lines.Add(u"b");
  TIntfPtr<TStringsIterator> SI(new TStringsIterator(&Lines));
  EXPECT_EQ(SI->NextElementS(), u"a");
  EXPECT_EQ(SI->CurrentElementO(), &Obj);
  EXPECT_EQ(SI->NextElementP(), nullptr);
  EXPECT_FALSE(SI->HasMoreElements());
  SI->Reset();
  EXPECT_EQ(SI->GetCount(), 2);
  EXPECT_EQ(SI->NextElementO(), &Obj);
}
