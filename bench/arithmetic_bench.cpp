// The loops of the dyadic scalar instructions beside hand-written loops over the same records, run in turns on thread
// time: `ratio` is what counts, nanoseconds are for an element. Each pair is first compared record by record. The
// hand-written loops do what the instruction must do and nothing else: they trust every tag.
#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "arithmetic/cores.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"

#ifndef __clang__
#pragma GCC optimize("O3")  // as arithmetic/ is
#endif

namespace {

constexpr std::int64_t SMALL = 1000, MIDDLE = 100000, LARGE = 10000000;
constexpr double NANOSECONDS = 1e9;
constexpr int ROUNDS = 5;  // in each turn the best of so many counts

double threadtime() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / NANOSECONDS;
}

// ---- The hand-written loops.

using Plain = void(Element *result, const Element *left, const Element *right, std::size_t count);

inline void head(Element &e, std::int32_t tag, std::uint16_t form, std::uint16_t marks) {
  e.tag = tag;
  e.form = form;
  e.attributes = marks;
}
inline void looklike(Element &e, std::int32_t tag, const Element &other) {
  head(e, tag, other.form, other.attributes & 0x3fff);
}

[[gnu::noinline]] void addreals(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const double x = a[i].real + b[i].real;
    head(r[i], tags::REAL, forms::COMPUTED, 0);
    r[i].name = nullptr;
    r[i].real = x;
  }
}

[[gnu::noinline]] void addrealtoscalar(Element *r, const Element *a, const Element *b, std::size_t count) {
  const double y = b->real;
  for (std::size_t i = 0; i < count; ++i) {
    const double x = a[i].real + y;
    head(r[i], tags::REAL, forms::COMPUTED, 0);
    r[i].name = nullptr;
    r[i].real = x;
  }
}

[[gnu::noinline]] void multiplyreals(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const double x = a[i].real == 0 || b[i].real == 0 ? 0 : a[i].real * b[i].real;
    head(r[i], tags::REAL, forms::COMPUTED, 0);
    r[i].name = nullptr;
    r[i].real = x;
  }
}

[[gnu::noinline]] void addintegers(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const double x = static_cast<double>(a[i].integer) + static_cast<double>(b[i].integer);
    r[i].name = nullptr;
    if (std::fabs(x) < 0x1p63) {
      head(r[i], tags::INTEGER, forms::NUMBER, 0);
      r[i].integer = static_cast<std::int64_t>(x);
    } else if (std::fabs(x) == 0x1p63) {
      head(r[i], tags::INTEGER, forms::NUMBER, 0);
      r[i].integer = x < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    } else {
      head(r[i], tags::REAL, forms::COMPUTED, 0);
      r[i].real = x;
    }
  }
}

[[gnu::noinline]] void addcomplex(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const Complex x{a[i].complex.re + b[i].complex.re, a[i].complex.im + b[i].complex.im};
    looklike(r[i], tags::COMPLEX, a[i]);
    r[i].name = nullptr;
    r[i].complex = x;
  }
}

[[gnu::noinline]] void multiplycomplex(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const Complex x = a[i].complex, y = b[i].complex;
    Complex z;
    if (y.im == 0)
      z = {x.re * y.re, x.im == 0 ? 0 : x.im * y.re};
    else if (x.im == 0)
      z = {x.re * y.re, x.re * y.im};
    else
      z = {x.re * y.re - x.im * y.im, x.re * y.im + x.im * y.re};
    if (std::isnan(z.re)) z.re = std::numeric_limits<double>::infinity();
    if (std::isnan(z.im)) z.im = std::numeric_limits<double>::infinity();
    looklike(r[i], tags::COMPLEX, a[i]);
    r[i].name = nullptr;
    r[i].complex = z;
  }
}

