// From instruction number to handler and class. The handlers themselves are in the file of their kind.
#pragma once

#include <cstdint>

#include "frontend/contexts.h"
#include "machine/classes.h"
#include "machine/level.h"
#include "spaces/instructions.h"

namespace morvik {

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#define HANDLER(f) Handler f;
#include "tables/instructions.def"

// By instruction number. The last row is that of every number above, too.
struct Action {
  Handler *handler;
  Needs needs;
};
extern const Action Actions[instructions::COUNT];
inline const Action &actionof(std::uint16_t number) {
  if (number >= instructions::COUNT) [[unlikely]]
    return Actions[instructions::COUNT - 1];
  return Actions[number];
}

}  // namespace morvik
