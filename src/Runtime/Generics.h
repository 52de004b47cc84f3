// Generic building blocks of the runtime: the typed list, the key/value pair and reference-
// counted equality comparers with a shared default per type. They live in kz::Generics
// because kz::TList is the untyped pointer list.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <functional>
#include <type_traits>
#include <utility>
#include <vector>

#include "Runtime/Errors.h"
#include "Runtime/Interfaces.h"
#include "Runtime/ListStorage.h"

namespace kz::Generics {

/// A key with its value.
template <class K, class V>
struct TPair {
  K Key;
  V Value;
};

/// Orders two values: negative, zero or positive.
template <class T>
using TComparison = std::function<int(const T& Left, const T& Right)>;

/// A growable array of T with value semantics for its items (it destroys what it holds, and
/// holding TIntfPtr keeps references). Indexed access is O(1), Add amortised O(1), Insert and
/// Delete shift the tail. A bad index raises EArgumentOutOfRangeException.
template <class T>
class TList : public TObject {
  KZ_CLASS(TList, TObject)
 public:
  using const_iterator = typename std::vector<T>::const_iterator;
  using iterator = typename std::vector<T>::iterator;

  TList() = default;

  /// Appends Item and answers its index.
  std::int32_t Add(T Item) {
    FItems.push_back(std::move(Item));
    return GetCount() - 1;
  }
  /// Index in 0..Count.
  void Insert(std::int32_t Index, T Item) {
    if (Index < 0 || Index > GetCount()) RangeError();
    FItems.insert(FItems.begin() + Index, std::move(Item));
  }
  void Delete(std::int32_t Index) {
    CheckIndex(Index);
    FItems.erase(FItems.begin() + Index);
  }
  /// Deletes the first item equal to Item (operator==); answers its former index or -1.
  std::int32_t Remove(const T& Item) {
    const std::int32_t Index = IndexOf(Item);
    if (Index >= 0) Delete(Index);
    return Index;
  }
  /// The first index whose item equals Item (operator==), or -1.
  std::int32_t IndexOf(const T& Item) const {
    for (std::size_t i = 0; i < FItems.size(); ++i)
      if (FItems[i] == Item) return static_cast<std::int32_t>(i);
    return -1;
  }
  bool Contains(const T& Item) const { return IndexOf(Item) >= 0; }
  void Clear() { FItems.clear(); }
  void Exchange(std::int32_t Index1, std::int32_t Index2) {
    CheckIndex(Index1);
    CheckIndex(Index2);
    std::swap(FItems[static_cast<std::size_t>(Index1)], FItems[static_cast<std::size_t>(Index2)]);
  }

  std::int32_t GetCount() const { return static_cast<std::int32_t>(FItems.size()); }
  const T& GetItem(std::int32_t Index) const {
    CheckIndex(Index);
    return FItems[static_cast<std::size_t>(Index)];
  }
  void SetItem(std::int32_t Index, T Item) {
    CheckIndex(Index);
    FItems[static_cast<std::size_t>(Index)] = std::move(Item);
  }
  const T& First() const { return GetItem(0); }
  const T& Last() const { return GetItem(GetCount() - 1); }
  std::int32_t GetCapacity() const { return static_cast<std::int32_t>(FItems.capacity()); }
  /// Room for exactly NewCapacity items; below Count raises EArgumentOutOfRangeException.
  void SetCapacity(std::int32_t NewCapacity) {
    if (NewCapacity < GetCount() || NewCapacity > detail::MaxListSize) RangeError();
    detail::ReserveExactly(FItems, NewCapacity);
  }

  /// Ascending by operator< (quicksort, not stable).
  void Sort() {
    Sort([](const T& A, const T& B) { return A < B ? -1 : B < A ? 1 : 0; });
  }
  /// Ascending by Compare (quicksort, not stable); an inconsistent Compare gives some order.
  void Sort(const TComparison<T>& Compare) {
    if (!Compare) RaiseNullAccess(u"sort comparison");
    if (FItems.size() < 2) return;
    auto ByIndex = [&](std::int32_t I, std::int32_t J) {
      return Compare(FItems[static_cast<std::size_t>(I)], FItems[static_cast<std::size_t>(J)]);
    };
    auto Swap = [&](std::int32_t I, std::int32_t J) {
      std::swap(FItems[static_cast<std::size_t>(I)], FItems[static_cast<std::size_t>(J)]);
    };
    detail::QuickSortPositions(0, GetCount() - 1, ByIndex, Swap);
  }

  std::vector<T> ToArray() const { return FItems; }
  const_iterator begin() const { return FItems.begin(); }
  const_iterator end() const { return FItems.end(); }
  iterator begin() { return FItems.begin(); }
  iterator end() { return FItems.end(); }

 private:
  [[noreturn]] static void RangeError() { throw EArgumentOutOfRangeException(Runtime::SArgumentOutOfRange); }
  void CheckIndex(std::int32_t Index) const {
    if (Index < 0 || Index >= GetCount()) RangeError();
  }

