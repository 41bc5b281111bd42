// The timing hook, the run reports and the exit report, by a clock that the tests set.
#include "machine/timing.h"

#include <gtest/gtest.h>
#include <regex.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "coprocessor/coprocessor.h"
#include "driver/prompt.h"
#include "driver/reports.h"
#include "driver/system.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "machine/inspect.h"
#include "spaces/counters.h"
#include "spaces/refderef.h"
#include "spaces/work.h"
#include "unit/names.h"
#include "unit/standard_input.h"

using namespace morvik;

namespace {

// One second at each reading.
double ticks;
double ticking() {
  return ticks += 1;
}
double stopped() {
  return 7;
}
// Each reading is earlier than the one before.
double falling() {
  return ticks -= 1;
}

class Timed : public testing::Test {
 protected:
  void SetUp() override {
    blocks = liveblocks();
    openbanks();
    std::memset(InstructionTiming, 0, sizeof InstructionTiming);
    switchoff();
    ticks = 1000;
    clocktime = ticking;
    opstime = 1;
  }
  void TearDown() override {
    clocktime = realclock;
    switchoff();
    std::memset(InstructionTiming, 0, sizeof InstructionTiming);
    closebanks();
    EXPECT_EQ(liveblocks(), blocks);
    pendingproblem = stepping = Trace = Step = 0;
  }

  static void switchoff() {
    timing = performance = processor_performance = flops = just_summary = terse_ops = opstime = 0;
    MHz = 0;
    verbs = totaltime = prevtime = duration = 0;
  }

  // Runs a text. Returns what standard output shows of it.
  static std::string run(std::string text) {
    text += " .\n";
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    std::FILE *stream = fmemopen(text.data(), text.size(), "r");
    onetext(stream);
    std::fclose(stream);
    std::fflush(stdout);
    err = testing::internal::GetCapturedStderr();
    return testing::internal::GetCapturedStdout();
  }
  static std::string report() {
    testing::internal::CaptureStdout();
    exitreport();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
  }

  static void expectrow(std::uint16_t number, double time, double squares, double done, double flopsdone) {
    const Timing &row = InstructionTiming[number];
    EXPECT_EQ(row.time, time) << Instructions[number];
    EXPECT_EQ(row.squares, squares) << Instructions[number];
    EXPECT_EQ(row.operations, done) << Instructions[number];
    EXPECT_EQ(row.flops, flopsdone) << Instructions[number];
  }
  static int rows() {
    return static_cast<int>(std::count_if(std::begin(InstructionTiming), std::end(InstructionTiming),
                                          [](const Timing &row) { return row.operations > 0; }));
  }

  double (*realclock)() = clocktime;
  std::int64_t blocks = 0;
  static std::string err;
};
std::string Timed::err;

}  // namespace

// ---- The hook.

TEST_F(Timed, EachOperatorIsChargedToItsRow) {
  run("1 2 + DISCARD 3 4 + 5 * DISCARD");
  expectrow(instructions::ADD, 2, 2, 2, 2);
  expectrow(instructions::MULTIPLY, 1, 1, 1, 1);
  expectrow(instructions::DISCARD, 2, 2, 2, 0);
  EXPECT_EQ(rows(), 3);
  EXPECT_EQ(operators, 10);
  EXPECT_EQ(operations, 3);
}

TEST_F(Timed, OperationsAreElementsAndOneWhereNoneGrew) {
  run("(1 2 3 4 5) 1 + SHAPE");
  EXPECT_EQ(InstructionTiming[instructions::ADD].operations, 5);
  EXPECT_EQ(InstructionTiming[instructions::ADD].time, 1) << "the time is of the instruction, not of an element";
  EXPECT_EQ(InstructionTiming[instructions::SHAPE].operations, 1);
}

TEST_F(Timed, ValuesNamesAndComments) {
  run("\"a comment\" 1 @x SET x (1 2) : 1 + ;");
  expectrow(instructions::SET, 1, 1, 1, 0);
  EXPECT_EQ(rows(), 1);
  EXPECT_EQ(operators, 6) << "the comment is not counted";
}

