// Where the time of a script goes, by function and line.
#pragma once

#include "runner/choices.h"

namespace morvik {

// Follows the runs from now on.
void beginprofile();
// Between two texts: what goes by until the next Point is nobody's.
void pauseprofile();
// Writes what was found on standard error: as tables, or as one line for each stack of functions.
void endprofile(Profile form, const char *script);

}  // namespace morvik
