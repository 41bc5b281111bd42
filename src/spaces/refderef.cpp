// The walks over whole values. Raising and lowering go the same ways, so that each count stays the number of ways that
// lead to its block; who owns what stands at the head of refderef.h. A chain of enclosures is followed in a loop: only
// the second and further enclosed spaces of one block cost process stack.
#include "spaces/refderef.h"

#include <bit>
#include <cstring>

#include "spaces/instructions.h"

namespace {

constexpr std::int32_t IMPOSSIBLE = 991;

// Lowers a count. Is it for the caller now to release what the block owns, and the block?
bool lowered(void *block) {
  if (!block) return false;
  const ReferenceLock lock;
  checkblock(block);
  const std::int64_t count = refr(block);
  if (count < 0) return false;
  if (count > 0) setrefr(block, count - 1);
  return count <= 1;
}

bool issymbolic(std::int32_t rank) {
  return rank <= ranks::LABEL && rank >= ranks::LOCALVARIABLE;
}
bool iswholepoint(std::int32_t tag) {
  return issymbolic(tag) && tag != ranks::OPERATOR;
}

bool isnamed(const Element &e) {
  return (e.attributes & attributes::NAMED) != 0 && e.tag >= tags::ASCII && e.tag != tags::QUATERNION;
}

bool isslot(const Point &point) {
  return point.rank == ranks::ADDRESS && (point.type & ISLOCAL) != 0;
}
bool isfunctionend(const Point &point) {
  return point.rank == ranks::OPERATOR && point.instruction == instructions::FUNCTIONEND;
}

void raisepoint(const Point *point);
void lowerpoint(Point held);

// ---- Raising.

void raisesymbolic(const Point &point) {
  reference(point.name);
  reference(point.link);
  if (!isslot(point)) reference(point.block);
}

// Raises what a record owns, but for the Point that it encloses, which is returned.
const Point *raiserecord(const Element &e) {
  switch (e.tag) {
    case tags::SUBARRAY:
      reference(e.subarray);
      return e.subarray;
    case tags::OCTONION:
      if (isnamed(e)) reference(e.name);
      reference(e.octonion);
      return nullptr;
    case tags::HANDLE:
      reference(e.name);
      reference(e.file.reserved);
      reference(e.file.descriptor);
      return e.file.descriptor;
    default:
      if (iswholepoint(e.tag)) raisesymbolic(std::bit_cast<Point>(e));
      return nullptr;
  }
}

bool isknown(std::int32_t tag) {
  return (tag >= tags::SUBARRAY && tag <= tags::OCTONION) || tag == tags::FILLER || tag == tags::HANDLE ||
         iswholepoint(tag);
}

// The last enclosed Point is left to the caller.
const Point *raiserecords(const Element *records, std::size_t count) {
  const Point *last = nullptr;
  for (const Element *e = records; e < records + count; ++e) {
    if (!isknown(e->tag)) exceptionjump(IMPOSSIBLE);
    const Point *enclosed = raiserecord(*e);
    if (!enclosed) continue;
    if (last) raisepoint(last);
    last = enclosed;
  }
  return last;
}

void raisepoint(const Point *point) {
  while (point) {
    if (issymbolic(point->rank)) return raisesymbolic(*point);
    const Element *data = point->data_pointer;
    reference(point->shape_pointer);
    if (!data) return;
    reference(point->data_pointer);
    if (point->rank == ranks::SCALAR) {
      if (isnamed(*data) && data->tag < tags::OCTONION) reference(data->name);
      point = raiserecord(*data);
    } else {
      point = mayown(*point) ? raiserecords(data, point->elements) : nullptr;
    }
  }
}

// ---- Lowering. Nothing is written to a record: others may still see it.

void closestream(std::FILE *stream) {
  if (stream) std::fclose(stream);
}

// A Programme block that nobody holds any longer. Each Point is emptied as it goes.
void freeprogramme(Point *header) {
  Point *p = header + 1;
  for (; !isend(*p); ++p) dereferencepoint(p);
  release(p->name);
  release(p->link);
  release(header->link);
  freeblock(header);
}

// A value that hangs on a binding which no table knows any longer.
void freebinding(Point *target) {
  const Point bound = *target;
  freeblock(target);
  lowerpoint(bound);
}

void lowersymbolic(Point &point) {
  if (isfunctionend(point) && point.link) wipelocalnames(point);
  if (lowered(point.block)) switch (point.rank) {
      case ranks::FUNCTION:
        freeprogramme(point.programme);
        break;
      case ranks::VARIABLE:
      case ranks::ADDRESS:
      case ranks::LABEL:
        freebinding(point.target);
        break;
      default:
        freeblock(point.block);
    }
  release(point.link);
  release(point.name);
}

void lowerhandle(const Element &e) {
  release(e.name);
  std::FILE *const stream = handlestream(e);
  void *const last = e.file.reserved ? e.file.reserved : e.file.descriptor;
  void *const other = e.file.reserved ? e.file.descriptor : nullptr;
  if (lowered(last)) {
    closestream(stream);
    freeblock(last);
  }
  release(other);
}

// Lowers what a record owns, but for the Point that it encloses, which is copied out. Was there one?
bool lowerrecord(const Element &e, Point &enclosed) {
  switch (e.tag) {
    case tags::SUBARRAY:
      if (!e.subarray) return false;
      enclosed = *e.subarray;
      release(e.subarray);
      return true;
    case tags::OCTONION:
      if (isnamed(e)) release(e.name);
      release(e.octonion);
      return false;
    case tags::HANDLE: {
      const bool described = e.file.descriptor != nullptr;
      if (described) enclosed = *e.file.descriptor;
      lowerhandle(e);
      return described;
    }
    default:
      if (iswholepoint(e.tag)) lowerpoint(std::bit_cast<Point>(e));
      return false;
  }
}

// The last enclosed Point is left to the caller.
bool lowerrecords(const Element *records, std::size_t count, Point &last) {
  bool any = false;
  for (const Element *e = records; e < records + count; ++e) {
    if (!isknown(e->tag)) exceptionjump(IMPOSSIBLE);
    Point enclosed;
    if (!lowerrecord(*e, enclosed)) continue;
    if (any) lowerpoint(last);
    last = enclosed;
    any = true;
  }
  return any;
}

void lowerpoint(Point held) {
  for (bool more = true; more;) {
    if (issymbolic(held.rank)) {
      if (isslot(held)) held.block = nullptr;
      return lowersymbolic(held);
    }
    Element *data = held.data_pointer;
    Point enclosed;
    more = false;
    if (data && held.rank == ranks::SCALAR) {
      if (isnamed(*data) && data->tag < tags::OCTONION) release(data->name);
      more = lowerrecord(*data, enclosed);
    } else if (data && mayown(held)) {
      more = lowerrecords(data, held.elements, enclosed);
    }
    release(data);
    release(held.shape_pointer);
    if (more) held = enclosed;
  }
}

}  // namespace

