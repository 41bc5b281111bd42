// What the operations of the quick loop share. They are in the headers quickvalues, quickscalars and quickflow, each
// a function quick_NAME of its row in tables/quick.def: it does all that the operation is for and steps on, or nothing.
#pragma once

#include <cstdint>

#include "machine/decode.h"
#include "machine/level.h"
#include "spaces/counters.h"
#include "spaces/instructions.h"
#include "spaces/loose.h"
#include "spaces/work.h"

namespace morvik {

// What the loop is to do next: the operation at `op`; what the Point there says; a look around, as a body ran; or
// leave the level, at the END of the Programme (ENDED) or by a RETURN (LEFT).
enum class Then { NEXT, SLOW, LOOK, ENDED, LEFT };

// One run of the quick loop. Its parts live in registers: it is given to functions that are inlined alone.
struct Quickly {
  Level *level;
  const Op *ops;
  const Op *op;
  Point *sp;
  // What ran since the counters of the machine were brought up to date.
  std::int64_t points, work, moreflops;  // beyond one flop for each work
  // Nothing but operations ran since the level began: no level here has contexts to go back from.
  bool plain;
};

[[gnu::always_inline]] inline Then step(Quickly &q, int count) {
  q.op += count;
  q.points += count;
  return Then::NEXT;
}

// Brings the counters up to date, and stores the top: before all that may jump, and before all that looks.
[[gnu::always_inline]] inline void synchronise(Quickly &q) {
  q.level->sp = q.sp;
  operators += static_cast<double>(q.points);
  if (q.work != 0) {
    operations += static_cast<double>(q.work);
    from_coprocessor[0].total_flops += static_cast<double>(q.work + q.moreflops);
  }
  q.points = q.work = q.moreflops = 0;
}

// Are there one or two values for the level to consume?
[[gnu::always_inline]] inline bool holds(const Quickly &q, int count) {
  return count == 1 ? q.sp >= q.level->floor : q.sp > q.level->floor;
}
[[gnu::always_inline]] inline bool holdsmany(const Quickly &q, std::ptrdiff_t count) {
  return q.sp + 1 >= q.level->floor + count;
}
[[gnu::always_inline]] inline bool isfull(const Quickly &q) {
  return q.sp >= stacktop;
}

// loosen, at once where the slot is loose already.
[[gnu::always_inline]] inline bool quickloosen(Point &slot) {
  return isloose(slot) || loosen(slot);
}

}  // namespace morvik
