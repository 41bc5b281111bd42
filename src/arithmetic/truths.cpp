// NOT, LOGICAL, ISLOGICAL and CONTRADICTION: truths without a draw. An integer is true above 0; the components of
// other numbers are probable truths, and one that is NaN is none.
#include "arithmetic/logic.h"
#include "arithmetic/monadic.h"
#include "spaces/hypercomplex.h"

namespace morvik {

namespace {

struct Negation : FlopCounter {
  static constexpr auto refusal = nocharacters;

  Truth operator()(Integer x) { return {x.value <= 0}; }
  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return 1 - clamped(part(x, i)); });
  }
};

// Two components at a time; what is no number stays.
inline Pair clampedpair(Pair x) {
  const Pair none{0, 0}, all{1, 1};
  x = all < x ? all : x;
  return none > x ? none : x;
}

struct Logical : FlopCounter {
  static constexpr auto refusal = nocharacters;

  Truth operator()(Integer x) { return {x.value > 0}; }
  double operator()(double x) {
    flops += 1;
    return clamped(x);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    Pair pairs[PARTS<T> / 2];
    for (int i = 0; i < PARTS<T> / 2; ++i) pairs[i] = clampedpair(pairof(x, 2 * i));
    return assemble<T>([&](auto i) { return pairs[i / 2][i % 2]; });
  }
};

struct IsLogical : FlopCounter {
  static constexpr auto refusal = nocharacters;

  Truth operator()(Integer x) { return {x.value == 0 || x.value == 1}; }
  template <Parted T>
  Truth operator()(const T &x) {
    flops += PARTS<T>;
    bool logical = true;
    for (int i = 0; i < PARTS<T>; ++i) logical = logical && !(part(x, i) < 0 || part(x, i) > 1);
    return {logical};
  }
};

// One truth alone does not contradict itself.
struct Contradiction : FlopCounter {
  static constexpr auto refusal = nocharacters;

  double operator()(double x) { return std::isnan(x) ? x : 0; }
  template <Hyper T>
  double operator()(const T &x) {
    double parts[PARTS<T>];
    for (int i = 0; i < PARTS<T>; ++i) parts[i] = part(x, i);
    return morvik::contradiction(parts, PARTS<T>);
  }
};

}  // namespace

MONADIC_SCALAR(Not, Negation)
MONADIC_SCALAR(logical, Logical)
MONADIC_SCALAR(islogical, IsLogical)
MONADIC_SCALAR(contradiction, Contradiction)

}  // namespace morvik
