// The counters.
#include "spaces/counters.h"

namespace morvik {

double operators;
double operations;
double flopos;
Timing InstructionTiming[instructions::COUNT];

}  // namespace morvik
