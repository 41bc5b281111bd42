// Numbers, truths and bits as text.
#pragma once

#include <cstdint>

#include "spaces/point.h"

namespace morvik {

namespace printer {

// A number or truth after its blank.
void putnumber(const Element &element, bool source);
// The bits of a value, highest first, at least so many digits. Returns the end.
char *spellbits(char *at, std::uint64_t value, int digits);

}  // namespace printer

}  // namespace morvik
