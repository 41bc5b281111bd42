// Failure: the report of a numbered message, and the ways on from there.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

namespace morvik {

// Writes a Point in display form after a title, for the reports. What does so is above this layer, which sets the
// hook; without it nothing is written.
extern void (*dumppoint)(std::FILE *stream, const char *title, Point *point);

// Reports a message on the error stream, with the dump of the instruction for a positive number other than 27.
// `stackpointer` is the address of the caller's stack top, or null; `instruction` the Point at work, or null.
// Returns, but for messages::GOODBYE and for signals, which jump.
void exception(std::int32_t number, Point **stackpointer, const Point *instruction);
// exception(number, null, null), then the jump.
[[noreturn]] void exceptionjump(std::int32_t number);
// exception(...), then the jump: how an array or scalar instruction fails.
[[noreturn]] void exceptionjump(std::int32_t number, Point **stackpointer, const Point *instruction);
// The end of work that returned a message number, which may be INTERRUPTED.
inline constexpr std::int32_t INTERRUPTED = -1;
[[noreturn]] void failwith(std::int32_t message, Point **stackpointer, const Point *instruction);

}  // namespace morvik
