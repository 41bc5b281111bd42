// DIVIDE, ADD and SUBTRACT element by element: the rule of integers, divisors of zero, and quotients of the higher
// numbers.
#include <random>

#include "arithmetic_model.h"

namespace {

using namespace arithmetic;
using points::complex;
using points::octonion;
using points::quaternions;
using points::real;
using points::scalar;
using points::whole;

constexpr double INFINITE = std::numeric_limits<double>::infinity();

model::Value value(DyadicFunction *function, const Element &left, const Element &right) {
  const model::Result r = evaluate(function, scalar(left), scalar(right));
  EXPECT_EQ(r.message, 0);
  return r.space.elements.at(0);
}
model::Value quotient(const Element &left, const Element &right) {
  return value(divide, left, right);
}

void expectnear(const model::Parts &a, const model::Parts &b, double tolerance) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

using Divide = Lifetimes;
using Sums = Lifetimes;

// ---- Integers.

TEST_F(Divide, AWholeQuotientNotBelowZeroIsAnInteger) {
  EXPECT_EQ(quotient(whole(6), whole(3)).tag, tags::INTEGER);
  EXPECT_EQ(quotient(whole(6), whole(3)).integer, 2);
  EXPECT_EQ(quotient(whole(-6), whole(-3)).integer, 2);
  EXPECT_EQ(quotient(whole(0), whole(5)).tag, tags::INTEGER);
  EXPECT_EQ(quotient(whole(0), whole(-5)).tag, tags::INTEGER);
  EXPECT_EQ(quotient(whole(7), whole(2)).parts, model::Parts{3.5});
}

TEST_F(Divide, AWholeQuotientBelowZeroStaysReal) {
  const model::Value v = quotient(whole(-6), whole(3));
  EXPECT_EQ(v.tag, tags::REAL);
  EXPECT_EQ(v.form, forms::COMPUTED);
  EXPECT_EQ(v.parts, model::Parts{-2});
  EXPECT_EQ(quotient(whole(6), whole(-3)).parts, model::Parts{-2});
}

TEST_F(Divide, TheLimitsOfIntegers) {
  EXPECT_EQ(quotient(whole(INT64_MAX), whole(1)).integer, INT64_MAX);
  EXPECT_EQ(quotient(whole(INT64_MIN), whole(-1)).integer, INT64_MAX);
  EXPECT_EQ(quotient(whole(INT64_MIN), whole(1)).tag, tags::REAL);
}

TEST_F(Divide, NothingTestsForZero) {
  EXPECT_EQ(quotient(whole(7), whole(0)).parts, model::Parts{INFINITE});
  EXPECT_EQ(quotient(whole(-7), whole(0)).parts, model::Parts{-INFINITE});
  EXPECT_TRUE(std::isnan(quotient(whole(0), whole(0)).parts[0]));
  EXPECT_EQ(quotient(real(1.5), real(0)).parts, model::Parts{INFINITE});
  EXPECT_EQ(quotient(complex(1, 2), whole(0)).parts, (model::Parts{INFINITE, INFINITE}));
  EXPECT_EQ(quotient(complex(1, -2), complex(0, 0)).parts, (model::Parts{INFINITE, -INFINITE}));
  EXPECT_TRUE(std::isnan(quotient(quaternions(1, 0, 1, 1), quaternions(0, 0, 0, 0)).parts[1]));
  EXPECT_EQ(quotient(octonion({1, 1, 1, 1, 1, 1, 1, 1}), octonion({0})).parts, model::Parts(8, INFINITE));
  EXPECT_EQ(quotient(real(1), quaternions(0, 0, 0, 0)).parts[0], INFINITE);
}

TEST_F(Divide, FlopsOfIntegers) {
  quotient(whole(6), whole(3));
  EXPECT_EQ(flopos, 1);
  quotient(whole(-6), whole(3));
  EXPECT_EQ(flopos, 2);
}

// ---- Order, and the higher numbers.

TEST_F(Divide, TheLeftOperandIsTheDividend) {
  const model::Result left = evaluate(divide, points::numbers({8, 16}), scalar(whole(2)));
  EXPECT_EQ(left.space.elements[1].integer, 8);
  const model::Result right = evaluate(divide, scalar(whole(16)), points::numbers({2, 8}));
  EXPECT_EQ(right.space.elements[1].integer, 2);
  EXPECT_EQ(quotient(real(1), complex(0, 1)).parts, (model::Parts{0, -1}));
}

TEST_F(Divide, KnownQuotients) {
  EXPECT_EQ(quotient(complex(3, 4), complex(1, 2)).parts, (model::Parts{2.2, -0.4}));
  EXPECT_EQ(quotient(complex(3, 4), whole(2)).parts, (model::Parts{1.5, 2}));
  EXPECT_EQ(quotient(complex(0, 1), complex(0, 1)).parts, (model::Parts{1, 0}));
  EXPECT_EQ(quotient(quaternions(0, 0, 0, 1), quaternions(0, 1, 0, 0)).parts, (model::Parts{0, 0, -1, 0})) << "k by i";
  EXPECT_EQ(quotient(whole(1), quaternions(0, 0, 2, 0)).parts, (model::Parts{0, 0, -0.5, 0}));
  EXPECT_EQ(quotient(octonion({0, 0, 0, 0, 0, 1}), octonion({0, 1})).parts, (model::Parts{0, 0, 0, 0, -1, 0, 0, 0}))
      << "e5 times the conjugate of e1 is -(e5 e1), and e5 by e1 is e4";
}

TEST_F(Divide, AQuotientTimesTheDivisorIsTheDividend) {
  std::mt19937_64 random(21);
  std::uniform_real_distribution<double> part(-3, 3);
  const auto drawn = [&](std::size_t size) {
    model::Parts p(size);
    for (double &x : p) x = part(random);
    return p;
  };
  const auto number = [](const model::Parts &p) {
    if (p.size() == 1) return real(p[0]);
    if (p.size() == 2) return complex(p[0], p[1]);
    if (p.size() == 4) return quaternions(p[0], p[1], p[2], p[3]);
    return octonion({p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]});
  };
  for (int round = 0; round < 300; ++round)
    for (const std::size_t l : {1U, 2U, 4U, 8U})
      for (const std::size_t r : {1U, 2U, 4U, 8U}) {
        model::Parts a = drawn(l), b = drawn(r);
        if (round % 3 == 0) a.back() = 0;
        if (round % 5 == 0 && r > 1) b.back() = 0;
        const model::Parts q = quotient(number(a), number(b)).parts;
        const model::Parts back = value(multiply, number(q), number(b)).parts;
        a.resize(back.size());
        expectnear(back, a, 1e-12 / model::norm(b) * 100);
      }
}