TEST_F(Timed, WhatGoesStraightOnIsNotCharged) {
  const StandardInput input("\n");
  run("NOOP RUN TRACE RUN STEPALL RUNALL");
  EXPECT_EQ(rows(), 0);
  EXPECT_EQ(operators, 6);
  EXPECT_EQ(operations, 1) << "NOOP is an operation";
}

TEST_F(Timed, WhatFailsOrLeavesIsNotCharged) {
  run("1 2 + 'a' 1 +");
  EXPECT_EQ(InstructionTiming[instructions::ADD].operations, 1);
  run(": 1 RETURN ; ! SQRT");
  EXPECT_EQ(InstructionTiming[instructions::RETURN].operations, 0);
  EXPECT_EQ(InstructionTiming[instructions::FUNCTIONEND].operations, 0);
  EXPECT_EQ(InstructionTiming[instructions::EXECUTE].operations, 1);
}

TEST_F(Timed, AnEmptyOperandRunsNothing) {
  run("1 #NIL +");
  EXPECT_EQ(rows(), 0);
}

// A call reads the clock when it begins and when it ends, beside what its instructions do: two seconds are its own.
TEST_F(Timed, NestedCallsAreNotChargedTwice) {
  run("MONADIC 1 + 2 + 3 + FUNCTIONEND @three SET 4 three ! DISCARD");
  expectrow(instructions::EXECUTE, 2, 4, 1, 0);
  expectrow(instructions::ADD, 3, 3, 3, 3);
  const double inner = InstructionTiming[instructions::EXECUTE].time;
  run("MONADIC three ! three ! three ! FUNCTIONEND @nine SET 4 nine ! DISCARD");
  expectrow(instructions::EXECUTE, inner + 8, inner * inner + 16, 5, 0);
  expectrow(instructions::ADD, 12, 12, 12, 12);
}

TEST_F(Timed, TheFlopsOfATextAreNotThoseOfItsCaller) {
  run("'1.5 2.5 +' !");
  expectrow(instructions::ADD, 1, 1, 1, 2);
  EXPECT_EQ(InstructionTiming[instructions::EXECUTE].flops, 0);
  run("1.5 (1 2 3) MONADIC 2.5 + FUNCTIONEND EACH");
  EXPECT_EQ(InstructionTiming[instructions::EACH].flops, 0);
  EXPECT_EQ(InstructionTiming[instructions::ADD].flops, 8);
}

TEST_F(Timed, LoopsKeepWhatIsTheirOwn) {
  run("0 10 DYADIC + ; LOOP");
  expectrow(instructions::ADD, 10, 10, 10, 10);
  expectrow(instructions::LOOP, 11, 121, 1, 0);
  EXPECT_EQ(operators, 24);
  EXPECT_EQ(operations, 10);
}

TEST_F(Timed, JumpsAreChargedAndConditionsToWhatTheyLetRun) {
  run("1 CHECK 5 @%end JUMP 6 7 8 %end 9");
  EXPECT_EQ(InstructionTiming[instructions::JUMP].operations, 1);
  run("CLEAR 1 CHECK 2 3 + ?Y 4 * ?N");
  EXPECT_EQ(InstructionTiming[instructions::ADD].operations, 1);
  EXPECT_EQ(InstructionTiming[instructions::IF_YES].operations, 0);
  EXPECT_EQ(InstructionTiming[instructions::IF_NO].operations, 1) << "passed over";
  EXPECT_EQ(InstructionTiming[instructions::MULTIPLY].operations, 0);
}

