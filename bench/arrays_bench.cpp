// The array instructions beside plain loops over the same records, run in turns on thread time: `ratio` is what counts,
// nanoseconds are for an element. Each pair is first compared record by record. Operands that others hold too are
// copied by both sides; those that nobody else holds are worked in place by both. What takes no time by element has no
// loop beside it.
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "coprocessor/coprocessor.h"
#include "operators/catenate.h"
#include "operators/compress.h"
#include "operators/enlist.h"
#include "operators/interval.h"
#include "operators/match.h"
#include "operators/ravel.h"
#include "operators/reduce.h"
#include "operators/reshape.h"
#include "operators/reverse.h"
#include "operators/transpose.h"
#include "spaces/copies.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "spaces/sysvars.h"

using namespace morvik;

namespace {

constexpr std::int64_t SMALL = 1000, MIDDLE = 100000, LARGE = 10000000;
constexpr double NANOSECONDS = 1e9;
constexpr std::size_t AT_ONCE = 32768;  // elements that are timed together at least
constexpr int ROUNDS = 5;               // in each turn the best of so many counts

double threadtime() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / NANOSECONDS;
}

// ---- Operands.

using Kind = void(Element &e, std::uint64_t drawn);
void whole(Element &e, std::uint64_t drawn) {
  e.tag = tags::INTEGER;
  e.form = forms::NUMBER;
  e.integer = static_cast<std::int64_t>(drawn % 1000);
}
void fraction(Element &e, std::uint64_t drawn) {
  e.tag = tags::REAL;
  e.form = forms::COMPUTED;
  e.real = static_cast<double>(drawn % 1000) / 8;
}
void flag(Element &e, std::uint64_t drawn) {
  whole(e, drawn % 2);
}
void yes(Element &e, std::uint64_t) {
  whole(e, 1);
}

Point space(std::size_t count, Kind *kind, std::uint64_t seed, std::size_t row = 0) {
  std::mt19937_64 random(seed);
  Point p{};
  p.rank = row > 0 ? 2 : 1;
  p.depth = 1;
  p.elements = static_cast<std::uint32_t>(count);
  p.shape_pointer = newshape(static_cast<std::int64_t>(row > 0 ? row : count));
  if (row > 0) {
    p.shape_pointer = Reallocate(p.shape_pointer, 2);
    p.shape_pointer[1] = p.shape_pointer[0];
    p.shape_pointer[1].integer = static_cast<std::int64_t>(count / row);
  }
  p.data_pointer = newelements(count);
  for (std::size_t i = 0; i < count; ++i) kind(p.data_pointer[i] = {}, random());
  p.type = (row > 0 ? ISARRAY : ISVECTOR) | kindbit(p.data_pointer->tag);
  return p;
}

// Vectors of ten, enclosed.
Point nested(std::size_t count) {
  const std::size_t members = count / 10;
  Point p = space(members, whole, 1);
  for (std::size_t i = 0; i < members; ++i) {
    Element &e = p.data_pointer[i] = {};
    e.tag = tags::SUBARRAY;
    e.subarray = newpoint();
    *e.subarray = space(10, fraction, i);
  }
  p.type = ISVECTOR | STRUCTURED | ISSTRUCTURE;
  p.depth = 2;
  return p;
}

// ---- The benchmarks.

struct Operands {
  Point point[2];
  int count;
  bool redrawn =
      false;  // the first one's flags are drawn anew for each turn, so that no branch on them can be foreseen
};

void redraw(const Point &flags) {
  static std::mt19937_64 random(1);
  for (std::uint32_t i = 0; i < flags.elements; ++i) flag(flags.data_pointer[i], random());
}

// An instruction on operands in place; the result is in the first one's place, and the second is gone.
using System = void(Point *operands);
// The same by hand on the records: the result in a block of its own, or in that of the first operand.
using Hand = Element *(const Operands &operands);

