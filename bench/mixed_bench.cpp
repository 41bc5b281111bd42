// What a space of mixed kinds costs beside a uniform one: both are worked by the system, so that the ratio is its own
// to itself. The kinds change at every element, or by chance, which no processor can foresee.
#include "monadics.h"

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

// An integer or a real by chance.
void bychance(Element &e, std::uint64_t bits) {
  e.tag = bits % 2 == 0 ? tags::INTEGER : tags::REAL;
  ordinary(e, bits / 2);
}

// The system over its mixed operand, in turns with itself over one that is not.
void measuremixed(benchmark::State &state, const Row &row) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Records &mixed = records(FIRST, row.left, count, 1, row.fill), &uniform = records(THEIRS, row.left, count, 1);
  Records &right = records(SECOND, row.right, count, 2), &result = records(MINE, tags::REAL, count, 3);
  const auto worked = [&](Records &left) {
    Run run{left.get(), right.get(), result.get(), 1, row.rightstep, 1, count, true};
    Tally tally;
    const std::int32_t message = row.dyadic ? work(*row.dyadic, run, tally) : work(*row.monadic, run, tally);
    if (message != 0) state.SkipWithError("a failure");
  };
  duel(
      state, MIXED, result, result, [&] { worked(mixed); }, [&] { worked(uniform); });
}

void entermixed(const char *name, const char *kinds, const Dyadic *dyadic, const Monadic *monadic, std::int32_t tag,
                Fill *fill) {
  Row row{};
  row.dyadic = dyadic;
  row.monadic = monadic;
  row.left = row.right = tag;
  row.rightstep = dyadic ? 1 : 0;
  row.fill = fill;
  for (const std::int64_t count : {SMALL, MIDDLE, LARGE})
    benchmark::RegisterBenchmark((std::string(name) + kinds).c_str(),
                                 [row](benchmark::State &state) { measuremixed(state, row); })
        ->Arg(count)
        ->Iterations(count < LARGE ? TURNS : LARGETURNS)
        ->Unit(benchmark::kMillisecond);
}
#define MIXEDDYADS(kinds, tag, fill)                                                        \
  entermixed("ADD", kinds, dyadiccores(instructions::ADD), nullptr, tag, fill);             \
  entermixed("MULTIPLY", kinds, dyadiccores(instructions::MULTIPLY), nullptr, tag, fill);   \
  entermixed("DIVIDE", kinds, dyadiccores(instructions::DIVIDE), nullptr, tag, fill);       \
  entermixed("MINIMUM", kinds, dyadiccores(instructions::MINIMUM), nullptr, tag, fill);     \
  entermixed("LESS", kinds, dyadiccores(instructions::LESS), nullptr, tag, fill);           \
  entermixed("IDENTICAL", kinds, dyadiccores(instructions::IDENTICAL), nullptr, tag, fill); \
  entermixed("AND", kinds, dyadiccores(instructions::AND), nullptr, tag, fill)
#define MIXEDMONAD(name, f, kinds, tag, fill) entermixed(name, kinds, nullptr, &f##monadic, tag, fill)
#define MIXEDMONADS(kinds, tag, fill)                       \
  MIXEDMONAD("NEGATIVE", negative, kinds, tag, fill);       \
  MIXEDMONAD("MAGNITUDE", magnitude, kinds, tag, fill);     \
  MIXEDMONAD("FLOOR", flooring, kinds, tag, fill);          \
  MIXEDMONAD("EXPONENTIAL", exponential, kinds, tag, fill); \
  MIXEDMONAD("NOT", Not, kinds, tag, fill)

const bool entered = [] {
  constexpr auto wholes = inturns<tags::INTEGER, tags::REAL>;
  constexpr auto complexes = inturns<tags::COMPLEX, tags::REAL>;
  constexpr auto quaternions = inturns<tags::QUATERNION, tags::INTEGER>;
  MIXEDDYADS("/integers, reals", tags::REAL, wholes);
  MIXEDMONADS("/integers, reals", tags::REAL, wholes);
  MIXEDDYADS("/integers, reals by chance", tags::REAL, bychance);
  MIXEDMONADS("/integers, reals by chance", tags::REAL, bychance);
  MIXEDDYADS("/complex, reals", tags::COMPLEX, complexes);
  MIXEDMONADS("/complex, reals", tags::COMPLEX, complexes);
  MIXEDDYADS("/quaternions, integers", tags::QUATERNION, quaternions);
  MIXEDMONADS("/quaternions, integers", tags::QUATERNION, quaternions);
  return true;
}();

}  // namespace
