#include "GGraph/Graphs.h"

#include <algorithm>

#include "GGraph/internal/NodeWalk.h"
#include "Runtime/Filer.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;
using detail::ForEachNode;
using detail::FromNodeOf;
using detail::ToNodeOf;

namespace {

// A live object iterator over a node list.
class TNodeListIterator : public TInterfacedObject, public IObjectIterator {
  KZ_CLASS(TNodeListIterator, TInterfacedObject)
  KZ_INTERFACES(IObjectIterator)
 public:
  explicit TNodeListIterator(const TGGraphNodes& List) : FList(List) {}
  TObject* CurrentElementO() override { return FList.GetItem(FIndex); }
  std::int32_t GetCount() override { return FList.GetCount(); }
  bool HasMoreElements() override { return FIndex < FList.GetCount() - 1; }
  TObject* NextElementO() override { return FList.GetItem(++FIndex); }
  void Reset() override { FIndex = -1; }

 private:
  const TGGraphNodes& FList;
  std::int32_t FIndex = -1;
};

template <class TFn>
void ForEachEdgeOf(TGGraphNode* Node, TFn&& Fn) {
  for (std::int32_t i = 0; i < Node->GetEdgeCount(); ++i) Fn(Node->GetEdge(i));
}

const TGGraphNode::TMeta* NodeMetaOf(const TMetaClass* C) { return dynamic_cast<const TGGraphNode::TMeta*>(C); }

}  // namespace

// --- TGCustomGraph ---

TGCustomGraph::TGCustomGraph(TComponent* AOwner) : TComponent(AOwner), FNodeClass(&TGGraphNode::ClassInfo()) {}

TGCustomGraph::~TGCustomGraph() = default;

void TGCustomGraph::DropHandlers() {
  FOnChange = nullptr;
  FOnNodeChange = nullptr;
  FOnNodeCaptionChange = nullptr;
  FOnAddNode = nullptr;
  FOnRemoveNode = nullptr;
}

void TGCustomGraph::SetNodeClass(TGGraphNodeClass Value) {
  if (!Value) RaiseNullAccess(u"node class");
  FNodeClass = Value;
}

TGGraphNode* TGCustomGraph::NewNodeOf(TGGraphNodeClass AClass) {
  if (!AClass) RaiseNullAccess(u"node class");
  std::unique_ptr<TGGraphNode> Node = AClass->Create(nullptr);
  Node->FCaption = Node->ClassName() + IntToStr(NewNodeId());
  try {
    Node->SetGraph(this);
  } catch (...) {
    // Joined but a handler raised: the graph owns it now.
    if (Node->GetGraph() == this) Node.release();
    throw;
  }
  return Node.release();
}

TGGraphNode* TGCustomGraph::NewNode() { return NewNodeOf(FNodeClass); }

TGGraphNode* TGCustomGraph::CreateNode(const String& Caption) {
  TGGraphNode* Node = NewNode();
  Node->SetCaption(Caption);
  return Node;
}

void TGCustomGraph::SetDirected(bool Value) {
  if (Value == FDirected) return;
  FDirected = Value;
  BeginUpdateNodes();
  try {
    ForEachNode(*this, [&](TGGraphNode* Node) {
      if (Value) {
        for (std::int32_t i = Node->GetEdgeCount() - 1; i >= 0; --i) {
          if (i >= Node->GetEdgeCount()) continue;
          TGGraphEdge* E = Node->GetEdge(i);
          TGGraphNode* From = FromNodeOf(E);
          if (From == Node) continue;
          From->RemovingEdgeFrom(Node, E);
          Node->RemovingEdgeTo(From, E);
        }
      } else {
        ForEachEdgeOf(Node, [&](TGGraphEdge* E) {
          if (E->GetFromNode() != Node) return;
          TGGraphNode* To = ToNodeOf(E);
          To->AddingEdgeTo(Node, E);
          Node->AddingEdgeFrom(To, E);
        });
      }
    });
  } catch (...) {
    EndUpdateNodes();
    throw;
  }
  EndUpdateNodes();
}

