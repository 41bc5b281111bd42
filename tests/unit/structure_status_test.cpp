// The names that are reserved: each spelling and each number of them answers as it is promised to, and leaves the stack
// as it was.
#include <algorithm>
#include <set>

#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/jump.h"
#include "frontend/keywords.h"
#include "machine/machine.h"
#include "points.h"

using namespace morvik;

namespace {

using namespace points;

using Names = std::set<std::string>;

// Answer 993.
const Names NotImplemented = {"SIN",
                              "COSIN",
                              "TAN",
                              "COTAN",
                              "SEC",
                              "COSEC",
                              "ASIN",
                              "ACOSIN",
                              "ATAN",
                              "ACOTAN",
                              "ASEC",
                              "ACOSEC",
                              "SINH",
                              "COSINH",
                              "TANH",
                              "COTANH",
                              "SECH",
                              "COSECH",
                              "ASINH",
                              "ACOSINH",
                              "ATANH",
                              "ACOTANH",
                              "ASECH",
                              "ACOSECH",
                              "SQUARE",
                              "CUBE",
                              "SQRT",
                              "CBRT",
                              "FIND",
                              "ENCODE",
                              "MATRIXDIVIDE",
                              "FORMATSPECIFIED",
                              "INDEXED",
                              "INDEXEDAXIS",
                              "INDEX",
                              "INDEXAXIS",
                              "EXPAND",
                              "EXPANDAXIS",
                              "EXPANDLASTAXIS",
                              "OUTERPRODUCT",
                              "INNERPRODUCT",
                              "SCAN",
                              "SCANAXIS",
                              "SCANLASTAXIS",
                              "REDUCEAXIS",
                              "REDUCENWISE",
                              "REDUCENWISEAXIS",
                              "REDUCENWISELASTAXIS",
                              "COMPRESSAXIS",
                              "REPLICATEAXIS",
                              "REPLICATELASTAXIS",
                              "ROTATE",
                              "ROTATEAXIS",
                              "ROTATELASTAXIS",
                              "TRANSPOSEGENERAL",
                              "INTRODUCE",
                              "EXTRODUCE",
                              "PEEK",
                              "POKE",
                              "GOTO",
                              "PREFIX",
                              "INFIX",
                              "WRAP",
                              "REFLECT",
                              "EXACT",
                              "DECODE"};
// Answer 994.
const Names Restricted = {"POSITION"};
// Pass, and do nothing.
const Names Silent = {"RAVELAXIS",
                      "TABLE",
                      "ENCLOSEAXIS",
                      "DISCLOSEAXIS",
                      "GRADEUP",
                      "GRADEDOWN",
                      "MATRIXINVERSE",
                      "FORMAT",
                      "REVERSEAXIS",
                      "REVERSELASTAXIS",
                      "DATAIN",
                      "DATAOUT",
                      "SEEK",
                      "CATENATEAXIS",
                      "CATENATELASTAXIS",
                      "LAMINATE",
                      "PARTITION",
                      "PARTITIONAXIS",
                      "PICK",
                      "DROP",
                      "DROPAXIS",
                      "TAKE",
                      "TAKEAXIS",
                      "WITHOUT",
                      "INDEXOF",
                      "MEMBER",
                      "GRADEUPCOLLATING",
                      "GRADEDOWNCOLLATING",
                      "DISPERSE",
                      "OPTIMISED",
                      "CALL"};
// Work.
const Names Working = {
    "RESHAPE", "ENLIST", "RAVEL",   "SHAPE",     "RANK",     "DEPTH",    "ENCLOSE",          "DISCLOSE", "FIRST",
    "REST",    "MIRROR", "REVERSE", "TRANSPOSE", "CATENATE", "COMPRESS", "COMPRESSLASTAXIS", "REPLICATE"};

std::string nameof(std::uint16_t number) {
  return Instructions[number];
}

// How many operands the argument class of an instruction asks for.
int operandsof(std::uint16_t number) {
  const int type = Types[number];
  return type > 31 ? 0 : type >= 26 ? 3 : type >= 18 ? 2 : type >= 10 ? 1 : 0;
}

class Reserved : public testing::Test {
 protected:
  void SetUp() override {
    blocks = liveblocks();
    openbanks();
  }
  void TearDown() override {
    closebanks();
    EXPECT_EQ(liveblocks(), blocks);
    stepping = 0;
    pendingproblem = 0;
  }

