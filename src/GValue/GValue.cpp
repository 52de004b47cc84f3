#include "GValue/GValue.h"

#include "Runtime/Single.h"
#include "Runtime/Text.h"

namespace kz {

using namespace Runtime;
using namespace GValue;

namespace {

String Widen(std::string_view S) {
  String R(S.size(), Char());
  for (std::size_t i = 0; i < S.size(); ++i) R[i] = static_cast<unsigned char>(S[i]);
  return R;
}

char Narrow(std::int64_t Code) { return static_cast<char>(static_cast<unsigned char>(Code & 0xFF)); }

String CharText(std::int32_t Code) { return String(1, static_cast<Char>(Code & 0xFF)); }

std::int32_t LowWord(const void* P) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(P)));
}

}  // namespace

TGCustomValue::TGCustomValue(const TVarRec& AValue) { Take(AValue); }

void TGCustomValue::CheckAssigned() const {
  if (FUnassigned) throw Exception(SValueUnassigned);
}

void TGCustomValue::ConvertError() { throw EConvertError(SErrorConverting); }

bool TGCustomValue::IsText(TValueType Kind) {
  return Kind == vtString || Kind == vtPChar || Kind == vtAnsiString || Kind == vtWideString ||
         Kind == vtUnicodeString;
}

void TGCustomValue::Store(TValueType Kind) {
  FUnassigned = false;
  FType = Kind;
  FInt = 0;
  FSingle = 0;
  FInt64 = 0;
  FPtr = nullptr;
  FClass = nullptr;
  FText.clear();
  FVariant = TVariant();
  FIntf.reset();
}

std::int32_t TGCustomValue::GetAsInteger() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtBoolean: case vtChar: return FInt;
    case vtPointer: case vtObject: return LowWord(FPtr);
    case vtClass: return LowWord(FClass);
    case vtInterface: return LowWord(static_cast<const void*>(FIntf.get()));
    // The variant's real-to-integer conversion rounds half to even and refuses what does
    // not fit, so an out-of-range float raises instead of converting.
    case vtFloat: case vtCurrency: return TVariant(GetAsFloat()).AsInteger();
    case vtString: case vtPChar: case vtAnsiString: case vtUnicodeString: case vtWideString:
      return StrToInt(GetAsString());
    case vtVariant: return FVariant.AsInteger();
    case vtInt64: return static_cast<std::int32_t>(static_cast<std::uint32_t>(FInt64));
    default: ConvertError();
  }
}

bool TGCustomValue::GetAsBoolean() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtFloat: case vtCurrency: case vtInt64: return GetAsInteger() != 0;
    case vtBoolean: return FInt != 0;
    case vtChar: case vtString: case vtPChar: case vtAnsiString: case vtWideString: case vtUnicodeString: {
      const String S = UpperCase(GetAsString());
      if (S == u"T" || S == u"TRUE") return true;
      if (S == u"F" || S == u"FALSE") return false;
      ConvertError();
    }
    case vtVariant: return FVariant.AsBoolean();
    default: ConvertError();
  }
}

char TGCustomValue::GetAsChar() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtFloat: case vtCurrency: case vtInt64: return Narrow(GetAsInteger());
    case vtBoolean: return FInt ? 'T' : 'F';
    case vtChar: return Narrow(FInt);
    case vtString: case vtPChar: case vtAnsiString: case vtWideString: case vtUnicodeString: {
      const String S = GetAsString();
      if (S.empty()) ConvertError();
      return Narrow(S[0]);
    }
    case vtVariant: return Narrow(FVariant.AsInteger());
    default: ConvertError();
  }
}

float TGCustomValue::GetAsFloat() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtBoolean: case vtChar: return static_cast<float>(FInt);
    case vtFloat: case vtCurrency: return FSingle;
    case vtString: case vtPChar: case vtAnsiString: case vtWideString: case vtUnicodeString:
      return ToSingle(StrToFloat(GetAsString()));
    case vtVariant: return ToSingle(FVariant.AsReal());
    case vtInt64: return static_cast<float>(FInt64);
    default: ConvertError();
  }
}

