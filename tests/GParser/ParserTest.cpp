#include <gtest/gtest.h>

#include <vector>

#include "GParser/GParser.h"

using namespace kz;

namespace {

std::vector<String> Forward(TGCustomParser& P) {
  std::vector<String> Tokens;
  for (bool Ok = P.First(); Ok; Ok = P.Next()) Tokens.push_back(P.GetToken());
  return Tokens;
}

}  // namespace

TEST(Parser, WalksForwardAndBackward) {
  TGParser P(u"a b");
  ASSERT_TRUE(P.First());
  EXPECT_EQ(P.GetToken(), u"a");
  EXPECT_EQ(P.GetRestOfText(), u" b");
  ASSERT_TRUE(P.Next());
  EXPECT_EQ(P.GetToken(), u"b");
  EXPECT_EQ(P.GetRestOfText(), u"");
  EXPECT_EQ(P.GetPosition(), 4);
  EXPECT_FALSE(P.Next());

  // Just past the end, Previous answers an empty token and stays put.
  ASSERT_TRUE(P.Previous());
  EXPECT_EQ(P.GetToken(), u"");
  EXPECT_EQ(P.GetPosition(), 4);

  P.SetText(u"one two");
  ASSERT_TRUE(P.Last());
  EXPECT_EQ(P.GetToken(), u"two");
  EXPECT_EQ(P.GetRestOfText(), u"");
  ASSERT_TRUE(P.Previous());
  EXPECT_EQ(P.GetToken(), u"one");
  EXPECT_EQ(P.GetRestOfText(), u" two");
  EXPECT_EQ(P.GetPosition(), 0);
  EXPECT_FALSE(P.Previous());

  P.SetText(u"  alpha,beta\r\ngamma  ");
  P.SetDelimiters(u" ,\r\n");
  EXPECT_EQ(Forward(P), (std::vector<String>{u"alpha", u"beta", u"gamma"}));
}

TEST(Parser, OneCharacterTextsAndTheLastCharacterRule) {
  TGParser P(u"x");
  ASSERT_TRUE(P.First());
  EXPECT_EQ(P.GetToken(), u"x");
  EXPECT_EQ(P.GetPosition(), 2);
  P.SetText(u" ");
  EXPECT_FALSE(P.First());
  // Standing on the last character of a longer text, Next finds nothing.
  P.SetText(u"ab c");
  P.SetPosition(4);
  EXPECT_FALSE(P.Next());
  // From position 0 Next answers an empty token and stays there.
  P.SetPosition(0);
  ASSERT_TRUE(P.Next());
  EXPECT_EQ(P.GetToken(), u"");
  EXPECT_EQ(P.GetRestOfText(), u"ab c");
  EXPECT_EQ(P.GetPosition(), 0);
}

TEST(Parser, ClampsPositionsAndDelimiters) {
  TGParser P(u"12345");
  P.SetPosition(-3);
  EXPECT_EQ(P.GetPosition(), 0);
  P.SetPosition(100);
  EXPECT_EQ(P.GetPosition(), 6);
  P.SetDelimiters(u"");
  EXPECT_EQ(P.GetDelimiters(), u" ");
  EXPECT_TRUE(P.IsADelimiter(u' '));
  EXPECT_FALSE(P.IsADelimiter(u'\n'));
  // A new text resets the position and the rest even when it is the same text.
  P.SetPosition(3);
  P.SetText(u"12345");
  EXPECT_EQ(P.GetPosition(), 1);
  EXPECT_EQ(P.GetRestOfText(), u"12345");
}

TEST(Parser, TokenCountIsWalkedOnceAfterEachChange) {
  TGParser P(u"a b c");
  P.SetPosition(3);
  EXPECT_EQ(P.GetTokenCount(), 3);
  EXPECT_EQ(P.GetPosition(), 3);       // restored
  EXPECT_EQ(P.GetToken(), u"c");       // left at the last token walked
  EXPECT_EQ(P.GetTokenCount(), 0);     // the stored count
  P.SetDelimiters(u"b");
  EXPECT_EQ(P.GetTokenCount(), 2);     // "a " and " c"
  EXPECT_EQ(P.GetTokenCount(), 0);
}

TEST(Parser, SkipsCountStepsAndOverridesReachTheWalks) {
  TGParser P(u"ab   cd");
  P.SetPosition(3);
  EXPECT_EQ(P.SkipDelimiters(1), 3);
  EXPECT_EQ(P.SkipDelimiters(2), 4);   // |Direction| per step: positions 3 and 5
  EXPECT_EQ(P.SkipText(0), 0);
  P.SetPosition(2);
  EXPECT_EQ(P.SkipText(-1), 2);
  EXPECT_EQ(P.SkipText(INT32_MAX), INT32_MAX);  // one step, no overflow
  EXPECT_EQ(P.SkipText(INT32_MIN), static_cast<std::int32_t>(0x80000000u));

  TGParser Fresh(u"abc");
  EXPECT_THROW(Fresh.SkipCharacters(1), EAccessViolation);

  // First, Last and GetTokenCount go through the virtual walks.
  class TCountingParser : public TGParser {
   public:
    using TGParser::TGParser;
    int Calls = 0;
    bool Next() override {
      ++Calls;
      return TGParser::Next();
    }
  } C(u"x y");
  EXPECT_EQ(C.GetTokenCount(), 2);
  EXPECT_TRUE(C.First());
  EXPECT_EQ(C.Calls, 4);
}
