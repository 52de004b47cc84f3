// Storage rules shared by the library's array lists: the growth step and the binary search of
// sorted lists, beside the pieces in Runtime/ListStorage.h. Internal: not installed.
#pragma once

#include <cstdint>

#include "Runtime/ListStorage.h"

namespace kz::detail {

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
