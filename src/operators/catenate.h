// CATENATE. Works in place, usually on the stack. A symbolic Point is never read as a space. Returns a message number
// with the operands left whole, or 0; message 27 and an interrupt jump.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Joins two values in the place of `left`; `right` is given up. 994.
int catenate(Point &left, Point &right);

// Appends to a vector that nobody else sees, in its own block, as catenate would: a few records of the kinds of a flag
// word, which own nothing or are handed over; and a value, which is given up, of so few records that there is
// no safe point among them. The depth of the vector must not be below that of its records. False, with nothing done,
// where that can't be.
bool appendrecords(Point &vector, const Element *records, std::uint32_t count, std::uint32_t type, std::int16_t depth);
bool appendvalue(Point &vector, Point &value);

// Records that own nothing, what a flag word says of them, and how deep they are.
struct PlainRecords {
  const Element *records;
  std::uint32_t count, type;
  std::int16_t depth;
};
// Both in a new vector. False where there is no storage.
bool joinplain(Point &joined, const PlainRecords &left, const PlainRecords &right);

}  // namespace morvik
