// FIRST and REST: the first slice of a space along its slowest axis, and all the others.
#include "operators/slices.h"

#include <algorithm>
#include <bit>

#include "failure/custody.h"
#include "operators/records.h"
#include "spaces/blocks.h"
#include "spaces/copies.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

namespace morvik {

using records::becomeempty;
using records::copyshape;
using records::ensurekinds;
using records::isunique;
using records::keeprecords;
using records::owns;
using records::recordbits;
using records::refreshflags;
using records::refreshkinds;
using records::unknownkind;

namespace {

// The first record of a vector becomes a value of its own: a symbolic Point, or a scalar.
void takerecord(Point &space) {
  const Element &e = *space.data_pointer;
  Point taken{};
  if (e.tag < 0) {
    taken = std::bit_cast<Point>(e);
    referencepoint(&taken);
  } else {
    Element *record = newelement(tags::FILLER, 0);
    Custody making;
    takecustody(making, releaseblock, record);
    copyelement(*record, e);
    endcustody(making);
    taken.type = ISSCALAR | recordbits(*record);
    taken.elements = 1;
    taken.data_pointer = record;
  }
  dereferencepoint(&space);
  space = taken;
}

// Takes the enclosed value of the first record without a look at its inside.
void takemember(Point &space) {
  const Point member = *space.data_pointer->subarray;
  referencepoint(&member);
  dereferencepoint(&space);
  space = member;
}

// Of how deep a space does a record give account?
std::int16_t depthby(const Element &e) {
  if (e.tag != tags::SUBARRAY || !isspace(*e.subarray)) return 1;
  return static_cast<std::int16_t>(std::min(std::max(e.subarray->depth, std::int16_t{0}) + 1, int{INT16_MAX}));
}

// Would the flag word and the depth of a vector be the same without its first record? The others are looked at one by
// one, as far as it takes.
bool addsnothing(const Point &vector) {
  const Element *e = vector.data_pointer, *const end = e + vector.elements;
  std::uint32_t missing = recordbits(*e);
  bool deeper = vector.depth > 1 && depthby(*e) >= vector.depth;
  while (++e < end && (missing != 0 || deeper)) {
    missing &= ~recordbits(*e);
    deeper = deeper && depthby(*e) < vector.depth;
  }
  return missing == 0 && !deeper;
}

void setshape(Point &space, std::uint32_t count, std::int32_t rank, Element *shape) {
  dereference(space.shape_pointer);
  space.shape_pointer = shape;
  space.rank = rank;
  space.elements = count;
}

// Keeps the first `count` records, `shape` being the new one.
void keepfirst(Point &space, std::uint32_t count, std::int32_t rank, Element *shape) {
  Custody making;
  takecustody(making, releaseblock, shape);
  keeprecords(space, count, [&](auto &out) {
    if (!isunique(space)) out.run(space.data_pointer, 1, count);
  });
  endcustody(making);
  setshape(space, count, rank, shape);
  refreshkinds(space);
}

// May the first records be cut off the block? Nobody else sees it, and they own nothing, or there is only one.
bool iscut(const Point &space, std::uint32_t dropped) {
  return isunique(space) && (dropped == 1 || !owns(space));
}

// Keeps the records behind the first `dropped` where they are.
void cutrest(Point &space, std::uint32_t dropped, std::int32_t rank, Element *shape) {
  const bool owned = owns(space);
  Element gone = *space.data_pointer;
  setshape(space, space.elements - dropped, rank, shape);
  space.data_pointer = cutrecords(space.data_pointer, dropped, space.elements);
  if (owned) dereferencedataelems(&gone, 1);
  refreshflags(space);
}

// Keeps the records behind the first `dropped`, `shape` being the new one.
void keeprest(Point &space, std::uint32_t dropped, std::int32_t rank, Element *shape) {
  if (iscut(space, dropped)) return cutrest(space, dropped, rank, shape);
  const std::uint32_t count = space.elements - dropped;
  Custody making;
  takecustody(making, releaseblock, shape);
  keeprecords(space, count, [&](auto &out) { out.run(space.data_pointer + dropped, 1, count); });
  endcustody(making);
  setshape(space, count, rank, shape);
  refreshflags(space);
}

// 994 where a record that FIRST releases, or copies with care, is of no known kind.
int unknownkept(const Point &space) {
  Point looked = space;
  if (!isunique(space) && space.rank == ranks::VECTOR) looked.elements = 1;
  return unknownkind(looked);
}

// Kept: what REST leaves of one element is empty and no more, without rank bits and of depth 0.
void emptyrest(Point &space, std::int32_t rank, Element *shape) {
  const std::uint32_t text = space.type & HASASCII;
  becomeempty(space, rank, shape);
  space.type = ISEMPTY | text;
  space.depth = 0;
}

// A shape of so many axes without elements.
Element *zeroshape(std::int32_t rank) {
  return copyshape(nullptr, 0, rank);
}

}  // namespace

int first(Point &space) {
  if (!isspace(space) || space.rank == 0 || (space.type & ISSCALAR) != 0 || !space.data_pointer) return 0;
  if (const int fault = unknownkept(space)) return fault;
  if (space.rank > 1) {
    const std::int32_t rank = space.rank - 1;
    const auto count = static_cast<std::uint32_t>(space.elements / space.shape_pointer[rank].integer);
    keepfirst(space, count, rank, copyshape(space.shape_pointer, rank));
  } else if (space.data_pointer->tag == tags::SUBARRAY) {
    keepfirst(space, 1, ranks::VECTOR, newshape(1));
  } else {
    takerecord(space);
  }
  return 0;
}

bool makescalar(Point &scalar, const Element &record) {
  auto *const block = isplainrecord(record) ? static_cast<Element *>(tryblock(sizeof(Element))) : nullptr;
  if (!block) return false;
  *block = record;
  scalar = {};
  scalar.type = ISSCALAR | recordbits(record);
  scalar.elements = 1;
  scalar.data_pointer = block;
  return true;
}

int firstelement(Point &space) {
  if (!isspace(space) || space.rank == 0 || !space.data_pointer) return 0;
  if (const int fault = unknownkept(space)) return fault;
  if (space.data_pointer->tag == tags::SUBARRAY)
    takemember(space);
  else if (space.data_pointer->tag < 0)
    takerecord(space);
  else
    keepfirst(space, 1, ranks::VECTOR, newshape(1));
  return 0;
}

// A symbolic Point has nothing behind its first element.
int rest(Point &space) {
  if (!isspace(space)) return messages::RESTRICTION;
  ensurekinds(space);
  if (space.elements < 2 || !space.data_pointer) {
    const std::int32_t rank = std::max(space.rank, 1);
    emptyrest(space, rank, zeroshape(rank));
    return 0;
  }
  if (const int fault = unknownkind(space)) return fault;
  const std::int32_t last = space.rank - 1;
  const std::int64_t extent = space.shape_pointer[last].integer;
  Element *shape = copyshape(space.shape_pointer, space.rank);
  shape[last].integer = extent - 1;
  if (extent == 1)
    emptyrest(space, space.rank, shape);
  else
    keeprest(space, static_cast<std::uint32_t>(space.elements / extent), space.rank, shape);
  return 0;
}

int restelements(Point &space) {
  if (!isspace(space)) return messages::RESTRICTION;
  ensurekinds(space);
  if (space.elements < 2 || !space.data_pointer) {
    emptyrest(space, ranks::VECTOR, zeroshape(1));
    return 0;
  }
  if (const int fault = unknownkind(space)) return fault;
  keeprest(space, 1, ranks::VECTOR, newshape(space.elements - 1));
  return 0;
}

Flags restflags(const Point &vector, bool exact) {
  if (ismixed(vector) ? exact && addsnothing(vector) : (vector.type & ELEMENT_BITS) != 0) {
    const std::uint32_t rank = ISVECTOR | (vector.elements == 2 ? ISONEELEMENT : 0);
    return {(vector.type & ~(RANK_BITS | ISEMPTY)) | rank, std::max(vector.depth, std::int16_t{1})};
  }
  Point left = vector;
  ++left.data_pointer;
  --left.elements;
  refreshflags(left);
  return {left.type, left.depth};
}

Element takefirst(Point &vector, const Flags &flags) {
  const Element gone = *vector.data_pointer;
  --vector.elements;
  vector.data_pointer = cutrecords(vector.data_pointer, 1, vector.elements);
  vector.type = flags.type;
  vector.depth = flags.depth;
  vector.link = nullptr;
  return gone;
}

}  // namespace morvik
