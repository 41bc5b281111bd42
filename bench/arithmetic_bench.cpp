// The arithmetic of two operands beside hand-written loops, two scalars on the stack, and a whole instruction.
#include "byhand.h"
#include "spaces/making.h"

using namespace morvik;

namespace {

using namespace kernels;

// ---- Products. Only that of complex numbers asks whether they are real.

// What is no number shows infinity.
inline double shown(double x) {
  return std::isnan(x) ? std::numeric_limits<double>::infinity() : x;
}
inline Complex times(const Complex &x, const Complex &y) {
  if (y.im == 0) return {x.re * y.re, x.im == 0 ? 0 : x.im * y.re};
  if (x.im == 0) return {x.re * y.re, x.re * y.im};
  return {shown(x.re * y.re - x.im * y.im), shown(x.re * y.im + x.im * y.re)};
}
inline Quaternion times(const Quaternion &a, const Quaternion &b) {
  const double *x = a.part, *y = b.part;
  return {{x[0] * y[0] - x[1] * y[1] - x[2] * y[2] - x[3] * y[3], x[0] * y[1] + x[1] * y[0] + x[2] * y[3] - x[3] * y[2],
           x[0] * y[2] - x[1] * y[3] + x[2] * y[0] + x[3] * y[1],
           x[0] * y[3] + x[1] * y[2] - x[2] * y[1] + x[3] * y[0]}};
}
inline Octonion times(const Octonion &a, const Octonion &b) {
  const double *x = a.part, *y = b.part;
  return {
      {x[0] * y[0] - x[1] * y[1] - x[2] * y[2] - x[3] * y[3] - x[4] * y[4] - x[5] * y[5] - x[6] * y[6] - x[7] * y[7],
       x[0] * y[1] + x[1] * y[0] + x[2] * y[3] - x[3] * y[2] + x[4] * y[5] - x[5] * y[4] - x[6] * y[7] + x[7] * y[6],
       x[0] * y[2] - x[1] * y[3] + x[2] * y[0] + x[3] * y[1] + x[4] * y[6] + x[5] * y[7] - x[6] * y[4] - x[7] * y[5],
       x[0] * y[3] + x[1] * y[2] - x[2] * y[1] + x[3] * y[0] + x[4] * y[7] - x[5] * y[6] + x[6] * y[5] - x[7] * y[4],
       x[0] * y[4] - x[1] * y[5] - x[2] * y[6] - x[3] * y[7] + x[4] * y[0] + x[5] * y[1] + x[6] * y[2] + x[7] * y[3],
       x[0] * y[5] + x[1] * y[4] - x[2] * y[7] + x[3] * y[6] - x[4] * y[1] + x[5] * y[0] - x[6] * y[3] + x[7] * y[2],
       x[0] * y[6] + x[1] * y[7] + x[2] * y[4] - x[3] * y[5] - x[4] * y[2] + x[5] * y[3] + x[6] * y[0] - x[7] * y[1],
       x[0] * y[7] - x[1] * y[6] + x[2] * y[5] + x[3] * y[4] - x[4] * y[3] - x[5] * y[2] + x[6] * y[1] + x[7] * y[0]}};
}
template <class T>
inline T conjugated(const T &x) {
  return assemble<T>([&](auto i) { return i == 0 ? part(x, i) : -part(x, i); });
}
template <class T>
inline T over(const T &x, const T &y) {
  double norm = part(y, PARTS<T> - 1) * part(y, PARTS<T> - 1);
  for (int i = PARTS<T> - 2; i >= 0; --i) norm = part(y, i) * part(y, i) + norm;
  return eachpart(times(x, conjugated(y)), [&](double z) { return z / norm; });
}

// ---- What goes before what.

// With the sign of the first component, which none of these has at 0.
template <class T>
inline double signedsize(const T &x) {
  const double size = std::sqrt(sumofsquares(x));
  return part(x, 0) < 0 ? -size : size;
}
template <class T>
inline bool outweighs(T candidate, T sofar) {
  return candidate != candidate && sofar == sofar;
}

// What does not fit into an integer is left as it is near.
inline double cut(double x) {
  if (std::fabs(x) < INTEGER_BOUND) [[likely]]
    return static_cast<double>(static_cast<Whole>(x));
  return x != x ? 0 : std::copysign(INTEGER_BOUND, x);
}

inline double real(Whole x) {
  return static_cast<double>(x);
}

// ---- The rows.

void integers() {
  using T = Whole;
  enter(two<T>("ADD", instructions::ADD, PLAIN, [](T x, T y) { return Sum{real(x) + real(y)}; }));
  enter(two<T>("SUBTRACT", instructions::SUBTRACT, PLAIN, [](T x, T y) { return Sum{real(x) - real(y)}; }));
  enter(two<T>("MULTIPLY", instructions::MULTIPLY, PLAIN, [](T x, T y) { return Sum{real(x) * real(y)}; }));
  enter(two<T>("DIVIDE", instructions::DIVIDE, PLAIN, [](T x, T y) {
    const double q = real(x) / real(y);
    return Quotient{q, q >= 0 && q <= INTEGER_BOUND && q == cut(q)};
  }));
  enter(two<T>("RESIDUE", instructions::RESIDUE, PLAIN, [](T x, T y) {
    return y == 0 ? x : y == -1 ? Whole{0} : x % y;
  }));
  enter(two<T>("MINIMUM", instructions::MINIMUM, PLAIN, [](T x, T y) { return y < x ? y : x; }));
  enter(two<T>("MAXIMUM", instructions::MAXIMUM, PLAIN, [](T x, T y) { return y > x ? y : x; }));
}

void reals() {
  using T = double;
  const auto sum = [](T x, T y) { return x + y; };
  enter(two<T>("ADD", instructions::ADD, PLAIN, sum));
  Row row = two<T>("ADD, over an operand", instructions::ADD, PLAIN, sum);
  row.over = true;
  enter(row);
  row = two<T>("ADD, a scalar", instructions::ADD, PLAIN, sum);
  row.byhand = overlone<T, decltype(sum)>;
  row.rightstep = 0;
  enter(row);
  enter(two<T>("SUBTRACT", instructions::SUBTRACT, PLAIN, [](T x, T y) { return x - y; }));
  enter(two<T>("MULTIPLY", instructions::MULTIPLY, PLAIN, [](T x, T y) { return x == 0 || y == 0 ? 0 : x * y; }));
  enter(two<T>("DIVIDE", instructions::DIVIDE, PLAIN, [](T x, T y) { return x / y; }));
  enter(two<T>("RESIDUE", instructions::RESIDUE, PLAIN, [](T x, T y) { return y == 0 ? x : x - cut(x / y) * y; }));
  enter(two<T>("MINIMUM", instructions::MINIMUM, PLAIN, [](T x, T y) { return y != y || y < x ? y : x; }));
  enter(two<T>("MAXIMUM", instructions::MAXIMUM, PLAIN, [](T x, T y) { return y != y || y > x ? y : x; }));
}

// A character times 1 or 0 is that character or a blank.
void characters() {
  Row row = two<Ascii>("MULTIPLY", instructions::MULTIPLY, PLAIN, [](Ascii x, Ascii) { return x; });
  row.right = tags::INTEGER;
  row.rightfill = [](Element &e, std::uint64_t bits) {
    e.form = forms::BOOLEAN;
    e.integer = static_cast<std::int64_t>(bits % 2);
  };
  row.byhand = [](Element *r, const Element *a, const Element *b, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
      store(r[i], a[i], Ascii{b[i].integer == 1 ? a[i].ascii : std::uint8_t{' '}});
  };
  enter(row);
}

inline Complex residue(const Complex &x, const Complex &y) {
  const Complex q = y.im == 0 ? Complex{x.re / y.re, x.im / y.re} : over(x, y);
  Complex whole = {cut(q.re), cut(q.im)};
  const double across = q.re - whole.re, up = q.im - whole.im;
  if (across + up >= 1 && up <= across) whole.re += 1;
  const Complex taken = times(whole, y);
  return {shown(x.re - taken.re), shown(x.im - taken.im)};
}

template <class T>
void higher() {
  const double product = PARTS<T> > 2 ? PRODUCT : PLAIN;
  const std::int64_t largest = PARTS<T> == 8 ? LARGE / 10 : LARGE;
  enter(two<T>("ADD", instructions::ADD, PLAIN,
               [](const T &x, const T &y) { return eachpart(x, y, [](double a, double b) { return a + b; }); }),
        largest);
  enter(two<T>("SUBTRACT", instructions::SUBTRACT, PLAIN,
               [](const T &x, const T &y) { return eachpart(x, y, [](double a, double b) { return a - b; }); }),
        largest);
  enter(two<T>("MULTIPLY", instructions::MULTIPLY, product, [](const T &x, const T &y) { return times(x, y); }),
        largest);
  enter(two<T>("DIVIDE", instructions::DIVIDE, product, [](const T &x, const T &y) { return over(x, y); }), largest);
  enter(two<T>("MINIMUM", instructions::MINIMUM, PLAIN,
               [](const T &x, const T &y) {
                 const double left = signedsize(x), right = signedsize(y);
                 return right < left || outweighs(right, left) ? y : x;
               }),
        largest);
  enter(two<T>("MAXIMUM", instructions::MAXIMUM, PLAIN,
               [](const T &x, const T &y) {
                 const double left = std::sqrt(sumofsquares(x)), right = std::sqrt(sumofsquares(y));
                 return right > left || outweighs(right, left) ? y : x;
               }),
        largest);
}

template <class T>
void characters() {
  enter(two<T>("MINIMUM", instructions::MINIMUM, PLAIN, [](T x, T y) { return y.value < x.value ? y : x; }));
  enter(two<T>("MAXIMUM", instructions::MAXIMUM, PLAIN, [](T x, T y) { return y.value > x.value ? y : x; }));
}

const bool entered = [] {
  characters<Ascii>();
  characters<Unicode>();
  characters();
  integers();
  reals();
  higher<Complex>();
  enter(two<Complex>("RESIDUE", instructions::RESIDUE, PLAIN,
                     [](const Complex &x, const Complex &y) { return residue(x, y); }));
  higher<Quaternion>();
  higher<Octonion>();
  return true;
}();

// ---- Whole instructions.

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
  Records operand(tags::REAL, count, 0, ordinary);  // a block from its begin on
  Point stack[3], one;
  makereal(one, 0.5, forms::NUMBER);
  stack[1] = {};
  stack[1].rank = ranks::VECTOR;
  stack[1].type = ISVECTOR | HASREAL;
  stack[1].elements = static_cast<std::uint32_t>(count);
  stack[1].shape_pointer = newshape(state.range(0));
  stack[1].data_pointer = operand.get();
  double expected = operand.get()->real;
  for (auto _ : state) {
    stack[2] = one;
    referencepoint(&stack[2]);
    Point *sp = stack + 2;
    add(&sp, nullptr, nullptr, 0);
    expected += 0.5;
  }
  if (stack[1].data_pointer != operand.get() || operand.get()->real != expected) state.SkipWithError("a wrong sum");
  state.SetItemsProcessed(state.iterations() * state.range(0));
  release(stack[1].shape_pointer);
  dereferencepoint(&one);
}
BENCHMARK(wholeinstruction)->Arg(1)->Arg(10)->Arg(SMALL)->Arg(MIDDLE);

