// The library's base exception for hosts, the padding type of message records and the
// indentation unit of text output.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Runtime/Encodings.h"
#include "Runtime/Errors.h"
#include "Runtime/Streams.h"
#include "Runtime/Types.h"

namespace kz {

/// Offered to hosts and descendants as the library's own base exception. No class of the
/// library raises it, and the other unit exceptions do not derive from it: a handler meant
/// to catch every library error catches kz::Exception.
KZ_DECLARE_EXCEPTION(EKZException, Exception)

/// Placed after a 32-bit field of a message record to widen it to a machine word: four
/// bytes of padding on 64-bit builds, no bytes at all on 32-bit builds. The 32-bit form is a
/// zero-length array (accepted by GCC and Clang) rather than an empty class, because an
/// empty class member would still take a byte, and [[no_unique_address]] would let the
/// compiler move it away from its field.
struct TKZDWordFiller {
  Byte Padding[sizeof(void*) - sizeof(std::uint32_t)];
};
static_assert(sizeof(TKZDWordFiller) == sizeof(void*) - sizeof(std::uint32_t));

namespace KZConstants {
KZ_UNIT_SCOPE(KZConstants)
/// One level of indentation in text the library writes: two spaces.
inline constexpr StringView IndentString = u"  ";
}  // namespace KZConstants

/// A string stream that is positioned at its start once built, ready to be read (the base
/// string stream stands after the text it was given).
class TKZStringStream : public TStringStream {
  KZ_CLASS(TKZStringStream, TStringStream)
 public:
  /// The text in UTF-8, the base string stream's own encoding.
  explicit TKZStringStream(StringView AString) : TStringStream(AString) { SetPosition(0); }
  /// The text in AEncoding, or in UTF-8 when AEncoding is null; AEncoding is owned when
  /// AOwnsEncoding is true (the shared standard encodings never are).
  TKZStringStream(StringView AString, TEncoding* AEncoding, bool AOwnsEncoding)
      : TStringStream(AString, AEncoding ? AEncoding : TEncoding::UTF8(), AOwnsEncoding) {
    SetPosition(0);
  }
};

}  // namespace kz
