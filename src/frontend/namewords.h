// The actions of names. `address`: after `@`. All that write a Point report 27, 807 and 808.
#pragma once

#include "spaces/symbols.h"

namespace morvik {

// Gives the pending Point the name and the value of an entry, and the present context.
void bindpending(const Entry &entry);
void plainname(const char *name, bool address);
// `sigil`: one of _ $ .
void sigilname(char sigil, const char *name, bool address);
// The token that opens the brackets; the name itself is read from the input. An empty name writes nothing.
void bracketname(const char *text, bool address);
// With its %.
void label(const char *name, bool address);
// With its &. Reports 150, 151, 152 and writes nothing then.
void local(char *text, bool address);

}  // namespace morvik
