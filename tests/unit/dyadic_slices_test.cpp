// The twins of the dyadic scalar instructions on slices made by hand, and how work is cut up.
#include "dyadic_operands.h"
#include "spaces/copies.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

using namespace arithmetic;

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
  const bool rightsingle = (right.type & SCALAR_LIKE) != 0;
  Point operand = copyof(rightsingle ? left : right);
  std::string difference;
  {
    Pool pool(4, 2);
    Work &w = to_coprocessors;
    w = {};
    w.fresh = fresh;
    w.swapped = rightsingle;
    w.combined = left.type | right.type;
    w.count = operand.elements;
    w.first = rightsingle ? right.data_pointer : left.data_pointer;
    w.second = rightsingle ? left.data_pointer : right.data_pointer;
    w.result = fresh ? newelements(operand.elements) : operand.data_pointer;
    if (!fresh) w.second = operand.data_pointer;
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
      constexpr std::uint32_t found = KIND_BITS | STRUCTURED;
      if ((kinds & found) != (stack.left().type & found)) difference += "kinds; ";
      if (fresh) {
        dereferencedataelems(w.result, operand.elements);
        freeblock(w.result);
      }
    } else if (fresh) {
      // What a failed slice made it has given back; the others made all of theirs.
      for (std::uint32_t index = 0; index < 4; ++index) {
        const Slice s = slice(operand.elements, 4, index);
        if (pool.replies[index].failure == 0 && s.begin < s.end)
          dereferencedataelems(w.result + s.begin, s.end - s.begin);
      }
      freeblock(w.result);
    }
  }
  operand.type |= HASOCTONION;  // what was written over it may own blocks
  points::drop(operand);
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

TEST_F(Dyadics, WithoutAPoolTheCallerWorksAllSlices) {
  for (const Instruction &instruction : INSTRUCTIONS) {
    const Point left = operand(COMPLEX, {23}), right = operand(INTEGER, {}, 2);
    const model::Result expected = model::apply(instruction.op, model::of(left), model::of(right));
    const Pool pool(3, 2);
    ASSERT_TRUE(goesparallel(23));
    model::expectclose(evaluate(instruction.plain, left, right).space, expected.space, instruction.name);
    EXPECT_EQ(to_coprocessors.instruction, nullptr);
  }
}

}  // namespace