void referencepoint(const Point *point) {
  if (point && ownsoneblock(*point)) [[likely]]
    return reference(point->data_pointer);
  raisepoint(point);
}

void dereferencepoint(Point *point) {
  if (!point) return;
  if (ownsoneblock(*point)) [[likely]]
    return dereference(point->data_pointer);
  const Point held = *point;
  point->shape_pointer = nullptr;
  point->data_pointer = nullptr;
  if (issymbolic(held.rank)) point->link = nullptr;
  lowerpoint(held);
}

void dereferencebinding(Point *&target) {
  Point *old = target;
  target = nullptr;
  if (lowered(old)) freebinding(old);
}

void referencedataelems(Element *records, std::size_t count) {
  raisepoint(raiserecords(records, count));
}

void dereferencedataelems(Element *records, std::size_t count) {
  Point last;
  if (lowerrecords(records, count, last)) lowerpoint(last);
}

void referencefun(Point *function) {
  reference(function->programme);
}

void dereferencefun(Point *function) {
  Point *programme = function->programme;
  function->programme = nullptr;
  if (lowered(programme)) freeprogramme(programme);
}

void cleanup(Point *programme) {
  for (Point *p = programme; !isend(*p); ++p) dereferencepoint(p);
  *programme = {};
}

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
  for (Point *p = copy + 1; !isend(*p); ++p) raisepoint(p);
  return copy;
}

