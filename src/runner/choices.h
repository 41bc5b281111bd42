// The command lines of morvik-run and morvik-check.
#pragma once

#include <cstddef>
#include <cstdint>

#include "api/list.h"

namespace morvik {

enum class Profile : std::uint8_t { NONE, TABLE, FOLDED };

struct Choices {
  const char *file;  // "-": the standard input
  char **words;      // what follows it
  std::size_t wordcount;
  List<const char *> libraries;  // in the order of the line
  std::uint32_t processors;      // beside the main thread
  Profile profile;
  bool keepgoing, echo, check, unconstrained, confined;
};

// Reads the command line. Where there is nothing to run, that was said, and the status to end with is returned; else
// GOES_ON.
inline constexpr int GOES_ON = -1;
int readchoices(Choices &choices, int argc, char **argv);
// The same for morvik-check, where the words are more files.
int readcheckchoices(Choices &choices, int argc, char **argv);

// Statuses of the process.
inline constexpr int STATUS_DONE = 0, STATUS_FAILED = 1, STATUS_UNUSABLE = 2, STATUS_INTERRUPTED = 130;

}  // namespace morvik
