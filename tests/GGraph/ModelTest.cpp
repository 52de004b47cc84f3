#include <gtest/gtest.h>

#include <cstring>

#include "GGraph/GraphSupport.h"

using namespace kztest;

TEST(GGraphModel, UndirectedMirrorsFollowDirectionChanges) {
  TGGraph G(nullptr);
  TGGraphNode* A = G.CreateNode(u"a");
  TGGraphNode* B = G.CreateNode(u"b");
  TGGraphEdge* AB = A->AddEdge(B);
  A->AddEdge(A);
  EXPECT_EQ(A->GetEdgeCount(), 2);  // a-b and the loop, once
  EXPECT_EQ(B->GetEdgeCount(), 1);
  EXPECT_EQ(A->GetInDegree(), 2);
  EXPECT_EQ(B->GetInDegree(), 1);
  EXPECT_EQ(B->IndexOfEdgeTo(A), 0);
  std::vector<TGGraphNode*> Ends;
  for (TGGraphEdge* E : *B) Ends.push_back(E->GetFromNode());
  EXPECT_EQ(Ends, std::vector<TGGraphNode*>{A});
  std::vector<TGGraphNode*> Nodes;
  for (TGGraphNode* N : G) Nodes.push_back(N);
  EXPECT_EQ(Nodes, (std::vector<TGGraphNode*>{A, B}));
  ExpectConsistent(G);

  G.SetDirected(true);
  EXPECT_EQ(B->GetEdgeCount(), 0);
  EXPECT_EQ(A->GetInDegree(), 1);
  EXPECT_EQ(B->IndexOfEdgeTo(A), -1);
  ExpectConsistent(G);
  EXPECT_EQ(G.GetUpdateNodesCount(), 1);
  // The count is never lowered: a node added now stays inside one update.
  EXPECT_EQ(G.CreateNode(u"late")->GetUpdateCount(), 1);

  G.SetDirected(false);
  EXPECT_EQ(B->GetEdgeCount(), 1);
  EXPECT_EQ(A->GetInDegree(), 3);  // the loop is counted again by the switch
  delete AB;
  EXPECT_EQ(A->GetEdgeCount(), 1);
  EXPECT_EQ(B->GetEdgeCount(), 0);
  EXPECT_EQ(B->GetInDegree(), 0);
  EXPECT_EQ(G.GetUpdateNodesCount(), 2);
}

TEST(GGraphModel, ClearingANodeDropsEveryArrivingEdge) {
  for (TGGraphNodeClass C : {&TGGraphNode::ClassInfo(), &TGLinkedGraphNode::ClassInfo()}) {
    TGGraph G(nullptr);
    G.SetNodeClass(C);
    TGGraphNode* A = G.CreateNode(u"a");
    TGGraphNode* B = G.CreateNode(u"b");
    TGGraphNode* T = G.CreateNode(u"t");
    A->AddEdge(B);  // made undirected: a linked node's incoming list misses it later
    G.SetDirected(true);
    A->AddEdge(T);
    B->AddEdge(T);
    T->AddEdge(A);
    T->Clear();
    EXPECT_EQ(T->GetInDegree(), 0);
    EXPECT_EQ(A->GetEdgeCount(), 1);
    EXPECT_EQ(A->GetInDegree(), 0);
    EXPECT_TRUE(G.RemoveNode(u"b"));  // b's edge out, a's edge in: nothing may point at b
    EXPECT_EQ(A->GetEdgeCount(), 0);
    ExpectConsistent(G);
    EXPECT_EQ(G.GetNodeCount(), 2);
  }
}

TEST(GGraphModel, CaptionsNamesAndLookups) {
  TGGraph G(nullptr);
  EXPECT_EQ(G.NewNode()->GetCaption(), u"TGGraphNode0");
  G.SetNodeClass(&TWeightedNode::ClassInfo());
  EXPECT_EQ(G.NewNode()->GetCaption(), u"TWeightedNode1");
  G.Clear();
  EXPECT_EQ(G.NewNode()->GetCaption(), u"TWeightedNode0");

  TGGraphNode* X1 = G.CreateNode(u"x");
  TGGraphNode* X2 = G.CreateNode(u"x");
  EXPECT_EQ(G.FindNode(u"x"), X1);
  X2->SetCaption(u"y");
  X2->SetCaption(u"x");
  EXPECT_EQ(G.FindNode(u"x"), X1);  // the first in list order, not the last renamed
  EXPECT_EQ(G.FindNode(u"X"), nullptr);
  EXPECT_EQ(G.Extract(X1), X1);
  EXPECT_EQ(X1->GetGraph(), nullptr);
  EXPECT_EQ(G.FindNode(u"x"), X2);
  EXPECT_TRUE(G.RemoveNode(u"x"));
  EXPECT_EQ(G.FindNode(u"x"), nullptr);
  EXPECT_FALSE(G.RemoveNode(u"x"));

  try {
    (void)X1->AddEdge(G.GetNode(0));
    FAIL();
  } catch (const EGraphException& E) {
    EXPECT_EQ(E.Message(), u"Node \"x\" is unconnected to any graph");
  }
  TGGraph Other(nullptr);
  EXPECT_THROW((void)G.GetNode(0)->AddEdge(Other.NewNode()), EGraphException);
  EXPECT_THROW(TGGraphEdge(G.GetNode(0), nullptr), EGraphException);
  delete X1;  // extracted: the caller's

  // Moving a node leaves its edges behind, freed, and its old graph's index.
  TGGraphNode* M = G.CreateNode(u"m");
  G.GetNode(0)->AddEdge(M);
  M->SetGraph(&Other);
  EXPECT_EQ(G.FindNode(u"m"), nullptr);
  EXPECT_EQ(Other.FindNode(u"m"), M);
  EXPECT_EQ(G.GetNode(0)->GetEdgeCount(), 0);
  ExpectConsistent(G);
  ExpectConsistent(Other);
}

