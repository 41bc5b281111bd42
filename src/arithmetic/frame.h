// What the frames of the monadic and of the dyadic scalar instructions share: questions about operands, what becomes of
// a record that is written over, and how an instruction counts and fails.
#pragma once

#include "arithmetic/loops.h"
#include "coprocessor/coprocessor.h"
#include "spaces/counters.h"

// How many tags have a row in a table of loops.
inline constexpr std::size_t LOOPTAGS = tags::OCTONION - tags::ASCII + 1;
// The row of a tag; LOOPTAGS or more where it has none.
inline constexpr std::uint32_t rowof(std::int32_t tag) {
  return static_cast<std::uint32_t>(tag) - tags::ASCII;
}
inline constexpr std::int32_t tagof(std::size_t row) {
  return tags::ASCII + static_cast<std::int32_t>(row);
}

// Notes what an instruction of the main thread did.
inline void countwork(double operated, double done) {
  operations += operated;
  flopos = done;
  from_coprocessor[0].flops = done;
  from_coprocessor[0].total_flops += done;
}

// For the short way: nothing conforms, extends or nests.
inline bool isplainscalar(const Point &p) {
  return p.rank == 0 && p.elements == 1 && (p.type & ~(HASINTEGER | HASREAL)) == ISSCALAR;
}

// Does a flag word promise one kind, and does the first record keep the promise?
inline bool isuniform(const Point &p) {
  const std::uint32_t kind = kindbit(p.data_pointer->tag);
  return (p.type & (COMPLEXED | STRUCTURED)) == 0 && (p.type & ELEMENTBITS) == kind && kind != 0;
}

// May the records be written over without loss? The name of a scalar may be counted.
inline bool isowned(const Point &p) {
  const bool named = p.rank == 0 && (p.data_pointer->attributes & attributes::NAMED) != 0;
  return refr(p.data_pointer) == 1 && !named;
}

// What a record of the result owns, where the result is written over it.
void giveupall(const Run &run, Element &result);

// The end of an instruction that failed with this message, INTERRUPTED included. `stack` is the address of the stack
// top.
[[noreturn]] void failscalar(std::int32_t message, Point **stack, const Point *instruction);
