// RAVEL and SHAPE: in constant time, message 27 alone.
#pragma once

#include "spaces/point.h"

namespace morvik {

// All elements as one vector: constant time. Symbolic Points stay. Message 27 alone.
void ravel(Point &space);
// The extents as an integer vector: constant time. A scalar and a symbolic Point have none, but for an ADDRESS, whose
// name's characters are the answer. Message 27 alone.
void extents(Point &space);

}  // namespace morvik
