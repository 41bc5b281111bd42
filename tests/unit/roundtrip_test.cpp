// What is printed in source form reads back as what it was: values by the thousand, and the oddities that are kept.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "reading.h"
#include "spaces/hypercomplex.h"

using namespace morvik;

namespace {

using namespace points;

testing::AssertionResult readsback(Reader &reader, Point &p, double tolerance = 0) {
  const std::string text = print(p, true);
  std::vector<Point> read = reader.read(text);
  testing::AssertionResult result = read.size() == 1 ? same(p, read[0], tolerance) : differ("not one Point");
  if (result && p.elements > 0 && p.depth != read[0].depth)
    result = differ("depths") << ' ' << p.depth << ' ' << read[0].depth;
  for (Point &point : read) drop(point);
  return result << "\n" << text.substr(0, 2000);
}

// ---- Values at random, of what a text carries whole.

struct Maker {
  std::mt19937_64 random;

  std::uint64_t below(std::uint64_t limit) { return random() % limit; }
  bool once(std::uint64_t in) { return below(in) == 0; }

  // Never whole: that would come back as an integer.
  double fraction() {
    for (;;) {
      double value;
      const std::uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
      if (once(2)) value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(bits)), -40);
      if (std::isnan(value) || std::isinf(value) || (std::fabs(value) < 1e17 && value != std::trunc(value)))
        return value;
    }
  }
  // Any value that the spelling of the parts of a number carries.
  double part() { return once(3) ? static_cast<double>(static_cast<std::int64_t>(below(100)) - 50) : fraction(); }
  double lastpart() {
    for (;;)
      if (const double value = part(); value != 0) return value;
  }
  double angle() { return static_cast<double>(below(1000000) + 1) / 1000003; }

  std::uint16_t prefixed() { return once(3) ? attributes::PREFIX_R : std::uint16_t{0}; }
  std::uint16_t form() { return once(2) ? forms::CARTESIAN : forms::NUMBER; }

  // Polar components for which every angle comes back: the arc sine takes a component as it is.
  Element polar(int parts) {
    double angles[8] = {};
    angles[0] = angle();
    for (int k = 1; k < parts; ++k) angles[k] = angle();
    const std::uint16_t more = static_cast<std::uint16_t>(prefixed() | (once(2) ? attributes::DEGREES : 0));
    double out[8] = {};
    if (parts == 2) {
      cartesiancomplex(out, angles);
      return complex(out[0], out[1], forms::POLAR, more);
    }
    cartesianocto(out, angles);
    return octonion({out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7]}, forms::POLAR, more);
  }

  Element integer() {
    // All integers are read through a double.
    const std::int64_t value = static_cast<std::int64_t>(random()) >> (11 + below(50));
    switch (below(4)) {
      case 0:
        return whole(value & 1, forms::BOOLEAN);
      case 1:
        return whole(static_cast<std::int64_t>(random()) >> below(64), forms::BINARY);
      default:
        return whole(value);
    }
  }

  Element element(std::int32_t tag) {
    switch (tag) {
      case tags::ASCII: {
        const auto byte = static_cast<char>(below(256));
        return character(byte == '\'' ? 'q' : byte, once(8) ? forms::BINARY : std::uint16_t{0});
      }
      case tags::INTEGER:
        return integer();
      case tags::REAL:
        return real(fraction());
      case tags::COMPLEX:
        return once(4) ? polar(2) : complex(part(), lastpart(), form(), prefixed());
      case tags::QUATERNION:
        return quaternions(part(), part(), part(), lastpart(), form(), prefixed());
      default:
        if (once(4)) return polar(8);
        return octonion({part(), part(), part(), part(), part(), part(), part(), lastpart()}, form(), prefixed());
    }
  }

  Point space(int depth) {
    const auto rank = below(5);
    const auto tag = static_cast<std::int32_t>(std::vector{2, 2, 4, 4, 5, 6, 7, 8}[below(8)]);
    if (rank == 0 && (depth == 0 || tag == tags::ASCII)) return scalar(element(tag));
    std::vector<std::int64_t> shape;
    std::size_t count = 1;
    for (std::uint64_t k = 0; k < std::max<std::uint64_t>(rank, 1); ++k) {
      shape.push_back(static_cast<std::int64_t>(below(rank == 1 ? 12 : 4)));
      count *= static_cast<std::size_t>(shape.back());
    }
    if (count == 0) return empty();
    Elements elements;
    const bool mixed = once(3);
    for (std::size_t i = 0; i < count; ++i) {
      if (depth < 4 && once(6))
        elements.push_back(enclosed(space(depth + 1)));
      else
        elements.push_back(element(mixed ? static_cast<std::int32_t>(std::vector{2, 4, 5, 6, 7, 8}[below(6)]) : tag));
    }
    return array(elements, shape);
  }
};

// A scalar by itself among others is one of them; only a character has a literal of its own.
bool hasbarescalar(const Point &p) {
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    if (p.data_pointer[i].tag != tags::SUBARRAY) continue;
    const Point &inner = *p.data_pointer[i].subarray;
    if ((inner.rank == 0 && inner.data_pointer->tag != tags::ASCII) || hasbarescalar(inner)) return true;
  }
  return false;
}

