// NATURALLOG: the logarithm to the base e. That of a negative real is complex.
#include "arithmetic/elementary.h"
#include "arithmetic/monadic.h"

namespace {

// The logarithm of the modulus. Near 1 it is found from the distance of the square to 1, which the modulus would lose,
// and very near from one without rounding errors in the squares.
double logarithmofmodulus(const Complex &z) {
  constexpr double NEAR = 0.1;
  const double a = std::fabs(z.re), b = std::fabs(z.im);
  const double greater = std::fmax(a, b), lesser = std::fmin(a, b);
  if (!(greater > 0.5 && greater < 2)) return std::log(lengthfrom<0>(z));
  const double p = greater * greater, q = lesser * lesser;
  double distance = (greater - 1) * (greater + 1) + q;
  if (std::fabs(distance) < NEAR)
    distance = (p - 1) + q + (std::fma(greater, greater, -p) + std::fma(lesser, lesser, -q));
  return std::log1p(distance) / 2;
}

Complex logarithmof(const Complex &z) {
  return {logarithmofmodulus(z), angleof(z.re, z.im)};
}

struct NaturalLog : Counted {
  template <class Give>
  void operator()(double x, Give &&give) {
    flops += 1;
    if (x < 0) [[unlikely]]
      give(Complex{std::log(-x), std::numbers::pi});
    else
      give(std::log(x));
  }
  Complex operator()(const Complex &x) {
    flops += 6;
    return logarithmof(x);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += 6 + 4 * PARTS<T>;
    return alongunit(x, logarithmof);
  }
};

}  // namespace

MONADIC_SCALAR(naturallog, NaturalLog)
