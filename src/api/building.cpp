// Values made of what a caller has at hand.
#include "api/building.h"

#include <algorithm>
#include <cstring>

#include "api/banks.h"
#include "failure/custody.h"
#include "frontend/symtab.h"
#include "spaces/blocks.h"
#include "spaces/making.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

std::uint32_t rankflag(std::size_t rank) {
  return rank == 0 ? ISSCALAR : rank == 1 ? ISVECTOR : ISARRAY;
}

Element *makeshape(std::size_t rank, const std::size_t *extents) {
  Element *shape = newelements(rank);
  for (std::size_t axis = 0; axis < rank; ++axis) {
    shape[axis] = {};
    shape[axis].tag = tags::INTEGER;
    shape[axis].form = forms::NUMBER;
    shape[axis].integer = static_cast<std::int64_t>(extents[axis]);
  }
  return shape;
}

std::int16_t deepest(const Point *members, std::size_t count) {
  std::int16_t depth = 0;
  for (std::size_t i = 0; i < count; ++i)
    if (isspace(members[i])) depth = std::max(depth, members[i].depth);
  return static_cast<std::int16_t>(std::min(depth + 1, int{INT16_MAX}));
}

}  // namespace

void beginspace(Point &space, std::size_t rank, const std::size_t *extents, std::size_t count, std::uint32_t kind) {
  if (count > MOST_ELEMENTS) outofstorage();
  space.rank = static_cast<std::int32_t>(rank);
  space.type = rankflag(rank) | kind;
  if (rank > 0 && count == 1) space.type |= ISONEELEMENT;
  if (count == 0) space.type |= ISEMPTY;
  space.depth = rank > 0 ? 1 : 0;
  if (rank > 0) space.shape_pointer = makeshape(rank, extents);
  space.data_pointer = newelements(count);
}

void setparts(Element &element, const double *part, std::size_t parts) {
  element = {};
  element.form = parts == 1 ? forms::COMPUTED : forms::CARTESIAN;
  if (parts == 1) {
    element.tag = tags::REAL;
    element.real = *part;
  } else if (parts == 2) {
    element.tag = tags::COMPLEX;
    element.complex = {part[0], part[1]};
  } else if (parts == 4) {
    element.tag = tags::QUATERNION;
    setquaternion(element, {{part[0], part[1], part[2], part[3]}});
  } else {
    auto *octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
    std::copy_n(part, parts, octonion->part);
    element.tag = tags::OCTONION;
    element.octonion = octonion;
  }
}

Point buildtext(const char *bytes, std::size_t length) {
  Point text{};
  Custody made;
  takecustody(made, releasepoint, &text);
  beginspace(text, 1, &length, length, HASASCII);
  for (std::size_t i = 0; i < length; ++i) {
    text.data_pointer[i] = {};
    text.data_pointer[i].tag = tags::ASCII;
    text.data_pointer[i].ascii = static_cast<std::uint8_t>(bytes[i]);
  }
  text.elements = static_cast<std::uint32_t>(length);
  endcustody(made);
  return text;
}

// All storage is taken before the first member moves.
Point buildnested(const Point *members, std::size_t count) {
  Point vector{};
  if (count == 0) {
    makeempty(vector);
    return vector;
  }
  Custody made;
  takecustody(made, releasepoint, &vector);
  beginspace(vector, 1, &count, count, STRUCTURED | ISSTRUCTURE);
  vector.depth = deepest(members, count);
  for (; vector.elements < count; ++vector.elements) {
    Point *member = newpoint();
    *member = {};
    Element &record = vector.data_pointer[vector.elements];
    record = {};
    record.tag = tags::SUBARRAY;
    record.subarray = member;
  }
  endcustody(made);
  for (std::size_t i = 0; i < count; ++i) *vector.data_pointer[i].subarray = members[i];
  return vector;
}

Point buildtexts(const char *const *texts, std::size_t count) {
  if (count == 0) return buildnested(nullptr, 0);
  Point members{};
  Custody made;
  takecustody(made, releasepoint, &members);
  beginspace(members, 1, &count, count, STRUCTURED | ISSTRUCTURE);
  members.depth = 2;
  for (; members.elements < count; ++members.elements) {
    Element &record = members.data_pointer[members.elements];
    Point held = buildtext(texts[members.elements], std::strlen(texts[members.elements]));
    Custody kept;
    takecustody(kept, releasepoint, &held);
    Point *member = newpoint();
    endcustody(kept);
    *member = held;
    record = {};
    record.tag = tags::SUBARRAY;
    record.subarray = member;
  }
  endcustody(made);
  return members;
}

Point *entered(const char *name) {
  return entername(memory[0], stringdup(name))->meaning;
}

void setvalue(Point *place, const Point &value) {
  Point old = *place;
  *place = value;
  dereferencepoint(&old);
}

}  // namespace morvik
