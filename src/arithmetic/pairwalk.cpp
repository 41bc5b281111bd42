// The walk of a dyadic scalar instruction over records of any kinds: stretches of one pair of kinds go to their loop,
// nested spaces are worked one by one. It runs on any thread, so it returns its failures.
#include "arithmetic/pairwalk.h"

#include "arithmetic/walk.h"

#include <bit>

#include "arithmetic/numberloops.h"
#include "arithmetic/operandfit.h"
#include "arithmetic/pairs.h"
#include "spaces/messages.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

std::int32_t combinespaces(const Dyadic &d, const Point &left, const Point &right, Point &result, Tally &tally);

// ---- Nested spaces.

// A simple element as a scalar, which lives as long as the record does and is only read.
Point scalarof(const Element &e) {
  Point p{};
  p.type = ISSCALAR | kindbit(e.tag) | (e.tag == tags::HANDLE ? HASFILE : 0);
  p.elements = 1;
  p.data_pointer = const_cast<Element *>(&e);
  return p;
}

// A member beside an empty one stays as it is.
std::int32_t copymember(const Element &e, Point &result) {
  if (e.tag == tags::SUBARRAY) {
    result = *e.subarray;
    referencepoint(&result);
    return 0;
  }
  if (e.tag < 0) {
    result = std::bit_cast<Point>(e);
    referencepoint(&result);
    return 0;
  }
  auto *record = static_cast<Element *>(tryblock(sizeof(Element)));
  if (!record) return messages::OUT_OF_STORAGE;
  *record = e;
  result = scalarof(*record);
  referencedataelems(record, 1);
  // The name of a scalar may be counted, and is then held by each scalar that bears it.
  if (isnamed(e) && e.tag < tags::OCTONION) reference(e.name);
  return 0;
}

std::int32_t combinemembers(const Dyadic &d, const Element &left, const Element &right, Point &result, Tally &tally) {
  const Point l = left.tag == tags::SUBARRAY ? *left.subarray : scalarof(left);
  const Point r = right.tag == tags::SUBARRAY ? *right.subarray : scalarof(right);
  if (hasnoelements(r)) return copymember(left, result);
  if (hasnoelements(l)) return copymember(right, result);
  return combinespaces(d, l, r, result, tally);
}

// The enclosed result of a pair of which one is a subarray, in a block of its own.
std::int32_t combineenclosed(const Dyadic &d, const Element &left, const Element &right, Element &result,
                             Tally &tally) {
  auto *box = static_cast<Point *>(tryblock(sizeof(Point)));
  if (!box) return messages::OUT_OF_STORAGE;
  const std::int32_t message = combinemembers(d, left, right, *box, tally);
  if (message != 0) {
    freeblock(box);
    return message;
  }
  result = {};
  setheading(result, heading(tags::SUBARRAY, 0));
  result.subarray = box;
  return 0;
}

// All that one space is combined to, in new blocks.
std::int32_t combinespaces(const Dyadic &d, const Point &left, const Point &right, Point &result, Tally &tally) {
  if (stackends()) return messages::OUT_OF_STORAGE;
  OperandFit fit;
  if (const std::int32_t message = fitoperands(d, left, right, fit); message != 0) return message;
  Run run = makerun(left, right, fit);
  if (!newrecords(run)) return messages::OUT_OF_STORAGE;
  if (const std::int32_t message = work(d, run, tally); message != 0) {
    abandonrun(run);
    return message;
  }
  tally.operations += fit.count;
  result = resultpoint(left, right, fit, run);
  return 0;
}

// ---- One record.

// The one element at i, which no loop takes as it is. Returns a message number.
std::int32_t workelement(const Dyadic &d, Run &run, std::size_t i, Tally &tally) {
  const Element left = run.left[i * run.leftstep], right = run.right[i * run.rightstep];
  Element &result = run.result[i * run.resultstep];
  if (left.tag == tags::SUBARRAY || right.tag == tags::SUBARRAY) {
    Element member;
    if (const std::int32_t message = combineenclosed(d, left, right, member, tally); message != 0) return message;
    releaseoverwritten(run, result);
    result = member;
    run.kinds |= STRUCTURED;
    return 0;
  }
  return d.refusal(left.tag, right.tag);
}

// ---- All of them.

struct DyadicFamily {
  static constexpr std::size_t KINDS = MIXED_KIND + 1;
  const Dyadic &loops;
  std::size_t pollinterval;

  bool inorder(const Run &run) const { return run.resultstep == 0; }
  static std::size_t kindat(const Run &run, std::size_t i) {
    return kindof(run.left[i * run.leftstep].tag, run.right[i * run.rightstep].tag);
  }
  auto kindmaskof(const Run &run, std::size_t size, bool ahead) const {
    return [this, &run, lefts = Tags(run.left, run.leftstep, size, ahead),
            rights = Tags(run.right, run.rightstep, size, ahead)](std::size_t i) {
      const std::int32_t left = run.left[i * run.leftstep].tag, right = run.right[i * run.rightstep].tag;
      const bool numbers = mixednumbers(left, right) == MIXED_NUMBERS && loops.kernels[MIXED_KIND];
      const auto l = lefts.unlike(numbers ? tags::INTEGER : left), r = rights.unlike(numbers ? tags::INTEGER : right);
      const std::uint64_t wanted = Tags::repeatedbyte(numbers ? MIXED_NUMBERS : 0);
      return KindMask{numbers ? MIXED_KIND : kindof(left, right),
                      Tags::places([&](std::size_t word) { return (l(word) | r(word)) ^ wanted; })};
    };
  }
  std::size_t continuemixed(Run &run, std::size_t from, std::size_t to, Tally &tally) const {
    return loops.kernels[MIXED_KIND] ? loops.kernels[MIXED_KIND](run, from, to, tally) : from;
  }
  std::int32_t workelement(Run &run, std::size_t i, Tally &tally) const {
    return morvik::workelement(loops, run, i, tally);
  }
};

}  // namespace

std::int32_t work(const Dyadic &d, Run &run, Tally &tally) noexcept {
  return walk(DyadicFamily{d, d.pollinterval}, run, tally);
}

}  // namespace morvik
