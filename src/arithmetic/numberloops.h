// The loops over pairs of numbers of which at least one is a real and the other a real or an integer, in any order: the
// common mixture. An integer beside a real is the real that it is.
#pragma once

#include "arithmetic/loops.h"

namespace morvik {

// How two tags differ from those of two integers: by APART if they are those of such a pair. One number for both, as
// each tag by itself may be by chance.
inline constexpr std::uint32_t APART = tags::INTEGER ^ tags::REAL;
static_assert(APART == 1 && (tags::INTEGER & APART) == 0);
inline std::uint32_t apart(std::int32_t left, std::int32_t right) {
  return static_cast<std::uint32_t>((left ^ tags::INTEGER) | (right ^ tags::INTEGER));
}
// An integer or a real as a double, by an index and not by a decision.
inline double numberof(const Element &e) {
  const double values[] = {static_cast<double>(e.integer), e.real};
  return values[e.tag & 1];
}
template <class Core>
[[gnu::always_inline]] inline void worknumbers(Core &core, const Element &left, const Element &right, Element &result,
                                               bool fresh, std::uint32_t &kinds) {
  apply(core, numberof(left), numberof(right),
        [&](const auto &value) { kinds |= place<tags::REAL, tags::REAL>(result, 0, 0, value, fresh); });
}

template <class Core>
std::size_t numberloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep, resultstep = run.resultstep;
  const Element *left = run.left + from * leftstep, *right = run.right + from * rightstep;
  Element *result = run.result + from * resultstep;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  std::size_t i = from;
  for (; i < to && apart(left->tag, right->tag) == APART; ++i) {
    worknumbers(core, *left, *right, *result, fresh, kinds);
    left += leftstep, right += rightstep, result += resultstep;
  }
  run.kinds |= kinds;
  tally.flops += static_cast<double>(core.flops + flopsforeach<Core, double, double>() * (i - from));
  return i;
}

template <class Core>
Places pickednumbers(Run &run, Places places, Tally &tally) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep;
  const Element *const left = run.left, *const right = run.right;
  Element *const result = run.result;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  for (Places rest = places; rest != 0; rest &= rest - 1) {
    const std::size_t i = firstof(rest);
    worknumbers(core, left[i * leftstep], right[i * rightstep], result[i], fresh, kinds);
  }
  run.kinds |= kinds;
  tally.flops += static_cast<double>(core.flops + flopsforeach<Core, double, double>() * countof(places));
  return 0;
}

}  // namespace morvik
