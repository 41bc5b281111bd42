// Whole numbers near a double. What lies within the tolerance of a whole number is that number.
#pragma once

#include "arithmetic/kinds.h"

namespace morvik {

// Of a double below INTEGER_BOUND in magnitude. By integers, as that is one instruction each way on every machine.
inline double towardzero(double x) {
  return static_cast<double>(static_cast<std::int64_t>(x));
}
inline double floorof(double x) {
  const double t = towardzero(x);
  return t - (t > x ? 1 : 0);
}
inline double ceilingof(double x) {
  const double t = towardzero(x);
  return t + (t < x ? 1 : 0);
}

// Has a double whole numbers beside it? Infinities, NaN, and what is whole because it is so large, have none.
inline bool roundable(double x) {
  return std::fabs(x) < INTEGER_BOUND;
}

// The whole number of which x falls short, or which it passes, by no more than the tolerance: where floor(x) is
// ceil(x - t) it is that, else where ceil(x) is floor(x + t) it is ceil(x), else `otherwise`.
[[gnu::noinline]] inline double tolerantwhole(double x, double t, double otherwise) {
  constexpr double WIDEST_TOLERANCE = 2;  // a tolerance so wide, or NaN, finds no single whole number
  if (!(std::fabs(t) < WIDEST_TOLERANCE)) return otherwise;
  const double low = floorof(x), high = ceilingof(x);
  if (low == ceilingof(x - t)) return low;
  return high == floorof(x + t) ? high : otherwise;
}

// The tolerant floor and ceiling of a roundable double. Most are so far from the next whole number that one comparison
// tells it.
inline double tolerantfloor(double x, double t) {
  const double low = floorof(x);
  if (x + t < low + 1) [[likely]]
    return low;
  return tolerantwhole(x, t, low);
}
inline double tolerantceiling(double x, double t) {
  const double high = ceilingof(x);
  if (x - t > high - 1) [[likely]]
    return high;
  return tolerantwhole(x, t, high);
}

}  // namespace morvik
