// A dyadic instruction as data: its loops, by pairs of kinds.
#pragma once

#include <cstddef>
#include <cstdint>

#include "arithmetic/frame.h"

namespace morvik {

// Works two loose scalars (spaces/loose.h), the result in the place of the first; of the second it gets the type and
// the value. It returns 1 and its flops; 0 where the instruction itself is to look closer, with everything as it was.
using LooseDyadic = std::uint64_t(Point &left, std::uint32_t righttype, std::int64_t right);

// One instruction as data: its loops, by pairs of kinds.
struct Dyadic : Loops<KINDS * KINDS + 1> {
  StraightLoop straight[PLAIN_COUNT][PLAIN_COUNT][LONES];  // of plain kinds; null where there is none
  LooseDyadic *loose;
  std::uint32_t refused;                                           // flags of operands that make them not conformable
  bool tolerant;                                                   // compares under #CT
  std::size_t pollinterval;                                        // elements between two looks at an interrupt
  std::int32_t (*refusal)(std::int32_t left, std::int32_t right);  // the message for a pair without a loop
};

// What numberloops.h takes together are pairs of this kind too.
inline constexpr std::size_t MIXED_KIND = KINDS * KINDS;
inline constexpr std::size_t kindof(std::int32_t left, std::int32_t right) {
  return kindof(left) * KINDS + kindof(right);
}

}  // namespace morvik
