// Keywords and comments to Points: what each row writes, the forms that change the Point before them.
#include <string>

#include "assembly.h"
#include "failure/jump.h"
#include "frontend/compiler.h"
#include "frontend/keywords.h"
#include "frontend/symtab.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace {

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
        case KeywordKind::MASK_FORM:
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
    if (row.kind == KeywordKind::BREAK || row.kind == KeywordKind::MASK_FORM) continue;
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

}  // namespace
