// MAXIMUM: the larger element. Kept: higher numbers go by the modulus alone, without the sign that MINIMUM looks at.
#include "arithmetic/extrema.h"

namespace {

struct Larger {
  template <class T>
  static bool better(T a, T b) {
    return a > b;
  }
  template <Hyper T>
  static double weight(const T &x, std::uint64_t &flops) {
    return modulus(x, flops);
  }
};

}  // namespace

DYADIC_SCALAR(maximum, Extremum<Larger>)
