#include "Runtime/Variants.h"

#include <cmath>

#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;

namespace {

// Days since 1970-01-01 to a civil date (proleptic Gregorian).
void CivilFromDays(std::int64_t Z, std::int64_t& Y, unsigned& M, unsigned& D) {
  Z += 719468;
  const std::int64_t Era = (Z >= 0 ? Z : Z - 146096) / 146097;
  const auto Doe = static_cast<unsigned>(Z - Era * 146097);
  const unsigned Yoe = (Doe - Doe / 1460 + Doe / 36524 - Doe / 146096) / 365;
  const unsigned Doy = Doe - (365 * Yoe + Yoe / 4 - Yoe / 100);
  const unsigned Mp = (5 * Doy + 2) / 153;
  D = Doy - (153 * Mp + 2) / 5 + 1;
  M = Mp < 10 ? Mp + 3 : Mp - 9;
  Y = static_cast<std::int64_t>(Yoe) + Era * 400 + (M <= 2);
}

String Pad(std::int64_t V, int Digits) {
  String S = IntToStr(V < 0 ? -V : V);
  while (static_cast<int>(S.size()) < Digits) S.insert(S.begin(), u'0');
  return V < 0 ? u"-" + S : S;
}

String DateText(double Days) {
  if (!std::isfinite(Days) || std::fabs(Days) > 1e7) return FloatToStr(Days);
  const double Whole = std::floor(Days);
  auto Secs = static_cast<std::int64_t>(std::llround((Days - Whole) * 86400.0));
  auto Day = static_cast<std::int64_t>(Whole);
  if (Secs >= 86400) Secs -= 86400, ++Day;
  std::int64_t Y;
  unsigned M, D;
  CivilFromDays(Day - 25569, Y, M, D);  // 1899-12-30 is 25569 days before 1970-01-01
  String R = Pad(Y, 4) + u"-" + Pad(M, 2) + u"-" + Pad(D, 2);
  if (Secs) R += u" " + Pad(Secs / 3600, 2) + u":" + Pad(Secs / 60 % 60, 2) + u":" + Pad(Secs % 60, 2);
  return R;
}

}  // namespace

TVariant TVariant::Null() {
  TVariant V;
  V.FType = varNull;
  return V;
}

TVariant TVariant::FromCurrency(std::int64_t Scaled) {
  TVariant V;
  V.FType = varCurrency;
  V.FInt = Scaled;
  return V;
}

TVariant TVariant::FromDate(double Days) {
  TVariant V(Days);
  V.FType = varDate;
  return V;
}

TVariant TVariant::FromError(std::int32_t Code) {
  TVariant V(Code);
  V.FType = varError;
  return V;
}

TVariant TVariant::FromInterface(IInterface* Intf, bool Dispatch) {
  TVariant V;
  V.FType = Dispatch ? varDispatch : varUnknown;
  V.FIntf = Intf;
  return V;
}

TVariant TVariant::FromDataWord(TVarType Type, Pointer Data) {
  TVariant V;
  V.FType = Type;
  V.FData = Data;
  return V;
}

String TVariant::TypeName(TVarType Type) {
  String Base;
  switch (Type & varTypeMask) {
    case varEmpty: Base = u"Empty"; break;
    case varNull: Base = u"Null"; break;
    case varSmallint: Base = u"Smallint"; break;
    case varInteger: Base = u"Integer"; break;
    case varSingle: Base = u"Single"; break;
    case varDouble: Base = u"Double"; break;
    case varCurrency: Base = u"Currency"; break;
    case varDate: Base = u"Date"; break;
    case varOleStr: Base = u"OleStr"; break;
    case varDispatch: Base = u"Dispatch"; break;
    case varError: Base = u"Error"; break;
    case varBoolean: Base = u"Boolean"; break;
    case varUnknown: Base = u"Unknown"; break;
    case varShortInt: Base = u"ShortInt"; break;
    case varByte: Base = u"Byte"; break;
    case varWord: Base = u"Word"; break;
    case varLongWord: Base = u"LongWord"; break;
    case varInt64: Base = u"Int64"; break;
    case varUInt64: Base = u"UInt64"; break;
    case varString: Base = u"String"; break;
    case varUString: Base = u"UnicodeString"; break;
    default: Base = u"$" + IntToHex(Type & varTypeMask, 4);
  }
  return Type & varArray ? u"Array " + Base : Base;
}

void TVariant::CastError(TVarType To) const {
  throw EConvertError(SVarTypeCastError, {TypeName(FType), TypeName(To)});
}

std::int64_t TVariant::AsInt64() const {
  auto FromReal = [&](double R) -> std::int64_t {
    const double N = std::nearbyint(R);
    if (!(N >= -9223372036854775808.0 && N < 9223372036854775808.0)) CastError(varInt64);
    return static_cast<std::int64_t>(N);
  };
  switch (FType) {
    case varEmpty: return 0;
    case varSmallint: case varInteger: case varInt64: case varBoolean: case varError: return FInt;
    case varSingle: case varDouble: case varDate: return FromReal(FReal);
    case varCurrency: return FromReal(static_cast<double>(FInt) / 10000.0);
    case varUString: {
      std::int64_t I;
      try {
        I = StrToInt64(FText);
      } catch (const EConvertError&) {
        return FromReal(StrToFloat(FText));
      }
      return I;
    }
    default: CastError(varInt64);
  }
}

std::int32_t TVariant::AsInteger() const {
  const std::int64_t V = AsInt64();
  if (V < INT32_MIN || V > INT32_MAX) CastError(varInteger);
  return static_cast<std::int32_t>(V);
}

double TVariant::AsReal() const {
  switch (FType) {
    case varEmpty: return 0;
    case varSmallint: case varInteger: case varInt64: case varBoolean: case varError:
      return static_cast<double>(FInt);
    case varSingle: case varDouble: case varDate: return FReal;
    case varCurrency: return static_cast<double>(FInt) / 10000.0;
    case varUString: return StrToFloat(FText);
    default: CastError(varDouble);
  }
}

bool TVariant::AsBoolean() const {
  if (FType == varUString) {
    if (SameText(FText, u"true")) return true;
    if (SameText(FText, u"false")) return false;
    double R;
    if (!TryStrToFloat(FText, R)) CastError(varBoolean);
    return R != 0;
  }
  if (FType == varSingle || FType == varDouble || FType == varDate) return FReal != 0;
  switch (FType) {
    case varEmpty: case varSmallint: case varInteger: case varInt64: case varBoolean: case varError:
    case varCurrency:
      return FInt != 0;
    default: CastError(varBoolean);
  }
}

String TVariant::AsString() const {
  switch (FType) {
    case varEmpty: case varNull: return String();
    case varSmallint: case varInteger: case varInt64: case varError: return IntToStr(FInt);
    case varBoolean: return FInt ? u"True" : u"False";
    case varSingle: return FloatToStr(static_cast<float>(FReal));
    case varDouble: return FloatToStr(FReal);
    case varCurrency: return FloatToStr(static_cast<double>(FInt) / 10000.0);
    case varDate: return DateText(FReal);
    case varUString: return FText;
    default: CastError(varUString);
  }
}

Pointer TVariant::DataWord() const {
  switch (FType) {
    case varUnknown: case varDispatch: return FIntf.get();
    case varEmpty: case varNull: case varSmallint: case varInteger: case varSingle: case varDouble:
    case varCurrency: case varDate: case varError: case varBoolean: case varInt64: case varUString:
      CastError(varUnknown);
    default: return FData;
  }
}

}  // namespace kz
