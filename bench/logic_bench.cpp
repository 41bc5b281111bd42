// Comparison and logic of two operands beside hand-written loops.
#include "byhand.h"

double kernels::comparisontolerance = 0;

namespace {

using namespace kernels;

// ---- Comparison. A higher number goes by its size, with the sign of its first component, which none of these has at
// 0.

inline double size(Whole x) {
  return static_cast<double>(x);
}
inline double size(double x) {
  return x;
}
template <class T>
inline double size(const T &x) {
  const double modulus = std::sqrt(sumofsquares(x));
  return part(x, 0) < 0 ? -modulus : modulus;
}
inline int size(Ascii x) {
  return x.value;
}
inline int size(Unicode x) {
  return x.value;
}

template <class T>
inline double clearance() {
  return std::is_same_v<T, Ascii> || std::is_same_v<T, Unicode> ? 0 : comparisontolerance;
}
template <class T>
inline bool less(const T &x, const T &y) {
  const auto a = size(x), b = size(y);
  return (a < b) & (b - a > clearance<T>());
}
template <class T>
inline bool equivalent(const T &x, const T &y) {
  const auto a = size(x), b = size(y);
  return std::abs(a == b ? 0 : a - b) <= clearance<T>();
}

template <class T>
inline bool identical(const T &x, const T &y) {
  if constexpr (std::is_same_v<T, Whole>) {
    return x == y;
  } else if constexpr (std::is_same_v<T, Ascii> || std::is_same_v<T, Unicode>) {
    return x.value == y.value;
  } else {
    for (int i = 0; i < PARTS<T>; ++i) {
      const double a = part(x, i), b = part(y, i);
      if (!(a == b || (std::isnan(a) && std::isnan(b)))) return false;
    }
    return true;
  }
}

template <class T>
void comparisons() {
  const std::int64_t largest = PARTS<T> == 8 ? LARGE / 10 : LARGE;
#define COMPARISON(name, what) \
  enter(two<T>(#name, instructions::name, PLAIN, [](const T &x, const T &y) { return what; }), largest)
  COMPARISON(IDENTICAL, identical(x, y));
  COMPARISON(NOTIDENTICAL, !identical(x, y));
  COMPARISON(LESS, less(x, y));
  COMPARISON(NOTGREATER, !less(y, x));
  COMPARISON(EQUIVALENT, equivalent(x, y));
  COMPARISON(NOTLESS, !less(x, y));
  COMPARISON(GREATER, less(y, x));
  COMPARISON(NOTEQUIVALENT, !equivalent(x, y));
}

// ---- Logic.

// Nothing here gives a negative zero.
inline double clamp(double x) {
  return x > 1 ? 1 : x < 0 ? 0 : x;
}
inline double both(double x, double y) {
  return std::isnan(x) || std::isnan(y) ? NAN : std::min(clamp(x), clamp(y)) + 0.0;
}
inline double either(double x, double y) {
  return std::isnan(x) || std::isnan(y) ? NAN : std::max(clamp(x), clamp(y)) + 0.0;
}
inline double stronglyboth(double x, double y) {
  const double sum = clamp(x) + clamp(y) - 1;
  return sum < 0 ? 0 : sum;
}
inline double stronglyeither(double x, double y) {
  const double sum = clamp(x) + clamp(y) + 0.0;
  return sum > 1 ? 1 : sum;
}

template <class T>
void logic() {
  const std::int64_t largest = PARTS<T> == 8 ? LARGE / 10 : LARGE;
#define LOGIC(name, what)                                                                                       \
  enter(two<T>(#name, instructions::name, PLAIN,                                                                \
               [](const T &x, const T &y) { return eachpart(x, y, [](double a, double b) { return what; }); }), \
        largest)
  LOGIC(AND, both(a, b));
  LOGIC(OR, either(a, b));
  LOGIC(NAND, 1 - both(a, b));
  LOGIC(NOR, 1 - either(a, b));
  LOGIC(STRONGAND, stronglyboth(a, b));
  LOGIC(STRONGOR, stronglyeither(a, b));
  LOGIC(STRONGNAND, 1 - stronglyboth(a, b));
  LOGIC(STRONGNOR, 1 - stronglyeither(a, b));
}

void wholelogic() {
#define WHOLELOGIC(name, what) \
  enter(two<Whole>(#name, instructions::name, PLAIN, [](Whole x, Whole y) -> bool { return what; }))
  WHOLELOGIC(AND, (x > 0) & (y > 0));
  WHOLELOGIC(OR, (x > 0) | (y > 0));
  WHOLELOGIC(NAND, !((x > 0) & (y > 0)));
  WHOLELOGIC(NOR, !((x > 0) | (y > 0)));
  WHOLELOGIC(STRONGAND, (x > 0) & (y > 0));
  WHOLELOGIC(STRONGOR, (x > 0) | (y > 0));
  WHOLELOGIC(STRONGNAND, !((x > 0) & (y > 0)));
  WHOLELOGIC(STRONGNOR, !((x > 0) | (y > 0)));
}

const bool entered = [] {
  comparisons<Ascii>();
  comparisons<Unicode>();
  comparisons<Whole>();
  wholelogic();
  comparisons<double>();
  logic<double>();
  comparisons<Complex>();
  logic<Complex>();
  comparisons<Quaternion>();
  logic<Quaternion>();
  comparisons<Octonion>();
  logic<Octonion>();
  return true;
}();

}  // namespace