// ---- Sums and differences.

TEST_F(Sums, IntegersSaturateAtTheLimitAndTurnRealBeyond) {
  const model::Value edge = value(add, whole(INT64_MAX), whole(1));
  EXPECT_EQ(edge.tag, tags::INTEGER);
  EXPECT_EQ(edge.integer, INT64_MAX);
  EXPECT_EQ(value(add, whole(INT64_MAX), whole(INT64_MAX)).parts, model::Parts{18446744073709551616.0});
  EXPECT_EQ(value(add, whole(INT64_MAX), whole(1024)).tag, tags::INTEGER) << "the sum rounds to the limit";
  EXPECT_EQ(value(add, whole(INT64_MAX), whole(2048)).tag, tags::REAL);
  EXPECT_EQ(value(subtract, whole(INT64_MIN), whole(1)).integer, INT64_MIN);
  EXPECT_EQ(value(add, whole(9007199254740992), whole(1)).integer, 9007199254740992) << "the lowest bit is lost";
}

TEST_F(Sums, FormsOfPlainResults) {
  EXPECT_EQ(value(add, whole(1, forms::BOOLEAN), whole(1, forms::BOOLEAN)).form, forms::NUMBER);
  EXPECT_EQ(value(add, whole(1, forms::BINARY), whole(1)).form, forms::NUMBER);
  EXPECT_EQ(value(add, real(1), whole(1)).form, forms::COMPUTED);
}

TEST_F(Sums, WhatOnlyTheHigherNumberHasPassesThrough) {
  EXPECT_EQ(value(add, whole(1), quaternions(1, 2, 3, 4)).parts, (model::Parts{2, 2, 3, 4}));
  EXPECT_EQ(value(add, octonion({1, 2, 3, 4, 5, 6, 7, 8}), complex(1, 1)).parts,
            (model::Parts{2, 3, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(value(subtract, quaternions(1, 2, 3, 4), complex(1, 1)).parts, (model::Parts{0, 1, 3, 4}));
  EXPECT_EQ(value(subtract, complex(1, 1), quaternions(1, 2, 3, 4)).parts, (model::Parts{0, -1, -3, -4}));
}

TEST_F(Sums, ADifferenceHasNoNegativeZero) {
  const model::Value v = value(subtract, whole(1), quaternions(1, 0, 2, 0));
  for (const std::size_t i : {0U, 1U, 3U}) EXPECT_FALSE(std::signbit(v.parts[i])) << i;
}

TEST_F(Sums, PolarOperandsAddAsTheNumbersThatTheyAre) {
  const model::Value v = value(add, complex(1, 2, forms::POLAR, attributes::DEGREES), complex(3, 4, forms::POLAR));
  EXPECT_EQ(v.parts, (model::Parts{4, 6}));
  EXPECT_EQ(v.form, forms::POLAR);
  EXPECT_EQ(v.attributes, attributes::DEGREES);
  EXPECT_EQ(value(subtract, real(1), complex(3, 4, forms::POLAR)).form, forms::POLAR);
}

TEST_F(Sums, FlopsOfSums) {
  const auto counted = [](const Element &l, const Element &r) {
    value(add, l, r);
    return flopos - 1;
  };
  EXPECT_EQ(counted(whole(1), whole(1)), 0);
  EXPECT_EQ(counted(real(1), whole(1)), 1);
  EXPECT_EQ(counted(complex(1, 1), complex(1, 1)), 2);
}

}  // namespace
