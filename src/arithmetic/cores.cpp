// The dyadic instructions by number.
#include "arithmetic/cores.h"

#include "spaces/instructions.h"

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#define DYADIC(f) extern const Dyadic f##cores;
#include "machine/instructions.def"

const Dyadic *dyadiccores(std::uint16_t instruction) {
  switch (instruction) {
#define DYADIC(f) return &f##cores;
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  case number:                                                                  \
    handler break;
#include "machine/instructions.def"
    default:
      break;
  }
  return nullptr;
}
