// The actions of keywords.
#pragma once

#include <cstdint>

#include "frontend/keywords.h"

namespace morvik {

// Does the spelling mean a variable here?
bool hasmeaning(const char *text);
// Writes the Point of a keyword: a VARIABLE if the text has a meaning (returns 0), else an OPERATOR (returns 1).
// Messages 27, 807.
int oper(const char *text, std::uint16_t instruction);
// Writes an OPERATOR Point, whatever the text means. Messages 27, 807.
void emitoperator(const char *text, std::uint16_t instruction, std::uint16_t modifier);
// All that one row of keywords.def asks for. BREAK jumps. Messages 27, 74, 79, 807.
void keyword(const Keyword &row, const char *text);
// MASK after WRAP or REFLECT, however it is spelled.
void emitmask();

}  // namespace morvik
