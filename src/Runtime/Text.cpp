#include "Runtime/Text.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cwctype>
#include <locale>
#include <system_error>

#include "Runtime/Errors.h"

namespace kz {

using namespace Runtime;

std::size_t Utf8Step(const unsigned char* P, std::size_t N, char32_t& Cp, bool& Truncated) {
  Truncated = false;
  const unsigned C = P[0];
  if (C < 0x80) {
    Cp = C;
    return 1;
  }
  // The valid second bytes depend on the lead byte: this excludes overlong forms, encoded
  // surrogates and values past U+10FFFF at the earliest byte, as Unicode recommends.
  std::size_t Len = 0;
  unsigned Lo = 0x80, Hi = 0xBF;
  if (C >= 0xC2 && C <= 0xDF) Len = 2;
  else if (C == 0xE0) Len = 3, Lo = 0xA0;
  else if (C == 0xED) Len = 3, Hi = 0x9F;
  else if (C >= 0xE1 && C <= 0xEF) Len = 3;
  else if (C == 0xF0) Len = 4, Lo = 0x90;
  else if (C == 0xF4) Len = 4, Hi = 0x8F;
  else if (C >= 0xF1 && C <= 0xF3) Len = 4;
  char32_t V = C & (Len == 2 ? 0x1F : Len == 3 ? 0x0F : 0x07);
  std::size_t Got = 1;
  while (Len && Got < Len && Got < N) {
    const unsigned B = P[Got];
    if (B < (Got == 1 ? Lo : 0x80u) || B > (Got == 1 ? Hi : 0xBFu)) break;
    V = (V << 6) | (B & 0x3F);
    ++Got;
  }
  if (Len && Got == Len) {
    Cp = V;
    return Len;
  }
  Truncated = Len && Got == N;
  Cp = 0xFFFD;
  return Got;
}

String Utf8ToString(std::string_view S) {
  String R;
  R.reserve(S.size());
  const auto* P = reinterpret_cast<const unsigned char*>(S.data());
  const std::size_t N = S.size();
  std::size_t i = 0;
  while (i < N) {
    char32_t Cp;
    bool Truncated;
    i += Utf8Step(P + i, N - i, Cp, Truncated);
    if (Cp >= 0x10000) {
      Cp -= 0x10000;
      R.push_back(static_cast<Char>(0xD800 + (Cp >> 10)));
      R.push_back(static_cast<Char>(0xDC00 + (Cp & 0x3FF)));
    } else {
      R.push_back(static_cast<Char>(Cp));
    }
  }
  return R;
}

std::string StringToUtf8(StringView S) {
  std::string R;
  R.reserve(S.size());
  for (std::size_t i = 0; i < S.size(); ++i) {
    char32_t Cp = S[i];
    if (Cp >= 0xD800 && Cp <= 0xDBFF && i + 1 < S.size() && S[i + 1] >= 0xDC00 && S[i + 1] <= 0xDFFF) {
      Cp = 0x10000 + ((Cp - 0xD800) << 10) + (S[i + 1] - 0xDC00);
      ++i;
    } else if (Cp >= 0xD800 && Cp <= 0xDFFF) {
      Cp = 0xFFFD;
    }
    if (Cp < 0x80) {
      R.push_back(static_cast<char>(Cp));
    } else if (Cp < 0x800) {
      R.push_back(static_cast<char>(0xC0 | (Cp >> 6)));
      R.push_back(static_cast<char>(0x80 | (Cp & 0x3F)));
    } else if (Cp < 0x10000) {
      R.push_back(static_cast<char>(0xE0 | (Cp >> 12)));
      R.push_back(static_cast<char>(0x80 | ((Cp >> 6) & 0x3F)));
      R.push_back(static_cast<char>(0x80 | (Cp & 0x3F)));
    } else {
      R.push_back(static_cast<char>(0xF0 | (Cp >> 18)));
      R.push_back(static_cast<char>(0x80 | ((Cp >> 12) & 0x3F)));
      R.push_back(static_cast<char>(0x80 | ((Cp >> 6) & 0x3F)));
      R.push_back(static_cast<char>(0x80 | (Cp & 0x3F)));
    }
  }
  return R;
}

namespace {

// Narrows S to ASCII for number parsing; false when a code unit is outside 7 bits.
bool ToAscii(StringView S, std::string& Out) {
  Out.clear();
  for (Char C : S) {
    if (C >= 0x80) return false;
    Out.push_back(static_cast<char>(C));
  }
  return true;
}

bool ParseInt64(StringView S, std::int64_t& V) {
  std::string A;
  if (!ToAscii(S, A) || A.empty()) return false;
  const char* B = A.data();
  const char* E = B + A.size();
  bool Neg = false;
  if (*B == '+' || *B == '-') Neg = *B++ == '-';
  if (B == E || *B < '0' || *B > '9') return false;
  std::uint64_t U = 0;
  auto [Ptr, Ec] = std::from_chars(B, E, U);
  if (Ec != std::errc() || Ptr != E) return false;
  if (Neg) {
    if (U > 0x8000000000000000ull) return false;
    V = static_cast<std::int64_t>(0 - U);
  } else {
    if (U > 0x7FFFFFFFFFFFFFFFull) return false;
    V = static_cast<std::int64_t>(U);
  }
  return true;
}

}  // namespace

std::int64_t StrToInt64(StringView S) {
  std::int64_t V;
  if (!ParseInt64(S, V)) throw EConvertError(SIntConvertError, {S});
  return V;
}

std::int32_t StrToInt(StringView S) {
  std::int64_t V;
  if (!ParseInt64(S, V) || V < INT32_MIN || V > INT32_MAX) throw EConvertError(SIntConvertError, {S});
  return static_cast<std::int32_t>(V);
}

std::int32_t StrToIntDef(StringView S, std::int32_t Default) {
  std::int64_t V;
  if (!ParseInt64(S, V) || V < INT32_MIN || V > INT32_MAX) return Default;
  return static_cast<std::int32_t>(V);
}

bool TryStrToFloat(StringView S, double& Value) {
  std::string A;
  if (!ToAscii(S, A) || A.empty()) return false;
  std::size_t i = 0;
  if (A[i] == '+' || A[i] == '-') ++i;
  // The decimal exponent of the first significant digit, so that an out-of-range result can
  // be told apart: overflow when it is positive, underflow otherwise.
  std::int64_t Magnitude = 0;
  bool Significant = false;
  std::size_t Digits = 0;
  for (; i < A.size() && A[i] >= '0' && A[i] <= '9'; ++i, ++Digits) {
    if (Significant) ++Magnitude;
    else if (A[i] != '0') Significant = true;
  }
  if (i < A.size() && A[i] == '.') {
    ++i;
    for (; i < A.size() && A[i] >= '0' && A[i] <= '9'; ++i, ++Digits) {
      if (Significant) continue;
      --Magnitude;
      if (A[i] != '0') Significant = true;
    }
  }
  if (!Digits) return false;
  if (i < A.size() && (A[i] == 'e' || A[i] == 'E')) {
    ++i;
    bool NegExp = false;
    if (i < A.size() && (A[i] == '+' || A[i] == '-')) NegExp = A[i++] == '-';
    std::int64_t Exp = 0;
    std::size_t ExpDigits = 0;
    for (; i < A.size() && A[i] >= '0' && A[i] <= '9'; ++i, ++ExpDigits)
      Exp = std::min<std::int64_t>(Exp * 10 + (A[i] - '0'), std::int64_t(1) << 40);
    if (!ExpDigits) return false;
    Magnitude += NegExp ? -Exp : Exp;
  }
  if (i != A.size()) return false;
  // from_chars takes no leading '+'; the grammar above has already been checked.
  const char* B = A.data() + (A[0] == '+' ? 1 : 0);
  auto [Ptr, Ec] = std::from_chars(B, A.data() + A.size(), Value);
  if (Ec == std::errc::result_out_of_range) {
    // Too large for a double is text we cannot represent; too small reads as a signed zero,
    // the nearest double.
    if (Magnitude > 0) return false;
    Value = A[0] == '-' ? -0.0 : 0.0;
    return true;
  }
  return Ec == std::errc() && Ptr == A.data() + A.size();
}

double StrToFloat(StringView S) {
  double V;
  if (!TryStrToFloat(S, V)) throw EConvertError(SFloatConvertError, {S});
  return V;
}

String IntToStr(std::int64_t V) {
  char Buf[24];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V);
  (void)Ec;
  return String(Buf, Ptr);
}

