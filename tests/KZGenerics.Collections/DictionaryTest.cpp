// The dictionary and hash table: growth points, probing and backward-shift removal across the
// wrap-around, notifications and their suppression, positional access, the stored form.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "KZGenerics.Collections/KZGenerics.Collections.h"

using namespace kz;

namespace {

// Keys hash to themselves, so each key's home bucket is (key + 1) masked.
TIntfPtr<IEqualityComparer<int>> IdentityHash() {
  return TEqualityComparer<int>::Construct([](const int& A, const int& B) { return A == B; },
                                           [](const int& K) { return static_cast<std::int32_t>(K); });
}

std::string Log;

template <class D>
void Record(D& Dict) {
  Dict.SetOnKeyNotify([](TObject*, const int& K, TKZNotifyAction A) { Log += "k" + std::to_string(K) + ":" + std::to_string(A) + " "; });
  Dict.SetOnValueNotify([](TObject*, const int& V, TKZNotifyAction A) { Log += "v" + std::to_string(V) + ":" + std::to_string(A) + " "; });
}

}  // namespace

TEST(KZDictionary, GrowthPointsAndCapacity) {
  TKZDictionary<int, int> D;
  EXPECT_EQ(D.GetBucketCount(), 0);
  int V = 7;
  EXPECT_FALSE(D.TryGetValue(1, V));
  EXPECT_EQ(V, 0);
  D.Add(1, 10);
  EXPECT_EQ(D.GetBucketCount(), 4);
  EXPECT_EQ(D.GetGrowThreshold(), 3);
  D.Add(2, 20);
  D.Add(3, 30);
  EXPECT_EQ(D.GetBucketCount(), 4);
  // A duplicate at the threshold still grows first, then fails and leaves the entries alone.
  EXPECT_THROW(D.Add(3, 99), EListError);
  EXPECT_EQ(D.GetBucketCount(), 8);
  EXPECT_EQ(D.GetItem(3), 30);
  EXPECT_EQ(D.GetGrowThreshold(), 6);

  D.SetCapacity(5);
  EXPECT_EQ(D.GetBucketCount(), 8);
  D.SetCapacity(9);
  EXPECT_EQ(D.GetBucketCount(), 16);
  EXPECT_THROW(D.SetCapacity(D.GetCount() - 1), EArgumentOutOfRangeException);
  D.TrimExcess();  // Count + 1 = 4
  EXPECT_EQ(D.GetBucketCount(), 4);
  EXPECT_EQ(D.GetGrowThreshold(), 3);
  D.AddOrSetValue(4, 40);  // the fourth add into 4 buckets grows to 8 first
  EXPECT_EQ(D.GetBucketCount(), 8);
  for (int K = 1; K <= 4; ++K) EXPECT_EQ(D.GetItem(K), K * 10);

  EXPECT_THROW((TKZDictionary<int, int>(-1)), EArgumentOutOfRangeException);
  EXPECT_THROW((void)D.GetItem(5), EListError);
  EXPECT_THROW(D.SetItem(5, 1), EListError);
  EXPECT_THROW(D.SetCapacity(TKZDictionary<int, int>::MaxBuckets + 1), EArgumentOutOfRangeException);
}

TEST(KZDictionary, HashMaskingAndBucketSearchAnswer) {
  TIntfPtr<IEqualityComparer<int>> C = IdentityHash();
  TKZDictionary<int, int> D(4, C);
  EXPECT_EQ(D.Hash(0x7FFFFFFF), 0);
  EXPECT_EQ(D.Hash(-1), 0);
  EXPECT_EQ(D.Hash(-2), 0x7FFFFFFF);
  D.Add(0x7FFFFFFF, 1);
  EXPECT_EQ(D.GetItems()[0].HashCode, 0);
  EXPECT_EQ(D.GetBucketIndex(0x7FFFFFFF, 0), 0);
  // Absent: the complement of the free bucket where it would go (hash 1 -> bucket 1).
  EXPECT_EQ(D.GetBucketIndex(0, 1), ~1);
  EXPECT_EQ((TKZDictionary<int, int>().GetBucketIndex(0, 1)), INT32_MIN);
}

