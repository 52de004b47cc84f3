#include "GParser/GParser.h"

#include <algorithm>

#include "Runtime/Errors.h"
#include "Runtime/UpdateCounter.h"

namespace kz {

using namespace Runtime;
using namespace GParser;

namespace {

// Count characters of S from the 1-based Index, clamped to the text: an Index below 1 reads
// from the first character, so a walk standing at position 0 still answers a defined text.
String Copy(const String& S, std::int64_t Index, std::int64_t Count) {
  if (Index < 1) Index = 1;
  const auto Length = static_cast<std::int64_t>(S.size());
  if (Index > Length || Count <= 0) return String();
  return S.substr(static_cast<std::size_t>(Index - 1), static_cast<std::size_t>(std::min(Count, Length - Index + 1)));
}

}  // namespace

TGCustomParser::TGCustomParser(String AString) : FDelimiters(DefaultDelimiters) { SetText(std::move(AString)); }

bool TGCustomParser::IsADelimiter(Char Ch) const { return FDelimiters.find(Ch) != String::npos; }

bool TGCustomParser::IsAToken(Char Ch) const { return !IsADelimiter(Ch); }

void TGCustomParser::SetDelimiters(String Value) {
  if (Value == FDelimiters) return;
  FDelimiters = Value.empty() ? String(1, u' ') : std::move(Value);
  FChanged = true;
}

void TGCustomParser::SetText(String Value) {
  if (Value != FText) {
    FText = std::move(Value);
    FChanged = true;
  }
  FPosition = 1;
  FRestOfText = FText;
}

void TGCustomParser::SetPosition(std::int32_t Value) {
  if (Value == FPosition) return;
  if (Value < 0) Value = 0;
  // Compared in 64 bits: a text of INT32_MAX characters has no length + 1 in 32.
  const std::int64_t Limit = static_cast<std::int64_t>(FText.size()) + 1;
  if (Value > Limit) Value = static_cast<std::int32_t>(Limit);
  FPosition = Value;
}

std::int32_t TGCustomParser::SkipCharacters(std::int32_t Direction) {
  if (Direction == 0) return 0;
  if (!SkipTest) RaiseNullAccess(u"SkipCharacters called before a skip test was chosen");
  // The walk and the count run in 64 bits so that a huge step cannot overflow; the answer
  // wraps to 32 bits like any other count of the parser.
  const std::int64_t Step = Direction;
  const std::uint64_t Magnitude = Step < 0 ? static_cast<std::uint64_t>(-Step) : static_cast<std::uint64_t>(Step);
  const std::int64_t Length = TextLength();
  std::uint64_t Count = 0;
  for (std::int64_t i = FPosition; i >= 1 && i <= Length && !SkipTest(FText[static_cast<std::size_t>(i - 1)]); i += Step)
    Count += Magnitude;
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(Count));
}

std::int32_t TGCustomParser::SkipDelimiters(std::int32_t Direction) {
  SkipTest = [this](Char Ch) { return IsAToken(Ch); };
  return SkipCharacters(Direction);
}

std::int32_t TGCustomParser::SkipText(std::int32_t Direction) {
  SkipTest = [this](Char Ch) { return IsADelimiter(Ch); };
  return SkipCharacters(Direction);
}

bool TGCustomParser::First() {
  SetPosition(1);
  return Next();
}

bool TGCustomParser::Next() {
  const std::int32_t Length = TextLength();
  if (Length > FPosition) {
    SetPosition(FPosition + SkipDelimiters(1));
    if (Length >= FPosition) {
      const std::int32_t N = SkipText(1);
      FToken = Copy(FText, FPosition, N);
      SetPosition(FPosition + N);
      FRestOfText = Copy(FText, FPosition, INT32_MAX);
      return true;
    }
    return false;
  }
  if (FPosition == 1 && Length == 1) {
    if (!IsAToken(FText[0])) return false;
    FToken = FText;
    SetPosition(2);
    FRestOfText.clear();
    return true;
  }
  return false;
}

bool TGCustomParser::Previous() {
  if (FPosition < 1) return false;
  SetPosition(FPosition - SkipDelimiters(-1));
  if (FPosition < 1) return false;
  const std::int32_t N = SkipText(-1);
  FToken = Copy(FText, static_cast<std::int64_t>(FPosition) - N + 1, N);
  FRestOfText = Copy(FText, static_cast<std::int64_t>(FPosition) + 1, INT32_MAX);
  SetPosition(FPosition - N);
  return true;
}

bool TGCustomParser::Last() {
  SetPosition(TextLength());
  return Previous();
}

std::int32_t TGCustomParser::GetTokenCount() {
  if (!FChanged) return FTokenCount;
  // The walk starts at 1; the caller's position comes back also when an override raises.
  TRestoreValue Restore(FPosition, 1);
  std::int32_t Count = 0;
  while (Next()) ++Count;
  FChanged = false;
  return Count;
}

}  // namespace kz
