// The loop. Its rules:
//  1. `sp` is stored in the Level before anything that may jump, so that the landing finds every live value: all slots
//     from the bottom to the innermost level's `sp` hold Points that own what they refer to.
//  2. Only handlers move `sp`. A handler that fails itself reports and leaves its own level; a scalar or array
//     instruction that fails reports and jumps, which drops every level down to level 0.
//  3. What a handler holds across a call goes into custody; no frame here keeps an object with a destructor.
//  4. The Programme is never changed but for the bindings of its names: recursion meets it whole.
//  5. A result in flight is not looked at, moved or dropped: the classes wait for the pool, and so does whoever else
//  reaches into the stack (joinpool). Nothing is in flight when a message is reported, when a jump leaves, when a
//     landing is armed, and when a run of level 0 ends.
//  6. An interrupt is taken between Points, never inside one, unless its handler offers a safe point of its own.
//  7. No value is loose here. The quick loop (quick.cpp), which runs bodies that run often, makes all whole before it
//     leaves anything to this one.
#include "machine/machine.h"

#include <algorithm>
#include <csetjmp>

#include "failure/hearing.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/contexts.h"
#include "machine/calls.h"
#include "machine/classes.h"
#include "machine/dispatch.h"
#include "machine/inspect.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "machine/naming.h"
#include "machine/quick.h"
#include "machine/quickcalls.h"
#include "machine/timing.h"
#include "spaces/counters.h"
#include "spaces/loose.h"
#include "spaces/messages.h"
#include "spaces/streams.h"
#include "spaces/symbols.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// The loop exists twice, with the timing hook and without, so that a hook that is off costs nothing.
enum class Hook { OFF, ON };

// For what storeinplace did: the first Point is charged with it, and the address and the store behind it run
// as any Points do.
Next chargestore(Level &level) {
  chargetime(level);
  for (int points = 2; points > 0; --points) {
    ++level.current;
    operators += 1;
    if (followrun) followrun(level, false);
  }
  level.instruction = level.current;
  stampstart(level);
  chargetime(level);
  return Next::FETCH;
}

// Reads the instruction number of what runs and gives the work to its handler, again as long as it asks for it.
template <Hook hook>
Next perform(Level &level) {
  if (hook == Hook::ON) {
    stampstart(level);
    if (storeinplace(level)) return chargestore(level);
  }
  for (;;) {
    const Action &action = actionof(level.instruction->instruction);
    const Admission admission = admit(level, action.needs);
    if (admission != Admission::RUN) return admission == Admission::PASS ? Next::FETCH : Next::LEAVE;
    const Next next = action.handler(level);
    if (next == Next::AGAIN) continue;
    if (hook == Hook::ON && next != Next::LEAVE) chargetime(level);
    return next;
  }
}

// Under a decision: is this Point passed over? Fails when there was no decision yet.
enum class Verdict { RUN, PASS, NONE };
Verdict verdict(const Level &level, const Point &point) {
  if ((point.type & CONDITIONAL) == 0) return Verdict::RUN;
  if (level.decision < 0) return Verdict::NONE;
  const int wanted = (point.type & YES) != 0 ? 1 : 0;
  return level.decision == wanted ? Verdict::RUN : Verdict::PASS;
}

// A value that is bound to a name; a function that is flagged so runs at once.
Next pushvalue(Level &level, const Point &value) {
  pushcopy(level, value);
  if (!isfunction(value)) return Next::FETCH;
  level.sp->type = value.programme->type;
  return (level.sp->type & ISOPERATOR) != 0 ? call(level) : Next::FETCH;
}

Next pushnamed(Level &level, Point &name) {
  const Point *value = resolve(level, name);
  if (!value || isend(*value)) return fail(level, messages::NO_MEANING);
  return pushvalue(level, *value);
}

Next pushlocal(Level &level, const Point &name) {
  const Point *local = level.frame + name.data_pointer->integer;
  if (local >= level.floor || local->rank == ranks::VARIABLE) return fail(level, messages::NO_MEANING);
  pushcopy(level, *local);
  return Next::FETCH;
}

// The address of a frame slot. It owns nothing, so that it may outlive the frame.
Next pushlocaladdress(Level &level, const Point &name) {
  Point address{};
  address.rank = ranks::ADDRESS;
  address.type = ISLOCAL | ISADDRESS;
  address.elements = 1;
  address.target = level.frame + name.data_pointer->integer;
  pushowned(level, address);
  return Next::FETCH;
}

Next pushaddress(Level &level, Point &name) {
  resolve(level, name);
  pushcopy(level, name);
  return Next::FETCH;
}

Next failsymbol(Level &level, const char *text) {
  joinahead();
  complain(text);
  return levelreturn(level);
}

// What a symbolic Point other than an instruction or a function means.
[[gnu::noinline]] Next pushsymbolic(Level &level, Point &point) {
  if (point.rank == ranks::UNUSED) return failsymbol(level, " Unused type:");
  if (point.rank == ranks::INVALID) return failsymbol(level, " Unusable symbol:");
  if (point.rank == ranks::LABEL && isend(*point.target)) return fail(level, messages::NO_MEANING);
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  switch (point.rank) {
    case ranks::VARIABLE:
      return pushnamed(level, point);
    case ranks::ADDRESS:
      return pushaddress(level, point);
    case ranks::LABEL:
      pushcopy(level, *point.target);
      return Next::FETCH;
    case ranks::LOCAL_VARIABLE:
      return pushlocal(level, point);
    case ranks::LOCAL_ADDRESS:
      return pushlocaladdress(level, point);
    default:
      pushcopy(level, point);
      return Next::FETCH;
  }
}

