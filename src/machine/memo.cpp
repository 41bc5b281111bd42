// RESULT and REEVALUATE: what a function gave for these arguments, kept in the global table under the text of both.
#include "failure/custody.h"
#include "frontend/symtab.h"
#include "machine/calls.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/messages.h"
#include "spaces/symbols.h"
#include "spaces/work.h"
#include "text/keys.h"

namespace morvik {

namespace {

// Functions that draw, or that read or write anything outside, are never kept.
constexpr std::uint32_t NEVER_MEMOISED = ISPROBABLE | INOUT;

// The END of a body: where the text of the function itself is kept, in the name word, once it was made.
Point &endpoint(const Point &function) {
  return function.programme[function.elements];
}

// The key: the arguments from the deepest up, then the function. A counted string that the caller owns.
char *makekey(Level &level, int arguments) {
  const Point &function = *level.sp;
  Point &end = endpoint(function);
  if (!end.name) end.name = TOAddr1(stringdup(""), &function);
  char *key = stringdup("");
  for (Point *argument = level.sp - arguments; argument < level.sp; ++argument) {
    argument->type &= ~ISPROBABLE;
    key = TOAddr1(key, argument);
  }
  Custody kept;
  takecustody(kept, releaseblock, key);
  char *joined = stringcat(key, end.name);
  endcustody(kept);
  return joined;
}

// Keeps the top as the value of the key, which it takes over; or forgets the key, if the run left nothing to keep.
void storeresult(Level &level, char *key, Point &header, const Point *floor) {
  if (level.sp > floor) header.type |= GLOBALCHANGE;
  const bool single = level.sp == floor;
  const bool drawn = single && (level.sp->type & ISPROBABLE) != 0;
  if (drawn) header.type |= ISPROBABLE;
  if (single && !drawn) {
    Entry *entry = entername(*level.memory, key);
    referencepoint(level.sp);
    Point old = *entry->meaning;
    *entry->meaning = *level.sp;
    dereferencepoint(&old);
    return;
  }
  if (Entry *entry = checkhash(*level.memory, key)) forgethash(entry);
  release(key);
}

// Puts the kept value in the place of the function and its arguments.
void recallresult(Level &level, const Point &value, int arguments) {
  Point copy = value;
  referencepoint(&copy);
  for (int i = 0; i <= arguments; ++i) droptop(level);
  pushowned(level, copy);
}

Next callmemoised(Level &level, bool anew) {
  if (!isfunction(*level.sp)) return fail(level, messages::RESULT_ARGUMENT);
  const int arguments = level.sp->arguments;
  if (arguments < 0 || (level.sp->programme->type & NEVER_MEMOISED) != 0) return call(level);
  if (level.sp - 1 < level.floor + arguments - 1) return call(level);  // which reports it
  joinpool(level.sp);
  char *key = makekey(level, arguments);
  const Entry *entry = checkhash(*level.memory, key);
  if (!anew && entry && !isend(*entry->meaning)) {
    recallresult(level, *entry->meaning, arguments);
    release(key);
    return Next::FETCH;
  }
  Point *floor = level.sp - arguments;
  Point function = *level.sp;  // the header must outlive the call
  referencepoint(&function);
  Custody kept, keykept;
  takecustody(kept, releasepoint, &function);
  takecustody(keykept, releaseblock, key);
  const Next next = call(level);
  joinpool(level.sp);
  endcustody(keykept);
  if (next == Next::FETCH)
    storeresult(level, key, *function.programme, floor);
  else
    release(key);
  endcustody(kept);
  dereferencepoint(&function);
  return next;
}

}  // namespace

Next doresult(Level &level) {
  return callmemoised(level, false);
}
Next doreevaluate(Level &level) {
  return callmemoised(level, true);
}

}  // namespace morvik
