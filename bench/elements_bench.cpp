// Comparison, logic, extrema, residues, transcendental functions and the instructions on one operand beside
// hand-written loops; and what a space of mixed kinds costs beside a uniform one.
#include "arithmetic/functions.h"
#include "arithmetic/gamma.h"
#include "kernels.h"

#ifndef __clang__
#pragma GCC optimize("O3")  // as arithmetic/ is
#endif

#define MONADIC(f) extern const Monadic f##monadic;
#define DRAWING(f)
#define DYADIC(f)
#define SPACE(f)
#define HANDLER(f)
#define NOTIMPLEMENTED
#define RESTRICTED
#define NOTHING
#define INSTRUCTION(number, name, argumentclass, key, handler) handler
#include "machine/instructions.def"
#undef INSTRUCTION
#undef MONADIC

namespace {

using namespace kernels;

// ---- Hand-written loops, made from what they do with one pair or with one value.

template <class T>
inline T load(const Element &e) {
  if constexpr (std::is_same_v<T, double>) return e.real;
  if constexpr (std::is_same_v<T, std::int64_t>) return e.integer;
  if constexpr (std::is_same_v<T, Complex>) return e.complex;
  if constexpr (std::is_same_v<T, Quaternion>) return quaternion(e);
}
inline void store(Element &to, const Element &, double value) {
  head(to, tags::REAL, forms::COMPUTED, 0);
  to.name = nullptr;
  to.real = value;
}
inline void store(Element &to, const Element &, std::int64_t value) {
  head(to, tags::INTEGER, forms::NUMBER, 0);
  to.name = nullptr;
  to.integer = value;
}
inline void store(Element &to, const Element &, bool value) {
  head(to, tags::INTEGER, forms::BOOLEAN, 0);
  to.name = nullptr;
  to.integer = value;
}
inline void store(Element &to, const Element &like, const Complex &value) {
  looklike(to, tags::COMPLEX, like);
  to.name = nullptr;
  to.complex = value;
}
inline void store(Element &to, const Element &like, const Quaternion &value) {
  looklike(to, tags::QUATERNION, like);
  setquaternion(to, value);
}

template <class F, class R, class A, class B>
A lefttype(R (F::*)(A, B) const);
template <class F, class R, class A>
A lefttype(R (F::*)(A) const);
template <class F>
using Operand = decltype(lefttype(&F::operator()));

template <class F>
[[gnu::noinline]] void overtwo(Element *r, const Element *a, const Element *b, std::size_t count) {
  using T = Operand<F>;
  for (std::size_t i = 0; i < count; ++i) store(r[i], a[i], F{}(load<T>(a[i]), load<T>(b[i])));
}
template <class F>
[[gnu::noinline]] void overone(Element *r, const Element *a, const Element *, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) store(r[i], a[i], F{}(load<Operand<F>>(a[i])));
}
template <class F>
Byhand *two(F) {
  return &overtwo<F>;
}
template <class F>
Byhand *one(F) {
  return &overone<F>;
}

inline double clamp(double x) {
  return x > 1 ? 1 : x < 0 ? 0 : x;
}
inline double both(double x, double y) {
  return std::isnan(x) || std::isnan(y) ? NAN : std::min(clamp(x), clamp(y));
}
using Whole = std::int64_t;

#define DYAD(name, instruction, tag, ...)                                                                 \
  BENCHMARK_CAPTURE(freshkernel, name, instructions::instruction, tags::tag, tags::tag, two(__VA_ARGS__)) \
      ->Arg(SMALL)                                                                                        \
      ->Arg(MIDDLE)
