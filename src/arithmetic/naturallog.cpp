// NATURALLOG: the logarithm to the base e. That of a negative real is complex.
#include "arithmetic/complexfunctions.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct NaturalLog : FlopCounter {
  template <class Give>
  void operator()(double x, Give &&give) {
    flops += 1;
    if (x < 0) [[unlikely]]
      give(Complex{std::log(-x), std::numbers::pi});
    else
      give(std::log(x));
  }
  Complex operator()(const Complex &x) {
    flops += 6;
    return complexlogarithm(x);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += 6 + 4 * PARTS<T>;
    return alongunit(x, complexlogarithm);
  }
};

}  // namespace

MONADIC_SCALAR(naturallog, NaturalLog)

}  // namespace morvik
