// MAGNITUDE: the modulus, a real; of an integer an integer.
#include <limits>

#include "arithmetic/length.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct Magnitude : FlopCounter {
  Integer operator()(Integer x) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (x.value == Limits::min()) return {Limits::max()};
    return {x.value < 0 ? -x.value : x.value};
  }

  double operator()(double x) {
    flops += 1;
    return std::fabs(x);
  }

  template <Hyper T>
  double operator()(const T &x) {
    return length(x, flops);
  }
};

}  // namespace

MONADIC_SCALAR(magnitude, Magnitude)

}  // namespace morvik
