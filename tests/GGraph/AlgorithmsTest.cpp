#include <gtest/gtest.h>

#include <random>

#include "GGraph/GraphSupport.h"

using namespace kztest;

namespace {

std::vector<String> Lines(const TStrings& L) { return L.ToStringArray(); }

// Counts the sorts, to see when IsAcyclic sorts again.
class TCountingGraph : public TGGraph {
  KZ_CLASS(TCountingGraph, TGGraph)
 public:
  using TGGraph::TGGraph;
  void TopologicalOrder(TStrings& L) override {
    ++Sorts;
    TGGraph::TopologicalOrder(L);
  }
  using TGGraph::TopologicalOrder;
  int Sorts = 0;
};

// Selects by the literal scan; records the depth-first visiting order.
class TScanGraph : public TGGraph {
  KZ_CLASS(TScanGraph, TGGraph)
 public:
  using TGGraph::TGGraph;
  TGGraphNode* ClosestNode(TGGraphNode* ANode, bool Visited) override { return ScanClosestNode(ANode, Visited); }
  void DepthFirstSearch(TGGraphNode* ANode) override {
    Visits.push_back(ANode->GetCaption());
    TGGraph::DepthFirstSearch(ANode);
  }
  std::vector<String> Visits;
};

TWeightedEdge* Link(TGCustomGraph& G, StringView From, StringView To, TGraphWeight W) {
  auto* E = As<TWeightedEdge>(G.FindNode(From)->AddEdge(G.FindNode(To)));
  E->SetWeight(W);
  return E;
}

TWeightedNode* WNode(TGCustomGraph& G, StringView Caption) { return As<TWeightedNode>(G.FindNode(Caption)); }

}  // namespace

TEST(GGraphAlgorithms, TopologicalOrderTieBreakCyclesAndStaleness) {
  TCountingGraph G(nullptr);
  G.SetDirected(true);
  for (auto C : {u"a", u"b", u"c"}) G.CreateNode(C);
  EXPECT_EQ(Lines(*G.TopologicalOrder()), (std::vector<String>{u"c", u"b", u"a"}));  // sources reversed
  G.FindNode(u"a")->AddEdge(G.FindNode(u"b"));
  G.FindNode(u"b")->AddEdge(G.FindNode(u"c"));
  G.Sorts = 0;
  // The nodes were added after the direction change, so their edge changes are silent and
  // the graph does not know it changed (the count of open node updates is never lowered).
  EXPECT_FALSE(G.GetNeedAcyclicCheck());
  EXPECT_TRUE(G.IsAcyclic());
  EXPECT_EQ(G.Sorts, 0);

  TCountingGraph H(nullptr);
  for (auto C : {u"a", u"b", u"c", u"d"}) H.CreateNode(C);
  H.FindNode(u"a")->AddEdge(H.FindNode(u"b"));
  H.FindNode(u"a")->AddEdge(H.FindNode(u"c"));
  H.FindNode(u"b")->AddEdge(H.FindNode(u"d"));
  EXPECT_FALSE(H.IsAcyclic());  // undirected: empty order
  EXPECT_EQ(H.TopologicalOrder()->GetCount(), 0);
  H.SetDirected(true);
  TStringList Sorted;
  Sorted.SetSorted(true);
  Sorted.Add(u"old");
  H.TopologicalOrder(Sorted);
  EXPECT_FALSE(Sorted.GetSorted());
  EXPECT_EQ(Lines(Sorted), (std::vector<String>{u"a", u"c", u"b", u"d"}));  // successors reversed too
  H.Sorts = 0;
  EXPECT_TRUE(H.IsAcyclic());
  EXPECT_TRUE(H.IsAcyclic());
  EXPECT_EQ(H.Sorts, 0);
  H.FindNode(u"d")->AddEdge(H.FindNode(u"a"));
  EXPECT_FALSE(H.IsAcyclic());
  EXPECT_EQ(H.Sorts, 1);
  EXPECT_EQ(H.TopologicalOrder()->GetCount(), 0);
  EXPECT_EQ(H.FindNode(u"a")->GetWorkTag(), 1);  // blocked nodes keep their counters
}

