// Long random runs of adds, add-or-sets, removes, extracts, positional reads and capacity
// changes against std::unordered_map, with the probing structure checked after every step.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <unordered_map>
#include <vector>

#include "KZGenerics.Collections/KZGenerics.Collections.h"

using namespace kz;

namespace {

// Few distinct hash codes, so that probe runs are long and wrap around the end.
TIntfPtr<IEqualityComparer<int>> Crowded() {
  return TEqualityComparer<int>::Construct([](const int& A, const int& B) { return A == B; },
                                           [](const int& K) { return static_cast<std::int32_t>(K % 7 - 3); });
}

void CheckStructure(const TKZHashTable<int, int>& T, const std::unordered_map<int, int>& M) {
  ASSERT_EQ(T.GetCount(), static_cast<std::int32_t>(M.size()));
  for (const auto& [K, V] : M) {
    const int* Found = T.Find(K);
    ASSERT_NE(Found, nullptr) << K;
    ASSERT_EQ(*Found, V);
  }
  for (int K = -150; K < 150; ++K) ASSERT_EQ(T.ContainsKey(K), M.count(K) > 0) << K;
  const auto& Items = T.GetItems();
  const auto Length = static_cast<std::uint32_t>(Items.size());
  std::vector<int> Order;
  for (std::uint32_t i = 0; i < Length; ++i) {
    if (Items[i].HashCode == -1) continue;
    Order.push_back(Items[i].Key);
    // No free bucket between an entry and its home.
    for (std::uint32_t j = static_cast<std::uint32_t>(Items[i].HashCode) & (Length - 1); j != i; j = (j + 1) & (Length - 1))
      ASSERT_NE(Items[j].HashCode, -1) << "gap before bucket " << i;
  }
  std::vector<int> Enumerated;
  for (const auto& P : T) Enumerated.push_back(P.Key);
  ASSERT_EQ(Enumerated, Order);
}

void RunModel(unsigned RunNumber, TIntfPtr<IEqualityComparer<int>> Comparer, int Steps) {
  std::mt19937 Rng(RunNumber);
  TKZHashTable<int, int> T(Comparer);
  std::unordered_map<int, int> M;
  for (int S = 0; S < Steps; ++S) {
    SCOPED_TRACE(testing::Message() << "run " << RunNumber << " step " << S);
    const int K = static_cast<int>(Rng() % 300) - 150;
    const int V = static_cast<int>(Rng() % 1000);
    const bool Present = M.count(K) > 0;
    switch (Rng() % 10) {
      case 0:
      case 1:
        if (Present) {
          ASSERT_THROW(T.Add(K, V), EListError);
        } else {
          T.Add(K, V);
          M[K] = V;
        }
        break;
      case 2:
      case 3:
        T.AddOrSetValue(K, V);
        M[K] = V;
        break;
      case 4:
      case 5:
        if (M.empty()) {
          ASSERT_THROW(T.Remove(K), EGHashtableError);
        } else {
          ASSERT_EQ(T.Remove(K), Present ? M[K] : 0);
          M.erase(K);
        }
        break;
      case 6:
        if (!M.empty()) {
          const auto P = T.ExtractPair(K);
          ASSERT_EQ(P.Value, Present ? M[K] : 0);
          M.erase(K);
        }
        break;
      case 7:
        if (!M.empty()) {
          const std::int32_t I = static_cast<std::int32_t>(Rng() % M.size());
          const int Key = T.GetKeyByIndex(I);
          ASSERT_EQ(T.GetItemByIndex(I), M.at(Key));
          if (I > 0) {
            ASSERT_NE(T.GetKeyByIndex(I - 1), Key);
          }
        }
        break;
      case 8:
        if (Rng() % 4 == 0)
          T.TrimExcess();
        else
          T.SetCapacity(static_cast<std::int32_t>(M.size() + Rng() % 64));
        break;
      default:
        if (Rng() % 50 == 0) {
          T.Clear();
          M.clear();
        }
        break;
    }
    CheckStructure(T, M);
    if (testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace

TEST(KZHashTableModel, RandomRunsAgainstUnorderedMap) {
  for (unsigned Run = 1; Run <= 3; ++Run) {
    RunModel(Run, nullptr, 4000);
    if (HasFatalFailure()) return;
    RunModel(Run + 100, Crowded(), 3000);
    if (HasFatalFailure()) return;
  }
}

// Buckets of a kilobyte put a few thousand entries beyond the caches, where lookups and
// removals with the default comparer take their own course through the tags: a twin table
// whose comparer hashes alike must answer and lay out its buckets exactly the same.
TEST(KZHashTableModel, LargeTableRemovalsMatchTheComparerPath) {
  using TBig = std::array<int, 256>;
  auto SameHash = TEqualityComparer<int>::Construct([](const int& A, const int& B) { return A == B; },
                                                    [](const int& K) { return Generics::detail::DefaultHashCode(K); });
  TKZDictionary<int, TBig> Fast(8192), Twin(8192, SameHash);
  std::mt19937 Rng(5);
  for (int S = 0; S < 20000; ++S) {
    SCOPED_TRACE(testing::Message() << "step " << S);
    const int K = static_cast<int>(Rng() % 9000);
    if (Rng() % 3 != 0) {
      TBig V{};
      V[0] = S;
      if (Fast.GetCount() < 6000 && !Fast.ContainsKey(K)) {
        Fast.Add(K, V);
        Twin.Add(K, V);
      }
    } else {
      ASSERT_EQ(Fast.Remove(K)[0], Twin.Remove(K)[0]);
    }
    ASSERT_EQ(Fast.ContainsKey(K), Twin.ContainsKey(K));
    if (S % 500 == 0 || S == 19999) {
      ASSERT_GE(Fast.GetBucketCount(), 8192);
      const auto& A = Fast.GetItems();
      const auto& B = Twin.GetItems();
      ASSERT_EQ(A.size(), B.size());
      for (std::size_t I = 0; I < A.size(); ++I) {
        ASSERT_EQ(A[I].HashCode, B[I].HashCode) << I;
        ASSERT_EQ(A[I].Key, B[I].Key) << I;
        ASSERT_EQ(A[I].Value[0], B[I].Value[0]) << I;
      }
    }
  }
}
