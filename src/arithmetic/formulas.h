// Which formula of a dyadic scalar instruction serves a pair of kinds. An instruction is a struct of cores:
//
//   struct Core : FlopCounter {
//     static constexpr std::uint32_t refused = ...;  flags that make operands not conformable
//     R operator()(A, B);                            one for each pair of kinds that has a formula of its own
//     void operator()(A, B, Give &&give);            the same, where several formulas each end with give(R); R is
//                                                    mostly the wider kind of the pair
//     static constexpr std::size_t fixedflops(F);    optional, for a pair whose results all cost the same: how
//                                                    much; F is Formula<A, B>, and operator() does not count then
//     std::int32_t check(A, B) const;                optional, for a pair that fails for some values: a message number
//     std::int32_t check(B) const;                   the same, where the right one alone decides
//     static std::int32_t refusal(l, r);             optional: the message for tags without a core, otherwise 162
//     static constexpr std::size_t pollinterval;     optional, for slow ones: elements between two safe points
//     double tolerance;                              optional: is set to what #CT held when the instruction began
//     static constexpr std::size_t polarsaves;       optional: so many fewer flops where two complex numbers are polar
//     static void usual(Lanes &, a, b);              optional: what operator() gives of complex numbers side by side in
//                                                    registers of any width, of which no two are polar
//     static constexpr bool unlessnan;               optional: but where a component of that is no number
//     static constexpr bool componentwise;           optional: and of reals, as it works each component by itself
//   };
//
// A pair without an operator() is promoted: integers to reals, then the lower number to the kind of the higher. An
// integer beside a real always counts as the real that it is, whatever operator() takes the pair. A core adds to
// `flops` what it did, unless fixedflops tells. R is any kind of kinds.h; a loop turns it into a record.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "arithmetic/kinds.h"

namespace morvik {

// What every struct of cores begins with.
struct FlopCounter {
  std::uint64_t flops = 0;

  // The rule of integer arithmetic: done in doubles, an integer where it fits.
  WholeOrReal wholeresult(double x) {
    if (std::fabs(x) < INTEGER_BOUND) [[likely]]
      return {x, true};
    const bool fits = std::fabs(x) == INTEGER_BOUND;
    flops += fits ? 0 : 1;
    return {x, fits};
  }
};

// Are two integers so small that doubles hold them, their sum and their difference? Then the rule of integer arithmetic
// says what integers say, and faster.
inline bool summable(Integer a, Integer b) {
  constexpr std::uint64_t HALF = 1ULL << 52;
  return ((static_cast<std::uint64_t>(a.value) + HALF) | (static_cast<std::uint64_t>(b.value) + HALF)) < 2 * HALF;
}

struct Unsupported {};
template <class A, class B>
struct Formula {
  using Left = A;
  using Right = B;
};

// Where a formula may leave its result.
struct Anywhere {
  template <class R>
  void operator()(const R &) const {}
};

template <class Core, class A, class B>
concept Returning = requires(Core core, const A &a, const B &b) {
  core(a, b);
};
template <class Core, class A, class B>
concept Giving = requires(Core core, const A &a, const B &b) {
  core(a, b, Anywhere{});
};
template <class Core, class B>
concept CheckedByRight = requires(const Core core, const B &b) {
  core.check(b);
};
template <class Core, class A, class B>
concept Checked = CheckedByRight<Core, B> || requires(const Core core, const A &a, const B &b) {
  core.check(a, b);
};

// The kinds whose formula serves a pair of kinds.
template <class Core, class A, class B>
constexpr auto formulafor() {
  constexpr bool leftinteger = std::same_as<A, Integer>, rightinteger = std::same_as<B, Integer>;
  if constexpr (Returning<Core, A, B> || Giving<Core, A, B>)
    return Formula<A, B>{};
  else if constexpr (leftinteger && (rightinteger || Parted<B>))
    return formulafor<Core, double, std::conditional_t<rightinteger, double, B>>();
  else if constexpr (rightinteger && Parted<A>)
    return formulafor<Core, A, double>();
  else if constexpr (Parted<A> && Parted<B> && PARTS<A> != PARTS<B>)
    return formulafor<Core, Wider<A, B>, Wider<A, B>>();
  else
    return Unsupported{};
}
template <class Core, class A, class B>
using FormulaFor = decltype(formulafor<Core, A, B>());
template <class Core, class A, class B>
concept Supported = !std::same_as<FormulaFor<Core, A, B>, Unsupported>;

template <class T, class A>
inline decltype(auto) converted(const A &a) {
  if constexpr (std::same_as<T, A>)
    return static_cast<const A &>(a);
  else if constexpr (!std::same_as<A, Integer>)
    return promote<T>(a);
  else if constexpr (std::same_as<T, double>)
    return static_cast<double>(a.value);
  else
    return promote<T>(static_cast<double>(a.value));
}

// Passes the result of a supported pair to `give`.
template <class Core, class A, class B, class Give>
inline void applydyadic(Core &core, const A &a, const B &b, Give &&give) {
  using F = FormulaFor<Core, A, B>;
  const auto &left = converted<typename F::Left>(a);
  const auto &right = converted<typename F::Right>(b);
  if constexpr (Returning<Core, typename F::Left, typename F::Right>)
    give(core(left, right));
  else
    core(left, right, give);
}

// The kind of the result, or of most results: what gives its result, mostly gives one of the wider kind.
template <class Core, class L, class R>
constexpr auto resultfor(Formula<L, R>) {
  if constexpr (Returning<Core, L, R>)
    return std::type_identity<decltype(std::declval<Core &>()(std::declval<const L &>(), std::declval<const R &>()))>{};
  else if constexpr (std::same_as<L, Integer>)
    return std::type_identity<WholeOrReal>{};
  else
    return std::type_identity<Wider<L, R>>{};
}
template <class Core, class A, class B>
using ResultFor = typename decltype(resultfor<Core>(FormulaFor<Core, A, B>{}))::type;

// The flops of each result of a pair of kinds, as far as the core does not count them.
template <class Core, class A, class B>
constexpr std::uint64_t fixedflopsof() {
  if constexpr (requires { Core::fixedflops(FormulaFor<Core, A, B>{}); })
    return Core::fixedflops(FormulaFor<Core, A, B>{});
  else
    return 0;
}

// How many of them are saved where both operands are in polar form.
template <class Core, std::int32_t L, std::int32_t R>
constexpr std::uint64_t polarsavesof() {
  if constexpr (L == tags::COMPLEX && R == tags::COMPLEX && requires { Core::polarsaves; })
    return Core::polarsaves;
  else
    return 0;
}

}  // namespace morvik
