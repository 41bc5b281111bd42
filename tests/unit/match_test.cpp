// MATCH against plain loops: the score of two spaces, whether they are the same, and what was counted on the way.
#include "operators/match.h"

#include <csignal>
#include <random>

#include "arithmetic_model.h"
#include "coprocessor/coprocessor.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "spaces/work.h"
#include "structure_values.h"

using namespace morvik;

namespace {

using namespace points;
using model::Space;
using model::Value;
using structured::anyshape;
using structured::Extents;

struct Score {
  std::uint64_t weight = 0, score = 0;
  double flops = 0;
};

bool samepart(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || a == b;
}

bool samevalue(const Value &a, const Value &b, double &flops) {
  if (a.tag < tags::REAL) return a.integer == b.integer;
  for (std::size_t k = 0; k < a.parts.size(); ++k) {
    ++flops;
    if (!samepart(a.parts[k], b.parts[k])) return false;
  }
  return true;
}

Score scored(const Space &a, const Space &b) {
  Score s;
  s.weight = 2 * std::max(a.elements.size(), b.elements.size());
  for (std::size_t i = 0; i < std::min(a.elements.size(), b.elements.size()); ++i) {
    const Value &x = a.elements[i], &y = b.elements[i];
    if (x.tag == tags::SUBARRAY && y.tag == tags::SUBARRAY) {
      const Score inner = scored(x.member[0], y.member[0]);
      s.weight += inner.weight - 2;
      s.score += inner.score;
      s.flops += inner.flops;
    } else if (x.tag == tags::SUBARRAY || y.tag == tags::SUBARRAY) {
      s.weight += 2 * (x.tag == tags::SUBARRAY ? x : y).member[0].elements.size();
    } else if (x.tag == y.tag) {
      s.score += samevalue(x, y, s.flops) ? 2 : 1;
    }
  }
  return s;
}

bool same(const Space &a, const Space &b) {
  if (a.elements.size() != b.elements.size()) return false;
  double flops = 0;
  for (std::size_t i = 0; i < a.elements.size(); ++i) {
    const Value &x = a.elements[i], &y = b.elements[i];
    if (x.tag != y.tag) return false;
    if (x.tag == tags::SUBARRAY ? !same(x.member[0], y.member[0]) : !samevalue(x, y, flops)) return false;
  }
  return true;
}

class Match : public Lifetimes {
 protected:
  std::mt19937 random{5};

  Element anyelement(int depth) {
    const double inf = std::numeric_limits<double>::infinity();
    const double odd[] = {0, 1, -1, inf, -inf, std::numeric_limits<double>::quiet_NaN(), 0.5};
    const auto part = [&] { return odd[random() % 7]; };
    switch (random() % (depth > 2 ? 6 : 8)) {
      case 0:
        return character(random() % 2 == 0 ? 'a' : 'b');
      case 1:
        return whole(static_cast<std::int64_t>(random() % 2));
      case 2:
        return real(part());
      case 3:
        return complex(part(), 1);
      case 4:
        return quaternions(1, part(), 2, part());
      case 5:
        return octonion({1, 2, 3, part(), 5, 6, 7, part()});
      default:
        return enclosed(anyspace(depth + 1));
    }
  }
  Point anyspace(int depth) {
    const Extents shape = anyshape(random, depth == 0 ? random() % 7 : random() % 3);
    if (shape.empty()) return scalar(anyelement(3));
    std::size_t count = 1;
    for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
    Elements elements;
    const int kind = static_cast<int>(random() % 8);
    for (std::size_t i = 0; i < count; ++i) {
      elements.push_back(anyelement(depth));
      // Long stretches of one kind, now and then broken.
      while (kind < 4 && elements.back().tag != tags::ASCII + (kind > 0 ? kind + 1 : 0) && random() % 9 != 0) {
        dereferencedataelems(&elements.back(), 1);
        elements.back() = anyelement(3);
      }
    }
    return array(elements, shape);
  }
};

TEST_F(Match, AsTheModel) {
  for (int round = 0; round < 3000; ++round) {
    const Point left = hold(anyspace(0));
    const Point right = random() % 3 == 0 ? holdcopy(left) : hold(anyspace(0));
    const Space l = model::of(left), r = model::of(right);
    const Score expected = scored(l, r);
    from_coprocessor[0].flops = 1;
    const Similarity s = match(left, right);
    ASSERT_EQ(s.weight, expected.weight) << model::show(l) << model::show(r);
    ASSERT_EQ(s.score, expected.score) << model::show(l) << model::show(r);
    ASSERT_EQ(from_coprocessor[0].flops, 1 + expected.flops);
    ASSERT_EQ(exactmatch(left, right), same(l, r) ? 1 : 0);
    ASSERT_EQ(exactmatch(left, left), 1);
    expectexact();
    letgo();
  }
  from_coprocessor[0].flops = 0;
}

TEST_F(Match, SymbolsAndFilesAreTheSameOnlyAsOneThing) {
  const Point &f = hold(function({numbers({1})}, 1, 0, "f")), &g = hold(function({numbers({1})}, 1, 0, "f"));
  EXPECT_EQ(match(f, f).score, 2u);
  EXPECT_EQ(match(f, g).score, 1u);
  EXPECT_EQ(exactmatch(f, holdcopy(f)), 1);
  EXPECT_EQ(exactmatch(f, g), 0);
}

TEST_F(Match, Interrupted) {
  Elements elements(200000, real(1));
  const Point p = hold(vector(elements));
  interrupted = SIGINT;
  testing::internal::CaptureStdout();
  EXPECT_EQ(landingof([&] { match(p, p); }), -1002);
  testing::internal::GetCapturedStdout();
  interrupted = 0;
  pendingproblem = 0;
  expectexact();
}

}  // namespace
