// The frame of the unit tests. `--update` writes the lists anew that tests compare with, `--narrow` does as a processor
// without wide registers.
#include <gtest/gtest.h>

#include <string>

#include "arithmetic/wide.h"
#include "unit/lists.h"

int main(int argc, char **argv) {
  testing::InitGoogleTest(&argc, argv);
  const std::string choice = argc > 1 ? argv[1] : "";
  lists::update = choice == "--update";
  if (choice == "--narrow") morvik::wideregisters = morvik::ternarylogic = false;
  return RUN_ALL_TESTS();
}
