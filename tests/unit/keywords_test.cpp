// The vocabulary: each spelling of the two tables is the token that its row says, and is none where its boundary fails.
#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "frontend/constants.h"
#include "frontend/keywords.h"
#include "frontend/tokens.h"
#include "frontend/window.h"
#include "spaces/instructions.h"
#include "spaces/point.h"
#include "unit/lists.h"
#include "unit/scan_tokens.h"

using namespace morvik;

namespace {

struct First {
  Rule rule;
  std::size_t row;
  std::string text;
  int next;  // the byte read after it
};

First lowestplace(const std::string &text, Condition condition = Condition::INITIAL) {
  scanfrom(nullptr, text.c_str());
  const Token token = scan(condition);
  First first = {token.rule, token.row, std::string(token.text, token.length), input()};
  scandone();
  return first;
}

const Keyword *keyword(const std::string &spelling) {
  const First first = lowestplace(spelling + " ");
  return first.rule == Rule::KEYWORD && first.text == spelling ? &Keywords[first.row] : nullptr;
}

// Any byte that may follow a word, and goes on with no other word.
constexpr const char BOUNDARIES[] = " \t\r\n({;'@$&\x01\x02\x03\x80\xAE\xFF";

}  // namespace

TEST(Keywords, EverySpellingYieldsItsRow) {
  for (std::size_t row = 0; row < Keywords.size(); ++row)
    for (const std::string spelling : Keywords[row].spellings)
      for (const char *boundary = BOUNDARIES; *boundary; ++boundary) {
        const First first = lowestplace(spelling + *boundary);
        EXPECT_EQ(first.rule, Rule::KEYWORD) << spelling << *boundary;
        EXPECT_EQ(first.row, row) << spelling << *boundary;
        EXPECT_EQ(first.text, spelling);
        EXPECT_EQ(first.next, static_cast<unsigned char>(*boundary)) << spelling << ": the boundary byte is given back";
      }
}

TEST(Keywords, ABoundedSpellingIsNoneWithoutABoundary) {
  for (std::size_t row = 0; row < Keywords.size(); ++row)
    for (const std::string spelling : Keywords[row].spellings)
      for (const std::string next : {"", "x", "Q", "7", "_"}) {
        if (spelling == "-" && next == "7") continue;  // a number
        const First first = lowestplace(spelling + next);
        const bool itself = first.rule == Rule::KEYWORD && first.row == row && first.text == spelling;
        EXPECT_EQ(itself, !Keywords[row].bounded) << spelling << next;
      }
}

TEST(Keywords, TheFreeOnesAreComplete) {
  std::set<std::string> freewords;
  for (const Keyword &row : Keywords)
    for (const std::string spelling : row.spellings)
      if (!row.bounded) freewords.insert(spelling);
  EXPECT_EQ(freewords,
            (std::set<std::string>{"+", "-", "*", "/", "|", "**", "^", "v", "!v", "!~^", "!~v", "RANDOMISE"}));
  EXPECT_EQ(tokensof("+x"), (Tokens{"KEYWORD +", "NAMESTART x"}));
}

TEST(Keywords, NoSpellingIsThereTwice) {
  std::map<std::string, std::size_t> rows;
  for (std::size_t row = 0; row < Keywords.size(); ++row)
    for (const char *spelling : Keywords[row].spellings)
      EXPECT_TRUE(rows.emplace(spelling, row).second) << spelling << " in rows " << rows[spelling] << " and " << row;
}

std::string hiddenconstant(const Hidden &hidden) {
  char text[64] = "";
  if (hidden.kind == Hidden::INTEGER) std::snprintf(text, sizeof text, ", pushes %d", int(hidden.value));
  if (hidden.kind == Hidden::REAL) std::snprintf(text, sizeof text, ", pushes %.17g as a real", hidden.value);
  return text;
}

TEST(Keywords, WhatEachSpellingMeans) {
  const std::map<std::uint32_t, std::string> marks = {{0, ""},
                                                      {INOUT, ", marks INOUT"},
                                                      {GLOBAL, ", marks GLOBAL"},
                                                      {GLOBALCHANGE, ", marks GLOBALCHANGE"},
                                                      {ISPROBABLE, ", marks ISPROBABLE"}};
  std::map<std::string, std::string> meanings;  // by rising bytes
  for (const Keyword &row : Keywords)
    for (const std::string spelling : row.spellings)
      meanings[spelling] = Instructions[row.instruction] +
                           (row.modifier == 0 ? "" : std::string(" by ") + Instructions[row.modifier]) +
                           marks.at(row.mark) + hiddenconstant(row.hidden);
  lists::Lines lines;
  for (const auto &[spelling, meaning] : meanings) lines.push_back(lists::escaped(spelling) + ": " + meaning);
  lists::expectlist("keywords", lines);
}

