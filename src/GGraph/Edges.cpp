#include "GGraph/Edges.h"

#include "GGraph/Graphs.h"
#include "Runtime/Filer.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;

TGGraphEdge::TGGraphEdge(TGGraphNode* AFromNode, TGGraphNode* AToNode) {
  // Both ends in one graph keeps every edge inside the graph that frees it.
  if (!AFromNode || !AToNode || !AFromNode->GetGraph() || AFromNode->GetGraph() != AToNode->GetGraph())
    throw EGraphException(SEdgeNodes);
  FFromNode = AFromNode;
  FToNode = AToNode;
  const std::int32_t FromDegree = AFromNode->FInDegree, ToDegree = AToNode->FInDegree;
  try {
    AFromNode->AddingEdgeTo(AToNode, this);
    AToNode->AddingEdgeFrom(AFromNode, this);
  } catch (...) {
    // A handler raised half-way: leave no listing behind, since the edge will not exist.
    if (FListedAtFrom) FFromNode->FEdges.RemoveEdge(this);
    if (FListedAtTo) FToNode->FEdges.RemoveEdge(this);
    if (auto* L = dynamic_cast<TGLinkedGraphNode*>(FToNode)) L->GetInEdges()->RemoveEdge(this, true);
    AFromNode->FInDegree = FromDegree;
    AToNode->FInDegree = ToDegree;
    throw;
  }
}

TGGraphEdge::~TGGraphEdge() {
  if (FFromNode && FToNode) {
    FFromNode->RemovingEdgeTo(FToNode, this);
    FToNode->RemovingEdgeFrom(FFromNode, this);
  } else if (FFromNode && FListedAtFrom) {
    FFromNode->FEdges.RemoveEdge(this);
  }
  // The far end unlists the edge only while the graph is undirected; one that listed it before
  // the direction changed and kept it (a node the change did not visit) must not keep it.
  if (FToNode && FListedAtTo) FToNode->FEdges.RemoveEdge(this);
}

void TGGraphEdge::Assign(TPersistent* Source) {
  if (dynamic_cast<TGGraphEdge*>(Source)) return;
  inherited::Assign(Source);
}

void TGGraphEdge::ReadData(TReader*) {}

void TGGraphEdge::WriteData(TWriter*) {}

void TGGraphEdge::FastClear(TGGraphNode* Node) {
  if (Node && Node->IsUndirected() && FToNode && FToNode != Node && FToNode != FFromNode && FListedAtTo) {
    FToNode->FEdges.RemoveEdge(this);
    FListedAtTo = false;
  }
  if (FFromNode == Node) FFromNode = nullptr;
  FToNode = nullptr;
}

void TGGraphEdge::Change() {
  if (FFromNode) FFromNode->Change();
  if (FToNode && FToNode != FFromNode) FToNode->Change();
}

void TWeightedEdge::SetWeight(TGraphWeight Value) {
  if (Value == FWeight) return;
  FWeight = Value;
  Change();
}

void TWeightedEdge::Assign(TPersistent* Source) {
  if (auto* E = dynamic_cast<TWeightedEdge*>(Source)) {
    SetWeight(E->GetWeight());
    return;
  }
  inherited::Assign(Source);
}

void TWeightedEdge::ReadData(TReader* Reader) {
  inherited::ReadData(Reader);
  SetWeight(Reader->ReadInteger());
}

void TWeightedEdge::WriteData(TWriter* Writer) {
  inherited::WriteData(Writer);
  Writer->WriteInteger(FWeight);
}

bool TGGraphEdges::RemoveEdge(TGGraphEdge* Edge, bool FromBack) {
  const std::int32_t N = GetCount();
  for (std::int32_t k = 0; k < N; ++k) {
    const std::int32_t i = FromBack ? N - 1 - k : k;
    if (GetItem(i) == Edge) {
      Delete(i);
      return true;
    }
  }
  return false;
}

}  // namespace kz
