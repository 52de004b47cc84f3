// kzschedule: schedules a project read as CSV (or as an activity network) and reports every
// task's times, the project duration and its critical path(s); see Usage below.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "ActivityNetwork/ActivityNetwork.h"
#include "KZCommon/KZCommon.h"
#include "Runtime/Filer.h"

using namespace kz;

namespace {

const char* const Usage =
    "usage: kzschedule [options] PROJECT.csv\n"
    "       kzschedule --generate N [--seed S] PROJECT.csv\n"
    "\n"
    "Schedules a project and prints every task's duration, earliest and latest start and\n"
    "finish, slack and a critical mark, then the project duration and the critical path(s).\n"
    "\n"
    "The project is CSV (UTF-8 with or without a byte-order mark, or UTF-16 with one): a\n"
    "header line, then one task per row: id,name,duration,predecessors (predecessor ids\n"
    "separated by ';'; fields may be quoted). Durations are whole non-negative units.\n"
    "\n"
    "options:\n"
    "  --events       PROJECT.csv is an event network instead: from,to,duration,name per row;\n"
    "                 unnamed zero-duration rows are links, not tasks\n"
    "  --load FILE    read the network from FILE (written by --save) instead of PROJECT.csv\n"
    "  --save FILE    write the network in the library's stored form\n"
    "  --csv FILE     write the table as CSV\n"
    "  --svg FILE     write a Gantt chart\n"
    "  --dot FILE     write the network for Graphviz\n"
    "  --from ID      schedule the stretch from the start of task (or event) ID\n"
    "  --to ID        ... up to the finish of task (or event) ID\n"
    "  --unit WORD    what the chart calls a unit of time (days)\n"
    "  --quiet        print only the duration and critical path(s), not the table\n"
    "  --generate N   write a random project of N tasks to PROJECT.csv; --seed S picks which\n"
    "  --help         this text\n"
    "\n"
    "Exit status: 0 done, 1 bad input or a file that cannot be read or written, 2 bad usage.\n";

// What the user got wrong in a file: reported as "FILE:LINE: cause", exit status 1.
class EInputError : public Exception {
 public:
  explicit EInputError(const String& Msg) : Exception(Msg) {}
};

class EUsageError : public Exception {
 public:
  explicit EUsageError(const String& Msg) : Exception(Msg) {}
};

String U(const std::string& S) { return Utf8ToString(S); }
std::string N8(StringView S) { return StringToUtf8(S); }

[[noreturn]] void Fail(const String& File, std::int32_t Line, const String& Cause) {
  String Where = File;
  if (Line > 0) Where += u":" + U(std::to_string(Line));
  throw EInputError(Where + u": " + Cause);
}

// Progress on stderr only for big projects, where the user waits long enough to wonder.
struct TProgress {
  bool On = false;
  std::chrono::steady_clock::time_point Start = std::chrono::steady_clock::now();
  void Step(const std::string& What) const {
    if (!On) return;
    const double S = std::chrono::duration<double>(std::chrono::steady_clock::now() - Start).count();
    std::fprintf(stderr, "kzschedule: %6.1fs %s\n", S, What.c_str());
  }
};

// --- Reading ------------------------------------------------------------------------------

// The whole file through the text stream; a byte-order mark picks UTF-8 or UTF-16, and a
// file without one is taken as UTF-8 (the stream's own fallback is a single-byte code page).
String ReadText(const String& FileName) {
  try {
    TGTextStream Stream(FileName, fmOpenRead);
    TBytes Bytes;
    Byte Block[65536];
    for (std::int32_t N; (N = Stream.Read(Block, sizeof Block)) > 0;) Bytes.append(Block, static_cast<std::size_t>(N));
    TEncoding* Encoding = Stream.GetEncoding();
    if (!Encoding || Encoding == TEncoding::Default()) Encoding = TEncoding::UTF8();
    return Encoding->GetString(Bytes.data(), static_cast<std::int32_t>(Bytes.size()));
  } catch (const Exception& E) {
    Fail(FileName, 0, u"cannot read: " + E.Message());
  }
}

struct TRecord {
  std::int32_t Line = 0;
  std::vector<String> Fields;
};

// Splits CSV text into records: fields may be quoted ("" inside quotes is a quote, and a
// quoted field may span lines); blank lines are skipped.
std::vector<TRecord> ParseCsv(const String& Text, const String& FileName) {
  std::vector<TRecord> Records;
  TRecord Rec;
  String Field;
  std::int32_t Line = 1;
  bool Quoted = false, AnyField = false, WasQuoted = false;
  Rec.Line = 1;
  auto EndField = [&] {
    Rec.Fields.push_back(WasQuoted ? Field : Trim(Field));
    Field.clear();
    WasQuoted = false;
  };
  auto EndRecord = [&] {
    if (AnyField || !Field.empty()) {
      EndField();
      Records.push_back(std::move(Rec));
    }
    Rec = TRecord{};
    Field.clear();
    AnyField = false;
    WasQuoted = false;
  };
  const std::size_t Size = Text.size();
  for (std::size_t i = 0; i < Size; ++i) {
    const Char C = Text[i];
    if (Quoted) {
      if (C == u'"') {
        if (i + 1 < Size && Text[i + 1] == u'"') {
          Field += u'"';
          ++i;
        } else {
          Quoted = false;
        }
      } else {
        if (C == u'\n') ++Line;
        Field += C;
      }
      continue;
    }
    if (C == u'\r' || C == u'\n') {
      if (C == u'\r' && i + 1 < Size && Text[i + 1] == u'\n') ++i;
      EndRecord();
      Rec.Line = ++Line;
    } else if (C == u',') {
      EndField();
      AnyField = true;
    } else if (C == u'"' && Trim(Field).empty()) {
      Field.clear();
      Quoted = WasQuoted = AnyField = true;
    } else {
      Field += C;
      AnyField = true;
    }
  }
  if (Quoted) Fail(FileName, Rec.Line, u"a quoted field is not closed");
  EndRecord();
  return Records;
}

// A whole non-negative number that fits the network's times.
std::int32_t ParseDuration(const String& S, const String& FileName, std::int32_t Line) {
  if (S.empty()) Fail(FileName, Line, u"the duration is missing");
  std::int64_t V = 0;
  for (Char C : S) {
    if (C == u'-') Fail(FileName, Line, u"the duration \"" + S + u"\" is negative");
    if (C < u'0' || C > u'9') Fail(FileName, Line, u"the duration \"" + S + u"\" is not a whole number");
    V = V * 10 + (C - u'0');
    if (V > 1000000000) Fail(FileName, Line, u"the duration \"" + S + u"\" is too large");
  }
  return static_cast<std::int32_t>(V);
}

// --- The project --------------------------------------------------------------------------

struct TTaskRow {
  String Id;
  TAOETask* Task = nullptr;
};

// The network and the tasks shown in the table; the links the network needs around them
// (dependencies, project start and finish) are edges too but never rows.
struct TProject {
  std::unique_ptr<TActivityNetwork> Net = std::make_unique<TActivityNetwork>(nullptr);
  std::vector<TTaskRow> Rows;
  TAOEEvent* ProjectStart = nullptr;
  TAOEEvent* ProjectFinish = nullptr;
};

const String FinishSuffix = u".end";

// Named by the task ids on it, in dependency order, back to the first.
[[noreturn]] void FailCycle(const std::vector<TRecord>& Recs, const std::vector<std::vector<std::int32_t>>& Preds,
                            const std::vector<std::int32_t>& Unsorted, const String& FileName) {
  // Inside the unsorted part every task has an unsorted predecessor: walking predecessors
  // must come back to a task already seen.
  std::vector<bool> Left(Recs.size(), false);
  for (std::int32_t T : Unsorted) Left[static_cast<std::size_t>(T)] = true;
  std::unordered_map<std::int32_t, std::size_t> Seen;
  std::vector<std::int32_t> Walk;
  std::int32_t T = Unsorted.front();
  while (!Seen.count(T)) {
    Seen[T] = Walk.size();
    Walk.push_back(T);
    for (std::int32_t P : Preds[static_cast<std::size_t>(T)])
      if (Left[static_cast<std::size_t>(P)]) {
        T = P;
        break;
      }
  }
  std::vector<std::int32_t> Cycle(Walk.begin() + static_cast<std::ptrdiff_t>(Seen[T]), Walk.end());
  String Names;
  for (auto It = Cycle.rbegin(); It != Cycle.rend(); ++It) Names += Recs[static_cast<std::size_t>(*It)].Fields[0] + u" -> ";
  Names += Recs[static_cast<std::size_t>(Cycle.back())].Fields[0];
  Fail(FileName, Recs[static_cast<std::size_t>(Cycle.back())].Line, u"dependency cycle: " + Names);
}

// Tasks on node form: a start and a finish event per task joined by the task, zero-duration
// links from each predecessor's finish, and one project start and finish event linked to the
// tasks without predecessors or successors. Ids are looked up in the tool's own index, so
// building costs O(tasks + dependencies).
void BuildFromTasks(TProject& P, const std::vector<TRecord>& Recs, const String& FileName, const TProgress& Progress) {
  const std::size_t Count = Recs.size();
  std::unordered_map<String, std::int32_t> Index;
  Index.reserve(Count);
  for (std::size_t i = 0; i < Count; ++i) {
    const TRecord& R = Recs[i];
    if (R.Fields.size() < 3)
      Fail(FileName, R.Line, u"expected id,name,duration,predecessors but found " + U(std::to_string(R.Fields.size())) +
                                 u" field(s)");
    if (R.Fields[0].empty()) Fail(FileName, R.Line, u"the task id is empty");
    auto [It, Added] = Index.emplace(R.Fields[0], static_cast<std::int32_t>(i));
    if (!Added)
      Fail(FileName, R.Line, u"duplicate task id \"" + R.Fields[0] + u"\" (first on line " +
                                 U(std::to_string(Recs[static_cast<std::size_t>(It->second)].Line)) + u")");
  }
  std::vector<std::int32_t> Durations(Count);
  std::vector<std::vector<std::int32_t>> Preds(Count);
  std::vector<std::int32_t> Successors(Count, 0);
  for (std::size_t i = 0; i < Count; ++i) {
    const TRecord& R = Recs[i];
    Durations[i] = ParseDuration(R.Fields[2], FileName, R.Line);
    if (R.Fields.size() < 4) continue;
    const String& List = R.Fields[3];
    for (std::size_t p = 0; p <= List.size();) {
      std::size_t q = List.find(u';', p);
      if (q == String::npos) q = List.size();
      const String Id = Trim(List.substr(p, q - p));
      p = q + 1;
      if (Id.empty()) continue;
      auto It = Index.find(Id);
      if (It == Index.end()) Fail(FileName, R.Line, u"unknown predecessor \"" + Id + u"\" of task \"" + R.Fields[0] + u"\"");
      Preds[i].push_back(It->second);
      ++Successors[static_cast<std::size_t>(It->second)];
    }
  }
  // Checked here rather than left to the scheduler, so that the message can name the tasks.
  {
    std::vector<std::int32_t> Waiting(Count);
    std::vector<std::vector<std::int32_t>> Next(Count);
    std::vector<std::int32_t> Ready;
    for (std::size_t i = 0; i < Count; ++i) {
      Waiting[i] = static_cast<std::int32_t>(Preds[i].size());
      for (std::int32_t Pd : Preds[i]) Next[static_cast<std::size_t>(Pd)].push_back(static_cast<std::int32_t>(i));
      if (Waiting[i] == 0) Ready.push_back(static_cast<std::int32_t>(i));
    }
    std::size_t Done = 0;
    while (!Ready.empty()) {
      const std::int32_t T = Ready.back();
      Ready.pop_back();
      ++Done;
      for (std::int32_t S : Next[static_cast<std::size_t>(T)])
        if (--Waiting[static_cast<std::size_t>(S)] == 0) Ready.push_back(S);
    }
    if (Done < Count) {
      std::vector<std::int32_t> Unsorted;
      for (std::size_t i = 0; i < Count; ++i)
        if (Waiting[i] > 0) Unsorted.push_back(static_cast<std::int32_t>(i));
      FailCycle(Recs, Preds, Unsorted, FileName);
    }
  }
  Progress.Step("building the network");
  TActivityNetwork& Net = *P.Net;
  Net.SetDirected(true);
  Net.BeginUpdate();
  P.ProjectStart = Net.AddEvent(u"(project start)");
  P.ProjectFinish = Net.AddEvent(u"(project finish)");
  std::vector<TAOEEvent*> Starts(Count), Finishes(Count);
  P.Rows.resize(Count);
  for (std::size_t i = 0; i < Count; ++i) {
    const TRecord& R = Recs[i];
    Starts[i] = Net.AddEvent(R.Fields[0]);
    Finishes[i] = Net.AddEvent(R.Fields[0] + FinishSuffix);
    TAOETask* T = Starts[i]->AddTask(Finishes[i]);
    T->SetWeight(Durations[i]);
    T->SetName(R.Fields[1].empty() ? R.Fields[0] : R.Fields[1]);
    P.Rows[i] = {R.Fields[0], T};
  }
  for (std::size_t i = 0; i < Count; ++i) {
    if (Preds[i].empty()) P.ProjectStart->AddTask(Starts[i]);
    for (std::int32_t Pd : Preds[i]) Finishes[static_cast<std::size_t>(Pd)]->AddTask(Starts[i]);
    if (Successors[i] == 0) Finishes[i]->AddTask(P.ProjectFinish);
  }
  Net.EndUpdate();
}

// A link rather than a task: no duration and no name of its own.
bool IsLink(TAOETask* T) {
  return T->GetWeight() == 0 &&
         T->GetName() == T->GetFromNode()->GetCaption() + u" --> " + T->GetToNode()->GetCaption();
}

// The rows of a network that came whole (--events, --load): every edge but the links; a task
// between "X" and "X.end" is task X.
void CollectRows(TProject& P) {
  const TGGraphNodes& Nodes = P.Net->GetNodeList();
  for (std::int32_t i = 0; i < Nodes.GetCount(); ++i) {
    TGGraphNode* N = Nodes.GetItem(i);
    for (std::int32_t k = 0; k < N->GetEdgeCount(); ++k) {
      TAOETask* T = As<TAOETask>(N->GetEdge(k));
      if (IsLink(T)) continue;
      const String& From = T->GetFromNode()->GetCaption();
      const String& To = T->GetToNode()->GetCaption();
      P.Rows.push_back({To == From + FinishSuffix ? From : From + u"-" + To, T});
    }
  }
}

void BuildFromEvents(TProject& P, const std::vector<TRecord>& Recs, const String& FileName) {
  TActivityNetwork& Net = *P.Net;
  Net.SetDirected(true);
  std::unordered_map<String, TAOEEvent*> Events;
  auto EventOf = [&](const String& Caption) {
    TAOEEvent*& E = Events[Caption];
    if (!E) E = Net.AddEvent(Caption);
    return E;
  };
  for (const TRecord& R : Recs) {
    if (R.Fields.size() < 3)
      Fail(FileName, R.Line, u"expected from,to,duration,name but found " + U(std::to_string(R.Fields.size())) + u" field(s)");
    if (R.Fields[0].empty() || R.Fields[1].empty()) Fail(FileName, R.Line, u"an event name is empty");
    const std::int32_t Duration = ParseDuration(R.Fields[2], FileName, R.Line);
    TAOETask* T = EventOf(R.Fields[0])->AddTask(EventOf(R.Fields[1]));
    T->SetWeight(Duration);
    if (R.Fields.size() > 3 && !R.Fields[3].empty()) T->SetName(R.Fields[3]);
  }
  CollectRows(P);
}

void LoadNetwork(TProject& P, const String& FileName) {
  try {
    TFileStream Stream(FileName, fmOpenRead);
    TReader(&Stream).ReadRootComponent(P.Net.get());
    // The scheduler needs events throughout; a foreign node class is caught here.
    const TGGraphNodes& Nodes = P.Net->GetNodeList();
    for (std::int32_t i = 0; i < Nodes.GetCount(); ++i) {
      TAOEEvent* E = As<TAOEEvent>(Nodes.GetItem(i));
      for (std::int32_t k = 0; k < E->GetEdgeCount(); ++k) (void)As<TAOETask>(E->GetEdge(k));
    }
    if (!P.Net->GetDirected()) throw EInputError(u"the network is not directed");
  } catch (const EInputError& E) {
    Fail(FileName, 0, u"not a stored activity network: " + E.Message());
  } catch (const Exception& E) {
    Fail(FileName, 0, u"not a stored activity network: " + E.Message());
  }
  CollectRows(P);
}

// A network that came whole may hold a cycle; name the events on one.
[[noreturn]] void FailEventCycle(TActivityNetwork& Net, const String& FileName) {
  std::unordered_map<TGGraphNode*, std::int32_t> State;  // 1 on the walk, 2 done
  std::vector<std::pair<TGGraphNode*, std::int32_t>> Stack;
  const TGGraphNodes& Nodes = Net.GetNodeList();
  for (std::int32_t i = 0; i < Nodes.GetCount(); ++i) {
    if (State[Nodes.GetItem(i)]) continue;
    Stack.push_back({Nodes.GetItem(i), 0});
    State[Nodes.GetItem(i)] = 1;
    while (!Stack.empty()) {
      auto& [N, K] = Stack.back();
      if (K == N->GetEdgeCount()) {
        State[N] = 2;
        Stack.pop_back();
        continue;
      }
      TGGraphNode* To = N->GetEdge(K++)->GetToNode();
      if (State[To] == 1) {
        String Names;
        std::size_t First = 0;
        while (Stack[First].first != To) ++First;
        for (std::size_t s = First; s < Stack.size(); ++s) Names += Stack[s].first->GetCaption() + u" -> ";
        Fail(FileName, 0, u"dependency cycle through events " + Names + To->GetCaption());
      }
      if (State[To] == 0) {
        State[To] = 1;
        Stack.push_back({To, 0});
      }
    }
  }
  Fail(FileName, 0, u"the network is not acyclic");
}

// --- Writing ------------------------------------------------------------------------------

// Written beside the target under a temporary name and renamed over it, so that a failure
// never leaves a half-written file.
void WriteFile(const String& FileName, const std::string& Content) {
  const String Temp = FileName + u".tmp";
  try {
    {
      TFileStream Stream(Temp, fmCreate);
      for (std::size_t At = 0; At < Content.size(); At += 1 << 24)
        Stream.WriteBuffer(Content.data() + At, static_cast<std::int32_t>(std::min<std::size_t>(Content.size() - At, 1 << 24)));
    }
  } catch (const Exception& E) {
    std::remove(N8(Temp).c_str());
    Fail(FileName, 0, u"cannot write: " + E.Message());
  }
  if (std::rename(N8(Temp).c_str(), N8(FileName).c_str()) != 0) {
    std::remove(N8(Temp).c_str());
    Fail(FileName, 0, u"cannot write: the file cannot be replaced");
  }
}

void SaveNetwork(TProject& P, const String& FileName) {
  TBytesStream M;
  TWriter(&M).WriteRootComponent(P.Net.get());
  const TBytes B = M.GetBytes();
  WriteFile(FileName, std::string(reinterpret_cast<const char*>(B.data()), B.size()));
}

std::string Num(std::int64_t V) { return std::to_string(V); }

std::string CsvField(const String& S) {
  std::string R = N8(S);
  if (R.find_first_of(",\"\r\n") == std::string::npos) return R;
  std::string Q = "\"";
  for (char C : R) Q += C == '"' ? std::string("\"\"") : std::string(1, C);
  return Q + "\"";
}

struct TTimes {
  std::int32_t Duration, ES, EF, LS, LF, Slack;
};

TTimes TimesOf(const TAOETask* T) {
  const std::int32_t D = T->GetWeight(), ES = T->GetEarliestStartTime(), LS = T->GetLatestStartTime();
  return {D, ES, ES + D, LS, LS + D, T->GetCriticality()};
}

std::string TableCsv(const std::vector<TTaskRow>& Rows) {
  std::string S = "id,name,duration,earliest_start,earliest_finish,latest_start,latest_finish,slack,critical\n";
  for (const TTaskRow& R : Rows) {
    const TTimes T = TimesOf(R.Task);
    S += CsvField(R.Id) + ',' + CsvField(R.Task->GetName()) + ',' + Num(T.Duration) + ',' + Num(T.ES) + ',' + Num(T.EF) +
         ',' + Num(T.LS) + ',' + Num(T.LF) + ',' + Num(T.Slack) + ',' + (T.Slack == 0 ? "yes" : "no") + '\n';
  }
  return S;
}

std::size_t Width(const String& S) { return S.size(); }  // UTF-16 units: close enough for aligning

void PrintTable(const std::vector<TTaskRow>& Rows) {
  std::size_t IdW = 2, NameW = 4;
  for (const TTaskRow& R : Rows) {
    IdW = std::max(IdW, Width(R.Id));
    NameW = std::max(NameW, std::min<std::size_t>(Width(R.Task->GetName()), 40));
  }
  std::string Out;
  auto Pad = [&](const String& S, std::size_t W) {
    String T = S.size() > W ? S.substr(0, W - 1) + u"~" : S;
    Out += N8(T) + std::string(W - T.size() + 2, ' ');
  };
  auto Col = [&](const std::string& S) { Out += std::string(S.size() < 6 ? 6 - S.size() : 0, ' ') + S + "  "; };
  Pad(u"id", IdW);
  Pad(u"name", NameW);
  for (const char* H : {"dur", "ES", "EF", "LS", "LF", "slack"}) Col(H);
  Out += "critical\n";
  for (const TTaskRow& R : Rows) {
    const TTimes T = TimesOf(R.Task);
    Pad(R.Id, IdW);
    Pad(R.Task->GetName(), NameW);
    for (std::int32_t V : {T.Duration, T.ES, T.EF, T.LS, T.LF, T.Slack}) Col(Num(V));
    if (T.Slack == 0) {
      Out += "*\n";
    } else {
      while (Out.back() == ' ') Out.pop_back();
      Out += '\n';
    }
    if (Out.size() > (1 << 16)) {
      std::fwrite(Out.data(), 1, Out.size(), stdout);
      Out.clear();
    }
  }
  std::fwrite(Out.data(), 1, Out.size(), stdout);
}

std::string Xml(const String& S) {
  std::string R;
  for (char C : N8(S)) {
    if (C == '<') R += "&lt;";
    else if (C == '>') R += "&gt;";
    else if (C == '&') R += "&amp;";
    else if (C == '"') R += "&quot;";
    else R += C;
  }
  return R;
}

// Bars at the earliest start, slack drawn after them, critical tasks in red, names on the left.
std::string GanttSvg(const std::vector<TTaskRow>& Rows, std::int32_t ProjectTime, const String& Title,
                     const String& Unit) {
  const int RowH = 22, Top = 58, NameW = 260, ChartW = 900, Right = 30;
  const double Scale = ProjectTime > 0 ? static_cast<double>(ChartW) / ProjectTime : 1.0;
  const int H = Top + static_cast<int>(Rows.size()) * RowH + 40;
  std::string S = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + Num(NameW + ChartW + Right) + "\" height=\"" +
                  Num(H) + "\" font-family=\"sans-serif\" font-size=\"12\">\n";
  S += "<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
  S += "<text x=\"10\" y=\"22\" font-size=\"16\" font-weight=\"bold\">" + Xml(Title) + " — " + Num(ProjectTime) +
       " " + Xml(Unit) + "</text>\n";
  S += "<rect x=\"" + Num(NameW + ChartW - 330) + "\" y=\"10\" width=\"14\" height=\"12\" fill=\"#d62728\"/><text x=\"" +
       Num(NameW + ChartW - 312) + "\" y=\"21\">critical</text>";
  S += "<rect x=\"" + Num(NameW + ChartW - 250) + "\" y=\"10\" width=\"14\" height=\"12\" fill=\"#4c78a8\"/><text x=\"" +
       Num(NameW + ChartW - 232) + "\" y=\"21\">with slack</text>";
  S += "<rect x=\"" + Num(NameW + ChartW - 150) + "\" y=\"12\" width=\"14\" height=\"8\" fill=\"#c9d6e8\"/><text x=\"" +
       Num(NameW + ChartW - 132) + "\" y=\"21\">slack</text>\n";
  // A tick every 1, 2, 5, 10, ... units, whichever gives no more than about 20 of them.
  std::int32_t Step = 1;
  for (std::int32_t k = 0; ProjectTime / Step > 20; ++k) Step *= (k % 3 == 1) ? 5 : 2;  // 1 2 10 20 100 ...
  for (std::int32_t t = 0; t <= ProjectTime; t += Step) {
    const int X = NameW + static_cast<int>(t * Scale);
    S += "<line x1=\"" + Num(X) + "\" y1=\"" + Num(Top - 8) + "\" x2=\"" + Num(X) + "\" y2=\"" + Num(H - 30) +
         "\" stroke=\"#e3e3e3\"/><text x=\"" + Num(X) + "\" y=\"" + Num(Top - 12) + "\" text-anchor=\"middle\" fill=\"#555\">" +
         Num(t) + "</text>\n";
  }
  S += "<text x=\"" + Num(NameW + ChartW / 2) + "\" y=\"" + Num(H - 10) + "\" text-anchor=\"middle\" fill=\"#555\">" + Xml(Unit) + "</text>\n";
  int Y = Top;
  for (const TTaskRow& R : Rows) {
    const TTimes T = TimesOf(R.Task);
    const int X = NameW + static_cast<int>(T.ES * Scale), W = std::max(2, static_cast<int>(T.Duration * Scale));
    S += "<text x=\"" + Num(NameW - 8) + "\" y=\"" + Num(Y + 15) + "\" text-anchor=\"end\">" + Xml(R.Task->GetName()) +
         "</text>";
    if (T.Slack > 0)
      S += "<rect x=\"" + Num(X + W) + "\" y=\"" + Num(Y + 7) + "\" width=\"" + Num(static_cast<int>(T.Slack * Scale)) +
           "\" height=\"8\" fill=\"#c9d6e8\"/>";
    S += "<rect x=\"" + Num(X) + "\" y=\"" + Num(Y + 3) + "\" width=\"" + Num(W) + "\" height=\"16\" rx=\"2\" fill=\"" +
         (T.Slack == 0 ? "#d62728" : "#4c78a8") + "\"><title>" + Xml(R.Id) + ": " + Num(T.ES) + "–" + Num(T.EF) +
         ", slack " + Num(T.Slack) + "</title></rect>\n";
    Y += RowH;
  }
  return S + "</svg>\n";
}

std::string DotText(const String& S) {
  std::string R;
  for (char C : N8(S)) {
    if (C == '"' || C == '\\') R += '\\';
    R += C;
  }
  return R;
}

std::string Dot(const TProject& P) {
  std::unordered_set<const TGGraphEdge*> Tasks;
  for (const TTaskRow& R : P.Rows) Tasks.insert(R.Task);
  std::string S = "digraph project {\n  rankdir=LR;\n  node [shape=circle, fontsize=10];\n";
  const TGGraphNodes& Nodes = P.Net->GetNodeList();
  std::unordered_map<const TGGraphNode*, std::int32_t> Number;
  for (std::int32_t i = 0; i < Nodes.GetCount(); ++i) {
    Number[Nodes.GetItem(i)] = i;
    S += "  n" + Num(i) + " [label=\"" + DotText(Nodes.GetItem(i)->GetCaption()) + "\"];\n";
  }
  for (std::int32_t i = 0; i < Nodes.GetCount(); ++i) {
    TGGraphNode* N = Nodes.GetItem(i);
    for (std::int32_t k = 0; k < N->GetEdgeCount(); ++k) {
      auto* T = As<TAOETask>(N->GetEdge(k));
      S += "  n" + Num(i) + " -> n" + Num(Number[T->GetToNode()]);
      const std::string Colour = T->GetCriticality() == 0 ? "red" : "black";
      if (Tasks.count(T))
        S += " [label=\"" + DotText(T->GetName()) + " (" + Num(T->GetWeight()) + ")\", color=" + Colour + "];\n";
      else
        S += " [style=dashed, color=" + Colour + "];\n";
    }
  }
  return S + "}\n";
}

// --- Critical paths -----------------------------------------------------------------------

// Every critical path of the whole project as task ids: walks of zero-slack edges from the
// first event to the last; only tasks are named. Each zero-slack edge lies on a longest path,
// so the walk never strays; at most Limit paths are listed.
std::vector<std::vector<String>> CriticalPaths(const TProject& P, TGGraphNode* First, std::size_t Limit,
                                               bool& More) {
  std::unordered_map<const TGGraphEdge*, const String*> IdOf;
  for (const TTaskRow& R : P.Rows) IdOf[R.Task] = &R.Id;
  std::vector<std::vector<String>> Paths;
  std::unordered_set<std::u16string> Seen;
  std::vector<std::pair<TGGraphNode*, std::int32_t>> Stack{{First, 0}};
  std::vector<const TGGraphEdge*> Taken;
  More = false;
  while (!Stack.empty()) {
    auto& [N, K] = Stack.back();
    if (K == 0 && N->GetEdgeCount() == 0) {
      std::vector<String> Path;
      String Key;
      for (const TGGraphEdge* E : Taken)
        if (auto It = IdOf.find(E); It != IdOf.end()) {
          Path.push_back(*It->second);
          Key += *It->second + u'\x1f';
        }
      if (Seen.insert(Key).second) {
        if (Paths.size() == Limit) {
          More = true;
          break;
        }
        Paths.push_back(std::move(Path));
      }
    }
    if (K == N->GetEdgeCount()) {
      Stack.pop_back();
      if (!Taken.empty()) Taken.pop_back();
      continue;
    }
    auto* T = As<TAOETask>(N->GetEdge(K++));
    if (T->GetCriticality() != 0) continue;
    Taken.push_back(T);
    Stack.push_back({T->GetToNode(), 0});
  }
  return Paths;
}

// The longest chain of a stretch (events given in topological order), as rows.
// Length is -1 when Last does not follow the first event.
std::vector<String> StretchPath(const TProject& P, const TStrings& Events, const TGGraphNode* Last,
                                std::int32_t& Length) {
  std::unordered_map<const TGGraphEdge*, const String*> IdOf;
  for (const TTaskRow& R : P.Rows) IdOf[R.Task] = &R.Id;
  std::unordered_map<const TGGraphNode*, std::pair<std::int32_t, const TGGraphEdge*>> Best;
  const std::int32_t Count = Events.GetCount();
  Length = -1;
  if (Count == 0) return {};
  for (std::int32_t i = 0; i < Count; ++i) Best[static_cast<TGGraphNode*>(Events.GetObject(i))] = {-1, nullptr};
  auto* First = static_cast<TGGraphNode*>(Events.GetObject(0));
  Best[First] = {0, nullptr};
  for (std::int32_t i = 0; i < Count; ++i) {
    auto* N = static_cast<TGGraphNode*>(Events.GetObject(i));
    const std::int32_t D = Best[N].first;
    if (D < 0) continue;
    for (std::int32_t k = 0; k < N->GetEdgeCount(); ++k) {
      auto* T = As<TAOETask>(N->GetEdge(k));
      auto It = Best.find(T->GetToNode());
      if (It != Best.end() && D + T->GetWeight() > It->second.first) It->second = {D + T->GetWeight(), T};
    }
  }
  if (!Last) Last = static_cast<TGGraphNode*>(Events.GetObject(Count - 1));
  if (!Best.count(Last)) return {};
  Length = Best[Last].first;
  std::vector<String> Path;
  for (const TGGraphEdge* E = Best[Last].second; E; E = Best[E->GetFromNode()].second)
    if (auto It = IdOf.find(E); It != IdOf.end()) Path.insert(Path.begin(), *It->second);
  return Path;
}

std::string Joined(const std::vector<String>& Ids) {
  std::string S;
  for (const String& Id : Ids) S += (S.empty() ? "" : " -> ") + N8(Id);
  return S.empty() ? "(no task)" : S;
}

// --- Generating ---------------------------------------------------------------------------

// A random project of Count tasks: each depends on up to three of the 500 tasks before it, so
// that chains stay long but the network is wide as well.
std::string GenerateProject(std::int64_t Count, std::uint64_t Start) {
  std::uint64_t State = Start;
  auto Next = [&State] {  // splitmix64
    std::uint64_t Z = (State += 0x9E3779B97F4A7C15ULL);
    Z = (Z ^ (Z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    Z = (Z ^ (Z >> 27)) * 0x94D049BB133111EBULL;
    return Z ^ (Z >> 31);
  };
  std::string S = "id,name,duration,predecessors\n";
  S.reserve(static_cast<std::size_t>(Count) * 40);
  for (std::int64_t i = 1; i <= Count; ++i) {
    // Appended piece by piece: no temporaries, and g++ 12 at -O2 misreads the bounds of
    // `const char* + std::string`.
    S += 'T';
    S += Num(i);
    S += ",Task ";
    S += Num(i);
    S += ',';
    S += Num(1 + static_cast<std::int64_t>(Next() % 20));
    S += ',';
    const std::int64_t Preds = i == 1 ? 0 : static_cast<std::int64_t>(Next() % 4);
    std::unordered_set<std::int64_t> Chosen;
    for (std::int64_t k = 0; k < Preds; ++k) {
      const std::int64_t Back = 1 + static_cast<std::int64_t>(Next() % static_cast<std::uint64_t>(std::min<std::int64_t>(i - 1, 500)));
      if (!Chosen.insert(i - Back).second) continue;
      S += Chosen.size() > 1 ? ";T" : "T";
      S += Num(i - Back);
    }
    S += '\n';
  }
  return S;
}

// --- Command line -------------------------------------------------------------------------

struct TOptions {
  String Input, Load, Save, Csv, Svg, Dot, From, To, Unit = u"days";
  bool Events = false, Quiet = false;
  std::int64_t Generate = -1;
  std::uint64_t Start = 1;
};

std::int64_t Number(const std::string& Flag, const char* Text) {
  char* End = nullptr;
  const long long V = std::strtoll(Text, &End, 10);
  if (!*Text || *End || V < 0) throw EUsageError(U(Flag) + u" needs a non-negative whole number, not \"" + U(Text) + u"\"");
  return V;
}

TOptions ParseArgs(int argc, char** argv) {
  TOptions O;
  for (int i = 1; i < argc; ++i) {
    const std::string A = argv[i];
    auto Value = [&]() -> const char* {
      if (i + 1 >= argc) throw EUsageError(U(A) + u" needs a value");
      return argv[++i];
    };
    if (A == "--help" || A == "-h") {
      std::fputs(Usage, stdout);
      std::exit(0);
    } else if (A == "--events") O.Events = true;
    else if (A == "--quiet") O.Quiet = true;
    else if (A == "--load") O.Load = U(Value());
    else if (A == "--save") O.Save = U(Value());
    else if (A == "--csv") O.Csv = U(Value());
    else if (A == "--svg") O.Svg = U(Value());
    else if (A == "--dot") O.Dot = U(Value());
    else if (A == "--from") O.From = U(Value());
    else if (A == "--to") O.To = U(Value());
    else if (A == "--unit") O.Unit = U(Value());
    else if (A == "--generate") O.Generate = Number(A, Value());
    else if (A == "--seed") O.Start = static_cast<std::uint64_t>(Number(A, Value()));
    else if (A.size() > 1 && A[0] == '-') throw EUsageError(u"unknown option " + U(A));
    else if (O.Input.empty()) O.Input = U(A);
    else throw EUsageError(u"more than one project file given");
  }
  if (O.Input.empty() == O.Load.empty() && O.Generate < 0)
    throw EUsageError(O.Input.empty() ? u"no project file given" : u"give either a project file or --load, not both");
  if (O.Generate >= 0 && O.Input.empty()) throw EUsageError(u"--generate needs the file to write");
  return O;
}

TAOEEvent* FindEvent(TProject& P, const String& Id, bool Finish) {
  TGGraphNode* N = Finish ? P.Net->FindNode(Id + FinishSuffix) : nullptr;
  if (!N) N = P.Net->FindNode(Id);
  if (!N) throw EUsageError(u"no task or event \"" + Id + u"\"");
  return As<TAOEEvent>(N);
}

int Run(const TOptions& O) {
  if (O.Generate >= 0) {
    WriteFile(O.Input, GenerateProject(O.Generate, O.Start));
    return 0;
  }
  TProject P;
  TProgress Progress;
  const String Source = O.Load.empty() ? O.Input : O.Load;
  if (!O.Load.empty()) {
    LoadNetwork(P, O.Load);
  } else {
    std::vector<TRecord> Recs = ParseCsv(ReadText(O.Input), O.Input);
    if (!Recs.empty()) Recs.erase(Recs.begin());  // the header
    Progress.On = Recs.size() > 50000;
    Progress.Step("read " + std::to_string(Recs.size()) + " rows");
    if (O.Events) BuildFromEvents(P, Recs, O.Input);
    else BuildFromTasks(P, Recs, O.Input, Progress);
  }
  if (!Progress.On && P.Rows.size() > 50000) {
    Progress.On = true;
    Progress.Step("read " + std::to_string(P.Rows.size()) + " tasks");
  }
  TAOEEvent* From = O.From.empty() ? nullptr : FindEvent(P, O.From, false);
  TAOEEvent* To = O.To.empty() ? nullptr : FindEvent(P, O.To, true);

  Progress.Step("scheduling");
  TStringList Events;
  std::int32_t Time = 0;
  try {
    P.Net->GetEarliestCompletionTime(From, To, Events, Time);
  } catch (const EGraphException&) {
    FailEventCycle(*P.Net, Source);
  }

  Progress.Step("writing");
  if (!O.Save.empty()) SaveNetwork(P, O.Save);
  if (!O.Csv.empty()) WriteFile(O.Csv, TableCsv(P.Rows));
  if (!O.Dot.empty()) WriteFile(O.Dot, Dot(P));
  if (!O.Svg.empty()) {
    std::string Title = N8(Source);
    if (const auto Slash = Title.find_last_of('/'); Slash != std::string::npos) Title.erase(0, Slash + 1);
    WriteFile(O.Svg, GanttSvg(P.Rows, Time, U(Title), O.Unit));
  }
  if (!O.Quiet) PrintTable(P.Rows);
  if (From || To) {
    std::int32_t Length = 0;
    const std::vector<String> Path = StretchPath(P, Events, To, Length);
    std::printf("\nstretch %s to %s: ", O.From.empty() ? "project start" : N8(O.From).c_str(),
                O.To.empty() ? "project finish" : N8(O.To).c_str());
    if (Length < 0) std::printf("the finish does not follow the start\n");
    else std::printf("%d\ncritical path: %s\n", Length, Joined(Path).c_str());
  } else {
    std::printf("\nproject duration: %d\n", Events.GetCount() ? Time : 0);
    if (Events.GetCount()) {
      bool More = false;
      const auto Paths = CriticalPaths(P, static_cast<TGGraphNode*>(Events.GetObject(0)), 10, More);
      for (const auto& Path : Paths) std::printf("critical path: %s\n", Joined(Path).c_str());
      if (More) std::printf("(more critical paths not shown)\n");
    }
  }
  Progress.Step("done");
  if (Progress.On) {
    // Freeing millions of events and tasks one by one takes longer than scheduling them, and
    // the process ends right here: leave the memory to the system.
    static TActivityNetwork* const Kept = P.Net.release();
    (void)Kept;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  GGraph::Initialize();
  ActivityNetwork::Initialize();
  try {
    return Run(ParseArgs(argc, argv));
  } catch (const EUsageError& E) {
    std::fprintf(stderr, "kzschedule: %s\n(kzschedule --help lists the options)\n", N8(E.Message()).c_str());
    return 2;
  } catch (const EInputError& E) {
    std::fprintf(stderr, "kzschedule: %s\n", N8(E.Message()).c_str());
    return 1;
  } catch (const Exception& E) {
    std::fprintf(stderr, "kzschedule: %s\n", N8(E.Message()).c_str());
    return 1;
  }
}
