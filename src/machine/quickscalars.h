// Quick operations on numbers. The commonest are worked in the operation itself: for two integers or two reals, where
// the result says what the instruction's own function would say. All else is left to that, by the general operation,
// which also gives short plain spaces to their loops.
#pragma once

#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"
#include "machine/quickvalues.h"
#include "spaces/sysvars.h"

namespace morvik {

// Counts one scalar instruction that took so many flops.
[[gnu::always_inline]] inline Then stepworked(Quickly &q, std::uint64_t flops, int count) {
  q.work += 1;
  q.moreflops += static_cast<std::int64_t>(flops) - 1;
  return step(q, count);
}

[[gnu::always_inline]] inline Then quick_MONADIC(Quickly &q) {
  if (!holds(q, 1) || !quickloosen(*q.sp)) return Then::SLOW;
  const std::uint64_t done = q.op->monadic(*q.sp);
  return done != 0 ? stepworked(q, done, 1) : Then::SLOW;
}

// ---- Short plain spaces. What a name or the body holds is borrowed from there: it gets a slot, but no counts.

// Could it be a plain space, or a loose one?
[[gnu::always_inline]] inline bool seemsplain(const Point &p) {
  return (p.type & ~(RANK_BITS | PLAIN_KINDS | LOOSE)) == 0 && isspace(p);
}

// The instruction over two values, of which those that are given are borrowed and the others are on the stack. It is
// the last of so many Points. False, with nothing done, where they are no short plain spaces. A failure finds the level
// as the loop of the machine has it.
[[gnu::always_inline]] inline bool quickspaces(Quickly &q, int count, const Point *left, const Point *right) {
  Level &level = *q.level;
  q.points += count;
  synchronise(q);
  level.instruction = level.current = q.op->point + (count - 1);
  makewhole(level.sp);
  if (left) *++level.sp = *left;
  if (right) *++level.sp = *right;
  const auto borrowed = static_cast<unsigned>(level.sp - q.sp);
  if (!workplain(*q.op->dyadic, &level.sp, level.instruction, quads, borrowed)) {
    operators -= count;
    level.sp = q.sp;
    return false;
  }
  q.sp = level.sp;
  q.op += count;
  return true;
}

[[gnu::always_inline]] inline Then quick_DYADIC(Quickly &q) {
  if (!holds(q, 2)) return Then::SLOW;
  if (!quickloosen(q.sp[-1]) || !quickloosen(q.sp[0])) {
    const bool plain = seemsplain(q.sp[-1]) && seemsplain(q.sp[0]);
    return plain && quickspaces(q, 1, nullptr, nullptr) ? Then::NEXT : Then::SLOW;
  }
  const std::uint64_t done = q.op->dyadic->loose(q.sp[-1], q.sp[0].type, looseinteger(q.sp[0]));
  if (done == 0) [[unlikely]]
    return Then::SLOW;
  --q.sp;
  return stepworked(q, done, 1);
}

// Where the numbers are not for it, the push is done by itself.
[[gnu::always_inline]] inline Then quick_LITERAL_DYADIC(Quickly &q) {
  if (!holds(q, 1) || isfull(q)) return quick_LITERAL(q);
  if (!quickloosen(*q.sp))
    return seemsplain(*q.sp) && quickspaces(q, 2, nullptr, q.op->point) ? Then::NEXT : quick_LITERAL(q);
  const std::uint64_t done = q.op->dyadic->loose(*q.sp, q.op->type, q.op->value);
  return done != 0 ? stepworked(q, done, 2) : quick_LITERAL(q);
}

[[gnu::always_inline]] inline Then quick_NAME_DYADIC(Quickly &q) {
  const Point *const value = boundvalue(*q.level, *q.op->point);
  if (!value || !holds(q, 1) || isfull(q)) return quick_NAME(q);
  const std::uint32_t type = loosetype(*value);
  if (type == 0 || !quickloosen(*q.sp)) {
    const bool plain = seemsplain(*q.sp) && seemsplain(*value);
    return plain && quickspaces(q, 2, nullptr, value) ? Then::NEXT : quick_NAME(q);
  }
  const std::uint64_t done = q.op->dyadic->loose(*q.sp, type, value->data_pointer->integer);
  return done != 0 ? stepworked(q, done, 2) : quick_NAME(q);
}

// Is there room for two more values?
[[gnu::always_inline]] inline bool hasroomfortwo(const Quickly &q) {
  return q.sp + 1 < stacktop;
}
// Two numbers are left to the operations that follow.
[[gnu::always_inline]] inline Then quick_NAMES_DYADIC(Quickly &q) {
  const Point *const left = boundvalue(*q.level, *q.op->point), *const right = boundvalue(*q.level, *q.op[1].point);
  const bool plain = left && right && left->rank + right->rank > 0 && seemsplain(*left) && seemsplain(*right);
  return plain && hasroomfortwo(q) && quickspaces(q, 3, left, right) ? Then::NEXT : quick_NAME(q);
}

// ---- What is worked at once: over a loose slot of that kind, false with nothing done.

[[gnu::always_inline]] inline bool giveinteger(Point &slot, std::uint16_t form, std::int64_t value) {
  slot.type = LOOSE_INTEGER;
  slot.locals = form;
  setword(slot, offsetof(Point, link), static_cast<std::uint64_t>(value));
  return true;
}
[[gnu::always_inline]] inline bool givereal(Point &slot, double value) {
  slot.locals = forms::COMPUTED;
  setword(slot, offsetof(Point, link), std::bit_cast<std::uint64_t>(value));
  return true;
}

struct Sum {
  [[gnu::always_inline]] static bool work(Point &left, std::int64_t a, std::int64_t b) {
    return summable({a}, {b}) && giveinteger(left, forms::NUMBER, a + b);
  }
  [[gnu::always_inline]] static bool work(Point &left, double a, double b) { return givereal(left, a + b); }
};
struct Difference {
  [[gnu::always_inline]] static bool work(Point &left, std::int64_t a, std::int64_t b) {
    return summable({a}, {b}) && giveinteger(left, forms::NUMBER, a - b);
  }
  [[gnu::always_inline]] static bool work(Point &left, double a, double b) { return givereal(left, a - b); }
};
struct Product {
  [[gnu::always_inline]] static bool issmall(std::int64_t a) { return a == static_cast<std::int32_t>(a); }
  [[gnu::always_inline]] static bool work(Point &left, std::int64_t a, std::int64_t b) {
    return issmall(a) && issmall(b) && summable({a * b}, {0}) && giveinteger(left, forms::NUMBER, a * b);
  }
  [[gnu::always_inline]] static bool work(Point &left, double a, double b) {
    const double product = a * b;
    return (product < 0 || product > 0) && givereal(left, product);
  }
};

template <class Test>
struct Compared {
  template <class Number>
  [[gnu::always_inline]] static bool holds(Number a, Number b) {
    return Test::holds(static_cast<double>(a), static_cast<double>(b), tolerance(quads));
  }
  template <class Number>
  [[gnu::always_inline]] static bool work(Point &left, Number a, Number b) {
    return giveinteger(left, forms::BOOLEAN, holds(a, b) ? 1 : 0);
  }
};

template <class Core>
[[gnu::always_inline]] inline bool workboth(Quickly &q, Point &left, std::uint32_t type, std::int64_t right,
                                            int count) {
  if (left.type == LOOSE_INTEGER) [[likely]] {
    if (type != LOOSE_INTEGER || !Core::work(left, looseinteger(left), right)) [[unlikely]]
      return false;
    stepworked(q, 1, count);
    return true;
  }
  if (left.type != LOOSE_REAL || type != LOOSE_REAL || !Core::work(left, loosereal(left), std::bit_cast<double>(right)))
    return false;
  stepworked(q, 2, count);
  return true;
}

template <class Core>
[[gnu::always_inline]] inline bool workslots(Quickly &q) {
  if (!holds(q, 2)) [[unlikely]]
    return false;
  --q.sp;
  if (workboth<Core>(q, q.sp[0], q.sp[1].type, looseinteger(q.sp[1]), 1)) [[likely]]
    return true;
  ++q.sp;
  return false;
}
template <class Core>
[[gnu::always_inline]] inline bool workliteral(Quickly &q) {
  return holds(q, 1) && !isfull(q) && workboth<Core>(q, *q.sp, q.op->type, q.op->value, 2);
}
template <class Core>
[[gnu::always_inline]] inline bool workname(Quickly &q) {
  const Point *const value = boundpoint(*q.level, *q.op->point);
  const std::uint32_t type = value ? loosetype(*value) : 0;
  return type != 0 && holds(q, 1) && !isfull(q) && workboth<Core>(q, *q.sp, type, value->data_pointer->integer, 2);
}

template <class Core>
[[gnu::always_inline]] inline bool worknames(Quickly &q) {
  const Point *const left = boundpoint(*q.level, *q.op->point), *const right = boundpoint(*q.level, *q.op[1].point);
  const std::uint32_t lefttype = left ? loosetype(*left) : 0, righttype = right ? loosetype(*right) : 0;
  if (lefttype == 0 || righttype == 0 || !hasroomfortwo(q)) [[unlikely]]
    return false;
  pushloose(q, lefttype, left->data_pointer->form, left->data_pointer->integer);
  if (workboth<Core>(q, *q.sp, righttype, right->data_pointer->integer, 3)) [[likely]]
    return true;
  --q.sp;
  return false;
}

// A comparison and the decision by it.
template <class Core>
[[gnu::always_inline]] inline bool checkliteral(Quickly &q) {
  if (!holds(q, 1) || isfull(q)) return false;
  const std::uint32_t type = q.sp->type;
  if (type != q.op->type || (type != LOOSE_INTEGER && type != LOOSE_REAL)) return false;
  if (type == LOOSE_INTEGER) [[likely]]
    q.level->decision = Core::holds(looseinteger(*q.sp), q.op->value) ? 1 : 0;
  else
    q.level->decision = Core::holds(loosereal(*q.sp), std::bit_cast<double>(q.op->value)) ? 1 : 0;
  --q.sp;
  stepworked(q, type == LOOSE_INTEGER ? 1 : 2, 3);
  return true;
}

}  // namespace morvik
