// Word- and integer-keyed tables: orders, growth, guards, the cursor, iterators, notices.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "GHashTable/GHashTable.h"
#include "Runtime/TestSupport.h"

using namespace kz;
using kz::test::MessageOf;

namespace {

Pointer W(std::intptr_t V) { return reinterpret_cast<Pointer>(V); }
std::intptr_t N(Pointer P) { return reinterpret_cast<std::intptr_t>(P); }

std::vector<std::intptr_t> Positions(TGCustomHashtable& T) {
  std::vector<std::intptr_t> R;
  for (std::int32_t I = 0; I < T.GetCount(); ++I) R.push_back(N(T.GetKeyByIndex(I)));
  return R;
}

class TRecordingOwner : public TInterfacedObject, public IHashTableOwner {
  KZ_CLASS(TRecordingOwner, TInterfacedObject)
  KZ_INTERFACES(IHashTableOwner)
 public:
  std::vector<std::string> Log;
  void TableChanged(TGCustomHashtable*) override { Log.push_back("change"); }
  void BeforePut(TGCustomHashtable*, Pointer Key, Pointer) override { Log.push_back("put " + std::to_string(N(Key))); }
  void BeforeRemove(TGCustomHashtable*, Pointer Key) override { Log.push_back("remove " + std::to_string(N(Key))); }
  void BeforeClear(TGCustomHashtable*) override { Log.push_back("clear"); }
};

}  // namespace

TEST(Hashtable, OrdersUnderEveryHashType) {
  const std::vector<std::intptr_t> Keys = {7, 18, 29, 40, 123, 4567, 98765, 123456789, 2147483646};
  struct TExpected {
    TGHashType Type;
    std::int32_t Collisions;
    std::vector<std::intptr_t> Iteration, Positional;
  };
  const TExpected Cases[] = {
      {htTruncation, 1, {4567, 123456789, 98765, 18, 40, 7, 29, 2147483646, 123},
       {2147483646, 123, 29, 7, 40, 18, 98765, 123456789, 4567}},
      {htDivision, 0, {18, 40, 4567, 123456789, 123, 7, 29, 2147483646, 98765},
       {98765, 2147483646, 29, 7, 123, 123456789, 4567, 40, 18}},
      {htMidSquare, 1, {98765, 123, 29, 40, 123456789, 4567, 2147483646, 7, 18},
       {18, 7, 2147483646, 4567, 123456789, 29, 40, 123, 98765}},
      {htFolding, 0, {18, 40, 4567, 98765, 123, 7, 29, 2147483646, 123456789},
       {123456789, 2147483646, 29, 7, 123, 98765, 4567, 40, 18}},
  };
  for (const TExpected& C : Cases) {
    SCOPED_TRACE(static_cast<int>(C.Type));
    TGHashIntTable T(11, 0.75f);
    T.SetHashType(C.Type);
    for (std::intptr_t K : Keys) T.Put(static_cast<std::int32_t>(K), W(K + 1));
    EXPECT_EQ(T.GetCapacity(), 23u);
    EXPECT_EQ(T.GetCollisions(), C.Collisions);
    std::vector<std::intptr_t> Own;
    for (T.Reset(); !T.GetEOT();) Own.push_back(N(T.Next()));
    EXPECT_EQ(Own, C.Iteration);
    EXPECT_EQ(Positions(T), C.Positional);
    auto Values = T.Elements();
    EXPECT_EQ(N(Values->NextElement()), C.Iteration[0] + 1);
    EXPECT_EQ(Values->GetCount(), 8);  // what is left to walk
  }
}

