// Number text over arbitrary input: StrToInt and StrToFloat accept exactly their documented
// grammar and agree with an independent reading, FloatToStr reads back to the same double,
// Format answers or raises EConvertError for any pattern.
#include <cerrno>
#include <cmath>
#include <cstring>
#include <string>

#include "FuzzSupport.h"

using namespace kz;
using kzfuzz::Check;

namespace {

bool IsDigit(Char C) { return C >= u'0' && C <= u'9'; }

// [sign] digits
bool IntGrammar(StringView S) {
  std::size_t i = S.size() && (S[0] == u'+' || S[0] == u'-') ? 1 : 0;
  if (i == S.size()) return false;
  for (; i < S.size(); ++i)
    if (!IsDigit(S[i])) return false;
  return true;
}

// [sign] mantissa [(e|E) [sign] digits]; the mantissa has at least one digit and at most one
// point.
bool FloatGrammar(StringView S) {
  std::size_t i = S.size() && (S[0] == u'+' || S[0] == u'-') ? 1 : 0;
  std::size_t Digits = 0;
  while (i < S.size() && IsDigit(S[i])) ++i, ++Digits;
  if (i < S.size() && S[i] == u'.') {
    ++i;
    while (i < S.size() && IsDigit(S[i])) ++i, ++Digits;
  }
  if (!Digits) return false;
  if (i < S.size() && (S[i] == u'e' || S[i] == u'E')) {
    ++i;
    if (i < S.size() && (S[i] == u'+' || S[i] == u'-')) ++i;
    std::size_t ExpDigits = 0;
    while (i < S.size() && IsDigit(S[i])) ++i, ++ExpDigits;
    if (!ExpDigits) return false;
  }
  return i == S.size();
}

void CheckInt(StringView S) {
  std::int32_t V = 0;
  const bool Ok = kzfuzz::Accepts([&] { V = StrToInt(S); });
  if (!IntGrammar(S)) {
    Check(!Ok, "StrToInt accepted text outside its grammar");
    return;
  }
  // The value by hand: sign, leading zeros dropped, at most ten digits fit.
  const bool Neg = S[0] == u'-';
  std::size_t i = S[0] == u'+' || S[0] == u'-' ? 1 : 0;
  while (i + 1 < S.size() && S[i] == u'0') ++i;
  std::int64_t Ref = 0;
  const bool Fits = S.size() - i <= 10;
  if (Fits)
    for (; i < S.size(); ++i) Ref = Ref * 10 + (S[i] - u'0');
  if (Neg) Ref = -Ref;
  const bool InRange = Fits && Ref >= INT32_MIN && Ref <= INT32_MAX;
  Check(Ok == InRange, "StrToInt refused an integer in range or accepted one outside");
  if (Ok) Check(V == Ref, "StrToInt read a wrong value");
}

void CheckFloat(StringView S) {
  double V = 0;
  const bool Ok = kzfuzz::Accepts([&] { V = StrToFloat(S); });
  if (!FloatGrammar(S)) {
    Check(!Ok, "StrToFloat accepted text outside its grammar");
    return;
  }
  // glibc's strtod rounds correctly; under libFuzzer the C locale reads '.' as the point.
  const std::string A = StringToUtf8(S);
  errno = 0;
  const double Ref = std::strtod(A.c_str(), nullptr);
  const bool Overflow = errno == ERANGE && std::isinf(Ref);
  Check(Ok == !Overflow, "StrToFloat refused a representable value or accepted an overflow");
  if (Ok) Check(std::memcmp(&V, &Ref, sizeof V) == 0 || (V == 0 && Ref == 0 && std::signbit(V) == std::signbit(Ref)),
                "StrToFloat read a wrong value");
}

void CheckFloatText(double V) {
  const String T = FloatToStr(V);
  if (!std::isfinite(V)) return;
  double Back = 0;
  Check(kzfuzz::Accepts([&] { Back = StrToFloat(T); }), "FloatToStr wrote text StrToFloat refuses");
  Check(std::memcmp(&V, &Back, sizeof V) == 0, "FloatToStr does not read back to the same double");
}

void CheckFormat(StringView Pattern, kzfuzz::TInput& In) {
  const int X = 42;
  const std::int32_t Width = In.Byte() & 1 ? static_cast<std::int32_t>(In.Int(0xFFFFFFFF)) : In.Byte();
  double D;
  const std::uint64_t Bits = static_cast<std::uint64_t>(In.Int(0xFFFFFFFF)) << 32 | In.Int(0xFFFFFFFF);
  std::memcpy(&D, &Bits, sizeof D);
  kzfuzz::Accepts([&] {
    const String R = Format(Pattern, {Width, D, u"text", u'c', static_cast<const void*>(&X), 7u, -3,
                                      std::int64_t(INT64_MIN), 0.5, String(u"more")});
    // Each field is bounded, so the text is too.
    Check(R.size() <= Pattern.size() * 100001 + 64, "Format made an unbounded text");
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  kzfuzz::TInput In(Data, Size);
  const std::uint8_t Mode = In.Byte();
  if (Mode % 4 == 3) {  // the bits of a double
    double V;
    std::uint64_t Bits = 0;
    for (int i = 0; i < 8; ++i) Bits = Bits << 8 | In.Byte();
    std::memcpy(&V, &Bits, sizeof V);
    CheckFloatText(V);
    return 0;
  }
  std::string Rest = In.TakeRest();
  // The text as UTF-8, or as raw UTF-16 code units so that every code unit can appear.
  String Text;
  if (Mode & 0x80) {
    Text.resize(Rest.size() / 2);
    std::memcpy(Text.data(), Rest.data(), Text.size() * sizeof(Char));
  } else {
    Text = Utf8ToString(Rest);
  }
  if (Mode % 4 == 2) {
    kzfuzz::TInput Args(Data, Size);  // the arguments' values come from the same bytes
    CheckFormat(Text, Args);
    return 0;
  }
  CheckInt(Text);
  CheckFloat(Text);
  return 0;
}
