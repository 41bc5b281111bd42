// The comparisons: six under a tolerance, two exact, over every pair of kinds and shapes.
#include <random>

#include "dyads.h"
#include "spaces/hypercomplex.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

using namespace morvik;

using namespace dyads;

namespace {

// ---- The model.

enum Relation { LESS, NOTGREATER, EQUIVALENT, NOTLESS, GREATER, NOTEQUIVALENT, TESTS };
constexpr Instruction TOLERANT[TESTS] = {DYAD(less),    DYAD(notgreater), DYAD(equivalent),
                                         DYAD(notless), DYAD(greater),    DYAD(notequivalent)};
constexpr Instruction EXACT[] = {DYAD(identical), DYAD(notidentical)};

double asone(const Value &v) {
  if (v.tag == tags::INTEGER) return static_cast<double>(v.whole);
  if (v.tag == tags::REAL) return v.parts[0];
  double squares = 0, sign = 0;
  for (const double x : v.parts) {
    squares += x * x;
    if (sign == 0 && x != 0) sign = x > 0 ? 1 : -1;
  }
  return sign * std::sqrt(squares);
}

bool holds(Relation test, double a, double b, double c) {
  switch (test) {
    case LESS:
      return a < b && b - a > c;
    case GREATER:
      return a > b && a - b > c;
    case EQUIVALENT:
      return a == b || std::fabs(a - b) <= c;
    case NOTLESS:
      return !holds(LESS, a, b, c);
    case NOTGREATER:
      return !holds(GREATER, a, b, c);
    default:
      return !holds(EQUIVALENT, a, b, c);
  }
}

Model tolerant(Relation test, double c) {
  return [=](const Value &a, const Value &b) -> Outcome {
    if (isnumber(a) != isnumber(b)) return {162, {}};
    if (!isnumber(a)) return {0, truth(holds(test, static_cast<double>(a.whole), static_cast<double>(b.whole), 0))};
    return {0, truth(holds(test, asone(a), asone(b), c))};
  };
}

bool ident(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b || (a == INF && b == -INF);
}

Model exact(bool wanted) {
  return [=](const Value &a, const Value &b) -> Outcome {
    if (isnumber(a) != isnumber(b)) return {162, {}};
    bool equal = true;
    if (!isnumber(a) || (a.tag == tags::INTEGER && b.tag == tags::INTEGER)) {
      equal = a.whole == b.whole;
    } else {
      const Value left = promoted(a, tags::OCTONION), right = promoted(b, tags::OCTONION);
      for (std::size_t k = 0; k < 8; ++k) equal = equal && ident(left.parts[k], right.parts[k]);
    }
    return {0, truth(equal == wanted)};
  };
}

class Comparisons : public Dyads {
 protected:
  bool is(const Instruction &i, const Value &left, const Value &right) {
    const Outcome o = outcome(i, left, right);
    EXPECT_EQ(o.message, 0);
    EXPECT_EQ(o.value.tag, tags::INTEGER);
    EXPECT_EQ(o.value.form, forms::BOOLEAN);
    return o.value.whole != 0;
  }
};

// ---- Against the model.

TEST_F(Comparisons, EveryPairOfValuesUnderEveryTolerance) {
  for (const double c : {0.0, 1e-15, 0.5, 9.0, INF}) {
    settolerance(c);
    for (int test = 0; test < TESTS; ++test)
      everypair(TOLERANT[test], tolerant(static_cast<Relation>(test), c), samples());
  }
}

TEST_F(Comparisons, EveryPairOfShapes) {
  for (int test = 0; test < TESTS; ++test)
    everyshape(TOLERANT[test], tolerant(static_cast<Relation>(test), 1e-15), samples());
}

TEST_F(Comparisons, EverySlice) {
  settolerance(0.5);
  for (int test = 0; test < TESTS; ++test)
    everyslice(TOLERANT[test], tolerant(static_cast<Relation>(test), 0.5), samples());
}

TEST_F(Comparisons, ExactOverEveryPairShapeAndSlice) {
  settolerance(100);
  for (const bool wanted : {true, false}) {
    const Instruction &i = EXACT[wanted ? 0 : 1];
    everypair(i, exact(wanted), samples());
    everyshape(i, exact(wanted), samples());
    everyslice(i, exact(wanted), samples());
  }
}

// ---- What the tolerance promises.

TEST_F(Comparisons, LessEquivalentAndGreaterShareOutAllPairsOfNumbers) {
  std::mt19937 engine(1);
  std::uniform_real_distribution<double> near(-2, 2);
  for (const double c : {0.0, 1e-15, 0.25, 1.0}) {
    settolerance(c);
    for (int n = 0; n < 2000; ++n) {
      const Value kinds[] = {real(near(engine)), integer(static_cast<std::int64_t>(near(engine))),
                             complex(near(engine), near(engine)),
                             quaternion(near(engine), near(engine), near(engine), near(engine)),
                             octonion({near(engine), 0, 0, near(engine), 0, 0, 0, near(engine)})};
      const Value &a = kinds[engine() % 5], &b = kinds[engine() % 5];
      bool held[TESTS];
      for (int test = 0; test < TESTS; ++test) held[test] = is(TOLERANT[test], a, b);
      EXPECT_EQ(held[LESS] + held[EQUIVALENT] + held[GREATER], 1) << a << b;
      EXPECT_EQ(held[LESS], is(TOLERANT[GREATER], b, a)) << a << b;
      EXPECT_EQ(held[EQUIVALENT], is(TOLERANT[EQUIVALENT], b, a)) << a << b;
      EXPECT_NE(held[LESS], held[NOTLESS]);
      EXPECT_NE(held[GREATER], held[NOTGREATER]);
      EXPECT_NE(held[EQUIVALENT], held[NOTEQUIVALENT]);
    }
  }
}

TEST_F(Comparisons, TheToleranceItselfIsStillEquivalent) {
  settolerance(0.5);
  EXPECT_FALSE(is(TOLERANT[LESS], real(1), real(1.5)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], real(1), real(1.5)));
  EXPECT_TRUE(is(TOLERANT[LESS], real(1), real(std::nextafter(1.5, 2))));
  EXPECT_FALSE(is(TOLERANT[EQUIVALENT], real(1), real(std::nextafter(1.5, 2))));
}

