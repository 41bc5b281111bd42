// The instructions of one operand as data, and a row for one of them.
#pragma once

#include "byhand.h"

namespace morvik {
#define MONADIC(f) extern const Monadic f##monadic;
#define DRAWING(f) MONADIC(f)
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#include "tables/instructions.def"
}  // namespace morvik

// A row for `name`, whose function is `f`: what a loop by hand does with x, which is of kind T.
#define MONAD(T, name, f, goal, what) \
  enter(one<T>(#name, f##monadic, goal, [](const T &x) { return what; }), largest<T>())