TEST(GGraphAlgorithms, DepthFirstSearchOrderAndLongChains) {
  TScanGraph G(nullptr);
  for (auto C : {u"a", u"b", u"c", u"d", u"e"}) G.CreateNode(C);
  G.FindNode(u"a")->AddEdge(G.FindNode(u"b"));
  G.FindNode(u"a")->AddEdge(G.FindNode(u"c"));
  G.FindNode(u"b")->AddEdge(G.FindNode(u"d"));
  G.FindNode(u"e")->AddEdge(G.FindNode(u"c"));
  G.TraverseFrom(G.FindNode(u"c"));  // undirected: both ways
  EXPECT_EQ(G.Visits, (std::vector<String>{u"c", u"a", u"b", u"d", u"e"}));
  G.SetDirected(true);
  G.Visits.clear();
  G.TraverseFrom(G.FindNode(u"a"));
  EXPECT_EQ(G.Visits, (std::vector<String>{u"a", u"b", u"d", u"c"}));
  EXPECT_FALSE(G.FindNode(u"e")->GetVisited());

  // A million nodes in one path: no recursion, and the sort and the search get through.
  TGGraph Chain(nullptr);
  Chain.SetDirected(true);
  constexpr int N = 1000000;
  TGGraphNode* Prev = Chain.NewNode();
  TGGraphNode* First = Prev;
  for (int i = 1; i < N; ++i) {
    TGGraphNode* Next = Chain.NewNode();
    Prev->AddEdge(Next);
    Prev = Next;
  }
  Chain.TraverseFrom(First);
  EXPECT_TRUE(Prev->GetVisited());
  EXPECT_TRUE(Chain.IsAcyclic());
}

TEST(GGraphAlgorithms, ShortestPathsAndPathLists) {
  TGGraph G(nullptr);
  G.SetNodeClass(&TWeightedNode::ClassInfo());
  for (auto C : {u"s", u"a", u"b", u"x"}) G.CreateNode(C);
  G.SetDirected(true);
  Link(G, u"s", u"a", 5);
  Link(G, u"s", u"b", 1);
  Link(G, u"b", u"a", 2);
  Link(G, u"a", u"x", 2147483647);  // the wrapping sum is negative, never trapping
  G.EnumerateShortestPaths(G.FindNode(u"s"));
  EXPECT_EQ(WNode(G, u"a")->GetWeight(), 3);
  EXPECT_EQ(Lines(*WNode(G, u"a")->GetShortestPath()), (std::vector<String>{u"s", u"b", u"a"}));
  EXPECT_EQ(WNode(G, u"x")->GetWeight(), -2147483646);
  EXPECT_EQ(WNode(G, u"s")->GetWeight(), 0);
  G.RemoveNode(u"x");
  G.CreateNode(u"u");
  G.EnumerateShortestPaths(G.FindNode(u"s"));
  EXPECT_EQ(WNode(G, u"u")->GetWeight(), MaxGraphWeight);
  EXPECT_EQ(Lines(*WNode(G, u"u")->GetShortestPath()), (std::vector<String>{u"s", u"u"}));
  EXPECT_EQ(As<TWeightedNode>(WNode(G, u"s"))->ClosestNode(false), nullptr);  // all visited
  EXPECT_EQ(WNode(G, u"b")->ClosestNode(true), G.FindNode(u"a"));

  TGGraph One(nullptr);
  One.SetNodeClass(&TWeightedNode::ClassInfo());
  One.EnumerateShortestPaths(One.NewNode());
  EXPECT_EQ(As<TWeightedNode>(One.GetNode(0))->GetWeight(), 0);
  EXPECT_EQ(As<TWeightedNode>(One.GetNode(0))->GetShortestPath()->GetCount(), 1);

  TGGraph Plain(nullptr);
  Plain.NewNode()->AddEdge(Plain.NewNode());
  EXPECT_THROW(Plain.ShortestPath(Plain.GetNode(0)), EInvalidCast);
  EXPECT_EQ(Plain.GetUpdateCount(), 0);
}

