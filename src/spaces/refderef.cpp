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
  lockreferences();
  raisepoint(point);
  unlockreferences();
}

void dereferencepoint(Point *point) {
  if (!point) return;
  if (ownsoneblock(*point)) [[likely]]
    return dereference(point->data_pointer);
  const Point held = *point;
  point->shape_pointer = nullptr;
  point->data_pointer = nullptr;
  if (issymbolic(held.rank)) point->link = nullptr;
  lockreferences();
  lowerpoint(held);
  unlockreferences();
}

void dereferencebinding(Point *&target) {
  Point *old = target;
  target = nullptr;
  if (lowered(old)) freebinding(old);
}

void referencedataelems(Element *records, std::size_t count) {
  lockreferences();
  raisepoint(raiserecords(records, count));
  unlockreferences();
}

void referencerecord(const Element &record) {
  raisepoint(raiserecord(record));
}

void dereferencedataelems(Element *records, std::size_t count) {
  lockreferences();
  Point last;
  if (lowerrecords(records, count, last)) lowerpoint(last);
  unlockreferences();
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
