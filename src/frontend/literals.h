// The text of a literal to the element that it spells.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/tokens.h"
#include "spaces/point.h"

namespace morvik {

// Turns every high minus into a minus, in place.
void fixsign(char *text, std::size_t length);
// The number at the beginning of a zero-terminated text, as strtod reads it, and the place after it.
double readdouble(const char *text, const char **after);

// Makes the element of a number (INTEGER to POLAR_OCTONION), of a named constant, or of a byte or number given by its
// bits (BINARY_NUMBER, BINARY_CHARACTER). `member`: it is in a vector literal. The block of an octonion belongs to
// the caller. The text may be changed. Messages 27, 809, 810.
void readelement(const Token &token, bool member, Element &element);

}  // namespace morvik
