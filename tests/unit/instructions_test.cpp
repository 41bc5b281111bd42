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
#include "machine/dispatch.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "spaces/making.h"
#include "unit/fnv.h"
#include "unit/standard_input.h"

using namespace morvik;

namespace {

constexpr int NOT_IMPLEMENTED = 993, RESTRICTION = 994, FEW = 800;

struct Row {
  int number;
  std::string name;
  int argumentclass;
  std::string handler;
};
const std::vector<Row> ROWS = {
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  {number, #name, classes::argumentclass, #handler},
#include "tables/instructions.def"
#undef INSTRUCTION
};

// What becomes of a number that passes its class check.
std::string answer(const Row &row) {
  if (row.argumentclass == 36 && row.number > instructions::IF_NO) return "none";
  if (row.number > instructions::LARGE) return "none";
  if (row.handler == "NOTIMPLEMENTED") return "993";
  if (row.handler == "RESTRICTED") return "994";
  return row.handler == "NOTHING" ? "nothing" : "works";
}

// FNV-1a over "number name class answer\n" for all rows, worked out outside this programme: no number, name, class or
// kind of handler may change.
TEST(Instructions, NoRowChanges) {
  std::string all;
  for (const Row &row : ROWS)
    all += std::to_string(row.number) + " " + row.name + " " + std::to_string(row.argumentclass) + " " + answer(row) +
           "\n";
  EXPECT_EQ(ROWS.size(), 269u);
  EXPECT_EQ(all.size(), 5440u);
  EXPECT_EQ(fnv(all), 0x5E3D82E942DD3DE0u) << all;
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
    stacktop = &stack[ROOM - 1];
    filled = 3;
  }
  void TearDown() override {
    for (; filled > 0; --filled) dereferencepoint(&stack[filled]);
    Compiled::TearDown();
  }

  // Runs it over the topmost so many of the values. The message's text, empty for none.
  std::string run(int number, int visible = 3) {
    Point *const floor = &stack[filled + 1 - visible];
    programme[0] = {};
    programme[0].rank = ranks::OPERATOR;
    programme[0].type = ISOPERATOR;
    programme[0].instruction = static_cast<std::uint16_t>(number);
    programme[1] = {};
    testing::internal::CaptureStderr();
    const Point *top = machine(programme, chain, floor, floor, &stack[filled], &table, 1, 0);
    const std::string report = testing::internal::GetCapturedStderr();
    programme[0] = {};
    filled = static_cast<int>(top - stack);
    return report;
  }

  void expectuntouched(const std::string &name) {
    ASSERT_EQ(filled, 3) << name;
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(stack[i].data_pointer->integer, 10 * i) << name;
  }

  static std::string reportof(int number) {
    return "\n" + std::string(errors(static_cast<std::uint32_t>(number))) + "\n\nInstruction:\n";
  }

  static constexpr int ROOM = 16;
  Point stack[ROOM] = {};
  int filled = 0;
};

TEST_F(Numbers, NamesWithoutAnImplementation) {
  int stubs = 0;
  for (const Row &row : ROWS) {
    const std::string expected = answer(row);
    if (expected == "works") continue;
    ++stubs;
    const std::string report = run(row.number);
    if (expected == "nothing")
      EXPECT_EQ(report, "") << row.name;
    else
      EXPECT_EQ(report.find(reportof(expected == "994" ? RESTRICTION : NOT_IMPLEMENTED)), 0u) << row.name << report;
    expectuntouched(row.name);
  }
  EXPECT_EQ(stubs, 107);
}

TEST_F(Numbers, TheOthersHaveAHandlerOfTheirOwn) {
  Handler *const stubs[] = {Actions[instructions::NIHIL].handler, Actions[instructions::POSITION].handler,
                            Actions[instructions::TAKE].handler};
  for (const Row &row : ROWS) {
    if (answer(row) != "works") continue;
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
