// From instruction number to handler and class.
#include "machine/dispatch.h"

#include <array>

#include "arithmetic/generator.h"
#include "arithmetic/scalars.h"
#include "frontend/contexts.h"
#include "machine/classes.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "operators/interval.h"
#include "operators/reduce.h"
#include "spaces/sysvars.h"

namespace morvik {

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
constexpr std::size_t CLASSES = 37;
constexpr std::array<Needs, CLASSES> makeclasses() {
  std::array<Needs, CLASSES> c{};
#define ARGUMENTCLASS(number, wait, operands, more) c[number] = {Wait::wait, operands, Takes::more};
#include "tables/classes.def"
#undef ARGUMENTCLASS
  return c;
}
constexpr std::array<Needs, CLASSES> Classes = makeclasses();

#define MONADIC(f) &monadic<f>
#define DRAWING(f) &drawing<f>
#define DYADIC(f) &dyadic<f>
#define SPACE(f) &space<f>
#define HANDLER(f) &f
#define NOTIMPLEMENTED &notimplemented
#define RESTRICTED &restricted
#define NOTHING &nothing
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) {handler, Classes[argumentclass]},

}  // namespace

const Action Actions[instructions::COUNT] = {
#include "tables/instructions.def"
    {&notimplemented, {}},
};

}  // namespace morvik
