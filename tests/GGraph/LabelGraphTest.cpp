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
