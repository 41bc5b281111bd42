// Lengths of the numbers of more than one component, right for every size of component.
#pragma once

#include <algorithm>
#include <limits>

#include "arithmetic/products.h"

namespace morvik {

// Squares are exact enough between these: nothing above overflowed, nothing that counts was lost below.
inline constexpr double LEAST_SQUARE = 0x1p-900, GREATEST_SQUARE = std::numeric_limits<double>::max();

// The length of the components from `first` on, where their squares do not fit. NaN wins over infinities.
template <int first, Hyper T>
[[gnu::cold, gnu::noinline]] double scaledlength(const T &x) {
  double greatest = 0, sum = 0;
  for (int i = first; i < PARTS<T>; ++i) {
    const double size = std::fabs(part(x, i));
    if (std::isnan(size)) return size;
    greatest = std::max(greatest, size);
  }
  if (greatest == 0 || std::isinf(greatest)) return greatest;
  int exponent;
  std::frexp(greatest, &exponent);
  for (int i = first; i < PARTS<T>; ++i) {
    const double scaled = std::ldexp(part(x, i), -exponent);
    sum += scaled * scaled;
  }
  return std::ldexp(std::sqrt(sum), exponent);
}

// The length of the components from `first` on.
template <int first, Hyper T>
inline double lengthfrom(const T &x) {
  const double square = [&]<int... i>(std::integer_sequence<int, i...>) {
    return ((part(x, first + i) * part(x, first + i)) + ...);
  }
  (std::make_integer_sequence<int, PARTS<T> - first>{});
  if (square >= LEAST_SQUARE && square <= GREATEST_SQUARE) [[likely]]
    return std::sqrt(square);
  return scaledlength<first>(x);
}

// The modulus.
template <Hyper T>
inline double length(const T &x, std::uint64_t &flops) {
  flops += 2 * PARTS<T>;
  return lengthfrom<0>(x);
}

}  // namespace morvik