TEST(KZDictionary, RemovalAcrossTheWrapAround) {
  // Keys 2, 6, 10, 14 all hash to 3 in 8 buckets (stored hash key+1): they occupy 3, 4, 5, 6;
  // then 7 takes 7 (home 0) ... place a run that wraps from 7 to 0 and 1.
  TKZDictionary<int, int> D(8, IdentityHash());
  ASSERT_EQ(D.GetBucketCount(), 8);
  for (int K : {6, 14, 22, 30, 38}) D.Add(K, K);  // stored hash K+1 -> home 7
  // Buckets 7, 0, 1, 2, 3 hold 6, 14, 22, 30, 38.
  EXPECT_EQ(D.GetItems()[7].Key, 6);
  EXPECT_EQ(D.GetItems()[1].Key, 22);
  D.Add(0, 0);  // home 1, lands at 4
  EXPECT_EQ(D.GetItems()[4].Key, 0);
  EXPECT_EQ(D.Remove(6), 6);  // every later entry of the run shifts back across the end
  EXPECT_EQ(D.GetItems()[7].Key, 14);
  EXPECT_EQ(D.GetItems()[2].Key, 38);
  EXPECT_EQ(D.GetItems()[3].Key, 0);  // home 1: moved back but not before its home
  EXPECT_EQ(D.GetItems()[4].HashCode, -1);
  for (int K : {14, 22, 30, 38, 0}) EXPECT_EQ(D.GetItem(K), K);
  EXPECT_EQ(D.Remove(6), 0);  // absent: null, nothing else
  EXPECT_EQ(D.GetCount(), 5);
  EXPECT_TRUE(InCircularRange(6, 7, 1));
  EXPECT_TRUE(InCircularRange(6, 0, 1));
  EXPECT_FALSE(InCircularRange(6, 2, 1));
  EXPECT_FALSE(InCircularRange(2, 2, 5));
}

// A descendant that overrides a hook and is built with entries.
struct TTelling : TKZDictionary<int, int> {
  TTelling() : TKZDictionary<int, int>({{4, 40}}) {}
  int Told = 0;
  void KeyNotify(const int&, TKZNotifyAction) override { ++Told; }
};

TEST(KZDictionary, NotificationOrderAndClear) {
  TKZDictionary<int, int> D;
  D.Add(9, 90);  // told to nobody, before any handler is set
  D.Remove(9);
  Record(D);
  Log.clear();
  D.Add(1, 10);
  D.AddOrSetValue(1, 11);
  EXPECT_EQ(Log, "k1:0 v10:0 v10:1 v11:0 ");
  Log.clear();
  const auto P = D.ExtractPair(1);
  EXPECT_EQ(P.Value, 11);
  EXPECT_EQ(Log, "k1:2 v11:2 ");
  Log.clear();
  D.Add(2, 20);
  Log.clear();
  const auto Missing = D.ExtractPair(7);
  EXPECT_EQ(Missing.Key, 7);
  EXPECT_EQ(Missing.Value, 0);
  EXPECT_EQ(Log, "");
  D.Add(3, 30);
  Log.clear();
  std::vector<int> Order;
  for (const auto& Item : D.GetItems())
    if (Item.HashCode != -1) Order.push_back(Item.Key);
  D.Clear();  // a plain dictionary tells every entry, in bucket order
  EXPECT_EQ(Log, "k" + std::to_string(Order[0]) + ":1 v" + std::to_string(Order[0] * 10) + ":1 k" +
                     std::to_string(Order[1]) + ":1 v" + std::to_string(Order[1] * 10) + ":1 ");
  EXPECT_EQ(D.GetBucketCount(), 0);
  EXPECT_EQ(D.GetGrowThreshold(), 0);
  // The override is called for every change after construction, handler or not.
  TTelling T;
  T.Add(5, 50);
  T.AddOrSetValue(5, 51);
  T.Remove(5);
  T.Clear();
  EXPECT_EQ(T.Told, 3);
}

TEST(KZHashTable, ChangesUpdatesAndEmptyTable) {
  TKZHashTable<int, int> T;
  Record(T);
  int Changes = 0;
  T.SetOnChange([&](TObject* Sender) {
    EXPECT_EQ(Sender, &T);
    ++Changes;
  });
  EXPECT_THROW(T.Remove(5), EGHashtableError);
  EXPECT_THROW((void)T.ExtractPair(5), EGHashtableError);
  try {
    (void)T.Remove(5);
  } catch (const EGHashtableError& E) {
    EXPECT_EQ(E.Message(), u"Table is empty");
  }
  Log.clear();
  T.Add(1, 10);
  EXPECT_EQ(T.Put(1, 11), 10);
  EXPECT_EQ(T.Put(2, 20), 0);
  EXPECT_EQ(Changes, 3);
  EXPECT_EQ(T.Remove(9), 0);  // absent key: no error, still a change
  EXPECT_EQ(Changes, 4);
  Log.clear();
  T.BeginUpdate();
  T.Add(3, 30);
  (void)T.Remove(2);
  EXPECT_EQ(Log, "");  // nothing delivered, nothing queued
  EXPECT_EQ(Changes, 4);
  T.EndUpdate();
  EXPECT_EQ(Changes, 5);
  EXPECT_EQ(Log, "");
  T.Clear();  // no entry told, one change
  EXPECT_EQ(Log, "");
  EXPECT_EQ(Changes, 6);
  T.EndUpdate();  // unmatched: the count goes negative, which still delivers
  EXPECT_EQ(T.GetUpdateCount(), -1);
  T.Add(4, 40);
  EXPECT_EQ(Log, "k4:0 v40:0 ");
  EXPECT_EQ(Changes, 7);
}

