// FIRST and REST: the first slice of a space along its slowest axis, and all the others.
#include "operators/slices.h"

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

// Keeps the records behind the first `dropped`, `shape` being the new one.
void keeprest(Point &space, std::uint32_t dropped, std::int32_t rank, Element *shape) {
  const std::uint32_t count = space.elements - dropped;
  Custody making;
  takecustody(making, releaseblock, shape);
  keeprecords(space, count, [&](auto &out) { out.run(space.data_pointer + dropped, 1, count); });
  endcustody(making);
  setshape(space, count, rank, shape);
  refreshflags(space);
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
  ensurekinds(space);
  if (const int fault = unknownkind(space)) return fault;
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

int firstelement(Point &space) {
  if (!isspace(space) || space.rank == 0 || !space.data_pointer) return 0;
  ensurekinds(space);
  if (const int fault = unknownkind(space)) return fault;
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

}  // namespace morvik
