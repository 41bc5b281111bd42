// MULTIPLY: the tables of units, the laws of the algebras, promotion, and the oddities of each kind.
#include <array>
#include <random>

#include "arithmetic_model.h"

namespace {

using namespace arithmetic;
using points::complex;
using points::quaternions;
using points::real;
using points::scalar;
using points::whole;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// The value that two elements give, which must be no failure.
model::Value times(const Element &left, const Element &right) {
  const model::Result r = evaluate(multiply, scalar(left), scalar(right));
  EXPECT_EQ(r.message, 0);
  return r.space.elements.at(0);
}

// An element of as many components.
Element number(const model::Parts &p) {
  if (p.size() == 1) return real(p[0]);
  if (p.size() == 2) return complex(p[0], p[1]);
  if (p.size() == 4) return quaternions(p[0], p[1], p[2], p[3]);
  return points::octonion({p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]});
}
model::Parts times(const model::Parts &a, const model::Parts &b) {
  return times(number(a), number(b)).parts;
}

model::Parts drawn(std::mt19937_64 &random, std::size_t size) {
  std::uniform_real_distribution<double> part(-3, 3);
  model::Parts p(size);
  for (double &x : p) x = part(random);
  return p;
}
model::Parts padded(model::Parts p, std::size_t size) {
  p.resize(size);
  return p;
}

