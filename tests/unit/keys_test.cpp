// The short texts: numbers in base 16, names from the stack, and the keys of results.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <string>

#include "failure/jump.h"
#include "failure/signals.h"
#include "recount.h"
#include "text/keys.h"
#include "text/text.h"

using namespace morvik;

namespace {

using namespace points;

std::string itoxof(std::int64_t value) {
  char buffer[17];
  return {buffer, static_cast<std::size_t>(itox(buffer, value))};
}
std::string rtoxof(double value) {
  char buffer[40];
  return {buffer, static_cast<std::size_t>(rtox(buffer, value))};
}

TEST(Itox, LowestDigitFirst) {
  EXPECT_EQ(itoxof(0), "@");
  EXPECT_EQ(itoxof(15), "O");
  EXPECT_EQ(itoxof(16), "@A");
  EXPECT_EQ(itoxof(0x123), "CBA");
  EXPECT_EQ(itoxof(-1), "-A");
  EXPECT_EQ(itoxof(INT64_MAX), "OOOOOOOOOOOOOOOG");
  EXPECT_EQ(itoxof(INT64_MIN), "-@@@@@@@@@@@@@@@H");
}

std::int64_t valueof(const std::string &text) {
  std::uint64_t value = 0;
  const std::size_t begin = text[0] == '-' ? 1 : 0;
  for (std::size_t i = text.size(); i-- > begin;) value = value << 4 | static_cast<std::uint64_t>(text[i] - '@');
  return static_cast<std::int64_t>(begin ? 0 - value : value);
}

TEST(Itox, EveryValueComesBack) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 10000; ++i) {
    const auto value = static_cast<std::int64_t>(random()) >> (i % 64);
    ASSERT_EQ(valueof(itoxof(value)), value);
  }
}

TEST(Rtox, ExponentAndMantissa) {
  // 1.0 is 2^52 times 2 to the power -52; the mantissa has 53 bits.
  EXPECT_EQ(rtoxof(1.0), "-DC:@@@@@@@@@@@@@A");
  EXPECT_EQ(rtoxof(-1.0), "-DC:-@@@@@@@@@@@@@A");
  EXPECT_EQ(rtoxof(0.0), "@:@");
  EXPECT_EQ(rtoxof(-0.0), "@:@");
}

TEST(Rtox, EveryValueComesBack) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 10000; ++i) {
    std::uint64_t bits = random();
    if (i % 5 == 0) bits &= ~(std::uint64_t{0x7FF} << 52);  // subnormal
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (!std::isfinite(value)) continue;
    const std::string text = rtoxof(value);
    const std::size_t colon = text.find(':');
    ASSERT_LE(text.size(), 40u);
    const bool negative = text[colon + 1] == '-';
    const std::string mantissa = text.substr(colon + 1 + negative);
    const double magnitude =
        std::ldexp(static_cast<double>(valueof(mantissa)), static_cast<int>(valueof(text.substr(0, colon))));
    ASSERT_EQ(negative ? -magnitude : magnitude, value);
  }
}

TEST(Rtox, WhatIsNotFinite) {
  const double infinite = std::numeric_limits<double>::infinity();
  const std::set<std::string> texts = {rtoxof(infinite), rtoxof(-infinite), rtoxof(std::nan("")), rtoxof(0), rtoxof(1)};
  EXPECT_EQ(texts.size(), 5u);
  EXPECT_EQ(rtoxof(std::nan("1")), rtoxof(-std::nan("2")));
}

std::string taken(char *text) {
  std::string result(text);
  release(text);
  return result;
}
std::string name(Point p) {
  const std::string text = taken(TOAddr(&p));
  drop(p);
  return text;
}

TEST(TOAddr, NamesOnTheStack) {
  using namespace instructions;
  EXPECT_EQ(name(text("abc")), "abc");
  EXPECT_EQ(name(scalar(character('a'))), "a");
  EXPECT_EQ(name(text("")), "");
  EXPECT_EQ(name(symbol(ranks::ADDRESS, ISADDRESS, "x", SGIG)), "@x");
  EXPECT_EQ(name(symbol(ranks::ADDRESS, ISADDRESS, "x", SAIG)), "@_x");
  EXPECT_EQ(name(symbol(ranks::ADDRESS, ISADDRESS, "x", SAIL)), "@$x");
  EXPECT_EQ(name(symbol(ranks::ADDRESS, ISADDRESS, "x", SLIL)), "@.x");
  EXPECT_EQ(name(scalar(whole(5))), "");
  EXPECT_EQ(name(empty()), "");
  EXPECT_EQ(name(function({})), "");
}

