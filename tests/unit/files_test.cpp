// Names and paths, FILE elements and their streams, and the file instructions driven through whole texts.
#include "files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <sstream>
#include <thread>

#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/jump.h"
#include "files/persist.h"
#include "machine/machine.h"
#include "points.h"
#include "spaces/copies.h"
#include "spaces/counters.h"
#include "spaces/making.h"
#include "text/flags.h"

using namespace morvik;

namespace {

using namespace points;
namespace fs = std::filesystem;

// ---- The path constraint.

TEST(CheckPath, Table) {
  for (const char *path : {"a/b",        "a/../b",      "./a",   "..",       "...",   "a/..", "a/../..", "./../a",
                           "a//../../b", "a/./../../b", "",      "a",        "a/",    "a//",  ".",       "./",
                           "a/.",        ".../..",      "..a/b", "..a",      ".../a", "....", "a/...",   "b/a/../../c",
                           "a/b/../..",  "./..",        ".x",    ".../../a", ".x/.."})
    EXPECT_TRUE(checkpath(path)) << path;
  for (const char *path :
       {"/a", "/", "//", "../a", "../", "a/../../b", "b/a/../../../c", ".x/../a", "a/.b/../../c", "..a/../b",
        "...../../a", "./../../a/..", "a/../../", "../..", "../../a", "./a/../b", "a//b/../../c", "a/../b/../../c"})
    EXPECT_FALSE(checkpath(path)) << path;
}

// The same rules over the list of components.
bool modelallows(const std::string &path) {
  if (!path.empty() && path[0] == '/') return false;
  std::vector<std::string> parts(1);
  for (const char byte : path)
    if (byte == '/')
      parts.emplace_back();
    else
      parts.back() += byte;
  int depth = 0;
  for (std::size_t i = 0; i < parts.size();) {
    const std::string part = parts[i];
    const bool last = i + 1 == parts.size();
    if (last && (part.empty() || part == "." || part == "..")) return true;
    if (part.empty() || part == ".") {
      i += 2;
    } else if (part == "..") {
      if (--depth < 0) return false;
      ++i;
    } else if (part.substr(0, 3) == "...") {
      parts[i] = part.substr(3);
    } else {
      depth += part[0] != '.';
      ++i;
    }
  }
  return true;
}

TEST(CheckPath, EveryShortPathAgreesWithTheModel) {
  const std::string alphabet = "a./";
  std::vector<std::string> paths = {""};
  int refused = 0;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    const std::string path = paths[i];
    const bool allowed = checkpath(path.c_str());
    ASSERT_EQ(allowed, modelallows(path)) << path;
    refused += !allowed;
    if (path.size() < 8)
      for (const char byte : alphabet) paths.push_back(path + byte);
  }
  EXPECT_GT(refused, 1000);
}

TEST(CheckPath, ThousandsOfRandomPathsAgreeWithTheModel) {
  std::mt19937 random(20260711);
  const char *const pieces[] = {"a", "b", "..", ".", "/", "/", "/", "../", "./", ".x", "..y", "\n", "\xC3", " "};
  int refused = 0;
  for (int n = 0; n < 4000; ++n) {
    std::string path;
    for (unsigned i = random() % 16; i > 0; --i) path += pieces[random() % std::size(pieces)];
    const bool allowed = checkpath(path.c_str());
    ASSERT_EQ(allowed, modelallows(path)) << path;
    refused += !allowed;
  }
  EXPECT_GT(refused, 400);
  EXPECT_LT(refused, 3600);
}

TEST(CheckPath, AMegabyteOfComponents) {
  std::string down, up;
  for (int i = 0; i < 350000; ++i) down += "a/";
  for (int i = 0; i < 350000; ++i) up += "../";
  EXPECT_TRUE(checkpath((down + up + "a").c_str()));
  EXPECT_FALSE(checkpath((down + up + "../a").c_str()));
}

// ---- A folder of our own, in which everything below happens.

class Folder : public testing::Test {
 protected:
  void SetUp() override {
    started = fs::current_path();
    char name[] = "/tmp/morvik-files-XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    folder = name;
    fs::create_directories(folder / "in");
    fs::current_path(folder / "in");
    constraindirectories = 1;
    blocks = liveblocks();
  }
  void TearDown() override {
    EXPECT_EQ(liveblocks(), blocks);
    constraindirectories = 1;
    fs::current_path(started);
    fs::remove_all(folder);
  }
  static void give(const fs::path &name, const std::string &contents) {
    std::ofstream(name, std::ios::binary) << contents;
  }
  static std::string contents(const fs::path &name) {
    std::ostringstream bytes;
    bytes << std::ifstream(name, std::ios::binary).rdbuf();
    return bytes.str();
  }
  static std::size_t openfiles() {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd")) ++count;
    return count;
  }
  fs::path started, folder;
  std::int64_t blocks = 0;
};

