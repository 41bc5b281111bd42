// REDUCE and REDUCELASTAXIS: a space folded along one axis with the scalar instruction in the modifier. Both work on
// the top in place. An empty space, and a scalar, is its own reduction. Report 75, 79, 145, 991, 994 and what the
// scalar instruction reports for its operands, and jump, the operand in place; 27.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Along the rows: shape record 0.
void reduce(Point **stackpointer, const Point *instruction, Point *context);
// Along the slowest axis: the last shape record.
void reducelastaxis(Point **stackpointer, const Point *instruction, Point *context);
// GROUP, which is reserved: message 994.
[[noreturn]] void group(Point **stackpointer, const Point *instruction, Point *context);

}  // namespace morvik
