// MULTIPLY: the product. A character times a boolean integer is that character or a blank.
#include <limits>

#include "arithmetic/dyadic.h"
#include "arithmetic/products.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

constexpr std::uint8_t BLANK = ' ';

// A component of a complex product that is no number shows infinity.
double nantoinfinity(double x) {
  return std::isnan(x) ? std::numeric_limits<double>::infinity() : x;
}

struct Multiply : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASUNICODE;

  WholeOrReal operator()(Integer a, Integer b) {
    return wholeresult(static_cast<double>(a.value) * static_cast<double>(b.value));
  }

  template <Parted A, Parted B>
  requires std::same_as<A, double> || std::same_as<B, double>
  static constexpr std::size_t fixedflops(Formula<A, B>) { return PARTS<Wider<A, B>>; }

  // 0 times an infinity is 0, and no product of 0 has a sign.
  double operator()(double a, double b) {
    const double x = a * b;
    if (!__builtin_islessgreater(x, 0.0)) [[unlikely]]
      return a == 0 || b == 0 ? 0 : x;
    return x;
  }

  // In polar form the moduli multiply and the angles add.
  static constexpr std::size_t fixedflops(Formula<Complex, Complex>) { return 6; }
  static constexpr std::size_t polarsaves = 4;
  static constexpr bool unlessnan = true;
  template <class Lanes>
  [[gnu::always_inline]] static void usual(Lanes &products, const Lanes &a, const Lanes &b) {
    complexproducts(products, a, b);
  }
  // The cross terms are no matter where an imaginary part is 0, but for infinities.
  template <class Give>
  void operator()(const Complex &a, const Complex &b, Give &&give) {
    const Complex c = pairproduct<Right::ITSELF>(a, b);
    if (std::isunordered(c.re, c.im)) [[unlikely]]
      give(Complex{realpart(a.re, a.im, b.re, b.im), imaginarypart(a.re, a.im, b.re, b.im)});
    else
      give(c);
  }

  template <Hyper B>
  B operator()(double a, const B &b) {
    return assemble<B>([&](auto i) {
      const double x = a * part(b, i);
      return PARTS<B> == PARTS<Complex> ? nantoinfinity(x) : x;
    });
  }
  template <Hyper A>
  A operator()(const A &a, double b) {
    return (*this)(b, a);
  }

  template <Hyper A, Hyper B, class Give>
  void operator()(const A &a, const B &b, Give &&give) {
    product<Right::ITSELF>(a, b, flops, give);
  }

  std::int32_t check(Ascii, Integer times) const {
    return times.value == 0 || times.value == 1 ? 0 : messages::CHARACTER_TIMES_NUMBER;
  }
  std::int32_t check(Integer times, Ascii character) const { return check(character, times); }
  // Without a branch, as the truths of a space cannot be predicted.
  Ascii operator()(Ascii character, Integer times) {
    return {static_cast<std::uint8_t>(BLANK + (character.value - BLANK) * static_cast<int>(times.value))};
  }
  Ascii operator()(Integer times, Ascii character) { return (*this)(character, times); }

 private:
  // Of (a, b) times (c, d). Doubles by value, so that the loop keeps its own in registers.
  [[gnu::cold, gnu::noinline]] static double realpart(double a, double b, double c, double d) {
    return nantoinfinity(b == 0 || d == 0 ? a * c : a * c - b * d);
  }
  [[gnu::cold, gnu::noinline]] static double imaginarypart(double a, double b, double c, double d) {
    if (b == 0 && d == 0) return 0;
    return nantoinfinity(d == 0 ? b * c : b == 0 ? a * d : a * d + b * c);
  }
};

}  // namespace

DYADIC_SCALAR(multiply, Multiply)

}  // namespace morvik
