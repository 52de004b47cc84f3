#include "GGraph/Nodes.h"

#include "GGraph/Graphs.h"
#include "Runtime/Filer.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;

TGGraphNode::TGGraphNode(TGCustomGraph* AGraph) {
  if (!AGraph) return;
  FCaption = ClassName() + IntToStr(AGraph->NewNodeId());
  SetGraph(AGraph);
}

TGGraphNode::~TGGraphNode() {
  FOnChange = nullptr;
  SetGraph(nullptr);
}

void TGGraphNode::Assign(TPersistent* Source) {
  if (auto* N = dynamic_cast<TGGraphNode*>(Source)) {
    SetCaption(N->GetCaption());
    Change();
    return;
  }
  inherited::Assign(Source);
}

bool* TGGraphNode::ListedFlag(TGGraphEdge* Edge) const {
  if (Edge->FFromNode == this) return &Edge->FListedAtFrom;
  if (Edge->FToNode == this) return &Edge->FListedAtTo;
  return nullptr;
}

bool TGGraphNode::IsUndirected() const { return FGraph && !FGraph->GetDirected(); }

void TGGraphNode::AddingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) {
  ++FInDegree;
  if (IsUndirected() && FromNode == Edge->FFromNode && FromNode != Edge->FToNode) {
    AddingEdgeTo(FromNode, Edge);
    FromNode->AddingEdgeFrom(this, Edge);
  }
}

void TGGraphNode::AddingEdgeTo(TGGraphNode*, TGGraphEdge* Edge) {
  bool* Flag = ListedFlag(Edge);
  // Only an end of the edge may list it: the edge unlinks itself from its ends alone.
  if (!Flag || *Flag) return;
  FEdges.Add(Edge);
  *Flag = true;
  Change();
}

void TGGraphNode::RemovingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) {
  --FInDegree;
  if (IsUndirected() && FromNode == Edge->FFromNode && FromNode != Edge->FToNode) {
    RemovingEdgeTo(FromNode, Edge);
    FromNode->RemovingEdgeFrom(this, Edge);
  }
}

void TGGraphNode::RemovingEdgeTo(TGGraphNode*, TGGraphEdge* Edge) {
  if (bool* Flag = ListedFlag(Edge); Flag && *Flag) {
    FEdges.RemoveEdge(Edge);
    *Flag = false;
  }
  Change();
}

void TGGraphNode::FastClear() {
  // Equivalent to taking index 0 each time, without shifting the list per edge.
  const std::int32_t N = FEdges.GetCount();
  for (std::int32_t i = 0; i < N; ++i) {
    TGGraphEdge* E = FEdges.GetItem(i);
    const bool Mine = E->FFromNode == this;
    E->FastClear(this);
    if (Mine) delete E;
  }
  FEdges.Clear();
  FGraph = nullptr;
}

void TGGraphNode::WriteData(TWriter* Writer) { Writer->WriteString(FCaption); }

void TGGraphNode::ReadData(TReader* Reader) { SetCaption(Reader->ReadString()); }

void TGGraphNode::RemovePredecessors(TGGraphNode* Target) {
  if (!Target) RaiseNullAccess(u"target node");
  for (std::int32_t i = FEdges.GetCount() - 1; i >= 0 && Target->FInDegree > 0; --i) {
    if (i >= FEdges.GetCount()) continue;
    if (FEdges.GetItem(i)->FToNode == Target) RemoveEdge(i);
  }
}

TGGraphEdge* TGGraphNode::NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode) {
  return new TGGraphEdge(FromNode, ToNode);
}

TGGraphEdge* TGGraphNode::AddEdge(TGGraphNode* ToNode) {
  if (!FGraph) throw EGraphException(SUnconnectedNode, {FCaption});
  return NewEdge(this, ToNode);
}

void TGGraphNode::BeginUpdate() { FUpdateCount.Begin(); }

void TGGraphNode::EndUpdate() {
  (void)FUpdateCount.End();
  if (!FUpdateCount.Updating()) Change();
}

void TGGraphNode::FreeEdges() {
  while (FEdges.GetCount() > 0) {
    TGGraphEdge* E = FEdges.GetItem(0);
    delete E;
    // Progress even if a subclass's bookkeeping left the freed edge listed.
    if (FEdges.GetCount() > 0 && FEdges.GetItem(0) == E) FEdges.Delete(0);
  }
}

void TGGraphNode::Clear() {
  WithinUpdate(*this, [&] {
    FreeEdges();
    if (FGraph && !IsUndirected() && FInDegree > 0) FGraph->RemovePredecessors(this);
    // Edges the lists did not show (a node whose caption was taken over, a linked node
    // whose incoming list predates a direction change) must not outlive this node.
    if (FGraph && FInDegree > 0) FGraph->DropEdgesTo(this);
  });
}

void TGGraphNode::RemoveEdge(std::int32_t Index) { delete FEdges.GetItem(Index); }

