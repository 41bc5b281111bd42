// DEG and RAD. An integer or a real is an angle, to be brought into the other unit; a polar number is only shown with
// its angles in that unit, and a number in other coordinates has no angles to show.
#include <numbers>

#include "arithmetic/monadic.h"

namespace morvik {

namespace {

constexpr double HALFTURN = 180;
constexpr double DEGREE = std::numbers::pi / HALFTURN, RADIAN = HALFTURN / std::numbers::pi;
constexpr std::uint64_t SHOWNPOLAR = heading(0, forms::POLAR);
constexpr std::uint64_t SHOWNINDEGREES = heading(0, 0, attributes::DEGREES);

struct Deg : Counted {
  double operator()(double x) {
    flops += 1;
    return x * RADIAN;
  }
  template <Hyper T>
  Formed operator()(const T &, Heading head) {
    // The bit of the form, moved to that of the mark.
    return {carried(head.word) | (head.word & SHOWNPOLAR) * (SHOWNINDEGREES / SHOWNPOLAR)};
  }
};

struct Rad : Counted {
  double operator()(double x) {
    flops += 1;
    return x * DEGREE;
  }
  template <Hyper T>
  Formed operator()(const T &, Heading head) {
    return {carried(head.word) & ~(ispolar(head.word) ? SHOWNINDEGREES : 0)};
  }
};

}  // namespace

MONADIC_SCALAR(deg, Deg)
MONADIC_SCALAR(rad, Rad)

}  // namespace morvik
