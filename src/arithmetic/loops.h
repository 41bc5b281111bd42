// The element loop of the dyadic scalar instructions, written once. An instruction is a struct of cores:
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
//     static Pair usual(Complex, Complex);           optional: what operator() gives of two that are not polar
//     static constexpr bool unlessnan;               optional: but where a component of that is no number
//   };
//
// A pair without an operator() is promoted: integers to reals, then the lower number to the kind of the higher. An
// integer beside a real always counts as the real that it is, whatever operator() takes the pair. A core adds to
// `flops` what it did, unless fixedflops tells. R is any kind of kinds.h; a loop turns it into a record.
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <utility>

#include "arithmetic/kinds.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"

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

// What an instruction counts and finds on one thread, through all the spaces that it meets.
struct Tally {
  double tolerance = 0;
  std::int64_t origin = 1;         // what #IO held when the instruction began
  std::uint64_t *state = nullptr;  // of the thread's generator, for an instruction that draws
  double flops = 0;
  double operations = 0;        // of nested spaces
  std::int32_t failure = 0;     // a message number
  bool (*stopped)() = nullptr;  // is the work to end with INTERRUPTED?
};

// One stretch of work over records. The steps are in records; a scalar operand has step 0.
struct Run {
  const Element *left, *right;
  Element *result;
  std::size_t leftstep, rightstep, resultstep;
  std::size_t count;
  bool fresh;               // the result's records hold nothing yet; otherwise they are those of an operand
  std::uint32_t kinds = 0;  // HAS bits and STRUCTURED of what was written
  std::size_t done = 0;     // how far the work came
};

using PlaceMask = std::uint64_t;
inline std::size_t lowestplace(PlaceMask places) {
  return static_cast<unsigned>(std::countr_zero(places));
}
inline std::size_t countplaces(PlaceMask places) {
  return static_cast<unsigned>(std::popcount(places));
}

// Works elements from `from` up to `to` as long as both records are what it is for; returns where it ended.
using Kernel = std::size_t (*)(Run &run, std::size_t from, std::size_t to, Tally &tally);
// The same for some of the first 64 elements of a run, one bit for each. Returns the bits of those that wait for all
// before them, and of what a failure left.
using MaskedKernel = PlaceMask (*)(Run &run, PlaceMask places, Tally &tally);
// The message for the first of such records whose values fail, 0 for none; ends as a kernel does.
using Check = std::int32_t (*)(const Run &run, std::size_t from, std::size_t to);

// ---- Which formula serves a pair.

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

// ---- From a result to a record. Each returns the HAS bit of what it wrote.

// The HAS bit that results of a kind have, or nearly all of them.
template <class T>
inline constexpr std::uint32_t USUAL_BIT = kindbit(TAG_OF<T>);
template <>
inline constexpr std::uint32_t USUAL_BIT<WholeOrReal> = HASINTEGER;
template <>
inline constexpr std::uint32_t USUAL_BIT<Truth> = HASINTEGER;

// Form and marks of a hypercomplex result: a complex number takes them from the complex operand, the left one of two;
// so does a higher number where both operands are of its kind. A mixed pair gives the ordinary form.
template <std::int32_t tag, std::int32_t L, std::int32_t R>
inline std::uint64_t inherited(std::uint64_t left, std::uint64_t right) {
  constexpr bool takesleft = L == tag && (R == tag || tag == tags::COMPLEX);
  constexpr bool takesright = R == tag && tag == tags::COMPLEX;
  if constexpr (takesleft)
    return left & INHERITED_BITS;
  else if constexpr (takesright)
    return right & INHERITED_BITS;
  else
    return heading(tag, L == tag || R == tag ? forms::NUMBER : forms::CARTESIAN);
}

