// Encapsulation.
#include "operators/capsulate.h"

#include <algorithm>
#include <cmath>

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "operators/descent.h"
#include "operators/records.h"
#include "spaces/convert.h"
#include "spaces/copies.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/parts.h"
#include "spaces/point.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

constexpr std::uint32_t UNFOLDABLE_KINDS = HASASCII | HASCOMPLEX | HASQUATERNION | HASOCTONION;

// Of one component?
bool isreal(const Element &e) {
  return partsof(e.tag) == 1;
}

// Gives a member that is to be changed a Point of its own. The record is in a block that nobody else sees, and so
// does that of each member around it: then alone does a count of 1 tell that the member is nobody else's.
Point *ownmember(Element &e) {
  if (referencecount(e.subarray) == 1) return e.subarray;
  Point *own = newpoint();
  *own = *e.subarray;
  referencepoint(own);
  release(e.subarray);
  e.subarray = own;
  return own;
}

// The kinds of the records as they are now, in place of those in the flag word, which is known to be true of the
// others.
void countkinds(Point &space) {
  std::uint32_t kinds = 0;
  for (std::uint32_t i = 0; i < space.elements; ++i) kinds |= kindbit(space.data_pointer[i].tag);
  space.type = (space.type & ~(KIND_BITS | COMPLEXED)) | kinds | (space.elements > 1 ? complexed(kinds) : 0);
}

void unname(Element &e) {
  if (e.tag != tags::QUATERNION) e.name = nullptr;
  e.attributes = static_cast<std::uint16_t>(e.attributes & ~attributes::NAMED);
}

// ---- All levels of a value.

struct Changing {
  Point *space;
  std::uint32_t next;
};

bool hasrecords(Point &space) {
  if (!isspace(space) || isempty(space)) return false;
  records::ensurekinds(space);
  return true;
}

// Makes the records of each space that `opens` one that nobody else sees, has `change` do to each what is to be done,
// member by member before what comes after it, and ends with `close`.
template <typename Opens, typename Change, typename Close>
void changeall(Point *point, Opens opens, Change change, Close close) {
  Descent<Changing> levels;
  begindescent(levels);
  const auto open = [&](Point *space) {
    if (!opens(*space)) return;
    makeprivate(*space);
    descend(levels, {space, 0});
  };
  open(point);
  while (levels.depth > 0) {
    auto &[space, next] = innermost(levels);
    if (next % POLL_INTERVAL == 0) safepoint();
    if (next == space->elements) {
      close(*space);
      --levels.depth;
      continue;
    }
    Element &e = space->data_pointer[next++];
    change(e);
    if (e.tag == tags::SUBARRAY) open(ownmember(e));
  }
  enddescent(levels);
}

// ---- Folding.

void foldvector(Point *point) {
  double parts[MOST_PARTS] = {};
  const std::int32_t tag = tagholding(static_cast<int>(point->elements));
  for (std::uint32_t i = 0; i < point->elements; ++i) parts[i] = realpart(point->data_pointer[i]);
  Element *folded = newelement(tags::FILLER, forms::NUMBER);
  Custody made;
  takecustody(made, releaseblock, folded);
  setnumber(*folded, tag, parts);
  endcustody(made);
  dereferencepoint(point);
  *point = {};
  point->type = ISSCALAR | kindbit(tag);
  point->elements = 1;
  point->data_pointer = folded;
}

// One real element of a whole value becomes the integer.
void wholetointeger(Point *point) {
  const Element &e = point->data_pointer[0];
  if (e.tag != tags::REAL || std::floor(e.real) != e.real || std::fabs(e.real) >= INTEGER_BOUND) return;
  makeprivate(*point);
  Element &own = point->data_pointer[0];
  own.integer = saturate(own.real);
  own.tag = tags::INTEGER;
  own.form = forms::NUMBER;
  unname(own);
  countkinds(*point);
}

bool isfoldable(const Point &point) {
  if ((point.type & UNFOLDABLE_KINDS) != 0) return false;
  return std::all_of(point.data_pointer, point.data_pointer + point.elements, isreal);
}

// ---- Opening.

