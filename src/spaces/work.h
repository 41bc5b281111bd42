// Work that is shared out over the threads of the pool: the one work record, a reply record a thread, the gate, and how
// elements are cut into slices. This is all that most of the tree knows of the pool; coprocessor, where the threads
// live, hangs itself in before main.
//
// The main thread posts an instruction, works the first slice, and goes on with the programme. Who keeps two
// instructions from meeting on one space:
// - There is one work record: whoever posts joins first.
// - The result in flight stays in its stack slot until the join. Whoever reads, moves or drops that slot joins first:
//   the argument classes see to the operands of an instruction, `joinpool` to the rest.
// - Nothing is reported and no jump leaves while anything is in flight, as that may have failed before (`joinahead`).
// - What the slices read lives until the join: the operands are kept back in `deferred`.
// - A slice writes its own records alone, and the counts that it changes are under the lock.
#pragma once

#include <atomic>
#include <cstdint>

#include "spaces/point.h"

namespace morvik {

extern Point *resultinflight;  // the stack slot of the result in flight, null for none

// The one channel from the main thread to the pool; written only while all coprocessors are idle.
struct Work {
  const Point *instruction;  // null: no work
  Point *operand;            // the stack Point that receives the result; null for SEED and RANDOMISE
  std::uint64_t fresh;       // the result block is new: octonions need blocks of their own
  std::uint64_t swapped;     // `first` is the right operand
  std::uint64_t combined;    // the operands' flag words ORed, with SAMERANK
  double tolerance;          // what #CT held when a comparison began
  std::uint64_t count;       // elements of the result: what is sliced
  void *release;             // a counted block that the join must release: what INTERVAL writes
  Element *first;            // null but for a dyadic instruction
  Element *second;           // the only source of a monadic instruction
  Element *result;
  Point *context;       // quads
  std::int64_t origin;  // what #IO held when ROLL began; SEED: the seed
};

struct Reply {
  const Point *instruction;
  Point *operand;
  std::uint64_t flags;  // HAS bits and COMPLEXED found in the slice
  Point deferred;       // slots 0 and 1: the left and the right operand, as they are put back if a slice fails
  double flops;         // of the present instruction
  double total_flops;
  char request;
  void (*request_function)(Point **operand, const Point *instruction, Point *context);
  Point *context;
  char done;
  std::int32_t failure;   // a message number noted by the slice, 0 for none
  std::uint64_t *state;   // the thread's generator, where the slice draws from it; null where it does not
  std::uint64_t undrawn;  // what it held before
  double operations;      // element operations on nested spaces in the slice
};

extern std::uint32_t processors;   // work slots, slot 0 being the main thread
extern std::uint32_t cpus;         // slots that were started
extern std::int32_t thrds;         // threads a processor
extern std::int64_t MIN_PARALLEL;  // an instruction of at most so many elements stays serial
extern Work to_coprocessors;
extern Reply *from_coprocessor;  // `processors` records; slot 0 always exists
extern Reply mainreply;          // what it is where there is no pool

// The parallel gate: does work over so many elements go to the pool?
inline bool goesparallel(std::int64_t count) {
  return processors > 1 && count >= static_cast<std::int64_t>(processors) && count > MIN_PARALLEL;
}

// Starts the pool on what to_coprocessors holds and returns at once; the caller works slice 0. False where there is no
// pool to start: the caller works all of it. After it the caller defers the operands, or calls the slices back.
extern bool (*postcoprocessors)();
// Keeps the operands of what was posted until the join, which releases them; the data of the one whose block the result
// is written to is null. A monadic instruction has no right one.
void deferoperands(const Point &left);
void deferoperands(const Point &left, const Point &right);
// Before the slice of a thread draws: the state of its generator, which comes back if any slice fails.
void notedraws(std::uint32_t index, std::uint64_t *state);
// Stops the slices and waits for them: the main thread's own slice failed. All records of theirs are whole then.
extern void (*recallslices)();

// The join: returns when no slice is in flight, the result is whole, and the operands are released. Where a slice
// failed, the operands are back on the stack, as far as no other value took the place of the right one, and the failure
// is reported and jumps. `top` is the caller's stack top; the number of operands documents the call site.
extern void (*wait_for_coprocessors)(Point *&top, int operands);
// Joins if anything is in flight.
inline void joinpool(Point *&top) {
  if (resultinflight) [[unlikely]]
    wait_for_coprocessors(top, 0);
}

// Set while slices are to stop at their next poll: they return INTERRUPTED then.
extern std::atomic<bool> slicesstopped;
inline bool isstopped() {
  return slicesstopped.load(std::memory_order_relaxed);
}

inline constexpr std::int64_t CLOCK_SEED = -1;  // RANDOMISE's number

// Half open: first to behind the last.
struct Slice {
  std::uint32_t begin, end;
};

// Slice `index` of `parts`. The slices tile `count` elements; one may be empty. While the shares are small they are
// equal; once each exceeds MIN_PARALLEL the first slice, the main thread's, stays that small and the others share the
// rest. A share is rounded up where its fraction is 0.75 or more, and the last slice takes what is over.
Slice slice(std::uint32_t count, std::uint32_t parts, std::uint32_t index);

// The first and the last element of a slice that is not empty.
inline std::uint32_t LOWER(std::uint32_t count, std::uint32_t parts, std::uint32_t index) {
  return slice(count, parts, index).begin;
}
inline std::uint32_t UPPER(std::uint32_t count, std::uint32_t parts, std::uint32_t index) {
  return slice(count, parts, index).end - 1;
}

}  // namespace morvik
