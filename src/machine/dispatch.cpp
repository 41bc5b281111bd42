// From instruction number to handler and class.
#include <array>

#include "arithmetic/random.h"
#include "arithmetic/scalars.h"
#include "machine/level.h"

namespace {

template <MonadicFunction f>
Next monadic(Level &level) {
  f(level.sp, level.instruction, quads, 0);
  return Next::FETCH;
}

template <DrawingFunction f>
Next drawing(Level &level) {
  f(level.sp, level.instruction, quads, 0, &prngs_seed);
  return Next::FETCH;
}

template <DyadicFunction f>
Next dyadic(Level &level) {
  f(&level.sp, level.instruction, quads, 0);
  return Next::FETCH;
}

template <void (*f)(Point **, const Point *, Point *)>
Next space(Level &level) {
  f(&level.sp, level.instruction, quads);
  return Next::FETCH;
}

Next notimplemented(Level &level) {
  return fail(level, 993);
}
Next restricted(Level &level) {
  return fail(level, 994);
}
Next nothing(Level &) {
  return Next::FETCH;
}

// By argument class.
constexpr std::array<Needs, 37> makeclasses() {
  std::array<Needs, 37> c{};
  for (const unsigned n : {1U, 5U, 7U}) c[n].wait = Wait::ALWAYS;
  for (const unsigned n : {10U, 11U, 12U, 13U, 14U, 15U}) c[n].operands = 1;
  for (const unsigned n : {18U, 19U, 20U, 21U, 22U, 23U}) c[n].operands = 2;
  for (const unsigned n : {28U, 29U, 30U, 31U}) c[n].operands = 3;
  for (const unsigned n : {13U, 15U}) c[n].wait = Wait::ALWAYS;
  // The scalar ones wait here rather than in their frames, where a failure of the join could not move the stack.
  for (const unsigned n : {10U, 11U, 18U, 19U, 21U, 23U, 25U, 29U, 31U}) c[n].wait = Wait::WHEN_LARGE;
  for (const unsigned n : {10U, 11U, 18U, 19U}) c[n].scalar = true;
  for (const unsigned n : {18U, 19U}) c[n].empties = true;
  return c;
}
constexpr std::array<Needs, 37> Classes = makeclasses();

#define MONADIC(f) &monadic<f>
#define DRAWING(f) &drawing<f>
#define DYADIC(f) &dyadic<f>
#define SPACE(f) &space<f>
#define HANDLER(f) &f
#define NOTIMPLEMENTED &notimplemented
#define RESTRICTED &restricted
#define NOTHING &nothing
#define INSTRUCTION(number, name, argumentclass, key, handler) {handler, Classes[argumentclass]},

}  // namespace

const Action Actions[instructions::COUNT] = {
#include "machine/instructions.def"
    {&notimplemented, {}},
};
