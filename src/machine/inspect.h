// Trace, step and the Inspect prompt: what comes before a Point.
#pragma once

#include "machine/level.h"

namespace morvik {

extern char Trace, Step;  // the global switches, which hold across calls

// Is this level or all of the machine being traced or stepped?
inline bool iswatched(const Level &level) {
  return Trace || Step || level.trace || level.step;
}
// Before a Point: writes the trace line, and holds the Inspect prompt.
void watch(Level &level);

}  // namespace morvik