// ---- Short spaces.

// As a loop that trusts every tag would write them at best: what stands ahead of a value in one store.
inline void storewide(Element &to, const Element &, double value) {
  store16(&to, heading(tags::REAL, forms::COMPUTED), 0);
  to.real = value;
}
inline void storewide(Element &to, const Element &, Whole value) {
  store16(&to, heading(tags::INTEGER, forms::NUMBER), 0);
  to.integer = value;
}
inline void storewide(Element &to, const Element &like, const Complex &value) {
  store16(&to, headingof(like) & INHERITED_BITS, 0);
  to.complex = value;
}
template <class T, class F>
[[gnu::noinline]] void overtwowide(Element *r, const Element *a, const Element *b, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) storewide(r[i], a[i], F{}(load<T>(a[i]), load<T>(b[i])));
}

// A vector over records that stay when it goes.
template <class T>
Point vectorover(Records &records, std::int64_t count) {
  Point p{};
  p.rank = ranks::VECTOR;
  p.type = ISVECTOR | kindbit(TAG<T>) | (count == 1 ? ISONEELEMENT : 0);
  p.depth = 1;
  p.elements = static_cast<std::uint32_t>(count);
  p.shape_pointer = newshape(count);
  p.data_pointer = records.get();
  return p;
}

// A whole instruction as a body runs it on two names, in turns with the bare loop: two spaces pushed, worked into a new
// one, and that dropped. `ns` and `byhand_ns` are of a call.
template <class T, DyadicFunction *work, class F>
void newspace(benchmark::State &state) {
  const std::int64_t count = state.range(0);
  const auto size = static_cast<std::size_t>(count);
  Records lefts(TAG<T>, size, 0, ordinary), rights(TAG<T>, size, 0, ordinary), theirs(TAG<T>, size, 0, ordinary);
  Point left = vectorover<T>(lefts, count), right = vectorover<T>(rights, count);
  const auto system = [&] {
    Point stack[3];
    referencepoint(&left);
    stack[1] = left;
    referencepoint(&right);
    stack[2] = right;
    Point *sp = stack + 2;
    work(&sp, nullptr, nullptr, 0);
    dereferencepoint(sp);
  };
  const auto byhand = [&] { overtwowide<T, F>(theirs.get(), lefts.get(), rights.get(), size); };
  const std::int64_t calls = std::max<std::int64_t>(1, TIMED / count);
  double systemtime = std::numeric_limits<double>::infinity(), handtime = systemtime;
  for (auto _ : state) {
    best(systemtime, calls, system);
    best(handtime, calls, byhand);
  }
  state.counters["ns"] = systemtime * NANOSECONDS;
  state.counters["byhand_ns"] = handtime * NANOSECONDS;
  release(left.shape_pointer);
  release(right.shape_pointer);
}

struct Plus {
  template <class T>
  T operator()(T x, T y) const {
    return x + y;
  }
};
struct Times {
  Complex operator()(const Complex &x, const Complex &y) const { return times(x, y); }
};
void realsums(benchmark::State &state) {
  newspace<double, add, Plus>(state);
}
void integersums(benchmark::State &state) {
  newspace<Whole, add, Plus>(state);
}
void complexproducts(benchmark::State &state) {
  newspace<Complex, multiply, Times>(state);
}
BENCHMARK(realsums)->Arg(1)->Arg(10)->Arg(100)->Iterations(TURNS);
BENCHMARK(integersums)->Arg(1)->Arg(10)->Arg(100)->Iterations(TURNS);
BENCHMARK(complexproducts)->Arg(1)->Arg(10)->Arg(100)->Iterations(TURNS);

}  // namespace
