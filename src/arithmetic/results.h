// From a result to a record. Each function that writes one returns the HAS bit of what it wrote.
#pragma once

#include "arithmetic/formulas.h"
#include "spaces/blocks.h"

namespace morvik {

// The HAS bit that results of a kind have, or nearly all of them.
template <class T>
inline constexpr std::uint32_t USUAL_BIT = kindbit(TAG_OF<T>);
template <>
inline constexpr std::uint32_t USUAL_BIT<WholeOrReal> = HASINTEGER;
template <>
inline constexpr std::uint32_t USUAL_BIT<Truth> = HASINTEGER;

// Form and marks of a hypercomplex result: a complex number takes them from the complex operand, the left one of two;
// so does a higher number where both operands are of its kind. A mixed pair gives the ordinary form.
template <std::int32_t tag, std::int32_t L, std::int32_t R>
inline std::uint64_t inherited(std::uint64_t left, std::uint64_t right) {
  constexpr bool takesleft = L == tag && (R == tag || tag == tags::COMPLEX);
  constexpr bool takesright = R == tag && tag == tags::COMPLEX;
  if constexpr (takesleft)
    return left & INHERITED_BITS;
  else if constexpr (takesright)
    return right & INHERITED_BITS;
  else
    return heading(tag, L == tag || R == tag ? forms::NUMBER : forms::CARTESIAN);
}

inline std::uint32_t writerecord(Element &to, std::int64_t value, std::uint16_t form) {
  setunnamedheading(to, heading(tags::INTEGER, form));
  to.integer = value;
  return HASINTEGER;
}
inline std::uint32_t writerecord(Element &to, double value) {
  setunnamedheading(to, heading(tags::REAL, forms::COMPUTED));
  to.real = value;
  return HASREAL;
}
inline std::uint32_t writerecord(Element &to, Integer value) {
  return writerecord(to, value.value, forms::NUMBER);
}
inline std::uint32_t writerecord(Element &to, Truth truth) {
  return writerecord(to, truth.value, forms::BOOLEAN);
}
inline std::uint32_t writerecord(Element &to, WholeOrReal number) {
  if (!number.whole) [[unlikely]]
    return writerecord(to, number.value);
  return writerecord(to, saturate(number.value), forms::NUMBER);
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Complex &value) {
  setunnamedheading(to, head);
  to.complex = value;
  return HASCOMPLEX;
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Quaternion &value) {
  setheading(to, head);
  setquaternion(to, value);
  return HASQUATERNION;
}

// A record that is about to hold something else releases its octonion.
inline void releaseoctonion(const Element &e) {
  if (e.tag == tags::OCTONION) release(e.octonion);
}

// The block for the octonion of a result: that which the record owns alone, otherwise a new one. Null: no storage.
inline Octonion *octonionblock(const Element &to, bool fresh) {
  const bool reused = !fresh && to.tag == tags::OCTONION && referencecount(to.octonion) == 1;
  return reused ? to.octonion : static_cast<Octonion *>(tryblock(sizeof(Octonion)));
}
inline std::uint32_t writerecord(Element &to, std::uint64_t head, const Octonion &value, Octonion *target, bool fresh) {
  *target = value;
  if (!fresh && (to.tag != tags::OCTONION || to.octonion != target)) releaseoctonion(to);
  setheading(to, head);
  to.name = nullptr;
  to.octonion = target;
  return HASOCTONION;
}

// Over an operand's record, or into a fresh one; an octonion into its block.
template <std::int32_t L, std::int32_t R, class Value>
inline std::uint32_t writeresult(Element &to, std::uint64_t left, std::uint64_t right, const Value &value, bool fresh,
                                 Octonion *target = nullptr) {
  if constexpr (std::same_as<Value, Octonion>) {
    return writerecord(to, inherited<TAG_OF<Value>, L, R>(left, right), value, target, fresh);
  } else {
    if constexpr (L == tags::OCTONION || R == tags::OCTONION)
      if (!fresh) releaseoctonion(to);
    if constexpr (Hyper<Value>) {
      return writerecord(to, inherited<TAG_OF<Value>, L, R>(left, right), value);
    } else if constexpr (std::same_as<Value, Ascii> || std::same_as<Value, Unicode>) {
      // A character comes from the operand that is one, and looks like it.
      constexpr std::int32_t tag = TAG_OF<Value>;
      setunnamedheading(to, (L == tag ? left : right) & INHERITED_BITS);
      to.integer = value.value;
      return kindbit(tag);
    } else {
      return writerecord(to, value);
    }
  }
}

}  // namespace morvik
