// Values for the tests of dyadic instructions: elements without the records, and what becomes of them in promotion.
#pragma once

#include <array>
#include <cmath>
#include <limits>

#include "points.h"

namespace dyads {

constexpr double INF = std::numeric_limits<double>::infinity();
constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t GREATEST = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t LEAST = std::numeric_limits<std::int64_t>::min();

// An element without the record: `whole` is the integer or the code of a character.
struct Value {
  std::int32_t tag = 0;
  std::uint16_t form = 0, attributes = 0;
  std::int64_t whole = 0;
  std::array<double, 8> parts{};
  double tolerance = 0;  // of an expected value: how far components may be off, over the greatest of them
};
using Values = std::vector<Value>;

inline int count(std::int32_t tag) {
  return tag < tags::REAL ? 0 : 1 << (tag - tags::REAL);
}
inline bool isnumber(const Value &v) {
  return v.tag >= tags::INTEGER;
}
inline Value letter(std::uint8_t code) {
  return {tags::ASCII, 0, 0, code, {}};
}
inline Value wide(std::uint16_t code) {
  return {tags::UNICODE, 0, 0, code, {}};
}
inline Value integer(std::int64_t value) {
  return {tags::INTEGER, forms::NUMBER, 0, value, {}};
}
inline Value real(double value) {
  return {tags::REAL, forms::NUMBER, 0, 0, {value}};
}
inline Value hyper(std::int32_t tag, const std::array<double, 8> &parts, std::uint16_t form = forms::CARTESIAN,
                   std::uint16_t attributes = 0) {
  return {tag, form, attributes, 0, parts};
}
inline Value complex(double re, double im) {
  return hyper(tags::COMPLEX, {re, im});
}
inline Value quaternion(double a, double b, double c, double d) {
  return hyper(tags::QUATERNION, {a, b, c, d});
}
inline Value octonion(const std::array<double, 8> &parts) {
  return hyper(tags::OCTONION, parts);
}
inline Value truth(bool value) {
  return {tags::INTEGER, forms::BOOLEAN, 0, value, {}};
}

inline Element elementof(const Value &v) {
  Element e = points::record(v.tag, v.form, v.attributes);
  const auto &p = v.parts;
  if (v.tag == tags::ASCII) e.ascii = static_cast<std::uint8_t>(v.whole);
  if (v.tag == tags::UNICODE) e.unicode = static_cast<std::uint16_t>(v.whole);
  if (v.tag == tags::INTEGER) e.integer = v.whole;
  if (v.tag == tags::REAL) e.real = p[0];
  if (v.tag == tags::COMPLEX) e.complex = {p[0], p[1]};
  if (v.tag == tags::QUATERNION) setquaternion(e, {{p[0], p[1], p[2], p[3]}});
  if (v.tag == tags::OCTONION)
    return points::octonion({p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7]}, v.form, v.attributes);
  return e;
}
inline Value valuein(const Element &e) {
  Value v{e.tag, e.form, e.attributes, 0, {}};
  if (e.tag == tags::ASCII) v.whole = e.ascii;
  if (e.tag == tags::UNICODE) v.whole = e.unicode;
  if (e.tag == tags::INTEGER) v.whole = e.integer;
  if (e.tag == tags::REAL) v.parts[0] = e.real;
  if (e.tag == tags::COMPLEX) v.parts = {e.complex.re, e.complex.im};
  if (e.tag == tags::QUATERNION)
    for (std::size_t k = 0; k < 4; ++k) v.parts[k] = ::quaternion(e).part[k];
  if (e.tag == tags::OCTONION) std::copy_n(e.octonion->part, 8, v.parts.begin());
  return v;
}
inline bool same(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || a == b;
}
inline bool same(const Value &a, const Value &b) {
  bool equal = a.tag == b.tag && a.form == b.form && a.attributes == b.attributes && a.whole == b.whole;
  double allowance = 0;
  for (const double x : b.parts) allowance = std::fmax(allowance, std::fabs(x) * b.tolerance);
  for (std::size_t k = 0; k < a.parts.size(); ++k)
    equal = equal && (same(a.parts[k], b.parts[k]) || std::fabs(a.parts[k] - b.parts[k]) <= allowance);
  return equal;
}
inline std::ostream &operator<<(std::ostream &out, const Value &v) {
  out << "{tag " << v.tag << ", form " << v.form << ", attributes " << v.attributes << ", " << v.whole << ";";
  for (int k = 0; k < count(v.tag); ++k) out << ' ' << v.parts[static_cast<std::size_t>(k)];
  return out << "}";
}

// A lower number in the kind of a higher one.
inline Value promoted(const Value &v, std::int32_t tag) {
  Value result = v;
  result.tag = tag;
  if (tag > tags::INTEGER && v.tag == tags::INTEGER) {
    result.parts[0] = static_cast<double>(v.whole);
    result.whole = 0;
  }
  return result;
}
// Form and attributes of a result that is a number of kind `tag`.
inline Value dressed(Value result, const Value &left, const Value &right) {
  const Value *like = nullptr;
  if (result.tag >= tags::COMPLEX && left.tag == right.tag) like = &left;
  if (result.tag == tags::COMPLEX && !like) like = left.tag == tags::COMPLEX ? &left : &right;
  result.form = like ? like->form : result.tag == tags::REAL ? forms::COMPUTED : forms::NUMBER;
  result.attributes = like ? like->attributes & ~(attributes::NAMED | attributes::SILENT) : 0;
  return result;
}

// Values of every kind that are worth a look together.
inline Values samples() {
  const double tiny = std::numeric_limits<double>::denorm_min();
  return {
      letter('b'),
      letter('a'),
      letter(0),
      letter(255),
      wide('b'),
      wide(0x3b1),
      wide('a'),
      integer(1),
      integer(0),
      integer(-7),
      integer(2),
      integer(GREATEST),
      integer(LEAST),
      integer((1LL << 53) + 1),
      truth(true),
      truth(false),
      real(0.25),
      real(-0.5),
      real(1),
      real(0),
      real(-0.0),
      real(0.75),
      real(2),
      real(-7),
      real(1e300),
      real(tiny),
      real(INF),
      real(-INF),
      real(NaN),
      real(0x1p53),
      real(1 + 0x1p-52),
      complex(0.5, 0.25),
      complex(0, -2),
      hyper(tags::COMPLEX, {-3, 4}, forms::POLAR, attributes::DEGREES),
      complex(0, 0),
      complex(0, 2),
      complex(5, 0),
      complex(NaN, 1),
      complex(0.5, NaN),
      complex(INF, -INF),
      quaternion(0, 0, -3, 1),
      quaternion(1, 0.5, 0.25, 0),
      quaternion(0.75, 0.5, 0.5, NaN),
      hyper(tags::QUATERNION, {-1, 2, 3, 4}, forms::POLAR),
      quaternion(0, 0, 0, 0),
      quaternion(INF, 0, 0, 0),
      octonion({0.5, -1, 2, 0.25, 0, 1, 0.75, 0.5}),
      octonion({0, 0, 0, 0, 0, 0, -4, 3}),
      octonion({-0.5, 0.5, 0.5, 0.5, 0.5, NaN, NaN, NaN}),
      octonion({}),
      hyper(tags::OCTONION, {5, 0, 0, 0, 0, 0, 0, 0}, forms::POLAR, attributes::DEGREES),
  };
}

}  // namespace dyads
