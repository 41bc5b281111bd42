// A Point as text that somebody holds.
#pragma once

#include <cstddef>
#include <cstdio>

#include "failure/custody.h"
#include "spaces/point.h"

namespace morvik {

// Bytes with a zero after them, in storage of the standard library. In custody until the owner ends that, who then
// gives them to std::free.
struct WrittenText {
  char *bytes;
  std::size_t length;
  std::FILE *stream;  // while it is written
  Custody custody;
};
// Writes what disass writes. Is there storage for it? Where not, nothing is held.
bool writepoint(WrittenText &text, Point *point, int source);

}  // namespace morvik
