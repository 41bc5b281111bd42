// Lifetimes at random: what instructions do to whole values, in any order, leaves every count exact.
#include <gtest/gtest.h>

#include <random>

#include "recount.h"
#include "spaces/copies.h"
#include "spaces/refderef.h"

using namespace morvik;

namespace {

using namespace points;

class RandomLifetimes : public Lifetimes, public testing::WithParamInterface<unsigned> {
 protected:
  std::mt19937 random{GetParam()};

  unsigned below(unsigned n) { return static_cast<unsigned>(random() % n); }

  Point value(int depth) {
    switch (below(depth > 0 ? 8 : 4)) {
      case 0:
        return scalar(octonion({1, 2}));
      case 1:
        return empty();
      case 2:
        return function({text("ab"), scalar(octonion({5}))}, 1);
      case 3:
        return scalar(whole(3));
      default:
        break;
    }
    Elements elements(below(5) + 1);
    for (Element &e : elements) switch (below(6)) {
        case 0:
          e = octonion({1, 2, 3});
          break;
        case 1:
          e = whole(4);
          break;
        case 2:
          e = std::bit_cast<Element>(variable("v", 0));
          break;
        default: {
          const Point inner = value(depth - 1);
          e = inner.rank < 0 ? std::bit_cast<Element>(inner) : enclosed(inner);
        }
      }
    Point p = vector(elements);
    for (const Element &e : elements)
      if (e.tag < 0) p.type |= STRUCTURED;
    if (below(4) == 0) p.type = ISVECTOR | 2;
    return p;
  }

  bool isvector(const Point &p) { return p.rank == 1 && p.data_pointer; }

  // One thing that some instruction does.
  void step() {
    if (held.empty()) return void(hold(value(3)));
    const std::size_t at = below(static_cast<unsigned>(held.size()));
    Point p = held[at];
    switch (below(8)) {
      case 0:
        hold(value(3));
        break;
      case 1:
        holdcopy(p);
        break;
      case 2:  // drop
        dereferencepoint(&held[at]);
        held.erase(held.begin() + static_cast<std::ptrdiff_t>(at));
        break;
      case 3:  // enclose: moved
        if (p.rank >= 0) held[at] = vector({enclosed(p)});
        break;
      case 4:  // disclose: taken out, whoever else holds it
        if (isvector(p) && p.data_pointer->tag == tags::SUBARRAY) {
          const Point inner = *p.data_pointer->subarray;
          referencepoint(&inner);
          dereferencepoint(&held[at]);
          held[at] = inner;
        }
        break;
      case 5:
        if (p.rank >= 0) {
          makeprivate(held[at]);
          ASSERT_TRUE(!held[at].data_pointer || referencecount(held[at].data_pointer) == 1);
        }
        break;
      case 6:  // cut off all but the first
        if (isvector(p) && referencecount(p.data_pointer) == 1) {
          if (mayown(p)) dereferencedataelems(p.data_pointer + 1, p.elements - 1);
          held[at].data_pointer = Reallocate(p.data_pointer, 1);
          held[at].elements = 1;
          release(p.shape_pointer);
          held[at].shape_pointer = newshape(1);
        }
        break;
      default:
        if (isfunction(p) &&
            referencecount(p.programme) > 1) {  // a body that others hold too is copied before it changes
          Point own = p;
          own.programme = copyfun(&p);
          release(p.programme);
          held[at] = own;
        } else if (isvector(p)) {  // take one element along
          Element e;
          copyelement(e, p.data_pointer[below(p.elements)]);
          Point one = vector({e});
          if (e.tag < 0) one.type |= STRUCTURED;
          hold(one);
        }
    }
  }
};

TEST_P(RandomLifetimes, CountsStayExact) {
  for (int i = 0; i < 400; ++i) {
    step();
    if (held.size() > 12) {
      dereferencepoint(&held.front());
      held.erase(held.begin());
    }
    expectexact();
    if (HasFatalFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomLifetimes, testing::Range(1u, 21u));

}  // namespace
