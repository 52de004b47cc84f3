#include <gtest/gtest.h>

#include <set>

#include "InterfaceCollections/InterfaceCollections.h"
#include "Runtime/StringLists.h"
#include "KZInterfaceCollections/Items.h"

using namespace kz;

namespace {
Pointer W(std::intptr_t K) { return reinterpret_cast<Pointer>(K); }
}  // namespace

TEST(IHashTable, ValuesReleasedExactlyOnce) {
  {
    TIHashTable T(7, 0.75f);
    for (int i = 1; i <= 100; ++i) EXPECT_EQ(T.Put(W(i), NewItem(i)), nullptr);  // grows on the way
    EXPECT_EQ(IdOf(T.Put(W(5), NewItem(500))), 5);  // released with the answer
    TIntfPtr<IInterface> Removed = T.RemoveI(W(7));
    EXPECT_EQ(TItem::Alive, 100);
    Removed = nullptr;
    EXPECT_EQ(TItem::Alive, 99);
    EXPECT_EQ(T.GetCount(), 99);
    TIntfPtr<IInterface> V;
    EXPECT_TRUE(T.ContainsKey(W(5), V));
    EXPECT_EQ(IdOf(V), 500);
    EXPECT_THROW((void)T.Put(nullptr, NewItem()), EGHashtableError);
    EXPECT_THROW((void)T.RemoveI(W(7)), EGHashtableError);
    // The core's word operations stay counted too.
    TGHashtable& Core = T;
    Core.Put(W(1000), static_cast<IInterface*>(new TItem(1000)));
    Pointer P = Core.Remove(W(1000));
    EXPECT_EQ(dynamic_cast<TItem*>(static_cast<IInterface*>(P))->Id, 1000);  // still alive

    TIHashTable Copy(7, 0.75f);
    Copy.Assign(&T);
    TGHashtable Plain(7, 0.75f);
    EXPECT_THROW(Copy.Assign(&Plain), EConvertError);
    T.Clear();
    std::set<int> Seen;
    for (const TIntfPtr<IInterface>& X : Copy) Seen.insert(IdOf(X));
    EXPECT_EQ(Seen.size(), 99u);
    EXPECT_EQ(TItem::Alive, 99);
  }
  EXPECT_EQ(TItem::Alive, 0);
}

TEST(IHashTable, StringKeysEnumeratorsAndErrors) {
  TIStringHashTable T(7, 0.75f);
  auto MessageOf = [&](const String& Key) {
    try {
      (void)T.GetI(Key);
    } catch (const EGHashtableError& E) {
      return E.Message();
    }
    return String();
  };
  EXPECT_EQ(MessageOf(u"x"), u"Table is empty");
  T.Put(u"a", NewItem(1));
  T.Put(u"b", NewItem(2));
  EXPECT_EQ(MessageOf(u"zz"), u"No such element: zz");
  EXPECT_THROW((void)T.Put(u"", NewItem()), EGHashtableError);
  auto Arr = T.ToIntfArray();
  ASSERT_EQ(Arr.size(), 2u);
  EXPECT_EQ(IdOf(T.GetItemByIndex(0)) + IdOf(T.GetItemByIndex(1)), 3);
  TIntfPtr<TIStringHashtableEnumerator> It = T.Elements();
  EXPECT_EQ(It->NextElementI(), Arr[0]);
  const String K0 = It->CurrentKeyS();
  (void)T.RemoveI(K0);
  Arr.clear();
  EXPECT_NE(It->CurrentElementI(), nullptr);  // held by the enumerator
  EXPECT_EQ(It->NextKeyS(), K0 == u"a" ? u"b" : u"a");
  EXPECT_THROW((void)It->NextElementI(), EGHashtableError);
  TStringList Lines;
  EXPECT_THROW(T.Assign(&Lines), EConvertError);
  EXPECT_THROW(T.AssignTo(&Lines), EConvertError);
}
