// RESHAPE against a model of plain vectors: shapes, elements, flag words, messages, and who owns what afterwards.
#include "operators/reshape.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

#include "failure/jump.h"
#include "failure/signals.h"
#include "spaces/copies.h"
#include "spaces/making.h"
#include "structure_values.h"

using namespace morvik;

namespace {

using namespace points;
using structured::Extents;
using structured::shapeof;
using structured::Texts;

constexpr double INF = std::numeric_limits<double>::infinity();

// What a value is, its flags included.
std::string textof(const Element &e) {
  return structured::textof(e, true);
}
std::string textof(const Point &p) {
  return structured::textof(p, true);
}
Texts textsof(const Point &p) {
  return structured::textsof(p, true);
}

Point extents(const Extents &shape) {
  Elements elements;
  for (const std::int64_t extent : shape) elements.push_back(whole(extent));
  return vector(elements);
}
Point numbers(int count) {
  Elements elements;
  for (int i = 0; i < count; ++i) elements.push_back(whole(i + 1));
  return vector(elements);
}

class Reshape : public Lifetimes {
 protected:
  Point instruction = operation(instructions::RESHAPE, "RESHAPE");
  std::string said;

  void TearDown() override {
    Lifetimes::TearDown();
    drop(instruction);
    stepping = 0;
  }

  // Runs on the two last Points held, of which the data stays. What was printed goes to `said`.
  int run() {
    Point *data = &held[held.size() - 2], *shape = &held.back();
    testing::internal::CaptureStderr();
    const int result = reshape(data, shape, &instruction);
    std::fflush(stderr);
    said = testing::internal::GetCapturedStderr();
    if (result == 0) {
      EXPECT_EQ(shape->shape_pointer, nullptr);
      EXPECT_EQ(shape->data_pointer, nullptr);
      held.pop_back();
    }
    return result;
  }
  Point &reshaped(const Point &data, const Point &shape) {
    hold(data);
    hold(shape);
    EXPECT_EQ(run(), 0) << said;
    return held.back();
  }
  // The message, with both operands left whole.
  void expectfault(int number, const Point &data, const Point &shape) {
    hold(data);
    hold(shape);
    const Point *d = &held[held.size() - 2], *s = &held.back();
    const std::string datatext = textof(*d), shapetext = textof(*s);
    const Element *block = d->data_pointer;
    EXPECT_EQ(run(), 1);
    EXPECT_EQ(said.find("\n" + std::to_string(number) + " - "), 0u) << said;
    EXPECT_NE(said.find("Instruction:\n"), std::string::npos);
    EXPECT_EQ(d->data_pointer, block);
    EXPECT_EQ(textof(*d), datatext);
    EXPECT_EQ(textof(*s), shapetext);
    stepping = 0;
  }
};

// ---- What is asked for in words.

TEST_F(Reshape, ToAMatrix) {
  const Point &p = reshaped(numbers(6), extents({3, 2}));
  EXPECT_EQ(p.rank, 2);
  EXPECT_EQ(p.type, ISARRAY | HASINTEGER);
  EXPECT_EQ(p.elements, 6u);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(p.word.last, 5);
  EXPECT_EQ(shapeof(p), (Extents{3, 2}));
  expectexact();
}

// Neither touched nor moved, even where nobody would know how to copy them.
TEST_F(Reshape, AsManyElementsAreLeftAlone) {
  for (const bool shared : {false, true}) {
    Point data = numbers(6);
    data.data_pointer[4].tag = 9;
    const Element *block = data.data_pointer;
    if (shared) holdcopy(data);
    const Point &p = reshaped(data, extents({2, 3}));
    EXPECT_EQ(p.data_pointer, block);
    EXPECT_EQ(block[4].tag, 9);
    expectexact();
  }
}

TEST_F(Reshape, TheShapeIsMoved) {
  const Point shape = extents({2, 2});
  const Element *block = shape.data_pointer;
  EXPECT_EQ(reshaped(numbers(1), shape).shape_pointer, block);
  Point literal = extents({5});
  holdcopy(literal);
  EXPECT_EQ(reshaped(numbers(1), literal).shape_pointer, literal.data_pointer);
  EXPECT_EQ(referencecount(literal.data_pointer), 2);
  expectexact();
}

TEST_F(Reshape, AScalarShapeIsOneAxis) {
  const Point &p = reshaped(numbers(2), scalar(whole(5)));
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.type, ISVECTOR | HASINTEGER);
  EXPECT_EQ(textsof(p), (Texts{"4:1", "4:2", "4:1", "4:2", "4:1"}));
  expectexact();
}

