// Array-list storage pieces that list templates instantiate in users' code (the capacity
// limit, the growth step, exact reservation, the bounded quicksort, the sorted search). Implementation detail of the
// runtime's lists: not for use outside the library.
#pragma once

#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#include "Runtime/Errors.h"
#include "Runtime/OutOfMemory.h"

namespace kz::detail {

/// The largest capacity an array list accepts; beyond it SetCapacity raises SListCapacityError.
inline constexpr std::int32_t MaxListSize = INT32_MAX / 16;

/// Gives V room for exactly NewCapacity items (NewCapacity >= V.size()); allocation failure
/// raises EOutOfMemory. The vector never reallocates by itself afterwards because the lists
/// grow explicitly before they run out of room.
template <class T>
void ReserveExactly(std::vector<T>& V, std::int32_t NewCapacity) {
  const auto N = static_cast<std::size_t>(NewCapacity);
  RaiseOutOfMemoryAsError([&] {
    if (N > V.capacity()) {
      V.reserve(N);
    } else if (N < V.capacity()) {
      // Shrinking: reserve never releases memory, so move into a vector of the right size.
      std::vector<T> Smaller;
      Smaller.reserve(N);
      for (T& Item : V) Smaller.push_back(std::move(Item));
      V.swap(Smaller);
    }
  });
}

/// In-place quicksort of positions L..R on the middle position. Compare(I, J) orders two
/// positions (negative, zero, positive) and Swap(I, J) exchanges them; the pivot is followed
/// when it moves. Not stable. The scans are bounded so that an inconsistent comparison yields
/// some order instead of running off the ends, and the smaller part is sorted first so the
/// recursion stays logarithmic.
template <class TCompare, class TSwap>
void QuickSortPositions(std::int32_t L, std::int32_t R, TCompare& Compare, TSwap& Swap) {
  while (L < R) {
    std::int32_t I = L, J = R, P = L + (R - L) / 2;
    do {
      while (I < R && Compare(I, P) < 0) ++I;
      while (J > L && Compare(J, P) > 0) --J;
      if (I <= J) {
        if (I != J) {
          Swap(I, J);
          if (P == I)
            P = J;
          else if (P == J)
            P = I;
        }
        ++I;
        --J;
      }
    } while (I <= J);
    if (J - L < R - I) {
      if (L < J) QuickSortPositions(L, J, Compare, Swap);
      L = I;
    } else {
      if (I < R) QuickSortPositions(I, R, Compare, Swap);
      R = J;
    }
  }
}

/// How much a full list grows: a quarter above 64 slots, 16 above 8, else 4. Small lists
/// grow in small steps, large ones geometrically.
inline std::int32_t ListGrowDelta(std::int32_t Capacity) {
  return Capacity > 64 ? Capacity / 4 : Capacity > 8 ? 16 : 4;
}

/// Binary search of a sorted list of Count positions; Compare(I) compares position I with the
/// key sought (negative, zero, positive). Answers whether an equal position was met; Index is
/// then the first equal position when FirstOfEquals, otherwise an equal position met on the
/// way; when none is equal, the insertion point.
template <class TCompare>
bool SortedFind(std::int32_t Count, bool FirstOfEquals, TCompare&& Compare, std::int32_t& Index) {
  bool Result = false;
  std::int32_t L = 0, H = Count - 1;
  while (L <= H) {
    const std::int32_t I = L + (H - L) / 2;
    const int C = Compare(I);
    if (C < 0) {
      L = I + 1;
    } else {
      H = I - 1;
      if (C == 0) {
        Result = true;
        if (!FirstOfEquals) L = I;
      }
    }
  }
  Index = L;
  return Result;
}

}  // namespace kz::detail
