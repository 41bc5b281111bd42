// Elementary functions of complex numbers.
#include "arithmetic/complexfunctions.h"

namespace morvik {

// Near 1 it is found from the distance of the square to 1, which the modulus would lose.
double logarithmofmodulus(const Complex &z) {
  constexpr double NEAR = 0.1;
  const double a = std::fabs(z.re), b = std::fabs(z.im);
  const double greater = std::fmax(a, b), lesser = std::fmin(a, b);
  if (!(greater > 0.5 && greater < 2)) return std::log(lengthfrom<0>(z));
  double distance = (greater - 1) * (greater + 1) + lesser * lesser;
  // Very near, also the rounding errors of the squares count.
  if (std::fabs(distance) < NEAR) {
    const double p = greater * greater, q = lesser * lesser;
    distance = (p - 1) + q + (std::fma(greater, greater, -p) + std::fma(lesser, lesser, -q));
  }
  return std::log1p(distance) / 2;
}

Complex complexlogarithm(const Complex &z) {
  return {logarithmofmodulus(z), angleof(z.re, z.im)};
}

Complex frompolar(double modulus, double angle) {
  if (modulus == 0) return {0, 0};
  return {times(modulus, clean(std::cos(angle))), times(modulus, clean(std::sin(angle)))};
}

Complex complexroot(const Complex &z) {
  if (onaxis(z.im)) return z.re < 0 ? Complex{0, std::sqrt(-z.re)} : Complex{std::sqrt(z.re), 0};
  return frompolar(std::sqrt(lengthfrom<0>(z)), angleof(z.re, z.im) / 2);
}

Complex complexexponential(const Complex &z) {
  double size = std::exp(z.re), again = 1;
  // A modulus past the doubles may still have components within them.
  if (std::isinf(size) && std::isfinite(z.re)) [[unlikely]]
    size = again = std::exp(z.re / 2);
  const Complex w = frompolar(size, z.im);
  return {w.re * again, w.im * again};
}

Complex complexpower(const Complex &base, const Complex &exponent) {
  const double logarithm = logarithmofmodulus(base), angle = angleof(base.re, base.im);
  return complexexponential({times(exponent.re, logarithm) - times(exponent.im, angle),
                             times(exponent.im, logarithm) + times(exponent.re, angle)});
}

}  // namespace morvik
