// PITIMES: pi times the number.
#include <numbers>

#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct PiTimes : FlopCounter {
  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return std::numbers::pi * part(x, i); });
  }
};

}  // namespace

MONADIC_SCALAR(pitimes, PiTimes)

}  // namespace morvik
