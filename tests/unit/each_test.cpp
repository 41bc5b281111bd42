// EACH against plain loops, with functions of every make: what they see, what becomes of their results, and that
// nothing is left over where they fail. And what an interrupt or the end of storage leaves of EACH and of MASK.
#include "alarm.h"
#include "applying.h"

namespace {

using namespace applying;

class Each : public Applying {
 protected:
  // What is in a record for a value that a function left.
  static std::string stored(const Function &f, const Element &e) {
    if (f.gives) {
      const std::string gives = f.gives;
      return f.rank > 0 ? "1:" + gives : gives.substr(3, gives.size() - 5);
    }
    if (e.tag != tags::SUBARRAY) return textof(e);
    const Point &member = *e.subarray;
    if (member.rank > 0) return textof(e);
    return member.rank == 0 ? textof(*member.data_pointer) : textof(std::bit_cast<Element>(member));
  }
  static int depthafter(const Function &f, const Point &data) {
    int depth = data.depth;
    if (f.gives && f.rank > 0) return std::max(depth, std::string(f.source).find("((") != std::string::npos ? 3 : 2);
    for (std::uint32_t i = 0; i < data.elements && !f.gives; ++i)
      if (data.data_pointer[i].tag == tags::SUBARRAY && data.data_pointer[i].subarray->rank > 0)
        depth = std::max(depth, data.data_pointer[i].subarray->depth + 1);
    return depth;
  }
};

TEST_F(Each, AsTheModel) {
  for (const Function &f : FUNCTIONS)
    for (int round = 0; round < 40; ++round) {
      const Point data = structured::anyspace(random, anyshape(random, random() % 5));
      if (data.elements == 0) {
        Point nothing = data;
        drop(nothing);
        continue;
      }
      const Extents shape = shapeof(data);
      structured::Texts expected;
      for (std::uint32_t i = 0; i < data.elements; ++i) expected.push_back(stored(f, data.data_pointer[i]));
      const int depth = depthafter(f, data);
      push(data);
      ASSERT_EQ(run(std::string(f.source) + " EACH"), 0) << f.source;
      ASSERT_EQ(sp, stack[0] + 1);
      ASSERT_EQ(shapeof(*sp), shape) << f.source;
      ASSERT_EQ(structured::textsof(*sp), expected) << f.source;
      ASSERT_EQ(sp->depth, depth) << f.source;
      if (shape.size() > 0) structured::expecthonest(*sp);
      reachable();
      clear();
      if (HasFailure()) return;
    }
}

// A function sees a scalar of the element, with the kinds of its space.
TEST_F(Each, WhatAFunctionSees) {
  push(vector({whole(1), character('a'), octonion({2}), enclosed(numbers({4, 5}, {1, 2}))}));
  ASSERT_EQ(run("MONADIC RANK ; EACH"), 0);
  EXPECT_EQ(textof(*sp), "1(4 [4:0][4:0][4:0][4:2])");
  EXPECT_EQ(sp->type, ISVECTOR | HASINTEGER);
}

// What was in the heap before shows nowhere.
TEST_F(Each, TheRecordOfASpaceHoldsNothingElse) {
  constexpr std::size_t COUNT = 4, SPENT = 16;
  Element *spent[SPENT];
  for (Element *&block : spent)
    std::memset(static_cast<void *>(block = newelements(COUNT)), 0xFF, COUNT * sizeof(Element));
  for (Element *block : spent) freeblock(block);
  ASSERT_EQ(run("(1 2 3 4) MONADIC DISCARD (5 6) ; EACH"), 0);
  ASSERT_EQ(sp->elements, COUNT);
  for (std::size_t i = 0; i < COUNT; ++i) {
    Element expected{};
    expected.tag = tags::SUBARRAY;
    expected.subarray = sp->data_pointer[i].subarray;
    EXPECT_EQ(std::memcmp(sp->data_pointer + i, &expected, sizeof expected), 0) << i;
  }
  clear();
}

TEST_F(Each, Nothing) {
  push(empty());
  ASSERT_EQ(run("MONADIC ; EACH"), 0);
  ASSERT_EQ(sp, stack[0] + 1);
  EXPECT_EQ(sp->rank, ranks::FUNCTION);
  clear();
  push(numbers({1, 2}));
  ASSERT_EQ(run("#NIL EACH"), 0);
  EXPECT_EQ(textof(*sp), "1(2 [4:1][4:2])");
}

TEST_F(Each, Refusals) {
  const auto expect = [&](int message, const Point &data, const char *function) {
    push(data);
    EXPECT_EQ(run(std::string(function) + " EACH"), message) << function;
    EXPECT_EQ(sp, stack[0] + 2) << function;
    reachable();
    clear();
  };
  expect(990, numbers({1, 2}), "5");
  expect(989, numbers({1, 2}), ": 1 ;");
  expect(989, numbers({1, 2}), "NILADIC 1 ;");
  expect(989, numbers({1, 2}), "TRIADIC ;");
  expect(994, function({numbers({1})}, 1, 0, "f"), "MONADIC ;");
  expect(994, vector({whole(1), record(tags::FILLER, 0)}), "MONADIC ;");
  // Found out between two calls, this one leaves the element at hand in the place of the data.
  push(numbers({1, 2}));
  EXPECT_EQ(run("VARS 16583 MONADIC ; EACH"), 806);
  EXPECT_EQ(sp, stack[0] + 1);
  EXPECT_EQ(textof(*sp), "0([4:1])");
  reachable();
  clear();
  push(numbers({1, 2}));
  ASSERT_EQ(run("DYADIC + ; EACH"), 0);
  EXPECT_EQ(textof(*sp), "1(2 [4:1][4:2])");
  EXPECT_EQ(sp, stack[0] + 1);
}

// At each element in turn: a failure that drops everything, one that ends the function, and one before any result.
TEST_F(Each, FailingAtAnyElement) {
  std::int64_t idle = 0;
  for (const char *failing : {"'a' 1 +", "(1 2) (1 2 3) +", "1 OPEN", "MARK 1 2 .] EACH", "nobody"})
    for (int at = 0; at <= 6; ++at) {
      Elements elements;
      for (int i = 0; i < 6; ++i)
        elements.push_back(i % 2 == 0 ? whole(i) : enclosed(vector({whole(i), octonion({1})})));
      push(vector(elements));
      const std::string text =
          "0 @n SET MONADIC n " + std::to_string(at) + " == CHECK : " + failing + " ; ?Y DISCARD n 1 + @n SET ; EACH";
      const int message = run(text);
      EXPECT_EQ(message != 0, at < 6) << text;
      reachable();
      clear();
      ASSERT_EQ(run("WIPE"), 0);
      if (idle == 0) idle = liveblocks();
      EXPECT_EQ(liveblocks(), idle) << text;
    }
}

// ---- Breaks.

TEST_F(Applying, InterruptedAtAnyElement) {
  std::int64_t idle = 0;
  int broken = 0;
  for (int round = 0; round < 60; ++round) {
    Elements elements;
    for (int i = 0; i < 4000; ++i)
      elements.push_back(i % 3 == 0 ? octonion({1.0 * i}) : i % 3 == 1 ? whole(i) : enclosed(numbers({1, i})));
    const bool masks = round % 2 == 0;
    if (masks)
      for (Element &e : elements)
        if (e.tag == tags::SUBARRAY) dereferencedataelems(&e, 1), e = real(0.5);
    push(vector(elements));
    {
      const Alarm alarm(50 + static_cast<int>(random() % 3000));
      run(masks ? "(1 2 3) VARS 1 MONADIC DUPLICATE ENCLOSE ; MASK" : "VARS 1 MONADIC DUPLICATE ENCLOSE ; EACH");
      broken += sp->type == EMPTY_VECTOR;
    }
    reachable();
    clear();
    ASSERT_EQ(run("WIPE"), 0);
    if (idle == 0) idle = liveblocks();
    ASSERT_EQ(liveblocks(), idle);
  }
  EXPECT_GT(broken, 0);
}

#ifdef MORVIK_CHECKING
TEST_F(Applying, WithoutStorage) {
  std::int64_t idle = 0;
  for (const char *text : {"VARS 1 MONADIC DUPLICATE ENCLOSE ; EACH", "MONADIC @.x SET .x .x , ; EACH"})
    for (const bool masks : {false, true})
      for (int n = 0;; ++n) {
        push(vector({whole(1), octonion({2}), complex(3, 1)}));
        if (masks) push(vector({octonion({1}), whole(2), real(3.5)}));
        std::string program = text;
        if (masks) program.replace(program.size() - 4, 4, "MASK");
        failallocation(n);
        const int message = run(program);
        failallocation(-1);
        reachable();
        clear();
        ASSERT_EQ(run("WIPE"), 0);
        if (n > 0 && idle == 0) idle = liveblocks();
        if (idle != 0) EXPECT_EQ(liveblocks(), idle) << n;
        if (message == 0) break;
        ASSERT_LT(n, 400);
      }
}
#endif

}  // namespace
