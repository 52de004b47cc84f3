// Text helpers: UTF-8 conversion, strict number parsing, number text, string comparisons.
#pragma once

#include <cstdint>
#include <string_view>

#include "Runtime/Types.h"

namespace kz {

/// UTF-8 to UTF-16; invalid sequences become U+FFFD.
String Utf8ToString(std::string_view S);
/// One step of UTF-8 decoding at P, with N >= 1 bytes available. Answers the number of bytes
/// the step takes; Cp is the code point, or U+FFFD for an ill-formed maximal subpart (one
/// replacement per subpart). Truncated tells that the input ended inside a sequence that
/// further bytes could still complete.
std::size_t Utf8Step(const unsigned char* P, std::size_t N, char32_t& Cp, bool& Truncated);
/// UTF-16 to UTF-8; unpaired surrogates become U+FFFD.
std::string StringToUtf8(StringView S);

/// Strict decimal parsing: optional sign, digits, nothing else (no blanks).
/// Raises EConvertError "'%s' is not a valid integer value" on bad text or overflow.
std::int32_t StrToInt(StringView S);
std::int64_t StrToInt64(StringView S);
/// Like StrToInt but answers Default instead of raising.
std::int32_t StrToIntDef(StringView S, std::int32_t Default);
/// Strict decimal float: [sign] mantissa [(e|E) [sign] digits], the mantissa being digits with
/// an optional point anywhere ("5", "5.", ".5", "5.25") but at least one digit; no blanks.
/// Text too small for a double reads as a signed zero. Raises EConvertError "'%s' is not a
/// valid floating point value" on other text and on values beyond the largest double.
double StrToFloat(StringView S);
bool TryStrToFloat(StringView S, double& Value);

String IntToStr(std::int64_t V);
String UIntToStr(std::uint64_t V);
/// Upper-case hexadecimal, zero-padded to at least Digits.
String IntToHex(std::uint64_t V, int Digits);
/// Shortest text that reads back to the same double: fixed notation for decimal exponents
/// -5..14, otherwise d.dddE+x. "NAN", "INF", "-INF" for the special values.
String FloatToStr(double V);

/// Ordinal (code unit) comparison: negative, zero or positive.
int CompareStr(StringView A, StringView B);
/// Case-insensitive for ASCII letters only; otherwise ordinal.
int CompareText(StringView A, StringView B);
bool SameText(StringView A, StringView B);
/// Collation of the global C++ locale (std::locale()), case-sensitive.
int AnsiCompareStr(StringView A, StringView B);
/// Collation of the global C++ locale after case folding with that locale's ctype.
int AnsiCompareText(StringView A, StringView B);
bool AnsiSameText(StringView A, StringView B);

String UpperCase(StringView S);  // ASCII letters only
String LowerCase(StringView S);  // ASCII letters only
String AnsiUpperCase(StringView S);  // the global locale's case mapping
String AnsiLowerCase(StringView S);
String Trim(StringView S);  // removes code units <= space at both ends

}  // namespace kz
