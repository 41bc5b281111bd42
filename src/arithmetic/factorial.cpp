// FACTORIAL: exact where an integer holds it, otherwise by its continuation to reals and complex numbers.
#include "arithmetic/elementary.h"
#include "arithmetic/gamma.h"
#include "arithmetic/monadic.h"

namespace {

constexpr std::int32_t NOFACTORIAL = 36;

struct Factorial : Counted {
  double tolerance = 0;
  std::int32_t failure = 0;

  std::int32_t check(Integer n, Heading) const { return n.value < 0 ? NOFACTORIAL : 0; }
  std::int32_t check(double x, Heading) const { return x < 0 && std::floor(x) == x ? NOFACTORIAL : 0; }

  template <class Give>
  void operator()(Integer n, Give &&give) {
    if (n.value < static_cast<std::int64_t>(FACTORIALS))
      give(Integer{factorials[static_cast<std::size_t>(n.value)]});
    else
      give((*this)(static_cast<double>(n.value)));
  }
  double operator()(double x) {
    flops += 20;
    return factor(x);
  }
  Complex operator()(const Complex &z) {
    flops += 100;
    const Complex result = complexfactorial(z, tolerance);
    failure = aplerr;
    return result;
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += 4 * PARTS<T>;
    return alongunit(x, *this);
  }
};

}  // namespace

MONADIC_SCALAR(factorial, Factorial)
