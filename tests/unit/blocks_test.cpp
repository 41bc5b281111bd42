// Counted blocks: the prefix, the counts, growth, the small blocks, and what the checking build finds out.
#include "spaces/blocks.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "failure/exception.h"
#include "failure/jump.h"

using namespace morvik;

namespace {

// Runs the body with a landing; the value of the jump, 0 if none was made. No frame in between holds an object.
template <typename Body>
int landingof(Body body) {
  Landing outer;
  armlanding(outer, nullptr);
  const int value = setjmp(error_jump);
  if (value == 0) body();
  disarmlanding(outer);
  return value;
}

// The body ends in message 27.
template <typename Body>
void expectoutofstorage(Body body) {
  pendingproblem = 0;
  testing::internal::CaptureStderr();
  EXPECT_EQ(landingof(body), -1);
  std::fflush(stderr);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("27 - out of main storage."), std::string::npos);
  EXPECT_EQ(pendingproblem, 1);
  pendingproblem = 0;
  stepping = 0;
}

class Blocks : public testing::Test {
 protected:
  void SetUp() override { before = liveblocks(); }
  void TearDown() override { EXPECT_EQ(liveblocks(), before); }
  std::int64_t before = 0;
};

TEST_F(Blocks, ThePrefix) {
  void *block = newblock(40);
  EXPECT_EQ(referencecount(block), 1);
  EXPECT_EQ(reinterpret_cast<char *>(refer(block)) + 16, static_cast<char *>(block));
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 16, 0u);
  EXPECT_EQ(referencecount(nullptr), -777);
  EXPECT_EQ(refer(nullptr), nullptr);
  release(block);
}

TEST_F(Blocks, LoseRecordsAtTheFront) {
  constexpr std::int64_t COUNT = 3000;
  Element *block = newelements(COUNT);
  for (std::int64_t i = 0; i < COUNT; ++i) setinteger(block[i], i);
  for (std::int64_t gone = 0, cut = 1; gone + cut < COUNT; gone += cut, cut = cut % 3 + 1) {
    block = cutrecords(block, static_cast<std::size_t>(cut), static_cast<std::size_t>(COUNT - gone - cut));
    ASSERT_EQ(referencecount(block), 1);
    ASSERT_EQ(block[0].integer, gone + cut);
    ASSERT_EQ(block[COUNT - gone - cut - 1].integer, COUNT - 1);
  }
  EXPECT_EQ(liveblocks(), before + 1);
  release(block);
}

#if !defined(MORVIK_CHECKING) && !defined(MORVIK_SYSTEM_HEAP)
TEST_F(Blocks, GiveBackWhatLiesIdleAtTheFront) {
  constexpr std::size_t COUNT = 100000, LEFT = 100;
  Element *block = newelements(COUNT);
  for (std::size_t kept = COUNT; kept-- > LEFT;) block = cutrecords(block, 1, kept);
  EXPECT_LE(malloc_usable_size(refer(block)), 16 * LEFT * sizeof(Element));
  release(block);
}
#endif

// A queue: as many records are taken as are put. The block moves now and then only.
TEST_F(Blocks, GrowWithSpaceToSpare) {
  for (const std::size_t length : {3, 100, 819, 1638, 1639, 5000}) {
    Element *block = newelements(length);
    for (std::size_t i = 0; i < length; ++i) setinteger(block[i], static_cast<std::int64_t>(i));
    int moves = 0;
    for (std::size_t round = 0; round < 4 * length; ++round) {
      Element *const cut = cutrecords(block, 1, length - 1);
      block = trygrow(cut, length);
      moves += block != cut;
      setinteger(block[length - 1], static_cast<std::int64_t>(round + length));
      ASSERT_EQ(block[0].integer, static_cast<std::int64_t>(round + 1));
    }
#if !defined(MORVIK_CHECKING) && !defined(MORVIK_SYSTEM_HEAP)
    EXPECT_LE(moves, 20) << length;
#endif
    release(block);
  }
}

TEST_F(Blocks, AreCountedWhileTheyLive) {
  void *a = newblock(1), *b = newblock(0);
  EXPECT_EQ(liveblocks(), before + 2);
  reference(a);
  EXPECT_EQ(referencecount(a), 2);
  release(a);
  EXPECT_EQ(referencecount(a), 1);
  EXPECT_EQ(liveblocks(), before + 2);
  release(a);
  EXPECT_EQ(liveblocks(), before + 1);
  release(b);
}

