// TRANSPOSE. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a message number
// with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// The order of the axes reversed. 159, 970, 994.
int transpose(Point &space);

}  // namespace morvik