Operands held(const Operands &pristine, bool shared) {
  Operands o = pristine;
  for (int i = 0; i < o.count; ++i) {
    referencepoint(&o.point[i]);
    if (!shared) makeprivate(o.point[i]);
  }
  return o;
}
void giveup(Operands &o) {
  for (int i = 0; i < o.count; ++i) dereferencepoint(&o.point[i]);
}

bool equal(const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (a[i].tag != b[i].tag || a[i].form != b[i].form || a[i].integer != b[i].integer) return false;
  return true;
}

struct Turn {
  const std::vector<Operands> &pristine;  // others for each repetition, so that nothing is learnt from one for the next
  bool shared;
  std::size_t repetitions;
  System *system;
  Hand *hand;

  double systemtime() const {
    std::vector<Operands> turn = operands();
    const double start = threadtime();
    for (Operands &o : turn) system(o.point);
    const double taken = threadtime() - start;
    for (Operands &o : turn) {
      o.count = 1;
      giveup(o);
    }
    return taken;
  }
  double handtime() const {
    std::vector<Operands> turn = operands();
    std::vector<Element *> made(repetitions);
    const double start = threadtime();
    for (std::size_t i = 0; i < repetitions; ++i) {
      made[i] = hand(turn[i]);
      if (made[i] == turn[i].point[0].data_pointer) turn[i].point[0].data_pointer = nullptr;
      giveup(turn[i]);
    }
    const double taken = threadtime() - start;
    for (Element *result : made) freeblock(result);
    return taken;
  }
  std::vector<Operands> operands() const {
    std::vector<Operands> turn(repetitions);
    for (std::size_t i = 0; i < repetitions; ++i) {
      const Operands &o = pristine[i % pristine.size()];
      if (o.redrawn) redraw(o.point[0]);
      turn[i] = held(o, shared);
    }
    return turn;
  }
};

bool agree(const Turn &t) {
  Operands mine = held(t.pristine[0], t.shared), theirs = held(t.pristine[0], t.shared);
  t.system(mine.point);
  Element *made = t.hand(theirs);
  const bool same = equal(mine.point[0].data_pointer, made, mine.point[0].elements);
  if (made != theirs.point[0].data_pointer) freeblock(made);
  mine.count = 1;
  giveup(mine);
  giveup(theirs);
  return same;
}

void compare(benchmark::State &state, Operands (*make)(std::size_t count, std::uint64_t seed), bool shared,
             System *system, Hand *hand) {
  const auto count = static_cast<std::size_t>(state.range(0));
  const std::size_t repetitions = std::max<std::size_t>(1, AT_ONCE / count);
  std::vector<Operands> pristine;
  for (std::size_t seed = 0; seed < repetitions; ++seed) pristine.push_back(make(count, 2 * seed));
  const Turn turn{pristine, shared, repetitions, system, hand};
  if (!agree(turn)) state.SkipWithError("different results");
  double systemtime = std::numeric_limits<double>::infinity(), handtime = systemtime;
  for (auto _ : state)
    for (int round = 0; round < (count < LARGE ? ROUNDS : 2); ++round) {
      systemtime = std::min(systemtime, turn.systemtime());
      handtime = std::min(handtime, turn.handtime());
    }
  for (Operands &o : pristine) giveup(o);
  const double each = NANOSECONDS / static_cast<double>(count * repetitions);
  state.counters["ns"] = systemtime * each;
  state.counters["byhand_ns"] = handtime * each;
  state.counters["ratio"] = systemtime / handtime;
}

Point context[16];
void readcontext() {
  if (context[IO_SLOT].data_pointer) return;
  makeinteger(context[IO_SLOT], 1);
  makereal(context[CT_SLOT], 1e-15, forms::NUMBER);
}

std::size_t countplaces(const Operands &o) {
  return o.point[0].elements;
}

#define ARRAYS(name, operands, shared, system, ...)                                                                 \
  void name(benchmark::State &state) {                                                                              \
    readcontext();                                                                                                  \
    compare(                                                                                                        \
        state, [](std::size_t count, [[maybe_unused]] std::uint64_t seed) -> Operands { return operands; }, shared, \
        [](Point * p) system, [](const Operands &o) -> Element *__VA_ARGS__);                                       \
  }                                                                                                                 \
  BENCHMARK(name)->Arg(SMALL)->Arg(MIDDLE)->Arg(LARGE)->Unit(benchmark::kMillisecond)