TEST_F(Blocks, NullIsLegalEverywhere) {
  reference(nullptr);
  release(nullptr);
  freeblock(nullptr);
  char *none = nullptr;
  dereference(none);
  EXPECT_EQ(none, nullptr);
}

TEST_F(Blocks, APermanentBlockIsLeftAlone) {
  void *block = newblock(8);
  *refer(block) = -1;
  for (int i = 0; i < 1000; ++i) reference(block);
  EXPECT_EQ(referencecount(block), -1);
  for (int i = 0; i < 2000; ++i) release(block);
  EXPECT_EQ(referencecount(block), -1);
  *refer(block) = 1;  // as at the end of the process
  release(block);
}

TEST_F(Blocks, ABlockFoundAtZeroIsFreed) {
  void *block = newblock(8);
  *refer(block) = 0;
  release(block);
}

TEST_F(Blocks, DereferenceNullsThePointer) {
  char *block = stringdup("abc"), *other = block;
  reference(block);
  dereference(other);
  EXPECT_EQ(other, nullptr);
  EXPECT_EQ(referencecount(block), 1);
  dereference(block);
  EXPECT_EQ(block, nullptr);
}

TEST_F(Blocks, SmallOnes) {
  EXPECT_EQ(newelements(0), nullptr);
  Element *element = newelement(tags::REAL, forms::COMPUTED);
  EXPECT_EQ(element->tag, tags::REAL);
  EXPECT_EQ(element->form, forms::COMPUTED);
  EXPECT_EQ(element->attributes, 0);
  EXPECT_EQ(element->name, nullptr);
  for (const double part : element->otherparts) EXPECT_EQ(part, 0);
  release(element);
  Element *shape = newshape(-7);
  EXPECT_EQ(shape->tag, tags::INTEGER);
  EXPECT_EQ(shape->form, forms::NUMBER);
  EXPECT_EQ(shape->integer, -7);
  release(shape);
  Point *point = newpoint();
  EXPECT_EQ(referencecount(point), 1);
  release(point);
}

TEST_F(Blocks, ReallocateKeepsTheFirstRecords) {
  Element *block = Reallocate(nullptr, 3);
  for (int i = 0; i < 3; ++i) block[i].integer = i + 10;
  for (const std::size_t count : {4, 1000, 2, 100000, 3, 1}) {
    block = Reallocate(block, count);
    EXPECT_EQ(referencecount(block), 1);
    EXPECT_EQ(block[0].integer, 10);
    if (count > 1) {
      EXPECT_EQ(block[1].integer, 11);
    }
    block[count - 1].integer = count == 1 ? 10 : count == 2 ? 11 : 0;
  }
  EXPECT_EQ(liveblocks(), before + 1);
  EXPECT_EQ(Reallocate(block, 0), nullptr);
}

#if !defined(MORVIK_SYSTEM_HEAP) && !defined(MORVIK_CHECKING)
// Growing by one record moves the block once a doubling, so that a long literal is read in linear time.
TEST_F(Blocks, GrowthByOneIsAmortised) {
  constexpr std::size_t MANY = 300000;
  Element *block = nullptr;
  int moves = 0;
  for (std::size_t count = 1; count <= MANY; ++count) {
    Element *grown = Reallocate(block, count);
    if (grown != block) ++moves;
    block = grown;
    block[count - 1].integer = static_cast<std::int64_t>(count);
  }
  for (std::size_t i = 0; i < MANY; ++i) ASSERT_EQ(block[i].integer, static_cast<std::int64_t>(i + 1));
  EXPECT_LE(moves, 19);  // 64 bytes to 16 MiB
  release(block);
}
#endif

TEST_F(Blocks, Strings) {
  char *text = stringdup("abc");
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(referencecount(text), 1);
  text = stringcat(text, "");
  EXPECT_STREQ(text, "abc");
  std::string expected = "abc";
  for (int i = 0; i < 200; ++i) {
    text = stringcat(text, "de");
    expected += "de";
  }
  EXPECT_EQ(text, expected);
  EXPECT_EQ(liveblocks(), before + 1);
  release(text);
  char *part = stringdup("abcdef", 3), *none = stringdup("abc", 0);
  EXPECT_STREQ(part, "abc");
  EXPECT_STREQ(none, "");
  release(part);
  release(none);
}

