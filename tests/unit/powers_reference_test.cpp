// Powers, logarithms, circular functions, factorials, gamma and binomial coefficients against correctly rounded
// results: reals within 4 units in the last place, complex numbers within 1e-13 of their modulus, quaternions and
// octonions as the complex numbers of the plane that they lie in.
#include "arithmetic/gamma.h"

#include <string_view>

#include "dyads.h"
#include "monadics.h"

using namespace morvik;

using namespace dyads;

namespace {

struct Case {
  std::string_view name;
  int argumentcount, valuecount;
  double arguments[4], values[2];

  constexpr bool isreal() const { return valuecount == 1; }
};
constexpr Case CASES[] = {
#include "unit/data/powers.inc"
};

constexpr double UNITS = 4, RELATIVE = 1e-13;

std::ostream &operator<<(std::ostream &out, const Case &c) {
  out << c.name;
  for (int i = 0; i < c.argumentcount; ++i) out << ' ' << c.arguments[i];
  return out;
}

const Instruction DYADS[] = {DYAD(power), DYAD(logarithm), DYAD(circular)};
const char *const NAMES[] = {"POWER", "LOGARITHM", "CIRCULAR"};

// A complex number in a higher kind, along this unit.
Value inplane(std::int32_t tag, double re, double im, std::size_t unit) {
  Value v = hyper(tag, {re});
  v.parts[unit] = im;
  return v;
}

class PowersReference : public Dyads {
 protected:
  const Instruction *dyad(const Case &c) {
    for (std::size_t i = 0; i < std::size(NAMES); ++i)
      if (c.name == NAMES[i]) return &DYADS[i];
    return nullptr;
  }
  Value monad(const std::string &name, const Value &v) {
    Point p = monadics::result(name, make({{v}, {}}));
    const Value value = valuein(*p.data_pointer);
    points::drop(p);
    return value;
  }
  // The second argument of CIRCULAR is the number of a function.
  Value second(const Case &c, std::int32_t tag, std::size_t unit) {
    if (c.name == "CIRCULAR") return integer(static_cast<std::int64_t>(c.arguments[c.argumentcount - 1]));
    return tag == tags::REAL ? real(c.arguments[1]) : inplane(tag, c.arguments[2], c.arguments[3], unit);
  }
};

double unitofplace(double x) {
  const double size = std::fabs(x);
  return std::nextafter(size, HUGE_VAL) - size;
}

bool isinstruction(const Case &c) {
  return c.name != "FACTOR" && c.name != "BINOM" && c.name != "GAMMA" && c.name != "LOGGAMMA";
}

TEST_F(PowersReference, Reals) {
  int count = 0;
  for (const Case &c : CASES) {
    if (!c.isreal() || !isinstruction(c)) continue;
    const Value x = real(c.arguments[0]);
    const Value made = dyad(c) ? outcome(*dyad(c), x, second(c, tags::REAL, 0)).value : monad(std::string(c.name), x);
    EXPECT_EQ(made.tag, tags::REAL);
    EXPECT_LE(std::fabs(made.parts[0] - c.values[0]), UNITS * unitofplace(c.values[0]))
        << c << ": " << made.parts[0] << ", not " << c.values[0];
    ++count;
  }
  EXPECT_GT(count, 500);
}

TEST_F(PowersReference, NumbersOfSeveralParts) {
  int count = 0;
  for (const Case &c : CASES) {
    if (c.isreal() || !isinstruction(c)) continue;
    for (const auto &[tag, unit] : std::vector<std::pair<std::int32_t, std::size_t>>{
             {tags::COMPLEX, 1}, {tags::QUATERNION, 2}, {tags::OCTONION, 6}}) {
      if (c.name == "LOGARITHM" && tag != tags::COMPLEX) continue;
      const Value x = inplane(tag, c.arguments[0], c.arguments[1], unit);
      const Value made = outcome(*dyad(c), x, second(c, tag, unit)).value;
      EXPECT_EQ(made.tag, tag);
      const double off = std::hypot(made.parts[0] - c.values[0], made.parts[unit] - c.values[1]);
      EXPECT_LE(off, RELATIVE * std::hypot(c.values[0], c.values[1])) << c << ": " << made;
    }
    ++count;
  }
  EXPECT_GT(count, 400);
}

// As near to the formula as its roundings allow, and so as near to the truth as the formula is.
TEST_F(PowersReference, Factorials) {
  for (const Case &c : CASES) {
    if (c.name != "FACTOR") continue;
    const double x = c.arguments[0], formula = c.values[0], truth = c.values[1], made = factor(x);
    EXPECT_LE(std::fabs(made - formula), RELATIVE * std::fabs(formula)) << c << ": " << made;
    if (x > 0 && x < 1) continue;
    EXPECT_LE(std::fabs(made - truth), 1e-12 * std::fabs(truth)) << c << ": " << made;
  }
}

TEST_F(PowersReference, BinomialCoefficients) {
  for (const Case &c : CASES) {
    if (c.name != "BINOM") continue;
    const double made = binom(c.arguments[0], c.arguments[1]);
    EXPECT_LE(std::fabs(made - c.values[0]), 4 * RELATIVE * std::fabs(c.values[0])) << c << ": " << made;
  }
}

TEST_F(PowersReference, Gamma) {
  for (const Case &c : CASES) {
    if (c.name != "GAMMA" && c.name != "LOGGAMMA") continue;
    double made[2];
    gammax({c.arguments[0], c.arguments[1]}, made, c.name == "GAMMA", 1e-15);
    const double off = std::hypot(made[0] - c.values[0], made[1] - c.values[1]);
    EXPECT_LE(off, 1e-12 * std::hypot(c.values[0], c.values[1])) << c << ": " << made[0] << ' ' << made[1];
  }
}

}  // namespace
