// The frame of the dyadic scalar instructions: every pair of kinds with every pair of shapes against the plain model,
// and what a result is beside its elements.
#include <random>

#include "dyadic_operands.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

using namespace arithmetic;

TEST_F(Dyadics, EveryPairOfKindsAndShapesAgreesWithTheModel) {
  int compared = 0, refused = 0;
  for (const Instruction &instruction : INSTRUCTIONS)
    for (int l = 0; l < KINDS; ++l)
      for (int r = 0; r < KINDS; ++r)
        for (const auto &leftshape : SHAPES)
          for (const auto &rightshape : SHAPES)
            for (const bool shared : {false, true}) {
              Stack stack;
              push(stack, operand(l, leftshape), shared);
              push(stack, operand(r, rightshape, 2), shared);
              const model::Space left = model::of(stack.left()), right = model::of(stack.right());
              const model::Result expected = model::apply(instruction.op, left, right);
              const std::string what = described(instruction, l, leftshape, r, rightshape);
              const int message = run(instruction.plain, stack);
              ASSERT_EQ(message, expected.message) << what;
              if (message == 0) {
                ASSERT_EQ(stack.height(), 1) << what;
                model::expectclose(model::of(stack.left()), expected.space, what);
                ++compared;
              } else {
                ASSERT_EQ(stack.height(), 2) << what;
                model::expectsame(model::of(stack.left()), left, what + ": the left operand");
                model::expectsame(model::of(stack.right()), right, what + ": the right operand");
                ++refused;
              }
              if (shared) {
                model::expectsame(model::of(held[0]), left, what + ": the other holder's left operand");
                model::expectsame(model::of(held[1]), right, what + ": the other holder's right operand");
              }
              clear(stack);
              drop();
              ASSERT_EQ(liveblocks(), before) << what;
              if (HasFailure()) return;
            }
  EXPECT_GT(compared, 10000);
  EXPECT_GT(refused, 10000);
}

TEST_F(Dyadics, MixedSpacesAgreeWithTheModel) {
  std::mt19937 random(7);
  const auto draw = [&](int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); };
  const auto mixed = [&](const std::vector<std::int64_t> &shape) {
    if (shape.empty()) return operand(INTEGER + draw(KINDS - INTEGER), {}, 1 + random() % 3);
    Elements elements;
    for (std::int64_t i = 0; i < shape[0] * (shape.size() > 1 ? shape[1] : 1); ++i)
      elements.push_back(element(INTEGER + draw(KINDS - INTEGER), 1 + random() % 5));
    return points::array(elements, shape);
  };
  const std::vector<std::vector<std::int64_t>> shapes = {{}, {1}, {7}, {4, 3}};
  for (int round = 0; round < 3000; ++round) {
    const Instruction &instruction = INSTRUCTIONS[draw(4)];
    const auto &shape = shapes[static_cast<std::size_t>(draw(4))];
    const bool swapped = draw(2) == 0, shared = draw(3) == 0;
    Stack stack;
    push(stack, mixed(swapped ? std::vector<std::int64_t>{} : shape), shared);
    push(stack, mixed(shape), shared);
    // A flag word need not be exact: COLLECT leaves none of the kinds.
    if (draw(4) == 0 && stack.left().rank > 0) stack.left().type = ISVECTOR | (stack.left().type & ISONEELEMENT) | 1;
    const model::Space left = model::of(stack.left()), right = model::of(stack.right());
    const model::Result expected = model::apply(instruction.op, left, right);
    ASSERT_EQ(run(instruction.plain, stack), expected.message);
    if (expected.message == 0) {
      model::Space result = model::of(stack.left());
      result.type &= ~ISVARIABLE;
      model::Space wanted = expected.space;
      if (left.rank == 2 && (left.type & ISARRAY) == 0) wanted.type = (wanted.type & ~ISARRAY) | ISVECTOR;
      model::expectclose(result, wanted, instruction.name);
    }
    if (shared) {
      model::Space other = model::of(held[0]);
      other.type = left.type;
      model::expectsame(other, left);
      model::expectsame(model::of(held[1]), right);
    }
    clear(stack);
    drop();
    ASSERT_EQ(liveblocks(), before);
    if (HasFailure()) return;
  }
}

// ---- Shapes, flags and counts of the result.

