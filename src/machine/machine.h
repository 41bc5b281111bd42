// The virtual machine: runs a Programme against the value stack.
#pragma once

#include "frontend/symtab.h"
#include "spaces/point.h"

// The value stack of a bank. Slot 0 is never used: the empty stack has its top there.
inline constexpr std::size_t STACK_POINTS = 16584;

// The last usable slot of the stack in use.
extern Point *stacktop;

// Runs the Programme from `start` to its END (a Point of type 0). `frame` is where the locals begin, `floor` the lowest
// slot that the run may consume, `sp` the top; `memory` the bank's table slot; `level` 0 for the driver, where failures
// land; `slot` the work slot. Returns the new top. At level 0 the top is echoed.
Point *machine(Point *start, Context *meaning, Point *frame, Point *floor, Point *sp, Entry **memory, int level,
               int slot);
