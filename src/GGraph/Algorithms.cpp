// The algorithms of TGCustomGraph: marking, depth-first search, topological order and shortest
// paths.
#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "DataStructures/ObjectContainers.h"
#include "GGraph/Graphs.h"
#include "GGraph/internal/GraphArrays.h"
#include "GGraph/internal/NodeWalk.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;
using detail::DynamicAs;
using detail::ForEachNode;
using detail::FromNodeOf;
using detail::ToNodeOf;

namespace detail {

// The stack of a running depth-first search: each frame is a node and its next edge.
struct TDepthFirstWalk {
  std::vector<std::pair<TGGraphNode*, std::int32_t>> Frames;
};

// The selection of a shortest-path search: a binary heap of (weight, position in GetNodes
// order) keys. Entries go stale when a node is visited or lowered again and are dropped as
// they surface; nodes never lowered still weigh MaxGraphWeight, so when no live entry is left
// the first open node in position order is the one a scan would pick.
struct TWeightHeap {
  std::vector<std::uint64_t> Heap;
  std::size_t Cursor = 0;

  void Push(TGraphWeight W, std::size_t Slot) {
    Heap.push_back((static_cast<std::uint64_t>(static_cast<std::uint32_t>(W) ^ 0x80000000u) << 32) |
                   static_cast<std::uint32_t>(Slot));
    std::push_heap(Heap.begin(), Heap.end(), std::greater<>());
  }
  // The slot of the lightest entry Live(slot, weight) accepts, else the first slot below
  // Count from the cursor on that Open(slot) accepts, else Count.
  template <class FLive, class FOpen>
  std::size_t Select(std::size_t Count, FLive&& Live, FOpen&& Open) {
    while (!Heap.empty()) {
      const std::uint64_t K = Heap.front();
      const std::size_t Slot = static_cast<std::uint32_t>(K);
      if (Live(Slot, static_cast<TGraphWeight>(static_cast<std::uint32_t>(K >> 32) ^ 0x80000000u))) return Slot;
      std::pop_heap(Heap.begin(), Heap.end(), std::greater<>());
      Heap.pop_back();
    }
    while (Cursor < Count && !Open(Cursor)) ++Cursor;
    return Cursor;
  }
};

// A running shortest-path search whose selection the graph's own ClosestNode answers.
struct TShortestRun {
  TGGraphNode* Start = nullptr;
  std::vector<TWeightedNode*> Nodes;
  TWeightHeap Weights;

  void Lowered(TWeightedNode* N) {
    const std::int32_t Slot = N->FSlot;
    if (Slot < 0 || static_cast<std::size_t>(Slot) >= Nodes.size() || Nodes[static_cast<std::size_t>(Slot)] != N)
      return;
    Weights.Push(N->GetWeight(), static_cast<std::size_t>(Slot));
  }

  TGGraphNode* Select(TGGraphNode* ANode) {
    const std::size_t Slot = Weights.Select(
        Nodes.size(),
        [&](std::size_t I, TGraphWeight W) {
          const TWeightedNode* N = Nodes[I];
          return N != ANode && !N->GetVisited() && N->GetWeight() == W;  // left for the caller to visit
        },
        [&](std::size_t I) { return !Nodes[I]->GetVisited() && Nodes[I] != ANode; });
    return Slot < Nodes.size() ? Nodes[Slot] : ANode;
  }
};

}  // namespace detail

void TGCustomGraph::InitializeNodes(TGGraphNode* StartNode, bool Value) {
  ForEachNode(*this, [&](TGGraphNode* Node) {
    Node->SetVisited(Value);
    auto* W = DynamicAs<TWeightedNode>(Node);
    if (!W) return;
    W->SetWeight(MaxGraphWeight);
    if (!FEnumeratingPaths) return;
    if (!StartNode) RaiseNullAccess(u"start node");
    TStringList& Path = W->PathList();
    Path.Clear();
    Path.AddObject(StartNode->GetCaption(), StartNode);
  });
}

