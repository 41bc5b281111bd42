// Points by their fields. Nothing in the interpreter calls these: they are for the prompt of a debugger.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

// Writes the names of the flags that are set, each after a blank, to standard output; " END" for none.
void writeflags(std::uint32_t word);
// The same after a blank and a prefix, if there is one.
void detail_type(const char *prefix, std::uint32_t word);
// Writes a line with a Point whole: flags, rank, depth, elements, name or shape, counts.
void writefields(const Point *point);

}  // namespace morvik
