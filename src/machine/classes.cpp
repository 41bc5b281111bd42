// What the checks of the argument classes come to: a refusal, the empty rule, the wait for the pool.
#include "machine/classes.h"

#include <algorithm>

#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/counters.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// Do the operands pass the gate of the pool? Those that are there: the count is checked only afterwards.
bool passesgate(const Level &level, int operands) {
  std::int64_t elements = 0;
  for (int i = 0; i < operands && level.sp - i >= level.floor; ++i)
    elements = std::max<std::int64_t>(elements, level.sp[-i].elements);
  return goesparallel(elements);
}

}  // namespace

// The classes that never wait do not take the result in flight either. What the join adds to the count of operations
// was not done by this instruction.
void awaitpool(Level &level, const Needs &needs) {
  const bool taken = resultinflight > level.sp - needs.operands;
  if (needs.wait != Wait::ALWAYS && !(needs.wait == Wait::WHEN_LARGE && passesgate(level, needs.operands)) && !taken)
    return;
  wait_for_coprocessors(level.sp, needs.operands);
  level.operated = operations;
}

Admission refuse(Level &level, int number) {
  fail(level, number);
  return Admission::LEAVE;
}

bool emptyrule(Level &level) {
  if (isempty(level.sp[0])) {
    droptop(level);
    return true;
  }
  if (!isempty(level.sp[-1])) return false;
  dereferencepoint(level.sp - 1);
  level.sp[-1] = level.sp[0];
  --level.sp;
  return true;
}

}  // namespace morvik
