// Values to text: the one printer of Points in its two forms. For the main thread alone.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/instructions.h"
#include "spaces/point.h"

namespace morvik {

// Writes `prefix`, then the Point. `source` non-zero gives the form that the scanner reads back at full precision, 0
// the display form for people; an `indent` (function nesting) above 0 counts as source for symbolic Points. Printing
// may retag whole reals as integers and set COMPLEXED, so nothing may be in flight.
void disass(std::FILE *stream, const char *prefix, Point *point, int indent, int source);
// disass in display form with printing set for the call.
void dump(std::FILE *stream, const char *prefix, Point *point);
// The Points from bottom to top in source form, a line each, then a "." line.
void dumpstack(std::FILE *stream, Point *bottom, Point *top);

// A line of elapsed time on standard output: minutes, seconds, milliseconds, microseconds.
void writetime(double seconds);

// How many bytes the name of each instruction takes with its zero, for whoever copies names; initinstrlens counts them.
extern std::uint8_t Instructionlengths[instructions::COUNT];
void initinstrlens();

}  // namespace morvik
