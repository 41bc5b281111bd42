// How a level is left.
#pragma once

#include "machine/level.h"
#include "spaces/symbols.h"

namespace morvik {

// Is the top shown after each text?
extern char echoing;

// Reports a message about the present instruction and leaves the level.
[[gnu::cold]] Next fail(Level &level, int number);
// Leaves the level as a failure does that was reported already.
[[gnu::cold]] Next levelreturn(Level &level);
// Ends the level as RETURN and FUNCTIONEND do: locals are released and the results move down over them.
Next endlevel(Level &level);
// Ends the level as the END of its Programme does: its frame stays as it is.
Next reachend(Level &level);

// Goes back to the context at entry: one pop for each push.
void unwindcontexts(Level &level);
inline void popcontexts(Level &level) {
  if (level.meaning != level.entry || level.entry->uses != level.entryuses) unwindcontexts(level);
}
// Is a link of the chain the inner one itself, or outside of it?
bool isouter(const Context *link, const Context *inner);

}  // namespace morvik
