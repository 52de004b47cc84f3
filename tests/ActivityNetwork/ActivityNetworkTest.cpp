#include <gtest/gtest.h>

#include "GGraph/GraphSupport.h"

using namespace kztest;

namespace {

std::vector<String> Lines(const TStrings& L) { return L.ToStringArray(); }

TAOETask* Task(TActivityNetwork& N, StringView From, StringView To, std::int32_t Duration) {
  TAOETask* T = As<TAOEEvent>(N.FindNode(From))->AddTask(N.FindNode(To));
  T->SetWeight(Duration);
  return T;
}

TAOEEvent* Event(TActivityNetwork& N, StringView Caption) { return As<TAOEEvent>(N.FindNode(Caption)); }

// s -3-> a -4-> f, s -5-> f, and f -1-> g after the finish.
void Build(TActivityNetwork& N) {
  N.SetDirected(true);
  for (auto C : {u"s", u"a", u"f", u"g"}) N.AddEvent(C);
  Task(N, u"s", u"a", 3);
  Task(N, u"a", u"f", 4);
  Task(N, u"s", u"f", 5);
  Task(N, u"f", u"g", 1);
}

}  // namespace

// A host schedules a project: named events, durations as weights, the critical path read
// back from the result list.
TEST(ActivityNetwork, ScheduleEndToEnd) {
  TActivityNetwork N(nullptr);
  Build(N);
  std::int32_t PathTime = 0;
  std::unique_ptr<TStringList> Critical = N.GetCriticalActivities(Event(N, u"s"), Event(N, u"f"), PathTime);
  EXPECT_EQ(PathTime, 7);
  EXPECT_EQ(Lines(*Critical), (std::vector<String>{u"s --> a", u"a --> f", u"f --> g"}));
  EXPECT_EQ(Event(N, u"f")->GetEarliestEventTime(), 7);
  EXPECT_EQ(Event(N, u"g")->GetLatestEventTime(), 8);
  auto* SF = As<TAOETask>(Event(N, u"s")->GetEdge(1));
  EXPECT_EQ(SF->GetCriticality(), 2);
  EXPECT_EQ(SF->GetEarliestStartTime(), 0);
  EXPECT_EQ(SF->GetLatestStartTime(), 2);
  EXPECT_EQ(N.GetUpdateNodesCount(), 2);  // one for the direction, one for the schedule

  std::unique_ptr<TStringList> Order = N.GetEarliestCompletionTime(Event(N, u"a"), Event(N, u"f"), PathTime);
  EXPECT_EQ(Lines(*Order), (std::vector<String>{u"a", u"f"}));  // g is past the finish
  EXPECT_EQ(PathTime, 4);
  Order = N.GetEarliestCompletionTime(nullptr, nullptr, PathTime);
  EXPECT_EQ(PathTime, 8);
  Order = N.GetEarliestCompletionTime(Event(N, u"g"), Event(N, u"s"), PathTime);
  EXPECT_EQ(Order->GetCount(), 0);  // s was trimmed away, yet what it reaches still goes
  EXPECT_EQ(PathTime, MaxGraphWeight);

  // Kept by name, events are keys: a second "s" cannot join.
  TGLabelGraph Named(nullptr);
  Named.SetNodeClass(&TAOEEvent::ClassInfo());
  Named.CreateNode(u"s");
  std::unique_ptr<TGGraphNode> Again = TAOEEvent::ClassInfo().Create(nullptr);
  Again->SetCaption(u"s");
  try {
    Again->SetGraph(&Named);
    FAIL();
  } catch (const EListError& E) {
    EXPECT_EQ(E.Message(), u"Duplicate node names not allowed");
  }
  EXPECT_EQ(Again->GetGraph(), nullptr);

  // A name once built stays.
  Event(N, u"a")->SetCaption(u"b");
  EXPECT_EQ(As<TAOETask>(Event(N, u"s")->GetEdge(0))->GetName(), u"s --> a");

  // A cycle, or no direction, is refused.
  Task(N, u"g", u"s", 1);
  try {
    (void)N.GetCriticalActivities(nullptr, nullptr, PathTime);
    FAIL();
  } catch (const EGraphException& E) {
    EXPECT_EQ(E.Message(), u"Graph is not acyclic");
  }
  EXPECT_EQ(Event(N, u"s")->GetUpdateCount(), 1);  // the node updates closed on the way out
  TActivityNetwork U(nullptr);
  U.AddEvent(u"x");
  EXPECT_THROW((void)U.GetEarliestCompletionTime(nullptr, nullptr, PathTime), EGraphException);
}

TEST(ActivityNetwork, ParallelTasksAndCriticalGraph) {
  TActivityNetwork N(nullptr);
  Build(N);
  Task(N, u"s", u"a", 3);  // a parallel task as long as the first: both critical
  std::int32_t PathTime = 0;
  EXPECT_EQ(N.GetCriticalActivities(nullptr, nullptr, PathTime)->GetCount(), 4);
  std::unique_ptr<TActivityNetwork> C = N.GetCriticalGraph(Event(N, u"s"), Event(N, u"g"));
  EXPECT_TRUE(C->GetDirected());
  EXPECT_EQ(Lines(*C->TopologicalOrder()), (std::vector<String>{u"s", u"a", u"f", u"g"}));
  EXPECT_EQ(As<TAOEEvent>(C->FindNode(u"s"))->GetEdgeCount(), 2);
  EXPECT_EQ(As<TAOETask>(As<TAOEEvent>(C->FindNode(u"a"))->GetEdge(0))->GetWeight(), 4);
  EXPECT_THROW(N.GetCriticalGraph(Event(N, u"s"), Event(N, u"g"), N), EGraphException);
  EXPECT_THROW(N.GetCriticalGraph(nullptr, Event(N, u"g"), *C), EAccessViolation);
  EXPECT_THROW((void)N.GetNode(0)->AddTask(nullptr), EGraphException);
}

TEST(ActivityNetwork, StoredFormKeepsTimes) {
  RegisterGraphClasses();
  TActivityNetwork N(nullptr);
  Build(N);
  std::int32_t PathTime = 0;
  (void)N.GetCriticalActivities(nullptr, nullptr, PathTime);
  (void)As<TAOETask>(Event(N, u"s")->GetEdge(0))->GetName();
  TActivityNetwork L(nullptr);
  Load(Store(N), L);
  ASSERT_EQ(L.GetNodeCount(), 4);
  EXPECT_EQ(L.GetNode(2)->GetEarliestEventTime(), 7);
  EXPECT_EQ(L.GetNode(2)->GetLatestEventTime(), 7);
  auto* SA = As<TAOETask>(L.GetNode(0)->GetEdge(0));
  auto* SF = As<TAOETask>(L.GetNode(0)->GetEdge(1));
  EXPECT_EQ(SA->GetName(), u"s --> a");
  EXPECT_EQ(SF->GetWeight(), 5);
  EXPECT_EQ(SF->GetLatestStartTime(), 2);
  ExpectConsistent(L);
}