void TGCustomGraph::AddNode(TGGraphNode* Node) {
  if (!Node) RaiseNullAccess(u"node");
  for (std::int32_t i = 0; i < FUpdateNodesCount; ++i) Node->BeginUpdate();
  if (!FUpdatingNode && FOnAddNode) FOnAddNode(this, Node);
}

void TGCustomGraph::BeginUpdate() { FUpdateCount.Begin(); }

void TGCustomGraph::EndUpdate() {
  (void)FUpdateCount.End();
  if (!FUpdateCount.Updating()) Change();
}

void TGCustomGraph::BeginUpdateNodes() {
  ++FUpdateNodesCount;
  ForEachNode(*this, [](TGGraphNode* Node) { Node->BeginUpdate(); });
}

void TGCustomGraph::EndUpdateNodes() {
  ForEachNode(*this, [](TGGraphNode* Node) { Node->EndUpdate(); });
}

void TGCustomGraph::RemovePredecessors(TGGraphNode* Node) {
  if (!Node) RaiseNullAccess(u"node");
  Node->RemovePredecessors();
}

bool TGCustomGraph::RemoveNode(TGGraphNode* Node) {
  if (FOnRemoveNode) FOnRemoveNode(this, Node);
  return false;
}

bool TGCustomGraph::RemoveKept(TGGraphNode* Node) {
  if (!Forget(Node)) return false;
  Node->SetGraph(nullptr);
  delete Node;
  Change();
  return true;
}

TGGraphNode* TGCustomGraph::ExtractKept(TGGraphNode* Node) {
  if (!Forget(Node)) return nullptr;
  Node->SetGraph(nullptr);  // nothing more when the node is leaving by its own SetGraph
  Change();
  return Node;
}

TGGraphNode* TGCustomGraph::Extract(StringView Caption) {
  TGGraphNode* Node = FindNode(Caption);
  return Node ? Extract(Node) : nullptr;
}

bool TGCustomGraph::RemoveNode(StringView Caption) {
  TGGraphNode* Node = FindNode(Caption);
  return Node ? RemoveNode(Node) : false;
}

void TGCustomGraph::Change() {
  FNeedAcyclicCheck = true;
  if (!FUpdateCount.Updating() && FOnChange) FOnChange(this);
}

void TGCustomGraph::NodeChange(TGGraphNode* Node) {
  FNeedAcyclicCheck = true;
  if (!FUpdateCount.Updating() && FOnNodeChange) FOnNodeChange(this, Node);
}

void TGCustomGraph::TextChange(TGGraphNode* Node, const String& NewCaption) {
  if (FOnNodeCaptionChange) FOnNodeCaptionChange(this, Node, NewCaption);
}

void TGCustomGraph::ForEachKeptNode(const std::function<void(TGGraphNode*)>& Fn) const { ForEachNode(*this, Fn); }

void TGCustomGraph::DropEdgesTo(TGGraphNode* Node) {
  ForEachKeptNode([Node](TGGraphNode* Other) {
    for (std::int32_t i = Other->GetEdgeCount() - 1; i >= 0; --i) {
      if (i >= Other->GetEdgeCount()) continue;
      const TGGraphEdge* E = Other->GetEdge(i);
      if (E->GetToNode() == Node && E->GetFromNode() == Other) Other->RemoveEdge(i);
    }
  });
}

