// Wide registers change nothing: what is compiled twice makes the same results to the last bit both ways, and those of
// one pair after the other, for components that are odd too, at every place of a group.
#include <limits>
#include <random>
#include <string>

#include "arithmetic/wide.h"
#include "dyadic_operands.h"
#include "scalar_tables.h"

namespace {

using namespace arithmetic;
using scalars::same;

constexpr double INF = std::numeric_limits<double>::infinity(), NOTANUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double ODD[] = {0.0, -0.0, INF, -INF, NOTANUMBER, 5e-324, 1.7e308};
constexpr std::size_t LONGEST = 13;  // three groups, and one more

class Wide : public Lifetimes {
 protected:
  void TearDown() override {
    wideregisters = found;
    Lifetimes::TearDown();
  }
  // The result over operands that somebody else holds.
  static Point made(DyadicFunction *work, const Point &left, const Point &right, bool wide) {
    wideregisters = wide;
    Stack stack;
    for (const Point *operand : {&left, &right}) {
      referencepoint(operand);
      stack.push(*operand);
    }
    EXPECT_EQ(arithmetic::run(work, stack, 0), 0);
    return *stack.top;
  }
  double part() {
    const std::size_t choice = random() % 40;
    return choice < std::size(ODD) ? ODD[choice] : std::uniform_real_distribution<double>(-9, 9)(random);
  }
  Element number(int kind) {
    if (kind == COMPLEX) return points::complex(part(), part());
    return points::octonion({part(), part(), part(), part(), part(), part(), part(), part()});
  }
  void expectsame(DyadicFunction *work, int kind, std::size_t count) {
    Elements lefts, rights;
    for (std::size_t i = 0; i < count; ++i) {
      lefts.push_back(number(kind));
      rights.push_back(number(kind));
    }
    Point left = points::vector(lefts), right = points::vector(rights);
    Point wide = made(work, left, right, found), narrow = made(work, left, right, false);
    for (std::uint32_t i = 0; i < count; ++i) {
      EXPECT_TRUE(same(wide.data_pointer[i], narrow.data_pointer[i])) << i << " of " << count;
      if (kind != COMPLEX) continue;
      Point one = points::scalar(lefts[i]), other = points::scalar(rights[i]), alone = made(work, one, other, false);
      EXPECT_TRUE(same(wide.data_pointer[i], alone.data_pointer[0])) << i << " of " << count;
      for (Point *p : {&one, &other, &alone}) points::drop(*p);
    }
    for (Point *p : {&left, &right, &wide, &narrow}) points::drop(*p);
  }

  const bool found = wideregisters;
  std::mt19937_64 random{7};
};

TEST_F(Wide, TheSameResults) {
  constexpr struct {
    const char *name;
    DyadicFunction *work;
  } WORDS[] = {{"ADD", add}, {"SUBTRACT", subtract}, {"MULTIPLY", multiply}, {"DIVIDE", divide}};
  for (const auto &[name, work] : WORDS)
    for (const int kind : {COMPLEX, OCTONION})
      for (std::size_t count = 1; count <= LONGEST; ++count)
        for (int times = 0; times < 60; ++times) {
          SCOPED_TRACE(std::string(name) + " of kind " + std::to_string(kind));
          expectsame(work, kind, count);
        }
}

}  // namespace
