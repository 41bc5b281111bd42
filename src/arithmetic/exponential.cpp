// EXPONENTIAL and POWE: e to the power of the number. The base is e itself and not the double nearest to it, whose
// error would grow with the exponent.
#include "arithmetic/complexfunctions.h"
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct Exponential : FlopCounter {
  double operator()(double x) {
    flops += 1;
    return std::exp(x);
  }
  Complex operator()(const Complex &x) {
    flops += 5;
    return complexexponential(x);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += 5 + 4 * PARTS<T>;
    return alongunit(x, complexexponential);
  }
};

}  // namespace

MONADIC_SCALAR(exponential, Exponential)
MONADIC_SCALAR(powe, Exponential)

}  // namespace morvik
