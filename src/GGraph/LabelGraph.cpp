#include <algorithm>

#include "GGraph/Graphs.h"
#include "GGraph/internal/NodeWalk.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;

TGLabelGraph::TGLabelGraph(TComponent* AOwner)
    : TGCustomGraph(AOwner), FNodes(std::make_unique<TKZStringObjectHashTable<TGGraphNode>>()) {}

TGLabelGraph::~TGLabelGraph() {
  DropHandlers();
  Clear();
}

std::int32_t TGLabelGraph::GetNodeCount() const { return FNodes->GetCount(); }

void TGLabelGraph::AddNode(TGGraphNode* Node) {
  if (FUpdatingNode) return;
  if (!Node) RaiseNullAccess(u"node");
  {
    TRestoreValue<bool> Updating(FUpdatingNode, true);
    TGGraphNode* Present = nullptr;
    if (FNodes->TryGetValue(Node->GetCaption(), Present)) {
      if (Present != Node) throw EListError(SDuplicateNodeName);
      return;
    }
    FNodes->Put(Node->GetCaption(), Node);
    try {
      Node->SetGraph(this);
    } catch (...) {
      (void)FNodes->Remove(Node->GetCaption());
      throw;
    }
    Change();
  }
  inherited::AddNode(Node);
}

void TGLabelGraph::Clear() {
  WithinUpdate(*this, [&] {
    TRestoreValue<bool> Updating(FUpdatingNode, true);
    std::vector<TGGraphNode*> All = std::move(FOrphans);
    FOrphans.clear();
    detail::ForEachNode(*this, [&](TGGraphNode* Node) { All.push_back(Node); });
    for (TGGraphNode* Node : All) {
      Node->FastClear();
      delete Node;
    }
    FNodes->Clear();
    FNodeID = 0;
  });
}

TGGraphNode* TGLabelGraph::FindNode(StringView Caption) const {
  TGGraphNode* Node = nullptr;
  return FNodes->TryGetValue(String(Caption), Node) ? Node : nullptr;
}

TGGraphNode* TGLabelGraph::GetNode(StringView Caption) const { return FNodes->GetItem(String(Caption)); }

TIntfPtr<IObjectIterator> TGLabelGraph::GetNodes() const { return FNodes->Elements(); }

bool TGLabelGraph::Forget(TGGraphNode* Node) {
  if (!Node) return false;
  TGGraphNode* Keyed = nullptr;
  if (FNodes->TryGetValue(Node->GetCaption(), Keyed) && Keyed == Node) {
    (void)FNodes->Remove(Node->GetCaption());
    return true;
  }
  auto It = std::find(FOrphans.begin(), FOrphans.end(), Node);
  if (It == FOrphans.end()) return false;
  FOrphans.erase(It);
  return true;
}

bool TGLabelGraph::RemoveNode(TGGraphNode* Node) {
  inherited::RemoveNode(Node);
  return RemoveKept(Node);
}

TGGraphNode* TGLabelGraph::Extract(TGGraphNode* Node) { return ExtractKept(Node); }

void TGLabelGraph::TextChange(TGGraphNode* Node, const String& NewCaption) {
  TGGraphNode* Keyed = nullptr;
  const bool WasKeyed = FNodes->TryGetValue(Node->GetCaption(), Keyed) && Keyed == Node;
  if (WasKeyed) (void)FNodes->Remove(Node->GetCaption());
  else if (auto It = std::find(FOrphans.begin(), FOrphans.end(), Node); It != FOrphans.end()) FOrphans.erase(It);
  // A rename onto another node's caption takes the key over; that node stays in the graph.
  if (TGGraphNode* Previous = FNodes->Put(NewCaption, Node); Previous && Previous != Node) FOrphans.push_back(Previous);
  inherited::TextChange(Node, NewCaption);
}

void TGLabelGraph::ForEachKeptNode(const std::function<void(TGGraphNode*)>& Fn) const {
  inherited::ForEachKeptNode(Fn);
  for (TGGraphNode* Node : std::vector<TGGraphNode*>(FOrphans)) Fn(Node);
}

}  // namespace kz
