// The instructions that decide what runs next.
#include <utility>

#include "arithmetic/generator.h"
#include "failure/custody.h"
#include "frontend/symtab.h"
#include "machine/calls.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/counters.h"
#include "spaces/hypercomplex.h"
#include "spaces/instructions.h"
#include "spaces/messages.h"
#include "spaces/parts.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// Turns a value into the empty vector in place.
void emptyout(Point &value) {
  Element *shape = newshape(0);
  dereferencepoint(&value);
  value = {};
  value.rank = ranks::VECTOR;
  value.type = EMPTY_VECTOR;
  value.depth = 1;
  value.shape_pointer = shape;
}

// Is a real of probability x true this time?
bool decide(double x) {
  if (x >= 1) return true;
  if (x <= 0) return false;
  return drawbeside(&prngs_seed, x) < x;
}

// The truth that CHECK finds in one element, 0 to 1; below 0 for an element that has none.
double truthof(const Element &element) {
  switch (element.tag) {
    case tags::INTEGER:
      return element.integer > 0 ? 1 : 0;
    case tags::REAL:
      return clamped(element.real);
    default:
      return partsof(element.tag) > 1 ? 1 - contradiction(element) : -1;
  }
}

// Point number n of the Programme, counted from 1; null past its end.
Point *pointnumbered(const Level &level, std::int64_t n) {
  const std::ptrdiff_t here = level.current - level.start;
  if (n - 1 <= here) return level.start + (n - 1);
  for (Point *p = level.current; !isend(*p); ++p)
    if (p - level.start == n - 1) return p;
  return nullptr;
}

// IF_YES and IF_NO. What is decided is a copy of the Point, turned so that it reads as the instruction alone.
Next rundecided(Level &level, int wanted, int missing) {
  if (level.decision < 0) return fail(level, missing);
  const Point &point = *level.instruction;
  const bool allowed = level.decision == wanted;
  if (point.modifier != instructions::BARE) {
    if (!allowed) return Next::FETCH;
    level.rotation = point;
    level.rotation.instruction = point.modifier;
    level.rotation.modifier = static_cast<std::uint16_t>(point.elements);
    level.rotation.elements = 0;
    level.instruction = &level.rotation;
    return Next::AGAIN;
  }
  if (!hasvalues(level, 1)) return fail(level, messages::TOO_FEW_ARGUMENTS);
  joinpool(level.sp);
  if (allowed) return executetop(level);
  droptop(level);
  return Next::FETCH;
}

}  // namespace

Next doif(Level &level) {
  std::swap(level.sp[0], level.sp[-1]);
  const Point &condition = level.sp[0];
  if (!isspace(condition) || !isscalarlike(condition)) return fail(level, messages::IF_NOT_ONE_ELEMENT);
  const Element &element = condition.data_pointer[0];
  if (element.tag != tags::INTEGER && element.tag != tags::REAL) return fail(level, messages::IF_TYPE);
  if (!(element.tag == tags::INTEGER ? element.integer > 0 : decide(element.real))) emptyout(level.sp[-1]);
  droptop(level);
  return Next::FETCH;
}

Next docheck(Level &level) {
  const Point &top = level.sp[0];
  if (!isspace(top) || !isscalarlike(top)) {
    level.decision = top.type == ISEMPTY ? 0 : 1;
    droptop(level);
    return Next::FETCH;
  }
  const double d = truthof(top.data_pointer[0]);
  if (d < 0) return fail(level, messages::CHECK_TYPE);
  // A value that a draw decided is no result to keep: RESULT looks for the mark.
  if (d > 0 && d < 1 && level.header) level.header->type |= ISPROBABLE;
  level.decision = decide(d) ? 1 : 0;
  droptop(level);
  return Next::FETCH;
}

Next doif_yes(Level &level) {
  return rundecided(level, 1, messages::NO_CHECK_BEFORE_YES);
}
Next doif_no(Level &level) {
  return rundecided(level, 0, messages::NO_CHECK_BEFORE_NO);
}

Next dojump(Level &level) {
  const Point &top = level.sp[0];
  if (isspace(top) && (top.type & EMPTY_VECTOR) == EMPTY_VECTOR) {
    droptop(level);
    return Next::FETCH;
  }
  if (!isspace(top) || top.elements == 0 || !top.data_pointer || top.data_pointer[0].tag != tags::INTEGER ||
      top.data_pointer[0].integer < 0)
    return fail(level, messages::JUMP_ARGUMENT);
  const std::int64_t n = top.data_pointer[0].integer;
  droptop(level);
  if (n == 0) return endlevel(level);
  Point *target = pointnumbered(level, n);
  if (!target) return reachend(level);
  level.current = target;
  return Next::JUMPED;
}

Next dodip(Level &level) {
  Point aside = level.sp[-1];
  level.sp[-1] = level.sp[0];
  --level.sp;
  Custody kept;
  takecustody(kept, releasepoint, &aside);
  const bool isfun = isfunction(*level.sp);
  const Next next = isfun ? call(level) : fail(level, messages::EXECUTE_ARGUMENT);
  endcustody(kept);
  if (!isfun) {
    dereferencepoint(&aside);
    return next;
  }
  if (stackfull(level)) {
    dereferencepoint(&aside);
    return next == Next::LEAVE ? next : fail(level, messages::STACK_FULL);
  }
  pushowned(level, aside);
  return next;
}

Next dodeep(Level &level) {
  return dodip(level);
}

Next dowipe(Level &level) {
  if (level.meaning->table) hashwipe(level.meaning->table);
  return Next::FETCH;
}

// Comments and labels pass uncounted.
Next donoop(Level &level) {
  if (level.instruction->modifier == instructions::CONTEXT || level.instruction->data_pointer)
    operators -= 1;
  else
    operations += 1;
  return Next::FETCH;
}

Next doreturn(Level &level) {
  return endlevel(level);
}
Next dofunctionend(Level &level) {
  return endlevel(level);
}

}  // namespace morvik
