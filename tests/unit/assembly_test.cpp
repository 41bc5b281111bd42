// Texts to Programmes: what each token writes, what functions are made of, where names go, and what a failure leaves.
#include <cstdio>
#include <string>
#include <vector>

#include "compiled.h"
#include "frontend/compiler.h"
#include "frontend/keywords.h"

namespace {

class Assembly : public Compiled {
 protected:
  Entry *entry(const char *name) { return checkhash(table, name); }

  // Compiles a text that is one function and its end.
  Point &function(const std::string &text) {
    EXPECT_EQ(compile(text + " ."), 2) << text << err;
    EXPECT_EQ(programme[0].rank, ranks::FUNCTION) << text;
    return programme[0];
  }

  static void expectend(const Point &p) {
    const Point zero = {};
    EXPECT_EQ(std::memcmp(&p, &zero, sizeof p), 0);
  }

  void expectoperator(const Point &p, const char *name, int instruction, int modifier = instructions::NIHIL) {
    EXPECT_EQ(p.rank, ranks::OPERATOR) << name;
    EXPECT_EQ(p.type, ISOPERATOR) << name;
    EXPECT_STREQ(p.name, name);
    EXPECT_EQ(p.instruction, instruction) << name;
    EXPECT_EQ(p.modifier, modifier) << name;
    EXPECT_EQ(p.elements, 0u) << name;
    EXPECT_EQ(p.link, nullptr) << name;
    EXPECT_EQ(p.block, nullptr) << name;
  }

