// Narrowing to single and double precision with the overflow case spelled out.
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

/// The same for doubles: half a unit above the largest double and beyond is infinite.
inline double ToDouble(long double V) {
  if constexpr (std::numeric_limits<long double>::max_exponent > std::numeric_limits<double>::max_exponent) {
    constexpr long double Overflow = 0x1.fffffffffffff8p1023L;
    if (V >= Overflow) return std::numeric_limits<double>::infinity();
    if (V <= -Overflow) return -std::numeric_limits<double>::infinity();
  }
  return static_cast<double>(V);
}

}  // namespace kz
