#include <gtest/gtest.h>

#include "GGraph/GraphSupport.h"

using namespace kztest;

TEST(GGraphLabel, CaptionsAreKeys) {
  TGLabelGraph G(nullptr);
  TGGraphNode* A = G.CreateNode(u"a");
  TGGraphNode* B = G.CreateNode(u"b");
  G.CreateNode(u"TGGraphNode3");
  try {
    (void)G.NewNode();  // named TGGraphNode3 as well
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"Duplicate node names not allowed");
  }
  EXPECT_EQ(G.GetNodeCount(), 3);
  EXPECT_EQ(G.GetNode(u"b"), B);
  EXPECT_THROW((void)G.GetNode(u"zz"), EListError);

  // A rename onto a's caption takes the key over: a stays, unfindable, with its edges.
  B->AddEdge(A);
  B->SetCaption(u"a");
  EXPECT_EQ(G.FindNode(u"a"), B);
  EXPECT_EQ(G.FindNode(u"b"), nullptr);
  EXPECT_EQ(G.GetNodeCount(), 2);
  EXPECT_EQ(A->GetGraph(), &G);
  EXPECT_TRUE(G.RemoveNode(A));  // a itself goes, not the node now called a
  EXPECT_EQ(G.FindNode(u"a"), B);
  EXPECT_EQ(B->GetEdgeCount(), 0);
  A = G.CreateNode(u"x");
  A->AddEdge(B);
  A->SetCaption(u"a");  // b is now the hidden one; the graph frees it (the leak check sees it)
  EXPECT_EQ(G.GetNodeCount(), 2);

  // The sort of the graph's own class (over arrays) and of a subclass (the general loop) agree,
  // also once a hidden node sits at the end of edges.
  struct TGeneral : TGLabelGraph {
    using TGLabelGraph::TGLabelGraph;
  };
  TGLabelGraph Own(nullptr);
  TGeneral General(nullptr);
  std::vector<TGGraphNode*> Nodes[2];
  for (TGLabelGraph* L : {&Own, static_cast<TGLabelGraph*>(&General)}) {
    L->SetDirected(true);
    std::vector<TGGraphNode*>& N = Nodes[L == &Own ? 0 : 1];
    for (auto C : {u"p", u"q", u"r"}) N.push_back(L->CreateNode(C));
    N[0]->AddEdge(N[1]);
    N[1]->AddEdge(N[2]);
    N[0]->AddEdge(N[2]);
  }
  for (int Round = 0; Round < 2; ++Round) {
    std::vector<String> Seen[2];
    for (int g = 0; g < 2; ++g) {
      TGLabelGraph& L = g == 0 ? Own : General;
      Seen[g] = L.TopologicalOrder()->ToStringArray();
      Seen[g].push_back(L.GetAcyclic() ? u"acyclic" : u"cyclic");
      for (TGGraphNode* N : Nodes[g]) Seen[g].push_back(IntToStr(N->GetWorkTag()));
    }
    EXPECT_EQ(Seen[0], Seen[1]) << "round " << Round;
    for (int g = 0; g < 2; ++g) Nodes[g][1]->SetCaption(u"r");  // r is hidden now
  }
}

TEST(GGraphLabel, AHiddenNodeDoesNotKeepAFreedEdge) {
  // b takes a's caption, so the direction change does not visit a, which still lists the edge
  // that arrived while the graph was undirected; freeing the edge must unlist it there too.
  TGLabelGraph G(nullptr);
  G.SetDirected(false);
  TGGraphNode* A = G.CreateNode(u"a");
  TGGraphNode* B = G.CreateNode(u"b");
  B->AddEdge(A);
  B->SetCaption(u"a");
  G.SetDirected(true);
  EXPECT_EQ(A->GetEdgeCount(), 1);
  B->Clear();
  EXPECT_EQ(A->GetEdgeCount(), 0);
  A->Clear();
}

TEST(GGraphLabel, StoredFormRoundTrip) {
  RegisterGraphClasses();
  TGLabelGraph G(nullptr);
  G.SetNodeClass(&TWeightedNode::ClassInfo());
  TGGraphNode* A = G.CreateNode(u"a");
  As<TWeightedEdge>(A->AddEdge(G.CreateNode(u"b")))->SetWeight(9);
  A->AddEdge(A);
  TGLabelGraph L(nullptr);
  Load(Store(G), L);
  ASSERT_EQ(L.GetNodeCount(), 2);
  EXPECT_EQ(L.GetNode(u"a")->GetEdgeCount(), 2);  // each undirected edge stored once
  EXPECT_EQ(L.GetNode(u"b")->GetInDegree(), 1);
  EXPECT_EQ(As<TWeightedEdge>(L.GetNode(u"b")->GetEdge(0))->GetWeight(), 9);
  ExpectConsistent(L);
}
