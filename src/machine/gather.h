// What EACH and MASK share: one call of a function for each element, and the space that its results make.
#pragma once

#include <utility>

#include "failure/custody.h"
#include "machine/level.h"
#include "machine/quick.h"

namespace morvik {

// The operands, off the stack and in custody, and the result as far as it is made.
struct Gathering {
  Point function;
  Point data;
  Point weights;   // the mask; of MASK only
  Point result;    // a vector of `elements` records so far, while it is made
  Point *base;     // the slot below the operands, where the top is between two calls
  Element *spare;  // the block of the last scalar, for the next one; null for none
  std::uint32_t kinds;
  std::int16_t depth;
  Custody held;
};

// Takes so many operands off the stack: the function, and the data below it, or the mask and the data. Message 27, with
// the operands in place.
void begingathering(Level &level, Gathering &g, int operands);
// A block of one record of undefined contents. Message 27.
inline Element *takerecord(Gathering &g) {
  return g.spare ? std::exchange(g.spare, nullptr) : newelements(1);
}
// The level in which the function runs for each element.
Level gatheringlevel(Level &level, const Gathering &g);
// Calls the function on the space on top, and makes its topmost value the next element of the result. Messages 806, 27;
// 994 for an OPERATOR Point, the operands left whole. With `rounds`, elements that follow may be done on the way.
void callforelement(Level &inner, Gathering &g, Rounds *rounds = nullptr);
// Makes what a round of EACH left in its slot the next result, and hands out the next element there. False, with
// nothing done, where one of them is for callforelement alone, or where there is no storage.
bool passon(Point &slot, Rounds &rounds);
// Puts the result in the place of the operands, in the shape of the data; its kinds go into the flags that are kept.
void endgathering(Level &level, Gathering &g, std::uint32_t kept);
// Drops the operands, after a failure that was found between two calls.
[[noreturn]] void failgathering(Level &level, int number);
// Pushes the empty vector. There is room.
void pushempty(Level &level);

}  // namespace morvik
