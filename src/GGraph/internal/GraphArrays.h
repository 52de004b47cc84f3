// A graph's nodes and edges laid out in arrays for the length of one algorithm run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "GGraph/Graphs.h"
#include "GGraph/internal/NodeWalk.h"
#include "Runtime/ListStorage.h"
#include "Runtime/StringLists.h"

namespace kz::detail {

// The algorithms' hot loops follow edges from node to node; with the objects spread over the
// heap every step is a cache miss. Taking the graph into arrays first walks the objects once
// in list order, where the next ones are known and fetched ahead, and leaves the run itself
// on contiguous memory. An edge's ends are numbered through a table of the listed nodes
// (a few MiB that stay in cache) rather than by reading each end node again.
struct TGraphArrays {
  std::vector<TGGraphNode*> Nodes;  // GetNodes order
  std::vector<std::int32_t> First;  // node i's edges are First[i] .. First[i + 1] - 1
  std::vector<TGGraphEdge*> Edges;  // each node's edge list in order
  std::vector<std::int32_t> To;     // position of each edge's ToNode in Nodes
  std::vector<std::int32_t> From;   // position of each edge's FromNode (when asked for)
  std::vector<std::int32_t> InDegree;
  bool WholeNodes = false;  // NodeOk reads past a node's first lines: fetch them too
  bool EdgeFields = false;  // EdgeOk reads the edge's class and fields: fetch its first 48 bytes

  // Fills the arrays; no object is written. False when NodeOk(node) or EdgeOk(edge, index)
  // refuses, or an edge leads to a node GetNodes does not show. EdgeOk is called in edge
  // order, To already at its full size.
  template <class TNodeOk, class TEdgeOk>
  bool Take(const TGCustomGraph& Graph, bool WithFrom, TNodeOk&& NodeOk, TEdgeOk&& EdgeOk) {
    if (const std::int32_t Count = Graph.GetNodeCount(); Count > 0) Nodes.reserve(static_cast<std::size_t>(Count));
    ForEachNode(Graph, [&](TGGraphNode* Node) { Nodes.push_back(Node); });
    const std::size_t N = Nodes.size();
    if (N > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) / 4) return false;
    FByOrder = N > 0;
    if (FByOrder) FBase = Nodes[0]->FOrder;
    First.resize(N + 1);
    InDegree.resize(N);
    std::vector<TGGraphEdge* const*> Lists(N, nullptr);
    // Each step is short next to a miss: ask for the objects well ahead.
    constexpr std::size_t Ahead = 16;
    std::size_t Total = 0;
    for (std::size_t i = 0; i < N; ++i) {
      if (i + Ahead < N) {
        const TGGraphNode* Next = Nodes[i + Ahead];
        __builtin_prefetch(&Next->FInDegree);
        __builtin_prefetch(reinterpret_cast<const char*>(&Next->FEdges) + sizeof(TGGraphEdges) - 1);
        if (WholeNodes) {
          __builtin_prefetch(Next);
          __builtin_prefetch(reinterpret_cast<const char*>(Next) + sizeof(TGGraphNode) - 1);
        }
      }
      TGGraphNode* Node = Nodes[i];
      if (Node->FOrder != FBase + static_cast<std::int64_t>(i)) FByOrder = false;
      InDegree[i] = Node->FInDegree;
      First[i] = static_cast<std::int32_t>(Total);
      if (!NodeOk(Node)) return false;
      const TGGraphEdges& List = Node->FEdges;
      if (List.GetCount() > 0) Lists[i] = &*List.begin();
      Total += static_cast<std::size_t>(List.GetCount());
      if (Total > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) return false;
    }
    First[N] = static_cast<std::int32_t>(Total);
    if (!FByOrder && !MakeTable()) return false;
    const std::size_t M = Total;
    Edges.reserve(M);
    for (std::size_t i = 0; i < N; ++i) {
      if (i + Ahead < N) __builtin_prefetch(Lists[i + Ahead]);
      Edges.insert(Edges.end(), Lists[i], Lists[i] + (First[i + 1] - First[i]));
    }
    To.resize(M);
    if (WithFrom) From.resize(M);
    // The far edges are fetched, the near ones' ends read out of the fetched lines and
    // their table slots fetched.
    constexpr std::size_t Far = 48, Near = 24;
    for (std::size_t v = 0; v < N; ++v) {
      TGGraphNode* Owner = Nodes[v];
      const auto End = static_cast<std::size_t>(First[v + 1]);
      for (auto e = static_cast<std::size_t>(First[v]); e < End; ++e) {
        if (e + Far < M) {
          const TGGraphEdge* Next = Edges[e + Far];
          __builtin_prefetch(&Next->FToNode);
          if (EdgeFields) {
            __builtin_prefetch(Next);
            __builtin_prefetch(reinterpret_cast<const char*>(Next) + 32);
          }
        }
        if (e + Near < M) {
          const TGGraphEdge* Next = Edges[e + Near];
          Fetch(Next->FToNode);
          if (WithFrom) Fetch(Next->FFromNode);
        }
        TGGraphEdge* E = Edges[e];
        if (!EdgeOk(E, e)) return false;
        const std::int32_t T = PositionOf(E->FToNode);
        if (T < 0) return false;
        To[e] = T;
        if (WithFrom) {
          const std::int32_t F = E->FFromNode == Owner ? static_cast<std::int32_t>(v) : PositionOf(E->FFromNode);
          if (F < 0) return false;
          From[e] = F;
        }
      }
    }
    return true;
  }

