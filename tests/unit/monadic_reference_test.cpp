// EXPONENTIAL and NATURALLOG against correctly rounded results: reals within 4 units in the last place, complex numbers
// within 1e-13 of their modulus, quaternions and octonions as the complex numbers of the plane that they lie in.
#include <cmath>
#include <complex>

#include "monadics.h"

namespace {

using namespace points;
using monadics::result;

struct RealCase {
  const char *name;
  double argument, value;
};
struct ComplexCase {
  const char *name;
  double re, im, valuere, valueim;
};

#define COMPLEX_EXPONENTIAL(re, im, valuere, valueim)
#define COMPLEX_LOGARITHM(re, im, valuere, valueim)
#define REAL_EXPONENTIAL(argument, value) {"EXPONENTIAL", argument, value},
#define REAL_LOGARITHM(argument, value) {"NATURALLOG", argument, value},
constexpr RealCase REALS[] = {
#include "unit/data/elementary.inc"
};
#undef COMPLEX_EXPONENTIAL
#undef COMPLEX_LOGARITHM
#undef REAL_EXPONENTIAL
#undef REAL_LOGARITHM
#define REAL_EXPONENTIAL(argument, value)
#define REAL_LOGARITHM(argument, value)
#define COMPLEX_EXPONENTIAL(re, im, valuere, valueim) {"EXPONENTIAL", re, im, valuere, valueim},
#define COMPLEX_LOGARITHM(re, im, valuere, valueim) {"NATURALLOG", re, im, valuere, valueim},
constexpr ComplexCase COMPLEXES[] = {
#include "unit/data/elementary.inc"
};

constexpr double UNITS = 4, RELATIVE = 1e-13;

double unitofplace(double x) {
  const double size = std::fabs(x);
  return std::nextafter(size, HUGE_VAL) - size;
}

// How far two complex numbers are apart, over the modulus of the second.
double mixednumbers(double re, double im, const ComplexCase &c) {
  return std::hypot(re / 2 - c.valuere / 2, im / 2 - c.valueim / 2) / std::hypot(c.valuere / 2, c.valueim / 2);
}

using MonadicReference = Lifetimes;

TEST_F(MonadicReference, Reals) {
  for (const RealCase &c : REALS) {
    Point p = result(c.name, scalar(real(c.argument)));
    EXPECT_LE(std::fabs(p.data_pointer->real - c.value), UNITS * unitofplace(c.value)) << c.name << ' ' << c.argument;
    drop(p);
  }
}

TEST_F(MonadicReference, ComplexNumbers) {
  for (const ComplexCase &c : COMPLEXES) {
    Point p = result(c.name, scalar(complex(c.re, c.im)));
    const Complex &z = p.data_pointer->complex;
    EXPECT_LE(mixednumbers(z.re, z.im, c), RELATIVE) << c.name << ' ' << c.re << ' ' << c.im;
    drop(p);
  }
}

// A vector part along one unit, and along (2, -1, 2) / 3 and its like.
TEST_F(MonadicReference, HigherNumbers) {
  for (const ComplexCase &c : COMPLEXES) {
    if (std::fabs(c.im) < 1e-9 || std::fabs(c.im) > 1e300) continue;
    const double v = c.im;
    Point p = result(c.name, scalar(quaternions(c.re, 0, 0, v)));
    Quaternion q = quaternion(*p.data_pointer);
    EXPECT_LE(mixednumbers(q.part[0], q.part[3], c), RELATIVE) << c.name << ' ' << c.re << ' ' << c.im;
    EXPECT_EQ(q.part[1], 0);
    EXPECT_EQ(q.part[2], 0);
    drop(p);
    p = result(c.name, scalar(octonion({c.re, 0, 0, 0, 0, 0, v, 0})));
    EXPECT_LE(mixednumbers(p.data_pointer->octonion->part[0], p.data_pointer->octonion->part[6], c), RELATIVE);
    drop(p);
    if (std::fabs(v) > 100) continue;  // thirds of it are not exact, which a sine would magnify
    p = result(c.name, scalar(quaternions(c.re, 2 * v / 3, -v / 3, 2 * v / 3)));
    q = quaternion(*p.data_pointer);
    const double along = q.part[1] / 3 * 2 - q.part[2] / 3 + q.part[3] / 3 * 2;
    EXPECT_LE(mixednumbers(q.part[0], along, c), RELATIVE) << c.name << ' ' << c.re << ' ' << c.im;
    EXPECT_LE(std::fabs(q.part[1] / 2 + q.part[2]), RELATIVE * std::hypot(c.valuere / 2, c.valueim / 2));
    drop(p);
  }
}

TEST_F(MonadicReference, LogarithmUndoesExponential) {
  for (const double s : {-3.0, 0.25, 2.0})
    for (const double v : {0.1, -1.0, 2.5}) {
      Point p =
          result("NATURALLOG", result("EXPONENTIAL", scalar(octonion({s, v / 2, -v / 2, 0, 0, v / 2, 0, v / 2}))));
      const double *part = p.data_pointer->octonion->part;
      const double expected[] = {s, v / 2, -v / 2, 0, 0, v / 2, 0, v / 2};
      for (int i = 0; i < 8; ++i) EXPECT_NEAR(part[i], expected[i], 1e-13);
      drop(p);
    }
}

}  // namespace
