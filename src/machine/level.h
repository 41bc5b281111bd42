// One activation of the machine, and what the handlers of instructions share.
#pragma once

#include <cassert>

#include "coprocessor/coprocessor.h"
#include "diagnostics/exception.h"
#include "machine/machine.h"
#include "machine/timing.h"
#include "spaces/counters.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"

struct Level {
  Point *current;            // the Point at work, in the Programme
  const Point *instruction;  // what runs: `current`, or `rotation` when a decision let it run
  Context *meaning;          // where names are looked up
  Point *frame;              // local 1
  Point *floor;              // the lowest slot that this level may consume
  Point *sp;                 // the top of the stack; always stored before anything that may jump
  Entry **memory;
  Point *start;
  Point *header;   // of the function whose body this is, for the facts that its type word collects; null: a text
  Context *entry;  // the meaning at entry, which the level goes back to at its end
  std::int64_t entryuses;  // how often that link was pushed then
  Level *caller;
  int level;
  int slot;
  int decision;  // of the last CHECK; -1 before there was one
  bool trace, step;
  bool ownsframe;          // frame and floor are not the caller's: the end of the level cleans them
  double stamp, operated;  // the clock and the count of operations when the instruction began; only with opstime
  bool stamped;            // the level began a moment ago: its first instruction needs no reading of its own
  Point rotation;          // an instruction under IF_YES or IF_NO, as it reads without them
};

// The innermost activation.
extern Level *running;

// What a handler leaves to be done: go on with the next Point, or with level.current as it stands now; run
// level.instruction (again); or return level.sp.
enum class Next { FETCH, JUMPED, AGAIN, LEAVE };
using Handler = Next(Level &);

#define INSTRUCTION(number, name, argumentclass, key, handler) handler
#define SPACE(f) void f(Point **, const Point *, Point *);
#define HANDLER(f) Handler f;
#include "machine/instructions.def"

// By instruction number.
extern Handler *const Handlers[instructions::COUNT];

// Reports a message about the present instruction and leaves the level.
[[gnu::cold]] Next fail(Level &level, int number);
// Leaves the level as a failure does that was reported already.
[[gnu::cold]] Next levelreturn(Level &level);
// Ends the level as RETURN and FUNCTIONEND do: locals are released and the results move down over them.
Next endlevel(Level &level);
// Ends the level as the END of its Programme does: its frame stays as it is.
Next reachend(Level &level);

// Is there a value to consume?
inline bool hasvalues(const Level &level, std::ptrdiff_t count) {
  return level.sp - level.floor >= count - 1;
}
inline bool stackfull(const Level &level) {
  return level.sp >= stacktop;
}

// The one element of a scalar or one-element space, null for anything else.
inline const Element *oneelement(const Point &point) {
  return isspace(point) && isscalarlike(point) ? point.data_pointer : nullptr;
}

// Releases the top and drops it.
inline void droptop(Level &level) {
  assert(level.sp != unfinished);
  dereferencepoint(level.sp--);
}
// Pushes a Point whose references the stack takes over. The caller has checked for room.
inline void pushowned(Level &level, const Point &point) {
  *++level.sp = point;
}
// Pushes a copy and raises its references.
inline void pushcopy(Level &level, const Point &point) {
  assert(&point != unfinished);
  if (ownsoneblock(point)) [[likely]]
    reference(point.data_pointer);
  else
    referencepoint(&point);
  *++level.sp = point;
}
// Pushes an integer scalar. Message 27.
inline void pushinteger(Level &level, std::int64_t value) {
  Point scalar;
  makeinteger(scalar, value);
  pushowned(level, scalar);
}

// What the argument class of the present instruction says: run it; pass it by, as the empty rule did its work; or
// leave the level, as a failure was reported. Waits for the pool where the class asks for it.
enum class Admission { RUN, PASS, LEAVE };
Admission admit(Level &level);
// The empty rule: an empty operand of two gives way to the other. Was one of them empty?
bool emptyrule(Level &level);

// The value of a VARIABLE or ADDRESS Point, rebound to the present context where its rule asks for it; null: none.
Point *resolve(Level &level, Point &name);

// Goes back to the context at entry: one pop for each push.
void popcontexts(Level &level);
// Is a link of the chain the inner one itself, or outside of it?
bool isouter(const Context *link, const Context *inner);

// Calls the FUNCTION on top of the stack.
Next call(Level &level);
// The same with a function that the caller holds: its arguments are on top, and there is room for its locals.
void callheld(Level &level, const Point &function);
// Runs what is on top as EXECUTE does: a FUNCTION, or the text of a character space. 995 for anything else.
Next executetop(Level &level);
// Runs a Programme one level further in, in this frame and floor, and stores the new top. What the run took is not
// charged to the present instruction. `header` is the function's, null for a text.
void runnested(Level &level, Point *start, Context *meaning, Point *frame, Point *floor, Point *header);
// Runs the body of a function so, under its own table if it has one. The caller holds the function.
void runbody(Level &level, const Point &function, Point *frame, Point *floor);
