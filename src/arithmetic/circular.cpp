// CIRCULAR: the circular, hyperbolic or root function that the right operand numbers, of the left one. A real outside
// the domain of its function gives NaN; a complex number has a value everywhere but at poles.
#include <complex>

#include "arithmetic/dyadic.h"
#include "arithmetic/functions.h"

namespace {

constexpr std::int32_t NOFUNCTION = 85;
constexpr std::int64_t GREATESTFUNCTION = 7;

// Above this a square does not fit, and 1 is nothing beside it.
constexpr double GREAT = 1e150;

// ---- Reals.

double rootofsquareless(double x) {
  const double size = std::fabs(x);
  return size > GREAT ? size : std::sqrt((x - 1) * (x + 1));
}

[[gnu::always_inline]] inline double realfunction(std::int64_t number, double x) {
  switch (number) {
    case 0:
      return std::sqrt((1 - x) * (1 + x));
    case 1:
      return std::sin(x);
    case 2:
      return std::cos(x);
    case 3:
      return std::tan(x);
    case 4:
      return std::hypot(1, x);
    case 5:
      return std::sinh(x);
    case 6:
      return std::cosh(x);
    case 7:
      return std::tanh(x);
    case -1:
      return std::asin(x);
    case -2:
      return std::acos(x);
    case -3:
      return std::atan(x);
    case -4:
      return rootofsquareless(x);
    case -5:
      return std::asinh(x);
    case -6:
      return std::acosh(x);
    default:
      return std::atanh(x);
  }
}

// ---- Complex numbers.

Complex plus(double x, const Complex &z) {
  return {x + z.re, z.im};
}
Complex minus(double x, const Complex &z) {
  return {x - z.re, 0 - z.im};
}
// i times z, and -i times z.
Complex turned(const Complex &z) {
  return {0 - z.im, z.re};
}
Complex turnedback(const Complex &z) {
  return {z.im, 0 - z.re};
}

// The root of z squared, with 1 lost beside it.
Complex greatroot(const Complex &z) {
  return z.re < 0 || (z.re == 0 && z.im < 0) ? minus(0, z) : z;
}
bool isgreat(const Complex &z) {
  return std::fabs(z.re) > GREAT || std::fabs(z.im) > GREAT;
}
// The root of (1 - z)(1 + z), and of (z - 1)(z + 1).
Complex rootofless(const Complex &z) {
  return isgreat(z) ? greatroot(turned(z)) : complexroot(pairproduct<Right::ITSELF>(minus(1, z), plus(1, z)));
}
Complex rootofmore(const Complex &z) {
  return isgreat(z) ? greatroot(z) : complexroot(pairproduct<Right::ITSELF>(plus(-1, z), plus(1, z)));
}

struct Direction {
  double sine, cosine;
};
Direction direction(double angle) {
  return {clean(std::sin(angle)), clean(std::cos(angle))};
}

Complex sine(const Complex &z) {
  const auto [s, c] = direction(z.re);
  return {times(s, std::cosh(z.im)), times(c, std::sinh(z.im))};
}
Complex cosine(const Complex &z) {
  const auto [s, c] = direction(z.re);
  return {times(c, std::cosh(z.im)), 0 - times(s, std::sinh(z.im))};
}
Complex hyperbolicsine(const Complex &z) {
  return turnedback(sine(turned(z)));
}
Complex hyperboliccosine(const Complex &z) {
  return cosine(turned(z));
}

// sinh z / cosh z over the squared modulus of the denominator, which is sinh(a)^2 + cos(b)^2: nothing cancels.
Complex hyperbolictangent(const Complex &z) {
  constexpr double FLAT = 20;  // beyond, the real part is 1 and squares need not be formed
  const auto [s, c] = direction(z.im);
  if (std::fabs(z.re) > FLAT) return {std::copysign(1, z.re), times(4 * s * c, std::exp(-2 * std::fabs(z.re)))};
  const double up = std::sinh(z.re), norm = up * up + c * c;
  return {up * std::cosh(z.re) / norm, s * c / norm};
}
Complex tangent(const Complex &z) {
  return turnedback(hyperbolictangent(turned(z)));
}

// Where the cut of an inverse function lies along a number, its value is that of the formula of logarithms, which
// `sign` tells as the side that the cut belongs to.
using Library = std::complex<double>;
Library onside(const Complex &z, double sign) {
  return {z.re, onaxis(z.im) ? std::copysign(0.0, sign) : z.im};
}
Library upright(const Complex &z) {
  return {onaxis(z.re) ? std::copysign(0.0, z.im) : z.re, z.im};
}

Library inversefunction(std::int64_t number, const Complex &z) {
  switch (number) {
    case -1:
      return std::asin(onside(z, -z.re));
    case -2:
      return std::acos(onside(z, -z.re));
    case -3:
      return std::atan(upright(z));
    case -5:
      return std::asinh(upright(z));
    case -6:
      return std::acosh(onside(z, 1));
    default:
      return std::atanh(onside(z, -z.re));
  }
}

Complex complexfunction(std::int64_t number, const Complex &z) {
  switch (number) {
    case 0:
      return rootofless(z);
    case 1:
      return sine(z);
    case 2:
      return cosine(z);
    case 3:
      return tangent(z);
    case 4:
      return rootofless(turned(z));
    case -4:
      return rootofmore(z);
    case 5:
      return hyperbolicsine(z);
    case 6:
      return hyperboliccosine(z);
    case 7:
      return hyperbolictangent(z);
    default: {
      const Library w = inversefunction(number, z);
      return {w.real(), w.imag()};
    }
  }
}

Complex cleanedfunction(std::int64_t number, const Complex &z) {
  const Complex w = complexfunction(number, z);
  return {clean(w.re), clean(w.im)};
}

// ---- The instruction.

struct Circular : Counted {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;
  static std::int32_t refusal(std::int32_t, std::int32_t right) {
    return right == tags::INTEGER ? INCOMPATIBLE : NOFUNCTION;
  }
  std::int32_t check(Integer number) const {
    return number.value >= -GREATESTFUNCTION && number.value <= GREATESTFUNCTION ? 0 : NOFUNCTION;
  }

  static constexpr std::size_t flopseach(Formula<double, Integer>) { return 1; }
  static constexpr std::size_t flopseach(Formula<Integer, Integer>) { return 1; }
  double operator()(Integer x, Integer number) { return (*this)(static_cast<double>(x.value), number); }
  double operator()(double x, Integer number) { return realfunction(number.value, x); }
  Complex operator()(const Complex &x, Integer number) {
    flops += 8;
    return cleanedfunction(number.value, x);
  }
  template <Hyper T>
  T operator()(const T &x, Integer number) {
    flops += 8 + 4 * PARTS<T>;
    return alongunit(x, [&](const Complex &z) { return cleanedfunction(number.value, z); });
  }
};

}  // namespace

DYADIC_SCALAR(circular, Circular)
