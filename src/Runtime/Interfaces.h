// Reference-counted interfaces: identifiers, the base interface, the counted object base and
// the one smart pointer that holds interface references.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "Runtime/Object.h"

namespace kz {

/// A 128-bit interface identifier, written "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}".
struct TGUID {
  std::uint32_t D1 = 0;
  std::uint16_t D2 = 0, D3 = 0;
  std::uint8_t D4[8] = {};

  /// Parses the braced text form at compile time; a malformed text fails to compile.
  static consteval TGUID Parse(const char (&Text)[39]) {
    auto Hex = [&](int Pos, int Digits) {
      std::uint32_t V = 0;
      for (int i = 0; i < Digits; ++i) {
        char C = Text[Pos + i];
        int D = C >= '0' && C <= '9' ? C - '0' : C >= 'A' && C <= 'F' ? C - 'A' + 10
              : C >= 'a' && C <= 'f' ? C - 'a' + 10 : throw "bad GUID digit";
        V = V * 16 + static_cast<std::uint32_t>(D);
      }
      return V;
    };
    if (Text[0] != '{' || Text[9] != '-' || Text[14] != '-' || Text[19] != '-' || Text[24] != '-' ||
        Text[37] != '}')
      throw "bad GUID layout";
    TGUID G;
    G.D1 = Hex(1, 8);
    G.D2 = static_cast<std::uint16_t>(Hex(10, 4));
    G.D3 = static_cast<std::uint16_t>(Hex(15, 4));
    G.D4[0] = static_cast<std::uint8_t>(Hex(20, 2));
    G.D4[1] = static_cast<std::uint8_t>(Hex(22, 2));
    for (int i = 0; i < 6; ++i) G.D4[2 + i] = static_cast<std::uint8_t>(Hex(25 + 2 * i, 2));
    return G;
  }
  friend constexpr bool operator==(const TGUID& A, const TGUID& B) {
    if (A.D1 != B.D1 || A.D2 != B.D2 || A.D3 != B.D3) return false;
    for (int i = 0; i < 8; ++i)
      if (A.D4[i] != B.D4[i]) return false;
    return true;
  }
};

/// Result codes of QueryInterface.
inline constexpr std::int32_t S_OK = 0;
inline constexpr std::int32_t E_NOINTERFACE = static_cast<std::int32_t>(0x80004002u);

/// Declares an interface's identifier and parent interface inside its body.
#define KZ_INTERFACE(Self, Parent, GuidText)                           \
 public:                                                              \
  using TParentIntf = Parent;                                         \
  static constexpr ::kz::TGUID IID = ::kz::TGUID::Parse(GuidText);

/// The base reference-counted interface. Interfaces derive from it virtually so that one
/// object may implement several of them over one count.
class IInterface {
 public:
  static constexpr TGUID IID = TGUID::Parse("{00000000-0000-0000-C000-000000000046}");
  /// Stores in *Obj the object's interface IID (adding a reference) and answers S_OK, or
  /// stores null and answers E_NOINTERFACE.
  virtual std::int32_t QueryInterface(const TGUID& IID, void** Obj) = 0;
  virtual std::int32_t _AddRef() = 0;
  virtual std::int32_t _Release() = 0;

 protected:
  ~IInterface() = default;
};

namespace detail {
template <class I>
bool MatchInterface(const TGUID& IID, I* P, void** Obj) {
  if (IID == I::IID) {
    *Obj = P;
    return true;
  }
  if constexpr (!std::is_same_v<I, IInterface>)
    return MatchInterface<typename I::TParentIntf>(IID, static_cast<typename I::TParentIntf*>(P), Obj);
  else
    return false;
}
template <class Self, class... Is>
bool FindInterface(Self* S, const TGUID& IID, void** Obj) {
  return (MatchInterface<Is>(IID, static_cast<Is*>(S), Obj) || ...);
}
}  // namespace detail

/// Lists the interfaces a class implements (with their parents), after KZ_CLASS.
#define KZ_INTERFACES(...)                                                                   \
 public:                                                                                     \
  bool GetInterface(const ::kz::TGUID& IID_, void** Obj_) override {                         \
    return ::kz::detail::FindInterface<std::remove_pointer_t<decltype(this)>, __VA_ARGS__>( \
               this, IID_, Obj_) ||                                                          \
           inherited::GetInterface(IID_, Obj_);                                             \
  }                                                                                          \
                                                                                             \
 private:

/// An object whose lifetime is its reference count: created at count 0, it frees itself
/// when the last reference is released. Counting is atomic.
class TInterfacedObject : public TObject, public virtual IInterface {
  KZ_CLASS(TInterfacedObject, TObject)
 public:
  std::int32_t QueryInterface(const TGUID& IID, void** Obj) override;
  std::int32_t _AddRef() override;
  std::int32_t _Release() override;
  bool GetInterface(const TGUID& IID, void** Obj) override;
  std::int32_t RefCount() const { return FRefCount.load(std::memory_order_relaxed); }

