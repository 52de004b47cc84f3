#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <vector>

#include "Runtime/Runtime.h"

using namespace kz;

TEST(Format, IntegersStringsWidthPrecisionAndFlags) {
  EXPECT_EQ(Format(u"%d|%5d|%-5d|%.3d|%d", {7, 42, 42, 5, -12}), u"7|   42|42   |005|-12");
  EXPECT_EQ(Format(u"%u %x %x", {-1, 255, -1}), u"4294967295 FF FFFFFFFF");
  EXPECT_EQ(Format(u"%s=%s%%", {u"a", String(u"bc")}), u"a=bc%");
  EXPECT_EQ(Format(u"[%6s][%-4s][%.2s]", {u"ab", u"ab", u"abcdef"}), u"[    ab][ab  ][ab]");
  EXPECT_EQ(Format(u"%1:s %0:s %s", {u"x", u"y"}), u"y x y");
  EXPECT_EQ(Format(u"%*d", {4, 7}), u"   7");
  // Widths and precisions from arguments are bounded like written ones.
  EXPECT_EQ(Format(u"%-*.*f|", {6, 1, 2.0}), u"2.0   |");
  for (auto Huge : {std::initializer_list<TFormatArg>{INT32_MAX, 1.0}, {-1, 1.0}, {100001, 1.0}, {int64_t(1) << 32, 1.0}})
    EXPECT_THROW(Format(u"%*f", Huge), EConvertError);
  EXPECT_THROW(Format(u"%.*s", {INT32_MAX, u"x"}), EConvertError);
  EXPECT_THROW(Format(u"%100001d", {1}), EConvertError);
  EXPECT_EQ(Format(u"%*d", {100000, 1}).size(), 100000u);
  EXPECT_EQ(Format(u"%d", {std::numeric_limits<std::int64_t>::min()}), u"-9223372036854775808");
  EXPECT_EQ(Format(u"%s", {u'Z'}), u"Z");
  int X = 0;
  EXPECT_EQ(Format(u"%p", {static_cast<const void*>(nullptr)}).size(), sizeof(void*) * 2);
  EXPECT_NE(Format(u"%p", {static_cast<const void*>(&X)}), Format(u"%p", {static_cast<const void*>(nullptr)}));
}

TEST(Format, Floats) {
  EXPECT_EQ(Format(u"%f", {1.5}), u"1.50");
  EXPECT_EQ(Format(u"%.3f", {2.0}), u"2.000");
  EXPECT_EQ(Format(u"%.0f", {2.5}), u"2");
  EXPECT_EQ(Format(u"%e", {1.5}), u"1.50000000000000E+000");
  EXPECT_EQ(Format(u"%.3e", {-12345.0}), u"-1.23E+004");
  EXPECT_EQ(Format(u"%g|%g|%g|%g", {0.1, 100.0, 1e20, 1.5e-7}), u"0.1|100|1E20|1.5E-7");
  EXPECT_EQ(Format(u"%n", {1234567.891}), u"1,234,567.89");
  EXPECT_EQ(Format(u"%f", {std::nan("")}), u"NAN");
}

TEST(Format, BadPatternsRaiseConvertError) {
  for (auto P : {u"%", u"%d %d", u"%q", u"%5", u"%.2"}) EXPECT_THROW(Format(P, {1}), EConvertError) << StringToUtf8(P);
  EXPECT_THROW(Format(u"%d", {1.5}), EConvertError);
  EXPECT_THROW(Format(u"%s", {3}), EConvertError);
  EXPECT_THROW(Format(u"%f", {3}), EConvertError);
  EXPECT_THROW(Format(u"%5:s", {u"a"}), EConvertError);
  try {
    Format(u"%z", {1});
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), u"Format '%z' invalid or incompatible with argument");
  }
}

