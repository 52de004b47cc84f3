// A small regular-expression language over 8-bit text, compiled into a nondeterministic
// automaton held in a flat array of states; matching simulates the automaton with a
// double-ended queue, and Examples lists strings the expression accepts.
#pragma once

#include <bitset>
#include <cstdint>
#include <memory>
#include <vector>

#include "GLists/ArrayContainers.h"
#include "Runtime/Errors.h"
#include "Runtime/Persistent.h"
#include "Runtime/Types.h"

namespace kz {

KZ_DECLARE_EXCEPTION(ERXException, Exception)

namespace GRegularExpression {
KZ_UNIT_SCOPE(GRegularExpression)
KZ_RESOURCESTRING(SMissingCloseBracket, u"Missing Close Bracket")
KZ_RESOURCESTRING(SMissingCloseParentheses, u"Missing Close Parentheses")
KZ_RESOURCESTRING(SUnexpectedEnd, u"Unexpected end of regular expression")
KZ_RESOURCESTRING(SUnexpectedMeta, u"Unexpected meta character found")
KZ_RESOURCESTRING(SNestedTooDeeply, u"Regular expression nested deeper than %d groups")
/// How deep groups may nest; deeper expressions raise SNestedTooDeeply instead of
/// exhausting the stack.
inline constexpr std::int32_t MaxGroupDepth = 256;
/// How many automaton steps Examples takes at most before it answers what it has found.
inline constexpr std::int64_t MaxExampleSteps = 1'000'000;
}  // namespace GRegularExpression

/// What a state consumes: reNone is an empty move to one or two successors, reTerminal the
/// accepting state.
enum TRegExMatchType : std::uint8_t { reNone, reAnyChar, reChar, reCharSet, reNotCharSet, reTerminal, reUnused };

/// A set of the 256 byte values.
using TCharSet = std::bitset<256>;

/// One automaton state; successors are state indexes, -1 for none.
struct TRegExState {
  std::int32_t NextState1 = -1;
  std::int32_t NextState2 = -1;
  TCharSet CharSet;
  TRegExMatchType MatchType = reNone;
  char Character = 0;
};

using TRegExStates = std::vector<TRegExState>;
using TRXStringArray = std::vector<AnsiString>;
using TRXIntegerArray = std::vector<std::int32_t>;

/// A compiled regular expression. Syntax: `^` first anchors the match at position 1 and
/// elsewhere means line feed; `$` means carriage return; `\` takes the next character
/// literally; `.`, `[set]`, `[^set]` (ranges c1-c2, reversed ends swapped), `( )`, the
/// suffixes `* + ?` (one per atom), concatenation and `|` (lowest, right-associative).
/// Characters left after a complete expression are ignored. Syntax errors raise
/// ERXException while compiling (constructor, SetExpression, SetCaseSensitive,
/// ParseExpression), leaving the states partly built; matching never raises.
///
/// Matching is breadth first over the automaton: the first accepting state reached wins,
/// with empty moves explored first-successor first, so a star stops as early as it can and
/// a match may be empty. Each state is expanded at most once per text position, which gives
/// the same answers as expanding every queued copy and keeps cycles of empty moves (`(a*)*`)
/// finite: a match costs O(text length x states) per start position tried and allocates
/// nothing per character. Start positions whose first two characters cannot begin a match are skipped.
class TGRegularExpression : public TPersistent {
  KZ_CLASS(TGRegularExpression, TPersistent)
 public:
  explicit TGRegularExpression(AnsiString Expression = AnsiString());

  /// From another regular expression: states, expression, parse position, anchors, case
  /// sensitivity and start state (not MaxExamples); otherwise the persistent rules.
  void Assign(TPersistent* Source) override;

  /// Up to MaxExamples distinct strings the expression accepts, found depth first along
  /// paths that visit no state twice; stops after MaxExampleSteps steps with what it has.
  [[nodiscard]] virtual TRXStringArray Examples();
  /// Simulates the automaton from StartPos (1-based); true with Len set on a match.
  virtual bool MatchSubString(const AnsiString& Text, std::int32_t StartPos, bool MatchAllChars, std::int32_t& Len);
  /// Bypasses chains of pure forwarding states (they stay in the array, unreached).
  virtual void OptimizeStates();
  /// Stores Text and compiles it, even when unchanged.
  virtual void ParseExpression(const AnsiString& Text);
  /// The 1-based position of the first match at or after StartPos, 0 for none.
  virtual std::int32_t Match(const AnsiString& Text, std::int32_t StartPos, std::int32_t& Len, bool MatchAllChars);
  virtual std::int32_t Match(const AnsiString& Text, std::int32_t& Len, bool MatchAllChars);
  std::int32_t Match(const AnsiString& Text, bool MatchAllChars);
  /// The whole text matches.
  [[nodiscard]] bool ExactMatch(const AnsiString& Text);

  [[nodiscard]] const AnsiString& GetExpression() const { return FExpression; }
  /// Compiles when the text changes.
  void SetExpression(const AnsiString& Value);
  [[nodiscard]] bool GetCaseSensitive() const { return FCaseSensitive; }
  /// Compiles again when the value changes (letters are folded when compiling and matching).
  void SetCaseSensitive(bool Value);
  [[nodiscard]] std::int32_t GetMaxExamples() const { return FMaxExamples; }
  /// Values below 1 are stored as 1.
  void SetMaxExamples(std::int32_t Value);

  [[nodiscard]] const TRegExStates& GetStates() const { return FStates; }
  [[nodiscard]] std::int32_t GetStartState() const { return FStartState; }
  [[nodiscard]] bool GetAnchorStart() const { return FAnchorStart; }
  [[nodiscard]] bool GetAnchorEnd() const { return FAnchorEnd; }

 protected:
  TRegExStates FStates;
  AnsiString FExpression;
  std::int32_t FIndex = 1;
  bool FAnchorEnd = false;
  bool FAnchorStart = false;
  bool FCaseSensitive = true;
  std::int32_t FStartState = 0;
  std::int32_t FMaxExamples = 10;

 private:
  class TCompiler;

  std::int32_t AnchorStep();
  struct TScanFilter;
  [[nodiscard]] char Fold(char Ch) const;

  // Matching scratch kept between calls so that matching allocates nothing per character:
  // the double-ended queue of state numbers and, per state, the last position it was
  // expanded at.
  TQQueue FQueue;
  // Which start positions can begin a match; made on the first unanchored match after a
  // compile and shared by copies of the same automaton.
  std::shared_ptr<const TScanFilter> FFilter;
  std::vector<std::uint64_t> FExpandedAt;
  std::uint64_t FTick = 0;
};

}  // namespace kz
