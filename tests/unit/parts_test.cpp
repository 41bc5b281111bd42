// The components of numbers: how many each kind has, where they are in a record, and that the element cores see the
// same.
#include "spaces/parts.h"

#include <gtest/gtest.h>

#include <array>
#include <type_traits>
#include <utility>

#include "arithmetic/loops.h"
#include "spaces/blocks.h"
#include "spaces/hypercomplex.h"
#include "spaces/making.h"

using namespace morvik;

namespace {

using Parts = std::array<double, MOST_PARTS>;
constexpr Parts ONE_TO_EIGHT = {1, 2, 3, 4, 5, 6, 7, 8};

TEST(Parts, CountsByKind) {
  const std::pair<std::int32_t, int> counts[] = {{tags::INTEGER, 1},
                                                 {tags::REAL, 1},
                                                 {tags::COMPLEX, 2},
                                                 {tags::QUATERNION, 4},
                                                 {tags::OCTONION, 8},
                                                 {tags::SUBARRAY, 0},
                                                 {tags::ASCII, 0},
                                                 {tags::UNICODE, 0},
                                                 {tags::FILLER, 0},
                                                 {tags::HANDLE, 0},
                                                 {0, 0},
                                                 {ranks::FUNCTION, 0}};
  for (const auto &[tag, count] : counts) EXPECT_EQ(partsof(tag), count) << tag;
}

TEST(Parts, LeastKindThatHoldsThem) {
  const std::int32_t kinds[] = {tags::REAL,     tags::COMPLEX,  tags::QUATERNION, tags::QUATERNION,
                                tags::OCTONION, tags::OCTONION, tags::OCTONION,   tags::OCTONION};
  for (int count = 1; count <= MOST_PARTS; ++count) EXPECT_EQ(tagholding(count), kinds[count - 1]) << count;
}

// What setnumber writes, readparts reads, and nothing behind it.
TEST(Parts, ComeBackFromEachKind) {
  for (std::int32_t tag = tags::REAL; tag <= tags::OCTONION; ++tag) {
    Element e{};
    setnumber(e, tag, ONE_TO_EIGHT.data());
    EXPECT_EQ(e.tag, tag);
    EXPECT_EQ(realpart(e), 1) << tag;
    Parts parts;
    parts.fill(-1);
    const int count = readparts(e, parts.data());
    EXPECT_EQ(count, partsof(tag)) << tag;
    for (int k = 0; k < MOST_PARTS; ++k) EXPECT_EQ(parts[k], k < count ? k + 1 : -1) << tag << ' ' << k;
    const Parts others = {-8, -7, -6, -5, -4, -3, -2, -1};
    writeparts(e, others.data());
    readparts(e, parts.data());
    for (int k = 0; k < count; ++k) EXPECT_EQ(parts[k], others[k]) << tag << ' ' << k;
    if (ownsparts(tag)) release(e.octonion);
  }
}

TEST(Parts, LieWhereTheFieldsOfTheRecordAre) {
  Element complex{}, quaternion{}, octonion{};
  setnumber(complex, tags::COMPLEX, ONE_TO_EIGHT.data());
  EXPECT_EQ(complex.complex.re, 1);
  EXPECT_EQ(complex.complex.im, 2);
  setnumber(quaternion, tags::QUATERNION, ONE_TO_EIGHT.data());
  EXPECT_EQ(quaternion.firstpart, 1);
  for (int k = 1; k < QUATERNION_PARTS; ++k) EXPECT_EQ(quaternion.otherparts[k - 1], k + 1);
  setnumber(octonion, tags::OCTONION, ONE_TO_EIGHT.data());
  for (int k = 0; k < OCTONION_PARTS; ++k) EXPECT_EQ(octonion.octonion->part[k], k + 1);
  EXPECT_EQ(referencecount(octonion.octonion), 1);
  release(octonion.octonion);
}

TEST(Parts, OfAnIntegerAndOfNoNumber) {
  Element e;
  setinteger(e, -7);
  double parts[MOST_PARTS] = {};
  EXPECT_EQ(readparts(e, parts), 1);
  EXPECT_EQ(parts[0], -7);
  EXPECT_EQ(realpart(e), -7);
  e.tag = tags::ASCII;
  EXPECT_EQ(readparts(e, parts), 0);
  EXPECT_EQ(realpart(e), 0);
  setfiller(e);
  EXPECT_EQ(readparts(e, parts), 0);
}

// Each count takes the conversion of its kind.
TEST(Parts, TurnByTheirCount) {
  const std::pair<int, std::array<void (*)(double *, const double *), 2>> conversions[] = {
      {COMPLEX_PARTS, {polarcomplex, cartesiancomplex}},
      {QUATERNION_PARTS, {polarquat, cartesianquat}},
      {OCTONION_PARTS, {polarocto, cartesianocto}},
  };
  const Parts in = {0.5, -0.25, 0.125, 0.75, 0.375, -0.5, 0.625, 0.875};
  for (const auto &[count, both] : conversions) {
    Parts turned = in, expected = in;
    topolar(turned.data(), count);
    both[0](expected.data(), expected.data());
    EXPECT_EQ(turned, expected) << count;
    turned = expected = in;
    tocartesian(turned.data(), count);
    both[1](expected.data(), expected.data());
    EXPECT_EQ(turned, expected) << count;
  }
}

// The kinds of the element cores say the same of their tags.
template <std::int32_t tag, class T>
constexpr bool iskind = std::is_same_v<Kind<tag>, T> &&TAG_OF<T> == tag &&USUAL_BIT<T> == kindbit(tag) &&
                        kindbit(tag) != 0;
TEST(Parts, KindsOfTheCores) {
  static_assert(iskind<tags::ASCII, Ascii> && iskind<tags::UNICODE, Unicode> && iskind<tags::INTEGER, Integer>);
  static_assert(iskind<tags::REAL, double> && iskind<tags::COMPLEX, Complex>);
  static_assert(iskind<tags::QUATERNION, Quaternion> && iskind<tags::OCTONION, Octonion>);
  static_assert(PARTS<Integer> == 0 && PARTS<Ascii> == 0 && PARTS<Truth> == 0 && PARTS<WholeOrReal> == 0);
  static_assert(PARTS<double> == 1 && PARTS<Complex> == 2 && PARTS<Quaternion> == 4 && PARTS<Octonion> == 8);
  static_assert(sizeof(Complex) == PARTS<Complex> * sizeof(double));
  static_assert(sizeof(Quaternion) == PARTS<Quaternion> * sizeof(double));
  static_assert(sizeof(Octonion) == PARTS<Octonion> * sizeof(double));
  static_assert(TAG_OF<Truth> == 0 && USUAL_BIT<Truth> == HASINTEGER && USUAL_BIT<WholeOrReal> == HASINTEGER);
}

}  // namespace
