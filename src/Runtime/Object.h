// The object model: root class, metaclasses (class references) and the class registry.
#pragma once

#include <memory>
#include <type_traits>
#include <typeinfo>

#include "Runtime/Errors.h"
#include "Runtime/Types.h"

namespace kz {

struct TGUID;

/// Describes a class at run time: its name and parent. Metaclasses are static objects that
/// live as long as the library; a pointer to one is a class reference.
class TMetaClass {
 public:
  constexpr TMetaClass(const char16_t* Name, const TMetaClass* Parent) : FName(Name), FParent(Parent) {}
  TMetaClass(const TMetaClass&) = delete;
  TMetaClass& operator=(const TMetaClass&) = delete;
  virtual ~TMetaClass() = default;

  StringView ClassName() const { return FName; }
  const TMetaClass* ClassParent() const { return FParent; }
  /// True when this class is AClass or derives from it.
  bool InheritsFrom(const TMetaClass* AClass) const;
  /// True when the class can be instantiated through its metaclass.
  virtual bool CanCreate() const { return false; }

  template <class Self>
  static const TMetaClass Make(const char16_t* Name, const TMetaClass* Parent) {
    return TMetaClass(Name, Parent);
  }

 private:
  const char16_t* FName;
  const TMetaClass* FParent;
};

/// The metaclass of a class family with a virtual constructor taking Args: Create(Args...)
/// makes an instance of the described class (not of Root). Abstract classes cannot be created
/// and raise EAbstractError.
template <class Root, class... Args>
class TMetaClassOf : public TMetaClass {
 public:
  using TFactory = Root* (*)(Args...);

  constexpr TMetaClassOf(const char16_t* Name, const TMetaClass* Parent, TFactory Factory)
      : TMetaClass(Name, Parent), FFactory(Factory) {}

  bool CanCreate() const override { return FFactory != nullptr; }

  /// A new instance of the described class, owned by the caller.
  std::unique_ptr<Root> Create(Args... A) const {
    if (!FFactory) throw EAbstractError(Runtime::SNoFactory, {ClassName()});
    return std::unique_ptr<Root>(FFactory(std::forward<Args>(A)...));
  }

  template <class Self>
  static const TMetaClassOf Make(const char16_t* Name, const TMetaClass* Parent) {
    if constexpr (!std::is_abstract_v<Self> && std::is_constructible_v<Self, Args...>)
      return TMetaClassOf(Name, Parent, [](Args... A) -> Root* { return new Self(std::forward<Args>(A)...); });
    else
      return TMetaClassOf(Name, Parent, nullptr);
  }

 private:
  TFactory FFactory;
};

/// Declares the run-time class information of Self, derived from Parent. Put it first in the
/// class body. A family with a virtual constructor declares, in its root before this macro,
/// `using TMeta = kz::TMetaClassOf<Root, Args...>;`; every class below inherits that TMeta.
#define KZ_CLASS(Self, Parent)                                                              \
 public:                                                                                   \
  using inherited = Parent;                                                                \
  static const TMeta& ClassInfo() {                                                        \
    static const TMeta Meta = TMeta::template Make<Self>(u"" #Self, &Parent::ClassInfo()); \
    return Meta;                                                                           \
  }                                                                                        \
  const ::kz::TMetaClass* ClassType() const override { return &ClassInfo(); }             \
                                                                                           \
 private:

/// Root of every class of the library. Objects are not copyable; persistent ones copy through
/// Assign.
class TObject {
 public:
  using TMeta = TMetaClass;
  static const TMeta& ClassInfo();

  TObject() = default;
  TObject(const TObject&) = delete;
  TObject& operator=(const TObject&) = delete;
  virtual ~TObject();

  virtual const TMetaClass* ClassType() const { return &ClassInfo(); }
  String ClassName() const { return String(ClassType()->ClassName()); }
  bool InheritsFrom(const TMetaClass* AClass) const { return ClassType()->InheritsFrom(AClass); }
  /// Answers an interface of this object by identifier (no reference is added); false when
  /// the class does not implement it. Classes that implement interfaces use KZ_INTERFACES.
  virtual bool GetInterface(const TGUID& IID, void** Obj);
};

/// True when Obj's class is exactly T, not a subclass: one comparison of type descriptors, no
/// search. It chooses fast paths only: every class whose virtual table lives in this library
/// has one descriptor, and a class that compares unequal merely takes the general path.
template <class T, class U>
bool IsExactly(const U* Obj) noexcept {
  return &typeid(*Obj) == &typeid(T);
}

/// Type-checked cast: null stays null, an object of another class raises EInvalidCast.
template <class T, class U>
T* As(U* Obj) {
  if (!Obj) return nullptr;
  if constexpr (std::is_base_of_v<U, T>)
    if (IsExactly<T>(Obj)) return static_cast<T*>(Obj);
  if (T* R = dynamic_cast<T*>(Obj)) return R;
  throw EInvalidCast(Runtime::SInvalidCast);
}

/// The class name of Obj, or "nil" for null (for messages).
String ClassNameOrNil(const TObject* Obj);

// The class registry: finds metaclasses by name for stored forms. Thread-safe.
/// Registers AClass under its name; registering the same class twice is harmless, another
/// class of the same name raises EFilerError.
void RegisterClass(const TMetaClass& AClass);
void UnRegisterClass(const TMetaClass& AClass);
/// The registered class of that name; raises EClassNotFound "Class %s not found".
const TMetaClass& FindClass(StringView Name);
/// The registered class of that name, or null.
const TMetaClass* GetClass(StringView Name);

}  // namespace kz
