// Quick operations on the value of a name that is about to get another one: where nobody else holds it, the new value
// is made of the old one's own block. What is on the stack is a mention of it, which gives up its counts first; there
// is no way to fail between that and the new value.
#pragma once

#include "machine/exactflags.h"
#include "machine/quickvalues.h"
#include "operators/catenate.h"
#include "operators/records.h"
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
inline bool ismixed(const Point &space) {
  return (space.type & (COMPLEXED | STRUCTURED)) != 0;
}

// Do the flag word and the depth say what the records ask for, and no more? An interrupt jumps.
inline bool saysexactly(const Point &space) {
  const records::RecordFindings found = records::examinerecords(space.data_pointer, space.elements);
  constexpr std::uint32_t ASKED_FOR = ELEMENT_BITS | COMPLEXED | STRUCTURED | ISSTRUCTURE;
  return space.rank == ranks::SCALAR || ((space.type & ASKED_FOR) == found.bits && space.depth == found.depth);
}

inline bool appendtop(Point &bound, Point &top) {
  if (!isloose(top)) return appendvalue(bound, top);
  Element record;
  setrecord(record, top);
  return appendrecords(bound, &record, 1, top.type & KIND_BITS, 0);
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

[[gnu::always_inline]] inline Then quick_CATENATE_STORE(Quickly &q) {
  if (!holds(q, 2)) return Then::SLOW;
  Point *const bound = mentioned(q, q.sp[-1]);
  if (!bound) return Then::SLOW;
  synchronise(q);
  if (!appendtoname(*bound, q.sp[-1], q.sp[0])) return Then::SLOW;
  q.sp -= 2;
  return step(q, 3);
}

// The record that was taken is released when all else is done: that may wipe the very name.
[[gnu::noinline]] inline bool takefromname(Level &level, Point &bound) {
  const Point mention = *level.sp;
  if (mention.elements < 2 || referencecount(mention.shape_pointer) != 2 || !isknown(mention.data_pointer->tag))
    return false;
  const Flags flags = restflags(bound, ismixed(bound) && isexact(bound));
  --level.sp;
  giveup(mention);
  Element taken = takefirst(bound, flags);
  bound.shape_pointer->integer = bound.elements;
  if (ismixed(bound)) noteexact(bound);
  if (!isplainrecord(taken)) dereferencedataelems(&taken, 1);
  return true;
}

[[gnu::always_inline]] inline Then quick_REST_STORE(Quickly &q) {
  if (!holds(q, 1) || isfull(q)) return Then::SLOW;
  Point *const bound = mentioned(q, q.sp[0]);
  if (!bound) return Then::SLOW;
  synchronise(q);
  if (!takefromname(*q.level, *bound)) return Then::SLOW;
  q.sp = q.level->sp;
  return step(q, 3);
}

// Of a vector whose records own nothing.
[[gnu::always_inline]] inline Then quick_FIRST(Quickly &q) {
  if (!holds(q, 1)) return Then::SLOW;
  const Point vector = *q.sp;
  if (vector.rank != ranks::VECTOR || !vector.data_pointer || (vector.type & ISSCALAR) != 0 || mayown(vector))
    return Then::SLOW;
  const Element &e = *vector.data_pointer;
  if ((e.tag != tags::INTEGER && e.tag != tags::REAL) || e.attributes != 0) return Then::SLOW;
  putloose(*q.sp, LOOSE | ISSCALAR | kindbit(e.tag), e.form, static_cast<std::uint64_t>(e.integer));
  noteloose(q.sp);
  release(vector.data_pointer);
  release(vector.shape_pointer);
  return step(q, 1);
}

}  // namespace morvik
