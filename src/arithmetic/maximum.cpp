// MAXIMUM: the larger element. Kept: higher numbers go by the modulus alone, without the sign that MINIMUM looks at.
#include "arithmetic/dyadic.h"
#include "arithmetic/extrema.h"

namespace morvik {

namespace {

struct Larger {
  template <class T>
  static bool better(T a, T b) {
    return a > b;
  }
  template <class T>
  static constexpr std::size_t flops = MODULUS_FLOPS<T>;
  template <Hyper T>
  static double weight(const T &x) {
    return modulus(x);
  }
};

}  // namespace

DYADIC_SCALAR(maximum, Extremum<Larger>)

}  // namespace morvik
