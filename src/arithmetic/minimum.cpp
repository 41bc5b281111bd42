// MINIMUM: the smaller element. Higher numbers go by their signed magnitude.
#include "arithmetic/extrema.h"

namespace {

struct Smaller {
  template <class T>
  static bool better(T a, T b) {
    return a < b;
  }
  template <Hyper T>
  static double weight(const T &x, std::uint64_t &flops) {
    return signedmagnitude(x, flops);
  }
};

}  // namespace

DYADIC_SCALAR(minimum, Extremum<Smaller>)
