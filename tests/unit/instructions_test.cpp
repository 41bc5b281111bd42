// The instruction set by number: what each row is, that the names without an implementation answer as they must, and
// that the class check comes first.
#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "compiled.h"
#include "failure/messagetext.h"
#include "frontend/contexts.h"
#include "frontend/keywords.h"
#include "machine/dispatch.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "spaces/making.h"
#include "unit/instruction_rows.h"
#include "unit/lists.h"
#include "unit/standard_input.h"

using namespace morvik;

namespace {

using rows::Answer;
using rows::Row;
using rows::ROWS;

constexpr int NOT_IMPLEMENTED = 993, RESTRICTION = 994, FEW = 800;

const std::map<Answer, std::string> ANSWERS = {{Answer::WORKS, "works"},
                                               {Answer::NOT_IMPLEMENTED, "993"},
                                               {Answer::RESTRICTED, "994"},
                                               {Answer::NOTHING, "does nothing"}};

TEST(Instructions, NoRowChanges) {
  lists::Lines lines;
  for (const Row &row : ROWS)
    lines.push_back(std::to_string(row.number) + " " + row.name + ": class " + std::to_string(row.argumentclass) +
                    ", " + ANSWERS.at(row.answer));
  lists::expectlist("instructions", lines);
}

TEST(Instructions, KeysAreTwoBytesAndDiffer) {
  std::map<std::string, int> keys;
  for (const Row &row : ROWS) {
    const std::string key(Addressnames[row.number], 2);
    EXPECT_TRUE(keys.emplace(key, row.number).second) << row.name << " and " << ROWS[keys[key]].name << ": " << key;
  }
}

// Three integers on a stack, and a Programme of one instruction given by its number.
class Numbers : public Compiled {
 protected:
  void SetUp() override {
    Compiled::SetUp();
    for (int i = 1; i <= 3; ++i) makeinteger(stack[i], 10 * i);
    stacktop = &stack[SLOTS - 1];
    filled = 3;
  }
  void TearDown() override {
    for (; filled > 0; --filled) dereferencepoint(&stack[filled]);
    Compiled::TearDown();
  }

  // Runs it over the topmost so many of the values. The message's text, empty for none.
  std::string run(int number, int visible = 3) {
    programme[0] = {};
    programme[0].rank = ranks::OPERATOR;
    programme[0].type = ISOPERATOR;
    programme[0].instruction = static_cast<std::uint16_t>(number);
    programme[1] = {};
    const std::string report = runprogramme(visible);
    programme[0] = {};
    return report;
  }

  std::string runprogramme(int visible = 3) {
    Point *const floor = &stack[filled + 1 - visible];
    testing::internal::CaptureStderr();
    const Point *top = machine(programme, chain, floor, floor, &stack[filled], &table, 1, 0);
    const std::string report = testing::internal::GetCapturedStderr();
    filled = static_cast<int>(top - stack);
    return report;
  }

  static void expectanswer(const std::string &name, Answer answer, const std::string &report) {
    if (answer == Answer::NOTHING)
      EXPECT_EQ(report, "") << name;
    else
      EXPECT_EQ(report.find(reportof(answer == Answer::RESTRICTED ? RESTRICTION : NOT_IMPLEMENTED)), 0u)
          << name << report;
  }

  void expectuntouched(const std::string &name) {
    ASSERT_EQ(filled, 3) << name;
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(stack[i].data_pointer->integer, 10 * i) << name;
  }

  static std::string reportof(int number) {
    return "\n" + std::string(errors(static_cast<std::uint32_t>(number))) + "\n\nInstruction:\n";
  }

  static constexpr int SLOTS = 16;
  Point stack[SLOTS] = {};
  int filled = 0;
};

TEST_F(Numbers, NamesWithoutAnImplementation) {
  for (const Row &row : ROWS) {
    if (row.answer == Answer::WORKS) continue;
    expectanswer(row.name, row.answer, run(row.number));
    expectuntouched(row.name);
  }
}

// Each of their spellings in a text, with an operator before it where it rewrites one.
TEST_F(Numbers, SpellingsWithoutAnImplementation) {
  for (const Keyword &row : Keywords) {
    const Answer answer = ROWS[row.instruction].answer;
    const bool writesnopoint = row.kind == KeywordKind::MASK_FORM || row.kind == KeywordKind::BREAK;
    if (answer == Answer::WORKS || writesnopoint) continue;
    for (const std::string spelling : row.spellings) {
      compile((row.kind == KeywordKind::REWRITE ? "+ " : "") + spelling + " .");
      expectanswer(spelling, answer, runprogramme());
      expectuntouched(spelling);
    }
  }
}

TEST_F(Numbers, TheOthersHaveAHandlerOfTheirOwn) {
  Handler *const stubs[] = {Actions[instructions::NIHIL].handler, Actions[instructions::POSITION].handler,
                            Actions[instructions::TAKE].handler};
  for (const Row &row : ROWS) {
    if (row.answer != Answer::WORKS) continue;
    for (Handler *const stub : stubs) EXPECT_NE(Actions[row.number].handler, stub) << row.name;
  }
}

TEST_F(Numbers, NumbersWithoutAName) {
  for (const int number : {int{instructions::NAMELESS}, int{instructions::COUNT}, 300, 32767, 65535}) {
    EXPECT_EQ(run(number).find(reportof(NOT_IMPLEMENTED)), 0u) << number;
    expectuntouched(std::to_string(number));
  }
}

// Too few operands: that is found before anything else.
TEST_F(Numbers, TheClassCheckComesFirst) {
  for (const Row &row : ROWS) {
    const int c = row.argumentclass;
    const int operands = c >= 10 && c <= 15 ? 1 : c >= 18 && c <= 23 ? 2 : c >= 28 && c <= 31 ? 3 : 0;
    for (int visible = 0; visible < operands; ++visible) {
      EXPECT_EQ(run(row.number, visible).find(reportof(FEW)), 0u) << row.name << visible;
      expectuntouched(row.name);
    }
  }
}

// No keyword leads to it.
TEST_F(Numbers, WaitTakesOneByteAndNoValue) {
  const StandardInput input("xy");
  EXPECT_EQ(run(instructions::WAIT), "\nWaiting... press ENTER to continue: ");
  expectuntouched("WAIT");
  EXPECT_EQ(std::getchar(), 'y');
  EXPECT_EQ(run(instructions::WAIT, 0), "\nWaiting... press ENTER to continue: ");
}

}  // namespace
