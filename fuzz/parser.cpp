// Walks arbitrary texts with arbitrary delimiters in both directions; nothing may escape.
#include <cstddef>
#include <cstdint>

#include "GParser/GParser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  if (Size < 2) return 0;
  // The first byte splits the input into delimiters and text, read as 16-bit units.
  const std::size_t Split = std::min<std::size_t>(Data[0] % 8, (Size - 1) / 2) * 2 + 1;
  auto Units = [&](std::size_t From, std::size_t To) {
    kz::String S;
    for (std::size_t i = From; i + 1 < To; i += 2) S.push_back(static_cast<char16_t>(Data[i] | Data[i + 1] << 8));
    return S;
  };
  kz::TGParser P(Units(Split, Size));
  P.SetDelimiters(Units(1, Split));
  const std::int32_t Count = P.GetTokenCount();
  std::int32_t Forward = 0;
  for (bool Ok = P.First(); Ok && Forward <= Count; Ok = P.Next()) ++Forward;
  if (Forward != Count) __builtin_trap();
  // Backward from the end; a walk that stands past the end keeps answering an empty token,
  // so it is bounded.
  std::int32_t Steps = 0;
  for (bool Ok = P.Last(); Ok && Steps <= Count + 2; Ok = P.Previous()) ++Steps;
  P.SetPosition(static_cast<std::int32_t>(Data[0]) - 128);
  for (int i = 0; i < 4; ++i) (void)P.Next();
  for (int i = 0; i < 4; ++i) (void)P.Previous();
  return 0;
}
