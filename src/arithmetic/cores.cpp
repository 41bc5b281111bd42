// The dyadic instructions by number.
#include "arithmetic/cores.h"

#include "arithmetic/pairs.h"
#include "arithmetic/scalars.h"
#include "spaces/instructions.h"

namespace morvik {

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#define DYADIC(f) extern const Dyadic f##cores;
#include "tables/instructions.def"

const Dyadic *dyadiccores(std::uint16_t instruction) {
  switch (instruction) {
#define DYADIC(f) return &f##cores;
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) \
  case number:                                                                  \
    handler break;
#include "tables/instructions.def"
    default:
      break;
  }
  return nullptr;
}

}  // namespace morvik
