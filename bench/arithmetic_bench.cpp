// The four operations beside hand-written loops, two scalars on the stack, and a whole instruction.
#include "kernels.h"

#ifndef __clang__
#pragma GCC optimize("O3")  // as arithmetic/ is
#endif

namespace {

using namespace kernels;

// ---- The hand-written loops.

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

// ---- The benchmarks.

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
