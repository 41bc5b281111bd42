// The dyadic instructions as data, for those that work element by element inside other work: folds and masks.
#pragma once

#include "arithmetic/pairs.h"

namespace morvik {

extern const Dyadic multiplycores;
// By instruction number; null for a number that is no dyadic scalar instruction.
const Dyadic *dyadiccores(std::uint16_t instruction);

}  // namespace morvik
