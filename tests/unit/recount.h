// Values that a test holds, and the recount of every reference word that they lead to.
#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "failure/jump.h"
#include "failures.h"
#include "points.h"
#include "spaces/recount.h"

using namespace morvik;

using failures::landingof;

// Values that a test holds. After each step the counts can be recounted; at the end nothing may be left.
class Lifetimes : public testing::Test {
 protected:
  void SetUp() override { before = liveblocks(); }
  void TearDown() override {
    letgo();
    EXPECT_EQ(liveblocks(), before);
  }
  void expectexact() const {
    Recount recount;
    for (const Point &p : held) recount.hold(p);
    ASSERT_EQ(recount.faults(liveblocks() - before), "");
  }
  // Holds a Point from now on.
  Point &hold(const Point &p) {
    held.push_back(p);
    return held.back();
  }
  // Gives all of them back.
  void letgo() {
    for (Point &p : held) dereferencepoint(&p);
    held.clear();
  }
  Point &holdcopy(const Point &p) {
    Point copy = p;
    referencepoint(&copy);
    return hold(copy);
  }

  std::int64_t before = 0;
  std::deque<Point> held;  // what hold gives stays in place
};

#ifdef MORVIK_CHECKING
// Does the work again and again, each time with one more allocation granted, until it has enough: how many that were.
// `prepare` makes ready for it; `check` looks at what it left, and whether it failed.
template <typename Prepare, typename Work, typename Check>
int withoutstorage(Prepare prepare, Work work, Check check) {
  constexpr int MOST = 100;
  for (int granted = 0; granted < MOST; ++granted) {
    prepare();
    testing::internal::CaptureStderr();
    failallocation(granted);
    const bool failed = landingof(work) != 0;
    failallocation(-1);
    testing::internal::GetCapturedStderr();
    check(failed);
    pendingproblem = 0;
    if (!failed || testing::Test::HasFatalFailure()) return granted;
  }
  ADD_FAILURE() << "it never had enough";
  return MOST;
}
#endif
