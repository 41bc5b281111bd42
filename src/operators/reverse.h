// REVERSE and MIRROR. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a
// message number with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// All records, and those of each row, in reverse order. 994.
int reverse(Point &space);
int mirror(Point &space);

}  // namespace morvik
