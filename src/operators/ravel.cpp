// RAVEL and SHAPE: other readings of the same blocks, at a cost that does not depend on the number of elements.
#include "operators/ravel.h"

#include "failure/custody.h"
#include "operators/records.h"
#include "spaces/blocks.h"
#include "spaces/copies.h"
#include "spaces/refderef.h"

namespace morvik {

using records::hascountedname;
using records::recordbits;
using records::releaserecords;

namespace {

constexpr std::uint32_t EXTENTS_TYPE = ISVECTOR | HASINTEGER;

// The record of a scalar becomes that of a vector.
void vectorise(Point &scalar) {
  Element *shape = newshape(1);
  if (hascountedname(*scalar.data_pointer)) {
    Custody making;
    takecustody(making, releaseblock, shape);
    Element *record = copyelements(scalar.data_pointer, 1);
    endcustody(making);
    releaserecords(scalar);
    scalar.data_pointer = record;
  }
  scalar.type = (scalar.type & ~ISSCALAR) | ISVECTOR | ISONEELEMENT | recordbits(*scalar.data_pointer);
  scalar.rank = ranks::VECTOR;
  scalar.depth = 1;
  scalar.shape_pointer = shape;
}

// The name of an ADDRESS as characters.
void namecharacters(Point &address) {
  const std::uint32_t count = static_cast<std::uint32_t>(std::strlen(address.name));
  Point text{};
  text.rank = ranks::VECTOR;
  text.type = ISVECTOR | HASASCII | (count == 1 ? ISONEELEMENT : 0) | (count == 0 ? ISEMPTY : 0);
  text.depth = 1;
  Custody making;
  takecustody(making, releasepoint, &text);
  text.shape_pointer = newshape(count);
  text.data_pointer = newelements(count);
  for (; text.elements < count; ++text.elements) {
    Element &e = text.data_pointer[text.elements];
    e = {};
    e.tag = tags::ASCII;
    e.ascii = static_cast<std::uint8_t>(address.name[text.elements]);
  }
  endcustody(making);
  dereferencepoint(&address);
  address = text;
}

}  // namespace

void ravel(Point &space) {
  if (!isspace(space) || space.rank == 1) return;
  if (space.rank == 0) return vectorise(space);
  Element *shape = newshape(space.elements);
  dereference(space.shape_pointer);
  space.shape_pointer = shape;
  space.rank = ranks::VECTOR;
  // Kept: a single element is marked as such, and not as a vector.
  space.type = (space.type & ~(ISARRAY | ISONEELEMENT)) | (space.elements == 1 ? ISONEELEMENT : ISVECTOR);
}

void extents(Point &space) {
  if (space.rank == ranks::ADDRESS && space.name) return namecharacters(space);
  const std::int32_t axes = std::max(space.rank, 0);
  Point answer{};
  answer.rank = ranks::VECTOR;
  answer.type = axes == 0 ? ISEMPTY : axes == 1 ? EXTENTS_TYPE | ISONEELEMENT : EXTENTS_TYPE;
  answer.depth = 1;
  answer.elements = static_cast<std::uint32_t>(axes);
  answer.shape_pointer = newshape(axes);
  if (axes > 0) {
    answer.data_pointer = space.shape_pointer;
    space.shape_pointer = nullptr;
  }
  dereferencepoint(&space);
  space = answer;
}

}  // namespace morvik
