// How numbers and characters of any kind enter a comparison: a number as one double, a character as its code.
#pragma once

#include "arithmetic/kinds.h"
#include "spaces/hypercomplex.h"

namespace morvik {

template <class T>
concept Numeric = Parted<T> || std::is_same_v<T, Integer>;
template <class T>
concept Lettered = std::is_same_v<T, Ascii> || std::is_same_v<T, Unicode>;

// An integer as a double, any other number as it is.
inline double asdouble(Integer x) {
  return static_cast<double>(x.value);
}
template <Parted T>
inline const T &asdouble(const T &x) {
  return x;
}

// The flops of a modulus, and of the sign beside it; none where a number is compared as it is.
template <class T>
inline constexpr std::uint64_t MODULUS_FLOPS = Hyper<T> ? 2 * PARTS<T> : 0;
template <class T>
inline constexpr std::uint64_t SIGNED_FLOPS = Hyper<T> ? MODULUS_FLOPS<T> + 1 : 0;

// The square root of the sum of squares, which is added up from the first component on.
template <Hyper T>
inline double modulus(const T &x) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return std::sqrt((... + (part(x, i) * part(x, i))));
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}

// The sign of a number whose first component is 0: that of the first that is not.
inline double latersign(const Complex &x) {
  return x.im == 0 ? 0 : x.im > 0 ? 1 : -1;
}
template <Hyper T>
[[gnu::cold]] double latersign(const T &x) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    const double parts[] = {part(x, i)...};
    if constexpr (PARTS<T> == PARTS<Quaternion>)
      return csgnquat(parts);
    else
      return csgnocto(parts);
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}

// The sign times the modulus. A real or an integer is compared as it is.
inline double signedmagnitude(Integer x) {
  return asdouble(x);
}
inline double signedmagnitude(double x) {
  return x;
}
template <Hyper T>
inline double signedmagnitude(const T &x) {
  const double first = part(x, 0), size = modulus(x);
  if (first == 0) [[unlikely]]
    return latersign(x) * size;
  return first < 0 ? -size : size;
}

}  // namespace morvik
