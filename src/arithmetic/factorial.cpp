// FACTORIAL: exact where an integer holds it, otherwise by its continuation to reals and complex numbers.
#include "arithmetic/elementary.h"
#include "arithmetic/gamma.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct Factorial : FlopCounter {
  double tolerance = 0;
  std::int32_t failure = 0;

  template <class Give>
  void operator()(Integer n, Give &&give) {
    const auto row = static_cast<std::uint64_t>(n.value);
    if (row < FACTORIALS) [[likely]]
      give(Integer{factorials[row]});
    else
      give((*this)(static_cast<double>(n.value)));
  }
  double operator()(double x) {
    flops += 20;
    const double result = factor(x);
    failure = numericfault;
    return result;
  }
  Complex operator()(const Complex &z) {
    flops += 100;
    const Complex result = complexfactorial(z, tolerance);
    failure = numericfault;
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

}  // namespace morvik
