// The exception root, the runtime's error classes and translatable messages.
#pragma once

#include <exception>
#include <initializer_list>
#include <string>

#include "Runtime/Format.h"
#include "Runtime/Types.h"

namespace kz {

/// A named, translatable message of one unit. Declare with KZ_RESOURCESTRING inside the unit's
/// name scope; read it through LoadResString so that a host's translation hook sees every use.
struct TResourceString {
  const char* Unit;
  const char* Name;
  const char16_t* Text;
  /// "Unit.Name", the name a translation table keys by (for example "GHashTable.STableEmpty").
  std::string QualifiedName() const;
};

/// Opens a unit's name scope for its messages and constants: write it once per unit, inside
/// `namespace kz::<Unit>`, in the one header that declares the unit's messages.
#define KZ_UNIT_SCOPE(UnitIdent) inline constexpr char KZUnitName[] = #UnitIdent;

/// Declares a message inside a unit scope; outside one it does not compile (no KZUnitName).
#define KZ_RESOURCESTRING(Ident, TextLiteral) \
  inline constexpr ::kz::TResourceString Ident{KZUnitName, #Ident, TextLiteral};

/// A host's translation: return the replacement text, or nullptr to keep the built-in one.
using TTranslationHook = const char16_t* (*)(const TResourceString& Res);

/// Installs (or, with nullptr, removes) the translation hook; returns the previous one.
TTranslationHook SetTranslationHook(TTranslationHook Hook);
/// The message text after translation.
String LoadResString(const TResourceString& Res);

/// Root of every exception the library raises. Message() is the 16-bit text, what() its UTF-8.
class Exception : public std::exception {
 public:
  explicit Exception(String Msg);
  explicit Exception(const TResourceString& Res);
  Exception(const TResourceString& Res, std::initializer_list<TFormatArg> Args);
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  const String& Message() const noexcept { return FMessage; }
  const char* what() const noexcept override { return FWhat.c_str(); }

 private:
  String FMessage;
  std::string FWhat;
};

#define KZ_DECLARE_EXCEPTION(Name, Parent) \
  class Name : public Parent {             \
   public:                                 \
    using Parent::Parent;                  \
  };

// The runtime's errors. Unit exceptions derive from Exception directly, each on its own.
KZ_DECLARE_EXCEPTION(EListError, Exception)
KZ_DECLARE_EXCEPTION(EStringListError, Exception)
KZ_DECLARE_EXCEPTION(EConvertError, Exception)
KZ_DECLARE_EXCEPTION(EStreamError, Exception)
KZ_DECLARE_EXCEPTION(EFileStreamError, EStreamError)
KZ_DECLARE_EXCEPTION(EFOpenError, EFileStreamError)
KZ_DECLARE_EXCEPTION(EFCreateError, EFileStreamError)
KZ_DECLARE_EXCEPTION(EFilerError, EStreamError)
KZ_DECLARE_EXCEPTION(EReadError, EFilerError)
KZ_DECLARE_EXCEPTION(EWriteError, EFilerError)
KZ_DECLARE_EXCEPTION(EClassNotFound, EFilerError)
KZ_DECLARE_EXCEPTION(EInvalidCast, Exception)
KZ_DECLARE_EXCEPTION(EArgumentException, Exception)
KZ_DECLARE_EXCEPTION(EArgumentOutOfRangeException, EArgumentException)
KZ_DECLARE_EXCEPTION(EIntError, Exception)
KZ_DECLARE_EXCEPTION(EDivByZero, EIntError)
KZ_DECLARE_EXCEPTION(EAccessViolation, Exception)
KZ_DECLARE_EXCEPTION(EOutOfMemory, Exception)
KZ_DECLARE_EXCEPTION(EInvalidOperation, Exception)
KZ_DECLARE_EXCEPTION(EComponentError, Exception)
KZ_DECLARE_EXCEPTION(EAbstractError, Exception)
KZ_DECLARE_EXCEPTION(EInvalidPointer, Exception)

// Messages of the runtime layer.
namespace Runtime {
KZ_UNIT_SCOPE(Runtime)
KZ_RESOURCESTRING(SListIndexError, u"List index out of bounds (%d)")
KZ_RESOURCESTRING(SListCapacityError, u"List capacity out of bounds (%d)")
KZ_RESOURCESTRING(SListCountError, u"List count out of bounds (%d)")
KZ_RESOURCESTRING(SSortedListError, u"Operation not allowed on sorted list")
KZ_RESOURCESTRING(SDuplicateString, u"String list does not allow duplicates")
KZ_RESOURCESTRING(SDuplicateItem, u"List does not allow duplicates ($0%x)")
KZ_RESOURCESTRING(SGenericDuplicateItem, u"Duplicates not allowed")
KZ_RESOURCESTRING(SGenericItemNotFound, u"Item not found")
KZ_RESOURCESTRING(SAssignError, u"Cannot assign a %s to a %s")
KZ_RESOURCESTRING(SInvalidCast, u"Invalid class typecast")
KZ_RESOURCESTRING(SIntConvertError, u"'%s' is not a valid integer value")
KZ_RESOURCESTRING(SFloatConvertError, u"'%s' is not a valid floating point value")
KZ_RESOURCESTRING(SInvalidFormat, u"Format '%s' invalid or incompatible with argument")
KZ_RESOURCESTRING(SArgumentOutOfRange, u"Argument out of range")
KZ_RESOURCESTRING(SDivByZero, u"Division by zero")
KZ_RESOURCESTRING(SAccessViolation, u"Access violation: %s")
KZ_RESOURCESTRING(SOutOfMemory, u"Out of memory")
KZ_RESOURCESTRING(SClassNotFound, u"Class %s not found")
KZ_RESOURCESTRING(SDuplicateClass, u"A class named %s already exists")
KZ_RESOURCESTRING(SNoFactory, u"Class %s cannot be created by name")
KZ_RESOURCESTRING(SAbstractError, u"Abstract error")
KZ_RESOURCESTRING(SNilObject, u"nil")
KZ_RESOURCESTRING(SUnbalancedEndUpdate, u"EndUpdate called without a matching BeginUpdate")
}  // namespace Runtime

/// Raises EAccessViolation naming what was null; for operations that would dereference null.
[[noreturn]] void RaiseNullAccess(const char16_t* What);

}  // namespace kz