TEST(RoundTrip, ValuesAtRandom) {
  Reader reader;
  Maker maker{std::mt19937_64(20240611)};
  int values = 0;
  while (values < 4000) {
    Point p = maker.space(0);
    if (!hasbarescalar(p)) {
      ++values;
      ASSERT_TRUE(readsback(reader, p, 1e-13));
    }
    drop(p);
  }
}

TEST(RoundTrip, ScalarsAtRandom) {
  Reader reader;
  Maker maker{std::mt19937_64(99)};
  for (int i = 0; i < 6000; ++i) {
    Point p = scalar(maker.element(static_cast<std::int32_t>(std::vector{2, 4, 5, 6, 7, 8}[i % 6])));
    ASSERT_TRUE(readsback(reader, p, 1e-13));
    drop(p);
  }
}

TEST(RoundTrip, PolarQuaternionsKeepTheirForm) {
  Reader reader;
  Maker maker{std::mt19937_64(4)};
  for (int i = 0; i < 500; ++i) {
    // Of length 1 and without a last component, the arc sine of the third is its angle.
    const double in[4] = {1, maker.angle() * 3, maker.angle(), 0};
    double out[4];
    cartesianquat(out, in);
    Point p = scalar(quaternions(out[0], out[1], out[2], out[3], forms::POLAR));
    ASSERT_TRUE(readsback(reader, p, 1e-13));
    drop(p);
  }
}

// Components, once read, are cartesian.
TEST(RoundTrip, PolarNumbersKeepTheirValueWhereTheAnglesDoNot) {
  Reader reader;
  const Elements elements = {quaternions(1, 2, 3, 4, forms::POLAR, attributes::DEGREES),
                             quaternions(0.25, 0.5, 0.125, 0.375, forms::POLAR), complex(1e-20, 1e-20, forms::POLAR),
                             octonion({3, 1, 2}, forms::POLAR)};
  for (const Element &e : elements) {
    Point p = scalar(e);
    std::vector<Point> read = reader.read(print(p, true));
    ASSERT_EQ(read.size(), 1u);
    std::vector<double> parts = partsof(*read[0].data_pointer);
    parts.resize(partsof(e).size());  // zeros at the end were dropped
    EXPECT_EQ(parts, partsof(e));
    EXPECT_EQ(read[0].data_pointer->form, forms::CARTESIAN);
    drop(read[0]);
    drop(p);
  }
}

TEST(RoundTrip, NotANumberMarksAShorterTruth) {
  Reader reader;
  const double none = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
  const Elements elements = {quaternions(0.5, 0.25, 0.25, none),
                             complex(none, none),
                             complex(infinite, -infinite),
                             complex(-infinite, none),
                             octonion({1, 0, 0, 0, 1, none, none, none}),
                             octonion({infinite, none, infinite, none, infinite, none, -infinite, none}),
                             octonion({none, -infinite, 0, 0, 0, 0, 0, -none}),
                             real(none),
                             real(-none),
                             real(infinite)};
  for (const Element &e : elements) {
    Point p = scalar(e);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

TEST(RoundTrip, EveryByteInAString) {
  Reader reader;
  for (const std::size_t length : {2u, 3u, 7u}) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
      if (byte != '\'') bytes += std::string(length, static_cast<char>(byte));
    Point p = text(bytes);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

TEST(RoundTrip, WhatLooksLikeACharacterInBits) {
  Reader reader;
  for (const char *bytes : {"`0#1`", "``0#1`", "`0#`", "`0#2`", "a`0#101`b", "`0", "0#1`", "`0#111111111111`"}) {
    Point p = text(bytes);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

// ---- The oddities that are kept.

Point readone(Reader &reader, const std::string &text) {
  std::vector<Point> read = reader.read(text);
  EXPECT_EQ(read.size(), 1u) << text;
  return read.at(0);
}

TEST(RoundTripOddities, AWholeRealComesBackAsAnInteger) {
  Reader reader;
  Point p = readone(reader, source(vector({real(1.5), real(2)})));
  EXPECT_EQ(p.data_pointer[0].tag, tags::REAL);
  EXPECT_EQ(p.data_pointer[1].tag, tags::INTEGER);
  drop(p);
}

TEST(RoundTripOddities, DroppedZeroPartsLowerTheType) {
  Reader reader;
  Point p = readone(reader, source(scalar(quaternions(1, 2, 0, 0))));
  EXPECT_EQ(p.data_pointer->tag, tags::COMPLEX);
  drop(p);
  p = readone(reader, source(scalar(complex(1, 0))));
  EXPECT_EQ(p.data_pointer->tag, tags::INTEGER);
  drop(p);
}

TEST(RoundTripOddities, AnEmptySpaceComesBackAsNil) {
  Reader reader;
  Point characters = text("");
  Point p = readone(reader, source(characters));
  EXPECT_EQ(p.elements, 0u);
  EXPECT_EQ(p.type & HASASCII, 0u);
  drop(p);
}

}  // namespace