TEST_F(Comparisons, AnIntegerServesAsTheTolerance) {
  points::drop(system[CT_SLOT]);
  system[CT_SLOT] = points::scalar(points::whole(2));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], integer(5), integer(7)));
  EXPECT_FALSE(is(TOLERANT[EQUIVALENT], integer(5), integer(8)));
}

TEST_F(Comparisons, TheFirstPartOfANumberServesAsTheTolerance) {
  for (const Element &e : {points::complex(2, 9), points::quaternions(2, 9, 9, 9), points::octonion({2, 9, 9})}) {
    points::drop(system[CT_SLOT]);
    system[CT_SLOT] = points::scalar(e);
    EXPECT_TRUE(is(TOLERANT[EQUIVALENT], integer(5), integer(7)));
    EXPECT_FALSE(is(TOLERANT[EQUIVALENT], integer(5), integer(8)));
  }
}

TEST_F(Comparisons, WhatIsNoNumberIsNoTolerance) {
  for (const Point &p : {points::text("a"), points::function({points::operation(instructions::ADD, "+")}),
                         points::vector({points::enclosed(points::numbers({5}))}), points::empty()}) {
    points::drop(system[CT_SLOT]);
    system[CT_SLOT] = p;
    EXPECT_TRUE(is(TOLERANT[EQUIVALENT], integer(5), integer(5)));
    EXPECT_FALSE(is(TOLERANT[EQUIVALENT], integer(5), real(5.5)));
  }
}

TEST_F(Comparisons, NothingIsNearNaN) {
  settolerance(INF);
  for (const Value &other : {real(NaN), real(1), real(INF), complex(NaN, 0), integer(3)}) {
    EXPECT_FALSE(is(TOLERANT[LESS], real(NaN), other));
    EXPECT_FALSE(is(TOLERANT[EQUIVALENT], real(NaN), other));
    EXPECT_FALSE(is(TOLERANT[GREATER], real(NaN), other));
  }
}

TEST_F(Comparisons, InfinitiesOfOneSignAreEquivalent) {
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], real(INF), real(INF)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], real(-INF), real(-INF)));
  EXPECT_FALSE(is(TOLERANT[LESS], real(-INF), real(-INF)));
  EXPECT_TRUE(is(TOLERANT[LESS], real(-INF), real(INF)));
  EXPECT_FALSE(is(TOLERANT[EQUIVALENT], real(-INF), real(INF)));
}

