// What the machine counts about itself.
#pragma once

#include <cstdint>

#include "spaces/instructions.h"

namespace morvik {

extern double operators;   // Points executed in this run
extern double operations;  // element operations done in this run
extern double flopos;      // floating point operations of the present instruction

// One row an instruction number: sums of time, of its square, of operations and of flops.
struct Timing {
  double time, squares, operations, flops;
};
extern Timing InstructionTiming[instructions::COUNT];

}  // namespace morvik
