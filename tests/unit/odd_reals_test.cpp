// Reals that are not ordinary: what is no number, the infinities and both zeros, at every place of runs of every length
// that a loop over several records together could treat in a way of its own. Folds, MINIMUM, MAXIMUM, ADD and MATCH
// against one plain step after the other, to the last bit.
#include <bit>
#include <cmath>
#include <limits>

#include "arithmetic/scalars.h"
#include "operators/match.h"
#include "operators/reduce.h"
#include "points.h"
#include "recount.h"
#include "spaces/instructions.h"

using namespace morvik;

namespace {

using namespace points;

constexpr double INF = std::numeric_limits<double>::infinity(), NOTANUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double ODD[] = {NOTANUMBER, INF, -INF, 0.0, -0.0};
constexpr std::size_t LONGEST = 35;  // two rounds of the widest loop, and what is left over

struct Word {
  std::uint16_t number;
  void (*run)(Point **, const Point *, Point *, char);
  double (*step)(double, double);
};
constexpr Word WORDS[] = {
    {instructions::ADD, add, [](double a, double b) { return a + b; }},
    {instructions::MINIMUM, minimum, [](double a, double b) { return std::isnan(b) || b < a ? b : a; }},
    {instructions::MAXIMUM, maximum, [](double a, double b) { return std::isnan(b) || b > a ? b : a; }}};

bool samebits(double a, double b) {
  return (std::isnan(a) && std::isnan(b)) || std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}

// Ordinary reals, above or below 0 or both.
std::vector<double> ordinary(std::size_t count, int sign) {
  std::vector<double> values;
  for (std::size_t i = 0; i < count; ++i) {
    const double size = 0.5 + static_cast<double>(i * 7 % 5);
    values.push_back(sign == 0 ? (i % 2 == 0 ? size : -size) : sign * size);
  }
  return values;
}

// All runs of one odd value alone, with one among ordinary ones, and with two neighbours of them.
template <typename Try>
void everyrun(Try attempt) {
  for (std::size_t count = 1; count <= LONGEST; ++count) {
    for (const double odd : ODD) attempt(std::vector<double>(count, odd), count / 2);
    for (std::size_t place = 0; place < count; ++place)
      for (const double odd : ODD)
        for (const double next : {1.5, NOTANUMBER, -odd}) {
          std::vector<double> values = ordinary(count, static_cast<int>(place % 3) - 1);
          values[place] = odd;
          if (place + 1 < count && next != 1.5) values[place + 1] = next;
          attempt(values, place);
          if (testing::Test::HasFailure()) return;
        }
  }
}

class OddReals : public Lifetimes {
 protected:
  Point stack[3] = {};

  static Elements records(const std::vector<double> &values) {
    Elements elements;
    for (const double x : values) elements.push_back(real(x));
    return elements;
  }
  Point &fold(const Word &word, const Point &space, bool last) {
    Point *top = stack + 1, instruction{};
    instruction.modifier = word.number;
    *top = space;
    (last ? reducelastaxis : reduce)(&top, &instruction, nullptr);
    return *top;
  }
  Point &join(const Word &word, const Point &left, const Point &right) {
    stack[1] = left;
    stack[2] = right;
    Point *top = stack + 2;
    const Point instruction{};
    word.run(&top, &instruction, nullptr, 0);
    return *top;
  }
};

TEST_F(OddReals, Folds) {
  for (const Word &word : WORDS)
    everyrun([&](const std::vector<double> &values, std::size_t place) {
      double expected = values[0];
      for (std::size_t i = 1; i < values.size(); ++i) expected = word.step(expected, values[i]);
      Point &p = fold(word, vector(records(values)), false);
      EXPECT_TRUE(samebits(p.data_pointer->real, expected)) << word.number << ": " << p.data_pointer->real << " for "
                                                            << expected << " at " << place << " of " << values.size();
      drop(p);
    });
}

// The same run is in the middle of three, along the slowest axis.
TEST_F(OddReals, FoldsAlongTheSlowestAxis) {
  for (const Word &word : WORDS)
    everyrun([&](const std::vector<double> &values, std::size_t place) {
      std::vector<double> matrix;
      for (const double x : values) matrix.insert(matrix.end(), {1.0, x, NOTANUMBER});
      double expected = values[0];
      for (std::size_t i = 1; i < values.size(); ++i) expected = word.step(expected, values[i]);
      Point &p = fold(word, array(records(matrix), {3, static_cast<std::int64_t>(values.size())}), true);
      EXPECT_TRUE(samebits(p.data_pointer[1].real, expected)) << word.number << " at " << place;
      drop(p);
    });
}

// An integer ahead of the reals, which the fold has to leave for them.
TEST_F(OddReals, FoldsThatBeginWithIntegers) {
  for (const Word &word : WORDS)
    everyrun([&](const std::vector<double> &values, std::size_t place) {
      Elements elements = records(values);
      elements.insert(elements.begin(), {whole(2), whole(3)});
      double expected = word.step(2, 3);
      for (const double x : values) expected = word.step(expected, x);
      Point &p = fold(word, vector(elements), false);
      EXPECT_TRUE(samebits(p.data_pointer->real, expected)) << word.number << " at " << place;
      drop(p);
    });
}

TEST_F(OddReals, ElementByElement) {
  for (const Word &word : WORDS)
    everyrun([&](const std::vector<double> &values, std::size_t place) {
      const std::vector<double> others = ordinary(values.size(), 0);
      for (const bool swapped : {false, true}) {
        const auto &left = swapped ? others : values, &right = swapped ? values : others;
        Point &p = join(word, vector(records(left)), vector(records(right)));
        for (std::size_t i = 0; i < values.size(); ++i)
          EXPECT_TRUE(samebits(p.data_pointer[i].real, word.step(left[i], right[i]))) << word.number << " at " << place;
        drop(p);
      }
      Point &p = join(word, vector(records(values)), scalar(real(-0.0)));
      for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_TRUE(samebits(p.data_pointer[i].real, word.step(values[i], -0.0))) << word.number << " at " << place;
      drop(p);
    });
}

// Against the ordinary run without it, against itself, and against the run with the other zero or infinity.
TEST_F(OddReals, Matches) {
  everyrun([&](const std::vector<double> &values, std::size_t place) {
    std::vector<double> turned = values;
    turned[place] = -values[place];
    const auto same = [](double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    for (const auto &others : {values, turned, ordinary(values.size(), static_cast<int>(place % 3) - 1)}) {
      Point left = vector(records(values)), right = vector(records(others));
      std::uint64_t equal = 0;
      for (std::size_t i = 0; i < values.size(); ++i) equal += same(values[i], others[i]) ? 1 : 0;
      const Similarity s = match(left, right);
      EXPECT_EQ(s.weight, 2 * values.size());
      EXPECT_EQ(s.score, values.size() + equal) << place << " of " << values.size();
      EXPECT_EQ(exactmatch(left, right), equal == values.size() ? 1 : 0) << place << " of " << values.size();
      drop(left);
      drop(right);
    }
  });
}

}  // namespace
