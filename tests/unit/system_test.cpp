// What the start makes before the first text is read.
#include "driver/system.h"

#include <gtest/gtest.h>

#include <chrono>

#include "arithmetic/generator.h"
#include "machine/timing.h"
#include "spaces/blocks.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

double systemtime() {
  return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

void expectvariable(int slot, const char *name, std::uint32_t type, const Element &value) {
  const Point &point = quads[slot];
  EXPECT_EQ(point.rank, 0);
  EXPECT_EQ(point.type, type);
  EXPECT_EQ(point.elements, 1U);
  ASSERT_NE(point.data_pointer, nullptr);
  const Element &found = *point.data_pointer;
  EXPECT_STREQ(found.name, name);
  EXPECT_EQ(found.attributes, attributes::NAMED);
  EXPECT_EQ(found.tag, value.tag);
  EXPECT_EQ(found.form, value.form);
  EXPECT_EQ(found.integer, value.integer);
}

TEST(Start, MakesTheSystemVariables) {
  const auto blocks = liveblocks();
  openbanks();
  Element value{};
  value.tag = tags::INTEGER;
  value.form = forms::NUMBER;
  value.integer = 1;
  expectvariable(IO_SLOT, "#IO", 0x10400, value);
  value.tag = tags::REAL;
  value.form = forms::COMPUTED;
  value.integer = 0x3CD203AF9EE75616;
  expectvariable(CT_SLOT, "#CT", 0x10800, value);
  closebanks();
  EXPECT_EQ(liveblocks(), blocks);
}

TEST(Start, ReadsTheClockOfTheSystem) {
  constexpr double MILLISECOND = 1e-3;  // the fractions are rounded differently
  for (int i = 0; i < 3; ++i) {
    const double before = systemtime(), read = clocktime(), after = systemtime();
    EXPECT_GE(read, before - MILLISECOND);
    EXPECT_LE(read, after + MILLISECOND);
  }
}

// A seed below 0 stands for the clock, and each thread has an offset of its own.
TEST(Start, SeedsByTheClock) {
  for (const std::int32_t thread : {0, 1, 3}) {
    std::uint64_t state = 0;
    const auto before = static_cast<std::uint64_t>(systemtime());
    SEED_PRNGS(thread, &state, CLOCK_SEED);
    const auto after = static_cast<std::uint64_t>(systemtime());
    const std::uint64_t offset = 22925 * static_cast<std::uint64_t>(thread);
    EXPECT_GE(state, before % 2147483647 + offset - 1);
    EXPECT_LE(state, after % 2147483647 + offset);
  }
}

TEST(Start, SeedsByANumber) {
  std::uint64_t state = 0;
  for (const std::int64_t seed : {std::int64_t{1}, std::int64_t{2147483646}, std::int64_t{2147483648}}) {
    SEED_PRNGS(2, &state, seed);
    EXPECT_EQ(state, 2 * 22925 + static_cast<std::uint64_t>(seed) % 2147483647);
  }
  SEED_PRNGS(1, &state, 0);
  EXPECT_EQ(state, 22925U + 123456789);
}

}  // namespace
