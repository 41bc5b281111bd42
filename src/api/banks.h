// The two banks of storage: names, value stacks and system variables.
#pragma once

#include <cstddef>

#include "machine/level.h"
#include "spaces/point.h"
#include "spaces/symbols.h"

namespace morvik {

inline constexpr std::size_t BANKS = 2;
inline constexpr std::size_t BANK_QUADS = 8;

// Bank 1 is set up and torn down like bank 0, and never entered.
extern Entry *memory[BANKS];       // the global table of names
extern Context *variables[BANKS];  // the chain over it
extern Point stack[BANKS][STACK_POINTS];
extern Point *stacktops[BANKS];  // the last usable slot
extern Point *sp;                // the top of the value stack, kept between inputs; the start of `stack` when empty

// Makes names, stacks and system variables of both banks; bank 0 is in use afterwards. Releases everything of both.
void openbanks();
void closebanks();

#ifdef MORVIK_CHECKING
// After a text: aborts unless every block that is alive has the count of its owners, and each flag word keeps its
// promise.
void recountblocks();
#endif

}  // namespace morvik
