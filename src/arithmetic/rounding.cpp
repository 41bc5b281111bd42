// FLOOR, CEILING and TRUNCATE. Integers come out where they fit.
#include "arithmetic/rounding.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

// Rounds by `round` what has whole numbers beside it; the rest stays.
template <double (*round)(double, double)>
double component(double x, double tolerance) {
  return roundable(x) ? round(x, tolerance) : x;
}

// The corner of the unit square that a complex number belongs to. Kept: it is the next one to the right where the two
// fractions together reach 1 and the imaginary one is not above the real one.
Complex floorcorner(const Complex &z, double tolerance) {
  const double re = component<tolerantfloor>(z.re, tolerance), im = component<tolerantfloor>(z.im, tolerance);
  const double across = std::fmax(z.re - re, 0), up = std::fmax(z.im - im, 0);
  return {across + up >= 1 && up <= across ? re + 1 : re, im};
}
// Mirrors the floor. What is subtracted from 0, and not negated, has no negative 0.
Complex ceilingcorner(const Complex &z, double tolerance) {
  const Complex mirrored = floorcorner({0 - z.re, 0 - z.im}, tolerance);
  return {0 - mirrored.re, 0 - mirrored.im};
}

// TRUNCATE knows no tolerance, and takes a complex number by its components too.
double truncated(double x, double) {
  return towardzero(x);
}

template <double (*round)(double, double), Complex (*square)(const Complex &, double)>
struct Rounding : FlopCounter {
  double tolerance = 0;

  Integer operator()(Integer x) { return x; }
  template <class Give>
  void operator()(double x, Give &&give) {
    flops += 1;
    if (roundable(x)) [[likely]]
      give(Integer{static_cast<std::int64_t>(round == truncated ? x : round(x, tolerance))});  // which cuts as it is
    else
      give(x);
  }
  Complex operator()(const Complex &x) {
    flops += 2 * PARTS<Complex> + 2;
    return square(x, tolerance);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return component<round>(part(x, i), tolerance); });
  }
};

Complex truncatedparts(const Complex &z, double) {
  return {component<truncated>(z.re, 0), component<truncated>(z.im, 0)};
}

}  // namespace

using Floor = Rounding<tolerantfloor, floorcorner>;
using Ceiling = Rounding<tolerantceiling, ceilingcorner>;
using Truncation = Rounding<truncated, truncatedparts>;
MONADIC_SCALAR(flooring, Floor)
MONADIC_SCALAR(ceiling, Ceiling)
MONADIC_SCALAR(Truncate, Truncation)

}  // namespace morvik
