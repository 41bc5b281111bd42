// Points by hand, for tests: every maker gives a Point that owns what it holds; drop() gives it back.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "failure/exception.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "text/text.h"

using namespace morvik;

namespace points {

using Elements = std::vector<Element>;

inline Element record(std::int32_t tag, std::uint16_t form, std::uint16_t attributes = 0) {
  Element e{};
  e.tag = tag;
  e.form = form;
  e.attributes = attributes;
  return e;
}
inline Element whole(std::int64_t value, std::uint16_t form = forms::NUMBER) {
  Element e = record(tags::INTEGER, form);
  e.integer = value;
  return e;
}
inline Element real(double value, std::uint16_t form = forms::NUMBER) {
  Element e = record(tags::REAL, form);
  e.real = value;
  return e;
}
inline Element character(char byte, std::uint16_t form = 0) {
  Element e = record(tags::ASCII, form);
  e.ascii = static_cast<std::uint8_t>(byte);
  return e;
}
inline Element complex(double re, double im, std::uint16_t form = forms::CARTESIAN, std::uint16_t attributes = 0) {
  Element e = record(tags::COMPLEX, form, attributes);
  e.complex = {re, im};
  return e;
}
inline Element quaternions(double a, double b, double c, double d, std::uint16_t form = forms::CARTESIAN,
                           std::uint16_t attributes = 0) {
  Element e = record(tags::QUATERNION, form, attributes);
  setquaternion(e, {{a, b, c, d}});
  return e;
}
inline Element octonion(std::initializer_list<double> parts, std::uint16_t form = forms::CARTESIAN,
                        std::uint16_t attributes = 0) {
  Element e = record(tags::OCTONION, form, attributes);
  e.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
  *e.octonion = {};
  std::size_t k = 0;
  for (const double part : parts) e.octonion->part[k++] = part;
  return e;
}
// A scalar's name; the name of an element in a vector is permanent and must not be counted.
inline Element named(Element e, const char *name) {
  e.attributes |= attributes::NAMED;
  e.name = stringdup(name);
  return e;
}
inline Element enclosed(const Point &point) {
  Element e = record(tags::SUBARRAY, 0);
  e.subarray = newpoint();
  *e.subarray = point;
  return e;
}

inline std::uint32_t kindsof(const Elements &elements) {
  std::uint32_t kinds = 0;
  for (const Element &e : elements) {
    kinds |= kindbit(e.tag);
    if (e.tag == tags::SUBARRAY) kinds |= STRUCTURED | ISSTRUCTURE;
    if (e.tag == tags::HANDLE) kinds |= HASFILE;
  }
  return kinds | complexed(kinds);
}

inline Point scalar(const Element &e) {
  Point p{};
  p.type = ISSCALAR | kindsof({e});
  p.elements = 1;
  p.data_pointer = newelements(1);
  *p.data_pointer = e;
  return p;
}

inline Point array(const Elements &elements, const std::vector<std::int64_t> &shape) {
  Point p{};
  p.rank = static_cast<std::int32_t>(shape.size());
  p.depth = 1;
  // As a literal counts: a member that is a literal is one level, however shallow.
  for (const Element &e : elements)
    if (e.tag == tags::SUBARRAY)
      p.depth = std::max<std::int16_t>(p.depth, static_cast<std::int16_t>(std::max<int>(e.subarray->depth, 1) + 1));
  p.elements = static_cast<std::uint32_t>(elements.size());
  p.type = kindsof(elements) | (shape.size() > 1 ? ISARRAY : ISVECTOR) | (elements.size() == 1 ? ISONEELEMENT : 0) |
           (elements.empty() ? ISEMPTY : 0);
  p.shape_pointer = newelements(shape.size());
  for (std::size_t k = 0; k < shape.size(); ++k) p.shape_pointer[k] = whole(shape[k]);
  p.data_pointer = newelements(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) p.data_pointer[i] = elements[i];
  return p;
}
inline Point vector(const Elements &elements) {
  return array(elements, {static_cast<std::int64_t>(elements.size())});
}
inline Point numbers(std::initializer_list<std::int64_t> values, const std::vector<std::int64_t> &shape) {
  Elements elements;
  for (const std::int64_t value : values) elements.push_back(whole(value));
  return array(elements, shape);
}
inline Point numbers(std::initializer_list<std::int64_t> values) {
  return numbers(values, {static_cast<std::int64_t>(values.size())});
}
inline Point text(const std::string &bytes) {
  Elements elements;
  for (const char byte : bytes) elements.push_back(character(byte));
  Point p = vector(elements);
  p.type |= HASASCII;
  return p;
}
inline Point empty() {
  Point p;
  makeempty(p);
  return p;
}

inline Point symbol(std::int32_t rank, std::uint32_t type, const char *name, std::uint16_t modifier = 0) {
  Point p{};
  p.rank = rank;
  p.type = type;
  p.name = name ? stringdup(name) : nullptr;
  p.modifier = modifier;
  if (name && rank != ranks::OPERATOR) p.elements = static_cast<std::uint32_t>(std::strlen(name));
  return p;
}
inline Point operation(std::uint16_t instruction, const char *name, std::uint16_t modifier = 0) {
  Point p = symbol(ranks::OPERATOR, ISOPERATOR, name, modifier);
  p.instruction = instruction;
  return p;
}
inline Point variable(const char *name, std::uint16_t scope, std::uint32_t type = ISVARIABLE) {
  return symbol(ranks::VARIABLE, type, name, scope);
}
inline Point local(std::int32_t rank, std::int64_t position) {
  Point p = symbol(rank, ISLOCAL | (rank == ranks::LOCAL_ADDRESS ? ISADDRESS : ISVARIABLE), nullptr);
  p.elements = 1;
  p.data_pointer = newelements(1);
  *p.data_pointer = whole(position);
  return p;
}
// The body without FUNCTIONEND and END, which are added; takes over its Points.
inline Point function(const std::vector<Point> &body, int arguments = -1, int locals = 0, const char *name = nullptr,
                      std::uint32_t type = ISFUNCTION) {
  Point p = symbol(ranks::FUNCTION, type, name);
  p.arguments = static_cast<std::int16_t>(arguments);
  p.locals = static_cast<std::uint16_t>(locals);
  p.elements = static_cast<std::uint32_t>(body.size() + 2);
  p.programme = static_cast<Point *>(newblock((body.size() + 3) * sizeof(Point)));
  p.programme[0] = p;
  p.programme[0].elements = p.elements - 1;
  for (std::size_t i = 0; i < body.size(); ++i) p.programme[i + 1] = body[i];
  p.programme[body.size() + 1] = operation(instructions::FUNCTIONEND, ";");
  p.programme[body.size() + 2] = {};
  return p;
}

inline void drop(Point &p) {
  dereferencepoint(&p);
}

// What is written to a stream.
template <typename Write>
std::string written(Write write) {
  char *bytes = nullptr;
  std::size_t length = 0;
  std::FILE *stream = open_memstream(&bytes, &length);
  write(stream);
  std::fclose(stream);
  std::string text(bytes, length);
  std::free(bytes);
  return text;
}
inline std::string print(Point &p, bool source, int indent = 0) {
  return written([&](std::FILE *stream) { disass(stream, "", &p, indent, source ? 1 : 0); });
}
// Both forms, and the Point given back.
inline std::string source(Point p) {
  const std::string text = print(p, true);
  drop(p);
  return text;
}
inline std::string display(Point p) {
  const std::string text = print(p, false);
  drop(p);
  return text;
}

// The doubles of a number that has any.
inline std::vector<double> partsof(const Element &e) {
  switch (e.tag) {
    case tags::REAL:
      return {e.real};
    case tags::COMPLEX:
      return {e.complex.re, e.complex.im};
    case tags::QUATERNION: {
      const Quaternion q = quaternion(e);
      return {q.part, q.part + 4};
    }
    case tags::OCTONION:
      return {e.octonion->part, e.octonion->part + 8};
    default:
      return {};
  }
}

}  // namespace points