String UIntToStr(std::uint64_t V) {
  char Buf[24];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V);
  (void)Ec;
  return String(Buf, Ptr);
}

String IntToHex(std::uint64_t V, int Digits) {
  char Buf[24];
  auto [Ptr, Ec] = std::to_chars(Buf, Buf + sizeof Buf, V, 16);
  (void)Ec;
  String R;
  for (int n = static_cast<int>(Ptr - Buf); n < Digits; ++n) R.push_back(u'0');
  for (const char* P = Buf; P != Ptr; ++P) R.push_back(static_cast<Char>(*P >= 'a' ? *P - 'a' + 'A' : *P));
  return R;
}

int CompareStr(StringView A, StringView B) { return A.compare(B); }

namespace {
inline Char AsciiLower(Char C) { return C >= u'A' && C <= u'Z' ? static_cast<Char>(C + 32) : C; }
inline Char AsciiUpper(Char C) { return C >= u'a' && C <= u'z' ? static_cast<Char>(C - 32) : C; }

// UTF-16 to the wide form the locale facets work on (UTF-32 on this platform).
void Widen(StringView S, std::wstring& Out) {
  Out.clear();
  for (std::size_t i = 0; i < S.size(); ++i) {
    char32_t Cp = S[i];
    if (Cp >= 0xD800 && Cp <= 0xDBFF && i + 1 < S.size() && S[i + 1] >= 0xDC00 && S[i + 1] <= 0xDFFF) {
      Cp = 0x10000 + ((Cp - 0xD800) << 10) + (S[i + 1] - 0xDC00);
      ++i;
    }
    Out.push_back(static_cast<wchar_t>(Cp));
  }
}

inline bool IsSurrogate(Char C) { return C >= 0xD800 && C <= 0xDFFF; }

// Under the classic locale collation is code point order and case folding touches ASCII
// letters only, so a comparison is decided on the code units themselves, without widening or
// the collate facet's copies of both strings. Only a first difference that involves a
// surrogate (where code unit and code point order part) is left to the general path.
bool ClassicCollate(StringView A, StringView B, bool IgnoreCase, int& Result) {
  const std::size_t N = A.size() < B.size() ? A.size() : B.size();
  std::size_t i = 0;
  if (IgnoreCase) {
    while (i < N && AsciiLower(A[i]) == AsciiLower(B[i])) ++i;
  } else {
    while (i < N && A[i] == B[i]) ++i;
  }
  if (i == N) {
    Result = A.size() == B.size() ? 0 : (A.size() < B.size() ? -1 : 1);
    return true;
  }
  if (IsSurrogate(A[i]) || IsSurrogate(B[i]) || (i > 0 && IsSurrogate(A[i - 1]))) return false;
  const Char CA = IgnoreCase ? AsciiLower(A[i]) : A[i], CB = IgnoreCase ? AsciiLower(B[i]) : B[i];
  Result = CA < CB ? -1 : 1;
  return true;
}

int Collate(StringView A, StringView B, bool IgnoreCase) {
  thread_local std::wstring WA, WB;
  const std::locale Loc;
  // Equality with the classic locale is a pointer comparison while the global locale is the
  // default one; a locale of other facets has no name and never compares equal.
  int Result;
  if (Loc == std::locale::classic() && ClassicCollate(A, B, IgnoreCase, Result)) return Result;
  Widen(A, WA);
  Widen(B, WB);
  if (IgnoreCase) {
    const auto& CType = std::use_facet<std::ctype<wchar_t>>(Loc);
    CType.tolower(WA.data(), WA.data() + WA.size());
    CType.tolower(WB.data(), WB.data() + WB.size());
  }
  const auto& Coll = std::use_facet<std::collate<wchar_t>>(Loc);
  return Coll.compare(WA.data(), WA.data() + WA.size(), WB.data(), WB.data() + WB.size());
}

String MapLocaleCase(StringView S, bool Upper) {
  const std::locale Loc;
  const auto& CType = std::use_facet<std::ctype<wchar_t>>(Loc);
  String R(S);
  for (Char& C : R) {
    if (C >= 0xD800 && C <= 0xDFFF) continue;
    const wchar_t W = Upper ? CType.toupper(static_cast<wchar_t>(C)) : CType.tolower(static_cast<wchar_t>(C));
    if (W <= 0xFFFF) C = static_cast<Char>(W);
  }
  return R;
}
}  // namespace

