// Running what is in a file.
#pragma once

#include <cstdio>

#include "machine/level.h"

namespace morvik {

// Compiles and runs a stream, text by text up to its end, in this frame and floor. The stream stays open, in the
// custody of the caller. What a text reports itself ends that text alone; a failure of the reading jumps.
void runstream(Level &level, std::FILE *stream);

}  // namespace morvik
