// The text of a script, read whole.
#pragma once

#include <cstddef>

#include "api/places.h"

namespace morvik {

// Reads the file into `source`, whose name, bytes and lines are the caller's to give back with dropscript. A first line
// that begins with #! is passed over, a carriage return ahead of a line feed left out. "-" is the standard input. What
// hinders it is told on standard error; returns whether there was nothing.
bool readscript(Source &source, const char *path);
void dropscript(Source &source);

// Complains on standard error: "morvik-run: WHAT: WHY". Returns false.
bool refusefile(const char *what, const char *why);
inline constexpr char NO_STORAGE[] = "out of storage";

}  // namespace morvik
