// Calls of functions, and the levels in which bodies run.
#pragma once

#include "machine/level.h"

namespace morvik {

// Calls the FUNCTION on top of the stack.
Next call(Level &level);
// The same with a function that the caller holds: its arguments are on top, and there is room for its locals.
void callheld(Level &level, const Point &function);
// The same, held by the call itself for as long as the body runs. May leave loose values.
void callkept(Level &level, const Point &function);
// Gives up one reference of a body, which may be the last.
void dropbody(Point *programme);
// Runs what is on top as EXECUTE does: a FUNCTION, or the text of a character space. 995 for anything else.
Next executetop(Level &level);

// Called before a level begins: sees to it that the process stack has room for its work. At the start it touches that
// stack, so that its end is met as a fault; askforstack reports message 27 and jumps.
extern void (*reservestack)();
void askforstack();

// Moves the arguments on top up and makes fresh locals below them. Returns the first local.
Point *makelocals(Level &level, int arguments, int locals);
// A level inside `outer` for a Programme, or for the body of a function that the caller holds. It may run many times.
Level innerlevel(Level &outer, Point *programme, Point *frame, Point *floor);
Level innerlevel(Level &outer, const Point &function, Point *frame, Point *floor);

}  // namespace morvik
