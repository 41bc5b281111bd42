// The monadic scalar instructions that draw random numbers: what draws, how often, and what comes of it.
#include <array>
#include <cmath>
#include <limits>

#include "monadics.h"

namespace {

using namespace points;
using monadics::result;
using MonadicDraws = Lifetimes;

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NOTANUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t MOST = INT64_MAX, LEAST = INT64_MIN;

// The state after seed 1 and so many draws.
std::uint64_t statenow(const char *name, const Element &of, std::uint32_t &type) {
  monadics::Bank bank(0, 1);
  std::uint64_t state = 1;
  Point p = scalar(of);
  monadics::run(monadics::member(name), p, bank, &state);
  type = p.type;
  drop(p);
  return state;
}

// Only what is undecided draws, and what a draw decided says so.
TEST_F(MonadicDraws, DrawsOnlyWhereUndecided) {
  constexpr std::uint64_t ONE = 48271;
  std::uint32_t type;
  for (const double x : {0.49, 0.51, 0.0, 1.0, -1.0, 2.0}) {
    EXPECT_EQ(statenow("BOOLEAN", real(x), type), 1U);
    EXPECT_EQ(type & ISPROBABLE, 0U);
  }
  EXPECT_EQ(statenow("BOOLEAN", real(0.5), type), ONE);
  EXPECT_NE(type & ISPROBABLE, 0U);
  EXPECT_EQ(statenow("BOOLEAN", complex(0.25, 0.75), type), 1U);
  EXPECT_EQ(statenow("BOOLEAN", complex(0.5, 1), type), ONE);
  EXPECT_EQ(statenow("BOOLEAN", complex(0, 0.5), type), ONE);
  for (const double x : {0.0, 1.0, -1.0, 2.0}) EXPECT_EQ(statenow("PROBABLY", real(x), type), 1U);
  EXPECT_EQ(statenow("PROBABLY", complex(1, 0), type), 1U);
  EXPECT_EQ(statenow("PROBABLY", complex(1, 0.25), type), ONE);
  EXPECT_EQ(statenow("PROBABLY", real(0.25), type), ONE);
  EXPECT_NE(type & ISPROBABLE, 0U);
  EXPECT_EQ(statenow("PROBABLY", complex(0.25, 1), type), ONE);
  EXPECT_EQ(statenow("PROBABLY", whole(1), type), 1U);
  EXPECT_EQ(type & ISPROBABLE, 0U);
  std::uint64_t fourth = 1;
  for (int i = 0; i < 4; ++i) PRNGS(&fourth);
  EXPECT_EQ(statenow("RANDOM", quaternions(1, 2, 3, 4), type), fourth);
  EXPECT_EQ(statenow("ROLL", whole(6), type), ONE);
}

TEST_F(MonadicDraws, ProbableSpreads) {
  Point inner = vector({real(0.5), real(0.25)}), p = vector({whole(1), enclosed(inner)});
  p = result("BOOLEAN", p);
  EXPECT_NE(p.type & ISPROBABLE, 0U);
  EXPECT_NE(p.data_pointer[1].subarray->type & ISPROBABLE, 0U);
  drop(p);
}

// A real is true as often as it says, about: 10000 draws, five standard deviations.
TEST_F(MonadicDraws, ProbablyByChance) {
  for (const double chance : {0.1, 0.5, 0.9}) {
    constexpr int COUNT = 10000;
    Point p = result("PROBABLY", vector(Elements(COUNT, real(chance))));
    int hits = 0;
    for (int i = 0; i < COUNT; ++i) hits += static_cast<int>(p.data_pointer[i].integer);
    EXPECT_NEAR(hits, COUNT * chance, 5 * std::sqrt(COUNT * chance * (1 - chance)));
    drop(p);
  }
}

// The draws by hand, in element order.
TEST_F(MonadicDraws, RollAndRandom) {
  constexpr std::int64_t ORIGIN = 10;
  Point p = result("ROLL", vector({whole(6), real(6), whole(1), whole(1000000)}), 0, ORIGIN, 7);
  std::uint64_t state = 7;
  std::vector<double> draws;
  for (int i = 0; i < 16; ++i) draws.push_back(static_cast<double>(PRNGS(&state)) / PRNGS_MODULUS);
  EXPECT_EQ(p.data_pointer[0].integer, ORIGIN + static_cast<std::int64_t>(draws[0] * 6));
  EXPECT_EQ(p.data_pointer[1].real, draws[1] * 6);
  EXPECT_EQ(p.data_pointer[2].integer, ORIGIN);
  EXPECT_EQ(p.data_pointer[3].integer, ORIGIN + static_cast<std::int64_t>(draws[3] * 1000000));
  drop(p);
  p = result("RANDOM",
             vector({real(-2), complex(1, -4), whole(3), quaternions(1, 2, 3, 4), octonion({1, 2, 3, 4, 5, 6, 7, 8})}),
             0, ORIGIN, 7);
  EXPECT_EQ(p.data_pointer[0].real, draws[0] * -2);
  EXPECT_EQ(p.data_pointer[1].complex.re, draws[1]);
  EXPECT_EQ(p.data_pointer[1].complex.im, draws[2] * -4);
  EXPECT_EQ(p.data_pointer[2].real, draws[3] * 3);
  const Quaternion four = quaternion(p.data_pointer[3]);
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(four.part[i], draws[4 + i] * static_cast<double>(i + 1)) << i;
  const Octonion &eight = *p.data_pointer[4].octonion;
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(eight.part[i], draws[8 + i] * static_cast<double>(i + 1)) << i;
  drop(p);
}

TEST_F(MonadicDraws, RollRange) {
  constexpr int COUNT = 6000;
  Point p = result("ROLL", vector(Elements(COUNT, whole(6))));
  std::array<int, 7> seen{};
  for (int i = 0; i < COUNT; ++i) {
    ASSERT_GE(p.data_pointer[i].integer, 1);
    ASSERT_LE(p.data_pointer[i].integer, 6);
    ++seen[static_cast<std::size_t>(p.data_pointer[i].integer)];
  }
  for (int face = 1; face <= 6; ++face) EXPECT_NEAR(seen[static_cast<std::size_t>(face)], 1000, 150);
  drop(p);
}

// Refused before anything is drawn or written.
TEST_F(MonadicDraws, RollRefuses) {
  monadics::Bank bank(0, 1);
  for (const Element &e : {whole(0), whole(LEAST), real(0.999), real(NOTANUMBER), real(-INF), complex(2, 0)}) {
    Point p = vector({whole(6), e});
    EXPECT_EQ(monadics::attempt(monadics::member("ROLL"), p, bank), 994);
    EXPECT_EQ(p.data_pointer[0].integer, 6);
    drop(p);
    p = scalar(e);
    EXPECT_EQ(monadics::attempt(monadics::member("ROLL"), p, bank), 994);
    drop(p);
  }
  Point p = result("ROLL", scalar(whole(MOST)), 0, MOST);
  EXPECT_EQ(p.data_pointer->integer, MOST);  // past every integer: the largest
  drop(p);
}

}  // namespace