// How many components each element opens into: those of the widest; 0 where one is no number.
std::size_t widthof(const Point &point) {
  int width = 0;
  for (std::uint32_t i = 0; i < point.elements; ++i) {
    const int parts = partsof(point.data_pointer[i].tag);
    if (parts == 0) return 0;
    width = std::max(width, parts);
  }
  const Element &first = point.data_pointer[0];
  // A single complex number on the real line opens into that real.
  if (point.rank == 0 && first.tag == tags::COMPLEX && first.complex.im == 0) return 1;
  return static_cast<std::size_t>(width);
}

// A shape with one more axis, the fastest, in front; of a scalar, the only one.
Element *openedshape(const Point &point, std::size_t width) {
  const auto rank = static_cast<std::size_t>(point.rank);
  Element *shape = newelements(rank + 1);
  setinteger(shape[0], static_cast<std::int64_t>(width));
  for (std::size_t axis = 0; axis < rank; ++axis) setinteger(shape[axis + 1], point.shape_pointer[axis].integer);
  return shape;
}

// The components of the elements, one row each. An integer that opens alone stays one.
void writeopened(const Point &point, std::size_t width, Element *to) {
  for (std::uint32_t i = 0; i < point.elements; ++i) {
    const Element &e = point.data_pointer[i];
    if (i % POLL_INTERVAL == 0) safepoint();
    double parts[MOST_PARTS] = {};
    readparts(e, parts);
    for (std::size_t k = 0; k < width; ++k, ++to) {
      *to = {};
      to->form = forms::NUMBER;
      to->tag = width == 1 && e.tag == tags::INTEGER ? tags::INTEGER : tags::REAL;
      if (to->tag == tags::INTEGER)
        to->integer = e.integer;
      else
        to->real = parts[k];
    }
  }
}

// A space without members.
void encapsulatesimple(Point &space, Point **stackpointer, const Point *instruction) {
  if (space.rank != ranks::VECTOR) return exception(messages::ENCAPSULATE_DIMENSIONS, stackpointer, instruction);
  if (!isfoldable(space)) return;
  if (space.elements == 1) return wholetointeger(&space);
  if (space.elements <= MOST_PARTS) foldvector(&space);
}

}  // namespace

void encapsulate(Point *point, Point **stackpointer, const Point *instruction) {
  changeall(
      point,
      [&](Point &space) {
        if (isspace(space) && isempty(space)) return false;
        records::ensurekinds(space);
        if (!isspace(space) || (space.type & STRUCTURED) == 0) {
          encapsulatesimple(space, stackpointer, instruction);
          return false;
        }
        const bool mixed = (space.type & COMPLEXED) != 0;
        if (mixed) exception(messages::ENCAPSULATE_COMPLEXED, stackpointer, instruction);
        return !mixed;
      },
      [](Element &) {}, [](Point &) {});
}

void decapsulate(Point *point) {
  if (!isspace(*point) || isempty(*point) || point->elements == 0) return;
  const std::size_t width = widthof(*point);
  if (width == 0) return;
  const std::size_t count = width * point->elements;
  if (count > MOST_ELEMENTS) outofstorage();
  Point result{};
  Custody made;
  takecustody(made, releasepoint, &result);
  result.rank = point->rank + 1;
  result.shape_pointer = openedshape(*point, width);
  result.data_pointer = newelements(count);
  writeopened(*point, width, result.data_pointer);
  result.elements = static_cast<std::uint32_t>(count);
  result.depth = 1;
  result.type = (result.rank == ranks::VECTOR ? ISVECTOR : ISARRAY) | (count == 1 ? ISONEELEMENT : 0);
  countkinds(result);
  endcustody(made);
  dereferencepoint(point);
  *point = result;
}

void enascii(Point *point, double tolerance) {
  changeall(
      point, hasrecords,
      [=](Element &e) {
        if (!isreal(e)) return;
        const double whole = std::nearbyint(realpart(e));
        if (std::fabs(realpart(e) - whole) > tolerance || !(whole >= 0 && whole <= 255)) return;
        unname(e);
        e.tag = tags::ASCII;
        e.form = 0;
        e.integer = static_cast<std::int64_t>(whole);
      },
      countkinds);
}

void deascii(Point *point) {
  changeall(
      point, hasrecords,
      [](Element &e) {
        if (e.tag < 0 || e.tag == tags::HANDLE) return;
        unname(e);
        if (e.tag != tags::ASCII) return;
        e.integer = e.ascii;
        e.tag = tags::INTEGER;
        e.form = forms::NUMBER;
      },
      countkinds);
}

}  // namespace morvik
