#include "GRegularExpression/GRegularExpression.h"

#include <algorithm>
#include <memory>
#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace kz {

using namespace Runtime;
using namespace GRegularExpression;

namespace {

constexpr std::int32_t ScanMarker = -2;
constexpr std::string_view MetaCharacters = "$()*+-.?[]^|";

bool IsMeta(char Ch) { return MetaCharacters.find(Ch) != std::string_view::npos; }

char UpperAscii(char Ch) { return Ch >= 'a' && Ch <= 'z' ? static_cast<char>(Ch - 'a' + 'A') : Ch; }

unsigned char Code(char Ch) { return static_cast<unsigned char>(Ch); }

// Every occurrence, left to right without overlaps, as the anchor step's passes need.
AnsiString ReplaceAll(AnsiString S, std::string_view From, std::string_view To) {
  for (std::size_t Pos = S.find(From); Pos != AnsiString::npos; Pos = S.find(From, Pos + To.size()))
    S.replace(Pos, From.size(), To);
  return S;
}

Pointer AsEntry(std::int32_t State) { return reinterpret_cast<Pointer>(static_cast<std::intptr_t>(State)); }
std::int32_t AsState(Pointer Entry) { return static_cast<std::int32_t>(reinterpret_cast<std::intptr_t>(Entry)); }

}  // namespace

// Recursive descent over the anchor step's rewritten text. Alternatives and the factors of a
// term are walked in loops (they make their states in the same order as the recursive
// grammar does), so only group nesting takes stack, and that is bounded.
class TGRegularExpression::TCompiler {
 public:
  TCompiler(TGRegularExpression& Owner, AnsiString Text) : R(Owner), FText(std::move(Text)) {}

  std::int32_t Expression(std::int32_t Depth) {
    std::int32_t First = -1;
    std::int32_t PendingBranch = -1;
    std::vector<std::int32_t> Joins;
    for (;;) {
      const std::int32_t Term = this->Term(Depth);
      std::int32_t Start = Term;
      const bool Alternative = Current() == '|';
      if (Alternative) {
        ++R.FIndex;
        Joins.push_back(AddState(reNone, 0, {}, -1, -1, false));
        Start = AddState(reNone, 0, {}, Term, -1, false);
      }
      if (PendingBranch >= 0) R.FStates[static_cast<std::size_t>(PendingBranch)].NextState2 = Start;
      if (First < 0) First = Start;
      if (!Alternative) break;
      PendingBranch = Start;
    }
    for (std::int32_t Join : Joins) R.FStates[static_cast<std::size_t>(Join)].NextState1 = Length();
    return First;
  }

 private:
  std::int32_t Term(std::int32_t Depth) {
    std::int32_t First = -1;
    std::int32_t PendingLink = -1;
    for (;;) {
      const std::int32_t Factor = this->Factor(Depth);
      if (PendingLink >= 0) R.FStates[static_cast<std::size_t>(PendingLink)].NextState1 = Factor;
      if (First < 0) First = Factor;
      const char Ch = Current();
      if (AtEnd() || (IsMeta(Ch) && Ch != '(' && Ch != '.' && Ch != '[')) return First;
      PendingLink = AddState(reNone, 0, {}, -1, -1, false);
    }
  }

  std::int32_t Factor(std::int32_t Depth) {
    const std::int32_t Atom = this->Atom(Depth);
    switch (AtEnd() ? '\0' : Current()) {
      case '*':
        ++R.FIndex;
        return AddState(reNone, 0, {}, -1, Atom, true);
      case '+':
        ++R.FIndex;
        AddState(reNone, 0, {}, -1, Atom, true);
        return Atom;
      case '?': {
        ++R.FIndex;
        const std::int32_t Join = AddState(reNone, 0, {}, -1, -1, false);
        const std::int32_t Branch = AddState(reNone, 0, {}, Atom, Join, false);
        R.FStates[static_cast<std::size_t>(Join)].NextState1 = Length();
        return Branch;
      }
      default:
        return Atom;
    }
  }