void TGCustomGraph::Assign(TPersistent* Source) {
  auto* Src = dynamic_cast<TGCustomGraph*>(Source);
  if (!Src) {
    inherited::Assign(Source);
    return;
  }
  if (Src == this) throw EGraphException(SAssignToSelf);
  WithinUpdate(*this, [&] {
    FAcyclic = Src->IsAcyclic();
    Clear();
    SetDirected(Src->GetDirected());
    std::int32_t Number = 0;
    ForEachNode(*Src, [&](TGGraphNode* Node) {
      NewNodeOf(NodeMetaOf(Node->ClassType()))->Assign(Node);
      Node->SetWorkTag(Number++);
    });
    ForEachNode(*Src, [&](TGGraphNode* Node) {
      ForEachEdgeOf(Node, [&](TGGraphEdge* E) {
        if (E->GetFromNode() != Node) return;
        TGGraphNode* From = FindNode(Node->GetCaption());
        if (!From) throw EGraphException(SEdgeNodes);
        From->AddEdge(FindNode(ToNodeOf(E)->GetCaption()))->Assign(E);
      });
    });
    FNeedAcyclicCheck = Src->FNeedAcyclicCheck;
  });
}

void TGCustomGraph::DefineProperties(TFiler* Filer) {
  inherited::DefineProperties(Filer);
  Filer->DefineProperty(
      u"NodeNEdges", [this](TReader* R) { LoadNodesProperty(R); }, [this](TWriter* W) { StoreNodesProperty(W); },
      true);
}

void TGCustomGraph::StoreNodesProperty(TWriter* Writer) {
  // Nodes GetNodes does not show keep -1, and edges touching them are not stored.
  ForEachKeptNode([](TGGraphNode* Node) { Node->SetWorkTag(-1); });
  Writer->WriteListBegin();
  std::int32_t Number = 0;
  ForEachNode(*this, [&](TGGraphNode* Node) {
    Node->SetWorkTag(Number++);
    Writer->WriteString(Node->ClassName());
    Node->WriteData(Writer);
  });
  Writer->WriteListEnd();
  Writer->WriteListBegin();
  ForEachNode(*this, [&](TGGraphNode* Node) {
    ForEachEdgeOf(Node, [&](TGGraphEdge* E) {
      if (!FDirected && E->GetFromNode() != Node) return;
      const std::int32_t From = FromNodeOf(E)->GetWorkTag(), To = ToNodeOf(E)->GetWorkTag();
      if (From < 0 || To < 0) return;
      Writer->WriteString(E->ClassName());
      Writer->WriteInteger(From);
      Writer->WriteInteger(To);
      E->WriteData(Writer);
    });
  });
  Writer->WriteListEnd();
}

void TGCustomGraph::LoadNodesProperty(TReader* Reader) {
  TGGraphNodes Read;
  Reader->ReadListBegin();
  while (!Reader->EndOfList()) {
    const String Name = Reader->ReadString();
    const TGGraphNode::TMeta* Meta = NodeMetaOf(&FindClass(Name));
    if (!Meta || !Meta->InheritsFrom(&TGGraphNode::ClassInfo())) throw EGraphException(SNotNodeClass, {Name});
    TGGraphNode* Node = NewNodeOf(Meta);
    Read.Add(Node);
    Node->ReadData(Reader);
  }
  Reader->ReadListEnd();
  Reader->ReadListBegin();
  while (!Reader->EndOfList()) {
    const String Name = Reader->ReadString();
    const auto* Meta = dynamic_cast<const TGGraphEdge::TMeta*>(&FindClass(Name));
    if (!Meta || !Meta->InheritsFrom(&TGGraphEdge::ClassInfo())) throw EGraphException(SNotEdgeClass, {Name});
    const std::int32_t From = Reader->ReadInteger();
    const std::int32_t To = Reader->ReadInteger();
    for (const std::int32_t P : {From, To})
      if (P < 0 || P >= Read.GetCount()) throw EGraphException(SBadNodePosition, {P, Read.GetCount()});
    // The new edge belongs to its FromNode from the moment it is built.
    TGGraphEdge* Edge = Meta->Create(Read.GetItem(From), Read.GetItem(To)).release();
    Edge->ReadData(Reader);
  }
  Reader->ReadListEnd();
}

void TGCustomGraph::Loaded() {
  inherited::Loaded();
  Change();
}

// --- TGGraph ---

TGGraph::TGGraph(TComponent* AOwner) : TGCustomGraph(AOwner) {}