#define MONAD(name, cores, tag, ...) \
  BENCHMARK_CAPTURE(monadickernel, name, cores##monadic, tags::tag, one(__VA_ARGS__))->Arg(SMALL)->Arg(MIDDLE)

DYAD(less_real, LESS, REAL, [](double x, double y) { return x < y && y - x > 0; });
DYAD(less_integer, LESS, INTEGER, [](Whole x, Whole y) { return static_cast<double>(x) < static_cast<double>(y); });
DYAD(equivalent_real, EQUIVALENT, REAL, [](double x, double y) { return std::fabs(x == y ? 0 : x - y) <= 0; });
DYAD(identical_real, IDENTICAL, REAL, [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
DYAD(and_integer, AND, INTEGER, [](Whole x, Whole y) { return x > 0 && y > 0; });
DYAD(and_real, AND, REAL, [](double x, double y) { return both(x, y); });
DYAD(and_complex, AND, COMPLEX, [](Complex x, Complex y) { return Complex{both(x.re, y.re), both(x.im, y.im)}; });
DYAD(strongor_real, STRONGOR, REAL, [](double x, double y) { return std::min(clamp(x) + clamp(y), 1.0); });
DYAD(minimum_integer, MINIMUM, INTEGER, [](Whole x, Whole y) { return x < y ? x : y; });
DYAD(minimum_real, MINIMUM, REAL, [](double x, double y) { return y != y || y < x ? y : x; });
DYAD(subtract_real, SUBTRACT, REAL, [](double x, double y) { return x - y; });
DYAD(divide_real, DIVIDE, REAL, [](double x, double y) { return x / y; });
DYAD(add_quaternion, ADD, QUATERNION, [](Quaternion x, Quaternion y) {
  return Quaternion{{x.part[0] + y.part[0], x.part[1] + y.part[1], x.part[2] + y.part[2], x.part[3] + y.part[3]}};
});
DYAD(residue_integer, RESIDUE, INTEGER, [](Whole x, Whole y) { return y == 0 ? x : y == -1 ? Whole{0} : x % y; });
DYAD(residue_real, RESIDUE, REAL,
     [](double x, double y) { return y == 0 ? x : x - static_cast<double>(static_cast<Whole>(x / y)) * y; });
DYAD(power_real, POWER, REAL, [](double x, double y) { return std::pow(x, y); });
DYAD(power_complex, POWER, COMPLEX, [](Complex x, Complex y) { return complexpower(x, y); });
DYAD(logarithm_real, LOGARITHM, REAL, [](double x, double y) { return std::log(x) / std::log(y); });
DYAD(binomial_real, BINOMIAL, REAL, [](double x, double y) { return binom(x, y); });

MONAD(negative_real, negative, REAL, [](double x) { return -x; });
MONAD(negative_integer, negative, INTEGER, [](Whole x) { return -x; });
MONAD(negative_quaternion, negative, QUATERNION, [](Quaternion x) {
  return Quaternion{{-x.part[0], -x.part[1], -x.part[2], -x.part[3]}};
});
MONAD(conjugate_complex, conjugate, COMPLEX, [](Complex x) { return Complex{x.re, -x.im}; });
MONAD(magnitude_real, magnitude, REAL, [](double x) { return std::fabs(x); });
MONAD(magnitude_complex, magnitude, COMPLEX, [](Complex x) { return std::sqrt(x.re * x.re + x.im * x.im); });
MONAD(reciprocal_real, reciprocal, REAL, [](double x) { return 1 / x; });
MONAD(floor_real, flooring, REAL, [](double x) { return static_cast<Whole>(std::floor(x)); });
MONAD(not_real, Not, REAL, [](double x) { return 1 - clamp(x); });
MONAD(exponential_real, exponential, REAL, [](double x) { return std::exp(x); });
MONAD(exponential_complex, exponential, COMPLEX, [](Complex x) { return complexexponential(x); });
MONAD(naturallog_real, naturallog, REAL, [](double x) { return std::log(x); });
MONAD(pow2_real, pow2, REAL, [](double x) { return std::pow(2, x); });
MONAD(factorial_real, factorial, REAL, [](double x) { return factor(x); });

// The form alone changes.
[[gnu::noinline]] void polarcomplexes(Element *r, const Element *a, const Element *, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const Complex p = a[i].complex;
    head(r[i], tags::COMPLEX, forms::POLAR, a[i].attributes & 0x3fff);
    r[i].name = nullptr;
    r[i].complex = p;
  }
}
BENCHMARK_CAPTURE(monadickernel, polar_complex, polarmonadic, tags::COMPLEX, polarcomplexes)->Arg(SMALL)->Arg(MIDDLE);

// One function of all elements, as SIN asks for it.
void circularkernel(benchmark::State &state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Records left(tags::REAL, count, 1, false), right(tags::INTEGER, 1, 2), mine(tags::REAL, count, 3),
      theirs(tags::REAL, count, 3);
  right.get()->integer = 1;
  const auto system = [&] {
    Run run{left.get(), right.get(), mine.get(), 1, 0, 1, count, true};
    Tally tally;
    if (work(*dyadiccores(instructions::CIRCULAR), run, tally) != 0) state.SkipWithError("a failure");
  };
  Byhand *const sine = one([](double x) { return std::sin(x); });
  duel(state, mine, theirs, system, [&] { sine(theirs.get(), left.get(), nullptr, count); });
}
BENCHMARK(circularkernel)->Arg(SMALL)->Arg(MIDDLE);

// Integers and reals in turns beside reals alone: the ratio is the system's to itself.
void mixedkernel(benchmark::State &state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Records uniform(tags::REAL, count, 1), mixed(tags::REAL, count, 1), right(tags::REAL, count, 2),
      mine(tags::REAL, count, 3), theirs(tags::REAL, count, 3);
  for (std::size_t i = 0; i < count; i += 2) {
    uniform.get()[i].real = static_cast<double>(i);
    Element &e = mixed.get()[i];
    e.tag = tags::INTEGER;
    e.form = forms::NUMBER;
    e.integer = static_cast<std::int64_t>(i);
  }
  const auto sum = [&](Records &left, Records &result) {
    Run run{left.get(), right.get(), result.get(), 1, 1, 1, count, true};
    Tally tally;
    if (work(*dyadiccores(instructions::ADD), run, tally) != 0) state.SkipWithError("a failure");
  };
  duel(
      state, mine, theirs, [&] { sum(mixed, mine); }, [&] { sum(uniform, theirs); });
}
BENCHMARK(mixedkernel)->Arg(SMALL)->Arg(MIDDLE);

}  // namespace
