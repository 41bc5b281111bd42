// Factorials, the gamma function and binomial coefficients: their formulas, their oddities, and the instructions.
#include "arithmetic/gamma.h"

#include <ctime>

#include "dyads_functions.h"
#include "failure/jump.h"
#include "monadics.h"

using namespace morvik;

using namespace dyads;

namespace {

constexpr double PI = 3.141592653589793;

// What the rational approximation of x! about 1/2 is good for.
constexpr double APPROXIMATION = 1e-12;

void expectrelative(double actual, double expected, double bound, double x = 0) {
  EXPECT_LE(std::fabs(actual - expected), bound * std::fabs(expected)) << actual << " " << expected << " of " << x;
}

// ---- factor.

TEST(Factor, WholeNumbersComeFromTheLoopAlone) {
  double expected = 1;
  for (int n = 0; n <= 170; ++n) {
    if (n > 0) expected *= n;
    expectrelative(factor(n), expected, 2e-14, n);
    EXPECT_EQ(numericfault, 0);
  }
  EXPECT_EQ(factor(5), 120);
  EXPECT_EQ(factor(171), INF);
}

TEST(Factor, NegativeWholeNumbersFail) {
  for (const double x : {-1.0, -2.0, -170.0, -1e15, -1e300, -INF}) {
    numericfault = 0;
    EXPECT_EQ(factor(x), 0);
    EXPECT_TRUE(std::signbit(factor(x)));
    EXPECT_EQ(numericfault, 36) << x;
  }
  factor(1);
  EXPECT_EQ(numericfault, 0) << "it is cleared";
}

TEST(Factor, FractionsComeNearTheTruth) {
  for (double x = -20.9375; x < 20; x += 0.125)
    if (x < 0 || x > 1) expectrelative(factor(x), std::tgamma(x + 1), APPROXIMATION, x);
  expectrelative(factor(-0.5), std::sqrt(PI), APPROXIMATION);
}

// Kept: between 0 and 1 the approximation is used outside its range. It gets the worse the nearer 0 is, where it fails.
TEST(Factor, BetweenZeroAndOneItIsRough) {
  expectrelative(factor(0.9), std::tgamma(1.9), 1e-12);
  expectrelative(factor(0.5), std::tgamma(1.5), 5e-9);
  expectrelative(factor(0.25), std::tgamma(1.25), 5e-7);
  expectrelative(factor(0.0625), std::tgamma(1.0625), 1e-5);
  EXPECT_LT(std::fabs(factor(1e-9)), 1e-2);
}

TEST(Factor, TheEndsOfTheDoubles) {
  EXPECT_EQ(factor(INF), INF);
  EXPECT_EQ(factor(1e300), INF);
  EXPECT_TRUE(std::isnan(factor(NaN)));
  EXPECT_LT(std::fabs(factor(5e-324)), 1e-300);
  EXPECT_EQ(std::fabs(factor(-1e6 - 0.5)), 0) << "one over a product that left the doubles";
  EXPECT_EQ(std::signbit(factor(-200.5)), std::signbit(std::tgamma(-199.5)));
  EXPECT_EQ(std::signbit(factor(-201.5)), std::signbit(std::tgamma(-200.5)));
}

TEST(Factor, TheTableHoldsWhatIntegersHold) {
  EXPECT_EQ(factorials[20], 2432902008176640000);
  for (std::size_t n = 1; n < factorials.size(); ++n)
    EXPECT_EQ(factorials[n] / static_cast<std::int64_t>(n), factorials[n - 1]);
}

// ---- binom.

TEST(Binom, SmallWholeNumbersArePascals) {
  double row[40] = {1};
  for (int n = 0; n < 40; ++n) {
    for (int k = n; k > 0; --k) row[k] += row[k - 1];
    for (int k = 0; k <= n; ++k) expectrelative(binom(k, n), row[k], 1e-14, n);
  }
}

TEST(Binom, TheRulesOfWholeNumbers) {
  for (const double n : {0.0, 5.0, -5.0, 1e15}) EXPECT_EQ(binom(0, n), 1);
  EXPECT_EQ(binom(3, 2), 0);
  EXPECT_EQ(binom(-1, 2), 0);
  EXPECT_EQ(binom(7, 7), 1);
  EXPECT_EQ(binom(-3, -3), 1);
  EXPECT_EQ(binom(-2, -5), 0) << "k negative and above n";
  EXPECT_EQ(binom(2, -3), 6) << "-3 times -4 over 2";
  EXPECT_EQ(binom(3, -3), -10);
  // n negative and k below it: the size is binom(-(n + 1), -(k + 1)); the sign goes by d - 2 floor(n - k / 2).
  EXPECT_EQ(binom(-5, -3), -6) << "d is 2, floor(-3 + 2.5) is -1";
  EXPECT_EQ(binom(-2, -1), -1) << "d is 1, floor(-1 + 1) is 0";
  EXPECT_EQ(binom(-4, -2), -3) << "d is 2, floor(-2 + 2) is 0";
  EXPECT_EQ(binom(-3, -2), -2) << "d is 1, floor(-2 + 1.5) is -1";
  EXPECT_EQ(binom(-6, -3), -10) << "d is 3, floor(-3 + 3) is 0";
}

TEST(Binom, FractionsGoByFactorials) {
  for (const double k : {0.5, 1.25, 3.5, -0.5})
    for (const double n : {4.0, 6.75, 2.5, -1.5}) {
      const double d = n - k;
      if (d < 0 && std::floor(d) == d) continue;
      const bool rough = k == 0.5 || d == 0.5 || d == 0.25;
      expectrelative(binom(k, n), std::tgamma(n + 1) / (std::tgamma(k + 1) * std::tgamma(d + 1)),
                     rough ? 1e-6 : APPROXIMATION, k);
      EXPECT_EQ(numericfault, 0);
    }
  EXPECT_EQ(binom(0.5, -3), 0);
  EXPECT_EQ(numericfault, 40);
  EXPECT_TRUE(std::isinf(binom(-2, 0.5))) << "kept: one over a pole is divided by";
  EXPECT_EQ(numericfault, 0) << "cleared after the second factorial";
  binom(2.5, 0.5);
  EXPECT_EQ(numericfault, 36) << "left by the third";
}

// However large the numbers are, the time is short.
TEST(Binom, HugeWholeNumbers) {
  const std::clock_t start = std::clock();
  EXPECT_EQ(binom(1e15, 2e15), INF);
  EXPECT_EQ(binom(1e18, 1e18 + 256), INF);
  expectrelative(binom(2, 1e15), 1e15 * (1e15 - 1) / 2, 1e-14);
  EXPECT_EQ(binom(1e15 - 1, 1e15), 1e15);
  EXPECT_EQ(binom(1e15, -2), 1e15 + 1);
  EXPECT_EQ(binom(1e15 + 1, -2), -(1e15 + 2));
  EXPECT_EQ(binom(1e15, -1), 1);
  EXPECT_EQ(binom(-1e15, -1e15 + 1), -(1e15 - 1));
  EXPECT_EQ(binom(1e300, 1.5e300), INF);
  EXPECT_EQ(binom(INF, INF), 1);
  EXPECT_EQ(binom(3, INF), INF);
  EXPECT_EQ(binom(INF, 3), 0);
  EXPECT_TRUE(std::isinf(binom(-INF, -5)));
  EXPECT_TRUE(std::isnan(binom(NaN, 2)));
  expectrelative(binom(500, 1000), 2.702882409454366e299, 1e-11);
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 10);
}