// ---- Names.

class Names : public Folder {};

TEST_F(Names, Faults) {
  struct Row {
    Point name;
    int fault;
  };
  Row rows[] = {
      {text("ab"), 0},
      {text(""), 0},
      {scalar(character('a')), 0},
      {empty(), 701},
      {scalar(whole(1)), 701},
      {vector({character('a'), whole(1)}), 701},
      {array({character('a'), character('b')}, {1, 2}), 702},
      {vector({enclosed(text("ab"))}), 701},
      {vector({character('a'), enclosed(text("ab"))}), 701},
      {operation(instructions::MARK, "MARK"), 701},
      {variable("ab", instructions::SGIG), 701},
  };
  for (Row &row : rows) {
    EXPECT_EQ(namefault(row.name, 701, 702), row.fault) << &row - rows;
    drop(row.name);
  }
}

TEST_F(Names, BytesUpToTheFirstNul) {
  Point name = text(std::string("a\xFF/\0b", 5));
  char *bytes = filename(name);
  EXPECT_STREQ(bytes, "a\xFF/");
  EXPECT_EQ(bytes[4], 'b');
  freeblock(bytes);
  drop(name);
}

TEST_F(Names, TheConstraintCanBeLifted) {
  EXPECT_TRUE(isrefused("../a"));
  EXPECT_FALSE(isrefused("a"));
  constraindirectories = 0;
  EXPECT_FALSE(isrefused("../a"));
  EXPECT_FALSE(isrefused("/a"));
}

// ---- Streams.

class Streams : public Folder {};

TEST_F(Streams, OpenAndClosedToChildren) {
  give("a", "hello");
  std::FILE *stream = openstream("a", "r");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(std::getc(stream), 'h');
  EXPECT_TRUE(fcntl(fileno(stream), F_GETFD) & FD_CLOEXEC);
  std::fclose(stream);
}

TEST_F(Streams, WhatCannotBeOpened) {
  const std::size_t before = openfiles();
  EXPECT_EQ(openstream("missing", "r"), nullptr);
  EXPECT_EQ(openstream("missing", "r+b"), nullptr);
  EXPECT_EQ(openstream("", "w"), nullptr);
  EXPECT_EQ(openstream(".", "r"), nullptr) << "a directory";
  EXPECT_EQ(openstream(".", "w"), nullptr);
  EXPECT_EQ(openstream(std::string(1 << 20, 'a').c_str(), "w"), nullptr);
  EXPECT_EQ(openfiles(), before);
}

TEST_F(Streams, CharactersRead) {
  std::string every;
  for (int byte = 0; byte < 256; ++byte) every += static_cast<char>(byte);
  std::string many;
  while (many.size() < 100000) many += every;
  for (const std::string &bytes : {std::string(), std::string("x"), std::string(1, '\0'), std::string("\n\n"), every,
                                   many.substr(0, 16384), many.substr(0, 16385), many}) {
    give("a", bytes);
    std::FILE *stream = openstream("a", "r");
    Point space = readcharacters(stream);
    std::fclose(stream);
    ASSERT_EQ(space.elements, bytes.size());
    if (bytes.empty()) {
      EXPECT_EQ(space.type, ISVECTOR | ISEMPTY | HASASCII);
      EXPECT_EQ(space.data_pointer, nullptr);
    } else if (bytes.size() == 1) {
      EXPECT_EQ(space.type, ISSCALAR | HASASCII);
      EXPECT_EQ(space.rank, 0);
      EXPECT_EQ(space.depth, 0);
      EXPECT_EQ(space.shape_pointer, nullptr);
    } else {
      EXPECT_EQ(space.type, ISVECTOR | HASASCII);
    }
    if (bytes.size() != 1) {
      EXPECT_EQ(space.rank, 1);
      EXPECT_EQ(space.depth, 1);
      ASSERT_EQ(space.shape_pointer->integer, static_cast<std::int64_t>(bytes.size()));
    }
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      ASSERT_EQ(space.data_pointer[i].tag, tags::ASCII);
      ASSERT_EQ(static_cast<char>(space.data_pointer[i].ascii), bytes[i]) << i;
    }
    drop(space);
  }
}

