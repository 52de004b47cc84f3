#include "Runtime/Format.h"

#include <charconv>
#include <cmath>
#include <string>

#include "Runtime/Errors.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {

// Widths and precisions, written or taken from the arguments, stay below this: a field of a
// hundred thousand characters is already far beyond any text a pattern is meant to make.
constexpr int MaxFieldSize = 100000;

[[noreturn]] void BadFormat(StringView Pattern) { throw EConvertError(SInvalidFormat, {Pattern}); }

std::string Digits(std::uint64_t V, int Base) {
  char Buf[24];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V, Base);
  (void)Ec;
  std::string R(Buf, Ptr);
  for (char& C : R)
    if (C >= 'a' && C <= 'f') C = static_cast<char>(C - 'a' + 'A');
  return R;
}

// Negative signed values print as their 32-bit two's complement when they fit, as 64-bit
// otherwise: the unsigned and hexadecimal conversions of a machine integer.
std::uint64_t AsUnsigned(const TFormatArg& A) {
  if (A.Kind() == TFormatArg::fkUInt) return A.AsUInt();
  const std::int64_t V = A.AsInt();
  if (V < 0 && V >= INT32_MIN) return static_cast<std::uint32_t>(V);
  return static_cast<std::uint64_t>(V);
}

std::string SpecialFloat(double V) {
  if (std::isnan(V)) return "NAN";
  return V < 0 ? "-INF" : "INF";
}

// Fixed notation with Prec decimals.
std::string FixedText(double V, int Prec) {
  if (!std::isfinite(V)) return SpecialFloat(V);
  char Buf[400];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V, std::chars_format::fixed, Prec);
  if (Ec != std::errc()) return "0";
  return std::string(Buf, Ptr);
}

// d.dddE+ddd with Prec significant digits, exponent of at least three digits.
std::string ScientificText(double V, int Prec) {
  if (!std::isfinite(V)) return SpecialFloat(V);
  char Buf[64];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V, std::chars_format::scientific, Prec - 1);
  (void)Ec;
  std::string S(Buf, Ptr);
  const std::size_t E = S.find('e');
  const int Exp = std::stoi(S.substr(E + 1));
  const std::string ExpDigits = std::to_string(Exp < 0 ? -Exp : Exp);
  // Built by appending: GCC 12 misreports prepending inserts under -O3 (-Wrestrict).
  std::string R(S, 0, E);
  R += 'E';
  R += Exp < 0 ? '-' : '+';
  if (ExpDigits.size() < 3) R.append(3 - ExpDigits.size(), '0');
  R += ExpDigits;
  return R;
}

// General notation: Prec significant digits (the shortest round trip when Prec is 0), trailing
// zeros dropped, exponent form (d.ddEx, no padding) when the decimal exponent is at least
// FixedLimit or below -5.
std::string GeneralFloatText(double V, int Prec, int FixedLimit) {
  if (!std::isfinite(V)) return SpecialFloat(V);
  if (V == 0) return std::signbit(V) && Prec == 0 ? "-0" : "0";
  char Buf[64];
  auto [Ptr, Ec] = Prec > 0 ? std::to_chars(Buf, Buf + sizeof Buf, V, std::chars_format::scientific, Prec - 1)
                            : std::to_chars(Buf, Buf + sizeof Buf, V, std::chars_format::scientific);
  (void)Ec;
  std::string S(Buf, Ptr);
  const bool Neg = S[0] == '-';
  if (Neg) S.erase(0, 1);
  const std::size_t E = S.find('e');
  const int Exp = std::stoi(S.substr(E + 1));
  std::string D;
  for (std::size_t i = 0; i < E; ++i)
    if (S[i] != '.') D.push_back(S[i]);
  while (D.size() > 1 && D.back() == '0') D.pop_back();
  std::string R = Neg ? "-" : "";
  if (Exp >= FixedLimit || Exp < -5) {
    R += D[0];
    if (D.size() > 1) {
      R += '.';
      R.append(D, 1, std::string::npos);
    }
    R += 'E';
    if (Exp < 0) R += '-';
    R += std::to_string(Exp < 0 ? -Exp : Exp);
  } else if (Exp < 0) {
    R += "0.";
    R.append(static_cast<std::size_t>(-Exp - 1), '0');
    R += D;
  } else {
    const std::size_t IntLen = static_cast<std::size_t>(Exp) + 1;
    if (D.size() <= IntLen) {
      R += D;
      R.append(IntLen - D.size(), '0');
    } else {
      R.append(D, 0, IntLen);
      R += '.';
      R.append(D, IntLen, std::string::npos);
    }
  }
  return R;
}

std::string Grouped(const std::string& Fixed) {
  const std::size_t Start = Fixed[0] == '-' ? 1 : 0;
  std::size_t Dot = Fixed.find('.');
  if (Dot == std::string::npos) Dot = Fixed.size();
  std::string R(Fixed, 0, Start);
  for (std::size_t k = Start; k < Dot; ++k) {
    if (k > Start && (Dot - k) % 3 == 0) R += ',';
    R += Fixed[k];
  }
  R.append(Fixed, Dot, std::string::npos);
  return R;
}

}  // namespace

String FloatToStr(double V) {
  if (std::isnan(V)) return u"NAN";
  if (std::isinf(V)) return V < 0 ? u"-INF" : u"INF";
  return AsciiToString(GeneralFloatText(V, 0, 15));
}