// ---- Making.

Element *integersbyhand(std::size_t count) {
  Element *made = newelements(count);
  for (std::size_t i = 0; i < count; ++i) {
    made[i] = {};
    made[i].tag = tags::INTEGER;
    made[i].form = forms::NUMBER;
    made[i].integer = static_cast<std::int64_t>(i) + 1;
  }
  return made;
}
Element *realsbyhand(std::size_t count) {
  Element *made = newelements(count);
  for (std::size_t i = 0; i < count; ++i) {
    made[i] = {};
    made[i].tag = tags::REAL;
    made[i].form = forms::COMPUTED;
    made[i].real = 0.5 + static_cast<double>(i);
  }
  return made;
}

Operands counted(std::size_t count) {
  Operands o{{}, 1};
  makeinteger(o.point[0], static_cast<std::int64_t>(count));
  return o;
}
Operands ends(std::size_t count) {
  Operands o{{space(2, fraction, 1)}, 1};
  o.point[0].data_pointer[0].real = 0.5;
  o.point[0].data_pointer[1].real = static_cast<double>(count) - 0.5;
  return o;
}

void makeinterval(Point *p) {
  Point *top = p;
  interval(&top, nullptr, context);
}
ARRAYS(
    interval_integers, counted(count), true, { makeinterval(p); },
    { return integersbyhand(static_cast<std::size_t>(o.point[0].data_pointer->integer)); });
ARRAYS(
    interval_reals, ends(count), true, { makeinterval(p); },
    { return realsbyhand(static_cast<std::size_t>(o.point[0].data_pointer[1].real + 0.5)); });

Operands reshaped(std::size_t from, std::size_t to) {
  Operands o{{space(from, whole, 1), {}}, 2};
  makeinteger(o.point[1], static_cast<std::int64_t>(to));
  return o;
}
ARRAYS(
    reshape_longer, reshaped(count / 3, count), true, { reshape(p, p + 1, nullptr); },
    {
      const auto to = static_cast<std::size_t>(o.point[1].data_pointer->integer), from = countplaces(o);
      Element *made = newelements(to);
      for (std::size_t i = 0, k = 0; i < to; ++i, k = k + 1 < from ? k + 1 : 0) made[i] = o.point[0].data_pointer[k];
      return made;
    });
ARRAYS(
    reshape_shorter, reshaped(2 * count, count), true, { reshape(p, p + 1, nullptr); },
    {
      const auto to = static_cast<std::size_t>(o.point[1].data_pointer->integer);
      Element *made = newelements(to);
      for (std::size_t i = 0; i < to; ++i) made[i] = o.point[0].data_pointer[i];
      return made;
    });

// ---- Turning.

Element *reversedbyhand(const Operands &o) {
  const std::size_t count = countplaces(o);
  Element *made = newelements(count);
  for (std::size_t i = 0; i < count; ++i) made[i] = o.point[0].data_pointer[count - 1 - i];
  return made;
}
ARRAYS(
    reverse_shared, (Operands{{space(count, whole, seed)}, 1}), true, { reverse(*p); }, { return reversedbyhand(o); });
ARRAYS(
    reverse_in_place, (Operands{{space(count, whole, seed)}, 1}), false, { reverse(*p); },
    {
      for (std::size_t i = 0, k = countplaces(o) - 1; i < k; ++i, --k)
        std::swap(o.point[0].data_pointer[i], o.point[0].data_pointer[k]);
      return o.point[0].data_pointer;
    });

std::size_t rowof(std::size_t count) {
  return count == SMALL ? 25 : count == MIDDLE ? 250 : 2500;
}
ARRAYS(
    transpose_matrix, (Operands{{space(count, whole, seed, rowof(count))}, 1}), true, { transpose(*p); },
    {
      const auto row = static_cast<std::size_t>(o.point[0].shape_pointer[0].integer), rows = countplaces(o) / row;
      Element *made = newelements(countplaces(o)), *to = made;
      for (std::size_t i = 0; i < row; ++i)
        for (std::size_t k = 0; k < rows; ++k) *to++ = o.point[0].data_pointer[k * row + i];
      return made;
    });

