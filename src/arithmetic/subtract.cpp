// SUBTRACT: left less right, component by component.
#include "arithmetic/dyadic.h"

namespace morvik {

namespace {

struct Subtract : FlopCounter {
  static constexpr std::uint32_t refused = ISADDRESS | HASASCII | HASUNICODE;

  template <class Give>
  void operator()(Integer a, Integer b, Give &&give) {
    if (summable(a, b)) [[likely]]
      give(Integer{a.value - b.value});
    else
      give(wholeresult(static_cast<double>(a.value) - static_cast<double>(b.value)));
  }

  template <Parted A, Parted B>
  static constexpr std::size_t fixedflops(Formula<A, B>) {
    return PARTS<B>;
  }
  // What only the right number has is taken from 0, so that no component becomes a negative zero.
  static constexpr bool componentwise = true;
  template <class Lanes>
  [[gnu::always_inline]] static void usual(Lanes &difference, const Lanes &a, const Lanes &b) {
    difference = a - b;
  }
  template <Parted A, Parted B>
  Wider<A, B> operator()(const A &a, const B &b) {
    constexpr int lefts = PARTS<A>, rights = PARTS<B>;
    return assemble<Wider<A, B>>([&](auto i) {
      if constexpr (i < lefts && i < rights)
        return part(a, i) - part(b, i);
      else if constexpr (i < lefts)
        return part(a, i);
      else
        return 0.0 - part(b, i);
    });
  }
};

}  // namespace

DYADIC_SCALAR(subtract, Subtract)

}  // namespace morvik