  static std::string values() {
    std::string text;
    for (Point *p = stack[0] + 1; p <= sp; ++p) text += print(*p, true) + "|";
    return text;
  }
  static void clear() {
    while (sp > stack[0]) dereferencepoint(sp--);
  }
  template <typename Action>
  std::string reports(Action action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::fflush(stdout);
    std::fflush(stderr);
    testing::internal::GetCapturedStdout();
    return testing::internal::GetCapturedStderr();
  }
  // Runs a text on three values. The report, and what the stack holds afterwards.
  std::string read(std::string text) {
    return reports([&] {
      text += " .\n";
      std::FILE *stream = fmemopen(text.data(), text.size(), "r");
      onetext(stream);
      std::fclose(stream);
    });
  }
  // Runs one instruction by its number.
  std::string perform(std::uint16_t number) {
    Point programme[2] = {operation(number, Instructions[number]), {}};
    const std::string said = reports([&] {
      Point *floor = stack[0] + 1;
      sp = machine(programme, variables[0], floor, floor, sp, &memory[0], 0, 0);
    });
    cleanup(programme);
    return said;
  }
  static void push() {
    *++sp = text("ab");
    *++sp = numbers({3, 4});
    *++sp = numbers({1, 2});
  }
  static bool says(const std::string &said, int number) {
    return said.find("\n" + std::to_string(number) + " - ") == 0;
  }

  static void expectanswer(const std::string &name, const std::string &said) {
    if (Silent.count(name) != 0)
      EXPECT_EQ(said, "") << name;
    else
      EXPECT_TRUE(says(said, Restricted.count(name) != 0 ? 994 : 993)) << name << ": " << said;
  }

  std::int64_t blocks = 0;
};

bool isreserved(const std::string &name) {
  return NotImplemented.count(name) + Restricted.count(name) + Silent.count(name) != 0;
}

TEST_F(Reserved, EachNumberAnswersAsPromised) {
  std::size_t met = 0;
  for (std::uint16_t number = 1; number <= 260; ++number) {
    const std::string name = nameof(number);
    if (!isreserved(name)) continue;
    ++met;
    push();
    const std::string before = values();
    expectanswer(name, perform(number));
    EXPECT_EQ(values(), before) << name;
    clear();
  }
  EXPECT_EQ(met, NotImplemented.size() + Restricted.size() + Silent.size());
  EXPECT_EQ(NotImplemented.size(), 66u);
  EXPECT_EQ(Silent.size(), 31u);
}

// What is not reserved, or a number that is none of an instruction's, does not answer as if it were.
TEST_F(Reserved, TheOthersWork) {
  for (std::uint16_t number = 1; number <= 260; ++number) {
    if (Working.count(nameof(number)) == 0) continue;
    *++sp = numbers({1, 0});
    *++sp = numbers({1, 2});
    const std::string said = perform(number);
    EXPECT_EQ(said, "") << nameof(number);
    clear();
  }
  std::vector<std::uint16_t> reserved = {instructions::NIHIL};
  for (std::uint16_t number = instructions::BASIC; number < instructions::COUNT; ++number) reserved.push_back(number);
  for (const std::uint16_t number : reserved) {
    push();
    EXPECT_TRUE(says(perform(number), 993)) << number;
    clear();
  }
}

// The argument class comes first.
TEST_F(Reserved, OperandsAreCountedFirst) {
  for (std::uint16_t number = 1; number <= 260; ++number) {
    const std::string name = nameof(number);
    if (!isreserved(name) && Working.count(name) == 0) continue;
    const int operands = operandsof(number);
    for (int n = 0; n < operands; ++n) {
      for (int i = 0; i < n; ++i) *++sp = numbers({1, 2});
      const std::string before = values();
      EXPECT_TRUE(says(perform(number), 800)) << name << " with " << n;
      EXPECT_EQ(values(), before);
      clear();
    }
    if (operands == 0 && isreserved(name)) expectanswer(name, perform(number));
    clear();
  }
}

TEST_F(Reserved, EachSpellingAnswersAsPromised) {
  Names spelled;
  for (const Keyword &row : Keywords) {
    const std::string name = nameof(row.instruction);
    if (!isreserved(name) || row.kind == KeywordKind::MASK_FORM) continue;
    for (const std::string spelling : row.spellings) {
      spelled.insert(name);
      push();
      const std::string before = values();
      expectanswer(name, read((row.kind == KeywordKind::REWRITE ? "+ " : " ") + spelling));
      EXPECT_EQ(values(), before) << spelling;
      clear();
    }
  }
  for (const std::string &name : Silent) EXPECT_EQ(spelled.count(name), 1u) << name << " has no spelling";
}

}  // namespace
