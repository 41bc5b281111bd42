// DEG and RAD. An integer or a real is an angle, to be brought into the other unit; a polar number is only shown with
// its angles in that unit, and a number in other coordinates has no angles to show.
#include <numbers>

#include "arithmetic/monadic.h"
#include "spaces/hypercomplex.h"

namespace morvik {

namespace {

constexpr double DEGREE = std::numbers::pi / HALF_TURN, RADIAN = HALF_TURN / std::numbers::pi;
constexpr std::uint64_t POLAR_HEADING = heading(0, forms::POLAR);
constexpr std::uint64_t DEGREES_HEADING = heading(0, 0, attributes::DEGREES);

struct Deg : FlopCounter {
  double operator()(double x) {
    flops += 1;
    return x * RADIAN;
  }
  template <Hyper T>
  Formed operator()(const T &, Heading head) {
    // The bit of the form, moved to that of the mark.
    return {carriedheading(head.word) | (head.word & POLAR_HEADING) * (DEGREES_HEADING / POLAR_HEADING)};
  }
};

struct Rad : FlopCounter {
  double operator()(double x) {
    flops += 1;
    return x * DEGREE;
  }
  template <Hyper T>
  Formed operator()(const T &, Heading head) {
    return {carriedheading(head.word) & ~(ispolar(head.word) ? DEGREES_HEADING : 0)};
  }
};

}  // namespace

MONADIC_SCALAR(deg, Deg)
MONADIC_SCALAR(rad, Rad)

}  // namespace morvik
