// Trace, step and the Inspect prompt, and the timing hook: what stands before and after a Point.
#pragma once

#include "machine/level.h"

extern char Trace, Step;  // the global switches, which hold across calls

// Is this level or all of the machine being traced or stepped?
inline bool watched(const Level &level) {
  return Trace || Step || level.trace || level.step;
}
// Before a Point: writes the trace line, and holds the Inspect prompt.
void watch(Level &level);

// The timing hook: the start of an instruction, and the charge to its row afterwards.
void beginstamp(Level &level);
void charge(Level &level);
