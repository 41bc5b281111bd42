// ADD: the sum, component by component.
#include "arithmetic/dyadic.h"

namespace morvik {

namespace {

struct Add : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;

  template <class Give>
  void operator()(Integer a, Integer b, Give &&give) {
    if (summable(a, b)) [[likely]]
      give(Integer{a.value + b.value});
    else
      give(wholeresult(static_cast<double>(a.value) + static_cast<double>(b.value)));
  }

  template <Parted A, Parted B>
  static constexpr std::size_t fixedflops(Formula<A, B>) {
    return PARTS<A> < PARTS<B> ? PARTS<A> : PARTS<B>;
  }
  static constexpr bool componentwise = true;
  template <class Lanes>
  [[gnu::always_inline]] static void usual(Lanes &sum, const Lanes &a, const Lanes &b) {
    sum = a + b;
  }
  template <Parted A, Parted B>
  Wider<A, B> operator()(const A &a, const B &b) {
    constexpr int common = fixedflops(Formula<A, B>{});
    return assemble<Wider<A, B>>([&](auto i) {
      if constexpr (i < common)
        return part(a, i) + part(b, i);
      else if constexpr (i < PARTS<A>)
        return part(a, i);
      else
        return part(b, i);
    });
  }
};

}  // namespace

DYADIC_SCALAR(add, Add)

}  // namespace morvik
