// The quick loop. Its rules, beside those of the loop in machine.cpp:
//  1. An operation does all that its Points would do, or nothing: then the loop of the machine runs the first of them,
//     after all loose values were made whole. So the machine reports, traces and draws; nothing here does.
//  2. The top and the counters are brought up to date (synchronise) before anything that may jump or look.
//  3. While a result is in flight, no operation is quick. While the run is watched, the level is the loop's.
//  4. An interrupt is taken between two Points: at jumps, calls and rounds, and wherever the loop of the machine is.
#include "machine/quick.h"

#include "failure/jump.h"
#include "failure/signals.h"
#include "machine/gather.h"
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

// Takes the result of a round of EACH, and hands out the next element. False, with nothing done, where the caller is
// to do it.
[[gnu::always_inline]] inline bool nextelement(const Quickly &q, Rounds &rounds) {
  const Element &next = rounds.elements[rounds.index];
  if (!isloose(*q.sp) || !islooseelement(next, rounds)) return passon(*q.sp, rounds);
  setrecord(rounds.results[*rounds.made], *q.sp);
  ++*rounds.made;
  rounds.kinds |= q.sp->type & KIND_BITS;
  putloose(*q.sp, next);
  return true;
}

// Nothing but operations is to run from here on. False where a result is in flight, for which no operation is quick.
[[gnu::always_inline]] inline bool becomesplain(Quickly &q) {
  if (q.plain) [[likely]]
    return true;
  if (resultinflight) return false;
  q.level->trace = q.level->step = false;
  q.plain = true;
  return true;
}

// Begins another round if there is one to run. What only the caller can do, or report, ends the rounds. There was room
// for the index of the first round, and what stands below it.
[[gnu::always_inline]] inline bool beginround(Quickly &q, Rounds &rounds) {
  const std::int64_t index = rounds.index;
  if (index >= rounds.count || isinterrupted()) [[unlikely]]
    return false;
  if (q.sp != rounds.expected) [[unlikely]] {
    if (rounds.expected) return false;
    q.level->caller->sp = q.sp;
  }
  if (rounds.indexed) [[likely]]
    pushloose(q, LOOSE_INTEGER, forms::NUMBER, index + 1);
  else if (rounds.elements && !nextelement(q, rounds))
    return false;
  rounds.index = index + 1;
  q.level->decision = -1;
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

// Runs operations until the level is left, or is to go on in the loop of the machine. Levels of calls that it makes by
// itself come and go inside.
[[gnu::flatten]] Left runoperations(Level *base, const Op *ops, Rounds *rounds, const void *const **placesfound) {
  static const void *const places[] = {
#define QUICK(name, replaces, effect, meaning) &&at_##name,
#include "tables/quick.def"
  };
  if (!base) {
    *placesfound = places;
    return Left::LEVEL;
  }
  if (isinterrupted()) {
    makewhole(base->sp);
    safepoint();
  }
  const bool plain = !base->ownsframe || base->frame == base->floor;
  Quickly q{base, ops, ops + (base->current - base->start), base->sp, 0, 0, 0, plain};
  Then then = Then::LOOK;
  if (resultinflight) goto look;

next:
  goto *q.op->place;
#define QUICK_SCALAR(name, core)                                              \
  at_##name : if (workslots<core>(q)) [[likely]] goto *q.op->place;           \
  goto at_DYADIC;                                                             \
  at_LITERAL_##name : if (workliteral<core>(q)) [[likely]] goto *q.op->place; \
  goto at_LITERAL_DYADIC;                                                     \
  at_NAME_##name : if (workname<core>(q)) [[likely]] goto *q.op->place;       \
  goto at_NAME_DYADIC;                                                        \
  at_NAMES_##name : if (worknames<core>(q)) [[likely]] goto *q.op->place;     \
  goto at_NAMES_DYADIC;
#define QUICK_CHECK(name, core)                                              \
  at_CHECK_##name : if (checkliteral<core>(q)) [[likely]] goto *q.op->place; \
  goto at_LITERAL_##name;
#define QUICK(name, replaces, effect, meaning)               \
  at_##name : then = quick_##name(q);                        \
  if (then == Then::NEXT) [[likely]]                         \
    goto *q.op->place;                                       \
  if (then == Then::LEFT || then == Then::ENDED) goto leave; \
  goto look;
#include "tables/quick.def"

leave:
  if (!q.plain && !leaveseasily(*q.level)) [[unlikely]] {
    synchronise(q);
    q.level->instruction = q.level->current = q.op->point;
    then == Then::ENDED ? reachend(*q.level) : endlevel(*q.level);
    q.sp = q.level->sp;
  }
  if (q.level == base) [[likely]] {
    if (becomesplain(q) && beginround(q, *rounds)) [[likely]]
      goto next;
    synchronise(q);
    return Left::LEVEL;
  }

returned:
  leavecall(q);
  if (q.plain) [[likely]]
    goto next;
  if (!resultinflight && !stepping) goto next;
  then = Then::LOOK;

look:
  synchronise(q);
  q.plain = false;
  q.level->current = q.op->point;
  if (then == Then::SLOW || (resultinflight && !isend(*q.level->current))) {
    const bool left = !runslowly(*q.level);
    q.sp = q.level->sp;
    if (left && q.level != base) goto returned;
    if (left) return Left::LEVEL;
  }
  if (iswatchedrun(*q.level)) [[unlikely]] {
    if (q.level == base) return Left::LOOP;
    makewhole(q.sp);
    runpoints(*q.level);
    q.sp = q.level->sp;
    goto returned;
  }
  q.op = q.ops + (q.level->current - q.level->start);
  goto next;
}

#pragma GCC diagnostic pop

}  // namespace

const void *const *placesofoperations() {
  const void *const *places = nullptr;
  runoperations(nullptr, nullptr, nullptr, &places);
  return places;
}

void runbody(Level &level, const Op *ops, Rounds *rounds) {
  if (ops && !iswatchedrun(level)) {
    Rounds one{1, 1, nullptr, false};
    if (runoperations(&level, ops, rounds ? rounds : &one, nullptr) == Left::LEVEL) return;
  }
  makewhole(level.sp);
  runpoints(level);
}

bool storeinplace(Level &level) {
  const Op *const ops = resultinflight || stepping ? nullptr : decoded(level, false);
  if (!ops) return false;
  Quickly q{&level, ops, ops + (level.current - level.start), level.sp, 0, 0, 0, false};
  Then then = Then::SLOW;
  if (q.op->code == Quick::REST_STORE) then = quick_REST_STORE(q);
  if (q.op->code == Quick::CATENATE_STORE && holds(q, 2))
    if (Point *const bound = mentioned(q, q.sp[-1])) then = appendmentioned(q, *bound);
  if (then == Then::NEXT) level.sp = q.sp;
  return then == Then::NEXT;
}

}  // namespace morvik