TEST_F(Streams, AFileThatSaysNothingOfItsSize) {
  std::FILE *stream = openstream("/proc/self/status", "r");
  ASSERT_NE(stream, nullptr);
  Point space = readcharacters(stream);
  std::fclose(stream);
  EXPECT_GT(space.elements, 100u);
  drop(space);
}

// ---- FILE elements.

class Handles : public Folder {
 protected:
  // A FILE space of an open file.
  Point open(const char *name, bool small = false) {
    give(name, "0123456789");
    std::FILE *stream = openstream(name, "r+b");
    Point file;
    makefile(file, stream, stringdup(name), scalar(whole(7)), small);
    return file;
  }
  static std::FILE *streamof(const Point &file) { return handlestream(file.data_pointer[0]); }

  // The message that an action ends with, or 0.
  template <typename Action>
  static int failureof(Action action) {
    testing::internal::CaptureStderr();
    Landing outer;
    armlanding(outer, nullptr);
    const bool failed = setjmp(error_jump) != 0;
    if (!failed) action();
    disarmlanding(outer);
    const std::string report = testing::internal::GetCapturedStderr();
    return failed ? std::atoi(report.c_str()) : 0;
  }
  static int failureofclose(Point *top) {
    return failureof([&] { closefile(&top, &CLOSE); });
  }
  static inline const Point CLOSE = [] {
    Point p{};
    p.rank = ranks::OPERATOR;
    p.type = ISOPERATOR;
    p.instruction = instructions::CLOSE;
    return p;
  }();
};

TEST_F(Handles, Layout) {
  for (const bool small : {false, true}) {
    Point file = open("ab", small);
    EXPECT_EQ(file.rank, 0);
    EXPECT_EQ(file.type, 0x410000u);
    EXPECT_EQ(file.elements, 1u);
    EXPECT_EQ(file.shape_pointer, nullptr);
    const Element &element = file.data_pointer[0];
    EXPECT_EQ(element.tag, 11);
    EXPECT_EQ(element.form, 4);
    EXPECT_EQ(element.attributes, small ? 0x4100 : 0x4000);
    EXPECT_STREQ(element.name, "ab");
    EXPECT_EQ(element.file.descriptor->data_pointer->integer, 7);
    drop(file);
  }
}

TEST_F(Handles, ReleaseWithoutClose) {
  const std::size_t before = openfiles();
  Point file = open("ab");
  EXPECT_EQ(openfiles(), before + 1);
  Point copy = file;
  referencepoint(&copy);
  drop(file);
  EXPECT_EQ(openfiles(), before + 1) << "somebody still holds it";
  drop(copy);
  EXPECT_EQ(openfiles(), before);
}

TEST_F(Handles, CloseIsSeenByEveryCopy) {
  const std::size_t before = openfiles();
  Point file = open("ab");
  Point duplicate = file;
  referencepoint(&duplicate);
  Element record;
  copyelement(record, file.data_pointer[0]);
  Point collected = vector({record});
  EXPECT_EQ(failureofclose(&file), 0);
  EXPECT_EQ(openfiles(), before);
  EXPECT_EQ(streamof(duplicate), nullptr);
  EXPECT_EQ(streamof(collected), nullptr);
  // The host gives the same address and number to the next stream: nothing may reach it through the old ones.
  std::FILE *next = openstream("ab", "r");
  EXPECT_EQ(failureofclose(&duplicate), 0);
  EXPECT_EQ(failureofclose(&collected), 0);
  drop(file);
  drop(duplicate);
  drop(collected);
  EXPECT_EQ(std::getc(next), '0');
  std::fclose(next);
}

TEST_F(Handles, OnlyTheFirstElementIsActedOn) {
  Point first = open("ab"), second = open("cd");
  Element records[2];
  copyelement(records[0], first.data_pointer[0]);
  copyelement(records[1], second.data_pointer[0]);
  Point both = vector({records[0], records[1]});
  EXPECT_EQ(failureofclose(&both), 0);
  EXPECT_EQ(streamof(first), nullptr);
  EXPECT_NE(streamof(second), nullptr);
  drop(both);
  drop(first);
  drop(second);
}

