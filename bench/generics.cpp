// The generic dictionary against absl::flat_hash_map and std::unordered_map: insert, hit,
// miss and remove with int32_t and 16-bit string keys at 1K, 64K and 1M entries. Every map
// starts empty with no reserved room; lookups run in a shuffled order. Floor rows show what any
// table bound by the dictionary's layout and removal rule costs here.
#include <benchmark/benchmark.h>

#include <absl/container/flat_hash_map.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <type_traits>
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

// The floor: the least a table bound by the dictionary's rules can do. Power-of-two linear
// probing from 4 buckets, growth at 3/4 full, the dictionary's default hash, and
// backward-shift removal (each later entry of the run moves into the gap unless its home lies
// after the gap); no notifications, no enumeration, no tags. Free buckets are marked by a
// byte array beside (key, value) buckets (int32_t keys only), or, as the dictionary marks
// them, by a stored hash of -1 in (hash, key, value) buckets, where stored hashes are compared
// before keys. A removed key's storage is freed at once, as the dictionary frees it.
template <bool StoredHash, class TKey>
class TFloorTable {
  static_assert(StoredHash || std::is_same_v<TKey, std::int32_t>);
  struct TPlain {
    TKey Key;
    std::int32_t Value;
  };
  struct THashed {
    std::int32_t Hash = -1;
    TKey Key;
    std::int32_t Value;
  };
  using TBucket = std::conditional_t<StoredHash, THashed, TPlain>;

 public:
  TFloorTable() { Allocate(4); }
  void Insert(const TKey& Key, std::int32_t Value) {
    if (Count >= Threshold) Grow();
    const std::uint32_t H = HashOf(Key);
    std::uint32_t I = H & Mask;
    for (; Used(I); I = (I + 1u) & Mask)
      if (Same(I, H, Key)) return;
    Place(I, H, TKey(Key), Value);
    ++Count;
  }
  bool Has(const TKey& Key) const { return Find(Key) >= 0; }
  void Erase(const TKey& Key) {
    const std::int64_t Found = Find(Key);
    if (Found < 0) return;
    auto Gap = static_cast<std::uint32_t>(Found);
    [[maybe_unused]] const TKey Removed = std::move(Buckets[Gap].Key);
    // The table is never full, so the walk meets a free bucket before it could wrap to the gap.
    for (std::uint32_t J = (Gap + 1u) & Mask; Used(J); J = (J + 1u) & Mask)
      if (((J - Home(J)) & Mask) >= ((J - Gap) & Mask)) {
        Buckets[Gap] = std::move(Buckets[J]);
        Gap = J;
      }
    if constexpr (StoredHash)
      Buckets[Gap].Hash = -1;
    else
      Occupied[Gap] = 0;
    --Count;
  }

 private:
  static std::uint32_t HashOf(const TKey& Key) {
    return static_cast<std::uint32_t>(Generics::detail::DefaultHashCode(Key)) & 0x7FFFFFFFu;
  }
  bool Used(std::uint32_t I) const {
    if constexpr (StoredHash)
      return Buckets[I].Hash != -1;
    else
      return Occupied[I] != 0;
  }
  bool Same(std::uint32_t I, std::uint32_t H, const TKey& Key) const {
    if constexpr (StoredHash)
      return Buckets[I].Hash == static_cast<std::int32_t>(H) && Buckets[I].Key == Key;
    else
      return Buckets[I].Key == Key;
  }
  std::uint32_t Home(std::uint32_t I) const {
    if constexpr (StoredHash)
      return static_cast<std::uint32_t>(Buckets[I].Hash);
    else
      return HashOf(Buckets[I].Key);
  }
  void Place(std::uint32_t I, std::uint32_t H, TKey&& Key, std::int32_t Value) {
    if constexpr (StoredHash) {
      Buckets[I] = THashed{static_cast<std::int32_t>(H), std::move(Key), Value};
    } else {
      Buckets[I] = TPlain{Key, Value};
      Occupied[I] = 1;
    }
  }
  std::int64_t Find(const TKey& Key) const {
    const std::uint32_t H = HashOf(Key);
    for (std::uint32_t I = H & Mask; Used(I); I = (I + 1u) & Mask)
      if (Same(I, H, Key)) return I;
    return -1;
  }
  void Allocate(std::uint32_t Length) {
    Buckets.reset(new TBucket[Length]);
    if constexpr (!StoredHash) Occupied.reset(new std::uint8_t[Length]());
    Mask = Length - 1u;
    Threshold = (Length >> 1) + (Length >> 2);
  }
  void Grow() {
    const std::uint32_t OldLength = Mask + 1u;
    std::unique_ptr<TBucket[]> Old = std::move(Buckets);
    std::unique_ptr<std::uint8_t[]> OldOccupied = std::move(Occupied);
    Allocate(OldLength * 2u);
    for (std::uint32_t K = 0; K < OldLength; ++K) {
      std::uint32_t H;
      if constexpr (StoredHash) {
        if (Old[K].Hash == -1) continue;
        H = static_cast<std::uint32_t>(Old[K].Hash);
      } else {
        if (OldOccupied[K] == 0) continue;
        H = HashOf(Old[K].Key);
      }
      std::uint32_t I = H & Mask;
      while (Used(I)) I = (I + 1u) & Mask;
      Place(I, H, std::move(Old[K].Key), Old[K].Value);
    }
  }

  std::unique_ptr<TBucket[]> Buckets;
  std::unique_ptr<std::uint8_t[]> Occupied;
  std::uint32_t Mask = 0;
  std::uint32_t Count = 0, Threshold = 0;
};
template <class TKey>
using TFloor = TFloorTable<false, TKey>;
template <class TKey>
using TFloorHash = TFloorTable<true, TKey>;

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
KZ_GENERICS_BENCH(TFloor, TInt)
KZ_GENERICS_BENCH(TFloorHash, TInt)
KZ_GENERICS_BENCH(TKZ, String)
KZ_GENERICS_BENCH(TAbsl, String)
KZ_GENERICS_BENCH(TStd, String)
KZ_GENERICS_BENCH(TFloorHash, String)

}  // namespace

BENCHMARK_MAIN();
