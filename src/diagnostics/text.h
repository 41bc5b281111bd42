// Values to text: the one printer of Points in its two forms, and the short texts of names and memo keys. All of it is
// for the main thread.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

// Writes `prefix`, then the Point. `source` non-zero gives the form that the scanner reads back at full precision, 0
// the display form for people; an `indent` (function nesting) above 0 counts as source for symbolic Points. Printing
// may retag whole reals as integers and set COMPLEXED, so nothing may be in flight.
void disass(std::FILE *stream, const char *prefix, Point *point, int indent, int source);
// disass in display form with PrintOut set for the call.
void dump(std::FILE *stream, const char *prefix, Point *point);
// The Points from bottom to top in source form, a line each, then a "." line.
void dumpstack(std::FILE *stream, Point *bottom, Point *top);

// Writes the names of the flags that are set, each after a blank, to standard output; " END" for none.
void type(std::uint32_t word);
// The same after a blank and a prefix, if there is one.
void detail_type(const char *prefix, std::uint32_t word);
// Writes a line with a Point whole: flags, rank, depth, elements, name or shape, counts.
void at(const Point *point);

// Base-16 text of its own, digits @ to O from the lowest up. Returns the length; at most 17 bytes for itox, 40 for
// rtox, no terminating zero. Different values have different texts; the two zeros and all NaN are one value each.
int itox(char *buffer, std::int64_t value);
int rtox(char *buffer, double value);

// The sigil of a name's rule of access, 0 for none.
char sigilof(const Point &name);
// The text of a name that stands on the stack: a counted string, owned by the caller. A character space gives its
// bytes; an ADDRESS "@" and its written name; what names nothing the empty text. Message 27.
char *TOAddr(const Point *point);
// Appends to a counted string of count 1 (null: to a new one) the short text of any value, equal for equal values and
// different for different ones; returns the block to use. The string is taken over: a jump, by message 27 or an
// interrupt, releases it.
char *TOAddr1(char *text, const Point *point);

// A line of elapsed time on standard output: minutes, seconds, milliseconds, microseconds.
void writetime(double seconds);

// Fills Instructionlengths.
void initinstrlens();
extern std::uint8_t Instructionlengths[270];
