// How the array instructions carry records from one block to another: what may be moved, what has to be copied, and
// what a flag word says about the records that came together.
#pragma once

#include <algorithm>
#include <cstring>

#include "failure/custody.h"
#include "failure/signals.h"
#include "spaces/blocks.h"

namespace morvik {

namespace records {

// A counted name belongs to a scalar: it can't go along where the record becomes part of something else.
bool hascountedname(const Element &e);
// What one record adds to the flag word of its space.
std::uint32_t recordbits(const Element &e);
// The bits of all of them, with COMPLEXED, and one more than the depth of the deepest enclosed space, 1 without any.
struct RecordFindings {
  std::uint32_t bits;
  std::int16_t depth;
};
RecordFindings examinerecords(const Element *first, std::size_t count);

// Must a copy of the records be made one by one? For a scalar its record says so, else the flag word.
bool owns(const Point &space);
// Does nobody else see the records?
inline bool isunique(const Point &space) {
  return space.data_pointer && referencecount(space.data_pointer) == 1;
}
// Gives a space whose word holds COLLECT's count the word that its records ask for. Symbolic Points are left alone.
void ensurekinds(Point &space);
// 994 where a record that has to be copied with care is of no known kind, else 0.
int unknownkind(const Point &space);

// Makes the flag word agree with rank and elements; the kinds and the depth of a mixed space are found anew.
void refreshflags(Point &space);
// The same with the kinds found in any case.
void refreshkinds(Point &space);
// Turns the value into the empty space of this rank and shape, which it takes over. What it was is released.
void becomeempty(Point &space, std::int32_t rank, Element *shape);
// Releases the records of a space, but for what else it holds.
void releaserecords(Point &space);
// Releases all records behind the first ones. The records are nobody else's.
void shortenrecords(Point &space, std::uint32_t count);
// A copy of a shape with `more` extents of 0 behind it. Message 27.
Element *copyshape(const Element *shape, std::int32_t rank, std::int32_t more = 0);

// Copies records that own nothing, or whose owner the copy becomes. Only the former may be interrupted.
void copyrecords(Element *to, const Element *from, std::size_t count, bool polls);

// A block in the making. A jump releases it with those records that are whole already.
struct Making {
  Point made;
  Custody custody;
};
void startmaking(Making &m, std::size_t count);
Element *endmaking(Making &m);
// Appends copies that own what they hold, each `stride` records after the one before.
void makecopies(Making &m, const Element *from, std::ptrdiff_t stride, std::size_t count);

// ---- Where runs of records go. Each kind takes runs (records a stride apart) and picks (those at given
// positions behind a first one).

// Plain copies. The destination may lie in the same block, at or ahead of the source.
struct Copying {
  Element *to;
  bool polls;
  std::size_t left = POLL_INTERVAL;

  void poll() {
    left = POLL_INTERVAL;
    if (polls) safepoint();
  }
  void run(const Element *from, std::ptrdiff_t stride, std::size_t count) {
    if (to == from && stride == 1) {
      to += count;
      return;
    }
    while (count > 0) {
      const std::size_t piece = std::min(count, left);
      Element *t = to;
      for (std::size_t i = 0; i < piece; ++i, from += stride) *t++ = *from;
      to = t;
      count -= piece;
      if ((left -= piece) == 0) poll();
    }
  }
  void pick(const Element *from, const std::uint32_t *positions, std::size_t count) {
    while (count > 0) {
      const std::size_t piece = std::min(count, left);
      Element *t = to;
      for (std::size_t i = 0; i < piece; ++i) *t++ = from[positions[i]];
      to = t;
      positions += piece;
      count -= piece;
      if ((left -= piece) == 0) poll();
    }
  }
};

// Changes places within one block, forwards, so that each record stays owned once: in the end those that were not asked
// for are behind the others.
struct Swapping {
  Element *to;
  std::size_t left = POLL_INTERVAL;

  void one(Element *from) {
    if (to != from) std::swap(*to, *from);
    ++to;
    if (--left > 0) return;
    left = POLL_INTERVAL;
    safepoint();
  }
  void run(const Element *from, std::ptrdiff_t stride, std::size_t count) {
    for (; count > 0; --count, from += stride) one(const_cast<Element *>(from));
  }
  void pick(const Element *from, const std::uint32_t *positions, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) one(const_cast<Element *>(from + positions[i]));
  }
};

// Copies that own what they hold.
struct OwningCopies {
  Making &m;

  void run(const Element *from, std::ptrdiff_t stride, std::size_t count) { makecopies(m, from, stride, count); }
  void pick(const Element *from, const std::uint32_t *positions, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) makecopies(m, from + positions[i], 1, 1);
  }
};

// The records of a space in another order: `walk(out)` gives the runs of all of them. Message 27.
template <typename Walk>
void rearrange(Point &space, Walk walk) {
  const bool careful = owns(space), moves = isunique(space);
  Making m;
  startmaking(m, space.elements);
  if (careful && !moves) {
    OwningCopies out{m};
    walk(out);
  } else {
    Copying out{m.made.data_pointer, !careful};
    walk(out);
  }
  Element *made = endmaking(m);
  if (careful && !moves)
    releaserecords(space);
  else
    release(space.data_pointer);
  space.data_pointer = made;
}

// Keeps so many records, whose runs `walk(out)` gives in order. `elements` stays with the caller. Message 27.
template <typename Walk>
void keeprecords(Point &space, std::uint32_t count, Walk walk) {
  const bool careful = owns(space);
  if (isunique(space)) {
    if (careful) {
      Swapping out{space.data_pointer};
      walk(out);
    } else {
      Copying out{space.data_pointer, true};
      walk(out);
    }
    return shortenrecords(space, count);
  }
  Making m;
  startmaking(m, count);
  if (careful) {
    OwningCopies out{m};
    walk(out);
  } else {
    Copying out{m.made.data_pointer, true};
    walk(out);
  }
  Element *made = endmaking(m);
  releaserecords(space);
  space.data_pointer = made;
}

}  // namespace records

}  // namespace morvik