// The heap selection picks exactly what the scan picks: same weights, same paths, same marks,
// over graphs with unreachable nodes, zero weights, ties, loops, both directions. The graph
// of the library's own class also runs its searches over arrays, the subclass the general
// loops: the topological orders (cycles too) and work tags agree as well, also after a node
// has left the graph.
TEST(GGraphAlgorithms, HeapSelectionMatchesTheScan) {
  std::mt19937 Rng(20240611);
  for (int Round = 0; Round < 400; ++Round) {
    TGGraph Heap(nullptr);
    TScanGraph Scan(nullptr);
    int N = 1 + static_cast<int>(Rng() % 24);
    const bool Directed = Rng() % 2, Paths = Rng() % 2;
    const std::uint32_t MaxW = Rng() % 2 ? 3 : 1000;
    for (TGGraph* G : {static_cast<TGGraph*>(&Heap), static_cast<TGGraph*>(&Scan)}) {
      G->SetNodeClass(&TWeightedNode::ClassInfo());
      G->SetDirected(Directed);
      for (int i = 0; i < N; ++i) G->NewNode();
    }
    const int Edges = static_cast<int>(Rng() % static_cast<std::uint32_t>(3 * N));
    for (int e = 0; e < Edges; ++e) {
      const auto From = static_cast<std::int32_t>(Rng() % N), To = static_cast<std::int32_t>(Rng() % N);
      const auto W = static_cast<TGraphWeight>(Rng() % MaxW);
      for (TGGraph* G : {static_cast<TGGraph*>(&Heap), static_cast<TGGraph*>(&Scan)})
        As<TWeightedEdge>(G->GetNode(From)->AddEdge(G->GetNode(To)))->SetWeight(W);
    }
    if (N > 1 && Rng() % 3 == 0) {  // a node leaves: the others' join numbers have a gap
      const auto Gone = static_cast<std::int32_t>(Rng() % N);
      for (TGGraph* G : {static_cast<TGGraph*>(&Heap), static_cast<TGGraph*>(&Scan)})
        EXPECT_TRUE(G->RemoveNode(G->GetNode(Gone)));
      --N;
    }
    std::vector<String> Orders[2];
    for (int g = 0; g < 2; ++g) {
      TGGraph* G = g == 0 ? static_cast<TGGraph*>(&Heap) : static_cast<TGGraph*>(&Scan);
      TStringList Order;
      Order.AddObject(u"stale", nullptr);
      G->TopologicalOrder(Order);
      Orders[g] = Lines(Order);
      Orders[g].push_back(G->GetAcyclic() ? u"acyclic" : u"cyclic");
      Orders[g].push_back(IntToStr(Order.GetCapacity()));
      for (int i = 0; i < N; ++i) Orders[g].push_back(IntToStr(G->GetNode(i)->GetWorkTag()));
    }
    ASSERT_EQ(Orders[0], Orders[1]) << "round " << Round;
    const auto Start = static_cast<std::int32_t>(Rng() % N);
    for (TGGraph* G : {static_cast<TGGraph*>(&Heap), static_cast<TGGraph*>(&Scan)})
      if (Paths) G->EnumerateShortestPaths(G->GetNode(Start));
      else G->ShortestPath(G->GetNode(Start));
    for (int i = 0; i < N; ++i) {
      auto* H = As<TWeightedNode>(Heap.GetNode(i));
      auto* S = As<TWeightedNode>(Scan.GetNode(i));
      ASSERT_EQ(H->GetWeight(), S->GetWeight()) << "round " << Round << " node " << i;
      ASSERT_EQ(H->GetWorkTag(), S->GetWorkTag());
      if (Paths) {
        ASSERT_EQ(Lines(*H->GetShortestPath()), Lines(*S->GetShortestPath())) << "round " << Round;
      }
    }
  }
}
