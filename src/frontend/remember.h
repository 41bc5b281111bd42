// Names as text.
#pragma once

#include <cstdio>

#include "spaces/symbols.h"

namespace morvik {

// The rule of access of a name given as text: splits a leading sigil off, if a name follows it. Returns the sigil or 0.
char splitsigil(const char *&name);

// Appends to a vector (whose data block may be null) the names of a table that were entered with this sigil, each as
// a character vector of its written name. Message 27, the vector left whole.
void list_symbols(Point *space, Entry *table, char sigil);
// Writes every definition of the chain, innermost table first, as source text. A safe point between names.
void remember(std::FILE *stream, const Context *chain);

}  // namespace morvik