Next pushpoint(Level &level, Point &point) {
  if (const Verdict v = verdict(level, point); v != Verdict::RUN) {
    if (v == Verdict::PASS) return Next::FETCH;
    return fail(level, (point.type & YES) != 0 ? messages::NO_CHECK_BEFORE_YES : messages::NO_CHECK_BEFORE_NO);
  }
  if (!isspace(point)) return pushsymbolic(level, point);
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  pushcopy(level, point);
  return Next::FETCH;
}

template <Hook hook>
Next execute(Level &level) {
  level.instruction = level.current;
  switch (level.current->rank) {
    case ranks::OPERATOR:
      return perform<hook>(level);
    case ranks::FUNCTION:
      if (stackfull(level)) return fail(level, messages::STACK_FULL);
      pushcopy(level, *level.current);
      return (level.current->type & ISOPERATOR) != 0 ? call(level) : Next::FETCH;
    default:
      return pushpoint(level, *level.current);
  }
}

template <Hook hook>
void runloop(Level &level) {
  while (!isend(*level.current)) {
    safepoint();
    if (stepping && iswatched(level)) watch(level);
    if (hook == Hook::ON) {
      flopos = 0;
      if (followrun) followrun(level, false);
    }
    operators += 1;
    const Next next = execute<hook>(level);
    if (next == Next::FETCH) [[likely]]
      ++level.current;
    else if (next == Next::LEAVE)
      return;
  }
  reachend(level);
}

// A jump drops every level down to level 0, while their frames still exist. Values that they pushed are released; what
// they consumed is gone, so that the stack may end lower than it was when level 0 made the call.
void droplevels() {
  Point *top = running->sp;
  for (; running->level != 0; running = running->caller) popcontexts(*running);
  if (top < running->sp) running->sp = top;
  while (top > running->sp) dereferencepoint(top--);
}

// Where the jump ends.
void landjump(Level &level) {
  running = &level;
  level.sp = keepwhole(level.sp);
  if (endprocess || printing) {
    printing = 0;
    popcontexts(level);
    return;
  }
  if (conversing) std::fputs("\nException processing:...", outputstream);
  levelreturn(level);
}

void joinrunning() {
  joinpool(running->sp);
}

// A run at level 0 inside another (the Inspect prompt) puts the outer landing back.
void runlanded(Level &level) {
  Landing outer;
  armlanding(outer, droplevels, joinrunning);
  if (setjmp(error_jump) != 0)
    landjump(level);
  else if (opstime)
    runloop<Hook::ON>(level);
  else
    runloop<Hook::OFF>(level);
  disarmlanding(outer);
}

// A run of level 0: a text, or a line at the Inspect prompt inside of one, which counts for itself first.
void runtimed(Level &level) {
  const bool timed = opstime || timing || performance || processor_performance;
  if (!timed) return runlanded(level);
  const double outertime = prevtime, outeroperators = operators, outeroperations = operations;
  if (level.caller) operators = operations = 0;
  tval = prevtime = clocktime();
  runlanded(level);
  if (!level.caller) {
    totaltime += std::max(clocktime() - prevtime, 0.0);
    return;
  }
  prevtime = outertime;
  operators += outeroperators;
  operations += outeroperations;
}

// What the run of a level takes is not charged to the instruction of the outer one.
void runstamped(Level &level) {
  if (followrun) followrun(level, true);
  const double entered = tval = clocktime();
  level.stamped = !(stepping && iswatched(level));
  runloop<Hook::ON>(level);
  duration = clocktime() - entered;
  flopos = 0;
  level.caller->stamp += duration;
  level.caller->operated = operations;
}

}  // namespace

Next runpoint(Level &level) {
  return execute<Hook::OFF>(level);
}
void runpoints(Level &level) {
  runloop<Hook::OFF>(level);
}

void runinner(Level &inner) {
  runinnerloose(inner, nullptr);
  makewhole(inner.caller->sp);
}

void runinnerloose(Level &inner, Rounds *rounds) {
  Level &outer = *inner.caller;
  // The outer level's own record of the chain keeps what is pushed until it is popped, so that a jump pops it too.
  if (inner.names) {
    outer.meaning = pushtable(outer.meaning, inner.names);
    rounds = nullptr;
  }
  beginlevel(inner, outer.meaning, outer.sp);
  running = &inner;
  if (opstime)
    runstamped(inner);
  else
    runbody(inner, decoded(inner, rounds != nullptr), rounds);
  running = &outer;
  outer.sp = inner.sp;
  if (inner.names) outer.meaning = popsymtabs(outer.meaning);
}

Point *machine(Point *start, Context *meaning, Point *frame, Point *floor, Point *sp, Entry **memory, int level,
               int slot) {
  const bool ownsframe = !running || frame != running->frame || floor != running->floor;
  Call *const vacant = running ? running->vacant : calls;
  Level self({running, start, nullptr, nullptr, frame, floor, memory, level, slot, vacant, ownsframe});
  beginlevel(self, meaning, sp);
  running = &self;
  if (level == 0)
    runtimed(self);
  else
    runloop<Hook::OFF>(self);
  running = self.caller;
  return self.sp;
}

}  // namespace morvik