TEST_F(Timed, TheFlopsThatAreFixed) {
  const struct {
    const char *text;
    std::uint16_t number;
    double flops;
  } table[] = {
      {"1 2 +", instructions::ADD, 1},
      {"9223372036854775807 9223372036854775807 +", instructions::ADD, 2},
      {"1.5 2 +", instructions::ADD, 2},
      {"(1.5 2.5 3.5) 1.5 +", instructions::ADD, 4},
      {"1i2 3i4 +", instructions::ADD, 3},
      {"(1i2 3i4) 1i1 +", instructions::ADD, 5},
      {"1i2 3i4 *", instructions::MULTIPLY, 7},
      {"1p2 3p4 *", instructions::MULTIPLY, 3},
      {"1i2j3k4 5i6j7k8 *", instructions::MULTIPLY, 29},
      {"1i2j3k4 5i6j7k0 *", instructions::MULTIPLY, 21},
      {"1i2j3k0 5i6j7k0 *", instructions::MULTIPLY, 15},
      {"1i2 5i6j7k8 *", instructions::MULTIPLY, 13},
      {"2 5i6j7k8 *", instructions::MULTIPLY, 5},
      {"0.5 NOT", instructions::NOT, 2},
      {"1.5 2.5 MATCH", instructions::MATCH, 2},
      {"1i2 3i2 MATCH", instructions::MATCH, 2},
      {"1i2 1i3 MATCH", instructions::MATCH, 3},
      {"1 2 MATCH", instructions::MATCH, 1},
      {"(1.5 2.5 3.5) SUM", instructions::REDUCE, 2},
      {"1 2 SWAP", instructions::SWAP, 0},
  };
  for (const auto &entry : table) {
    InstructionTiming[entry.number] = {};
    run(std::string(entry.text) + " CLEAR");
    EXPECT_EQ(InstructionTiming[entry.number].flops, entry.flops) << entry.text;
  }
}

TEST_F(Timed, AClockSetBackChargesNothing) {
  clocktime = falling;
  run(": 1 2 + ; @f SET f ! f ! CLEAR");
  EXPECT_GT(rows(), 0);
  for (const Timing &row : InstructionTiming) {
    EXPECT_EQ(row.time, 0);
    EXPECT_EQ(row.squares, 0);
  }
  EXPECT_EQ(totaltime, 0);
  EXPECT_EQ(InstructionTiming[instructions::ADD].operations, 2);
}

// Set back within a nested run only: what the caller is charged is its own part all the same.
TEST_F(Timed, AClockSetBackInACallLeavesTheCallerAlone) {
  static int readings;
  readings = 0;
  clocktime = [] {
    ++readings;
    return readings < 4 ? 1000.0 + readings : readings;  // begin, entry of the text; begin, entry of the call
  };
  run(": 1 2 + ; !");
  EXPECT_EQ(InstructionTiming[instructions::ADD].time, 1);
  EXPECT_EQ(InstructionTiming[instructions::EXECUTE].time, 2);
}

// A copy a step would take time that no other run takes.
TEST_F(Timed, AppendingAndTakingAreChargedByPoint) {
  run("(1 2 3) @a SET 4 : a 4 , @a SET ; REPEAT");
  expectrow(instructions::CATENATE, 4, 4, 4, 0);
  expectrow(instructions::SET, 5, 5, 5, 0);
  EXPECT_EQ(operators, 6 + 4 * 6);
  run("4 : a REST @a SET ; REPEAT a");
  expectrow(instructions::REST, 4, 4, 4, 0);
  expectrow(instructions::SET, 9, 9, 9, 0);
  EXPECT_EQ(operators, 4 + 4 * 5);
  ASSERT_EQ(sp->elements, 3u);
  EXPECT_EQ(sp->data_pointer[2].integer, 4);
  run("DISCARD");
}

#if !defined(MORVIK_CHECKING) && !defined(MORVIK_SYSTEM_HEAP) && !defined(MORVIK_NO_QUICK_LOOP)
// A body is decoded when it runs again. Who copies exchanges the block at each step, so that it is another one after an
// odd number of them.
TEST_F(Timed, AppendingAndTakingStayInTheirBlock) {
  const auto blockofa = [] { return checkhash(memory[0], "a")->meaning->data_pointer; };
  run("60 .. @a SET : a 4 , @a SET ; @append SET : a REST @a SET ; @take SET 2 append REPEAT 1 take REPEAT");
  const Element *const block = blockofa();
  run("3 append REPEAT");
  EXPECT_EQ(blockofa(), block);
  run("5 take REPEAT");
  EXPECT_EQ(blockofa(), block + 5);
}
#endif

TEST_F(Timed, ATraceShowsEachPointOfAStore) {
  const std::string traced = run("(1 2 3) @a SET 3 : TRACE a 4 , @a SET ; REPEAT");
  std::size_t stores = 0;
  for (std::size_t at = traced.find("SET\n"); at != std::string::npos; at = traced.find("SET\n", at + 1)) ++stores;
  EXPECT_EQ(stores, 3u) << traced;
}

