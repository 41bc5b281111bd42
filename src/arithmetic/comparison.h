// The cores of the comparisons. The six tolerant ones are tests of one difference, the two exact ones one test of
// identity; their results are integers of form boolean.
#pragma once

#include <limits>

#include "arithmetic/dyadic.h"
#include "arithmetic/ordering.h"

// ---- Tolerant: by the difference of left and right, and by c, which is #CT. NaN passes none of these.

inline bool below(double a, double b, double c) {
  return (a < b) & (b - a > c);
}
// Equal infinities differ by nothing, though their difference is no number.
inline bool within(double a, double b, double c) {
  return std::fabs(a == b ? 0 : a - b) <= c;
}
inline bool above(double a, double b, double c) {
  return (a > b) & (a - b > c);
}

using Test = bool(double a, double b, double c);
template <Test test>
inline bool no(double a, double b, double c) {
  return !test(a, b, c);
}

template <Test test>
struct Comparison : Counted {
  static constexpr std::uint32_t refused = 0;
  double tolerance = 0;

  template <Numeric A, Numeric B>
  Truth operator()(const A &left, const B &right) {
    flops += Parted<A> || Parted<B> ? 1 : 0;
    const double a = signedmagnitude(left, flops), b = signedmagnitude(right, flops);
    return {test(a, b, tolerance)};
  }

  // Codes are told apart whatever the tolerance is.
  template <Lettered A, Lettered B>
  Truth operator()(A left, B right) {
    return {test(left.value, right.value, 0)};
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
struct Identity : Counted {
  static constexpr std::uint32_t refused = 0;

  Truth operator()(Integer a, Integer b) { return {(a.value == b.value) == same}; }
  template <Numeric A, Numeric B>
  Truth operator()(const A &a, const B &b) {
    flops += 1;
    return {isident(asdouble(a), asdouble(b)) == same};
  }
  template <Lettered A, Lettered B>
  Truth operator()(A a, B b) {
    return {(a.value == b.value) == same};
  }
};
