// Calls: frames on the one value stack, and the execution forms around them.
#include "machine/calls.h"

#include <algorithm>
#include <cstring>

#include "failure/custody.h"
#include "failure/exception.h"
#include "frontend/contexts.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "machine/machine.h"
#include "machine/texts.h"
#include "spaces/copies.h"
#include "spaces/instructions.h"
#include "spaces/loose.h"
#include "spaces/messages.h"
#include "spaces/processstack.h"
#include "spaces/symbols.h"
#include "spaces/work.h"

namespace morvik {

namespace {

// Where the process stack ends, it is to end here, where a fault finds everything whole, and not a few calls further
// in, inside the heap: the stack that a level needs for its own work is touched before it begins.
constexpr std::size_t WORKING_STACK = std::size_t{256} * 1024;
[[gnu::noinline]] void touchstack() {
  [[maybe_unused]] volatile char stack[WORKING_STACK];
  stack[0] = 0;
}

}  // namespace

void (*reservestack)() = touchstack;

void askforstack() {
  if (stackends()) outofstorage();
}

namespace {

inline Level makeinner(Level &outer, Point *start, Point *header, Point *frame, Point *floor) {
  reservestack();
  const bool ownsframe = frame != outer.frame || floor != outer.floor;
  Entry *const names = header ? localnames(header[header->elements]) : nullptr;
  return Level(
      {&outer, start, header, names, frame, floor, outer.memory, outer.level + 1, outer.slot, outer.vacant, ownsframe});
}

}  // namespace

Point *makelocals(Level &level, int arguments, int locals) {
  Point *frame = level.sp - arguments + 1;
  if (resultinflight >= frame) joinpool(level.sp);
  std::memmove(frame + locals, frame, static_cast<std::size_t>(arguments) * sizeof(Point));
  for (int i = 0; i < locals; ++i) {
    frame[i] = {};
    frame[i].rank = ranks::VARIABLE;
  }
  level.sp += locals;
  return frame;
}

Level innerlevel(Level &outer, Point *programme, Point *frame, Point *floor) {
  return makeinner(outer, programme, nullptr, frame, floor);
}
Level innerlevel(Level &outer, const Point &function, Point *frame, Point *floor) {
  return makeinner(outer, function.programme + 1, function.programme, frame, floor);
}

namespace {

void runframed(Level &level, const Point &function) {
  Point *frame = level.frame, *floor = level.floor;
  if (function.arguments >= 0) {
    frame = function.locals > 0 ? makelocals(level, function.arguments, function.locals)
                                : level.sp - function.arguments + 1;
    floor = frame + function.locals;
  }
  Level inner = innerlevel(level, function, frame, floor);
  runinnerloose(inner, nullptr);
}

void releasebody(Custody &c) {
  dropbody(static_cast<Point *>(c.held));
}

}  // namespace

void dropbody(Point *programme) {
  Point function{};
  function.programme = programme;
  dereferencefun(&function);
}

void callheld(Level &level, const Point &function) {
  runframed(level, function);
  makewhole(level.sp);
}

void callkept(Level &level, const Point &function) {
  Point *const programme = function.programme;
  reference(programme);
  Custody kept;
  takecustody(kept, releasebody, programme);
  runframed(level, function);
  endcustody(kept);
  if (referencecount(programme) > 1) [[likely]]
    release(programme);
  else
    dropbody(programme);
}

namespace {

// There is no room for the locals of the function on top. It is gone, and its arguments with it; the locals that had
// room stay.
[[gnu::cold]] Next faillocals(Level &level) {
  const std::ptrdiff_t locals = level.sp->locals;
  joinpool(level.sp);
  for (int left = level.sp->arguments; left >= 0; --left) droptop(level);
  makelocals(level, 0, static_cast<int>(std::min(locals, stacktop - level.sp)));
  return fail(level, messages::STACK_FULL);
}

}  // namespace

Next call(Level &level) {
  const int arguments = level.sp->arguments;
  if (arguments >= 0 && level.sp - 1 < level.floor + arguments - 1) {
    droptop(level);
    return fail(level, messages::TOO_FEW_ARGUMENTS);
  }
  if (arguments >= 0 && level.sp - 1 + level.sp->locals > stacktop) return faillocals(level);
  Point function = *level.sp--;
  Custody kept;
  takecustody(kept, releasepoint, &function);
  callheld(level, function);
  endcustody(kept);
  dereferencepoint(&function);
  return Next::FETCH;
}

Next executetop(Level &level) {
  if (isfunction(*level.sp)) return call(level);
  if (istext(*level.sp) && level.sp->rank < 2) return executetext(level);
  return fail(level, messages::EXECUTE_ARGUMENT);
}

Next doexecute(Level &level) {
  return executetop(level);
}

Next doyieldto(Level &level) {
  if (!isfunction(*level.sp)) return fail(level, messages::YIELDTO_ARGUMENT);
  return call(level);
}

// A function that runs when it is pushed. A body that others hold too is copied, so that only this one changes.
Next dooperator(Level &level) {
  Point &function = *level.sp;
  if (!isfunction(function)) return Next::FETCH;
  if (referencecount(function.programme) != 1) {
    Point *copy = copyfun(&function);
    Point old = function;
    reference(function.name);
    if (function.context) reference(function.context);
    function.programme = copy;
    dereferencepoint(&old);
  }
  function.programme->type |= ISOPERATOR;
  function.type = function.programme->type;
  return Next::FETCH;
}

namespace {

// What YIELD attaches to a function: how far its run had come. Nothing reads it back; the Points are copies that own
// nothing.
struct Continuation {
  std::int64_t instruction;
  Point *frame;
  Point *current;
  std::int32_t index;      // of the current Point in its Programme
  std::int32_t slots;      // from the frame to the top
  std::int32_t floors[2];  // slots from the frame to the floor, twice
};
static_assert(sizeof(Continuation) == sizeof(Point));

Point *makecontinuation(const Level &level) {
  const std::ptrdiff_t slots = level.sp - level.frame + 1;
  auto *block = static_cast<Point *>(newblock((static_cast<std::size_t>(slots) + 2) * sizeof(Point)));
  const auto locals = static_cast<std::int32_t>(level.floor - level.frame);
  const Continuation c = {instructions::YIELD,
                          level.frame,
                          level.current,
                          static_cast<std::int32_t>(level.current - level.start),
                          static_cast<std::int32_t>(slots),
                          {locals, locals}};
  std::memcpy(block, &c, sizeof c);
  std::memcpy(block + 1, level.frame, static_cast<std::size_t>(slots) * sizeof(Point));
  block[slots + 1] = {};
  return block;
}

}  // namespace

Next doyield(Level &level) {
  if (!hasvalues(level, 1) || !isfunction(*level.sp)) return endlevel(level);
  Point &function = *level.sp;
  Custody made;
  Point *continuation = makecontinuation(level);
  takecustody(made, releaseblock, continuation);
  Point *copy = copyfun(&function);
  endcustody(made);
  Point old = function;
  reference(function.name);
  if (function.context) reference(function.context);
  function.programme = copy;
  dereferencepoint(&old);
  dereference(copy->link);
  copy->link = continuation;
  return endlevel(level);
}

Next doendprocess(Level &level) {
  if (level.level > 0) return reachend(level);
  exception(messages::GOODBYE, &level.sp, level.instruction);
  return Next::LEAVE;
}

}  // namespace morvik
