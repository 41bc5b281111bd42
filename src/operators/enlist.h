// ENLIST. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a message number
// with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// The leaves of a structured space as one vector, in order; anything else stays. 994.
int enlist(Point &space);

}  // namespace morvik