  std::int32_t Atom(std::int32_t Depth) {
    if (AtEnd()) throw ERXException(SUnexpectedEnd);
    switch (Current()) {
      case '(': {
        if (Depth >= MaxGroupDepth) throw ERXException(SNestedTooDeeply, {MaxGroupDepth});
        ++R.FIndex;
        const std::int32_t Start = Expression(Depth + 1);
        if (AtEnd() || Current() != ')') throw ERXException(SMissingCloseParentheses);
        ++R.FIndex;
        return Start;
      }
      case '.':
        ++R.FIndex;
        return AddState(reAnyChar, 0, {}, -1, -1, true);
      case '[': {
        ++R.FIndex;
        const bool Negated = !AtEnd() && Current() == '^';
        if (Negated) ++R.FIndex;
        const TCharSet Set = ParseSet();
        if (AtEnd() || Current() != ']') throw ERXException(SMissingCloseBracket);
        ++R.FIndex;
        return AddState(Negated ? reNotCharSet : reCharSet, 0, Set, -1, -1, true);
      }
      default:
        return AddState(reChar, Character(), {}, -1, -1, true);
    }
  }

  char Character() {
    if (AtEnd()) throw ERXException(SUnexpectedEnd);
    if (IsMeta(Current())) throw ERXException(SUnexpectedMeta);
    return R.Fold(TakeLiteral());
  }

  // A character that a backslash may escape; at the end of the text, the unexpected end.
  char TakeLiteral() {
    if (Current() == '\\') ++R.FIndex;
    if (AtEnd()) throw ERXException(SUnexpectedEnd);
    return FText[static_cast<std::size_t>(R.FIndex++ - 1)];
  }

  TCharSet ParseSet() {
    TCharSet Set;
    for (bool Any = false;; Any = true) {
      if (AtEnd()) throw ERXException(SUnexpectedEnd);
      if (Current() == ']') {
        if (!Any) throw ERXException(SUnexpectedMeta);
        return Set;
      }
      if (Current() == '-') throw ERXException(SUnexpectedMeta);
      unsigned char Low = Code(R.Fold(TakeLiteral()));
      unsigned char High = Low;
      if (!AtEnd() && Current() == '-') {
        ++R.FIndex;
        if (AtEnd()) throw ERXException(SUnexpectedEnd);
        if (Current() == ']' || Current() == '-') throw ERXException(SUnexpectedMeta);
        High = Code(R.Fold(TakeLiteral()));
        if (High < Low) std::swap(Low, High);
      }
      for (unsigned Ch = Low; Ch <= High; ++Ch) Set.set(Ch);
    }
  }

  std::int32_t AddState(TRegExMatchType Type, char Ch, const TCharSet& Set, std::int32_t Next1, std::int32_t Next2,
                        bool NextIsFollowing) {
    const std::int32_t Index = Length();
    TRegExState& S = R.FStates.emplace_back();
    S.MatchType = Type;
    S.NextState1 = NextIsFollowing ? Index + 1 : Next1;
    S.NextState2 = Next2;
    if (Type == reChar) S.Character = Ch;
    if (Type == reCharSet || Type == reNotCharSet) S.CharSet = Set;
    return Index;
  }

  bool AtEnd() const { return R.FIndex < 1 || static_cast<std::size_t>(R.FIndex) > FText.size(); }
  char Current() const { return AtEnd() ? '\0' : FText[static_cast<std::size_t>(R.FIndex - 1)]; }
  std::int32_t Length() const { return static_cast<std::int32_t>(R.FStates.size()); }

  TGRegularExpression& R;
  const AnsiString FText;
};

TGRegularExpression::TGRegularExpression(AnsiString Expression) { SetExpression(Expression); }

char TGRegularExpression::Fold(char Ch) const { return FCaseSensitive ? Ch : UpperAscii(Ch); }

