// Text to Programme: fill, the function that others call.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"
#include "spaces/symbols.h"

namespace morvik {

// Compiles one text into `programme` (storage for PROGRAMME_POINTS, owned by the caller, released by cleanup).
// Reads from `string` if that is not null, moving it on to the position reached, else from `stream`.
// Returns the number of Points written, END included; 0, with an empty Programme, after a message that jumps: the rest
// of that text is read and dropped. Reports 27, 74, 79, 150, 151, 152, 807, 808, 809, 810, 982, 1100, and what reshape
// reports of a literal's shape.
std::int64_t fill(Point *programme, Context *chain, Point *stackposition, std::FILE *stream, const char **string,
                  int flag);
// Did the text that fill compiled last end with its input?
bool inputended();

}  // namespace morvik