[[gnu::noinline]] void multiplyquaternions(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const Quaternion p = quaternion(a[i]), q = quaternion(b[i]);
    const double *x = p.part, *y = q.part;
    const Quaternion z{
        {x[0] * y[0] - x[1] * y[1] - x[2] * y[2] - x[3] * y[3], x[0] * y[1] + x[1] * y[0] + x[2] * y[3] - x[3] * y[2],
         x[0] * y[2] - x[1] * y[3] + x[2] * y[0] + x[3] * y[1], x[0] * y[3] + x[1] * y[2] - x[2] * y[1] + x[3] * y[0]}};
    looklike(r[i], tags::QUATERNION, a[i]);
    setquaternion(r[i], z);
  }
}

[[gnu::noinline]] void multiplyoctonions(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const double *x = a[i].octonion->part, *y = b[i].octonion->part;
    const Octonion z{
        {x[0] * y[0] - x[1] * y[1] - x[2] * y[2] - x[3] * y[3] - x[4] * y[4] - x[5] * y[5] - x[6] * y[6] - x[7] * y[7],
         x[0] * y[1] + x[1] * y[0] + x[2] * y[3] - x[3] * y[2] + x[4] * y[5] - x[5] * y[4] - x[6] * y[7] + x[7] * y[6],
         x[0] * y[2] - x[1] * y[3] + x[2] * y[0] + x[3] * y[1] + x[4] * y[6] + x[5] * y[7] - x[6] * y[4] - x[7] * y[5],
         x[0] * y[3] + x[1] * y[2] - x[2] * y[1] + x[3] * y[0] + x[4] * y[7] - x[5] * y[6] + x[6] * y[5] - x[7] * y[4],
         x[0] * y[4] - x[1] * y[5] - x[2] * y[6] - x[3] * y[7] + x[4] * y[0] + x[5] * y[1] + x[6] * y[2] + x[7] * y[3],
         x[0] * y[5] + x[1] * y[4] - x[2] * y[7] + x[3] * y[6] - x[4] * y[1] + x[5] * y[0] - x[6] * y[3] + x[7] * y[2],
         x[0] * y[6] + x[1] * y[7] + x[2] * y[4] - x[3] * y[5] - x[4] * y[2] + x[5] * y[3] + x[6] * y[0] - x[7] * y[1],
         x[0] * y[7] - x[1] * y[6] + x[2] * y[5] + x[3] * y[4] - x[4] * y[3] - x[5] * y[2] + x[6] * y[1] +
             x[7] * y[0]}};
    *r[i].octonion = z;
    looklike(r[i], tags::OCTONION, a[i]);
    r[i].name = nullptr;
  }
}

// ---- Operands: products keep their size, as all right operands but the first component's sign have the modulus 1.

