// Numbers, bit patterns and constants: each form is the element that it spells.
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <numbers>
#include <vector>

#include "frontend/constants.h"
#include "frontend/literals.h"
#include "literals.h"
#include "spaces/convert.h"

using namespace morvik;

namespace {

constexpr double PI = 3.141592653589793;

// ---- Integers and reals.

TEST_F(Literals, Integers) {
  expectinteger("0", 0);
  expectinteger("12", 12);
  expectinteger("-3", -3);
  expectinteger(
      "\xAF"
      "3",
      -3);
  expectinteger("-0", 0);
  expectinteger("007", 7);
  expectinteger("999999999999999", 999999999999999);
  expectinteger("9007199254740992", 9007199254740992);
  expectinteger("2E3", 2000);
  expectinteger("2e+3", 2000);
  expectinteger("-2E3", -2000);
  expectinteger("1E18", 1000000000000000000);
}

TEST_F(Literals, IntegersPassThroughADouble) {
  expectinteger("9007199254740993", 9007199254740992);
  expectinteger("1234567890123456789", 1234567890123456768);
  expectinteger("9223372036854775807", std::numeric_limits<std::int64_t>::max());
  expectinteger("9223372036854775808", std::numeric_limits<std::int64_t>::max());
  expectinteger("-9223372036854775808", std::numeric_limits<std::int64_t>::min());
  expectinteger("-9223372036854775809", std::numeric_limits<std::int64_t>::min());
}

TEST_F(Literals, IntegersTooLargeAreReals) {
  expectreal("1E30", 1E30);
  expectreal("9223372036854777856", 9223372036854777856.0);
  expectreal("-1E19", -1E19);
  expectreal("1E400", std::numeric_limits<double>::infinity());
}

TEST_F(Literals, Reals) {
  expectreal("1.5", 1.5);
  expectreal(".5", 0.5);
  expectreal("-.5", -0.5);
  expectreal(
      "\xAF.5E\xAF"
      "3",
      -0.5E-3);
  expectreal("2E-3", 2E-3);
  expectreal("2.0", 2.0);
  expectreal("-0.0", -0.0);
  expectreal("1.5E+10", 1.5E10);
  expectreal("Inf", std::numeric_limits<double>::infinity());
  expectreal("inf", std::numeric_limits<double>::infinity());
  expectreal("-Infinity", -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(element("NaN").real));
  EXPECT_TRUE(std::isnan(element("nan").real));
}

TEST_F(Literals, APointWithoutADigitEndsTheText) {
  EXPECT_EQ(compile("1. 2 ."), 2);
  EXPECT_EQ(programme[0].data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(rest, " 2 .");
}

TEST_F(Literals, AMinusBelongsToTheDigitAfterIt) {
  EXPECT_EQ(compile("- 3 ."), 3);
  EXPECT_EQ(programme[0].instruction, instructions::SUBTRACT);
  EXPECT_EQ(compile("3-2 ."), 3);
  EXPECT_EQ(programme[0].data_pointer->integer, 3);
  EXPECT_EQ(programme[1].data_pointer->integer, -2);
  EXPECT_EQ(compile("-NaN ."), 3);
  EXPECT_EQ(programme[0].instruction, instructions::SUBTRACT);
  EXPECT_EQ(programme[1].rank, ranks::VARIABLE);
  EXPECT_STREQ(programme[1].name, "NaN");
}

TEST_F(Literals, ReadDoubleStopsWhereTheNumberDoes) {
  const char *after;
  EXPECT_EQ(readdouble("1.5i2", &after), 1.5);
  EXPECT_STREQ(after, "i2");
  EXPECT_EQ(readdouble("1E999p2", &after), std::numeric_limits<double>::infinity());
  EXPECT_STREQ(after, "p2");
  EXPECT_EQ(readdouble("0x10", &after), 0.0);
  EXPECT_STREQ(after, "x10");
  EXPECT_EQ(readdouble("", &after), 0.0);
}

TEST_F(Literals, SaturationOfDoubles) {
  EXPECT_EQ(saturate(1e300), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(saturate(-1e300), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(saturate(std::nan("")), 0);
  EXPECT_EQ(saturate(-2.9), -2);
}

// ---- Hypercomplex numbers.

TEST_F(Literals, Complex) {
  expectcartesian("3i4", {3, 4});
  expectcartesian("-1.5i-2E1", {-1.5, -20});
  expectcartesian(
      "\xAF"
      "1i\xAF"
      "2",
      {-1, -2});
  expectcartesian("infi2", {HUGE_VAL, 2});
  expectcartesian("Infinityi-Inf", {HUGE_VAL, -HUGE_VAL});
  expectcartesian("1iinf", {1, HUGE_VAL});
  expectcartesian("infiinf", {HUGE_VAL, HUGE_VAL});
  expectcartesian("NaNi1", {NAN, 1});
}

TEST_F(Literals, Quaternions) {
  expectcartesian("1j2", {1, 0, 2, 0});
  expectcartesian("1k2", {1, 0, 0, 2});
  expectcartesian("1i2j3k4", {1, 2, 3, 4});
  expectcartesian("1i2k4", {1, 2, 0, 4});
  expectcartesian("1jinfkinf", {1, 0, HUGE_VAL, HUGE_VAL});
  expectcartesian("-infi-infjinfknan", {-HUGE_VAL, -HUGE_VAL, HUGE_VAL, NAN});
}

TEST_F(Literals, Octonions) {
  expectcartesian("1l2", {1, 0, 0, 0, 2, 0, 0, 0});
  expectcartesian("1i2j3k4l5m6n7o8", {1, 2, 3, 4, 5, 6, 7, 8});
  expectcartesian("1n7", {1, 0, 0, 0, 0, 0, 7, 0});
  expectcartesian("1i2o8", {1, 2, 0, 0, 0, 0, 0, 8});
  expectcartesian("infiinfninfonan", {HUGE_VAL, HUGE_VAL, 0, 0, 0, 0, HUGE_VAL, NAN});
  EXPECT_EQ(referencecount(element("1o1").octonion), 1);
}

TEST_F(Literals, Prefixes) {
  expectparts("#1i2", tags::COMPLEX, forms::NUMBER, 0, {1, 2});
  expectparts("r1i2", tags::COMPLEX, forms::CARTESIAN, attributes::PREFIX_R, {1, 2});
  expectparts("#r1k2", tags::QUATERNION, forms::NUMBER, attributes::PREFIX_R, {1, 0, 0, 2});
  expectparts("#1o2", tags::OCTONION, forms::NUMBER, 0, {1, 0, 0, 0, 0, 0, 0, 2});
  expectparts("r2p0", tags::COMPLEX, forms::POLAR, attributes::PREFIX_R, {2, 0});
  expectparts("d2p0", tags::COMPLEX, forms::POLAR, attributes::DEGREES, {2, 0});
  expectparts("dr2p0", tags::COMPLEX, forms::POLAR, attributes::DEGREES | attributes::PREFIX_R, {2, 0});
}

TEST_F(Literals, Polar) {
  expectparts("1p0", tags::COMPLEX, forms::POLAR, 0, {1, 0});
  expectparts("2p0.5", tags::COMPLEX, forms::POLAR, 0, {2 * std::cos(0.5), 2 * std::sin(0.5)});
  expectparts("d2p30", tags::COMPLEX, forms::POLAR, attributes::DEGREES,
              {2 * std::cos(30.0 / 180 * PI), 2 * std::sin(30.0 / 180 * PI)});
  // The real part is cleaned.
  expectparts("d1p90", tags::COMPLEX, forms::POLAR, attributes::DEGREES, {0, 1});
}

TEST_F(Literals, EveryAngleReachesItsPlace) {
  double four[4] = {2, 0.1, 0.2, 0.3};
  cartesianquat(four, four);
  expectparts("2p0.1q0.2r0.3", tags::QUATERNION, forms::POLAR, 0, {four, four + 4});
  double missing[4] = {2, 0, 0.2, 0};
  cartesianquat(missing, missing);
  expectparts("2q0.2", tags::QUATERNION, forms::POLAR, 0, {missing, missing + 4});
  double eight[8] = {2, 1, 2, 3, 4, 5, 6, 7};
  cartesianocto(eight, eight);
  expectparts("2p1q2r3s4t5u6v7", tags::OCTONION, forms::POLAR, 0, {eight, eight + 8});
  double few[8] = {2, 0, 0, 0, 1, 0, 0, 0.5};
  cartesianocto(few, few);
  expectparts("2s1v.5", tags::OCTONION, forms::POLAR, 0, {few, few + 8});
}

// The angles of a degree number are what the same angles in radians are.
TEST_F(Literals, DegreesOfEveryAngle) {
  const auto parts = [this](const std::string &text) {
    const Element &e = element(text);
    std::vector<double> found(e.octonion->part, e.octonion->part + 8);
    return found;
  };
  char radians[256];
  const char *letters = "pqrstuv";
  std::string text = "2", degrees = "d2";
  for (int i = 0; i < 7; ++i) {
    std::snprintf(radians, sizeof radians, "%c%.17g", letters[i], (10.0 + i) / 180 * PI);
    text += radians;
    degrees += letters[i] + std::to_string(10 + i);
  }
  const std::vector<double> wanted = parts(text), found = parts(degrees);
  for (std::size_t i = 0; i < 8; ++i) EXPECT_NEAR(found[i], wanted[i], 1e-12) << i;
}

TEST_F(Literals, ThePrefixOfAPolarQuaternionServesAsItsLastAngle) {
  const Quaternion odd = quaternion(element("r0.5p0.1q0.2"));
  const Quaternion plain = quaternion(element("0.5p0.1q0.2r0.5"));
  const Quaternion full = quaternion(element("r0.5p0.1q0.2r0.3"));
  const Quaternion unprefixed = quaternion(element("0.5p0.1q0.2r0.3"));
  for (int i = 0; i < 4; ++i) {
    EXPECT_DOUBLE_EQ(odd.part[i], plain.part[i]);
    EXPECT_DOUBLE_EQ(full.part[i], unprefixed.part[i]);
  }
}

TEST_F(Literals, ALongTokenIsCut) {
  const std::string zeros(300, '0');
  // The letter is beyond the 255 bytes that count.
  EXPECT_EQ(quaternion(element("1." + zeros + "j2")).part[2], 0.0);
  EXPECT_NE(err.find("[Trelk] error in QUATERNION text: [1.000"), std::string::npos);
  EXPECT_EQ(quaternion(element("1i2." + zeros + "j2")).part[1], 0.0);
  EXPECT_NE(err.find("[lexnum] error in QUATERNION: [1i2.000"), std::string::npos);
  const Element cut = element("1." + zeros + "i2");
  EXPECT_EQ(cut.complex.re, 1);
  EXPECT_EQ(cut.complex.im, 0);
}

// ---- Bit patterns.

TEST_F(Literals, BinaryNumbers) {
  const Point &character = single("0#1");
  EXPECT_EQ(character.type, 0x10100u);
  EXPECT_EQ(character.data_pointer->tag, tags::ASCII);
  EXPECT_EQ(character.data_pointer->form, forms::BINARY);
  EXPECT_EQ(character.data_pointer->ascii, 1);
  EXPECT_EQ(element("0#00000001").tag, tags::ASCII);
  const Point &number = single("0#000000001");
  EXPECT_EQ(number.type, 0x10400u);
  EXPECT_EQ(number.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(number.data_pointer->form, forms::BINARY);
  EXPECT_EQ(number.data_pointer->integer, 1);
  EXPECT_EQ(element("0#111111111").integer, 511);
  EXPECT_EQ(element("0#11111111").ascii, 255);
  EXPECT_EQ(element("0#1|1").ascii, 5);
  EXPECT_EQ(out, "");
}

TEST_F(Literals, BinaryNumbersOfMoreThan64Digits) {
  const std::string ones(64, '1');
  EXPECT_EQ(element("0#" + ones).integer, -1);
  EXPECT_FALSE(reported(809));
  EXPECT_EQ(element("0#000" + ones).integer, -1);
  EXPECT_FALSE(reported(809));
  EXPECT_EQ(element("0#1" + std::string(64, '0')).integer, std::numeric_limits<std::int64_t>::min());
  EXPECT_TRUE(reported(809));
  EXPECT_EQ(element("0#" + std::string(10000, '1')).integer, -1);
  EXPECT_TRUE(reported(809));
  // Only what the token's buffer holds counts.
  EXPECT_EQ(element("0#" + std::string(10000, '0') + "1").integer, 0);
  EXPECT_FALSE(reported(809));
}

TEST_F(Literals, BinaryNumbersInAVectorPrintTheirLength) {
  const Point &p = single("(0#1 0#0000000011)");
  EXPECT_EQ(out, "1\n10\n");
  EXPECT_EQ(p.type, 0x40400u);
  EXPECT_EQ(integers(p), (Extents{1, 3}));
  EXPECT_EQ(p.data_pointer[0].form, forms::BINARY);
}

TEST_F(Literals, BinaryCharacters) {
  const Point &p = single("`0#1000001`");
  EXPECT_EQ(p.type, 0x10100u);
  EXPECT_EQ(p.data_pointer->ascii, 'A');
  EXPECT_EQ(p.data_pointer->form, forms::BINARY);
  EXPECT_EQ(element("`0#0001000001`").ascii, 0x10);
  EXPECT_TRUE(reported(810));
  EXPECT_EQ(bytes(single("(`0#1000001` `0#1000010`)")), "AB");
  EXPECT_EQ(out, "");
  const Point &inner = single("'x`0#100000`y'");
  EXPECT_EQ(bytes(inner), "x y");
  EXPECT_EQ(inner.data_pointer[0].form, 0);
  EXPECT_EQ(inner.data_pointer[1].form, forms::BINARY);
}

// ---- Constants.

TEST_F(Literals, EveryNamedConstant) {
  for (const Constant &constant : Constants) {
    for (const char *spelling : constant.spellings) {
      const Point &p = single(spelling);
      if (constant.tag == 0) {
        EXPECT_EQ(p.type, 0x240000u) << spelling;
        EXPECT_EQ(p.rank, 1) << spelling;
        EXPECT_EQ(p.data_pointer, nullptr) << spelling;
        EXPECT_EQ(shape(p), Extents{0}) << spelling;
        continue;
      }
      EXPECT_EQ(p.type, ISSCALAR | kindbit(constant.tag)) << spelling;
      EXPECT_EQ(p.data_pointer->tag, constant.tag) << spelling;
      EXPECT_EQ(p.data_pointer->form, constant.form) << spelling;
      EXPECT_EQ(p.data_pointer->attributes, attributes::NAMED) << spelling;
      EXPECT_STREQ(p.data_pointer->name, spelling);
      EXPECT_EQ(p.data_pointer->integer, constant.bits) << spelling;
      const Point &v = single(std::string("(") + spelling + " 5)");
      EXPECT_EQ(v.elements, 2u) << spelling;
      EXPECT_STREQ(v.data_pointer[0].name, spelling);
      EXPECT_EQ(v.data_pointer[0].integer, constant.bits) << spelling;
      if (!constant.issigned) continue;
      const std::string negated = std::string("-") + spelling;
      EXPECT_EQ(element(negated).real, -std::bit_cast<double>(constant.bits)) << spelling;
      EXPECT_EQ(element(negated).name, negated);
    }
  }
}

// One spelling a row.
TEST_F(Literals, ValuesOfConstants) {
  using namespace std::numbers;
  const std::map<std::string, double> reals = {{"#PI", pi},
                                               {"#2PI", 2 * pi},
                                               {"#PI_2", pi / 2},
                                               {"#PI_4", pi / 4},
                                               {"#1_PI", inv_pi},
                                               {"#2_PI", 2 * inv_pi},
                                               {"#2_SQRTPI", 2 * inv_sqrtpi},
                                               {"#SQRT2", sqrt2},
                                               {"#SQRT3", sqrt3},
                                               {"#1_SQRT2", sqrt2 / 2},
                                               {"#E", e},
                                               {"#LOG2E", log2e},
                                               {"#LOG10E", log10e},
                                               {"#LN2", ln2},
                                               {"#LN10", ln10}};
  const std::map<std::string, std::int64_t> integers = {
      {"F", 0},       {"T", 1},       {"#END", 0},    {"#SIN", 1},      {"#COS", 2},      {"#TAN", 3},
      {"#SINH", 5},   {"#COSH", 6},   {"#TANH", 7},   {"#ASIN", -1},    {"#ACOS", -2},    {"#ATAN", -3},
      {"#ASINH", -5}, {"#ACOSH", -6}, {"#ATANH", -7}, {"#SQRTX2p1", 4}, {"#SQRTX2m1", -4}};
  EXPECT_EQ(Constants.size(), reals.size() + integers.size() + 1) << "all rows but #NIL";
  for (const auto &[spelling, value] : reals) EXPECT_EQ(element(spelling).real, value) << spelling;
  for (const auto &[spelling, value] : integers) EXPECT_EQ(element(spelling).integer, value) << spelling;
  EXPECT_EQ(element("T").form, forms::BOOLEAN);
  EXPECT_EQ(element("#SQRTX2m1").form, forms::NAMED);
}

}  // namespace
