// Folds against plain loops: each modifier that folds, over every kind, mixed and nested, in every shape.
#include "operators/reduce.h"

#include <algorithm>
#include <csignal>
#include <functional>
#include <random>

#include "arithmetic/cores.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "fold_model.h"
#include "spaces/making.h"
#include "spaces/sysvars.h"

using namespace morvik;

namespace {

using namespace points;
using namespace folds;
using structured::anyshape;
using structured::shapeof;

enum Kind { BYTE, WHOLE, REAL, COMPLEX, QUATERNION, OCTONION, NESTED, KINDS };

class Reduce : public Lifetimes {
 protected:
  Point context[16] = {}, stack[2] = {};
  std::mt19937 random{3};

  void SetUp() override {
    Lifetimes::SetUp();
    makereal(context[CT_SLOT], TOLERANCE, forms::NUMBER);
  }
  void TearDown() override {
    drop(stack[1]);
    drop(context[CT_SLOT]);
    Lifetimes::TearDown();
    stepping = pendingproblem = 0;
  }
  void letgo() {
    drop(stack[1]);
    stack[1] = {};
    Lifetimes::letgo();
  }
  int run(std::uint16_t modifier, bool last = false) {
    Point *top = stack + 1, instruction{};
    instruction.rank = ranks::OPERATOR;
    instruction.type = ISOPERATOR;
    instruction.instruction = last ? instructions::REDUCELASTAXIS : instructions::REDUCE;
    instruction.modifier = modifier;
    testing::internal::CaptureStdout();
    int number;
    {
      const arithmetic::Report report;
      const int value = landingof([&] { (last ? reducelastaxis : reduce)(&top, &instruction, context); });
      number = report.number();
      EXPECT_EQ(value != 0, number != 0);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(top, stack + 1);
    return number;
  }
  void expectcounts() {
    Recount recount;
    recount.hold(stack[1]);
    recount.hold(context[CT_SLOT]);
    for (const Point &p : held) recount.hold(p);
    ASSERT_EQ(recount.faults(liveblocks() - before), "");
  }

  Element anyelement(int kind) {
    int n = static_cast<int>(random() % 7) - 2;
    if (n == 0) n = 5;  // division by zero is the business of DIVIDE
    const double x = n / 4.0;
    switch (kind) {
      case BYTE:
        return character(static_cast<char>('a' + n + 2));
      case WHOLE:
        return whole(n, random() % 2 == 0 ? forms::NUMBER : forms::BINARY);
      case REAL:
        return real(x + 0.125);
      case COMPLEX:
        return complex(x, 1, forms::POLAR, attributes::DEGREES);
      case QUATERNION:
        return quaternions(0.5, x, 1, n);
      case OCTONION:
        return octonion({x, 1, 0, 0.25, n * 1.0});
      default:
        if (n == 2) return enclosed(scalar(real(x)));
        if (n == 1) return enclosed(vector({enclosed(numbers({1, 2})), whole(3)}));
        return enclosed(vector({whole(n), real(x)}));
    }
  }
  Point anyspace(int kind, const Extents &shape) {
    std::size_t count = 1;
    for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
    Elements elements;
    for (std::size_t i = 0; i < count; ++i)
      elements.push_back(anyelement(kind < KINDS ? kind : WHOLE + static_cast<int>(random() % (kind - KINDS + 3))));
    Point p = array(elements, shape);
    if (random() % 4 == 0) p.type |= ISPROBABLE;
    return p;
  }

  void trial(std::uint16_t modifier, const Point &space, bool last) {
    letgo();
    stack[1] = space;
    if (random() % 2 == 0) holdcopy(space);
    const Space was = model::of(space);
    const std::string text = structured::textof(space);
    const std::int16_t depth = space.depth;
    const bool nothing = was.elements.empty();
    const Folded expected = nothing ? Folded{0, was.shape, {}} : folded(modifier, was, last);
    ASSERT_EQ(run(modifier, last), expected.message) << modifier << model::show(was);
    if (!held.empty()) ASSERT_EQ(structured::textof(held[0]), text);
    expectcounts();
    if (expected.message != 0 || nothing) {
      ASSERT_EQ(structured::textof(stack[1]), text);
      return;
    }
    const Point &p = stack[1];
    ASSERT_EQ(shapeof(p), expected.shape);
    ASSERT_EQ(p.elements, expected.elements.size());
    for (std::uint32_t i = 0; i < p.elements; ++i) {
      const Value made = model::of(p.data_pointer[i]);
      ASSERT_TRUE(alike(made, expected.elements[i]))
          << modifier << (last ? " last " : " ") << model::show(was) << "\ngave " << model::show(made)
          << "\ninstead of " << model::show(expected.elements[i]);
    }
    structured::expecthonest(p);
    ASSERT_EQ(p.type & ISPROBABLE, was.type & ISPROBABLE);
    if (p.rank == 0) ASSERT_EQ(p.depth, 0);
    if (p.rank > 0) ASSERT_EQ(p.depth, depth);
  }
};

// One kind, or the first so many kinds of numbers mixed.
TEST_F(Reduce, AsTheModel) {
  for (const std::uint16_t modifier : FOLDING)
    for (int kind = 0; kind < KINDS + 4; ++kind)
      for (std::size_t rank = 1; rank <= 6; ++rank)
        for (const bool last : {false, true}) {
          trial(modifier, anyspace(kind, anyshape(random, rank)), last);
          if (HasFatalFailure()) return;
        }
}

// Long rows, where sums are made without a record between the steps.
TEST_F(Reduce, LongRows) {
  for (const std::uint16_t modifier : {instructions::ADD, instructions::MAXIMUM, instructions::AND})
    for (const int kind : {int{WHOLE}, int{REAL}, int{KINDS}, KINDS + 2})
      for (const bool last : {false, true})
        for (int round = 0; round < 20; ++round) {
          trial(modifier, anyspace(kind, {static_cast<std::int64_t>(random() % 300) + 1, 1 + round % 3}), last);
          if (HasFatalFailure()) return;
        }
}

// A sum of integers is real from where it leaves their range, and stays real.
TEST_F(Reduce, SumsPastTheIntegers) {
  const std::int64_t most = INT64_MAX;
  const std::vector<std::vector<std::int64_t>> rows = {
      {most, most},       {most, 1, -5},      {most, most, -most, -most},
      {INT64_MIN, -1, 7}, {1, most, most, 2}, {most, -most, 3}};
  for (const auto &row : rows) {
    Elements elements;
    for (const std::int64_t n : row) elements.push_back(whole(n));
    trial(instructions::ADD, vector(elements), false);
    if (HasFatalFailure()) return;
    trial(instructions::MULTIPLY, vector({whole(row[0]), whole(row[1])}), false);
    if (HasFatalFailure()) return;
  }
}

TEST_F(Reduce, OrderOfTheSteps) {
  stack[1] = numbers({10, 2, 3});
  ASSERT_EQ(run(instructions::SUBTRACT), 0);
  EXPECT_EQ(stack[1].data_pointer->integer, 5);
  drop(stack[1]);
  stack[1] = numbers({1, 2, 3, 4, 5, 6}, {3, 2});
  ASSERT_EQ(run(instructions::SUBTRACT), 0);
  EXPECT_EQ(structured::textof(stack[1]), "1(2 [4:-4][4:-7])");
  drop(stack[1]);
  stack[1] = numbers({1, 2, 3, 4, 5, 6}, {3, 2});
  ASSERT_EQ(run(instructions::SUBTRACT, true), 0);
  EXPECT_EQ(structured::textof(stack[1]), "1(3 [4:-3][4:-3][4:-3])");
}

// A scalar and an empty space are their own reductions, whatever the modifier is.
TEST_F(Reduce, NothingToFold) {
  const std::function<Point()> values[] = {[] { return scalar(whole(5)); },
                                           [] { return scalar(character('a')); },
                                           [] { return scalar(named(real(2), "n")); },
                                           empty,
                                           [] {
                                             return array({}, {0, 3});
                                           },
                                           [] {
                                             return array({}, {2, 0});
                                           },
                                           [] { return text(""); }};
  for (const auto &value : values)
    for (const bool last : {false, true})
      for (const std::uint16_t modifier : {instructions::ADD, instructions::NAND, instructions::NIHIL}) {
        letgo();
        stack[1] = value();
        const Point was = stack[1];
        ASSERT_EQ(run(modifier, last), 0);
        EXPECT_EQ(std::memcmp(&was, &stack[1], sizeof was), 0);
        expectcounts();
      }
}

// What folds is what has a loop of its own among the scalar instructions; NAND and NOR are left out.
TEST_F(Reduce, ModifiersWithoutACase) {
  for (std::uint16_t modifier = 0; modifier < instructions::COUNT; ++modifier) {
    const bool named = modifier >= instructions::ADD && modifier <= instructions::NOTEQUIVALENT;
    const bool folds = named && modifier != instructions::NAND && modifier != instructions::NOR;
    if (folds && !dyadiccores(modifier)) continue;
    for (const bool last : {false, true}) {
      letgo();
      stack[1] = numbers({1, 1});
      EXPECT_EQ(run(modifier, last), folds ? 0 : 79) << modifier;
      expectcounts();
    }
  }
  for (const std::uint16_t modifier : FOLDING) EXPECT_NE(dyadiccores(modifier), nullptr);
}

TEST_F(Reduce, WhatDoesNotFold) {
  const auto expect = [&](int message, std::uint16_t modifier, const Point &space) {
    letgo();
    stack[1] = space;
    holdcopy(space);
    for (const bool last : {false, true}) {
      EXPECT_EQ(run(modifier, last), message);
      EXPECT_EQ(std::memcmp(&space, &stack[1], sizeof space), 0);
      expectcounts();
    }
  };
  expect(75, instructions::ADD, text("abc"));
  expect(75, instructions::MULTIPLY, vector({whole(1), character('a')}));
  expect(991, instructions::ADD, vector({whole(1), real(2), enclosed(numbers({1}))}));
  expect(994, instructions::ADD, vector({whole(1), real(2), record(tags::FILLER, 0)}));
  expect(994, instructions::ADD, function({numbers({1})}, 1, 0, "f"));
  expect(145, instructions::ADD, local(ranks::LOCAL_ADDRESS, 1));
  expect(0, instructions::ADD, symbol(ranks::ADDRESS, ISADDRESS, "x"));
}

TEST_F(Reduce, AnAddressWithAMeaning) {
  Point *meaning = newpoint();
  *meaning = numbers({1, 2});
  stack[1] = symbol(ranks::ADDRESS, ISADDRESS, "x");
  stack[1].target = meaning;
  EXPECT_EQ(run(instructions::ADD), 145);
  EXPECT_EQ(run(instructions::ADD, true), 145);
}

// A record that is folded alone stays as it is, its name included; otherwise the name is gone.
TEST_F(Reduce, Names) {
  Element pi = real(3.14);
  pi.attributes |= attributes::NAMED;
  pi.name = elementname("#PI");
  stack[1] = vector({pi});
  ASSERT_EQ(run(instructions::ADD), 0);
  EXPECT_NE(stack[1].data_pointer->attributes & attributes::NAMED, 0);
  drop(stack[1]);
  stack[1] = vector({pi, whole(1)});
  ASSERT_EQ(run(instructions::MAXIMUM), 0);
  EXPECT_EQ(stack[1].data_pointer->attributes & attributes::NAMED, 0);
}

// What COLLECT made has no kinds in its flag word: the records are gone by.
TEST_F(Reduce, Collected) {
  Point collected = vector({whole(1), real(2.5), octonion({1, 1})});
  collected.type = ISVECTOR | 3;
  stack[1] = collected;
  holdcopy(collected);
  ASSERT_EQ(run(instructions::ADD), 0);
  EXPECT_EQ(stack[1].data_pointer->octonion->part[0], 4.5);
  EXPECT_EQ(stack[1].type, ISSCALAR | HASOCTONION);
  expectcounts();
}

TEST_F(Reduce, Interrupted) {
  for (const bool last : {false, true})
    for (const int rows : {1, 3, 70000}) {
      letgo();
      Elements elements;
      for (int i = 0; i < 210000; ++i) elements.push_back(i % 1000 == 0 ? octonion({1.0 * i}) : whole(i));
      stack[1] = array(elements, {210000 / rows, rows});
      interrupted = SIGINT;
      Point *top = stack + 1, instruction{};
      instruction.modifier = instructions::ADD;
      testing::internal::CaptureStdout();
      EXPECT_EQ(landingof([&] { (last ? reducelastaxis : reduce)(&top, &instruction, context); }), -1002);
      testing::internal::GetCapturedStdout();
      interrupted = 0;
      expectcounts();
    }
}

#ifdef MORVIK_CHECKING
TEST_F(Reduce, WithoutStorage) {
  for (const std::uint16_t modifier : {instructions::ADD, instructions::MULTIPLY, instructions::MAXIMUM})
    for (int kind = 0; kind < 3; ++kind) {
      std::string was;
      Point *top = stack + 1, instruction{};
      instruction.modifier = modifier;
      withoutstorage(
          [&] {
            letgo();
            stack[1] = kind == 0   ? array({octonion({1}), octonion({2}), octonion({3}), octonion({4})}, {2, 2})
                       : kind == 1 ? vector({enclosed(numbers({1, 2})), enclosed(numbers({3, 4})), whole(5)})
                                   : array({whole(1), whole(2), octonion({3}), real(4)}, {2, 2});
            was = structured::textof(stack[1]);
          },
          [&] { reduce(&top, &instruction, context); },
          [&](bool failed) {
            expectcounts();
            if (failed) EXPECT_EQ(structured::textof(stack[1]), was);
          });
    }
}
#endif

}  // namespace