// ---- gammax.

// By Lanczos with nine terms: good to 1e-14 of the modulus right of 1/2.
Complexes lanczos(Complexes z) {
  static constexpr double TERMS[] = {0.99999999999980993,  676.5203681218851,     -1259.1392167224028,
                                     771.32342877765313,   -176.61502916214059,   12.507343278686905,
                                     -0.13857109526572012, 9.9843695780195716e-6, 1.5056327351493116e-7};
  if (z.real() < 0.5) return PI / (std::sin(PI * z) * lanczos(1.0 - z));
  z -= 1;
  Complexes sum = TERMS[0];
  for (int i = 1; i < 9; ++i) sum += TERMS[i] / (z + static_cast<double>(i));
  const Complexes t = z + 7.5;
  return std::sqrt(2 * PI) * std::exp((z + 0.5) * std::log(t) - t) * sum;
}

TEST(Gamma, ComesNearTheTruth) {
  for (double re = -12.3; re < 30; re += 0.7)
    for (const double im : {-20.0, -3.5, -0.05, 1e-3, 0.4, 1.0, 6.0, 15.0}) {
      double out[2];
      gammax({re, im}, out, true, 1e-15);
      const Complexes truth = lanczos({re, im});
      EXPECT_EQ(numericfault, 0);
      EXPECT_LE(std::abs(Complexes{out[0], out[1]} - truth), 1e-11 * std::abs(truth)) << re << ' ' << im;
    }
}

