// Narrowing to single precision with the overflow case spelled out.
#pragma once

#include <limits>

namespace kz {

/// V rounded to the nearest single; values at or beyond half a unit above the largest single
/// become infinities (as the hardware rounds), NaN stays NaN. Never leaves the conversion to
/// the compiler's discretion for out-of-range values.
inline float ToSingle(long double V) {
  constexpr long double Overflow = 0x1.ffffffp127L;
  if (V >= Overflow) return std::numeric_limits<float>::infinity();
  if (V <= -Overflow) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(V);
}

}  // namespace kz
