// ROLL and RANDOM: a draw for each component, in their order.
#include <limits>

#include "arithmetic/generator.h"
#include "arithmetic/monadic.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

// Between 0 and 1, neither of them.
double drawunit(std::uint64_t *state) {
  return static_cast<double>(PRNGS(state)) / PRNGS_MODULUS;
}

struct Roll : FlopCounter {
  static constexpr bool drawn = true;
  std::int64_t origin = 1;
  std::uint64_t *state = nullptr;

  std::int32_t check(Integer x, Heading) const { return x.value >= 1 ? 0 : messages::RESTRICTION; }
  std::int32_t check(double x, Heading) const { return x >= 1 ? 0 : messages::RESTRICTION; }

  // One of as many whole numbers from #IO up.
  Integer operator()(Integer x) {
    std::int64_t rolled;
    if (__builtin_add_overflow(origin, drawbelow(state, x.value), &rolled))
      rolled = std::numeric_limits<std::int64_t>::max();
    return {rolled};
  }
  double operator()(double x) {
    flops += 1;
    return drawunit(state) * x;
  }
};

struct ScaledDraw : FlopCounter {
  static constexpr bool drawn = true;
  std::uint64_t *state = nullptr;

  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return drawunit(state) * part(x, i); });
  }
};

}  // namespace

DRAWING_SCALAR(roll, Roll)
DRAWING_SCALAR(Random, ScaledDraw)

}  // namespace morvik
