// Factorials by a rational approximation of x! about 1/2, the complex gamma function by the series of Stirling, and
// binomial coefficients. No loop runs longer than its product needs to leave the doubles.
#include "arithmetic/gamma.h"

#include <cmath>
#include <numbers>

#include "arithmetic/complexfunctions.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

// Highest coefficient first.
template <std::size_t size, class T>
T horner(const double (&coefficients)[size], T x) {
  T sum = coefficients[0];
  for (std::size_t i = 1; i < size; ++i) sum = sum * x + coefficients[i];
  return sum;
}

// ---- Factorials of reals.

constexpr double P[] = {-0.7567002385928,  11.2029121505218,  5.2381653641874,  -62.7275543027149,
                        1089.094443338165, 3132.869061049572, 232.6453044878145};
constexpr double Q[] = {1,
                        -10.3125739380508,
                        14.3853048828456,
                        201.4965441739693,
                        -629.3447351061687,
                        -1421.6453534644902,
                        4597.142440656356,
                        7194.088849193596};
constexpr double FACTORIAL_OF_HALF = 0.886226925452758;

bool iswhole(double x) {
  return std::floor(x) == x;
}
bool isodd(double x) {
  return std::fmod(x, 2) != 0;
}

// The product of x + 1, x + 2 and so on up to the first factor that is not negative, which is left in `last`.
double risingproduct(double x, double &last) {
  double p = 1, v = x;
  do {
    v += 1;
    p *= v;
    if (std::isinf(p)) {
      // The factors to come change but the sign of p.
      last = x - std::floor(x);
      const bool negative = isodd(std::ceil(-v) - 1);
      return negative ? -p : p;
    }
  } while (v < 0);
  last = v;
  return p;
}

}  // namespace

double factor(double x) {
  numericfault = 0;
  if (x == 0 || x == 1) return 1;
  double f, u;
  if (x < 0) {
    if (iswhole(x)) {
      numericfault = messages::FACTORIAL_ARGUMENT;
      return -0.0;
    }
    f = 1 / risingproduct(x, u);
  } else {
    f = x;
    u = x - 1;
    for (; u > 1; u -= 1) {
      f *= u;
      if (std::isinf(f)) return f;
    }
    if (u == 1) return f;
  }
  const double w = u - 0.5;
  return (w * horner(P, w) / horner(Q, w) + FACTORIAL_OF_HALF) * f;
}

// ---- Binomial coefficients of reals.

namespace {

// The size of the coefficient of k out of n, n not below 0 and k between, from quotients that never grow too far. It
// leaves the doubles after some thousand steps, if it needs that many.
double coefficient(double k, double n) {
  const double steps = std::fmin(k, n - k);
  double c = 1;
  for (double i = 0; i < steps && std::isfinite(c); ++i) c *= (n - i) / (i + 1);
  return c;
}

// n (n - 1) ... of k factors over k!, k at least 1. Products that leave the doubles say nothing of their quotient.
double wholebinomial(double k, double n) {
  double above = 1, below = 1;
  for (double i = 0; i < k; ++i) {
    above *= n - i;
    below *= k - i;
    if (std::isfinite(above) && std::isfinite(below)) continue;
    if (n >= 0) return coefficient(k, n);
    const double size = coefficient(k, k - n - 1);
    return isodd(k) ? -size : size;
  }
  return above / below;
}

}  // namespace

double binom(double k, double n) {
  numericfault = 0;
  const double d = n - k;
  if (iswhole(n) && !iswhole(k) && n < 0) {
    numericfault = messages::BINOMIAL_VALUES;
    return 0;
  }
  if (iswhole(k) && iswhole(n)) {
    if (k == 0 || k == n) return 1;
    if (n < 0 && k < n) {
      // Kept: the sign goes by n - k / 2, not by the parity of d.
      const double b = binom(-(n + 1), -(k + 1));
      return d - 2 * std::floor(n - k / 2) == 0 ? b : -b;
    }
    if (k < 0 || (n >= 0 && k > n)) return 0;
    return wholebinomial(k, n);
  }
  // Kept: a pole below makes the quotient infinite, not 0.
  double divisor = 1;
  const double dividend = factor(n);
  if (k != 0 && k != 1) divisor = factor(k);
  numericfault = 0;
  if (d != 0 && d != 1) divisor *= factor(d);
  return dividend / divisor;
}

// ---- The gamma function.

