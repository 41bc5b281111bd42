// A fixture for literals: what a text of one of them holds.
#pragma once

#include <bit>
#include <cmath>
#include <string>
#include <vector>

#include "compiled.h"
#include "spaces/hypercomplex.h"

using namespace morvik;

class Literals : public Compiled {
 protected:
  void expectinteger(const std::string &text, std::int64_t value) {
    const Point &p = single(text);
    EXPECT_EQ(p.rank, 0) << text;
    EXPECT_EQ(p.type, 0x10400u) << text;
    EXPECT_EQ(p.elements, 1u) << text;
    EXPECT_EQ(p.depth, 0) << text;
    EXPECT_EQ(p.shape_pointer, nullptr) << text;
    EXPECT_EQ(referencecount(p.data_pointer), 1) << text;
    EXPECT_EQ(p.data_pointer->tag, tags::INTEGER) << text;
    EXPECT_EQ(p.data_pointer->form, forms::NUMBER) << text;
    EXPECT_EQ(p.data_pointer->attributes, 0) << text;
    EXPECT_EQ(p.data_pointer->integer, value) << text;
  }
  void expectreal(const std::string &text, double value) {
    const Point &p = single(text);
    EXPECT_EQ(p.rank, 0) << text;
    EXPECT_EQ(p.type, 0x10800u) << text;
    EXPECT_EQ(p.data_pointer->tag, tags::REAL) << text;
    EXPECT_EQ(p.data_pointer->form, forms::NUMBER) << text;
    EXPECT_EQ(std::bit_cast<std::uint64_t>(p.data_pointer->real), std::bit_cast<std::uint64_t>(value)) << text;
  }
  void expectparts(const std::string &text, std::int32_t tag, std::uint16_t form, std::uint16_t attributes,
                   const std::vector<double> &parts) {
    const Point &p = single(text);
    const Element &e = *p.data_pointer;
    EXPECT_EQ(p.rank, 0) << text;
    EXPECT_EQ(p.type, ISSCALAR | kindbit(tag)) << text;
    ASSERT_EQ(e.tag, tag) << text;
    EXPECT_EQ(e.form, form) << text;
    EXPECT_EQ(e.attributes, attributes) << text;
    std::vector<double> found;
    if (tag == tags::COMPLEX) found = {e.complex.re, e.complex.im};
    if (tag == tags::QUATERNION) {
      const Quaternion q = quaternion(e);
      found.assign(q.part, q.part + 4);
    }
    if (tag == tags::OCTONION) found.assign(e.octonion->part, e.octonion->part + 8);
    ASSERT_EQ(found.size(), parts.size()) << text;
    for (std::size_t i = 0; i < parts.size(); ++i) {
      if (std::isnan(parts[i])) {
        EXPECT_TRUE(std::isnan(found[i])) << text << " part " << i;
      } else {
        EXPECT_DOUBLE_EQ(found[i], parts[i]) << text << " part " << i;
      }
    }
  }
  void expectcartesian(const std::string &text, std::vector<double> parts) {
    const std::int32_t tag = parts.size() == 2 ? tags::COMPLEX : parts.size() == 4 ? tags::QUATERNION : tags::OCTONION;
    expectparts(text, tag, forms::CARTESIAN, 0, parts);
  }
  // A vector literal of integers.
  std::vector<std::int64_t> integers(const Point &p) {
    std::vector<std::int64_t> values;
    for (std::uint32_t i = 0; i < p.elements; ++i) {
      EXPECT_EQ(p.data_pointer[i].tag, tags::INTEGER);
      values.push_back(p.data_pointer[i].integer);
    }
    return values;
  }
  std::string bytes(const Point &p) {
    std::string text;
    for (std::uint32_t i = 0; i < p.elements; ++i) {
      EXPECT_EQ(p.data_pointer[i].tag, tags::ASCII);
      text += static_cast<char>(p.data_pointer[i].ascii);
    }
    return text;
  }
  std::vector<std::int64_t> shape(const Point &p) {
    std::vector<std::int64_t> extents;
    for (std::int32_t i = 0; i < p.rank; ++i) {
      EXPECT_EQ(p.shape_pointer[i].tag, tags::INTEGER);
      EXPECT_EQ(p.shape_pointer[i].form, forms::NUMBER);
      extents.push_back(p.shape_pointer[i].integer);
    }
    return extents;
  }
};
using Extents = std::vector<std::int64_t>;