TEST(Gamma, ConjugatesGoWithConjugates) {
  for (const double re : {-3.3, 0.2, 4.0})
    for (const bool exponentiate : {false, true}) {
      double up[2], down[2];
      gammax({re, 2.5}, up, exponentiate, 0);
      gammax({re, -2.5}, down, exponentiate, 0);
      EXPECT_EQ(up[0], down[0]);
      EXPECT_EQ(up[1], -down[1]);
    }
}

// The logarithm keeps its branch: it grows steadily with the imaginary part, far beyond pi.
TEST(Gamma, TheLogarithm) {
  double before = 0;
  for (double im = 2; im < 40; im += 0.25) {
    double logarithm[2], value[2];
    gammax({1.5, im}, logarithm, false, 0);
    gammax({1.5, im}, value, true, 0);
    EXPECT_GT(logarithm[1], before);
    before = logarithm[1];
    EXPECT_LE(std::abs(std::exp(Complexes{logarithm[0], logarithm[1]}) - Complexes{value[0], value[1]}),
              1e-13 * std::hypot(value[0], value[1]));
  }
  EXPECT_GT(before, 10 * PI);
}

TEST(Gamma, NearTheAxisItIsFactor) {
  double out[2];
  gammax({4, 1e-16}, out, true, 1e-15);
  EXPECT_EQ(out[0], 24) << "kept: factor(4) and not gamma of 4";
  EXPECT_EQ(out[1], 0);
  gammax({-2, 1e-16}, out, true, 1e-15);
  EXPECT_EQ(numericfault, 36);
}

TEST(Gamma, Poles) {
  double out[2];
  for (const double re : {0.0, -1.0, -7.0}) {
    gammax({re, 0}, out, true, 0);
    EXPECT_EQ(numericfault, 130) << re;
    EXPECT_EQ(out[0], 0);
    EXPECT_EQ(out[1], 0);
  }
  gammax({-3, 1e-9}, out, true, 1e-8);
  EXPECT_EQ(numericfault, 36);
  gammax({-3, 1e-8}, out, true, 1e-8);
  EXPECT_EQ(numericfault, 0) << "a reach of 3e-8 does not make up for 6.28e-8";
  gammax({-30, 1e-8}, out, true, 1e-8);
  EXPECT_EQ(numericfault, 130);
}

TEST(Gamma, FarOut) {
  double out[2];
  for (const Complex &z : {Complex{0.5, 1e300}, Complex{-1e300, 1}, Complex{1e300, 1}, Complex{0.5, -1e12}}) {
    gammax(z, out, true, 0);
    EXPECT_FALSE(numericfault != 0 && numericfault != 130) << z.re;
  }
  gammax({0.5, 1e12}, out, true, 0);
  EXPECT_EQ(out[0], 0);
  gammax({NaN, 1}, out, true, 0);
  gammax({INF, -INF}, out, true, 0);
}

// ---- FACTORIAL.