String TGCustomValue::GetAsString() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtPointer: return IntToStr(GetAsInteger());
    case vtBoolean: return FInt ? u"True" : u"False";
    case vtChar: return CharText(FInt);
    case vtFloat: case vtCurrency: return FloatToStr(GetAsFloat());
    case vtString: case vtPChar: case vtAnsiString: case vtUnicodeString: case vtWideString: return FText;
    case vtObject:
      if (!FPtr) RaiseNullAccess(u"object of the value");
      return static_cast<TObject*>(FPtr)->ClassName();
    case vtClass:
      if (!FClass) RaiseNullAccess(u"class of the value");
      return String(FClass->ClassName());
    case vtVariant: return FVariant.AsString();
    case vtInt64: return IntToStr(FInt64);
    default: ConvertError();
  }
}

String TGCustomValue::GetAsWideString() const {
  CheckAssigned();
  if (FType == vtWideString || FType == vtUnicodeString) return FText;
  return GetAsString();
}

const Char* TGCustomValue::GetAsPChar() const {
  FPCharBuffer = GetAsString();
  return FPCharBuffer.c_str();
}

Pointer TGCustomValue::GetAsPointer() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: return reinterpret_cast<Pointer>(static_cast<std::intptr_t>(FInt));
    case vtPointer: case vtObject: return FPtr;
    // The held characters, valid until the value changes.
    case vtPChar: case vtAnsiString: return const_cast<Char*>(FText.c_str());
    case vtInterface: return FIntf.get();
    case vtVariant: return reinterpret_cast<Pointer>(static_cast<std::intptr_t>(FVariant.AsInteger()));
    default: ConvertError();
  }
}

TObject* TGCustomValue::GetAsObject() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: return reinterpret_cast<TObject*>(static_cast<std::intptr_t>(FInt));
    case vtPointer: case vtObject: return static_cast<TObject*>(FPtr);
    case vtInterface: return dynamic_cast<TObject*>(FIntf.get());
    default: ConvertError();
  }
}

TIntfPtr<IInterface> TGCustomValue::GetAsInterface() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger:
      if (FInt == 0) return nullptr;
      ConvertError();
    case vtPointer:
      if (!FPtr) return nullptr;
      ConvertError();
    case vtObject: {
      if (!FPtr) return nullptr;
      void* Intf = nullptr;
      if (!static_cast<TObject*>(FPtr)->GetInterface(IInterface::IID, &Intf)) ConvertError();
      return static_cast<IInterface*>(Intf);
    }
    case vtInterface: return FIntf;
    default: ConvertError();
  }
}

const TMetaClass* TGCustomValue::GetAsClass() const {
  CheckAssigned();
  if (FType != vtClass) ConvertError();
  return FClass;
}

std::int64_t TGCustomValue::GetAsCurrency() const {
  return TVariant(static_cast<double>(GetAsFloat()) * 10000.0).AsInt64();
}

TVariant TGCustomValue::GetAsVariant() const {
  CheckAssigned();
  switch (FType) {
    case vtInteger: case vtPointer: return TVariant(GetAsInteger());
    case vtBoolean: return TVariant(FInt != 0);
    case vtChar: return TVariant(CharText(FInt));
    case vtFloat: case vtCurrency: return TVariant(static_cast<double>(FSingle));
    case vtString: case vtPChar: case vtAnsiString: case vtWideString: case vtUnicodeString:
      return TVariant(FText);
    case vtVariant: return FVariant;
    case vtInt64: return TVariant(FInt64);
    default: ConvertError();
  }
}

void TGCustomValue::SetAsInteger(std::int32_t Value) {
  Store(vtInteger);
  FInt = Value;
}

void TGCustomValue::SetAsBoolean(bool Value) {
  Store(vtBoolean);
  FInt = Value ? 1 : 0;
}

void TGCustomValue::SetAsChar(char Value) {
  Store(vtChar);
  FInt = static_cast<unsigned char>(Value);
}

void TGCustomValue::SetAsFloat(float Value) {
  Store(vtFloat);
  FSingle = Value;
}

void TGCustomValue::SetAsString(const String& Value) {
  String Copy = Value;  // Value may be this value's own text
  Store(vtAnsiString);
  FText = std::move(Copy);
}

void TGCustomValue::SetAsPChar(const Char* Value) { SetAsString(Value ? String(Value) : String()); }

void TGCustomValue::SetAsPointer(Pointer Value) {
  Store(vtPointer);
  FPtr = Value;
}

void TGCustomValue::SetAsObject(TObject* Value) {
  Store(vtObject);
  FPtr = Value;
}

void TGCustomValue::SetAsClass(const TMetaClass* Value) {
  Store(vtClass);
  FClass = Value;
}

