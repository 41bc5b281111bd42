// The virtual machine: runs a Programme against the value stack.
#pragma once

#include "machine/level.h"
#include "spaces/point.h"
#include "spaces/symbols.h"

namespace morvik {

// Runs the Programme from `start` to its END (a Point of type 0). `frame` is where the locals begin, `floor` the lowest
// slot that the run may consume, `sp` the top; `memory` the bank's table slot; `level` 0 for the driver, where failures
// land; `slot` the work slot. Returns the new top. At level 0 the top is echoed.
Point *machine(Point *start, Context *meaning, Point *frame, Point *floor, Point *sp, Entry **memory, int level,
               int slot);

struct Rounds;

// Runs it on what its caller has on the stack, and gives it the new top; a body under its own table if it has one. What
// the run took is not charged to the caller's instruction.
void runinner(Level &inner);
// The same where the caller can do with loose values on the stack; many rounds where `rounds` is not null.
void runinnerloose(Level &inner, Rounds *rounds);

// Runs one Point of a level as the loop does, or all of them from the present one on, without the timing hook.
Next runpoint(Level &level);
void runpoints(Level &level);

}  // namespace morvik
