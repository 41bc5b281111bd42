// RECIPROCAL: 1 over the number, by the rules of DIVIDE.
#include "arithmetic/monadic.h"
#include "arithmetic/products.h"

namespace morvik {

namespace {

struct Reciprocal : FlopCounter {
  // Kept: a quotient is an integer where it is whole and not negative, so that of -1 it is the real -1.
  template <class Give>
  void operator()(Integer x, Give &&give) {
    if (x.value == 1) return give(x);
    flops += 1;
    give(1 / static_cast<double>(x.value));
  }

  double operator()(double x) {
    flops += 1;
    return 1 / x;
  }

  template <Hyper T>
  T operator()(const T &x) {
    flops += 3 * PARTS<T> - 1;
    if (isreal(x)) [[unlikely]]
      return promote<T>(1 / part(x, 0));
    const double norm = squarednorm(x);
    return assemble<T>([&](auto i) { return (i == 0 ? part(x, i) : 0.0 - part(x, i)) / norm; });
  }
};

}  // namespace

MONADIC_SCALAR(reciprocal, Reciprocal)

}  // namespace morvik