 private:
  std::atomic<std::int32_t> FRefCount{0};
};

/// The smart pointer for interface references: copying adds a reference, destruction
/// releases it. Built from a raw pointer it adds a reference too.
template <class I>
class TIntfPtr {
 public:
  TIntfPtr() noexcept = default;
  TIntfPtr(std::nullptr_t) noexcept {}
  TIntfPtr(I* P) : FPtr(P) {
    if (FPtr) FPtr->_AddRef();
  }
  TIntfPtr(const TIntfPtr& O) : TIntfPtr(O.FPtr) {}
  TIntfPtr(TIntfPtr&& O) noexcept : FPtr(std::exchange(O.FPtr, nullptr)) {}
  template <class J, std::enable_if_t<std::is_convertible_v<J*, I*>, int> = 0>
  TIntfPtr(const TIntfPtr<J>& O) : TIntfPtr(static_cast<I*>(O.get())) {}
  template <class J, std::enable_if_t<std::is_convertible_v<J*, I*>, int> = 0>
  TIntfPtr(TIntfPtr<J>&& O) noexcept : FPtr(O.Detach()) {}
  ~TIntfPtr() { reset(); }

  TIntfPtr& operator=(TIntfPtr O) noexcept {
    std::swap(FPtr, O.FPtr);
    return *this;
  }

  /// Takes over a reference that the caller already holds (no _AddRef).
  static TIntfPtr Adopt(I* P) noexcept {
    TIntfPtr R;
    R.FPtr = P;
    return R;
  }
  /// Gives up the reference without releasing it.
  I* Detach() noexcept { return std::exchange(FPtr, nullptr); }
  void reset() {
    if (I* P = std::exchange(FPtr, nullptr)) P->_Release();
  }

  I* get() const noexcept { return FPtr; }
  I* operator->() const {
    if (!FPtr) RaiseNullAccess(u"interface reference");
    return FPtr;
  }
  I& operator*() const { return *operator->(); }
  explicit operator bool() const noexcept { return FPtr != nullptr; }
  template <class J>
  bool operator==(const TIntfPtr<J>& O) const noexcept {
    return Identity(FPtr) == Identity(O.get());
  }
  bool operator==(std::nullptr_t) const noexcept { return FPtr == nullptr; }

 private:
  template <class J>
  static const void* Identity(J* P) {
    return P ? static_cast<const void*>(static_cast<IInterface*>(P)) : nullptr;
  }
  I* FPtr = nullptr;
};

/// Asks Instance for interface I; null when it does not implement it.
template <class I, class J>
TIntfPtr<I> Query(J* Instance) {
  if (!Instance) return nullptr;
  void* Obj = nullptr;
  if (static_cast<IInterface*>(Instance)->QueryInterface(I::IID, &Obj) != S_OK) return nullptr;
  return TIntfPtr<I>::Adopt(static_cast<I*>(Obj));
}
template <class I, class J>
TIntfPtr<I> Query(const TIntfPtr<J>& Instance) {
  return Query<I>(Instance.get());
}

/// True when Instance implements interface IID.
bool Supports(IInterface* Instance, const TGUID& IID);
bool Supports(TObject* Instance, const TGUID& IID);
template <class J>
bool Supports(const TIntfPtr<J>& Instance, const TGUID& IID) {
  return Supports(static_cast<IInterface*>(Instance.get()), IID);
}
/// Supports with the interface handed out in Out.
template <class I, class J>
bool Supports(J* Instance, TIntfPtr<I>& Out) {
  Out = Query<I>(Instance);
  return static_cast<bool>(Out);
}

}  // namespace kz
