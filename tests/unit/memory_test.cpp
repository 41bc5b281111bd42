// The heap: its buckets over areas that the tests hand out, and the names under which the process uses it.
#include "spaces/memory.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace morvik {
extern std::uint64_t First;
extern std::uint64_t Allocs_per_bucket[BUCKETS];
}  // namespace morvik
using namespace morvik;

namespace {

// A break of the tests' own, over memory that comes into being where it is touched.
constexpr std::size_t RESERVED = std::size_t{1} << 30;
char *memory = nullptr;
std::size_t moved = 0;  // how far the break has moved
std::size_t limit = RESERVED;
std::vector<std::size_t> requests;

void *testbreak(std::intptr_t bytes) {
  requests.push_back(static_cast<std::size_t>(bytes));
  if (bytes < 0 || static_cast<std::size_t>(bytes) > limit - moved) return reinterpret_cast<void *>(std::intptr_t{-1});
  void *was = memory + moved;
  moved += static_cast<std::size_t>(bytes);
  return was;
}

class HeapTest : public testing::Test {
 protected:
  void SetUp() override {
    memory = static_cast<char *>(
        mmap(nullptr, RESERVED, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
    ASSERT_NE(memory, MAP_FAILED);
    moved = BLOCK_HEADER;  // so that the first area fits
    limit = RESERVED;
    requests.clear();
  }
  void TearDown() override { munmap(memory, RESERVED); }

  Heap heap{testbreak, {}, nullptr, 0};
};

template <typename Body>
std::string printedto(int stream, Body body) {
  std::fflush(nullptr);
  stream == 1 ? testing::internal::CaptureStdout() : testing::internal::CaptureStderr();
  body();
  std::fflush(nullptr);
  return stream == 1 ? testing::internal::GetCapturedStdout() : testing::internal::GetCapturedStderr();
}

std::uintptr_t number(const void *p) {
  return reinterpret_cast<std::uintptr_t>(p);
}
unsigned headerof(const void *payload) {
  return static_cast<const unsigned char *>(payload)[-8];
}

TEST(Bucket, OfASize) {
  EXPECT_EQ(bucketof(0), 4u);
  EXPECT_EQ(bucketof(1), 4u);
  EXPECT_EQ(bucketof(8), 4u);
  EXPECT_EQ(bucketof(9), 5u);
  EXPECT_EQ(bucketof(24), 5u);
  EXPECT_EQ(bucketof(25), 6u);
  for (unsigned k = 4; k <= 63; ++k) {
    const std::size_t most = (std::size_t{1} << k) - 8;
    EXPECT_EQ(bucketof(most), k);
    EXPECT_EQ(bucketof(most + 1), k + 1);
  }
  EXPECT_GT(bucketof(SIZE_MAX), 63u);
  EXPECT_GT(bucketof(SIZE_MAX - 7), 63u);
}

TEST_F(HeapTest, OnePageIsCarvedIntoItsBlocks) {
  char *first = static_cast<char *>(heap.allocate(1));
  EXPECT_EQ(requests, std::vector<std::size_t>{4096});
  EXPECT_EQ(heap.pre_brk_left, 0u);
  EXPECT_EQ(first, memory + BLOCK_HEADER + 4096 - 16 + 8);  // the block carved last
  for (int i = 1; i < 256; ++i) {
    const void *payload = heap.allocate(8);
    ASSERT_EQ(payload, first - 16 * i);
    ASSERT_EQ(headerof(payload), 4u);
  }
  EXPECT_EQ(heap.buckets[4], nullptr);
  EXPECT_EQ(requests.size(), 1u);
  heap.allocate(1);
  EXPECT_EQ(requests.size(), 2u);
}

TEST_F(HeapTest, ABlockOfAPageTakesOne) {
  const void *payload = heap.allocate(4096 - 8);
  EXPECT_EQ(requests, std::vector<std::size_t>{4096});
  EXPECT_EQ(headerof(payload), 12u);
  EXPECT_EQ(heap.buckets[12], nullptr);
  EXPECT_EQ(heap.pre_brk_left, 0u);
}

TEST_F(HeapTest, WholePagesForLargeBlocks) {
  heap.allocate(100000);
  EXPECT_EQ(requests, std::vector<std::size_t>{131072});
}

TEST_F(HeapTest, PayloadsAreAligned) {
  for (unsigned k = 4; k <= 24; ++k)
    for (const std::size_t less : {0, 1, 7})
      EXPECT_EQ(number(heap.allocate((std::size_t{1} << k) - 8 - less)) % PAYLOAD_ALIGNMENT, 0u) << k;
}

TEST_F(HeapTest, AFreedBlockComesBackToItsOwnSizeAlone) {
  void *small = heap.allocate(40), *large = heap.allocate(1000);
  heap.freepayload(small);
  heap.freepayload(large);
  EXPECT_NE(heap.allocate(100), small);
  EXPECT_EQ(heap.allocate(56), small);
  EXPECT_EQ(heap.allocate(520), large);
}

TEST_F(HeapTest, TheLastFreedComesFirst) {
  void *a = heap.allocate(40), *b = heap.allocate(40), *c = heap.allocate(40);
  heap.freepayload(a);
  heap.freepayload(c);
  heap.freepayload(b);
  EXPECT_EQ(heap.allocate(40), b);
  EXPECT_EQ(heap.allocate(40), c);
  EXPECT_EQ(heap.allocate(40), a);
}

TEST_F(HeapTest, NothingIsFreedByNull) {
  heap.freepayload(nullptr);
  EXPECT_TRUE(requests.empty());
}

TEST_F(HeapTest, SizeZeroGivesBlocksOfTheirOwn) {
  std::set<void *> seen;
  for (int i = 0; i < 600; ++i) {
    void *payload = heap.allocate(0);
    ASSERT_NE(payload, nullptr);
    ASSERT_TRUE(seen.insert(payload).second);
    std::memset(payload, 0xFF, 8);  // nothing that the heap needs is in there
  }
}

TEST_F(HeapTest, WhatNoBlockCanHoldIsRefusedAtOnce) {
  EXPECT_EQ(printedto(2,
                      [&] {
                        EXPECT_EQ(heap.allocate((std::size_t{1} << 63) - 7), nullptr);
                        EXPECT_EQ(heap.allocate(SIZE_MAX), nullptr);
                        EXPECT_EQ(heap.allocate(SIZE_MAX - 8), nullptr);
                      }),
            "");
  EXPECT_TRUE(requests.empty());
}

TEST_F(HeapTest, NoMoreMemoryIsSaidAndTheHeapGoesOn) {
  void *kept = heap.allocate(40);
  EXPECT_EQ(printedto(2, [&] { EXPECT_EQ(heap.allocate(RESERVED), nullptr); }), "No more active memory available\n");
  EXPECT_EQ(printedto(2, [&] { EXPECT_EQ(heap.allocate(std::size_t{1} << 62), nullptr); }),
            "No more active memory available\n");
  EXPECT_EQ(printedto(2, [&] { EXPECT_EQ(heap.allocate((std::size_t{1} << 63) - 8), nullptr); }),
            "No more active memory available\n");
  limit = moved;
  EXPECT_NE(heap.allocate(40), nullptr);  // what was carved is still there
  heap.freepayload(kept);
  EXPECT_EQ(heap.allocate(40), kept);
}

TEST_F(HeapTest, TheBreakIsMovedOnceSoThatAreasFit) {
  moved = 0;
  void *payload = heap.allocate(40);
  EXPECT_EQ(number(payload) % PAYLOAD_ALIGNMENT, 0u);
  EXPECT_EQ(requests, (std::vector<std::size_t>{4096, 8}));
  heap.allocate(4000);
  EXPECT_EQ(requests, (std::vector<std::size_t>{4096, 8, 4096}));
  EXPECT_EQ(moved, 8192u + 8);
}

TEST_F(HeapTest, AnAreaThatIsOffIsSaid) {
  moved = BLOCK_HEADER + 4;
  EXPECT_EQ(printedto(1, [&] { EXPECT_EQ(number(heap.allocate(40)) % PAYLOAD_ALIGNMENT, 0u); }), "BRRRRRmallocSB ");
}

TEST_F(HeapTest, AListThatWasWrittenOverIsSaidAndLeft) {
  void *a = heap.allocate(40), *b = heap.allocate(40);
  heap.freepayload(a);
  heap.freepayload(b);
  static_cast<std::uint64_t *>(b)[0] = 12345;  // written to after it was freed
  EXPECT_EQ(printedto(1, [&] { EXPECT_EQ(heap.allocate(40), b); }), "BRRRRRmallocing ");
  EXPECT_EQ(printedto(1, [&] { EXPECT_NE(heap.allocate(40), nullptr); }), "");
  heap.buckets[6] = memory + 3;
  EXPECT_EQ(printedto(1, [&] { EXPECT_EQ(number(heap.allocate(40)) % PAYLOAD_ALIGNMENT, 0u); }), "BRRRRRmalloced ");
}

TEST_F(HeapTest, APointerThatIsOffIsSaidAndLeft) {
  char *payload = static_cast<char *>(heap.allocate(40));
  const void *head = heap.buckets[6];
  EXPECT_EQ(printedto(1, [&] { heap.freepayload(payload + 4); }), "BRRRRRfree ");
  EXPECT_EQ(heap.buckets[6], head);
  bool moves;
  EXPECT_EQ(printedto(1, [&] { EXPECT_FALSE(Heap::resizes(payload + 4, 50, moves)); }), "BRRRRRrealloc ");
}

TEST_F(HeapTest, AHeaderThatWasWrittenOverIsSaidByRealloc) {
  char *payload = static_cast<char *>(heap.allocate(40));
  bool moves;
  for (const char k : {0, 1, 2}) {
    payload[-8] = k;
    EXPECT_EQ(printedto(1, [&] { EXPECT_FALSE(Heap::resizes(payload, 50, moves)); }), "\nRealloc: SERIOUS ERROR!");
  }
  const void *head = heap.buckets[6];
  heap.freepayload(payload);  // into no list
  EXPECT_EQ(heap.buckets[6], head);
}

bool moves(void *payload, std::size_t size) {
  bool result = false;
  EXPECT_TRUE(Heap::resizes(payload, size, result));
  return result;
}

TEST_F(HeapTest, GrowthStaysInTheBlockWhileItFits) {
  for (unsigned k = 4; k <= 26; ++k) {
    const std::size_t payload = (std::size_t{1} << k) - 8;
    void *block = heap.allocate(payload);
    EXPECT_FALSE(moves(block, payload)) << k;
    EXPECT_TRUE(moves(block, payload + 1)) << k;
    EXPECT_TRUE(moves(block, payload + 8)) << k;
  }
}

TEST_F(HeapTest, ShrinkingToleratesTheLessTheLargerTheBlock) {
  for (unsigned k = 4; k <= 12; ++k) EXPECT_FALSE(moves(heap.allocate((std::size_t{1} << k) - 8), 0)) << k;
  for (unsigned k = 13; k <= 27; ++k) {
    const std::size_t block = std::size_t{1} << k;
    const std::size_t threshold = block / (k <= 15 ? 32 : k <= 18 ? 16 : k <= 21 ? 8 : k <= 24 ? 4 : 2);
    void *payload = heap.allocate(block - 8);
    EXPECT_TRUE(moves(payload, threshold)) << k;
    EXPECT_FALSE(moves(payload, threshold + 1)) << k;
    EXPECT_TRUE(moves(payload, 0)) << k;
  }
}

TEST_F(HeapTest, WhatIsCutOffTheFrontStaysWithItsBlock) {
  char *const whole = static_cast<char *>(heap.allocate(1000));
  std::memset(whole, 7, 1016);
  char *const once = static_cast<char *>(Heap::cutfront(whole, 40));
  EXPECT_EQ(once, whole + 40);
  EXPECT_EQ(Heap::capacity(once), 1016u - 40);
  char *const twice = static_cast<char *>(Heap::cutfront(once, 80));
  EXPECT_EQ(twice, whole + 120);
  EXPECT_EQ(Heap::capacity(twice), 1016u - 120);
  for (int i = 0; i < 1016 - 120; ++i) ASSERT_EQ(twice[i], 7);
  bool moves;
  EXPECT_TRUE(Heap::resizes(twice, 1016 - 120, moves));
  EXPECT_FALSE(moves);
  EXPECT_TRUE(Heap::resizes(twice, 1016 - 119, moves));
  EXPECT_TRUE(moves);
  heap.freepayload(twice);
  EXPECT_EQ(heap.allocate(1000), whole);
}

TEST_F(HeapTest, AlignedPayloads) {
  for (std::size_t alignment = 8; alignment <= 65536; alignment *= 2)
    for (const std::size_t size : {0, 1, 100, 5000}) {
      auto *payload = static_cast<char *>(heap.allocatealigned(alignment, size));
      ASSERT_EQ(number(payload) % alignment, 0u);
      ASSERT_GE(Heap::capacity(payload), size);
      std::memset(payload, 0xEE, Heap::capacity(payload));
      EXPECT_TRUE(moves(payload, Heap::capacity(payload) + 1));
      heap.freepayload(payload);
    }
  void *inside = heap.allocatealigned(64, 100);  // 100 and 64 bytes: a block of 256
  heap.freepayload(inside);
  char *whole = static_cast<char *>(heap.allocate(200));
  EXPECT_LE(whole, inside);
  EXPECT_GT(whole + 256, inside);
  EXPECT_EQ(heap.allocatealigned(64, SIZE_MAX - 64), nullptr);
  EXPECT_EQ(heap.allocatealigned(std::size_t{1} << 63, 1), nullptr);
}

// Whatever is done in whatever order, no block overlaps another, and none loses what was written to it.
TEST_F(HeapTest, RandomUseKeepsBlocksApart) {
  std::mt19937_64 random(1);
  struct Taken {
    std::size_t size;
    unsigned char fill;
  };
  std::map<char *, Taken> taken;
  const auto check = [](const char *payload, const Taken &t) {
    for (std::size_t i = 0; i < t.size; ++i)
      if (static_cast<unsigned char>(payload[i]) != t.fill) return false;
    return true;
  };
  for (int step = 0; step < 20000; ++step) {
    if (taken.size() < 50 || (taken.size() < 400 && random() % 2 == 0)) {
      const std::size_t size = random() % (std::size_t{1} << (random() % 16));
      const auto alignment = std::size_t{1} << (random() % 10);
      char *payload =
          static_cast<char *>(random() % 8 == 0 ? heap.allocatealigned(alignment, size) : heap.allocate(size));
      ASSERT_NE(payload, nullptr);
      const auto fill = static_cast<unsigned char>(random());
      std::memset(payload, fill, size);
      const auto after = taken.lower_bound(payload);
      ASSERT_TRUE(after == taken.end() || payload + size <= after->first);
      ASSERT_TRUE(taken.emplace(payload, Taken{size, fill}).second);
    } else {
      auto victim = taken.lower_bound(memory + random() % moved);
      if (victim == taken.end()) victim = taken.begin();
      ASSERT_TRUE(check(victim->first, victim->second));
      heap.freepayload(victim->first);
      taken.erase(victim);
    }
  }
  for (const auto &[payload, t] : taken) ASSERT_TRUE(check(payload, t));
  for (const std::size_t request : requests) ASSERT_EQ(request % 4096, 0u);
}

TEST(HeapTables, AreInTheImage) {
  EXPECT_EQ(First, 1u);
  const std::vector<std::uint64_t> first = {0, 0, 0, 16, 4096, 128, 1048576, 32, 16, 8, 8, 8, 8, 6, 6, 6, 6};
  for (std::size_t k = 0; k < BUCKETS; ++k) {
    const std::uint64_t expected = k < first.size() ? first[k] : k < 26 ? 4 : k < 29 ? 2 : k < 32 ? 1 : 0;
    EXPECT_EQ(Allocs_per_bucket[k], expected) << k;
  }
  morvik_allocator_init();
  dumpstats();
}

// ---- What every heap must do, under the process's names. The volatile sizes keep the compiler from knowing better.

volatile std::size_t huge = SIZE_MAX / 8;

TEST(Malloc, TheProcessUsesThisHeap) {
#ifdef MORVIK_SYSTEM_HEAP
  GTEST_SKIP() << "built with the system's heap";
#else
  void *volatile small = std::malloc(24), *volatile large = std::malloc(25), *volatile none = std::malloc(0);
  EXPECT_EQ(headerof(small), 5u);
  EXPECT_EQ(headerof(large), 6u);
  EXPECT_EQ(headerof(none), 4u);
  EXPECT_EQ(malloc_usable_size(small), 24u);
  EXPECT_EQ(malloc_usable_size(nullptr), 0u);
  std::free(small);
  std::free(large);
  std::free(none);
  char *text = strdup("a text of the library's own");
  EXPECT_EQ(headerof(text), 6u);
  std::free(text);
#endif
}

TEST(Malloc, WhatIsFreedIsUsedAgain) {
#ifdef MORVIK_SYSTEM_HEAP
  GTEST_SKIP() << "built with the system's heap";
#else
  for (const std::size_t size : {24, 5000, 3000000}) {
    void *volatile first = std::malloc(size);
    const auto address = reinterpret_cast<std::uintptr_t>(first);
    std::free(first);
    void *volatile second = std::malloc(size);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(second), address) << size;
    std::free(second);
  }
#endif
}

TEST(Malloc, ReallocKeepsWhatFits) {
  for (const std::size_t from : {1, 8, 40, 500, 5000, 70000, 3000000})
    for (const std::size_t to : {1, 8, 41, 400, 5001, 90000, 9000000}) {
      auto *block = static_cast<unsigned char *>(std::malloc(from));
      for (std::size_t i = 0; i < from; ++i) block[i] = static_cast<unsigned char>(i * 7 + 1);
      block = static_cast<unsigned char *>(std::realloc(block, to));
      ASSERT_NE(block, nullptr);
      for (std::size_t i = 0; i < std::min(from, to); ++i) ASSERT_EQ(block[i], static_cast<unsigned char>(i * 7 + 1));
      std::memset(block, 0, to);
      std::free(block);
    }
}

#ifndef MORVIK_SYSTEM_HEAP
TEST(Malloc, ReallocToNothing) {
  void *small = std::malloc(100), *large = std::malloc(100000);
  void *volatile same = std::realloc(small, 0);
  void *volatile other = std::realloc(large, 0);
  EXPECT_EQ(headerof(same), 7u);
  EXPECT_EQ(headerof(other), 4u);
  std::free(same);
  std::free(other);
}

TEST(Malloc, ReallocOfAForeignPointerFails) {
  alignas(16) char nothing[64] = {};
  void *volatile pointer = nothing + 16;
  std::string printed = printedto(1, [&] { EXPECT_EQ(std::realloc(pointer, 50), nullptr); });
  EXPECT_EQ(printed, "\nRealloc: SERIOUS ERROR!");
}
#endif

TEST(Malloc, ReallocOfNullIsMalloc) {
  void *volatile none = nullptr;
  void *block = std::realloc(none, 40);
  ASSERT_NE(block, nullptr);
  std::memset(block, 1, 40);
  std::free(block);
}

TEST(Malloc, CallocClearsWhatWasUsed) {
  for (int i = 0; i < 20; ++i) {
    void *volatile used = std::malloc(1000);
    std::memset(used, 0xFF, 1000);
    std::free(used);
    auto *cleared = static_cast<unsigned char *>(std::calloc(10, 100));
    for (int k = 0; k < 1000; ++k) ASSERT_EQ(cleared[k], 0);
    std::free(cleared);
  }
}

#ifndef MORVIK_SYSTEM_HEAP
TEST(Malloc, FailuresSetErrno) {
  std::string said = printedto(2, [] {
    errno = 0;
    EXPECT_EQ(std::malloc(huge), nullptr);
    EXPECT_EQ(errno, ENOMEM);
  });
  EXPECT_EQ(said, "No more active memory available\n");
  errno = 0;
  EXPECT_EQ(std::calloc(huge, 16), nullptr);
  EXPECT_EQ(errno, ENOMEM);
  void *volatile block = std::malloc(16);
  void *volatile same = block;
  std::memset(block, 5, 16);
  said = printedto(2, [&] { EXPECT_EQ(std::realloc(same, huge), nullptr); });
  EXPECT_EQ(said, "No more active memory available\n");
  EXPECT_EQ(static_cast<char *>(block)[15], 5);  // the old block is whole
  std::free(block);
}

// Is the page of this address in a mapping that asks for large pages?
bool wantslarge(const void *address) {
  std::ifstream maps("/proc/self/smaps");
  bool inside = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t from, to;
    if (std::sscanf(line.c_str(), "%lx-%lx ", &from, &to) == 2)
      inside = from <= number(address) && number(address) < to;
    if (inside && line.starts_with("VmFlags:")) return line.find(" hg") != std::string::npos;
  }
  return false;
}

TEST(Malloc, LargeAreasAskForLargePages) {
  if (!std::ifstream("/sys/kernel/mm/transparent_hugepage/enabled")) GTEST_SKIP() << "a system without";
  constexpr std::size_t MEBIBYTE = 1 << 20;
  char *volatile small = static_cast<char *>(std::malloc(2 * MEBIBYTE));
  char *volatile large = static_cast<char *>(std::malloc(100 * MEBIBYTE));
  EXPECT_FALSE(wantslarge(small + MEBIBYTE));
  EXPECT_TRUE(wantslarge(large));
  EXPECT_TRUE(wantslarge(large + 100 * MEBIBYTE - 1));
  std::free(large);
  std::free(small);
}

TEST(Malloc, LargeBlocksBeginAtAddressesThatEndOtherwise) {
  constexpr std::size_t MEBIBYTE = 1 << 20, COUNT = 3;
  void *blocks[COUNT];
  std::set<std::uintptr_t> ends;
  for (void *&block : blocks) {
    block = std::malloc(100 * MEBIBYTE);
    ASSERT_NE(block, nullptr);
    ends.insert(number(block) % (8 * MEBIBYTE));
  }
  EXPECT_EQ(ends.size(), COUNT);
  for (void *block : blocks) std::free(block);
}

TEST(Malloc, TheAlignedFamily) {
  for (std::size_t alignment = 16; alignment <= 8192; alignment *= 2) {
    void *a = aligned_alloc(alignment, 3 * alignment), *b = memalign(alignment, 100), *c = nullptr;
    ASSERT_EQ(posix_memalign(&c, alignment, 10), 0);
    for (void *payload : {a, b, c}) {
      EXPECT_EQ(number(payload) % alignment, 0u);
      std::memset(payload, 1, malloc_usable_size(payload));
      std::free(payload);
    }
  }
  void *c = nullptr;
  EXPECT_EQ(posix_memalign(&c, 24, 10), EINVAL);
  EXPECT_EQ(posix_memalign(&c, 4, 10), EINVAL);
  void *page = valloc(1);
  EXPECT_EQ(number(page) % PAGE_BYTES, 0u);
  void *grown = std::realloc(page, 100000);
  ASSERT_NE(grown, nullptr);
  std::free(grown);
}
#endif

TEST(Malloc, ThreadsShareTheHeap) {
  coprocessors_running = true;
  std::vector<std::thread> threads;
  std::vector<int> broken(4, 0);
  for (std::size_t t = 0; t < broken.size(); ++t)
    threads.emplace_back([t, &broken] {
      std::mt19937 random(static_cast<unsigned>(t));
      std::vector<std::pair<unsigned char *, std::size_t>> blocks(64);
      for (int step = 0; step < 20000; ++step) {
        auto &[block, size] = blocks[random() % blocks.size()];
        if (block) {
          for (std::size_t i = 0; i < size; ++i)
            if (block[i] != static_cast<unsigned char>(t + 1)) broken[t] = 1;
          std::free(block);
        }
        size = random() % 300 + 1;
        block = static_cast<unsigned char *>(std::malloc(size));
        std::memset(block, static_cast<int>(t + 1), size);
      }
      for (auto &[block, size] : blocks) std::free(block);
    });
  for (std::thread &thread : threads) thread.join();
  coprocessors_running = false;
  EXPECT_EQ(broken, std::vector<int>(4, 0));
}

}  // namespace