class Factorials : public Dyads {
 protected:
  Value of(const Value &v, double tolerance = 1e-15) {
    Point p = monadics::result("FACTORIAL", make({{v}, {}}), tolerance);
    const Value value = valuein(*p.data_pointer);
    points::drop(p);
    return value;
  }
  int messageof(const Value &v, double tolerance = 1e-15) {
    monadics::Bank bank(tolerance, 1);
    Point p = make({{integer(3), v, integer(4)}, {3}}), was = make({{integer(3), v, integer(4)}, {3}});
    const int message = monadics::attempt(monadics::member("FACTORIAL"), p, bank);
    stepping = 0;
    if (message != 0) expectequal(p, was);
    points::drop(p);
    points::drop(was);
    return message;
  }
};

TEST_F(Factorials, Integers) {
  for (std::int64_t n = 0; n <= 20; ++n) {
    EXPECT_EQ(of(integer(n)).tag, tags::INTEGER);
    EXPECT_EQ(of(integer(n)).whole, factorials[static_cast<std::size_t>(n)]);
  }
  EXPECT_EQ(of(integer(21)).tag, tags::REAL);
  expectrelative(of(integer(21)).parts[0], 51090942171709440000.0, 1e-15);
  EXPECT_EQ(of(integer(GREATEST)).parts[0], INF);
  EXPECT_EQ(of(real(5)).tag, tags::REAL);
  EXPECT_EQ(of(real(5)).parts[0], 120);
}

TEST_F(Factorials, Failures) {
  EXPECT_EQ(messageof(integer(-1)), 36);
  EXPECT_EQ(messageof(integer(LEAST)), 36);
  EXPECT_EQ(messageof(real(-2)), 36);
  EXPECT_EQ(messageof(real(-2.5)), 0);
  EXPECT_EQ(messageof(complex(-2, 0)), 36);
  EXPECT_EQ(messageof(complex(-2, 0), 0), 130);
  EXPECT_EQ(messageof(quaternion(-2, 0, 0, 0)), 36);
  EXPECT_EQ(messageof(octonion({-2, 0, 0, 0, 0, 0, 0, 0}), 0), 130);
  EXPECT_EQ(messageof(letter('a')), 994);
}

// Of z it is the gamma function of z + 1, and of what lies on the axis the factorial of the real part.
TEST_F(Factorials, NumbersOfSeveralParts) {
  for (const auto &[re, im] : std::vector<std::pair<double, double>>{{2.5, 1}, {-3.25, 0.5}, {0, -4}, {10, 10}}) {
    const Complexes truth = lanczos({re + 1, im});
    const Value c = of(complex(re, im));
    EXPECT_LE(std::abs(Complexes{c.parts[0], c.parts[1]} - truth), 1e-11 * std::abs(truth)) << re << ' ' << im;
    const Value q = of(quaternion(re, 0, im / 5 * 3, im / 5 * 4));
    EXPECT_NEAR(q.parts[0], truth.real(), 1e-11 * std::abs(truth));
    EXPECT_NEAR(q.parts[2], truth.imag() / 5 * 3, 1e-11 * std::abs(truth));
    EXPECT_NEAR(q.parts[3], truth.imag() / 5 * 4, 1e-11 * std::abs(truth));
    const Value o = of(octonion({re, 0, 0, 0, 0, im, 0, 0}));
    EXPECT_NEAR(o.parts[5], truth.imag(), 1e-11 * std::abs(truth));
  }
  EXPECT_EQ(of(complex(4, 0)).tag, tags::COMPLEX);
  EXPECT_EQ(of(complex(4, 0)).parts[0], 24);
  EXPECT_EQ(of(complex(4, 0.01), 0.1).parts[0], 24) << "#CT says what is near the axis";
}

// ---- BINOMIAL.

constexpr Instruction BINOMIAL = NUMERIC_DYAD(binomial);

// gamma of b over those of b - a and of a, the parts exchanged; near the axis it is factor, as everywhere.
Complexes gammaof(Complexes z) {
  if (std::fabs(z.imag()) >= 1e-15) return lanczos(z);
  const double x = z.real();
  return x < 0 && std::floor(x) == x ? 0 : std::tgamma(x + 1);
}

