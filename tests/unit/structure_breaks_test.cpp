// The structural instructions on long operands, and what an interrupt or the end of storage leaves of them.
#include <csignal>

#include "alarm.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "operators/catenate.h"
#include "operators/compress.h"
#include "operators/enclose.h"
#include "operators/enlist.h"
#include "operators/ravel.h"
#include "operators/reshape.h"
#include "operators/reverse.h"
#include "operators/slices.h"
#include "operators/transpose.h"
#include "structure_cases.h"

using namespace morvik;

namespace {

using namespace structured;

Point longvector(int count) {
  Elements elements;
  for (int i = 0; i < count; ++i) elements.push_back(whole(i));
  return vector(elements);
}

TEST_F(StructureCases, LongOnes) {
  constexpr int COUNT = 200003;
  for (const bool shared : {false, true}) {
    const auto fresh = [&] {
      const Point data = longvector(COUNT);
      if (shared) holdcopy(data);
      return data;
    };
    const auto expectall = [](const Point &p, auto expected) {
      for (std::uint32_t i = 0; i < p.elements; ++i)
        if (p.data_pointer[i].integer != expected(i)) FAIL() << i;
    };
    expectall(made(reverse, fresh()), [](std::uint32_t i) { return COUNT - 1 - std::int64_t{i}; });
    expectall(made(rest, fresh()), [](std::uint32_t i) { return std::int64_t{i} + 1; });
    const Point &both = joined(catenate, fresh(), fresh());
    EXPECT_EQ(both.elements, 2u * COUNT);
    expectall(both, [](std::uint32_t i) { return std::int64_t{i} % COUNT; });
    Elements mask;
    for (int i = 0; i < COUNT; ++i) mask.push_back(whole(i % 3 == 1));
    expectall(joined(compress, vector(mask), fresh()), [](std::uint32_t i) { return std::int64_t{i} * 3 + 1; });
    letgo();
  }
  expectexact();
}

// An interrupt on the way leaves values whose counts are right.
TEST_F(StructureCases, Interrupted) {
  constexpr int COUNT = 200003;
  int (*const runs[])(Point &) = {reverse, mirror, transpose, first, rest, restelements, enlist};
  for (const bool shared : {false, true})
    for (const bool plain : {false, true})
      for (int (*const run)(Point &) : runs) {
        Point data = longvector(COUNT - COUNT % 2);
        release(data.shape_pointer);
        data.shape_pointer = newelements(2);
        data.shape_pointer[0] = whole(COUNT / 2);
        data.shape_pointer[1] = whole(2);
        data.rank = 2;
        data.type = ISARRAY | HASINTEGER;
        if (!plain) {
          data.data_pointer[70001] = enclosed(text("ab"));
          data.type |= STRUCTURED | ISSTRUCTURE;
        }
        if (shared) holdcopy(data);
        Point *const p = &hold(data);
        interrupted = SIGINT;
        testing::internal::CaptureStdout();
        const int landed = landingof([=] { run(*p); });
        testing::internal::GetCapturedStdout();
        interrupted = 0;
        // What is cut off a block that nobody else sees takes no time.
        const bool atonce = run == enlist || (!shared && (run == first || run == rest || run == restelements));
        if (!(plain && atonce)) EXPECT_EQ(landed, -1002);
        expectexact();
        letgo();
      }
  pendingproblem = 0;
}

// A value is appended at once: who asks for it has given up what the stack held, and must not be left by a jump.
TEST_F(StructureCases, AppendingIsNotInterrupted) {
  for (const std::size_t count : {POLL_INTERVAL, POLL_INTERVAL - 1})
    for (const bool collected : {false, true}) {
      Elements elements(count, whole(7));
      elements.back() = octonion({1});
      hold(vector({whole(1)}));
      hold(vector(elements));
      Point *const l = &held[held.size() - 2], *const r = &held.back();
      if (collected) r->type = ISVECTOR | 2;
      interrupted = SIGINT;
      bool done = false;
      EXPECT_EQ(landingof([&, l, r] { done = appendvalue(*l, *r); }), 0);
      interrupted = 0;
      EXPECT_EQ(l->elements, done ? count + 1 : 1);
      EXPECT_EQ(done, count < POLL_INTERVAL);
      expectexact();
      letgo();
    }
  pendingproblem = 0;
}

TEST_F(StructureCases, InterruptedJoining) {
  for (int (*const run)(Point &, Point &) : {catenate, compress})
    for (const bool plain : {false, true})
      for (const bool shared : {false, true}) {
        Point left = longvector(200000), right = longvector(200000);
        if (!plain) {
          right.data_pointer[100000] = octonion({1});
          right.type |= HASOCTONION | COMPLEXED;
        }
        if (shared) holdcopy(right);
        if (shared) holdcopy(left);
        hold(left);
        hold(right);
        Point *const l = &held[held.size() - 2], *const r = &held.back();
        interrupted = SIGINT;
        testing::internal::CaptureStdout();
        EXPECT_EQ(landingof([=] { run(*l, *r); }), -1002);
        testing::internal::GetCapturedStdout();
        interrupted = 0;
        EXPECT_EQ(l->elements, 200000u);
        EXPECT_EQ(r->elements, 200000u);
        EXPECT_EQ(l->data_pointer[199999].integer, 199999);
        expectexact();
        letgo();
      }
  pendingproblem = 0;
}

// Copies are made one by one, and the last one before a break counts like the others.
TEST_F(StructureCases, InterruptedAtAnyMomentOfAReshape) {
  int broken = 0;
  for (int round = 0; round < 40; ++round) {
    hold(vector({octonion({1}), enclosed(text("ab")), whole(3)}));
    hold(numbers({1000, 400}));
    Point *const data = &held[held.size() - 2], *const shape = &held.back();
    testing::internal::CaptureStdout();
    {
      const Alarm alarm(100 + 150 * round);
      if (landingof([=] { reshape(data, shape, nullptr); }) != 0) ++broken;
    }
    testing::internal::GetCapturedStdout();
    expectexact();
    letgo();
  }
  EXPECT_GT(broken, 0);
  pendingproblem = 0;
}

#ifdef MORVIK_CHECKING
void ravelled(Point &p) {
  ravel(p);
}
void shaped(Point &p) {
  extents(p);
}
void enclosing(Point &p) {
  enclose(p, true);
}

// Whichever allocation fails, the operands are whole and nothing is left over.
TEST_F(StructureCases, WithoutStorage) {
  static constexpr void (*runs[])(Point &) = {
      ravelled,
      shaped,
      enclosing,
      [](Point &p) { reverse(p); },
      [](Point &p) { mirror(p); },
      [](Point &p) { transpose(p); },
      [](Point &p) { first(p); },
      [](Point &p) { firstelement(p); },
      [](Point &p) { rest(p); },
      [](Point &p) { restelements(p); },
      [](Point &p) { enlist(p); },
  };
  for (void (*const run)(Point &) : runs)
    for (const bool shared : {false, true})
      for (const int rank : {0, 1, 2}) {
        std::string was;
        Point *p;
        withoutstorage(
            [&] {
              const Point data =
                  rank == 0   ? scalar(named(whole(1), "n"))
                  : rank == 1 ? vector({octonion({1}), enclosed(numbers({1, 2})), whole(4)})
                              : array({octonion({1}), enclosed(vector({octonion({2})})), whole(4), real(2)}, {2, 2});
              if (shared) holdcopy(data);
              p = &hold(data);
              was = textof(*p);
            },
            [&] { run(*p); },
            [&](bool failed) {
              if (failed) EXPECT_EQ(textof(*p), was);
              expectexact();
              letgo();
            });
      }
}

TEST_F(StructureCases, JoiningWithoutStorage) {
  static constexpr int (*runs[])(Point &, Point &) = {catenate, compress, compresslastaxis,
                                                      [](Point &l, Point &r) { return replicate(l, r, nullptr); }};
  for (int (*const run)(Point &, Point &) : runs)
    for (const bool shared : {false, true})
      for (const int way : {0, 1, 2}) {
        std::string was, other;
        Point *l, *r;
        withoutstorage(
            [&] {
              const Point left = way == 0 ? numbers({1, 0, 1}) : way == 1 ? scalar(named(whole(0), "n")) : numbers({2});
              const Point right = way == 1 && run != compress
                                      ? function({numbers({1})}, 1, 0, "f")
                                      : vector({octonion({1}), enclosed(numbers({1, 2})), whole(4)});
              if (shared) holdcopy(left), holdcopy(right);
              l = &hold(left);
              r = &hold(right);
              was = textof(*l);
              other = textof(*r);
            },
            [&] { run(*l, *r); },
            [&](bool failed) {
              if (failed) {
                EXPECT_EQ(textof(*l), was);
                EXPECT_EQ(textof(*r), other);
              }
              expectexact();
              letgo();
            });
      }
}
#endif

}  // namespace