TEST(Hashtable, GrowthThresholdAndCollisions) {
  TGHashIntTable T(11, 0.75f);
  EXPECT_EQ(T.GetThreshold(), 8);
  for (std::int32_t K : {1, 12, 23, 34, 45, 56, 67, 78}) T.Put(K, W(K));
  EXPECT_EQ(T.GetCapacity(), 11u);
  EXPECT_EQ(T.GetCollisions(), 7);
  EXPECT_EQ(Positions(T), (std::vector<std::intptr_t>{78, 67, 56, 45, 34, 23, 12, 1}));
  T.Put(1, W(5));  // replacing at the threshold does not grow
  EXPECT_EQ(T.GetCapacity(), 11u);
  T.Put(24, W(24));
  EXPECT_EQ(T.GetCapacity(), 23u);
  EXPECT_EQ(T.GetCollisions(), 1);
  EXPECT_EQ(Positions(T), (std::vector<std::intptr_t>{23, 24, 1, 78, 56, 34, 12, 67, 45}));
  EXPECT_EQ(N(T.Get(1)), 5);

  TGHashtable R(10, 0.25f);
  EXPECT_EQ(R.GetThreshold(), 2);  // 2.5 rounds to even
  R.SetCapacity(14);
  EXPECT_EQ(R.GetThreshold(), 4);  // 3.5 rounds to even
  R.SetLoadFactor(5);
  EXPECT_THROW(R.SetLoadFactor(std::nanf("")), EGHashtableError);
  EXPECT_EQ(R.GetThreshold(), 70);
}

TEST(Hashtable, ErrorsAndGuards) {
  TGHashtable T(11, 0.75f);
  EXPECT_FALSE(T.ContainsKey(nullptr));  // empty: no hashing
  EXPECT_THROW(T.Put(nullptr, W(1)), EGHashtableError);
  T.Put(W(3), W(30));
  EXPECT_THROW((void)T.ContainsKey(nullptr), EGHashtableError);
  EXPECT_EQ(MessageOf<EGHashtableError>([&] { (void)T.Get(W(4)); }), u"No such element");
  Pointer V = W(1);
  EXPECT_FALSE(T.ContainsKey(W(4), V));
  EXPECT_EQ(V, nullptr);
  EXPECT_TRUE(T.ContainsItem(W(30)));
  EXPECT_FALSE(T.ContainsItem(W(3)));
  EXPECT_THROW(T.SetHashType(htFolding), EGHashtableError);
  T.SetHashType(htDivision);  // the same type is fine
  EXPECT_THROW((void)T.GetKeyByIndex(-1), EListError);

  TGHashIntTable Zero(0, 0.75f);
  EXPECT_THROW(Zero.Put(5, nullptr), EDivByZero);
  EXPECT_THROW(Zero.Put(0, nullptr), EGHashtableError);
  TGHashIntTable Bad(11, 0.75f);
  Bad.SetHashType(static_cast<TGHashType>(9));
  EXPECT_THROW(Bad.Put(5, nullptr), EGHashtableError);

  // A load factor that no growth can satisfy is refused instead of growing for ever.
  for (float LF : {0.0f, -1.0f, 1e-12f, std::nanf("")}) {
    TGHashIntTable Never(11, LF);
    EXPECT_THROW(Never.Put(5, nullptr), EGHashtableError);
    EXPECT_EQ(Never.GetCount(), 0);
    EXPECT_EQ(Never.GetCapacity(), 11u);
  }
  TGHashIntTable Small(1, 0.3f);  // threshold 0 at first, but growth makes room
  Small.Put(5, nullptr);
  EXPECT_EQ(Small.GetCapacity(), 3u);
}

TEST(Hashtable, CursorWalksBackwardOverRemovalsAndInserts) {
  TGHashIntTable T(7, 4.0f);
  for (std::int32_t K = 1; K <= 20; ++K) T.Put(K, W(K));
  // Remove each entry the backward walk stands on: the walk goes on over the rest.
  std::vector<std::intptr_t> Left = Positions(T);
  for (std::int32_t I = 19; I > 0; I -= 2) {
    ASSERT_EQ(N(T.GetKeyByIndex(I)), Left[I]);
    T.Remove(static_cast<std::int32_t>(Left[I]));
    Left.erase(Left.begin() + I);
    ASSERT_EQ(N(T.GetKeyByIndex(I - 1)), Left[I - 1]);
  }
  EXPECT_EQ(Positions(T), Left);
  T.Put(100, W(100));  // an insert below the cursor moves the positions behind it
  const std::vector<std::intptr_t> After = Positions(T);
  ASSERT_EQ(After.size(), 11u);
  for (std::int32_t I = 10; I >= 0; --I) ASSERT_EQ(N(T.GetKeyByIndex(I)), After[I]);
}