  // A failing text writes nothing, and the text after it is whole.
  void expectabandoned(const std::string &text, int number) {
    const std::string whole = text + " 42 .";
    EXPECT_EQ(compile(whole), 0) << text.substr(0, 100);
    EXPECT_TRUE(reported(number)) << text.substr(0, 100) << err;
    EXPECT_TRUE(isend(programme[0]));
    EXPECT_EQ(rest, " 42 .") << text.substr(0, 100);
    ASSERT_EQ(compile(" 42 ."), 2);
    EXPECT_EQ(programme[0].data_pointer->integer, 42);
  }
};

std::string repeated(const std::string &word, std::size_t times) {
  std::string text;
  for (std::size_t i = 0; i < times; ++i) text += word;
  return text;
}

// ---- Ends of a text.

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

// ---- Keywords.

TEST_F(Assembly, EveryKeywordRow) {
  for (const Keyword &row : Keywords) {
    for (const char *spelling : row.spellings) {
      const std::string text = std::string(spelling) + " .";
      const int hidden = row.hidden.kind == Hidden::NOTHING ? 0 : 1;
      switch (row.kind) {
        case KeywordKind::PLAIN:
        case KeywordKind::MASK:
          ASSERT_EQ(compile(text), 2 + hidden) << spelling;
          expectoperator(programme[hidden], spelling, row.instruction, row.modifier);
          break;
        case KeywordKind::ROOT:
        case KeywordKind::YIELDTO:
          ASSERT_EQ(compile(text), 3) << spelling;
          expectoperator(programme[0], spelling, row.instruction);
          expectoperator(programme[1], "", row.kind == KeywordKind::ROOT ? instructions::POWER : instructions::RETURN);
          break;
        case KeywordKind::REWRITE:
          ASSERT_EQ(compile("+ " + text), 2) << spelling;
          expectoperator(programme[0], ("+ " + std::string(spelling)).c_str(), row.instruction, instructions::ADD);
          break;
        case KeywordKind::DECISION:
          ASSERT_EQ(compile("+ " + text), 2) << spelling;
          EXPECT_EQ(programme[0].instruction, row.instruction);
          EXPECT_EQ(programme[0].modifier, instructions::ADD);
          break;
        case KeywordKind::MASKFORM:
          ASSERT_EQ(compile(std::string(spelling) + " MASK ."), 2) << spelling;
          expectoperator(programme[0], "MASK", instructions::MASK);
          break;
        case KeywordKind::RUN:
          stepping = 0;
          ASSERT_EQ(compile(text), 2) << spelling;
          expectoperator(programme[0], spelling, instructions::RUN);
          break;
        case KeywordKind::BREAK:
          ASSERT_EQ(compile(text), 0) << spelling;
          break;
      }
    }
  }
}

TEST_F(Assembly, EveryKeywordMarksItsFunction) {
  for (const Keyword &row : Keywords) {
    if (row.kind == KeywordKind::BREAK || row.kind == KeywordKind::MASKFORM) continue;
    for (const char *spelling : row.spellings) {
      const std::string before = row.kind == KeywordKind::REWRITE || row.kind == KeywordKind::DECISION ? "+ " : "";
      const Point &f = function(": : 1 ; " + before + spelling + " ;");
      EXPECT_EQ(f.type, ISFUNCTION | row.mark) << spelling;
      EXPECT_EQ(f.programme->type, f.type) << spelling;
      EXPECT_EQ(body(f, 0).type, ISFUNCTION) << spelling;
    }
  }
}

// Any spelling can be bound as a name; then it is a variable, and :: leads to the instruction.
TEST_F(Assembly, EveryKeywordGivesWayToAName) {
  for (const Keyword &row : Keywords) {
    for (const char *spelling : row.spellings) {
      bind(spelling, 5);
      const Entry *bound = entry(spelling);
      ASSERT_EQ(compile(std::string("1 ") + spelling + " ."), 3) << spelling << err;
      const Point &p = programme[1];
      EXPECT_EQ(p.rank, ranks::VARIABLE) << spelling;
      EXPECT_EQ(p.type, ISVARIABLE | ISOPERATOR) << spelling;
      EXPECT_EQ(p.name, bound->name);
      EXPECT_EQ(p.target, bound->meaning);
      EXPECT_EQ(p.context, chain);
      EXPECT_EQ(p.depth, 1);
      EXPECT_EQ(p.elements, std::strlen(spelling));
      if (row.kind == KeywordKind::PLAIN) {
        const int hidden = row.hidden.kind == Hidden::NOTHING ? 0 : 1;
        ASSERT_EQ(compile(std::string(":: ") + spelling + " ."), 2 + hidden) << spelling;
        EXPECT_EQ(programme[hidden].instruction, row.instruction) << spelling;
      }
      cleanup(programme);
      forgethash(entry(spelling));
    }
  }
}

TEST_F(Assembly, BuiltinReachesOneKeyword) {
  bind("+", 5);
  EXPECT_EQ(compile(":: + + ."), 3);
  EXPECT_EQ(programme[0].rank, ranks::OPERATOR);
  EXPECT_EQ(programme[1].rank, ranks::VARIABLE);
  EXPECT_EQ(compile(":: 1 + + ."), 4);
  EXPECT_EQ(programme[1].rank, ranks::OPERATOR);
  EXPECT_EQ(programme[2].rank, ranks::VARIABLE);
  bind("//", 5);
  EXPECT_EQ(compile("MIN :: // // ."), 3);
  expectoperator(programme[0], "MIN //", instructions::REDUCE, instructions::MINIMUM);
  EXPECT_EQ(programme[1].rank, ranks::VARIABLE);
}

// An entry counts as a meaning, with a value or not.
TEST_F(Assembly, ANameWithoutAValueTakesTheKeyword) {
  EXPECT_EQ(compile("@SIN SIN ."), 3);
  EXPECT_EQ(programme[1].rank, ranks::VARIABLE);
}

TEST_F(Assembly, HiddenConstants) {
  struct {
    const char *spelling;
    double value;
    int instruction;
  } const cases[] = {{"SIN", 1, 131},     {"COS", 2, 131},       {"TAN", 3, 131},    {"ASIN", -1, 131},
                     {"ARCCOS", -2, 131}, {"ATAN", -3, 131},     {"SINH", 5, 131},   {"COSH", 6, 131},
                     {"TANH", 7, 131},    {"ASINH", -5, 131},    {"ACOSH", -6, 131}, {"ATANH", -7, 131},
                     {"SQR", 2, 129},     {"SQUARE", 2, 129},    {"CBR", 3, 129},    {"CUBE", 3, 129},
                     {"SQRT", 0.5, 129},  {"CBRT", 1.0 / 3, 129}};
  for (const auto &c : cases) {
    ASSERT_EQ(compile(std::string(c.spelling) + " ."), 3) << c.spelling;
    const Point &p = programme[0];
    const Element &e = *p.data_pointer;
    EXPECT_EQ(e.attributes, attributes::SILENT);
    EXPECT_EQ(e.form, forms::NAMED);
    EXPECT_EQ(p.rank, 0);
    if (c.instruction == 131) {
      EXPECT_EQ(p.type, 0x10400u) << c.spelling;
      EXPECT_EQ(e.integer, static_cast<std::int64_t>(c.value)) << c.spelling;
    } else {
      EXPECT_EQ(p.type, 0x10800u) << c.spelling;
      EXPECT_EQ(e.real, c.value) << c.spelling;
    }
    EXPECT_EQ(programme[1].instruction, c.instruction) << c.spelling;
  }
}

TEST_F(Assembly, OperatorForms) {
  EXPECT_EQ(compile("(1 2) + // MIN \\\\ ."), 4);
  expectoperator(programme[1], "+ //", instructions::REDUCE, instructions::ADD);
  expectoperator(programme[2], "MIN \\\\", instructions::SCAN, instructions::MINIMUM);
}

TEST_F(Assembly, OperatorFormsWantAnOperator) {
  for (const char *text : {"// 1 .", "1 // .", ": // ; .", "x SCAN ."}) {
    EXPECT_NE(compile(text), 0) << text;
    EXPECT_TRUE(reported(79)) << text;
  }
  EXPECT_EQ(compile("1 \xB0.\xAB 2 ."), 3);
  EXPECT_TRUE(reported(74));
  EXPECT_NE(err.find("Instruction:\n 1"), std::string::npos);
}

TEST_F(Assembly, ConditionalForms) {
  EXPECT_EQ(compile(": 1 ; ?Y OUTPUT ?N (1 2) IF_YES x ?N ."), 6);
  EXPECT_EQ(programme[0].type, ISFUNCTION);
  EXPECT_EQ(programme[1].rank, ranks::OPERATOR);
  EXPECT_EQ(programme[1].type, ISFUNCTION | CONDITIONAL | YES);
  EXPECT_EQ(programme[1].instruction, instructions::IF_YES);
  EXPECT_EQ(programme[1].modifier, instructions::BARE);
  EXPECT_STREQ(programme[1].name, "?Y");
  EXPECT_EQ(programme[2].type, ISOPERATOR | CONDITIONAL);
  EXPECT_EQ(programme[2].instruction, instructions::IF_NO);
  EXPECT_EQ(programme[2].modifier, instructions::OUTPUT);
  EXPECT_EQ(programme[2].elements, instructions::PRINT);
  EXPECT_STREQ(programme[2].name, "OUTPUT ?N");
  EXPECT_EQ(programme[3].type, ISVECTOR | HASINTEGER | CONDITIONAL | YES);
  EXPECT_EQ(programme[4].type, ISVARIABLE | ISOPERATOR | CONDITIONAL);
  EXPECT_EQ(compile("?Y ."), 1);
}

TEST_F(Assembly, MaskForms) {
  EXPECT_EQ(compile("WRAP MASK REFLECT\t STENCIL STENCIL ."), 4);
  expectoperator(programme[0], "MASK", instructions::MASK);
  expectoperator(programme[1], "MASK", instructions::MASK);
  expectoperator(programme[2], "STENCIL", instructions::MASK);
  EXPECT_EQ(compile("WRAP\nMASK ."), 2);
  EXPECT_EQ(out, "\n");
}

TEST_F(Assembly, MaskFormsWantMask) {
  EXPECT_EQ(compile("1 WRAP 2 REFLECT . 3 ."), 3);
  EXPECT_TRUE(reported(982));
  EXPECT_EQ(programme[1].data_pointer->integer, 2);
  EXPECT_EQ(rest, " 3 .");
}

TEST_F(Assembly, RunEndsAnInspection) {
  stepping = 1;
  EXPECT_EQ(compile("1 RUN 2 ."), 3);
  EXPECT_EQ(stepping, 0);
  bind("RUN", 1);
  stepping = 1;
  EXPECT_EQ(compile("RUN ."), 2);
  EXPECT_EQ(programme[0].rank, ranks::VARIABLE);
  EXPECT_EQ(stepping, 1);
  EXPECT_EQ(compile(":: RUN ."), 1);
  EXPECT_EQ(stepping, 0);
}

TEST_F(Assembly, BreakDropsItsLine) {
  stepping = 1;
  EXPECT_EQ(compile("1 (2 3) : 4 BREAK 5 . 6\n7 ."), 0);
  EXPECT_EQ(stepping, 0);
  EXPECT_EQ(err, "");
  EXPECT_TRUE(isend(programme[0]));
  EXPECT_EQ(rest, "7 .");
  EXPECT_EQ(compile("BREAK\n7 ."), 0);
  EXPECT_EQ(rest, "7 .");
  EXPECT_EQ(compile("1 BREAK "), 0);
  EXPECT_EQ(rest, "");
  bind("BREAK", 1);
  EXPECT_EQ(compile("BREAK ."), 2);
  EXPECT_EQ(programme[0].rank, ranks::VARIABLE);
}

TEST_F(Assembly, Comments) {
  EXPECT_EQ(compile("1 \"a . 'b\n;\" 2 \xBC\" ."), 0 + 5);
  expectoperator(programme[1], "a . 'b\n;", instructions::NOOP, instructions::CONTEXT);
  expectoperator(programme[3], "", instructions::NOOP, instructions::CONTEXT);
  const std::string text(1000000, 'c');
  EXPECT_EQ(compile("\"" + text + "\" 1 ."), 3);
  EXPECT_EQ(programme[0].name, text);
}

TEST_F(Assembly, ACommentSignCanBeAName) {
  bind("\"", 3);
  EXPECT_EQ(compile("\" 1 \xBC c\" :: \" x\" ."), 5);
  EXPECT_EQ(programme[0].rank, ranks::VARIABLE);
  EXPECT_EQ(programme[0].type, ISVARIABLE | ISOPERATOR);
  EXPECT_STREQ(programme[2].name, " c");
  EXPECT_STREQ(programme[3].name, " x");
}

// ---- Functions.

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
  EXPECT_EQ(refr(f.programme), 1);
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

// One level is closed; the others end where they stand, without a FUNCTIONEND.
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

// Outer bodies that grew keep what stands in them while inner ones grow.
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
  const std::size_t most = FRAMES - 1;  // frame 0 is the text's own
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

// ---- Names.

TEST_F(Assembly, PlainNames) {
  ASSERT_EQ(compile("x @x a+b ."), 4);
  const Entry *x = entry("x");
  ASSERT_NE(x, nullptr);
  const Point &p = programme[0];
  EXPECT_EQ(p.rank, ranks::VARIABLE);
  EXPECT_EQ(p.type, ISVARIABLE | ISOPERATOR);
  EXPECT_EQ(p.modifier, instructions::SGIG);
  EXPECT_EQ(p.elements, 1u);
  EXPECT_EQ(p.name, x->name);
  EXPECT_EQ(p.target, x->meaning);
  EXPECT_EQ(p.context, chain);
  const Point &address = programme[1];
  EXPECT_EQ(address.rank, ranks::ADDRESS);
  EXPECT_EQ(address.type, ISADDRESS | ISOPERATOR);
  EXPECT_EQ(address.modifier, instructions::SGIG);
  EXPECT_EQ(address.target, x->meaning);
  EXPECT_EQ(refr(x->meaning), 3);
  EXPECT_EQ(refr(x->name), 3);
  EXPECT_EQ(programme[2].elements, 3u);
  EXPECT_EQ(x->sigil, 0);
}

TEST_F(Assembly, NamesBetweenBrackets) {
  ASSERT_EQ(compile("\2a . b\n\3 @\2\"\3 _\2x y\3 @$\2z;\3 .\2 \3 ."), 6);
  EXPECT_STREQ(programme[0].name, "a . b\n");
  EXPECT_EQ(programme[1].rank, ranks::ADDRESS);
  EXPECT_STREQ(programme[1].name, "\"");
  EXPECT_EQ(programme[2].modifier, instructions::SAIG);
  EXPECT_STREQ(programme[2].name, "x y");
  EXPECT_EQ(programme[3].modifier, instructions::SAIL);
  EXPECT_STREQ(programme[3].name, "z;");
  EXPECT_EQ(programme[4].modifier, instructions::SLIL);
  EXPECT_STREQ(programme[4].name, " ");
  EXPECT_EQ(compile("1 \2\3 2 ."), 3);
}

TEST_F(Assembly, AMegabyteOfAName) {
  const std::string name(1000003, 'n');
  ASSERT_EQ(compile("@" + name + " \2" + name + "\3 ."), 3);
  EXPECT_EQ(programme[0].elements, name.size());
  EXPECT_EQ(programme[0].name, programme[1].name);
  EXPECT_EQ(programme[0].name, name);
}

TEST_F(Assembly, SigilsOutsideFunctions) {
  bind("known", 1);
  ASSERT_EQ(compile("_known $known .known @_known @$known @.known _x $x .y ."), 10);
  const int scopes[] = {instructions::SAIG, instructions::SAIL, instructions::SLIL};
  for (int i = 0; i < 9; ++i) {
    const Point &p = programme[i];
    const bool address = i >= 3 && i < 6;
    EXPECT_EQ(p.rank, address ? ranks::ADDRESS : ranks::VARIABLE) << i;
    EXPECT_EQ(p.type, address ? ISADDRESS : ISVARIABLE) << i;
    EXPECT_EQ(p.modifier, scopes[i % 3]) << i;
    EXPECT_EQ(p.context, chain) << i;
    EXPECT_STREQ(p.name, i < 6 ? "known" : i < 8 ? "x" : "y");
    // Only a dot looks anything up.
    EXPECT_EQ(p.target, i % 3 == 2 ? entry(p.name)->meaning : nullptr) << i;
  }
  EXPECT_EQ(entry("x"), nullptr);
  EXPECT_EQ(entry("y")->sigil, '.');
}

TEST_F(Assembly, DotNamesInAFunctionOpenATableOfItsOwn) {
  const Point &f = function(": x .x @.x y ;");
  EXPECT_NE(entry("x"), nullptr);
  const Point &end = body(f, 4);
  Entry *own = localnames(end);
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->kind, SMALL_TABLE);
  const Entry *local = checksmallhash(own, "x");
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(body(f, 1).target, local->meaning);
  EXPECT_EQ(body(f, 2).target, local->meaning);
  EXPECT_EQ(body(f, 0).target, entry("x")->meaning);
  // A plain name goes to the root table from anywhere.
  EXPECT_EQ(body(f, 3).target, entry("y")->meaning);
  EXPECT_EQ(body(f, 0).context, chain);
  EXPECT_NE(body(f, 1).context, chain);
  EXPECT_EQ(chain->next, nullptr);
}