TEST(Text, Utf8RoundTripAndReplacementOfIllFormedInput) {
  const String All = u"a\u00e9\u20ac\U0001F600z";
  EXPECT_EQ(StringToUtf8(All), "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z");
  EXPECT_EQ(Utf8ToString(StringToUtf8(All)), All);
  EXPECT_EQ(Utf8ToString("\xff"), u"\uFFFD");
  EXPECT_EQ(Utf8ToString("a\xe2\x82"), u"a\uFFFD");          // truncated at the end
  EXPECT_EQ(Utf8ToString("\xc0\xaf"), u"\uFFFD\uFFFD");      // overlong
  EXPECT_EQ(Utf8ToString("\xed\xa0\x80"), u"\uFFFD\uFFFD\uFFFD");  // encoded surrogate
  EXPECT_EQ(Utf8ToString("\xf4\x90\x80\x80"), u"\uFFFD\uFFFD\uFFFD\uFFFD");  // past U+10FFFF
  EXPECT_EQ(StringToUtf8(String(1, u'\xD800')), "\xef\xbf\xbd");
  // Every code point survives the trip.
  String Big;
  for (char32_t C = 1; C < 0x110000; C += 7) {
    if (C >= 0xD800 && C <= 0xDFFF) continue;
    if (C < 0x10000) Big.push_back(static_cast<Char>(C));
    else {
      Big.push_back(static_cast<Char>(0xD800 + ((C - 0x10000) >> 10)));
      Big.push_back(static_cast<Char>(0xDC00 + ((C - 0x10000) & 0x3FF)));
    }
  }
  EXPECT_EQ(Utf8ToString(StringToUtf8(Big)), Big);
  // Random bytes never produce anything but valid UTF-16.
  std::mt19937 Rng(7);
  for (int i = 0; i < 2000; ++i) {
    std::string B(static_cast<std::size_t>(Rng() % 12), '\0');
    for (char& C : B) C = static_cast<char>(Rng());
    const String S = Utf8ToString(B);
    EXPECT_EQ(Utf8ToString(StringToUtf8(S)), S);
  }
}

TEST(Text, StrictNumberParsing) {
  EXPECT_EQ(StrToInt(u"-2147483648"), INT32_MIN);
  EXPECT_EQ(StrToInt(u"+17"), 17);
  EXPECT_EQ(StrToInt64(u"9223372036854775807"), INT64_MAX);
  for (auto Bad : {u"", u" 1", u"1 ", u"1.0", u"2147483648", u"-", u"0x10", u"1e3", u"\u0661"}) {
    try {
      StrToInt(Bad);
      ADD_FAILURE() << StringToUtf8(Bad);
    } catch (const EConvertError& E) {
      EXPECT_EQ(E.Message(), u"'" + String(Bad) + u"' is not a valid integer value");
    }
  }
  EXPECT_EQ(StrToIntDef(u"x", -3), -3);
  EXPECT_DOUBLE_EQ(StrToFloat(u"1.25"), 1.25);
  EXPECT_DOUBLE_EQ(StrToFloat(u"-.5e1"), -5.0);
  EXPECT_DOUBLE_EQ(StrToFloat(u"+3."), 3.0);
  for (auto [Text, V] : {std::pair{u"5.", 5.0}, {u".5", 0.5}, {u"-.5e3", -500.0}, {u"5.e1", 50.0}})
    EXPECT_EQ(StrToFloat(Text), V) << StringToUtf8(Text);
  for (auto Bad : {u"", u".", u"e5", u".e1", u"1e", u"1.2.3", u" 1", u"nan", u"1,5"})
    EXPECT_THROW(StrToFloat(Bad), EConvertError) << StringToUtf8(Bad);
  // Too large for a double, whatever the spelling; too small is a signed zero.
  const String Ones = u"1" + String(400, u'0');
  const String Tens = u"1" + String(320, u'0') + u"e-10";
  for (const String& Big : {Ones, u"-" + Ones, Tens, u"-" + Tens, String(u"1e999"), String(u"0.001e312")})
    EXPECT_THROW(StrToFloat(Big), EConvertError) << StringToUtf8(Big);
  EXPECT_EQ(StrToFloat(u"1" + String(300, u'0') + u"e-10"), 1e290);
  EXPECT_TRUE(std::signbit(StrToFloat(u"-1e-400")));
  EXPECT_EQ(StrToFloat(u"0." + String(400, u'0') + u"1e10"), 0.0);
  EXPECT_EQ(StrToFloat(u"0e99999999999999999999"), 0.0);
}