// ---- Joining and choosing.

Element *joinedbyhand(const Operands &o) {
  const std::size_t left = countplaces(o), right = o.point[1].elements;
  Element *made = newelements(left + right);
  for (std::size_t i = 0; i < left; ++i) made[i] = o.point[0].data_pointer[i];
  for (std::size_t i = 0; i < right; ++i) made[left + i] = o.point[1].data_pointer[i];
  return made;
}
Operands halves(std::size_t count, std::uint64_t seed) {
  return {{space(count / 2, whole, seed), space(count / 2, whole, seed + 1)}, 2, false};
}
ARRAYS(
    catenate_shared, halves(count, seed), true, { catenate(p[0], p[1]); }, { return joinedbyhand(o); });
ARRAYS(
    catenate_in_place, halves(count, seed), false, { catenate(p[0], p[1]); }, { return joinedbyhand(o); });

Operands chosen(std::size_t count, std::uint64_t seed) {
  return {{space(count, flag, seed), space(count, whole, seed + 1)}, 2, true};
}
// As much memory as can be needed is taken, and cut in the end.
Element *chosenbyhand(const Operands &o) {
  const std::size_t count = countplaces(o);
  Element *made = newelements(count), *to = made;
  for (std::size_t i = 0; i < count; ++i)
    if (o.point[0].data_pointer[i].integer > 0) *to++ = o.point[1].data_pointer[i];
  return Reallocate(made, static_cast<std::size_t>(to - made));
}
ARRAYS(
    compress_shared, chosen(count, seed), true, { compress(p[0], p[1]); }, { return chosenbyhand(o); });
// Flags that branch prediction learns, which spares the plain loop its mispredictions.
Operands foreseen(std::size_t count, std::uint64_t seed) {
  Operands o = chosen(count, seed);
  o.redrawn = false;
  return o;
}
ARRAYS(
    compress_foreseen, foreseen(count, seed), true, { compress(p[0], p[1]); }, { return chosenbyhand(o); });
ARRAYS(
    compress_in_place, chosen(count, seed), false, { compress(p[0], p[1]); }, { return chosenbyhand(o); });

ARRAYS(
    enlist_tens, (Operands{{nested(count)}, 1}), true, { enlist(*p); },
    {
      const std::size_t members = countplaces(o);
      std::size_t leaves = 0;
      for (std::size_t i = 0; i < members; ++i) leaves += o.point[0].data_pointer[i].subarray->elements;
      Element *made = newelements(leaves), *to = made;
      for (std::size_t i = 0; i < members; ++i) {
        const Point &member = *o.point[0].data_pointer[i].subarray;
        for (std::uint32_t k = 0; k < member.elements; ++k) *to++ = member.data_pointer[k];
      }
      return made;
    });

// ---- Folding.

void fold(Point *p, std::uint16_t modifier) {
  Point instruction{};
  instruction.modifier = modifier;
  Point *top = p;
  reduce(&top, &instruction, context);
}
Element *answer(double value) {
  Element *made = newelement(tags::REAL, forms::COMPUTED);
  made->real = value;
  return made;
}
Element *answer(std::int64_t value, std::uint16_t form) {
  Element *made = newelement(tags::INTEGER, form);
  made->integer = value;
  return made;
}

ARRAYS(
    sum_reals, (Operands{{space(count, fraction, seed)}, 1}), true, { fold(p, instructions::ADD); },
    {
      double sum = 0;
      for (std::size_t i = 0; i < countplaces(o); ++i) sum += o.point[0].data_pointer[i].real;
      return answer(sum);
    });
