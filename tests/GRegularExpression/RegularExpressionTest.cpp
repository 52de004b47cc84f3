#include <gtest/gtest.h>

#include <random>
#include <string>

#include "GRegularExpression/GRegularExpression.h"

using namespace kz;

namespace {

std::int32_t Find(const AnsiString& Pattern, const AnsiString& Text, std::int32_t* Len = nullptr, std::int32_t StartPos = 1) {
  TGRegularExpression R(Pattern);
  std::int32_t L = -1;
  const std::int32_t Pos = R.Match(Text, StartPos, L, false);
  if (Len) *Len = L;
  return Pos;
}

bool Exact(const AnsiString& Pattern, const AnsiString& Text) { return TGRegularExpression(Pattern).ExactMatch(Text); }

String CompileError(const AnsiString& Pattern) {
  try {
    TGRegularExpression R(Pattern);
  } catch (const ERXException& E) {
    return E.Message();
  }
  return u"(compiled)";
}

}  // namespace

TEST(RegularExpression, MatchesPositionsAndLengths) {
  EXPECT_TRUE(Exact("abc", "abc"));
  EXPECT_FALSE(Exact("abc", "abcd"));
  EXPECT_FALSE(Exact("abc", "ab"));
  std::int32_t Len = 0;
  EXPECT_EQ(Find("b+", "aabbb", &Len), 3);
  EXPECT_EQ(Len, 1);  // the first accepting state wins: one b
  EXPECT_EQ(Find("^b", "ab"), 0);
  EXPECT_EQ(Find("^a", "ab", nullptr, 2), 0);
  EXPECT_EQ(Find("^a", "ab", &Len), 1);
  EXPECT_EQ(Find("a*", "bbb", &Len), 1);  // an empty match at the first position
  EXPECT_EQ(Len, 0);
  EXPECT_EQ(Find("c(a|b)+d", "xxcabbad", &Len), 3);
  EXPECT_EQ(Len, 6);
  EXPECT_EQ(Find("x?y", "zzxy", &Len), 3);
  EXPECT_EQ(Len, 2);
  EXPECT_EQ(Find("a", "aaa", nullptr, 9), 0);  // beyond the text
  EXPECT_TRUE(Exact("(ab|cd)*e", "abcdabe"));
  EXPECT_FALSE(Exact("(ab|cd)*e", "abce"));
  EXPECT_TRUE(Exact("a.c", "a-c"));
  EXPECT_TRUE(Exact("[z-a]", "m"));
  EXPECT_FALSE(Exact("[^0-9]", "5"));
  EXPECT_TRUE(Exact("[^0-9]", "x"));
  EXPECT_TRUE(Exact("[.*]+", "*.*"));
  EXPECT_TRUE(Exact("a\\*", "a*"));
  // Text after a complete expression is ignored.
  EXPECT_TRUE(Exact("ab)cd", "ab"));
  // An empty expression matches nothing.
  EXPECT_EQ(Find("", "anything"), 0);
  EXPECT_FALSE(Exact("", ""));
}

TEST(RegularExpression, AnchorsAndLineCharacters) {
  EXPECT_TRUE(Exact("a$", "a\r"));
  EXPECT_FALSE(Exact("a$", "a"));
  EXPECT_TRUE(Exact("a^b", "a\nb"));
  EXPECT_TRUE(Exact("a\\$", "a$"));
  EXPECT_TRUE(Exact("\\^x", "^x"));
  EXPECT_TRUE(Exact("[^^]", "q"));   // the second ^ is a line feed
  EXPECT_FALSE(Exact("[^^]", "\n"));
  TGRegularExpression R("^ab");
  EXPECT_TRUE(R.GetAnchorStart());
  EXPECT_FALSE(R.GetAnchorEnd());
  // Parsing that stops at a $ (after an escaped backslash) sets the end anchor: then only a
  // match that uses the whole text counts.
  TGRegularExpression E("a\\\\$");
  EXPECT_TRUE(E.GetAnchorEnd());
  std::int32_t Len = 0;
  EXPECT_EQ(E.Match("a\\x", Len, false), 0);
  EXPECT_EQ(E.Match("a\\", Len, false), 1);
}

TEST(RegularExpression, CaseFoldingAtCompileAndMatchTime) {
  TGRegularExpression R("ABC");
  R.SetCaseSensitive(false);
  EXPECT_TRUE(R.ExactMatch("abc"));
  EXPECT_TRUE(R.ExactMatch("AbC"));
  R.SetExpression("[a-c]");
  EXPECT_TRUE(R.ExactMatch("B"));
  EXPECT_TRUE(R.ExactMatch("b"));
  R.SetExpression("[^a]");
  EXPECT_FALSE(R.ExactMatch("A"));
  R.SetCaseSensitive(true);
  EXPECT_TRUE(R.ExactMatch("A"));
}