TEST_F(Reshape, AScalarBecomesAVector) {
  const Point &p = reshaped(scalar(real(2.5)), extents({3}));
  EXPECT_EQ(p.type, ISVECTOR | HASREAL);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(textsof(p), Texts(3, textof(real(2.5))));
  const Point &q = reshaped(scalar(real(2.5)), extents({1, 1}));
  EXPECT_EQ(q.type, ISARRAY | ISONEELEMENT | HASREAL);
  EXPECT_EQ(q.rank, 2);
  expectexact();
}

TEST_F(Reshape, AZeroMakesAnEmptySpaceOfTheShapesRank) {
  const Point &p = reshaped(text("abc"), extents({0}));
  EXPECT_EQ(p.type, ISVECTOR | ISEMPTY);
  EXPECT_EQ(p.rank, 1);
  const Point &q = reshaped(vector({octonion({1}), whole(2)}), extents({3, 0, 2}));
  EXPECT_EQ(q.type, ISARRAY | ISEMPTY);
  EXPECT_EQ(q.rank, 3);
  EXPECT_EQ(q.depth, 1);
  EXPECT_EQ(q.elements, 0u);
  EXPECT_EQ(q.data_pointer, nullptr);
  EXPECT_EQ(shapeof(q), (Extents{3, 0, 2}));
  const Point &r = reshaped(empty(), extents({0, std::int64_t{1} << 62, std::int64_t{1} << 62}));
  EXPECT_EQ(r.rank, 3);
  EXPECT_EQ(r.type, ISARRAY | ISEMPTY);
  expectexact();
}

TEST_F(Reshape, FromNothing) {
  expectfault(11, empty(), extents({2}));
  expectfault(11, text(""), scalar(whole(1)));
  expectexact();
}

Point scalarshape() {
  Point p = empty();
  p.type = ISEMPTY;
  return p;
}

TEST_F(Reshape, AnEmptyShapeKeepsTheData) {
  for (const bool shared : {false, true})
    for (Point (*const make)() : {+[] { return numbers(3); }, +[] { return scalar(whole(4)); },
                                  +[] {
                                    return vector({octonion({1}), enclosed(text("ab"))});
                                  }}) {
      const Point data = make();
      const std::string was = textof(data);
      if (shared) holdcopy(data);
      const Element *block = data.data_pointer;
      Point &p = reshaped(data, shared ? empty() : scalarshape());
      EXPECT_EQ(referencecount(p.data_pointer), 1);
      EXPECT_EQ(p.data_pointer == block, !shared);
      EXPECT_NE(p.type & INOUT, 0u);
      p.type &= ~INOUT;
      EXPECT_EQ(textof(p), was);
      EXPECT_TRUE(!shared || textof(held[held.size() - 2]) == was);
      expectexact();
    }
  EXPECT_EQ(reshaped(empty(), scalarshape()).elements, 0u);
  EXPECT_EQ(reshaped(function({numbers(1)}, 1), scalarshape()).rank, ranks::FUNCTION);
  expectexact();
}

TEST_F(Reshape, WholeNumbersOfEveryKindAreExtents) {
  for (Element (*const two)() : {+[] { return whole(2); }, +[] { return real(2); }, +[] { return complex(2, 0); },
                                 +[] { return quaternions(2, 0, 0, 0); }, +[] { return octonion({2}); },
                                 // kept: the sum is what counts
                                 +[] { return quaternions(2, 3, -1, -2); },
                                 +[] {
                                   return octonion({2, 1, 2, -3});
                                 }}) {
    Point shape = vector({two(), whole(3)});
    holdcopy(shape);
    const std::string was = textof(shape);
    const Point &p = reshaped(numbers(6), shape);
    EXPECT_EQ(shapeof(p), (Extents{2, 3}));
    EXPECT_EQ(p.shape_pointer->form, forms::NUMBER);
    EXPECT_EQ(textof(held[held.size() - 2]), was);  // the other holder of the shape
    expectexact();
  }
  reshaped(numbers(6), scalar(octonion({3})));
  expectexact();
}

