// Compiles an arbitrary pattern, matches it against an arbitrary text both ways and asks for
// examples. Only ERXException may leave the engine (and only from compiling); every example
// must be accepted by ExactMatch, and every match must lie inside the text.
#include <cstddef>
#include <cstdint>
#include <string>

#include "GRegularExpression/GRegularExpression.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* Data, std::size_t Size) {
  // Pattern and text are separated by the first NUL byte; the pattern is kept short so that
  // each run stays quick.
  const std::string Input(reinterpret_cast<const char*>(Data), Size);
  const std::size_t Split = Input.find('\0');
  const std::string Pattern = Input.substr(0, std::min<std::size_t>(Split, 64));
  const std::string Text = Split == std::string::npos ? std::string() : Input.substr(Split + 1, 512);
  kz::TGRegularExpression R;
  try {
    R.SetCaseSensitive(Size % 2 == 0);
    R.SetExpression(Pattern);
  } catch (const kz::ERXException&) {
    // A partly built automaton must still match safely.
  }
  std::int32_t Len = 0;
  for (std::int32_t Start : {1, 2, 0}) {
    const std::int32_t Pos = R.Match(Text, Start, Len, false);
    if (Pos < 0 || Pos > static_cast<std::int32_t>(Text.size()) + 1) __builtin_trap();
    if (Pos > 0 && (Len < 0 || Pos - 1 + Len > static_cast<std::int32_t>(Text.size()))) __builtin_trap();
  }
  (void)R.ExactMatch(Text);
  R.SetMaxExamples(5);
  try {
    R.SetExpression(Pattern);
  } catch (const kz::ERXException&) {
    return 0;
  }
  for (const kz::AnsiString& Example : R.Examples())
    if (!R.ExactMatch(Example)) __builtin_trap();
  return 0;
}