Outcome binomialmodel(const Value &k, const Value &n) {
  if (!isnumber(k) || !isnumber(n)) return {162, {}};
  const std::int32_t tag = std::max(k.tag, n.tag);
  if (tag > tags::COMPLEX) return {994, {}};
  const model::Parts a = partsof(k, std::max(tag, std::int32_t{tags::REAL})),
                     b = partsof(n, std::max(tag, std::int32_t{tags::REAL}));
  if (tag == tags::INTEGER) return {0, integer(static_cast<std::int64_t>(std::nearbyint(binom(a[0], b[0]))))};
  if (tag == tags::REAL) return {0, {tags::REAL, forms::COMPUTED, 0, 0, {binom(a[0], b[0])}}};
  const Complexes x{a[0], a[1]}, y{b[0], b[1]}, below = gammaof(y - x) * gammaof(x);
  if (below.real() * below.imag() == 0) return {0, valueof({0, 0}, k, n, 0)};
  const Complexes w = gammaof(y) / below;
  return {0, valueof({w.imag(), w.real()}, k, n, 1e-10)};
}

class Binomials : public Dyads {
 protected:
  Values operands() {
    return {
        letter('a'),
        wide(0x3b1),
        integer(2),
        integer(7),
        integer(5),
        integer(-3),
        real(2.5),
        real(0.75),
        real(6),
        complex(1.5, 2.25),
        hyper(tags::COMPLEX, {3, -1.5}, forms::POLAR, attributes::DEGREES),
        complex(4.5, 1),
        quaternion(1, 2, -0.5, 0.25),
        octonion({0.5, -1, 2, 0.25, 0, 1, 0.75, 0.5}),
    };
  }
};

TEST_F(Binomials, EveryPairOfValues) {
  everypair(BINOMIAL, binomialmodel, operands());
}
TEST_F(Binomials, EveryShape) {
  everyshape(BINOMIAL, binomialmodel, operands());
}
TEST_F(Binomials, EverySlice) {
  Values numbers;
  for (const Value &v : operands())
    if (v.tag <= tags::COMPLEX) numbers.push_back(v);
  everyslice(BINOMIAL, binomialmodel, numbers);
}

TEST_F(Binomials, Integers) {
  EXPECT_EQ(outcome(BINOMIAL, integer(2), integer(5)).value.whole, 10);
  EXPECT_EQ(outcome(BINOMIAL, integer(3), integer(2)).value.whole, 0);
  EXPECT_EQ(outcome(BINOMIAL, integer(3), integer(-3)).value.whole, -10);
  const Value huge = outcome(BINOMIAL, integer(500), integer(1000)).value;
  EXPECT_EQ(huge.tag, tags::REAL);
  for (const std::int64_t k : {LEAST, GREATEST, std::int64_t{0}, GREATEST / 2})
    for (const std::int64_t n : {LEAST, GREATEST, std::int64_t{0}, GREATEST / 2})
      EXPECT_EQ(outcome(BINOMIAL, integer(k), integer(n)).message, 0);
}

// The slowest coefficients, as many as an interrupt may have to wait for.
TEST_F(Binomials, AStretchIsShort) {
  constexpr std::int64_t COUNT = 4096;
  const std::clock_t start = std::clock();
  Point stack[2] = {make({{integer(515)}, {COUNT}}), make({{integer(1030)}, {}})};
  ASSERT_EQ(run(BINOMIAL, stack), 0);
  points::drop(stack[0]);
  EXPECT_LT(std::clock() - start, CLOCKS_PER_SEC / 2);
}

// Whatever the formulas cannot say stays in numericfault: the instruction reports nothing.
TEST_F(Binomials, ReportNothing) {
  EXPECT_EQ(outcome(BINOMIAL, real(0.5), integer(-3)).value.parts[0], 0);
  EXPECT_TRUE(std::isinf(outcome(BINOMIAL, real(-2), real(0.5)).value.parts[0]));
  EXPECT_TRUE(std::isinf(outcome(BINOMIAL, real(2.5), real(0.5)).value.parts[0]));
  const Value pole = outcome(BINOMIAL, complex(1, 1), complex(-2, 1)).value;
  EXPECT_EQ(pole.parts[0], 0);
  EXPECT_EQ(pole.parts[1], 0);
}

}  // namespace