TEST_F(Assembly, AFunctionWithoutLocalNamesHasNoTable) {
  EXPECT_EQ(localnames(body(function(": x _y 1 ;"), 3)), nullptr);
}

TEST_F(Assembly, InnerFunctionsHaveTheirOwnTable) {
  const Point &f = function(": .a : .b $a ; .c ;");
  Entry *outer = localnames(body(f, 3)), *inner = localnames(body(body(f, 1), 2));
  ASSERT_NE(outer, nullptr);
  ASSERT_NE(inner, nullptr);
  EXPECT_NE(checksmallhash(outer, "c"), nullptr);
  EXPECT_EQ(checksmallhash(outer, "b"), nullptr);
  EXPECT_NE(checksmallhash(inner, "b"), nullptr);
  // $a is found along the chain.
  EXPECT_EQ(body(body(f, 1), 1).target, checksmallhash(outer, "a")->meaning);
}

TEST_F(Assembly, SigilsInFunctions) {
  bind("known", 1);
  const Point &f = function(": _known $known @_known @$known ;");
  EXPECT_EQ(f.type, ISFUNCTION);
  EXPECT_EQ(body(f, 0).target, nullptr);
  EXPECT_EQ(body(f, 1).target, entry("known")->meaning);
  EXPECT_EQ(body(f, 2).target, nullptr);
  EXPECT_EQ(localnames(body(f, 4)), nullptr);
  const Point &global = function(": _new ;");
  EXPECT_EQ(global.type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(localnames(body(global, 1)), nullptr);
  const Point &local = function(": @$new ;");
  EXPECT_EQ(local.type, ISFUNCTION | GLOBAL);
  ASSERT_NE(localnames(body(local, 1)), nullptr);
  EXPECT_EQ(checksmallhash(localnames(body(local, 1)), "new"), nullptr);
  EXPECT_EQ(function(": x ;").type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(function(": @x ;").type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(function(": .x ;").type, ISFUNCTION);
  EXPECT_EQ(function(": 1 @y SET ;").type, ISFUNCTION | GLOBAL | GLOBALCHANGE);
}

TEST_F(Assembly, TooManyNames) {
  for (const char *word : {"_x ", "$x ", "@x ", "@_x ", "@$x "}) {
    function(": " + repeated(word, 512) + ";");
    expectabandoned(": " + repeated(word, 513) + "; .", 808);
  }
  function("VARS 1 NILADIC " + repeated("@&1 ", 512) + ";");
  expectabandoned("VARS 1 NILADIC " + repeated("@&1 ", 513) + "; .", 808);
  // It counts by the text, and outside a function not at all.
  expectabandoned(": " + repeated("_x ", 512) + "; : _x ; .", 808);
  EXPECT_EQ(compile(repeated("_x @x ", 400) + "."), 801);
  function(": " + repeated("x .x &1 ", 600) + ";");
}

TEST_F(Assembly, Labels) {
  const Point &f = function(": 1 @%b %a 2 %b @%a ;");
  Entry *own = localnames(body(f, 6));
  ASSERT_NE(own, nullptr);
  const Entry *a = checksmallhash(own, "%a"), *b = checksmallhash(own, "%b");
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(a->sigil, '%');
  // The number, counted from 1, of the Point after the label.
  EXPECT_EQ(a->meaning->type, 0x10400u);
  EXPECT_EQ(a->meaning->data_pointer->integer, 4);
  EXPECT_EQ(b->meaning->data_pointer->integer, 6);
  const Point &label = body(f, 1);
  EXPECT_EQ(label.rank, ranks::LABEL);
  EXPECT_EQ(label.type, ISADDRESS);
  EXPECT_EQ(label.depth, 1);
  EXPECT_STREQ(label.name, "%b");
  EXPECT_EQ(label.target, b->meaning);
  EXPECT_EQ(label.link, nullptr);
  const Point &place = body(f, 2);
  EXPECT_EQ(place.rank, ranks::OPERATOR);
  EXPECT_EQ(place.instruction, instructions::NOOP);
  EXPECT_EQ(place.modifier, 0);
  EXPECT_STREQ(place.name, "%a");
  EXPECT_EQ(place.elements, 2u);
  EXPECT_EQ(place.link, nullptr);
  EXPECT_EQ(place.target, a->meaning);
}

TEST_F(Assembly, ALabelCanMove) {
  EXPECT_EQ(compile("%a 1 %a ."), 4);
  EXPECT_EQ(entry("%a")->meaning->data_pointer->integer, 4);
  EXPECT_EQ(entry("a"), nullptr);
}

TEST_F(Assembly, Locals) {
  const Point &f = function("VARS 3 MONADIC &1 @&3 ;");
  const Point &variable = body(f, 0), &address = body(f, 1);
  EXPECT_EQ(variable.rank, ranks::LOCALVARIABLE);
  EXPECT_EQ(variable.type, ISVARIABLE | ISLOCAL);
  EXPECT_EQ(variable.elements, 1u);
  EXPECT_EQ(variable.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(variable.data_pointer->integer, 0);
  EXPECT_EQ(address.rank, ranks::LOCALADDRESS);
  EXPECT_EQ(address.type, ISADDRESS | ISLOCAL);
  EXPECT_EQ(address.data_pointer->integer, 2);
}

TEST_F(Assembly, LocalsThatAreNone) {
  struct {
    const char *text;
    int number;
  } const cases[] = {{"&1 @&1 .", 151},
                     {"&0 .", 151},
                     {"MONADIC &1 ; .", 151},
                     {"VARS 2 MONADIC &0 ; .", 150},
                     {"VARS 2 MONADIC @&-1 ; .", 150},
                     {"VARS 2 MONADIC &3 ; .", 152},
                     {"VARS 2 MONADIC &99999999999999999999 ; .", 152}};
  for (const auto &c : cases) {
    EXPECT_NE(compile(c.text), 0) << c.text;
    EXPECT_TRUE(reported(c.number)) << c.text;
  }
  EXPECT_EQ(compile("1 &1 2 ."), 3);
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
  EXPECT_EQ(compiler.pcsp, 1);
  EXPECT_EQ(compiler.subvector, 0u);
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
      A_Problem = 0;
      ASSERT_EQ(compiler.pcsp, 1) << text << successes;
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
