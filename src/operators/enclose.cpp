// ENCLOSE and DISCLOSE: a whole value as one record, and back.
#include "operators/enclose.h"

#include <bit>

#include "failure/custody.h"
#include "operators/records.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

namespace morvik {

using records::ensurekinds;
using records::recordbits;

namespace {

bool issymbol(const Element &e) {
  return (recordbits(e) & STRUCTURED) != 0 && e.tag != tags::SUBARRAY;
}

}  // namespace

void enclose(Point &space, bool atom) {
  if (space.rank == 0 && !atom) return;
  Point made{};
  made.rank = ranks::VECTOR;
  made.type = STRUCTURED | ISSTRUCTURE | (atom ? ISSCALAR : ISVECTOR | ISONEELEMENT);
  // An atom nests no deeper than what it holds.
  const int depth = isspace(space) ? space.depth : 0;
  made.depth = static_cast<std::int16_t>(std::min(atom ? depth : depth + 1, int{INT16_MAX}));
  Custody making;
  takecustody(making, releasepoint, &made);
  made.shape_pointer = newshape(1);
  made.data_pointer = newelement(tags::FILLER, 0);
  made.elements = 1;
  Point *member = newpoint();
  endcustody(making);
  *member = space;
  made.data_pointer->tag = tags::SUBARRAY;
  made.data_pointer->subarray = member;
  space = made;
}

int disclose(Point &space) {
  ensurekinds(space);
  if (!isspace(space) || (space.type & STRUCTURED) == 0 || !space.data_pointer) return 0;
  if (space.elements != 1) return messages::DISCLOSE_STRUCTURED;
  const Element &e = *space.data_pointer;
  if (e.tag != tags::SUBARRAY && !issymbol(e)) return 0;
  const Point member = e.tag == tags::SUBARRAY ? *e.subarray : std::bit_cast<Point>(e);
  referencepoint(&member);
  dereferencepoint(&space);
  space = member;
  return 0;
}

}  // namespace morvik
