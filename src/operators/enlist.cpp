// ENLIST: the leaves of a structured space as one vector.
#include "operators/enlist.h"

#include <bit>
#include <utility>

#include "failure/custody.h"
#include "failure/signals.h"
#include "operators/descent.h"
#include "operators/records.h"
#include "spaces/messages.h"
#include "spaces/point.h"
#include "spaces/refderef.h"

namespace morvik {

using records::copyrecords;
using records::endmaking;
using records::ensurekinds;
using records::makecopies;
using records::Making;
using records::owns;
using records::recordbits;
using records::startmaking;

namespace {

// What the levels of a value say of themselves that its leaves do not.
constexpr std::uint32_t LEVEL_BITS =
    ~(ELEMENT_BITS | COMPLEXED | STRUCTURED | RANK_BITS | ISSTRUCTURE | ISEMPTY | NAME_BEARING | ISLOCAL);

constexpr std::uint32_t FEW_RECORDS = 64;

struct OpenLevel {
  const Element *next, *end;
};
struct LeafWalk {
  Descent<OpenLevel> levels;
  std::size_t left;  // records to the next safe point
};

void openlevel(LeafWalk &w, const Point &space) {
  descend(w.levels, {space.data_pointer, space.data_pointer + space.elements});
}

void pollrecords(LeafWalk &w, std::size_t records) {
  if (records < w.left) {
    w.left -= records;
    return;
  }
  w.left = POLL_INTERVAL;
  safepoint();
}

// Members lie anywhere: those that come soon are asked for, and then what they hold.
void prefetchmembers(const Element *e, const Element *end) {
  constexpr std::ptrdiff_t AHEAD = 8, NEAR = 4;
  if (end - e <= AHEAD) return;
  __builtin_prefetch(e[AHEAD].block);
  if (e[NEAR].tag == tags::SUBARRAY) __builtin_prefetch(e[NEAR].subarray->data_pointer);
}

// Meets the leaves in order: `visit.level` each space, `visit.plain` the records of one that owns nothing, `visit.leaf`
// any other record, a symbolic Point included. Returns at the member that has to be opened, null for none.
template <typename Visit>
const Point *walklevel(LeafWalk &w, OpenLevel &level, Visit &visit) {
  const Element *const end = level.end;
  std::size_t records = 0;
  for (const Element *e = level.next; e < end; ++e) {
    if (records >= POLL_INTERVAL) {
      level.next = e;
      pollrecords(w, std::exchange(records, 0));
    }
    ++records;
    prefetchmembers(e, end);
    if (e->tag != tags::SUBARRAY) {
      visit.leaf(*e);
      continue;
    }
    const Point &member = *e->subarray;
    if (!isspace(member)) {
      visit.leaf(std::bit_cast<Element>(member));
      continue;
    }
    visit.level(member);
    if (!member.data_pointer) continue;
    if (owns(member)) {
      level.next = e + 1;
      pollrecords(w, records);
      return &member;
    }
    visit.plain(member);
    records += member.elements;
  }
  level.next = end;
  pollrecords(w, records);
  return nullptr;
}

template <typename Visit>
void walkleaves(const Point &space, Visit &visit) {
  LeafWalk w;
  begindescent(w.levels);
  w.left = POLL_INTERVAL;
  visit.level(space);
  openlevel(w, space);
  while (w.levels.depth > 0) {
    if (const Point *member = walklevel(w, innermost(w.levels), visit))
      openlevel(w, *member);
    else
      --w.levels.depth;
  }
  enddescent(w.levels);
}

struct Counting {
  std::uint64_t count = 0;
  std::uint32_t bits = 0, levels = 0;
  bool unknown = false;

  void level(const Point &space) { levels |= space.type & LEVEL_BITS; }
  void plain(const Point &space) {
    count += space.elements;
    bits |= space.rank == 0 ? recordbits(*space.data_pointer) : space.type & ELEMENT_BITS;
  }
  void leaf(const Element &e) {
    ++count;
    bits |= recordbits(e);
    unknown |= !isknown(e.tag);
  }
};

struct Taking {
  Making m;

  void level(const Point &) {}
  // A few records are not worth a call.
  void plain(const Point &space) {
    Element *to = m.made.data_pointer + m.made.elements;
    if (space.elements > FEW_RECORDS)
      copyrecords(to, space.data_pointer, space.elements, true);
    else
      std::copy_n(space.data_pointer, space.elements, to);
    m.made.elements += space.elements;
  }
  void leaf(const Element &e) { makecopies(m, &e, 1, 1); }
};

// Counts the leaves and gathers what they are.
Counting enlist1(const Point &space) {
  Counting counting;
  walkleaves(space, counting);
  return counting;
}

// Copies the leaves, of which there are so many.
Element *enlist2(const Point &space, std::uint64_t count) {
  if (count > MOST_ELEMENTS) outofstorage();
  Taking taking;
  startmaking(taking.m, static_cast<std::size_t>(count));
  walkleaves(space, taking);
  return endmaking(taking.m);
}

}  // namespace

int enlist(Point &space) {
  ensurekinds(space);
  if (!isspace(space) || (space.type & STRUCTURED) == 0 || !space.data_pointer) return 0;
  const Counting leaves = enlist1(space);
  if (leaves.unknown) return messages::RESTRICTION;
  Point made{};
  made.rank = ranks::VECTOR;
  made.type = leaves.levels | (leaves.bits & (ELEMENT_BITS | STRUCTURED)) | complexed(leaves.bits) | ISVECTOR;
  if (leaves.count == 0) made.type = EMPTY_VECTOR;
  if (leaves.count == 1) made.type |= ISONEELEMENT;
  made.depth = 1;
  made.shape_pointer = newshape(static_cast<std::int64_t>(leaves.count));
  Custody making;
  takecustody(making, releaseblock, made.shape_pointer);
  made.data_pointer = enlist2(space, leaves.count);
  endcustody(making);
  made.elements = static_cast<std::uint32_t>(leaves.count);
  dereferencepoint(&space);
  space = made;
  return 0;
}

}  // namespace morvik
