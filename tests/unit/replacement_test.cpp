// Files that are written whole or not at all, where the host refuses: what stood there stays, and nothing else is left.
#include "files/replacement.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include "failures.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"

namespace fs = std::filesystem;
using namespace morvik;
using failures::landingof;

namespace {

constexpr uid_t NOBODY = 65534;

class Replacements : public failures::Quiet {
 protected:
  void SetUp() override {
    Quiet::SetUp();
    live = liveblocks();
    start = fs::current_path();
    char made[] = "/tmp/morvik-replacement-XXXXXX";
    folder = mkdtemp(made);
    fs::current_path(folder);
  }
  void TearDown() override {
    fs::current_path(start);
    fs::remove_all(folder);
    EXPECT_EQ(liveblocks(), live);
    Quiet::TearDown();
  }
  static bool begin(Replacement &file, const std::string &name) {
    return beginreplacement(file, stringdup(name.c_str()));
  }
  // Is all of it written?
  static bool write(const std::string &name, const std::string &text) {
    Replacement file;
    if (!begin(file, name)) return false;
    std::fputs(text.c_str(), file.stream);
    return endreplacement(file);
  }
  static void give(const std::string &name, const std::string &text) { std::ofstream(name) << text; }
  static std::string textof(const std::string &name) {
    std::ifstream file(name);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  static ino_t nodeof(const std::string &name) {
    struct stat found {};
    EXPECT_EQ(stat(name.c_str(), &found), 0);
    return found.st_ino;
  }
  static std::size_t files() {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator("."), fs::directory_iterator()));
  }

  std::int64_t live = 0;
  fs::path start, folder;
};

// ".///d/../d/../" and so on, then the name: so many bytes in all.
std::string roundabout(std::size_t length, const std::string &name) {
  std::string path;
  while (path.size() + 7 + name.size() <= length) path += "d/../";
  path.insert(0, std::string(length - path.size() - name.size(), '/').replace(0, 1, "."));
  return path + name;
}

TEST_F(Replacements, NamesThatAreNone) {
  fs::create_directory("d");
  EXPECT_FALSE(write("", "new"));
  EXPECT_FALSE(write("d", "new"));
  EXPECT_FALSE(write("missing/x", "new"));
  EXPECT_FALSE(write(std::string(PATH_MAX, 'x'), "new"));
  EXPECT_EQ(files(), 1U);
}

// Whatever was where the record is: there is no stream before one is open.
TEST_F(Replacements, WhatCannotBeBegunLeavesNothing) {
  for (const char *name : {"", "/", "/missing/there"}) {
    Replacement file;
    std::memset(static_cast<void *>(&file), 0xFF, sizeof file);
    EXPECT_FALSE(begin(file, name)) << name;
  }
}

// The name fits, and no other beside it does.
TEST_F(Replacements, NoRoomForANameBesideIt) {
  fs::create_directory("d");
  const std::string name = roundabout(PATH_MAX - 2, "f");
  ASSERT_EQ(name.size(), static_cast<std::size_t>(PATH_MAX - 2));
  EXPECT_FALSE(write(name, "new"));
  EXPECT_EQ(files(), 1U);
  give("f", "old");
  EXPECT_FALSE(write(name, "new"));
  EXPECT_EQ(textof("f"), "old");
  EXPECT_EQ(files(), 2U);
}

// The host follows a link whose target is too far away for one path: the file is written where it is.
TEST_F(Replacements, LinksWhoseTargetIsTooFar) {
  fs::create_directory("d");
  fs::create_symlink(roundabout(2500, "f"), "link");
  const std::string name = roundabout(2500, "link");
  EXPECT_FALSE(write(name, "new"));
  give("f", "old");
  const ino_t node = nodeof("f");
  EXPECT_TRUE(write(name, "new"));
  EXPECT_EQ(textof("f"), "new");
  EXPECT_EQ(nodeof("f"), node);
  EXPECT_EQ(files(), 3U);
}

TEST_F(Replacements, ChainsOfLinks) {
  constexpr int MOST = 40;
  for (int i = 0; i < MOST; ++i)
    fs::create_symlink(i + 1 == MOST ? "f" : "link" + std::to_string(i + 1), "link" + std::to_string(i));
  EXPECT_FALSE(write("link0", "new"));
  EXPECT_TRUE(write("link1", "new"));
  EXPECT_EQ(textof("f"), "new");
  EXPECT_TRUE(fs::is_symlink("link1"));
  EXPECT_EQ(files(), MOST + 1U);
}

