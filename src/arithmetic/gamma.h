// Factorials, the complex gamma function and binomial coefficients. A failure leaves its message number in
// `numericfault`, for the caller to look at after each call; 0 means none.
#pragma once

#include <array>
#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// n! of every n whose factorial is an integer.
inline constexpr std::size_t FACTORIALS = 21;
inline constexpr std::array<std::int64_t, FACTORIALS> factorials = [] {
  std::array<std::int64_t, FACTORIALS> table{1};
  for (std::size_t n = 1; n < FACTORIALS; ++n) table[n] = table[n - 1] * static_cast<std::int64_t>(n);
  return table;
}();

// x! of a real x, to about 14 places by the nature of its approximation. A negative whole x: numericfault 36, result
// -0.0.
double factor(double x);
// Binomial coefficient of k out of n, reals. A fractional k of a negative whole n: numericfault 40, result 0.
double binom(double k, double n);
// The gamma function of z into `out`, or its logarithm where `exponentiate` is false. Kept: with an imaginary part
// below `tolerance` it is factor(Re z) instead. Too close to a pole: numericfault 130, out 0; or as factor.
void gammax(const Complex &z, double out[2], bool exponentiate, double tolerance);
// Into `out`, imaginary part first: gamma of b over the gammas of b - a and of a; 0 where the product of those two lies
// on an axis.
void binomC(const Complex &a, const Complex &b, double out[2], double tolerance);
// What FACTORIAL makes of a complex z: gamma of z + 1, and factor(Re z) near the real axis. numericfault 36 and 130.
Complex complexfactorial(const Complex &z, double tolerance);

extern thread_local std::int32_t numericfault;  // what the numeric kernels report: a message number, 0 for none

}  // namespace morvik