namespace {

constexpr double coef[] = {0.00641025641025641,   -0.0019175269175269176, 0.0008417508417508417, -0.0005952380952380953,
                           0.0007936507936507937, -0.002777777777777778,  0.08333333333333333};
constexpr double HALF_LOG_OF_TURN = 0.9189385332046728, LOG_OF_TURN = 1.8378770664093456;  // of 2 pi
constexpr double REACH = 14.142, LEAST_REACH = 0.1, GREATEST_REACH = 10;
constexpr double SERIES_ENDS = 1e18;  // squared modulus beyond which the series adds nothing
constexpr double SMALL_TURN = -0.1054, GREAT_TURN = -39.15;

// The logarithm of gamma far from the origin, right of it.
Complex stirling(const Complex &z) {
  const Complex logarithm{logarithmofmodulus(z), std::atan2(z.im, z.re)};
  Complex sum = pairproduct<Right::ITSELF>(Complex{z.re - 0.5, z.im}, logarithm);
  sum.re += HALF_LOG_OF_TURN - z.re;
  sum.im -= z.im;
  const double norm = squarednorm(z);
  if (!(norm <= SERIES_ENDS)) return sum;
  const Complex inverse{z.re / norm, 0 - z.im / norm};
  const Complex square = pairproduct<Right::ITSELF>(inverse, inverse);
  Complex series{coef[0], 0};
  for (std::size_t i = 1; i < std::size(coef); ++i) {
    series = pairproduct<Right::ITSELF>(series, square);
    series.re += coef[i];
  }
  const Complex last = pairproduct<Right::ITSELF>(series, inverse);
  return {sum.re + last.re, sum.im + last.im};
}

// The logarithm of gamma where the real part is not negative; false at the pole 0. The steps up to where the series
// serves are divided out again; their angles are added up, so that the logarithm keeps its branch.
bool rightlogarithm(const Complex &z, Complex &result) {
  const double reach = std::fmin(std::fmax(REACH - std::fabs(z.im), LEAST_REACH), GREATEST_REACH);
  Complex steps{1, 0}, shifted = z;
  double angle = 0;
  for (; shifted.re < reach; shifted.re += 1) {
    steps = pairproduct<Right::ITSELF>(steps, shifted);
    angle += std::atan2(shifted.im, shifted.re);
  }
  if (steps.re == 0 && steps.im == 0) return false;
  result = stirling(shifted);
  result.re -= logarithmofmodulus(steps);
  result.im -= angle;
  return true;
}

// 1 - exp(2 pi i z), z in the upper half plane: it is 0 at the poles left of 0.
Complex reflection(const Complex &z) {
  const double t = -2 * std::numbers::pi * z.im;
  const double rest = t >= SMALL_TURN ? -std::expm1(t) : t <= GREAT_TURN ? 1 : 1 - std::exp(t);
  const double shrunk = t <= GREAT_TURN ? 0 : t >= SMALL_TURN ? 1 - rest : std::exp(t);
  const double angle = std::numbers::pi * (z.re - std::nearbyint(z.re));
  const double s = std::sin(angle), c = std::cos(angle);
  return {rest + 2 * shrunk * s * s, -2 * shrunk * s * c};
}

// The logarithm of gamma in the upper half plane; false at a pole, or so near that an error of `tolerance` in z would
// reach it.
bool gammalogarithm(const Complex &z, double tolerance, Complex &result) {
  if (!(z.re < 0)) return rightlogarithm(z, result);
  const Complex mirrored = reflection(z);
  if (!(lengthfrom<0>(mirrored) - tolerance * lengthfrom<0>(z) > 0)) return false;
  Complex right;
  if (!rightlogarithm({1 - z.re, 0 - z.im}, right)) return false;
  result.re = LOG_OF_TURN - std::numbers::pi * z.im - logarithmofmodulus(mirrored) - right.re;
  result.im = std::numbers::pi * (z.re - 0.5) - std::atan2(mirrored.im, mirrored.re) - right.im;
  return true;
}

}  // namespace

void gammax(const Complex &z, double out[2], bool exponentiate, double tolerance) {
  numericfault = 0;
  out[0] = out[1] = 0;
  if (std::fabs(z.im) < tolerance) {
    out[0] = factor(z.re);
    return;
  }
  Complex value;
  if (!gammalogarithm({z.re, std::fabs(z.im)}, tolerance, value)) {
    numericfault = messages::GAMMA_NEAR_POLE;
    return;
  }
  if (exponentiate) value = complexexponential(value);
  out[0] = value.re;
  out[1] = z.im < 0 ? 0 - value.im : value.im;
}

void binomC(const Complex &a, const Complex &b, double out[2], double tolerance) {
  double rest[2], chosen[2], all[2];
  gammax({b.re - a.re, b.im - a.im}, rest, true, tolerance);
  gammax(a, chosen, true, tolerance);
  gammax(b, all, true, tolerance);
  const Complex below = pairproduct<Right::ITSELF>(Complex{rest[0], rest[1]}, Complex{chosen[0], chosen[1]});
  out[0] = out[1] = 0;
  if (below.re * below.im == 0) return;
  const Complex c = quotient({all[0], all[1]}, below);
  // Kept: the parts change places.
  out[0] = c.im;
  out[1] = c.re;
}

Complex complexfactorial(const Complex &z, double tolerance) {
  double out[2] = {0, 0};
  if (std::fabs(z.im) < tolerance)
    out[0] = factor(z.re);
  else
    gammax({z.re + 1, z.im}, out, true, tolerance);
  return {out[0], out[1]};
}

thread_local std::int32_t numericfault;

}  // namespace morvik
