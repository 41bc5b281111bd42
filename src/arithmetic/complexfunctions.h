// Elementary functions of complex numbers, for the instructions that share them. Angles come under the zero rule, sines
// and cosines under the clean rule, so results are exact on the axes and lose what is below 1e-15 beside 1.
#pragma once

#include "arithmetic/elementary.h"

namespace morvik {

// 0 where either is 0, so that a factor of 0 outweighs an infinite one.
inline double times(double a, double b) {
  return a == 0 || b == 0 ? 0 : a * b;
}

// The natural logarithm of the modulus, right where that is near 1 and where its square does not fit.
double logarithmofmodulus(const Complex &z);
// The principal natural logarithm.
Complex complexlogarithm(const Complex &z);
// The principal square root, its real part not below 0.
Complex complexroot(const Complex &z);
// A number by its modulus and its angle in radians.
Complex frompolar(double modulus, double angle);
// e to the power z.
Complex complexexponential(const Complex &z);
// The principal value of base to the power of exponent; 0 to the power 0 is 1.
Complex complexpower(const Complex &base, const Complex &exponent);
// By the conjugate over the squared norm; a divisor on the real axis divides each component.
inline Complex quotient(const Complex &a, const Complex &b) {
  if (b.im == 0) return {a.re / b.re, a.im / b.re};
  const Complex dividend = pairproduct<Right::CONJUGATE>(a, b);
  const double norm = squarednorm(b);
  return {dividend.re / norm, dividend.im / norm};
}

}  // namespace morvik