void expectnear(const model::Parts &a, const model::Parts &b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

using Multiply = Lifetimes;

// ---- Tables.

// Row times column: the whole multiplication table of the units, independent of the one in products.h.
constexpr const char *TABLE[8][8] = {
    {"+e0", "+e1", "+e2", "+e3", "+e4", "+e5", "+e6", "+e7"}, {"+e1", "-e0", "+e3", "-e2", "+e5", "-e4", "-e7", "+e6"},
    {"+e2", "-e3", "-e0", "+e1", "+e6", "+e7", "-e4", "-e5"}, {"+e3", "+e2", "-e1", "-e0", "+e7", "-e6", "+e5", "-e4"},
    {"+e4", "-e5", "-e6", "-e7", "-e0", "+e1", "+e2", "+e3"}, {"+e5", "+e4", "-e7", "+e6", "-e1", "-e0", "-e3", "+e2"},
    {"+e6", "+e7", "+e4", "-e5", "-e2", "+e3", "-e0", "-e1"}, {"+e7", "-e6", "+e5", "+e4", "-e3", "-e2", "+e1", "-e0"},
};

TEST_F(Multiply, OctonionUnits) {
  for (std::size_t row = 0; row < 8; ++row)
    for (std::size_t column = 0; column < 8; ++column) {
      model::Parts a(8), b(8), expected(8);
      a[row] = b[column] = 1;
      const char *entry = TABLE[row][column];
      expected[static_cast<std::size_t>(entry[2] - '0')] = entry[0] == '-' ? -1 : 1;
      EXPECT_EQ(times(a, b), expected) << "e" << row << " by e" << column;
    }
}

TEST_F(Multiply, QuaternionUnits) {
  // i j k, in words.
  const std::array<const char *, 16> products = {"+1", "+i", "+j", "+k", "+i", "-1", "+k", "-j",
                                                 "+j", "-k", "-1", "+i", "+k", "+j", "-i", "-1"};
  const std::string units = "1ijk";
  for (std::size_t row = 0; row < 4; ++row)
    for (std::size_t column = 0; column < 4; ++column) {
      model::Parts a(4), b(4), expected(4);
      a[row] = b[column] = 1;
      const char *entry = products[row * 4 + column];
      expected[units.find(entry[1])] = entry[0] == '-' ? -1 : 1;
      EXPECT_EQ(times(a, b), expected) << units[row] << units[column];
    }
}

TEST_F(Multiply, TheHamiltonProductInFull) {
  EXPECT_EQ(times(model::Parts{1, 2, 3, 4}, {5, 6, 7, 8}), (model::Parts{-60, 12, 30, 24}));
  EXPECT_EQ(times(model::Parts{1, 2, 3, 0}, {5, 6, 7, 8}), (model::Parts{-28, 40, 6, 4}));
  EXPECT_EQ(times(model::Parts{1, 2, 3, 4}, {5, 6, 7, 0}), (model::Parts{-28, -12, 46, 16}));
  EXPECT_EQ(times(model::Parts{1, 2, 3, 0}, {5, 6, 7, 0}), (model::Parts{-28, 16, 22, -4}));
}

TEST_F(Multiply, EveryProductOfRandomNumbersAgreesWithTheTable) {
  std::mt19937_64 random(11);
  for (int round = 0; round < 300; ++round)
    for (const std::size_t l : {1U, 2U, 4U, 8U})
      for (const std::size_t r : {1U, 2U, 4U, 8U}) {
        const model::Parts a = drawn(random, l), b = drawn(random, r);
        expectnear(times(a, b), model::product(a, b), 1e-12);
      }
}

// ---- Laws.

TEST_F(Multiply, NormsMultiply) {
  std::mt19937_64 random(12);
  for (int round = 0; round < 2000; ++round)
    for (const std::size_t size : {2U, 4U, 8U}) {
      const model::Parts a = drawn(random, size), b = drawn(random, size);
      const double expected = model::norm(a) * model::norm(b);
      EXPECT_NEAR(model::norm(times(a, b)), expected, 1e-12 * expected);
    }
}

TEST_F(Multiply, OctonionsAreAlternativeAndNotAssociative) {
  std::mt19937_64 random(13);
  for (int round = 0; round < 500; ++round) {
    const model::Parts x = drawn(random, 8), y = drawn(random, 8);
    expectnear(times(x, times(x, y)), times(times(x, x), y), 1e-11);
    expectnear(times(times(y, x), x), times(y, times(x, x)), 1e-11);
    expectnear(times(times(x, y), x), times(x, times(y, x)), 1e-11);
  }
  model::Parts e1(8), e2(8), e4(8);
  e1[1] = e2[2] = e4[4] = 1;
  EXPECT_NE(times(times(e1, e2), e4), times(e1, times(e2, e4)));
}

TEST_F(Multiply, QuaternionsAreAssociativeAndNotCommutative) {
  std::mt19937_64 random(14);
  for (int round = 0; round < 500; ++round) {
    const model::Parts x = drawn(random, 4), y = drawn(random, 4), z = drawn(random, 4);
    expectnear(times(times(x, y), z), times(x, times(y, z)), 1e-11);
  }
  EXPECT_NE(times(model::Parts{0, 1, 0, 0}, {0, 0, 1, 0}), times(model::Parts{0, 0, 1, 0}, {0, 1, 0, 0}));
}

TEST_F(Multiply, PromotionAgreesWithThePromotedOperands) {
  std::mt19937_64 random(15);
  for (const Instruction &instruction : INSTRUCTIONS)
    for (int round = 0; round < 200; ++round)
      for (const std::size_t low : {1U, 2U, 4U})
        for (const std::size_t high : {2U, 4U, 8U}) {
          if (low >= high) continue;
          const model::Parts a = drawn(random, low), b = drawn(random, high);
          const auto value = [&](const model::Parts &l, const model::Parts &r) {
            return evaluate(instruction.plain, scalar(number(l)), scalar(number(r))).space.elements.at(0).parts;
          };
          expectnear(value(a, b), value(padded(a, high), b), 1e-13);
          expectnear(value(b, a), value(b, padded(a, high)), 1e-13);
        }
}

// ---- Integers and reals.

TEST_F(Multiply, IntegersGoThroughDoubles) {
  EXPECT_EQ(times(whole(-6), whole(7)).integer, -42);
  const model::Value large = times(whole(3037000500), whole(3037000500));
  EXPECT_EQ(large.tag, tags::REAL) << "9.22337203700025e18 is above the limit";
  EXPECT_EQ(large.form, forms::COMPUTED);
  EXPECT_EQ(times(whole(3037000499), whole(3037000499)).tag, tags::INTEGER);
  EXPECT_EQ(times(whole(INT64_MAX), whole(1)).integer, INT64_MAX);
  EXPECT_EQ(times(whole(INT64_MIN), whole(1)).integer, INT64_MIN);
  EXPECT_EQ(times(whole(INT64_MIN), whole(-1)).integer, INT64_MAX);
  EXPECT_EQ(times(whole(9007199254740993), whole(1)).integer, 9007199254740992) << "the lowest bit is lost";
}

TEST_F(Multiply, ZeroTimesAnythingRealIsZero) {
  EXPECT_EQ(times(real(0), real(INFINITE)).parts[0], 0);
  EXPECT_EQ(times(real(-INFINITE), real(0)).parts[0], 0);
  EXPECT_EQ(times(real(0), real(NaN)).parts[0], 0);
  EXPECT_EQ(times(whole(0), real(INFINITE)).parts[0], 0);
  EXPECT_TRUE(std::isnan(times(real(1), real(NaN)).parts[0]));
  EXPECT_EQ(times(real(2), real(INFINITE)).parts[0], INFINITE);
}

// ---- Complex numbers.

TEST_F(Multiply, ComplexNumbersThatWouldBeNaNShowInfinity) {
  EXPECT_EQ(times(complex(INFINITE, 1), complex(1, 1)).parts, (model::Parts{INFINITE, INFINITE}));
  EXPECT_EQ(times(complex(INFINITE, 1), complex(0, 1)).parts[0], INFINITE);
  EXPECT_EQ(times(complex(NaN, 1), complex(1, 1)).parts, (model::Parts{INFINITE, INFINITE}));
  EXPECT_EQ(times(real(INFINITE), complex(0, 2)).parts, (model::Parts{INFINITE, INFINITE}));
}

TEST_F(Multiply, WithoutAnImaginaryPartThereAreNoCrossTerms) {
  EXPECT_EQ(times(complex(INFINITE, 0), complex(2, 3)).parts, (model::Parts{INFINITE, INFINITE}));
  EXPECT_EQ(times(complex(2, 0), complex(INFINITE, 3)).parts, (model::Parts{INFINITE, 6}));
  EXPECT_EQ(times(complex(2, 5), complex(INFINITE, 0)).parts, (model::Parts{INFINITE, INFINITE}));
  EXPECT_EQ(times(complex(INFINITE, 0), complex(2, 0)).parts, (model::Parts{INFINITE, 0}));
}

TEST_F(Multiply, PolarNumbersMultiplyModuliAndAddAngles) {
  const auto polar = [](double modulus, double angle, std::uint16_t marks) {
    return complex(modulus * std::cos(angle), modulus * std::sin(angle), forms::POLAR, marks);
  };
  const model::Value v = times(polar(2, 0.5, attributes::DEGREES), polar(3, 0.25, 0));
  EXPECT_NEAR(std::hypot(v.parts[0], v.parts[1]), 6, 1e-14);
  EXPECT_NEAR(std::atan2(v.parts[1], v.parts[0]), 0.75, 1e-15);
  EXPECT_EQ(v.form, forms::POLAR);
  EXPECT_EQ(v.attributes, attributes::DEGREES);
}

TEST_F(Multiply, TheResultLooksLikeTheLeftComplexOperand) {
  const Element polar = complex(1, 2, forms::POLAR, attributes::DEGREES);
  const Element cartesian = complex(3, 4, forms::NUMBER, attributes::PREFIX_R);
  for (const Instruction &instruction : INSTRUCTIONS) {
    const auto value = [&](const Element &l, const Element &r) {
      return evaluate(instruction.plain, scalar(l), scalar(r)).space.elements.at(0);
    };
    EXPECT_EQ(value(polar, cartesian).form, forms::POLAR);
    EXPECT_EQ(value(polar, cartesian).attributes, attributes::DEGREES);
    EXPECT_EQ(value(cartesian, polar).form, forms::NUMBER);
    EXPECT_EQ(value(cartesian, polar).attributes, attributes::PREFIX_R);
    EXPECT_EQ(value(real(2), polar).form, forms::POLAR);
    EXPECT_EQ(value(polar, whole(2)).attributes, attributes::DEGREES);
    EXPECT_EQ(value(polar, quaternions(1, 2, 3, 4, forms::POLAR)).form, forms::NUMBER);
    EXPECT_EQ(value(quaternions(1, 2, 3, 4, forms::POLAR), whole(2)).form, forms::NUMBER);
    EXPECT_EQ(value(quaternions(1, 2, 3, 4, forms::POLAR), quaternions(1, 2, 3, 4)).form, forms::POLAR);
  }
}

// ---- Infinities in quaternions: what is skipped makes no NaN.

TEST_F(Multiply, TermsOfALastComponentOfZeroAreSkipped) {
  const model::Parts flat = times(model::Parts{2, 0, 0, 0}, {INFINITE, 1, 1, INFINITE});
  EXPECT_EQ(flat[3], INFINITE) << "2 by the last, with no term of 0 by the first";
  EXPECT_TRUE(std::isnan(flat[1])) << "the other components of 0 are not skipped";
  const model::Parts both = times(model::Parts{1, 2, 3, 0}, {4, 5, INFINITE, 0});
  EXPECT_EQ(both[0], -INFINITE);
  EXPECT_EQ(both[3], INFINITE);
}

TEST_F(Multiply, FlopsAreCountedByWhatIsDone) {
  const auto counted = [](const Element &l, const Element &r) {
    times(l, r);
    return flopos - 1;
  };
  EXPECT_EQ(counted(whole(2), whole(3)), 0);
  EXPECT_EQ(counted(whole(INT64_MAX), whole(3)), 1);
  EXPECT_EQ(counted(real(2), real(3)), 1);
  EXPECT_EQ(counted(complex(1, 2), complex(3, 4)), 6);
  EXPECT_EQ(counted(complex(1, 2, forms::POLAR), complex(3, 4, forms::POLAR)), 2);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 4), quaternions(1, 2, 3, 4)), 28);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 0), quaternions(1, 2, 3, 4)), 20);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 4), quaternions(1, 2, 3, 0)), 20);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 0), quaternions(1, 2, 3, 0)), 14);
  EXPECT_EQ(counted(complex(1, 2), quaternions(1, 2, 3, 4)), 12);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 4), complex(1, 2)), 12);
  EXPECT_EQ(counted(real(2), quaternions(1, 2, 3, 4)), 4);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 4), whole(2)), 4);
  EXPECT_EQ(counted(points::octonion({1, 2}), points::octonion({1, 2})), 120);
  EXPECT_EQ(counted(points::octonion({1, 2}), quaternions(1, 2, 3, 4)), 56);
  EXPECT_EQ(counted(quaternions(1, 2, 3, 4), points::octonion({1, 2})), 56);
}

