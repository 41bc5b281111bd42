// Groups. Arithmetic of reals and complex numbers takes so little that looking for the end would be a good part of it:
// so many pairs go between two looks, into fresh records. What ends such a group leaves the loop to work it again, one
// by one. What only chooses, which refuses no operand, is slower so.
#pragma once

#include <utility>

#include "arithmetic/results.h"

namespace morvik {

inline constexpr std::size_t GROUP = 4;

template <class Core>
concept Usual = requires(Pair &result, const Pair &z) {
  Core::usual(result, z, z);
};
template <class Core>
concept Componentwise = Usual<Core> && Core::componentwise;
template <class Core, std::int32_t L, std::int32_t R>
constexpr bool isbrief() {
  if constexpr (L == tags::COMPLEX && R == tags::COMPLEX)
    return Usual<Core>;
  else if constexpr (L == tags::REAL && R == tags::REAL && Returning<Core, double, double>)
    return std::same_as<ResultFor<Core, double, double>, double> && fixedflopsof<Core, double, double>() > 0 &&
           Core::refused != 0;
  else
    return false;
}

// The operands of a loop, of which one may be a lone record. A copy of that stays in registers through the loop.
enum Lone : unsigned { NO_LONE, LONE_LEFT, LONE_RIGHT, LONES };
template <Lone lone>
class Operands {
 public:
  Operands(const Element *l, const Element *r) : left(l), right(r) {
    if constexpr (lone != NO_LONE) copy = lone == LONE_LEFT ? *l : *r;
  }
  const Element &leftat(std::size_t i) const { return lone == LONE_LEFT ? copy : left[i]; }
  const Element &rightat(std::size_t i) const { return lone == LONE_RIGHT ? copy : right[i]; }

 private:
  const Element *left, *right;
  Element copy;
};

// The tag as the loop compares it: in a register, which the processor does in one step with the branch.
template <std::int32_t tag>
[[gnu::always_inline]] inline std::int32_t heldtag() {
  std::int32_t held = tag;
  asm("" : "+r"(held));
  return held;
}

// Works whole groups as far as that goes, and returns how far. one(i, first) works a pair, which may be the first of
// its group, and iswhole() looks at the group behind it; either may say no.
template <class One, class Whole>
[[gnu::always_inline]] inline std::size_t workbygroups(std::size_t count, One &&one, Whole &&iswhole) {
  std::size_t done = 0;
  const auto group = [&]<std::size_t... k>(std::index_sequence<k...>) __attribute__((always_inline)) {
    return (one(done + k, k == 0) && ...);
  };
  while (count - done >= GROUP && group(std::make_index_sequence<GROUP>()) && iswhole()) done += GROUP;
  return done;
}

template <class Core, Lone lone>
[[gnu::always_inline]] inline std::size_t realgroups(Core &core, const Operands<lone> &operands, Element *result,
                                                     std::size_t count) {
  const std::int32_t tag = heldtag<tags::REAL>();
  const auto one = [&](std::size_t i, bool) __attribute__((always_inline)) {
    const Element &left = operands.leftat(i), &right = operands.rightat(i);
    if (left.tag != tag || right.tag != tag) [[unlikely]]
      return false;
    writerecord(result[i], core(left.real, right.real));
    return true;
  };
  return workbygroups(count, one, [] { return true; });
}

// Complex results take over the left heading. In a group all have the same one: to look at it is to look at the tag,
// and at all else that would make another result of it.
template <class Core>
inline bool isgroupheading(std::uint64_t head) {
  return (head & heading(-1, 0)) == heading(tags::COMPLEX, 0) &&
         (polarsavesof<Core, tags::COMPLEX, tags::COMPLEX>() == 0 || !ispolar(head));
}

// Is the result to be looked at? That a component is no number shows in the sum of the group.
template <class Core>
inline constexpr bool UNLESSNAN = requires {
  Core::unlessnan;
};

// `lefthead` is a group's.
template <class Core, Lone lone>
[[gnu::always_inline]] inline std::size_t complexgroups(std::uint64_t lefthead, const Operands<lone> &operands,
                                                        Element *result, std::size_t count) {
  const std::int32_t tag = heldtag<tags::COMPLEX>();
  Pair sum{};
  const auto one = [&](std::size_t i, bool first) __attribute__((always_inline)) {
    const Element &left = operands.leftat(i), &right = operands.rightat(i);
    if (headingof(left) != lefthead || right.tag != tag) [[unlikely]]
      return false;
    Pair value;
    Core::usual(value, pairof(left.complex, 0), pairof(right.complex, 0));
    if constexpr (UNLESSNAN<Core>) sum = first ? value : sum + value;
    setunnamedheading(result[i], lefthead & INHERITED_BITS);
    std::memcpy(&result[i].complex, &value, sizeof value);
    return true;
  };
  return workbygroups(
      count,
      one, [&]() __attribute__((always_inline)) { return !UNLESSNAN<Core> || !std::isunordered(sum[0], sum[1]); });
}

}  // namespace morvik