void TGCustomGraph::DepthFirstSearch(TGGraphNode* ANode) {
  if (!ANode) RaiseNullAccess(u"node");
  ANode->SetVisited(true);
  if (FWalk) {  // inside a walk: the node's edges wait on the walk's stack
    FWalk->Frames.emplace_back(ANode, 0);
    return;
  }
  detail::TDepthFirstWalk Walk;
  TRestoreValue<detail::TDepthFirstWalk*> Using(FWalk, &Walk);
  Walk.Frames.emplace_back(ANode, 0);
  while (!Walk.Frames.empty()) {
    auto& [Node, Next] = Walk.Frames.back();
    if (Next >= Node->GetEdgeCount()) {
      Walk.Frames.pop_back();
      continue;
    }
    const TGGraphEdge* E = Node->GetEdge(Next++);
    TGGraphNode* To = ToNodeOf(E);
    TGGraphNode* Neighbour = To == Node ? FromNodeOf(E) : To;
    if (!Neighbour->GetVisited()) DepthFirstSearch(Neighbour);
  }
}

void TGCustomGraph::TraverseFrom(TGGraphNode* StartNode) {
  InitializeNodes(StartNode, false);
  DepthFirstSearch(StartNode);
}

void TGCustomGraph::ModifySuccessor(TGGraphNode*, TGGraphNode* Successor, TGGraphEdge*) {
  if (!Successor) RaiseNullAccess(u"successor");
  Successor->SetWorkTag(WrapSub(Successor->GetWorkTag(), 1));
}

void TGCustomGraph::TopologicalOrder(TStrings& OrderedNodes) {
  FAcyclic = false;
  FNeedAcyclicCheck = false;
  if (auto* List = dynamic_cast<TStringList*>(&OrderedNodes)) List->SetSorted(false);
  if (FDirected && DirectTopologicalOrder(OrderedNodes)) return;
  if (OrderedNodes.GetCount() > 0) OrderedNodes.Clear();
  if (!FDirected) return;
  TKZObjectStack Stack;
  ForEachNode(*this, [&](TGGraphNode* Node) {
    Node->SetWorkTag(Node->GetInDegree());
    if (Node->GetWorkTag() == 0) Stack.Push(Node);
  });
  std::int32_t Count = 0;
  ForEachNode(*this, [&](TGGraphNode*) { ++Count; });
  std::int32_t Ordered = 0;
  for (; Ordered < Count && !Stack.IsEmpty(); ++Ordered) {
    auto* Node = static_cast<TGGraphNode*>(Stack.Pop());
    OrderedNodes.AddObject(Node->GetCaption(), Node);
    for (std::int32_t i = 0; i < Node->GetEdgeCount(); ++i) {
      // The edges and their targets lie all over the heap: ask for them ahead.
      if (i + 8 < Node->GetEdgeCount()) __builtin_prefetch(Node->GetEdge(i + 8));
      if (i + 4 < Node->GetEdgeCount()) __builtin_prefetch(Node->GetEdge(i + 4)->GetToNode());
      TGGraphEdge* E = Node->GetEdge(i);
      TGGraphNode* Successor = ToNodeOf(E);
      ModifySuccessor(Node, Successor, E);
      if (Successor->GetWorkTag() == 0) Stack.Push(Successor);
    }
  }
  if (Ordered == Count) FAcyclic = true;
}

bool TGCustomGraph::DirectTopologicalOrder(TStrings& OrderedNodes) {
  // Only where ModifySuccessor is the library's own decrement and nothing watches the list
  // fill up can the counters live in an array until the end.
  if (!IsExactly<TGGraph>(this) && !IsExactly<TGLabelGraph>(this)) return false;
  if (!detail::UnwatchedStringList(OrderedNodes)) return false;
  detail::TGraphArrays A;
  auto Any = [](auto&&...) { return true; };
  if (!A.Take(*this, false, Any, Any)) return false;
  const std::size_t N = A.Nodes.size();
  std::vector<std::int32_t> Tag(A.InDegree);
  const std::vector<std::int32_t> Order = detail::StackOrder(A, Tag, [](std::size_t, std::size_t, std::size_t) {});
  A.SetTags(Tag);
  // The list is cleared only now: the lines it frees are then at hand for the new ones.
  if (OrderedNodes.GetCount() > 0) OrderedNodes.Clear();
  detail::AddCaptions(static_cast<TStringList&>(OrderedNodes), A, Order);
  if (Order.size() == N) FAcyclic = true;
  return true;
}

std::unique_ptr<TStringList> TGCustomGraph::TopologicalOrder() {
  auto List = std::make_unique<TStringList>();
  TopologicalOrder(*List);
  return List;
}