TEST(GGraphModel, EventsAndUpdates) {
  TGGraph G(nullptr);
  int Changes = 0, NodeChanges = 0, Added = 0, Removed = 0;
  String Renamed;
  G.SetOnChange([&](TObject*) { ++Changes; });
  G.SetOnNodeChange([&](TObject*, TGGraphNode*) { ++NodeChanges; });
  G.SetOnAddNode([&](TObject*, TGGraphNode*) { ++Added; });
  G.SetOnRemoveNode([&](TObject*, TGGraphNode*) { ++Removed; });
  G.SetOnNodeCaptionChange([&](TObject*, TGGraphNode*, const String& S) { Renamed = S; });
  TGGraphNode* A = G.CreateNode(u"a");
  EXPECT_EQ(Added, 1);
  EXPECT_EQ(Renamed, u"a");
  EXPECT_EQ(Changes, 1);
  G.BeginUpdate();
  TGGraphNode* B = G.CreateNode(u"b");
  A->AddEdge(B);
  EXPECT_EQ(Changes, 1);
  G.EndUpdate();
  EXPECT_EQ(Changes, 2);
  NodeChanges = 0;
  A->BeginUpdate();
  A->AddEdge(B);
  EXPECT_EQ(NodeChanges, 1);  // b heard it, a is updating
  A->EndUpdate();
  EXPECT_EQ(NodeChanges, 2);
  EXPECT_TRUE(G.RemoveNode(B));
  EXPECT_EQ(Removed, 1);
  EXPECT_EQ(A->GetEdgeCount(), 0);
}

TEST(GGraphModel, AssignAndStoredFormRoundTrips) {
  RegisterGraphClasses();
  for (bool Directed : {true, false}) {
    TGGraph G(nullptr);
    G.SetNodeClass(&TWeightedNode::ClassInfo());
    G.SetDirected(Directed);
    auto* A = As<TWeightedNode>(G.CreateNode(u"a"));
    auto* B = As<TWeightedNode>(G.CreateNode(u"b"));
    G.SetNodeClass(&TGLinkedGraphNode::ClassInfo());
    TGGraphNode* C = G.CreateNode(u"c");
    A->SetWeight(7);
    As<TWeightedEdge>(A->AddEdge(B))->SetWeight(-3);
    (void)A->AddEdge(C);
    (void)C->AddEdge(A);

    TGGraph Copy(nullptr), Loaded(nullptr);
    Copy.Assign(&G);
    Load(Store(G), Loaded);
    for (TGGraph* R : {&Copy, &Loaded}) {
      ASSERT_EQ(R->GetNodeCount(), 3);
      EXPECT_EQ(R->GetDirected(), Directed);
      auto* RA = As<TWeightedNode>(R->FindNode(u"a"));
      EXPECT_EQ(RA->GetWeight(), 7);
      EXPECT_EQ(R->FindNode(u"c")->ClassType(), &TGLinkedGraphNode::ClassInfo());
      EXPECT_EQ(RA->GetEdgeCount(), Directed ? 2 : 3);
      EXPECT_EQ(As<TWeightedEdge>(RA->GetEdge(0))->GetWeight(), -3);
      EXPECT_EQ(RA->GetEdge(0)->GetToNode(), R->FindNode(u"b"));
      ExpectConsistent(*R);
    }
  }
  TGGraph G(nullptr);
  EXPECT_THROW(G.Assign(&G), EGraphException);
}

TEST(GGraphModel, BadStoredFormsRaiseAndLeaveAConsistentGraph) {
  RegisterGraphClasses();
  TGGraph G(nullptr);
  G.SetDirected(true);
  G.SetNodeClass(&TWeightedNode::ClassInfo());
  TGGraphNode* A = G.CreateNode(u"a");
  A->AddEdge(G.CreateNode(u"b"));
  const TBytes Good = Store(G);
  // Good with Bytes written at Offset from the end of the first Find.
  auto Patched = [&](const char* Find, std::initializer_list<Byte> Bytes, std::ptrdiff_t Offset) {
    TBytes B = Good;
    auto At = static_cast<std::ptrdiff_t>(B.find(reinterpret_cast<const Byte*>(Find)) + std::strlen(Find)) + Offset;
    for (Byte V : Bytes) B[static_cast<std::size_t>(At++)] = V;
    return B;
  };
  std::vector<TBytes> Bad = {
      Patched("TWeightedNode", {'X'}, -1),        // unknown node class
      Patched("TWeightedEdge", {'X'}, -1),        // unknown edge class
      Patched("TWeightedEdge", {vaInt8, 9}, 2),   // a node position past the nodes read
      Patched("TWeightedEdge", {vaInt8, 0xFF}, 0),  // a negative position
  };
  for (std::size_t n = 0; n < Good.size(); ++n) Bad.push_back(Good.substr(0, n));
  for (const TBytes& B : Bad) {
    TGGraph L(nullptr);
    EXPECT_THROW(Load(B, L), EFilerError);
    ExpectConsistent(L);
  }
  TBytes Renamed = Good;  // a registered class that is not a node class
  Renamed.replace(Renamed.find(reinterpret_cast<const Byte*>("TWeightedNode")), 13,
                  reinterpret_cast<const Byte*>("TWeightedEdge"));
  TGGraph L(nullptr);
  try {
    Load(Renamed, L);
    FAIL();
  } catch (const EReadError& E) {
    EXPECT_NE(E.Message().find(u"is not a graph node class"), String::npos);
  }
}