void TGGraphNode::RemovePredecessors() {
  if (IsUndirected()) {
    Clear();
    return;
  }
  if (FInDegree <= 0 || !FGraph) return;
  TIntfPtr<IObjectIterator> It = FGraph->GetNodes();
  while (It->HasMoreElements()) static_cast<TGGraphNode*>(It->NextElementO())->RemovePredecessors(this);
}

void TGGraphNode::Change() {
  if (FUpdateCount.Updating()) return;
  if (FGraph) FGraph->NodeChange(this);
  if (FOnChange) FOnChange(this);
}

void TGGraphNode::TextChange(const String& NewCaption) {
  if (FGraph) FGraph->TextChange(this, NewCaption);
}

void TGGraphNode::SetCaption(const String& Value) {
  if (Value == FCaption) return;
  TextChange(Value);
  FCaption = Value;
}

std::int32_t TGGraphNode::IndexOfEdge(const TGGraphEdge* Edge) const {
  for (std::int32_t i = 0; i < FEdges.GetCount(); ++i)
    if (FEdges.GetItem(i) == Edge) return i;
  return -1;
}

std::int32_t TGGraphNode::IndexOfEdgeTo(const TGGraphNode* Node) const {
  const bool Undirected = IsUndirected();
  for (std::int32_t i = 0; i < FEdges.GetCount(); ++i) {
    const TGGraphEdge* E = FEdges.GetItem(i);
    if (E->FToNode == Node || (Undirected && E->FFromNode == Node)) return i;
  }
  return -1;
}

void TGGraphNode::SetGraph(TGCustomGraph* G) {
  if (G == FGraph) return;
  if (FGraph) {
    WithinUpdate(*this, [&] {
      Clear();
      TGCustomGraph* Old = FGraph;
      FGraph = nullptr;
      Old->Extract(this);
    });
  }
  FGraph = G;
  if (!G) return;
  try {
    G->AddNode(this);
  } catch (...) {
    FGraph = nullptr;
    throw;
  }
}

// --- TGLinkedGraphNode ---

TGLinkedGraphNode::~TGLinkedGraphNode() { SetGraph(nullptr); }

void TGLinkedGraphNode::AddingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) {
  if (GetGraph() && GetGraph()->GetDirected()) FInEdges.Add(Edge);
  inherited::AddingEdgeFrom(FromNode, Edge);
}

void TGLinkedGraphNode::RemovingEdgeFrom(TGGraphNode* FromNode, TGGraphEdge* Edge) {
  FInEdges.RemoveEdge(Edge, true);
  inherited::RemovingEdgeFrom(FromNode, Edge);
}

void TGLinkedGraphNode::RemovePredecessors() {
  if (IsUndirected()) {
    inherited::RemovePredecessors();
    return;
  }
  while (FInEdges.GetCount() > 0) {
    TGGraphEdge* E = FInEdges.Last();
    if (TGGraphNode* From = E->GetFromNode()) From->RemoveEdge(E);
    if (FInEdges.GetCount() > 0 && FInEdges.Last() == E) FInEdges.Delete(FInEdges.GetCount() - 1);
  }
}

// --- TWeightedNode ---

void TWeightedNode::Assign(TPersistent* Source) {
  inherited::Assign(Source);
  if (auto* W = dynamic_cast<TWeightedNode*>(Source)) SetWeight(W->GetWeight());
}

TGGraphEdge* TWeightedNode::NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode) {
  return new TWeightedEdge(FromNode, ToNode);
}

void TWeightedNode::ReadData(TReader* Reader) {
  inherited::ReadData(Reader);
  SetWeight(Reader->ReadInteger());
}

void TWeightedNode::WriteData(TWriter* Writer) {
  inherited::WriteData(Writer);
  Writer->WriteInteger(FWeight);
}

TGGraphNode* TWeightedNode::ClosestNode(bool Visited) const {
  TGGraphNode* Best = nullptr;
  TGraphWeight Limit = MaxGraphWeight;
  for (TGGraphEdge* E : *GetEdges()) {
    const TGraphWeight W = As<TWeightedEdge>(E)->GetWeight();
    if (W >= Limit) continue;
    TGGraphNode* To = E->GetToNode();
    TGGraphNode* From = E->GetFromNode();
    if (!To || !From) RaiseNullAccess(u"edge end");
    // The second test reads the ToNode's mark while taking the FromNode, on purpose.
    if (To->GetVisited() == Visited && To != this) {
      Best = To;
      Limit = W;
    } else if (To->GetVisited() == Visited && From != this) {
      Best = From;
      Limit = W;
    }
  }
  return Best;
}

void TWeightedNode::SetWeight(TGraphWeight Value) {
  if (Value == FWeight) return;
  FWeight = Value;
  Change();
}

TStringList& TWeightedNode::PathList() {
  if (!FShortestPath) FShortestPath = std::make_unique<TStringList>();
  return *FShortestPath;
}

}  // namespace kz