TEST_F(Comparisons, AHigherNumberComparesAsItsSignTimesItsModulus) {
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], complex(0, -2), integer(-2)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], complex(3, 4), integer(5)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], complex(-3, 4), complex(-4, -3)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], quaternion(0, -1, 2, 2), real(-3)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], octonion({0, 0, 0, 0, 0, 0, -3, 4}), real(-5)));
}

TEST_F(Comparisons, CharactersCompareByTheirCodesWhateverTheToleranceIs) {
  settolerance(100);
  EXPECT_TRUE(is(TOLERANT[LESS], letter('a'), letter('b')));
  EXPECT_FALSE(is(TOLERANT[EQUIVALENT], letter('a'), letter('b')));
  EXPECT_TRUE(is(TOLERANT[LESS], letter(127), letter(128)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], letter('a'), wide('a')));
}

// ---- What identity promises.

TEST_F(Comparisons, IdentityOfInfinitiesIsLopsided) {
  EXPECT_TRUE(is(EXACT[0], real(INF), real(-INF)));
  EXPECT_FALSE(is(EXACT[0], real(-INF), real(INF)));
  EXPECT_TRUE(is(EXACT[0], real(NaN), real(NaN)));
  EXPECT_FALSE(is(EXACT[0], real(NaN), real(INF)));
}

TEST_F(Comparisons, IdentityTellsTheLargestIntegersApart) {
  EXPECT_FALSE(is(EXACT[0], integer(GREATEST), integer(GREATEST - 1)));
  EXPECT_TRUE(is(TOLERANT[EQUIVALENT], integer(GREATEST), integer(GREATEST - 1)));
  EXPECT_TRUE(is(EXACT[0], integer(2), complex(2, 0)));
  EXPECT_FALSE(is(EXACT[0], integer(5), complex(3, 4)));
}

// ---- The frame, as far as comparisons are special in it.

TEST_F(Comparisons, ANameDoesNotPassToTheResult) {
  Point stack[2] = {points::scalar(points::named(points::real(3.5), "#X")), make({{real(3.5)}, {}})};
  ASSERT_EQ(run(TOLERANT[EQUIVALENT], stack), 0);
  EXPECT_TRUE(same(valuein(*stack[0].data_pointer), truth(true)));
  points::drop(stack[0]);
}

TEST_F(Comparisons, OneBlockAsBothOperandsIsOverwritten) {
  for (const Value &v : {real(2), integer(2), quaternion(1, 2, 3, 4)}) {
    Point stack[2] = {make({{v}, {3}}), {}};
    stack[1] = stack[0];
    referencepoint(&stack[1]);
    const Element *block = stack[0].data_pointer;
    ASSERT_EQ(run(TOLERANT[NOTLESS], stack), 0);
    EXPECT_EQ(stack[0].data_pointer, block);
    for (int k = 0; k < 3; ++k) EXPECT_TRUE(same(valuein(stack[0].data_pointer[k]), truth(true)));
    points::drop(stack[0]);
  }
}

TEST_F(Comparisons, OperandsWithoutElementsToCompareAreRefused) {
  Point stack[2] = {make({{integer(1)}, {}}), points::variable("x", 0, ISADDRESS)};
  stack[1].rank = ranks::ADDRESS;
  EXPECT_EQ(run(TOLERANT[LESS], stack), 162);
  points::drop(stack[0]);
  points::drop(stack[1]);
}

// A slice never reports and never jumps.
TEST_F(Comparisons, ASliceNotesItsFailure) {
  Point left = make({{integer(1), letter('a')}, {2}}), right = make({{integer(1)}, {2}});
  Reply reply{}, *const kept = from_coprocessor;
  from_coprocessor = &reply;
  to_coprocessors = {};
  to_coprocessors.count = 2;
  to_coprocessors.first = left.data_pointer;
  to_coprocessors.second = right.data_pointer;
  to_coprocessors.result = right.data_pointer;
  EXPECT_EQ(failures::landingof([&] { EXPECT_EQ(TOLERANT[LESS].slice(nullptr, nullptr, system, 0), 162); }), 0);
  EXPECT_EQ(reply.failure, 162);
  to_coprocessors = {};
  from_coprocessor = kept;
  points::drop(left);
  points::drop(right);
}

}  // namespace
