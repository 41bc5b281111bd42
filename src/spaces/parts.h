// The components of a number by its kind: how many doubles it is made of, where they lie in its record, and how they
// are written there. Who wants them asks here; the cores of the scalar instructions alone read records by types of
// their own.
#pragma once

#include <algorithm>
#include <cstdint>

#include "spaces/point.h"

namespace morvik {

inline constexpr int COMPLEX_PARTS = 2, QUATERNION_PARTS = 4, OCTONION_PARTS = 8, MOST_PARTS = OCTONION_PARTS;

// How many components a number of this tag has, an integer being one; 0 for what is no number.
inline constexpr int partsof(std::int32_t tag) {
  constexpr std::int8_t COUNTS[] = {1, 1, COMPLEX_PARTS, QUATERNION_PARTS, OCTONION_PARTS};
  return tag >= tags::INTEGER && tag <= tags::OCTONION ? COUNTS[tag - tags::INTEGER] : 0;
}
// The least kind of REAL and above that holds so many components.
inline constexpr std::int32_t tagholding(int parts) {
  std::int32_t tag = tags::REAL;
  while (partsof(tag) < parts) ++tag;
  return tag;
}

// Are they in a block of their own, which the record owns?
inline constexpr bool ownsparts(std::int32_t tag) {
  return tag == tags::OCTONION;
}

// The first component, 0 for what is no number.
inline double realpart(const Element &e) {
  switch (e.tag) {
    case tags::INTEGER:
      return static_cast<double>(e.integer);
    case tags::REAL:
      return e.real;
    case tags::COMPLEX:
      return e.complex.re;
    case tags::QUATERNION:
      return e.firstpart;
    case tags::OCTONION:
      return e.octonion->part[0];
    default:
      return 0;
  }
}

// Reads all components to `parts`, an array of MOST_PARTS. Returns how many, 0 for what is no number.
inline int readparts(const Element &e, double *parts) {
  switch (e.tag) {
    case tags::INTEGER:
    case tags::REAL:
      parts[0] = realpart(e);
      return 1;
    case tags::COMPLEX:
      parts[0] = e.complex.re;
      parts[1] = e.complex.im;
      return COMPLEX_PARTS;
    case tags::QUATERNION:
      std::copy_n(quaternion(e).part, QUATERNION_PARTS, parts);
      return QUATERNION_PARTS;
    case tags::OCTONION:
      std::copy_n(e.octonion->part, OCTONION_PARTS, parts);
      return OCTONION_PARTS;
    default:
      return 0;
  }
}

// Writes all components of a record of tag REAL or above, into the block that it owns where they are in one.
inline void writeparts(Element &e, const double *parts) {
  switch (e.tag) {
    case tags::REAL:
      e.real = parts[0];
      break;
    case tags::COMPLEX:
      e.complex = {parts[0], parts[1]};
      break;
    case tags::QUATERNION:
      setquaternion(e, {{parts[0], parts[1], parts[2], parts[3]}});
      break;
    default:
      std::copy_n(parts, OCTONION_PARTS, e.octonion->part);
  }
}

}  // namespace morvik
