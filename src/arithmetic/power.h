// The core of POWER, which the instructions of one fixed base share.
#pragma once

#include <bit>

#include "arithmetic/complexfunctions.h"
#include "arithmetic/loops.h"

namespace morvik {

struct Power : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;

  static constexpr std::size_t fixedflops(Formula<double, double>) { return 1; }

  // Of integers too the result is real, and of a negative base it is complex where the exponent has a fraction.
  template <class Give>
  void operator()(double base, double exponent, Give &&give) {
    if (isplain(base, exponent)) [[likely]]
      give(std::pow(base, exponent));
    else if (exponent != THIRD && base < 0 && hasfraction(exponent))
      give(ofnegative(-base, exponent));
    else
      give(rarepower(base, exponent));
  }

  Complex operator()(const Complex &base, const Complex &exponent) {
    flops += 12;
    return complexpower(base, exponent);
  }

  // Where both numbers lie in one plane with the real axis, the power is that of its complex numbers. Otherwise it is
  // the exponential of the logarithm of the base times the exponent, in that order.
  template <Hyper T>
  T operator()(const T &base, const T &exponent) {
    flops += 24 + 8 * PARTS<T>;
    if (isreal(exponent))
      return alongunit(base, [&](const Complex &z) { return complexpower(z, {part(exponent, 0), 0}); });
    if (isreal(base)) return alongunit(exponent, [&](const Complex &z) { return complexpower({part(base, 0), 0}, z); });
    const T logarithm = alongunit(base, complexlogarithm);
    T result;
    product<Right::ITSELF>(logarithm, exponent, flops, [&](const T &x) { result = alongunit(x, complexexponential); });
    return result;
  }

 private:
  static constexpr double THIRD = 1.0 / 3.0, HALF = 0.5;

  // Has the base no sign, and is the exponent not from the one root to the other? By their bits, which is soonest done.
  static bool isplain(double base, double exponent) {
    constexpr auto third = std::bit_cast<std::uint64_t>(THIRD), half = std::bit_cast<std::uint64_t>(HALF);
    return std::bit_cast<std::int64_t>(base) >= 0 && std::bit_cast<std::uint64_t>(exponent) - third > half - third;
  }

  // NaN has none, and an infinity is whole.
  static bool hasfraction(double x) { return std::isfinite(x) && std::trunc(x) != x; }

  [[gnu::noinline]] static double rarepower(double base, double exponent) {
    if (exponent == THIRD) return std::cbrt(base);
    return exponent == HALF ? std::sqrt(base) : std::pow(base, exponent);
  }

  // Kept: a component below 1e-15 is 0, however small the other one is.
  [[gnu::noinline]] static Complex ofnegative(double size, double exponent) {
    const Complex w = frompolar(std::exp(exponent * std::log(size)), exponent * std::numbers::pi);
    return {clean(w.re), clean(w.im)};
  }
};

}  // namespace morvik
