// Element values as the cores of scalar instructions see them: one C++ type for each kind of element, what a core may
// give back, and the promotion of a lower number to a higher one.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

#include "arithmetic/wide.h"
#include "spaces/convert.h"
#include "spaces/parts.h"
#include "spaces/point.h"

namespace morvik {

// double, Complex, Quaternion and Octonion are kinds as they are. These are kinds of their own, so that no core takes
// one for the other by a silent conversion.
struct Integer {
  std::int64_t value;
};
struct Ascii {
  std::uint8_t value;
};
struct Unicode {
  std::uint16_t value;
};

// What only results are: an integer of form boolean, and a double that is to be an integer or to stay real.
struct Truth {
  bool value;
};
struct WholeOrReal {
  double value;
  bool whole;
};

// The kinds in the order of their tags, from ASCII to OCTONION.
using Kinds = std::tuple<Ascii, Unicode, Integer, double, Complex, Quaternion, Octonion>;
template <std::int32_t tag>
using Kind = std::tuple_element_t<tag - tags::ASCII, Kinds>;

// The tag of a kind; 0 for what only results are.
template <class T>
inline constexpr std::int32_t TAG_OF = []<std::size_t... i>(std::index_sequence<i...>) {
  return ((std::is_same_v<T, std::tuple_element_t<i, Kinds>> ? tags::ASCII + static_cast<std::int32_t>(i) : 0) + ...);
}
(std::make_index_sequence<std::tuple_size_v<Kinds>>{});

// The value of a record, whose tag is known. A quaternion stays in the record, where it begins in the word of the name:
// it is read by part() and pairof() alone.
template <std::int32_t tag>
inline decltype(auto) valueof(const Element &e) {
  if constexpr (tag == tags::ASCII) return Ascii{e.ascii};
  if constexpr (tag == tags::UNICODE) return Unicode{e.unicode};
  if constexpr (tag == tags::INTEGER) return Integer{e.integer};
  if constexpr (tag == tags::REAL) return double{e.real};
  if constexpr (tag == tags::COMPLEX) return Complex{e.complex};
  if constexpr (tag == tags::QUATERNION) return reinterpret_cast<const Quaternion &>(e.firstpart);
  if constexpr (tag == tags::OCTONION) return static_cast<const Octonion &>(*e.octonion);
}

// How many doubles a number is made of, which is its place in the order of promotion; 0 for an integer, and for what is
// no number.
template <class T>
inline constexpr int PARTS = std::is_same_v<T, Integer> ? 0 : partsof(TAG_OF<T>);

template <class T>
concept Parted = PARTS<T> >
0;
template <class T>
concept Hyper = PARTS<T> >
1;

inline double part(double x, int) {
  return x;
}
inline double part(const Complex &x, int i) {
  return i == 0 ? x.re : x.im;
}
inline double part(const Quaternion &x, int i) {
  double result;
  std::memcpy(&result, reinterpret_cast<const char *>(&x) + sizeof(double) * static_cast<unsigned>(i), sizeof result);
  return result;
}
inline double part(const Octonion &x, int i) {
  return x.part[i];
}

// Components i and i + 1, i even.
template <Hyper T>
inline Pair pairof(const T &x, int i) {
  Pair result;
  std::memcpy(&result, reinterpret_cast<const char *>(&x) + sizeof(double) * static_cast<unsigned>(i), sizeof result);
  return result;
}

template <Parted A, Parted B>
using Wider = std::conditional_t<(PARTS<A> >= PARTS<B>), A, B>;

// A number of kind T whose component i is f(i), where i is an integral_constant.
template <Parted T, class F>
inline T assemble(F &&f) {
  return [&]<int... i>(std::integer_sequence<int, i...>) {
    if constexpr (std::is_same_v<T, double>)
      return f(std::integral_constant<int, 0>{});
    else if constexpr (std::is_same_v<T, Complex>)
      return Complex{f(std::integral_constant<int, i>{})...};
    else
      return T{{f(std::integral_constant<int, i>{})...}};
  }
  (std::make_integer_sequence<int, PARTS<T>>{});
}

// The lower number takes the leading components of the higher kind; the others are 0.
template <Hyper T, Parted A>
inline T promote(const A &a) {
  static_assert(PARTS<A> < PARTS<T>);
  return assemble<T>([&](auto i) {
    if constexpr (i < PARTS<A>)
      return part(a, i);
    else
      return 0.0;
  });
}

// The first eight bytes of a record in one word: tag, form, attributes. Loops test and write them together.
static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__ && offsetof(Element, name) == 8);
inline constexpr int FORM_SHIFT = 32, ATTRIBUTE_SHIFT = 48;

inline constexpr std::uint64_t heading(std::int32_t tag, std::uint16_t form, std::uint16_t attributes = 0) {
  return static_cast<std::uint32_t>(tag) | static_cast<std::uint64_t>(form) << FORM_SHIFT |
         static_cast<std::uint64_t>(attributes) << ATTRIBUTE_SHIFT;
}
inline std::uint64_t headingof(const Element &e) {
  std::uint64_t word;
  std::memcpy(&word, &e, sizeof word);
  return word;
}
inline void setheading(Element &e, std::uint64_t word) {
  std::memcpy(static_cast<void *>(&e), &word, sizeof word);
}
// With no name.
inline void setunnamedheading(Element &e, std::uint64_t word) {
  store16(&e, word, 0);
}

// What passes from an operand's heading to a result: all but the name and the silence.
inline constexpr std::uint64_t INHERITED_BITS = ~heading(0, 0, attributes::NAMED | attributes::SILENT);

inline bool isnamed(std::uint64_t word) {
  return (word & heading(0, 0, attributes::NAMED)) != 0;
}
inline constexpr bool ispolar(std::uint64_t word) {
  return (word & heading(0, forms::POLAR)) != 0;
}

}  // namespace morvik
