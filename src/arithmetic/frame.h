// What the frames of the monadic and of the dyadic scalar instructions share: questions about operands, what becomes of
// a record that is written over, how an instruction counts and fails, and how it is shared with the pool.
#pragma once

#include <algorithm>
#include <array>
#include <bit>

#include "arithmetic/loops.h"
#include "failure/signals.h"
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
  return !ismixed(p) && (p.type & ELEMENT_BITS) == kind && kind != 0;
}

// The name of a scalar may be counted; all others are permanent.
inline bool mayownname(const Point &p) {
  return p.rank == ranks::SCALAR && (p.data_pointer->attributes & attributes::NAMED) != 0;
}
// May the records be written over without loss?
inline bool isowned(const Point &p) {
  return referencecount(p.data_pointer) == 1 && !mayownname(p);
}

// ---- Plain spaces: the flag word promises one kind of characters or numbers whose records own nothing, and says no
// more. Nearly all that programmes work on; it goes to its loop without a detour, as the loop looks at each tag anyway.

inline constexpr std::size_t PLAIN_COUNT = tags::QUATERNION - tags::ASCII + 1;
inline constexpr std::uint32_t PLAIN_KINDS = ((1U << PLAIN_COUNT) - 1) * HASASCII;

// The kind that the word promises so, PLAIN_COUNT where it does not.
inline std::size_t plainkind(const Point &p) {
  static constexpr auto BY_BITS = [] {
    std::array<std::uint8_t, 1U << PLAIN_COUNT> kinds{};
    kinds.fill(PLAIN_COUNT);
    for (unsigned kind = 0; kind < PLAIN_COUNT; ++kind) kinds[1U << kind] = static_cast<std::uint8_t>(kind);
    return kinds;
  }();
  const bool plain = (p.type & ~(RANK_BITS | PLAIN_KINDS)) == 0 && isspace(p);
  return plain ? BY_BITS[(p.type & PLAIN_KINDS) / HASASCII] : PLAIN_COUNT;
}
// So few elements that neither the pool nor an interrupt has a say before they are done? There must be some.
inline bool isshort(std::uint32_t count, std::size_t pollinterval) {
  return count - 1 < pollinterval && !goesparallel(count) && interrupted == 0;
}
// The flag word of what plain operands became, in the shape of this one.
inline std::uint32_t plaintype(const Point &shaped, std::uint32_t kinds) {
  const std::uint32_t type = (shaped.type & RANK_BITS) | kinds;
  return shaped.elements > 1 ? type | complexed(kinds) : type;
}

// What a record of the result owns, where the result is written over it.
void releaseoverwritten(const Run &run, Element &result);

// New records for the result of a run. False where there is no storage.
inline bool newrecords(Run &run) {
  run.fresh = true;
  run.result = run.count == 0 ? nullptr : static_cast<Element *>(tryblock(run.count * sizeof(Element)));
  return run.result || run.count == 0;
}
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
