// TGStringList against std::vector<std::u16string> with std::sort / std::lower_bound and
// against the runtime's TStringList: appending, sorted insertion, lookup and sorting of 100K
// distinct lines. TGStringList runs twice: with the ordinal comparison (the peer of the
// vector's operator<) and with the locale's case-sensitive collation (the comparison
// TStringList uses), so each peer is met on equal terms. The global locale is "C".
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

#include "Runtime/Text.h"
#include "Structures/Structures.h"

using namespace kz;

namespace {

constexpr int NLines = 100000;

// Distinct lines of 10 to 20 characters in a random order that is the same on every run.
const std::vector<String>& TestLines() {
  static const std::vector<String> Lines = [] {
    std::mt19937 Rng(20261121);
    std::uniform_int_distribution<int> Letter(u'a', u'z'), Extra(0, 10);
    std::vector<String> Result;
    Result.reserve(NLines);
    for (int i = 0; i < NLines; ++i) {
      String S;
      for (int n = 6 + Extra(Rng); n > 0; --n) S.push_back(static_cast<Char>(Letter(Rng)));
      S += IntToStr(i);  // distinct
      Result.push_back(std::move(S));
    }
    std::shuffle(Result.begin(), Result.end(), Rng);
    return Result;
  }();
  return Lines;
}

struct TVectorPeer {
  std::vector<String> V;
  void Add(const String& S) { V.push_back(S); }
  void SortedAdd(const String& S) {
    const auto It = std::lower_bound(V.begin(), V.end(), S);
    if (It == V.end() || *It != S) V.insert(It, S);
  }
  void MakeSorted() { std::sort(V.begin(), V.end()); }
  bool Find(const String& S) const {
    const auto It = std::lower_bound(V.begin(), V.end(), S);
    return It != V.end() && *It == S;
  }
  void Sort() { std::sort(V.begin(), V.end()); }
};

template <TStringOpsType Ops>
struct TGStringListFor {
  TGStringList L;
  TGStringListFor() { L.SetStringOpsType(Ops); }
  void Add(const String& S) { L.Add(S); }
  void SortedAdd(const String& S) {
    L.SetSorted(true);
    L.Add(S);
  }
  void MakeSorted() { L.SetSorted(true); }
  bool Find(const String& S) const {
    std::int32_t Index;
    return L.Find(S, Index);
  }
  void Sort() { L.Sort(); }
};

struct TStringListPeer {
  TStringList L;
  TStringListPeer() { L.SetCaseSensitive(true); }
  void Add(const String& S) { L.Add(S); }
  void SortedAdd(const String& S) {
    L.SetSorted(true);
    L.Add(S);
  }
  void MakeSorted() { L.SetSorted(true); }
  bool Find(const String& S) const {
    std::int32_t Index;
    return L.Find(S, Index);
  }
  void Sort() { L.Sort(); }
};

using TGStringListOrdinal = TGStringListFor<soCaseSensitive>;
using TGStringListLocale = TGStringListFor<soCaseSensitiveLocale>;

// Times Body(peer) on a fresh peer; building the peer with Prepare and destroying it are
// left out of the timing.
template <class T, class TPrepare, class TBody>
void TimeOnFreshPeer(benchmark::State& State, TPrepare&& Prepare, TBody&& Body) {
  for (auto _ : State) {
    State.PauseTiming();
    auto Peer = std::make_unique<T>();
    Prepare(*Peer);
    State.ResumeTiming();
    Body(*Peer);
    benchmark::DoNotOptimize(Peer.get());
    State.PauseTiming();
    Peer.reset();
    State.ResumeTiming();
  }
  State.SetItemsProcessed(State.iterations() * NLines);
}

template <class T>
void BM_Add(benchmark::State& State) {
  TimeOnFreshPeer<T>(State, [](T&) {}, [](T& Peer) {
    for (const String& S : TestLines()) Peer.Add(S);
  });
}

template <class T>
void BM_SortedAdd(benchmark::State& State) {
  TimeOnFreshPeer<T>(State, [](T&) {}, [](T& Peer) {
    for (const String& S : TestLines()) Peer.SortedAdd(S);
  });
}

template <class T>
void BM_Find(benchmark::State& State) {
  T Peer;
  for (const String& S : TestLines()) Peer.Add(S);
  Peer.MakeSorted();
  for (auto _ : State) {
    int Found = 0;
    for (const String& S : TestLines()) Found += Peer.Find(S);
    if (Found != NLines) State.SkipWithError("a line was not found");
  }
  State.SetItemsProcessed(State.iterations() * NLines);
}

template <class T>
void BM_Sort(benchmark::State& State) {
  TimeOnFreshPeer<T>(State, [](T& Peer) {
    for (const String& S : TestLines()) Peer.Add(S);
  }, [](T& Peer) { Peer.Sort(); });
}

}  // namespace

#define KZ_STRINGLIST_BENCH(Fn)                                         \
  BENCHMARK_TEMPLATE(Fn, TVectorPeer)->Unit(benchmark::kMillisecond);         \
  BENCHMARK_TEMPLATE(Fn, TGStringListOrdinal)->Unit(benchmark::kMillisecond); \
  BENCHMARK_TEMPLATE(Fn, TGStringListLocale)->Unit(benchmark::kMillisecond);  \
  BENCHMARK_TEMPLATE(Fn, TStringListPeer)->Unit(benchmark::kMillisecond);

KZ_STRINGLIST_BENCH(BM_Add)
KZ_STRINGLIST_BENCH(BM_SortedAdd)
KZ_STRINGLIST_BENCH(BM_Find)
KZ_STRINGLIST_BENCH(BM_Sort)

BENCHMARK_MAIN();