  std::vector<T> FItems;
};

/// Equality and hashing of T for hashed containers: values that are Equal must have the same
/// hash code. A template interface has no identifier, so it is reached through TIntfPtr and
/// never through QueryInterface.
template <class T>
class IEqualityComparer : public virtual IInterface {
 public:
  virtual bool Equals(const T& Left, const T& Right) = 0;
  virtual std::int32_t GetHashCode(const T& Value) = 0;

 protected:
  ~IEqualityComparer() = default;
};

namespace detail {

// One 64-bit multiply folded in half, for 32-bit integers: the high half carries every input
// bit down into the low bits a power-of-two table keeps, at a third of a
// shift-multiply finaliser's work.
constexpr std::uint32_t Fold32(std::uint32_t K) {
  const std::uint64_t P = std::uint64_t{K} * 0x9E3779B97F4A7C15ull;
  return static_cast<std::uint32_t>(P ^ (P >> 32));
}
// The final mix of the 64-bit murmur hash: every input bit affects every output bit, so
// masking the hash to a power-of-two table size keeps the spread.
constexpr std::uint32_t Mix64(std::uint64_t K) {
  K ^= K >> 33;
  K *= 0xFF51AFD7ED558CCDull;
  K ^= K >> 33;
  K *= 0xC4CEB9FE1A85EC53ull;
  K ^= K >> 33;
  return static_cast<std::uint32_t>(K ^ (K >> 32));
}

// The 128-bit product of A and B with its halves xored: every bit of either factor reaches the
// middle of the product, and the fold brings those bits down to both halves. The portable form
// gives the same value where the compiler has no 128-bit integer.
constexpr std::uint64_t MulFold64Portable(std::uint64_t A, std::uint64_t B) {
  const std::uint64_t ALo = A & 0xFFFFFFFFu, AHi = A >> 32, BLo = B & 0xFFFFFFFFu, BHi = B >> 32;
  const std::uint64_t LL = ALo * BLo, LH = ALo * BHi, HL = AHi * BLo, HH = AHi * BHi;
  const std::uint64_t Mid = (LL >> 32) + (LH & 0xFFFFFFFFu) + (HL & 0xFFFFFFFFu);
  const std::uint64_t Lo = (Mid << 32) | (LL & 0xFFFFFFFFu);
  const std::uint64_t Hi = HH + (LH >> 32) + (HL >> 32) + (Mid >> 32);
  return Lo ^ Hi;
}
constexpr std::uint64_t MulFold64(std::uint64_t A, std::uint64_t B) {
#if defined(__SIZEOF_INT128__)
  __extension__ using TUInt128 = unsigned __int128;
  const TUInt128 P = static_cast<TUInt128>(A) * B;
  return static_cast<std::uint64_t>(P) ^ static_cast<std::uint64_t>(P >> 64);
#else
  return MulFold64Portable(A, B);
#endif
}

// MulFold64 with both factors xored in: a factor that happens to be zero (input equal to the
// constant it is xored with) would otherwise wipe out the other factor and everything before.
constexpr std::uint64_t MulMix(std::uint64_t A, std::uint64_t B) { return MulFold64(A, B) ^ A ^ B; }

// Code units combined by value, the first in the low bits, so every platform hashes alike.
inline std::uint64_t Units4(const Char* P) {
  std::uint64_t V;
  if constexpr (std::endian::native == std::endian::little)
    std::memcpy(&V, P, sizeof V);  // the same value, one load
  else
    V = std::uint64_t{P[0]} | std::uint64_t{P[1]} << 16 | std::uint64_t{P[2]} << 32 | std::uint64_t{P[3]} << 48;
  return V;
}
inline std::uint32_t Units2(const Char* P) {
  std::uint32_t V;
  if constexpr (std::endian::native == std::endian::little)
    std::memcpy(&V, P, sizeof V);
  else
    V = std::uint32_t{P[0]} | std::uint32_t{P[1]} << 16;
  return V;
}

/// Hash of 16-bit code units: 8 units per 128-bit multiply, two independent lanes, strings of
/// up to 8 units without a loop, the length in a last multiply folded to 32 well-mixed bits.
/// Fixed for all platforms (units are combined by value, not by memory order).
inline std::int32_t HashCodeUnits(const Char* Data, std::size_t Length) {
  constexpr std::uint64_t K0 = 0x9E3779B97F4A7C15ull, K1 = 0xBF58476D1CE4E5B9ull, K2 = 0x94D049BB133111EBull,
                          K3 = 0xC2B2AE3D27D4EB4Full, K4 = 0x165667B19E3779F9ull, K5 = 0xD6E8FEB86659FD93ull;
  std::uint64_t R;
  if (Length <= 8) {
    // Two overlapping loads cover every unit once the length is known.
    std::uint64_t A = 0, B = 0;
    if (Length >= 4) {
      A = Units4(Data);
      B = Units4(Data + Length - 4);
    } else if (Length >= 2) {
      A = Units2(Data);
      B = Units2(Data + Length - 2);
    } else if (Length == 1) {
      A = B = Data[0];
    }
    R = MulMix(A ^ K0, B ^ K1);
  } else {
    // Lane 0 takes the first half of each 16 units and lane 1 the second; the last 16 (or, for
    // 9 to 16 units, the first and last 8) go through both lanes with their own constants.
    std::uint64_t S0 = K2, S1 = K3;
    const Char* P = Data;
    for (std::size_t N = Length; N > 16; N -= 16, P += 16) {
      S0 = MulMix(Units4(P) ^ K0, Units4(P + 4) ^ S0);
      S1 = MulMix(Units4(P + 8) ^ K1, Units4(P + 12) ^ S1);
    }
    const Char* Front = Length > 16 ? Data + Length - 16 : Data;
    const Char* Back = Data + Length - 8;
    S0 = MulMix(Units4(Front) ^ K4, Units4(Front + 4) ^ S0);
    S1 = MulMix(Units4(Back) ^ K5, Units4(Back + 4) ^ S1);
    R = S0 ^ S1;
  }
  // Overlapping loads read the same units for different lengths: the length goes in here.
  const std::uint64_t F = MulMix(R ^ K2, static_cast<std::uint64_t>(Length) ^ K3);
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(F ^ (F >> 32)));
}

template <class T>
struct IsIntfPtr : std::false_type {};
template <class I>
struct IsIntfPtr<TIntfPtr<I>> : std::true_type {};

/// The default hash: code units for strings, mixed bits for integers, enumerations, pointers
/// and floats (+0 and -0 alike), object identity for interface references, std::hash mixed
/// for anything else.
template <class T>
std::int32_t DefaultHashCode(const T& Value) {
  if constexpr (std::is_same_v<T, String> || std::is_same_v<T, StringView>) {
    return HashCodeUnits(Value.data(), Value.size());
  } else if constexpr (IsIntfPtr<T>::value) {
    return DefaultHashCode(static_cast<const void*>(static_cast<IInterface*>(Value.get())));
  } else if constexpr (std::is_pointer_v<T>) {
    return static_cast<std::int32_t>(Mix64(reinterpret_cast<std::uintptr_t>(Value)));
  } else if constexpr (std::is_enum_v<T>) {
    return DefaultHashCode(static_cast<std::underlying_type_t<T>>(Value));
  } else if constexpr (std::is_integral_v<T>) {
    if constexpr (sizeof(T) <= 4)
      return static_cast<std::int32_t>(Fold32(static_cast<std::uint32_t>(Value)));
    else
      return static_cast<std::int32_t>(Mix64(static_cast<std::uint64_t>(Value)));
  } else if constexpr (std::is_floating_point_v<T>) {
    const double D = Value == 0 ? 0.0 : static_cast<double>(Value);
    std::uint64_t Bits;
    std::memcpy(&Bits, &D, sizeof Bits);
    return static_cast<std::int32_t>(Mix64(Bits));
  } else {
    return static_cast<std::int32_t>(Mix64(static_cast<std::uint64_t>(std::hash<T>{}(Value))));
  }
}

}  // namespace detail

