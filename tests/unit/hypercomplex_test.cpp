// Leaf numerics of the higher numbers: every conversion, its rules for small angles, the sign and the contradiction.
#include "spaces/hypercomplex.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

#include "spaces/blocks.h"
#include "spaces/making.h"

using namespace morvik;

namespace {

constexpr double PI = 3.141592653589793;
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
using Pair = std::array<double, 2>;
using Four = std::array<double, 4>;
using Eight = std::array<double, 8>;

Pair polar(Pair in) {
  polarcomplex(in.data(), in.data());
  return in;
}
Pair cartesian(Pair in) {
  cartesiancomplex(in.data(), in.data());
  return in;
}
Four polar(Four in) {
  polarquat(in.data(), in.data());
  return in;
}
Four cartesian(Four in) {
  cartesianquat(in.data(), in.data());
  return in;
}
Eight polar(Eight in) {
  polarocto(in.data(), in.data());
  return in;
}
Eight cartesian(Eight in) {
  cartesianocto(in.data(), in.data());
  return in;
}

template <typename T>
void expectnear(const T &a, const T &b, double tolerance) {
  for (std::size_t i = 0; i < a.size(); ++i) EXPECT_NEAR(a[i], b[i], tolerance) << "component " << i;
}

TEST(PolarComplex, KnownValues) {
  EXPECT_EQ(polar(Pair{3, 4})[0], 5);
  EXPECT_EQ(polar(Pair{3, 4})[1], std::atan2(4.0, 3.0));
  EXPECT_EQ(polar(Pair{-1, 0}), (Pair{1, PI}));
  EXPECT_EQ(polar(Pair{0, 0}), (Pair{0, 0}));
  EXPECT_EQ(polar(Pair{0, -2}), (Pair{2, -PI / 2}));
}

TEST(PolarComplex, AnAngleThatCannotChangeOneLiesOnTheAxis) {
  EXPECT_EQ(polar(Pair{1, 1e-17})[1], 0);
  EXPECT_EQ(polar(Pair{-1, 1e-17})[1], PI);
  EXPECT_EQ(polar(Pair{-1, -1e-17})[1], PI);
  EXPECT_EQ(polar(Pair{1e-17, 1e-17})[1], 0) << "whatever the real part";
  EXPECT_NE(polar(Pair{1, 1e-15})[1], 0);
}

TEST(PolarComplex, OutMayDifferFromIn) {
  const Pair in{3, 4};
  Pair out{};
  polarcomplex(out.data(), in.data());
  EXPECT_EQ(out[0], 5);
  EXPECT_EQ(in, (Pair{3, 4}));
}

TEST(CartesianComplex, CleansSinesAndCosines) {
  EXPECT_EQ(cartesian(Pair{1, PI / 2}), (Pair{0, 1}));
  EXPECT_EQ(cartesian(Pair{2, PI}), (Pair{-2, 0}));
  EXPECT_EQ(cartesian(Pair{1e30, PI / 2})[0], 0) << "cleaned before it is multiplied";
  EXPECT_EQ(cartesian(Pair{7, 0}), (Pair{7, 0}));
  EXPECT_NE(cartesian(Pair{1, 2e-15})[1], 0);
}

TEST(PolarQuaternion, FourthComponentDecidesTheForm) {
  const Four full = polar(Four{0.5, 0.25, 0.125, 0.75});
  EXPECT_EQ(full[0], std::sqrt(0.25 + 0.0625 + 0.015625 + 0.5625));
  EXPECT_EQ(full[1], std::atan2(0.25, 0.5));
  EXPECT_EQ(full[2], std::atan2(std::sqrt(0.0625 + 0.015625), 0.5));
  EXPECT_EQ(full[3], std::asin(0.75));

  const Four flat = polar(Four{3, 4, 0.5, 0});
  EXPECT_EQ(flat[0], std::sqrt(25.25));
  EXPECT_EQ(flat[1], std::atan2(4.0, 3.0));
  EXPECT_EQ(flat[2], std::asin(0.5));
  EXPECT_EQ(flat[3], 0);
}

TEST(PolarQuaternion, TheArcSineTakesTheRawComponent) {
  EXPECT_TRUE(std::isnan(polar(Four{0, 0, 2, 0})[2]));
  EXPECT_EQ(polar(Four{0, 0, 2, 0})[0], 2);
  EXPECT_TRUE(std::isnan(polar(Four{1, 1, 1, 2})[3]));
}

TEST(PolarQuaternion, TheZeroRuleHoldsForTheRoot) {
  EXPECT_EQ(polar(Four{-1, 1e-18, 1e-18, 0.5})[2], PI);
  EXPECT_EQ(polar(Four{1, 1e-18, 1e-18, 0.5})[2], 0);
}

TEST(CartesianQuaternion, ThirdAngleDecidesTheForm) {
  const double s1 = std::sin(0.3), c1 = std::cos(0.3), s2 = std::sin(0.7), c2 = std::cos(0.7);
  const double s3 = std::sin(1.1), c3 = std::cos(1.1);
  expectnear(cartesian(Four{2, 0.3, 0.7, 0}), Four{2 * c1 * c2, 2 * s1 * c2, 2 * s2, 0}, 1e-15);
  expectnear(cartesian(Four{2, 0.3, 0.7, 1.1}), Four{2 * c1 * c2 * c3, 2 * s1 * c2 * c3, 2 * s2 * c3, 2 * s3}, 1e-15);
  EXPECT_EQ(cartesian(Four{1, PI / 2, 0, 0}), (Four{0, 1, 0, 0}));
  EXPECT_EQ(cartesian(Four{1, 0, PI / 2, 0}), (Four{0, 0, 1, 0}));
  EXPECT_EQ(cartesian(Four{1, 0, 0, PI / 2}), (Four{0, 0, 0, 1}));
}

TEST(PolarOctonion, AnglesReachTheHighestComponent) {
  const Eight x{1, 2, 3, 4, 5, 6, 7, 8};
  const Eight p = polar(x);
  EXPECT_DOUBLE_EQ(p[0], std::sqrt(204.0));
  EXPECT_DOUBLE_EQ(p[1], std::atan2(std::sqrt(203.0), 1));
  EXPECT_DOUBLE_EQ(p[4], std::atan2(std::sqrt(25.0 + 36 + 49 + 64), 4));
  EXPECT_DOUBLE_EQ(p[6], std::atan2(std::sqrt(49.0 + 64), 6));
  EXPECT_DOUBLE_EQ(p[7], std::atan2(8.0, 7.0));
}

TEST(PolarOctonion, AndAtLeastTheFifth) {
  const Eight p = polar(Eight{1, 2, 2, 4, 0, 0, 0, 0});
  EXPECT_EQ(p[0], 5);
  EXPECT_EQ(p[3], std::atan2(4.0, 2.0));
  EXPECT_EQ(p[4], 0);
  EXPECT_EQ(polar(Eight{0, 0, 0, -4, 0, 0, 0, 0})[4], PI);
  const Eight six = polar(Eight{0, 0, 0, 0, 0, -3, 0, 0});
  EXPECT_EQ(six, (Eight{3, PI / 2, PI / 2, PI / 2, PI / 2, -PI / 2, 0, 0}));
}

TEST(CartesianOctonion, ProductsOfSines) {
  const Eight in{3, 0.1, 0.2, 0.3, 0.4, 0.5, 0.6, 0.7};
  Eight expected{};
  for (std::size_t k = 0; k < 8; ++k) {
    double x = in[0];
    for (std::size_t j = 1; j <= k; ++j) x *= std::sin(in[j]);
    expected[k] = k < 7 ? x * std::cos(in[k + 1]) : x;
  }
  expectnear(cartesian(in), expected, 1e-15);
  EXPECT_EQ(cartesian(Eight{2, PI / 2, 0, 0, 0, 0, 0, 0}), (Eight{0, 2, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(cartesian(Eight{0, 0, 0, 0, 0, 0, 0, 0}), Eight{});
}

TEST(Conversions, ComplexAndOctonionsComeBack) {
  std::mt19937_64 random(20240517);
  std::uniform_real_distribution<double> part(-5, 5);
  for (int run = 0; run < 2000; ++run) {
    const Pair c{part(random), part(random)};
    expectnear(cartesian(polar(c)), c, 1e-14);
    Eight o{};
    const std::size_t parts = 5 + static_cast<std::size_t>(run) % 4;
    for (std::size_t i = 0; i < parts; ++i) o[i] = part(random);
    expectnear(cartesian(polar(o)), o, 1e-13);
  }
}

TEST(Csgn, FirstComponentThatIsNotZero) {
  EXPECT_EQ(csgnquat(Four{0, 0, -3, 1}.data()), -1);
  EXPECT_EQ(csgnquat(Four{0, 0, 0, 1}.data()), 1);
  EXPECT_EQ(csgnquat(Four{2, -1, 0, 0}.data()), 1);
  EXPECT_EQ(csgnquat(Four{0, -0.0, 0, 0}.data()), 0);
  EXPECT_EQ(csgnocto(Eight{0, 0, 0, 0, 0, 0, 0, -1e-300}.data()), -1);
  EXPECT_EQ(csgnocto(Eight{0, 0, 0, 0, 1, -1, 0, 0}.data()), 1);
  EXPECT_EQ(csgnocto(Eight{}.data()), 0);
}

TEST(Csgn, OneFlopATest) {
  hypercomplexflops = 0;
  csgnquat(Four{0, 0, -3, 1}.data());
  EXPECT_EQ(hypercomplexflops, 3);
  csgnquat(Four{}.data());
  EXPECT_EQ(hypercomplexflops, 7);
  csgnocto(Eight{}.data());
  EXPECT_EQ(hypercomplexflops, 15);
  csgnocto(Eight{1}.data());
  EXPECT_EQ(hypercomplexflops, 16);
}

TEST(Flops, EveryFunctionCounts) {
  Four q{1, 0.5, 0.5, 0.5};
  Eight o{1, 0.5, 0.5, 0.5, 0.5, 0, 0, 0};
  Pair c{1, 1};
  Element e{};
  setnumber(e, tags::COMPLEX, Pair{0.5, 0.5}.data());
  const auto counts = [](auto &&action) {
    hypercomplexflops = 0;
    action();
    return hypercomplexflops > 0;
  };
  EXPECT_TRUE(counts([&] { polarcomplex(c.data(), c.data()); }));
  EXPECT_TRUE(counts([&] { cartesiancomplex(c.data(), c.data()); }));
  EXPECT_TRUE(counts([&] { polarquat(q.data(), q.data()); }));
  EXPECT_TRUE(counts([&] { cartesianquat(q.data(), q.data()); }));
  EXPECT_TRUE(counts([&] { polarocto(o.data(), o.data()); }));
  EXPECT_TRUE(counts([&] { cartesianocto(o.data(), o.data()); }));
  EXPECT_TRUE(counts([&] { contradict_c(e); }));
}

double contradict(Pair c) {
  Element e{};
  setnumber(e, tags::COMPLEX, c.data());
  return contradict_c(e);
}
double contradict(Four q) {
  Element e{};
  setnumber(e, tags::QUATERNION, q.data());
  return contradict_q(e);
}
double contradict(Eight parts) {
  Element e{};
  setnumber(e, tags::OCTONION, parts.data());
  const double contradiction = contradict_o(e);
  release(e.octonion);
  return contradiction;
}

TEST(Contradiction, Complex) {
  EXPECT_EQ(contradict(Pair{0.5, 0.5}), 0);
  EXPECT_EQ(contradict(Pair{1, 1}), 1);
  EXPECT_EQ(contradict(Pair{2, -1}), 0);
  EXPECT_EQ(contradict(Pair{0.25, 0.25}), 0.5);
  EXPECT_EQ(contradict(Pair{0, -3}), 1);
}

TEST(Contradiction, QuaternionOfFourAndOfThreeValues) {
  EXPECT_EQ(contradict(Four{1, 1, 0, 0}), 0);
  EXPECT_EQ(contradict(Four{9, 1, 1, 1}), 1);
  EXPECT_EQ(contradict(Four{1, 0.5, 0, -1}), 0.25);
  EXPECT_EQ(contradict(Four{0.5, 0.5, 0.5, NaN}), 0);
  EXPECT_EQ(contradict(Four{1, 1, 1, NaN}), 1);
  EXPECT_EQ(contradict(Four{1, 0, 0, NaN}), 0.5 / 1.5);
}

TEST(Contradiction, OctonionOfEightDownToFiveValues) {
  EXPECT_EQ(contradict(Eight{1, 1, 1, 1, 0, 0, 0, 0}), 0);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 1, 1, 1, 0, 0}), 0.5);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 1, 1, 1, 1, NaN}), 1);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 1, 0, 0, 0, NaN}), 0.5 / 3.5);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 0, 0, 0, NaN, NaN}), 0);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 1, 1, 1, NaN, NaN}), 1);
  EXPECT_EQ(contradict(Eight{1, 1, 0.5, 0, 0, NaN, NaN, NaN}), 0);
  EXPECT_EQ(contradict(Eight{1, 1, 1, 0, 0, NaN, NaN, NaN}), 0.5 / 2.5);
}

TEST(Contradiction, NanAheadOfTheTrailingPartStaysNan) {
  EXPECT_TRUE(std::isnan(contradict(Pair{NaN, 1})));
  EXPECT_TRUE(std::isnan(contradict(Four{1, NaN, 0, 0})));
}

}  // namespace
