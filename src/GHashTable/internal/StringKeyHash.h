// The string tables' key hash, shared by their HashCode and the tables' in-line path.
#pragma once

#include <cstdint>

#include "Runtime/Types.h"

namespace kz::detail {

/// Multiplicative hash over the code units; long strings are sampled: every (L div 8)-th
/// code unit from the first, 8 to 12 of them.
inline std::uint32_t StringKeyHash(const String& S) {
  const std::size_t L = S.size();
  std::uint32_t H = 0;
  if (L >= 16) {
    const std::size_t Step = L / 8;
    for (std::size_t I = 0; I < L; I += Step) H = H * 39 + S[I];
  } else {
    // H * 37 + C four units at a time (37^2, 37^3, 37^4 folded in): the same number modulo
    // 2^32 with a quarter of the dependent multiplications.
    std::size_t I = 0;
    for (; I + 4 <= L; I += 4)
      H = H * 1874161u + (S[I] * 50653u + S[I + 1] * 1369u + S[I + 2] * 37u + S[I + 3]);
    for (; I < L; ++I) H = H * 37 + S[I];
  }
  return H;
}

}  // namespace kz::detail
