// Products of the numbers of more than one component. The unit i of a number times the unit j is the unit i XOR j, with
// a sign; the quaternions are the first quarter of the octonions' table, the complex numbers of theirs.
#pragma once

#include "arithmetic/values.h"

// Is the sign minus? Row is the left unit, column the right one.
inline constexpr bool MINUS[8][8] = {
    {0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 1, 0, 1, 1, 0}, {0, 1, 1, 0, 0, 0, 1, 1}, {0, 0, 1, 1, 0, 1, 0, 1},
    {0, 1, 1, 1, 1, 0, 0, 0}, {0, 0, 1, 0, 1, 1, 1, 0}, {0, 0, 0, 1, 1, 0, 1, 1}, {0, 1, 0, 0, 1, 1, 0, 1},
};

// ---- Two components at a time: the compilers find no such order by themselves.

// x twice, with these signs but for a common minus, which is left to productpair.
template <bool minusfirst, bool minussecond>
inline Pair signedtwice(double x) {
  using Bits __attribute__((vector_size(16))) = long long;
  constexpr long long SIGN = static_cast<long long>(1ULL << 63);
  const Pair twice{x, x};
  if constexpr (minusfirst == minussecond) return twice;
  return reinterpret_cast<Pair>(reinterpret_cast<Bits>(twice) ^ Bits{minusfirst ? SIGN : 0, minussecond ? SIGN : 0});
}

// The product of a and b, or of a and the conjugate of b, with the terms in the order of the left units. Each left
// component goes to all pairs before the next one comes in: what is live at a time fits the registers.
template <bool conjugate, Hyper A, Hyper B>
inline Paired<Wider<A, B>> fullproduct(const A &a, const B &b) {
  Paired<Wider<A, B>> sum;
  const auto addterm = [&](auto i, auto pair) {
    constexpr int j = i ^ (2 * pair), l = i ^ (2 * pair + 1);  // the right units for its components
    if constexpr (j < PARTS<B>) {
      constexpr bool first = i == 0 || (2 * pair ^ (i - 1)) >= PARTS<B>;
      constexpr bool minusj = MINUS[i][j] != (conjugate && j > 0), minusl = MINUS[i][l] != (conjugate && l > 0);
      const Pair right = j < l ? pairof(b, j) : __builtin_shufflevector(pairof(b, l), pairof(b, l), 1, 0);
      const Pair term = signedtwice<minusj, minusl>(part(a, i)) * right;
      constexpr bool minus = minusj && minusl;
      if constexpr (first)
        sum.pair[pair] = minus ? -term : term;
      else
        sum.pair[pair] = minus ? sum.pair[pair] - term : sum.pair[pair] + term;
    }
  };
  const auto addleft = [&](auto i) {
    [&]<int... pair>(std::integer_sequence<int, pair...>) {
      (addterm(i, std::integral_constant<int, pair>{}), ...);
    }
    (std::make_integer_sequence<int, PARTS<Wider<A, B>> / 2>{});
  };
  [&]<int... i>(std::integer_sequence<int, i...>) {
    (addleft(std::integral_constant<int, i>{}), ...);
  }
  (std::make_integer_sequence<int, PARTS<A>>{});
  return sum;
}

// Is there NaN among the components? Infinities of both signs may pass for it.
inline bool mayhavenan(const Paired<Complex> &x) {
  return std::isunordered(x.pair[0][0], x.pair[0][1]);
}
inline bool mayhavenan(const Paired<Quaternion> &x) {
  const Pair sum = x.pair[0] + x.pair[1];
  return std::isunordered(sum[0], sum[1]);
}

// ---- Products in which terms are left out.

// Component k of the product of the leading components of a and b, `lefts` and `rights` of them: the terms stand in the
// order of the left units, and what is left out is no term at all, not one of 0.
template <int k, int lefts, int rights, Parted A, Parted B>
inline double productpart(const A &a, const B &b) {
  constexpr auto isterm = [](int i) { return i < lefts && (i ^ k) < rights; };
  constexpr int first = isterm(0) ? 0 : isterm(1) ? 1 : isterm(2) ? 2 : isterm(3) ? 3 : 4;
  if constexpr (!isterm(first)) {
    return 0;
  } else {
    const auto term = [&](int i) { return part(a, i) * part(b, i ^ k); };
    double sum = MINUS[first][first ^ k] ? -term(first) : term(first);
    const auto more = [&](auto i) {
      if constexpr (i > first && isterm(i)) sum = MINUS[i][i ^ k] ? sum - term(i) : sum + term(i);
    };
    [&]<int... i>(std::integer_sequence<int, i...>) {
      (more(std::integral_constant<int, i>{}), ...);
    }
    (std::make_integer_sequence<int, lefts>{});
    return sum;
  }
}

template <int lefts, int rights, Parted A, Parted B>
inline Wider<A, B> leadingproduct(const A &a, const B &b) {
  return assemble<Wider<A, B>>([&](auto k) { return productpart<k, lefts, rights>(a, b); });
}

// Pair k of a product of quaternions of which a last component may be 0. Doubles by value: whoever loops over products
// keeps its own in registers.
[[gnu::cold, gnu::noinline]] inline Pair flatpair(int k, double a0, double a1, double a2, double a3, double b0,
                                                  double b1, double b2, double b3) {
  const Quaternion a{{a0, a1, a2, a3}}, b{{b0, b1, b2, b3}};
  const auto leading = [&]() -> Quaternion {
    if (a3 == 0) return b3 == 0 ? leadingproduct<3, 3>(a, b) : leadingproduct<3, 4>(a, b);
    return b3 == 0 ? leadingproduct<4, 3>(a, b) : leadingproduct<4, 4>(a, b);
  };
  return pairof(leading(), 2 * k);
}

// ---- The product.

// The product of two numbers of more than one component, but for two complex ones; with `conjugate`, of the left one
// and the conjugate of the right one. Adds to `counted` the flops that it did: a last component of a quaternion that is
// 0 is passed over.
template <bool conjugate = false, Hyper A, Hyper B>
inline Paired<Wider<A, B>> product(const A &a, const B &b, std::uint64_t &counted) {
  constexpr int lefts = PARTS<A>, rights = PARTS<B>;
  const Paired<Wider<A, B>> c = fullproduct<conjugate>(a, b);
  if constexpr (lefts == 4 && rights == 4) {
    counted += 28;
    if (part(a, 3) == 0)
      counted -= part(b, 3) == 0 ? 14 : 8;
    else if (part(b, 3) == 0)
      counted -= 8;
    // Terms of 0 make a difference where there are infinities alone.
    if (mayhavenan(c)) [[unlikely]] {
      constexpr double sign = conjugate ? -1 : 1;
      const auto flat = [&](int k) {
        return flatpair(k, part(a, 0), part(a, 1), part(a, 2), part(a, 3), part(b, 0), sign * part(b, 1),
                        sign * part(b, 2), sign * part(b, 3));
      };
      return {{flat(0), flat(1)}};
    }
  } else {
    constexpr int terms = lefts * rights, sums = terms - PARTS<Wider<A, B>>;
    counted += terms + sums;
  }
  return c;
}

template <Hyper T>
inline double squarednorm(const T &x) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return ((part(x, i) * part(x, i)) + ...);
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}
