// Loops over records whose kinds change all the time, for both families: integers and reals in any order are worked
// where they are met, every other kind by a step that its tag finds.
#pragma once

#include <array>
#include <bit>

#include "arithmetic/frame.h"

// So many of one kind one after the other are worth their own loop; at fewer than these it ends too soon.
inline constexpr std::size_t TOGETHER = 8;

// What became of one record or pair: the HAS bit of the result, and what it took. No bit: it is not for the step, or
// failed, which sets the tally's message.
struct Made {
  std::uint32_t kind;
  std::uint64_t flops;
};
// The step of an instruction of one operand takes that one twice.
using Step = Made (*)(const Element &left, const Element &right, Element &result, bool fresh, Tally &tally);

// Are both tags those of an integer or of a real?
inline bool arenumbers(std::int32_t a, std::int32_t b) {
  constexpr std::int32_t apart = tags::INTEGER ^ tags::REAL;
  static_assert(apart == 1);
  return static_cast<std::uint32_t>((a ^ tags::INTEGER) | (b ^ tags::INTEGER)) <= apart;
}
// An integer or a real as a double, without a decision that the processor would have to foresee.
inline double numberof(const Element &e) {
  const auto converted = std::bit_cast<std::int64_t>(static_cast<double>(e.integer));
  return std::bit_cast<double>(e.tag == tags::INTEGER ? converted : e.integer);
}

// Works records as they come, and ends at the first that nothing takes, or that fails. Several of one kind together end
// it too: they are better off in their own loop. `right` is `run.left` where there is one operand. `numbers` works a
// pair of integers or reals where it can, and returns what it made; `stepfor` finds the step of other tags, null for
// none.
template <class Numbers, class Find>
[[gnu::always_inline]] inline std::size_t workmixed(Run &run, const Element *right, std::size_t rightstep,
                                                    std::size_t from, std::size_t to, Tally &tally, Numbers &&numbers,
                                                    Find &&stepfor) {
  const Element *left = run.left + from * run.leftstep;
  right += from * rightstep;
  Element *result = run.result + from * run.resultstep;
  std::uint32_t kinds = 0;
  std::uint64_t flops = 0;
  std::int32_t lastleft = 0, lastright = 0;
  std::size_t alike = 0;
  std::size_t i = from;
  for (; i < to && alike < TOGETHER; ++i) {
    const std::int32_t l = left->tag, r = right->tag;
    Made made{};
    if (arenumbers(l, r)) [[likely]]
      made = numbers(*left, *right, *result);
    else if (const Step step = stepfor(l, r))
      made = step(*left, *right, *result, run.fresh, tally);
    if (made.kind == 0) break;
    kinds |= made.kind;
    flops += made.flops;
    alike = l == lastleft && r == lastright ? alike + 1 : 0;
    lastleft = l;
    lastright = r;
    left += run.leftstep;
    right += rightstep;
    result += run.resultstep;
  }
  run.kinds |= kinds;
  tally.flops += static_cast<double>(flops);
  return i;
}

// ---- Two operands.

template <class Core, std::int32_t L, std::int32_t R>
Made workstep(const Element &left, const Element &right, Element &result, bool fresh, Tally &tally) {
  Core core = startcore<Core>(tally);
  std::uint32_t kind = 0;
  if (!workpair<Core, L, R>(core, left, right, result, fresh, tally.failure, [&](std::uint32_t bit) { kind = bit; }))
    return {};
  return {kind, core.flops + flopsforeach<Core, Kind<L>, Kind<R>>()};
}

// Of the pairs that need no check.
template <class Core>
inline constexpr auto STEPS = [] {
  std::array<std::array<Step, LOOPTAGS>, LOOPTAGS> steps{};
  const auto set = [&]<std::int32_t L, std::int32_t R>(std::integral_constant<std::int32_t, L>,
                                                       std::integral_constant<std::int32_t, R>) {
    if constexpr (Supported<Core, Kind<L>, Kind<R>> && !Checked<Core, Kind<L>, Kind<R>>)
      steps[rowof(L)][rowof(R)] = &workstep<Core, L, R>;
  };
  [&]<std::size_t... cell>(std::index_sequence<cell...>) {
    (set(std::integral_constant<std::int32_t, tagof(cell / LOOPTAGS)>{},
         std::integral_constant<std::int32_t, tagof(cell % LOOPTAGS)>{}),
     ...);
  }
  (std::make_index_sequence<LOOPTAGS * LOOPTAGS>{});
  return steps;
}();

// An integer beside a real is the real that it is.
template <class Core>
[[gnu::always_inline]] inline Made worknumbers(Core core, const Element &left, const Element &right, Element &result,
                                               bool fresh) {
  std::uint32_t kind = 0;
  const auto put = [&](const auto &value) { kind = place<tags::REAL, tags::REAL>(result, 0, 0, value, fresh); };
  if (left.tag == tags::INTEGER && right.tag == tags::INTEGER) {
    apply(core, Integer{left.integer}, Integer{right.integer}, put);
    return {kind, core.flops + flopsforeach<Core, Integer, Integer>()};
  }
  apply(core, numberof(left), numberof(right), put);
  return {kind, core.flops + flopsforeach<Core, double, double>()};
}

template <class Core>
std::size_t mixedloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  const auto numbers = [core = startcore<Core>(tally), fresh = run.fresh](const Element &left, const Element &right,
                                                                          Element &result) -> Made {
    if constexpr (Supported<Core, double, double>)
      return worknumbers(core, left, right, result, fresh);
    else
      return {};
  };
  return workmixed(run, run.right, run.rightstep, from, to, tally, numbers, [](std::int32_t left, std::int32_t right) {
    const std::uint32_t l = rowof(left), r = rowof(right);
    return l < LOOPTAGS && r < LOOPTAGS ? STEPS<Core>[l][r] : nullptr;
  });
}