TEST_F(Reshape, WhatIsNoExtent) {
  const double nan = std::nan("");
  for (const double value : {2.5, nan, INF, -INF, 1e19, 9223372036854775808.0, -1.0})
    expectfault(113, numbers(2), vector({real(value)}));
  expectfault(113, numbers(2), extents({-1}));
  expectfault(113, numbers(2), extents({0, -1}));
  expectfault(113, numbers(2), extents({2, std::numeric_limits<std::int64_t>::min()}));
  expectfault(113, numbers(2), vector({complex(2, 1)}));
  expectfault(113, numbers(2), vector({complex(2, nan)}));
  expectfault(113, numbers(2), vector({quaternions(2, 1, 0, 0)}));
  expectfault(113, numbers(2), vector({octonion({2, 0, 0, 0, 0, 0, 0, 1})}));
  expectfault(113, numbers(2), vector({record(tags::UNICODE, 0)}));
  expectfault(113, numbers(2), function({numbers(1)}));
  expectfault(113, numbers(2), operation(instructions::MARK, "MARK"));
  expectexact();
}

TEST_F(Reshape, MessagesOfTheShape) {
  expectfault(10, numbers(2), array({whole(1), whole(2)}, {1, 2}));
  expectfault(1101, numbers(2), vector({whole(1), enclosed(numbers(2))}));
  expectfault(1102, numbers(2), text("ab"));
  expectfault(1102, numbers(2), vector({real(2.5), character('a')}));
  expectfault(1102, numbers(2), scalar(character('a')));
  Point collected = vector({whole(1), enclosed(numbers(2))});
  collected.type = ISVECTOR | 2;
  expectfault(1101, numbers(2), collected);
  expectexact();
}

TEST_F(Reshape, AProductThatDoesNotFit) {
  const std::int64_t big = std::int64_t{1} << 32;
  expectfault(1100, numbers(2), extents({big}));
  expectfault(1100, numbers(2), extents({65536, 65536}));
  expectfault(1100, numbers(2), extents({big, big}));  // the product wraps to 0
  expectfault(1100, numbers(2), extents({3, std::numeric_limits<std::int64_t>::max()}));
  expectfault(1100, empty(), extents({big}));
  expectfault(113, numbers(2), extents({big, big, -1}));
  expectexact();
}

// The flag word of a collected vector says nothing; its records do.
TEST_F(Reshape, CollectedOperands) {
  Point shape = extents({2, 2});
  shape.type = ISVECTOR | 1;
  Point data = vector({octonion({1}), enclosed(text("ab"))});
  data.type = ISVECTOR | 2;
  holdcopy(data);
  const Point &p = reshaped(data, shape);
  EXPECT_EQ(p.type, ISARRAY | 2);
  EXPECT_EQ(textof(p.data_pointer[0]), textof(p.data_pointer[2]));
  EXPECT_EQ(textof(p.data_pointer[1]), textof(p.data_pointer[3]));
  expectexact();
  const Point &q = reshaped(p, scalar(whole(1)));
  EXPECT_EQ(q.elements, 1u);
  held.erase(held.end() - 2);
  expectexact();
}

TEST_F(Reshape, SymbolicDataHasNoElements) {
  expectfault(994, function({numbers(1)}, 1), extents({2}));
  expectfault(994, variable("x", 0), extents({2}));
  Point p = function({numbers(1)}, 1);
  const Point &q = reshaped(p, extents({0}));
  EXPECT_EQ(q.type, ISVECTOR | ISEMPTY);
  expectexact();
}

