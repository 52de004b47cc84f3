#include <gtest/gtest.h>

#include <string>

#include "HelperFunctions/HelperFunctions.h"

using namespace kz;

namespace {

class TSymbol : public TInterfacedObject {
  KZ_CLASS(TSymbol, TInterfacedObject)
 public:
  explicit TSymbol(char C) : C(C) {}
  char C;
};

char Sym(const TIntfPtr<IInterface>& T) { return dynamic_cast<TSymbol*>(T.get())->C; }

// Converts a string of one-character tokens: letters are operands, * binds before + and -,
// ^ associates to the right, ( stays on the stack until its ) comes.
std::string Convert(const std::string& Infix) {
  TIntfPtr<IInterfaceList> In(new TInterfaceList);
  for (char C : Infix)
    if (C != ' ') In->Add(TIntfPtr<IInterface>(new TSymbol(C)));
  auto Prio = [](bool Stack) {
    return [Stack](const TIntfPtr<IInterface>& T) -> std::int32_t {
      switch (Sym(T)) {
        case '*': return 1;
        case '^': return Stack ? 1 : 0;
        case '(': return Stack ? 100 : 0;
        default: return 2;
      }
    };
  };
  const TIntfPtr<IInterfaceList> Out = PostFix(
      In, [](const TIntfPtr<IInterface>& T) { return Sym(T) == '('; },
      [](const TIntfPtr<IInterface>& T) { return Sym(T) == ')'; },
      [](const TIntfPtr<IInterface>& T) { return std::isalpha(static_cast<unsigned char>(Sym(T))) != 0; },
      Prio(true), Prio(false));
  std::string R;
  for (std::int32_t i = 0; i < Out->GetCount(); ++i) R += Sym(Out->Get(i));
  return R;
}

}  // namespace

TEST(PostFix, OrdersAndErrors) {
  EXPECT_EQ(Convert("a + b * c"), "abc*+");
  EXPECT_EQ(Convert("(a + b) * c"), "ab+c*");
  EXPECT_EQ(Convert("a - b - c"), "ab-c-");
  EXPECT_EQ(Convert("a ^ b ^ c"), "abc^^");
  EXPECT_EQ(Convert(""), "");
  EXPECT_EQ(Convert("a b"), "b");
  EXPECT_EQ(Convert("a + b ) * c"), "ab+c*");
  try {
    (void)Convert("( a");
    FAIL();
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), u"Missing close parenthesis");
  }
  EXPECT_THROW((void)Convert("(a b)"), Exception);  // the first expression ends unmatched
  EXPECT_THROW((void)PostFix(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), EAccessViolation);
}

TEST(HelperFunctions, HashesAndCharacterSearch) {
  auto Sampled = [](StringView S, std::size_t Step) {
    std::uint32_t H = 0;
    for (std::size_t i = 0; i < S.size(); i += Step) H = H * 31u + S[i];
    return static_cast<std::int32_t>(H);
  };
  EXPECT_EQ(CalculateHash(u"") + CalculateHash(u"A"), 65);
  // 15 units: every one; 16: units 1, 3, 5, ... (step 2); the 18th of 18 is not sampled.
  const String S15 = u"abcdefghijklmno", S16 = S15 + u"p";
  EXPECT_EQ(CalculateHash(S15), Sampled(S15, 1));
  EXPECT_EQ(CalculateHash(S16), Sampled(S16, 2));
  EXPECT_EQ(CalculateHash(S16 + u"qr"), CalculateHash(S16 + u"qZ"));
  EXPECT_EQ(CalculateHash(String(24, u'\uFFFF')), Sampled(String(24, u'\uFFFF'), 3));  // wraps
  EXPECT_EQ(CalculateHash(u"abcde", 2), Sampled(u"abcde", 2));
  EXPECT_EQ(CalculateHash(u"abcde", -3), Sampled(u"abcde", 1));
  EXPECT_EQ(CalculateHash(u"abc", INT32_MAX), 97);
  EXPECT_EQ(ContainsCharacters(u"xyz", u"zy"), 2);
  EXPECT_EQ(ContainsCharacters(u"xyz", u"q") + ContainsCharacters(u"", u"q"), 0);
}
