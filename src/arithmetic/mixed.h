// The loop over pairs of records whose kinds change all the time: every pair finds its formula within the loop, by a
// chain of decisions on its tags. Integers and reals in any order, which are the common mixture, take the fewest.
#pragma once

#include <bit>

#include "arithmetic/frame.h"

// Where fewer than these were of one kind, the mixed loop takes over, for so many records; then the loops of one kind
// have their chance again.
inline constexpr std::size_t TOGETHER = 8, ATATIME = 256;

// ---- Integers and reals.

// How two tags differ from those of two integers: by nothing, by APART where at least one is a real and neither is of
// another kind, otherwise by more. One number for both, as each tag by itself may be by chance.
inline constexpr std::int32_t APART = tags::INTEGER ^ tags::REAL;
static_assert(APART == 1 && (tags::INTEGER & APART) == 0);
inline std::uint32_t apart(std::int32_t left, std::int32_t right) {
  return static_cast<std::uint32_t>((left ^ tags::INTEGER) | (right ^ tags::INTEGER));
}
// As a double, by a mask and not by a decision.
inline double numberof(const Element &e) {
  const auto converted = std::bit_cast<std::int64_t>(static_cast<double>(e.integer));
  const std::int64_t mask = std::int64_t{e.tag & APART} - 1;
  return std::bit_cast<double>(e.integer ^ ((e.integer ^ converted) & mask));
}

// Works such pairs up to the first other one. An integer beside a real is the real that it is.
template <class Core>
std::size_t numberloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep, resultstep = run.resultstep;
  const Element *left = run.left + from * leftstep, *right = run.right + from * rightstep;
  Element *result = run.result + from * resultstep;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  std::size_t i = from;
  for (; i < to; ++i, left += leftstep, right += rightstep, result += resultstep) {
    const std::uint32_t by = apart(left->tag, right->tag);
    if (by > std::uint32_t{APART}) break;
    const auto put = [&](const auto &value) { kinds |= place<tags::REAL, tags::REAL>(*result, 0, 0, value, fresh); };
    if (by == 0) {
      apply(core, Integer{left->integer}, Integer{right->integer}, put);
      core.flops += flopsforeach<Core, Integer, Integer>();
    } else {
      apply(core, numberof(*left), numberof(*right), put);
      core.flops += flopsforeach<Core, double, double>();
    }
  }
  run.kinds |= kinds;
  tally.flops += static_cast<double>(core.flops);
  return i;
}

template <std::int32_t tag>
using Tag = std::integral_constant<std::int32_t, tag>;

// ---- The loop. It ends at the first pair that needs a check, that no core takes, or that fails.

template <class Core>
std::size_t mixedloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  if constexpr (Supported<Core, double, double>) from = numberloop<Core>(run, from, to, tally);
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
  for (; i < to && any(std::make_index_sequence<LOOPTAGS>{}); ++i)
    left += leftstep, right += rightstep, result += resultstep;
  run.kinds |= kinds;
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops);
  return i;
}
