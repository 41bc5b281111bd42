// The system variables as numbers.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// #IO, the number that counting begins with: an integer, or a real truncated; 1 where it holds anything else.
std::int64_t indexorigin(const Point *context);

extern Point *quads;  // the system variables of the bank in use, 8 slots of which two are used
inline constexpr int IO_SLOT = 2, CT_SLOT = 6;

// What #CT says where it is no plain real.
double unusualtolerance(const Point &ct);
// #CT, the tolerance of comparisons: a number's first component; 0 where it holds anything else.
inline double tolerance(const Point *context) {
  const Point &ct = context[CT_SLOT];
  if (isspace(ct) && ct.data_pointer && ct.data_pointer->tag == tags::REAL) [[likely]]
    return ct.data_pointer->real;
  return unusualtolerance(ct);
}

}  // namespace morvik
