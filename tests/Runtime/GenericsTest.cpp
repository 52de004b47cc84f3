#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "Runtime/Runtime.h"

using namespace kz;
using kz::Generics::IEqualityComparer;
using kz::Generics::TEqualityComparer;
using kz::Generics::TPair;
using kz::test::MessageOf;

namespace {

class TCountedIntf : public TInterfacedObject {
 public:
  TCountedIntf() { ++Alive; }
  ~TCountedIntf() override { --Alive; }
  static inline int Alive = 0;
};

template <class T>
std::vector<T> Items(const Generics::TList<T>& L) {
  return std::vector<T>(L.begin(), L.end());
}

// The largest number of hashes that fall into one of Buckets buckets by masking.
template <class T>
int WorstBucket(const std::vector<T>& Keys, std::uint32_t Buckets) {
  auto Comparer = TEqualityComparer<T>::Default();
  std::vector<int> Load(Buckets);
  for (const T& K : Keys) ++Load[static_cast<std::uint32_t>(Comparer->GetHashCode(K)) & (Buckets - 1)];
  return *std::max_element(Load.begin(), Load.end());
}

}  // namespace

TEST(GenericList, EditingSearchingAndRangeErrors) {
  Generics::TList<String> L;
  EXPECT_EQ(L.Add(u"b"), 0);
  EXPECT_EQ(L.Add(u"c"), 1);
  L.Insert(0, u"a");
  L.Insert(3, u"d");
  EXPECT_EQ(Items(L), (std::vector<String>{u"a", u"b", u"c", u"d"}));
  EXPECT_EQ(L.IndexOf(u"c"), 2);
  EXPECT_EQ(L.IndexOf(u"C"), -1);  // exact equality
  EXPECT_TRUE(L.Contains(u"d"));
  EXPECT_EQ(L.Remove(u"b"), 1);
  EXPECT_EQ(L.Remove(u"b"), -1);
  L.Exchange(0, 2);
  L.SetItem(1, u"x");
  EXPECT_EQ(L.First(), u"d");
  EXPECT_EQ(L.Last(), u"a");
  EXPECT_EQ(L.GetItem(1), u"x");
  for (String& S : L) S += u"!";
  EXPECT_EQ(L.ToArray(), (std::vector<String>{u"d!", u"x!", u"a!"}));

  const String Range = u"Argument out of range";
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.GetItem(3); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.Insert(4, u"z"); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.Delete(-1); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.SetCapacity(2); }), Range);
  L.Clear();
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.First(); }), Range);
  EXPECT_EQ(MessageOf<EArgumentOutOfRangeException>([&] { L.Last(); }), Range);
  L.SetCapacity(10);
  EXPECT_EQ(L.GetCapacity(), 10);
}

TEST(GenericList, SortsByOrderOrComparisonAndReleasesReferences) {
  Generics::TList<int> L;
  for (int i = 0; i < 50; ++i) L.Add(i * 17 % 50);
  L.Sort();
  for (int i = 0; i < 50; ++i) ASSERT_EQ(L.GetItem(i), i);
  L.Sort([](const int& A, const int& B) { return B - A; });
  EXPECT_EQ(L.First(), 49);
  L.Sort([](const int&, const int&) { return 1; });  // not an order: no crash, nothing lost
  std::vector<int> All = Items(L);
  std::sort(All.begin(), All.end());
  for (int i = 0; i < 50; ++i) ASSERT_EQ(All[static_cast<std::size_t>(i)], i);

  TCountedIntf::Alive = 0;
  {
    Generics::TList<TIntfPtr<IInterface>> Refs;
    TIntfPtr<IInterface> A(new TCountedIntf);
    Refs.Add(A);
    Refs.Add(TIntfPtr<IInterface>(new TCountedIntf));
    Refs.Add(TIntfPtr<IInterface>(new TCountedIntf));
    EXPECT_EQ(Refs.IndexOf(A), 0);
    Refs.Delete(1);
    EXPECT_EQ(TCountedIntf::Alive, 2);
    Refs.SetItem(1, A);
    EXPECT_EQ(TCountedIntf::Alive, 1);
    Refs.Clear();
    EXPECT_EQ(TCountedIntf::Alive, 1);  // A still held here
    Refs.Add(A);
  }
  EXPECT_EQ(TCountedIntf::Alive, 0);

  TPair<String, int> Pair{u"key", 7};
  EXPECT_EQ(Pair.Key, u"key");
  EXPECT_EQ(Pair.Value, 7);
}

