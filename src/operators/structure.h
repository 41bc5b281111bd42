// The instructions that look at the structure of a space: make it a vector, turn it, cut it, join it, open it up. Each
// works on Points in place, usually on the stack, and returns a message number with its operands left whole, or 0.
// Symbolic Points are never read as spaces. Message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

// The leaves of a structured space as one vector, in order; anything else stays. 994.
int enlist(Point &space);
// All elements as one vector: constant time. Symbolic Points stay. Message 27 alone.
void ravel(Point &space);
// The extents as an integer vector: constant time. A scalar and a symbolic Point have none, but for an ADDRESS, whose
// name's characters are the answer. Message 27 alone.
void extents(Point &space);
// Encloses the value in a one-element vector, a scalar only as an `atom`. Message 27 alone.
void enclose(Point &space, bool atom);
// Takes out what the one record of a structured space encloses. 973 for more than one record.
int disclose(Point &space);
// The first element of a vector, an enclosed space within its enclosure, or the first slice along the slowest axis.
// Scalars, empty spaces and symbolic Points stay. 994.
int first(Point &space);
// The first element as a vector, or what it encloses.
int firstelement(Point &space);
// All but the first element, or but the first slice along the slowest axis. 994, also for symbolic Points.
int rest(Point &space);
// All but the first element as a vector.
int restelements(Point &space);
// All records, and those of each row, in reverse order. 994.
int reverse(Point &space);
int mirror(Point &space);
// The order of the axes reversed. 159, 970, 994.
int transpose(Point &space);
// Joins two values in the place of `left`; `right` is given up. 994.
int catenate(Point &left, Point &right);
// Keeps what stands where the mask is above 0, along the fastest or the slowest axis, in the place of `mask`; `data` is
// given up. 4, 31, 994.
int compress(Point &mask, Point &data);
int compresslastaxis(Point &mask, Point &data);
// Repeats the data along a new slowest axis, in the place of `count`; `data` is given up. 994; what speaks against the
// extent is reported by reshape itself, and REPORTED returned.
inline constexpr int REPORTED = -1;
int replicate(Point &count, Point &data, const Point *instruction);
