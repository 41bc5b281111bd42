// ENCLOSE and DISCLOSE. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a
// message number with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Encloses the value in a one-element vector, a scalar only as an `atom`. Message 27 alone.
void enclose(Point &space, bool atom);
// Takes out what the one record of a structured space encloses. 973 for more than one record.
int disclose(Point &space);

}  // namespace morvik
