// Graphs against Boost.Graph and a plain pass: the topological order of a random DAG with 1M
// edges against boost::topological_sort, single-source shortest paths on a sparse 100K-node
// graph against boost::dijkstra_shortest_paths, and the critical path of a 100K-task network
// against a longest-path pass over a compressed adjacency array written here. Every graph is
// built once; the timed loop runs the algorithm alone.
#include <benchmark/benchmark.h>

#include <boost/graph/adjacency_list.hpp>
#include <boost/graph/dijkstra_shortest_paths.hpp>
#include <boost/graph/topological_sort.hpp>

#include <algorithm>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

#include "ActivityNetwork/ActivityNetwork.h"

using namespace kz;

namespace {

struct TEdgeList {
  std::int32_t Nodes;
  std::vector<std::pair<std::int32_t, std::int32_t>> Edges;
  std::vector<std::int32_t> Weights;
};

// Edges from lower to higher rank in a shuffled ranking: acyclic, in no helpful order.
TEdgeList RandomDag(std::int32_t Nodes, std::int32_t Edges, unsigned Rng0) {
  std::mt19937 Rng(Rng0);
  std::vector<std::int32_t> Rank(static_cast<std::size_t>(Nodes));
  for (std::int32_t i = 0; i < Nodes; ++i) Rank[static_cast<std::size_t>(i)] = i;
  std::shuffle(Rank.begin(), Rank.end(), Rng);
  TEdgeList L{Nodes, {}, {}};
  while (static_cast<std::int32_t>(L.Edges.size()) < Edges) {
    auto A = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Nodes));
    auto B = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Nodes));
    if (A == B) continue;
    if (A > B) std::swap(A, B);
    L.Edges.emplace_back(Rank[static_cast<std::size_t>(A)], Rank[static_cast<std::size_t>(B)]);
    L.Weights.push_back(static_cast<std::int32_t>(1 + Rng() % 100));
  }
  return L;
}

// Random sparse graph: a ring for reachability plus random edges.
TEdgeList SparseGraph(std::int32_t Nodes, std::int32_t Extra, unsigned Rng0) {
  std::mt19937 Rng(Rng0);
  TEdgeList L{Nodes, {}, {}};
  for (std::int32_t i = 0; i < Nodes; ++i) L.Edges.emplace_back(i, (i + 1) % Nodes);
  for (std::int32_t e = 0; e < Extra; ++e)
    L.Edges.emplace_back(static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Nodes)),
                         static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Nodes)));
  for (std::size_t e = 0; e < L.Edges.size(); ++e) L.Weights.push_back(static_cast<std::int32_t>(1 + Rng() % 1000));
  return L;
}

template <class TGraph>
std::unique_ptr<TGraph> Build(const TEdgeList& L, TGGraphNodeClass NodeClass) {
  auto G = std::make_unique<TGraph>(nullptr);
  G->SetDirected(true);
  G->SetNodeClass(NodeClass);
  for (std::int32_t i = 0; i < L.Nodes; ++i) G->NewNode();
  for (std::size_t e = 0; e < L.Edges.size(); ++e) {
    TGGraphEdge* E = G->GetNode(L.Edges[e].first)->AddEdge(G->GetNode(L.Edges[e].second));
    if (auto* W = dynamic_cast<TWeightedEdge*>(E)) W->SetWeight(L.Weights[e]);
  }
  return G;
}

using TBoostDag = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS>;
using TBoostWeighted = boost::adjacency_list<boost::vecS, boost::vecS, boost::directedS, boost::no_property,
                                             boost::property<boost::edge_weight_t, std::int32_t>>;

const TEdgeList& Dag() {
  static const TEdgeList L = RandomDag(100000, 1000000, 1);
  return L;
}
const TEdgeList& Sparse() {
  static const TEdgeList L = SparseGraph(100000, 400000, 2);
  return L;
}
const TEdgeList& Project() {
  static const TEdgeList L = RandomDag(25000, 100000, 3);
  return L;
}

void TopologicalOrder_KZ(benchmark::State& State) {
  static const auto G = Build<TGGraph>(Dag(), &TGGraphNode::ClassInfo());
  TStringList Order;
  for (auto _ : State) {
    G->TopologicalOrder(Order);
    benchmark::DoNotOptimize(Order.GetCount());
  }
  if (!G->GetAcyclic()) State.SkipWithError("not acyclic");
}

void TopologicalOrder_Boost(benchmark::State& State) {
  static const TBoostDag G(Dag().Edges.begin(), Dag().Edges.end(), static_cast<std::size_t>(Dag().Nodes));
  std::vector<std::size_t> Order;
  Order.reserve(static_cast<std::size_t>(Dag().Nodes));
  for (auto _ : State) {
    Order.clear();
    boost::topological_sort(G, std::back_inserter(Order));
    benchmark::DoNotOptimize(Order.data());
  }
}

