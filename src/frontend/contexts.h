// The chain of contexts, which is searched from the inside out, and the tables that functions keep.
#pragma once

#include <cstdint>

#include "spaces/recount.h"
#include "spaces/symbols.h"

namespace morvik {

// The first chain over a table, which stays the caller's: a block of two records; the first is returned. Message 27.
// The block is released plainly, after everything that was pushed on it.
Context *makemeaning(Entry *table);

Entry *checkmeaning(const Context *chain, const char *name);
Entry *checksym_until(const Context *chain, const char *name, const Entry *stop);
// The entry in the chain; a name that is absent is entered in the innermost table. The name is taken over. Null for an
// empty name (large tables). Message 27.
Entry *meaning(Context *chain, char *name, Entry **table, char sigil = 0);

// Pushes a table and returns the inner link; the chain raises the table's count for itself. Message 27.
Context *pushtable(Context *chain, Entry *table);
// Pushes a fresh table of this kind. Message 27.
Context *opentable(Context *chain, std::uint16_t kind);
Context *pushsymtabs(Context *chain, Context *other);
// Undoes one push and returns the link to use from now on. A permanent link stays.
Context *popsymtabs(Context *link);

// Attaches the table of a link, still pushed, to the FUNCTIONEND Point of the function that opened it. The name links
// of the body's Points do not keep it: wipelocalnames (spaces/refderef.h) is what ends it. Message 27.
void attachlocalnames(Point &functionend, const Context *chain);
// The table of its own that a function's FUNCTIONEND Point holds, null for none.
Entry *localnames(const Point &functionend);

void recountlocalnames(Recount &recount);

// Wipes the local names of every function in being: at shutdown, for the functions that keep themselves.
void wipealllocalnames();

}  // namespace morvik
