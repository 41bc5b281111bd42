// Quick operations on numbers.
#pragma once

#include "machine/quickvalues.h"

namespace morvik {

[[gnu::always_inline]] inline Then stepworked(Quickly &q, std::uint64_t flops, int count) {
  q.work += 1;
  q.flops += static_cast<std::int64_t>(flops);
  return step(q, count);
}

[[gnu::always_inline]] inline Then quick_MONADIC(Quickly &q) {
  if (!holds(q, 1) || !quickloosen(*q.sp)) return Then::SLOW;
  const std::uint64_t done = q.op->monadic(*q.sp);
  return done != 0 ? stepworked(q, done, 1) : Then::SLOW;
}

[[gnu::always_inline]] inline Then quick_DYADIC(Quickly &q) {
  if (!holds(q, 2) || !quickloosen(q.sp[-1]) || !quickloosen(q.sp[0])) return Then::SLOW;
  const std::uint64_t done = q.op->dyadic(q.sp[-1], q.sp[0].type, looseinteger(q.sp[0]));
  if (done == 0) [[unlikely]]
    return Then::SLOW;
  --q.sp;
  return stepworked(q, done, 1);
}

// Where the numbers are not for it, the push is done by itself.
[[gnu::always_inline]] inline Then quick_LITERAL_DYADIC(Quickly &q) {
  if (!holds(q, 1) || isfull(q) || !quickloosen(*q.sp)) return quick_LITERAL(q);
  const std::uint64_t done = q.op->dyadic(*q.sp, q.op->type, q.op->value);
  return done != 0 ? stepworked(q, done, 2) : quick_LITERAL(q);
}

[[gnu::always_inline]] inline Then quick_NAME_DYADIC(Quickly &q) {
  const Point *const value = boundvalue(q.level, *q.op->point);
  const std::uint32_t type = value ? loosetype(*value) : 0;
  if (type == 0 || !holds(q, 1) || isfull(q) || !quickloosen(*q.sp)) return quick_NAME(q);
  const std::uint64_t done = q.op->dyadic(*q.sp, type, value->data_pointer->integer);
  return done != 0 ? stepworked(q, done, 2) : quick_NAME(q);
}

}  // namespace morvik
