// The process as a whole: limits, the work slots, start and shutdown.
#pragma once

#include <cstdint>

#include "api/banks.h"

namespace morvik {

extern double physmem;                         // bytes of memory found
extern std::uint64_t maxdatamem, maxstackmem;  // the limits reached, in bytes

// Everything between the command line and the first prompt. Ends the process where there is no storage for it.
void startsystem();
// Everything after the last text. Returns the exit status.
int shutdownsystem();

}  // namespace morvik
