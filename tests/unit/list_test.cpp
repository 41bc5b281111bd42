// The list of the standard library's storage.
#include "api/list.h"

#include <gtest/gtest.h>

#include "failures.h"

using namespace morvik;

namespace {

// Of the storage of a size the heap lends first what was given back last.
TEST(List, ClearGivesTheStorageBack) {
  constexpr std::size_t COUNT = 5000;
  std::uintptr_t before = 0;
  for (int round = 0; round < 2; ++round) {
    List<std::size_t> list;
    ASSERT_TRUE(list.reserve(COUNT));
    for (std::size_t i = 0; i < COUNT; ++i) ASSERT_TRUE(list.append(i));
    EXPECT_EQ(list.last(), COUNT - 1);
    const auto place = reinterpret_cast<std::uintptr_t>(list.records);
    if (round > 0 && !failures::SANITIZED) EXPECT_EQ(place, before);
    before = place;
    list.clear();
    EXPECT_EQ(list.begin(), list.end());
  }
}

}  // namespace