TEST_F(Handles, InsideAStructure) {
  const std::size_t before = openfiles();
  Point file = open("ab");
  Point inner = vector({enclosed(file)});
  inner.type |= HASFILE;
  Point outer = vector({enclosed(inner), whole(1)});
  outer.type |= HASFILE;
  Point *top = &outer;
  EXPECT_EQ(std::fseek(streamof(file), 4, SEEK_SET), 0);
  EXPECT_EQ(failureof([&] { rewindfile(&top, &CLOSE); }), 0);
  EXPECT_EQ(std::ftell(streamof(file)), 0);
  EXPECT_EQ(failureofclose(&outer), 0);
  EXPECT_EQ(openfiles(), before);
  EXPECT_EQ(failureof([&] { rewindfile(&top, &CLOSE); }), 0) << "a closed stream is left alone";
  drop(outer);
}

TEST_F(Handles, WhatIsNoFile) {
  Point lying = scalar(whole(1));
  lying.type |= HASFILE;
  Point hollow = empty();
  hollow.type |= HASFILE;
  Point unflagged = vector({enclosed(open("ab"))});
  Point half = vector({enclosed(scalar(whole(1)))});
  half.type |= HASFILE;
  for (Point p :
       {scalar(whole(1)), text("ab"), empty(), operation(instructions::MARK, "MARK"), lying, hollow, unflagged, half}) {
    Point *top = &p;
    EXPECT_EQ(failureofclose(&p), 727);
    EXPECT_EQ(failureof([&] { rewindfile(&top, &CLOSE); }), 727);
    drop(p);
  }
}

TEST_F(Handles, Reopened) {
  const std::size_t before = openfiles();
  Point file = open("ab");
  Point copy = file;
  referencepoint(&copy);
  std::fseek(streamof(file), 5, SEEK_SET);
  EXPECT_TRUE(reopenfile(file.data_pointer[0]));
  EXPECT_EQ(openfiles(), before + 1);
  EXPECT_EQ(std::getc(streamof(copy)), '0');
  fs::remove("ab");
  EXPECT_FALSE(reopenfile(file.data_pointer[0]));
  EXPECT_EQ(openfiles(), before);
  EXPECT_EQ(streamof(copy), nullptr);
  give("ab", "x");
  EXPECT_TRUE(reopenfile(copy.data_pointer[0])) << "a closed one too";
  EXPECT_EQ(std::getc(streamof(file)), 'x');
  drop(file);
  drop(copy);
  EXPECT_EQ(openfiles(), before);
}

TEST_F(Handles, OpenFileByTheTopOfTheStack) {
  give("ab", "hello");
  Point name = text("ab"), number = scalar(whole(1)), matrix = array({character('a'), character('b')}, {1, 2}),
        refused = text("../x"), missing = text("missing");
  auto opening = [&](Point &p, const char *mode, char **block) {
    Point *top = &p;
    std::FILE *stream = nullptr;
    const int failure = failureof([&] { stream = openfile(&CLOSE, &top, mode, block); });
    if (stream) std::fclose(stream);
    return failure;
  };
  char *block = nullptr;
  EXPECT_EQ(opening(name, "r", &block), 0);
  EXPECT_STREQ(block, "ab");
  EXPECT_EQ(referencecount(block), 1);
  freeblock(block);
  EXPECT_EQ(opening(name, "r", nullptr), 0);
  EXPECT_EQ(opening(number, "r", nullptr), 706);
  EXPECT_EQ(opening(matrix, "r", nullptr), 707);
  EXPECT_EQ(opening(refused, "w", nullptr), 720);
  EXPECT_FALSE(fs::exists(folder / "x"));
  EXPECT_EQ(opening(missing, "r+b", nullptr), 712);
  constraindirectories = 0;
  EXPECT_EQ(opening(refused, "w", nullptr), 0);
  EXPECT_TRUE(fs::exists(folder / "x"));
  for (Point *p : {&name, &number, &matrix, &refused, &missing}) drop(*p);
}

// ---- Escapes from the folder. What the scan lets through is decided by it alone, and links lead where they lead.