class Records {
 public:
  Records(std::int32_t tag, std::size_t count, std::uint64_t seed) : size(count), data(newelements(count)) {
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

// ---- The benchmarks.

template <class Work>
void best(double &least, Work &&work) {
  for (int round = 0; round < ROUNDS; ++round) {
    const double start = threadtime();
    work();
    least = std::min(least, threadtime() - start);
  }
}

// Each side writes over its own left operand.
void kernel(benchmark::State &state, std::uint16_t instruction, std::int32_t tag, Plain *plain, bool scalar) {
  const Dyadic &cores = *dyadiccores(instruction);
  const auto count = static_cast<std::size_t>(state.range(0));
  Records mine(tag, count, 1), theirs(tag, count, 1), right(tag, scalar ? 1 : count, 2);
  const auto system = [&] {
    Run run{mine.get(), right.get(), mine.get(), 1, scalar ? std::size_t{0} : 1, 1, count, false};
    Tally tally;
    if (work(cores, run, tally) != 0) state.SkipWithError("a failure");
  };
  const auto byhand = [&] { plain(theirs.get(), theirs.get(), right.get(), count); };
  system();
  byhand();
  if (!mine.equals(theirs)) state.SkipWithError("different results");
  double systemtime = std::numeric_limits<double>::infinity(), handtime = systemtime;
  for (auto _ : state) {
    best(systemtime, system);
    best(handtime, byhand);
  }
  if (!mine.equals(theirs)) state.SkipWithError("different results");
  const double each = NANOSECONDS / static_cast<double>(count);
  state.counters["ns"] = systemtime * each;
  state.counters["byhand_ns"] = handtime * each;
  state.counters["ratio"] = systemtime / handtime;
}

#define KERNEL(name, instruction, tag, plain, scalar)                                  \
  BENCHMARK_CAPTURE(kernel, name, instructions::instruction, tags::tag, plain, scalar) \
      ->Arg(SMALL)                                                                     \
      ->Arg(MIDDLE)                                                                    \
      ->Arg(LARGE)
KERNEL(add_real, ADD, REAL, addreals, false);
KERNEL(add_real_scalar, ADD, REAL, addrealtoscalar, true);
KERNEL(add_integer, ADD, INTEGER, addintegers, false);
KERNEL(add_complex, ADD, COMPLEX, addcomplex, false);
KERNEL(multiply_real, MULTIPLY, REAL, multiplyreals, false);
KERNEL(multiply_complex, MULTIPLY, COMPLEX, multiplycomplex, false);
KERNEL(multiply_quaternion, MULTIPLY, QUATERNION, multiplyquaternions, false);
BENCHMARK_CAPTURE(kernel, multiply_octonion, instructions::MULTIPLY, tags::OCTONION, multiplyoctonions, false)
    ->Arg(SMALL)
    ->Arg(MIDDLE)
    ->Arg(LARGE / 10);

// A literal pushed twice, ADD, and the sum dropped, as a Programme does it: four Points.
void scalarsum(benchmark::State &state) {
  constexpr double POINTS = 4;
  Point three, four, stack[3];
  makeinteger(three, 3);
  makeinteger(four, 4);
  std::int64_t sum = 0;
  for (auto _ : state) {
    stack[1] = three;
    referencepoint(&stack[1]);
    stack[2] = four;
    referencepoint(&stack[2]);
    Point *sp = stack + 2;
    add(&sp, nullptr, nullptr, 0);
    sum += sp->data_pointer->integer;
    dereferencepoint(sp);
  }
  if (sum != 7 * state.iterations()) state.SkipWithError("a wrong sum");
  state.counters["per_point"] = benchmark::Counter(static_cast<double>(state.iterations()) * POINTS,
                                                   benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
  dereferencepoint(&three);
  dereferencepoint(&four);
}
BENCHMARK(scalarsum);

// A whole instruction on a stack, over its left operand: what the frame adds to the loop.
void wholeinstruction(benchmark::State &state) {
  const auto count = static_cast<std::size_t>(state.range(0));
  Records records(tags::REAL, count, 1);
  Point stack[3], one;
  makereal(one, 0.5, forms::NUMBER);
  stack[1] = {};
  stack[1].rank = ranks::VECTOR;
  stack[1].type = ISVECTOR | HASREAL;
  stack[1].elements = static_cast<std::uint32_t>(count);
  stack[1].shape_pointer = newshape(state.range(0));
  stack[1].data_pointer = records.get();
  const double first = records.get()->real;
  double expected = first;
  for (auto _ : state) {
    stack[2] = one;
    referencepoint(&stack[2]);
    Point *sp = stack + 2;
    add(&sp, nullptr, nullptr, 0);
    expected += 0.5;
  }
  if (stack[1].data_pointer != records.get() || records.get()->real != expected) state.SkipWithError("a wrong sum");
  state.SetItemsProcessed(state.iterations() * state.range(0));
  release(stack[1].shape_pointer);
  dereferencepoint(&one);
}
BENCHMARK(wholeinstruction)->Arg(1)->Arg(10)->Arg(SMALL)->Arg(MIDDLE);

}  // namespace
