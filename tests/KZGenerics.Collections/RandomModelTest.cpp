// Long random runs of adds, add-or-sets, removes, extracts, positional reads and capacity
// changes against std::unordered_map, with the probing structure checked after every step.
#include <gtest/gtest.h>

#include <array>
#include <random>
#include <type_traits>
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

namespace {

// A plain dictionary with the default comparer takes its own course through the tags, and
// removes on a path of its own while no one is told: a twin whose comparer hashes alike must
// answer and lay out its buckets exactly the same. Buckets of a kilobyte put a few thousand
// entries beyond the caches; small tables put most runs across the end of the buckets.
template <class TValue>
void RunTwins(std::int32_t Capacity, int KeyRange, std::int32_t MaxCount, int Steps) {
  auto SameHash = TEqualityComparer<int>::Construct([](const int& A, const int& B) { return A == B; },
                                                    [](const int& K) { return Generics::detail::DefaultHashCode(K); });
  auto First = [](auto& V) -> auto& {
    if constexpr (std::is_same_v<TValue, int>)
      return V;
    else
      return V[0];
  };
  TKZDictionary<int, TValue> Fast(Capacity), Twin(Capacity, SameHash);
  std::mt19937 Rng(static_cast<unsigned>(Capacity + KeyRange));
  for (int S = 0; S < Steps; ++S) {
    SCOPED_TRACE(testing::Message() << "capacity " << Capacity << " step " << S);
    const int K = static_cast<int>(Rng() % static_cast<unsigned>(KeyRange));
    if (Rng() % 3 != 0) {
      TValue V{};
      First(V) = S;
      if (Fast.GetCount() < MaxCount && !Fast.ContainsKey(K)) {
        Fast.Add(K, V);
        Twin.Add(K, V);
      }
    } else {
      TValue Removed = Fast.Remove(K), TwinRemoved = Twin.Remove(K);
      ASSERT_EQ(First(Removed), First(TwinRemoved));
    }
    ASSERT_EQ(Fast.ContainsKey(K), Twin.ContainsKey(K));
    if (S % 500 == 0 || S == Steps - 1 || Capacity < 64) {
      ASSERT_GE(Fast.GetBucketCount(), Capacity);
      const auto& A = Fast.GetItems();
      const auto& B = Twin.GetItems();
      ASSERT_EQ(A.size(), B.size());
      for (std::size_t I = 0; I < A.size(); ++I) {
        ASSERT_EQ(A[I].HashCode, B[I].HashCode) << I;
        ASSERT_EQ(A[I].Key, B[I].Key) << I;
        ASSERT_EQ(First(A[I].Value), First(B[I].Value)) << I;
      }
    }
  }
}

}  // namespace

TEST(KZHashTableModel, DefaultComparerRemovalsMatchTheComparerPath) {
  RunTwins<int>(16, 40, 12, 20000);
  if (HasFatalFailure()) return;
  RunTwins<std::array<int, 256>>(8192, 9000, 6000, 20000);
}