TEST(Hashtable, IteratorsReadLiveAndOutliveTheirTable) {
  TIntfPtr<IIterator> Keys;
  {
    TGHashtable T(3, 20.0f);  // three long chains
    EXPECT_THROW(T.Elements()->NextElement(), EGHashtableError);
    for (std::intptr_t K = 1; K <= 30; ++K) T.Put(W(K), W(K * 10));
    Keys = T.Indices();
    EXPECT_EQ(Keys->Count(), 30);
    // Removing the pending entry and others during a walk skips them without harm.
    std::int32_t Seen = 0;
    for (; Keys->HasMoreElements(); ++Seen) {
      const std::intptr_t K = N(Keys->NextElement());
      EXPECT_EQ(Keys->CurrentElement(), W(K));
      if (K % 2 == 0 && K > 3) T.Remove(W(K - 3));  // the pending entry
    }
    EXPECT_EQ(Seen, T.GetCount());
    std::int32_t Walked = 0;
    for (Pointer V : T) Walked += N(V) % 10 == 0;  // range-for over the values
    EXPECT_EQ(Walked, T.GetCount());
    Keys->Reset();
    Keys->NextElement();
    T.Clear();
    EXPECT_FALSE(Keys->HasMoreElements());
  }
  EXPECT_THROW(Keys->HasMoreElements(), EAccessViolation);
  EXPECT_THROW(Keys->Reset(), EAccessViolation);
}

TEST(Hashtable, OwnerHearsBeforeTheChecksAndUpdatesReportOnce) {
  TGHashtable T(1, 0.75f);  // threshold 1: the second put grows
  TIntfPtr<TRecordingOwner> Owner(new TRecordingOwner);
  int Changes = 0;
  T.SetOnChange([&](TObject* Sender) { Changes += Sender == &T; });
  T.SetOwner(Owner);
  T.Clear();  // nothing to clear: nobody hears
  T.Put(W(1), W(1));
  T.Put(W(2), W(2));
  T.Put(W(2), W(3));
  T.Remove(W(1));
  EXPECT_THROW(T.Remove(W(9)), EGHashtableError);
  T.Clear();
  EXPECT_EQ(Owner->Log, (std::vector<std::string>{"put 1", "change", "put 2", "put 2", "change", "change", "put 2",
                                                   "change", "remove 1", "change", "remove 9", "clear", "change"}));
  EXPECT_EQ(Changes, 6);
  T.BeginUpdate();
  T.BeginUpdate();
  T.Put(W(1), W(1));
  T.EndUpdate();
  EXPECT_EQ(Changes, 6);
  T.EndUpdate();
  EXPECT_EQ(Changes, 7);
}

TEST(Hashtable, AssignCopiesLikeTables) {
  TGHashtable A(5, 2.0f);
  A.SetHashType(htFolding);
  for (std::intptr_t K = 1; K <= 9; ++K) A.Put(W(K * 1000), W(K));
  TGHashIntTable B(11, 0.75f);
  B.Put(77, nullptr);
  int Changes = 0;
  B.SetOnChange([&](TObject*) { ++Changes; });
  B.Assign(&A);
  EXPECT_EQ(Changes, 2);  // the clear, then once for the whole copy
  EXPECT_EQ(B.GetCapacity(), 5u);
  EXPECT_EQ(B.GetHashType(), htFolding);
  EXPECT_EQ(B.GetLoadFactor(), 2.0f);
  for (std::intptr_t K = 1; K <= 9; ++K) EXPECT_EQ(B.Get(W(K * 1000)), W(K));
  B.Assign(&B);
  EXPECT_EQ(B.GetCount(), 9);
  TGStringHashtable S(11, 0.75f);  // word keys and strings do not mix
  EXPECT_THROW(B.Assign(&S), EConvertError);
  EXPECT_THROW(S.Assign(&B), EConvertError);
}