TEST_F(Timed, NothingIsReadOrChargedWhenTheHookIsOff) {
  opstime = 0;
  run(": 1 2 + ; ! 3 *");
  EXPECT_EQ(ticks, 1000);
  EXPECT_EQ(rows(), 0);
}

// ---- Run reports.

TEST_F(Timed, RunReports) {
  opstime = 0;
  performance = 1;
  // The clock is read when the run begins and when it ends.
  EXPECT_EQ(run("1 2 + DISCARD"),
            "\n\n-->\tExecuted 4 operators, 1 operations.\n-->\tPerformance:\t4.00 Morvik operators/sec,\n"
            "\t\t\t1.00 scalar operations/sec.\n\n-");
  timing = 1;
  EXPECT_EQ(run("1 +"), "") << "a run that fails has no end to report";
  run("CLEAR");
  EXPECT_EQ(run(""), "\n\tät = 00.01 000mS 000uS\n\n-") << "no operator, no performance";
}

TEST_F(Timed, RunReportsOfNoTime) {
  opstime = 0;
  clocktime = stopped;
  performance = 1;
  EXPECT_EQ(run("1 DISCARD"),
            "\n\n-->\tExecuted 2 operators, 0 operations.\n-->\tPerformance:\tinf Morvik operators/sec,\n"
            "\t\t\t0.00 scalar operations/sec.\n\n-");
  performance = 0;
  processor_performance = 1;
  MHz = 2000;
  EXPECT_EQ(run(""), "\n\n-->\tProcessor performance: 0 Morvik operations per Mhz\n\n-");
}

TEST_F(Timed, ProcessorPerformance) {
  opstime = 0;
  processor_performance = 1;
  MHz = 8;
  EXPECT_EQ(run("1 2 + DISCARD"), "\n\n-->\tProcessor performance: 0.625 Morvik operations per Mhz\n\n-");
  MHz = std::numeric_limits<std::int64_t>::max();
  EXPECT_EQ(run("1 2 + DISCARD"), "\n\n-->\tProcessor performance: 5.42101e-19 Morvik operations per Mhz\n\n-");
}

TEST_F(Timed, AClockSetBackInARunReport) {
  opstime = 0;
  clocktime = falling;
  performance = timing = 1;
  const std::string text = run("1 DISCARD");
  EXPECT_NE(text.find("Performance:\tinf Morvik"), std::string::npos) << text;
  EXPECT_NE(text.find("t = 00.00 000mS 000uS\n"), std::string::npos) << text;
}

// ---- The exit report.