TEST_F(Reshape, AnUnknownTag) {
  for (const bool shared : {false, true})
    for (const int count : {7, 2}) {
      Point plain = vector({real(1), real(2), record(9, 0)}), mixed = vector({whole(1), real(2), record(9, 0)});
      if (shared) {
        plain.data_pointer[1].tag = mixed.data_pointer[1].tag = 9;
        holdcopy(plain);
        holdcopy(mixed);
      }
      expectfault(991, plain, vector({real(count)}));  // extents that need a block of their own
      expectfault(994, mixed, extents({count}));
    }
  expectexact();
}

// What is said of a value, and what is not of its shape, stays said.
TEST_F(Reshape, FlagsThatStay) {
  Point data = vector({whole(1), real(2)});
  data.type |= INOUT | ISPROBABLE | ISSTRUCTURE | HASFUNCTION;
  EXPECT_EQ(reshaped(data, extents({3})).type,
            INOUT | ISPROBABLE | HASFUNCTION | COMPLEXED | HASINTEGER | HASREAL | ISVECTOR);
  data = vector({enclosed(numbers(2)), whole(1)});
  EXPECT_EQ(data.depth, 2);
  const Point &p = reshaped(data, extents({2, 1}));
  EXPECT_EQ(p.depth, 2);
  EXPECT_EQ(p.type, STRUCTURED | HASINTEGER | ISARRAY);
  expectexact();
}

// The record of a scalar was looked at whatever the flag word said; that of a vector no longer is.
TEST_F(Reshape, AScalarsRecordTellsWhatTheVectorOwns) {
  for (const bool nests : {false, true})
    for (const int count : {1, 3}) {
      Point data = scalar(nests ? enclosed(numbers(2)) : octonion({1}));
      data.type = ISSCALAR | HASINTEGER;
      EXPECT_TRUE(mayown(reshaped(data, extents({count}))));
      expectexact();
    }
}

// Its counted name does not go along.
TEST_F(Reshape, ANamedScalar) {
  for (const int count : {1, 3}) {
    const Point io = scalar(named(whole(1), "#IO"));
    hold(io);
    Point copy = io;
    referencepoint(&copy);
    const Point &p = reshaped(copy, extents({count}));
    for (int i = 0; i < count; ++i) EXPECT_EQ(p.data_pointer[i].name, elementname("#IO"));
    EXPECT_EQ(referencecount(io.data_pointer->name), 1);
    Point shape = io;
    referencepoint(&shape);
    EXPECT_EQ(reshaped(numbers(2), shape).shape_pointer->name, nullptr);
    EXPECT_EQ(referencecount(io.data_pointer->name), 1);
    expectexact();
  }
}

TEST_F(Reshape, OneBlockAsDataAndShape) {
  Point both = extents({2, 3});
  Point copy = both;
  referencepoint(&copy);
  const Point &p = reshaped(both, copy);
  EXPECT_EQ(shapeof(p), (Extents{2, 3}));
  EXPECT_EQ(textsof(p), (Texts{"4:2", "4:3", "4:2", "4:3", "4:2", "4:3"}));
  expectexact();
}