void ShortestPath_KZ(benchmark::State& State) {
  static const auto G = Build<TGGraph>(Sparse(), &TWeightedNode::ClassInfo());
  for (auto _ : State) {
    G->ShortestPath(G->GetNode(0));
    benchmark::DoNotOptimize(As<TWeightedNode>(G->GetNode(1))->GetWeight());
  }
}

void ShortestPath_Boost(benchmark::State& State) {
  static const TBoostWeighted G(Sparse().Edges.begin(), Sparse().Edges.end(), Sparse().Weights.begin(),
                                static_cast<std::size_t>(Sparse().Nodes));
  std::vector<std::int32_t> Dist(static_cast<std::size_t>(Sparse().Nodes));
  for (auto _ : State) {
    boost::dijkstra_shortest_paths(G, 0, boost::distance_map(Dist.data()));
    benchmark::DoNotOptimize(Dist.data());
  }
}

void CriticalPath_KZ(benchmark::State& State) {
  static const auto N = Build<TActivityNetwork>(Project(), &TAOEEvent::ClassInfo());
  TStringList Critical;
  std::int32_t PathTime = 0;
  for (auto _ : State) {
    N->GetCriticalActivities(nullptr, nullptr, Critical, PathTime);
    benchmark::DoNotOptimize(PathTime);
  }
}

// The same schedule over arrays: Kahn's order, forward pass, backward pass, slack.
void CriticalPath_Plain(benchmark::State& State) {
  const TEdgeList& L = Project();
  const auto N = static_cast<std::size_t>(L.Nodes);
  std::vector<std::int32_t> Start(N + 1), Target(L.Edges.size()), Weight(L.Edges.size());
  for (const auto& E : L.Edges) ++Start[static_cast<std::size_t>(E.first) + 1];
  for (std::size_t i = 0; i < N; ++i) Start[i + 1] += Start[i];
  std::vector<std::int32_t> Fill(Start.begin(), Start.end() - 1);
  for (std::size_t e = 0; e < L.Edges.size(); ++e) {
    const auto At = static_cast<std::size_t>(Fill[static_cast<std::size_t>(L.Edges[e].first)]++);
    Target[At] = L.Edges[e].second;
    Weight[At] = L.Weights[e];
  }
  std::vector<std::int32_t> InDegree(N), Order(N), Earliest(N), Latest(N);
  for (auto _ : State) {
    std::fill(InDegree.begin(), InDegree.end(), 0);
    for (std::int32_t T : Target) ++InDegree[static_cast<std::size_t>(T)];
    std::size_t Head = 0, Tail = 0;
    for (std::size_t v = 0; v < N; ++v)
      if (InDegree[v] == 0) Order[Tail++] = static_cast<std::int32_t>(v);
    std::fill(Earliest.begin(), Earliest.end(), 0);
    while (Head < Tail) {
      const auto v = static_cast<std::size_t>(Order[Head++]);
      for (auto e = static_cast<std::size_t>(Start[v]); e < static_cast<std::size_t>(Start[v + 1]); ++e) {
        const auto w = static_cast<std::size_t>(Target[e]);
        Earliest[w] = std::max(Earliest[w], Earliest[v] + Weight[e]);
        if (--InDegree[w] == 0) Order[Tail++] = static_cast<std::int32_t>(w);
      }
    }
    std::size_t Critical = 0;
    for (std::size_t i = Tail; i-- > 0;) {
      const auto v = static_cast<std::size_t>(Order[i]);
      std::int32_t Late = i + 1 == Tail ? Earliest[v] : 2147483647;
      for (auto e = static_cast<std::size_t>(Start[v]); e < static_cast<std::size_t>(Start[v + 1]); ++e)
        Late = std::min(Late, Latest[static_cast<std::size_t>(Target[e])] - Weight[e]);
      Latest[v] = Late;
    }
    for (std::size_t v = 0; v < N; ++v)
      for (auto e = static_cast<std::size_t>(Start[v]); e < static_cast<std::size_t>(Start[v + 1]); ++e)
        Critical += Latest[static_cast<std::size_t>(Target[e])] - Weight[e] == Earliest[v];
    benchmark::DoNotOptimize(Critical);
  }
}

}  // namespace

BENCHMARK(TopologicalOrder_KZ)->Unit(benchmark::kMillisecond);
BENCHMARK(TopologicalOrder_Boost)->Unit(benchmark::kMillisecond);
BENCHMARK(ShortestPath_KZ)->Unit(benchmark::kMillisecond);
BENCHMARK(ShortestPath_Boost)->Unit(benchmark::kMillisecond);
BENCHMARK(CriticalPath_KZ)->Unit(benchmark::kMillisecond);
BENCHMARK(CriticalPath_Plain)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
