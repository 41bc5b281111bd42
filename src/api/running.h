// The texts of a source, one after the other.
#pragma once

#include "api/places.h"

namespace morvik {

// Compiles and runs them until the source ends, the process is to end, or `isover` says so before one is read or run.
// False where the source ends inside something that is open: what was read of that last text did not run.
bool runtexts(Source &source, bool (*isover)());

}  // namespace morvik
