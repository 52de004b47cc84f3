// A delimiter parser: walks the tokens of a string forwards and backwards from a current
// position, answers the text after the current token and counts the tokens.
#pragma once

#include <cstdint>
#include <functional>

#include "Runtime/Errors.h"
#include "Runtime/Object.h"
#include "Runtime/Types.h"

namespace kz {

namespace GParser {
KZ_UNIT_SCOPE(GParser)
/// The delimiters of a new parser: space, carriage return, line feed.
inline constexpr StringView DefaultDelimiters = u" \r\n";
}  // namespace GParser

/// Splits a text into tokens separated by delimiter characters. Positions are 1-based and
/// clamped to 0 .. length + 1; no operation raises except SkipCharacters before any skip test
/// was chosen (EAccessViolation). Walking past either end answers false. Next and Previous
/// are virtual, and First, Last and GetTokenCount go through them.
///
/// Kept on purpose: Next finds no token when the position stands on the text's last
/// character (except for a one-character text); a Next from position 0, and a Previous from
/// just past the end, answer true with an empty token without moving (Next's rest of text is
/// then the whole text), so a loop over them needs its own bound; GetTokenCount answers the walked count only on the first call after the text
/// or the delimiters changed, and after that the stored count, which nothing writes (0), and
/// its walk leaves Token and RestOfText at the last token found.
class TGCustomParser : public TObject {
  KZ_CLASS(TGCustomParser, TObject)
 public:
  /// A character test the skipping operations walk with.
  using TSkipTest = std::function<bool(Char Ch)>;

  explicit TGCustomParser(String AString = String());

  [[nodiscard]] bool IsADelimiter(Char Ch) const;
  [[nodiscard]] bool IsAToken(Char Ch) const;

  /// Steps from the position by Direction while the character there fails SkipTest, and
  /// answers |Direction| per step taken (0 when Direction is 0). O(length).
  virtual std::int32_t SkipCharacters(std::int32_t Direction);
  /// The number of delimiters from the position up to the next token character.
  std::int32_t SkipDelimiters(std::int32_t Direction);
  /// The length of the token run from the position.
  std::int32_t SkipText(std::int32_t Direction);

  bool First();
  virtual bool Next();
  virtual bool Previous();
  bool Last();
  /// Counts the tokens by walking them (see the class note for the stored-count rule).
  std::int32_t GetTokenCount();

  [[nodiscard]] const String& GetDelimiters() const { return FDelimiters; }
  /// An empty value becomes a single space.
  void SetDelimiters(String Value);
  [[nodiscard]] std::int32_t GetPosition() const { return FPosition; }
  void SetPosition(std::int32_t Value);
  [[nodiscard]] const String& GetRestOfText() const { return FRestOfText; }
  void SetRestOfText(String Value) { FRestOfText = std::move(Value); }
  [[nodiscard]] const String& GetText() const { return FText; }
  /// Resets the position to 1 and the rest of the text to the whole text.
  void SetText(String Value);
  [[nodiscard]] const String& GetToken() const { return FToken; }
  void SetToken(String Value) { FToken = std::move(Value); }

 protected:
  [[nodiscard]] std::int32_t TextLength() const { return static_cast<std::int32_t>(FText.size()); }

  String FDelimiters;
  std::int32_t FPosition = 1;
  String FRestOfText;
  String FText;
  String FToken;
  std::int32_t FTokenCount = 0;
  bool FChanged = false;
  TSkipTest SkipTest;
};

/// The parser with every property public; it adds nothing else.
class TGParser : public TGCustomParser {
  KZ_CLASS(TGParser, TGCustomParser)
 public:
  using TGCustomParser::TGCustomParser;
};

}  // namespace kz
