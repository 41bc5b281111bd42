// EACH: a function applied to every element of a space.
#include <algorithm>
#include <bit>

#include "failure/exception.h"
#include "machine/classes.h"
#include "machine/gather.h"
#include "machine/leave.h"
#include "spaces/copies.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

constexpr std::uint32_t KEPT_FLAGS = ~(ELEMENT_BITS | COMPLEXED | STRUCTURED | ISSTRUCTURE | NAME_BEARING | ISLOCAL);

// Is there an element that no function can be given? A file, or what fills a gap.
bool hasungivable(const Point &data) {
  for (std::uint32_t i = 0; i < data.elements; ++i) {
    const std::int32_t tag = data.data_pointer[i].tag;
    if (tag >= 0 && tag != tags::SUBARRAY && kindbit(tag) == 0) return true;
  }
  return false;
}

// Pushes a scalar of an element. It is put together in its slot at once: copied right after it was written it would
// miss store forwarding.
void pushscalar(Level &level, Gathering &g, const Element &element) {
  Element *const record = takerecord(g);
  Point &argument = g.base[1];
  argument = {};
  argument.type = ISSCALAR | (g.data.type & PURITY_BITS) | kindbit(element.tag);
  argument.elements = 1;
  argument.data_pointer = record;
  if (isplainrecord(element)) [[likely]] {
    copyplain(*record, element);
    level.sp = &argument;
    return;
  }
  setfiller(*record);
  level.sp = &argument;
  copyelement(*record, element);
}

// Pushes what the function sees of an element: a scalar of it, the enclosed space, or the symbolic Point that stands
// there.
void pushelement(Level &level, Gathering &g, const Element &element) {
  if (element.tag > tags::SUBARRAY) [[likely]]
    pushscalar(level, g, element);
  else if (element.tag == tags::SUBARRAY)
    pushcopy(level, *element.subarray);
  else
    pushcopy(level, std::bit_cast<Point>(element));
}

Next monadiceach(Level &level) {
  Gathering g;
  begingathering(level, g, 2);
  Level inner = gatheringlevel(level, g);
  Rounds rounds{0, g.data.elements, g.base + 1, false};
  rounds.elements = g.data.data_pointer;
  rounds.flags = g.data.type & PURITY_BITS;
  rounds.results = g.result.data_pointer;
  rounds.made = &g.result.elements;
  while (rounds.index < rounds.count) {
    pushelement(level, g, rounds.elements[rounds.index++]);
    callforelement(inner, g, g.function.locals == 0 ? &rounds : nullptr);
  }
  g.kinds |= rounds.kinds;
  g.depth = std::max(g.depth, rounds.depth);
  endgathering(level, g, KEPT_FLAGS);
  return Next::FETCH;
}

}  // namespace

Next doeach(Level &level) {
  if (emptyrule(level)) return Next::FETCH;
  const Point &function = level.sp[0];
  if (!isfunction(function)) return fail(level, messages::EACH_NO_FUNCTION);
  if (function.arguments != 1 && function.arguments != 2) return fail(level, messages::EACH_ARGUMENTS);
  // Kept: a function of two arguments is admitted, taken away, and does no work.
  if (function.arguments == 2) {
    droptop(level);
    return Next::FETCH;
  }
  if (!isspace(level.sp[-1]) || hasungivable(level.sp[-1]))
    exceptionjump(messages::RESTRICTION, &level.sp, level.instruction);
  return monadiceach(level);
}

}  // namespace morvik
