// What a space of mixed kinds costs beside a uniform one: both are worked by the system, so that the ratio is its own
// to itself. The kinds change at every element, or by chance, which branch prediction cannot learn.
#include "arithmetic/pairs.h"
#include "arithmetic/pairwalk.h"
#include "monadics.h"

using namespace morvik;

namespace {

using namespace kernels;

// Of the two kinds in turns.
template <std::int32_t one, std::int32_t other>
void inturns(Element &e, std::uint64_t bits) {
  static bool odd = false;
  odd = !odd;
  e.tag = odd ? one : other;
  ordinary(e, bits);
}

// One of the two by chance.
template <std::int32_t one, std::int32_t other>
void bychance(Element &e, std::uint64_t bits) {
  e.tag = bits % 2 == 0 ? one : other;
  ordinary(e, bits / 2);
}

// The system over mixed operands, in turns with itself over such that are not.
void measuremixed(benchmark::State &state, const Row &row) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const bool both = row.rightfill != ordinary;
  Records &mixed = records(FIRST, row.left, count, 1, row.fill), &uniform = records(THEIRS, row.left, count, 1);
  Records &right = records(SECOND, row.right, count, 2, row.rightfill);
  Records &uniformright = both ? records(OTHER, row.right, count, 2) : right;
  Records &result = records(MINE, tags::REAL, count, 3);
  const auto worked = [&](Records &l, Records &r) {
    Run run{l.get(), r.get(), result.get(), 1, row.rightstep, 1, count, true};
    std::uint64_t draws;
    Tally tally = startduel(draws);
    const std::int32_t message = row.dyadic ? work(*row.dyadic, run, tally) : work(*row.monadic, run, tally);
    if (message != 0) state.SkipWithError("a failure");
  };
  duel(
      state, MIXED, result, result, [&](Records &) { worked(mixed, right); },
      [&](Records &) { worked(uniform, uniformright); });
}

void entermixed(const char *name, const char *kinds, const Dyadic *dyadic, const Monadic *monadic, std::int32_t tag,
                Fill *fill, Fill *rightfill) {
  Row row{};
  row.dyadic = dyadic;
  row.monadic = monadic;
  row.left = row.right = tag;
  row.rightstep = dyadic ? 1 : 0;
  row.fill = fill;
  row.rightfill = rightfill;
  for (const std::int64_t count : {SMALL, MIDDLE, LARGE})
    benchmark::RegisterBenchmark((std::string(name) + kinds).c_str(),
                                 [row](benchmark::State &state) { measuremixed(state, row); })
        ->Arg(count)
        ->Iterations(count < LARGE ? TURNS : LARGETURNS)
        ->Unit(benchmark::kMillisecond);
}

void dyads(const char *kinds, std::int32_t tag, Fill *fill, Fill *rightfill = ordinary) {
  using namespace instructions;
  const auto enterdyad = [&](const char *name, std::uint16_t instruction) {
    entermixed(name, kinds, dyadiccores(instruction), nullptr, tag, fill, rightfill);
  };
  enterdyad("ADD", ADD);
  enterdyad("MULTIPLY", MULTIPLY);
  enterdyad("DIVIDE", DIVIDE);
  enterdyad("MINIMUM", MINIMUM);
  enterdyad("LESS", LESS);
  enterdyad("IDENTICAL", IDENTICAL);
  enterdyad("AND", AND);
}

void monads(const char *kinds, std::int32_t tag, Fill *fill) {
  const auto entermonad = [&](const char *name, const Monadic &m) {
    entermixed(name, kinds, nullptr, &m, tag, fill, ordinary);
  };
  entermonad("NEGATIVE", negativemonadic);
  entermonad("MAGNITUDE", magnitudemonadic);
  entermonad("FLOOR", flooringmonadic);
  entermonad("EXPONENTIAL", exponentialmonadic);
  entermonad("FACTORIAL", factorialmonadic);
  entermonad("NOT", Notmonadic);
  entermonad("BOOLEAN", booleanmonadic);
  entermonad("RANDOM", Randommonadic);
}

void both(const char *kinds, std::int32_t tag, Fill *fill) {
  dyads(kinds, tag, fill);
  monads(kinds, tag, fill);
}

const bool entered = [] {
  both("/integers, reals", tags::REAL, inturns<tags::INTEGER, tags::REAL>);
  both("/integers, reals by chance", tags::REAL, bychance<tags::INTEGER, tags::REAL>);
  dyads("/integers, reals on both sides", tags::REAL, bychance<tags::INTEGER, tags::REAL>,
        bychance<tags::INTEGER, tags::REAL>);
  both("/complex, reals", tags::COMPLEX, inturns<tags::COMPLEX, tags::REAL>);
  both("/complex, reals by chance", tags::COMPLEX, bychance<tags::COMPLEX, tags::REAL>);
  both("/quaternions, integers", tags::QUATERNION, inturns<tags::QUATERNION, tags::INTEGER>);
  both("/quaternions, reals by chance", tags::QUATERNION, bychance<tags::QUATERNION, tags::REAL>);
  return true;
}();

}  // namespace
