// Private copies: of a function's Programme and of the records of a space, each holding its own references.
#include "spaces/copies.h"

#include <cstring>

#include "spaces/blocks.h"
#include "spaces/refderef.h"

namespace morvik {

Point *copyfun(const Point *function) {
  const Point *body = function->programme;
  std::size_t count = 1;
  while (!isend(body[count])) ++count;
  ++count;
  Point *copy = static_cast<Point *>(newblock(count * sizeof(Point)));
  std::memcpy(copy, body, count * sizeof(Point));
  copy->programme = copy;
  copy->link = nullptr;
  copy[count - 1] = {};
  copy[count - 1].rank = body[count - 1].rank;
  for (Point *p = copy + 1; !isend(*p); ++p) referencepoint(p);
  return copy;
}

namespace {

// Gives an octonion record a fresh block of its own, null where there is no storage. Nothing is lowered.
bool copyoctonion(Element &e) {
  if (e.tag != tags::OCTONION || !e.octonion) return true;
  const Octonion *value = e.octonion;
  e.octonion = static_cast<Octonion *>(tryblock(sizeof(Octonion)));
  if (e.octonion) *e.octonion = *value;
  return e.octonion != nullptr;
}

// A name that is counted after all is exchanged for its permanent twin, as the copy may end up in any space.
void internname(Element &e) {
  if (!isnamed(e) || e.tag == tags::HANDLE) return;
  if (!e.name)
    e.attributes = static_cast<std::uint16_t>(e.attributes & ~attributes::NAMED);
  else if (referencecount(e.name) >= 0)
    e.name = elementname(e.name);
}

void raiserest(const Element &e) {
  if (e.tag != tags::OCTONION) referencerecord(e);
}

}  // namespace

void copyelement(Element &to, const Element &from) {
  Element copy = from;
  internname(copy);
  if (!copyoctonion(copy)) outofstorage();
  raiserest(copy);
  to = copy;
}

Element *copyelements(const Element *records, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (isnamed(records[i]) && records[i].tag != tags::HANDLE && records[i].name) elementname(records[i].name);
  Element *copy = newelements(count);
  if (!copy) return nullptr;
  std::memcpy(copy, records, count * sizeof(Element));
  for (std::size_t i = 0; i < count; ++i) {
    internname(copy[i]);
    if (copyoctonion(copy[i])) continue;
    while (i-- > 0)
      if (copy[i].tag == tags::OCTONION) freeblock(copy[i].octonion);
    freeblock(copy);
    outofstorage();
  }
  for (std::size_t i = 0; i < count; ++i) raiserest(copy[i]);
  return copy;
}

void makeprivate(Point &point) {
  if (!point.data_pointer || referencecount(point.data_pointer) == 1) return;
  Element *copy = copyelements(point.data_pointer, point.elements);
  Point old = point;
  old.shape_pointer = nullptr;
  point.data_pointer = copy;
  dereferencepoint(&old);
}

}  // namespace morvik
