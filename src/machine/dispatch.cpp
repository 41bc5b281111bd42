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
#include "spaces/messages.h"
#include "spaces/sysvars.h"

namespace morvik {

namespace {

template <MonadicFunction f>
Next monadicinstruction(Level &level) {
  f(level.sp, level.instruction, quads, 0);
  return Next::FETCH;
}

template <DrawingFunction f>
Next drawinginstruction(Level &level) {
  f(level.sp, level.instruction, quads, 0, &prngs_seed);
  return Next::FETCH;
}

template <DyadicFunction f>
Next dyadicinstruction(Level &level) {
  f(&level.sp, level.instruction, quads, 0);
  return Next::FETCH;
}

template <void (*f)(Point **, const Point *, Point *)>
Next arrayinstruction(Level &level) {
  f(&level.sp, level.instruction, quads);
  return Next::FETCH;
}

Next notimplemented(Level &level) {
  return fail(level, messages::NOT_IMPLEMENTED);
}
Next restricted(Level &level) {
  return fail(level, messages::RESTRICTION);
}
Next donothing(Level &) {
  return Next::FETCH;
}

// By argument class.
constexpr std::size_t CLASS_COUNT = classes::MODIFIER + 1;
constexpr std::array<Needs, CLASS_COUNT> makeclassneeds() {
  std::array<Needs, CLASS_COUNT> c{};
#define ARGUMENT_CLASS(number, name, wait, operands, more) c[number] = {Wait::wait, operands, Takes::more};
#include "tables/classes.def"
#undef ARGUMENT_CLASS
  return c;
}
constexpr std::array<Needs, CLASS_COUNT> ClassNeeds = makeclassneeds();

#define MONADIC(f) &monadicinstruction<f>
#define DRAWING(f) &drawinginstruction<f>
#define DYADIC(f) &dyadicinstruction<f>
#define SPACE(f) &arrayinstruction<f>
#define HANDLER(f) &f
#define NOTIMPLEMENTED &notimplemented
#define RESTRICTED &restricted
#define NOTHING &donothing
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  {handler, ClassNeeds[classes::argumentclass]},

}  // namespace

constinit const Action Actions[instructions::COUNT] = {
#include "tables/instructions.def"
    {&notimplemented, {}},
};

}  // namespace morvik
