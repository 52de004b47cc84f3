// Linked containers against the standard ones: queue and stack push+pop of 1M items against
// std::deque, the priority queue fed in priority order (its O(1) case) against
// std::priority_queue, and an ascending Item[i] loop over 100K nodes against walking a
// std::list (and, for scale, the queue against std::list too). Each row builds and empties its container inside the timed loop, except the
// Item[i] rows, which read a list built once.
#include <benchmark/benchmark.h>

#include <deque>
#include <functional>
#include <list>
#include <queue>
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
KZ_ROW(BM_Linked_PushPop<TGStack>);
KZ_ROW(BM_Deque_Stack_PushPop);
KZ_ROW(BM_TGPriorityQueue_InOrder);
KZ_ROW(BM_StdPriorityQueue_InOrder);
KZ_ROW(BM_TGLinkedList_ItemLoop)->Unit(benchmark::kMicrosecond);
KZ_ROW(BM_StdList_Iterate)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
