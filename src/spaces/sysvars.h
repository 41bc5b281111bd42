// The system variables as numbers.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// #IO, the number that counting begins with: an integer, or a real truncated; 1 where it holds anything else.
std::int64_t indexorigin(const Point *context);
// #CT, the tolerance of comparisons: a number's first component; 0 where it holds anything else.
double tolerance(const Point *context);

extern Point *quads;  // the system variables of the bank in use, 8 slots of which two are used
inline constexpr int IO_SLOT = 2, CT_SLOT = 6;

}  // namespace morvik
