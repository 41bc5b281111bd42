// The core of MINIMUM and MAXIMUM: one of the two elements, in the kind of the higher. Of a tie it is the left one, and
// an element that is no number outweighs every other.
#pragma once

#include "arithmetic/loops.h"
#include "arithmetic/ordering.h"

namespace morvik {

// `Order::better(a, b)` tells whether a goes before b; `Order::weight(x)` is what a higher number goes by, at
// `Order::flops<T>` each.
template <class Order>
struct Extremum : FlopCounter {
  static constexpr std::uint32_t refused = 0;

  Integer operator()(Integer a, Integer b) { return {Order::better(b.value, a.value) ? b.value : a.value}; }

  static constexpr std::size_t fixedflops(Formula<double, double>) { return 1; }
  double operator()(double a, double b) {
    const double chosen = Order::better(b, a) ? b : a;
    return b != b ? b : chosen;
  }

  template <Hyper T>
  static constexpr std::size_t fixedflops(Formula<T, T>) {
    return 1 + 2 * Order::template flops<T>;
  }
  template <Hyper T>
  T operator()(const T &a, const T &b) {
    const double left = Order::weight(a), right = Order::weight(b);
    const bool choosesright = Order::better(right, left) || (std::isnan(right) && !std::isnan(left));
    const T &chosen = choosesright ? b : a;
    return assemble<T>([&](auto i) { return part(chosen, i); });
  }

  template <Lettered T>
  T operator()(T a, T b) {
    return Order::better(b.value, a.value) ? b : a;
  }
  Unicode operator()(Ascii a, Unicode b) { return (*this)(Unicode{a.value}, b); }
  Unicode operator()(Unicode a, Ascii b) { return (*this)(a, Unicode{b.value}); }
};

}  // namespace morvik
