// Bodies of functions as arrays of quick operations, made once and kept with the body.
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "arithmetic/scalars.h"
#include "machine/level.h"
#include "spaces/convert.h"
#include "spaces/loose.h"

namespace morvik {

enum class Quick : std::uint16_t {
#define QUICK(name, replaces, effect, meaning) name,
#include "tables/quick.def"
};

// One operation. It is at the index of the first Point that it replaces; those of the others follow it, for a
// jump that ends there.
struct Op {
  const void *place;  // where the quick loop does it
  Quick code;
  std::uint16_t form;  // of a literal
  std::uint32_t type;  // of a literal, as a loose scalar has it; of what is decided: the decision that lets it run
  Point *point;        // the first Point
  union {
    std::int64_t value;  // of a literal
    const Op *target;    // of a jump
  };
  union {
    LooseMonadic *monadic;
    const Dyadic *dyadic;
  };
};

// Printing a whole real makes an integer of its record, for all who hold the block. So a copy of such a number shares
// the block, and is never loose. Is this one, of a loose type?
inline bool changesinprint(std::uint32_t type, std::int64_t value) {
  return type == LOOSE_REAL && isinteger(std::bit_cast<double>(value));
}

// The operations of the body of a level; null where it is to be run by the loop: a text, a body that runs for the first
// time and is not about to run often, one that there is no storage for, and any where the quick loop is switched off.
const Op *decode(const Activation &level, bool often);
inline const Op *decoded(const Activation &level, bool often) {
  const Point *const header = level.header;
  return header && header->block && header->block != header ? static_cast<const Op *>(header->block)
                                                            : decode(level, often);
}

}  // namespace morvik
