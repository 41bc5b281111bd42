// CATENATE. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a message number
// with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Joins two values in the place of `left`; `right` is given up. 994.
int catenate(Point &left, Point &right);

}  // namespace morvik
