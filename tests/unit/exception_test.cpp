// Failure: what is reported where, where the jump lands and what it releases.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "arithmetic/gamma.h"
#include "failure/custody.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "unit/failures.h"

using namespace morvik;

namespace {

using namespace failures;

class Exception : public Quiet {};

Point plus() {
  static char name[32] = {};  // with space for a reference word ahead of it
  std::strcpy(name + BLOCK_PREFIX, "+");
  *refer(name + BLOCK_PREFIX) = -1;
  Point p{};
  p.rank = ranks::OPERATOR;
  p.type = ISOPERATOR;
  p.instruction = instructions::ADD;
  p.name = name + BLOCK_PREFIX;
  return p;
}

TEST_F(Exception, PositiveNumberPrintsTheTextAndTheInstruction) {
  const Point instruction = plus();
  const Printed p = printed([&] { exception(17, nullptr, &instruction); });
  EXPECT_EQ(p.err, "\n17 - dyadic function arguments are not conformable.\n\nInstruction:\n . OPERATOR:\t\t+");
  EXPECT_EQ(p.out, "");
  EXPECT_EQ(stepping, 1);
  EXPECT_EQ(pendingproblem, 0);
  EXPECT_EQ(printing, 0);
}

TEST_F(Exception, WithoutAnInstructionOnlyTheTextIsPrinted) {
  EXPECT_EQ(printed([] { exception(23, nullptr, nullptr); }).err,
            "\n23 - this name has no meaning yet. Please ASSIGN or SET it first.\n");
}

TEST_F(Exception, TopOfStackShowsOnlyAfterAProblem) {
  const Point instruction = plus();
  Point stack[2] = {};
  makeinteger(stack[1], 42);
  Point *sp = &stack[1];
  EXPECT_EQ(printed([&] { exception(800, &sp, &instruction); }).err.find("Top of stack"), std::string::npos);
  pendingproblem = 1;
  const std::string err = printed([&] { exception(800, &sp, &instruction); }).err;
  EXPECT_EQ(err,
            "\n800 - not enough arguments on stack for the reqested operation.\n\nInstruction:\n . OPERATOR:\t\t+"
            "Top of stack:\n 42");
  EXPECT_EQ(printed([&] { exception(800, nullptr, &instruction); }).err.find("Top of stack"), std::string::npos);
  dereferencepoint(&stack[1]);
}

TEST_F(Exception, StorageHasNoDumpAndIsAProblem) {
  const Point instruction = plus();
  Point *sp = nullptr;
  EXPECT_EQ(printed([&] { exception(27, &sp, &instruction); }).err, "\n27 - out of main storage.\n");
  EXPECT_EQ(pendingproblem, 1);
  EXPECT_EQ(stepping, 1);
}

TEST_F(Exception, TheGreetingIsNoFailure) {
  const Printed p = printed([] { exception(0, nullptr, nullptr); });
  EXPECT_EQ(p.err, "\n--- Hello. (0) ---");
  EXPECT_EQ(p.out, "");
  EXPECT_EQ(stepping, 0);
}

TEST_F(Exception, NegativeNumbersPrintTheirRowWithoutMore) {
  EXPECT_EQ(printed([] { exception(-31, nullptr, nullptr); }).err,
            "\n31 - no match, left count and right's axis in compress/replicate.");
  EXPECT_EQ(printed([] { exception(-999, nullptr, nullptr); }).err, "\n--- Good bye. (999) ---");
  EXPECT_EQ(stepping, 0);
}

TEST_F(Exception, TheEndIsSilentAndJumps) {
  int value = 0;
  const Printed p = printed([&] { value = landingof([] { exception(999, nullptr, nullptr); }); });
  EXPECT_EQ(value, -1);
  EXPECT_EQ(endprocess, 1);
  EXPECT_EQ(p.err, "");
  EXPECT_EQ(p.out, "");
  EXPECT_EQ(stepping, 0);
}

TEST_F(Exception, WhatWasPrintedComesAheadOfTheReport) {
  const Ended e = child([] {
    dup2(STDERR_FILENO, STDOUT_FILENO);
    std::fputs("value", stdout);
    exception(27, nullptr, nullptr);
    std::fputs(" after", stdout);
  });
  EXPECT_EQ(e.err, "value\n27 - out of main storage.\n after");
}

TEST_F(Exception, ExceptionjumpReportsAndJumps) {
  const Point instruction = plus();
  int value = 0;
  std::string err = printed([&] { value = landingof([&] { exceptionjump(991, nullptr, &instruction); }); }).err;
  EXPECT_EQ(value, -1);
  EXPECT_EQ(
      err,
      "\n991 - an impossible case occured -- something is not as it should be.\n\nInstruction:\n . OPERATOR:\t\t+");
  err = printed([&] { value = landingof([] { outofstorage(); }); }).err;
  EXPECT_EQ(value, -1);
  EXPECT_EQ(err, "\n27 - out of main storage.\n");
}

// With the data limit reached and every block handed out, the report still comes and the jump lands.
TEST_F(Exception, TheReportOfNoStorageNeedsNone) {
  if (SANITIZED) GTEST_SKIP() << "a sanitizer's heap ends the process";
  const Ended e = child([] {
    const int value = landingof([] {
      const rlimit none = {16 << 20, 16 << 20};
      setrlimit(RLIMIT_DATA, &none);
      for (std::size_t bytes = 1 << 20; bytes > 0; bytes /= 2)
        while (tryblock(bytes)) {
        }
      newblock(1);
    });
    _exit(value == -1 && pendingproblem == 1 ? 5 : 6);
  });
  EXPECT_EQ(exitstatus(e), 5);
  const std::string text = "\n27 - out of main storage.\n";
  ASSERT_GE(e.err.size(), text.size());
  EXPECT_EQ(e.err.substr(e.err.size() - text.size()), text);
}

TEST_F(Exception, KernelReportsBelongToTheirThread) {
  numericfault = 36;
  std::int32_t other = -1;
  std::thread([&] {
    other = numericfault;
    numericfault = 130;
  }).join();
  EXPECT_EQ(other, 0);
  EXPECT_EQ(numericfault, 36);
  numericfault = 0;
}

std::vector<int> *order;
void noteone(Custody &) {
  order->push_back(1);
}
void notetwo(Custody &) {
  order->push_back(2);
}
void noteunwind() {
  order->push_back(9);
}

TEST_F(Exception, AJumpUnwindsAndReleasesTheLatestFirst) {
  std::vector<int> notes;
  order = &notes;
  const int value = landingof(
      [] {
        Custody one, two;
        takecustody(one, noteone, nullptr);
        takecustody(two, notetwo, nullptr);
        jump(-7);
      },
      noteunwind);
  EXPECT_EQ(value, -7);
  EXPECT_EQ(notes, (std::vector<int>{9, 2, 1}));
  EXPECT_EQ(custody, nullptr);
}

TEST_F(Exception, WhatEndedInPeaceIsNotReleased) {
  std::vector<int> notes;
  order = &notes;
  landingof([] {
    Custody one, two;
    takecustody(one, noteone, nullptr);
    takecustody(two, notetwo, nullptr);
    endcustody(two);
    jump(-1);
  });
  EXPECT_EQ(notes, (std::vector<int>{1}));
}

TEST_F(Exception, AnInnerLandingLeavesTheOuterFramesAlone) {
  std::vector<int> notes;
  order = &notes;
  const int value = landingof(
      [] {
        Custody one;
        takecustody(one, noteone, nullptr);
        const int inner = landingof([] {
          Custody two;
          takecustody(two, notetwo, nullptr);
          jump(-2);
        });
        order->push_back(inner);
        jump(-3);
      },
      noteunwind);
  EXPECT_EQ(value, -3);
  EXPECT_EQ(notes, (std::vector<int>{2, -2, 9, 1}));
}

void failingunwind() {
  order->push_back(8);
  jump(-5);
}

TEST_F(Exception, AFailureOnTheWayGoesOnToTheLanding) {
  std::vector<int> notes;
  order = &notes;
  const int value = landingof(
      [] {
        Custody one;
        takecustody(one, noteone, nullptr);
        jump(-4);
      },
      failingunwind);
  EXPECT_EQ(value, -5);
  EXPECT_EQ(notes, (std::vector<int>{8, 1}));
  notes.clear();
  EXPECT_EQ(landingof([] { jump(-6); }, noteunwind), -6);
  EXPECT_EQ(notes, (std::vector<int>{9}));
}

// ---- Work that runs ahead.

bool broken;  // does the join find a failure? It finds each once
void notejoin() {
  order->push_back(7);
  if (!broken) return;
  broken = false;
  exceptionjump(36);
}

TEST_F(Exception, WhatRunsAheadIsJoinedBeforeAnythingIsReportedOrJumps) {
  std::vector<int> notes;
  order = &notes;
  const Printed printed = failures::printed([] {
    landingof([] { exception(23, nullptr, nullptr); }, nullptr, notejoin);
    order->push_back(0);
    landingof([] { jump(-1); }, noteunwind, notejoin);
    order->push_back(0);
    // An inner landing begins with nothing in flight, and has no join of its own.
    landingof([] { landingof([] { exceptionjump(24); }); }, nullptr, notejoin);
  });
  EXPECT_EQ(notes, (std::vector<int>{7, 0, 7, 9, 0, 7}));
  notes.clear();
  interrupted = SIGINT;
  failures::printed([] { landingof(takeinterrupt, noteunwind, notejoin); });
  EXPECT_EQ(notes, (std::vector<int>{7, 7, 9})) << "once for the report, once for the jump";
}

TEST_F(Exception, TheFailureOfWhatRunsAheadIsReportedInThePlaceOfAllOthers) {
  std::vector<int> notes;
  order = &notes;
  const auto reports = [](auto body) {
    broken = true;
    int landed = 0;
    const Printed printed = failures::printed([&] { landed = landingof(body, nullptr, notejoin); });
    EXPECT_EQ(landed, -1);
    return printed.out + printed.err.substr(0, printed.err.find(" - "));
  };
  EXPECT_EQ(reports([] { exceptionjump(23); }), "\n36");
  EXPECT_EQ(reports([] { exception(23, nullptr, nullptr); }), "\n36");
  EXPECT_EQ(reports([] { jump(-9); }), "\n36");
  EXPECT_EQ(reports([] { outofstorage(); }), "\n36");
  EXPECT_EQ(pendingproblem, 0);
  EXPECT_EQ(reports([] { landingof([] {}); }), "\n36");
  EXPECT_EQ(reports([] { exception(999, nullptr, nullptr); }), "\n36");
  EXPECT_EQ(endprocess, 0);
  interrupted = SIGINT;
  EXPECT_EQ(reports([] { takeinterrupt(); }), "\n36");
}

TEST_F(Exception, CustodyReleasesPointsProgrammesAndBlocks) {
  const std::int64_t before = liveblocks();
  landingof([] {
    Custody point, programme, block;
    Point value, text[2] = {};
    makeinteger(value, 5);
    takecustody(point, releasepoint, &value);
    makeinteger(text[0], 6);
    takecustody(programme, releaseprogramme, text);
    takecustody(block, releaseblock, newblock(100));
    jump(-1);
  });
  EXPECT_EQ(liveblocks(), before);
}

TEST_F(Exception, WithoutALandingTheProcessEnds) {
  Ended e = child([] {
    std::fputs("started", stdout);
    outofstorage();
  });
  EXPECT_EQ(exitstatus(e), 1);
  EXPECT_EQ(e.out, "started");
  EXPECT_EQ(e.err, "\n27 - out of main storage.\n");
  e = child([] {
    landingof([] { jump(-1); });
    signalexception(SIGSEGV);
  });
  EXPECT_EQ(exitstatus(e), 13);
  EXPECT_EQ(e.err, "\nSEGMENTATION VIOLATION\n");
}

}  // namespace
