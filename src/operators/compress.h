// COMPRESS and REPLICATE. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a
// message number with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Repeats the data along a new slowest axis, in the place of `count`; `data` is given up. 994; what speaks against the
// extent is reported by reshape itself, and ALREADY_REPORTED returned.
inline constexpr int ALREADY_REPORTED = -1;

// Keeps what is where the mask is above 0, along the fastest or the slowest axis, in the place of `mask`; `data` is
// given up. 4, 31, 994.
int compress(Point &mask, Point &data);
int compresslastaxis(Point &mask, Point &data);
// Repeats the data along a new slowest axis, in the place of `count`; `data` is given up. 994; what speaks against the
// extent is reported by reshape itself, and ALREADY_REPORTED returned.
int replicate(Point &count, Point &data, const Point *instruction);

}  // namespace morvik
