// Elementary functions of the numbers of more than one component. A number is s + v u, u being the unit of its vector
// part: the function is taken of the complex number s + iv, and the imaginary part of that goes back along u.
#pragma once

#include "arithmetic/length.h"
#include "spaces/hypercomplex.h"

namespace morvik {

// Of a number without a vector part every unit would serve: the first one does. No component becomes a negative zero.
template <Hyper T, class F>
inline T alongunit(const T &x, F &&f) {
  const double v = lengthfrom<1>(x);
  const Complex w = f(Complex{part(x, 0), v});
  return assemble<T>([&](auto i) {
    if constexpr (i == 0) {
      return w.re;
    } else {
      const double share = v == 0 ? (i == 1 ? w.im : 0) : part(x, i) / v * w.im;
      return share == 0 ? 0 : share;
    }
  });
}

}  // namespace morvik
