// The fixture of the tests of EACH and MASK: values on the stack of the machine, texts run on them, and functions of
// every make.
#pragma once

#include <functional>
#include <random>

#include "arithmetic_model.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/jump.h"
#include "frontend/symtab.h"
#include "machine/machine.h"
#include "structure_values.h"

using namespace morvik;

namespace applying {

using namespace points;
using structured::anyshape;
using structured::Extents;
using structured::shapeof;
using structured::textof;

class Applying : public testing::Test {
 protected:
  std::mt19937 random{11};
  std::int64_t blocks = 0;
  std::vector<Point> held;
  std::vector<std::string> were;

  void SetUp() override {
    blocks = liveblocks();
    openbanks();
    pendingproblem = 0;
  }
  void TearDown() override {
    clear();
    closebanks();
    EXPECT_EQ(liveblocks(), blocks);
    stepping = pendingproblem = 0;
  }
  // Pushes a value, which somebody else holds too every other time.
  void push(const Point &p) {
    *++sp = p;
    if (random() % 2 == 0) return;
    held.push_back(p);
    referencepoint(&held.back());
    were.push_back(textof(p));
  }
  void clear() {
    for (std::size_t i = 0; i < held.size(); ++i) {
      EXPECT_EQ(textof(held[i]), were[i]);
      drop(held[i]);
    }
    held.clear();
    were.clear();
    while (sp > stack[0]) dereferencepoint(sp--);
  }
  // Runs a text; the 0 on top is what gets echoed, as an echo changes what it shows. The number of the first message.
  int run(const std::string &text) {
    std::string all = text + " 0 .\n";
    std::FILE *stream = fmemopen(all.data(), all.size(), "r");
    const int number = reported([&] { onetext(stream); });
    std::fclose(stream);
    return number;
  }
  // Runs one instruction with a modifier that no text gives it.
  int perform(std::uint16_t instruction, std::uint16_t modifier) {
    Point programme[] = {operation(instruction, Instructions[instruction], modifier), scalar(whole(0)), {}};
    const int number = reported([&] {
      Point *floor = stack[0] + 1;
      sp = machine(programme, variables[0], floor, floor, sp, &memory[0], 0, 0);
    });
    cleanup(programme);
    return number;
  }
  template <typename Action>
  int reported(Action action) {
    testing::internal::CaptureStdout();
    int number;
    {
      const arithmetic::Report report;
      std::fputs(" ", stderr);
      action();
      number = report.number();
    }
    testing::internal::GetCapturedStdout();
    stepping = pendingproblem = 0;
    if (number == 0 && sp->rank == ranks::SCALAR) dereferencepoint(sp--);
    return number;
  }
  // Every block that the stack and the holders reach has the right count. What else is alive is the banks'.
  std::int64_t reachable() {
    Recount recount;
    for (Point *p = stack[0] + 1; p <= sp; ++p) recount.hold(*p);
    for (const Point &p : held) recount.hold(p);
    const std::int64_t reached = recount.reached();
    EXPECT_EQ(recount.faults(reached), "");
    return reached;
  }
};

// ---- Functions.

// A function as a text, and what it makes of what it sees, as text; null where it gives back what it got.
struct Function {
  const char *source;
  const char *gives;
  std::int32_t rank;  // of what it gives
};
inline const Function FUNCTIONS[] = {
    {"MONADIC ;", nullptr, 0},
    {"MONADIC DISCARD ;", "1(0 )", 1},
    {"MONADIC DUPLICATE ;", nullptr, 0},
    {"MONADIC DISCARD 7 ;", "0([4:7])", 0},
    {"MONADIC DISCARD 1 2 7 ;", "0([4:7])", 0},
    {"MONADIC DISCARD (1 2) ;", "1(2 [4:1][4:2])", 1},
    {"MONADIC DISCARD 'ab' ;", "1(2 [2:a][2:b])", 1},
    {"MONADIC DISCARD ((1 2) 3) ;", "1(2 [1:1(2 [4:1][4:2])][4:3])", 1},
    {"MONADIC DISCARD #NIL ;", "1(0 )", 1},
    {"VARS 2 MONADIC ;", nullptr, 0},
    {"VARS 3 MONADIC DISCARD ;", "1(0 )", 1},
    {"MONADIC @.seen SET .seen ;", nullptr, 0},
    {"VARS 1 MONADIC @.seen SET .seen .seen ;", nullptr, 0},
    {"MONADIC RETURN 1 ;", nullptr, 0},
};

}  // namespace applying
