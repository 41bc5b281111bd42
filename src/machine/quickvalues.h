// Quick operations that move values: literals, names, and what shuffles the stack.
#pragma once

#include <utility>

#include "machine/exactflags.h"
#include "machine/quickstate.h"
#include "spaces/symbols.h"

namespace morvik {

[[gnu::always_inline]] inline void pushloose(Quickly &q, std::uint32_t type, std::uint16_t form, std::int64_t value) {
  putloose(*++q.sp, type, form, static_cast<std::uint64_t>(value));
  noteloose(q.sp);
}

// A name as it is bound, where nothing has to be looked up again; null otherwise.
[[gnu::always_inline]] inline Point *boundpoint(const Level &level, const Point &name) {
  if (name.modifier == instructions::SGIG) return name.target;
  return name.context && sametable(name.context, level.meaning) ? name.target : nullptr;
}
// What a name means so; null for a name without a value too.
[[gnu::always_inline]] inline const Point *boundvalue(const Level &level, const Point &name) {
  const Point *const value = boundpoint(level, name);
  return value && !isend(*value) ? value : nullptr;
}

[[gnu::always_inline]] inline Then quick_LITERAL(Quickly &q) {
  if (isfull(q)) [[unlikely]]
    return Then::SLOW;
  pushloose(q, q.op->type, q.op->form, q.op->value);
  return step(q, 1);
}

[[gnu::always_inline]] inline Then quick_SPACE(Quickly &q) {
  if (isfull(q)) [[unlikely]]
    return Then::SLOW;
  referencepoint(q.op->point);
  *++q.sp = *q.op->point;
  return step(q, 1);
}

[[gnu::always_inline]] inline Then quick_NAME(Quickly &q) {
  const Point *const value = boundpoint(*q.level, *q.op->point);
  if (!value || isfull(q)) [[unlikely]]
    return Then::SLOW;
  const std::uint32_t type = loosetype(*value);
  if (type != 0 && !changesinprint(type, value->data_pointer->integer)) [[likely]] {
    pushloose(q, type, value->data_pointer->form, value->data_pointer->integer);
    return step(q, 1);
  }
  if (isend(*value) || !isspace(*value)) return Then::SLOW;
  referencepoint(value);
  *++q.sp = *value;
  return step(q, 1);
}

// The old value goes last, as its release may wipe the very name.
[[gnu::noinline]] inline void replacevalue(Level &level, Point &bound) {
  Point value = *level.sp;
  if (isloose(value)) giverecord(value, newelements(1));
  --level.sp;
  forgetexact(bound);
  Point old = bound;
  bound = value;
  dereferencepoint(&old);
}

// Gives a plain scalar of one loose type the value of another. What stays as it was is not written: narrow stores would
// be in the way of whoever reads the whole word next.
[[gnu::always_inline]] inline void overwrite(Point &bound, std::uint32_t type, const Point &value) {
  Element &record = *bound.data_pointer;
  if (value.type == type) [[likely]] {
    record.form = looseform(value);
    record.integer = looseinteger(value);
    return;
  }
  setrecord(record, value);
  bound.type = value.type & ~LOOSE;
}

[[gnu::always_inline]] inline Then quick_STORE(Quickly &q) {
  Point *const bound = boundpoint(*q.level, *q.op->point);
  if (!bound || !holds(q, 1) || isfull(q)) [[unlikely]]
    return Then::SLOW;
  const Point &value = *q.sp;
  const std::uint32_t type = isloose(value) ? loosetype(*bound) : 0;
  if (type != 0 && referencecount(bound->data_pointer) == 1) [[likely]] {
    overwrite(*bound, type, value);
    --q.sp;
    return step(q, 2);
  }
  if (!isspace(value) || isend(*bound)) return Then::SLOW;
  synchronise(q);
  replacevalue(*q.level, *bound);
  q.sp = q.level->sp;
  return step(q, 2);
}

[[gnu::always_inline]] inline Then quick_DUPLICATE(Quickly &q) {
  if (!holds(q, 1) || isfull(q)) [[unlikely]]
    return Then::SLOW;
  Point *const top = q.sp;
  if (isloose(*top)) [[likely]] {
    if (!changesinprint(top->type, looseinteger(*top))) [[likely]] {
      copylooseslot(*++q.sp, *top);
      return step(q, 1);
    }
    synchronise(q);
    giverecord(*top, newelements(1));
  }
  if (!isspace(*top)) return Then::SLOW;
  referencepoint(top);
  *++q.sp = *top;
  return step(q, 1);
}

[[gnu::always_inline]] inline Then quick_DISCARD(Quickly &q) {
  if (!holds(q, 1)) return step(q, 1);
  if (isloose(*q.sp)) [[likely]] {
    --q.sp;
    return step(q, 1);
  }
  q.level->sp = q.sp - 1;
  dereferencepoint(q.sp--);
  return step(q, 1);
}

// What differs between two loose slots.
struct LooseWords {
  std::uint32_t type;
  std::uint16_t form;
  std::int64_t value;
};
[[gnu::always_inline]] inline LooseWords loosewords(const Point &slot) {
  return {slot.type, looseform(slot), looseinteger(slot)};
}
[[gnu::always_inline]] inline void setloosewords(Point &slot, const LooseWords &words) {
  slot.type = words.type;
  slot.locals = words.form;
  setword(slot, offsetof(Point, link), static_cast<std::uint64_t>(words.value));
}

[[gnu::always_inline]] inline Then quick_SWAP(Quickly &q) {
  if (!holds(q, 2)) return step(q, 1);
  if (isloose(q.sp[0]) && isloose(q.sp[-1])) [[likely]] {
    const LooseWords top = loosewords(q.sp[0]);
    setloosewords(q.sp[0], loosewords(q.sp[-1]));
    setloosewords(q.sp[-1], top);
    return step(q, 1);
  }
  std::swap(q.sp[0], q.sp[-1]);
  if (isloose(q.sp[-1])) noteloose(q.sp - 1);
  return step(q, 1);
}

[[gnu::always_inline]] inline Then quick_RIGHT(Quickly &q) {
  if (!holds(q, 2)) return step(q, 1);
  if (!isloose(q.sp[-1])) return Then::SLOW;
  if (isloose(q.sp[0])) [[likely]]
    setloosewords(q.sp[-1], loosewords(q.sp[0]));
  else
    q.sp[-1] = q.sp[0];
  --q.sp;
  return step(q, 1);
}

}  // namespace morvik
