// Where texts end, and what a failure leaves of them.
#include <cstdio>
#include <cstring>
#include <string>

#include "assembly.h"
#include "failure/jump.h"
#include "frontend/assembly.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "frontend/symtab.h"
#include "frontend/tokens.h"

using namespace morvik;

namespace {

TEST_F(Assembly, ATextEndsWhereItSays) {
  EXPECT_EQ(compile("1 2 + . 3"), 4);
  expectend(programme[3]);
  EXPECT_EQ(rest, " 3");
  EXPECT_EQ(compile("1 END\n3"), 2);
  EXPECT_EQ(rest, "3");
  EXPECT_EQ(compile("1\n2 .\n\n3"), 3);
  EXPECT_EQ(rest, "\n3");
  EXPECT_EQ(compile("."), 1);
  expectend(programme[0]);
}

TEST_F(Assembly, ALineFeedEndsATextWhereItIsTold) {
  EXPECT_EQ(compile("1 2\n3 .", ENDS_TEXT), 3);
  EXPECT_EQ(rest, "3 .");
  EXPECT_EQ(compile("\n", ENDS_TEXT), 1);
  EXPECT_EQ(compile("'a\nb'\n", ENDS_TEXT), 2);
  EXPECT_EQ(programme[0].elements, 3u);
}

TEST_F(Assembly, ALineFeedIsAStepWhileInspecting) {
  stepping = 0;
  EXPECT_EQ(compile("1\n2 .", ENDS_STEP), 3);
  stepping = 1;
  EXPECT_EQ(compile("1\n2 .", ENDS_STEP), 3);
  expectoperator(programme[1], "", instructions::ENDPROCESS);
  EXPECT_EQ(rest, "2 .");
  EXPECT_EQ(compile("\n", ENDS_STEP), 2);
  expectoperator(programme[0], "", instructions::ENDPROCESS);
  // The end of the input leaves the same, and is told from it.
  EXPECT_FALSE(inputended());
  EXPECT_EQ(compile("1", ENDS_STEP), 3);
  expectoperator(programme[1], "", instructions::ENDPROCESS);
  EXPECT_TRUE(inputended());
  // RUN leaves the inspection, and its line feed still ends the line.
  EXPECT_EQ(compile("1 RUN 2\n3 .", ENDS_STEP), 3);
  EXPECT_EQ(stepping, 0);
  EXPECT_EQ(programme[1].data_pointer->integer, 2);
  EXPECT_EQ(rest, "3 .");
}

TEST_F(Assembly, TheEndOfTheInputEndsTheProcess) {
  EXPECT_EQ(compile("1 2"), 4);
  expectoperator(programme[2], "", instructions::ENDPROCESS);
  expectend(programme[3]);
  EXPECT_EQ(rest, "");
  EXPECT_EQ(compile(""), 2);
  EXPECT_EQ(compile("1 abc"), 4);
  EXPECT_STREQ(programme[1].name, "abc");
  EXPECT_EQ(compile("1 @abc"), 4);
  EXPECT_EQ(programme[1].rank, ranks::ADDRESS);
  EXPECT_EQ(compile("1 \2abc"), 4);
  EXPECT_STREQ(programme[1].name, "abc");
}

// What is open at the end is given up, and the next text begins afresh.
TEST_F(Assembly, TheEndOfTheInputInTheMiddle) {
  for (const char *text : {"1 'abc", "1 '", "1 (1 2 'a", "1 ((2) (3", "1 (1 2)[3", "1 'ab'[", "1 ((1)[2", "1 \"abc",
                           "1 : 2 3", "1 : .x : @%y &1", "1 VARS 2 MONADIC (1 'x", "1 WRAP ", "1 @", "1 `("}) {
    EXPECT_EQ(compile(text), 3) << text;
    EXPECT_EQ(programme[0].data_pointer->integer, 1) << text;
    expectoperator(programme[1], "", instructions::ENDPROCESS);
    EXPECT_EQ(compile("7 ."), 2) << text;
    EXPECT_EQ(programme[0].data_pointer->integer, 7) << text;
  }
}

TEST_F(Assembly, FromAStream) {
  std::FILE *stream = std::tmpfile();
  ASSERT_NE(stream, nullptr);
  std::fputs("1 2 + .\n'x' .y", stream);
  std::rewind(stream);
  EXPECT_EQ(fill(programme, chain, &below, stream, nullptr, SKIPPED), 4);
  cleanup(programme);
  EXPECT_EQ(fill(programme, chain, &below, stream, nullptr, SKIPPED), 4);  // .y is a name
  EXPECT_STREQ(programme[1].name, "y");
  cleanup(programme);
  EXPECT_EQ(fill(programme, chain, &below, stream, nullptr, SKIPPED), 2);
  std::fclose(stream);
}

// ---- The landing.

jmp_buf outerjump;

TEST_F(Assembly, TheOuterLandingIsPutBack) {
  std::memcpy(&outerjump, &error_jump, sizeof outerjump);
  compile("1 .");
  EXPECT_EQ(std::memcmp(&outerjump, &error_jump, sizeof outerjump), 0);
  compile(repeated("+ ", 2000) + ".");
  EXPECT_EQ(std::memcmp(&outerjump, &error_jump, sizeof outerjump), 0);
}

TEST_F(Assembly, TheStateOfATextDoesNotReachTheNext) {
  expectabandoned(": VARS 3 MONADIC .x (1 (2 `(1 (2)) ) ) .", 808);
  EXPECT_EQ(compiler.nextframe, 1);
  EXPECT_EQ(compiler.literallevel, 0u);
  EXPECT_EQ(compiler.chain, chain);
  EXPECT_EQ(compiler.condition, Condition::INITIAL);
  EXPECT_EQ(chain->next, nullptr);
}

#ifdef MORVIK_CHECKING
// Every allocation fails in turn: nothing is lost, the text is dropped and the next one compiles.
TEST_F(Assembly, EveryAllocationFailsInTurn) {
  const char *const texts[] = {
      "1 2.5 3i4 1j2 1o2 2p1 #PI 'abc' '' 'a' (1 2 (3 'x' ('yz' 1o2))) `((1 2))` #NIL .",
      "(1 2 3 4 (5 6)[2 1])[5 2] 'abcd'[2 2] (1 2)[] (0#101) .",
      ": x _y $z .w @.w @v \"comment\" %a @%a + // MIN ?Y : 1 ; ?Y SIN ROOT WRAP MASK ; .",
      "VARS 2 ARGS 3 FUNCTION &1 @&2 : .a : .b ; ; ; @f SET .",
      "\2a name\3 @\2b\3 aplainname @another :: + \"a comment that is longer than most\" .",
      ": 1 : .x : 3 .",
      "'unfinished (",
  };
  for (const char *text : texts) {
    for (std::int64_t successes = 0;; ++successes) {
      // Names that a text enters stay: each round has its own table.
      cleanup(programme);
      releasetable(table);
      release(chain);
      table = makehashtab();
      chain = makemeaning(table);
      const std::string whole = std::string(text) + " 42 .";
      const char *position = whole.c_str();
      testing::internal::CaptureStderr();
      testing::internal::CaptureStdout();
      failallocation(successes);
      const std::int64_t written = fill(programme, chain, &below, nullptr, &position, SKIPPED);
      failallocation(-1);
      testing::internal::GetCapturedStdout();
      const std::string report = testing::internal::GetCapturedStderr();
      pendingproblem = 0;
      ASSERT_EQ(compiler.nextframe, 1) << text << successes;
      if (report.find("\n27 - ") == std::string::npos) {
        ASSERT_NE(written, 0) << text;
        break;
      }
      ASSERT_EQ(written, 0) << text << successes;
      ASSERT_TRUE(isend(programme[0])) << text << successes;
      ASSERT_EQ(compiler.chain, chain) << text << successes;
      if (*position == 0) continue;
      ASSERT_STREQ(position, " 42 .") << text << successes;
      ASSERT_EQ(fill(programme, chain, &below, nullptr, &position, SKIPPED), 2) << text << successes;
    }
  }
}
#endif

}  // namespace
