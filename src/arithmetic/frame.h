// What the frames of the monadic and of the dyadic scalar instructions share: questions about operands, what becomes of
// a record that is written over, how an instruction counts and fails, and how it is shared with the pool.
#pragma once

#include <algorithm>
#include <array>

#include "arithmetic/loops.h"
#include "spaces/counters.h"
#include "spaces/work.h"

namespace morvik {

// How many tags may have loops, and so kinds of their own; one more kind is all others.
inline constexpr std::size_t LOOP_TAGS = tags::OCTONION - tags::ASCII + 1, KINDS = LOOP_TAGS + 1;
inline constexpr std::size_t kindof(std::int32_t tag) {
  return std::min<std::uint32_t>(static_cast<std::uint32_t>(tag) - tags::ASCII, LOOP_TAGS);
}
inline constexpr std::int32_t tagof(std::size_t kind) {
  return tags::ASCII + static_cast<std::int32_t>(kind);
}

// The loops of an instruction by the kind of what they are for, null where there is none.
template <std::size_t count>
struct Loops {
  std::array<Kernel, count> kernels;
  std::array<MaskedKernel, count> masked;
  std::array<Check, count> checks;  // null where no value fails
};

// Notes what an instruction of the main thread did.
inline void countwork(double operated, double done) {
  operations += operated;
  flopos = done;
  from_coprocessor[0].flops = done;
  from_coprocessor[0].total_flops += done;
}

// For the fast path: nothing conforms, extends or nests.
inline bool isplainscalar(const Point &p) {
  return p.rank == 0 && p.elements == 1 && (p.type & ~(HASINTEGER | HASREAL)) == ISSCALAR;
}

// Does a flag word promise one kind, and does the first record keep the promise?
inline bool isuniform(const Point &p) {
  const std::uint32_t kind = kindbit(p.data_pointer->tag);
  return (p.type & (COMPLEXED | STRUCTURED)) == 0 && (p.type & ELEMENT_BITS) == kind && kind != 0;
}

// May the records be written over without loss? The name of a scalar may be counted.
inline bool isowned(const Point &p) {
  const bool named = p.rank == 0 && (p.data_pointer->attributes & attributes::NAMED) != 0;
  return referencecount(p.data_pointer) == 1 && !named;
}

// What a record of the result owns, where the result is written over it.
void releaseoverwritten(const Run &run, Element &result);

// New records for the result of a run. False where there is no storage.
bool newrecords(Run &run);
// Gives back what a run that failed made; nothing where it wrote over an operand.
void abandonrun(Run &run);

// ---- The share of the pool. What is peculiar to a family is in to_coprocessors already: its operands.

// Is an operand nested too deeply for a coprocessor's stack?
bool isdeep(const Point &operand);
// The one place where work goes to the pool. True: its threads are on all slices but the first, which is what is left
// in `run`. What they read must then live until the join, which is also where the operands may go.
bool postrun(Run &run, const Point *instruction, Point *operand, const Tally &tally);
// The main thread's slice failed: the pool stops, and what all slices made is the run's to abandon.
void recallrun(Run &run);

// A slice begins with a run over whole operands, and becomes the run over its own part. False where that is empty.
bool narrowtoslice(Run &run, std::uint32_t index);
Tally startslice();
// Leaves all in the thread's reply, and gives back what a slice that failed made. Returns the message.
std::int32_t endslice(Run &run, const Tally &tally, std::int32_t message, std::uint32_t index);

}  // namespace morvik
