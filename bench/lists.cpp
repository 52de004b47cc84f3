// Linked containers against the standard ones: queue and stack push+pop of 1M items against
// std::deque, the priority queue fed in priority order (its O(1) case) against
// std::priority_queue, and an ascending Item[i] loop over 100K nodes against walking a
// std::list (and, for scale, the queue against std::list too). Each row builds and empties its
// container inside the timed loop, except the Item[i] rows, which read a list built once. Two
// floor rows show what any linked queue of separate nodes costs here: the least such a queue
// can do, with and without a class pointer and a store word per node.
#include <benchmark/benchmark.h>

#include <deque>
#include <functional>
#include <list>
#include <queue>
#include <type_traits>
#include <vector>

#include "GLists/GLists.h"

using namespace kz;

namespace {

constexpr std::intptr_t PushCount = 1'000'000;
constexpr std::intptr_t LoopCount = 100'000;

TObject* Obj(std::intptr_t I) { return reinterpret_cast<TObject*>(I + 1); }

template <class TLinked>
void BM_Linked_PushPop(benchmark::State& State) {
  TLinked L;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) L.Push(Obj(I));
    while (!L.IsEmpty()) benchmark::DoNotOptimize(L.Pop());
  }
}

void BM_Deque_Queue_PushPop(benchmark::State& State) {
  std::deque<TObject*> D;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) D.push_back(Obj(I));
    while (!D.empty()) {
      benchmark::DoNotOptimize(D.front());
      D.pop_front();
    }
  }
}

void BM_Deque_Stack_PushPop(benchmark::State& State) {
  std::deque<TObject*> D;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) D.push_back(Obj(I));
    while (!D.empty()) {
      benchmark::DoNotOptimize(D.back());
      D.pop_back();
    }
  }
}

// The floor: a linked queue that does nothing beyond linking, with nodes carved in order from
// one block and recycled through a free list that restarts when the queue drains. With
// Objects, each node also carries a class pointer and a store word, as this library's do.
template <bool Objects>
struct TBareQueue {
  struct TBareNode {
    std::uintptr_t Word;
    void* Class;
    TObject* Item;
    TBareNode* Next;
  };
  struct TSmallNode {
    TObject* Item;
    TSmallNode* Next;
  };
  using TNode = std::conditional_t<Objects, TBareNode, TSmallNode>;
  std::vector<TNode> Block = std::vector<TNode>(PushCount);
  std::size_t Carved = 0, Live = 0;
  TNode *Free = nullptr, *Head = nullptr, *Tail = nullptr;

  [[gnu::noinline]] void Grow() { Block.resize(Block.size() * 2); }
  TNode* Push(TObject* Value) {
    TNode* N = Free;
    if (N) {
      Free = N->Next;
    } else {
      if (Carved == Block.size()) Grow();
      N = &Block[Carved++];
    }
    if constexpr (Objects) {
      N->Word = reinterpret_cast<std::uintptr_t>(this) | 6;
      N->Class = this;
    }
    N->Item = Value;
    N->Next = nullptr;
    (Tail ? Tail->Next : Head) = N;
    Tail = N;
    ++Live;
    return N;
  }
  TObject* Pop() {
    TNode* N = Head;
    Head = N->Next;
    if (N == Tail) Tail = nullptr;
    TObject* Result = N->Item;
    N->Next = Free;
    Free = N;
    if (--Live == 0) Free = nullptr, Carved = 0;
    return Result;
  }
};

template <bool Objects>
void BM_Floor_Queue_PushPop(benchmark::State& State) {
  TBareQueue<Objects> Q;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) benchmark::DoNotOptimize(Q.Push(Obj(I)));
    while (Q.Live) benchmark::DoNotOptimize(Q.Pop());
  }
}

// For scale: the standard node-based list, one heap node per item as here.
void BM_StdList_Queue_PushPop(benchmark::State& State) {
  std::list<TObject*> D;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) D.push_back(Obj(I));
    while (!D.empty()) {
      benchmark::DoNotOptimize(D.front());
      D.pop_front();
    }
  }
}

void BM_TGPriorityQueue_InOrder(benchmark::State& State) {
  TGPriorityQueue Q;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) Q.PushP(Obj(I), static_cast<std::int32_t>(I));
    while (!Q.IsEmpty()) benchmark::DoNotOptimize(Q.Pop());
  }
}

void BM_StdPriorityQueue_InOrder(benchmark::State& State) {
  using TEntry = std::pair<std::int32_t, TObject*>;
  std::priority_queue<TEntry, std::vector<TEntry>, std::greater<>> Q;
  for (auto _ : State) {
    for (std::intptr_t I = 0; I < PushCount; ++I) Q.emplace(static_cast<std::int32_t>(I), Obj(I));
    while (!Q.empty()) {
      benchmark::DoNotOptimize(Q.top().second);
      Q.pop();
    }
  }
}

void BM_TGLinkedList_ItemLoop(benchmark::State& State) {
  TGLinkedList L;
  for (std::intptr_t I = 0; I < LoopCount; ++I) L.Add(Obj(I));
  for (auto _ : State)
    for (std::int32_t I = 0; I < LoopCount; ++I) benchmark::DoNotOptimize(L.GetItem(I));
}

void BM_StdList_Iterate(benchmark::State& State) {
  std::list<TObject*> L;
  for (std::intptr_t I = 0; I < LoopCount; ++I) L.push_back(Obj(I));
  for (auto _ : State)
    for (TObject* O : L) benchmark::DoNotOptimize(O);
}

}  // namespace

#define KZ_ROW(Fn) BENCHMARK(Fn)->Unit(benchmark::kMillisecond)->Repetitions(7)->ReportAggregatesOnly(true)

KZ_ROW(BM_Linked_PushPop<TGQueue>);
KZ_ROW(BM_Deque_Queue_PushPop);
KZ_ROW(BM_StdList_Queue_PushPop);
KZ_ROW(BM_Floor_Queue_PushPop<false>)->Name("FloorLinkedQueue16");
KZ_ROW(BM_Floor_Queue_PushPop<true>)->Name("FloorLinkedQueue32");
KZ_ROW(BM_Linked_PushPop<TGStack>);
KZ_ROW(BM_Deque_Stack_PushPop);
KZ_ROW(BM_TGPriorityQueue_InOrder);
KZ_ROW(BM_StdPriorityQueue_InOrder);
KZ_ROW(BM_TGLinkedList_ItemLoop)->Unit(benchmark::kMicrosecond);
KZ_ROW(BM_StdList_Iterate)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
