#include "Runtime/Encodings.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {

// Counts negative sizes as empty, so callers may pass any count they hold.
std::size_t Len(std::int32_t Count) { return Count > 0 ? static_cast<std::size_t>(Count) : 0; }

std::int32_t Clamp32(std::size_t N) {
  return static_cast<std::int32_t>(std::min<std::size_t>(N, INT32_MAX));
}

// Code points of the bytes 0x80..0x9F; the rest of the code page is Latin-1. The five
// undefined bytes map to the C1 control of the same value so that every byte round-trips.
constexpr std::array<Char, 32> GCp1252High{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

Byte EncodeCp1252(Char C) {
  if (C < 0x80 || (C >= 0xA0 && C <= 0xFF)) return static_cast<Byte>(C);
  for (std::size_t i = 0; i < GCp1252High.size(); ++i)
    if (GCp1252High[i] == C) return static_cast<Byte>(0x80 + i);
  return '?';
}

}  // namespace

std::int32_t TEncoding::GetByteCount(StringView S) const { return Clamp32(GetBytes(S).size()); }

TEncoding* TEncoding::Default() {
  static TAnsiEncoding E;
  return &E;
}
TEncoding* TEncoding::UTF8() {
  static TUTF8Encoding E;
  return &E;
}
TEncoding* TEncoding::Unicode() {
  static TUnicodeEncoding E;
  return &E;
}
TEncoding* TEncoding::BigEndianUnicode() {
  static TBigEndianUnicodeEncoding E;
  return &E;
}

bool TEncoding::IsStandardEncoding(const TEncoding* AEncoding) {
  return AEncoding && (AEncoding == Default() || AEncoding == UTF8() || AEncoding == Unicode() ||
                       AEncoding == BigEndianUnicode());
}

std::int32_t TEncoding::GetBufferEncoding(const Byte* Buffer, std::int32_t Count, TEncoding*& AEncoding) {
  auto StartsWith = [&](const TBytes& Pre) {
    return !Pre.empty() && Len(Count) >= Pre.size() && std::equal(Pre.begin(), Pre.end(), Buffer);
  };
  if (AEncoding) return StartsWith(AEncoding->GetPreamble()) ? Clamp32(AEncoding->GetPreamble().size()) : 0;
  for (TEncoding* E : {Unicode(), BigEndianUnicode(), UTF8()})
    if (StartsWith(E->GetPreamble())) {
      AEncoding = E;
      return Clamp32(E->GetPreamble().size());
    }
  AEncoding = Default();
  return 0;
}

// --- Windows-1252 ---

TBytes TAnsiEncoding::GetPreamble() const { return {}; }

std::int32_t TAnsiEncoding::GetByteCount(StringView S) const { return Clamp32(S.size()); }

std::int32_t TAnsiEncoding::GetCharCount(const Byte*, std::int32_t Count) const { return Count > 0 ? Count : 0; }

String TAnsiEncoding::GetString(const Byte* Bytes, std::int32_t Count) const {
  String R(Len(Count), u'\0');
  for (std::size_t i = 0; i < R.size(); ++i) {
    const Byte B = Bytes[i];
    R[i] = B >= 0x80 && B < 0xA0 ? GCp1252High[B - 0x80] : static_cast<Char>(B);
  }
  return R;
}

TBytes TAnsiEncoding::GetBytes(StringView S) const {
  TBytes R(S.size(), 0);
  for (std::size_t i = 0; i < S.size(); ++i) R[i] = EncodeCp1252(S[i]);
  return R;
}

// --- UTF-8 ---

TBytes TUTF8Encoding::GetPreamble() const { return {0xEF, 0xBB, 0xBF}; }

std::int32_t TUTF8Encoding::GetCharCount(const Byte* Bytes, std::int32_t Count) const {
  // Walks the sequences exactly as the decoder groups them, so that the count matches
  // the decoded length whenever the input does not end inside a sequence.
  const std::size_t N = Len(Count);
  std::size_t i = 0, Chars = 0;
  while (i < N) {
    char32_t Cp;
    bool Truncated;
    const std::size_t Step = Utf8Step(Bytes + i, N - i, Cp, Truncated);
    if (Truncated) break;  // may still be completed
    Chars += Cp >= 0x10000 ? 2 : 1;
    i += Step;
  }
  return Clamp32(Chars);
}

String TUTF8Encoding::GetString(const Byte* Bytes, std::int32_t Count) const {
  return Utf8ToString(std::string_view(reinterpret_cast<const char*>(Bytes), Len(Count)));
}

TBytes TUTF8Encoding::GetBytes(StringView S) const {
  const std::string U = StringToUtf8(S);
  return TBytes(U.begin(), U.end());
}

// --- UTF-16 ---

TBytes TUnicodeEncoding::GetPreamble() const { return {0xFF, 0xFE}; }

TBytes TBigEndianUnicodeEncoding::GetPreamble() const { return {0xFE, 0xFF}; }

std::int32_t TUnicodeEncoding::GetByteCount(StringView S) const { return Clamp32(S.size() * 2); }

std::int32_t TUnicodeEncoding::GetCharCount(const Byte*, std::int32_t Count) const { return Count > 0 ? Count / 2 : 0; }

String TUnicodeEncoding::GetString(const Byte* Bytes, std::int32_t Count) const {
  const std::size_t N = Len(Count);
  String R(N / 2, u'\0');
  const bool BE = BigEndian();
  for (std::size_t i = 0; i < R.size(); ++i) {
    const unsigned B0 = Bytes[2 * i], B1 = Bytes[2 * i + 1];
    R[i] = static_cast<Char>(BE ? (B0 << 8) | B1 : (B1 << 8) | B0);
  }
  if (N % 2) R.push_back(u'\uFFFD');
  return R;
}

TBytes TUnicodeEncoding::GetBytes(StringView S) const {
  TBytes R(S.size() * 2, 0);
  const bool BE = BigEndian();
  for (std::size_t i = 0; i < S.size(); ++i) {
    const Byte Lo = static_cast<Byte>(S[i] & 0xFF), Hi = static_cast<Byte>(S[i] >> 8);
    R[2 * i] = BE ? Hi : Lo;
    R[2 * i + 1] = BE ? Lo : Hi;
  }
  return R;
}

}  // namespace kz
