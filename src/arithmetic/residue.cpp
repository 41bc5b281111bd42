// RESIDUE: left modulo right, with the sign of the left. The quotient is cut to 64 bits, so that of a left far greater
// than right not much is taken away.
#include "arithmetic/complexfunctions.h"
#include "arithmetic/dyadic.h"
#include "arithmetic/refusal.h"

namespace morvik {

namespace {

struct Residue : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;
  static std::int32_t refusal(std::int32_t left, std::int32_t right) { return nohigher(left, right); }

  // Exact for every pair, where doubles would lose low bits. By -1 nothing is left, and the machine's division fails.
  Integer operator()(Integer a, Integer b) {
    if (b.value == 0) return a;
    return {b.value == -1 ? 0 : a.value % b.value};
  }

  static constexpr std::size_t fixedflops(Formula<double, double>) { return 3; }
  double operator()(double a, double b) {
    const double q = a / b;
    if (std::fabs(q) < INTEGER_BOUND) [[likely]]
      return a - static_cast<double>(static_cast<std::int64_t>(q)) * b;
    return b == 0 ? a : a - truncated(q) * b;
  }

  // Kept: the quotient is cut towards 0 and goes up by 1 where its two fractions together reach 1 and the imaginary one
  // is not above the real one.
  Complex operator()(const Complex &a, const Complex &b) {
    flops += 20;
    const Complex q = quotient(a, b);
    Complex whole = {truncated(q.re), truncated(q.im)};
    const double across = q.re - whole.re, up = q.im - whole.im;
    if (across + up >= 1 && up <= across) whole.re += 1;
    const Complex part = b.im == 0 ? Complex{whole.re * b.re, whole.im * b.re} : pairproduct<Right::ITSELF>(whole, b);
    return {nantoinfinity(a.re - part.re), nantoinfinity(a.im - part.im)};
  }

 private:
  static double truncated(double x) { return static_cast<double>(saturate(x)); }
  // A component that is no number shows infinity.
  static double nantoinfinity(double x) { return std::isnan(x) ? std::numeric_limits<double>::infinity() : x; }
};

}  // namespace

DYADIC_SCALAR(residue, Residue)

}  // namespace morvik