TEST_F(Replacements, WhatDoesNotFitLeavesTheOld) {
  give("f", "old");
  rlimit limit;
  getrlimit(RLIMIT_FSIZE, &limit);
  const auto before = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, limit.rlim_max};
  setrlimit(RLIMIT_FSIZE, &small);
  const bool less = write("f", std::string(3000, 'y')), more = write("f", std::string(100'000, 'x')),
             fresh = write("g", std::string(100'000, 'x'));
  setrlimit(RLIMIT_FSIZE, &limit);
  std::signal(SIGXFSZ, before);
  EXPECT_TRUE(less);
  EXPECT_FALSE(more);
  EXPECT_FALSE(fresh);
  EXPECT_EQ(textof("f"), std::string(3000, 'y'));
  EXPECT_EQ(files(), 1U);
}

TEST_F(Replacements, AFullDevice) {
  EXPECT_FALSE(write("/dev/full", "new"));
  EXPECT_TRUE(write("/dev/null", "new"));
  fs::create_symlink("/dev/full", "link");
  EXPECT_FALSE(write("link", std::string(100'000, 'x')));
  EXPECT_EQ(files(), 1U);
}

TEST_F(Replacements, AFolderThatTakesThePlaceMeanwhile) {
  Replacement file;
  ASSERT_TRUE(begin(file, "f"));
  std::fputs("new", file.stream);
  fs::create_directory("f");
  EXPECT_FALSE(endreplacement(file));
  EXPECT_TRUE(fs::is_directory("f"));
  EXPECT_EQ(files(), 1U);
}

TEST_F(Replacements, AJumpRemovesWhatWasWritten) {
  give("f", "old");
  testing::internal::CaptureStderr();
  const int landed = landingof([] {
    Replacement file;
    if (!begin(file, "f")) return;
    std::fputs("new", file.stream);
    std::fflush(file.stream);
    exceptionjump(messages::OUT_OF_STORAGE, nullptr, nullptr);
  });
  testing::internal::GetCapturedStderr();
  EXPECT_NE(landed, 0);
  EXPECT_EQ(textof("f"), "old");
  EXPECT_EQ(files(), 1U);
}

TEST_F(Replacements, RightsAreThoseOfTheOld) {
  const mode_t mask = umask(027);
  EXPECT_TRUE(write("new", "x"));
  umask(mask);
  EXPECT_EQ(fs::status("new").permissions(), fs::perms{0640});
  give("f", "old");
  fs::permissions("f", fs::perms{0751});
  const ino_t node = nodeof("f");
  EXPECT_TRUE(write("f", "new"));
  EXPECT_NE(nodeof("f"), node);
  EXPECT_EQ(fs::status("f").permissions(), fs::perms{0751});
}

// ---- As somebody else, which takes the rights of the administrator.

class ReplacementsAsNobody : public Replacements {
 protected:
  void SetUp() override {
    Replacements::SetUp();
    if (geteuid() != 0) GTEST_SKIP() << "only the administrator becomes somebody else";
    fs::permissions(folder, fs::perms::all);
  }
  static bool writeasnobody(const std::string &name, const std::string &text) {
    EXPECT_EQ(seteuid(NOBODY), 0);
    const bool written = write(name, text);
    EXPECT_EQ(seteuid(0), 0);
    return written;
  }
  // A folder from which only owners take away; who owns it, and who the file in it.
  static void givesticky(const std::string &name, uid_t owner, uid_t fileowner) {
    fs::create_directory(name);
    fs::permissions(name, fs::perms::all | fs::perms::sticky_bit);
    give(name + "/f", "old");
    fs::permissions(name + "/f", fs::perms{0666});
    ASSERT_EQ(chown(name.c_str(), owner, owner), 0);
    ASSERT_EQ(chown((name + "/f").c_str(), fileowner, fileowner), 0);
  }
};

TEST_F(ReplacementsAsNobody, FoldersFromWhichOnlyOwnersTakeAway) {
  constexpr uid_t OTHER = 65533;
  givesticky("others", 0, OTHER);
  givesticky("file", 0, NOBODY);
  givesticky("folder", NOBODY, OTHER);
  for (const std::string name : {"others", "file", "folder"}) {
    const ino_t node = nodeof(name + "/f");
    EXPECT_TRUE(writeasnobody(name + "/f", "new")) << name;
    EXPECT_EQ(textof(name + "/f"), "new");
    EXPECT_EQ(nodeof(name + "/f") == node, name == "others") << name;
    EXPECT_EQ(std::distance(fs::directory_iterator(name), fs::directory_iterator()), 1);
  }
}

// The new file is one's own; the rights that went with the owner of the old one stay behind.
TEST_F(ReplacementsAsNobody, AnOwnerThatCannotBeKept) {
  give("f", "old");
  ASSERT_EQ(chmod("f", 04766), 0);
  EXPECT_TRUE(writeasnobody("f", "new"));
  struct stat found {};
  ASSERT_EQ(stat("f", &found), 0);
  EXPECT_EQ(found.st_uid, NOBODY);
  EXPECT_EQ(found.st_mode & 07777, mode_t{0766});
}

TEST_F(ReplacementsAsNobody, AFileThatMayNotBeWritten) {
  give("f", "old");
  EXPECT_FALSE(writeasnobody("f", "new"));
  EXPECT_EQ(textof("f"), "old");
  EXPECT_EQ(files(), 1U);
}

}  // namespace