int CompareText(StringView A, StringView B) {
  const std::size_t N = A.size() < B.size() ? A.size() : B.size();
  for (std::size_t i = 0; i < N; ++i) {
    const Char CA = AsciiLower(A[i]), CB = AsciiLower(B[i]);
    if (CA != CB) return CA < CB ? -1 : 1;
  }
  return A.size() == B.size() ? 0 : (A.size() < B.size() ? -1 : 1);
}

bool SameText(StringView A, StringView B) { return A.size() == B.size() && CompareText(A, B) == 0; }
int AnsiCompareStr(StringView A, StringView B) { return Collate(A, B, false); }
int AnsiCompareText(StringView A, StringView B) { return Collate(A, B, true); }
bool AnsiSameText(StringView A, StringView B) { return AnsiCompareText(A, B) == 0; }

String UpperCase(StringView S) {
  String R(S);
  for (Char& C : R) C = AsciiUpper(C);
  return R;
}

String LowerCase(StringView S) {
  String R(S);
  for (Char& C : R) C = AsciiLower(C);
  return R;
}

String AnsiUpperCase(StringView S) { return MapLocaleCase(S, true); }
String AnsiLowerCase(StringView S) { return MapLocaleCase(S, false); }

String Trim(StringView S) {
  std::size_t B = 0, E = S.size();
  while (B < E && S[B] <= u' ') ++B;
  while (E > B && S[E - 1] <= u' ') --E;
  return String(S.substr(B, E - B));
}

}  // namespace kz