  // The node's position, or -1 for a node that is not in Nodes (or none).
  std::int32_t PositionOf(const TGGraphNode* Node) const {
    if (!Node) return -1;
    if (FByOrder) {
      // Every listed node sits at its number's offset, so a node found elsewhere is not listed.
      const std::int64_t P = Node->FOrder - FBase;
      return P >= 0 && P < static_cast<std::int64_t>(Nodes.size()) && Nodes[static_cast<std::size_t>(P)] == Node
                 ? static_cast<std::int32_t>(P)
                 : -1;
    }
    for (std::size_t i = Home(Node);; i = (i + 1) & FMask) {
      if (FTable[i].Node == Node) return FTable[i].Position;
      if (!FTable[i].Node) return -1;
    }
  }

  // Writes each listed node's WorkTag from Tag, fetching ahead.
  void SetTags(const std::vector<std::int32_t>& Tag) const {
    constexpr std::size_t Ahead = 16;
    const std::size_t N = Nodes.size();
    for (std::size_t i = 0; i < N; ++i) {
      if (i + Ahead < N) __builtin_prefetch(&Nodes[i + Ahead]->FWorkTag, 1);
      Nodes[i]->FWorkTag = Tag[i];
    }
  }

  // Fetches the node's WorkTag for writing, or its caption's string object.
  static void FetchTag(const TGGraphNode* Node) { __builtin_prefetch(&Node->FWorkTag, 1); }
  static void FetchCaption(const TGGraphNode* Node) { __builtin_prefetch(&Node->FCaption); }

 private:
  // A TGGraph numbers its nodes in list order as they join (FOrder); while no node has left,
  // the numbers run on without a gap and give each node's position by a read of the node,
  // which the edge walk fetches ahead anyway. Otherwise positions come from a table of the
  // listed nodes' addresses.
  bool FByOrder = false;
  std::int64_t FBase = 0;

  void Fetch(const TGGraphNode* Node) const {
    if (!Node) return;
    if (FByOrder)
      __builtin_prefetch(&Node->FOrder);
    else
      __builtin_prefetch(&FTable[Home(Node)]);
  }
  // The table of Nodes; false when a node is listed twice.
  bool MakeTable() {
    const std::size_t N = Nodes.size();
    std::size_t Slots = 16;
    FShift = 60;
    while (Slots < 2 * N) {
      Slots *= 2;
      --FShift;
    }
    FTable.assign(Slots, TSlot{nullptr, 0});
    FMask = Slots - 1;
    constexpr std::size_t Ahead = 16;
    for (std::size_t i = 0; i < N; ++i) {
      if (i + Ahead < N) __builtin_prefetch(&FTable[Home(Nodes[i + Ahead])], 1);
      if (!Insert(Nodes[i], static_cast<std::int32_t>(i))) return false;
    }
    return true;
  }

  struct TSlot {
    const TGGraphNode* Node;
    std::int32_t Position;
  };
  std::vector<TSlot> FTable;  // open addressing, linear probing; a free slot has no node
  std::size_t FMask = 0;
  unsigned FShift = 60;