TEST_F(Blocks, ElementNamesArePermanentAndShared) {
  const std::string text = "#PI";
  char *name = elementname(text.c_str());
  EXPECT_NE(name, text.c_str());
  EXPECT_STREQ(name, "#PI");
  EXPECT_LT(referencecount(name), 0);
  char *other = elementname("#2PI");
  EXPECT_STREQ(other, "#2PI");
  EXPECT_EQ(elementname("#PI"), name);
  EXPECT_EQ(elementname("#2PI"), other);
  EXPECT_NE(elementname("#P"), name);
  release(name);
  EXPECT_EQ(elementname("#PI"), name);
}

TEST_F(Blocks, WhatCannotBeMet) {
  EXPECT_EQ(tryblock(SIZE_MAX), nullptr);
  EXPECT_EQ(tryblock(SIZE_MAX - 15), nullptr);
  expectoutofstorage([] { newblock(SIZE_MAX - 20); });
  expectoutofstorage([] { newelements(SIZE_MAX / sizeof(Element) + 2); });  // a product that wraps to one record
  Element *block = newshape(5);
  expectoutofstorage([block] { Reallocate(block, SIZE_MAX / sizeof(Element) + 2); });
  EXPECT_EQ(tryreallocate(block, SIZE_MAX / 2), nullptr);
  EXPECT_EQ(block->integer, 5);
  EXPECT_EQ(referencecount(block), 1);
  release(block);
}

// Raised and lowered by all threads at once, a count ends where it began.
TEST_F(Blocks, ThreadsCountUnderTheLock) {
  void *block = newblock(8);
  coprocessors_running = true;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([block] {
      for (int i = 0; i < 20000; ++i) {
        reference(block);
        release(newblock(8));
        release(block);
      }
    });
  for (std::thread &thread : threads) thread.join();
  coprocessors_running = false;
  EXPECT_EQ(referencecount(block), 1);
  EXPECT_EQ(liveblocks(), before + 1);
  release(block);
}

#ifdef MORVIK_CHECKING

using BlocksDeath = Blocks;

TEST_F(BlocksDeath, TheGuardsFindWhatGoesWrong) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(
      {
        void *block = newblock(8);
        freeblock(block);
        freeblock(block);
      },
      "after it was freed");
  EXPECT_DEATH(
      {
        void *block = newblock(8);
        release(block);
        reference(block);
      },
      "after it was freed");
  EXPECT_DEATH(
      {
        char *block = static_cast<char *>(newblock(9));
        block[9] = 1;
        release(block);
      },
      "past its end");
  EXPECT_DEATH(
      {
        char *block = static_cast<char *>(newblock(9));
        block[-17] = 1;
        release(block);
      },
      "ahead of it");
  EXPECT_DEATH(
      {
        char *block = static_cast<char *>(newblock(9));
        freeblock(block);
        block[3] = 1;
        for (int i = 0; i < 1000; ++i) freeblock(newblock(9));
      },
      "written to after it was freed");
}

TEST_F(Blocks, FreshOnesArePoisoned) {
  auto *block = static_cast<unsigned char *>(newblock(100));
  for (int i = 0; i < 100; ++i) EXPECT_EQ(block[i], 0xCB);
  EXPECT_EQ(blocksize(block), 100u);
  release(block);
}

TEST_F(Blocks, TheNthAllocationFailsOnce) {
  for (int successes = 0; successes < 5; ++successes) {
    failallocation(successes);
    for (int i = 0; i < successes; ++i) {
      void *block = tryblock(8);
      ASSERT_NE(block, nullptr);
      release(block);
    }
    EXPECT_EQ(tryblock(8), nullptr);
    void *block = tryblock(8);
    EXPECT_NE(block, nullptr);
    release(block);
  }
  Element *kept = newshape(3);
  failallocation(0);
  expectoutofstorage([kept] { Reallocate(kept, 2); });
  EXPECT_EQ(kept->integer, 3);
  release(kept);
  failallocation(0);
  failallocation(-1);
  release(newblock(1));
}

#endif

}  // namespace
