// A small tagged value with the conventional variant type codes.
#pragma once

#include <cstdint>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Types.h"

namespace kz {

namespace Runtime {
KZ_RESOURCESTRING(SVarTypeCastError, u"Could not convert variant of type (%s) into type (%s)")
}  // namespace Runtime

/// Variant type codes. varArray is a flag or-ed onto an element type.
using TVarType = std::uint16_t;
inline constexpr TVarType varEmpty = 0;
inline constexpr TVarType varNull = 1;
inline constexpr TVarType varSmallint = 2;
inline constexpr TVarType varInteger = 3;
inline constexpr TVarType varSingle = 4;
inline constexpr TVarType varDouble = 5;
inline constexpr TVarType varCurrency = 6;
inline constexpr TVarType varDate = 7;
inline constexpr TVarType varOleStr = 8;
inline constexpr TVarType varDispatch = 9;
inline constexpr TVarType varError = 10;
inline constexpr TVarType varBoolean = 11;
inline constexpr TVarType varUnknown = 13;
inline constexpr TVarType varShortInt = 16;
inline constexpr TVarType varByte = 17;
inline constexpr TVarType varWord = 18;
inline constexpr TVarType varLongWord = 19;
inline constexpr TVarType varInt64 = 20;
inline constexpr TVarType varUInt64 = 21;
inline constexpr TVarType varString = 0x0100;
inline constexpr TVarType varUString = 0x0102;
inline constexpr TVarType varTypeMask = 0x0FFF;
inline constexpr TVarType varArray = 0x4000;

/// One value of a variant type: numbers, Booleans, text, currency (a 64-bit integer scaled
/// by 10000), dates (days since 1899-12-30 with the time as fraction), error codes,
/// counted interface references, or an opaque data word under an arbitrary type code.
/// Conversions that make no sense raise EConvertError "Could not convert variant of type
/// (X) into type (Y)"; malformed text raises the strict parsers' EConvertError.
class TVariant {
 public:
  TVariant() = default;  // varEmpty
  TVariant(std::int16_t V) : FType(varSmallint), FInt(V) {}
  TVariant(std::int32_t V) : FType(varInteger), FInt(V) {}
  TVariant(std::int64_t V) : FType(varInt64), FInt(V) {}
  TVariant(float V) : FType(varSingle), FReal(V) {}
  TVariant(double V) : FType(varDouble), FReal(V) {}
  TVariant(bool V) : FType(varBoolean), FInt(V) {}
  TVariant(String V) : FType(varUString), FText(std::move(V)) {}
  TVariant(const char16_t* V) : TVariant(String(V ? V : u"")) {}

  static TVariant Null();
  static TVariant FromCurrency(std::int64_t Scaled);
  static TVariant FromDate(double Days);
  static TVariant FromError(std::int32_t Code);
  /// varUnknown, or varDispatch when Dispatch is set; the reference is counted.
  static TVariant FromInterface(IInterface* Intf, bool Dispatch = false);
  /// Any type code with an opaque, non-owned data word (arrays and the like).
  static TVariant FromDataWord(TVarType Type, Pointer Data);

  TVarType VarType() const { return FType; }
  bool IsEmpty() const { return FType == varEmpty; }
  bool IsNull() const { return FType == varNull; }

  /// Empty is 0; reals round to nearest (ties to even); text is parsed as an integer, or
  /// failing that as a real and rounded; true is 1. Raises on null, interfaces, data words
  /// and integers outside the target range.
  std::int32_t AsInteger() const;
  std::int64_t AsInt64() const;
  /// Empty is 0; currency is Scaled / 10000; dates are their day count.
  double AsReal() const;
  /// Numbers: non-zero is true; text: "true"/"false" in any case, or a number.
  bool AsBoolean() const;
  /// Empty and null give the empty text; numbers their shortest decimal text; Booleans
  /// "True"/"False"; dates "yyyy-mm-dd" plus " hh:nn:ss" when there is a time of day;
  /// errors their code. Raises for interfaces and data words.
  String AsString() const;
  /// The reference of varUnknown/varDispatch, the data word of FromDataWord values; raises
  /// for others.
  Pointer DataWord() const;
  /// The type's name as messages show it ("Integer", "UnicodeString", ...).
  static String TypeName(TVarType Type);

 private:
  [[noreturn]] void CastError(TVarType To) const;

  TVarType FType = varEmpty;
  std::int64_t FInt = 0;
  double FReal = 0;
  String FText;
  TIntfPtr<IInterface> FIntf;
  Pointer FData = nullptr;
};

}  // namespace kz