void TGRegularExpression::Assign(TPersistent* Source) {
  if (auto* Other = dynamic_cast<TGRegularExpression*>(Source)) {
    FStates = Other->FStates;
    FExpression = Other->FExpression;
    FIndex = Other->FIndex;
    FAnchorEnd = Other->FAnchorEnd;
    FAnchorStart = Other->FAnchorStart;
    FCaseSensitive = Other->FCaseSensitive;
    FStartState = Other->FStartState;
    FFilter = Other->FFilter;
    return;
  }
  inherited::Assign(Source);
}

void TGRegularExpression::SetExpression(const AnsiString& Value) {
  if (Value != FExpression || FStates.empty()) ParseExpression(Value);
}

void TGRegularExpression::SetCaseSensitive(bool Value) {
  if (Value == FCaseSensitive) return;
  FCaseSensitive = Value;
  ParseExpression(FExpression);
}

void TGRegularExpression::SetMaxExamples(std::int32_t Value) { FMaxExamples = std::max(Value, 1); }

void TGRegularExpression::ParseExpression(const AnsiString& Text) {
  FFilter.reset();
  FExpression = Text;
  FStates.clear();
  if (FExpression.empty()) return;
  FIndex = 1;
  FStartState = AnchorStep();
  TRegExState& Terminal = FStates.emplace_back();
  Terminal.MatchType = reTerminal;
  OptimizeStates();
}

std::int32_t TGRegularExpression::AnchorStep() {
  FAnchorStart = FExpression[0] == '^';
  if (FAnchorStart) ++FIndex;
  AnsiString Text = ReplaceAll(ReplaceAll(FExpression, "^", "\n"), "$", "\r");
  Text = ReplaceAll(ReplaceAll(ReplaceAll(Text, "\\\r", "\\$"), "\\\n", "\\^"), "[\n", "[^");
  const std::int32_t Start = TCompiler(*this, std::move(Text)).Expression(0);
  FAnchorEnd = static_cast<std::size_t>(FIndex) <= FExpression.size() && FExpression[static_cast<std::size_t>(FIndex - 1)] == '$';
  if (FAnchorEnd) ++FIndex;
  return Start;
}

void TGRegularExpression::OptimizeStates() {
  const auto Count = static_cast<std::int32_t>(FStates.size());
  auto IsForward = [&](std::int32_t N) {
    return N >= 0 && N < Count && FStates[static_cast<std::size_t>(N)].MatchType == reNone &&
           FStates[static_cast<std::size_t>(N)].NextState2 == -1;
  };
  // Forwarding chains only lead forward, but the bound keeps a hand-built cycle finite.
  auto Bypass = [&](std::int32_t& Next) {
    for (std::int32_t Steps = 0; IsForward(Next) && Steps < Count; ++Steps)
      Next = FStates[static_cast<std::size_t>(Next)].NextState1;
  };
  for (std::int32_t i = 0; i + 1 < Count; ++i) {
    TRegExState& S = FStates[static_cast<std::size_t>(i)];
    Bypass(S.NextState1);
    if (S.NextState2 != -1) Bypass(S.NextState2);
  }
}

