// Short texts that are compared and looked up, not read: names on the stack, the keys of results.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// Base-16 text of its own, digits @ to O from the lowest up. Returns the length; at most 17 bytes for itox, 40 for
// rtox, no terminating zero. Different values have different texts; the two zeros and all NaN are one value each.
int itox(char *buffer, std::int64_t value);
int rtox(char *buffer, double value);

// The sigil of a name's rule of access, 0 for none.
char sigilof(const Point &name);
// The text of a name on the stack: a counted string, owned by the caller. A character space gives its bytes; an ADDRESS
// "@" and its written name; what names nothing the empty text. Message 27.
char *TOAddr(const Point *point);
// Appends to a counted string of count 1 (null: to a new one) the short text of any value, equal for equal values and
// different for different ones; returns the block to use. The string is taken over: a jump, by message 27 or an
// interrupt, releases it.
char *TOAddr1(char *text, const Point *point);

}  // namespace morvik
