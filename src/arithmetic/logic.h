// The cores of the logic instructions: truths are numbers from 0 to 1, and a higher number is a row of them. An
// instruction is one function of two truths, for each component by itself; NaN in either gives NaN.
#pragma once

#include "arithmetic/kinds.h"
#include "arithmetic/loops.h"
#include "spaces/hypercomplex.h"

namespace morvik {

// The smaller and the larger of two, clamped: as clamping keeps their order, one of the two is enough. The choice is b
// where one is NaN; the sum is never the negative zero.
constexpr double conjunction(double a, double b) {
  if (a != a) [[unlikely]]
    return a;
  return clamped(a < b ? a : b) + 0.0;
}
constexpr double disjunction(double a, double b) {
  if (a != a) [[unlikely]]
    return a;
  return clamped(a > b ? a : b) + 0.0;
}
// The bounded sums.
constexpr double strongconjunction(double a, double b) {
  const double sum = clamped(a) + clamped(b) - 1;
  return sum < 0 ? 0 : sum;
}
constexpr double strongdisjunction(double a, double b) {
  const double sum = clamped(a) + clamped(b) + 0.0;
  return sum > 1 ? 1 : sum;
}
template <double (*truth)(double, double)>
constexpr double complement(double a, double b) {
  return 1 - truth(a, b);
}

template <double (*truth)(double, double)>
struct Logic : FlopCounter {
  static constexpr std::uint32_t refused = 0;

  Truth operator()(Integer a, Integer b) {
    const bool left = a.value > 0, right = b.value > 0;
    return {left ? (right ? plain<1, 1> : plain<1, 0>) : (right ? plain<0, 1> : plain<0, 0>)};
  }

  template <Parted A, Parted B>
  static constexpr std::size_t fixedflops(Formula<A, B>) {
    constexpr bool rows = Hyper<A> && Hyper<B>;
    return rows && PARTS<A> < PARTS<B> ? PARTS<A> : rows ? PARTS<B> : PARTS<Wider<A, B>>;
  }
  // A real meets each component; what only the higher of two rows has passes as it is.
  template <Parted A, Parted B>
  Wider<A, B> operator()(const A &a, const B &b) {
    constexpr int common = fixedflops(Formula<A, B>{});
    return assemble<Wider<A, B>>([&](auto i) {
      if constexpr (i < common)
        return truth(part(a, i), part(b, i));
      else if constexpr (i < PARTS<A>)
        return part(a, i);
      else
        return part(b, i);
    });
  }

 private:
  template <int a, int b>
  static constexpr bool plain = truth(a, b) != 0;
};

}  // namespace morvik
