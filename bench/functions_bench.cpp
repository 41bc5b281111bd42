// Powers, logarithms, circular functions, factorials and binomial coefficients beside plain loops that call the same
// library: that of the language for reals, the functions of src/arithmetic for what it has not, or has otherwise.
#include "arithmetic/complexfunctions.h"
#include "arithmetic/gamma.h"
#include "byhand.h"
#include "monadics.h"

using namespace morvik;

namespace {

using namespace kernels;

// ---- Two operands.

#define DYAD(T, name, what) \
  enter(two<T>(#name, instructions::name, LIBRARY, [](const T &x, const T &y) { return what; }), largest<T>())

// What is slow need not be measured as often.
template <class T>
constexpr std::int64_t largest() {
  return PARTS<T> > 1 ? LARGE / 10 : LARGE;
}

inline double real(Whole x) {
  return static_cast<double>(x);
}

// A complex function of a number along its unit.
template <class T, class F>
inline T along(const T &x, F &&f) {
  if constexpr (PARTS<T> == 2)
    return f(x);
  else
    return alongunit(x, f);
}

// ---- The circular functions, whose number is on the right.

// One row for a function of all elements: the lone right operand is its number.
template <class T, int number, class F>
void circular(const char *name, F) {
  Row row = one<T>(name, negativemonadic, LIBRARY, F{});
  row.dyadic = dyadiccores(instructions::CIRCULAR);
  row.monadic = nullptr;
  row.right = tags::INTEGER;
  row.rightfill = [](Element &e, std::uint64_t) {
    e.form = forms::NUMBER;
    e.integer = number;
  };
  enter(row, largest<T>());
}
#define CIRCULAR(T, number, name, what) circular<T, number>("CIRCULAR " #name, [](const T &x) { return what; })

void circulars() {
  CIRCULAR(double, 0, ROOT, std::sqrt((1 - x) * (1 + x)));
  CIRCULAR(double, 1, SIN, std::sin(x));
  CIRCULAR(double, 2, COS, std::cos(x));
  CIRCULAR(double, 3, TAN, std::tan(x));
  CIRCULAR(double, 4, HYPOTENUSE, std::hypot(1, x));
  CIRCULAR(double, 5, SINH, std::sinh(x));
  CIRCULAR(double, 6, COSH, std::cosh(x));
  CIRCULAR(double, 7, TANH, std::tanh(x));
  CIRCULAR(double, -1, ASIN, std::asin(x));
  CIRCULAR(double, -2, ACOS, std::acos(x));
  CIRCULAR(double, -3, ATAN, std::atan(x));
  CIRCULAR(double, -5, ASINH, std::asinh(x));
  CIRCULAR(double, -7, ATANH, std::atanh(x));
  CIRCULAR(Whole, 1, SIN, std::sin(real(x)));
  CIRCULAR(Whole, -6, ACOSH, std::acosh(real(x)));
}

// One of a library, as the others are.
[[gnu::noinline]] Complex sine(const Complex &z) {
  const double s = clean(std::sin(z.re)), c = clean(std::cos(z.re));
  return {clean(times(s, std::cosh(z.im))), clean(times(c, std::sinh(z.im)))};
}
// Beside the integer a quaternion or an octonion gives the ordinary form.
template <class T>
void circularsof() {
  circular<T, 1>("CIRCULAR SIN", [](const T &x) { return Reformed<T>{along(x, sine), forms::NUMBER}; });
}

// ---- The rows.

void integers() {
  using T = Whole;
  DYAD(T, POWER, std::pow(real(x), real(y)));
  DYAD(T, LOGARITHM, std::log(real(x)) / std::log(real(y)));
  DYAD(T, BINOMIAL, Sum{std::nearbyint(binom(real(x), real(y)))});
  MONAD(T, EXPONENTIAL, exponential, LIBRARY, std::exp(real(x)));
  MONAD(T, NATURALLOG, naturallog, LIBRARY, std::log(real(x)));
  MONAD(T, FACTORIAL, factorial, LIBRARY, factorials[static_cast<std::size_t>(x)]);
  MONAD(T, POW2, pow2, LIBRARY, std::pow(2, real(x)));
  MONAD(T, POWE, powe, LIBRARY, std::exp(real(x)));
  MONAD(T, POW10, pow10, LIBRARY, std::pow(10, real(x)));
  MONAD(T, LD, ld, LIBRARY, std::log(real(x)) / std::log(2));
  MONAD(T, LOG10, log10, LIBRARY, std::log(real(x)) / std::log(10));
}

void reals() {
  using T = double;
  DYAD(T, POWER, std::pow(x, y));
  DYAD(T, LOGARITHM, std::log(x) / std::log(y));
  DYAD(T, BINOMIAL, binom(x, y));
  MONAD(T, EXPONENTIAL, exponential, LIBRARY, std::exp(x));
  MONAD(T, NATURALLOG, naturallog, LIBRARY, std::log(x));
  MONAD(T, FACTORIAL, factorial, LIBRARY, factor(x));
  MONAD(T, POW2, pow2, LIBRARY, std::pow(2, x));
  MONAD(T, POWE, powe, LIBRARY, std::exp(x));
  MONAD(T, POW10, pow10, LIBRARY, std::pow(10, x));
  MONAD(T, LD, ld, LIBRARY, std::log(x) / std::log(2));
  MONAD(T, LOG10, log10, LIBRARY, std::log(x) / std::log(10));
}

inline Complex logarithm(const Complex &x, double base) {
  const Complex z = complexlogarithm(x);
  return {z.re / std::log(base), z.im / std::log(base)};
}
inline Complex gammaafter(const Complex &z) {
  return complexfactorial(z, 0);
}

template <class T>
void higher() {
  MONAD(T, EXPONENTIAL, exponential, LIBRARY, along(x, complexexponential));
  MONAD(T, NATURALLOG, naturallog, LIBRARY, along(x, complexlogarithm));
  MONAD(T, FACTORIAL, factorial, LIBRARY, along(x, gammaafter));
  MONAD(T, POW2, pow2, LIBRARY, along(x, [](const Complex &z) { return complexpower({2, 0}, z); }));
  MONAD(T, POWE, powe, LIBRARY, along(x, complexexponential));
  MONAD(T, POW10, pow10, LIBRARY, along(x, [](const Complex &z) { return complexpower({10, 0}, z); }));
}

void complexes() {
  using T = Complex;
  DYAD(T, POWER, complexpower(x, y));
  DYAD(T, LOGARITHM, quotient(complexlogarithm(x), complexlogarithm(y)));
  higher<T>();
  circular<T, 1>("CIRCULAR SIN", [](const T &x) { return sine(x); });
  MONAD(T, LD, ld, LIBRARY, logarithm(x, 2));
  MONAD(T, LOG10, log10, LIBRARY, logarithm(x, 10));
}

// The power of two numbers in planes of their own.
template <class T>
T power(const T &base, const T &exponent) {
  std::uint64_t flops = 0;
  T result;
  product<Right::ITSELF>(alongunit(base, complexlogarithm), exponent, flops,
                         [&](const T &x) { result = alongunit(x, complexexponential); });
  return result;
}

const bool entered = [] {
  integers();
  reals();
  circulars();
  complexes();
  higher<Quaternion>();
  circularsof<Quaternion>();
  DYAD(Quaternion, POWER, power(x, y));
  higher<Octonion>();
  circularsof<Octonion>();
  DYAD(Octonion, POWER, power(x, y));
  return true;
}();

}  // namespace
