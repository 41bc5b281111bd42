// Raising and lowering; who owns what is told at the head of refderef.h. What dies with a block waits its turn in a
// list of the dead, threaded through their reference words: no depth of a value costs process stack or memory.
#include "spaces/refderef.h"

#include <bit>
#include <cstring>

#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/messages.h"

namespace morvik {

void (*wipelocalnames)(Point &functionend);

namespace {

// Lowers a count. Is it for the caller now to release what the block owns, and the block?
bool lowertolast(void *block) {
  if (!block) return false;
  const ReferenceLock lock;
  checkblock(block);
  const std::int64_t count = referencecount(block);
  if (count < 0) return false;
  if (count > 0) setreferencecount(block, count - 1);
  return count <= 1;
}

bool issymbolic(std::int32_t rank) {
  return rank <= ranks::LABEL && rank >= ranks::LOCAL_VARIABLE;
}

bool isslot(const Point &point) {
  return point.rank == ranks::ADDRESS && (point.type & ISLOCAL) != 0;
}
bool isfunctionend(const Point &point) {
  return point.rank == ranks::OPERATOR && point.instruction == instructions::FUNCTIONEND;
}

// ---- Raising.

void raisesymbolic(const Point &point) {
  reference(point.name);
  reference(point.link);
  if (!isslot(point)) reference(point.block);
}

void raiserecord(const Element &e) {
  checkwritten(e);
  switch (e.tag) {
    case tags::SUBARRAY:
      return reference(e.subarray);
    case tags::OCTONION:
      if (isnamed(e)) reference(e.name);
      return reference(e.octonion);
    case tags::HANDLE:
      reference(e.name);
      reference(e.file.reserved);
      return reference(e.file.descriptor);
    default:
      if (iswholepoint(e.tag)) raisesymbolic(std::bit_cast<Point>(e));
  }
}

// ---- The dead. Blocks of one Point (what encloses, what binds, what describes a file), and Programmes.

struct Dead {
  void *boxes = nullptr, *programmes = nullptr;
  bool draining = false;  // whoever finds one dead while they are released leaves it to that
};
constinit thread_local Dead dead;

void bury(void *&list, void *block) {
  *refer(block) = reinterpret_cast<std::int64_t>(list);
  list = block;
}
Point *exhume(void *&list) {
  void *const block = list;
  if (block) list = reinterpret_cast<void *>(*refer(block));  // NOLINT(performance-no-int-to-ptr)
  return static_cast<Point *>(block);
}

void lowerbox(Point *box) {
  if (lowertolast(box)) bury(dead.boxes, box);
}
void lowerprogramme(Point *programme) {
  if (lowertolast(programme)) bury(dead.programmes, programme);
}

// ---- Lowering.

void lowersymbolic(Point point) {
  if (isfunctionend(point) && point.link) wipelocalnames(point);
  switch (point.rank) {
    case ranks::FUNCTION:
      lowerprogramme(point.programme);
      break;
    case ranks::VARIABLE:
    case ranks::ADDRESS:
    case ranks::LABEL:
      if (!isslot(point)) lowerbox(point.target);
      break;
    default:
      release(point.block);
  }
  release(point.link);
  release(point.name);
}

void closestream(std::FILE *stream) {
  if (stream) std::fclose(stream);
}

// The cell of the stream is shared by all copies of a record, and so is what describes the file.
void lowerhandle(const Element &e) {
  release(e.name);
  std::FILE *const stream = handlestream(e);
  if (!e.file.reserved) {
    if (lowertolast(e.file.descriptor)) {
      closestream(stream);
      bury(dead.boxes, e.file.descriptor);
    }
    return;
  }
  if (lowertolast(e.file.reserved)) {
    closestream(stream);
    freeblock(e.file.reserved);
  }
  lowerbox(e.file.descriptor);
}

void lowerrecord(const Element &e) {
  checkwritten(e);
  switch (e.tag) {
    case tags::SUBARRAY:
      return lowerbox(e.subarray);
    case tags::OCTONION:
      if (isnamed(e)) release(e.name);
      return release(e.octonion);
    case tags::HANDLE:
      return lowerhandle(e);
    default:
      if (iswholepoint(e.tag)) lowersymbolic(std::bit_cast<Point>(e));
  }
}

void lowerrecords(const Element *records, std::size_t count) {
  for (const Element *e = records; e < records + count; ++e) {
    if (!isknown(e->tag)) failwith(messages::IMPOSSIBLE);
    lowerrecord(*e);
  }
}

// The same for so many that what they own is in no cache near by.
constexpr std::size_t MANY = 2000;
void lowermany(const Element *records, std::size_t count) {
  constexpr std::size_t AHEAD = 8;
  for (; count > AHEAD; ++records, --count) {
    prefetchcount(records[AHEAD].block);
    lowerrecords(records, 1);
  }
  lowerrecords(records, count);
}

// The last holder of a data block tells how many records it has, and whether they own anything.
void freerecords(const Point &space) {
  Element *const data = space.data_pointer;
  if (space.rank == ranks::SCALAR) {
    if (isnamed(*data) && data->tag < tags::OCTONION) release(data->name);
    lowerrecord(*data);
  } else if (mayown(space)) {
    (space.elements < MANY ? lowerrecords : lowermany)(data, space.elements);
  }
  freeblock(data);
}

void lowerpoint(const Point &point) {
  if (issymbolic(point.rank)) return lowersymbolic(point);
  if (lowertolast(point.data_pointer)) freerecords(point);
  release(point.shape_pointer);
}

void freebox(Point *box) {
  const Point held = *box;
  freeblock(box);
  lowerpoint(held);
}

void freeprogramme(Point *header) {
  Point *p = header + 1;
  for (; !isend(*p); ++p) lowerpoint(*p);
  release(p->name);
  release(p->link);
  release(header->link);
  if (header->block != header) release(header->block);
  freeblock(header);
}

// What the next of them holds.
void prefetchbox(const Point *box) {
  if (!box) return;
  prefetchcount(box->data_pointer);
  prefetchcount(box->shape_pointer);
}

constexpr std::uint32_t RELEASES_BETWEEN_POLLS = 4096;

void drain() {
  if (dead.draining || (!dead.boxes && !dead.programmes)) return;
  dead.draining = true;
  for (std::uint32_t done = 1; dead.boxes || dead.programmes; ++done) {
    if (Point *box = exhume(dead.boxes)) {
      prefetchbox(static_cast<Point *>(dead.boxes));
      freebox(box);
    } else {
      freeprogramme(exhume(dead.programmes));
    }
    if (done % RELEASES_BETWEEN_POLLS == 0 && releasestops && releasestops()) break;
  }
  dead.draining = false;
}

}  // namespace

constinit thread_local Question releasestops = nullptr;

void finishreleases() {
  const Question stops = releasestops;
  releasestops = nullptr;
  lockreferences();
  drain();
  unlockreferences();
  releasestops = stops;
}

void dropwalks() {
  dead.draining = false;
  dropreferencelocks();
}

void referencesymbolic(const Point &point) {
  if (issymbolic(point.rank)) return raisesymbolic(point);
  reference(point.shape_pointer);
  reference(point.data_pointer);
}

namespace {

// Coprocessors might let go of it in between.
inline bool isheldbyothers(const Point &space) {
  return isspace(space) && !coprocessors_running && referencecount(space.data_pointer) > 1;
}

}  // namespace

void dereferencepoint(Point *point) {
  if (!point) return;
  if (ownsoneblock(*point)) [[likely]]
    return dereference(point->data_pointer);
  // The same of a space whose records own nothing, or stay with whoever holds its block too: two counts.
  if ((point->rank > ranks::SCALAR && !mayown(*point)) || isheldbyothers(*point)) [[likely]] {
    dereference(point->data_pointer);
    return dereference(point->shape_pointer);
  }
  const Point held = *point;
  point->shape_pointer = nullptr;
  point->data_pointer = nullptr;
  if (issymbolic(held.rank)) point->link = nullptr;
  lockreferences();
  lowerpoint(held);
  drain();
  unlockreferences();
}

void dereferencebinding(Point *&target) {
  Point *const old = target;
  target = nullptr;
  lockreferences();
  lowerbox(old);
  drain();
  unlockreferences();
}

void referencedataelems(Element *records, std::size_t count) {
  lockreferences();
  for (const Element *e = records; e < records + count; ++e) {
    if (!isknown(e->tag)) failwith(messages::IMPOSSIBLE);
    raiserecord(*e);
  }
  unlockreferences();
}

void referencerecord(const Element &record) {
  raiserecord(record);
}

void dereferencedataelems(Element *records, std::size_t count) {
  lockreferences();
  lowerrecords(records, count);
  drain();
  unlockreferences();
}

void referencefun(Point *function) {
  reference(function->programme);
}

void dereferencefun(Point *function) {
  Point *const programme = function->programme;
  function->programme = nullptr;
  lockreferences();
  lowerprogramme(programme);
  drain();
  unlockreferences();
}

void cleanup(Point *programme) {
  for (Point *p = programme; !isend(*p); ++p) dereferencepoint(p);
  *programme = {};
}

}  // namespace morvik
