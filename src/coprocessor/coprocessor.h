// The pool of coprocessor threads: one work record, one reply record a thread, and the join.
#pragma once

#include <cstdint>

#include "spaces/point.h"

// The one channel from the main thread to the pool; written only while all coprocessors are idle.
struct Work {
  const Point *instruction;  // null: no work
  Point *operand;            // the stack Point that receives the result
  std::uint64_t fresh;       // the result block is new: octonions need blocks of their own
  std::uint64_t swapped;     // `first` is the right operand
  std::uint64_t combined;    // the operands' flag words ORed, with SAMERANK
  std::uint64_t kind;        // INTERVAL: the element type to fill in
  double tolerance;          // what #CT held when a comparison began
  std::uint64_t form;        // INTERVAL: the form to write
  std::uint64_t count;       // elements of the result: what is sliced
  void *release;             // a block that the join must release
  Element *first;
  Element *second;  // the only source of a monadic instruction
  Element *result;
  Point *context;       // quads
  std::int64_t origin;  // what #IO held when ROLL began
};

struct Reply {
  const Point *instruction;
  Point *operand;
  std::uint64_t flags;  // HAS bits and COMPLEXED found in the slice
  Point deferred;       // slot 0: the operand to release after the join
  double flops;         // of the present instruction
  double total_flops;
  char request;
  void (*request_function)(Point **operand, const Point *instruction, Point *context);
  char done;
  char busy;
  std::int32_t failure;  // a message number noted by the slice, 0 for none
  double operations;     // element operations on nested spaces in the slice
};

extern std::uint32_t processors;   // work slots, slot 0 being the main thread
extern std::uint32_t cpus;         // slots that were started
extern std::int32_t thrds;         // threads a processor
extern std::int64_t MIN_PARALLEL;  // an instruction of at most so many elements stays serial
extern Work to_coprocessors;
extern Reply *from_coprocessor;  // `processors` records; slot 0 always exists
extern Point *quads;             // the 16 system variables of the bank in use
inline constexpr int IO_SLOT = 2, CT_SLOT = 6;

// The parallel gate: does work over so many elements go to the pool?
inline bool goesparallel(std::int64_t count) {
  return processors > 1 && count >= static_cast<std::int64_t>(processors) && count > MIN_PARALLEL;
}

// Starts the pool on what to_coprocessors holds and returns at once; the caller works slice 0. False where there is no
// pool to start: the caller works all of it.
bool postcoprocessors();

// The join: returns when no slice is in flight. The arguments document the call site and are not examined.
void wait_for_coprocessors(Point *stack, int operands);