TEST(Text, NumberTextIsShortestAndRoundTrips) {
  EXPECT_EQ(IntToStr(-45), u"-45");
  EXPECT_EQ(IntToHex(255, 4), u"00FF");
  EXPECT_EQ(FloatToStr(0.1), u"0.1");
  EXPECT_EQ(FloatToStr(100), u"100");
  EXPECT_EQ(FloatToStr(-2.5), u"-2.5");
  EXPECT_EQ(FloatToStr(1e15), u"1E15");
  EXPECT_EQ(FloatToStr(123456789012345.0), u"123456789012345");
  EXPECT_EQ(FloatToStr(1.5e-7), u"1.5E-7");
  EXPECT_EQ(FloatToStr(0.00001), u"0.00001");
  std::mt19937_64 Rng(11);
  for (int i = 0; i < 20000; ++i) {
    double V;
    const std::uint64_t Bits = Rng();
    std::memcpy(&V, &Bits, sizeof V);
    if (!std::isfinite(V)) continue;
    EXPECT_EQ(StrToFloat(FloatToStr(V)), V);
  }
}

TEST(Text, ComparisonsUnderTheCLocale) {
  EXPECT_LT(CompareStr(u"B", u"a"), 0);
  EXPECT_EQ(CompareText(u"abc", u"ABC"), 0);
  EXPECT_GT(CompareText(u"b", u"A"), 0);
  EXPECT_LT(CompareText(u"ab", u"ABC"), 0);
  EXPECT_NE(CompareText(u"\u00e9", u"\u00c9"), 0);  // only ASCII letters fold
  EXPECT_TRUE(SameText(u"Hello", u"hELLO"));
  EXPECT_LT(AnsiCompareStr(u"B", u"a"), 0);
  EXPECT_EQ(AnsiCompareText(u"abc", u"ABC"), 0);
  EXPECT_LT(AnsiCompareText(u"a", u"B"), 0);
  EXPECT_EQ(UpperCase(u"ab\u00e9"), u"AB\u00e9");
  EXPECT_EQ(Trim(u"  x y \t"), u"x y");
}

TEST(Text, LocaleComparisonsOrderByCodePointWhateverTheShortcut) {
  // Under the default locale the comparisons are decided on the code units except where a
  // surrogate is involved; a locale of the same rules but another make-up takes the general
  // path. Both must agree on every pair, in code point order.
  const Char Hi = 0xD800, Lo = 0xDC00, Priv = 0xE000, Nul = 0;
  const std::vector<String> Words{u"", u"a", u"A", u"ab", u"aB", u"b", u"Z", u"[", String(1, Priv),
                                  String{Hi, Lo}, String{Hi, Priv}, String(1, Hi), String{u'a', Nul},
                                  String{u'a', Nul, u'b'}, String{u'x', Hi, Lo}, String{u'x', Hi}};
  auto Sign = [](int V) { return (V > 0) - (V < 0); };
  std::vector<int> Fast;
  for (const String& A : Words)
    for (const String& B : Words) Fast.push_back(Sign(AnsiCompareStr(A, B)) * 3 + Sign(AnsiCompareText(A, B)));
  const std::locale Previous =
      std::locale::global(std::locale(std::locale::classic(), new std::collate_byname<wchar_t>("C")));
  std::size_t k = 0;
  for (const String& A : Words)
    for (const String& B : Words)
      EXPECT_EQ(Sign(AnsiCompareStr(A, B)) * 3 + Sign(AnsiCompareText(A, B)), Fast[k++])
          << StringToUtf8(A) << " vs " << StringToUtf8(B);
  std::locale::global(Previous);

  EXPECT_GT(AnsiCompareStr(String{Hi, Lo}, String(1, Priv)), 0);  // U+10000 after U+E000
  EXPECT_LT(CompareStr(String{Hi, Lo}, String(1, Priv)), 0);      // code units the other way
  EXPECT_LT(AnsiCompareStr(String(1, Hi), String(1, Priv)), 0);   // a lone surrogate is itself
  EXPECT_GT(AnsiCompareText(u"Z", u"a"), 0);
  EXPECT_LT(AnsiCompareStr(u"Z", u"a"), 0);
  EXPECT_LT(AnsiCompareText(u"a", String{u'a', Nul}), 0);
}
