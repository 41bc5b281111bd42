// Numbers: each form, where it stops, and what it falls back to.
#include <gtest/gtest.h>

#include <string>

#include "frontend/tokens.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

// The first token of a text that ends there, in both conditions that read numbers.
void expectnumber(const std::string &number, const char *rule) {
  const std::string expected = rule + (" " + number);
  EXPECT_EQ(tokensof(number), (Tokens{expected}));
  EXPECT_EQ(tokensof(number + " "), (Tokens{expected}));
  EXPECT_EQ(tokensof(number + ")", Condition::VECTOR), (Tokens{expected, "CLOSEVECTOR )"}));
}

}  // namespace

TEST(ScannerNumbers, Integers) {
  for (const char *text : {"0", "12", "-3",
                           "\xAF"
                           "3",
                           "007", "2E3", "2e3", "2E+3", "-2E03", "99999999999999999999"})
    expectnumber(text, "INTEGER");
  EXPECT_EQ(tokensof("3-2"), (Tokens{"INTEGER 3", "INTEGER -2"}));
  EXPECT_EQ(tokensof("- 3"), (Tokens{"KEYWORD -", "INTEGER 3"}));
  EXPECT_EQ(tokensof("--3"), (Tokens{"KEYWORD -", "INTEGER -3"}));
  EXPECT_EQ(tokensof("12abc "), (Tokens{"INTEGER 12", "NAMESTART a", "NAMEPART bc", "NAMEEND"}));
  EXPECT_EQ(tokensof("+3"), (Tokens{"KEYWORD +", "INTEGER 3"}));
}

TEST(ScannerNumbers, Reals) {
  for (const char *text : {"1.5", ".5", "-.5", "\xAF.5", "2E-3",
                           "2e\xAF"
                           "3",
                           "1.0E5", ".5e+2", "Inf", "inf", "Infinity", "-Inf", "-inf", "\xAFInfinity", "NaN", "nan"})
    expectnumber(text, "REAL");
  EXPECT_EQ(tokensof("1."), (Tokens{"INTEGER 1", "ENDOFTEXT ."}));
  EXPECT_EQ(tokensof("1.\n"), (Tokens{"INTEGER 1", "ENDOFTEXT .\n"}));
  EXPECT_EQ(tokensof("1.x "), (Tokens{"INTEGER 1", "SIGILNAME .x"}));
  EXPECT_EQ(tokensof("1.5.5"), (Tokens{"REAL 1.5", "REAL .5"}));
  EXPECT_EQ(tokensof("1E30.5"), (Tokens{"INTEGER 1E30", "REAL .5"}));
  EXPECT_EQ(tokensof("-NaN "), (Tokens{"KEYWORD -", "NAMESTART N", "NAMEPART aN", "NAMEEND"}));
}

TEST(ScannerNumbers, NaNTakesNoSign) {
  EXPECT_EQ(tokensof("5 -nan "), (Tokens{"INTEGER 5", "KEYWORD -", "NAMESTART n", "NAMEPART an", "NAMEEND"}));
  EXPECT_EQ(tokensof("3-NaN NaN"),
            (Tokens{"INTEGER 3", "KEYWORD -", "NAMESTART N", "NAMEPART aN", "NAMEEND", "REAL NaN"}));
  EXPECT_EQ(tokensof("- NaN"), (Tokens{"KEYWORD -", "REAL NaN"}));
  EXPECT_EQ(tokensof("\xAFNaN "), (Tokens{"NAMESTART \xAF", "NAMEPART NaN", "NAMEEND"}));
  EXPECT_EQ(scantext("(-NaN)"), (Scanned{{"OPENVECTOR (", "REAL NaN", "CLOSEVECTOR )"}, "-"})) << "no names there";
}

TEST(ScannerNumbers, AnExponentNeedsADigit) {
  EXPECT_EQ(tokensof("2Each "), (Tokens{"INTEGER 2", "NAMESTART E", "NAMEPART ach", "NAMEEND"}));
  EXPECT_EQ(tokensof("2E+x "), (Tokens{"INTEGER 2", "NAMESTART E", "NAMEPART +x", "NAMEEND"}));
  EXPECT_EQ(tokensof("2.5E-"), (Tokens{"REAL 2.5", "NAMESTART E", "NAMEPART -"}));
  EXPECT_EQ(tokensof("2E3E4"), (Tokens{"INTEGER 2E3", "NAMESTART E", "NAMEPART 4"}));
}

