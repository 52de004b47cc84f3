// The library's tagged argument: one value of eighteen kinds carried with its kind, for
// argument lists of mixed kinds (text writers) and for the variant-like value.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Types.h"

namespace kz {

class TVariant;

/// The kinds of a tagged argument; the ordinals (0 to 17) are part of the contract.
enum TValueType : std::uint8_t {
  vtInteger,
  vtBoolean,
  vtChar,
  vtFloat,
  vtString,
  vtPointer,
  vtPChar,
  vtObject,
  vtClass,
  vtWideChar,
  vtPWideChar,
  vtAnsiString,
  vtCurrency,
  vtVariant,
  vtInterface,
  vtWideString,
  vtInt64,
  vtUnicodeString
};
inline constexpr int ValueTypeCount = vtUnicodeString + 1;

namespace Runtime {
KZ_RESOURCESTRING(SVarRecKindError, u"Tagged argument of kind %d read as kind %d")
}  // namespace Runtime

/// One tagged argument: a kind and its datum. It is a view for passing arguments: numbers,
/// characters and currency are held by value, everything else is borrowed (text, variants,
/// objects, classes, interfaces without a reference count), so a TVarRec is valid only while
/// what it refers to lives; in a braced argument list that is the whole call.
///
/// Implicit construction from the natural C++ values:
///   signed integers up to 32 bits, and unsigned ones below 32 bits  -> vtInteger
///   std::int64_t (and other 64-bit signed), std::uint32_t            -> vtInt64
///   bool -> vtBoolean, char -> vtChar, char16_t -> vtWideChar
///   float, double, long double                                      -> vtFloat (extended)
///   const char* (NUL-terminated, null reads as empty)               -> vtPChar
///   const AnsiString&, std::string_view                             -> vtAnsiString
///   const String&, StringView, const char16_t* (text; null empty)   -> vtUnicodeString
///   void*, nullptr -> vtPointer; TObject (and derived) pointers      -> vtObject
///   metaclass pointers (&TFoo::ClassInfo()) -> vtClass; const TVariant& -> vtVariant
///   interface pointers and TIntfPtr of classes that are not TObjects -> vtInterface
/// The remaining kinds are made by name: Currency (a 64-bit integer scaled by 10000),
/// ShortString, WideString, PWideChar. 64-bit unsigned values do not convert: cast them.
/// Reading the datum as another kind raises EInvalidCast.
class TVarRec {
 public:
  TVarRec() noexcept : FType(vtInteger) { FInt = 0; }

  template <class I, std::enable_if_t<std::is_integral_v<I> && !std::is_same_v<I, bool> &&
                                          !std::is_same_v<I, char> && !std::is_same_v<I, char16_t> &&
                                          !std::is_same_v<I, char32_t> && !std::is_same_v<I, wchar_t> &&
                                          !std::is_same_v<I, char8_t>,
                                      int> = 0>
  TVarRec(I V) noexcept {
    static_assert(std::is_signed_v<I> || sizeof(I) <= 4, "cast 64-bit unsigned values to a signed type");
    if constexpr (sizeof(I) < 4 || (sizeof(I) == 4 && std::is_signed_v<I>)) {
      FType = vtInteger;
      FInt = static_cast<std::int32_t>(V);
    } else {
      FType = vtInt64;
      FInt64 = static_cast<std::int64_t>(V);
    }
  }
  TVarRec(bool V) noexcept : FType(vtBoolean) { FBool = V; }
  TVarRec(char V) noexcept : FType(vtChar) { FChar = V; }
  TVarRec(char16_t V) noexcept : FType(vtWideChar) { FWideChar = V; }
  TVarRec(float V) noexcept : TVarRec(static_cast<long double>(V)) {}
  TVarRec(double V) noexcept : TVarRec(static_cast<long double>(V)) {}
  TVarRec(long double V) noexcept : FType(vtFloat) { FExtended = V; }
  TVarRec(const char* V) noexcept : FType(vtPChar) { FPtr = V; }
  TVarRec(const AnsiString& V) noexcept : TVarRec(vtAnsiString, V.data(), V.size()) {}
  TVarRec(std::string_view V) noexcept : TVarRec(vtAnsiString, V.data(), V.size()) {}
  TVarRec(const String& V) noexcept : TVarRec(vtUnicodeString, V.data(), V.size()) {}
  TVarRec(StringView V) noexcept : TVarRec(vtUnicodeString, V.data(), V.size()) {}
  TVarRec(const char16_t* V) noexcept
      : TVarRec(vtUnicodeString, V, V ? std::char_traits<char16_t>::length(V) : 0) {}
  TVarRec(Pointer V) noexcept : FType(vtPointer) { FPtr = V; }
  TVarRec(std::nullptr_t) noexcept : FType(vtPointer) { FPtr = nullptr; }
  template <class T, std::enable_if_t<std::is_base_of_v<TObject, T>, int> = 0>
  TVarRec(T* V) noexcept : FType(vtObject) {
    FPtr = static_cast<const TObject*>(V);
  }
  template <class M, std::enable_if_t<std::is_base_of_v<TMetaClass, M>, int> = 0>
  TVarRec(const M* V) noexcept : FType(vtClass) {
    FPtr = static_cast<const TMetaClass*>(V);
  }
  TVarRec(const TVariant& V) noexcept : FType(vtVariant) { FPtr = &V; }
  template <class I, std::enable_if_t<std::is_base_of_v<IInterface, I> && !std::is_base_of_v<TObject, I>,
                                      int> = 0>
  TVarRec(I* V) noexcept : FType(vtInterface) {
    FPtr = static_cast<IInterface*>(V);
  }
  template <class P, std::enable_if_t<std::is_base_of_v<IInterface, std::remove_pointer_t<decltype(
                                          std::declval<const P&>().get())>>, int> = 0>
  TVarRec(const P& V) noexcept : TVarRec(V.get()) {}

