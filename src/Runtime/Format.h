// Format over 16-bit strings: %d %u %x %e %f %g %n %p %s with width, precision and '-' flag.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <type_traits>

#include "Runtime/Types.h"

namespace kz {

/// One argument of Format: an integer, a float, a string, a character or a pointer.
class TFormatArg {
 public:
  enum TKind : std::uint8_t { fkInt, fkUInt, fkFloat, fkString, fkPointer };

  template <class I, std::enable_if_t<std::is_integral_v<I> && std::is_signed_v<I> &&
                                          !std::is_same_v<I, char>, int> = 0>
  TFormatArg(I V) : FKind(fkInt), FInt(V) {}
  template <class I, std::enable_if_t<std::is_integral_v<I> && std::is_unsigned_v<I> &&
                                          !std::is_same_v<I, bool> && !std::is_same_v<I, char16_t>,
                                      int> = 0>
  TFormatArg(I V) : FKind(fkUInt), FUInt(V) {}
  TFormatArg(bool V) : FKind(fkInt), FInt(V ? 1 : 0) {}
  TFormatArg(double V) : FKind(fkFloat), FFloat(V) {}
  TFormatArg(float V) : FKind(fkFloat), FFloat(V) {}
  TFormatArg(long double V) : FKind(fkFloat), FFloat(V) {}
  TFormatArg(const String& V) : FKind(fkString), FStr(V) {}
  TFormatArg(StringView V) : FKind(fkString), FStr(V) {}
  TFormatArg(const char16_t* V) : FKind(fkString), FStr(V ? StringView(V) : StringView()) {}
  TFormatArg(char16_t V) : FKind(fkString), FStr(&FChar, 1), FChar(V) {}
  TFormatArg(const void* V) : FKind(fkPointer), FPtr(V) {}
  TFormatArg(const TFormatArg& O) : FKind(O.FKind), FInt(O.FInt), FUInt(O.FUInt), FFloat(O.FFloat),
      FStr(O.FKind == fkString && O.FStr.data() == &O.FChar ? StringView(&FChar, 1) : O.FStr),
      FPtr(O.FPtr), FChar(O.FChar) {}
  TFormatArg& operator=(const TFormatArg&) = delete;

  TKind Kind() const { return FKind; }
  std::int64_t AsInt() const { return FInt; }
  std::uint64_t AsUInt() const { return FUInt; }
  long double AsFloat() const { return FFloat; }
  StringView AsString() const { return FStr; }
  const void* AsPointer() const { return FPtr; }

 private:
  TKind FKind;
  std::int64_t FInt = 0;
  std::uint64_t FUInt = 0;
  long double FFloat = 0;
  StringView FStr;
  const void* FPtr = nullptr;
  char16_t FChar = 0;
};

/// Formats Args into Pattern. Raises EConvertError on a bad pattern, a missing argument or an
/// argument of the wrong kind. %d and %u take integers, %x hexadecimal (upper case),
/// %e %f %g %n floats, %s strings and characters, %p pointers, %% a percent sign. A width or
/// precision, written in the pattern or taken by '*' from an integer argument, must lie in
/// 0..100000; beyond that, or negative, it raises EConvertError.
String Format(StringView Pattern, std::initializer_list<TFormatArg> Args);

}  // namespace kz
