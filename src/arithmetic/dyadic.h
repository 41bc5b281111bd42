// The frame of the dyadic scalar instructions: what an instruction needs beside its cores, and how it gets its two
// functions, the plain one for the stack and the `vec_` twin for a slice. A further instruction is one source that
// holds its struct of cores (formulas.h tells what is in one) and
//
//   DYADIC_SCALAR(add, Add)
//
// The frame is in dyadic.cpp and knows an instruction by its table alone.
#pragma once

#include "arithmetic/frame.h"
#include "arithmetic/numberloops.h"
#include "arithmetic/pairs.h"
#include "arithmetic/scalars.h"
#include "failure/signals.h"
#include "spaces/loose.h"
#include "spaces/messages.h"
#include "spaces/sysvars.h"

namespace morvik {

// What the macro's functions call: the frame on the stack, and one slice of what to_coprocessors holds. The slice's
// flags, flops and failure go into its reply; its message number is returned.
void dyadicframe(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, bool nested);
std::int32_t dyadicslice(const Dyadic &d, std::uint32_t index) noexcept;
// The short way on the stack, of two plain spaces that fit and are small. Of the upper ones so many may be borrowed:
// what names or bodies hold, copied to their slots without a count. False, with nothing done, where the frame has to
// look closer. Fails as the frame does, with all operands counted.
bool workplain(const Dyadic &d, Point **stack, const Point *instruction, const Point *context, unsigned borrowed);
// What #CT holds, as sysvars.h reads it; 0 without a context.
double tolerancein(const Point *context);

// ---- The table of a struct of cores.

template <class Core, std::int32_t L, std::int32_t R>
constexpr void setloops(Dyadic &d) {
  if constexpr (Supported<Core, Kind<L>, Kind<R>>) d.kernels[kindof(L, R)] = &pairloop<Core, L, R>;
  if constexpr (Supported<Core, Kind<L>, Kind<R>>) d.masked[kindof(L, R)] = &maskedloop<Core, L, R>;
  if constexpr (Checked<Core, Kind<L>, Kind<R>>) d.checks[kindof(L, R)] = &check<Core, L, R>;
}

template <class Core, std::int32_t L, std::int32_t R>
constexpr void setstraight(Dyadic &d) {
  constexpr bool refused = (Core::refused & (kindbit(L) | kindbit(R))) != 0;
  if constexpr (Supported<Core, Kind<L>, Kind<R>> && !Checked<Core, Kind<L>, Kind<R>> && !refused) {
    StraightLoop(&loops)[LONES] = d.straight[kindof(L)][kindof(R)];
    loops[NO_LONE] = &straightloop<Core, L, R, NO_LONE>;
    if constexpr (HASLONE<Core, L, R>) {
      loops[LONE_LEFT] = &straightloop<Core, L, R, LONE_LEFT>;
      loops[LONE_RIGHT] = &straightloop<Core, L, R, LONE_RIGHT>;
    }
  }
}

template <class Core>
std::uint64_t workloose(Point &left, std::uint32_t righttype, std::int64_t right);

template <class Core>
constexpr Dyadic dyadic() {
  Dyadic d{};
  d.loose = &workloose<Core>;
  d.refused = Core::refused;
  d.tolerant = requires(Core core) {
    core.tolerance;
  };
  if constexpr (requires { Core::pollinterval; })
    d.pollinterval = Core::pollinterval;
  else
    d.pollinterval = POLL_INTERVAL;
  if constexpr (requires { Core::refusal(0, 0); })
    d.refusal = &Core::refusal;
  else
    d.refusal = [](std::int32_t, std::int32_t) { return messages::INCOMPATIBLE_TYPES; };
  if constexpr (Supported<Core, double, double>) {
    static_assert(!Checked<Core, double, double> && !Checked<Core, double, Integer> && !Checked<Core, Integer, double>);
    d.kernels[MIXED_KIND] = &mixedloop<Core>;
    d.masked[MIXED_KIND] = &maskedmixed<Core>;
  }
  [&]<std::size_t... cell>(std::index_sequence<cell...>) {
    (setloops<Core, tagof(cell / LOOP_TAGS), tagof(cell % LOOP_TAGS)>(d), ...);
  }
  (std::make_index_sequence<LOOP_TAGS * LOOP_TAGS>{});
  [&]<std::size_t... pair>(std::index_sequence<pair...>) {
    (setstraight<Core, tagof(pair / PLAIN_COUNT), tagof(pair % PLAIN_COUNT)>(d), ...);
  }
  (std::make_index_sequence<PLAIN_COUNT * PLAIN_COUNT>{});
  return d;
}

// ---- The fast path for two plain scalars: nothing conforms, extends or nests.

// The block for the result of two plain scalars whose left block is shared: the right one's, or a new one. Releases the
// others. Message 27, nothing released.
Element *resultblock(Element *left, Element *right);

// Pops two plain scalars and pushes one whose element, in a block that nobody else sees, is to be written. Message 27,
// nothing popped.
[[gnu::always_inline]] inline Element *scalarresult(Point **stack) {
  Point &left = (*stack)[-1], &right = **stack;
  if (referencecount(left.data_pointer) == 1) [[likely]]
    release(right.data_pointer);
  else
    left.data_pointer = resultblock(left.data_pointer, right.data_pointer);
  if (right.depth > left.depth) left.depth = right.depth;
  --*stack;
  return left.data_pointer;
}

// False where the frame has to look closer.
template <class Core, std::int32_t L, std::int32_t R>
inline bool workscalarpair(Point **stack, const Element &left, const Element &right, const Tally &tally) {
  if constexpr (Supported<Core, Kind<L>, Kind<R>> && !Checked<Core, Kind<L>, Kind<R>>) {
    Core core = startcore<Core>(tally);
    const std::uint64_t lefthead = headingof(left), righthead = headingof(right);
    applydyadic(core, valueof<L>(left), valueof<R>(right), [&](const auto &value) {
      const std::uint32_t kind = writeresult<L, R>(*scalarresult(stack), lefthead, righthead, value, true);
      setscalar(**stack, ISSCALAR | kind);
      countwork(1, 1 + static_cast<double>(core.flops + fixedflopsof<Core, Kind<L>, Kind<R>>()));
    });
    return true;
  } else {
    return false;
  }
}

template <class Core>
inline bool workscalars(Point **stack, const Point *context) {
  const Point &left = (*stack)[-1], &right = **stack;
  if (!isplainscalar(left) || !isplainscalar(right)) return false;
  Tally tally;
  if constexpr (requires(Core core) { core.tolerance; }) tally.tolerance = tolerancein(context);
  const Element &a = *left.data_pointer, &b = *right.data_pointer;
  constexpr std::uint64_t comparedbits = heading(-1, 0, attributes::NAMED);
  constexpr std::uint64_t integer = heading(tags::INTEGER, 0), real = heading(tags::REAL, 0);
  const std::uint64_t l = headingof(a) & comparedbits, r = headingof(b) & comparedbits;
  if (l == integer && r == integer) return workscalarpair<Core, tags::INTEGER, tags::INTEGER>(stack, a, b, tally);
  if (l == real && r == real) return workscalarpair<Core, tags::REAL, tags::REAL>(stack, a, b, tally);
  if (l == integer && r == real) return workscalarpair<Core, tags::INTEGER, tags::REAL>(stack, a, b, tally);
  if (l == real && r == integer) return workscalarpair<Core, tags::REAL, tags::INTEGER>(stack, a, b, tally);
  return false;
}

// ---- The same for two loose scalars, which the quick loop holds.

template <class Core, std::int32_t L, std::int32_t R>
inline std::uint64_t workloosepair(Point &left, const Element &a, const Element &b, const Tally &tally) {
  std::uint64_t done = 0;
  if constexpr (Supported<Core, Kind<L>, Kind<R>> && !Checked<Core, Kind<L>, Kind<R>>) {
    Core core = startcore<Core>(tally);
    applydyadic(core, valueof<L>(a), valueof<R>(b), [&]<class Value>(const Value &value) {
      if constexpr (std::same_as<Value, double> || std::same_as<Value, Integer> || std::same_as<Value, Truth> ||
                    std::same_as<Value, WholeOrReal>) {
        Element made;
        const std::uint32_t kind = writeresult<L, R>(made, 0, 0, value, true);
        putloose(left, LOOSE | ISSCALAR | kind, made.form, static_cast<std::uint64_t>(made.integer));
        done = 1 + core.flops + fixedflopsof<Core, Kind<L>, Kind<R>>();
      }
    });
  }
  return done;
}

template <class Core>
std::uint64_t workloose(Point &left, std::uint32_t righttype, std::int64_t right) {
  Tally tally;
  if constexpr (requires(Core core) { core.tolerance; }) tally.tolerance = tolerancein(quads);
  Element a, b;
  a.integer = looseinteger(left);
  b.integer = right;
  if (left.type == LOOSE_INTEGER) {
    if (righttype == LOOSE_INTEGER) return workloosepair<Core, tags::INTEGER, tags::INTEGER>(left, a, b, tally);
    return workloosepair<Core, tags::INTEGER, tags::REAL>(left, a, b, tally);
  }
  if (righttype == LOOSE_INTEGER) return workloosepair<Core, tags::REAL, tags::INTEGER>(left, a, b, tally);
  return workloosepair<Core, tags::REAL, tags::REAL>(left, a, b, tally);
}

#define DYADIC_SCALAR(name, Core)                                                           \
  constinit const Dyadic name##cores = dyadic<Core>();                                      \
  void name(Point **stack, const Point *instruction, Point *context, char nested) {         \
    if (nested == 0 && workscalars<Core>(stack, context)) return;                           \
    dyadicframe(name##cores, stack, instruction, context, nested != 0);                     \
  }                                                                                         \
  std::int32_t vec_##name(Point **, const Point *, Point *, std::uint32_t index) noexcept { \
    return dyadicslice(name##cores, index);                                                 \
  }

}  // namespace morvik
