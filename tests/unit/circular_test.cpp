// CIRCULAR over every function, every pair of kinds and every pair of shapes, and what it refuses.
#include "dyads_functions.h"
#include "spaces/work.h"

using namespace morvik;

using namespace dyads;

namespace {

constexpr Instruction CIRCULAR = NUMERIC_DYAD(circular);
constexpr double CLOSE = 1e-12;

// The functions of a real by series in a longer precision, and by what binds them together: nothing but the square root
// is the library's. They are good for arguments of up to some ten.
using Long = long double;
constexpr Long QUARTER = 1.57079632679489661923L;

Long exponential(Long x) {
  constexpr int HALVINGS = 6, TERMS = 30;
  Long term = 1, sum = 1;
  for (int n = 1; n < TERMS; ++n) sum += term *= x / (1 << HALVINGS) / n;
  for (int i = 0; i < HALVINGS; ++i) sum *= sum;
  return sum;
}
// From the term of this power on, each of the next ones two powers higher.
Long alternating(Long x, int power) {
  constexpr int HIGHEST = 80;
  Long term = power == 0 ? 1 : x, sum = term;
  for (int n = power + 1; n < HIGHEST; n += 2) sum += term *= -x * x / n / (n + 1);
  return sum;
}
// x and its odd powers, each over the power, with this sign from one to the next.
Long oddpowers(Long x, int sign) {
  constexpr int HIGHEST = 80;
  Long power = x, sum = 0;
  for (int n = 1; n < HIGHEST; n += 2, power *= sign * x * x) sum += power / n;
  return sum;
}
Long arctangent(Long x) {
  if (std::fabs(x) > 1) return std::copysign(QUARTER, x) - arctangent(1 / x);
  constexpr int HALVINGS = 3;
  for (int i = 0; i < HALVINGS; ++i) x /= 1 + std::sqrt(1 + x * x);
  return (1 << HALVINGS) * oddpowers(x, -1);
}
Long logarithm(Long x) {
  if (x <= 0 || x > std::numeric_limits<Long>::max()) return x == 0 ? -INF : x > 0 ? INF : NaN;
  constexpr int HALVINGS = 6;
  for (int i = 0; i < HALVINGS; ++i) x = std::sqrt(x);
  return (2 << HALVINGS) * oddpowers((x - 1) / (x + 1), 1);
}

Long realfunction(std::int64_t number, Long x) {
  switch (number) {
    case 0:
      return std::sqrt(1 - x * x);
    case 1:
      return alternating(x, 1);
    case 2:
      return alternating(x, 0);
    case 3:
      return alternating(x, 1) / alternating(x, 0);
    case 4:
      return std::sqrt(1 + x * x);
    case 5:
      return (exponential(x) - exponential(-x)) / 2;
    case 6:
      return (exponential(x) + exponential(-x)) / 2;
    case 7:
      return (exponential(2 * x) - 1) / (exponential(2 * x) + 1);
    case -1:
      return 2 * arctangent(x / (1 + std::sqrt(1 - x * x)));
    case -2:
      return 2 * arctangent(std::sqrt((1 - x) / (1 + x)));
    case -3:
      return arctangent(x);
    case -4:
      return std::sqrt(x * x - 1);
    case -5:
      return logarithm(x + std::sqrt(x * x + 1));
    case -6:
      return logarithm(x + std::sqrt(x * x - 1));
    default:
      return logarithm((1 + x) / (1 - x)) / 2;
  }
}

Complexes complexfunction(std::int64_t number, Complexes z) {
  const Complexes i(0, 1);
  switch (number) {
    case 0:
      return std::sqrt(1.0 - z * z);
    case 1:
      return std::sin(z);
    case 2:
      return std::cos(z);
    case 3:
      return std::sin(z) / std::cos(z);
    case 4:
      return std::sqrt(1.0 + z * z);
    case 5:
      return std::sinh(z);
    case 6:
      return std::cosh(z);
    case 7:
      return std::sinh(z) / std::cosh(z);
    case -1:
      return -i * std::log(i * z + std::sqrt(1.0 - z * z));
    case -2:
      return -i * std::log(z + i * std::sqrt(1.0 - z * z));
    case -3:
      return i / 2.0 * (std::log(1.0 - i * z) - std::log(1.0 + i * z));
    case -4:
      return std::sqrt(z * z - 1.0);
    case -5:
      return std::log(z + std::sqrt(z * z + 1.0));
    case -6:
      return std::log(z + std::sqrt(z - 1.0) * std::sqrt(z + 1.0));
    default:
      return (std::log(1.0 + z) - std::log(1.0 - z)) / 2.0;
  }
}

Outcome circularmodel(const Value &x, const Value &number) {
  if (!isnumber(x) || !isnumber(number)) return {162, {}};
  if (number.tag != tags::INTEGER || number.whole < -7 || number.whole > 7) return {85, {}};
  if (x.tag <= tags::REAL) {
    const double y = x.tag == tags::INTEGER ? static_cast<double>(x.whole) : x.parts[0];
    return {0, {tags::REAL, forms::COMPUTED, 0, 0, {static_cast<double>(realfunction(number.whole, y))}, CLOSE}};
  }
  const model::Parts result = along(partsof(x, x.tag), [&](Complexes z) { return complexfunction(number.whole, z); });
  return {0, valueof(result, x, number, CLOSE)};
}

Values operands() {
  return {
      letter('a'),
      wide(0x3b1),
      integer(2),
      integer(-1),
      integer(0),
      real(0.5),
      real(-0.75),
      real(3),
      complex(0.5, 0.25),
      hyper(tags::COMPLEX, {-0.75, 1.5}, forms::POLAR, attributes::DEGREES),
      complex(1.5, -0.5),
      quaternion(0.5, 0.25, -0.5, 0.125),
      hyper(tags::QUATERNION, {-0.75, 0.5, 1, 1}, forms::POLAR),
      quaternion(0.5, 0, 0, -1.5),
      octonion({0.5, -1, 0.5, 0.25, 0, 1, 0.75, 0.5}),
      octonion({-0.5, 0, 0, 0, 0, 0, -1, 0.5}),
      hyper(tags::OCTONION, {0.25, 1, 0, 0, 0.5, 0, 0, 1}, forms::POLAR, attributes::DEGREES),
  };
}

class Circulars : public Dyads {};

TEST_F(Circulars, EveryFunctionOfEveryKind) {
  for (std::int64_t number = -9; number <= 9; ++number)
    for (const Value &x : operands()) {
      trial(CIRCULAR, circularmodel, {{x}, {}}, {{integer(number)}, {}}, Held::ALONE);
      trial(CIRCULAR, circularmodel, {{x}, {3}}, {{integer(number)}, {3}}, Held::BYANOTHER);
      ASSERT_FALSE(HasFailure()) << number;
    }
}

TEST_F(Circulars, EveryPairOfValues) {
  everypair(CIRCULAR, circularmodel, operands());
}
TEST_F(Circulars, EveryShape) {
  everyshape(CIRCULAR, circularmodel, operands());
}
TEST_F(Circulars, EverySlice) {
  everyslice(CIRCULAR, circularmodel, {integer(1), integer(-1), integer(0), integer(2), integer(-3), integer(7)});
}

// A number that is none is found before anything is written, wherever it is.
TEST_F(Circulars, ARefusalLeavesTheOperandsWhole) {
  const Values reals{real(0.5), real(0.25), real(0.75)};
  for (const Value &bad : {integer(8), integer(-8), integer(GREATEST), real(1), complex(1, 0), octonion({1})}) {
    trial(CIRCULAR, circularmodel, {reals, {3}}, {{integer(1), integer(2), bad}, {3}}, Held::ALONE);
    trial(CIRCULAR, circularmodel, {reals, {3}}, {{bad}, {}}, Held::ALONE);
    trial(CIRCULAR, circularmodel, {{real(0.5)}, {}}, {{integer(1), bad, integer(2)}, {3}}, Held::BYANOTHER);
    trial(CIRCULAR, circularmodel, {reals, {2}, true}, {{integer(1), bad}, {2}}, Held::ALONE);
    ASSERT_FALSE(HasFailure());
  }
}

TEST_F(Circulars, ATwinNotesWhatItRefuses) {
  const std::uint32_t keptprocessors = processors;
  Reply *const keptreplies = from_coprocessor, replies[2] = {};
  processors = 2;
  from_coprocessor = replies;
  Point left = make({{real(0.5)}, {4}}), right = make({{integer(1), integer(2), integer(3), integer(8)}, {4}});
  Point result = make({{integer(0)}, {4}});
  to_coprocessors = {};
  to_coprocessors.fresh = 1;
  to_coprocessors.combined = left.type | right.type;
  to_coprocessors.count = 4;
  to_coprocessors.first = left.data_pointer;
  to_coprocessors.second = right.data_pointer;
  to_coprocessors.result = result.data_pointer;
  EXPECT_EQ(CIRCULAR.slice(nullptr, nullptr, system, 0), 0);
  EXPECT_EQ(CIRCULAR.slice(nullptr, nullptr, system, 1), 85);
  EXPECT_EQ(replies[1].failure, 85);
  for (Point *p : {&left, &right, &result}) points::drop(*p);
  to_coprocessors = {};
  processors = keptprocessors;
  from_coprocessor = keptreplies;
}

TEST_F(Circulars, OutsideTheDomainOfAReal) {
  const auto of = [&](double x, std::int64_t number) { return outcome(CIRCULAR, real(x), integer(number)).value; };
  for (const auto &[x, number] : std::vector<std::pair<double, int>>{
           {1.5, 0}, {1.5, -1}, {-1.5, -2}, {0.5, -4}, {0.5, -6}, {1.5, -7}, {INF, 1}, {NaN, 5}}) {
    EXPECT_EQ(of(x, number).tag, tags::REAL);
    EXPECT_TRUE(std::isnan(of(x, number).parts[0])) << x << ' ' << number;
  }
  EXPECT_EQ(of(1, -7).parts[0], INF);
  EXPECT_EQ(of(1e200, 4).parts[0], 1e200);
  EXPECT_EQ(of(-1e200, -4).parts[0], 1e200);
  EXPECT_EQ(of(1e200, 0).tag, tags::REAL);
  EXPECT_EQ(of(1000, 5).parts[0], INF);
}

// Complex numbers have a value there: on a cut, that of the formulas of logarithms.
TEST_F(Circulars, OnTheCuts) {
  const auto of = [&](double re, std::int64_t number) {
    return outcome(CIRCULAR, complex(re, 0), integer(number)).value.parts;
  };
  constexpr double HALFPI = 1.5707963267948966;
  const double arc = std::log(2 + std::sqrt(3));
  EXPECT_NEAR(of(2, -1)[0], HALFPI, 1e-14);
  EXPECT_NEAR(of(2, -1)[1], -arc, 1e-14);
  EXPECT_NEAR(of(-2, -1)[1], arc, 1e-14);
  EXPECT_NEAR(of(2, -2)[1], arc, 1e-14);
  EXPECT_EQ(of(2, -2)[0], 0);
  EXPECT_NEAR(of(-2, -6)[0], arc, 1e-14);
  EXPECT_NEAR(of(-2, -6)[1], 2 * HALFPI, 1e-14);
  EXPECT_NEAR(of(2, -7)[1], -HALFPI, 1e-14);
  EXPECT_NEAR(of(-2, -7)[1], HALFPI, 1e-14);
  EXPECT_EQ(of(2, 0)[0], 0);
  EXPECT_NEAR(of(2, 0)[1], std::sqrt(3), 1e-14);
  EXPECT_NEAR(of(0.5, -4)[1], std::sqrt(0.75), 1e-14);
}

// Sines and cosines below 1e-15 are 0, and so are components of results.
TEST_F(Circulars, CleanComponents) {
  constexpr double PI = 3.141592653589793;
  const auto of = [&](double re, double im, std::int64_t number) {
    return outcome(CIRCULAR, complex(re, im), integer(number)).value.parts;
  };
  EXPECT_EQ(of(PI, 1, 1)[0], 0);
  EXPECT_EQ(of(0, PI, 5)[1], 0);
  EXPECT_EQ(of(PI / 2, 1, 2)[0], 0);
  EXPECT_EQ(of(1e-16, 1, 1)[0], 0);
  EXPECT_EQ(of(0, 800, 1)[0], 0) << "0 outweighs an infinite factor";
  EXPECT_EQ(of(0, 800, 1)[1], INF);
  EXPECT_EQ(of(400, 1, 7)[0], 1);
  EXPECT_EQ(of(1, 400, 3)[1], 1);
}

TEST_F(Circulars, GreatComponents) {
  const auto of = [&](double re, double im, std::int64_t number) {
    return outcome(CIRCULAR, complex(re, im), integer(number)).value.parts;
  };
  for (const std::int64_t number : {0, 4, -4}) {
    EXPECT_NEAR(std::fabs(of(3e200, 4e200, number)[number == 0 ? 1 : 0]) / 3e200, 1, 1e-14) << number;
    EXPECT_NEAR(std::fabs(of(3e200, 4e200, number)[number == 0 ? 0 : 1]) / 4e200, 1, 1e-14) << number;
  }
}

// An integer is taken as the real that it is.
TEST_F(Circulars, Integers) {
  for (std::int64_t number = -7; number <= 7; ++number)
    for (const std::int64_t x : {-2, 0, 1, 3}) {
      const Value a = outcome(CIRCULAR, integer(x), integer(number)).value;
      const Value b = outcome(CIRCULAR, real(static_cast<double>(x)), integer(number)).value;
      EXPECT_TRUE(dyads::same(a, b)) << x << ' ' << number;
    }
}

}  // namespace
