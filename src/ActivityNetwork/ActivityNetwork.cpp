#include "ActivityNetwork/ActivityNetwork.h"

#include <algorithm>
#include <unordered_set>
#include <utility>
#include <vector>

#include "GGraph/internal/GraphArrays.h"
#include "GGraph/internal/NodeWalk.h"
#include "Runtime/Filer.h"

namespace kz {

using namespace Runtime;
using namespace GGraph;
using namespace ActivityNetwork;
using detail::DynamicAs;
using detail::ForEachNode;
using detail::ToNodeOf;

namespace {

TAOEEvent* TargetOf(const TGGraphEdge* Task) { return As<TAOEEvent>(ToNodeOf(Task)); }

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

// Every event reachable from Finish by its tasks (Finish itself only over a cycle).
std::unordered_set<const TGGraphNode*> ReachedFrom(const TGGraphNode* Finish) {
  std::unordered_set<const TGGraphNode*> Reached;
  std::vector<const TGGraphNode*> Stack{Finish};
  while (!Stack.empty()) {
    const TGGraphNode* Event = Stack.back();
    Stack.pop_back();
    for (std::int32_t k = 0; k < Event->GetEdgeCount(); ++k) {
      const TGGraphNode* To = ToNodeOf(Event->GetEdge(k));
      if (Reached.insert(To).second) Stack.push_back(To);
    }
  }
  return Reached;
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

bool TActivityNetwork::DirectSchedule(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                      std::int32_t& PathTime, bool Critical) {
  // The general passes call the network's virtual steps and fill Path as they go. When every
  // step is this unit's own, every node an event and every edge a task, and no handler can
  // look on (none on the graph's node changes, the events or Path), the same values are
  // computed over arrays and only the results are written to the objects.
  if (!IsExactly<TActivityNetwork>(this) || !FDirected || GetOnNodeChange()) return false;
  if (!detail::UnwatchedStringList(Path)) return false;
  detail::TGraphArrays A;
  A.WholeNodes = true;
  A.EdgeFields = true;
  std::vector<std::int32_t> Weight;
  auto IsEvent = [](TGGraphNode* Node) { return IsExactly<TAOEEvent>(Node) && !Node->GetOnChange(); };
  auto IsTask = [&](TGGraphEdge* Edge, std::size_t e) {
    if (!IsExactly<TAOETask>(Edge)) return false;
    if (e == 0) Weight.resize(A.To.size());
    Weight[e] = static_cast<TAOETask*>(Edge)->GetWeight();
    return true;
  };
  if (!A.Take(*this, false, IsEvent, IsTask)) return false;

  const std::size_t N = A.Nodes.size();
  // BeginUpdateNodes: the events' brackets open and close below with nothing in between
  // that would call Change.
  ++FUpdateNodesCount;
  FAcyclic = false;  // TopologicalOrder with the forward pass of ModifySuccessor
  FNeedAcyclicCheck = false;
  auto& List = static_cast<TStringList&>(Path);
  List.SetSorted(false);
  if (List.GetCount() > 0) List.Clear();
  std::vector<std::int32_t> Tag(A.InDegree), Early(N, 0), Late(N);
  std::vector<std::int32_t> Order = detail::StackOrder(A, Tag, [&](std::size_t V, std::size_t e, std::size_t W) {
    Early[W] = std::max(Early[W], WrapAdd(Early[V], Weight[e]));
  });
  const bool Acyclic = Order.size() == N;
  FAcyclic = Acyclic;
  // The backward pass (as in the general one); a task's latest start lands in Weight.
  for (std::size_t k = Acyclic ? N : 0; k-- > 0;) {
    const auto V = static_cast<std::size_t>(Order[k]);
    std::int32_t Latest = k + 1 == N ? Early[V] : MaxGraphWeight;
    const auto End = static_cast<std::size_t>(A.First[V + 1]);
    for (auto e = static_cast<std::size_t>(A.First[V]); e < End; ++e) {
      const std::int32_t T = WrapSub(Late[static_cast<std::size_t>(A.To[e])], Weight[e]);
      Weight[e] = T;
      if (T < Latest) Latest = T;
    }
    Late[V] = Latest;
  }
  constexpr std::size_t Ahead = 8;
  for (std::size_t i = 0; i < N; ++i) {
    if (i + Ahead < N) {
      detail::TGraphArrays::FetchTag(A.Nodes[i + Ahead]);
      __builtin_prefetch(&static_cast<TAOEEvent*>(A.Nodes[i + Ahead])->FEarliestEventTime, 1);
    }
    auto* Event = static_cast<TAOEEvent*>(A.Nodes[i]);
    Event->SetWorkTag(Tag[i]);
    Event->FEarliestEventTime = Early[i];
    if (Acyclic) Event->FLatestEventTime = Late[i];
    // The event's update bracket: closing it tells the graph (no handler listens) unless
    // the event was updating already.
    if (Event->GetUpdateCount() <= 0) FNeedAcyclicCheck = true;
  }
  if (!Acyclic) {
    detail::AddCaptions(List, A, Order);
    throw EGraphException(SNotAcyclic);
  }
  // Task times, and the critical tasks in network order, in one pass over the tasks.
  const std::size_t M = A.Edges.size();
  std::vector<TAOETask*> CriticalTasks;
  for (std::size_t i = 0, e = 0; i < N; ++i) {
    const auto End = static_cast<std::size_t>(A.First[i + 1]);
    for (; e < End; ++e) {
      if (e + 2 * Ahead < M)
        __builtin_prefetch(&static_cast<TAOETask*>(A.Edges[e + 2 * Ahead])->FEarliestStartTime);
      auto* Task = static_cast<TAOETask*>(A.Edges[e]);
      Task->FEarliestStartTime = Early[i];
      Task->FLatestStartTime = Weight[e];
      if (Critical && Weight[e] == Early[i]) CriticalTasks.push_back(Task);  // slack 0
    }
  }
  for (TAOETask* Task : CriticalTasks) Path.AddObject(Task->GetName(), Task);

  // The stretch: from StartEvent on, without what FinishEvent reaches after it.
  std::size_t From = 0;
  if (StartEvent)
    while (From < N && A.Nodes[static_cast<std::size_t>(Order[From])] != StartEvent) ++From;
  Order.erase(Order.begin(), Order.begin() + static_cast<std::ptrdiff_t>(From));
  if (FinishEvent) {
    const std::unordered_set<const TGGraphNode*> Reached = ReachedFrom(FinishEvent);
    std::size_t Finish = 0;  // one past FinishEvent's line, 0 when it has none
    for (std::size_t k = 0; k < Order.size() && Finish == 0; ++k)
      if (A.Nodes[static_cast<std::size_t>(Order[k])] == FinishEvent) Finish = k + 1;
    std::size_t Kept = Finish;
    for (std::size_t k = Finish; k < Order.size(); ++k)
      if (!Reached.count(A.Nodes[static_cast<std::size_t>(Order[k])])) Order[Kept++] = Order[k];
    Order.resize(Kept);
  }
  PathTime = Order.empty() ? MaxGraphWeight
                           : WrapSub(Early[static_cast<std::size_t>(Order.back())],
                                     Early[static_cast<std::size_t>(Order.front())]);
  if (!Critical) detail::AddCaptions(List, A, Order);
  return true;
}

TStrings& TActivityNetwork::GetEarliestCompletionTime(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                                      std::int32_t& PathTime) {
  if (DirectSchedule(StartEvent, FinishEvent, Path, PathTime, false)) return Path;
  BeginUpdateNodes();
  try {
    ForEachNode(*this, [](TGGraphNode* Node) { As<TAOEEvent>(Node)->SetEarliestEventTime(0); });
    TopologicalOrder(Path);
    if (!IsAcyclic()) throw EGraphException(SNotAcyclic);
    // Backward pass: the last event closes the project; an event with no task keeps the
    // largest time. Each task's times are final as soon as its event's are (its target comes
    // later in the order), so they are set in the same pass.
    const std::int32_t Last = Path.GetCount() - 1;
    for (std::int32_t i = Last; i >= 0; --i) {
      TAOEEvent* Event = As<TAOEEvent>(Path.GetObject(i));
      std::int32_t Latest = i == Last ? Event->GetEarliestEventTime() : MaxGraphWeight;
      for (std::int32_t k = 0; k < Event->GetEdgeCount(); ++k) {
        TAOETask* Task = As<TAOETask>(Event->GetEdge(k));
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
    const std::unordered_set<const TGGraphNode*> Reached = ReachedFrom(FinishEvent);
    const std::int32_t Finish = Path.IndexOfObject(FinishEvent);
    KeepLines(Path, [&](std::int32_t i) { return i <= Finish || !Reached.count(As<TGGraphNode>(Path.GetObject(i))); });
  }
  PathTime = Path.GetCount() == 0 ? MaxGraphWeight
                                  : WrapSub(As<TAOEEvent>(Path.GetObject(Path.GetCount() - 1))->GetEarliestEventTime(),
                                            As<TAOEEvent>(Path.GetObject(0))->GetEarliestEventTime());
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
  if (DirectSchedule(StartEvent, FinishEvent, Path, PathTime, true)) return Path;
  GetEarliestCompletionTime(StartEvent, FinishEvent, Path, PathTime);
  Path.Clear();
  ForEachNode(*this, [&](TGGraphNode* Node) {
    for (std::int32_t k = 0; k < Node->GetEdgeCount(); ++k) {
      TAOETask* Task = As<TAOETask>(Node->GetEdge(k));
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
        TAOETask* Task = As<TAOETask>(Node->GetEdge(k));
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
