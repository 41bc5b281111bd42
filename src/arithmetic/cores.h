// The dyadic instructions as data, for those that work element by element inside other work: folds and masks.
#pragma once

#include "arithmetic/dyadic.h"

#define INSTRUCTION(number, name, argumentclass, key, handler) handler
#define MONADIC(f)
#define DRAWING(f)
#define DYADIC(f) extern const Dyadic f##cores;
#define SPACE(f)
#define HANDLER(f)
#define NOTIMPLEMENTED
#define RESTRICTED
#define NOTHING
#include "machine/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
#undef DYADIC
#undef SPACE
#undef HANDLER
#undef NOTIMPLEMENTED
#undef RESTRICTED
#undef NOTHING
