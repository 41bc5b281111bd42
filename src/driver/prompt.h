// The prompt loop.
#pragma once

#include <cstdio>

#include "spaces/point.h"

namespace morvik {

// Reads one text from the stream and runs it on bank 0; the stack and the names stay for the next one.
void onetext(std::FILE *stream);
// Prompts, reads and runs until the process is to end.
void promptloop();

}  // namespace morvik
