// FIRST and REST. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a message
// number with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// The first element of a vector, an enclosed space within its enclosure, or the first slice along the slowest axis.
// Scalars, empty spaces and symbolic Points stay. 994.
int first(Point &space);
// Makes a scalar of a copy of a plain record, which owns nothing. False, with nothing done, for any other record, and
// where there is no storage.
bool makescalar(Point &scalar, const Element &record);
// The first element as a vector, or what it encloses.
int firstelement(Point &space);
// All but the first element, or but the first slice along the slowest axis. 994, also for symbolic Points.
int rest(Point &space);
// All but the first element as a vector.
int restelements(Point &space);

// The flag word and the depth of what REST leaves of a vector of two elements or more. With `exact` its own are known
// to be those that its records ask for, so that in most cases few records need be looked at. An interrupt jumps.
struct Flags {
  std::uint32_t type;
  std::int16_t depth;
};
Flags restflags(const Point &vector, bool exact);
// Takes the first record from a vector that nobody else sees, gives it these flags, and returns the record, which owns
// what it did. Nothing fails.
Element takefirst(Point &vector, const Flags &flags);

}  // namespace morvik
