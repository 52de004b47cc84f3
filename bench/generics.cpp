// The generic dictionary against absl::flat_hash_map and std::unordered_map: insert, hit,
// miss and remove with int32_t and 16-bit string keys at 1K, 64K and 1M entries. Every map
// starts empty with no reserved room; lookups run in a shuffled order.
#include <benchmark/benchmark.h>

#include <absl/container/flat_hash_map.h>

#include <algorithm>
#include <map>
#include <random>
#include <unordered_map>
#include <vector>

#include "KZGenerics.Collections/KZGenerics.Collections.h"

#include "BenchKeys.h"

using namespace kz;

namespace {

template <class TKey>
struct TKeySet {
  std::vector<TKey> Present, Absent;
};

std::int32_t MakeKey(std::mt19937& Rng, std::int32_t*) { return static_cast<std::int32_t>(Rng()); }
String MakeKey(std::mt19937& Rng, String*) { return kzbench::MakeStringKey(Rng); }

// Present keys and as many absent ones, each shuffled, built once per size.
template <class TKey>
const TKeySet<TKey>& Keys(std::size_t N) {
  static std::map<std::size_t, TKeySet<TKey>> Cache;
  auto [It, New] = Cache.try_emplace(N);
  if (New) {
    std::mt19937 Rng(static_cast<unsigned>(N));
    kzbench::DistinctKeys(N, Rng, [](std::mt19937& R) { return MakeKey(R, static_cast<TKey*>(nullptr)); },
                          It->second.Present, It->second.Absent);
    std::shuffle(It->second.Absent.begin(), It->second.Absent.end(), Rng);
  }
  return It->second;
}

// One face for the three maps.
template <class TKey>
struct TKZ {
  TKZDictionary<TKey, std::int32_t> M;
  void Insert(const TKey& K, std::int32_t V) { M.Add(K, V); }
  bool Has(const TKey& K) const { return M.Find(K) != nullptr; }
  void Erase(const TKey& K) { (void)M.Remove(K); }
};
template <class TKey>
struct TAbsl {
  absl::flat_hash_map<TKey, std::int32_t> M;
  void Insert(const TKey& K, std::int32_t V) { M.emplace(K, V); }
  bool Has(const TKey& K) const { return M.find(K) != M.end(); }
  void Erase(const TKey& K) { M.erase(K); }
};
template <class TKey>
struct TStd {
  std::unordered_map<TKey, std::int32_t> M;
  void Insert(const TKey& K, std::int32_t V) { M.emplace(K, V); }
  bool Has(const TKey& K) const { return M.find(K) != M.end(); }
  void Erase(const TKey& K) { M.erase(K); }
};

template <class TMap, class TKey>
void Fill(TMap& Map, const std::vector<TKey>& Keys) {
  std::int32_t V = 0;
  for (const TKey& K : Keys) Map.Insert(K, V++);
}

template <template <class> class TMap, class TKey>
void Insert(benchmark::State& State) {
  const auto& K = Keys<TKey>(static_cast<std::size_t>(State.range(0)));
  for (auto _ : State) {
    TMap<TKey> Map;
    Fill(Map, K.Present);
    benchmark::DoNotOptimize(Map);
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <template <class> class TMap, class TKey, bool Hit>
void Lookup(benchmark::State& State) {
  const auto& K = Keys<TKey>(static_cast<std::size_t>(State.range(0)));
  TMap<TKey> Map;
  Fill(Map, K.Present);
  std::vector<TKey> Probe = Hit ? K.Present : K.Absent;
  std::shuffle(Probe.begin(), Probe.end(), std::mt19937(7));
  for (auto _ : State) {
    std::size_t Found = 0;
    for (const TKey& Key : Probe) Found += Map.Has(Key);
    benchmark::DoNotOptimize(Found);
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <template <class> class TMap, class TKey>
void Remove(benchmark::State& State) {
  const auto& K = Keys<TKey>(static_cast<std::size_t>(State.range(0)));
  std::vector<TKey> Order = K.Present;
  std::shuffle(Order.begin(), Order.end(), std::mt19937(11));
  for (auto _ : State) {
    State.PauseTiming();
    auto Map = std::make_unique<TMap<TKey>>();
    Fill(*Map, K.Present);
    State.ResumeTiming();
    for (const TKey& Key : Order) Map->Erase(Key);
    State.PauseTiming();
    Map.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

#define KZ_GENERICS_BENCH(Map, Key)                                                     \
  BENCHMARK(Insert<Map, Key>)->Name(#Map "/" #Key "/insert")->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20); \
  BENCHMARK(Lookup<Map, Key, true>)->Name(#Map "/" #Key "/hit")->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20); \
  BENCHMARK(Lookup<Map, Key, false>)->Name(#Map "/" #Key "/miss")->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20); \
  BENCHMARK(Remove<Map, Key>)->Name(#Map "/" #Key "/remove")->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20);

using TInt = std::int32_t;
KZ_GENERICS_BENCH(TKZ, TInt)
KZ_GENERICS_BENCH(TAbsl, TInt)
KZ_GENERICS_BENCH(TStd, TInt)
KZ_GENERICS_BENCH(TKZ, String)
KZ_GENERICS_BENCH(TAbsl, String)
KZ_GENERICS_BENCH(TStd, String)

}  // namespace

BENCHMARK_MAIN();