std::string key(Point p) {
  const std::string text = taken(TOAddr1(nullptr, &p));
  drop(p);
  return text;
}

TEST(TOAddr1, AppendsToWhatThereIs) {
  Point p = scalar(whole(1));
  const std::string alone = taken(TOAddr1(nullptr, &p));
  EXPECT_EQ(taken(TOAddr1(stringdup("before"), &p)), "before" + alone);
  char *twice = TOAddr1(TOAddr1(stringdup(""), &p), &p);
  EXPECT_EQ(taken(twice), alone + alone);
  drop(p);
}

TEST(TOAddr1, EqualValuesHaveEqualKeys) {
  EXPECT_EQ(key(scalar(whole(1, forms::NUMBER))), key(scalar(whole(1, 0))));
  EXPECT_EQ(key(scalar(real(1.5, forms::NUMBER))), key(scalar(real(1.5, forms::COMPUTED))));
  EXPECT_EQ(key(scalar(real(0.0))), key(scalar(real(-0.0))));
  EXPECT_EQ(key(scalar(complex(1, 2, forms::NUMBER))), key(scalar(complex(1, 2, forms::CARTESIAN))));
  EXPECT_EQ(key(scalar(octonion({1, 2, 3}))), key(scalar(octonion({1, 2, 3}))));
  EXPECT_EQ(key(text("abc")), key(text("abc")));
}

TEST(TOAddr1, DifferentValuesHaveDifferentKeys) {
  using namespace instructions;
  const std::vector<Point> points = {scalar(whole(1)),
                                     scalar(whole(17)),
                                     scalar(whole(-1)),
                                     scalar(real(1)),
                                     scalar(real(1.5)),
                                     scalar(character('1')),
                                     scalar(whole(1, forms::BOOLEAN)),
                                     scalar(whole(1, forms::BINARY)),
                                     scalar(complex(1, 0)),
                                     scalar(complex(1, 0, forms::POLAR)),
                                     scalar(complex(0, 1)),
                                     scalar(quaternions(1, 0, 0, 0)),
                                     scalar(octonion({1})),
                                     numbers({1}),
                                     numbers({1, 2}),
                                     numbers({12}),
                                     numbers({1, 2, 3, 4}),
                                     numbers({1, 2, 3, 4}, {2, 2}),
                                     numbers({1, 2, 3, 4}, {4, 1}),
                                     numbers({1, 2, 3, 4}, {1, 4}),
                                     text("1"),
                                     text("12"),
                                     vector({character('1'), whole(2)}),
                                     vector({whole(1), enclosed(numbers({2}))}),
                                     vector({enclosed(numbers({1})), whole(2)}),
                                     vector({enclosed(numbers({1, 2}))}),
                                     empty(),
                                     vector({enclosed(empty())}),
                                     operation(ADD, "+"),
                                     operation(SUBTRACT, "-"),
                                     operation(REDUCE, "+ //", ADD),
                                     operation(REDUCE, "- //", SUBTRACT),
                                     operation(SCAN, "+ \\\\", ADD),
                                     operation(LOOP, "LOOP"),
                                     operation(LOOP, "REPEAT", DISCARD),
                                     operation(IF_YES, "?Y", BARE),
                                     operation(IF_NO, "?N", BARE),
                                     operation(IF_YES, "+ ?Y", ADD),
                                     operation(IF_NO, "+ ?N", ADD),
                                     operation(MASK, "MASK"),
                                     operation(MASK, "MASK", WRAP),
                                     variable("x", SGIG),
                                     variable("x", SAIG),
                                     variable("x", SAIL),
                                     variable("xy", SGIG),
                                     symbol(ranks::ADDRESS, ISADDRESS, "x", SGIG),
                                     symbol(ranks::LABEL, ISADDRESS, "%x"),
                                     local(ranks::LOCAL_VARIABLE, 0),
                                     local(ranks::LOCAL_VARIABLE, 1),
                                     local(ranks::LOCAL_ADDRESS, 0),
                                     function({}),
                                     function({}, 0),
                                     function({}, 1),
                                     function({}, 1, 1),
                                     function({}, 1, 0, nullptr, ISFUNCTION | ISOPERATOR),
                                     function({scalar(whole(1))}, 1),
                                     function({scalar(whole(1)), scalar(whole(2))}, 1),
                                     function({scalar(whole(12))}, 1)};
  std::set<std::string> keys;
  for (const Point &p : points) {
    const std::string text = key(p);
    EXPECT_TRUE(keys.insert(text).second) << text;
  }
}

