// The vocabulary of failure: every row, the gaps, and the texts whose number is not their row's.
#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <set>
#include <string>
#include <vector>

#include "failure/exception.h"
#include "failure/messagetext.h"
#include "unit/lists.h"

using namespace morvik;

namespace {

const std::vector<std::uint32_t> ROWS = {
#define MESSAGE(number, ...) number,
#include "tables/messages.def"
#undef MESSAGE
};

const std::string GOODBYE = "--- Good bye. (999) ---";

bool isrow(std::uint32_t number) {
  for (const std::uint32_t row : ROWS)
    if (row == number) return true;
  return false;
}

TEST(Messages, RowsAreInOrderWith999Last) {
  EXPECT_EQ(ROWS.back(), 999u);
  for (std::size_t i = 1; i + 1 < ROWS.size(); ++i) EXPECT_LT(ROWS[i - 1], ROWS[i]);
}

TEST(Messages, NoTextChanges) {
  const std::set<std::uint32_t> numbers(ROWS.begin(), ROWS.end());
  lists::Lines lines;
  for (const std::uint32_t number : numbers)
    lines.push_back(std::to_string(number) + ": " + lists::escaped(errors(number)));
  lists::expectlist("messages", lines);
}

TEST(Messages, TextsCarryTheirNumberButForSome) {
  const std::set<std::uint32_t> others = {0, 204, 205, 206, 208, 999};
  for (const std::uint32_t row : ROWS) {
    const std::string begin = std::to_string(row) + " - ";
    const bool carries = std::string(errors(row)).compare(0, begin.size(), begin) == 0;
    EXPECT_EQ(carries, others.count(row) == 0) << row << ": " << errors(row);
  }
}

TEST(Messages, KeptOddities) {
  EXPECT_STREQ(errors(0), "--- Hello. (0) ---");
  EXPECT_STREQ(errors(204), " PARALLEL will cap the number of processors/threads to this amount");
  EXPECT_STREQ(errors(205), "204 - the regular expression can only be defined by character data.");
  EXPECT_STREQ(errors(206), "205 - the regular expression must be a vector or scalar.");
  EXPECT_STREQ(errors(208), "207 - numeric ATOMs can have up to 8 elements.");
  EXPECT_STREQ(errors(700),
               "700 - Warning: INPUT returned more than 1 result on stack.\n"
               "      Discarding all but the last (topmost) element.");
  EXPECT_STREQ(errors(727), "727 - CLOSE can work only on structures of FILEs opened with OPEN.");
  EXPECT_STREQ(errors(800), "800 - not enough arguments on stack for the reqested operation.");
  EXPECT_EQ(errors(999), GOODBYE);
}

TEST(Messages, NumbersWithoutARowGiveTheTextOf999) {
  for (const std::uint32_t gap : {45u, 160u, 165u, 199u, 209u, 699u, 717u, 719u, 729u, 799u, 812u, 998u, 1000u, 1005u,
                                  1103u, 65535u, 0x80000000u, 0xFFFFFFFFu})
    EXPECT_EQ(errors(gap), GOODBYE) << gap;
  for (std::uint32_t number = 0; number < 70000; ++number) {
    if (!isrow(number)) {
      ASSERT_EQ(errors(number), GOODBYE) << number;
    }
  }
}

}  // namespace
