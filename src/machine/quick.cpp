// The quick loop. Its rules, beside those of the loop in machine.cpp:
//  1. An operation does all that its Points would do, or nothing: then the loop of the machine runs the first of them,
//     after all loose values were made whole. So the machine reports, traces and draws; nothing here does.
//  2. The top and the counters are brought up to date (synchronise) before anything that may jump or look.
//  3. While a result is in flight, no operation is quick. While the run is watched, the level is the loop's.
//  4. An interrupt is taken between two Points: at jumps, calls and rounds, and wherever the loop of the machine is.
#include "machine/quick.h"

#include "failure/jump.h"
#include "failure/signals.h"
#include "machine/inspect.h"
#include "machine/leave.h"
#include "machine/machine.h"
#include "machine/quickflow.h"
#include "machine/quickscalars.h"
#include "machine/quickspaces.h"
#include "machine/quickvalues.h"

namespace morvik {

namespace {

bool iswatchedrun(const Level &level) {
  return stepping && iswatched(level);
}

// Runs the present Point of the level as the loop of the machine does, and those after it as long as a result is in
// flight. False: the level is left.
[[gnu::noinline]] bool runslowly(Level &level) {
  do {
    makewhole(level.sp);
    safepoint();
    operators += 1;
    const Next next = runpoint(level);
    if (next == Next::LEAVE) return false;
    if (next == Next::FETCH) ++level.current;
  } while (resultinflight && !isend(*level.current) && !iswatchedrun(level));
  return true;
}

// Takes the result of a round of EACH, and hands out the next element. False, with nothing done, where one of them is
// no plain number: what is otherwise is the caller's.
[[gnu::always_inline]] inline bool nextelement(const Quickly &q, Rounds &rounds) {
  const Element &next = rounds.elements[rounds.index];
  const std::uint32_t kind = next.tag == tags::INTEGER ? HASINTEGER : HASREAL;
  if ((next.tag != tags::INTEGER && next.tag != tags::REAL) || next.attributes != 0 || (rounds.flags & ~kind) != 0 ||
      !isloose(*q.sp))
    return false;
  setrecord(rounds.results[*rounds.made], *q.sp);
  ++*rounds.made;
  rounds.kinds |= q.sp->type & KIND_BITS;
  putloose(*q.sp, LOOSE | ISSCALAR | kind, next.form, static_cast<std::uint64_t>(next.integer));
  return true;
}

// Begins another round if there is one to run. What only the caller can do, or report, ends the rounds.
[[gnu::always_inline]] inline bool beginround(Quickly &q, Rounds &rounds) {
  if (rounds.index >= rounds.count || (rounds.expected && q.sp != rounds.expected)) return false;
  if (isinterrupted() || resultinflight) [[unlikely]]
    return false;
  if (rounds.elements && !nextelement(q, rounds)) return false;
  if (rounds.indexed) {
    if (q.sp < rounds.least || isfull(q)) return false;
    pushloose(q, LOOSE_INTEGER, forms::NUMBER, rounds.index + 1);
  }
  ++rounds.index;
  q.level.caller->sp = q.sp;
  q.level.decision = -1;
  q.level.trace = q.level.step = false;
  q.op = q.ops;
  return true;
}

// Has the level neither locals to release nor contexts to go back from?
inline bool leaveseasily(const Level &level) {
  return (!level.ownsframe || level.frame == level.floor) && level.meaning == level.entry &&
         level.entry->uses == level.entryuses;
}

enum class Left { LEVEL, LOOP };

// Addresses of labels, one jump an operation: each has a place of its own for the processor to learn from.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"

// Runs operations until the level is left, or is to go on in the loop of the machine.
Left runoperations(Level &level, const Op *ops, Rounds *rounds) {
  static const void *const places[] = {
#define QUICK(name, replaces, effect, meaning) &&at_##name,
#include "tables/quick.def"
#undef QUICK
  };
  if (isinterrupted()) {
    makewhole(level.sp);
    safepoint();
  }
  Quickly q{level, ops, ops + (level.current - level.start), level.sp, 0, 0, 0};
  Then then = Then::LOOK;
  goto look;

next:
  goto *places[static_cast<unsigned>(q.op->code)];
#define QUICK(name, replaces, effect, meaning)       \
  at_##name : then = quick_##name(q);                \
  if (then == Then::NEXT) [[likely]]                 \
    goto *places[static_cast<unsigned>(q.op->code)]; \
  goto rest;
#include "tables/quick.def"
#undef QUICK

rest:
  if ((then == Then::LEFT || then == Then::ENDED) && rounds && leaveseasily(level) && beginround(q, *rounds)) goto next;
  if (then != Then::LOOK) synchronise(q);  // a call that returned was synchronised before
look:
  level.current = q.op->point;
  switch (then) {
    case Then::LOOK:
      if (resultinflight && !isend(*level.current) && !runslowly(level)) return Left::LEVEL;
      break;
    case Then::LEFT:
    case Then::ENDED:
      level.instruction = level.current;
      if (then == Then::ENDED)
        reachend(level);
      else
        endlevel(level);
      if (!rounds) return Left::LEVEL;
      q.sp = level.sp;
      if (beginround(q, *rounds)) goto next;
      return Left::LEVEL;
    default:
      if (!runslowly(level)) return Left::LEVEL;
  }
  if (iswatchedrun(level)) return Left::LOOP;
  q.sp = level.sp;
  q.op = ops + (level.current - level.start);
  goto next;
}

#pragma GCC diagnostic pop

}  // namespace

void runbody(Level &level, const Op *ops, Rounds *rounds) {
  if (ops && !iswatchedrun(level) && runoperations(level, ops, rounds) == Left::LEVEL) return;
  makewhole(level.sp);
  runpoints(level);
}

}  // namespace morvik
