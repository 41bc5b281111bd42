// Elementary functions of the numbers of more than one component. A number is s + v u, u being the unit of its vector
// part: the function is taken of the complex number s + iv, and the imaginary part of that goes back along u.
#pragma once

#include <numbers>

#include "arithmetic/length.h"

namespace morvik {

// A sine or cosine below this is 0.
inline constexpr double CLEAN = 1e-15;
inline double clean(double x) {
  return std::fabs(x) < CLEAN ? 0 : x;
}

// Can an imaginary part not change 1.0? Then the number lies on the real axis.
inline bool onaxis(double imaginary) {
  return imaginary + 1.0 == 1.0;
}
inline double angleof(double re, double im) {
  if (onaxis(im)) return re < 0 ? std::numbers::pi : 0;
  return std::atan2(im, re);
}

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
