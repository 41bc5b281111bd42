// The walk of a dyadic scalar instruction over records of any kinds.
#pragma once

#include <cstdint>

#include "arithmetic/loops.h"
#include "arithmetic/pairs.h"

namespace morvik {

// Works all of a run, whatever its records are, nested spaces included. `run.done` tells how far it came. Returns a
// message number, 0 for none, or INTERRUPTED; never jumps. For slices, and for folds: steps may be any number of
// records, and steps of 0 for left and result make each result the next left.
std::int32_t work(const Dyadic &d, Run &run, Tally &tally) noexcept;

}  // namespace morvik
