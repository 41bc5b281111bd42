// The records that the instructions of the machine leave: flag words, forms, addresses, marks on functions, and what
// YIELD hangs on one. What shows in text is the transcripts' matter.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "coprocessor/coprocessor.h"
#include "coprocessor/threads.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "frontend/assembly.h"
#include "frontend/limits.h"
#include "frontend/symtab.h"
#include "machine/machine.h"
#include "machine/slicing.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

class Programmes : public testing::Test {
 protected:
  void SetUp() override {
    blocks = liveblocks();
    openbanks();
  }
  void TearDown() override {
    closebanks();
    EXPECT_EQ(liveblocks(), blocks);
    EXPECT_EQ(custody, nullptr);
    stepping = 0;
    pendingproblem = 0;
  }

  // Runs one text. The 0 that is echoed in the end goes again, as an echo may change what it shows.
  void run(const std::string &text) {
    std::string all = text + " 0 .\n";
    std::FILE *stream = fmemopen(all.data(), all.size(), "r");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    onetext(stream);
    err = testing::internal::GetCapturedStderr();
    testing::internal::GetCapturedStdout();
    std::fclose(stream);
    ASSERT_EQ(err, "") << text;
    dereferencepoint(sp--);
  }
  std::uint32_t flags(const std::string &text) {
    run("CLEAR " + text);
    return sp->type;
  }
  static std::ptrdiff_t height() { return sp - stack[0]; }

  std::int64_t blocks = 0;
  std::string err;
};

// The low bits count the kinds that were found; no bit of a kind is set.
TEST_F(Programmes, CollectedFlagWords) {
  EXPECT_EQ(flags("1 2 COLLECT"), 0x40001U);
  EXPECT_EQ(flags("MARK 1 2 3 COLLECT"), 0x40001U);
  EXPECT_EQ(flags("1 2.5 COLLECT"), 0x40002U);
  EXPECT_EQ(flags("1 2.5 'a' COLLECT"), 0x40003U);
  EXPECT_EQ(flags("1 2.5 'a' 1i2 1i2j3k4 1i2j3k4l5m6n7o8 COLLECT"), 0x40006U);
  EXPECT_EQ(flags("4 (5 6) COLLECT"), 0x40002U) << "integers, and a structure";
  EXPECT_EQ(flags("(5 6) (7 8) COLLECT"), 0x40002U);
  EXPECT_EQ(flags("(5 1.5) (7 8) COLLECT"), 0x40003U);
  EXPECT_EQ(flags("MARK COLLECT"), 0x240000U);
  EXPECT_EQ(flags("COLLECT"), 0x240000U);
  EXPECT_EQ(flags("MARK 1 COLLECT"), 0x10400U);
}

TEST_F(Programmes, CollectedRecords) {
  run("4 (5 6) COLLECT");
  ASSERT_EQ(sp->rank, 1);
  EXPECT_EQ(sp->elements, 2U);
  EXPECT_EQ(sp->depth, 2);
  EXPECT_EQ(sp->context, nullptr);
  EXPECT_EQ(sp->shape_pointer->tag, tags::INTEGER);
  EXPECT_EQ(sp->shape_pointer->form, forms::NUMBER);
  EXPECT_EQ(sp->shape_pointer->attributes, 0);
  EXPECT_EQ(sp->shape_pointer->integer, 2);
  EXPECT_EQ(sp->data_pointer[0].tag, tags::INTEGER);
  EXPECT_EQ(sp->data_pointer[0].integer, 4);
  ASSERT_EQ(sp->data_pointer[1].tag, tags::SUBARRAY);
  EXPECT_EQ(sp->data_pointer[1].subarray->elements, 2U);
  run("CLEAR 1 2 COLLECT");
  EXPECT_EQ(sp->depth, 0);
  run("CLEAR : 1 ; @x COLLECT");
  EXPECT_EQ(sp->data_pointer[0].tag, ranks::FUNCTION);
  EXPECT_EQ(sp->data_pointer[1].tag, ranks::ADDRESS);
  run("CLEAR MARK COLLECT");
  EXPECT_EQ(sp->rank, 1);
  EXPECT_EQ(sp->depth, 0);
  EXPECT_EQ(sp->elements, 0U);
  EXPECT_EQ(sp->data_pointer, nullptr);
  EXPECT_EQ(sp->shape_pointer->integer, 0);
}