namespace {

// Is the whole line of this extended regular expression? The library's own would do, did the compiler not suspect it.
bool matches(const std::string &line, const std::string &pattern) {
  regex_t compiled;
  EXPECT_EQ(regcomp(&compiled, ("^" + pattern + "$").c_str(), REG_EXTENDED | REG_NOSUB), 0) << pattern;
  const bool found = regexec(&compiled, line.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return found;
}

std::string expanded(const std::string &text) {
  std::string result;
  std::size_t column = 0;
  for (const char c : text) {
    do {
      result += c == '\t' ? ' ' : c;
      column = c == '\n' ? 0 : column + 1;
    } while (c == '\t' && column % 8 != 0);
  }
  return result;
}

std::vector<std::string> linesof(const std::string &text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// A table with rows of every width.
void filltable() {
  InstructionTiming[instructions::ADD] = {3, 3, 1500, 4500};
  InstructionTiming[instructions::COMPRESSLASTAXIS] = {0.5, 0.25, 1, 0};
  InstructionTiming[instructions::MULTIPLY] = {6.25e-6, 1e-12, 25000, 150000};
  InstructionTiming[instructions::DUPLICATE] = {0, 0, 3, 0};
  InstructionTiming[instructions::SLEEP] = {90, 8100, 1, 0};
}

// Everything after the table varies with the processor's time.
std::string tableof(const std::string &report) {
  return report.substr(0, report.find("\nSummary:"));
}

}  // namespace

TEST_F(Timed, TheTable) {
  filltable();
  const std::string table = tableof(report());
  EXPECT_EQ(table.substr(0, 12), "\n\nExecution ");
  EXPECT_NE(table.find("\nADD \t\t        500.000"), std::string::npos)
      << "two tabs, then blanks as far as the long name";
  EXPECT_EQ(expanded(table),
            "\n\nExecution timing per operation:\n"
            "SLEEP                     0.011    op/S       1:30.000 m:S,  96.257 %t\n"
            "        avg       1:30.000 m:S, sdev   0.000   nS,   1.000    ops\n"
            "ADD                     500.000    op/S   2.000 mS,           3.209 %t\n"
            "        avg   2.000 mS,         sdev  44.677 mS,     1.500   Kops\n"
            "MULTIPLY                  4.000 Gop/S     0.250   nS,         0.000 %t\n"
            "        avg   0.250   nS,       sdev   6.320   nS,  25.000   Kops\n"
            "COMPRESSLASTAXIS          2.000    op/S 500.000 mS,           0.535 %t\n"
            "        avg 500.000 mS,         sdev   0.000   nS,   1.000    ops\n"
            "DUPLICATE                   inf Gop/S     0.000   nS,         0.000 %t\n"
            "        avg   0.000   nS,       sdev   0.000   nS,   3.000    ops\n");
}

TEST_F(Timed, TheTableWithFlops) {
  filltable();
  InstructionTiming[instructions::SLEEP] = InstructionTiming[instructions::COMPRESSLASTAXIS] = {};
  flops = 1;
  const std::string table = tableof(report());
  EXPECT_NE(table.find("\nADD \t\t"), std::string::npos);
  EXPECT_EQ(table.find("\nADD \t\t\t"), std::string::npos) << "an extra tab for a short name";
  EXPECT_NE(table.find("\nMULTIPLY \t  4.000"), std::string::npos);
  EXPECT_EQ(expanded(table),
            "\n\nExecution timing\n"
            "ADD             500.000    op/S   1.500 Kflop/S   2.000 mS,   100.000 %t\n"
            "        avg   2.000 mS,   sdev  44.677 mS,     1.500   Kops   3.000  flop/op\n"
            "MULTIPLY          4.000 Gop/S    24.000 Gflop/S   0.250   nS,   0.000 %t\n"
            "        avg   0.250   nS, sdev   6.320   nS,  25.000   Kops   6.000  flop/op\n"
            "DUPLICATE           inf Gop/S                     0.000   nS,   0.000 %t\n"
            "        avg   0.000   nS, sdev   0.000   nS,   3.000    ops\n");
}

TEST_F(Timed, TheTableWithCycles) {
  InstructionTiming[instructions::ADD] = {3, 3, 1500, 4500};
  InstructionTiming[instructions::DUPLICATE] = {0, 0, 3, 0};
  flops = processor_performance = 1;
  MHz = 2000;
  EXPECT_EQ(expanded(tableof(report())),
            "\n\nExecution timing\n"
            "ADD             500.000    op/S   1.500 Kflop/S   2.000 mS,   100.000 %t\n"
            "          4.00  Mcy/op   avg   2.000 mS,   sdev  44.677 mS,     1.500   Kops\n"
            "          1.33  Mcy/flop    3.000  flop/op\n"
            "DUPLICATE           inf Gop/S                     0.000   nS,   0.000 %t\n"
            "          0.00     cy/op avg   0.000   nS, sdev   0.000   nS,   3.000    ops\n");
}

TEST_F(Timed, TheTerseTable) {
  filltable();
  flops = terse_ops = 1;
  const std::string table = tableof(report());
  EXPECT_NE(table.find("500.000    op/S\t  1.500 Kflop/S  "), std::string::npos);
  EXPECT_EQ(expanded(table),
            "\n\nExecution timing\n"
            "  0.011    op/S                         1:30.000 m:S,  96.257 %t\n"
            "500.000    op/S   1.500 Kflop/S     2.000 mS,           3.209 %t\n"
            "  4.000 Gop/S    24.000 Gflop/S     0.250   nS,         0.000 %t\n"
            "  2.000    op/S                   500.000 mS,           0.535 %t\n"
            "    inf Gop/S                       0.000   nS,         0.000 %t\n");
}

TEST_F(Timed, NoInstructionNoTable) {
  EXPECT_EQ(report().substr(0, 19), "\n\nSummary:\tavg   0.");
  opstime = 0;
  EXPECT_EQ(report(), "");
}

TEST_F(Timed, JustTheSummary) {
  filltable();
  just_summary = flops = 1;
  EXPECT_EQ(report().substr(0, 11), "\n\nSummary:\t");
}

TEST_F(Timed, TheSummary) {
  filltable();
  verbs = 1234;
  starttime = 1000;
  ticks = 1002;
  const std::vector<std::string> lines = linesof(report());
  ASSERT_GE(lines.size(), 5U);
  const auto expect = [&](std::size_t fromend, const std::string &pattern) {
    const std::string &line = lines[lines.size() - fromend];
    EXPECT_TRUE(matches(line, pattern)) << line;
    EXPECT_LE(expanded(line).size(), 80U) << line;
  };
  expect(5, "");
  expect(4, "Summary:\tavg   3\\.528 mS, sdev 552\\.913 mS, n=26505 154\\.500 Kflops");
  expect(3, "Raw timing:\tavg  *[0-9.]+ +[num]?S,\t\\(proc time\\)");
  expect(2, "proc:\t *[0-9.]+ S \\(utime: +[0-9.]+ S, stime: +[0-9.]+ S\\)\treal:\t  3\\.000 S");
  expect(1, "\tMorvik verbs per second:   +[0-9.]+ +[GMK]?v/S   1\\.234   Kverbs");
}

TEST_F(Timed, SharesAddUp) {
  run("1 2 + 3 * DISCARD : 4 5 - ; ! 6 / (1 2 3) SHAPE RANK CLEAR");
  double sum = 0;
  std::size_t count = 0;
  const std::string table = tableof(report());
  for (std::size_t at = table.find(" %t"); at != std::string::npos; at = table.find(" %t", at + 1), ++count)
    sum += std::stod(table.substr(table.rfind(' ', at - 1), at));
  EXPECT_EQ(count, static_cast<std::size_t>(rows()));
  EXPECT_GE(count, 8U);
  EXPECT_NEAR(sum, 100, 0.0005 * static_cast<double>(count));
}

TEST_F(Timed, NoTimeAtAllHasNoShares) {
  clocktime = stopped;
  run("1 2 +");
  EXPECT_EQ(expanded(tableof(report())),
            "\n\nExecution timing per operation:\n"
            "ADD                 inf Gop/S   0.000   nS,   0.000 %t\n"
            "        avg   0.000   nS, sdev   0.000   nS,   1.000    ops\n");
}

TEST_F(Timed, LinesFitATerminal) {
  // What the formats allow: times under a minute and figures under a thousand of their unit.
  for (std::uint16_t number = 1; number < instructions::COUNT; ++number)
    InstructionTiming[number] = {number * 1e-7, number * 1e-9, number * 3.0, number * 5.0};
  for (const bool clocked : {false, true})
    for (const bool floating : {false, true}) {
      processor_performance = clocked;
      MHz = clocked ? 2400 : 0;
      flops = floating;
      for (const std::string &line : linesof(tableof(report()))) EXPECT_LE(expanded(line).size(), 80U) << line;
    }
}

TEST_F(Timed, TheLargestClock) {
  filltable();
  flops = processor_performance = 1;
  MHz = std::numeric_limits<std::int64_t>::max();
  const std::string text = report();
  EXPECT_NE(text.find(" Gcy/op "), std::string::npos);
  EXPECT_EQ(text.find("nan"), std::string::npos);
}

TEST_F(Timed, EachProcessor) {
  Reply replies[3] = {};
  replies[0].total_flops = 500;
  replies[1].total_flops = 2e6;
  Reply *const mine = from_coprocessor;
  from_coprocessor = replies;
  cpus = 3;
  filltable();
  flops = 1;
  totaltime = 2;
  const std::string all = report();
  flops = 0;
  const std::string noflops = report();
  flops = 1;
  cpus = 1;
  const std::string single = report();
  from_coprocessor = mine;
  const std::string expected = "\n" + std::string(80, '-') +
                               "\nPer processor (thread) floating point perfomance:\n"
                               "Processor 0:\t250.000  flop/S\nProcessor 1:\t  1.000 Mflop/S\n"
                               "Processor 2:\t  0.000  flop/S\n\nSummary:";
  EXPECT_NE(all.find(expected), std::string::npos) << all;
  EXPECT_EQ(noflops.find("perfomance"), std::string::npos);
  EXPECT_EQ(single.find("perfomance"), std::string::npos);
}