bool TGRegularExpression::MatchSubString(const AnsiString& Text, std::int32_t StartPos, bool MatchAllChars,
                                         std::int32_t& Len) {
  const auto Count = static_cast<std::int32_t>(FStates.size());
  const auto Length = static_cast<std::int64_t>(Text.size());
  if (StartPos < 1) StartPos = 1;
  if (FExpandedAt.size() != FStates.size()) FExpandedAt.assign(FStates.size(), 0);
  FQueue.SetCount(0);
  FQueue.Push(AsEntry(ScanMarker));
  FQueue.Push(AsEntry(FStartState));
  std::int64_t j = static_cast<std::int64_t>(StartPos) - 1;
  char Ch = 0;
  bool Matched = true;
  ++FTick;

  // Takes the next state to expand at this position; false for a marker. A state already
  // expanded here is dropped: it would repeat what its first copy did.
  auto Expand = [&](std::int32_t N, auto&& Consume) -> int {
    if (N < 0 || N >= Count) return 0;
    std::uint64_t& Stamp = FExpandedAt[static_cast<std::size_t>(N)];
    if (Stamp == FTick) return 0;
    Stamp = FTick;
    const TRegExState& S = FStates[static_cast<std::size_t>(N)];
    switch (S.MatchType) {
      case reNone:
        if (S.NextState2 >= 0) FQueue.Insert(0, AsEntry(S.NextState2));
        if (S.NextState1 >= 0) FQueue.Insert(0, AsEntry(S.NextState1));
        return 0;
      case reTerminal:
        return 1;
      case reAnyChar:
      case reChar:
      case reCharSet:
      case reNotCharSet:
        Consume(S);
        return 0;
      default:
        return 0;
    }
  };

  while (j <= Length && !FQueue.IsEmpty()) {
    const std::int32_t N = AsState(FQueue.Pop());
    if (N == ScanMarker) {
      if (FQueue.IsEmpty()) continue;
      ++j;
      ++FTick;
      if (j <= Length) {
        if (!Matched) return false;
        Matched = false;
        Ch = Fold(Text[static_cast<std::size_t>(j - 1)]);
        FQueue.Push(AsEntry(ScanMarker));
      }
      continue;
    }
    const int Reached = Expand(N, [&](const TRegExState& S) {
      const bool Accepts = S.MatchType == reAnyChar || (S.MatchType == reChar && S.Character == Ch) ||
                           (S.MatchType == reCharSet && S.CharSet.test(Code(Ch))) ||
                           (S.MatchType == reNotCharSet && !S.CharSet.test(Code(Ch)));
      if (!Accepts) return;
      FQueue.Push(AsEntry(S.NextState1));
      Matched = true;
    });
    if (Reached && ((!MatchAllChars && !FAnchorEnd) || j > Length)) {
      Len = static_cast<std::int32_t>(j - StartPos);
      return true;
    }
  }
  while (!FQueue.IsEmpty()) {
    const std::int32_t N = AsState(FQueue.Pop());
    if (N == ScanMarker) continue;
    if (Expand(N, [](const TRegExState&) {})) {
      Len = static_cast<std::int32_t>(j > Length ? j - StartPos : j - StartPos + 1);
      return true;
    }
  }
  return false;
}

// Over-approximates which pairs of characters a match can begin with. A start position
// whose character, or whose next character after it, no match can begin with fails at its
// first or second step; skipping it changes no answer. Built once per compiled automaton.
struct TGRegularExpression::TScanFilter {
  bool CanBeEmpty = false;         // the start reaches the end without consuming
  bool Begins[256] = {};           // by the text's own byte
  bool CanEndAfter[256] = {};      // a match may be this one character long
  std::bitset<256> Follows[256];   // by the first byte: the folded bytes that may come next

  explicit TScanFilter(const TGRegularExpression& R) : FStamp(R.FStates.size(), 0) {
    unsigned char Fold[256];
    for (unsigned Ch = 0; Ch < 256; ++Ch) Fold[Ch] = Code(R.Fold(static_cast<char>(Ch)));
    std::vector<std::int32_t> Consumers;
    TCharSet Unused;
    CanBeEmpty = Close(R, R.FStartState, Unused, &Consumers);
    if (CanBeEmpty) return;
    for (std::int32_t N : Consumers) {
      const TRegExState& S = R.FStates[static_cast<std::size_t>(N)];
      TCharSet Next;
      const bool Ends = Close(R, S.NextState1, Next, nullptr);
      for (unsigned Ch = 0; Ch < 256; ++Ch) {
        if (!Accepts(S, Fold[Ch])) continue;
        Begins[Ch] = true;
        CanEndAfter[Ch] = CanEndAfter[Ch] || Ends;
        Follows[Ch] |= Next;
      }
    }
    for (unsigned Ch = 0; Ch < 256; ++Ch) FFold[Ch] = Fold[Ch];
  }

