// NEGATIVE: every component changes its sign.
#include <limits>

#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct Negative : FlopCounter {
  static constexpr auto refusal = nocharacters;

  // The smallest integer has no counterpart: as a sum of that size does, it ends at the largest.
  Integer operator()(Integer x) {
    using Limits = std::numeric_limits<std::int64_t>;
    return {x.value == Limits::min() ? Limits::max() : -x.value};
  }

  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return -part(x, i); });
  }
};

}  // namespace

MONADIC_SCALAR(negative, Negative)

}  // namespace morvik