TEST_F(Reshape, AFileIsClosedOnce) {
  std::FILE *stream = std::tmpfile();
  const int descriptor = fileno(stream);
  Element e;
  makehandle(e, stringdup("f"), stream, numbers(2));
  Point &p = reshaped(scalar(e), extents({3}));
  expectexact();
  EXPECT_NE(fcntl(descriptor, F_GETFD), -1);
  drop(p);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

// ---- At random.

Point anydata(std::mt19937 &random) {
  if (random() % 5 == 0) return structured::anyspace(random, {});
  const auto count = static_cast<std::int64_t>(random() % 12);
  return structured::anyspace(random, count == 6 ? Extents{2, 3} : Extents{count});
}

class RandomReshape : public Reshape, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomReshape, AsTheModel) {
  std::mt19937 random(GetParam());
  for (int round = 0; round < 200; ++round) {
    const Point data = anydata(random);
    Extents shape(random() % 6 + 1);
    std::uint64_t product = 1;
    for (std::int64_t &extent : shape) {
      extent = static_cast<std::int64_t>(random() % 5);
      if (extent == 0 && random() % 3 != 0) extent = 1;
      product *= static_cast<std::uint64_t>(extent);
    }
    const Texts old = textsof(data);
    const std::string whole = textof(data);
    const std::uint32_t type = data.type;
    const bool shared = random() % 2 == 0;
    if (shared) holdcopy(data);
    hold(data);
    Point s = extents(shape);
    if (random() % 2 == 0) holdcopy(s), std::swap(held[held.size() - 1], held[held.size() - 2]);
    hold(s);
    ASSERT_EQ(run(), product != 0 && old.empty() ? 1 : 0) << said;
    if (product != 0 && old.empty()) {
      EXPECT_EQ(said.find("\n11 - "), 0u);
    } else {
      const Point &p = held.back();
      ASSERT_EQ(shapeof(p), shape);
      Texts expected;
      for (std::uint64_t i = 0; i < product; ++i) expected.push_back(old[i % old.size()]);
      ASSERT_EQ(textsof(p), expected);
      const std::uint32_t form = shape.size() > 1 ? ISARRAY : ISVECTOR;
      const std::uint32_t one = product == 1 ? ISONEELEMENT : 0;
      constexpr std::uint32_t GONE = ISSCALAR | ISONEELEMENT | ISVECTOR | ISARRAY | ISSTRUCTURE | ISEMPTY;
      ASSERT_EQ(p.type, product == 0 ? form | ISEMPTY : (type & ~GONE) | form | one);
      ASSERT_EQ(p.elements, product);
      ASSERT_TRUE(!shared || textof(held[0]) == whole);
    }
    expectexact();
    if (HasFatalFailure()) return;
    letgo();
    expectexact();
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomReshape, testing::Range(1u, 16u));

// Many records, in pieces of every size.
TEST_F(Reshape, LongOnes) {
  for (const int have : {1, 3, 1000, 65537})
    for (const std::int64_t count : {65536, 65537, 200003}) {
      const Point &p = reshaped(numbers(have), extents({count}));
      for (std::int64_t i = 0; i < count; ++i)
        if (p.data_pointer[i].integer != i % have + 1) FAIL() << have << ' ' << count << ' ' << i;
      drop(held.back());
      held.pop_back();
    }
}

// An interrupt on the way leaves both operands whole.
TEST_F(Reshape, Interrupted) {
  for (const bool shared : {false, true})
    for (const bool plain : {false, true}) {
      const Point data = plain ? numbers(3) : vector({octonion({1}), whole(2)});
      if (shared) holdcopy(data);
      hold(data);
      hold(vector({real(300000)}));
      const std::string was = textof(data);
      Point *const d = &held[held.size() - 2], *const s = &held.back();
      const Point *const i = &instruction;
      interrupted = SIGINT;
      testing::internal::CaptureStdout();
      EXPECT_EQ(landingof([=] { reshape(d, s, i); }), -1002);
      EXPECT_NE(testing::internal::GetCapturedStdout().find("** User interrupt. **"), std::string::npos);
      interrupted = 0;
      EXPECT_EQ(textof(*d), was);
      EXPECT_EQ(s->data_pointer->real, 300000);
      expectexact();
    }
  pendingproblem = 0;
}

#ifdef MORVIK_CHECKING
// Whichever allocation fails, both operands are whole and nothing is left over.
TEST_F(Reshape, WithoutStorage) {
  const Elements records = {octonion({1}), octonion({2}), enclosed(numbers(2)), whole(4)};
  hold(vector(records));
  for (const bool shared : {false, true})
    for (const bool plain : {false, true})
      for (const int count : {0, 2, 4, 9}) {
        std::string was;
        Point *data, *shape;
        withoutstorage(
            [&] {
              Point made = plain ? numbers(4) : held[0];
              if (!plain) {
                made.data_pointer = copyelements(held[0].data_pointer, 4);
                reference(made.shape_pointer);
              }
              if (shared) holdcopy(made);
              data = &hold(made);
              shape = &hold(vector({real(count)}));
              was = textof(made);
            },
            [&] { reshape(data, shape, &instruction); },
            [&](bool failed) {
              if (failed) {
                EXPECT_EQ(textof(*data), was);
                EXPECT_EQ(shape->data_pointer->real, count);
              }
              expectexact();
              while (held.size() > 1) {
                drop(held.back());
                held.pop_back();
              }
            });
      }
}
#endif

}  // namespace