// The rule of each step: made in doubles, and an integer as long as it is one.
ARRAYS(
    sum_integers, (Operands{{space(count, whole, seed)}, 1}), true, { fold(p, instructions::ADD); },
    {
      double sum = 0;
      for (std::size_t i = 0; i < countplaces(o); ++i) {
        sum += static_cast<double>(o.point[0].data_pointer[i].integer);
        if (std::fabs(sum) > 0x1p63) break;
      }
      return answer(static_cast<std::int64_t>(sum), forms::NUMBER);
    });
ARRAYS(
    largest_reals, (Operands{{space(count, fraction, seed)}, 1}), true, { fold(p, instructions::MAXIMUM); },
    {
      double largest = o.point[0].data_pointer->real;
      for (std::size_t i = 1; i < countplaces(o); ++i) {
        const double x = o.point[0].data_pointer[i].real;
        largest = x > largest || x != x ? x : largest;
      }
      return answer(largest);
    });
ARRAYS(
    largest_integers, (Operands{{space(count, whole, seed)}, 1}), true, { fold(p, instructions::MAXIMUM); },
    {
      std::int64_t largest = o.point[0].data_pointer->integer;
      for (std::size_t i = 1; i < countplaces(o); ++i) largest = std::max(largest, o.point[0].data_pointer[i].integer);
      return answer(largest, forms::NUMBER);
    });
ARRAYS(
    all_integers, (Operands{{space(count, yes, seed)}, 1}), true, { fold(p, instructions::AND); },
    {
      bool all = true;
      for (std::size_t i = 0; i < countplaces(o); ++i) all = all && o.point[0].data_pointer[i].integer > 0;
      return answer(all ? 1 : 0, forms::BOOLEAN);
    });

// ---- Comparing.

// The score of two rows of reals in place of the left one.
void score(Point *p) {
  const Similarity s = match(p[0], p[1]);
  dereferencepoint(p);
  dereferencepoint(p + 1);
  makeinteger(*p, static_cast<std::int64_t>(s.score));
}
Operands alike(std::size_t count, std::uint64_t seed) {
  return {{space(count, fraction, seed), space(count, fraction, seed)}, 2, false};
}
ARRAYS(
    match_reals, alike(count, seed), true, { score(p); },
    {
      std::int64_t same = 0;
      for (std::size_t i = 0; i < countplaces(o); ++i) {
        const Element &a = o.point[0].data_pointer[i], &b = o.point[1].data_pointer[i];
        if (a.tag != b.tag) continue;
        const bool both = std::isnan(a.real) && std::isnan(b.real);
        same += a.real == b.real || both ? 2 : 1;
      }
      return answer(same, forms::NUMBER);
    });

// ---- What takes no time by element: nanoseconds of the whole.

void constanttime(benchmark::State &state, System *system, Operands (*operands)(std::size_t)) {
  std::vector<Operands> pristine = {operands(static_cast<std::size_t>(state.range(0)))};
  double least = std::numeric_limits<double>::infinity();
  for (auto _ : state) least = std::min(least, Turn{pristine, true, 1000, system, nullptr}.systemtime());
  giveup(pristine[0]);
  state.counters["ns"] = least * NANOSECONDS / 1000;
}
#define CONSTANT(name, system, operands)                 \
  void name(benchmark::State &state) {                   \
    constanttime(state, [](Point * p) system, operands); \
  }                                                      \
  BENCHMARK(name)->Arg(SMALL)->Arg(MIDDLE)->Arg(LARGE)
Operands matrix(std::size_t count) {
  return {{space(count, whole, 1, rowof(count))}, 1};
}
Operands turned(std::size_t count) {
  Operands o{{space(count, whole, 1, rowof(count)), space(2, whole, 1)}, 2};
  for (int axis : {0, 1}) o.point[1].data_pointer[axis].integer = o.point[0].shape_pointer[1 - axis].integer;
  return o;
}
CONSTANT(
    ravel_matrix, { ravel(*p); }, matrix);
CONSTANT(
    shape_matrix, { extents(*p); }, matrix);
CONSTANT(
    reshape_to_the_same_count, { reshape(p, p + 1, nullptr); }, turned);

}  // namespace
