// One thread's share of an instruction of the pool, by number: the twins of the scalar instructions, and the seeds of
// the generators.
#include "machine/slicing.h"

#include "arithmetic/generator.h"
#include "arithmetic/scalars.h"
#include "operators/interval.h"
#include "spaces/instructions.h"
#include "spaces/work.h"

namespace morvik {

namespace {

using Share = void(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept;

template <MonadicSlice *work>
void sharemonadic(const Point &instruction, std::uint32_t index, std::uint64_t *) noexcept {
  work(to_coprocessors.operand, &instruction, to_coprocessors.context, index);
}
template <DrawingSlice *work>
void sharedrawing(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept {
  work(to_coprocessors.operand, &instruction, to_coprocessors.context, index, state);
}
template <DyadicSlice *work>
void sharedyadic(const Point &instruction, std::uint32_t index, std::uint64_t *) noexcept {
  Point *stack = to_coprocessors.operand;
  work(&stack, &instruction, to_coprocessors.context, index);
}

// By instruction number; null where an instruction is no scalar one.
#define MONADIC(f) sharemonadic<vec_##f>
#define DRAWING(f) sharedrawing<vec_##f>
#define DYADIC(f) sharedyadic<vec_##f>
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) {handler},
constexpr struct {
  Share *share;
} Shares[instructions::COUNT] = {
#include "tables/instructions.def"
};

}  // namespace

void workslice(const Point &instruction, std::uint32_t index, std::uint64_t *state) noexcept {
  const std::uint16_t number = instruction.instruction;
  if (number == instructions::SEED || number == instructions::RANDOMISE)
    SEED_PRNGS(static_cast<std::int32_t>(index), state, to_coprocessors.origin);
  else if (number == instructions::INTERVAL)
    vec_interval(index);
  else if (Share *share = Shares[number].share)
    share(instruction, index, state);
}

}  // namespace morvik
