// EXPONENTIAL: e to the power of the number.
#include "arithmetic/elementary.h"
#include "arithmetic/monadic.h"

namespace {

// By its modulus and its angle. A modulus past the doubles may still have components within them.
Complex exponentialof(const Complex &z) {
  const double sine = clean(std::sin(z.im)), cosine = clean(std::cos(z.im));
  double size = std::exp(z.re), again = 1;
  if (std::isinf(size) && std::isfinite(z.re)) [[unlikely]]
    size = again = std::exp(z.re / 2);
  // A direction of 0 outweighs a modulus without end.
  return {cosine == 0 ? 0 : size * cosine * again, sine == 0 ? 0 : size * sine * again};
}

struct Exponential : Counted {
  double operator()(double x) {
    flops += 1;
    return std::exp(x);
  }
  Complex operator()(const Complex &x) {
    flops += 5;
    return exponentialof(x);
  }
  template <Hyper T>
  T operator()(const T &x) {
    flops += 5 + 4 * PARTS<T>;
    return alongunit(x, exponentialof);
  }
};

}  // namespace

MONADIC_SCALAR(exponential, Exponential)
