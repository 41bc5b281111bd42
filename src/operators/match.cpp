// Matching. A symbolic Point counts as one element of its own kind.
#include "operators/match.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "failure/signals.h"
#include "operators/descent.h"
#include "spaces/parts.h"
#include "spaces/work.h"

namespace morvik {

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

// Infinities of one sign are equal.
bool samereal(double x, double y) {
  return x == y || (std::isnan(x) && std::isnan(y));
}
// The first difference ends the comparison. Each part that is looked at is a flop.
bool sameparts(const double *a, const double *b, int count) {
  int same = 0;
  while (same < count && samereal(a[same], b[same])) ++same;
  from_coprocessor[0].flops += std::min(same + 1, count);
  return same == count;
}

// Two elements of one tag. What is no number and no character is never the same, unless it is one and the same thing.
bool samevalue(const Element &a, const Element &b) {
  if (a.tag == tags::INTEGER) return a.integer == b.integer;
  double left[MOST_PARTS], right[MOST_PARTS];
  if (const int count = readparts(a, left); count > 0) {
    readparts(b, right);
    return sameparts(left, right, count);
  }
  switch (a.tag) {
    case tags::ASCII:
      return a.ascii == b.ascii;
    case tags::UNICODE:
      return a.unicode == b.unicode;
    case tags::HANDLE:
      return a.file.reserved == b.file.reserved && a.file.descriptor == b.file.descriptor;
    default:
      return a.tag < 0 && std::bit_cast<Point>(a).block == std::bit_cast<Point>(b).block;
  }
}

std::uint64_t weightof(const Point &p) {
  return 2 * static_cast<std::uint64_t>(Elements(p).count);
}

// The commonest kinds, without a question for each pair: as long as both elements are of this tag, `same` tells which
// have one value. Returns how many pairs these were, and the score of them.
template <std::int32_t tag, typename Same>
std::uint32_t scorealike(const Element *a, const Element *b, std::uint32_t count, std::uint64_t &score, Same same) {
  std::uint64_t different = 0;
  std::size_t i = 0;
  for (; i < count && a[i].tag == tag && b[i].tag == tag; ++i)
    if (!same(a[i], b[i])) ++different;
  const auto pairs = static_cast<std::uint32_t>(i);
  score += 2 * std::uint64_t{pairs} - different;
  return pairs;
}
std::uint32_t scorerun(const Element *a, const Element *b, std::uint32_t count, std::uint64_t &score) {
  switch (a->tag) {
    case tags::ASCII:
      return scorealike<tags::ASCII>(a, b, count, score,
                                     [](const Element &x, const Element &y) { return x.ascii == y.ascii; });
    case tags::INTEGER:
      return scorealike<tags::INTEGER>(a, b, count, score,
                                       [](const Element &x, const Element &y) { return x.integer == y.integer; });
    case tags::REAL: {
      const std::uint32_t pairs = scorealike<tags::REAL>(
          a, b, count, score, [](const Element &x, const Element &y) { return samereal(x.real, y.real); });
      from_coprocessor[0].flops += pairs;
      return pairs;
    }
    default:
      return 0;
  }
}

}  // namespace

namespace {

// Two spaces in step.
struct Pair {
  const Point *left, *right;
  std::uint32_t next;
};

// The records of both from `next` on; returns where two members are to be opened, or where the records end.
std::uint32_t scorelevel(const Pair &pair, Similarity &s) {
  const Elements l(*pair.left), r(*pair.right);
  const std::uint32_t common = std::min(l.count, r.count);
  for (std::uint32_t i = pair.next; i < common; ++i) {
    safepoint();
    i += scorerun(l.records + i, r.records + i, std::min(common - i, std::uint32_t{POLL_INTERVAL}), s.score);
    if (i == common) break;
    const Element &a = l.records[i], &b = r.records[i];
    const bool leftencloses = a.tag == tags::SUBARRAY, rightencloses = b.tag == tags::SUBARRAY;
    if (leftencloses && rightencloses) return i;
    if (leftencloses || rightencloses)
      s.weight += weightof(leftencloses ? *a.subarray : *b.subarray);
    else if (a.tag == b.tag)
      s.score += samevalue(a, b) ? 2 : 1;
  }
  return common;
}

std::uint64_t weightof(const Pair &pair) {
  return std::max(weightof(*pair.left), weightof(*pair.right));
}

// The same, where the first difference ends it. Is there none?
bool samelevel(const Pair &pair, std::uint32_t &end) {
  const Elements l(*pair.left), r(*pair.right);
  for (end = pair.next; end < l.count; ++end) {
    if (end % POLL_INTERVAL == 0) safepoint();
    const Element &a = l.records[end], &b = r.records[end];
    if (a.tag != b.tag) return false;
    if (a.tag == tags::SUBARRAY) return true;
    if (!samevalue(a, b)) return false;
  }
  return true;
}

std::uint32_t countof(const Point &p) {
  return Elements(p).count;
}

// Goes on with the members at this place of the innermost level, or with the level around it where there are none.
// Returns the new level, null for none.
const Pair *nextlevel(Descent<Pair> &levels, std::uint32_t place) {
  Pair &pair = innermost(levels);
  if (place >= std::min(countof(*pair.left), countof(*pair.right))) {
    --levels.depth;
    return nullptr;
  }
  pair.next = place + 1;
  descend(levels, {pair.left->data_pointer[place].subarray, pair.right->data_pointer[place].subarray, 0});
  return &innermost(levels);
}

}  // namespace

Similarity match(const Point &left, const Point &right) {
  Descent<Pair> levels;
  begindescent(levels);
  descend(levels, {&left, &right, 0});
  Similarity s{weightof(innermost(levels)), 0};
  while (levels.depth > 0)
    if (const Pair *inner = nextlevel(levels, scorelevel(innermost(levels), s))) s.weight += weightof(*inner) - 2;
  enddescent(levels);
  return s;
}

int exactmatch(const Point &left, const Point &right) {
  Descent<Pair> levels;
  begindescent(levels);
  bool same = countof(left) == countof(right);
  if (same) descend(levels, {&left, &right, 0});
  while (same && levels.depth > 0) {
    std::uint32_t place = 0;
    same = samelevel(innermost(levels), place);
    if (!same) break;
    if (const Pair *inner = nextlevel(levels, place)) same = countof(*inner->left) == countof(*inner->right);
  }
  enddescent(levels);
  return same ? 1 : 0;
}

}  // namespace morvik
