// CIRCULAR: the circular, hyperbolic or root function that the right operand numbers, of the left one. A real outside
// the domain of its function gives NaN; a complex number has a value everywhere but at poles.
#include <complex>

#include "arithmetic/complexfunctions.h"
#include "arithmetic/dyadic.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

constexpr std::int64_t GREATEST_FUNCTION = 7;

// Above this a square does not fit, and 1 is nothing beside it.
constexpr double GREAT = 1e150;

// ---- Reals. Both tables begin with the function of the least number.

double rootofsquareless(double x) {
  const double size = std::fabs(x);
  return size > GREAT ? size : std::sqrt((x - 1) * (x + 1));
}
double rootoflesssquare(double x) {
  return std::sqrt((1 - x) * (1 + x));
}
double rootofmoresquare(double x) {
  return std::hypot(1, x);
}

// A call through the table costs no more than one by name, which goes through a table too.
using RealFunction = double (*)(double);
constexpr RealFunction REAL_FUNCTIONS[] = {
    std::atanh, std::acosh, std::asinh, rootofsquareless, std::atan, std::acos, std::asin, rootoflesssquare,
    std::sin,   std::cos,   std::tan,   rootofmoresquare, std::sinh, std::cosh, std::tanh,
};

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

struct SineCosine {
  double sine, cosine;
};
SineCosine sinecosine(double angle) {
  return {clean(std::sin(angle)), clean(std::cos(angle))};
}

Complex sine(const Complex &z) {
  const auto [s, c] = sinecosine(z.re);
  return {times(s, std::cosh(z.im)), times(c, std::sinh(z.im))};
}
Complex cosine(const Complex &z) {
  const auto [s, c] = sinecosine(z.re);
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
  const auto [s, c] = sinecosine(z.im);
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

Complex fromlibrary(const Library &w) {
  return {w.real(), w.imag()};
}

Complex arcsine(const Complex &z) {
  return fromlibrary(std::asin(onside(z, -z.re)));
}
Complex arccosine(const Complex &z) {
  return fromlibrary(std::acos(onside(z, -z.re)));
}
Complex arctangent(const Complex &z) {
  return fromlibrary(std::atan(upright(z)));
}
Complex areasine(const Complex &z) {
  return fromlibrary(std::asinh(upright(z)));
}
Complex areacosine(const Complex &z) {
  return fromlibrary(std::acosh(onside(z, 1)));
}
Complex areatangent(const Complex &z) {
  return fromlibrary(std::atanh(onside(z, -z.re)));
}
Complex rootofgreater(const Complex &z) {
  return rootofless(turned(z));
}

using ComplexFunction = Complex (*)(const Complex &);
constexpr ComplexFunction COMPLEX_FUNCTIONS[] = {
    areatangent, areacosine, areasine, rootofmore,    arctangent,     arccosine,        arcsine,           rootofless,
    sine,        cosine,     tangent,  rootofgreater, hyperbolicsine, hyperboliccosine, hyperbolictangent,
};

Complex cleanedfunction(std::int64_t number, const Complex &z) {
  const Complex w = COMPLEX_FUNCTIONS[number + GREATEST_FUNCTION](z);
  return {clean(w.re), clean(w.im)};
}

// ---- The instruction.

struct Circular : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;
  static std::int32_t refusal(std::int32_t, std::int32_t right) {
    return right == tags::INTEGER ? messages::INCOMPATIBLE_TYPES : messages::CIRCULAR_NUMBER;
  }
  std::int32_t check(Integer number) const {
    return number.value >= -GREATEST_FUNCTION && number.value <= GREATEST_FUNCTION ? 0 : messages::CIRCULAR_NUMBER;
  }

  static constexpr std::size_t fixedflops(Formula<double, Integer>) { return 1; }
  static constexpr std::size_t fixedflops(Formula<Integer, Integer>) { return 1; }
  double operator()(Integer x, Integer number) { return (*this)(static_cast<double>(x.value), number); }
  double operator()(double x, Integer number) { return REAL_FUNCTIONS[number.value + GREATEST_FUNCTION](x); }
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

}  // namespace morvik
