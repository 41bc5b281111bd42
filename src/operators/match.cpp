// Matching. A symbolic Point counts as one element of its own kind.
#include "operators/match.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace {

// The elements of a Point: those of a space, or the symbolic Point itself as a record.
struct Elements {
  Element self;
  const Element *records;
  std::uint32_t count;
  explicit Elements(const Point &p) : self(std::bit_cast<Element>(p)), records(&self), count(1) {
    if (!isspace(p)) return;
    records = p.data_pointer;
    count = p.data_pointer ? p.elements : 0;
  }
};

// The first difference ends the comparison; each part compared is one flop.
bool sameparts(const double *a, const double *b, int count, double &flops) {
  return std::equal(a, a + count, b, [&flops](double x, double y) {
    flops += 1;
    constexpr double LARGEST = std::numeric_limits<double>::max();
    if (std::isnan(x) && std::isnan(y)) return true;
    if (std::fabs(x) > LARGEST && std::fabs(y) > LARGEST) return std::signbit(x) == std::signbit(y);
    return x == y;
  });
}

// Two elements of one tag. What is no number and no character is never the same, unless it is one and the same thing.
bool samevalue(const Element &a, const Element &b, double &flops) {
  switch (a.tag) {
    case tags::ASCII:
      return a.ascii == b.ascii;
    case tags::UNICODE:
      return a.unicode == b.unicode;
    case tags::INTEGER:
      return a.integer == b.integer;
    case tags::REAL:
      return sameparts(&a.real, &b.real, 1, flops);
    case tags::COMPLEX: {
      const double x[2] = {a.complex.re, a.complex.im}, y[2] = {b.complex.re, b.complex.im};
      return sameparts(x, y, 2, flops);
    }
    case tags::QUATERNION: {
      const Quaternion x = quaternion(a), y = quaternion(b);
      return sameparts(x.part, y.part, 4, flops);
    }
    case tags::OCTONION:
      return sameparts(a.octonion->part, b.octonion->part, 8, flops);
    case tags::HANDLE:
      return a.file.reserved == b.file.reserved && a.file.descriptor == b.file.descriptor;
    default:
      return a.tag < 0 && std::bit_cast<Point>(a).block == std::bit_cast<Point>(b).block;
  }
}

std::uint64_t weightof(const Point &p) {
  return 2 * static_cast<std::uint64_t>(Elements(p).count);
}

}  // namespace

Similarity match(const Point &left, const Point &right) {
  const Elements l(left), r(right);
  Similarity s{2 * static_cast<std::uint64_t>(std::max(l.count, r.count)), 0, 0};
  for (std::uint32_t i = 0; i < std::min(l.count, r.count); ++i) {
    const Element &a = l.records[i], &b = r.records[i];
    const bool leftencloses = a.tag == tags::SUBARRAY, rightencloses = b.tag == tags::SUBARRAY;
    if (leftencloses && rightencloses) {
      const Similarity inner = match(*a.subarray, *b.subarray);
      s.weight += inner.weight - 2;
      s.score += inner.score;
      s.flops += inner.flops;
    } else if (leftencloses || rightencloses) {
      s.weight += weightof(leftencloses ? *a.subarray : *b.subarray);
    } else if (a.tag == b.tag) {
      s.score += samevalue(a, b, s.flops) ? 2 : 1;
    }
  }
  return s;
}

int exactmatch(const Point &left, const Point &right) {
  double uncounted = 0;
  const Elements l(left), r(right);
  if (l.count != r.count) return 0;
  for (std::uint32_t i = 0; i < l.count; ++i) {
    const Element &a = l.records[i], &b = r.records[i];
    if (a.tag != b.tag) return 0;
    if (a.tag == tags::SUBARRAY ? exactmatch(*a.subarray, *b.subarray) == 0 : !samevalue(a, b, uncounted)) return 0;
  }
  return 1;
}