/// Equality comparers. Default() is one shared comparer per type: operator== and
/// detail::DefaultHashCode (for String: exact, case-sensitive code-unit equality).
/// Construct wraps two functions.
template <class T>
class TEqualityComparer : public TInterfacedObject, public IEqualityComparer<T> {
  KZ_CLASS(TEqualityComparer, TInterfacedObject)
 public:
  using TEquality = std::function<bool(const T& Left, const T& Right)>;
  using THasher = std::function<std::int32_t(const T& Value)>;

  bool Equals(const T& Left, const T& Right) override { return FEquals ? FEquals(Left, Right) : Left == Right; }
  std::int32_t GetHashCode(const T& Value) override {
    return FHasher ? FHasher(Value) : detail::DefaultHashCode(Value);
  }

  /// The shared default comparer of T, created on first use.
  static TIntfPtr<IEqualityComparer<T>> Default() {
    static const TIntfPtr<IEqualityComparer<T>> Instance(new TEqualityComparer());
    return Instance;
  }
  /// A new comparer answering through Equality and Hasher; both are required.
  static TIntfPtr<IEqualityComparer<T>> Construct(TEquality Equality, THasher Hasher) {
    if (!Equality || !Hasher) RaiseNullAccess(u"comparer function");
    return TIntfPtr<IEqualityComparer<T>>(new TEqualityComparer(std::move(Equality), std::move(Hasher)));
  }

 private:
  TEqualityComparer() = default;
  TEqualityComparer(TEquality Equality, THasher Hasher) : FEquals(std::move(Equality)), FHasher(std::move(Hasher)) {}

  TEquality FEquals;
  THasher FHasher;
};

}  // namespace kz::Generics
