// NOT, LOGICAL, ISLOGICAL and CONTRADICTION: truths without a draw. An integer is true above 0; the components of
// other numbers are probable truths, and one that is NaN is none.
#include "arithmetic/logic.h"
#include "arithmetic/monadic.h"
#include "spaces/hypercomplex.h"

namespace {

struct Negation : Counted {
  static constexpr auto refusal = nocharacters;

  Truth operator()(Integer x) { return {x.value <= 0}; }
  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return 1 - clamped(part(x, i)); });
  }
};

struct Logical : Counted {
  static constexpr auto refusal = nocharacters;

  Truth operator()(Integer x) { return {x.value > 0}; }
  template <Parted T>
  T operator()(const T &x) {
    flops += PARTS<T>;
    return assemble<T>([&](auto i) { return clamped(part(x, i)); });
  }
};

struct IsLogical : Counted {
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
struct Contradiction : Counted {
  static constexpr auto refusal = nocharacters;

  double operator()(double x) { return std::isnan(x) ? x : 0; }
  double operator()(const Complex &x) {
    Element e{};
    e.complex = x;
    return contradict_c(e);
  }
  double operator()(const Quaternion &x) {
    Element e{};
    setquaternion(e, copyof(x));
    return contradict_q(e);
  }
  double operator()(const Octonion &x) {
    Octonion parts = x;
    Element e{};
    e.octonion = &parts;
    return contradict_o(e);
  }
};

}  // namespace

MONADIC_SCALAR(Not, Negation)
MONADIC_SCALAR(logical, Logical)
MONADIC_SCALAR(islogical, IsLogical)
MONADIC_SCALAR(contradiction, Contradiction)
