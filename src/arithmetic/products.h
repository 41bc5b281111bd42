// Products of the numbers of more than one component. The unit i of a number times the unit j is the unit i XOR j, with
// a sign; the quaternions are the first quarter of the octonions' table, the complex numbers of theirs. The formulas
// are spelled out by templates as one expression a component, which is the form that compilers turn into pairs.
#pragma once

#include "arithmetic/kinds.h"

namespace morvik {

// Is the sign minus? Row is the left unit, column the right one.
inline constexpr bool MINUS[8][8] = {
    {0, 0, 0, 0, 0, 0, 0, 0}, {0, 1, 0, 1, 0, 1, 1, 0}, {0, 1, 1, 0, 0, 0, 1, 1}, {0, 0, 1, 1, 0, 1, 0, 1},
    {0, 1, 1, 1, 1, 0, 0, 0}, {0, 0, 1, 0, 1, 1, 1, 0}, {0, 0, 0, 1, 1, 0, 1, 1}, {0, 1, 0, 0, 1, 1, 0, 1},
};

enum class Right { ITSELF, CONJUGATE };

// Component k of the product of the leading components of a and of b or its conjugate, `lefts` and `rights` of them.
// The terms are in the order of the left units, and what is left out is no term at all, not one of 0.
template <int k, int lefts, int rights, Right as, Parted A, Parted B>
inline double productpart(const A &a, const B &b) {
  constexpr auto isterm = [](int i) { return i < lefts && (i ^ k) < rights; };
  constexpr auto isminus = [](int i) { return MINUS[i][i ^ k] != (as == Right::CONJUGATE && i != k); };
  constexpr int first = [=] {
    int i = 0;
    while (i < lefts && !isterm(i)) ++i;
    return i;
  }();
  if constexpr (!isterm(first)) {
    return 0;
  } else {
    double sum = part(a, first) * part(b, first ^ k);
    if constexpr (isminus(first)) sum = -sum;
    const auto add = [&](auto i) {
      if constexpr (i > first && isterm(i)) {
        const double term = part(a, i) * part(b, i ^ k);
        sum = isminus(i) ? sum - term : sum + term;
      }
    };
    [&]<int... i>(std::integer_sequence<int, i...>) {
      (add(std::integral_constant<int, i>{}), ...);
    }
    (std::make_integer_sequence<int, lefts>{});
    return sum;
  }
}

template <int lefts, int rights, Right as, Parted A, Parted B>
inline Wider<A, B> leadingproduct(const A &a, const B &b) {
  return assemble<Wider<A, B>>([&](auto k) { return productpart<k, lefts, rights, as>(a, b); });
}

// ---- Several components at a time, for the products that are over before a compiler would find the pairs.

// The components k to k + LANES - 1 of a product, k a multiple of LANES; terms as in productpart. To a place that is
// given, as what is compiled for narrow registers may not return wide ones.
template <int k, Right as, class Lanes, class T>
[[gnu::always_inline]] inline void productlanes(Lanes &sum, const T &a, const T &b) {
  using Bits __attribute__((vector_size(sizeof(Lanes)))) = long long;
  constexpr long long SIGN = static_cast<long long>(1ULL << 63);
  constexpr auto isminus = [](int i, int lane) {
    const int j = i ^ (k + lane);
    return MINUS[i][j] != (as == Right::CONJUGATE && j > 0);
  };
  const auto add = [&]<int i, int... lane>(std::integer_sequence<int, i>, std::integer_sequence<int, lane...>)
      __attribute__((always_inline)) {
    constexpr unsigned first = (i ^ k) & -LANES<Lanes>;
    Lanes right;
    std::memcpy(&right, reinterpret_cast<const char *>(&b) + sizeof(double) * first, sizeof right);
    right = __builtin_shufflevector(right, right, (lane ^ (i % LANES<Lanes>))...);
    const double x = part(a, i);
    Lanes left{(static_cast<void>(lane), x)...};
    constexpr bool allminus = (isminus(i, lane) && ...), someminus = (isminus(i, lane) || ...);
    if constexpr (someminus && !allminus)
      left = reinterpret_cast<Lanes>(reinterpret_cast<Bits>(left) ^ Bits{(isminus(i, lane) ? SIGN : 0)...});
    const Lanes term = left * right;
    if constexpr (i == 0)
      sum = allminus ? -term : term;
    else
      sum = allminus ? sum - term : sum + term;
  };
  [&]<int... i>(std::integer_sequence<int, i...>) __attribute__((always_inline)) {
    (add(std::integer_sequence<int, i>{}, std::make_integer_sequence<int, LANES<Lanes>>{}), ...);
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}

// All components.
template <Right as, class Lanes, class T>
[[gnu::always_inline]] inline T productby(const T &a, const T &b) {
  T product;
  [&]<int... i>(std::integer_sequence<int, i...>) __attribute__((always_inline)) {
    Lanes sums[sizeof...(i)];
    (productlanes<i * LANES<Lanes>, as>(sums[i], a, b), ...);
    std::memcpy(static_cast<void *>(&product), sums, sizeof product);
  }
  (std::make_integer_sequence<int, PARTS<T> / LANES<Lanes>>{});
  return product;
}

template <Right as, class T>
inline T pairproduct(const T &a, const T &b) {
  return productby<as, Pair>(a, b);
}
template <Right as>
[[MORVIK_WIDE, gnu::noinline]] Octonion quadproduct(const Octonion &a, const Octonion &b) {
  return productby<as, Quad>(a, b);
}

// The product of quaternions of which a last component is 0. By value, so that the operands need not be in memory.
template <Right as>
[[gnu::noinline]] Quaternion flatproduct(Pair a0, Pair a2, Pair b0, Pair b2) {
  const Quaternion a{{a0[0], a0[1], a2[0], a2[1]}}, b{{b0[0], b0[1], b2[0], b2[1]}};
  if (a2[1] == 0) return b2[1] == 0 ? leadingproduct<3, 3, as>(a, b) : leadingproduct<3, 4, as>(a, b);
  return leadingproduct<4, 3, as>(a, b);
}

// The products of complex numbers side by side.
template <class Lanes>
[[gnu::always_inline]] inline void complexproducts(Lanes &products, const Lanes &a, const Lanes &b) {
  [&]<int... lane>(std::integer_sequence<int, lane...>) __attribute__((always_inline)) {
    const Lanes along = __builtin_shufflevector(a, a, (lane & ~1)...) * b;
    const Lanes across = __builtin_shufflevector(a, a, (lane | 1)...) * __builtin_shufflevector(b, b, (lane ^ 1)...);
    products = __builtin_shufflevector(along - across, along + across, (lane % 2 == 0 ? lane : lane + LANES<Lanes>)...);
  }
  (std::make_integer_sequence<int, LANES<Lanes>>{});
}

// ---- The product.

// Passes the product of two numbers of more than one component to `give`. Adds to `counted` the flops that it did: a
// last component of a quaternion that is 0 is passed over.
template <Right as, Hyper A, Hyper B, class Give>
inline void product(const A &a, const B &b, std::uint64_t &counted, Give &&give) {
  constexpr int lefts = PARTS<A>, rights = PARTS<B>;
  if constexpr (lefts == 4 && rights == 4) {
    const double leftlast = part(a, 3), rightlast = part(b, 3);
    if (leftlast == 0 || rightlast == 0) [[unlikely]] {
      counted += leftlast == rightlast ? 14 : 20;
      give(flatproduct<as>(pairof(a, 0), pairof(a, 2), pairof(b, 0), pairof(b, 2)));
    } else {
      counted += 28;
      give(pairproduct<as>(a, b));
    }
  } else {
    constexpr int terms = lefts * rights, sums = terms - PARTS<Wider<A, B>>;
    counted += terms + sums;
    if constexpr (lefts == 8 && rights == 8)
      give(wideregisters ? quadproduct<as>(a, b) : pairproduct<as>(a, b));
    else
      give(leadingproduct<lefts, rights, as>(a, b));
  }
}

template <Hyper T>
inline double squarednorm(const T &x) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return ((part(x, i) * part(x, i)) + ...);
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}

// Are all components but the first 0?
template <Hyper T>
inline bool isreal(const T &x) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    return ((part(x, i + 1) == 0) && ...);
  }
  (std::make_integer_sequence<int, PARTS<T> - 1>{});
}

}  // namespace morvik
