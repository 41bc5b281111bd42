// Dyadic scalar instructions that fail leave their operands whole; nested spaces; flag words that are not exact.
#include "dyadic_operands.h"
#include "failure/jump.h"
#include "failure/signals.h"

using namespace morvik;

namespace {

using namespace arithmetic;

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
    EXPECT_EQ(pendingproblem, 1);
    pendingproblem = 0;
    ASSERT_EQ(stack.height(), 2);
    Recount recount;
    for (const Point &p : {stack.left(), stack.right()}) recount.hold(p);
    for (const Point &p : held) recount.hold(p);
    EXPECT_EQ(recount.faults(liveblocks() - before), "");
    clear(stack);
    drop();
  }
}

// ---- Nested spaces.

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
        pendingproblem = 0;
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
