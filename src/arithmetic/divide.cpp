// DIVIDE: the quotient. Nothing tests for a divisor of 0: the doubles give an infinity or NaN.
#include "arithmetic/dyadic.h"
#include "arithmetic/products.h"

namespace morvik {

namespace {

struct Divide : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;

  // Kept: a quotient is an integer where it is whole and not negative; -6 by 3 is the real -2.
  template <class Give>
  void operator()(Integer a, Integer b, Give &&give) {
    const double q = static_cast<double>(a.value) / static_cast<double>(b.value);
    if (q >= 0 && q < INTEGER_BOUND) [[likely]] {
      const auto whole = static_cast<std::int64_t>(q);
      if (static_cast<double>(whole) == q) return give(Integer{whole});
    }
    const bool limit = q == INTEGER_BOUND;
    flops += limit ? 0 : 1;
    give(WholeOrReal{q, limit});
  }

  template <Parted A>
  static constexpr std::size_t fixedflops(Formula<A, double>) {
    return PARTS<A>;
  }
  double operator()(double a, double b) { return a / b; }

  template <Hyper A>
  A operator()(const A &a, double b) {
    return assemble<A>([&](auto i) { return part(a, i) / b; });
  }

  // By the conjugate over the squared norm; a divisor whose other components are all 0 divides as the real that it is.
  template <Hyper A, Hyper B, class Give>
  void operator()(const A &a, const B &b, Give &&give) {
    using Result = Wider<A, B>;
    if (isreal(b)) {
      flops += PARTS<A>;
      give(assemble<Result>([&](auto i) {
        if constexpr (i < PARTS<A>)
          return part(a, i) / part(b, 0);
        else
          return 0.0;
      }));
    } else {
      const double norm = squarednorm(b);
      flops += 2 * PARTS<B> - 1 + PARTS<Result>;
      product<Right::CONJUGATE>(a, b, flops, [&](const Result &dividend) {
        give(assemble<Result>([&](auto i) { return part(dividend, i) / norm; }));
      });
    }
  }
  template <Hyper B, class Give>
  void operator()(double a, const B &b, Give &&give) {
    if (isreal(b)) {
      flops += 1;
      give(promote<B>(a / part(b, 0)));
    } else {
      const double norm = squarednorm(b);
      flops += 4 * PARTS<B> - 1;
      give(assemble<B>([&](auto i) {
        const double x = a * part(b, i);
        return (i == 0 ? x : 0.0 - x) / norm;
      }));
    }
  }
};

}  // namespace

DYADIC_SCALAR(divide, Divide)

}  // namespace morvik
