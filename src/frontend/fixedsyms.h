// The system variables #IO and #CT as names.
#pragma once

#include "spaces/symbols.h"

namespace morvik {

// The entry of #IO or #CT, checked and pinned as each look-up does it; null for any other name.
Entry *fixedsym(const char *name);
bool isfixed(const Entry *entry);

// Binds #IO or #CT, entries of no table, to a Point of quads, which stays the driver's; null unbinds the name. The word
// ahead of the Point (in the unused slot before it) serves as its count.
void bindfixedsym(const char *name, Point *value);

}  // namespace morvik