TGGraph::~TGGraph() {
  DropHandlers();
  Clear();
}

void TGGraph::AddNode(TGGraphNode* Node) {
  if (FUpdatingNode) return;
  if (!Node) RaiseNullAccess(u"node");
  if (Node->FOrder != 0 && Node->GetGraph() == this) return;  // listed here already
  {
    TRestoreValue<bool> Updating(FUpdatingNode, true);
    FNodes.Add(Node);
    try {
      Node->SetGraph(this);  // leaves another graph under that graph's own numbering
    } catch (...) {
      FNodes.Delete(FNodes.GetCount() - 1);
      throw;
    }
    Node->FOrder = ++FNextOrder;
    IndexCaption(Node, Node->GetCaption());
    Change();
  }
  inherited::AddNode(Node);
}

void TGGraph::Clear() {
  WithinUpdate(*this, [&] {
    TRestoreValue<bool> Updating(FUpdatingNode, true);
    // Node by node as from the front of the list, without shifting it each time.
    for (TGGraphNode* Node : FNodes) {
      Node->FastClear();
      delete Node;
    }
    FNodes.Clear();
    FCaptions.Clear();
    FNodeID = 0;
  });
}

TGGraphNode* TGGraph::FindNode(StringView Caption) const {
  const TCaptionEntry* Entry = FCaptions.Find(String(Caption));
  return Entry ? Entry->First : nullptr;
}

TIntfPtr<IObjectIterator> TGGraph::GetNodes() const { return TIntfPtr<IObjectIterator>(new TNodeListIterator(FNodes)); }

bool TGGraph::Forget(TGGraphNode* Node) {
  if (!Node || Node->FOrder == 0) return false;
  // The list is in insertion order, so the sequence numbers find the node by bisection.
  auto It = std::lower_bound(FNodes.begin(), FNodes.end(), Node->FOrder,
                             [](const TGGraphNode* N, std::int64_t Order) { return N->FOrder < Order; });
  if (It == FNodes.end() || *It != Node) return false;
  FNodes.Delete(static_cast<std::int32_t>(It - FNodes.begin()));
  UnindexCaption(Node, Node->GetCaption());
  Node->FOrder = 0;
  return true;
}

bool TGGraph::RemoveNode(TGGraphNode* Node) {
  inherited::RemoveNode(Node);
  return RemoveKept(Node);
}

TGGraphNode* TGGraph::Extract(TGGraphNode* Node) { return ExtractKept(Node); }

void TGGraph::TextChange(TGGraphNode* Node, const String& NewCaption) {
  inherited::TextChange(Node, NewCaption);
  if (Node->FOrder == 0 || Node->GetGraph() != this) return;
  UnindexCaption(Node, Node->GetCaption());
  IndexCaption(Node, NewCaption);
}

void TGGraph::IndexCaption(TGGraphNode* Node, const String& Caption) {
  const TCaptionEntry* Entry = FCaptions.Find(Caption);
  if (!Entry) {
    FCaptions.Add(Caption, TCaptionEntry{Node, 1});
    return;
  }
  TCaptionEntry E = *Entry;
  ++E.Count;
  if (Node->FOrder < E.First->FOrder) E.First = Node;
  FCaptions.AddOrSetValue(Caption, E);
}

void TGGraph::UnindexCaption(TGGraphNode* Node, const String& Caption) {
  const TCaptionEntry* Entry = FCaptions.Find(Caption);
  if (!Entry) return;
  TCaptionEntry E = *Entry;
  if (--E.Count > 0 && E.First == Node) {
    // Only repeated captions get here: find the next holder in list order.
    E.Count = 0;
    for (TGGraphNode* N : FNodes)
      if (N != Node && N->GetCaption() == Caption && E.Count++ == 0) E.First = N;
  }
  if (E.Count <= 0)
    (void)FCaptions.Remove(Caption);
  else
    FCaptions.AddOrSetValue(Caption, E);
}

}  // namespace kz