String Format(StringView Pattern, std::initializer_list<TFormatArg> Args) {
  String R;
  R.reserve(Pattern.size() + 16);
  const TFormatArg* Arg = Args.begin();
  const TFormatArg* const ArgEnd = Args.end();
  const std::size_t N = Pattern.size();
  std::size_t i = 0;
  auto ReadNumber = [&](int& Out) -> bool {
    if (i < N && Pattern[i] == u'*') {
      if (Arg == ArgEnd || Arg->Kind() != TFormatArg::fkInt) BadFormat(Pattern);
      const std::int64_t V = (Arg++)->AsInt();
      if (V < 0 || V > MaxFieldSize) BadFormat(Pattern);
      Out = static_cast<int>(V);
      ++i;
      return true;
    }
    bool Any = false;
    Out = 0;
    while (i < N && Pattern[i] >= u'0' && Pattern[i] <= u'9') {
      Out = Out * 10 + (Pattern[i++] - u'0');
      if (Out > MaxFieldSize) BadFormat(Pattern);
      Any = true;
    }
    return Any;
  };
  while (i < N) {
    const Char C = Pattern[i++];
    if (C != u'%') {
      R.push_back(C);
      continue;
    }
    if (i >= N) BadFormat(Pattern);
    if (Pattern[i] == u'%') {
      R.push_back(u'%');
      ++i;
      continue;
    }
    // %[index:][-][width][.precision]type
    std::size_t j = i;
    std::size_t Index = 0;
    while (j < N && Pattern[j] >= u'0' && Pattern[j] <= u'9' && Index <= Args.size())
      Index = Index * 10 + static_cast<std::size_t>(Pattern[j++] - u'0');
    if (j > i && j < N && Pattern[j] == u':') {
      if (Index >= Args.size()) BadFormat(Pattern);
      Arg = Args.begin() + Index;
      i = j + 1;
    }
    bool Left = false;
    if (i < N && Pattern[i] == u'-') Left = true, ++i;
    int Width = 0, Prec = -1;
    ReadNumber(Width);
    if (i < N && Pattern[i] == u'.') {
      ++i;
      if (!ReadNumber(Prec)) Prec = 0;
    }
    if (i >= N || Arg == ArgEnd) BadFormat(Pattern);
    const Char Type = static_cast<Char>(Pattern[i++] | 0x20);
    const TFormatArg& A = *Arg++;
    const bool IsInt = A.Kind() == TFormatArg::fkInt || A.Kind() == TFormatArg::fkUInt;
    String Piece;
    switch (Type) {
      case u'd':
      case u'u':
      case u'x': {
        if (!IsInt) BadFormat(Pattern);
        bool Neg = false;
        std::uint64_t Mag;
        if (Type == u'd' && A.Kind() == TFormatArg::fkInt && A.AsInt() < 0) {
          Neg = true;
          Mag = 0 - static_cast<std::uint64_t>(A.AsInt());
        } else {
          Mag = Type == u'd' && A.Kind() == TFormatArg::fkInt ? static_cast<std::uint64_t>(A.AsInt()) : AsUnsigned(A);
        }
        std::string D = Digits(Mag, Type == u'x' ? 16 : 10);
        if (Prec > 0 && D.size() < static_cast<std::size_t>(Prec)) D.insert(0, static_cast<std::size_t>(Prec) - D.size(), '0');
        Piece = AsciiToString((Neg ? "-" : "") + D);
        break;
      }
      case u'e':
      case u'f':
      case u'g':
      case u'n': {
        if (A.Kind() != TFormatArg::fkFloat) BadFormat(Pattern);
        const double V = static_cast<double>(A.AsFloat());
        if (Type == u'e') Piece = AsciiToString(ScientificText(V, Prec < 1 ? 15 : (Prec > 18 ? 18 : Prec)));
        else if (Type == u'g') {
          const int P = Prec < 1 ? 15 : (Prec > 18 ? 18 : Prec);
          Piece = AsciiToString(GeneralFloatText(V, P, P));
        }
        else {
          std::string F = FixedText(V, Prec < 0 ? 2 : (Prec > 18 ? 18 : Prec));
          Piece = AsciiToString(Type == u'n' && std::isfinite(V) ? Grouped(F) : F);
        }
        break;
      }
      case u's': {
        if (A.Kind() != TFormatArg::fkString) BadFormat(Pattern);
        StringView S = A.AsString();
        if (Prec >= 0 && S.size() > static_cast<std::size_t>(Prec)) S = S.substr(0, static_cast<std::size_t>(Prec));
        Piece = String(S);
        break;
      }
      case u'p': {
        if (A.Kind() != TFormatArg::fkPointer) BadFormat(Pattern);
        Piece = IntToHex(reinterpret_cast<std::uintptr_t>(A.AsPointer()), static_cast<int>(sizeof(void*) * 2));
        break;
      }
      default:
        BadFormat(Pattern);
    }
    if (Width > 0 && Piece.size() < static_cast<std::size_t>(Width)) {
      const String Pad(static_cast<std::size_t>(Width) - Piece.size(), u' ');
      Piece = Left ? Piece + Pad : Pad + Piece;
    }
    R += Piece;
  }
  return R;
}

}  // namespace kz