bool TGCustomGraph::IsAcyclic() {
  if (FNeedAcyclicCheck) (void)TopologicalOrder();
  return FAcyclic;
}

TGGraphNode* TGCustomGraph::ClosestNode(TGGraphNode* ANode, bool Visited) {
  if (FShortestRun && ANode == FShortestRun->Start && !Visited) return FShortestRun->Select(ANode);
  return ScanClosestNode(ANode, Visited);
}

TGGraphNode* TGCustomGraph::ScanClosestNode(TGGraphNode* ANode, bool Visited) {
  if (!ANode) RaiseNullAccess(u"node");
  TWeightedNode* Best = As<TWeightedNode>(ANode);
  TGGraphNode* BestNode = ANode;
  ForEachNode(*this, [&](TGGraphNode* Node) {
    if (Node == ANode || Node->GetVisited() != Visited) return;
    TWeightedNode* W = As<TWeightedNode>(Node);
    if (BestNode == ANode || W->GetWeight() < Best->GetWeight()) {
      Best = W;
      BestNode = Node;
    }
  });
  return BestNode;
}

void TGCustomGraph::Relax(TGGraphNode* U, TGGraphNode* V, TGGraphEdge* E) {
  TWeightedNode* UW = As<TWeightedNode>(U);
  if (UW->GetWeight() == MaxGraphWeight) return;
  const TGraphWeight Sum = WrapAdd(UW->GetWeight(), As<TWeightedEdge>(E)->GetWeight());
  TWeightedNode* VW = As<TWeightedNode>(V);
  if (VW->GetWeight() <= Sum) return;
  VW->SetWeight(Sum);
  if (FEnumeratingPaths) VW->PathList().Assign(&UW->PathList());
  if (FShortestRun) FShortestRun->Lowered(VW);
}

void TGCustomGraph::ShortestPath(TGGraphNode* StartNode) {
  if (!StartNode) RaiseNullAccess(u"start node");
  WithinUpdate(*this, [&] {
    InitializeNodes(StartNode, false);
    if (DirectShortestPath(StartNode)) return;
    detail::TShortestRun Run;
    Run.Start = StartNode;
    bool AllWeighted = true;
    ForEachNode(*this, [&](TGGraphNode* Node) {
      auto* W = DynamicAs<TWeightedNode>(Node);
      if (!W) {
        AllWeighted = false;
        return;
      }
      W->FSlot = static_cast<std::int32_t>(Run.Nodes.size());
      Run.Nodes.push_back(W);
    });
    // With a plain node about, the scan raises where it meets it; keep the scan then.
    TRestoreValue<detail::TShortestRun*> Using(FShortestRun, AllWeighted ? &Run : nullptr);
    const bool Undirected = !FDirected;
    for (std::int32_t i = 0; i < StartNode->GetEdgeCount(); ++i) {
      TGGraphEdge* E = StartNode->GetEdge(i);
      TGGraphNode* To = ToNodeOf(E);
      TGGraphNode* From = FromNodeOf(E);
      TWeightedNode* N = As<TWeightedNode>(Undirected && To == StartNode && From != StartNode ? From : To);
      const TGraphWeight W = As<TWeightedEdge>(E)->GetWeight();
      if (N->GetWeight() > W) {
        N->SetWeight(W);
        if (FShortestRun) FShortestRun->Lowered(N);
      }
    }
    StartNode->SetVisited(true);
    As<TWeightedNode>(StartNode)->SetWeight(0);
    auto Visit = [&](TGGraphNode* U) {
      if (!U) RaiseNullAccess(u"closest node");
      U->SetVisited(true);
      if (FEnumeratingPaths) As<TWeightedNode>(U)->PathList().AddObject(U->GetCaption(), U);
    };
    const std::int32_t Count = GetNodeCount();
    if (Count < 2) return;
    for (std::int32_t k = 0; k < Count - 2; ++k) {
      TGGraphNode* U = ClosestNode(StartNode, false);
      Visit(U);
      for (std::int32_t i = 0; i < U->GetEdgeCount(); ++i) {
        TGGraphEdge* E = U->GetEdge(i);
        TGGraphNode* To = ToNodeOf(E);
        TGGraphNode* From = FromNodeOf(E);
        if (!To->GetVisited() && To != U)
          Relax(U, To, E);
        else if (!From->GetVisited() && From != U)
          Relax(U, From, E);
      }
    }
    Visit(ClosestNode(StartNode, false));
  });
}

