// BINOMIAL: how many ways there are to choose left out of right, continued to reals and complex numbers. What the
// formulas cannot say is 0 or an infinity: nothing is reported.
#include "arithmetic/dyadic.h"
#include "arithmetic/gamma.h"
#include "arithmetic/refusal.h"
#include "failure/signals.h"

namespace morvik {

namespace {

struct Binomial : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;
  static std::int32_t refusal(std::int32_t left, std::int32_t right) { return nohigher(left, right); }
  static constexpr std::size_t pollinterval = SLOW_POLL_INTERVAL;
  double tolerance = 0;

  // Whole numbers have a whole coefficient, which the quotient misses by its last bits.
  WholeOrReal operator()(Integer k, Integer n) {
    return wholeresult(std::nearbyint(binom(static_cast<double>(k.value), static_cast<double>(n.value))));
  }
  double operator()(double k, double n) {
    flops += 1;
    return binom(k, n);
  }
  Complex operator()(const Complex &a, const Complex &b) {
    flops += 100;
    double out[2];
    binomC(a, b, out, tolerance);
    return {out[0], out[1]};
  }
};

}  // namespace

DYADIC_SCALAR(binomial, Binomial)

}  // namespace morvik
