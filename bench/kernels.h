// What the benchmarks of the element loops share: operands, and an instruction's loop in turns with a hand-written one
// over the same records, on thread time. `ratio` is what counts, nanoseconds are for an element. Each pair is first
// compared record by record. The hand-written loops do what the instruction must do and nothing else: they trust every
// tag.
#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "arithmetic/cores.h"
#include "arithmetic/monadic.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"

namespace kernels {

constexpr std::int64_t SMALL = 1000, MIDDLE = 100000, LARGE = 10000000;
constexpr double NANOSECONDS = 1e9;
constexpr int ROUNDS = 5;               // in each turn the best of so many counts
constexpr std::int64_t TIMED = 200000;  // elements that are timed together at least

inline double threadtime() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / NANOSECONDS;
}

using Byhand = void(Element *result, const Element *left, const Element *right, std::size_t count);

inline void head(Element &e, std::int32_t tag, std::uint16_t form, std::uint16_t marks) {
  e.tag = tag;
  e.form = form;
  e.attributes = marks;
}
inline void looklike(Element &e, std::int32_t tag, const Element &other) {
  head(e, tag, other.form, other.attributes & 0x3fff);
}

// ---- Operands: products keep their size, as numbers have the modulus 1 where `unit` is set.

class Records {
 public:
  Records(std::int32_t tag, std::size_t count, std::uint64_t seed, bool unit = true)
      : size(count), data(newelements(count)) {
    std::mt19937_64 random(seed);
    std::uniform_real_distribution<double> spread(0.5, 1);
    for (std::size_t i = 0; i < count; ++i) {
      Element &e = data[i] = {};
      e.tag = tag;
      e.form = tag == tags::INTEGER ? forms::NUMBER : forms::CARTESIAN;
      double part[8];
      double squares = 0;
      for (double &x : part) x = spread(random);
      const int parts = tag == tags::OCTONION ? 8 : tag == tags::QUATERNION ? 4 : tag == tags::COMPLEX ? 2 : 1;
      for (int k = 0; k < parts; ++k) squares += part[k] * part[k];
      if (unit)
        for (double &x : part) x /= std::sqrt(squares);
      switch (tag) {
        case tags::INTEGER:
          e.integer = static_cast<std::int64_t>(random() % 1000);
          break;
        case tags::REAL:
          e.real = part[0];
          break;
        case tags::COMPLEX:
          e.complex = {part[0], part[1]};
          break;
        case tags::QUATERNION:
          setquaternion(e, {{part[0], part[1], part[2], part[3]}});
          break;
        default:
          e.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
          std::copy_n(part, 8, e.octonion->part);
      }
    }
  }
  ~Records() {
    dereferencedataelems(data, size);
    freeblock(data);
  }
  Records(const Records &) = delete;
  Records &operator=(const Records &) = delete;

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
  std::size_t size;
  Element *data;
};

// The least time of one call.
template <class Work>
void best(double &least, std::int64_t calls, Work &&work) {
  for (int round = 0; round < ROUNDS; ++round) {
    const double start = threadtime();
    for (std::int64_t call = 0; call < calls; ++call) work();
    least = std::min(least, (threadtime() - start) / static_cast<double>(calls));
  }
}

// The two in turns, until both have shown their best.
template <class System, class Hand>
void duel(benchmark::State &state, const Records &mine, const Records &theirs, System &&system, Hand &&byhand) {
  system();
  byhand();
  if (!mine.equals(theirs)) state.SkipWithError("different results");
  const std::int64_t calls = std::max<std::int64_t>(1, TIMED / state.range(0));
  double systemtime = std::numeric_limits<double>::infinity(), handtime = systemtime;
  for (auto _ : state) {
    best(systemtime, calls, system);
    best(handtime, calls, byhand);
  }
  if (!mine.equals(theirs)) state.SkipWithError("different results");
  const double each = NANOSECONDS / static_cast<double>(state.range(0));
  state.counters["ns"] = systemtime * each;
  state.counters["byhand_ns"] = handtime * each;
  state.counters["ratio"] = systemtime / handtime;
}

// Each side writes over its own left operand.
inline void kernel(benchmark::State &state, std::uint16_t instruction, std::int32_t tag, Byhand *plain, bool scalar) {
  const Dyadic &cores = *dyadiccores(instruction);
  const auto count = static_cast<std::size_t>(state.range(0));
  Records mine(tag, count, 1), theirs(tag, count, 1), right(tag, scalar ? 1 : count, 2);
  const auto system = [&] {
    Run run{mine.get(), right.get(), mine.get(), 1, scalar ? std::size_t{0} : 1, 1, count, false};
    Tally tally;
    if (work(cores, run, tally) != 0) state.SkipWithError("a failure");
  };
  duel(state, mine, theirs, system, [&] { plain(theirs.get(), theirs.get(), right.get(), count); });
}

// Each side writes new records, of whatever kind; none of them owns a block.
inline void freshkernel(benchmark::State &state, std::uint16_t instruction, std::int32_t lefttag, std::int32_t righttag,
                        Byhand *plain) {
  const Dyadic &cores = *dyadiccores(instruction);
  const auto count = static_cast<std::size_t>(state.range(0));
  Records left(lefttag, count, 1, false), right(righttag, count, 2, false), mine(tags::REAL, count, 3),
      theirs(tags::REAL, count, 3);
  const auto system = [&] {
    Run run{left.get(), right.get(), mine.get(), 1, 1, 1, count, true};
    Tally tally;
    if (work(cores, run, tally) != 0) state.SkipWithError("a failure");
  };
  duel(state, mine, theirs, system, [&] { plain(theirs.get(), left.get(), right.get(), count); });
}
inline void monadickernel(benchmark::State &state, const Monadic &cores, std::int32_t tag, Byhand *plain) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Records operand(tag, count, 1, false), mine(tags::REAL, count, 3), theirs(tags::REAL, count, 3);
  const auto system = [&] {
    Run run{operand.get(), nullptr, mine.get(), 1, 0, 1, count, true};
    Tally tally;
    if (work(cores, run, tally) != 0) state.SkipWithError("a failure");
  };
  duel(state, mine, theirs, system, [&] { plain(theirs.get(), operand.get(), nullptr, count); });
}

}  // namespace kernels