TEST(Keywords, SynonymsWithAModifierOfTheirOwn) {
  using namespace instructions;
  EXPECT_EQ(keyword("OPEN")->modifier, 0);
  EXPECT_EQ(keyword("MSBOPEN")->modifier, 0);
  EXPECT_EQ(keyword("LSBOPEN")->modifier, SMALL);
  EXPECT_EQ(keyword("LSBOPEN")->instruction, OPEN);
  EXPECT_EQ(keyword("FORMTEXT")->instruction, DISASSEMBLE);
  EXPECT_EQ(keyword("FORMTEXT")->modifier, TEXTWRITE);
  EXPECT_EQ(keyword("RREST")->modifier, REDUCE);
  EXPECT_EQ(keyword("SUMROWS")->instruction, REDUCELASTAXIS);
  EXPECT_EQ(keyword("SUMROWS")->modifier, ADD);
  EXPECT_EQ(keyword("EXACTMATCH")->modifier, EXACT);
  EXPECT_EQ(keyword(":]")->modifier, DISCARD);
  EXPECT_EQ(keyword("..]")->modifier, 0);
}

TEST(Keywords, HiddenConstants) {
  const struct {
    const char *spelling;
    int value;
  } integers[] = {{"SIN", 1},  {"COSIN", 2},  {"TANGENS", 3}, {"ARCSIN", -1}, {"ACOS", -2},    {"ATAN", -3},
                  {"SINH", 5}, {"COSINH", 6}, {"TANH", 7},    {"ASINH", -5},  {"ACOSINH", -6}, {"ARCTANH", -7}};
  for (const auto &expected : integers) {
    const Keyword *row = keyword(expected.spelling);
    ASSERT_NE(row, nullptr) << expected.spelling;
    EXPECT_EQ(row->instruction, instructions::CIRCULAR);
    EXPECT_EQ(row->hidden.kind, Hidden::INTEGER);
    EXPECT_EQ(row->hidden.value, expected.value) << expected.spelling;
  }
  for (const char *spelling : {"SQR", "SQUARE", "CBR", "CUBE", "SQRT", "CBRT"}) {
    EXPECT_EQ(keyword(spelling)->instruction, instructions::POWER);
    EXPECT_EQ(keyword(spelling)->hidden.kind, Hidden::REAL);
  }
  EXPECT_EQ(keyword("SQR")->hidden.value, 2.0);
  EXPECT_EQ(keyword("CUBE")->hidden.value, 3.0);
  EXPECT_EQ(keyword("SQRT")->hidden.value, 0.5);
  EXPECT_EQ(std::bit_cast<std::uint64_t>(keyword("CBRT")->hidden.value), 0x3FD5555555555555u);
  EXPECT_EQ(keyword("COTAN")->hidden.kind, Hidden::NOTHING);
}

TEST(Keywords, Marks) {
  EXPECT_EQ(keyword("PRINT")->mark, INOUT);
  EXPECT_EQ(keyword("SET")->mark, GLOBALCHANGE);
  EXPECT_EQ(keyword("\xC4")->mark, GLOBALCHANGE);
  EXPECT_EQ(keyword("??")->mark, ISPROBABLE);
  EXPECT_EQ(keyword("!\?\?")->mark, ISPROBABLE);
  EXPECT_EQ(keyword("ASSEMBLE")->mark, GLOBAL);
  EXPECT_EQ(keyword("ADD")->mark, 0u);
}

TEST(Keywords, OnlyMaskCountsAfterWrap) {
  for (std::size_t row = 0; row < Keywords.size(); ++row)
    for (const std::string spelling : Keywords[row].spellings) {
      const First first = lowestplace(spelling + " ", Condition::MASKED);
      const bool mask = spelling == "MASK" || spelling == "STENCIL";
      EXPECT_EQ(first.rule, mask ? Rule::KEYWORD : Rule::UNMASKED) << spelling;
      if (mask)
        EXPECT_EQ(first.row, row);
      else
        EXPECT_EQ(first.next, static_cast<unsigned char>(spelling[0])) << "the token stays in the input";
    }
}

