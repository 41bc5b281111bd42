// Quick operations on vectors. Of the value of a name that is about to get another one, which nobody else holds, the
// new value is made in its own block. What is on the stack is a mention of it, which gives up its counts first; there
// is no way to fail between that and the new value.
#pragma once

#include "machine/exactflags.h"
#include "machine/quickvalues.h"
#include "operators/catenate.h"
#include "operators/records.h"
#include "operators/reshape.h"
#include "operators/slices.h"

namespace morvik {

// The value of the name that the operation before `q.op[1]` stores to, where `mention` is a vector that the name and
// the stack alone hold; null otherwise.
inline Point *mentioned(const Quickly &q, const Point &mention) {
  Point *const bound = boundpoint(*q.level, *q.op[1].point);
  if (!bound || !mention.data_pointer || bound->data_pointer != mention.data_pointer ||
      bound->shape_pointer != mention.shape_pointer || bound->type != mention.type || mention.rank != ranks::VECTOR ||
      bound->rank != ranks::VECTOR || bound->elements != mention.elements ||
      (mention.type & (ELEMENT_BITS | STRUCTURED)) == 0 || referencecount(mention.data_pointer) != 2)
    return nullptr;
  return bound;
}
inline void giveup(const Point &mention) {
  release(mention.data_pointer);
  release(mention.shape_pointer);
}

// Do the flag word and the depth say what the records ask for, and no more? An interrupt jumps.
inline bool saysexactly(const Point &space) {
  const records::RecordFindings found = records::examinerecords(space.data_pointer, space.elements);
  constexpr std::uint32_t ASKED_FOR = ELEMENT_BITS | COMPLEXED | STRUCTURED | ISSTRUCTURE;
  return space.rank == ranks::SCALAR || ((space.type & ASKED_FOR) == found.bits && space.depth == found.depth);
}

// Longer values are better left to the instruction, which grows the left one in its own block.
inline constexpr std::uint32_t MOST_JOINED = 64;

// The records of a short vector, or that of a loose number, which is written to `lone`. Of any other value none.
inline PlainRecords shortrecords(const Point &value, Element &lone) {
  if (isloose(value)) {
    setrecord(lone, value);
    return {&lone, 1, value.type & KIND_BITS, 0};
  }
  if (value.rank != ranks::VECTOR || !value.data_pointer || value.elements > MOST_JOINED || mayown(value)) return {};
  return {value.data_pointer, value.elements, value.type, value.depth};
}

inline bool appendtop(Point &bound, Point &top) {
  Element lone;
  const PlainRecords few = shortrecords(top, lone);
  if (few.count == 0) return appendvalue(bound, top);
  if (!appendrecords(bound, few.records, few.count, few.type, few.depth)) return false;
  giveup(top);
  return true;
}

[[gnu::noinline]] inline bool appendtoname(Point &bound, const Point &mention, Point &top) {
  bool exact = isexact(bound) || ((bound.type & STRUCTURED) != 0 && saysexactly(bound));
  if ((bound.type & STRUCTURED) != 0 && !exact) return false;
  exact = exact && (isloose(top) || (isspace(top) && top.data_pointer && saysexactly(top)));
  giveup(mention);
  const bool done = appendtop(bound, top);
  if (!done) referencepoint(&mention);
  if (exact)
    noteexact(bound);
  else
    forgetexact(bound);
  return done;
}

// Has a vector a record to lose, and another one? One that the release of a record knows.
inline bool hasrest(const Point &vector) {
  return vector.elements >= 2 && isknown(vector.data_pointer->tag);
}
inline Flags restofname(const Point &bound) {
  return restflags(bound, ismixed(bound) && isexact(bound));
}
// The record that was taken is released when all else is done: that may wipe the very name.
inline void takefromname(Point &bound, const Flags &flags) {
  Element taken = takefirst(bound, flags);
  bound.shape_pointer->integer = bound.elements;
  if (ismixed(bound)) noteexact(bound);
  if (!isplainrecord(taken)) dereferencedataelems(&taken, 1);
}

[[gnu::always_inline]] inline Then quick_REST_STORE(Quickly &q) {
  if (!holds(q, 1) || isfull(q)) return Then::SLOW;
  const Point mention = *q.sp;
  Point *const bound = mentioned(q, mention);
  if (!bound || !hasrest(mention) || referencecount(mention.shape_pointer) != 2) return Then::SLOW;
  synchronise(q);
  const Flags flags = restofname(*bound);
  q.level->sp = --q.sp;
  giveup(mention);
  takefromname(*bound, flags);
  return step(q, 3);
}

// Is a value a vector with records of known kinds that nobody else holds?
inline bool isown(const Point &value) {
  return value.rank == ranks::VECTOR && value.data_pointer && value.shape_pointer &&
         (value.type & (ELEMENT_BITS | STRUCTURED)) != 0 && referencecount(value.data_pointer) == 1 &&
         referencecount(value.shape_pointer) == 1;
}

[[gnu::always_inline]] inline Then quick_NAME_REST_STORE(Quickly &q) {
  Point *const bound = boundpoint(*q.level, *q.op->point);
  if (!bound || bound != boundpoint(*q.level, *q.op[2].point) || q.sp + 1 >= stacktop || !isown(*bound) ||
      !hasrest(*bound))
    return quick_NAME(q);
  synchronise(q);
  takefromname(*bound, restofname(*bound));
  return step(q, 4);
}

// Of a vector whose records own nothing.
[[gnu::always_inline]] inline Then quick_FIRST(Quickly &q) {
  if (!holds(q, 1)) return Then::SLOW;
  const Point vector = *q.sp;
  if (vector.rank != ranks::VECTOR || !vector.data_pointer || (vector.type & ISSCALAR) != 0 || mayown(vector))
    return Then::SLOW;
  const Element &e = *vector.data_pointer;
  if ((e.tag == tags::INTEGER || e.tag == tags::REAL) && e.attributes == 0) {
    putloose(*q.sp, e);
    noteloose(q.sp);
  } else if (!makescalar(*q.sp, e)) {
    return Then::SLOW;
  }
  giveup(vector);
  return step(q, 1);
}

[[gnu::noinline]] inline bool jointop(Point *sp) {
  Element lones[2];
  const PlainRecords left = shortrecords(sp[-1], lones[0]), right = shortrecords(sp[0], lones[1]);
  Point joined;
  if (left.count == 0 || right.count == 0 || !joinplain(joined, left, right)) return false;
  giveup(sp[-1]);
  giveup(sp[0]);
  sp[-1] = joined;
  return true;
}

[[gnu::always_inline]] inline Then quick_CATENATE(Quickly &q) {
  if (!holds(q, 2) || !jointop(q.sp)) return Then::SLOW;
  --q.sp;
  return step(q, 1);
}

// Appends the top to the value of a name, of which a mention stands below it.
[[gnu::always_inline]] inline Then appendmentioned(Quickly &q, Point &bound) {
  synchronise(q);
  if (!appendtoname(bound, q.sp[-1], q.sp[0])) return Then::SLOW;
  q.sp -= 2;
  return step(q, 3);
}

[[gnu::always_inline]] inline Then quick_CATENATE_STORE(Quickly &q) {
  if (!holds(q, 2)) return Then::SLOW;
  Point *const bound = mentioned(q, q.sp[-1]);
  return bound ? appendmentioned(q, *bound) : quick_CATENATE(q);
}

[[gnu::always_inline]] inline Then quick_RESHAPE(Quickly &q) {
  if (!holds(q, 2) || q.sp->type != LOOSE_INTEGER) return Then::SLOW;
  Element extent;
  setrecord(extent, *q.sp);
  if (!reshapeshort(q.sp[-1], extent)) return Then::SLOW;
  --q.sp;
  operations += q.sp->elements;
  return step(q, 1);
}

}  // namespace morvik
