// The dyadic instructions by number.
#include "arithmetic/cores.h"

#include "spaces/instructions.h"

#define MONADIC(f)
#define DRAWING(f)
#define SPACE(f)
#define HANDLER(f)
#define NOTIMPLEMENTED
#define RESTRICTED
#define NOTHING
#define INSTRUCTION(number, name, argumentclass, key, handler) handler
#define DYADIC(f) extern const Dyadic f##cores [[gnu::weak]];
#include "machine/instructions.def"
#undef DYADIC
#undef INSTRUCTION

const Dyadic *dyadiccores(std::uint16_t instruction) {
  switch (instruction) {
#define DYADIC(f) return &f##cores;
#define INSTRUCTION(number, name, argumentclass, key, handler) \
  case number:                                                 \
    handler break;
#include "machine/instructions.def"
    default:
      break;
  }
  return nullptr;
}
