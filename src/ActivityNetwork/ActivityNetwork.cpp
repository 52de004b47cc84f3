#include "ActivityNetwork/ActivityNetwork.h"

#include <unordered_set>
#include <utility>
#include <vector>

#include "GGraph/internal/NodeWalk.h"
#include "Runtime/Filer.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;
using namespace ActivityNetwork;
using detail::DynamicAs;
using detail::FastAs;
using detail::ForEachNode;
using detail::ToNodeOf;

namespace {

TAOEEvent* TargetOf(const TGGraphEdge* Task) { return FastAs<TAOEEvent>(ToNodeOf(Task)); }

// Keeps the lines of List for which Keep(index) holds, in order, in one pass.
template <class TKeep>
void KeepLines(TStrings& List, TKeep&& Keep) {
  std::vector<std::pair<String, TObject*>> Kept;
  const std::int32_t N = List.GetCount();
  Kept.reserve(static_cast<std::size_t>(N));
  for (std::int32_t i = 0; i < N; ++i)
    if (Keep(i)) Kept.emplace_back(List.Get(i), List.GetObject(i));
  if (static_cast<std::int32_t>(Kept.size()) == N) return;
  WithinUpdate(List, [&] {
    List.Clear();
    for (auto& [S, O] : Kept) List.AddObject(std::move(S), O);
  });
}

}  // namespace

// --- TAOETask ---

const String& TAOETask::GetName() const {
  if (FName.empty()) {
    const TGGraphNode* From = GetFromNode();
    const TGGraphNode* To = GetToNode();
    FName = (From ? From->GetCaption() : String()) + u" --> " + (To ? To->GetCaption() : String());
  }
  return FName;
}

void TAOETask::ReadData(TReader* Reader) {
  inherited::ReadData(Reader);
  FName = Reader->ReadString();
  FEarliestStartTime = Reader->ReadInteger();
  FLatestStartTime = Reader->ReadInteger();
}

void TAOETask::WriteData(TWriter* Writer) {
  inherited::WriteData(Writer);
  Writer->WriteString(FName);
  Writer->WriteInteger(FEarliestStartTime);
  Writer->WriteInteger(FLatestStartTime);
}

// --- TAOEEvent ---

TGGraphEdge* TAOEEvent::NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode) { return new TAOETask(FromNode, ToNode); }

void TAOEEvent::ReadData(TReader* Reader) {
  inherited::ReadData(Reader);
  FEarliestEventTime = Reader->ReadInteger();
  FLatestEventTime = Reader->ReadInteger();
}

void TAOEEvent::WriteData(TWriter* Writer) {
  inherited::WriteData(Writer);
  Writer->WriteInteger(FEarliestEventTime);
  Writer->WriteInteger(FLatestEventTime);
}

// --- TActivityNetwork ---

TActivityNetwork::TActivityNetwork(TComponent* AOwner) : TGGraph(AOwner) { SetNodeClass(&TAOEEvent::ClassInfo()); }

void TActivityNetwork::ModifySuccessor(TGGraphNode* Node, TGGraphNode* Successor, TGGraphEdge* Edge) {
  inherited::ModifySuccessor(Node, Successor, Edge);
  auto* From = DynamicAs<TAOEEvent>(Node);
  auto* To = DynamicAs<TAOEEvent>(Successor);
  auto* Task = DynamicAs<TAOETask>(Edge);
  if (!From || !To || !Task) return;
  const std::int32_t T = WrapAdd(From->GetEarliestEventTime(), Task->GetWeight());
  if (T > To->GetEarliestEventTime()) To->SetEarliestEventTime(T);
}

TStrings& TActivityNetwork::GetEarliestCompletionTime(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                                      std::int32_t& PathTime) {
  BeginUpdateNodes();
  try {
    ForEachNode(*this, [](TGGraphNode* Node) { FastAs<TAOEEvent>(Node)->SetEarliestEventTime(0); });
    TopologicalOrder(Path);
    if (!IsAcyclic()) throw EGraphException(SNotAcyclic);
    // Backward pass: the last event closes the project; an event with no task keeps the
    // largest time. Each task's times are final as soon as its event's are (its target comes
    // later in the order), so they are set in the same pass.
    const std::int32_t Last = Path.GetCount() - 1;
    for (std::int32_t i = Last; i >= 0; --i) {
      TAOEEvent* Event = FastAs<TAOEEvent>(Path.GetObject(i));
      std::int32_t Latest = i == Last ? Event->GetEarliestEventTime() : MaxGraphWeight;
      for (std::int32_t k = 0; k < Event->GetEdgeCount(); ++k) {
        TAOETask* Task = FastAs<TAOETask>(Event->GetEdge(k));
        const std::int32_t T = WrapSub(TargetOf(Task)->GetLatestEventTime(), Task->GetWeight());
        Task->SetEarliestStartTime(Event->GetEarliestEventTime());
        Task->SetLatestStartTime(T);
        if (T < Latest) Latest = T;
      }
      Event->SetLatestEventTime(Latest);
    }
  } catch (...) {
    EndUpdateNodes();
    throw;
  }
  EndUpdateNodes();

  if (StartEvent) {
    std::int32_t First = 0;
    while (First < Path.GetCount() && Path.GetObject(First) != StartEvent) ++First;
    KeepLines(Path, [First](std::int32_t i) { return i >= First; });
  }
  if (FinishEvent) {
    // Everything reachable from the finish lies after it in topological order: drop it in
    // one pass instead of a search per event.
    std::unordered_set<const TGGraphNode*> Reached;
    std::vector<const TGGraphNode*> Stack{FinishEvent};
    while (!Stack.empty()) {
      const TGGraphNode* Event = Stack.back();
      Stack.pop_back();
      for (std::int32_t k = 0; k < Event->GetEdgeCount(); ++k) {
        const TGGraphNode* To = ToNodeOf(Event->GetEdge(k));
        if (Reached.insert(To).second) Stack.push_back(To);
      }
    }
    const std::int32_t Finish = Path.IndexOfObject(FinishEvent);
    KeepLines(Path, [&](std::int32_t i) { return i <= Finish || !Reached.count(As<TGGraphNode>(Path.GetObject(i))); });
  }
  PathTime = Path.GetCount() == 0 ? MaxGraphWeight
                                  : WrapSub(FastAs<TAOEEvent>(Path.GetObject(Path.GetCount() - 1))->GetEarliestEventTime(),
                                            FastAs<TAOEEvent>(Path.GetObject(0))->GetEarliestEventTime());
  return Path;
}

