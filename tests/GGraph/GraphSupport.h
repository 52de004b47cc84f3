// Helpers of the graph tests: invariant checks over a whole graph and stored-form round trips.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "ActivityNetwork/ActivityNetwork.h"
#include "GGraph/GGraph.h"
#include "Runtime/Text.h"
#include "Runtime/Filer.h"

namespace kztest {
using namespace kz;

inline std::vector<TGGraphNode*> NodesOf(const TGCustomGraph& G) {
  std::vector<TGGraphNode*> R;
  TIntfPtr<IObjectIterator> It = G.GetNodes();
  while (It->HasMoreElements()) R.push_back(static_cast<TGGraphNode*>(It->NextElementO()));
  return R;
}

// Every listing is at an end of its edge, every edge sits at its FromNode, undirected edges
// also at their ToNode, and in-degrees count what arrives.
inline void ExpectConsistent(const TGCustomGraph& G) {
  const std::vector<TGGraphNode*> Nodes = NodesOf(G);
  for (TGGraphNode* N : Nodes) {
    EXPECT_EQ(N->GetGraph(), &G);
    std::int32_t Arriving = 0;
    for (TGGraphNode* M : Nodes)
      for (TGGraphEdge* E : *M->GetEdges()) {
        ASSERT_TRUE(E->GetFromNode() == M || E->GetToNode() == M);
        if (E->GetFromNode() == M && E->GetToNode() == N) ++Arriving;
        if (!G.GetDirected() && E->GetToNode() == M && E->GetFromNode() == N && M != N) ++Arriving;
        if (E->GetFromNode() == M && !G.GetDirected()) {
          EXPECT_GE(E->GetToNode()->IndexOfEdge(E), 0);
        }
      }
    EXPECT_EQ(N->GetInDegree(), Arriving) << StringToUtf8(N->GetCaption());
  }
}

inline TBytes Store(TGCustomGraph& G) {
  TBytesStream M;
  TWriter(&M).WriteRootComponent(&G);
  return M.GetBytes();
}

inline void Load(const TBytes& B, TGCustomGraph& G) {
  TBytesStream M(B);
  TReader(&M).ReadRootComponent(&G);
}

inline void RegisterGraphClasses() {
  GGraph::Initialize();
  ActivityNetwork::Initialize();
}

}  // namespace kztest