// ---- Copies of records.

namespace {

// Gives an octonion record a fresh block of its own, null where there is no storage. Nothing is lowered.
bool ownoctonion(Element &e) {
  if (e.tag != tags::OCTONION || !e.octonion) return true;
  const Octonion *value = e.octonion;
  e.octonion = static_cast<Octonion *>(tryblock(sizeof(Octonion)));
  if (e.octonion) *e.octonion = *value;
  return e.octonion != nullptr;
}

// A name that is counted after all is exchanged for its permanent twin, as the copy may end up in any space.
void ownname(Element &e) {
  if (!isnamed(e) || e.tag == tags::HANDLE) return;
  if (!e.name)
    e.attributes = static_cast<std::uint16_t>(e.attributes & ~attributes::NAMED);
  else if (refr(e.name) >= 0)
    e.name = elementname(e.name);
}

void ownrest(const Element &e) {
  if (e.tag != tags::OCTONION) raisepoint(raiserecord(e));
}

}  // namespace

void copyelement(Element &to, const Element &from) {
  Element copy = from;
  ownname(copy);
  if (!ownoctonion(copy)) outofstorage();
  ownrest(copy);
  to = copy;
}

Element *copyelements(const Element *records, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (isnamed(records[i]) && records[i].tag != tags::HANDLE && records[i].name) elementname(records[i].name);
  Element *copy = newelements(count);
  if (!copy) return nullptr;
  std::memcpy(copy, records, count * sizeof(Element));
  for (std::size_t i = 0; i < count; ++i) {
    ownname(copy[i]);
    if (ownoctonion(copy[i])) continue;
    while (i-- > 0)
      if (copy[i].tag == tags::OCTONION) freeblock(copy[i].octonion);
    freeblock(copy);
    outofstorage();
  }
  for (std::size_t i = 0; i < count; ++i) ownrest(copy[i]);
  return copy;
}

void makeprivate(Point &point) {
  if (!point.data_pointer || refr(point.data_pointer) == 1) return;
  Element *copy = copyelements(point.data_pointer, point.elements);
  Point old = point;
  old.shape_pointer = nullptr;
  point.data_pointer = copy;
  lowerpoint(old);
}

// ---- Small values.

namespace {

void makescalar(Point &point, Element *element, std::uint32_t kind) {
  point = {};
  point.type = ISSCALAR | kind;
  point.elements = 1;
  point.data_pointer = element;
}

}  // namespace

void makeinteger(Point &point, std::int64_t value) {
  Element *element = newelement(tags::INTEGER, forms::NUMBER);
  element->integer = value;
  makescalar(point, element, HASINTEGER);
}

void makereal(Point &point, double value, std::uint16_t form) {
  Element *element = newelement(tags::REAL, form);
  element->real = value;
  makescalar(point, element, HASREAL);
}

void makeempty(Point &point) {
  Element *shape = newshape(0);
  point = {};
  point.rank = ranks::VECTOR;
  point.type = EMPTYVECTOR;
  point.depth = 1;
  point.shape_pointer = shape;
}

// ---- FILE elements.

namespace {

std::FILE **cell(const Element &e) {
  return static_cast<std::FILE **>(e.file.reserved);
}

constexpr std::uint16_t HANDLEFORM = forms::BINARY;

}  // namespace

void makehandle(Element &element, char *name, std::FILE *stream, const Point &descriptor) {
  auto *shared = static_cast<std::FILE **>(newblock(sizeof(std::FILE *)));
  auto *described = static_cast<Point *>(tryblock(sizeof(Point)));
  if (!described) {
    freeblock(shared);
    outofstorage();
  }
  *shared = stream;
  *described = descriptor;
  element = {};
  element.tag = tags::HANDLE;
  element.form = HANDLEFORM;
  element.attributes = attributes::NAMED;
  element.name = name;
  element.file = {stream, shared, described};
}

std::FILE *handlestream(const Element &element) {
  return element.file.reserved ? *cell(element) : element.file.stream;
}

void sethandlestream(Element &element, std::FILE *stream) {
  element.file.stream = stream;
  if (element.file.reserved) *cell(element) = stream;
}
