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

struct Level;

// Where a Programme runs, as often as it does.
struct Place {
  Level *caller;  // null: the outermost
  Point *start;
  Point *header;  // of the function whose body this is, for the facts that its type word collects; null: a text
  Entry *names;   // the body's own table, in which it runs; null for none
  Point *frame;   // local 1
  Point *floor;   // the lowest slot that this level may consume
  Entry **memory;
  int level;
  int slot;
  bool ownsframe;  // frame and floor are not the caller's: the end of the level cleans them
};

// And where a run stands.
struct Level : Place {
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

  explicit Level(const Place &place) : Place(place) {}
};

// The innermost activation.
extern Level *running;

// Makes a level ready to run, under these names and on this stack.
inline void begin(Level &level, Context *meaning, Point *sp) {
  level.current = level.start;
  level.instruction = level.start;
  level.sp = sp;
  level.meaning = level.entry = meaning;
  level.entryuses = meaning->uses;
  level.decision = -1;
  level.trace = level.step = level.stamped = false;
  level.stamp = level.operated = 0;
}

// What a handler leaves to be done: go on with the next Point, or with level.current as it stands now; run
// level.instruction (again); or return level.sp.
enum class Next { FETCH, JUMPED, AGAIN, LEAVE };
using Handler = Next(Level &);

#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler
#define SPACE(f) void f(Point **, const Point *, Point *);
#define HANDLER(f) Handler f;
#include "machine/instructions.def"

// What the argument class of an instruction asks for, as classes.def tells.
enum class Wait : std::uint8_t { NO, ALWAYS, WHEN_LARGE };
enum class Takes : std::uint8_t { ANY, SCALAR, EMPTIES };
struct Needs {
  Wait wait;
  std::uint8_t operands;
  Takes takes;
};

// By instruction number. The last row is that of every number above, too.
struct Action {
  Handler *handler;
  Needs needs;
};
extern const Action Actions[instructions::COUNT];
inline const Action &actionof(std::uint16_t number) {
  if (number >= instructions::COUNT) [[unlikely]]
    return Actions[instructions::COUNT - 1];
  return Actions[number];
}

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
  referencepoint(&point);
  *++level.sp = point;
}
// Pushes an integer scalar. Message 27.
inline void pushinteger(Level &level, std::int64_t value) {
  Point scalar;
  makeinteger(scalar, value);
  pushowned(level, scalar);
}

// Waits for the pool if the operands ask for it, while a result is in flight.
void await(Level &level, const Needs &needs);
// The empty rule: an empty operand of two gives way to the other. Was one of them empty?
bool emptyrule(Level &level);

// What the argument class of the present instruction says: run it; pass it by, as the empty rule did its work; or
// leave the level, as a failure was reported.
enum class Admission { RUN, PASS, LEAVE };
[[gnu::cold]] Admission refuse(Level &level, int number);
inline Admission admit(Level &level, const Needs &needs) {
  if (unfinished) [[unlikely]]
    await(level, needs);
  if (needs.operands == 0) return Admission::RUN;
  const Point &first = *(level.sp + 1 - needs.operands);
  if (&first < level.floor) [[unlikely]]
    return refuse(level, 800);
  if (needs.takes == Takes::ANY) return Admission::RUN;
  if (isoperator(*level.sp) || isoperator(first)) [[unlikely]]
    return refuse(level, 200);
  const bool empty = needs.takes == Takes::EMPTIES && (isempty(*level.sp) || isempty(first));
  return empty && emptyrule(level) ? Admission::PASS : Admission::RUN;
}

// The value of a VARIABLE or ADDRESS Point, rebound to the present context where its rule asks for it; null: none.
Point *resolve(Level &level, Point &name);

// Goes back to the context at entry: one pop for each push.
void unwindcontexts(Level &level);
inline void popcontexts(Level &level) {
  if (level.meaning != level.entry || level.entry->uses != level.entryuses) unwindcontexts(level);
}
// Is a link of the chain the inner one itself, or outside of it?
bool isouter(const Context *link, const Context *inner);

// Calls the FUNCTION on top of the stack.
Next call(Level &level);
// The same with a function that the caller holds: its arguments are on top, and there is room for its locals.
void callheld(Level &level, const Point &function);
// Runs what is on top as EXECUTE does: a FUNCTION, or the text of a character space. 995 for anything else.
Next executetop(Level &level);

// Moves the arguments on top up and makes fresh locals below them. Returns the first local.
Point *makelocals(Level &level, int arguments, int locals);
// A level inside `outer` for a Programme, or for the body of a function that the caller holds. It may run many times.
Level innerlevel(Level &outer, Point *programme, Point *frame, Point *floor);
Level innerlevel(Level &outer, const Point &function, Point *frame, Point *floor);
// Runs it on what its caller has on the stack, and gives it the new top; a body under its own table if it has one. What
// the run took is not charged to the caller's instruction.
void runinner(Level &inner);
