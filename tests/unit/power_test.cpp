// POWER, LOGARITHM and RESIDUE over every pair of kinds and shapes, and where one might wonder.
#include "dyads_functions.h"

using namespace dyads;

namespace {

constexpr Instruction POWER = NUMERIC_DYAD(power), LOGARITHM = NUMERIC_DYAD(logarithm), RESIDUE = NUMERIC_DYAD(residue);
constexpr double CLOSE = 1e-12;

// Numbers of every kind without infinities, poles and cuts.
Values plainsamples() {
  return {
      letter('a'),
      wide(0x3b1),
      integer(2),
      integer(-3),
      integer(5),
      real(2.5),
      real(-0.75),
      real(3),
      complex(1.5, 2.25),
      hyper(tags::COMPLEX, {-3, 4}, forms::POLAR, attributes::DEGREES),
      complex(0.5, -2),
      quaternion(1, 2, -0.5, 0.25),
      hyper(tags::QUATERNION, {-1, 0.5, 2, 1}, forms::POLAR),
      quaternion(0.5, 0, 0, -1.5),
      octonion({0.5, -1, 2, 0.25, 0, 1, 0.75, 0.5}),
      octonion({-1, 0, 0, 0, 0, 0, -1, 0.5}),
      hyper(tags::OCTONION, {2, 1, 0, 0, 0.5, 0, 0, 1}, forms::POLAR, attributes::DEGREES),
  };
}

bool issymbolic(const Value &a, const Value &b) {
  return !isnumber(a) || !isnumber(b);
}

// ---- POWER.

Value realpower(double base, double exponent) {
  if (exponent == 1.0 / 3) return {tags::REAL, forms::COMPUTED, 0, 0, {std::cbrt(base)}};
  if (base >= 0 || std::floor(exponent) == exponent || std::isnan(base) || std::isnan(exponent))
    return {tags::REAL, forms::COMPUTED, 0, 0, {exponent == 0.5 ? std::sqrt(base) : std::pow(base, exponent)}};
  const double size = std::exp(exponent * std::log(-base)), angle = exponent * 3.141592653589793;
  const auto part = [&](double x) { return std::fabs(x) < 1e-15 || std::fabs(size * x) < 1e-15 ? 0 : size * x; };
  return {tags::COMPLEX, forms::CARTESIAN, 0, 0, {part(std::cos(angle)), part(std::sin(angle))}, 1e-15};
}

bool onreals(const model::Parts &x) {
  return model::norm(x) == x[0] * x[0];
}

Outcome powermodel(const Value &a, const Value &b) {
  if (issymbolic(a, b)) return {162, {}};
  const std::int32_t tag = std::max({a.tag, b.tag, std::int32_t{tags::REAL}});
  const model::Parts base = partsof(a, tag), exponent = partsof(b, tag);
  if (tag == tags::REAL) return {0, realpower(base[0], exponent[0])};
  model::Parts result;
  if (onreals(exponent))
    result = along(base, [&](Complexes z) { return std::exp(std::log(z) * exponent[0]); });
  else if (onreals(base))
    result = along(exponent, [&](Complexes z) { return std::exp(std::log(Complexes{base[0], 0}) * z); });
  else
    result = along(model::product(along(base, [](Complexes z) { return std::log(z); }), exponent),
                   [](Complexes z) { return std::exp(z); });
  return {0, valueof(result, a, b, CLOSE)};
}

class Powers : public Dyads {};

TEST_F(Powers, EveryPairOfValues) {
  everypair(POWER, powermodel, plainsamples());
}
TEST_F(Powers, EveryShape) {
  everyshape(POWER, powermodel, plainsamples());
}
TEST_F(Powers, EverySlice) {
  everyslice(POWER, powermodel, plainsamples());
}

// Infinities, zeros, NaN and the ends of the doubles, among the reals.
TEST_F(Powers, EdgesOfTheReals) {
  Values reals;
  for (const Value &v : samples())
    if (v.tag == tags::INTEGER || v.tag == tags::REAL) reals.push_back(v);
  for (const double x : {0.5, -1.0, 1.0 / 3, -1.0 / 3, 1e-300, -2.5, 1e18, 0x1p-1022}) reals.push_back(real(x));
  everypair(POWER, powermodel, reals);
}

TEST_F(Powers, TheRulesOfNegativeBases) {
  EXPECT_EQ(outcome(POWER, integer(-8), real(1.0 / 3)).value.parts[0], -2);
  const Value root = outcome(POWER, integer(-8), real(0.5)).value;
  EXPECT_EQ(root.tag, tags::COMPLEX);
  EXPECT_EQ(root.form, forms::CARTESIAN);
  EXPECT_EQ(root.parts[0], 0) << "the clean rule";
  EXPECT_NEAR(root.parts[1], std::sqrt(8), 1e-14);
  EXPECT_EQ(outcome(POWER, integer(-2), integer(3)).value.parts[0], -8);
  EXPECT_EQ(outcome(POWER, integer(-2), real(-INF)).value.tag, tags::REAL) << "an infinity is whole";
  const Value small = outcome(POWER, real(-1e-20), real(0.75)).value;
  EXPECT_EQ(small.tag, tags::COMPLEX);
  EXPECT_EQ(small.parts[0], -small.parts[1]) << "1e-15 is not below 1e-15";
  const Value smaller = outcome(POWER, real(-1e-30), real(0.75)).value;
  EXPECT_EQ(smaller.parts[0], 0) << "components below 1e-15 are 0, though there is nothing beside them";
  EXPECT_EQ(smaller.parts[1], 0);
}

// A space of reals may give reals and complex numbers.
TEST_F(Powers, KindsOfAResultThatIsMixed) {
  Point stack[2] = {make({{real(4), real(-4)}, {2}}), make({{real(0.5)}, {}})};
  ASSERT_EQ(run(POWER, stack), 0);
  EXPECT_EQ(stack[0].type, ISVECTOR | HASREAL | HASCOMPLEX | COMPLEXED);
  points::drop(stack[0]);
  Point other[2] = {make({{real(-4)}, {3}}), make({{real(0.5)}, {}})};
  ASSERT_EQ(run(POWER, other), 0);
  EXPECT_EQ(other[0].type, ISVECTOR | HASCOMPLEX) << "no real among them";
  points::drop(other[0]);
}

TEST_F(Powers, ZeroAndOne) {
  for (const Value &zero : {complex(0, 0), quaternion(0, 0, 0, 0), octonion({})}) {
    EXPECT_EQ(outcome(POWER, zero, integer(0)).value.parts[0], 1) << "as 0 to the power 0 of reals";
    const Value power = outcome(POWER, zero, real(2.5)).value;
    EXPECT_EQ(power.tag, zero.tag);
    for (const double x : power.parts) EXPECT_EQ(x, 0);
    EXPECT_EQ(outcome(POWER, zero, integer(-1)).value.parts[0], INF);
  }
  const Value one = outcome(POWER, integer(1), complex(3, 4)).value;
  EXPECT_EQ(one.parts[0], 1);
  EXPECT_EQ(one.parts[1], 0);
}

// A real to a complex power goes by the same formula as a complex number on the axis.
TEST_F(Powers, PromotionAgreesWithPromotedOperands) {
  for (const double x : {2.5, -2.5, 0.001, -1e10})
    for (const double y : {0.5, -1.25, 3.0}) {
      const Value a = outcome(POWER, real(x), complex(y, 1)).value;
      const Value b = outcome(POWER, complex(x, 0), complex(y, 1)).value;
      EXPECT_EQ(a.parts, b.parts);
      const Value c = outcome(POWER, quaternion(1, x, 0, 0), real(y)).value;
      const Value d = outcome(POWER, quaternion(1, x, 0, 0), quaternion(y, 0, 0, 0)).value;
      EXPECT_EQ(c.parts, d.parts);
    }
}

// ---- LOGARITHM.

Outcome logarithmmodel(const Value &a, const Value &b) {
  if (issymbolic(a, b)) return {162, {}};
  const std::int32_t tag = std::max({a.tag, b.tag, std::int32_t{tags::REAL}});
  if (tag > tags::COMPLEX) return {994, {}};
  const model::Parts x = partsof(a, tag), base = partsof(b, tag);
  if (tag == tags::REAL) return {0, {tags::REAL, forms::COMPUTED, 0, 0, {std::log(x[0]) / std::log(base[0])}}};
  const Complexes w = std::log(Complexes{x[0], x[1]}) / std::log(Complexes{base[0], base[1]});
  return {0, valueof({w.real(), w.imag()}, a, b, CLOSE)};
}

class Logarithms : public Dyads {};

TEST_F(Logarithms, EveryPairOfValues) {
  everypair(LOGARITHM, logarithmmodel, plainsamples());
}
TEST_F(Logarithms, EveryShape) {
  everyshape(LOGARITHM, logarithmmodel, plainsamples());
}
TEST_F(Logarithms, EverySlice) {
  Values numbers;
  for (const Value &v : plainsamples())
    if (v.tag <= tags::COMPLEX) numbers.push_back(v);
  everyslice(LOGARITHM, logarithmmodel, numbers);
}

TEST_F(Logarithms, EdgesOfTheReals) {
  Values reals;
  for (const Value &v : samples())
    if (v.tag == tags::INTEGER || v.tag == tags::REAL) reals.push_back(v);
  everypair(LOGARITHM, logarithmmodel, reals);
  EXPECT_TRUE(std::isnan(outcome(LOGARITHM, integer(-8), integer(2)).value.parts[0]));
  EXPECT_EQ(outcome(LOGARITHM, integer(-8), integer(2)).value.tag, tags::REAL);
}

// What lies on the real axis goes by its sign alone.
TEST_F(Logarithms, AnImaginaryPartThatIsNothingBesideOne) {
  const Value positive = outcome(LOGARITHM, complex(8, 1e-17), integer(2)).value;
  EXPECT_EQ(positive.tag, tags::COMPLEX);
  EXPECT_EQ(positive.parts[0], std::log(8) / std::log(2));
  EXPECT_EQ(positive.parts[1], 0);
  const Value negative = outcome(LOGARITHM, complex(-8, -1e-17), integer(2)).value;
  EXPECT_EQ(negative.parts[0], std::log(8) / std::log(2));
  EXPECT_EQ(negative.parts[1], 3.141592653589793 / std::log(2));
  const Value tiny = outcome(LOGARITHM, complex(1e-30, 1e-17), integer(10)).value;
  EXPECT_NEAR(tiny.parts[0], -30, 1e-13) << "kept: though the imaginary part is the greater one";
}

// ---- RESIDUE.

Outcome residuemodel(const Value &a, const Value &b) {
  if (issymbolic(a, b)) return {162, {}};
  const std::int32_t tag = std::max(a.tag, b.tag);
  if (tag > tags::COMPLEX) return {994, {}};
  if (tag == tags::INTEGER) return {0, integer(b.whole == 0 ? a.whole : b.whole == -1 ? 0 : a.whole % b.whole)};
  const auto cut = [](double q) {
    return std::isnan(q) ? 0 : q >= 0x1p63 ? 0x1p63 : q <= -0x1p63 ? -0x1p63 : std::trunc(q);
  };
  const model::Parts x = partsof(a, tag), y = partsof(b, tag);
  if (tag == tags::REAL)
    return {0, {tags::REAL, forms::COMPUTED, 0, 0, {y[0] == 0 ? x[0] : x[0] - cut(x[0] / y[0]) * y[0]}}};
  const Complexes left{x[0], x[1]}, right{y[0], y[1]}, q = left / right;
  double whole = cut(q.real());
  const double up = cut(q.imag());
  if (q.real() - whole + (q.imag() - up) >= 1 && q.imag() - up <= q.real() - whole) whole += 1;
  const Complexes rest = left - Complexes{whole, up} * right;
  return {0, valueof({rest.real(), rest.imag()}, a, b, CLOSE)};
}

class Residues : public Dyads {
 protected:
  // The model divides otherwise, which shows where a quotient is whole but for rounding.
  Values samplesoff() {
    Values values = plainsamples();
    for (Value &v : values)
      if (v.tag == tags::COMPLEX) v.parts[1] += 1 / 128.0;
    return values;
  }
};

TEST_F(Residues, EveryPairOfValues) {
  everypair(RESIDUE, residuemodel, samplesoff());
}
TEST_F(Residues, EveryShape) {
  everyshape(RESIDUE, residuemodel, samplesoff());
}
TEST_F(Residues, EverySlice) {
  Values numbers;
  for (const Value &v : samplesoff())
    if (v.tag <= tags::COMPLEX) numbers.push_back(v);
  everyslice(RESIDUE, residuemodel, numbers);
}

TEST_F(Residues, EdgesOfTheReals) {
  Values reals;
  for (const Value &v : samples())
    if (v.tag == tags::INTEGER || v.tag == tags::REAL) reals.push_back(v);
  for (const std::int64_t x : {LEAST, GREATEST, std::int64_t{-1}, std::int64_t{0}}) reals.push_back(integer(x));
  everypair(RESIDUE, residuemodel, reals);
}

TEST_F(Residues, TheSignOfTheLeft) {
  EXPECT_EQ(outcome(RESIDUE, integer(-7), integer(3)).value.whole, -1);
  EXPECT_EQ(outcome(RESIDUE, integer(7), integer(-3)).value.whole, 1);
  EXPECT_EQ(outcome(RESIDUE, integer(LEAST), integer(-1)).value.whole, 0);
  EXPECT_EQ(outcome(RESIDUE, integer(LEAST), integer(0)).value.whole, LEAST);
  EXPECT_EQ(outcome(RESIDUE, real(-7.5), integer(2)).value.parts[0], -1.5);
  EXPECT_EQ(outcome(RESIDUE, real(7.5), real(0)).value.parts[0], 7.5);
  EXPECT_EQ(outcome(RESIDUE, real(1e300), real(1)).value.parts[0], 1e300) << "the quotient is cut to 64 bits";
}

// Integers and whole reals that doubles hold agree.
TEST_F(Residues, IntegersAgreeWithReals) {
  for (std::int64_t a = -20; a <= 20; ++a)
    for (std::int64_t b = -7; b <= 7; ++b)
      EXPECT_EQ(static_cast<double>(outcome(RESIDUE, integer(a), integer(b)).value.whole),
                outcome(RESIDUE, real(static_cast<double>(a)), real(static_cast<double>(b))).value.parts[0]);
}

TEST_F(Residues, ComplexNumbers) {
  // 7i3 over 2i1 is 3.4i-0.2; the fractions 0.4 and -0.2 do not reach 1.
  EXPECT_EQ(outcome(RESIDUE, complex(7, 3), complex(2, 1)).value.parts, (std::array<double, 8>{1, 0}));
  // 3.75i2.5 over 1: the fractions 0.75 and 0.5 reach 1, and the imaginary one is the lower: 4i2 goes.
  EXPECT_EQ(outcome(RESIDUE, complex(3.75, 2.5), integer(1)).value.parts, (std::array<double, 8>{-0.25, 0.5}));
  EXPECT_EQ(outcome(RESIDUE, complex(3.5, 2.75), integer(1)).value.parts, (std::array<double, 8>{0.5, 0.75}));
  EXPECT_EQ(outcome(RESIDUE, complex(3.5, 2.5), integer(1)).value.parts, (std::array<double, 8>{-0.5, 0.5}));
  EXPECT_EQ(outcome(RESIDUE, complex(3, 4), integer(0)).value.parts, (std::array<double, 8>{3, 4}));
  const Value none = outcome(RESIDUE, complex(NaN, 1), complex(1, 1)).value;
  EXPECT_EQ(none.parts[0], INF) << "what is no number shows infinity";
}

}  // namespace
