// The logic instructions: eight functions of two truths, over every pair of kinds and shapes.
#include <random>

#include "dyads.h"

using namespace dyads;

namespace {

// ---- The model.

enum Relation { AND, OR, NAND, NOR, STRONGAND, STRONGOR, STRONGNAND, STRONGNOR, RELATIONS };
constexpr Instruction LOGIC[RELATIONS] = {DYAD(And),       DYAD(Or),       DYAD(nand),       DYAD(nor),
                                          DYAD(strongand), DYAD(strongor), DYAD(strongnand), DYAD(strongnor)};

double combined(Relation relation, double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return NaN;
  a = std::fmin(std::fmax(a, 0), 1);
  b = std::fmin(std::fmax(b, 0), 1);
  switch (relation) {
    case AND:
      return std::fmin(a, b);
    case OR:
      return std::fmax(a, b);
    case STRONGAND:
      return std::fmax(0, a + b - 1);
    case STRONGOR:
      return std::fmin(1, a + b);
    case NAND:
      return 1 - combined(AND, a, b);
    case NOR:
      return 1 - combined(OR, a, b);
    case STRONGNAND:
      return 1 - combined(STRONGAND, a, b);
    default:
      return 1 - combined(STRONGOR, a, b);
  }
}

// Component k of an operand beside one of so many components: an integer or a real is the same everywhere.
double truthat(const Value &v, std::size_t k) {
  if (v.tag == tags::INTEGER) return v.whole > 0 ? 1 : 0;
  return v.parts[v.tag == tags::REAL ? 0 : k];
}

Model logical(Relation relation) {
  return [=](const Value &a, const Value &b) -> Outcome {
    if (!isnumber(a) || !isnumber(b)) return {162, {}};
    if (a.tag == tags::INTEGER && b.tag == tags::INTEGER)
      return {0, truth(combined(relation, truthat(a, 0), truthat(b, 0)) == 1)};
    Value result;
    result.tag = std::max(a.tag, b.tag);
    for (std::size_t k = 0; k < static_cast<std::size_t>(count(result.tag)); ++k) {
      const auto lacks = [&](const Value &v) {
        return v.tag >= tags::COMPLEX && k >= static_cast<std::size_t>(count(v.tag));
      };
      result.parts[k] = lacks(a)   ? b.parts[k]
                        : lacks(b) ? a.parts[k]
                                   : combined(relation, truthat(a, k), truthat(b, k));
    }
    return {0, dressed(result, a, b)};
  };
}

class Logics : public Dyads {
 protected:
  Value of(Relation relation, const Value &left, const Value &right) {
    const Outcome o = outcome(LOGIC[relation], left, right);
    EXPECT_EQ(o.message, 0);
    return o.value;
  }
};

void expectparts(const Value &v, const std::vector<double> &parts) {
  ASSERT_EQ(static_cast<std::size_t>(count(v.tag)), parts.size());
  for (std::size_t k = 0; k < parts.size(); ++k) EXPECT_TRUE(same(v.parts[k], parts[k])) << v << " at " << k;
}

// ---- Against the model.

TEST_F(Logics, EveryPairOfValues) {
  for (int i = 0; i < RELATIONS; ++i) everypair(LOGIC[i], logical(static_cast<Relation>(i)), samples());
}

TEST_F(Logics, EveryPairOfShapes) {
  for (int i = 0; i < RELATIONS; ++i) everyshape(LOGIC[i], logical(static_cast<Relation>(i)), samples());
}

TEST_F(Logics, EverySlice) {
  for (int i = 0; i < RELATIONS; ++i) everyslice(LOGIC[i], logical(static_cast<Relation>(i)), samples());
}

// ---- In figures.

TEST_F(Logics, PlainTruths) {
  const int expected[RELATIONS][4] = {{0, 0, 0, 1}, {0, 1, 1, 1}, {1, 1, 1, 0}, {1, 0, 0, 0},
                                      {0, 0, 0, 1}, {0, 1, 1, 1}, {1, 1, 1, 0}, {1, 0, 0, 0}};
  const Value plain[2] = {integer(-3), integer(7)};
  for (int i = 0; i < RELATIONS; ++i)
    for (int pair = 0; pair < 4; ++pair) {
      const Value v = of(static_cast<Relation>(i), plain[pair / 2], plain[pair % 2]);
      EXPECT_TRUE(same(v, truth(expected[i][pair] != 0))) << LOGIC[i].name << pair << v;
    }
}

TEST_F(Logics, Probabilities) {
  const double expected[RELATIONS] = {0.25, 0.875, 0.75, 0.125, 0.125, 1, 0.875, 0};
  for (int i = 0; i < RELATIONS; ++i) expectparts(of(static_cast<Relation>(i), real(0.25), real(0.875)), {expected[i]});
}

TEST_F(Logics, WhatIsOutsideIsAsTrueAsCanBe) {
  expectparts(of(AND, real(1e300), real(0.5)), {0.5});
  expectparts(of(OR, real(-INF), real(0.5)), {0.5});
  expectparts(of(STRONGAND, real(INF), real(5)), {1});
  expectparts(of(STRONGOR, real(-1), real(-1)), {0});
  EXPECT_FALSE(std::signbit(of(AND, real(-0.0), real(-0.0)).parts[0]));
}

TEST_F(Logics, AnIntegerBesideARealIsThatRealTruth) {
  const Value v = of(AND, integer(5), real(0.5));
  EXPECT_EQ(v.tag, tags::REAL);
  EXPECT_EQ(v.form, forms::COMPUTED);
  expectparts(v, {0.5});
}

TEST_F(Logics, ARealMeetsEachComponent) {
  expectparts(of(AND, real(0.5), quaternion(0.25, 1, 0.75, 0)), {0.25, 0.5, 0.5, 0});
  expectparts(of(OR, complex(0.25, -1), integer(1)), {1, 1});
  expectparts(of(NAND, octonion({0.25, 1, 0.75, 0, 2, 0.5, 0, 1}), integer(1)), {0.75, 0, 0.25, 1, 0, 0.5, 1, 0});
}

TEST_F(Logics, WhatOnlyTheHigherRowHasPasses) {
  expectparts(of(AND, complex(0.5, 0.25), quaternion(1, 1, 0.75, -2)), {0.5, 0.25, 0.75, -2});
  expectparts(of(NOR, quaternion(1, 1, 0.75, 3), complex(0.5, 0.25)), {0, 0, 0.75, 3});
  expectparts(of(OR, octonion({0, 0, 0, 0, 0.5, 0.25, NaN, NaN}), quaternion(1, 0.5, 0, 0)),
              {1, 0.5, 0, 0, 0.5, 0.25, NaN, NaN});
}

TEST_F(Logics, NaNStaysInItsPlace) {
  for (int i = 0; i < RELATIONS; ++i)
    for (const double other : {0.0, 0.5, 1.0, NaN}) {
      expectparts(of(static_cast<Relation>(i), real(NaN), real(other)), {NaN});
      expectparts(of(static_cast<Relation>(i), real(other), real(NaN)), {NaN});
    }
  expectparts(of(AND, quaternion(1, 1, 1, NaN), quaternion(0.5, NaN, 1, 1)), {0.5, NaN, 1, NaN});
}

TEST_F(Logics, ThePolarFormStays) {
  const Value polar = hyper(tags::COMPLEX, {0.5, 1}, forms::POLAR, attributes::DEGREES);
  EXPECT_EQ(of(AND, real(1), polar).form, forms::POLAR);
  EXPECT_EQ(of(AND, real(1), polar).attributes, attributes::DEGREES);
  EXPECT_EQ(of(AND, complex(1, 1), polar).form, forms::CARTESIAN);
}

TEST_F(Logics, CharactersAreNoTruths) {
  EXPECT_EQ(outcome(LOGIC[AND], letter('a'), letter('a')).message, 162);
  EXPECT_EQ(outcome(LOGIC[NOR], wide('a'), integer(1)).message, 162);
}

// ---- Laws.

TEST_F(Logics, LawsOfTruthHold) {
  std::mt19937 engine(2);
  // Multiples of 1/64, whose sums are exact.
  const auto around = [](std::mt19937 &bits) { return static_cast<double>(bits() % 128) / 64 - 0.5; };
  for (int n = 0; n < 2000; ++n) {
    const Value a = real(around(engine)), b = complex(around(engine), around(engine));
    for (int i = 0; i < RELATIONS; ++i) {
      const Value v = of(static_cast<Relation>(i), a, b), turned = of(static_cast<Relation>(i), b, a);
      EXPECT_TRUE(same(v, turned)) << LOGIC[i].name;
      EXPECT_GE(v.parts[0], 0);
      EXPECT_LE(v.parts[1], 1);
    }
    EXPECT_LE(of(STRONGAND, a, b).parts[0], of(AND, a, b).parts[0]);
    EXPECT_LE(of(AND, a, b).parts[1], of(OR, a, b).parts[1]);
    EXPECT_LE(of(OR, a, b).parts[0], of(STRONGOR, a, b).parts[0]);
    EXPECT_TRUE(same(of(AND, a, a).parts[0], of(OR, a, a).parts[0]));
  }
}

}  // namespace
