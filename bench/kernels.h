// What the benchmarks of the element loops share: operands, and an instruction's loop in turns with a hand-written one
// over the same records, on thread time. `ratio` is what counts, nanoseconds are for an element, `goal` is what the
// ratio may be. Each pair is first compared record by record.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string>

#include "arithmetic/cores.h"
#include "arithmetic/monadic.h"
#include "arithmetic/numberloops.h"
#include "arithmetic/pairs.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"
#include "spaces/work.h"

using namespace morvik;

namespace kernels {

constexpr std::int64_t SMALL = 1000, MIDDLE = 100000, LARGE = 10000000;
// How much longer than the loop by hand: for arithmetic, comparison, logic and rounding; for what the library computes;
// for products of quaternions and octonions; for mixed kinds beside a single one.
constexpr double PLAIN = 1.15, LIBRARY = 1.1, PRODUCT = 1.25, MIXED = 2.5;

constexpr double NANOSECONDS = 1e9;
constexpr std::int64_t TIMED = 200000;  // elements that are timed together at least
constexpr int ROUNDS = 5;               // in each turn the best of so many counts
constexpr double TURN = 0.01;           // seconds after which a turn ends sooner

inline double threadtime() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / NANOSECONDS;
}

// ---- Operands: parts from 0.5 to 1 and integers from 1 to 20, but for what a row asks for.

// Fills a record that holds zeros and its tag, from 64 random bits.
using Fill = void(Element &e, std::uint64_t bits);

inline double drawpart(std::uint64_t &bits) {
  bits = bits * 6364136223846793005 + 1442695040888963407;
  return 0.5 + static_cast<double>(bits >> 12) * 0x1p-53;
}
inline void ordinary(Element &e, std::uint64_t bits) {
  const auto next = [&] { return drawpart(bits); };
  e.form = e.tag >= tags::COMPLEX ? forms::CARTESIAN : e.tag >= tags::INTEGER ? forms::NUMBER : 0;
  switch (e.tag) {
    case tags::ASCII:
      e.ascii = static_cast<std::uint8_t>('a' + bits % 20);
      break;
    case tags::UNICODE:
      e.unicode = static_cast<std::uint16_t>(1000 + bits % 20);
      break;
    case tags::INTEGER:
      e.integer = static_cast<std::int64_t>(1 + bits % 20);
      break;
    case tags::REAL:
      e.real = next();
      break;
    case tags::COMPLEX:
      e.complex = {next(), next()};
      break;
    case tags::QUATERNION:
      setquaternion(e, {{next(), next(), next(), next()}});
      break;
    default:
      e.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
      for (double &x : e.octonion->part) x = next();
  }
}

class Records {
 public:
  Records(std::int32_t kind, std::size_t count, int set, Fill *filler)
      : tag(kind),
        seed(set),
        size(count),
        fill(filler),
        block(newelements(count + MIXED_NUMBERS * static_cast<std::size_t>(set))),
        data(block + MIXED_NUMBERS * static_cast<std::size_t>(set)) {
    std::uint64_t bits = static_cast<std::uint64_t>(set);
    for (std::size_t i = 0; i < count; ++i) {
      drawpart(bits);
      Element &e = data[i] = {};
      e.tag = tag;
      fill(e, bits >> 20);
    }
  }
  ~Records() {
    dereferencedataelems(data, size);
    freeblock(block);
  }
  Records(const Records &) = delete;
  Records &operator=(const Records &) = delete;

  bool is(std::int32_t kind, std::size_t count, int set, Fill *filler) const {
    return tag == kind && size == count && seed == set && fill == filler;
  }
  Element *get() { return data; }
  // The same values, to the last bit?
  bool equals(const Records &other) const {
    for (std::size_t i = 0; i < size; ++i) {
      const Element &a = data[i], &b = other.data[i];
      if (std::memcmp(&a, &b, offsetof(Element, name)) != 0) return false;
      if (a.tag == tags::OCTONION && std::memcmp(a.octonion, b.octonion, sizeof(Octonion)) != 0) return false;
      if (a.tag == tags::QUATERNION && std::memcmp(&a.name, &b.name, sizeof(Quaternion)) != 0) return false;
      if (a.tag == tags::COMPLEX && std::memcmp(&a.complex, &b.complex, sizeof(Complex)) != 0) return false;
      if (a.tag < tags::COMPLEX && a.integer != b.integer) return false;
    }
    return true;
  }

 private:
  // Each set begins elsewhere in its block: places whose addresses end alike hinder each other.
  static constexpr std::size_t MIXED_NUMBERS = 1000;
  std::int32_t tag;
  int seed;
  std::size_t size;
  Fill *fill;
  Element *block, *data;
};

// The places of a duel. Results that own no block go into what results left, which nobody looks at.
enum Place { FIRST, SECOND, MINE, THEIRS, OTHER };