TEST_F(Handles, EveryWayOutOfTheFolder) {
  give(folder / "secret", "out");
  give("inside", "in");
  fs::create_directories("a/b");
  fs::create_symlink("../secret", "link");
  fs::create_symlink("..", "up");
  struct Row {
    const char *path;
    bool allowed;
    const char *found;  // what a reader finds there, null if there is no such file
  };
  const Row rows[] = {
      {"../secret", false, "out"},
      {"a/../../secret", false, "out"},
      {"a/b/../../../secret", false, "out"},
      {"./../secret", true, "out"},
      {"a//../../secret", true, "out"},
      {"a/./../../secret", true, "out"},
      {"link", true, "out"},
      {"up/secret", true, "out"},
      {"up/in/inside", true, "in"},
      {"a/../inside", true, "in"},
      {"a/b/../../inside", true, "in"},
      {".../../secret", true, nullptr},
      {".x/../../secret", false, nullptr},
      {"a/..", true, nullptr},
      {"..", true, nullptr},
  };
  for (const Row &row : rows) {
    EXPECT_EQ(isrefused(row.path), !row.allowed) << row.path;
    std::FILE *stream = openstream(row.path, "r");
    EXPECT_EQ(stream != nullptr, row.found != nullptr) << row.path;
    if (!stream) continue;
    EXPECT_EQ(std::getc(stream), row.found[0]) << row.path;
    std::fclose(stream);
  }
  EXPECT_TRUE(isrefused((folder / "secret").c_str()));
  constraindirectories = 0;
  for (const Row &row : rows) EXPECT_FALSE(isrefused(row.path)) << row.path;
  EXPECT_FALSE(isrefused((folder / "secret").c_str()));
}

}  // namespace

// ---- Whole texts, in a process that has names and a stack.

namespace {

struct Shown {
  std::string out, err;
};

class Texts : public Folder {
 protected:
  void SetUp() override {
    Folder::SetUp();
    openbanks();
    stepping = 0;
    pendingproblem = 0;
  }
  void TearDown() override {
    closebanks();
    std::freopen("/dev/null", "r", stdin);
    Folder::TearDown();
  }

  static Shown shown(const std::function<void()> &action) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    action();
    std::fflush(stdout);
    std::fflush(stderr);
    Shown result;
    result.out = testing::internal::GetCapturedStdout();
    result.err = testing::internal::GetCapturedStderr();
    return result;
  }
  static Shown run(const std::string &text) {
    return shown([&] {
      std::FILE *stream = fmemopen(const_cast<char *>(text.data()), text.size(), "r");
      onetext(stream);
      std::fclose(stream);
    });
  }
  // Runs instructions by number: some have no spelling. What the stack holds is taken over.
  static Shown perform(const std::vector<Point> &values, const std::vector<Point> &instructions) {
    for (const Point &value : values) *++sp = value;
    std::vector<Point> programme = instructions;
    programme.push_back(Point{});
    const Shown result = shown([&] {
      Point *floor = &stack[0][1];
      sp = machine(programme.data(), variables[0], floor, floor, sp, &memory[0], 0, 0);
    });
    cleanup(programme.data());
    return result;
  }
  static void type(const std::string &bytes) {
    give("typed", bytes);
    ASSERT_NE(std::freopen("typed", "r", stdin), nullptr);
  }
  static std::string top() { return print(*sp, true); }
};

TEST_F(Texts, Wait) {
  type("xy");
  const Shown first = perform({scalar(whole(5))}, {operation(instructions::WAIT, "WAIT")});
  EXPECT_EQ(first.err, "\nWaiting... press ENTER to continue: ");
  EXPECT_EQ(first.out, "\n\n 5");
  EXPECT_EQ(std::getc(stdin), 'y');
  EXPECT_EQ(perform({}, {operation(instructions::WAIT, "WAIT")}).err, first.err) << "at the end of the input";
  EXPECT_EQ(sp - stack[0], 1);
}

TEST_F(Texts, StreamEdit) {
  auto editing = [&](const Point &expression) {
    Point instruction = operation(instructions::STREAMEDIT, "SED");
    const std::ptrdiff_t before = sp - stack[0];
    const Shown result = perform({scalar(whole(1)), expression}, {instruction});
    EXPECT_EQ(sp - stack[0], before + 2) << "both stay";
    return result.err;
  };
  EXPECT_EQ(editing(text("s/a/b/")), "");
  EXPECT_EQ(editing(text("")), "");
  EXPECT_EQ(editing(empty()), "");
  EXPECT_EQ(editing(scalar(character('a'))), "");
  EXPECT_EQ(editing(scalar(whole(1))).find("\n204 - the regular expression can only be defined by character data.\n"),
            0u);
  EXPECT_EQ(
      editing(array({character('a')}, {1, 1})).find("\n205 - the regular expression must be a vector or scalar.\n"),
      0u);
  run("CLEAR .");
  EXPECT_EQ(perform({scalar(whole(1))}, {operation(instructions::STREAMEDIT, "SED")}).err.substr(0, 5), "\n800 ");
}

