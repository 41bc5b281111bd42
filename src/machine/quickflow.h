// Quick operations that say what runs next: decisions, jumps, calls.
#pragma once

#include "failure/signals.h"
#include "machine/calls.h"
#include "machine/quickcalls.h"
#include "machine/quickvalues.h"

namespace morvik {

[[gnu::always_inline]] inline Then quick_SLOW(Quickly &) {
  return Then::SLOW;
}
[[gnu::always_inline]] inline Then quick_END(Quickly &) {
  return Then::ENDED;
}
[[gnu::always_inline]] inline Then quick_LEAVE(Quickly &q) {
  q.points += 1;
  return Then::LEFT;
}

// A real that lies between false and true is for a draw to decide, and no number decides nothing.
[[gnu::always_inline]] inline Then quick_CHECK(Quickly &q) {
  if (!holds(q, 1) || !quickloosen(*q.sp)) return Then::SLOW;
  if (q.sp->type == LOOSE_INTEGER) {
    q.level->decision = looseinteger(*q.sp) > 0 ? 1 : 0;
  } else {
    const double truth = loosereal(*q.sp);
    if (!(truth >= 1 || truth <= 0)) return Then::SLOW;
    q.level->decision = truth >= 1 ? 1 : 0;
  }
  --q.sp;
  return step(q, 1);
}

[[gnu::always_inline]] inline bool isdecided(const Quickly &q) {
  return q.level->decision >= 0;
}
[[gnu::always_inline]] inline bool isallowed(const Quickly &q) {
  return q.level->decision == static_cast<int>(q.op->type);
}

[[gnu::always_inline]] inline Then quick_IF(Quickly &q) {
  return isdecided(q) && !isallowed(q) ? step(q, 1) : Then::SLOW;
}
[[gnu::always_inline]] inline Then quick_IF_VALUE(Quickly &q) {
  return quick_IF(q);
}
[[gnu::always_inline]] inline Then quick_IF_LEAVE(Quickly &q) {
  if (!isdecided(q)) return Then::SLOW;
  if (!isallowed(q)) return step(q, 1);
  q.points += 1;
  return Then::LEFT;
}

[[gnu::always_inline]] inline Then quick_LITERAL_JUMP(Quickly &q) {
  if (isinterrupted() || isfull(q)) [[unlikely]]
    return Then::SLOW;
  q.points += 2;
  q.op = q.op->target;
  return Then::NEXT;
}
[[gnu::always_inline]] inline Then quick_JUMP(Quickly &q) {
  if (!holds(q, 1) || !quickloosen(*q.sp) || isinterrupted()) return Then::SLOW;
  const std::int64_t n = looseinteger(*q.sp);
  if (q.sp->type != LOOSE_INTEGER || n < 0 || n - 1 > q.op - q.ops) return Then::SLOW;
  --q.sp;
  q.points += 1;
  if (n == 0) return Then::LEFT;
  q.op = q.ops + (n - 1);
  return Then::NEXT;
}

// May a function be called without being pushed? Where anything is amiss, the call itself reports it.
[[gnu::always_inline]] inline bool iscallable(const Quickly &q, const Point &function) {
  if (isfull(q) || isinterrupted()) [[unlikely]]
    return false;
  return function.arguments < 0 || (holdsmany(q, function.arguments) && q.sp + function.locals <= stacktop);
}
[[gnu::always_inline]] inline Then callbody(Quickly &q, const Point &function, int count) {
  if (entercall(q, function, count)) [[likely]]
    return Then::NEXT;
  if (!iscallable(q, function)) return Then::SLOW;
  static_cast<void>(step(q, count));
  synchronise(q);
  q.level->instruction = q.level->current = q.op[-1].point;
  callkept(*q.level, function);
  q.sp = q.level->sp;
  return Then::LOOK;
}

[[gnu::always_inline]] inline Then quick_CALL(Quickly &q) {
  return callbody(q, *q.op->point, 2);
}
[[gnu::always_inline]] inline Then quick_CALL_IF(Quickly &q) {
  if (!isdecided(q) || isfull(q)) return Then::SLOW;
  if (!isallowed(q)) return step(q, 2);
  return quick_CALL(q);
}
[[gnu::always_inline]] inline Then quick_NAME_CALL(Quickly &q) {
  const Point *const value = boundvalue(*q.level, *q.op->point);
  if (!value || !isfunction(*value)) return quick_NAME(q);
  if ((value->programme->type & ISOPERATOR) != 0) return Then::SLOW;
  return callbody(q, *value, 2);
}

}  // namespace morvik
