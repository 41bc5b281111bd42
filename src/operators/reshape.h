// RESHAPE: the same elements in another shape.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Gives `data` the shape that the elements of `shape` say, fastest axis first, cutting off or repeating elements as
// needed; both Points are in place, usually on the stack. Returns 0, with the blocks of `shape` given up or moved
// into `data`, or 1 after reporting 10, 11, 113, 991, 994, 1100, 1101 or 1102, with both left whole. 27 jumps.
int reshape(Point *data, Point *shape, const Point *instruction);
// The same for a vector of plain records that is short, and becomes one, whose extent is a plain integer. False, with
// nothing done, for any other, and where there is no storage.
bool reshapeshort(Point &vector, const Element &extent);

}  // namespace morvik