// The top of the stack is shown with a message while a problem is pending; the failing OPEN has taken its top by then.
TEST_F(Texts, OpenReportsTheName) {
  pendingproblem = 1;
  const Shown result = run("'missing' 5 OPEN .");
  EXPECT_NE(result.err.find("Top of stack:\nmissing\n"), std::string::npos) << result.err;
  pendingproblem = 0;
}

TEST_F(Texts, WriteCountsTheElements) {
  give("name", "");
  for (const char *word : {"WRITE", "APPEND", "TEXTWRITE", "TEXTAPPEND"}) {
    run(std::string("(1 2 3 4 5) 'name' ") + word + " .");
    EXPECT_EQ(operations, 5) << word;
  }
}

TEST_F(Texts, FilesInNamesAndStructures) {
  give("data", "hello");
  const std::size_t before = openfiles();
  run("'data' 1 OPEN @f SET f f 2 COLLECT @all SET 'data' 2 OPEN DUPLICATE .");
  EXPECT_EQ(openfiles(), before + 2);
  run("0 @f SET .");
  EXPECT_EQ(openfiles(), before + 2);
  run("0 @all SET .");
  EXPECT_EQ(openfiles(), before + 1);
  run("DISCARD .");
  EXPECT_EQ(openfiles(), before + 1);
  run("DISCARD .");
  EXPECT_EQ(openfiles(), before);
  run("'data' 1 OPEN @f SET WIPE .");
  EXPECT_EQ(openfiles(), before);
}

TEST_F(Texts, StreamsAreClosedByJumps) {
  give("jumping", "1 2 .\n1 'a' + .\n3 .");
  give("outer", "'jumping' READ .");
  const std::size_t before = openfiles();
  for (const char *command : {"'jumping' READ", "'outer' READ", "'outer' LOAD", ": 'outer' READ ; !"})
    EXPECT_NE(run(std::string(command) + " .").err.find("17 - "), std::string::npos);
  EXPECT_EQ(openfiles(), before);
}

#ifdef MORVIK_CHECKING
// Every allocation of a run fails in its turn: nothing leaks, no stream stays open, no temporary file is left, and what
// was on the stack before is still there.
TEST_F(Texts, NoStorage) {
  give("data", "0123456789");
  give("source", "1 2 + .\n(1 2 3) @v SET .\n'inner' READ .");
  give("inner", ": 2 * ; @double SET 4 double ! .");
  fs::create_directories("bin");
  give("bin/vi", "#!/bin/sh\n:");
  fs::permissions("bin/vi", fs::perms::owner_all);
  const std::string path = std::getenv("PATH");
  setenv("PATH", ("bin:" + path).c_str(), 1);
  const char *const commands[] = {"'data' TEXTREAD",
                                  "'source' READ",
                                  "'source' LOAD",
                                  "'ws' SAVE",
                                  "'ws' REMEMBER",
                                  "'ws' DUMP",
                                  "1 'ws' WRITE",
                                  "1 'ws' TEXTAPPEND",
                                  "'data' 1 OPEN",
                                  "'data' 1 OPEN 2 OPEN",
                                  "'data' 1 OPEN CLOSE",
                                  "5 EDIT",
                                  "'text' TEXTEDIT",
                                  "QUOTEDIN",
                                  "INPUT",
                                  "TIME"};
  const std::size_t before = openfiles();
  for (const char *command : commands) {
    int failures = 0;
    for (std::int64_t n = 0;; ++n) {
      ASSERT_LT(n, 100000) << command;
      run("CLEAR WIPE 'below' .");
      const std::int64_t live = liveblocks();
      type("1 2 +\n");
      failallocation(n);
      const Shown result = run(std::string(command) + " .");
      const bool failed = result.err.find("27 - ") != std::string::npos;
      failallocation(-1);
      pendingproblem = 0;
      failures += failed;
      run("CLEAR WIPE 'below' .");
      ASSERT_EQ(liveblocks(), live) << command << ", allocation " << n << result.out << result.err;
      ASSERT_EQ(openfiles(), before) << command << ", allocation " << n;
      ASSERT_EQ(sp - stack[0], 1);
      if (!failed) break;
    }
    EXPECT_GT(failures, 1) << command;
  }
  setenv("PATH", path.c_str(), 1);
}
#endif

}  // namespace
