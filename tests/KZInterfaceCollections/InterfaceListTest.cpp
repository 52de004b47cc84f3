#include <gtest/gtest.h>

#include <string>

#include "Items.h"
#include "KZInterfaceCollections/KZInterfaceCollections.h"

using namespace kz;

namespace {

class TLoggingList : public TInterfaceListPersistent {
  KZ_CLASS(TLoggingList, TInterfaceListPersistent)
 public:
  std::string Log;

 protected:
  void Notify(const TIntfPtr<IInterface>& Item, TListNotification Action) override {
    Log += (Action == lnAdded ? "+" : "-") + std::to_string(IdOf(Item));
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
    TIntfPtr<IInterface> A = NewItem(1);
    L.Add(A);
    EXPECT_EQ(L.Add(nullptr), 1);
    L.Insert(0, NewItem(2));
    L.Delete(2);  // the nil slot: no notification
    EXPECT_EQ(L.Remove(NewItem(9)), -1);
    EXPECT_EQ(L.Remove(A), 1);
    L.Put(0, NewItem(3));  // silent; the replaced item is released
    L.Add(A);
    L.Clear();  // silent
    EXPECT_EQ(L.Log, "+1+2-9-1+1");
    EXPECT_EQ(TItem::Alive, 1);
    EXPECT_THROW((void)L.Last(), EListError);
    L.SetCount(2);
    EXPECT_THROW((void)L.Get(2), EListError);
    EXPECT_EQ(L.First(), nullptr);
  }
  EXPECT_EQ(TItem::Alive, 0);
}

TEST(InterfaceListPersistent, OrderSearchAssignAndClone) {
  TIntfPtr<ICloneable> Keep(new TInterfaceListPersistent);
  auto& L = dynamic_cast<TInterfaceListPersistent&>(*Keep);
  TIntfPtr<IInterface> A = NewItem(1);
  for (int i : {3, 1, 2, 1}) L.Add(i == 1 ? A : NewItem(i));
  EXPECT_EQ(L.IndexOfItem(A, FromEnd), 3);
  EXPECT_EQ(L.RemoveItem(A, FromEnd), 3);
  L.Move(0, 2);
  L.Exchange(0, 1);
  EXPECT_EQ(Ids(L), "213");
  L.Sort([](const TIntfPtr<IInterface>& X, const TIntfPtr<IInterface>& Y) { return IdOf(X) - IdOf(Y); });
  EXPECT_EQ(Ids(L), "123");
  L.Sort([](const TIntfPtr<IInterface>&, const TIntfPtr<IInterface>&) { return -1; });  // not an order
  EXPECT_THROW(L.Move(0, 3), EListError);

  TIntfPtr<ICloneable> C = L.Clone();
  auto& Copy = dynamic_cast<TInterfaceListPersistent&>(*C);
  EXPECT_EQ(Copy.IndexOf(A), L.IndexOf(A));  // shared references
  EXPECT_FALSE(L.Equals(TIntfPtr<IInterface>(C)));
  EXPECT_TRUE(L.Equals(TIntfPtr<IInterface>(Keep)));
  TIntfPtr<TInterfaceList> Plain(new TInterfaceList);
  Plain->Add(A);
  Copy.Assign(TIntfPtr<IInterface>(Plain.get()));
  Copy.Assign(A);  // not an interface list: unchanged
  EXPECT_EQ(Ids(Copy), "1");
  TStringList Other;
  EXPECT_THROW(Copy.Assign(&Other), EConvertError);
}

TEST(InterfaceListPersistent, QueueStackAndIterators) {
  TIQueue Q;
  TIStack S;
  std::string Out;
  for (int i : {1, 2, 3}) Q.Push(NewItem(i)), S.Push(NewItem(i));
  while (!Q.IsEmpty()) Out += std::to_string(IdOf(Q.Pop()));
  while (!S.IsEmpty()) Out += std::to_string(IdOf(S.Pop()));
  EXPECT_EQ(Out, "123321");
  try {
    (void)S.Peek();
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"list is empty");
  }

  TIntfPtr<IInterfaceIterator> It = Q.GetEnumerator();
  EXPECT_FALSE(It->HasMoreElements());
  Q.Push(NewItem(7));
  EXPECT_EQ(IdOf(It->NextElementI()), 7);  // the count is read afresh
  EXPECT_FALSE(It->HasMoreElements());
  EXPECT_THROW((void)It->NextElementI(), EListError);

  TStringList Lines;
  TItem Obj(5);
  Lines.AddObject(u"a", &Obj);
  TIntfPtr<TStringsIterator> SI(new TStringsIterator(&Lines));
  EXPECT_EQ(SI->NextElementS(), u"a");
  EXPECT_EQ(SI->CurrentElementO(), &Obj);
  EXPECT_FALSE(SI->HasMoreElements());
}