TEST_F(Dyadics, TwoScalarsGiveAScalarAndOneElementArraysKeepTheirShape) {
  const auto shapeof = [](const Point &l, const Point &r) { return evaluate(add, l, r).space; };
  EXPECT_EQ(shapeof(points::scalar(points::whole(1)), points::scalar(points::whole(2))).type, ISSCALAR | HASINTEGER);
  const model::Space oneright = shapeof(points::scalar(points::whole(1)), points::numbers({2}));
  EXPECT_EQ(oneright.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  EXPECT_EQ(oneright.shape, std::vector<std::int64_t>{1});
  const model::Space oneleft = shapeof(points::numbers({2}, {1, 1, 1}), points::scalar(points::whole(1)));
  EXPECT_EQ(oneleft.type, ISARRAY | ISONEELEMENT | HASINTEGER);
  EXPECT_EQ(oneleft.rank, 3);
  EXPECT_EQ(shapeof(points::numbers({2}), points::numbers({1}, {1, 1})).rank, 1);
  EXPECT_EQ(shapeof(points::numbers({2}, {1, 1}), points::numbers({1})).rank, 2);
  const model::Space array = shapeof(points::numbers({2}, {1, 1}), points::numbers({1, 2, 3}));
  EXPECT_EQ(array.rank, 1);
  EXPECT_EQ(array.type, ISVECTOR | HASINTEGER);
}

TEST_F(Dyadics, TheDepthIsTheDeeperOperands) {
  Stack stack;
  stack.push(points::vector({points::enclosed(points::numbers({1, 2})), points::whole(1)}));
  stack.push(points::scalar(points::whole(1)));
  EXPECT_EQ(stack.left().depth, 2);
  ASSERT_EQ(run(add, stack), 0);
  EXPECT_EQ(stack.left().depth, 2);
  EXPECT_EQ(stack.left().data_pointer[0].subarray->depth, 1);
  clear(stack);
}

TEST_F(Dyadics, ProbableStaysWithTheResult) {
  for (const bool left : {false, true})
    for (const bool shared : {false, true}) {
      Stack stack;
      push(stack, points::scalar(points::whole(1)), shared);
      push(stack, points::scalar(points::whole(1)), shared);
      (left ? stack.left() : stack.right()).type |= ISPROBABLE;
      ASSERT_EQ(run(add, stack), 0);
      EXPECT_EQ(stack.left().type, ISSCALAR | HASINTEGER | ISPROBABLE);
      clear(stack);
      drop();
    }
}

TEST_F(Dyadics, ResultsHaveNoNames) {
  // Names of elements are permanent, but for the counted name of a scalar.
  for (const bool shared : {false, true}) {
    Stack stack;
    push(stack, points::scalar(points::named(points::real(3.5), "#PI")), shared);
    push(stack, points::scalar(points::whole(1)), shared);
    ASSERT_EQ(run(add, stack), 0);
    const Element &e = *stack.left().data_pointer;
    EXPECT_EQ(e.attributes, 0);
    EXPECT_EQ(e.name, nullptr);
    EXPECT_EQ(e.real, 4.5);
    if (shared) {
      EXPECT_STREQ(held[0].data_pointer->name, "#PI");
    }
    clear(stack);
    drop();
    EXPECT_EQ(liveblocks(), before);
  }
  Stack stack;
  Element named =
      points::complex(1, 2, forms::CARTESIAN, attributes::NAMED | attributes::SILENT | attributes::PREFIX_R);
  named.name = elementname("#X");
  stack.push(points::vector({named, named}));
  stack.push(points::numbers({1, 2}));
  ASSERT_EQ(run(add, stack), 0);
  EXPECT_EQ(stack.left().data_pointer[1].attributes, attributes::PREFIX_R);
  EXPECT_EQ(stack.left().data_pointer[1].name, nullptr);
  clear(stack);
}

TEST_F(Dyadics, WorkIsCounted) {
  operations = 0;
  from_coprocessor[0].total_flops = 100;
  EXPECT_EQ(evaluate(add, points::numbers({1, 2, 3}), points::scalar(points::whole(1))).message, 0);
  EXPECT_EQ(operations, 3);
  EXPECT_EQ(flopos, 1) << "the count begins with 1, and integers add none";
  EXPECT_EQ(evaluate(add, points::scalar(points::real(1)), points::scalar(points::real(1))).message, 0);
  EXPECT_EQ(operations, 4);
  EXPECT_EQ(flopos, 2);
  EXPECT_EQ(evaluate(add, operand(COMPLEX, {4}), operand(COMPLEX, {4})).message, 0);
  EXPECT_EQ(flopos, 9) << "two for each complex sum";
  const Point huge = points::vector({points::whole(INT64_MAX), points::whole(1)});
  EXPECT_EQ(evaluate(add, huge, points::scalar(points::whole(INT64_MAX))).message, 0);
  EXPECT_EQ(flopos, 2) << "one for the sum that became real";
  EXPECT_EQ(from_coprocessor[0].flops, 2);
  EXPECT_EQ(from_coprocessor[0].total_flops, 100 + 1 + 2 + 9 + 2);
  operations = 0;
  EXPECT_EQ(evaluate(add, operand(NESTED, {2}), points::scalar(points::whole(1))).message, 0);
  EXPECT_EQ(operations, 2 + 3 + 3) << "the members' elements count too";
}

// ---- Empty operands, and Points that are no spaces.

TEST_F(Dyadics, AnEmptyOperandGivesWay) {
  for (const Instruction &instruction : INSTRUCTIONS) {
    EXPECT_EQ(evaluate(instruction.plain, points::empty(), points::text("ab")).space.elements.size(), 2U);
    EXPECT_EQ(evaluate(instruction.plain, points::numbers({7, 8, 9}), points::empty()).space.elements[2].integer, 9);
    const model::Result both = evaluate(instruction.plain, points::empty(), points::empty());
    EXPECT_EQ(both.message, 0);
    EXPECT_TRUE(both.space.elements.empty());
  }
}

TEST_F(Dyadics, AnEmptyMemberGivesWay) {
  const Point left = points::vector({points::enclosed(points::empty()), points::enclosed(points::numbers({1, 2})),
                                     points::enclosed(points::empty()), points::enclosed(points::empty())});
  const Point right = points::vector({points::whole(4), points::enclosed(points::empty()),
                                      points::enclosed(points::numbers({5, 6})), element(OCTONION, 1)});
  const model::Result r = evaluate(add, left, right);
  ASSERT_EQ(r.message, 0);
  EXPECT_EQ(r.space.elements[0].member[0].elements[0].integer, 4);
  EXPECT_EQ(r.space.elements[0].member[0].rank, 0);
  EXPECT_EQ(r.space.elements[1].member[0].elements[1].integer, 2);
  EXPECT_EQ(r.space.elements[2].member[0].elements[1].integer, 6);
  EXPECT_EQ(r.space.elements[3].member[0].elements[0].parts[2], -2);
}

TEST_F(Dyadics, SymbolsDoNotCombine) {
  const auto function = [] { return points::function({points::operation(instructions::ADD, "+")}); };
  const auto address = [] { return points::symbol(ranks::ADDRESS, ISADDRESS, "name"); };
  const auto one = [] { return points::scalar(points::whole(1)); };
  for (const Instruction &instruction : INSTRUCTIONS) {
    EXPECT_EQ(evaluate(instruction.plain, one(), function()).message, 162);
    EXPECT_EQ(evaluate(instruction.plain, function(), one()).message, 162);
    EXPECT_EQ(evaluate(instruction.plain, function(), function()).message, 162);
    EXPECT_EQ(evaluate(instruction.plain, function(), points::numbers({1, 2})).message, 17);
    EXPECT_EQ(evaluate(instruction.plain, address(), one()).message, 17);
    EXPECT_EQ(evaluate(instruction.plain, one(), address()).message, 17);
  }
}

TEST_F(Dyadics, RecordsOfOtherTagsDoNotCombine) {
  const auto odd = [](std::int32_t tag) {
    Point p = points::vector({points::whole(1), points::record(tag, 0)});
    p.type = ISVECTOR | HASINTEGER;
    return p;
  };
  for (const std::int32_t tag : {0, 9, int{tags::FILLER}, 12, -1, int{ranks::END}, INT32_MAX, INT32_MIN}) {
    EXPECT_EQ(evaluate(add, odd(tag), points::numbers({1, 2})).message, 162) << tag;
    EXPECT_EQ(evaluate(add, points::numbers({1, 2}), odd(tag)).message, 162) << tag;
  }
}

TEST_F(Dyadics, AStructureOfSeveralMembersIsNoScalar) {
  const auto structure = [] {
    Point p = points::numbers({10, 20, 30});
    p.type = ISSCALAR | ISSTRUCTURE | HASINTEGER;
    return p;
  };
  const model::Result extended = evaluate(add, structure(), points::scalar(points::whole(1)));
  ASSERT_EQ(extended.message, 0);
  ASSERT_EQ(extended.space.elements.size(), 3U);
  EXPECT_EQ(extended.space.elements[2].integer, 31);
  const model::Result other = evaluate(subtract, points::scalar(points::whole(1)), structure());
  ASSERT_EQ(other.space.elements.size(), 3U);
  EXPECT_EQ(other.space.elements[2].integer, -29);
  EXPECT_EQ(evaluate(add, structure(), points::numbers({1, 2})).message, 17);
  EXPECT_EQ(evaluate(add, structure(), structure()).space.elements[1].integer, 40);
}

}  // namespace
