// One thread's share of an instruction of the pool, by number: the twins of the scalar instructions, and the seeds of
// the generators.
#include "machine/slicing.h"

#include "arithmetic/generator.h"
#include "arithmetic/scalars.h"
#include "operators/interval.h"
#include "spaces/instructions.h"
#include "spaces/work.h"

namespace morvik {

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  case number:                                                                  \
    handler;                                                                    \
    break;
#define MONADIC(f) vec_##f(work.operand, &instruction, work.context, index)
#define DRAWING(f) vec_##f(work.operand, &instruction, work.context, index, state)
#define DYADIC(f) vec_##f(&stack, &instruction, work.context, index)

void workslice(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept {
  const Work &work = to_coprocessors;
  Point *stack = work.operand;
  if (instruction.instruction == instructions::SEED || instruction.instruction == instructions::RANDOMISE)
    return SEED_PRNGS(static_cast<std::int32_t>(index), state, work.origin);
  if (instruction.instruction == instructions::INTERVAL) return vec_interval(index);
  switch (instruction.instruction) {
#include "tables/instructions.def"
    default:
      break;
  }
}

}  // namespace morvik