TEST_F(Programmes, Counts) {
  for (const char *text : {"7 8 COUNTSTACK", "MARK 7 8 COUNTTOMARK"}) {
    EXPECT_EQ(flags(text), ISSCALAR | HASINTEGER);
    EXPECT_EQ(sp->data_pointer->tag, tags::INTEGER);
    EXPECT_EQ(sp->data_pointer->integer, 2);
  }
}

TEST_F(Programmes, AMarkIsItsInstruction) {
  run("MARK");
  EXPECT_EQ(sp->rank, ranks::OPERATOR);
  EXPECT_EQ(sp->instruction, instructions::MARK);
  run("1 CHECK MARK ?Y");
  EXPECT_EQ(sp->rank, ranks::OPERATOR);
  EXPECT_EQ(sp->instruction, instructions::MARK);
}

TEST_F(Programmes, WhatIfEmpties) {
  for (const char *value : {"5", "'text'", "(1 2 3 4)[2 2]", ": 1 ;", "@name", "(1 (2 3))"}) {
    EXPECT_EQ(flags(std::string("0 ") + value + " IF"), 0x240000U) << value;
    EXPECT_EQ(height(), 1);
    EXPECT_EQ(sp->rank, 1);
    EXPECT_EQ(sp->depth, 1);
    EXPECT_EQ(sp->elements, 0U);
    EXPECT_EQ(sp->data_pointer, nullptr);
    EXPECT_EQ(sp->shape_pointer->integer, 0);
  }
  run("CLEAR (1 2 3) @kept SET 0 kept IF DISCARD kept");
  EXPECT_EQ(sp->elements, 3U) << "whoever else holds the value keeps it";
}

TEST_F(Programmes, TheTimeIsADay) {
  EXPECT_EQ(flags("TIME"), ISSCALAR | HASREAL);
  EXPECT_EQ(sp->data_pointer->form, 0x200);
  EXPECT_GT(sp->data_pointer->real, 2460000.0);
}

TEST_F(Programmes, WhatAMissingInputGives) {
  // The standard input is at its end.
  ASSERT_NE(std::freopen("/dev/null", "r", stdin), nullptr);
  EXPECT_EQ(flags("INPUT"), 0x240000U);
  EXPECT_EQ(flags("QUOTEDIN"), 0x240000U | HASASCII);
}

TEST_F(Programmes, Addresses) {
  run("'some' AT");
  EXPECT_EQ(sp->rank, ranks::ADDRESS);
  EXPECT_EQ(sp->type, 4U);
  EXPECT_EQ(sp->depth, 1);
  EXPECT_EQ(sp->elements, 4U);
  EXPECT_STREQ(sp->name, "some");
  EXPECT_EQ(sp->context, variables[0]);
  EXPECT_EQ(sp->target, checkhash(memory[0], "some")->meaning);
  run("VARS 2 NILADIC @&2 ; !");
  EXPECT_EQ(sp->rank, ranks::ADDRESS);
  EXPECT_EQ(sp->type, 6U);
  EXPECT_EQ(sp->name, nullptr);
  EXPECT_EQ(sp->depth, 0);
  EXPECT_EQ(sp->elements, 1U);
}

// The facts that a function's header collects.
TEST_F(Programmes, MarksOfHeaders) {
  const auto header = [&](const char *name) { return checkhash(memory[0], name)->meaning->programme->type; };
  run("MONADIC 0.5 CHECK ; @draws SET 1 draws ! DISCARD");
  EXPECT_NE(header("draws") & ISPROBABLE, 0U);
  run("MONADIC 1.0 CHECK ; @certain SET 1 certain ! DISCARD");
  EXPECT_EQ(header("certain") & ISPROBABLE, 0U);
  run("MONADIC DUP ; @two SET 1 two RESULT DISCARD DISCARD");
  EXPECT_NE(header("two") & GLOBALCHANGE, 0U);
  run("MONADIC RANDOM ; @in SET MONADIC in ! ; @out SET 1 out RESULT DISCARD");
  EXPECT_NE(header("out") & ISPROBABLE, 0U);
  run("MONADIC 1 + ; @plain SET 1 plain RESULT DISCARD");
  EXPECT_EQ(header("plain") & (ISPROBABLE | INOUT | ISOPERATOR), 0U);
  run("plain OPERATOR @flagged SET");
  EXPECT_NE(header("flagged") & ISOPERATOR, 0U);
  EXPECT_EQ(header("plain") & ISOPERATOR, 0U) << "a body that others hold is copied";
  run("MONADIC PRINT 0 ; @tells SET");
  EXPECT_NE(header("tells") & INOUT, 0U);
}

