// The main thread's side of the pool: the post and the join, which hang on the hooks of spaces/work.h. What the threads
// do is in threads.cpp.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// Gives every thread that was started an instruction without slices, SEED or RANDOMISE, and joins. The number is what
// they find in `origin`.
void wakecoprocessors(const Point &instruction, std::int64_t number);

}  // namespace morvik