TEST(ScannerNumbers, WordsNeedNoBoundary) {
  EXPECT_EQ(tokensof("infinite "), (Tokens{"REAL inf", "NAMESTART i", "NAMEPART nite", "NAMEEND"}));
  EXPECT_EQ(tokensof("Infinite "), (Tokens{"REAL Inf", "NAMESTART i", "NAMEPART nite", "NAMEEND"}));
  EXPECT_EQ(tokensof("infinity "), (Tokens{"REAL inf", "NAMESTART i", "NAMEPART nity", "NAMEEND"}));
  EXPECT_EQ(tokensof("Infinityx "), (Tokens{"REAL Infinity", "NAMESTART x", "NAMEEND"}));
  EXPECT_EQ(tokensof("nancy "), (Tokens{"REAL nan", "NAMESTART c", "NAMEPART y", "NAMEEND"}));
  EXPECT_EQ(tokensof("NaNny "), (Tokens{"REAL NaN", "NAMESTART n", "NAMEPART y", "NAMEEND"}));
  EXPECT_EQ(tokensof("NAN "), (Tokens{"NAMESTART N", "NAMEPART AN", "NAMEEND"}));
  EXPECT_EQ(tokensof("INF "), (Tokens{"NAMESTART I", "NAMEPART NF", "NAMEEND"}));
  EXPECT_EQ(tokensof("in "), (Tokens{"NAMESTART i", "NAMEPART n", "NAMEEND"}));
  EXPECT_EQ(tokensof("-x "), (Tokens{"KEYWORD -", "NAMESTART x", "NAMEEND"}));
}

TEST(ScannerNumbers, Cartesian) {
  for (const char *text : {"3i4", "-3i-4", "3.5E2i.5",
                           "1i\xAF"
                           "2",
                           "Infi-Inf", "NaNinan", "infiinf", "Infinityi1", "#3i4", "#r3i4", "r3i4", "0i0"})
    expectnumber(text, "COMPLEX");
  for (const char *text : {"1j2", "1k2", "1i2j3", "1i2k3", "1j2k3", "1i2j3k4", "#1j2", "#r1i2j3k4", "rInfkNaN"})
    expectnumber(text, "QUATERNION");
  for (const char *text : {"1l2", "1m2", "1n2", "1o2", "1i2o3", "1i2j3k4l5m6n7o8", "1nnan", "#1k2l3", "r1j-2n-3"})
    expectnumber(text, "OCTONION");
}

TEST(ScannerNumbers, PolarForms) {
  for (const char *text : {"1p0", "d1p90", "r1p2", "dr1p2", "-1p-2", "InfpNaN",
                           "d-1p\xAF"
                           "90"})
    expectnumber(text, "POLARCOMPLEX");
  for (const char *text : {"1q2", "1r2", "1p2q3", "1p2r3", "1q2r3", "d1p2q3r4", "r1q2", "dr1r2"})
    expectnumber(text, "POLARQUATERNION");
  for (const char *text : {"1s2", "1t2", "1u2", "1v2", "1p2v3", "1p2q3r4s5t6u7v8", "d1s2", "r1v2", "dr1p2u3"})
    expectnumber(text, "POLAROCTONION");
}

