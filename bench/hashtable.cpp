// Chained tables against std::unordered_map: insert, hit, miss and remove, with word keys
// (random 32-bit numbers) and 16-bit string keys, at 1K, 64K and 1M entries. Both sides
// start empty with no reserved room; lookups run in a shuffled order.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <map>
#include <random>
#include <unordered_map>
#include <vector>

#include "GHashTable/GHashTable.h"

#include "BenchKeys.h"

using namespace kz;

namespace {

using TWord = std::uintptr_t;

Pointer V(std::size_t I) { return reinterpret_cast<Pointer>(I + 1); }

// Present keys followed by as many absent ones, each half shuffled, built once per size.
template <class TKey>
struct TKeySet {
  std::vector<TKey> Present, Absent, Lookup;
};

TWord MakeKey(std::mt19937& Rng, TWord*) { return Rng() | 1u; }
String MakeKey(std::mt19937& Rng, String*) { return kzbench::MakeStringKey(Rng); }

template <class TKey>
const TKeySet<TKey>& Keys(std::size_t N) {
  static std::map<std::size_t, TKeySet<TKey>> Cache;
  auto [It, New] = Cache.try_emplace(N);
  if (New) {
    std::mt19937 Rng(static_cast<unsigned>(N));
    kzbench::DistinctKeys(N, Rng, [](std::mt19937& R) { return MakeKey(R, static_cast<TKey*>(nullptr)); },
                          It->second.Present, It->second.Absent);
    It->second.Lookup = It->second.Present;
    std::shuffle(It->second.Lookup.begin(), It->second.Lookup.end(), Rng);
    std::shuffle(It->second.Absent.begin(), It->second.Absent.end(), Rng);
  }
  return It->second;
}

struct TKzWord {
  using TKey = TWord;
  TGHashtable T{11, 0.75f};
  static Pointer W(TWord K) { return reinterpret_cast<Pointer>(K); }
  void Put(TWord K, Pointer Value) { T.Put(W(K), Value); }
  Pointer Get(TWord K) { return T.Get(W(K)); }
  bool Has(TWord K) { return T.ContainsKey(W(K)); }
  void Remove(TWord K) { T.Remove(W(K)); }
};

struct TStdWord {
  using TKey = TWord;
  std::unordered_map<TWord, Pointer> M;
  void Put(TWord K, Pointer Value) { M.insert_or_assign(K, Value); }
  Pointer Get(TWord K) { return M.find(K)->second; }
  bool Has(TWord K) { return M.find(K) != M.end(); }
  void Remove(TWord K) { M.erase(K); }
};

struct TKzString {
  using TKey = String;
  TGStringHashtable T{11, 0.75f};
  void Put(const String& K, Pointer Value) { T.Put(K, Value); }
  Pointer Get(const String& K) { return T.Get(K); }
  bool Has(const String& K) { return T.ContainsKey(K); }
  void Remove(const String& K) { T.Remove(K); }
};

struct TStdString {
  using TKey = String;
  std::unordered_map<String, Pointer> M;
  void Put(const String& K, Pointer Value) { M.insert_or_assign(K, Value); }
  Pointer Get(const String& K) { return M.find(K)->second; }
  bool Has(const String& K) { return M.find(K) != M.end(); }
  void Remove(const String& K) { M.erase(K); }
};

template <class TMap>
void Fill(TMap& Map, const std::vector<typename TMap::TKey>& Present) {
  for (std::size_t I = 0; I < Present.size(); ++I) Map.Put(Present[I], V(I));
}

template <class TMap>
void Insert(benchmark::State& State) {
  const auto& K = Keys<typename TMap::TKey>(static_cast<std::size_t>(State.range(0)));
  for (auto _ : State) {
    auto Map = std::make_unique<TMap>();
    Fill(*Map, K.Present);
    benchmark::DoNotOptimize(Map.get());
    State.PauseTiming();  // the teardown is not part of inserting
    Map.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <class TMap>
void Hit(benchmark::State& State) {
  const auto& K = Keys<typename TMap::TKey>(static_cast<std::size_t>(State.range(0)));
  TMap Map;
  Fill(Map, K.Present);
  for (auto _ : State)
    for (const auto& Key : K.Lookup) benchmark::DoNotOptimize(Map.Get(Key));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <class TMap>
void Miss(benchmark::State& State) {
  const auto& K = Keys<typename TMap::TKey>(static_cast<std::size_t>(State.range(0)));
  TMap Map;
  Fill(Map, K.Present);
  for (auto _ : State)
    for (const auto& Key : K.Absent) benchmark::DoNotOptimize(Map.Has(Key));
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

template <class TMap>
void Remove(benchmark::State& State) {
  const auto& K = Keys<typename TMap::TKey>(static_cast<std::size_t>(State.range(0)));
  for (auto _ : State) {
    State.PauseTiming();
    auto Map = std::make_unique<TMap>();
    Fill(*Map, K.Present);
    State.ResumeTiming();
    for (const auto& Key : K.Lookup) Map->Remove(Key);
    State.PauseTiming();
    Map.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * State.range(0));
}

#define KZ_HASH_BENCH(Op)                                                                     \
  BENCHMARK_TEMPLATE(Op, TKzWord)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);    \
  BENCHMARK_TEMPLATE(Op, TStdWord)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);   \
  BENCHMARK_TEMPLATE(Op, TKzString)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);  \
  BENCHMARK_TEMPLATE(Op, TStdString)->Arg(1 << 10)->Arg(1 << 16)->Arg(1 << 20)->Unit(benchmark::kMicrosecond);

KZ_HASH_BENCH(Insert)
KZ_HASH_BENCH(Hit)
KZ_HASH_BENCH(Miss)
KZ_HASH_BENCH(Remove)

}  // namespace

BENCHMARK_MAIN();
