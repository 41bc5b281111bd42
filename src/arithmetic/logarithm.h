// The core of LOGARITHM, which the instructions of one fixed base share.
#pragma once

#include "arithmetic/complexfunctions.h"
#include "arithmetic/refusal.h"

namespace morvik {

struct Logarithm : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;
  static std::int32_t refusal(std::int32_t left, std::int32_t right) { return nohigher(left, right); }

  // Kept: a negative real has no logarithm here, though NATURALLOG gives it a complex one.
  double operator()(double x, double base) {
    flops += 3;
    return std::log(x) / std::log(base);
  }
  Complex operator()(const Complex &x, const Complex &base) {
    flops += 20;
    return quotient(logarithmof(x), logarithmof(base));
  }

 private:
  // What lies on the real axis, as nearly as matters, is taken as the real that it is.
  static Complex logarithmof(const Complex &z) {
    return onaxis(z.im) ? Complex{std::log(std::fabs(z.re)), angleof(z.re, z.im)} : complexlogarithm(z);
  }
};

}  // namespace morvik
