// The frame of the unit tests. `--update` writes the lists anew that tests compare with.
#include <gtest/gtest.h>

#include <string>

#include "unit/lists.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  lists::update = argc > 1 && std::string(argv[1]) == "--update";
  return RUN_ALL_TESTS();
}
