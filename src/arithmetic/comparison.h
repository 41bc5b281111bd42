// The cores of the comparisons. The six tolerant ones are tests of one difference, the two exact ones one test of
// identity; their results are integers of form boolean.
#pragma once

#include <cstdlib>
#include <limits>

#include "arithmetic/loops.h"
#include "arithmetic/ordering.h"

namespace morvik {

// ---- Tolerant: by the difference of left and right, and by c, which is #CT. NaN passes none of these.

struct Below {
  template <class T>
  static bool holds(T a, T b, T c) {
    return (a < b) & (b - a > c);
  }
};
// Equal infinities differ by nothing, though their difference is no number.
struct Within {
  template <class T>
  static bool holds(T a, T b, T c) {
    const T difference = a == b ? 0 : a - b;
    return std::abs(difference) <= c;
  }
};
struct Above {
  template <class T>
  static bool holds(T a, T b, T c) {
    return (a > b) & (a - b > c);
  }
};

// The complements, which are not made from the others, as that takes a step more.
struct NotBelow {
  template <class T>
  static bool holds(T a, T b, T c) {
    return !(a < b) | !(b - a > c);
  }
};
struct NotWithin {
  template <class T>
  static bool holds(T a, T b, T c) {
    return !Within::holds(a, b, c);
  }
};
struct NotAbove {
  template <class T>
  static bool holds(T a, T b, T c) {
    return !(a > b) | !(a - b > c);
  }
};

template <class Test>
struct Comparison : FlopCounter {
  static constexpr std::uint32_t refused = 0;
  double tolerance = 0;

  template <Numeric A, Numeric B>
  static constexpr std::size_t fixedflops(Formula<A, B>) {
    return (Parted<A> || Parted<B> ? 1 : 0) + SIGNED_FLOPS<A> + SIGNED_FLOPS<B>;
  }
  template <Numeric A, Numeric B>
  Truth operator()(const A &left, const B &right) {
    return {Test::holds(signedmagnitude(left), signedmagnitude(right), tolerance)};
  }

  // Codes are told apart whatever the tolerance is.
  template <Lettered A, Lettered B>
  Truth operator()(A left, B right) {
    return {Test::template holds<std::int32_t>(left.value, right.value, 0)};
  }
};

// ---- Exact.

// Kept: positive infinity is identical to negative infinity, but not the other way round.
inline bool isident(double a, double b) {
  constexpr double GREATEST = std::numeric_limits<double>::max();
  if (a == b) return true;
  if (std::fabs(a) <= GREATEST) [[likely]]
    return false;
  return std::isnan(a) ? std::isnan(b) : std::fabs(b) > GREATEST && a > b;
}

// What only the higher number has is compared with 0.
template <Parted A, Parted B>
inline bool isident(const A &a, const B &b) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return (isident(i < PARTS<A> ? part(a, i) : 0.0, i < PARTS<B> ? part(b, i) : 0.0) && ...);
  }
  (std::make_integer_sequence<int, PARTS<Wider<A, B>>>{});
}

// Truth is `same` for an identical pair. Integers are compared as such: doubles cannot tell the largest ones apart.
template <bool same>
struct Identity : FlopCounter {
  static constexpr std::uint32_t refused = 0;

  Truth operator()(Integer a, Integer b) { return {(a.value == b.value) == same}; }
  template <Numeric A, Numeric B>
  static constexpr std::size_t fixedflops(Formula<A, B>) {
    return Parted<A> || Parted<B> ? 1 : 0;
  }
  template <Numeric A, Numeric B>
  Truth operator()(const A &a, const B &b) {
    return {isident(asdouble(a), asdouble(b)) == same};
  }
  template <Lettered A, Lettered B>
  Truth operator()(A a, B b) {
    return {(a.value == b.value) == same};
  }
};

}  // namespace morvik
