// The loops over pairs of numbers of which at least one is a real and the other a real or an integer, in any order: the
// common mixture. An integer beside a real is the real that it is.
#pragma once

#include "arithmetic/loops.h"

namespace morvik {

// How two tags differ from those of two integers: by MIXED_NUMBERS if they are those of such a pair. One number for
// both, as each tag by itself may be by chance.
inline constexpr std::uint32_t MIXED_NUMBERS = tags::INTEGER ^ tags::REAL;
static_assert(MIXED_NUMBERS == 1 && (tags::INTEGER & MIXED_NUMBERS) == 0);
inline std::uint32_t mixednumbers(std::int32_t left, std::int32_t right) {
  return static_cast<std::uint32_t>((left ^ tags::INTEGER) | (right ^ tags::INTEGER));
}
// An integer or a real as a double, by an index and not by a branch.
inline double numberof(const Element &e) {
  const double values[] = {static_cast<double>(e.integer), e.real};
  return values[e.tag & 1];
}
template <class Core>
[[gnu::always_inline]] inline void workmixed(Core &core, const Element &left, const Element &right, Element &result,
                                             bool fresh, std::uint32_t &kinds) {
  applydyadic(core, numberof(left), numberof(right),
              [&](const auto &value) { kinds |= writeresult<tags::REAL, tags::REAL>(result, 0, 0, value, fresh); });
}

template <class Core>
std::size_t mixedloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep, resultstep = run.resultstep;
  const Element *left = run.left + from * leftstep, *right = run.right + from * rightstep;
  Element *result = run.result + from * resultstep;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  std::size_t i = from;
  for (; i < to && mixednumbers(left->tag, right->tag) == MIXED_NUMBERS; ++i) {
    workmixed(core, *left, *right, *result, fresh, kinds);
    left += leftstep, right += rightstep, result += resultstep;
  }
  run.kinds |= kinds;
  tally.flops += static_cast<double>(core.flops + fixedflopsof<Core, double, double>() * (i - from));
  return i;
}

template <class Core>
PlaceMask maskedmixed(Run &run, PlaceMask places, Tally &tally) {
  return workplaces<Core, fixedflopsof<Core, double, double>()>(
      run, places, tally,
      [](auto &core, const Element &left, const Element &right, Element &result, bool fresh, std::uint32_t &kinds)
          __attribute__((always_inline)) {
            workmixed(core, left, right, result, fresh, kinds);
            return true;
          });
}

}  // namespace morvik
