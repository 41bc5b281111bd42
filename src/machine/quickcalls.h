// Calls that the quick loop makes by itself: a record each in one array, and no frame of C++.
#pragma once

#include "failure/custody.h"
#include "failure/signals.h"
#include "machine/calls.h"
#include "machine/level.h"
#include "machine/quickstate.h"

namespace morvik {

// One call: its level, and how its caller goes on.
struct Call : Level {
  const Op *callerops;
  const Op *after;
  Custody body;  // which the call holds for as long as it runs
};

// Where they are full, a call takes frames of C++ as one from elsewhere does.
#ifdef MORVIK_CHECKING
inline constexpr std::ptrdiff_t MOST_CALLS = 3;
#else
inline constexpr std::ptrdiff_t MOST_CALLS = 1024;
#endif
extern Call calls[MOST_CALLS];

void releasecalled(Custody &body);

// Is it a body that was decoded, which has neither locals nor names of its own?
[[gnu::always_inline]] inline bool isquicklycalled(const Point &function) {
  const Point *const header = function.programme;
  return header->block && header->block != header && !header[header->elements].link &&
         (function.locals == 0 || function.arguments < 0);
}

[[gnu::always_inline]] inline void holdbody(Point *programme) {
  const std::int64_t count = referencecount(programme);
  if (count > 0 && !coprocessors_running) [[likely]]
    setreferencecount(programme, count + 1);
  else
    reference(programme);
}
// The last who held it may wipe any name with it.
[[gnu::always_inline]] inline void giveupbody(Point *programme) {
  const std::int64_t count = referencecount(programme);
  if (count > 1 && !coprocessors_running) [[likely]]
    setreferencecount(programme, count - 1);
  else
    dropbody(programme);
}

// A level that begins inside another, with what no other run of a body reads left out.
[[gnu::always_inline]] inline void begincall(Call &call, Level &outer, Point *header) {
  call.caller = &outer;
  call.start = call.current = header + 1;
  call.instruction = header + 1;
  call.header = header;
  call.names = nullptr;
  call.memory = outer.memory;
  call.level = outer.level + 1;
  call.slot = outer.slot;
  call.vacant = &call + 1;
  call.ownsframe = false;  // or there are no locals in it
  call.meaning = call.entry = outer.meaning;
  call.entryuses = outer.meaning->uses;
  call.decision = -1;
  call.trace = call.step = false;
}

// Goes on with the body of a function in a level of its own, after so many Points. False, with nothing done, where that
// takes more than a record, or anything is amiss.
[[gnu::always_inline]] inline bool entercall(Quickly &q, const Point &function, int points) {
  Level &outer = *q.level;
  Call *const call = outer.vacant;
  if (!isquicklycalled(function) || call == calls + MOST_CALLS || isfull(q) || isinterrupted()) [[unlikely]]
    return false;
  Point *frame = q.sp - function.arguments + 1, *floor = frame;
  if (function.arguments < 0) {
    frame = outer.frame;
    floor = outer.floor;
  } else if (frame < outer.floor) {
    return false;
  }
  Point *const header = function.programme;
  holdbody(header);
  takecustody(call->body, releasecalled, header);
  outer.sp = q.sp;
  outer.instruction = outer.current = q.op->point + (points - 1);
  call->callerops = q.ops;
  call->after = q.op + points;
  call->frame = frame;
  call->floor = floor;
  call->sp = q.sp;
  begincall(*call, outer, header);
  running = q.level = call;
  q.points += points;
  q.op = q.ops = static_cast<const Op *>(header->block);
  return true;
}

// Goes on after the call that the present level is. Its results are on the stack.
[[gnu::always_inline]] inline void leavecall(Quickly &q) {
  Call &call = static_cast<Call &>(*q.level);
  endcustody(call.body);
  running = q.level = call.caller;
  q.level->sp = q.sp;
  q.ops = call.callerops;
  q.op = call.after;
  giveupbody(call.header);
}

}  // namespace morvik
