// LOOP and REPEAT.
#include <algorithm>

#include "failure/custody.h"
#include "machine/calls.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "machine/quick.h"
#include "spaces/instructions.h"
#include "spaces/loose.h"
#include "spaces/messages.h"
#include "spaces/work.h"

namespace morvik {

namespace {

constexpr std::uint16_t REPEAT_MODIFIER = instructions::DISCARD;  // the modifier of REPEAT

// What a loop holds while it runs.
struct Loop {
  Point function;
  Element *counter;  // the block of the index that is handed out, null until there is one
  Custody function_kept, counter_kept;
};

void releasecounter(Custody &c) {
  dereference(*static_cast<Element **>(c.held));
}

// The index scalar of this round. Its block is written over as long as nobody else holds it.
void pushindex(Level &level, Loop &loop, std::int64_t index) {
  if (!loop.counter || referencecount(loop.counter) != 1) {
    Element *fresh = newelement(tags::INTEGER, forms::NUMBER);
    release(loop.counter);
    loop.counter = fresh;
  }
  loop.counter->integer = index;
  Point point{};
  point.type = ISSCALAR | HASINTEGER;
  point.elements = 1;
  point.data_pointer = loop.counter;
  pushcopy(level, point);
}

// The present round of a function that takes the index, and those after it that need no look at what it left. Returns
// the message that ends the loop, 0 for none.
int runround(Level &inner, Loop &loop, Rounds &rounds) {
  Level &level = *inner.caller;
  if (level.sp < level.floor + (loop.function.arguments - 2)) return messages::TOO_FEW_ARGUMENTS;
  if (rounds.indexed) {
    if (stackfull(level)) return messages::STACK_FULL;
    pushindex(level, loop, rounds.index);
  }
  runinnerloose(inner, &rounds);
  if (level.sp == rounds.expected) return 0;
  joinpool(level.sp);
  while (level.sp > rounds.expected) droptop(level);
  return messages::LOOP_LEAVES_WRONG;
}

int runrounds(Level &level, Loop &loop, std::int64_t count, bool indexed) {
  if (count > 0 && loop.function.locals > 0) return messages::LOOP_LOCALS;
  if (count > 0 && loop.function.arguments < 0 && indexed) return messages::LOOP_NEADIC;
  const int arguments = loop.function.arguments, below = std::max(arguments - 1, 0);  // without the index
  Point *const floor = indexed ? level.sp - below + 1 : level.floor;
  Level inner = innerlevel(level, loop.function, indexed ? floor : level.frame, floor);
  Rounds rounds{0, count, nullptr, false};
  if (indexed) {
    rounds.expected = floor + (arguments > 0 ? arguments - 2 : -1);
    rounds.indexed = arguments > 0;
  }
  int failure = 0;
  while (++rounds.index <= count && failure == 0) {
    if (indexed)
      failure = runround(inner, loop, rounds);
    else
      runinnerloose(inner, &rounds);
  }
  makewhole(level.sp);
  return failure;
}

}  // namespace

Next doloop(Level &level) {
  if (!isfunction(level.sp[0])) return fail(level, messages::LOOP_NO_FUNCTION);
  const Point &top = level.sp[-1];
  if (top.rank != ranks::SCALAR || top.data_pointer[0].tag != tags::INTEGER || top.data_pointer[0].integer < 0)
    return fail(level, messages::LOOP_COUNT);
  const std::int64_t count = top.data_pointer[0].integer;
  Loop loop;
  loop.function = *level.sp--;
  loop.counter = nullptr;
  takecustody(loop.function_kept, releasepoint, &loop.function);
  takecustody(loop.counter_kept, releasecounter, &loop.counter);
  droptop(level);
  const int failure = runrounds(level, loop, count, level.instruction->modifier != REPEAT_MODIFIER);
  endcustody(loop.counter_kept);
  endcustody(loop.function_kept);
  dereference(loop.counter);
  dereferencepoint(&loop.function);
  return failure == 0 ? Next::FETCH : fail(level, failure);
}

}  // namespace morvik
