// MINIMUM and MAXIMUM over every pair of kinds and shapes.
#include "dyads.h"

using namespace dyads;

namespace {

constexpr Instruction MINIMUM = DYAD(minimum), MAXIMUM = DYAD(maximum);

double modulusof(const Value &v) {
  double squares = 0;
  for (const double x : v.parts) squares += x * x;
  return std::sqrt(squares);
}

// What a value goes by: the higher ones with the sign for the minimum, without it for the maximum.
double weight(const Value &v, bool smaller) {
  if (v.tag == tags::REAL) return v.parts[0];
  double sign = smaller ? 0 : 1;
  for (const double x : v.parts)
    if (sign == 0 && x != 0) sign = x > 0 ? 1 : -1;
  return sign * modulusof(v);
}

Model extremum(bool smaller) {
  return [=](const Value &a, const Value &b) -> Outcome {
    if (isnumber(a) != isnumber(b)) return {162, {}};
    const std::int32_t tag = std::max(a.tag, b.tag);
    const Value left = promoted(a, tag), right = promoted(b, tag);
    const bool uncounted = tag <= tags::INTEGER;
    const double l = uncounted ? 0 : weight(left, smaller), r = uncounted ? 0 : weight(right, smaller);
    const bool isright = uncounted ? (smaller ? right.whole < left.whole : right.whole > left.whole)
                                   : !std::isnan(l) && (std::isnan(r) || (smaller ? r < l : r > l));
    Value result = isright ? right : left;
    if (tag == tags::INTEGER)
      result.form = forms::NUMBER;
    else if (tag > tags::INTEGER)
      result = dressed(result, a, b);
    return {0, result};
  };
}

class Extrema : public Dyads {
 protected:
  Value of(const Instruction &i, const Value &left, const Value &right) {
    const Outcome o = outcome(i, left, right);
    EXPECT_EQ(o.message, 0);
    return o.value;
  }
};

TEST_F(Extrema, EveryPairShapeAndSlice) {
  for (const bool smaller : {true, false}) {
    const Instruction &i = smaller ? MINIMUM : MAXIMUM;
    everypair(i, extremum(smaller), samples());
    everyshape(i, extremum(smaller), samples());
    everyslice(i, extremum(smaller), samples());
  }
}

TEST_F(Extrema, IntegersAreTheirOwnExtremes) {
  EXPECT_TRUE(same(of(MAXIMUM, integer(GREATEST), integer(GREATEST - 1)), integer(GREATEST)));
  EXPECT_TRUE(same(of(MINIMUM, integer(LEAST + 1), integer(LEAST)), integer(LEAST)));
  EXPECT_TRUE(same(of(MINIMUM, truth(true), truth(false)), integer(0)));
}

TEST_F(Extrema, AnIntegerBesideARealIsARealEvenWhereItIsChosen) {
  const Value v = of(MINIMUM, integer(2), real(2.5));
  EXPECT_EQ(v.tag, tags::REAL);
  EXPECT_EQ(v.form, forms::COMPUTED);
  EXPECT_EQ(v.parts[0], 2);
}

TEST_F(Extrema, TheMinimumLooksAtTheSignTheMaximumDoesNot) {
  const Value negative = quaternion(0, -3, 4, 0), positive = quaternion(1, 1, 1, 1);
  EXPECT_EQ(of(MINIMUM, negative, positive).parts, negative.parts);
  EXPECT_EQ(of(MINIMUM, positive, negative).parts, negative.parts);
  EXPECT_EQ(of(MAXIMUM, negative, positive).parts, negative.parts);
  EXPECT_EQ(of(MAXIMUM, complex(-3, 4), integer(4)).parts, complex(-3, 4).parts);
  EXPECT_EQ(of(MAXIMUM, integer(-5), complex(0, 1)).parts, complex(-5, 0).parts);
  EXPECT_EQ(of(MINIMUM, octonion({0, 0, 0, 0, 0, 0, 0, 2}), real(-1)).parts, octonion({-1}).parts);
}

TEST_F(Extrema, OfATieTheLeftOne) {
  EXPECT_EQ(of(MAXIMUM, complex(3, 4), complex(4, 3)).parts, complex(3, 4).parts);
  EXPECT_EQ(of(MINIMUM, complex(4, 3), complex(3, 4)).parts, complex(4, 3).parts);
}

TEST_F(Extrema, WhatIsNoNumberOutweighsAll) {
  for (const Instruction &i : {MINIMUM, MAXIMUM})
    for (const double other : {1.0, INF, -INF, NaN}) {
      EXPECT_TRUE(std::isnan(of(i, real(NaN), real(other)).parts[0]));
      EXPECT_TRUE(std::isnan(of(i, real(other), real(NaN)).parts[0]));
    }
}

TEST_F(Extrema, CharactersGoByTheirCodes) {
  EXPECT_TRUE(same(of(MINIMUM, letter('b'), letter('a')), letter('a')));
  EXPECT_TRUE(same(of(MAXIMUM, letter(128), letter(127)), letter(128)));
  EXPECT_TRUE(same(of(MAXIMUM, wide(0x3b1), wide(0x3b2)), wide(0x3b2)));
  EXPECT_TRUE(same(of(MAXIMUM, letter('z'), wide('a')), wide('z')));
  EXPECT_EQ(outcome(MINIMUM, letter('a'), integer(1)).message, 162);
}

TEST_F(Extrema, TheBlockOfAChosenOctonionIsNotShared) {
  const Value larger = octonion({9, 1, 2, 3, 4, 5, 6, 7}), smaller = octonion({1});
  Point stack[2] = {make({{smaller}, {2}}), make({{larger}, {2}})};
  Point kept = stack[1];
  referencepoint(&kept);
  ASSERT_EQ(run(MAXIMUM, stack), 0);
  for (int k = 0; k < 2; ++k) {
    EXPECT_NE(stack[0].data_pointer[k].octonion, kept.data_pointer[k].octonion);
    EXPECT_EQ(valuein(stack[0].data_pointer[k]).parts, larger.parts);
  }
  points::drop(stack[0]);
  points::drop(kept);
}

}  // namespace