inline std::uint32_t writerecord(Element &to, std::int64_t value, std::uint16_t form) {
  setunnamedheading(to, heading(tags::INTEGER, form));
  to.integer = value;
  return HASINTEGER;
}
inline std::uint32_t writerecord(Element &to, double value) {
  setunnamedheading(to, heading(tags::REAL, forms::COMPUTED));
  to.real = value;
  return HASREAL;
}
inline std::uint32_t writerecord(Element &to, Integer value) {
  return writerecord(to, value.value, forms::NUMBER);
}
inline std::uint32_t writerecord(Element &to, Truth truth) {
  return writerecord(to, truth.value, forms::BOOLEAN);
}
inline std::uint32_t writerecord(Element &to, WholeOrReal number) {
  if (!number.whole) [[unlikely]]
    return writerecord(to, number.value);
  return writerecord(to, saturate(number.value), forms::NUMBER);
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Complex &value) {
  setunnamedheading(to, head);
  to.complex = value;
  return HASCOMPLEX;
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Quaternion &value) {
  setheading(to, head);
  setquaternion(to, value);
  return HASQUATERNION;
}

// A record that is about to hold something else releases its octonion.
inline void releaseoctonion(const Element &e) {
  if (e.tag == tags::OCTONION) release(e.octonion);
}

// The block for the octonion of a result: that which the record owns alone, otherwise a new one. Null: no storage.
inline Octonion *octonionblock(const Element &to, bool fresh) {
  const bool reused = !fresh && to.tag == tags::OCTONION && referencecount(to.octonion) == 1;
  return reused ? to.octonion : static_cast<Octonion *>(tryblock(sizeof(Octonion)));
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Octonion &value, Octonion *target, bool fresh) {
  *target = value;
  if (!fresh && (to.tag != tags::OCTONION || to.octonion != target)) releaseoctonion(to);
  setheading(to, head);
  to.name = nullptr;
  to.octonion = target;
  return HASOCTONION;
}

// Over an operand's record, or into a fresh one; an octonion into its block.
template <std::int32_t L, std::int32_t R, class Value>
inline std::uint32_t writeresult(Element &to, std::uint64_t left, std::uint64_t right, const Value &value, bool fresh,
                                 Octonion *target = nullptr) {
  if constexpr (std::same_as<Value, Octonion>) {
    return writerecord(to, inherited<TAG_OF<Value>, L, R>(left, right), value, target, fresh);
  } else {
    if constexpr (L == tags::OCTONION || R == tags::OCTONION)
      if (!fresh) releaseoctonion(to);
    if constexpr (Hyper<Value>) {
      return writerecord(to, inherited<TAG_OF<Value>, L, R>(left, right), value);
    } else if constexpr (std::same_as<Value, Ascii> || std::same_as<Value, Unicode>) {
      // A character comes from the operand that is one, and looks like it.
      constexpr std::int32_t tag = TAG_OF<Value>;
      setunnamedheading(to, (L == tag ? left : right) & INHERITED_BITS);
      to.integer = value.value;
      return kindbit(tag);
    } else {
      return writerecord(to, value);
    }
  }
}

// ---- The loop.

template <class Core>
inline Core startcore(const Tally &tally) {
  Core core{};
  if constexpr (requires { core.tolerance; }) core.tolerance = tally.tolerance;
  return core;
}

template <class Core, std::int32_t L, std::int32_t R>
inline std::int32_t checkpair(const Element &left, const Element &right) {
  if constexpr (CheckedByRight<Core, Kind<R>>)
    return Core{}.check(valueof<R>(right));
  else
    return Core{}.check(valueof<L>(left), valueof<R>(right));
}

inline bool arepolar(const Element &left, const Element &right) {
  return (left.form & right.form & forms::POLAR) != 0;
}

