// The activity-on-edge project network: events (milestones) joined by tasks whose weight is
// their duration, with the earliest and latest times of every event, the slack of every task,
// the completion time of the project or of a stretch of it and its critical tasks.
#pragma once

#include <cstdint>
#include <memory>

#include "GGraph/GGraph.h"

namespace kz {

namespace ActivityNetwork {
KZ_UNIT_SCOPE(ActivityNetwork)
KZ_RESOURCESTRING(SNotAcyclic, u"Graph is not acyclic")
KZ_RESOURCESTRING(SCriticalGraphIsSelf, u"A network cannot be its own critical graph")

/// Registers the event and task classes with the class registry and TActivityNetwork on the
/// palette page "Additional". Idempotent; the package start-up runs it.
void Initialize();
}  // namespace ActivityNetwork

/// A task: its Weight is its duration. Times are int32 units of the host's choosing.
class TAOETask : public TWeightedEdge {
  KZ_CLASS(TAOETask, TWeightedEdge)
 public:
  TAOETask(TGGraphNode* AFromNode, TGGraphNode* AToNode) : TWeightedEdge(AFromNode, AToNode) {}

  [[nodiscard]] std::int32_t GetEarliestStartTime() const { return FEarliestStartTime; }
  void SetEarliestStartTime(std::int32_t Value) { FEarliestStartTime = Value; }
  [[nodiscard]] std::int32_t GetLatestStartTime() const { return FLatestStartTime; }
  void SetLatestStartTime(std::int32_t Value) { FLatestStartTime = Value; }
  /// The slack, LatestStartTime - EarliestStartTime (wrapping); 0 marks a critical task.
  [[nodiscard]] std::int32_t GetCriticality() const { return WrapSub(FLatestStartTime, FEarliestStartTime); }
  /// The stored name; when empty, "<from caption> --> <to caption>" is built and kept (it is
  /// not rebuilt when the captions change later).
  [[nodiscard]] const String& GetName() const;
  void SetName(const String& Value) { FName = Value; }

  /// Weight, then the stored name (empty when never built), EarliestStartTime, LatestStartTime.
  void ReadData(TReader* Reader) override;
  void WriteData(TWriter* Writer) override;

 private:
  std::int32_t FEarliestStartTime = 0;
  std::int32_t FLatestStartTime = 0;
  friend class TActivityNetwork;
  mutable String FName;
};

/// An event (milestone). Its edges are tasks.
class TAOEEvent : public TWeightedNode {
  KZ_CLASS(TAOEEvent, TWeightedNode)
 public:
  explicit TAOEEvent(TGCustomGraph* AGraph) : TWeightedNode(AGraph) {}

  /// A TAOETask.
  TGGraphEdge* NewEdge(TGGraphNode* FromNode, TGGraphNode* ToNode) override;
  /// A new task from this event to ToNode (AddEdge typed).
  TAOETask* AddTask(TGGraphNode* ToNode) { return As<TAOETask>(AddEdge(ToNode)); }

  [[nodiscard]] std::int32_t GetEarliestEventTime() const { return FEarliestEventTime; }
  void SetEarliestEventTime(std::int32_t Value) { FEarliestEventTime = Value; }
  [[nodiscard]] std::int32_t GetLatestEventTime() const { return FLatestEventTime; }
  void SetLatestEventTime(std::int32_t Value) { FLatestEventTime = Value; }

  /// Caption and weight, then EarliestEventTime and LatestEventTime.
  void ReadData(TReader* Reader) override;
  void WriteData(TWriter* Writer) override;

 private:
  friend class TActivityNetwork;
  std::int32_t FEarliestEventTime = 0;
  std::int32_t FLatestEventTime = 0;
};

/// A project network: a TGGraph of TAOEEvent nodes. Set Directed before scheduling; the
/// scheduling calls need a directed acyclic network and raise EGraphException "Graph is not
/// acyclic" otherwise. Each call recomputes every event and task time of the whole network
/// in O(events + tasks) (plus the list it returns) and leaves FUpdateNodesCount one higher.
class TActivityNetwork : public TGGraph {
  KZ_CLASS(TActivityNetwork, TGGraph)
 public:
  explicit TActivityNetwork(TComponent* AOwner);

  /// The event at Index (EInvalidCast when that node is not an event).
  [[nodiscard]] TAOEEvent* GetNode(std::int32_t Index) const { return As<TAOEEvent>(TGGraph::GetNode(Index)); }
  /// A new event of the network's node class with Caption.
  TAOEEvent* AddEvent(const String& Caption) { return As<TAOEEvent>(CreateNode(Caption)); }

  /// The forward pass: after the sort's own step, Successor's EarliestEventTime rises to
  /// Node's plus the task's duration when that is later.
  void ModifySuccessor(TGGraphNode* Node, TGGraphNode* Successor, TGGraphEdge* Edge) override;

  /// Schedules the network and fills Path with the events (caption, event) of the stretch
  /// in topological order: from StartEvent on (when given) and without the events reachable
  /// from FinishEvent (when given). PathTime is the earliest time of the last line minus
  /// that of the first (MaxGraphWeight for an empty list). The project end is the last event
  /// in topological order. Every node must be an event (EInvalidCast).
  TStrings& GetEarliestCompletionTime(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                      std::int32_t& PathTime);
  /// The same into a new list.
  [[nodiscard]] std::unique_ptr<TStringList> GetEarliestCompletionTime(TAOEEvent* StartEvent, TAOEEvent* FinishEvent,
                                                                       std::int32_t& PathTime);
  /// Schedules as above (PathTime that of the stretch) and fills Path with every critical
  /// task of the whole network as (name, task), events in network order, tasks in edge order.
  TStrings& GetCriticalActivities(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path,
                                  std::int32_t& PathTime);
  [[nodiscard]] std::unique_ptr<TStringList> GetCriticalActivities(TAOEEvent* StartEvent, TAOEEvent* FinishEvent,
                                                                   std::int32_t& PathTime);
  /// Schedules, then rebuilds CGraph (cleared, made directed) as the network of the critical
  /// tasks: events StartEvent and FinishEvent first, then each critical task's ends found by
  /// caption (or created), joined by a copy of the task. Null events raise EAccessViolation;
  /// CGraph being this network raises EGraphException.
  TActivityNetwork& GetCriticalGraph(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TActivityNetwork& CGraph);
  [[nodiscard]] std::unique_ptr<TActivityNetwork> GetCriticalGraph(TAOEEvent* StartEvent, TAOEEvent* FinishEvent);

 private:
  /// The schedule (and with Critical the critical tasks into Path) over arrays; false, having
  /// changed nothing, when the general passes must run.
  bool DirectSchedule(TAOEEvent* StartEvent, TAOEEvent* FinishEvent, TStrings& Path, std::int32_t& PathTime,
                      bool Critical);
};

}  // namespace kz