TEST(KZHashTable, PositionalAccessBothWays) {
  TKZHashTable<int, int> T;
  for (int K = 0; K < 40; ++K) T.Add(K, K * 3);
  std::vector<int> Enumerated;
  for (const auto& P : T) Enumerated.push_back(P.Key);
  ASSERT_EQ(Enumerated.size(), 40u);
  for (int i = 0; i < 40; ++i) EXPECT_EQ(T.GetKeyByIndex(i), Enumerated[static_cast<std::size_t>(i)]);
  for (int i = 39; i >= 0; --i) EXPECT_EQ(T.GetItemByIndex(i), Enumerated[static_cast<std::size_t>(i)] * 3);
  EXPECT_EQ(T.GetPairByIndex(17).Key, Enumerated[17]);
  EXPECT_EQ(T.GetPairByIndex(3).Key, Enumerated[3]);
  EXPECT_THROW((void)T.GetItemByIndex(40), EListError);
  EXPECT_THROW((void)T.GetKeyByIndex(-1), EListError);
  // A capacity change moves the entries: positions follow the new order.
  (void)T.GetKeyByIndex(20);
  T.SetCapacity(256);
  Enumerated.clear();
  for (const int& K : *T.GetKeys()) Enumerated.push_back(K);
  EXPECT_EQ(T.GetKeyByIndex(21), Enumerated[21]);
  EXPECT_EQ(T.GetKeys()->ToArray(), Enumerated);
  EXPECT_EQ(T.GetValues()->ToArray().size(), 40u);
  EXPECT_EQ(T.ToArray().size(), 40u);
}

TEST(KZHashTable, ObsoleteStoredPropertiesAreReadAndDropped) {
  TMemoryStream S;
  {
    TWriter W(&S);
    W.WritePropName(u"LoadFactor");
    W.WriteFloat(0.75);
    W.WritePropName(u"HashType");
    W.WriteInteger(1);
    W.WritePropName(u"Capacity");
    W.WriteInteger(1000);
    W.WriteListEnd();
  }
  S.SetPosition(0);
  TKZHashTable<String, int> T;
  TReader R(&S);
  while (!R.EndOfList()) R.ReadProperty(&T);
  R.ReadListEnd();
  EXPECT_EQ(T.GetBucketCount(), 0);
  TMemoryStream Out;
  {
    TWriter W(&Out);
    W.WriteProperties(&T);
  }
  EXPECT_EQ(Out.GetSize(), 0);  // nothing is written for them
}

TEST(KZDictionary, FullTableAfterSetCapacityOfCount) {
  TKZDictionary<int, int> D;
  for (int K = 0; K < 4; ++K) D.Add(K, K);
  D.SetCapacity(4);  // every bucket taken
  ASSERT_EQ(D.GetBucketCount(), 4);
  EXPECT_FALSE(D.ContainsKey(99));  // answers instead of probing for ever
  EXPECT_EQ(D.GetItem(3), 3);
  EXPECT_EQ(D.Remove(99), 0);
  D.Add(99, 1);  // grows first
  EXPECT_EQ(D.GetBucketCount(), 8);
  EXPECT_EQ(D.Remove(2), 2);

  // Wider than one tag group, every key on one stored hash: a missing key compares each
  // bucket exactly once, wherever the search starts.
  int Compares = 0;
  TKZDictionary<int, int> Wide(TEqualityComparer<int>::Construct(
      [&Compares](const int& A, const int& B) { return ++Compares, A == B; }, [](const int&) { return 21; }));
  for (int K = 0; K < 64; ++K) Wide.Add(K, K);
  Wide.SetCapacity(64);
  ASSERT_EQ(Wide.GetBucketCount(), 64);
  Compares = 0;
  EXPECT_FALSE(Wide.ContainsKey(99));
  EXPECT_EQ(Compares, 64);
  for (int K = 0; K < 64; ++K) EXPECT_EQ(Wide.GetItem(K), K);
}