// Works one pair: reads it before it writes the result, which may be one of the two. Passes the HAS bit of the result
// to `note`. False, with nothing done, where the tags are not these, and where the pair fails, which sets `failure`.
template <class Core, std::int32_t L, std::int32_t R, class Note>
[[gnu::always_inline]] inline bool workpair(Core &core, const Element &left, const Element &right, Element &result,
                                            bool fresh, std::int32_t &failure, Note &&note, std::int32_t lefttag = L,
                                            std::int32_t righttag = R) {
  if (left.tag != lefttag || right.tag != righttag) [[unlikely]]
    return false;
  using Result = ResultFor<Core, Kind<L>, Kind<R>>;
  if constexpr (Checked<Core, Kind<L>, Kind<R>>) {
    failure = checkpair<Core, L, R>(left, right);
    if (failure != 0) [[unlikely]]
      return false;
  }
  const std::uint64_t lefthead = headingof(left), righthead = headingof(right);
  if constexpr (polarsavesof<Core, L, R>() != 0) core.flops -= arepolar(left, right) ? polarsavesof<Core, L, R>() : 0;
  // Found before the formula runs, as its terms are computed best where they are stored.
  Octonion *target = nullptr;
  if constexpr (std::same_as<Result, Octonion>) {
    target = octonionblock(result, fresh);
    if (!target) [[unlikely]] {
      failure = messages::OUT_OF_STORAGE;
      return false;
    }
  }
  applydyadic(core, valueof<L>(left), valueof<R>(right),
              [&](const auto &value) { note(writeresult<L, R>(result, lefthead, righthead, value, fresh, target)); });
  return true;
}

// ---- Groups. Arithmetic of reals and complex numbers takes so little that looking for the end would be a good part of
// it: so many go between two looks, into fresh records. What ends such a group leaves the loop to work it again, one by
// one. What only chooses, which refuses no operand, is slower so.

inline constexpr std::size_t GROUP = 4;
template <class Core>
concept Usual = requires(const Complex &z) {
  Core::usual(z, z);
};
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

// Complex results take over the left heading. In a group all have the same one: to look at it is to look at the tag,
// and at all else that would make another result of it.
template <class Core>
inline bool isgroupheading(std::uint64_t head) {
  return (head & heading(-1, 0)) == heading(tags::COMPLEX, 0) &&
         (polarsavesof<Core, tags::COMPLEX, tags::COMPLEX>() == 0 || !ispolar(head));
}

// Writes a fresh record with this heading and no name.
template <bool wide>
[[gnu::always_inline]] inline void writegrouped(Element &to, std::uint64_t head, const Pair &value) {
  if constexpr (wide) {
    using Record __attribute__((vector_size(32), aligned(8), may_alias)) = double;
    const Pair begin{std::bit_cast<double>(head), 0};
    *reinterpret_cast<Record *>(&to) = __builtin_shufflevector(begin, value, 0, 1, 2, 3);
  } else {
    setunnamedheading(to, head);
    std::memcpy(&to.complex, &value, sizeof value);
  }
}

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
[[gnu::always_inline]] inline std::size_t workgroups(std::size_t count, One &&one, Whole &&iswhole) {
  std::size_t done = 0;
  const auto group = [&]<std::size_t... k>(std::index_sequence<k...>) __attribute__((always_inline)) {
    return (one(done + k, k == 0) && ...);
  };
  while (count - done >= GROUP && group(std::make_index_sequence<GROUP>()) && iswhole()) done += GROUP;
  return done;
}

// Groups of reals. `left` and `right` give the record of an index.
template <class Core, class Left, class Right>
[[gnu::always_inline]] inline std::size_t realgroups(Core &core, Left &&left, Right &&right, Element *result,
                                                     std::size_t count) {
  const std::int32_t tag = heldtag<tags::REAL>();
  const auto one = [&](std::size_t i, bool) __attribute__((always_inline)) {
    if (left(i).tag != tag || right(i).tag != tag) [[unlikely]]
      return false;
    writerecord(result[i], core(left(i).real, right(i).real));
    return true;
  };
  return workgroups(count, one, [] { return true; });
}