bool TGCustomGraph::DirectShortestPath(TGGraphNode* StartNode) {
  // The general loop below over arrays, where the selection and the relaxation are the
  // library's own, no path lists are kept and no handler sees a weight change: then only the
  // final weights and marks can be told, and they are written once at the end.
  if (FEnumeratingPaths || (!IsExactly<TGGraph>(this) && !IsExactly<TGLabelGraph>(this))) return false;
  detail::TGraphArrays A;
  A.WholeNodes = true;
  A.EdgeFields = true;
  std::vector<TGraphWeight> EdgeWeight;
  auto IsWeighted = [](TGGraphNode* Node) {
    return IsExactly<TWeightedNode>(Node) && !Node->GetOnChange();
  };
  auto WeightOf = [&](TGGraphEdge* Edge, std::size_t e) {
    if (e == 0) EdgeWeight.reserve(A.To.size());
    const auto* W = DynamicAs<TWeightedEdge>(Edge);
    if (W) EdgeWeight.push_back(W->GetWeight());
    return W != nullptr;
  };
  if (!A.Take(*this, true, IsWeighted, WeightOf)) return false;
  const std::int32_t Start = A.PositionOf(StartNode);
  if (Start < 0) return false;
  const std::size_t N = A.Nodes.size();
  const auto S = static_cast<std::size_t>(Start);
  std::vector<TGraphWeight> Dist(N, MaxGraphWeight);
  std::vector<char> Seen(N, 0);
  detail::TWeightHeap Weights;
  auto Lower = [&](std::size_t V, TGraphWeight W) {
    Dist[V] = W;
    Weights.Push(W, V);
  };
  auto Select = [&]() -> std::size_t {  // TShortestRun::Select
    const std::size_t V = Weights.Select(
        N, [&](std::size_t I, TGraphWeight W) { return I != S && !Seen[I] && Dist[I] == W; },
        [&](std::size_t I) { return !Seen[I] && I != S; });
    return V < N ? V : S;
  };
  for (auto e = static_cast<std::size_t>(A.First[S]); e < static_cast<std::size_t>(A.First[S + 1]); ++e) {
    const auto To = static_cast<std::size_t>(A.To[e]), From = static_cast<std::size_t>(A.From[e]);
    const std::size_t V = !FDirected && To == S && From != S ? From : To;
    if (Dist[V] > EdgeWeight[e]) Lower(V, EdgeWeight[e]);
  }
  Seen[S] = 1;
  Dist[S] = 0;
  if (const std::int32_t Count = GetNodeCount(); Count >= 2) {
    for (std::int32_t k = 0; k < Count - 2; ++k) {
      const std::size_t U = Select();
      Seen[U] = 1;
      const auto End = static_cast<std::size_t>(A.First[U + 1]);
      for (auto e = static_cast<std::size_t>(A.First[U]); e < End; ++e) {
        const auto To = static_cast<std::size_t>(A.To[e]), From = static_cast<std::size_t>(A.From[e]);
        std::size_t V;
        if (!Seen[To] && To != U) V = To;
        else if (!Seen[From] && From != U) V = From;
        else continue;
        if (Dist[U] == MaxGraphWeight) continue;  // Relax
        const TGraphWeight Sum = WrapAdd(Dist[U], EdgeWeight[e]);
        if (Dist[V] > Sum) Lower(V, Sum);
      }
    }
    Seen[Select()] = 1;
  }
  constexpr std::size_t Ahead = 8;
  for (std::size_t i = 0; i < N; ++i) {
    if (i + Ahead < N) __builtin_prefetch(&static_cast<TWeightedNode*>(A.Nodes[i + Ahead])->FWeight);
    auto* Node = static_cast<TWeightedNode*>(A.Nodes[i]);
    Node->SetWorkTag(Seen[i] ? 1 : 0);
    Node->SetWeight(Dist[i]);  // tells the graph as the general loop's changes do
  }
  return true;
}

void TGCustomGraph::EnumerateShortestPaths(TGGraphNode* StartNode) {
  TRestoreValue<bool> Enumerating(FEnumeratingPaths, true);
  ShortestPath(StartNode);
}

}  // namespace kz