// Records that stay for the next benchmark, which mostly wants the same.
inline Records &records(Place place, std::int32_t tag, std::size_t count, int seed, Fill *fill = ordinary) {
  static std::unique_ptr<Records> kept[OTHER + 1][3];
  const std::size_t size = count < MIDDLE ? 0 : count < LARGE / 10 ? 1 : 2;
  std::unique_ptr<Records> &found = kept[place][size];
  if (!found || !found->is(tag, count, seed, fill)) {
    found.reset();
    found = std::make_unique<Records>(tag, count, seed, fill);
  }
  return *found;
}

// ---- A duel.

// The least time of one call.
template <class Work>
void best(double &least, std::int64_t calls, Work &&work, int rounds = ROUNDS) {
  const double begun = threadtime();
  double start = begun;
  for (int round = 0; round < rounds && start - begun < TURN; ++round) {
    for (std::int64_t call = 0; call < calls; ++call) work();
    const double end = threadtime();
    least = std::min(least, (end - start) / static_cast<double>(calls));
    start = end;
  }
}

// The two in turns, until both have shown their best. They change places after each turn: the pages of one place may be
// faster than those of the other.
template <class System, class Hand>
void duel(benchmark::State &state, double goal, Records &mine, Records &theirs, System &&worked, Hand &&workedbyhand) {
  double systemtime = std::numeric_limits<double>::infinity(), handtime = systemtime;
  Records *one = &mine, *other = &theirs;
  const auto system = [&] { worked(*one); };
  const auto byhand = [&] { workedbyhand(*other); };
  best(systemtime, 1, system, 1);
  best(handtime, 1, byhand, 1);
  if (!mine.equals(theirs)) state.SkipWithError("different results");
  const std::int64_t calls = std::max<std::int64_t>(1, TIMED / state.range(0));
  for (auto _ : state) {
    best(systemtime, calls, system);
    best(handtime, calls, byhand);
    std::swap(one, other);
  }
  const double each = NANOSECONDS / static_cast<double>(state.range(0));
  state.counters["ns"] = systemtime * each;
  state.counters["byhand_ns"] = handtime * each;
  state.counters["ratio"] = systemtime / handtime;
  state.counters["goal"] = goal;
}

// ---- A row of the table: an instruction over operands of some kinds.

using Byhand = void(Element *result, const Element *left, const Element *right, std::size_t count);

struct Row {
  std::string name;
  double goal;
  const Dyadic *dyadic;  // one of the two
  const Monadic *monadic;
  std::int32_t left, right, result;
  Byhand *byhand;
  std::size_t leftstep = 1, rightstep = 1;  // 0 for a lone operand
  bool over = false;                        // the left operand?
  Fill *fill = ordinary, *rightfill = ordinary;
};

inline Tally startduel(std::uint64_t &draws) {
  Tally tally;
  tally.state = &draws;
  draws = 1;
  return tally;
}

// Each side writes records of its own.
inline void measure(benchmark::State &state, const Row &row) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::int32_t result = row.result == tags::OCTONION ? row.result : tags::REAL;
  Records &left = records(FIRST, row.left, row.leftstep == 0 ? 1 : count, 1, row.fill);
  Records &right = records(SECOND, row.right, row.rightstep == 0 ? 1 : count, 2, row.rightfill);
  Records &mine = row.over ? records(MINE, row.left, count, 1) : records(MINE, result, count, 3);
  Records &theirs = row.over ? records(THEIRS, row.left, count, 1) : records(THEIRS, result, count, 3);
  // The octonions of results are there, as over an operand.
  const bool fresh = !row.over && result != tags::OCTONION;
  const auto system = [&](Records &to) {
    Run run{row.over ? to.get() : left.get(), right.get(), to.get(), row.leftstep, row.rightstep, 1, count, fresh};
    std::uint64_t draws;
    Tally tally = startduel(draws);
    const std::int32_t message = row.dyadic ? work(*row.dyadic, run, tally) : work(*row.monadic, run, tally);
    if (message != 0) state.SkipWithError("a failure");
  };
  const auto byhand = [&](Records &to) { row.byhand(to.get(), row.over ? to.get() : left.get(), right.get(), count); };
  duel(state, row.goal, mine, theirs, system, byhand);
}

// So many turns that the whole table takes minutes.
constexpr std::int64_t TURNS = 8, LARGETURNS = 2;

inline void enter(const Row &row, std::int64_t largest = LARGE) {
  const auto measured = [row](benchmark::State &state) { measure(state, row); };
  for (const std::int64_t count : {SMALL, MIDDLE, largest})
    benchmark::RegisterBenchmark(row.name.c_str(), measured)
        ->Arg(count)
        ->Iterations(count < largest ? TURNS : LARGETURNS)
        ->Unit(benchmark::kMillisecond);
}

}  // namespace kernels
