// MINIMUM: the smaller element. Higher numbers go by their signed magnitude.
#include "arithmetic/dyadic.h"
#include "arithmetic/extrema.h"

namespace morvik {

namespace {

struct Smaller {
  template <class T>
  static bool better(T a, T b) {
    return a < b;
  }
  template <class T>
  static constexpr std::size_t flops = SIGNED_FLOPS<T>;
  template <Hyper T>
  static double weight(const T &x) {
    return signedmagnitude(x);
  }
};

}  // namespace

DYADIC_SCALAR(minimum, Extremum<Smaller>)

}  // namespace morvik