void TGCustomValue::SetAsCurrency(std::int64_t Scaled) {
  Store(vtCurrency);
  FSingle = ToSingle(static_cast<long double>(Scaled) / 10000.0L);
}

void TGCustomValue::SetAsVariant(const TVariant& Value) {
  switch (Value.VarType()) {
    case varSmallint: case varInteger: case varError: SetAsInteger(Value.AsInteger()); break;
    case varSingle: case varDouble: case varCurrency: SetAsFloat(ToSingle(Value.AsReal())); break;
    case varDispatch: case varUnknown: case varArray: SetAsPointer(Value.DataWord()); break;
    case varBoolean: SetAsBoolean(Value.AsBoolean()); break;
    default: SetAsString(Value.AsString());
  }
}

void TGCustomValue::SetAsInterface(const TIntfPtr<IInterface>& Value) {
  TIntfPtr<IInterface> Keep = Value;  // Value may be the reference this value holds
  Store(vtInterface);
  FIntf = std::move(Keep);
}

void TGCustomValue::SetAsWideString(const String& Value) {
  String Copy = Value;
  Store(vtWideString);
  FText = std::move(Copy);
}

void TGCustomValue::Take(const TVarRec& Source) {
  // The datum is copied out of Source before the old one goes (Source may view this value);
  // the setters do that, and the kind and the assigned flag are put back afterwards.
  const bool Unassigned = FUnassigned;
  switch (Source.VType()) {
    case vtInteger: TGCustomValue::SetAsInteger(Source.VInteger()); break;
    case vtBoolean: TGCustomValue::SetAsBoolean(Source.VBoolean()); break;
    case vtChar: TGCustomValue::SetAsChar(Source.VChar()); break;
    case vtFloat: TGCustomValue::SetAsFloat(ToSingle(Source.VExtended())); break;
    case vtPointer: TGCustomValue::SetAsPointer(Source.VPointer()); break;
    case vtObject: TGCustomValue::SetAsObject(Source.VObject()); break;
    case vtClass: TGCustomValue::SetAsClass(Source.VClass()); break;
    case vtCurrency: TGCustomValue::SetAsCurrency(Source.VCurrency()); break;
    case vtInterface: TGCustomValue::SetAsInterface(Source.VInterface()); break;
    case vtString: case vtAnsiString: case vtPChar: TGCustomValue::SetAsString(Widen(Source.NarrowText())); break;
    case vtPWideChar: case vtWideString: case vtUnicodeString:
      TGCustomValue::SetAsString(String(Source.WideText()));
      break;
    case vtVariant: {
      TVariant V = Source.VVariant();
      Store(vtVariant);
      FVariant = std::move(V);
      break;
    }
    case vtInt64: {
      const std::int64_t V = Source.VInt64();
      Store(vtInt64);
      FInt64 = V;
      break;
    }
    case vtWideChar: {
      const Char C = Source.VWideChar();
      Store(vtWideChar);
      FInt = C;
      break;
    }
  }
  FType = Source.VType();
  FUnassigned = Unassigned;
}

void TGCustomValue::AssignVarRec(const TVarRec& Source) {
  Take(Source);
  FUnassigned = false;
}

void TGCustomValue::Assign(const TGCustomValue* Source) {
  if (!Source) {
    FUnassigned = true;
    return;
  }
  if (Source == this) return;
  FUnassigned = Source->FUnassigned;
  FType = Source->FType;
  FInt = Source->FInt;
  FSingle = Source->FSingle;
  FInt64 = Source->FInt64;
  FPtr = Source->FPtr;
  FClass = Source->FClass;
  FText = Source->FText;
  FVariant = Source->FVariant;
  FIntf = Source->FIntf;
}

std::unique_ptr<TGCustomValue> TGCustomValue::Clone() const {
  std::unique_ptr<TGCustomValue> R = static_cast<const TMeta*>(ClassType())->Create();
  R->Assign(this);
  return R;
}

TGCustomValue& TGCustomValue::Clone(TGCustomValue& Dest) const {
  Dest.Assign(this);
  return Dest;
}

bool TGCustomValue::Equals(const TGCustomValue& AValue) const {
  if (FUnassigned != AValue.FUnassigned || FType != AValue.FType) return false;
  if (IsText(FType)) return GetAsString() == AValue.GetAsString();
  return GetAsInteger() == AValue.GetAsInteger();
}

}  // namespace kz
