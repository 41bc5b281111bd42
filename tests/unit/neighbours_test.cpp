// The sums of neighbourhoods, made all at once, against calls for each element: records bit by bit, flags and counts.
#include "operators/neighbours.h"

#include <csignal>
#include <limits>

#include "applying.h"
#include "failures.h"
#include "spaces/counters.h"
#include "spaces/work.h"

namespace {

using namespace applying;

constexpr double INFINITE = std::numeric_limits<double>::infinity();

// What the machine counted while something ran.
struct Counts {
  double operators, operations, flops;
};

class Neighbours : public Applying {
 protected:
  Element anynumber(int kind) {
    static constexpr std::int64_t WHOLES[] = {1, 2, -1, -3, 10, 0, 0, 5, 1LL << 40, 1LL << 61, INT64_MIN};
    static constexpr double REALS[] = {0.5, -0.25, 1, 3, 1e-300, -1e-300, 0, -0.0, 5e-324, 1e300, INFINITE};
    const std::size_t most = random() % 4 == 0 ? 11 : 8;
    return kind == 0 ? whole(WHOLES[random() % most]) : real(REALS[random() % (kind == 1 ? most : 7)]);
  }
  // Integers, reals, reals that are no great ones, or a mixture.
  Point anynumbers(const Extents &shape) {
    const int kind = static_cast<int>(random() % 7);
    std::size_t count = 1;
    for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
    Elements elements;
    for (std::size_t i = 0; i < count; ++i)
      elements.push_back(anynumber(kind == 6 ? static_cast<int>(random() % 3) : kind / 2));
    return array(elements, shape);
  }
  Counts masked(const Point &data, const Point &weights, const char *function) {
    Point copies[] = {data, weights};
    for (Point &p : copies) {
      referencepoint(&p);
      *++sp = p;
    }
    operators = operations = 0;
    const double flops = from_coprocessor[0].total_flops;
    EXPECT_EQ(run(std::string(function) + " MASK"), 0);
    return {operators, operations, from_coprocessor[0].total_flops - flops};
  }
  bool atonce(const Point &data, const Point &weights) {
    Elements sums(data.elements);
    NeighbourSums found;
    return sumneighbourhoods(data, weights, sums.data(), found);
  }
  void expectsame(const Point &one, const Point &other) {
    EXPECT_EQ(one.type, other.type);
    EXPECT_EQ(one.depth, other.depth);
    EXPECT_EQ(shapeof(one), shapeof(other));
    ASSERT_EQ(one.elements, other.elements);
    for (std::uint32_t i = 0; i < one.elements; ++i) {
      const Element &a = one.data_pointer[i], &b = other.data_pointer[i];
      EXPECT_TRUE(a.tag == b.tag && a.form == b.form && a.attributes == b.attributes && a.name == b.name &&
                  (a.integer == b.integer || (a.tag == tags::REAL && std::isnan(a.real) && std::isnan(b.real))))
          << "at " << i << ": " << textof(one) << " and " << textof(other);
    }
  }
};

// A NOOP in the body keeps it from being known, and counts as one Point and one operation.
TEST_F(Neighbours, AsByCalls) {
  int known = 0;
  for (int round = 0; round < 3000; ++round) {
    const std::size_t rank = 1 + random() % 3;
    Extents shape, wide;
    for (std::size_t d = 0; d < rank; ++d) {
      shape.push_back(1 + static_cast<std::int64_t>(random() % (d == 0 ? 25 : 4)));
      wide.push_back(1 + 2 * static_cast<std::int64_t>(random() % 3));
    }
    Point data = anynumbers(shape), weights = anynumbers(wide);
    if (atonce(data, weights)) ++known;
    const bool ravelled = rank > 1 || random() % 2 == 0;
    const Counts one = masked(data, weights, ravelled ? "MONADIC RAVEL SUM ;" : "MONADIC SUM ;");
    const Point sums = *sp--;
    const Counts other = masked(data, weights, ravelled ? "MONADIC RAVEL NOOP SUM ;" : "MONADIC NOOP + // ;");
    expectsame(sums, *sp);
    EXPECT_EQ(one.operators + data.elements, other.operators);
    EXPECT_EQ(one.operations + data.elements, other.operations);
    EXPECT_EQ(one.flops, other.flops);
    if (HasFailure()) FAIL() << textof(data) << " under " << textof(weights);
    *++sp = sums;
    clear();
    drop(data);
    drop(weights);
  }
  EXPECT_GT(known, 1000);
}

// A row that is longer than a tile.
TEST_F(Neighbours, LongRows) {
  for (const bool reals : {false, true}) {
    Elements elements;
    for (int i = 0; i < 3 * 1029; ++i) elements.push_back(reals ? real(i / 8.0) : whole(i % 7 - 3));
    Point data = array(elements, {1029, 3}), weights = numbers({1, 2, 3, 4, 50, 6, 7, 8, 9}, {3, 3});
    masked(data, weights, "MONADIC RAVEL SUM ;");
    const Point sums = *sp--;
    masked(data, weights, "MONADIC RAVEL NOOP SUM ;");
    expectsame(sums, *sp);
    *++sp = sums;
    clear();
    drop(data);
    drop(weights);
  }
}

// What is left to the calls.
TEST_F(Neighbours, OnlyPlainNumbers) {
  const auto expect = [&](bool known, Point data, Point weights) {
    EXPECT_EQ(atonce(data, weights), known) << textof(data) << " under " << textof(weights);
    drop(data);
    drop(weights);
  };
  expect(true, numbers({1, 2, 3}), numbers({1, 1, 1}));
  expect(true, numbers({1, 2, 3}), vector({whole(1), real(0.5), whole(0)}));
  expect(true, vector({real(1), real(-0.0)}), numbers({1, 0, 1}));
  expect(false, numbers({1, 2, 3}), numbers({1}));
  expect(false, scalar(whole(1)), scalar(whole(1)));
  expect(false, vector({whole(1), real(2)}), numbers({1, 1, 1}));
  expect(false, vector({real(1), whole(2)}), numbers({1, 1, 1}));
  expect(false, vector({real(1), real(INFINITE)}), numbers({1, 1, 1}));
  expect(false, vector({whole(1), complex(1, 2)}), numbers({1, 1, 1}));
  expect(false, text("abc"), numbers({1, 1, 1}));
  expect(false, numbers({1, 2, 3}), vector({real(1), real(1), real(std::nan(""))}));
  expect(false, numbers({1, 2, 3}), vector({whole(1), whole(1), complex(0, 0)}));
  expect(false, numbers({1, INT64_MAX}), numbers({1, 1, 1}));
  expect(false, numbers({1, 1LL << 60}), numbers({1, 2, 1}));
  expect(true, numbers({1, 1LL << 59}), numbers({1, 2, 1}));
  expect(false, numbers({1, INT64_MIN}), numbers({0, 1, 0}));
  expect(false, numbers({-1, -1}), numbers({1LL << 61, 1LL << 61, 1}));
}

// The work is given back.
TEST_F(Neighbours, Interrupted) {
  Elements elements(20000, whole(1));
  Point data = vector(elements), weights = numbers({1, 1, 1});
  const std::int64_t before = liveblocks();
  NeighbourSums found;
  interrupted = SIGINT;
  int landing = 0;
  failures::printed(
      [&] { landing = failures::landingof([&] { sumneighbourhoods(data, weights, elements.data(), found); }); });
  interrupted = 0;
  EXPECT_EQ(landing, -1002);
  EXPECT_EQ(liveblocks(), before);
  drop(data);
  drop(weights);
}

#ifdef MORVIK_CHECKING
// Without storage for the work nothing fails: the calls do it.
TEST_F(Neighbours, WithoutStorage) {
  Point data = numbers({1, 2, 3, 4}), weights = numbers({1, 1, 1});
  failallocation(0);
  EXPECT_FALSE(atonce(data, weights));
  failallocation(-1);
  EXPECT_TRUE(atonce(data, weights));
  drop(data);
  drop(weights);
}
#endif

}  // namespace
