// The quick loop: runs decoded bodies, with plain numbers loose on the stack.
#pragma once

#include <cstdint>

#include "machine/decode.h"
#include "machine/level.h"

namespace morvik {

// The rounds of a LOOP or a REPEAT that the quick loop does without beginning a level anew for each.
struct Rounds {
  std::int64_t index;  // of the present round; where the loop ends, of the last one that ran
  std::int64_t count;
  const Point *expected;  // where the top must be after each round; null: anywhere
  bool indexed;           // is the index pushed before each round?
  // Of EACH, which hands out elements instead: what the function is given, its flags, where the results go, how many
  // there are, their kinds, and the depth that they ask for. Null: of a loop.
  const Element *elements = nullptr;
  std::uint32_t flags = 0;
  Element *results = nullptr;
  std::uint32_t *made = nullptr;
  std::uint32_t kinds = 0;
  std::int16_t depth = 0;
};

// Is an element of EACH handed out loose?
inline bool islooseelement(const Element &e, const Rounds &rounds) {
  return (e.tag == tags::INTEGER || e.tag == tags::REAL) && e.attributes == 0 && (rounds.flags & ~kindbit(e.tag)) == 0;
}

// Where the quick loop does each operation, in the order of the table.
const void *const *placesofoperations();

// Runs a level that was made ready, to its end: by the quick loop as far as that goes, and by the loop of the machine
// from there on. What it leaves on the stack may be loose. `rounds` null: one round.
void runbody(Level &level, const Op *ops, Rounds *rounds);

// For the loop of the machine where it times each instruction: appends to the value of a name, or takes a record from
// it, in its own block, if that is what the next three Points say. Otherwise each step would copy the value, and the
// times would tell of what no other run does. Leaves the level at the first of the Points; false: nothing is done.
bool storeinplace(Level &level);

}  // namespace morvik