// The same of complex numbers. That a component of a result is no number shows in the sum of the group.
template <class Core, bool wide, class Left, class Right>
[[gnu::always_inline]] inline std::size_t complexgroups(Left &&left, Right &&right, Element *result,
                                                        std::size_t count) {
  if (count < GROUP) return 0;
  const std::uint64_t lefthead = headingof(left(0));
  if (!isgroupheading<Core>(lefthead)) return 0;
  const std::uint64_t head = lefthead & INHERITED_BITS;
  const std::int32_t tag = heldtag<tags::COMPLEX>();
  constexpr bool checked = requires {
    Core::unlessnan;
  };
  Pair sum{};
  const auto one = [&](std::size_t i, bool first) __attribute__((always_inline)) {
    if (headingof(left(i)) != lefthead || right(i).tag != tag) [[unlikely]]
      return false;
    const Pair value = Core::usual(left(i).complex, right(i).complex);
    if constexpr (checked) sum = first ? value : sum + value;
    writegrouped<wide>(result[i], head, value);
    return true;
  };
  return workgroups(
      count, one, [&]() __attribute__((always_inline)) { return !checked || !std::isunordered(sum[0], sum[1]); });
}

// ---- Loops along records side by side, of which one operand may be a lone record instead. Under a flag word that is
// not exact a space may hold any record: each is looked at, and the first that is not expected ends the loop.

// How far one came, and which kinds it wrote.
struct Stretch {
  std::size_t done;
  std::uint32_t kinds;
};
using StraightLoop = Stretch (*)(const Element *left, const Element *right, Element *result, std::size_t count,
                                 bool fresh, Tally &tally);
enum Lone : unsigned { NO_LONE, LONE_LEFT, LONE_RIGHT, LONES };

template <class Core, std::int32_t L, std::int32_t R, Lone lone, bool wide>
[[gnu::always_inline]] inline Stretch workstraight(const Element *left, const Element *right, Element *result,
                                                   std::size_t count, bool fresh, Tally &tally) {
  using Result = ResultFor<Core, Kind<L>, Kind<R>>;
  Core core = startcore<Core>(tally);
  std::uint32_t kinds = 0;  // of the results that are not of the usual kind, of which there are
  std::size_t others = 0, done = 0;
  std::int32_t failure = 0;
  Element copy;
  if constexpr (lone != NO_LONE) copy = lone == LONE_LEFT ? *left : *right;
  const auto leftat = [&](std::size_t i) -> const Element & { return lone == LONE_LEFT ? copy : left[i]; };
  const auto rightat = [&](std::size_t i) -> const Element & { return lone == LONE_RIGHT ? copy : right[i]; };
  if constexpr (isbrief<Core, L, R>() && L == tags::REAL)
    if (fresh) done = realgroups<Core>(core, leftat, rightat, result, count);
  if constexpr (isbrief<Core, L, R>() && L == tags::COMPLEX)
    if (fresh) done = complexgroups<Core, wide>(leftat, rightat, result, count);
  const std::int32_t lefttag = heldtag<L>(), righttag = L == R ? lefttag : heldtag<R>();
  const auto note = [&](std::uint32_t kind) {
    if (kind != USUAL_BIT<Result>) [[unlikely]] {
      kinds |= kind;
      ++others;
    }
  };
  while (done < count &&
         workpair<Core, L, R>(core, leftat(done), rightat(done), result[done], fresh, failure, note, lefttag, righttag))
    ++done;
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops + fixedflopsof<Core, Kind<L>, Kind<R>>() * done);
  return {done, done > others ? kinds | USUAL_BIT<Result> : kinds};
}

template <class Core, std::int32_t L, std::int32_t R, Lone lone>
MORVIK_WIDE Stretch wideloop(const Element *left, const Element *right, Element *result, std::size_t count, bool fresh,
                             Tally &tally) {
  return workstraight<Core, L, R, lone, true>(left, right, result, count, fresh, tally);
}
template <class Core, std::int32_t L, std::int32_t R, Lone lone>
Stretch straightloop(const Element *left, const Element *right, Element *result, std::size_t count, bool fresh,
                     Tally &tally) {
  if constexpr (isbrief<Core, L, R>() && L == tags::COMPLEX)
    if (wideregisters) return wideloop<Core, L, R, lone>(left, right, result, count, fresh, tally);
  return workstraight<Core, L, R, lone, false>(left, right, result, count, fresh, tally);
}

// Has a pair of kinds such loops for a lone operand too? The higher numbers do without.
template <class Core, std::int32_t L, std::int32_t R>
inline constexpr bool HASLONE = !Hyper<ResultFor<Core, Kind<L>, Kind<R>>>;

