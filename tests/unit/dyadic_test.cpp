// The frame of the dyadic scalar instructions: every pair of kinds with every pair of shapes against the plain model,
// who owns what afterwards, what a failure leaves, and the slices.
#include "arithmetic/dyadic.h"

#include <functional>
#include <random>

#include "arithmetic_model.h"
#include "coprocessor/slices.h"

namespace {

using namespace arithmetic;
using points::Elements;

// ---- Operands of every kind and shape, small enough that each result is exact or nearly so.

enum Kind { ASCII, UNICODE, INTEGER, REAL, COMPLEX, POLAR, QUATERNION, FLAT, OCTONION, NESTED, KINDS };

Element element(int kind, std::size_t i) {
  const double x = static_cast<double>(i);
  switch (kind) {
    case ASCII:
      return points::character(static_cast<char>('a' + i), i % 2 == 0 ? 0 : forms::BINARY);
    case UNICODE: {
      Element e = points::record(tags::UNICODE, 0);
      e.unicode = static_cast<std::uint16_t>(0x2200 + i);
      return e;
    }
    case INTEGER:
      return points::whole(static_cast<std::int64_t>(i) - 2, i % 2 == 0 ? forms::NUMBER : forms::BINARY);
    case REAL:
      return points::real(x - 2.5);
    case COMPLEX:
      return points::complex(x - 1, 2 - x, forms::CARTESIAN, attributes::PREFIX_R);
    case POLAR:
      return points::complex(x + 1, x - 2, forms::POLAR, attributes::DEGREES | attributes::SILENT);
    case QUATERNION:
      return points::quaternions(x - 1, 2, -x, x + 1, forms::CARTESIAN, attributes::PREFIX_R);
    case FLAT:
      return points::quaternions(x + 1, 2, 3 - x, 0, forms::POLAR, attributes::DEGREES);
    case OCTONION:
      return points::octonion({x, 1, -2, x, 1, 3, -x, x - 1}, forms::POLAR, attributes::DEGREES);
    default:
      return points::enclosed(points::numbers({static_cast<std::int64_t>(i) + 1, 2, 3}));
  }
}

const std::vector<std::vector<std::int64_t>> SHAPES = {{}, {1}, {1, 1}, {3}, {4}, {3, 2}, {2, 3}};

Point operand(int kind, const std::vector<std::int64_t> &shape, std::size_t from = 1) {
  if (shape.empty()) return points::scalar(element(kind, from));
  std::size_t count = 1;
  for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
  Elements elements;
  for (std::size_t i = 0; i < count; ++i) elements.push_back(element(kind, from + i));
  return points::array(elements, shape);
}

std::string described(const Instruction &instruction, int left, const std::vector<std::int64_t> &leftshape, int right,
                      const std::vector<std::int64_t> &rightshape) {
  std::string text = std::string(instruction.name) + " of kind " + std::to_string(left) + " [";
  for (const auto extent : leftshape) text += " " + std::to_string(extent);
  text += " ] by kind " + std::to_string(right) + " [";
  for (const auto extent : rightshape) text += " " + std::to_string(extent);
  return text + " ]";
}

class Dyadics : public Lifetimes {
 protected:
  void SetUp() override {
    Lifetimes::SetUp();
    A_Problem = 0;
  }
  // What stands on the stack is held elsewhere too if `shared`.
  void push(Stack &stack, const Point &p, bool shared) {
    stack.push(p);
    if (shared) holdcopy(p);
  }
  void clear(Stack &stack) {
    while (stack.height() > 0) dereferencepoint(stack.top--);
  }
  void drop() {
    for (Point &p : held) dereferencepoint(&p);
    held.clear();
  }
};

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

// ---- Which block the result goes to.

struct Blocks {
  const Element *left, *right, *result;
};

class Homes : public Dyadics {
 protected:
  Blocks blocks(const Point &left, bool leftshared, const Point &right, bool rightshared) {
    Stack stack;
    push(stack, left, leftshared);
    push(stack, right, rightshared);
    Blocks b{left.data_pointer, right.data_pointer, nullptr};
    EXPECT_EQ(run(add, stack), 0);
    b.result = stack.left().data_pointer;
    holdcopy(stack.left());
    expectstack(stack);
    clear(stack);
    drop();
    return b;
  }
  // The counts are those of the stack and of what is held.
  void expectstack(const Stack &stack) {
    Recount recount;
    for (std::ptrdiff_t i = 1; i <= stack.height(); ++i) recount.add(stack.slots[i]);
    for (const Point &p : held) recount.add(p);
    EXPECT_EQ(recount.faults(before), "");
  }
};

TEST_F(Homes, TwoArraysTakeTheLeftBlockThenTheRightOne) {
  const auto vector = [] { return points::numbers({1, 2, 3}); };
  Blocks b = blocks(vector(), false, vector(), false);
  EXPECT_EQ(b.result, b.left);
  b = blocks(vector(), true, vector(), false);
  EXPECT_EQ(b.result, b.right);
  b = blocks(vector(), true, vector(), true);
  EXPECT_NE(b.result, b.left);
  EXPECT_NE(b.result, b.right);
}

TEST_F(Homes, OneArrayTakesItsOwnBlockAlone) {
  const auto vector = [] { return points::numbers({1, 2, 3}); };
  const auto scalar = [] { return points::scalar(points::whole(1)); };
  for (const bool shared : {false, true}) {
    Blocks b = blocks(vector(), false, scalar(), shared);
    EXPECT_EQ(b.result, b.left);
    b = blocks(scalar(), shared, vector(), false);
    EXPECT_EQ(b.result, b.right);
    b = blocks(vector(), true, scalar(), shared);
    EXPECT_NE(b.result, b.left);
    EXPECT_NE(b.result, b.right);
  }
}

TEST_F(Homes, TheSameBlockTwiceServesIfNobodyElseHoldsIt) {
  for (const bool array : {true, false}) {
    const Point value = array ? points::numbers({1, 2, 3}) : points::scalar(points::whole(4));
    Stack stack;
    const Element *block = value.data_pointer;
    stack.push(value);
    Point copy = value;
    referencepoint(&copy);
    stack.push(copy);
    EXPECT_EQ(refr(block), 2);
    ASSERT_EQ(run(add, stack), 0);
    EXPECT_EQ(stack.left().data_pointer, block);
    EXPECT_EQ(refr(block), 1);
    EXPECT_EQ(block->integer, value.rank == 0 ? 8 : 2);
    expectstack(stack);
    clear(stack);
  }
  Stack stack;
  const Point value = points::numbers({1, 2, 3});
  push(stack, value, true);
  stack.push(value);
  referencepoint(&stack.right());
  ASSERT_EQ(run(add, stack), 0);
  EXPECT_NE(stack.left().data_pointer, value.data_pointer);
  EXPECT_EQ(value.data_pointer->integer, 1);
  clear(stack);
}

TEST_F(Homes, TheSameOctonionsTwice) {
  Stack stack;
  const Point value = operand(OCTONION, {3});
  const model::Space was = model::of(value);
  stack.push(value);
  stack.push(value);
  referencepoint(&stack.right());
  ASSERT_EQ(run(multiply, stack), 0);
  expectstack(stack);
  model::expectclose(model::of(stack.left()), model::apply(model::Op::MULTIPLY, was, was).space);
  clear(stack);
}

TEST_F(Homes, OctonionsAreReusedOneByOne) {
  Stack stack;
  const Point left = operand(OCTONION, {3});
  const Octonion *first = left.data_pointer[0].octonion, *second = left.data_pointer[1].octonion;
  // Somebody else holds the second one alone.
  reference(left.data_pointer[1].octonion);
  const Octonion was = *second;
  stack.push(left);
  stack.push(points::scalar(points::real(2)));
  const Element *data = left.data_pointer;
  ASSERT_EQ(run(multiply, stack), 0);
  EXPECT_EQ(stack.left().data_pointer, data);
  EXPECT_EQ(data[0].octonion, first);
  EXPECT_NE(data[1].octonion, second);
  EXPECT_EQ(second->part[2], was.part[2]);
  EXPECT_EQ(data[1].octonion->part[2], 2 * was.part[2]);
  EXPECT_EQ(refr(second), 1);
  freeblock(const_cast<Octonion *>(second));
  clear(stack);
}

TEST_F(Homes, NestedCallsNeverOverwrite) {
  Stack stack;
  const Point left = points::numbers({1, 2, 3}), right = points::numbers({1, 2, 3});
  stack.push(left);
  stack.push(right);
  holdcopy(left);
  ASSERT_EQ(run(add, stack, 1), 0);
  EXPECT_NE(stack.left().data_pointer, left.data_pointer);
  EXPECT_EQ(held[0].data_pointer->integer, 1);
  EXPECT_EQ(stack.left().data_pointer->integer, 2);
  clear(stack);
  for (const char nested : {0, 1}) {
    const Point scalar = points::scalar(points::whole(1));
    stack.push(scalar);
    stack.push(points::scalar(points::whole(1)));
    const Element *one = stack.left().data_pointer, *other = stack.right().data_pointer;
    holdcopy(scalar);
    if (nested == 0) drop();
    ASSERT_EQ(run(add, stack, nested), 0);
    EXPECT_EQ(stack.left().data_pointer == one || stack.left().data_pointer == other, nested == 0);
    clear(stack);
    drop();
  }
}

TEST_F(Homes, PermanentBlocksStay) {
  Stack stack;
  const Point constant = points::scalar(points::whole(5));
  *refer(constant.data_pointer) = -1;
  stack.push(constant);
  stack.push(constant);
  ASSERT_EQ(run(add, stack), 0);
  EXPECT_EQ(stack.left().data_pointer->integer, 10);
  EXPECT_EQ(constant.data_pointer->integer, 5);
  clear(stack);
  *refer(constant.data_pointer) = 1;
  freeblock(constant.data_pointer);
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

// ---- Failures leave the operands whole.

TEST_F(Dyadics, AFailureInTheMiddleLeavesTheOperandsWhole) {
  const auto mixed = [] {
    Point p = points::vector({points::whole(1), points::real(2.5), points::complex(1, 2), points::whole(4)});
    return p;
  };
  for (const bool shared : {false, true}) {
    Stack stack;
    push(stack, mixed(), shared);
    push(stack, points::vector({points::whole(1), points::whole(0), points::whole(1), points::character('x')}), shared);
    stack.right().type &= ~HASASCII;  // not exact, so the loop finds out
    const model::Space left = model::of(stack.left()), right = model::of(stack.right());
    EXPECT_EQ(run(add, stack), 162);
    ASSERT_EQ(stack.height(), 2);
    model::expectsame(model::of(stack.left()), left);
    model::expectsame(model::of(stack.right()), right);
    clear(stack);
    drop();
  }
}

TEST_F(Dyadics, ACharacterTimesTwoLeavesTheOperandsWhole) {
  Stack stack;
  stack.push(points::text("abcd"));
  stack.push(points::numbers({1, 0, 2, 1}));
  EXPECT_EQ(run(multiply, stack), 149);
  model::expectsame(model::of(stack.left()), [] {
    Point p = points::text("abcd");
    const model::Space s = model::of(p);
    points::drop(p);
    return s;
  }());
  EXPECT_EQ(stack.right().data_pointer[3].integer, 1);
  clear(stack);
}

TEST_F(Dyadics, AFailureInANestedMemberLeavesTheOperandsWhole) {
  Stack stack;
  const auto nested = [](std::int64_t last) {
    return points::vector(
        {points::whole(1), points::enclosed(points::numbers({1, 2})), element(OCTONION, 2),
         points::enclosed(points::array({points::whole(last), points::whole(2), points::whole(3)}, {last}))});
  };
  stack.push(nested(3));
  stack.push(nested(3));
  // A vector of three members beside one of two.
  Point &member = *stack.right().data_pointer[3].subarray;
  member.elements = 2;
  member.shape_pointer->integer = 2;
  const model::Space left = model::of(stack.left()), right = model::of(stack.right());
  EXPECT_EQ(run(add, stack), 17);
  ASSERT_EQ(stack.height(), 2);
  model::expectsame(model::of(stack.left()), left);
  model::expectsame(model::of(stack.right()), right);
  clear(stack);
  EXPECT_EQ(liveblocks(), before);
}

TEST_F(Dyadics, AFlagWordIsOnlyAHint) {
  // One kind by the flags, another one in the middle: the rest goes record by record.
  for (const bool shared : {false, true}) {
    Stack stack;
    Point p = points::vector(
        {points::whole(1), points::whole(2), points::real(2.5), points::complex(1, 1), points::whole(3)});
    p.type = ISVECTOR | HASINTEGER;
    push(stack, p, shared);
    push(stack, points::numbers({1, 1, 1, 1, 1}), shared);
    ASSERT_EQ(run(add, stack), 0);
    const model::Space s = model::of(stack.left());
    EXPECT_EQ(s.type, ISVECTOR | HASINTEGER | HASREAL | HASCOMPLEX | COMPLEXED);
    EXPECT_EQ(s.elements[2].parts, (model::Parts{3.5}));
    EXPECT_EQ(s.elements[3].parts, (model::Parts{2, 1}));
    EXPECT_EQ(s.elements[4].integer, 4);
    clear(stack);
    drop();
  }
}

TEST_F(Dyadics, AnInterruptIsTakenInsideALongLoop) {
  constexpr std::size_t COUNT = 200000;
  for (const bool shared : {false, true}) {
    Stack stack;
    Elements elements(COUNT, points::whole(1));
    push(stack, points::vector(elements), shared);
    push(stack, points::vector(elements), shared);
    interrupted = SIGINT;
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_NE(landingof([&] { add(&stack.top, nullptr, nullptr, 0); }), 0);
    testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    interrupted = 0;
    EXPECT_EQ(A_Problem, 1);
    A_Problem = 0;
    ASSERT_EQ(stack.height(), 2);
    Recount recount;
    for (const Point &p : {stack.left(), stack.right()}) recount.add(p);
    for (const Point &p : held) recount.add(p);
    EXPECT_EQ(recount.faults(before), "");
    clear(stack);
    drop();
  }
}

// ---- Nested spaces.

Point chain(int levels, std::int64_t value) {
  Point p = points::numbers({value, value + 1});
  for (int i = 0; i < levels; ++i) p = points::vector({points::enclosed(p), points::whole(i)});
  return p;
}

TEST_F(Dyadics, DeepNesting) {
  for (const int levels : {1, 10, 1000}) {
    for (const bool shared : {false, true}) {
      Stack stack;
      push(stack, chain(levels, 5), shared);
      push(stack, chain(levels, 7), shared);
      ASSERT_EQ(run(multiply, stack), 0);
      const Point *p = &stack.left();
      for (int i = levels; i-- > 0;) {
        ASSERT_EQ(p->data_pointer[1].integer, static_cast<std::int64_t>(i) * i);
        p = p->data_pointer[0].subarray;
      }
      EXPECT_EQ(p->data_pointer[1].integer, 48);
      clear(stack);
      drop();
      EXPECT_EQ(liveblocks(), before);
    }
    Stack stack;
    push(stack, chain(levels, 5), false);
    push(stack, points::scalar(points::real(0.5)), false);
    ASSERT_EQ(run(multiply, stack), 0);
    clear(stack);
  }
}

TEST_F(Dyadics, AMemberAgainstAScalarAndAgainstASpace) {
  const model::Result scalar =
      evaluate(subtract, points::scalar(points::enclosed(points::numbers({1, 2, 3}))), points::numbers({10, 20}));
  ASSERT_EQ(scalar.message, 0);
  EXPECT_EQ(scalar.space.rank, 1);
  ASSERT_EQ(scalar.space.elements.size(), 2U);
  EXPECT_EQ(scalar.space.elements[1].member[0].elements[2].integer, -17);
  EXPECT_NE(scalar.space.type & STRUCTURED, 0U);
  EXPECT_NE(scalar.space.type & ISSTRUCTURE, 0U);
  const model::Result other =
      evaluate(subtract, points::numbers({10, 20}), points::scalar(points::enclosed(points::numbers({1, 2, 3}))));
  EXPECT_EQ(other.space.elements[1].member[0].elements[2].integer, 17);
}

TEST_F(Dyadics, CharactersInAMember) {
  const auto nested = [] { return points::vector({points::enclosed(points::text("ab")), points::whole(1)}); };
  EXPECT_EQ(evaluate(add, nested(), points::scalar(points::whole(1))).message, 17);
  const model::Result kept = evaluate(multiply, nested(), points::scalar(points::whole(1)));
  ASSERT_EQ(kept.message, 0);
  EXPECT_EQ(kept.space.elements[0].member[0].elements[1].integer, 'b');
  EXPECT_EQ(evaluate(multiply, nested(), points::scalar(points::whole(3))).message, 149);
}

// ---- Slices.

TEST(Slices, TileTheElements) {
  const std::int64_t least = MIN_PARALLEL;
  for (const std::int64_t gate : {1L, 2L, 10L, 1001L}) {
    MIN_PARALLEL = gate;
    for (const std::uint32_t parts : {1U, 2U, 3U, 4U, 7U, 64U})
      for (const std::uint32_t count : {0U, 1U, 2U, 3U, 10U, 63U, 64U, 65U, 1000U, 5000U, 99999U, 4294967295U}) {
        std::uint32_t next = 0;
        for (std::uint32_t i = 0; i < parts; ++i) {
          const Slice s = slice(count, parts, i);
          ASSERT_EQ(s.begin, next) << gate << ' ' << parts << ' ' << count << ' ' << i;
          ASSERT_LE(s.begin, s.end);
          next = s.end;
        }
        ASSERT_EQ(next, count);
      }
  }
  MIN_PARALLEL = least;
}

TEST(Slices, TheFirstStaysSmallOnceTheSharesAreLarge) {
  const std::int64_t least = MIN_PARALLEL;
  MIN_PARALLEL = 1001;
  EXPECT_EQ(LOWER(100000, 4, 0), 0U);
  EXPECT_EQ(UPPER(100000, 4, 0), 999U);
  EXPECT_EQ(LOWER(100000, 4, 1), 1000U);
  EXPECT_EQ(UPPER(100000, 4, 1), 1000U + 32999U - 1) << "a third of 98999 is 32999.67, rounded down";
  EXPECT_EQ(UPPER(100000, 4, 3), 99999U);
  EXPECT_EQ(UPPER(100000, 2, 0), 49999U) << "two parts share evenly";
  EXPECT_EQ(UPPER(4003, 4, 0), 1000U) << "4003 by 4 is 1000.75, rounded up";
  EXPECT_EQ(UPPER(4002, 4, 0), 999U);
  EXPECT_EQ(UPPER(4003, 4, 3), 4002U);
  MIN_PARALLEL = least;
}

// The pool's state for a test: so many parts, and small ones.
struct Pool {
  std::uint32_t oldprocessors = processors;
  std::int64_t oldleast = MIN_PARALLEL;
  Reply *oldreplies = from_coprocessor;
  std::vector<Reply> replies;

  explicit Pool(std::uint32_t parts, std::int64_t least) : replies(parts) {
    processors = parts;
    MIN_PARALLEL = least;
    from_coprocessor = replies.data();
  }
  ~Pool() {
    processors = oldprocessors;
    MIN_PARALLEL = oldleast;
    from_coprocessor = oldreplies;
    to_coprocessors = {};
  }
};

// Two spaces of these kinds worked by the twins, slice by slice, over a fresh block or over the array operand.
std::string twinsdiffer(const Instruction &instruction, Point left, Point right, bool fresh) {
  Stack stack;
  const auto copyof = [](const Point &p) {
    Point copy = p;
    referencepoint(&copy);
    makeprivate(copy);
    return copy;
  };
  stack.push(copyof(left));
  stack.push(copyof(right));
  const int message = run(instruction.plain, stack);
  const double serialflops = flopos - 1;
  const bool rightsingle = (right.type & SCALARLIKE) != 0;
  Point home = copyof(rightsingle ? left : right);
  std::string difference;
  {
    Pool pool(4, 2);
    Work &w = to_coprocessors;
    w = {};
    w.fresh = fresh;
    w.swapped = rightsingle;
    w.combined = left.type | right.type;
    w.count = home.elements;
    w.first = rightsingle ? right.data_pointer : left.data_pointer;
    w.second = rightsingle ? left.data_pointer : right.data_pointer;
    w.result = fresh ? newelements(home.elements) : home.data_pointer;
    if (!fresh) (rightsingle ? w.second : w.second) = home.data_pointer;
    Point *top = stack.top;
    std::uint32_t kinds = 0;
    int failure = 0;
    double flopsdone = 0;
    for (const std::uint32_t index : {2U, 0U, 3U, 1U}) {
      const std::int32_t returned = instruction.slice(&top, nullptr, nullptr, index);
      if (returned != pool.replies[index].failure) difference += "a failure that was not noted; ";
      if (returned != 0) failure = returned;
      kinds |= static_cast<std::uint32_t>(pool.replies[index].flags);
      flopsdone += pool.replies[index].flops;
      if (pool.replies[index].flops != pool.replies[index].total_flops) difference += "flops; ";
    }
    if (failure != message) difference += "message " + std::to_string(failure) + "; ";
    if (message == 0) {
      if (flopsdone != serialflops) difference += "flops counted; ";
      Point result = stack.left();
      result.data_pointer = w.result;
      if (!model::agree(model::of(result), model::of(stack.left()), 0)) difference += "values; ";
      constexpr std::uint32_t found = KINDBITS | STRUCTURED;
      if ((kinds & found) != (stack.left().type & found)) difference += "kinds; ";
      if (fresh) {
        dereferencedataelems(w.result, home.elements);
        freeblock(w.result);
      }
    } else if (fresh) {
      // What a failed slice made it has given back; the others made all of theirs.
      for (std::uint32_t index = 0; index < 4; ++index) {
        const Slice s = slice(home.elements, 4, index);
        if (pool.replies[index].failure == 0 && s.begin < s.end)
          dereferencedataelems(w.result + s.begin, s.end - s.begin);
      }
      freeblock(w.result);
    }
  }
  home.type |= HASOCTONION;  // what was written over it may own blocks
  points::drop(home);
  while (stack.height() > 0) dereferencepoint(stack.top--);
  points::drop(left);
  points::drop(right);
  return difference;
}

TEST_F(Dyadics, TwinsEqualThePlainResult) {
  for (const Instruction &instruction : INSTRUCTIONS)
    for (int l = INTEGER; l < KINDS; ++l)
      for (int r = INTEGER; r < KINDS; ++r)
        for (const bool fresh : {true, false}) {
          if (!fresh && (l == NESTED || r == NESTED)) continue;
          const auto what = described(instruction, l, {}, r, {});
          ASSERT_EQ(twinsdiffer(instruction, operand(l, {23}), operand(r, {23}, 2), fresh), "") << what;
          ASSERT_EQ(twinsdiffer(instruction, operand(l, {23}), operand(r, {}, 2), fresh), "") << what;
          ASSERT_EQ(twinsdiffer(instruction, operand(l, {}), operand(r, {5, 7}, 2), fresh), "") << what;
          ASSERT_EQ(liveblocks(), before) << what;
        }
}

TEST_F(Dyadics, TwinsOfMixedSpacesAndFailures) {
  const auto mixed = [](int extra) {
    Elements elements;
    for (std::size_t i = 0; i < 40; ++i)
      elements.push_back(element(INTEGER + static_cast<int>(i * 7 % (KINDS - INTEGER)), i % 6));
    if (extra >= 0) elements.push_back(element(extra, 3));
    Point p = points::vector(elements);
    return p;
  };
  for (const Instruction &instruction : INSTRUCTIONS) {
    EXPECT_EQ(twinsdiffer(instruction, mixed(-1), mixed(-1), true), "");
    EXPECT_EQ(twinsdiffer(instruction, mixed(INTEGER), points::scalar(points::real(0.5)), true), "");
    EXPECT_EQ(liveblocks(), before);
    Point odd = mixed(ASCII), even = mixed(REAL);
    odd.type &= ~HASASCII;
    EXPECT_EQ(twinsdiffer(instruction, odd, even, true), "") << "message 162 in the last slice";
    EXPECT_EQ(liveblocks(), before);
  }
}

#ifdef MORVIK_CHECKING

TEST_F(Dyadics, EveryAllocationMayFail) {
  const auto left = [] {
    return points::vector({points::whole(1), points::enclosed(chain(3, 1)), element(OCTONION, 2), element(COMPLEX, 1),
                           points::enclosed(points::empty()), element(OCTONION, 1)});
  };
  const auto right = [] {
    return points::vector({element(OCTONION, 1), points::enclosed(chain(3, 2)),
                           points::enclosed(points::numbers({1, 2})), element(OCTONION, 3), element(OCTONION, 1),
                           points::enclosed(points::scalar(points::real(2)))});
  };
  for (const Instruction &instruction : INSTRUCTIONS)
    for (const bool shared : {false, true}) {
      int failed = 0;
      for (std::int64_t successes = 0;; ++successes) {
        Stack stack;
        push(stack, left(), shared);
        push(stack, right(), shared);
        const model::Space l = model::of(stack.left()), r = model::of(stack.right());
        failallocation(successes);
        const int message = run(instruction.plain, stack);
        failallocation(-1);
        A_Problem = 0;
        if (message != 0) {
          ASSERT_EQ(message, 27);
          ASSERT_EQ(stack.height(), 2);
          model::expectsame(model::of(stack.left()), l);
          model::expectsame(model::of(stack.right()), r);
          ++failed;
        }
        clear(stack);
        drop();
        ASSERT_EQ(liveblocks(), before) << instruction.name << " after " << successes;
        if (message == 0) break;
      }
      EXPECT_GT(failed, 10);
    }
}

#endif

}  // namespace
