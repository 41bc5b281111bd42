// SIGNUM and DIRECTION. Of a number of more than one component both are the number over its modulus, but that SIGNUM
// of 0 is 0.
#include "arithmetic/length.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

template <Hyper T>
T shortened(const T &x, double by) {
  return assemble<T>([&](auto i) { return part(x, i) / by; });
}

struct Signum : FlopCounter {
  Integer operator()(Integer x) { return {std::int64_t{x.value > 0} - std::int64_t{x.value < 0}}; }

  // NaN has no sign but itself.
  double operator()(double x) {
    flops += 1;
    return x > 0 ? 1 : x < 0 ? -1 : x == 0 ? 0 : x;
  }

  template <Hyper T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    const double by = length(x, flops);
    return shortened(x, by == 0 ? 1 : by);
  }
};

struct Direction : FlopCounter {
  // As a quotient of integers: an integer only where it is not negative.
  WholeOrReal operator()(Integer x) {
    const double size = std::fabs(static_cast<double>(x.value));
    flops += x.value > 0 ? 0 : 1;
    return {static_cast<double>(x.value) / size, x.value > 0};
  }

  double operator()(double x) {
    flops += 1;
    return x / std::fabs(x);
  }

  template <Hyper T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return shortened(x, length(x, flops));
  }
};

}  // namespace

MONADIC_SCALAR(signum, Signum)
MONADIC_SCALAR(direction, Direction)

}  // namespace morvik
