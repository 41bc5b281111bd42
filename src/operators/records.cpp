// Records that move: what they own, what their flag word has to say, and the copies of them.
#include "operators/records.h"

#include "failure/custody.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/copies.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

namespace morvik {

namespace records {

namespace {

constexpr std::uint32_t KINDLESS_BITS = ~(ELEMENT_BITS | COMPLEXED | STRUCTURED | ISSTRUCTURE | NAME_BEARING | ISLOCAL);

std::uint32_t rankbits(const Point &space) {
  const std::uint32_t one = space.rank > 0 && space.elements == 1 ? ISONEELEMENT : 0;
  return one | (space.rank == 0 ? ISSCALAR : space.rank == 1 ? ISVECTOR : ISARRAY);
}

}  // namespace

bool hascountedname(const Element &e) {
  return isnamed(e) && e.tag != tags::HANDLE && referencecount(e.name) >= 0;
}

std::uint32_t recordbits(const Element &e) {
  switch (e.tag) {
    case tags::SUBARRAY:
      return STRUCTURED | ISSTRUCTURE;
    case tags::HANDLE:
      return HASFILE;
    case ranks::FUNCTION:
      return STRUCTURED | HASFUNCTION;
    default:
      return iswholepoint(e.tag) ? STRUCTURED : kindbit(e.tag);
  }
}

RecordFindings examinerecords(const Element *first, std::size_t count) {
  RecordFindings f = {0, 1};
  for (std::size_t i = 0; i < count; ++i) {
    const Element &e = first[i];
    f.bits |= recordbits(e);
    if (e.tag == tags::SUBARRAY && e.subarray->rank >= 0 && e.subarray->depth >= f.depth)
      f.depth = static_cast<std::int16_t>(std::min(e.subarray->depth + 1, int{INT16_MAX}));
    if (i % POLL_INTERVAL == POLL_INTERVAL - 1) safepoint();
  }
  f.bits |= complexed(f.bits);
  return f;
}

bool owns(const Point &space) {
  if (space.rank != ranks::SCALAR) return mayown(space);
  const Element &e = *space.data_pointer;
  return hascountedname(e) || (recordbits(e) & (OWNING_BITS | HASFILE)) != 0;
}

void ensurekinds(Point &space) {
  if (space.rank < 1 || !space.data_pointer || (space.type & (ELEMENT_BITS | STRUCTURED)) != 0) return;
  space.type = (space.type & KINDLESS_BITS) | examinerecords(space.data_pointer, space.elements).bits;
}

int unknownkind(const Point &space) {
  if (!isspace(space) || !space.data_pointer || !owns(space)) return 0;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const Element &e = space.data_pointer[i];
    if (!isknown(e.tag)) return messages::RESTRICTION;
    if (i % POLL_INTERVAL == POLL_INTERVAL - 1) safepoint();
  }
  return 0;
}

void refreshkinds(Point &space) {
  const RecordFindings f = examinerecords(space.data_pointer, space.elements);
  space.type = (space.type & KINDLESS_BITS & ~(RANK_BITS | ISEMPTY)) | f.bits | rankbits(space);
  space.depth = space.rank == 0 ? std::int16_t{0} : f.depth;
  space.link = nullptr;
}

void refreshflags(Point &space) {
  if (ismixed(space) || (space.type & ELEMENT_BITS) == 0) return refreshkinds(space);
  space.type = (space.type & ~(RANK_BITS | ISEMPTY)) | rankbits(space);
  if (space.depth == 0) space.depth = 1;
  space.link = nullptr;
}

void becomeempty(Point &space, std::int32_t rank, Element *shape) {
  dereferencepoint(&space);
  space = {};
  space.rank = rank;
  space.type = ISEMPTY | (rank > 1 ? ISARRAY : ISVECTOR);
  space.depth = 1;
  space.shape_pointer = shape;
}

void releaserecords(Point &space) {
  Point old = space;
  old.shape_pointer = nullptr;
  space.data_pointer = nullptr;
  dereferencepoint(&old);
}

void shortenrecords(Point &space, std::uint32_t count) {
  if (count >= space.elements) return;
  if (owns(space)) dereferencedataelems(space.data_pointer + count, space.elements - count);
  // A block that can't be cut serves as well.
  if (Element *less = tryreallocate(space.data_pointer, count)) space.data_pointer = less;
}

Element *copyshape(const Element *shape, std::int32_t rank, std::int32_t more) {
  Element *copy = newelements(static_cast<std::size_t>(rank) + static_cast<std::size_t>(more));
  if (rank > 0) std::memcpy(copy, shape, static_cast<std::size_t>(rank) * sizeof(Element));
  for (std::int32_t axis = rank; axis < rank + more; ++axis) setinteger(copy[axis], 0);
  return copy;
}

void copyrecords(Element *to, const Element *from, std::size_t count, bool polls) {
  // What does not fit the caches is copied faster record by record than by the library.
  constexpr std::size_t CACHED_RECORDS = 8192;
  if (count <= CACHED_RECORDS) {
    std::memcpy(to, from, count * sizeof(Element));
    return;
  }
  for (std::size_t i = 0; i < count;) {
    const std::size_t end = std::min(count, i + POLL_INTERVAL);
    for (; i < end; ++i) to[i] = from[i];
    if (polls) safepoint();
  }
}

void startmaking(Making &m, std::size_t count) {
  m.made = {};
  m.made.rank = ranks::VECTOR;
  m.made.type = ISVECTOR;  // no kinds: whatever is in there by then gets released
  m.made.data_pointer = newelements(count);
  takecustody(m.custody, releasepoint, &m.made);
}

Element *endmaking(Making &m) {
  endcustody(m.custody);
  return m.made.data_pointer;
}

void makecopies(Making &m, const Element *from, std::ptrdiff_t stride, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i, from += stride) {
    copyelement(m.made.data_pointer[m.made.elements], *from);
    if (++m.made.elements % POLL_INTERVAL == 0) safepoint();
  }
}

}  // namespace records

}  // namespace morvik