TEST(TOAddr1, ArgumentsAreSeparated) {
  const auto two = [](Point a, Point b) {
    const std::string text = taken(TOAddr1(TOAddr1(nullptr, &a), &b));
    drop(a);
    drop(b);
    return text;
  };
  EXPECT_NE(two(scalar(whole(1)), scalar(whole(23))), two(scalar(whole(12)), scalar(whole(3))));
  EXPECT_NE(two(numbers({1}), numbers({2, 3})), two(numbers({1, 2}), numbers({3})));
  EXPECT_NE(two(text("a"), text("bc")), two(text("ab"), text("c")));
}

TEST(TOAddr1, OperatorsByTheirKeys) {
  using namespace instructions;
  const auto pair = [](std::uint16_t number) { return std::string(Addressnames[number], 2); };
  EXPECT_EQ(key(operation(ADD, "+")), pair(ADD) + " ");
  EXPECT_EQ(key(operation(REDUCE, "+ //", ADD)), pair(ADD) + pair(REDUCE) + " ");
  EXPECT_EQ(key(operation(MASK, "MASK", WRAP)), pair(WRAP) + pair(MASK) + " ");
  EXPECT_EQ(key(operation(IF_YES, "?Y", BARE)), pair(IF_YES) + " ");
}

TEST(TOAddr1, ConditionsCountInABodyOnly) {
  Point yes = scalar(whole(1)), plain = scalar(whole(1));
  yes.type |= CONDITIONAL | YES;
  EXPECT_EQ(key(yes), key(plain));
  yes = scalar(whole(1));
  yes.type |= CONDITIONAL | YES;
  Point no = scalar(whole(1));
  no.type |= CONDITIONAL;
  const std::string with = key(function({yes})), without = key(function({no}));
  EXPECT_NE(with, without);
  EXPECT_NE(with, key(function({scalar(whole(1))})));
}

TEST(TOAddr1, HoldsNoByteThatANameCannot) {
  Elements elements;
  for (int byte = 0; byte < 256; ++byte) elements.push_back(character(static_cast<char>(byte)));
  const std::string text = key(vector(elements));
  EXPECT_EQ(text.find('\3'), std::string::npos);
  EXPECT_GE(text.size(), 3u * 256);  // no NUL cut it short
}

TEST(TOAddr1, LinearInTheSizeOfTheValue) {
  Elements elements;
  for (int i = 0; i < 300000; ++i) elements.push_back(real(i + 0.5));
  Point p = vector(elements);
  const std::int64_t before = liveblocks();
  char *text = TOAddr1(nullptr, &p);
  EXPECT_GT(std::strlen(text), 300000u * 5);
  release(text);
  EXPECT_EQ(liveblocks(), before);
  drop(p);
}

int landedwhile(Point *point) {
  return landingof([point] { TOAddr1(stringdup("taken over"), point); }) != 0 ? 1 : 0;
}

TEST(TOAddr1, AnInterruptReleasesTheString) {
  Point p = vector(Elements(100000, whole(1)));
  const std::int64_t before = liveblocks();
  interrupted = SIGINT;
  testing::internal::CaptureStdout();
  EXPECT_EQ(landedwhile(&p), 1);
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(liveblocks(), before);
  pendingproblem = 0;
  drop(p);
}

#ifdef MORVIK_CHECKING
TEST(TOAddr1, WhateverAllocationFailsNothingIsLost) {
  Point p = vector({whole(1), enclosed(text("some text")), enclosed(numbers({1, 2, 3}))});
  Point name = symbol(ranks::ADDRESS, ISADDRESS, "name", instructions::SAIG);
  const std::int64_t before = liveblocks();
  const int needed = withoutstorage([] {},
                                    [&] {
                                      release(TOAddr1(TOAddr1(nullptr, &p), &p));
                                      release(TOAddr(&name));
                                      release(TOAddr(p.data_pointer[1].subarray));
                                    },
                                    [&](bool) { EXPECT_EQ(liveblocks(), before); });
  EXPECT_GT(needed, 4);
  stepping = 0;
  drop(p);
  drop(name);
}
#endif

}  // namespace