TEST(ScannerNumbers, ABrokenFormFallsBack) {
  EXPECT_EQ(tokensof("3i "), (Tokens{"INTEGER 3", "NAMESTART i", "NAMEEND"}));
  EXPECT_EQ(tokensof("3i4j "), (Tokens{"COMPLEX 3i4", "NAMESTART j", "NAMEEND"}));
  EXPECT_EQ(tokensof("3i4i5 "), (Tokens{"COMPLEX 3i4", "NAMESTART i", "NAMEPART 5", "NAMEEND"}));
  EXPECT_EQ(tokensof("1j2i3 "), (Tokens{"QUATERNION 1j2", "NAMESTART i", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("1i2p3 "), (Tokens{"COMPLEX 1i2", "NAMESTART p", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("1p2i3 "), (Tokens{"POLARCOMPLEX 1p2", "NAMESTART i", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("1w2 "), (Tokens{"INTEGER 1", "NAMESTART w", "NAMEPART 2", "NAMEEND"}));
  EXPECT_EQ(tokensof("1h2 "), (Tokens{"INTEGER 1", "NAMESTART h", "NAMEPART 2", "NAMEEND"}));
  EXPECT_EQ(tokensof("1v "), (Tokens{"INTEGER 1", "KEYWORD v"}));
  EXPECT_EQ(tokensof("1inf "), (Tokens{"INTEGER 1", "REAL inf"}));
  EXPECT_EQ(tokensof("1iinfinity "), (Tokens{"COMPLEX 1iinf", "NAMESTART i", "NAMEPART nity", "NAMEEND"}));
  EXPECT_EQ(tokensof("1nan "), (Tokens{"INTEGER 1", "REAL nan"}));
  EXPECT_EQ(tokensof("1i-NaN"), (Tokens{"INTEGER 1", "NAMESTART i", "NAMEPART -NaN"}));
  EXPECT_EQ(tokensof("1i2.x "), (Tokens{"COMPLEX 1i2", "SIGILNAME .x"}));
  EXPECT_EQ(tokensof("1i.5"), (Tokens{"COMPLEX 1i.5"}));
  EXPECT_EQ(tokensof("1i+2 "), (Tokens{"INTEGER 1", "NAMESTART i", "NAMEPART +2", "NAMEEND"}));
}

TEST(ScannerNumbers, APrefixAsksForAForm) {
  EXPECT_EQ(tokensof("#3 "), (Tokens{"NAMESTART #", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("r3 "), (Tokens{"NAMESTART r", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("d3 "), (Tokens{"NAMESTART d", "NAMEPART 3", "NAMEEND"}));
  EXPECT_EQ(tokensof("dr3 "), (Tokens{"NAMESTART d", "NAMEPART r3", "NAMEEND"}));
  EXPECT_EQ(tokensof("#1p2 "), (Tokens{"NAMESTART #", "NAMEPART 1p2", "NAMEEND"})) << "# is for cartesian forms";
  EXPECT_EQ(tokensof("d1i2 "), (Tokens{"NAMESTART d", "NAMEPART 1i2", "NAMEEND"})) << "d is for polar forms";
  EXPECT_EQ(tokensof("rd1p2 "), (Tokens{"NAMESTART r", "NAMEPART d1p2", "NAMEEND"}));
  EXPECT_EQ(tokensof("r1i2 "), (Tokens{"COMPLEX r1i2"}));
  EXPECT_EQ(scantext("(#3 d4 r5)"),
            (Scanned{{"OPENVECTOR (", "INTEGER 3", "INTEGER 4", "INTEGER 5", "CLOSEVECTOR )"}, "#dr"}));
}

TEST(ScannerNumbers, Binary) {
  for (const char *text : {"0#1", "0#0", "0#101", "0#1010|0101", "0#|", "0#00000001"})
    expectnumber(text, "BINARYNUMBER");
  for (const char *text : {"`0#1`", "`0#101`", "`0#1|1`"}) expectnumber(text, "BINARYCHARACTER");
  EXPECT_EQ(tokensof("0#12"), (Tokens{"BINARYNUMBER 0#1", "INTEGER 2"}));
  EXPECT_EQ(tokensof("0# "), (Tokens{"INTEGER 0", "KEYWORD #"}));
  EXPECT_EQ(tokensof("00#1 "), (Tokens{"INTEGER 00", "NAMESTART #", "NAMEPART 1", "NAMEEND"}));
  EXPECT_EQ(tokensof("-0#1 "), (Tokens{"INTEGER -0", "NAMESTART #", "NAMEPART 1", "NAMEEND"}));
  EXPECT_EQ(tokensof("0#x "), (Tokens{"INTEGER 0", "NAMESTART #", "NAMEPART x", "NAMEEND"}));
  EXPECT_EQ(tokensof("`0#` "), (Tokens{"NAMESTART `", "NAMEPART 0#`", "NAMEEND"}));
  EXPECT_EQ(tokensof("`0#1 "), (Tokens{"NAMESTART `", "NAMEPART 0#1", "NAMEEND"}));
  EXPECT_EQ(tokensof("`0#12` "), (Tokens{"NAMESTART `", "NAMEPART 0#12`", "NAMEEND"}));
}
