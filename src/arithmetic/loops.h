// The element loops of the dyadic scalar instructions, written once for all structs of cores (formulas.h).
#pragma once

#include <bit>
#include <concepts>
#include <cstddef>
#include <utility>

#include "arithmetic/widegroups.h"
#include "spaces/messages.h"

namespace morvik {

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

// ---- Loops along records side by side, of which one operand may be a lone record instead. Under a flag word that is
// not exact a space may hold any record: each is looked at, and the first that is not expected ends the loop.

// How far one came, and which kinds it wrote.
struct Stretch {
  std::size_t done;
  std::uint32_t kinds;
};
using StraightLoop = Stretch (*)(const Element *left, const Element *right, Element *result, std::size_t count,
                                 bool fresh, Tally &tally);

// Works the groups at the begin into fresh records, and returns how many pairs they hold.
template <class Core, std::int32_t L, Lone lone>
[[gnu::always_inline]] inline std::size_t workgroups(Core &core, const Element *left, const Element *right,
                                                     Element *result, std::size_t count) {
  if (count < GROUP) return 0;
  if constexpr (L == tags::COMPLEX) {
    const std::uint64_t lefthead = headingof(*left);
    if (!isgroupheading<Core>(lefthead)) return 0;
    if (wideregisters) return widecomplexgroups<Core, lone>(lefthead, left, right, result, count);
    return complexgroups<Core, lone>(lefthead, {left, right}, result, count);
  } else {
    if constexpr (Componentwise<Core>)
      if (ternarylogic && count <= MOST_NEAR) return widerealgroups<Core, lone>(left, right, result, count);
    return realgroups<Core, lone>(core, {left, right}, result, count);
  }
}

template <class Core, std::int32_t L, std::int32_t R, Lone lone>
Stretch straightloop(const Element *left, const Element *right, Element *result, std::size_t count, bool fresh,
                     Tally &tally) {
  using Result = ResultFor<Core, Kind<L>, Kind<R>>;
  Core core = startcore<Core>(tally);
  std::uint32_t kinds = 0;  // of the results that are not of the usual kind, of which there are
  std::size_t others = 0, done = 0;
  std::int32_t failure = 0;
  if constexpr (isbrief<Core, L, R>())
    if (fresh) done = workgroups<Core, L, lone>(core, left, right, result, count);
  const Operands<lone> operands(left, right);
  const std::int32_t lefttag = heldtag<L>(), righttag = L == R ? lefttag : heldtag<R>();
  const auto note = [&](std::uint32_t kind) {
    if (kind != USUAL_BIT<Result>) [[unlikely]] {
      kinds |= kind;
      ++others;
    }
  };
  while (done < count && workpair<Core, L, R>(core, operands.leftat(done), operands.rightat(done), result[done], fresh,
                                              failure, note, lefttag, righttag))
    ++done;
  tally.failure = failure;
  tally.flops += static_cast<double>(core.flops + fixedflopsof<Core, Kind<L>, Kind<R>>() * done);
  return {done, done > others ? kinds | USUAL_BIT<Result> : kinds};
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
