// The loop over pairs of integers and reals in any order, which are the common mixture.
#pragma once

#include "arithmetic/loops.h"

// How two tags differ from those of two integers: by nothing, by APART where at least one is a real and neither is of
// another kind, otherwise by more. One number for both, as each tag by itself may be by chance.
inline constexpr std::int32_t APART = tags::INTEGER ^ tags::REAL;
static_assert(APART == 1 && (tags::INTEGER & APART) == 0);
inline std::uint32_t apart(std::int32_t left, std::int32_t right) {
  return static_cast<std::uint32_t>((left ^ tags::INTEGER) | (right ^ tags::INTEGER));
}
// An integer or a real as a double, by a mask and not by a decision, in the registers where doubles are.
inline double numberof(const Element &e) {
  using Bits __attribute__((vector_size(16))) = long long;
  static constexpr long long ifreal[] = {0, -1};
  const Bits mask = {ifreal[e.tag & APART], 0};
  const Pair real = {e.real, 0}, converted = {static_cast<double>(e.integer), 0};
  return reinterpret_cast<Pair>((reinterpret_cast<Bits>(real) & mask) | (reinterpret_cast<Bits>(converted) & ~mask))[0];
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