TEST(RegularExpression, SyntaxErrorsAndLimits) {
  EXPECT_EQ(CompileError("[]"), u"Unexpected meta character found");
  EXPECT_EQ(CompileError("[ab"), u"Unexpected end of regular expression");
  EXPECT_EQ(CompileError("(ab"), u"Missing Close Parentheses");
  EXPECT_EQ(CompileError("a|"), u"Unexpected end of regular expression");
  EXPECT_EQ(CompileError("*a"), u"Unexpected meta character found");
  EXPECT_EQ(CompileError("[-a]"), u"Unexpected meta character found");
  EXPECT_EQ(CompileError("a\\"), u"Unexpected end of regular expression");
  EXPECT_EQ(CompileError("()"), u"Unexpected meta character found");

  // A failed compile keeps the new text; matching then answers no match without raising.
  TGRegularExpression R("ok");
  EXPECT_THROW(R.SetExpression("*"), ERXException);
  EXPECT_EQ(R.GetExpression(), "*");
  EXPECT_EQ(R.Match("*", false), 0);

  // Nesting is bounded; length is not.
  EXPECT_THROW(TGRegularExpression(AnsiString(5000, '(') + "a" + AnsiString(5000, ')')), ERXException);
  EXPECT_TRUE(Exact(AnsiString(200, '(') + "a" + AnsiString(200, ')'), "a"));
  const AnsiString Long(200000, 'q');
  EXPECT_TRUE(Exact(Long, Long));
  AnsiString Alternatives = "x";
  for (int i = 0; i < 20000; ++i) Alternatives += "|y";
  EXPECT_TRUE(Exact(Alternatives + "|z", "z"));

  R.SetMaxExamples(0);
  EXPECT_EQ(R.GetMaxExamples(), 1);
  R.SetMaxExamples(-5);
  EXPECT_EQ(R.GetMaxExamples(), 1);
}

TEST(RegularExpression, CyclesOfEmptyMovesEnd) {
  for (const char* Pattern : {"(a*)*", "(a?)+", "(a*)+b", "((a|b*)*)*c", "(a*|b*)*"}) {
    TGRegularExpression R(Pattern);
    std::int32_t Len = 0;
    R.Match(AnsiString(300, 'a'), Len, false);
    EXPECT_FALSE(R.ExactMatch(AnsiString(300, 'a') + "x")) << Pattern;
    for (const AnsiString& Example : R.Examples()) EXPECT_TRUE(R.ExactMatch(Example)) << Pattern << " " << Example;
  }
  EXPECT_TRUE(Exact("(a*)*b", "aaab"));
}

TEST(RegularExpression, ExamplesAreDistinctAcceptedAndBounded) {
  TGRegularExpression R("(ab|c[0-9])+x?");
  R.SetMaxExamples(3);
  const TRXStringArray Some = R.Examples();
  EXPECT_EQ(Some.size(), 3u);
  R.SetMaxExamples(50);
  EXPECT_EQ(R.Examples().size(), 4u);  // ab, abx, c0, c0x: paths never revisit a state
  for (std::size_t i = 0; i < Some.size(); ++i) {
    EXPECT_TRUE(R.ExactMatch(Some[i])) << Some[i];
    for (std::size_t k = 0; k < i; ++k) EXPECT_NE(Some[i], Some[k]);
  }
  R.SetExpression("[^\\x00-\\xff]");  // a set of the characters 0..x, then more
  for (const AnsiString& E : R.Examples()) EXPECT_TRUE(R.ExactMatch(E));
  R.SetCaseSensitive(false);
  R.SetExpression("[^a]b");
  for (const AnsiString& E : R.Examples()) EXPECT_TRUE(R.ExactMatch(E)) << E;
  // Exponentially many paths: the walk stops on its step budget.
  AnsiString Many;
  for (int i = 0; i < 60; ++i) Many += "(a|b)?";
  R.SetExpression(Many + "c");
  R.SetMaxExamples(1000000);
  EXPECT_FALSE(R.Examples().empty());
}

TEST(RegularExpression, AssignCopiesTheAutomatonButNotMaxExamples) {
  TGRegularExpression A("^x[yz]+");
  A.SetCaseSensitive(false);
  A.SetMaxExamples(3);
  TGRegularExpression B;
  B.Assign(&A);
  EXPECT_EQ(B.GetExpression(), "^x[yz]+");
  EXPECT_FALSE(B.GetCaseSensitive());
  EXPECT_TRUE(B.GetAnchorStart());
  EXPECT_EQ(B.GetMaxExamples(), 10);
  EXPECT_TRUE(B.ExactMatch("XyZ"));
  EXPECT_THROW(B.Assign(nullptr), EConvertError);
}

TEST(RegularExpression, RandomExamplesAlwaysMatch) {
  std::mt19937 Random(7);
  const char Alphabet[] = "ab().*+?|[]^$\\-c";
  for (int Round = 0; Round < 20000; ++Round) {
    AnsiString Pattern;
    const int Size = 1 + static_cast<int>(Random() % 12);
    for (int i = 0; i < Size; ++i) Pattern += Alphabet[Random() % (sizeof Alphabet - 1)];
    try {
      TGRegularExpression R(Pattern);
      for (const AnsiString& E : R.Examples()) ASSERT_TRUE(R.ExactMatch(E)) << Pattern << " / " << E;
      // Skipping start positions must answer what trying every one answers.
      AnsiString Text;
      for (int i = 0; i < 12; ++i) Text += "abc()\\n\r-"[Random() % 10];
      std::int32_t Len = 0;
      std::int32_t Expected = 0, ExpectedLen = 0;
      if (!R.GetAnchorStart())
        for (std::int32_t Start = 1; Start <= 12 && !Expected; ++Start)
          if (R.MatchSubString(Text, Start, false, ExpectedLen)) Expected = Start;
      if (!R.GetAnchorStart()) {
        ASSERT_EQ(R.Match(Text, Len, false), Expected) << Pattern << " / " << Text;
        if (Expected) {
          ASSERT_EQ(Len, ExpectedLen) << Pattern << " / " << Text;
        }
      }
    } catch (const ERXException&) {
    }
  }
}
