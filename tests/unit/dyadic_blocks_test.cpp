// Which block the result of a dyadic scalar instruction goes to, by the identity of blocks, and who holds what
// afterwards.
#include "dyadic_operands.h"

namespace {

using namespace arithmetic;

// ---- Which block the result goes to.

struct Blocks {
  const Element *left, *right, *result;
};

class ResultBlock : public Dyadics {
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
    for (std::ptrdiff_t i = 1; i <= stack.height(); ++i) recount.hold(stack.slots[i]);
    for (const Point &p : held) recount.hold(p);
    EXPECT_EQ(recount.faults(liveblocks() - before), "");
  }
};

TEST_F(ResultBlock, TwoArraysTakeTheLeftBlockThenTheRightOne) {
  const auto vector = [] { return points::numbers({1, 2, 3}); };
  Blocks b = blocks(vector(), false, vector(), false);
  EXPECT_EQ(b.result, b.left);
  b = blocks(vector(), true, vector(), false);
  EXPECT_EQ(b.result, b.right);
  b = blocks(vector(), true, vector(), true);
  EXPECT_NE(b.result, b.left);
  EXPECT_NE(b.result, b.right);
}

TEST_F(ResultBlock, OneArrayTakesItsOwnBlockAlone) {
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

TEST_F(ResultBlock, TheSameBlockTwiceServesIfNobodyElseHoldsIt) {
  for (const bool array : {true, false}) {
    const Point value = array ? points::numbers({1, 2, 3}) : points::scalar(points::whole(4));
    Stack stack;
    const Element *block = value.data_pointer;
    stack.push(value);
    Point copy = value;
    referencepoint(&copy);
    stack.push(copy);
    EXPECT_EQ(referencecount(block), 2);
    ASSERT_EQ(run(add, stack), 0);
    EXPECT_EQ(stack.left().data_pointer, block);
    EXPECT_EQ(referencecount(block), 1);
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

TEST_F(ResultBlock, TheSameOctonionsTwice) {
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

TEST_F(ResultBlock, OctonionsAreReusedOneByOne) {
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
  EXPECT_EQ(referencecount(second), 1);
  freeblock(const_cast<Octonion *>(second));
  clear(stack);
}

TEST_F(ResultBlock, NestedCallsNeverOverwrite) {
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

TEST_F(ResultBlock, PermanentBlocksStay) {
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

}  // namespace
