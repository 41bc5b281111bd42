// The loop over pairs of records whose kinds change all the time: every pair finds its formula within the loop, by a
// chain of decisions on its tags. Integers and reals in any order, which are the common mixture, take the fewest.
#pragma once

#include <bit>

#include "arithmetic/frame.h"

// Where fewer than these were of one kind, the mixed loop takes over, for so many records; then the loops of one kind
// have their chance again.
inline constexpr std::size_t TOGETHER = 8, ATATIME = 256;

// ---- Integers and reals.

inline bool arenumbers(std::int32_t a, std::int32_t b) {
  constexpr std::int32_t apart = tags::INTEGER ^ tags::REAL;
  static_assert(apart == 1);
  return static_cast<std::uint32_t>((a ^ tags::INTEGER) | (b ^ tags::INTEGER)) <= apart;
}
// As a double, without a decision that the processor would have to foresee.
inline double numberof(const Element &e) {
  const auto converted = std::bit_cast<std::int64_t>(static_cast<double>(e.integer));
  return std::bit_cast<double>(e.tag == tags::INTEGER ? converted : e.integer);
}

// An integer beside a real is the real that it is.
template <class Core, class Note>
[[gnu::always_inline]] inline void worknumbers(Core &core, const Element &left, const Element &right, Element &result,
                                               bool fresh, Note &&note) {
  const auto put = [&](const auto &value) { note(place<tags::REAL, tags::REAL>(result, 0, 0, value, fresh)); };
  if (left.tag == tags::INTEGER && right.tag == tags::INTEGER) {
    apply(core, Integer{left.integer}, Integer{right.integer}, put);
    core.flops += flopsforeach<Core, Integer, Integer>();
  } else {
    apply(core, numberof(left), numberof(right), put);
    core.flops += flopsforeach<Core, double, double>();
  }
}

template <std::int32_t tag>
using Tag = std::integral_constant<std::int32_t, tag>;

// ---- The loop. It ends at the first pair that needs a check, that no core takes, or that fails.

template <class Core>
std::size_t mixedloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep, resultstep = run.resultstep;
  const Element *left = run.left + from * leftstep, *right = run.right + from * rightstep;
  Element *result = run.result + from * resultstep;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  std::int32_t failure = 0;
  const auto note = [&](std::uint32_t kind) { kinds |= kind; };
  const auto pair = [&]<std::int32_t L, std::int32_t R>(Tag<L>, Tag<R>) __attribute__((always_inline)) {
    if constexpr (Supported<Core, Kind<L>, Kind<R>> && !Checked<Core, Kind<L>, Kind<R>>) {
      core.flops += flopsforeach<Core, Kind<L>, Kind<R>>();
      return workpair<Core, L, R>(core, *left, *right, *result, fresh, failure, note);
    } else {
      return false;
    }
  };
  const auto row = [&]<class L, std::size_t... r>(L l, std::index_sequence<r...>) __attribute__((always_inline)) {
    return left->tag == L::value && ((right->tag == tagof(r) && pair(l, Tag<tagof(r)>{})) || ...);
  };
  const auto any = [&]<std::size_t... l>(std::index_sequence<l...>) __attribute__((always_inline)) {
    return (row(Tag<tagof(l)>{}, std::make_index_sequence<LOOPTAGS>{}) || ...);
  };
  std::size_t i = from;
  for (; i < to; ++i, left += leftstep, right += rightstep, result += resultstep) {
    if constexpr (Supported<Core, double, double>)
      if (arenumbers(left->tag, right->tag)) {
        worknumbers(core, *left, *right, *result, fresh, note);
        continue;
      }
    if (!any(std::make_index_sequence<LOOPTAGS>{})) break;
  }
  run.kinds |= kinds;
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops);
  return i;
}