// The same for any steps: nearly all there is to do is straight.
template <class Core, std::int32_t L, std::int32_t R>
std::size_t pairloop(Run &run, std::size_t from, std::size_t to, Tally &tally) {
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep, resultstep = run.resultstep;
  const Element *left = run.left + from * leftstep, *right = run.right + from * rightstep;
  Element *result = run.result + from * resultstep;
  const auto along = [&](StraightLoop loop) {
    const Stretch stretch = loop(left, right, result, to - from, run.fresh, tally);
    run.kinds |= stretch.kinds;
    return from + stretch.done;
  };
  if (leftstep == 1 && rightstep == 1 && resultstep == 1) return along(&straightloop<Core, L, R, NO_LONE>);
  if constexpr (HASLONE<Core, L, R>) {
    if (leftstep == 1 && rightstep == 0 && resultstep == 1) return along(&straightloop<Core, L, R, LONE_RIGHT>);
    if (leftstep == 0 && rightstep == 1 && resultstep == 1) return along(&straightloop<Core, L, R, LONE_LEFT>);
  }
  Core core = startcore<Core>(tally);
  std::uint32_t kinds = 0;
  std::int32_t failure = 0;
  std::size_t i = from;
  while (i < to && workpair<Core, L, R>(core, *left, *right, *result, run.fresh, failure,
                                        [&](std::uint32_t kind) { kinds |= kind; })) {
    left += leftstep, right += rightstep, result += resultstep;
    ++i;
  }
  run.kinds |= kinds;
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops + fixedflopsof<Core, Kind<L>, Kind<R>>() * (i - from));
  return i;
}

// Works some of the first 64 pairs, each of fixedflops: one(core, left, right, result, fresh, kinds) until it says no.
// Returns those that are left.
template <class Core, std::uint64_t fixedflops, class One>
[[gnu::always_inline]] inline PlaceMask workplaces(Run &run, PlaceMask places, Tally &tally, One &&one) {
  Core core = startcore<Core>(tally);
  const std::size_t leftstep = run.leftstep, rightstep = run.rightstep;
  const Element *const left = run.left, *const right = run.right;
  Element *const result = run.result;
  const bool fresh = run.fresh;
  std::uint32_t kinds = 0;
  PlaceMask rest = places;
  for (; rest != 0; rest &= rest - 1) {
    const std::size_t i = lowestplace(rest);
    if (!one(core, left[i * leftstep], right[i * rightstep], result[i], fresh, kinds)) break;
  }
  run.kinds |= kinds;
  tally.flops +=
      static_cast<double>(fixedflops == 0 ? core.flops : core.flops + fixedflops * countplaces(places ^ rest));
  return rest;
}

template <class Core, std::int32_t L, std::int32_t R>
PlaceMask maskedloop(Run &run, PlaceMask places, Tally &tally) {
  std::int32_t failure = 0;
  const PlaceMask rest = workplaces<Core, fixedflopsof<Core, Kind<L>, Kind<R>>()>(
      run, places, tally,
      [&](auto &core, const Element &left, const Element &right, Element &result, bool fresh, std::uint32_t &kinds)
          __attribute__((always_inline)) {
            return workpair<Core, L, R>(core, left, right, result, fresh, failure,
                                        [&](std::uint32_t kind) { kinds |= kind; });
          });
  tally.failure = failure;
  return rest;
}

template <class Core, std::int32_t L, std::int32_t R>
std::int32_t check(const Run &run, std::size_t from, std::size_t to) {
  const Element *left = run.left + from * run.leftstep, *right = run.right + from * run.rightstep;
  constexpr bool byright = CheckedByRight<Core, Kind<R>>;
  const std::size_t end = byright && run.rightstep == 0 && from < to ? from + 1 : to;
  for (std::size_t i = from; i < end && left->tag == L && right->tag == R; ++i) {
    if (const std::int32_t message = checkpair<Core, L, R>(*left, *right); message != 0) return message;
    left += run.leftstep;
    right += run.rightstep;
  }
  return 0;
}

}  // namespace morvik