TEST(EqualityComparer, DefaultIsSharedAndConsistentWithEquality) {
  auto S1 = TEqualityComparer<String>::Default();
  auto S2 = TEqualityComparer<String>::Default();
  EXPECT_EQ(S1.get(), S2.get());
  EXPECT_TRUE(S1->Equals(u"abc", String(u"ab") + u"c"));
  EXPECT_FALSE(S1->Equals(u"abc", u"ABC"));
  EXPECT_EQ(S1->GetHashCode(u"abc"), S1->GetHashCode(String(u"ab") + u"c"));
  EXPECT_NE(S1->GetHashCode(u"abc"), S1->GetHashCode(u"ABC"));
  EXPECT_NE(S1->GetHashCode(u""), S1->GetHashCode(String(1, u'\0')));
  EXPECT_NE(S1->GetHashCode(u"ab"), S1->GetHashCode(u"ba"));

  auto D = TEqualityComparer<double>::Default();
  EXPECT_TRUE(D->Equals(0.0, -0.0));
  EXPECT_EQ(D->GetHashCode(0.0), D->GetHashCode(-0.0));

  TIntfPtr<IInterface> Obj(new TCountedIntf);
  auto I = TEqualityComparer<TIntfPtr<IInterface>>::Default();
  EXPECT_TRUE(I->Equals(Obj, Query<IInterface>(Obj)));
  EXPECT_EQ(I->GetHashCode(Obj), I->GetHashCode(TIntfPtr<IInterface>(Obj)));
  EXPECT_FALSE(I->Equals(Obj, nullptr));

  auto NoCase = TEqualityComparer<String>::Construct(
      [](const String& A, const String& B) { return SameText(A, B); },
      [](const String& S) { return TEqualityComparer<String>::Default()->GetHashCode(UpperCase(S)); });
  EXPECT_TRUE(NoCase->Equals(u"Key", u"kEY"));
  EXPECT_EQ(NoCase->GetHashCode(u"Key"), NoCase->GetHashCode(u"kEY"));
  EXPECT_NE(NoCase.get(), S1.get());
  EXPECT_THROW(TEqualityComparer<String>::Construct(nullptr, nullptr), EAccessViolation);
}

TEST(EqualityComparer, DefaultHashesSpreadOverMaskedBuckets) {
  // Similar keys (counters, numbered names, aligned addresses) must not pile up in the low
  // bits that a power-of-two table keeps.
  std::vector<String> Names;
  std::vector<std::int32_t> Ints;
  std::vector<std::int64_t> Steps;
  std::vector<const void*> Ptrs;
  static char Block[4096 * 16];
  for (int i = 0; i < 4096; ++i) {
    Names.push_back(u"node" + AsciiToString(std::to_string(i)));
    Ints.push_back(i);
    Steps.push_back(static_cast<std::int64_t>(i) << 32);
    Ptrs.push_back(Block + i * 16);
  }
  EXPECT_LE(WorstBucket(Names, 1024), 16);
  EXPECT_LE(WorstBucket(Ints, 1024), 16);
  EXPECT_LE(WorstBucket(Steps, 1024), 16);
  EXPECT_LE(WorstBucket(Ptrs, 1024), 16);

  std::set<std::int32_t> Distinct;
  auto Comparer = TEqualityComparer<String>::Default();
  for (const String& S : Names) Distinct.insert(Comparer->GetHashCode(S));
  EXPECT_GE(Distinct.size(), Names.size() - 2);
}
