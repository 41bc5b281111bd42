// Arithmetic, rounding, logic and forms of one operand beside hand-written loops.
#include "arithmetic/generator.h"
#include "arithmetic/length.h"
#include "monadics.h"
#include "spaces/hypercomplex.h"

#include <numbers>

using namespace morvik;

namespace {

using namespace kernels;

template <class T>
constexpr std::int64_t largest() {
  return PARTS<T> == 8 ? LARGE / 10 : LARGE;
}

// ---- Values.

inline double clamp(double x) {
  return x > 1 ? 1 : x < 0 ? 0 : x;
}
template <class T>
inline T unit(const T &x) {
  const double modulus = lengthfrom<0>(x);
  return eachpart(x, [&](double a) { return a / modulus; });
}
// Of a number on the real axis it is that of the real.
template <class T>
inline T inverse(const T &x) {
  bool isreal = true;
  for (int i = 1; i < PARTS<T>; ++i) isreal = isreal && part(x, i) == 0;
  if (isreal) [[unlikely]]
    return assemble<T>([&](auto i) { return i == 0 ? 1 / part(x, 0) : 0; });
  double norm = part(x, PARTS<T> - 1) * part(x, PARTS<T> - 1);
  for (int i = PARTS<T> - 2; i >= 0; --i) norm = part(x, i) * part(x, i) + norm;
  return assemble<T>([&](auto i) { return (i == 0 ? part(x, i) : 0.0 - part(x, i)) / norm; });
}
template <class T>
inline bool islogical(const T &x) {
  for (int i = 0; i < PARTS<T>; ++i)
    if (part(x, i) < 0 || part(x, i) > 1) return false;
  return true;
}
// The whole number below x, or above where x comes as near to it as the tolerance; what is too large stays a real.
inline Quotient below(double x) {
  if (!(std::fabs(x) < INTEGER_BOUND)) return {x, false};
  const double t = comparisontolerance, low = std::floor(x);
  if (x + t < low + 1) [[likely]]
    return {low, true};
  return {std::ceil(x) == std::floor(x + t) && low != std::ceil(x - t) ? std::ceil(x) : low, true};
}
inline Quotient above(double x) {
  if (!(std::fabs(x) < INTEGER_BOUND)) return {x, false};
  const double t = comparisontolerance, high = std::ceil(x);
  if (x - t > high - 1) [[likely]]
    return {high, true};
  return {std::floor(x) == std::ceil(x - t) ? std::floor(x) : high, true};
}

inline double nextbelow(double x) {
  return below(x).value;
}
inline double nextabove(double x) {
  return above(x).value;
}
// The corner of the unit square: the lower left one, or the next to the right where both fractions together reach it.
inline Complex lowercorner(const Complex &z) {
  const double re = nextbelow(z.re), im = nextbelow(z.im);
  const double across = std::fmax(z.re - re, 0), up = std::fmax(z.im - im, 0);
  return {across + up >= 1 && up <= across ? re + 1 : re, im};
}
inline Complex uppercorner(const Complex &z) {
  const Complex lower = lowercorner({0 - z.re, 0 - z.im});
  return {0 - lower.re, 0 - lower.im};
}

// ---- The forms: x again, looking otherwise.

template <class T, std::uint16_t form>
inline Reformed<T> reformed(const T &x) {
  return {x, form};
}
template <class T, std::uint16_t form>
inline bool hasform(const T &, const Element &e) {
  return e.form == form;
}
#define FORMTEST(T, name, f, form)                                                                                    \
  enter(one<T>(#name, f##monadic, PLAIN, [](const T &x, const Element &e) { return hasform<T, forms::form>(x, e); }), \
        largest<T>())

template <class T>
void anyform() {
  MONAD(T, BINARY, binary, PLAIN, (reformed<T, forms::BINARY>(x)));
  FORMTEST(T, ISBOOLEAN, isboolean, BOOLEAN);
  FORMTEST(T, ISBINARY, isbinary, BINARY);
  FORMTEST(T, ISNUMBER, isnumber, NUMBER);
  FORMTEST(T, ISCARTESIAN, iscartesian, CARTESIAN);
  FORMTEST(T, ISPOLAR, ispolar, POLAR);
}
template <class T>
void numberforms(std::integral_constant<std::uint16_t, forms::NUMBER>) {
  constexpr std::uint16_t both = forms::NUMBER | forms::POLAR, flat = forms::NUMBER | forms::CARTESIAN;
  MONAD(T, NUMBER, number, PLAIN, (reformed<T, forms::NUMBER>(x)));
  MONAD(T, POLAR, polar, PLAIN, (reformed<T, both>(x)));
  MONAD(T, CARTESIAN, cartesian, PLAIN, (reformed<T, flat>(x)));
}
template <class T>
void numberforms(std::integral_constant<std::uint16_t, forms::CARTESIAN>) {
  MONAD(T, NUMBER, number, PLAIN, (reformed<T, forms::NUMBER>(x)));
  MONAD(T, POLAR, polar, PLAIN, (reformed<T, forms::POLAR>(x)));
  MONAD(T, CARTESIAN, cartesian, PLAIN, (reformed<T, forms::CARTESIAN>(x)));
}
constexpr std::integral_constant<std::uint16_t, forms::NUMBER> asnumber;
constexpr std::integral_constant<std::uint16_t, forms::CARTESIAN> ascartesian;

// ---- Draws, one for each element, from a state that begins anew with every loop.

inline double drawunit(std::uint64_t &state) {
  return static_cast<double>(PRNGS(&state)) / PRNGS_MODULUS;
}
template <class T, auto draw>
[[gnu::noinline]] void drawn(Element *r, const Element *a, const Element *, std::size_t count) {
  std::uint64_t state = 1;
  for (std::size_t i = 0; i < count; ++i) store(r[i], a[i], draw(load<T>(a[i]), state));
}
template <class T>
inline T share(const T &x, std::uint64_t &state) {
  return eachpart(x, [&](double a) { return drawunit(state) * a; });
}
// What is exactly between the two ends is drawn, and what is no number stays.
inline double nearer(double x, std::uint64_t &state) {
  if (x != x) return x;
  if (x == 0.5) [[unlikely]]
    return x > drawbeside(&state, x);
  return x > 0.5;
}
inline bool nearerend(const double &x, std::uint64_t &state) {
  return nearer(x, state) > 0;
}
template <class T>
inline T nearerparts(const T &x, std::uint64_t &state) {
  return eachpart(x, [&](double a) { return nearer(a, state); });
}
// What is between the two ends is true as often as it says.
inline double outdrawn(double x, std::uint64_t &state) {
  if (x >= 1 || x <= 0) return x >= 1;
  return x != x ? x : x > drawbeside(&state, x);
}
inline bool outdrawnend(const double &x, std::uint64_t &state) {
  return outdrawn(x, state) > 0;
}
template <class T>
inline T outdrawnparts(const T &x, std::uint64_t &state) {
  return eachpart(x, [&](double a) { return outdrawn(a, state); });
}
inline Whole roll(const Whole &x, std::uint64_t &state) {
  return 1 + drawbelow(&state, x);
}
inline double rollreal(const double &x, std::uint64_t &state) {
  return drawunit(state) * x;
}
template <class T, auto draw>
void drawing(const char *name, const Monadic &cores, double goal, Fill *fill = ordinary) {
  Row row = one<T>(name, cores, goal, [](const T &x) { return x; });
  row.byhand = drawn<T, draw>;
  row.fill = fill;
  enter(row, largest<T>());
}

// ---- The rows.

void characters() {
  anyform<Ascii>();
  anyform<Unicode>();
}

void integers() {
  using T = Whole;
  constexpr T least = std::numeric_limits<T>::min(), greatest = std::numeric_limits<T>::max();
  anyform<T>();
  numberforms<T>(asnumber);
  MONAD(T, CONJUGATE, conjugate, PLAIN, (reformed<T, forms::NUMBER>(x)));
  MONAD(T, NEGATIVE, negative, PLAIN, x == least ? greatest : -x);
  MONAD(T, SIGNUM, signum, PLAIN, (Whole{x > 0} - Whole{x < 0}));
  MONAD(T, DIRECTION, direction, PLAIN, (Quotient{static_cast<double>(x) / std::fabs(static_cast<double>(x)), x > 0}));
  MONAD(T, RECIPROCAL, reciprocal, PLAIN, (Quotient{1 / static_cast<double>(x), x == 1}));
  MONAD(T, MAGNITUDE, magnitude, PLAIN, x == least ? greatest : x < 0 ? -x : x);
  MONAD(T, DEG, deg, PLAIN, static_cast<double>(x) * (180 / std::numbers::pi));
  MONAD(T, RAD, rad, PLAIN, static_cast<double>(x) * (std::numbers::pi / 180));
  MONAD(T, FLOOR, flooring, PLAIN, x);
  MONAD(T, CEILING, ceiling, PLAIN, x);
  MONAD(T, TRUNCATE, Truncate, PLAIN, x);
  MONAD(T, PITIMES, pitimes, PLAIN, std::numbers::pi * static_cast<double>(x));
  MONAD(T, NOT, Not, PLAIN, x <= 0);
  MONAD(T, BOOLEAN, boolean, PLAIN, x > 0);
  MONAD(T, LOGICAL, logical, PLAIN, x > 0);
  MONAD(T, PROBABLY, probably, PLAIN, x > 0);
  MONAD(T, ISLOGICAL, islogical, PLAIN, x == 0 || x == 1);
  drawing<T, roll>("ROLL", rollmonadic, LIBRARY);
}

// What reals have in common with the higher numbers.
template <class T>
void numbers() {
  MONAD(T, NEGATIVE, negative, PLAIN, eachpart(x, [](double a) { return -a; }));
  MONAD(T, PITIMES, pitimes, PLAIN, eachpart(x, [](double a) { return std::numbers::pi * a; }));
  MONAD(T, NOT, Not, PLAIN, eachpart(x, [](double a) { return 1 - clamp(a); }));
  MONAD(T, LOGICAL, logical, PLAIN, eachpart(x, [](double a) { return clamp(a); }));
  MONAD(T, ISLOGICAL, islogical, PLAIN, islogical(x));
  anyform<T>();
  drawing<T, share<T>>("RANDOM", Randommonadic, LIBRARY);
}

void reals() {
  using T = double;
  numbers<T>();
  numberforms<T>(asnumber);
  MONAD(T, CONJUGATE, conjugate, PLAIN, (reformed<T, forms::NUMBER>(x)));
  MONAD(T, SIGNUM, signum, PLAIN, x > 0 ? 1 : x < 0 ? -1 : x == 0 ? 0.0 : x);
  MONAD(T, DIRECTION, direction, PLAIN, x / std::fabs(x));
  MONAD(T, RECIPROCAL, reciprocal, PLAIN, 1 / x);
  MONAD(T, MAGNITUDE, magnitude, PLAIN, std::fabs(x));
  MONAD(T, DEG, deg, PLAIN, x * (180 / std::numbers::pi));
  MONAD(T, RAD, rad, PLAIN, x * (std::numbers::pi / 180));
  MONAD(T, FLOOR, flooring, PLAIN, below(x));
  MONAD(T, CEILING, ceiling, PLAIN, above(x));
  MONAD(T, TRUNCATE, Truncate, PLAIN, (Quotient{x, std::fabs(x) < INTEGER_BOUND}));
  drawing<T, nearerend>("BOOLEAN", booleanmonadic, PLAIN);
  drawing<T, outdrawnend>("PROBABLY", probablymonadic, LIBRARY);
  drawing<T, rollreal>("ROLL", rollmonadic, LIBRARY, [](Element &e, std::uint64_t bits) {
    e.form = forms::NUMBER;
    e.real = 1 + drawpart(bits);
  });
  MONAD(T, CONTRADICTION, contradiction, PLAIN, std::isnan(x) ? x : 0);
}

template <class T>
void higher() {
  numbers<T>();
  numberforms<T>(ascartesian);
  MONAD(T, CONJUGATE, conjugate, PLAIN, assemble<T>([&](auto i) { return i == 0 ? part(x, i) : -part(x, i); }));
  MONAD(T, SIGNUM, signum, PLAIN, unit(x));
  MONAD(T, DIRECTION, direction, PLAIN, unit(x));
  MONAD(T, RECIPROCAL, reciprocal, PLAIN, inverse(x));
  MONAD(T, MAGNITUDE, magnitude, PLAIN, lengthfrom<0>(x));
  MONAD(T, DEG, deg, PLAIN, (reformed<T, forms::CARTESIAN>(x)));
  MONAD(T, RAD, rad, PLAIN, (reformed<T, forms::CARTESIAN>(x)));
  MONAD(T, TRUNCATE, Truncate, PLAIN, eachpart(x, [](double a) { return std::trunc(a); }));
  drawing<T, nearerparts<T>>("BOOLEAN", booleanmonadic, PLAIN);
  drawing<T, outdrawnparts<T>>("PROBABLY", probablymonadic, LIBRARY);
}

// Beside the function that the records go to as they are.
template <class T, double (*contradict)(const Element &)>
void contradicted() {
  enter(
      one<T>("CONTRADICTION", contradictionmonadic, LIBRARY, [](const T &, const Element &e) { return contradict(e); }),
      largest<T>());
}

template <class T>
void highest() {
  MONAD(T, FLOOR, flooring, PLAIN, eachpart(x, nextbelow));
  MONAD(T, CEILING, ceiling, PLAIN, eachpart(x, nextabove));
}

const bool entered = [] {
  characters();
  integers();
  reals();
  higher<Complex>();
  higher<Quaternion>();
  higher<Octonion>();
  highest<Quaternion>();
  highest<Octonion>();
  MONAD(Complex, FLOOR, flooring, PLAIN, lowercorner(x));
  MONAD(Complex, CEILING, ceiling, PLAIN, uppercorner(x));
  contradicted<Complex, contradict_c>();
  contradicted<Quaternion, contradict_q>();
  contradicted<Octonion, contradict_o>();
  return true;
}();

}  // namespace