TEST_F(Programmes, WhatYieldHangs) {
  run("3 4 VARS 2 DYADIC 'a' : 5 ; YIELD 9 ; !");
  ASSERT_EQ(sp->rank, ranks::FUNCTION);
  ASSERT_EQ(height(), 4) << "3 4 'a' and the function";
  const auto *words = static_cast<const std::int64_t *>(sp->programme->link);
  ASSERT_NE(words, nullptr);
  EXPECT_EQ(words[0], 241);
  const auto *frame = reinterpret_cast<const Point *>(words[1]);
  EXPECT_EQ(frame, stack[0] + 1);
  const auto *numbers = reinterpret_cast<const std::int32_t *>(words + 3);
  EXPECT_EQ(numbers[0], 2) << "YIELD is the third Point";
  EXPECT_EQ(numbers[1], 6) << "two locals, two arguments, 'a' and the function";
  EXPECT_EQ(numbers[2], 2);
  EXPECT_EQ(numbers[3], 2);
  const auto *points = static_cast<const Point *>(sp->programme->link) + 1;
  EXPECT_EQ(points[0].rank, ranks::VARIABLE);
  EXPECT_EQ(points[2].type, ISSCALAR | HASINTEGER);
  EXPECT_EQ(points[5].rank, ranks::FUNCTION);
  run("DUP ! 6 + SWAP");
  EXPECT_EQ(sp[-1].data_pointer->integer, 11) << "a later call runs it from its start";
}

// The body belongs to its holders; YIELD changes a copy.
TEST_F(Programmes, YieldLeavesOthersAlone) {
  run(": 5 ; @f SET : f YIELD ; !");
  EXPECT_NE(sp->programme->link, nullptr);
  EXPECT_EQ(checkhash(memory[0], "f")->meaning->programme->link, nullptr);
}

// The number of a round may be kept: the loop goes on with another block.
TEST_F(Programmes, IndicesThatAreKept) {
  run("(0) @all SET 5 MONADIC @last SET last all , @all SET ; LOOP all");
  ASSERT_EQ(sp->elements, 6U);
  EXPECT_EQ(sp->data_pointer[0].integer, 5);
  EXPECT_EQ(sp->data_pointer[4].integer, 1);
  run("CLEAR 3 @n SET 0 n DYADIC + ; LOOP n");
  EXPECT_EQ(sp->data_pointer->integer, 3);
  EXPECT_EQ(sp[-1].data_pointer->integer, 6);
}

// Points that no text makes end their level without a message, and yet no text ends with work in flight.
TEST_F(Programmes, UnusableSymbolsWaitForThePool) {
  const std::int64_t least = MIN_PARALLEL;
  processors = 4;
  MIN_PARALLEL = 4;
  startcoprocessors(workslice);
  for (const std::int32_t rank : {ranks::UNUSED, ranks::INVALID}) {
    for (const bool discarding : {false, true}) {
      Point programme[PROGRAMME_POINTS];
      char text[] = "(1 2 3 4 5 6 7 -1) FACTORIAL NOOP .\n";
      std::FILE *stream = fmemopen(text, sizeof text - 1, "r");
      fill(programme, variables[0], sp, stream, nullptr, SKIPPED);
      std::fclose(stream);
      dereferencepoint(programme + 2);
      programme[2] = {};
      programme[2].rank = rank;
      programme[2].type = ISVECTOR;
      pendingproblem = discarding ? 1 : 0;
      testing::internal::CaptureStdout();
      testing::internal::CaptureStderr();
      Point *const floor = &stack[0][1];
      sp = machine(programme, variables[0], floor, floor, sp, &memory[0], 0, 0);
      const std::string errors = testing::internal::GetCapturedStderr();
      testing::internal::GetCapturedStdout();
      EXPECT_EQ(resultinflight, nullptr);
      EXPECT_EQ(errors.substr(0, 5), "\n36 -");
      cleanup(programme);
      while (height() > 0) dereferencepoint(sp--);
    }
  }
  endcoprocessors();
  freereplies();
  processors = cpus = 1;
  MIN_PARALLEL = least;
}

}  // namespace
