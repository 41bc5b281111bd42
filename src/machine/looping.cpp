// LOOP and REPEAT.
#include <algorithm>

#include "failure/custody.h"
#include "machine/calls.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "spaces/instructions.h"
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

// One round of a function that takes the index. Returns the message that ends the loop, 0 for none.
int runround(Level &inner, Loop &loop, std::int64_t index) {
  Level &level = *inner.caller;
  const int arguments = loop.function.arguments;
  if (!hasvalues(level, arguments - 1)) return messages::TOO_FEW_ARGUMENTS;
  if (arguments > 0) {
    if (stackfull(level)) return messages::STACK_FULL;
    pushindex(level, loop, index);
  }
  runinner(inner);
  const Point *expected = inner.floor + (arguments > 0 ? arguments - 2 : -1);
  if (level.sp == expected) return 0;
  joinpool(level.sp);
  while (level.sp > expected) droptop(level);
  return messages::LOOP_LEAVES_WRONG;
}

int runrounds(Level &level, Loop &loop, std::int64_t count, bool indexed) {
  if (count > 0 && loop.function.locals > 0) return messages::LOOP_LOCALS;
  if (count > 0 && loop.function.arguments < 0 && indexed) return messages::LOOP_NEADIC;
  const int below = std::max(loop.function.arguments - 1, 0);  // the arguments but for the index
  Point *const floor = indexed ? level.sp - below + 1 : level.floor;
  Level inner = innerlevel(level, loop.function, indexed ? floor : level.frame, floor);
  for (std::int64_t i = 1; i <= count; ++i) {
    if (!indexed)
      runinner(inner);
    else if (const int failure = runround(inner, loop, i); failure != 0)
      return failure;
  }
  return 0;
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