  // The top bits of the product (Fibonacci hashing): nodes tend to lie at a fixed stride, and
  // bits from the middle of a product of a stride repeat with short periods, crowding the
  // table into long runs.
  std::size_t Home(const TGGraphNode* Node) const {
    return static_cast<std::size_t>((reinterpret_cast<std::uintptr_t>(Node) >> 4) * 0x9E3779B97F4A7C15ull >> FShift);
  }
  bool Insert(const TGGraphNode* Node, std::int32_t Position) {
    std::size_t i = Home(Node);
    for (; FTable[i].Node; i = (i + 1) & FMask)
      if (FTable[i].Node == Node) return false;  // listed twice
    FTable[i] = TSlot{Node, Position};
    return true;
  }
};

// TopologicalOrder's loop over the arrays: nodes whose tag is 0 are ready (first in position
// order), the last ready is taken first, each of its edges counts its target's tag down, then
// OnEdge(node, edge, target), and a target whose tag is now 0 becomes ready. Answers the nodes
// in the order taken, at most all of them.
template <class TOnEdge>
std::vector<std::int32_t> StackOrder(const TGraphArrays& A, std::vector<std::int32_t>& Tags, TOnEdge&& OnEdge) {
  const std::size_t N = A.Nodes.size();
  std::vector<std::int32_t> Stack, Order(N);
  Stack.reserve(N);
  std::int32_t* Tag = Tags.data();
  const std::int32_t* First = A.First.data();
  const std::int32_t* To = A.To.data();
  for (std::size_t i = 0; i < N; ++i)
    if (Tag[i] == 0) Stack.push_back(static_cast<std::int32_t>(i));
  std::size_t Count = 0;
  while (Count < N && !Stack.empty()) {
    const auto V = static_cast<std::size_t>(Stack.back());
    Stack.pop_back();
    Order[Count++] = static_cast<std::int32_t>(V);
    const auto End = static_cast<std::size_t>(First[V + 1]);
    for (auto e = static_cast<std::size_t>(First[V]); e < End; ++e) {
      const auto W = static_cast<std::size_t>(To[e]);
      Tag[W] = WrapSub(Tag[W], 1);
      OnEdge(V, e, W);
      if (Tag[W] == 0) Stack.push_back(static_cast<std::int32_t>(W));
    }
  }
  Order.resize(Count);
  return Order;
}

// True when List is a plain string list that nobody watches: lines put into it in another
// order of events than one by one cannot be told apart.
inline bool UnwatchedStringList(const TStrings& List) {
  if (!IsExactly<TStringList>(&List)) return false;
  const auto& L = static_cast<const TStringList&>(List);
  return !L.GetOnChange() && !L.GetOnChanging();
}

// Adds (caption, node) lines for A.Nodes[Order[k]] to a plain string list, fetching the nodes
// and captions ahead. The list grows once, to the capacity its own steps would have reached.
inline void AddCaptions(TStringList& List, const TGraphArrays& A, const std::vector<std::int32_t>& Order) {
  constexpr std::size_t Ahead = 16;
  const std::size_t N = Order.size();
  const std::int64_t Needed = static_cast<std::int64_t>(List.GetCount()) + static_cast<std::int64_t>(N);
  std::int64_t Capacity = List.GetCapacity();
  while (Capacity < Needed && Capacity <= MaxListSize) Capacity += ListGrowDelta(static_cast<std::int32_t>(Capacity));
  if (Capacity > List.GetCapacity() && Capacity <= MaxListSize) List.SetCapacity(static_cast<std::int32_t>(Capacity));
  const std::vector<TGGraphNode*>& Nodes = A.Nodes;
  for (std::size_t k = 0; k < N; ++k) {
    if (k + 4 * Ahead < N) __builtin_prefetch(&Nodes[static_cast<std::size_t>(Order[k + 4 * Ahead])]);
    if (k + 2 * Ahead < N) TGraphArrays::FetchCaption(Nodes[static_cast<std::size_t>(Order[k + 2 * Ahead])]);
    if (k + Ahead < N) __builtin_prefetch(Nodes[static_cast<std::size_t>(Order[k + Ahead])]->GetCaption().data());
    TGGraphNode* Node = Nodes[static_cast<std::size_t>(Order[k])];
    List.AddObject(Node->GetCaption(), Node);
  }
}

}  // namespace kz::detail
