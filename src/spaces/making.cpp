// Values made from nothing: scalars, the empty vector, FILE elements.
#include "spaces/making.h"

#include "spaces/blocks.h"
#include "spaces/parts.h"

namespace morvik {

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

void setnumber(Element &element, std::int32_t tag, const double *parts) {
  if (ownsparts(tag)) element.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
  element.tag = tag;
  writeparts(element, parts);
}

void makeempty(Point &point) {
  Element *shape = newshape(0);
  point = {};
  point.rank = ranks::VECTOR;
  point.type = EMPTY_VECTOR;
  point.depth = 1;
  point.shape_pointer = shape;
}

// ---- FILE elements.

namespace {

std::FILE **streamcell(const Element &e) {
  return static_cast<std::FILE **>(e.file.reserved);
}

constexpr std::uint16_t HANDLE_FORM = forms::BINARY;

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
  element.form = HANDLE_FORM;
  element.attributes = attributes::NAMED;
  element.name = name;
  element.file = {stream, shared, described};
}

std::FILE *handlestream(const Element &element) {
  return element.file.reserved ? *streamcell(element) : element.file.stream;
}

void sethandlestream(Element &element, std::FILE *stream) {
  element.file.stream = stream;
  if (element.file.reserved) *streamcell(element) = stream;
}

}  // namespace morvik
