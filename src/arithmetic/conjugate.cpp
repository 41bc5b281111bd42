// CONJUGATE: every component but the first changes its sign. An integer or a real stays as it is, form included.
#include "arithmetic/monadic.h"

namespace morvik {

namespace {

struct Conjugate : FlopCounter {
  Formed operator()(Integer, Heading head) { return {head.word & INHERITED_BITS}; }
  Formed operator()(double, Heading head) { return {head.word & INHERITED_BITS}; }

  template <Hyper T>
  T operator()(const T &x) {
    flops += PARTS<T> - 1;
    return assemble<T>([&](auto i) { return i == 0 ? part(x, i) : -part(x, i); });
  }
};

}  // namespace

MONADIC_SCALAR(conjugate, Conjugate)

}  // namespace morvik
