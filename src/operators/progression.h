// The values of an interval as a formula, and the one loop that writes any stretch of them.
#pragma once

#include <cstdint>

#include "spaces/parts.h"
#include "spaces/point.h"

namespace morvik {

// Integers and characters are from + i * step. Anything else is a grid of so many parts, part 0 running fastest: value
// number n of part k is first[k] + n * steps[k], with n below counts[k]; polar grids are made of moduli and angles.
struct Progression {
  std::int32_t tag;
  std::uint16_t form, attributes;
  std::int64_t from, step;
  int parts;
  bool polar;
  double first[MOST_PARTS], steps[MOST_PARTS];
  std::uint64_t counts[MOST_PARTS];
};

// Writes elements begin to end - 1 of the result, each for itself: any cut into stretches gives the same records.
// `result` is the block's first record. A record for an octonion holds its block of eight doubles already. Allocates
// and reports nothing, and may run on any thread.
void writeinterval(const Progression &progression, Element *result, std::uint64_t begin, std::uint64_t end) noexcept;

}  // namespace morvik
