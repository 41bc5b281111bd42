// Doubles into integers, defined for every double.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace morvik {

// 2 to the power 63: the first whole double above every integer. The bound of the integers as results compare with it,
// 9.223372036854776e+18, is this same double.
inline constexpr double INTEGER_BOUND = 0x1p63;

// Is it whole, and does it fit an integer?
inline bool isinteger(double x) {
  return std::fabs(x) < INTEGER_BOUND && static_cast<double>(static_cast<std::int64_t>(x)) == x;
}

// Truncates towards 0; what does not fit becomes the nearest integer there is, NaN becomes 0.
inline std::int64_t saturate(double x) {
  if (std::fabs(x) < INTEGER_BOUND) [[likely]]
    return static_cast<std::int64_t>(x);
  if (std::isnan(x)) return 0;
  return x < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

}  // namespace morvik
