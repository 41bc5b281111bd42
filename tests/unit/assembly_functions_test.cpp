// Functions: their forms, their bodies, what ends them.
#include <string>

#include "assembly.h"
#include "frontend/compiler.h"
#include "frontend/limits.h"

using namespace morvik;

namespace {

TEST_F(Assembly, AFunction) {
  const Point &f = function(": 1 2 + ;");
  EXPECT_EQ(f.type, ISFUNCTION);
  EXPECT_STREQ(f.name, ":");
  EXPECT_EQ(f.arguments, -1);
  EXPECT_EQ(f.locals, 0);
  EXPECT_EQ(f.elements, 5u);
  EXPECT_EQ(f.link, nullptr);
  const Point &header = f.programme[0];
  EXPECT_EQ(header.rank, ranks::FUNCTION);
  EXPECT_EQ(header.programme, f.programme);
  EXPECT_EQ(header.elements, 4u);
  EXPECT_EQ(header.link, nullptr);
  EXPECT_EQ(body(f, 0).data_pointer->integer, 1);
  EXPECT_EQ(body(f, 2).instruction, instructions::ADD);
  expectoperator(body(f, 3), ";", instructions::FUNCTIONEND);
  expectend(body(f, 4));
  EXPECT_EQ(referencecount(f.programme), 1);
}

TEST_F(Assembly, FunctionForms) {
  struct {
    const char *text;
    int arguments, locals;
  } const cases[] = {{":", -1, 0},
                     {"NEADIC", -1, 0},
                     {"FUNCTION", -1, 0},
                     {"NILADIC", 0, 0},
                     {"MONADIC", 1, 0},
                     {"DYADIC", 2, 0},
                     {"TRIADIC", 3, 0},
                     {"ARGS 3 FUNCTION", 3, 0},
                     {"ARGS\t3\n FUNCTION", 3, 0},
                     {"ARGS3 FUNCTION", 0, 0},
                     {"ARGS-3 FUNCTION", 3, 0},
                     {"ARGS -3 FUNCTION", -3, 0},
                     {"ARGS 12FUNCTION", 12, 0},
                     {"ARGS 99999999999999999999 FUNCTION", 32767, 0},
                     {"VARS 2 NILADIC", 0, 2},
                     {"VARS 2 MONADIC", 1, 2},
                     {"VARS 2 DYADIC", 2, 2},
                     {"VARS 2 TRIADIC", 3, 2},
                     {"VARS-2 TRIADIC", 3, 2},
                     {"VARS -2 TRIADIC", 3, 0},
                     {"VARS 70000 MONADIC", 1, 65535},
                     {"ARGS 4 VARS 5 FUNCTION", 4, 5},
                     {"ARGS 4VARS 5FUNCTION", 4, 5},
                     {"VARS 5 ARGS 4 FUNCTION", 4, 5}};
  for (const auto &c : cases) {
    const Point &f = function(std::string(c.text) + " ;");
    EXPECT_EQ(f.arguments, c.arguments) << c.text;
    EXPECT_EQ(f.locals, c.locals) << c.text;
    EXPECT_STREQ(f.name, c.text);
    EXPECT_EQ(f.programme->arguments, c.arguments) << c.text;
    EXPECT_EQ(f.programme->locals, c.locals) << c.text;
    EXPECT_EQ(err, "") << c.text;
  }
}

TEST_F(Assembly, ANeadicFunctionHasNoLocals) {
  const Point &f = function("VARS 2 NEADIC &1 ;");
  EXPECT_EQ(f.arguments, -1);
  EXPECT_EQ(f.locals, 0);
  EXPECT_EQ(f.elements, 2u);
  EXPECT_EQ(err.find("Warning, a NEADIC can not have local VARS!"), 0u);
  EXPECT_TRUE(reported(151));
}

TEST_F(Assembly, FunctionsInFunctions) {
  const Point &f = function("VARS 1 MONADIC &1 VARS 2 DYADIC &2 ; &1 FUNCTIONEND");
  EXPECT_EQ(err, "");
  EXPECT_EQ(f.elements, 5u);
  const Point &inner = body(f, 1);
  EXPECT_EQ(inner.arguments, 2);
  EXPECT_EQ(inner.elements, 3u);
  EXPECT_EQ(inner.programme->programme, inner.programme);
  EXPECT_STREQ(body(f, 3).name, "FUNCTIONEND");
  compile("VARS 1 MONADIC VARS 2 DYADIC ; &2 ; .");
  EXPECT_TRUE(reported(152));
}

TEST_F(Assembly, NoFunctionToClose) {
  EXPECT_EQ(compile("1 ; 2 ."), 3);
  EXPECT_EQ(err, "[Trelk] error: No FUNCTION pending!\n");
}

TEST_F(Assembly, AForcedFinish) {
  for (const char *end : {".", ".\n", "END "}) {
    EXPECT_EQ(compile(std::string("7 : 1 2 + ") + end), 3);
    EXPECT_EQ(err, "\nFUNCTION definition pending, the FUNCTION is forcibly finished.\n");
    const Point &f = programme[1];
    EXPECT_EQ(f.elements, 5u);
    EXPECT_EQ(body(f, 3).instruction, instructions::FUNCTIONEND);
    EXPECT_STREQ(body(f, 3).name, end[0] == '.' ? "." : "END");
    expectend(programme[2]);
  }
  EXPECT_EQ(compile(": 1\n", ENDS_TEXT), 2);
  EXPECT_STREQ(body(programme[0], 1).name, ".");
}

// One level is closed; the others end where they are, without a FUNCTIONEND.
TEST_F(Assembly, AForcedFinishClosesOneFunction) {
  EXPECT_EQ(compile("7 : 1 .x : 2 : 3 @.y ."), 3);
  const Point &outer = programme[1];
  ASSERT_EQ(outer.rank, ranks::FUNCTION);
  EXPECT_EQ(outer.elements, 4u);
  const Point &middle = body(outer, 2);
  ASSERT_EQ(middle.rank, ranks::FUNCTION);
  expectend(body(outer, 3));
  EXPECT_EQ(middle.elements, 3u);
  const Point &inner = body(middle, 1);
  expectend(body(middle, 2));
  EXPECT_EQ(inner.elements, 4u);
  EXPECT_EQ(body(inner, 2).instruction, instructions::FUNCTIONEND);
  EXPECT_EQ(err, "\nFUNCTION definition pending, the FUNCTION is forcibly finished.\n");
}

TEST_F(Assembly, LongBodies) {
  for (const std::size_t count : {1000u, 1026u, 5000u, 40000u}) {
    const Point &f = function(": " + repeated("+ 1 ", count / 2) + ";");
    ASSERT_EQ(f.elements, count + 2);
    for (std::size_t i = 0; i < count; i += 2) ASSERT_EQ(body(f, i).instruction, instructions::ADD) << i;
    EXPECT_EQ(body(f, count).instruction, instructions::FUNCTIONEND);
    expectend(body(f, count + 1));
    EXPECT_EQ(f.programme->programme, f.programme);
  }
}

// Outer bodies that grew keep what is in them while inner ones grow.
TEST_F(Assembly, LongBodiesInEachOther) {
  const std::string filling = repeated("+ ", 100);
  const Point &f =
      function(": " + filling + "MONADIC " + filling + ": " + filling + "; " + filling + "; " + filling + ";");
  EXPECT_EQ(f.elements, 203u);
  EXPECT_EQ(body(f, 100).elements, 203u);
  EXPECT_EQ(body(body(f, 100), 100).elements, 102u);
  EXPECT_EQ(body(body(f, 100), 200).instruction, instructions::ADD);
}

TEST_F(Assembly, AFullBody) {
  // With its FUNCTIONEND and its END.
  const Point &f = function(": " + repeated("+ ", BODY_POINTS - 2) + ";");
  EXPECT_EQ(f.elements, BODY_POINTS);
  expectabandoned(": " + repeated("+ ", BODY_POINTS - 1) + "; .", 807);
  expectabandoned(": " + repeated("1 'a b' ", BODY_POINTS) + "(1 . 2) \" . \" ; .", 807);
}

TEST_F(Assembly, AFullProgramme) {
  EXPECT_EQ(compile(repeated("+ ", PROGRAMME_POINTS - 1) + "."), static_cast<std::int64_t>(PROGRAMME_POINTS));
  expectend(programme[PROGRAMME_POINTS - 1]);
  expectabandoned(repeated("+ ", PROGRAMME_POINTS) + ".", 807);
  expectabandoned(repeated("1 ", PROGRAMME_POINTS + 500) + "'a . b' @x SET .", 807);
  EXPECT_EQ(entry("x"), nullptr);
}

TEST_F(Assembly, FunctionsAsDeepAsThereAreFrames) {
  const std::size_t most = MOST_FRAMES - 1;  // frame 0 is the text's own
  function(repeated(":", most) + repeated(";", most));
  expectabandoned(repeated(": ", most + 1) + "1 .x " + repeated(";", most + 1) + " .", 807);
  expectabandoned(repeated(":.x ", most) + "('a' (1 2)) " + repeated(";", most) + " .", 807);
}

// What is dropped is read by the same rules, so that its end is found where it is.
TEST_F(Assembly, TheRestOfAnAbandonedText) {
  const std::string full = repeated("+ ", PROGRAMME_POINTS);
  for (const char *tail :
       {"'a.b' .", "\" . \" .", "( '.' (1 2)[3 4] ' . '[2] ) .", ": 1 ; .", "\2 . \3 .", "@\2 . \3 .", "1.5 .", "abc.",
        "WRAP MASK .", "WRAP .", "x.y .", "`( 1 )`[2] .", "END", "\xBC . \" ."}) {
    const std::string text = full + tail + " 42 .";
    EXPECT_EQ(compile(text), 0) << tail;
    EXPECT_EQ(rest, " 42 .") << tail;
    EXPECT_EQ(compile(" 42 ."), 2) << tail;
  }
  EXPECT_EQ(compile(full + "1\n2 .", ENDS_TEXT), 0);
  EXPECT_EQ(rest, "2 .");
  EXPECT_EQ(compile(full + "'abc"), 0);
  EXPECT_EQ(compile("7 ."), 2);
}

}  // namespace