TEST(Constants, EverySpellingYieldsItsRowAndNeedsABoundary) {
  testing::internal::CaptureStdout();  // what is no member of a vector is echoed
  for (std::size_t row = 0; row < Constants.size(); ++row)
    for (const std::string spelling : Constants[row].spellings)
      for (const Condition condition : {Condition::INITIAL, Condition::VECTOR}) {
        const bool counts = condition == Condition::INITIAL || spelling != "#NIL";
        for (const char *boundary = BOUNDARIES; *boundary; ++boundary) {
          const First first = lowestplace(spelling + *boundary, condition);
          EXPECT_EQ(first.rule == Rule::CONSTANT && first.row == row && first.text == spelling &&
                        first.next == static_cast<unsigned char>(*boundary),
                    counts)
              << spelling << *boundary;
        }
        for (const std::string next : {"", "x", "Q", "7", "_"}) {
          const First first = lowestplace(spelling + next, Condition::INITIAL);
          EXPECT_FALSE(first.rule == Rule::CONSTANT && first.row == row && first.text == spelling) << spelling << next;
        }
        const First negative = lowestplace("-" + spelling + " ", condition);
        EXPECT_EQ(negative.rule == Rule::CONSTANT && negative.row == row && negative.text == "-" + spelling,
                  Constants[row].issigned)
            << spelling;
        EXPECT_NE(lowestplace("\xAF" + spelling + " ").rule, Rule::CONSTANT) << "only the minus itself is a sign here";
      }
  testing::internal::GetCapturedStdout();
}

TEST(Constants, Values) {
  const struct {
    const char *spelling;
    double value;
  } reals[] = {{"#PI", 3.141592653589793},        {"#2pi", 6.283185307179586},    {"#PI_2", 1.5707963267948966},
               {"#pi_4", 0.7853981633974483},     {"#1_PI", 0.3183098861837907},  {"#2_pi", 0.6366197723675814},
               {"#2_SQRTPI", 1.1283791670955126}, {"#SQRT2", 1.4142135623730951}, {"#SQRT3", 1.7320508075688772},
               {"#SQRT1_2", 0.7071067811865476},  {"#NAPIER", 2.718281828459045}, {"#LOG2E", 1.4426950408889634},
               {"#LOG10E", 0.4342944819032518},   {"#LOGe2", 0.6931471805599453}, {"#LN10", 2.302585092994046}};
  for (const auto &expected : reals) {
    const First first = lowestplace(expected.spelling + std::string(" "));
    ASSERT_EQ(first.rule, Rule::CONSTANT) << expected.spelling;
    const Constant &row = Constants[first.row];
    EXPECT_EQ(row.tag, tags::REAL);
    EXPECT_EQ(row.form, forms::NUMBER);
    EXPECT_EQ(std::bit_cast<double>(row.bits), expected.value) << expected.spelling;
  }
  const struct {
    const char *spelling;
    int value, form;
  } integers[] = {{"F", 0, 1},
                  {"#FALSE", 0, 1},
                  {"T", 1, 1},
                  {"#TRUE", 1, 1},
                  {"#END", 0, 0x1000},
                  {"#SQRT1mX2", 0, 0x1000},
                  {"#SIN", 1, 0x1000},
                  {"#COS", 2, 0x1000},
                  {"#TAN", 3, 0x1000},
                  {"#SQRTX2p1", 4, 0x1000},
                  {"#SINH", 5, 0x1000},
                  {"#COSH", 6, 0x1000},
                  {"#TANH", 7, 0x1000},
                  {"#ASIN", -1, 0x1000},
                  {"#ACOS", -2, 0x1000},
                  {"#ATAN", -3, 0x1000},
                  {"#SQRTX2m1", -4, 0x1000},
                  {"#ASINH", -5, 0x1000},
                  {"#ACOSH", -6, 0x1000},
                  {"#ATANH", -7, 0x1000}};
  for (const auto &expected : integers) {
    const First first = lowestplace(expected.spelling + std::string(" "));
    ASSERT_EQ(first.rule, Rule::CONSTANT) << expected.spelling;
    EXPECT_EQ(Constants[first.row].tag, tags::INTEGER);
    EXPECT_EQ(Constants[first.row].form, expected.form) << expected.spelling;
    EXPECT_EQ(Constants[first.row].bits, expected.value) << expected.spelling;
  }
}
