// Wide registers change nothing: what is compiled twice makes the same results to the last bit both ways, and those of
// one pair after the other, for components and headings that are odd too, at every place of a group.
#include <algorithm>
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
    setwide(true);
    Lifetimes::TearDown();
  }
  void setwide(bool wide) {
    wideregisters = wide && foundregisters;
    ternarylogic = wide && foundlogic;
  }
  // The result over operands that somebody else holds.
  Point made(DyadicFunction *work, const Point &left, const Point &right, bool wide) {
    setwide(wide);
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
    if (kind == OCTONION) return points::octonion({part(), part(), part(), part(), part(), part(), part(), part()});
    if (kind == QUATERNION) return points::quaternions(part(), part(), part(), part());
    Element e = kind == REAL ? points::real(part()) : points::complex(part(), part());
    if (random() % 20 == 0) e.form = forms::NUMBER;
    if (random() % 20 == 0) e.attributes = attributes::PREFIX_R;
    e.firstpart = part();  // without a name the word is anything
    return e;
  }
  Elements numbers(int kind, std::size_t count) {
    Elements result;
    for (std::size_t i = 0; i < count; ++i) result.push_back(number(kind));
    return result;
  }
  // A space whose flag word promises one kind. One record makes a scalar.
  static Point promised(int kind, const Elements &records) {
    if (records.size() == 1) return points::scalar(records[0]);
    Point p = points::vector(records);
    p.type = (p.type & ~std::uint32_t{ELEMENT_BITS}) | (kind == REAL      ? HASREAL
                                                        : kind == COMPLEX ? HASCOMPLEX
                                                                          : HASOCTONION);
    return p;
  }
  // One of the two may be lone.
  void expectsame(DyadicFunction *work, int kind, const Elements &lefts, const Elements &rights) {
    Point left = promised(kind, lefts), right = promised(kind, rights);
    Point wide = made(work, left, right, true), narrow = made(work, left, right, false);
    for (std::size_t i = 0; i < std::max(lefts.size(), rights.size()); ++i) {
      EXPECT_TRUE(same(wide.data_pointer[i], narrow.data_pointer[i])) << i;
      if (kind == OCTONION) continue;
      Point one = points::scalar(lefts[i % lefts.size()]), other = points::scalar(rights[i % rights.size()]);
      Point alone = made(work, one, other, false);
      EXPECT_TRUE(same(wide.data_pointer[i], alone.data_pointer[0])) << i;
      if (wide.data_pointer[i].tag != tags::QUATERNION) EXPECT_EQ(wide.data_pointer[i].name, nullptr) << i;
      for (Point *p : {&one, &other, &alone}) points::drop(*p);
    }
    for (Point *p : {&left, &right, &wide, &narrow}) points::drop(*p);
  }

  const bool foundregisters = wideregisters, foundlogic = ternarylogic;
  std::mt19937_64 random{7};
};

constexpr struct {
  const char *name;
  DyadicFunction *work;
} WORDS[] = {{"ADD", add}, {"SUBTRACT", subtract}, {"MULTIPLY", multiply}, {"DIVIDE", divide}};

TEST_F(Wide, TheSameResults) {
  for (const auto &[name, work] : WORDS)
    for (const int kind : {REAL, COMPLEX, OCTONION})
      for (std::size_t count = 1; count <= LONGEST; ++count)
        for (int times = 0; times < 60; ++times) {
          SCOPED_TRACE(std::string(name) + " of kind " + std::to_string(kind) + ", " + std::to_string(count));
          const std::size_t lefts = times % 5 == 1 ? 1 : count, rights = times % 5 == 2 ? 1 : count;
          expectsame(work, kind, numbers(kind, lefts), numbers(kind, rights));
        }
}

// The longest spaces of reals that wide registers work, and the first that they do not.
TEST_F(Wide, UpToWhereTheyEnd) {
  for (const auto &[name, work] : WORDS)
    for (const std::size_t count : {199U, 200U, 201U}) {
      SCOPED_TRACE(std::string(name) + " of " + std::to_string(count));
      expectsame(work, REAL, numbers(REAL, count), numbers(REAL, count));
    }
}

// A record of another kind than the flag word promises ends the groups, wherever it is.
TEST_F(Wide, AHiddenRecord) {
  constexpr std::size_t COUNT = 9;
  constexpr enum { LEFT = 1, RIGHT = 2, BOTH = 3 } SIDES[] = {LEFT, RIGHT, BOTH};
  for (const auto &[name, work] : WORDS)
    for (const int kind : {REAL, COMPLEX})
      for (const int hidden : {REAL, COMPLEX, QUATERNION})
        for (const int side : SIDES)
          for (std::size_t place = 0; place < COUNT; ++place) {
            SCOPED_TRACE(std::string(name) + " of kind " + std::to_string(kind) + ", " + std::to_string(place));
            Elements lefts = numbers(kind, COUNT), rights = numbers(kind, COUNT);
            if ((side & LEFT) != 0) lefts[place] = number(hidden);
            if ((side & RIGHT) != 0) rights[place] = number(hidden);
            expectsame(work, kind, lefts, rights);
          }
}

}  // namespace