std::unique_ptr<TStringList> TActivityNetwork::GetEarliestCompletionTime(TAOEEvent* StartEvent, TAOEEvent* FinishEvent,
                                                                         std::int32_t& PathTime) {
  auto Path = std::make_unique<TStringList>();
  GetEarliestCompletionTime(StartEvent, FinishEvent, *Path, PathTime);
  return Path;
}

TStrings& TActivityNetwork::GetCriticalActivities(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                                  std::int32_t& PathTime) {
  GetEarliestCompletionTime(StartEvent, FinishEvent, Path, PathTime);
  Path.Clear();
  ForEachNode(*this, [&](TGGraphNode* Node) {
    for (std::int32_t k = 0; k < Node->GetEdgeCount(); ++k) {
      TAOETask* Task = FastAs<TAOETask>(Node->GetEdge(k));
      if (Task->GetCriticality() == 0) Path.AddObject(Task->GetName(), Task);
    }
  });
  return Path;
}

std::unique_ptr<TStringList> TActivityNetwork::GetCriticalActivities(TAOEEvent* StartEvent, TAOEEvent* FinishEvent,
                                                                     std::int32_t& PathTime) {
  auto Path = std::make_unique<TStringList>();
  GetCriticalActivities(StartEvent, FinishEvent, *Path, PathTime);
  return Path;
}

TActivityNetwork& TActivityNetwork::GetCriticalGraph(TAOEEvent* StartEvent, TAOEEvent* FinishEvent,
                                                     TActivityNetwork& CGraph) {
  if (&CGraph == this) throw EGraphException(SCriticalGraphIsSelf);
  if (!StartEvent) RaiseNullAccess(u"start event");
  if (!FinishEvent) RaiseNullAccess(u"finish event");
  WithinUpdate(CGraph, [&] {
    std::int32_t PathTime = 0;
    (void)GetEarliestCompletionTime(StartEvent, FinishEvent, PathTime);
    CGraph.Clear();
    CGraph.SetDirected(true);
    CGraph.CreateNode(StartEvent->GetCaption())->Assign(StartEvent);
    CGraph.CreateNode(FinishEvent->GetCaption())->Assign(FinishEvent);
    auto CopyOf = [&](TGGraphNode* Event) {
      TGGraphNode* Copy = CGraph.FindNode(Event->GetCaption());
      if (!Copy) {
        Copy = CGraph.CreateNode(Event->GetCaption());
        Copy->Assign(Event);
      }
      return Copy;
    };
    ForEachNode(*this, [&](TGGraphNode* Node) {
      for (std::int32_t k = 0; k < Node->GetEdgeCount(); ++k) {
        TAOETask* Task = FastAs<TAOETask>(Node->GetEdge(k));
        if (Task->GetCriticality() != 0) continue;
        TGGraphNode* From = CopyOf(Node);
        TGGraphNode* To = CopyOf(ToNodeOf(Task));
        From->AddEdge(To)->Assign(Task);
      }
    });
  });
  return CGraph;
}

std::unique_ptr<TActivityNetwork> TActivityNetwork::GetCriticalGraph(TAOEEvent* StartEvent, TAOEEvent* FinishEvent) {
  auto CGraph = std::make_unique<TActivityNetwork>(nullptr);
  GetCriticalGraph(StartEvent, FinishEvent, *CGraph);
  return CGraph;
}

namespace ActivityNetwork {

void Initialize() {
  RegisterClass(TAOEEvent::ClassInfo());
  RegisterClass(TAOETask::ClassInfo());
  RegisterComponents(GGraph::PalettePage, {&TActivityNetwork::ClassInfo()});
}

}  // namespace ActivityNetwork

}  // namespace kz
