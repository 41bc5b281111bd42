// One activation of the machine, and what the handlers of instructions share.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>

#include "spaces/making.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"
#include "spaces/work.h"

namespace morvik {

// The value stack of a bank. Slot 0 is never used: the empty stack has its top there.
inline constexpr std::size_t STACK_POINTS = 16584;

// The last usable slot of the stack in use.
extern Point *stacktop;

struct Level;
struct Call;

// Where a Programme runs, as often as it does.
struct Activation {
  Level *caller;  // null: the outermost
  Point *start;
  Point *header;  // of the function whose body this is, for the facts that its type word collects; null: a text
  Entry *names;   // the body's own table, in which it runs; null for none
  Point *frame;   // local 1
  Point *floor;   // the lowest slot that this level may consume
  Entry **memory;
  int level;
  int slot;
  Call *vacant;    // where the next call of the quick loop has its record
  bool ownsframe;  // frame and floor are not the caller's: the end of the level cleans them
};

// And how far a run has come.
struct Level : Activation {
  Point *current;            // the Point at work, in the Programme
  const Point *instruction;  // what runs: `current`, or `rotation` when a decision let it run
  Point *sp;                 // the top of the stack; always stored before anything that may jump
  Context *meaning;          // where names are looked up
  Context *entry;            // the meaning at entry, which the level goes back to at its end
  std::int64_t entryuses;    // how often that link was pushed then
  int decision;              // of the last CHECK; -1 before there was one
  bool trace, step;
  bool stamped;            // the level began a moment ago: its first instruction needs no reading of its own
  double stamp, operated;  // the clock and the count of operations when the instruction began; only with opstime
  Point rotation;          // an instruction under IF_YES or IF_NO, as it reads without them

  constexpr Level() = default;
  explicit Level(const Activation &place) : Activation(place) {}
};

// The innermost activation.
extern Level *running;

// Makes a level ready to run, under these names and on this stack.
inline void beginlevel(Level &level, Context *meaning, Point *sp) {
  level.current = level.start;
  level.instruction = level.start;
  level.sp = sp;
  level.meaning = level.entry = meaning;
  level.entryuses = meaning->uses;
  level.decision = -1;
  level.trace = level.step = level.stamped = false;
  level.stamp = level.operated = 0;
}

// What a handler leaves to be done: go on with the next Point, or with level.current as it is now; run
// level.instruction (again); or return level.sp.
enum class Next { FETCH, JUMPED, AGAIN, LEAVE };
using Handler = Next(Level &);

// Is there a value to consume?
inline bool hasvalues(const Level &level, std::ptrdiff_t count) {
  return level.sp + 1 >= level.floor + count;
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
  assert(level.sp != resultinflight);
  dereferencepoint(level.sp--);
}
// Pushes a Point whose references the stack takes over. The caller has checked for room.
inline void pushowned(Level &level, const Point &point) {
  *++level.sp = point;
}
// Pushes a copy and raises its references.
inline void pushcopy(Level &level, const Point &point) {
  assert(&point != resultinflight);
  referencepoint(&point);
  *++level.sp = point;
}
// Pushes an integer scalar. Message 27.
inline void pushinteger(Level &level, std::int64_t value) {
  Point scalar;
  makeinteger(scalar, value);
  pushowned(level, scalar);
}

}  // namespace morvik
