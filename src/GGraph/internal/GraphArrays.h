// A graph's nodes and edges laid out in arrays for the length of one algorithm run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <typeinfo>
#include <vector>

#include "GGraph/Graphs.h"
#include "GGraph/internal/NodeWalk.h"
#include "Runtime/ListStorage.h"
#include "Runtime/StringLists.h"

namespace kz::detail {

// The algorithms' hot loops follow edges from node to node; with the objects spread over the
// heap every step is a cache miss. Taking the graph into arrays first walks the objects once
// in list order, where the next ones are known and fetched ahead, and leaves the run itself
// on contiguous memory.
struct TGraphArrays {
  std::vector<TGGraphNode*> Nodes;  // GetNodes order
  std::vector<std::int32_t> First;  // node i's edges are First[i] .. First[i + 1] - 1
  std::vector<TGGraphEdge*> Edges;  // each node's edge list in order
  std::vector<std::int32_t> To;     // position of each edge's ToNode in Nodes
  std::vector<std::int32_t> From;   // position of each edge's FromNode (when asked for)
  std::vector<std::int32_t> Tags;   // each node's WorkTag as it was before Take
  std::vector<std::int32_t> InDegree;
  bool WholeNodes = false;  // NodeOk reads past a node's first lines: fetch them too

  // Numbers every node through its WorkTag (the run must set each one before it returns,
  // or call Restore). False, with the tags restored, when NodeOk(node) or EdgeOk(edge,
  // index) refuses, or an edge leads to a node GetNodes does not show. ShowsAll says that
  // GetNodes shows every node the graph keeps, so that a node of the graph is known to be
  // numbered without a look into Nodes.
  template <class TNodeOk, class TEdgeOk>
  bool Take(const TGCustomGraph& Graph, bool ShowsAll, bool WithFrom, TNodeOk&& NodeOk, TEdgeOk&& EdgeOk) {
    FGraph = &Graph;
    FShowsAll = ShowsAll;
    ForEachNode(Graph, [&](TGGraphNode* Node) { Nodes.push_back(Node); });
    const std::size_t N = Nodes.size();
    First.resize(N + 1);
    Tags.resize(N);
    InDegree.resize(N);
    // Each step is short next to a miss: ask for the objects well ahead.
    constexpr std::size_t Ahead = 16;
    for (std::size_t i = 0; i < N; ++i) {
      if (i + Ahead < N) {
        const char* Next = reinterpret_cast<const char*>(Nodes[i + Ahead]);
        __builtin_prefetch(Next);
        if constexpr (sizeof(TGGraphNode) > 64) __builtin_prefetch(Next + 64);
        if constexpr (sizeof(TGGraphNode) > 128)
          if (WholeNodes) __builtin_prefetch(Next + 128);
      }
      if (i + Ahead / 2 < N) {
        const TGGraphEdges& Next = *Nodes[i + Ahead / 2]->GetEdges();
        if (Next.GetCount() > 0) __builtin_prefetch(&*Next.begin());
      }
      TGGraphNode* Node = Nodes[i];
      Tags[i] = Node->GetWorkTag();
      InDegree[i] = Node->GetInDegree();
      Node->SetWorkTag(static_cast<std::int32_t>(i));
      First[i] = static_cast<std::int32_t>(Edges.size());
      if (!NodeOk(Node)) return Refuse(i + 1);
      const TGGraphEdges& List = *Node->GetEdges();
      Edges.insert(Edges.end(), List.begin(), List.end());
      if (Edges.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return Refuse(i + 1);
    }
    First[N] = static_cast<std::int32_t>(Edges.size());
    const std::size_t M = Edges.size();
    To.resize(M);
    if (WithFrom) From.resize(M);
    for (std::size_t e = 0; e < M; ++e) {
      if (e + 4 * Ahead < M) __builtin_prefetch(Edges[e + 4 * Ahead]);
      if (e + 2 * Ahead < M) {
        const TGGraphEdge* Next = Edges[e + 2 * Ahead];
        if (TGGraphNode* T = Next->GetToNode()) __builtin_prefetch(T);
        if (WithFrom)
          if (TGGraphNode* F = Next->GetFromNode()) __builtin_prefetch(F);
      }
      TGGraphEdge* E = Edges[e];
      if (!EdgeOk(E, e)) return Refuse(N);
      const std::int32_t T = PositionOf(E->GetToNode());
      if (T < 0) return Refuse(N);
      To[e] = T;
      if (WithFrom) {
        const std::int32_t F = PositionOf(E->GetFromNode());
        if (F < 0) return Refuse(N);
        From[e] = F;
      }
    }
    return true;
  }

  // Puts back the WorkTags Take found.
  void Restore() { Restore(Nodes.size()); }

  // The node's position, or -1 for a node that is not in Nodes (or none).
  std::int32_t PositionOf(const TGGraphNode* Node) const {
    if (!Node || Node->GetGraph() != FGraph) return -1;
    const std::int32_t P = Node->GetWorkTag();
    if (P < 0 || static_cast<std::size_t>(P) >= Nodes.size()) return -1;
    if (!FShowsAll && Nodes[static_cast<std::size_t>(P)] != Node) return -1;
    return P;
  }

 private:
  const TGCustomGraph* FGraph = nullptr;
  bool FShowsAll = false;

  void Restore(std::size_t Count) {
    for (std::size_t i = 0; i < Count; ++i) Nodes[i]->SetWorkTag(Tags[i]);
  }
  bool Refuse(std::size_t Numbered) {
    Restore(Numbered);
    return false;
  }
};

// TopologicalOrder's loop over the arrays: nodes whose tag is 0 are ready (first in position
// order), the last ready is taken first, each of its edges counts its target's tag down, then
// OnEdge(node, edge, target), and a target whose tag is now 0 becomes ready. Answers the nodes
// in the order taken, at most all of them.
template <class TOnEdge>
std::vector<std::int32_t> StackOrder(const TGraphArrays& A, std::vector<std::int32_t>& Tag, TOnEdge&& OnEdge) {
  const std::size_t N = A.Nodes.size();
  std::vector<std::int32_t> Stack, Order;
  Order.reserve(N);
  for (std::size_t i = 0; i < N; ++i)
    if (Tag[i] == 0) Stack.push_back(static_cast<std::int32_t>(i));
  while (Order.size() < N && !Stack.empty()) {
    const auto V = static_cast<std::size_t>(Stack.back());
    Stack.pop_back();
    Order.push_back(static_cast<std::int32_t>(V));
    const auto End = static_cast<std::size_t>(A.First[V + 1]);
    for (auto e = static_cast<std::size_t>(A.First[V]); e < End; ++e) {
      const auto W = static_cast<std::size_t>(A.To[e]);
      Tag[W] = WrapSub(Tag[W], 1);
      OnEdge(V, e, W);
      if (Tag[W] == 0) Stack.push_back(static_cast<std::int32_t>(W));
    }
  }
  return Order;
}

// True when List is a plain string list that nobody watches: lines put into it in another
// order of events than one by one cannot be told apart.
inline bool UnwatchedStringList(const TStrings& List) {
  if (typeid(List) != typeid(TStringList)) return false;
  const auto& L = static_cast<const TStringList&>(List);
  return !L.GetOnChange() && !L.GetOnChanging();
}

// Adds (caption, node) lines for Nodes[Order[k]] to a plain string list, fetching the nodes
// and captions ahead; with Tags, also sets each listed node's WorkTag from it (saving a pass
// over the nodes). The list grows once, to the capacity its own steps would have reached.
inline void AddCaptions(TStringList& List, const std::vector<TGGraphNode*>& Nodes,
                        const std::vector<std::int32_t>& Order, const std::vector<std::int32_t>* Tags = nullptr) {
  constexpr std::size_t Ahead = 16;
  const std::size_t N = Order.size();
  const std::int64_t Needed = static_cast<std::int64_t>(List.GetCount()) + static_cast<std::int64_t>(N);
  std::int64_t Capacity = List.GetCapacity();
  while (Capacity < Needed && Capacity <= MaxListSize) Capacity += ListGrowDelta(static_cast<std::int32_t>(Capacity));
  if (Capacity > List.GetCapacity() && Capacity <= MaxListSize) List.SetCapacity(static_cast<std::int32_t>(Capacity));
  for (std::size_t k = 0; k < N; ++k) {
    if (k + 4 * Ahead < N) __builtin_prefetch(&Nodes[static_cast<std::size_t>(Order[k + 4 * Ahead])]);
    if (k + 2 * Ahead < N) __builtin_prefetch(Nodes[static_cast<std::size_t>(Order[k + 2 * Ahead])]);
    if (k + Ahead < N) __builtin_prefetch(Nodes[static_cast<std::size_t>(Order[k + Ahead])]->GetCaption().data());
    const auto V = static_cast<std::size_t>(Order[k]);
    TGGraphNode* Node = Nodes[V];
    if (Tags) Node->SetWorkTag((*Tags)[V]);
    List.AddObject(Node->GetCaption(), Node);
  }
}

}  // namespace kz::detail