  // The next start at or after Start (1-based) worth trying, or Length + 1.
  std::int32_t NextStart(const AnsiString& Text, std::int32_t Start, std::int32_t Length) const {
    if (CanBeEmpty) return Start;
    const auto* Data = reinterpret_cast<const unsigned char*>(Text.data());
    for (; Start <= Length; ++Start) {
      const unsigned char Ch = Data[Start - 1];
      if (!Begins[Ch]) continue;
      if (Start == Length || CanEndAfter[Ch] || Follows[Ch].test(FFold[Data[Start]])) return Start;
    }
    return Start;
  }

 private:
  static bool Accepts(const TRegExState& S, unsigned char Folded) {
    switch (S.MatchType) {
      case reAnyChar: return true;
      case reChar: return Folded == Code(S.Character);
      case reCharSet: return S.CharSet.test(Folded);
      case reNotCharSet: return !S.CharSet.test(Folded);
      default: return false;
    }
  }

  // Walks the empty moves from From: collects what the consuming states reached accept (and,
  // when asked, which they are); true when the accepting state is reached.
  bool Close(const TGRegularExpression& R, std::int32_t From, TCharSet& Accepted, std::vector<std::int32_t>* Consumers) {
    const auto Count = static_cast<std::int32_t>(R.FStates.size());
    ++FWalk;
    bool Terminal = false;
    FPending.assign(1, From);
    while (!FPending.empty()) {
      const std::int32_t N = FPending.back();
      FPending.pop_back();
      if (N < 0 || N >= Count || FStamp[static_cast<std::size_t>(N)] == FWalk) continue;
      FStamp[static_cast<std::size_t>(N)] = FWalk;
      const TRegExState& S = R.FStates[static_cast<std::size_t>(N)];
      switch (S.MatchType) {
        case reNone:
          FPending.push_back(S.NextState2);
          FPending.push_back(S.NextState1);
          continue;
        case reTerminal: Terminal = true; continue;
        case reAnyChar: Accepted.set(); break;
        case reChar: Accepted.set(Code(S.Character)); break;
        case reCharSet: Accepted |= S.CharSet; break;
        case reNotCharSet: Accepted |= ~S.CharSet; break;
        default: continue;
      }
      if (Consumers) Consumers->push_back(N);
    }
    return Terminal;
  }

  unsigned char FFold[256] = {};
  std::vector<std::uint32_t> FStamp;
  std::uint32_t FWalk = 0;
  std::vector<std::int32_t> FPending;
};

std::int32_t TGRegularExpression::Match(const AnsiString& Text, std::int32_t StartPos, std::int32_t& Len,
                                        bool MatchAllChars) {
  Len = 0;
  if (FStates.empty()) {
    // A failed compile must not make matching raise: an expression that does not compile
    // matches nothing.
    try {
      ParseExpression(FExpression);
    } catch (const ERXException&) {
      return 0;
    }
  }
  if (FExpression.empty() || FStates.empty()) return 0;
  if (StartPos < 1) StartPos = 1;
  if (FAnchorStart) return StartPos == 1 && MatchSubString(Text, 1, MatchAllChars, Len) ? 1 : 0;
  if (!MatchAllChars) {
    if (!FFilter) FFilter = std::make_shared<TScanFilter>(*this);
    const TScanFilter& Filter = *FFilter;
    const auto Length = static_cast<std::int32_t>(std::min<std::size_t>(Text.size(), INT32_MAX));
    for (std::int32_t Start = Filter.NextStart(Text, StartPos, Length); Start <= Length;
         Start = Filter.NextStart(Text, Start + 1, Length))
      if (MatchSubString(Text, Start, false, Len)) return Start;
    return 0;
  }
  return MatchSubString(Text, StartPos, true, Len) ? StartPos : 0;
}

