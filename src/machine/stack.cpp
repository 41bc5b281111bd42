// The instructions that move Points on the value stack. All of them see no deeper than the floor of the level.
#include <algorithm>
#include <cstring>
#include <utility>

#include "failure/custody.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/copies.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

bool ismark(const Point &point) {
  return isinstruction(point, instructions::MARK);
}

// The MARK nearest to the top, or the slot below the floor.
Point *findmark(const Level &level) {
  Point *p = level.sp;
  while (p >= level.floor && !ismark(*p)) --p;
  return p;
}

Next pushcount(Level &level, std::int64_t count) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  pushinteger(level, count);
  return Next::FETCH;
}

// What COLLECT makes of nothing: like any vector that it makes of scalars, it has depth 0.
Next pushempty(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  Point empty;
  makeempty(empty);
  empty.depth = 0;
  pushowned(level, empty);
  return Next::FETCH;
}

// The flag word that a collected vector leaves: its low bits hold the number of kinds found, and no HAS bit stands
// until an operation computes them again. Kept: whoever reads such a space goes by the tags of its elements.
std::uint32_t collectedtype(const Point *values, std::ptrdiff_t count) {
  std::uint32_t kinds = 0;
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    kinds |= values[i].type & (KIND_BITS | STRUCTURED);
    if (values[i].rank > 0) kinds |= STRUCTURED;
  }
  return ISVECTOR | static_cast<std::uint32_t>(__builtin_popcount(kinds));
}

// Turns the values of the level from `values` to the top into one vector in the first one's slot. A scalar gives its
// record, a symbolic Point is stored whole in one, and a space of rank 1 or more is enclosed.
void collectvalues(Level &level, Point *values) {
  const std::ptrdiff_t count = level.sp - values + 1;
  Point result{};
  result.rank = ranks::VECTOR;
  result.elements = static_cast<std::uint32_t>(count);
  result.type = collectedtype(values, count);
  // All memory comes before the first move. What is allocated belongs to the vector already, so that a failure releases
  // it.
  Custody made;
  takecustody(made, releasepoint, &result);
  result.shape_pointer = newshape(static_cast<std::int16_t>(count));
  result.data_pointer = newelements(static_cast<std::size_t>(count));
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    result.data_pointer[i] = {};
    result.data_pointer[i].tag = tags::FILLER;
  }
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    Element &element = result.data_pointer[i];
    if (values[i].rank == ranks::SCALAR) {
      copyelement(element, values[i].data_pointer[0]);
    } else if (values[i].rank > 0) {
      element.subarray = newpoint();
      element.tag = tags::SUBARRAY;
      *element.subarray = {};
    }
  }
  endcustody(made);
  for (std::ptrdiff_t i = 0; i < count; ++i) {
    Element &element = result.data_pointer[i];
    if (values[i].rank == ranks::SCALAR) {
      dereferencepoint(&values[i]);
    } else if (values[i].rank > 0) {
      result.depth = std::max(result.depth, static_cast<std::int16_t>(values[i].depth + 1));
      *element.subarray = values[i];
    } else {
      std::memcpy(&element, &values[i], sizeof element);
    }
  }
  *values = result;
  level.sp = values;
}

}  // namespace

Next doclear(Level &level) {
  while (hasvalues(level, 1)) droptop(level);
  return Next::FETCH;
}

Next dodiscard(Level &level) {
  if (hasvalues(level, 1)) droptop(level);
  return Next::FETCH;
}

Next doright(Level &level) {
  if (!hasvalues(level, 2)) return Next::FETCH;
  dereferencepoint(level.sp - 1);
  level.sp[-1] = level.sp[0];
  --level.sp;
  return Next::FETCH;
}

Next doswap(Level &level) {
  if (hasvalues(level, 2)) std::swap(level.sp[0], level.sp[-1]);
  return Next::FETCH;
}

Next doduplicate(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  pushcopy(level, *level.sp);
  return Next::FETCH;
}

Next domark(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  pushcopy(level, *level.instruction);
  return Next::FETCH;
}

Next docountstack(Level &level) {
  return pushcount(level, level.sp - level.floor + 1);
}

Next docounttomark(Level &level) {
  return pushcount(level, level.sp - findmark(level));
}

Next docleartomark(Level &level) {
  const Point *mark = findmark(level);
  while (level.sp > mark) droptop(level);
  return Next::FETCH;
}

Next docollect(Level &level) {
  Point *mark = findmark(level);
  const std::ptrdiff_t count = level.sp - mark;
  if (mark >= level.floor) {  // the mark's slot receives the result
    if (count == 0) {
      droptop(level);
      return pushempty(level);
    }
    if (count > 1) collectvalues(level, mark + 1);
    dereferencepoint(mark);
    *mark = mark[1];
    --level.sp;
    return Next::FETCH;
  }
  if (count == 0) return pushempty(level);
  if (level.instruction->modifier == instructions::MARK) return fail(level, messages::NO_MARK);
  if (count > 1) collectvalues(level, mark + 1);
  return Next::FETCH;
}

}  // namespace morvik
