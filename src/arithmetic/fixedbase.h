// Powers and logarithms of one fixed base, which is the first operand of POWER or the second of LOGARITHM.
#pragma once

#include "arithmetic/logarithm.h"
#include "arithmetic/monadic.h"
#include "arithmetic/power.h"

namespace morvik {

struct Two {
  static constexpr double VALUE = 2;
};
struct Ten {
  static constexpr double VALUE = 10;
};

template <class Base>
struct PowerOf : FlopCounter {
  double operator()(double x) {
    double result = 0;
    flops += 1;
    Power{}(Base::VALUE, x, [&](const auto &value) {
      if constexpr (std::is_same_v<std::remove_cvref_t<decltype(value)>, double>) result = value;
    });
    return result;
  }
  template <Hyper T>
  T operator()(const T &x) {
    Power core;
    const T result = core(promote<T>(Base::VALUE), x);
    flops += core.flops;
    return result;
  }
};

template <class Base>
struct LogarithmOf : FlopCounter {
  double operator()(double x) {
    Logarithm core;
    const double result = core(x, Base::VALUE);
    flops += core.flops;
    return result;
  }
  Complex operator()(const Complex &x) {
    Logarithm core;
    const Complex result = core(x, promote<Complex>(Base::VALUE));
    flops += core.flops;
    return result;
  }
};

}  // namespace morvik