  /// The currency kind: Scaled is the amount times 10000.
  static TVarRec Currency(std::int64_t Scaled) noexcept {
    TVarRec R;
    R.FType = vtCurrency;
    R.FInt64 = Scaled;
    return R;
  }
  /// The short-string kind over 8-bit text.
  static TVarRec ShortString(std::string_view V) noexcept { return TVarRec(vtString, V.data(), V.size()); }
  /// The wide-string kind (as opposed to the Unicode-string kind of String).
  static TVarRec WideString(StringView V) noexcept { return TVarRec(vtWideString, V.data(), V.size()); }
  /// The wide character pointer kind: NUL-terminated, null reads as empty.
  static TVarRec PWideChar(const Char* V) noexcept {
    TVarRec R;
    R.FType = vtPWideChar;
    R.FPtr = V;
    return R;
  }

  TValueType VType() const noexcept { return FType; }

  // Each reader raises EInvalidCast when the argument is of another kind.
  std::int32_t VInteger() const {
    Check(vtInteger);
    return FInt;
  }
  bool VBoolean() const {
    Check(vtBoolean);
    return FBool;
  }
  char VChar() const {
    Check(vtChar);
    return FChar;
  }
  Char VWideChar() const {
    Check(vtWideChar);
    return FWideChar;
  }
  long double VExtended() const {
    Check(vtFloat);
    return FExtended;
  }
  /// The scaled amount (times 10000).
  std::int64_t VCurrency() const {
    Check(vtCurrency);
    return FInt64;
  }
  std::int64_t VInt64() const {
    Check(vtInt64);
    return FInt64;
  }
  Pointer VPointer() const {
    Check(vtPointer);
    return const_cast<void*>(FPtr);
  }
  const char* VPChar() const {
    Check(vtPChar);
    return static_cast<const char*>(FPtr);
  }
  const Char* VPWideChar() const {
    Check(vtPWideChar);
    return static_cast<const Char*>(FPtr);
  }
  TObject* VObject() const {
    Check(vtObject);
    return const_cast<TObject*>(static_cast<const TObject*>(FPtr));
  }
  const TMetaClass* VClass() const {
    Check(vtClass);
    return static_cast<const TMetaClass*>(FPtr);
  }
  const TVariant& VVariant() const {
    Check(vtVariant);
    return *static_cast<const TVariant*>(FPtr);
  }
  /// Not counted: the caller keeps the reference alive.
  IInterface* VInterface() const {
    Check(vtInterface);
    return const_cast<IInterface*>(static_cast<const IInterface*>(FPtr));
  }
  /// The text of vtString, vtAnsiString and vtPChar.
  std::string_view NarrowText() const;
  /// The text of vtWideString, vtUnicodeString and vtPWideChar.
  StringView WideText() const;

 private:
  TVarRec(TValueType Type, const void* Data, std::size_t Length) noexcept : FType(Type), FLength(Length) {
    FPtr = Data;
  }
  void Check(TValueType Expected) const {
    if (FType != Expected) Raise(Expected);
  }
  [[noreturn]] void Raise(TValueType Expected) const;

  TValueType FType;
  union {
    std::int32_t FInt;
    bool FBool;
    char FChar;
    Char FWideChar;
    long double FExtended;
    std::int64_t FInt64;
    const void* FPtr;
  };
  std::size_t FLength = 0;  // of the counted text kinds
};

}  // namespace kz