std::int32_t TGRegularExpression::Match(const AnsiString& Text, std::int32_t& Len, bool MatchAllChars) {
  return Match(Text, 1, Len, MatchAllChars);
}

std::int32_t TGRegularExpression::Match(const AnsiString& Text, bool MatchAllChars) {
  std::int32_t Len = 0;
  return Match(Text, Len, MatchAllChars);
}

bool TGRegularExpression::ExactMatch(const AnsiString& Text) {
  std::int32_t Len = 0;
  return Match(Text, 1, Len, true) != 0;
}

TRXStringArray TGRegularExpression::Examples() {
  TRXStringArray Result;
  const auto Count = static_cast<std::int32_t>(FStates.size());
  if (FExpression.empty() || FStartState < 0 || FStartState >= Count) return Result;

  // A character the state accepts, printable where one exists; folded the way matching folds.
  auto Pick = [&](const TRegExState& S, char& Out) {
    auto Accepts = [&](unsigned Ch) {
      const unsigned char Folded = Code(Fold(static_cast<char>(Ch)));
      switch (S.MatchType) {
        case reAnyChar: return true;
        case reChar: return Folded == Code(S.Character);
        case reCharSet: return S.CharSet.test(Folded);
        case reNotCharSet: return !S.CharSet.test(Folded);
        default: return false;
      }
    };
    if (S.MatchType == reChar && Accepts(Code(S.Character))) {
      Out = S.Character;
      return true;
    }
    for (unsigned Ch : {unsigned('a'), unsigned('0'), unsigned('A')})
      if (Accepts(Ch)) return Out = static_cast<char>(Ch), true;
    for (unsigned Ch = 32; Ch < 256 + 32; ++Ch)
      if (Accepts(Ch % 256)) return Out = static_cast<char>(Ch % 256), true;
    return false;
  };

  // Depth first with an explicit stack: each frame is a state on the current path and how
  // many of its ways on were tried; the path guard keeps a state off the path twice.
  struct TFrame {
    std::int32_t State;
    std::uint8_t Tried;
    bool AddedCharacter;
  };
  std::vector<TFrame> Stack{{FStartState, 0, false}};
  std::vector<bool> OnPath(static_cast<std::size_t>(Count), false);
  OnPath[static_cast<std::size_t>(FStartState)] = true;
  AnsiString Text;
  std::unordered_set<AnsiString> Seen;
  for (std::int64_t Steps = 0; !Stack.empty() && static_cast<std::int32_t>(Result.size()) < FMaxExamples &&
                               Steps < MaxExampleSteps;
       ++Steps) {
    TFrame& F = Stack.back();
    const TRegExState& S = FStates[static_cast<std::size_t>(F.State)];
    std::int32_t Next = -1;
    bool Done = false;
    if (S.MatchType == reTerminal) {
      if (Seen.insert(Text).second) Result.push_back(Text);
      Done = true;
    } else if (S.MatchType == reNone) {
      Done = F.Tried == 2;
      if (!Done) Next = F.Tried++ == 0 ? S.NextState1 : S.NextState2;
    } else {
      char Ch = 0;
      Done = F.Tried++ > 0 || !Pick(S, Ch);
      if (!Done) {
        Text.push_back(Ch);
        F.AddedCharacter = true;
        Next = S.NextState1;
      }
    }
    if (Done) {
      OnPath[static_cast<std::size_t>(F.State)] = false;
      if (F.AddedCharacter) Text.pop_back();
      Stack.pop_back();
    } else if (Next >= 0 && Next < Count && !OnPath[static_cast<std::size_t>(Next)]) {
      OnPath[static_cast<std::size_t>(Next)] = true;
      Stack.push_back({Next, 0, false});
    }
  }
  return Result;
}

}  // namespace kz
