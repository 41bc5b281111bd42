// DIVIDE: the quotient. Nothing tests for a divisor of 0: the doubles give an infinity or NaN.
#include "arithmetic/dyadic.h"
#include "arithmetic/products.h"

namespace {

struct Divide : Counted {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;

  // Kept: a quotient is an integer where it is whole and not negative; -6 by 3 is the real -2.
  Number operator()(Integer a, Integer b) {
    const double q = static_cast<double>(a.value) / static_cast<double>(b.value);
    const bool whole = q >= 0 && q <= INTEGERBOUND && q == static_cast<double>(saturate(q));
    flops += whole ? 0 : 1;
    return {q, whole};
  }

  double operator()(double a, double b) {
    flops += 1;
    return a / b;
  }

  template <Hyper A>
  A operator()(const A &a, double b) {
    flops += PARTS<A>;
    return assemble<A>([&](auto i) { return part(a, i) / b; });
  }

  // By the conjugate over the squared norm; a divisor whose other components are all 0 divides as the real that it is.
  template <Hyper A, Hyper B>
  Paired<Wider<A, B>> operator()(const A &a, const B &b) {
    using Result = Wider<A, B>;
    const bool real = isreal(b);
    const double divisor = real ? part(b, 0) : squarednorm(b);
    flops += real ? PARTS<A> : 2 * PARTS<B> - 1 + PARTS<Result>;
    Paired<Result> dividend = real ? pairsof<Result>(a) : product<true>(a, b, flops);
    for (Pair &pair : dividend.pair) pair /= Pair{divisor, divisor};
    return dividend;
  }
  template <Hyper B>
  B operator()(double a, const B &b) {
    const bool real = isreal(b);
    const double divisor = real ? part(b, 0) : squarednorm(b);
    flops += real ? 1 : 4 * PARTS<B> - 1;
    return assemble<B>([&](auto i) {
      if (i == 0) return (real ? a : a * part(b, i)) / divisor;
      return real ? 0 : (0.0 - a * part(b, i)) / divisor;
    });
  }

 private:
  template <Hyper T>
  static bool isreal(const T &x) {
    return [&]<int... i>(std::integer_sequence<int, i...>) {
      return ((part(x, i + 1) == 0) && ...);
    }
    (std::make_integer_sequence<int, PARTS<T> - 1>{});
  }

  // a in pairs, as a Result: the pairs that it has not are 0.
  template <Hyper Result, Hyper A>
  static Paired<Result> pairsof(const A &a) {
    return [&]<int... k>(std::integer_sequence<int, k...>) {
      return Paired<Result>{{(2 * k < PARTS<A> ? pairof(a, 2 * k) : Pair{0, 0})...}};
    }
    (std::make_integer_sequence<int, PARTS<Result> / 2>{});
  }
};

}  // namespace

DYADIC_SCALAR(divide, Divide)
