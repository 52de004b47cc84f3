// Basic types of the library: 16-bit strings, machine words, event signatures.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kz {

/// Text is 16-bit code units throughout the library.
using Char = char16_t;
using String = std::u16string;
using StringView = std::u16string_view;
/// 8-bit text (regular expressions, encoded bits).
using AnsiString = std::string;
/// An untyped machine word: pointers and integers cast to pointers.
using Pointer = void*;
using NativeInt = std::intptr_t;
using NativeUInt = std::uintptr_t;
using Byte = std::uint8_t;
using TBytes = std::basic_string<Byte>;

class TObject;

/// Change callbacks of containers: receive the object that changed.
using TNotifyEvent = std::function<void(TObject* Sender)>;

/// Widens 7-bit text: for literals and identifiers only.
inline String AsciiToString(std::string_view S) { return String(S.begin(), S.end()); }

}  // namespace kz
