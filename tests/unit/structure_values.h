// Values for the tests of the structural instructions: random spaces of every kind, and what they hold as text, so that
// a model of plain vectors can be compared with them.
#pragma once

#include <bit>
#include <random>

#include "recount.h"

namespace structured {

using namespace points;
using Extents = std::vector<std::int64_t>;
using Texts = std::vector<std::string>;

// What an element is, all the way down, with the flag word and the depth of each space or without.
std::string textof(const Point &p, bool flags = false);
inline std::string textof(const Element &e, bool flags = false) {
  std::string text = std::to_string(e.tag) + ":";
  if (e.tag < 0) return text + e.name;
  switch (e.tag) {
    case tags::SUBARRAY:
      return text + textof(*e.subarray, flags);
    case tags::ASCII:
      return text + static_cast<char>(e.ascii);
    case tags::UNICODE:
    case tags::FILLER:
      return text;
    case tags::INTEGER:
      return text + std::to_string(e.integer);
    case tags::REAL:
      return text + std::to_string(e.real);
    case tags::COMPLEX:
      return text + std::to_string(e.complex.re) + "," + std::to_string(e.complex.im);
    case tags::QUATERNION:
      for (const double part : quaternion(e).part) text += std::to_string(part) + ",";
      return text;
    case tags::OCTONION:
      for (const double part : e.octonion->part) text += std::to_string(part) + ",";
      return text;
    default:
      return text + (e.name ? e.name : "?");
  }
}
inline Texts textsof(const Point &p, bool flags = false) {
  Texts texts;
  for (std::uint32_t i = 0; i < p.elements && p.data_pointer; ++i) texts.push_back(textof(p.data_pointer[i], flags));
  return texts;
}
inline Extents shapeof(const Point &p) {
  Extents shape;
  for (std::int32_t i = 0; i < p.rank; ++i) {
    EXPECT_EQ(p.shape_pointer[i].tag, tags::INTEGER);
    shape.push_back(p.shape_pointer[i].integer);
  }
  return shape;
}
inline std::string textof(const Point &p, bool flags) {
  std::string text = std::to_string(p.rank);
  if (flags) text += "/" + std::to_string(p.type) + "/" + std::to_string(p.depth);
  text += "(";
  if (p.rank < 0) return text + (p.name ? p.name : "?") + ")";
  for (const std::int64_t extent : shapeof(p)) text += std::to_string(extent) + " ";
  for (const std::string &e : textsof(p, flags)) text += "[" + e + "]";
  return text + ")";
}

// Is the flag word of a space one that its readers can trust?
inline void expecthonest(const Point &p) {
  if (p.rank < 0) return;
  std::uint64_t product = 1;
  for (const std::int64_t extent : shapeof(p)) product *= static_cast<std::uint64_t>(extent);
  ASSERT_EQ(p.elements, product);
  ASSERT_EQ(p.data_pointer == nullptr, product == 0);
  ASSERT_EQ((p.type & ISEMPTY) != 0, product == 0);
  ASSERT_EQ(p.type & (ISVARIABLE | ISLOCAL | ISADDRESS | ISFUNCTION | ISOPERATOR), 0u);
  std::uint32_t kinds = 0;
  bool enclosing = false, holding = false;
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    const Element &e = p.data_pointer[i];
    kinds |= kindbit(e.tag);
    enclosing |= e.tag == tags::SUBARRAY;
    holding |= e.tag < 0 || e.tag == tags::SUBARRAY || e.tag == tags::OCTONION || e.tag == tags::HANDLE;
  }
  ASSERT_EQ(kinds & ~p.type, 0u) << "a kind that the flag word does not know";
  ASSERT_TRUE(!enclosing || (p.type & STRUCTURED) != 0);
  ASSERT_TRUE(!holding || p.rank == 0 || mayown(p));
  ASSERT_TRUE(complexed(kinds) == 0 || (p.type & COMPLEXED) != 0);
  ASSERT_EQ((p.type & ISSCALAR) != 0, p.rank == 0);
  ASSERT_TRUE(product == 0 || ((p.type & ISARRAY) != 0) == (p.rank > 1));
  ASSERT_EQ((p.type & ISONEELEMENT) != 0, p.rank > 0 && product == 1);
}

enum Kind { BYTE, WHOLE, REAL, COMPLEX, QUATERNION, OCTONION, NESTED, NAME, PROGRAMME, KINDS };

inline Element anyelement(std::mt19937 &random, int kind) {
  const int n = static_cast<int>(random() % 100);
  switch (kind) {
    case BYTE:
      return character(static_cast<char>('a' + n % 26));
    case WHOLE:
      return whole(n);
    case REAL:
      return real(n + 0.5);
    case COMPLEX:
      return complex(n, 1);
    case QUATERNION:
      return quaternions(n, 1, 2, 3);
    case OCTONION:
      return octonion({1.0 * n, 4});
    case NESTED:
      if (n % 7 == 0) return enclosed(scalar(n % 2 == 0 ? octonion({1.0 * n}) : named(whole(n), "n")));
      return enclosed(n % 2 == 0 ? numbers({1, n, 3}) : vector({octonion({1.0 * n}), enclosed(text("xy")), whole(n)}));
    case NAME:
      return std::bit_cast<Element>(variable(n % 2 == 0 ? "x" : "y", 0));
    default:
      return std::bit_cast<Element>(function({numbers({n % 3 + 1})}, 1, 0, "f"));
  }
}

// A space of one kind or of any, with the flag word that a literal has, or with the count that COLLECT leaves.
inline Point anyspace(std::mt19937 &random, const Extents &shape) {
  const int only = static_cast<int>(random() % (2 * KINDS));
  std::size_t product = 1;
  for (const std::int64_t extent : shape) product *= static_cast<std::size_t>(extent);
  const auto next = [&] { return anyelement(random, only < KINDS ? only : static_cast<int>(random() % KINDS)); };
  if (shape.empty()) {
    const Element e = anyelement(random, static_cast<int>(random() % NESTED));
    return scalar(random() % 4 == 0 && e.tag < tags::QUATERNION ? named(e, "scalar") : e);
  }
  Elements elements(product);
  for (Element &e : elements) e = next();
  Point p = array(elements, shape);
  for (const Element &e : elements)
    if (e.tag < 0) p.type |= STRUCTURED;
  if (product > 0 && random() % 5 == 0) p.type = (p.type & (ISVECTOR | ISARRAY | ISONEELEMENT)) | (random() % 8 + 1);
  return p;
}

inline Extents anyshape(std::mt19937 &random, std::size_t rank) {
  Extents shape(rank);
  for (std::int64_t &extent : shape) {
    extent = static_cast<std::int64_t>(random() % 4);
    if (extent == 0 && random() % 4 != 0) extent = 1 + static_cast<std::int64_t>(random() % 2);
  }
  return shape;
}

// The place of each axis at element i, fastest first, and back.
inline Extents placeof(std::size_t i, const Extents &shape) {
  Extents place;
  for (const std::int64_t extent : shape) {
    place.push_back(static_cast<std::int64_t>(i) % extent);
    i /= static_cast<std::size_t>(extent);
  }
  return place;
}
inline std::size_t indexof(const Extents &place, const Extents &shape) {
  std::size_t index = 0;
  for (std::size_t axis = shape.size(); axis-- > 0;)
    index = index * static_cast<std::size_t>(shape[axis]) + static_cast<std::size_t>(place[axis]);
  return index;
}

}  // namespace structured
