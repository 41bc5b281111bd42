// The library's calls with arguments that cannot be, values of every kind, and a session whose owner wants to hear
// nothing. Nothing that is refused changes anything.
#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include "api/morvik.h"
#include "failure/hearing.h"
#include "failure/signals.h"
#include "files/files.h"
#include "machine/leave.h"

using namespace morvik;

namespace {

// A session of the library leaves the signals of the process to its owner; the tests that follow in this process do
// not.
class ApiOptions : public testing::Test {
 protected:
  void TearDown() override {
    foreignsignals = signalsbefore;
    conversing = conversingbefore;
    echoing = echoingbefore;
    constraindirectories = constrainedbefore;
    hearreport = hearbefore;
  }

 private:
  decltype(foreignsignals) signalsbefore = foreignsignals;
  decltype(conversing) conversingbefore = conversing;
  decltype(echoing) echoingbefore = echoing;
  decltype(constraindirectories) constrainedbefore = constraindirectories;
  decltype(hearreport) hearbefore = hearreport;
};

class ApiEdges : public ApiOptions {
 protected:
  void SetUp() override { ASSERT_EQ(morvik_open(nullptr), MORVIK_OK); }
  void TearDown() override {
    EXPECT_EQ(morvik_close(), MORVIK_OK);
    ApiOptions::TearDown();
  }
  static morvik_status run(const std::string &text, const char *name = "text") {
    return morvik_run(text.data(), text.size(), name);
  }
  static std::size_t height() {
    std::size_t found = SIZE_MAX;
    EXPECT_EQ(morvik_height(&found), MORVIK_OK);
    return found;
  }
  static morvik_value top() {
    morvik_value value;
    EXPECT_EQ(morvik_look(0, &value), MORVIK_OK);
    return value;
  }
};

TEST_F(ApiEdges, EveryStatusHasAText) {
  for (int status = MORVIK_OK; status <= MORVIK_STALE; ++status)
    EXPECT_STRNE(morvik_status_text(static_cast<morvik_status>(status)), "no status");
  EXPECT_STREQ(morvik_status_text(static_cast<morvik_status>(MORVIK_STALE + 1)), "no status");
  EXPECT_STREQ(morvik_status_text(static_cast<morvik_status>(-1)), "no status");
}

TEST_F(ApiEdges, NothingWhereSomethingMustBe) {
  ASSERT_EQ(run("1 2 3 ."), MORVIK_OK);
  const std::size_t before = height();
  const morvik_value value = top();
  const morvik_record *records;
  char *text;
  EXPECT_EQ(morvik_run(nullptr, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_height(nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_look(0, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_extents(&value, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_records(&value, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_records(nullptr, &records), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_integers(&value, 0, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_doubles(&value, 0, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_bytes(&value, 0, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_parts(&value, 4, 0, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_member(&value, 0, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_text(&value, MORVIK_DISPLAY, nullptr, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_text(&value, 17, &text, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_integers(nullptr, 0, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_parts(1, nullptr, 0, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_bytes(nullptr, 0, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_value(nullptr), MORVIK_BAD_ARGUMENT);
  for (const char *name : {static_cast<const char *>(nullptr), ""}) {
    EXPECT_EQ(morvik_set(name), MORVIK_BAD_ARGUMENT);
    EXPECT_EQ(morvik_get(name), MORVIK_BAD_ARGUMENT);
  }
  EXPECT_EQ(height(), before);
  EXPECT_EQ(morvik_records(&value, &records), MORVIK_OK) << "the value is no longer as it was looked at";
}

TEST_F(ApiEdges, ShapesThatAreNone) {
  const std::int64_t numbers[] = {1, 2};
  const std::size_t none[] = {0, 3}, more[] = {SIZE_MAX, 0}, product[] = {1 << 20, 1 << 20}, two[] = {2};
  const std::vector<std::size_t> axes(MORVIK_MOST_AXES + 1, 1);
  EXPECT_EQ(morvik_push_integers(numbers, 1, nullptr), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_integers(numbers, axes.size(), axes.data()), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_integers(numbers, 2, more), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(morvik_push_integers(numbers, 2, product), MORVIK_BAD_ARGUMENT);
  for (const std::size_t parts : {0, 3, 5, 7, 9})
    EXPECT_EQ(morvik_push_parts(parts, nullptr, 1, none), MORVIK_BAD_ARGUMENT);
  EXPECT_EQ(height(), 0U);
  EXPECT_EQ(morvik_push_integers(nullptr, 2, none), MORVIK_OK);
  EXPECT_EQ(top().size, 0U);
  EXPECT_EQ(top().rank, 2U);
  EXPECT_EQ(morvik_push_integers(numbers, 1, two), MORVIK_OK);
  EXPECT_EQ(height(), 2U);
}

TEST_F(ApiEdges, NumbersOfEveryKind) {
  const double doubles[] = {1, 2, 3, 4, 5, 6, 7, 8};
  const unsigned kinds[] = {MORVIK_REALS, MORVIK_COMPLEX, MORVIK_QUATERNIONS, MORVIK_OCTONIONS};
  for (int k = 0; k < 4; ++k) {
    const std::size_t parts = std::size_t{1} << k;
    ASSERT_EQ(morvik_push_parts(parts, doubles, 0, nullptr), MORVIK_OK);
    const morvik_value value = top();
    EXPECT_EQ(value.kinds, kinds[k]);
    for (std::size_t asked = 1; asked <= 8; ++asked) {
      double found[8];
      const bool possible = asked == 1 || asked == 2 || asked == 4 || asked == 8;
      const morvik_status expected = !possible ? MORVIK_BAD_ARGUMENT : asked < parts ? MORVIK_WRONG_KIND : MORVIK_OK;
      ASSERT_EQ(morvik_parts(&value, asked, 0, 1, found), expected) << parts << " as " << asked;
      for (std::size_t i = 0; expected == MORVIK_OK && i < asked; ++i) EXPECT_EQ(found[i], i < parts ? doubles[i] : 0);
    }
    std::int64_t integer;
    char byte;
    EXPECT_EQ(morvik_integers(&value, 0, 1, &integer), MORVIK_WRONG_KIND);
    EXPECT_EQ(morvik_bytes(&value, 0, 1, &byte), MORVIK_WRONG_KIND);
  }
}

TEST_F(ApiEdges, WhatIsNoNumber) {
  double part[8];
  ASSERT_EQ(run("'ab' ."), MORVIK_OK);
  morvik_value value = top();
  EXPECT_EQ(value.kinds, MORVIK_CHARACTERS);
  EXPECT_EQ(morvik_doubles(&value, 0, 2, part), MORVIK_WRONG_KIND);
  EXPECT_EQ(morvik_doubles(&value, 0, 3, part), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_doubles(&value, 3, 0, part), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_doubles(&value, 2, 0, nullptr), MORVIK_OK);
  morvik_value member;
  EXPECT_EQ(morvik_member(&value, 0, &member), MORVIK_WRONG_KIND);
  EXPECT_EQ(morvik_member(&value, 2, &member), MORVIK_NO_VALUE);
}

TEST_F(ApiEdges, AFunctionHasNoRecords) {
  ASSERT_EQ(run(": 1 + ; @f SET ."), MORVIK_OK);
  ASSERT_EQ(morvik_get("f"), MORVIK_OK);
  const morvik_value value = top();
  const morvik_record *records = reinterpret_cast<const morvik_record *>(&value);
  morvik_value member;
  double part;
  EXPECT_EQ(value.kinds, MORVIK_FUNCTION);
  EXPECT_EQ(value.size, 0U);
  EXPECT_EQ(morvik_records(&value, &records), MORVIK_OK);
  EXPECT_EQ(records, nullptr);
  EXPECT_EQ(morvik_doubles(&value, 0, 1, &part), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_doubles(&value, 0, 0, nullptr), MORVIK_OK);
  EXPECT_EQ(morvik_member(&value, 0, &member), MORVIK_NO_VALUE);
}

TEST_F(ApiEdges, ValuesThatAreNotThere) {
  morvik_value value;
  const std::size_t before = height();
  EXPECT_EQ(morvik_look(before, &value), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_drop(before + 1), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_push_nested(before + 1), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_set("x"), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_get("x"), MORVIK_NO_VALUE);
  EXPECT_EQ(morvik_push_nested(0), MORVIK_OK);
  EXPECT_EQ(morvik_set("x"), MORVIK_OK);
  EXPECT_EQ(morvik_get("x"), MORVIK_OK);
  EXPECT_EQ(top().size, 0U);
  value = top();
  EXPECT_EQ(morvik_push_value(&value), MORVIK_OK);
  EXPECT_EQ(morvik_push_value(&value), MORVIK_STALE);
}

// Whatever would be one more is refused, and the stack is as it was.
TEST_F(ApiEdges, AFullStack) {
  const double doubles[8] = {};
  const std::int64_t integer = 5;
  morvik_status status = MORVIK_OK;
  ASSERT_EQ(morvik_push_bytes("x", 0, nullptr), MORVIK_OK);
  ASSERT_EQ(morvik_set("x"), MORVIK_OK);
  std::size_t pushed = 0;
  for (; status == MORVIK_OK && pushed < 10'000'000; ++pushed) status = morvik_push_integers(&integer, 0, nullptr);
  ASSERT_EQ(status, MORVIK_STACK_FULL);
  const std::size_t full = height();
  EXPECT_EQ(full, pushed - 1);
  const morvik_value value = top();
  EXPECT_EQ(morvik_push_parts(8, doubles, 0, nullptr), MORVIK_STACK_FULL);
  EXPECT_EQ(morvik_push_bytes("a", 0, nullptr), MORVIK_STACK_FULL);
  EXPECT_EQ(morvik_push_nested(0), MORVIK_STACK_FULL);
  EXPECT_EQ(morvik_get("x"), MORVIK_STACK_FULL);
  EXPECT_EQ(height(), full);
  const morvik_value again = top();
  EXPECT_EQ(morvik_push_value(&again), MORVIK_STACK_FULL);
  EXPECT_EQ(morvik_push_value(&value), MORVIK_STALE);
  EXPECT_EQ(morvik_push_nested(full), MORVIK_OK);
  EXPECT_EQ(height(), 1U);
  EXPECT_EQ(top().size, full);
}

// A session without a listener says on the streams of the process what it has to say, and where.
TEST_F(ApiEdges, MessagesGoToStandardError) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const morvik_status status = run("1\n 'a' 1 + .", "some/name");
  const std::string err = testing::internal::GetCapturedStderr();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(status, MORVIK_MESSAGE);
  EXPECT_NE(err.find("some/name:2: 17 - dyadic function arguments are not conformable."), std::string::npos) << err;
}

TEST_F(ApiOptions, OfAnOwnerWhoKnowsFewerOfThem) {
  morvik_options options = MORVIK_OPTIONS;
  options.size = offsetof(morvik_options, processors) + sizeof options.processors;
  ASSERT_EQ(morvik_open(&options), MORVIK_OK);
  EXPECT_EQ(morvik_open(&options), MORVIK_OPEN_ALREADY);
  EXPECT_EQ(morvik_close(), MORVIK_OK);
  options.size -= 1;
  EXPECT_EQ(morvik_open(&options), MORVIK_BAD_ARGUMENT);
  options.size = sizeof options + 64;  // and one who knows more
  std::vector<char> larger(options.size, 1);
  std::memcpy(larger.data(), &options, sizeof options);
  ASSERT_EQ(morvik_open(reinterpret_cast<const morvik_options *>(larger.data())), MORVIK_OK);
  EXPECT_EQ(morvik_close(), MORVIK_OK);
  EXPECT_EQ(morvik_close(), MORVIK_NOT_OPEN);
}

// What is said to be typed is read; what claims to be more than there was room for is cut.
TEST_F(ApiOptions, StreamsOfTheOwner) {
  struct Owner {
    std::string typed = "first\nsecond\n", written;
    bool boasts = false;
  } owner;
  morvik_options options = MORVIK_OPTIONS;
  options.data = &owner;
  options.output = [](void *data, const char *bytes, std::size_t length) {
    static_cast<Owner *>(data)->written.append(bytes, length);
  };
  options.input = [](void *data, char *bytes, std::size_t room) {
    auto &mine = *static_cast<Owner *>(data);
    const std::size_t length = std::min(room, mine.typed.size());
    std::memcpy(bytes, mine.typed.data(), length);
    mine.typed.erase(0, length);
    if (!mine.boasts) return length;
    std::memset(bytes, '\n', room);
    return room + 100;
  };
  ASSERT_EQ(morvik_open(&options), MORVIK_OK);
  const std::string text = "QUOTEDIN PRINT QUOTEDIN PRINT .";
  EXPECT_EQ(morvik_run(text.data(), text.size(), nullptr), MORVIK_OK);
  EXPECT_EQ(owner.written, "first\n\nsecond\n\n");  // an empty line follows each vector
  owner.boasts = true;
  owner.written.clear();
  const std::string more = "QUOTEDIN SHAPE PRINT .";
  EXPECT_EQ(morvik_run(more.data(), more.size(), nullptr), MORVIK_OK);
  EXPECT_EQ(owner.written, " 0\n\n");
  EXPECT_EQ(morvik_close(), MORVIK_OK);
}

}  // namespace
