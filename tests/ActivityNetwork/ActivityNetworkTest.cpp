#include <gtest/gtest.h>

#include <random>

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

namespace {

// A network of its own class: it schedules through the general passes.
class TGeneralNetwork : public TActivityNetwork {
  KZ_CLASS(TGeneralNetwork, TActivityNetwork)
 public:
  using TActivityNetwork::TActivityNetwork;
};

// Everything a schedule leaves behind, as text.
std::vector<String> State(TActivityNetwork& N, const TStringList& Path, std::int32_t PathTime) {
  std::vector<String> S = Lines(Path);
  S.push_back(IntToStr(PathTime));
  S.push_back(IntToStr(N.GetUpdateNodesCount()) + (N.GetAcyclic() ? u"a" : u"c") +
              (N.GetNeedAcyclicCheck() ? u"n" : u""));
  for (std::int32_t i = 0; i < N.GetNodeCount(); ++i) {
    TAOEEvent* E = N.GetNode(i);
    S.push_back(IntToStr(E->GetEarliestEventTime()) + u"/" + IntToStr(E->GetLatestEventTime()) + u"/" +
                IntToStr(E->GetWorkTag()) + u"/" + IntToStr(E->GetUpdateCount()));
    for (std::int32_t k = 0; k < E->GetEdgeCount(); ++k) {
      auto* T = As<TAOETask>(E->GetEdge(k));
      S.push_back(IntToStr(T->GetEarliestStartTime()) + u"/" + IntToStr(T->GetLatestStartTime()));
    }
  }
  return S;
}

}  // namespace

// The network's own class schedules over arrays; a subclass takes the general passes. Both
// leave the same times, lists, counters and errors, over random networks with zero and huge
// (wrapping) durations, parallel tasks, events added after the direction, stretches and cycles.
TEST(ActivityNetwork, DirectScheduleMatchesTheGeneralPasses) {
  std::mt19937 Rng(7);
  for (int Round = 0; Round < 300; ++Round) {
    TActivityNetwork Fast(nullptr);
    TGeneralNetwork General(nullptr);
    TActivityNetwork* Both[2] = {&Fast, &General};
    const int Events = 1 + static_cast<int>(Rng() % 12);
    const bool DirectedFirst = Rng() % 2;
    for (TActivityNetwork* N : Both) {
      if (DirectedFirst) N->SetDirected(true);
      for (int i = 0; i < Events; ++i) N->NewNode();
      N->SetDirected(true);
    }
    const int Tasks = static_cast<int>(Rng() % static_cast<std::uint32_t>(3 * Events));
    const bool Cyclic = Rng() % 4 == 0;
    for (int t = 0; t < Tasks; ++t) {
      auto A = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Events));
      auto B = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Events));
      if (!Cyclic && A > B) std::swap(A, B);
      if (!Cyclic && A == B) continue;
      const auto W = static_cast<std::int32_t>(Rng() % 3 == 0 ? Rng() : Rng() % 5);
      for (TActivityNetwork* N : Both) N->GetNode(A)->AddTask(N->GetNode(B))->SetWeight(W);
    }
    const auto Start = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Events + 1)) - 1;
    const auto Finish = static_cast<std::int32_t>(Rng() % static_cast<std::uint32_t>(Events + 1)) - 1;
    const bool Critical = Rng() % 2;
    std::vector<String> States[2];
    for (int n = 0; n < 2; ++n) {
      TActivityNetwork& N = *Both[n];
      TStringList Path;
      Path.AddObject(u"stale", nullptr);
      Path.SetSorted(true);
      std::int32_t PathTime = -1;
      try {
        TAOEEvent* S = Start < 0 ? nullptr : N.GetNode(Start);
        TAOEEvent* F = Finish < 0 ? nullptr : N.GetNode(Finish);
        if (Critical) N.GetCriticalActivities(S, F, Path, PathTime);
        else N.GetEarliestCompletionTime(S, F, Path, PathTime);
      } catch (const EGraphException& E) {
        States[n].push_back(E.Message());
      }
      States[n].push_back(Path.GetSorted() ? u"sorted" : u"unsorted");
      for (String& Line : State(N, Path, PathTime)) States[n].push_back(std::move(Line));
    }
    ASSERT_EQ(States[0], States[1]) << "round " << Round;
  }
}
