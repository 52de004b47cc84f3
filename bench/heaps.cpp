// Priority queues against std::priority_queue and a binary and a 4-ary Boost d_ary_heap:
// 1M pushes with random 32-bit priorities, then 1M pops, per iteration. The items are objects
// that carry their own priority; the integer queue is also given the priority, the others
// compare the items (through the object, as the object queue must). Every side starts empty.
// One more row gives std::priority_queue the comparison as the object queue gets it: a
// function known only at run time, called through a pointer. A floor row adds what else the
// object queue must do: each push makes a separate element object (32 bytes, from the slab
// the library's pools carve, without their per-element header) and each pop frees it, with the
// queue holding (item, element) slots so that the comparisons read no element.
#include <benchmark/benchmark.h>

#include <boost/heap/d_ary_heap.hpp>
#include <cstdint>
#include <new>
#include <queue>
#include <random>
#include <vector>

#include "DataStructures/DataStructures.h"
#include "Runtime/Slab.h"

using namespace kz;

namespace {

constexpr std::size_t N = 1'000'000;

class TItem : public TObject {
  KZ_CLASS(TItem, TObject)
 public:
  std::int32_t P = 0;
};

std::vector<TItem>& Items() {
  static std::vector<TItem> All = [] {
    std::vector<TItem> V(N);
    std::mt19937 Rng(12345);
    for (TItem& I : V) I.P = static_cast<std::int32_t>(Rng());
    return V;
  }();
  return All;
}

std::int32_t ComparePriorities(TObject* A, TObject* B) {
  const std::int32_t X = static_cast<TItem*>(A)->P, Y = static_cast<TItem*>(B)->P;
  return X < Y ? -1 : X > Y ? 1 : 0;
}

// The smallest first everywhere, as hpIncreasing.
struct TLater {
  bool operator()(const TItem* A, const TItem* B) const { return A->P > B->P; }
};
using TPair = std::pair<std::int32_t, TItem*>;
struct TLaterPair {
  bool operator()(const TPair& A, const TPair& B) const { return A.first > B.first; }
};

void Check(benchmark::State& State, std::int32_t Last, std::int32_t First) {
  if (First > Last) State.SkipWithError("popped out of order");
}

// Read once at run time, so that no build can call the function directly.
std::int32_t (*volatile RunTimeCompare)(TObject*, TObject*) = ComparePriorities;
struct TLaterByRunTimeCompare {
  std::int32_t (*Compare)(TObject*, TObject*) = RunTimeCompare;
  bool operator()(TItem* A, TItem* B) const { return Compare(A, B) > 0; }
};

// The floor's element: virtual, as the library's are, with an item, an owner and an index.
struct TFloorElement {
  virtual ~TFloorElement() = default;
  TObject* Item = nullptr;
  void* Owner = nullptr;
  std::int32_t Index = 0;
};
// The library's slab, as the queue's pool uses it, without the pool's per-element header.
constexpr std::size_t FloorClass = sizeof(TFloorElement) / detail::TSlab::Granule;
struct TFloorSlot {
  TObject* Item;
  TFloorElement* Element;
};
struct TFloorLater {
  std::int32_t (*Compare)(TObject*, TObject*) = RunTimeCompare;
  bool operator()(const TFloorSlot& A, const TFloorSlot& B) const { return Compare(A.Item, B.Item) > 0; }
};

void BM_FloorSeparateElements(benchmark::State& State) {
  auto& V = Items();
  for (auto _ : State) {
    detail::TSlab Pool(256, SIZE_MAX);
    std::priority_queue<TFloorSlot, std::vector<TFloorSlot>, TFloorLater> Q;
    for (TItem& I : V) {
      auto* E = ::new (Pool.Take(FloorClass)) TFloorElement;
      E->Item = &I;
      E->Owner = &Q;
      Q.push({&I, E});
    }
    std::int32_t First = static_cast<TItem*>(Q.top().Item)->P, Last = First;
    while (!Q.empty()) {
      const TFloorSlot Top = Q.top();
      Q.pop();
      Last = static_cast<TItem*>(Top.Item)->P;
      Top.Element->~TFloorElement();
      Pool.Give(Top.Element, FloorClass);
    }
    Check(State, Last, First);
  }
}

void BM_TIntPriorityQueue(benchmark::State& State) {
  auto& V = Items();
  for (auto _ : State) {
    TIntPriorityQueue Q;
    for (TItem& I : V) Q.Push(&I, I.P);
    std::int32_t First = static_cast<TItem*>(Q.Peek())->P, Last = First;
    while (Q.GetCount() > 0) Last = static_cast<TItem*>(Q.Pop())->P;
    Check(State, Last, First);
  }
}

void BM_TPriorityQueue(benchmark::State& State) {
  auto& V = Items();
  for (auto _ : State) {
    TPriorityQueue Q(ComparePriorities);
    for (TItem& I : V) Q.Push(&I);
    std::int32_t First = static_cast<TItem*>(Q.Peek())->P, Last = First;
    while (Q.GetCount() > 0) Last = static_cast<TItem*>(Q.Pop())->P;
    Check(State, Last, First);
  }
}

// The peers: a container of (priority, object) pairs or of objects compared through them.
template <class TQueue, bool Pairs>
void BM_Peer(benchmark::State& State) {
  auto& V = Items();
  auto Priority = [](const auto& Top) {
    if constexpr (Pairs)
      return Top.second->P;
    else
      return Top->P;
  };
  for (auto _ : State) {
    TQueue Q;
    for (TItem& I : V) {
      if constexpr (Pairs)
        Q.push({I.P, &I});
      else
        Q.push(&I);
    }
    std::int32_t First = Priority(Q.top()), Last = First;
    while (!Q.empty()) {
      Last = Priority(Q.top());
      Q.pop();
    }
    Check(State, Last, First);
  }
}

template <unsigned Arity, class T, class C>
using TDary = boost::heap::d_ary_heap<T, boost::heap::arity<Arity>, boost::heap::compare<C>>;

#define KZ_HEAP_BENCH(...) \
  BENCHMARK(__VA_ARGS__)->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(5)->ReportAggregatesOnly(true)

KZ_HEAP_BENCH(BM_TIntPriorityQueue);
KZ_HEAP_BENCH(BM_Peer<std::priority_queue<TPair, std::vector<TPair>, TLaterPair>, true>)->Name("StdPriorityQueuePairs");
KZ_HEAP_BENCH(BM_Peer<TDary<2, TPair, TLaterPair>, true>)->Name("BoostDaryHeap2Pairs");
KZ_HEAP_BENCH(BM_Peer<TDary<4, TPair, TLaterPair>, true>)->Name("BoostDaryHeap4Pairs");
KZ_HEAP_BENCH(BM_TPriorityQueue);
KZ_HEAP_BENCH(BM_Peer<std::priority_queue<TItem*, std::vector<TItem*>, TLater>, false>)->Name("StdPriorityQueueObjects");
KZ_HEAP_BENCH(BM_Peer<TDary<2, TItem*, TLater>, false>)->Name("BoostDaryHeap2Objects");
KZ_HEAP_BENCH(BM_Peer<TDary<4, TItem*, TLater>, false>)->Name("BoostDaryHeap4Objects");
KZ_HEAP_BENCH(BM_Peer<std::priority_queue<TItem*, std::vector<TItem*>, TLaterByRunTimeCompare>, false>)
    ->Name("StdPriorityQueueRunTimeCompare");
KZ_HEAP_BENCH(BM_FloorSeparateElements)->Name("FloorSeparateElements");

}  // namespace

BENCHMARK_MAIN();