// ---- Characters.

TEST_F(Multiply, ACharacterTimesABoolean) {
  const auto value = [](const Element &l, const Element &r) { return evaluate(multiply, scalar(l), scalar(r)); };
  const Element a = points::character('a');
  EXPECT_EQ(value(a, whole(1)).space.elements[0].integer, 'a');
  EXPECT_EQ(value(a, whole(0)).space.elements[0].integer, ' ');
  EXPECT_EQ(value(whole(1), a).space.elements[0].tag, tags::ASCII);
  EXPECT_EQ(value(whole(0), a).space.type, ISSCALAR | HASASCII);
  EXPECT_EQ(value(a, whole(2)).message, 149);
  EXPECT_EQ(value(whole(-1), a).message, 149);
  EXPECT_EQ(value(a, real(1)).message, 162);
  EXPECT_EQ(value(a, a).message, 162);
  Element unicode = points::record(tags::UNICODE, 0);
  unicode.unicode = 0x2200;
  EXPECT_EQ(value(unicode, whole(1)).message, 17);
}

TEST_F(Multiply, ATextTimesAMask) {
  const model::Result r = evaluate(multiply, points::text("hello"), points::numbers({1, 0, 1, 0, 1}));
  ASSERT_EQ(r.message, 0);
  std::string text;
  for (const model::Value &v : r.space.elements) text += static_cast<char>(v.integer);
  EXPECT_EQ(text, "h l o");
  EXPECT_EQ(r.space.type, ISVECTOR | HASASCII);
}

}  // namespace
