// A value of any of the eighteen kinds of the tagged argument, converted on request to the
// other representations: integer, Boolean, character, float, text, pointer, object, class,
// currency, variant and interface.
#pragma once

#include <cstdint>
#include <memory>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/Object.h"
#include "Runtime/VarRec.h"
#include "Runtime/Variants.h"

namespace kz {

namespace GValue {
KZ_UNIT_SCOPE(GValue)
KZ_RESOURCESTRING(SValueUnassigned, u"Value is unassigned")
KZ_RESOURCESTRING(SErrorConverting, u"Error converting value")
/// For clients that accept a single value; nothing in the library raises it.
KZ_RESOURCESTRING(SOnlyOneValue, u"Only one value allowed")
}  // namespace GValue

/// One value of a TValueType kind, or none. Every getter raises Exception "Value is
/// unassigned" while no value is held, EConvertError "Error converting value" for a kind it
/// does not convert, and the strict parsers' EConvertError for malformed number text.
/// Setters never fail (SetAsVariant excepted, below) and tag the value with their kind.
///
/// What the kinds hold:
/// - integer, Boolean, character (8-bit), wide character: the datum; pointer, object, class:
///   the reference, not owned; interface: a counted reference.
/// - float and currency: a single-precision float, so precision beyond about seven digits
///   is lost; currency values travel as 64-bit integers scaled by 10000.
/// - text kinds: a copy of the text. 8-bit text and characters widen byte for byte
///   (code units 0 to 255) and narrow back to the low byte of a code unit.
/// - variant: a copy; 64-bit integer: the datum.
///
/// Deliberate behaviour: SetAsString and SetAsPChar tag the value vtAnsiString; Equals
/// compares text kinds as text and every other kind through GetAsInteger (so 1.2 equals
/// 1.4); floats round to an integer half to even.
///
/// Safety decisions: a float or currency outside the range of the integer it rounds to, or
/// not a number, raises EConvertError instead of converting; a double that exceeds the
/// single range becomes an infinity; GetAsInterface never treats an integer or pointer word
/// as an interface (only 0 converts, to null) and answers an object's interface through the
/// object's own interface table; GetAsString of a null object or class raises
/// EAccessViolation.
class TGCustomValue : public TObject {
 public:
  using TMeta = TMetaClassOf<TGCustomValue>;
  KZ_CLASS(TGCustomValue, TObject)
 public:
  /// An unassigned value.
  TGCustomValue() = default;
  /// Takes AValue's kind and datum (copying text and variants) but stays unassigned: set
  /// the value through a setter or AssignVarRec before reading it.
  explicit TGCustomValue(const TVarRec& AValue);

  [[nodiscard]] virtual std::int32_t GetAsInteger() const;
  [[nodiscard]] virtual bool GetAsBoolean() const;
  [[nodiscard]] virtual char GetAsChar() const;
  [[nodiscard]] virtual float GetAsFloat() const;
  [[nodiscard]] virtual String GetAsString() const;
  [[nodiscard]] virtual Pointer GetAsPointer() const;
  [[nodiscard]] virtual TObject* GetAsObject() const;
  [[nodiscard]] virtual const TMetaClass* GetAsClass() const;
  /// The amount times 10000: GetAsFloat × 10000 rounded half to even.
  [[nodiscard]] virtual std::int64_t GetAsCurrency() const;
  [[nodiscard]] virtual TVariant GetAsVariant() const;
  [[nodiscard]] virtual TIntfPtr<IInterface> GetAsInterface() const;
  [[nodiscard]] virtual String GetAsWideString() const;
  /// The characters of GetAsString, NUL-terminated, held by this value: valid until the next
  /// GetAsPChar, the next change of the value, or its destruction.
  [[nodiscard]] const Char* GetAsPChar() const;
  [[nodiscard]] virtual TValueType GetValueType() const { return FType; }
  [[nodiscard]] bool GetUnassigned() const { return FUnassigned; }

  virtual void SetAsInteger(std::int32_t Value);
  virtual void SetAsBoolean(bool Value);
  virtual void SetAsChar(char Value);
  virtual void SetAsFloat(float Value);
  /// Tags the value vtAnsiString although the text is 16-bit.
  virtual void SetAsString(const String& Value);
  /// As SetAsString; null is the empty text.
  void SetAsPChar(const Char* Value);
  virtual void SetAsPointer(Pointer Value);
  virtual void SetAsObject(TObject* Value);
  virtual void SetAsClass(const TMetaClass* Value);
  /// Scaled is the amount times 10000; it is held as Scaled / 10000 in single precision.
  virtual void SetAsCurrency(std::int64_t Scaled);
  /// By the variant's type code: small integer, integer and error as SetAsInteger; single,
  /// double and currency as SetAsFloat; dispatch, unknown and the bare array flag as
  /// SetAsPointer of the data word; Boolean as SetAsBoolean; every other as SetAsString of
  /// its text, which raises the variant's EConvertError for a variant without a text form.
  virtual void SetAsVariant(const TVariant& Value);
  virtual void SetAsInterface(const TIntfPtr<IInterface>& Value);
  virtual void SetAsWideString(const String& Value);

  /// A null Source makes this value unassigned; otherwise copies the assigned flag, the kind
  /// and the datum (an interface held is shared).
  virtual void Assign(const TGCustomValue* Source);
  /// Holds Source's kind and datum (copying text and variants) and is assigned.
  virtual void AssignVarRec(const TVarRec& Source);
  /// A new value of this value's own class, equal to it; owned by the caller.
  [[nodiscard]] std::unique_ptr<TGCustomValue> Clone() const;
  /// Makes Dest equal to this value and answers it.
  TGCustomValue& Clone(TGCustomValue& Dest) const;
  /// False when the two differ in being assigned or in kind; text kinds compare GetAsString
  /// (case-sensitive), the others GetAsInteger. Two unassigned values of one kind raise
  /// "Value is unassigned".
  [[nodiscard]] virtual bool Equals(const TGCustomValue& AValue) const;

 private:
  void CheckAssigned() const;
  [[noreturn]] static void ConvertError();
  static bool IsText(TValueType Kind);
  /// Drops the previous datum and marks the value assigned with kind Kind.
  void Store(TValueType Kind);
  void Take(const TVarRec& Source);

  bool FUnassigned = true;
  TValueType FType = vtInteger;
  std::int32_t FInt = 0;  // integer, Boolean (0/1), character and wide character codes
  float FSingle = 0;      // float, currency
  std::int64_t FInt64 = 0;
  Pointer FPtr = nullptr;  // pointer, object
  const TMetaClass* FClass = nullptr;
  String FText;
  TVariant FVariant;
  TIntfPtr<IInterface> FIntf;
  mutable String FPCharBuffer;
};

/// The value with every accessor public; it adds no behaviour.
class TGValue : public TGCustomValue {
  KZ_CLASS(TGValue, TGCustomValue)
 public:
  using TGCustomValue::TGCustomValue;
};

}  // namespace kz
