// Points by their fields, for the prompt of a debugger.
#include "text/flags.h"

#include <cstdio>

#include "spaces/blocks.h"
#include "spaces/point.h"

namespace morvik {

namespace {

struct Flag {
  const char *name;
  std::uint32_t bit;
};

constexpr Flag Flags[] = {
#define FLAG(name, value) {" " #name, name},
#include "tables/flags.def"
#undef FLAG
};

void writeshape(const Point &space) {
  std::fputs(" shape: [ ", stdout);
  for (std::int32_t axis = 0; axis < space.rank && space.shape_pointer; ++axis)
    std::printf("%ld ", static_cast<long>(space.shape_pointer[axis].integer));
  std::fputs("]", stdout);
}

}  // namespace

void detail_type(const char *prefix, std::uint32_t word) {
  if (*prefix) std::printf(" %s", prefix);
  if (word == 0) std::fputs(" END", stdout);
  for (const Flag &flag : Flags) {
    if ((word & flag.bit) == 0 || flag.bit == ISOPERATOR) continue;
    if (flag.bit == YES && (word & CONDITIONAL) != 0) continue;
    std::fputs(flag.name, stdout);
    if (flag.bit == CONDITIONAL) std::fputs((word & YES) != 0 ? " YES" : " NO", stdout);
  }
  if ((word & ISOPERATOR) != 0) std::fputs(" ISOPERATOR", stdout);
}

void writeflags(std::uint32_t word) {
  detail_type("", word);
}

void writefields(const Point *point) {
  constexpr int FIRST_RANK = -ranks::END;
  detail_type("", point->type);
  if (point->rank > ranks::VECTOR || point->rank < ranks::END)
    std::printf(" rank %d", point->rank);
  else
    std::printf(" %s", Ranks[point->rank + FIRST_RANK]);
  if (isfunction(*point))
    std::printf(" arguments %d, locals %d,", point->arguments, point->locals);
  else
    std::printf(" depth %d,", point->depth);
  std::printf(" elements %u ", point->elements);
  const bool named = !isspace(*point);
  if (named)
    std::printf("%s", (point->type & NAME_BEARING) != 0 && point->name ? point->name : "");
  else
    writeshape(*point);
  // The data of an address into the stack is no block.
  const bool onstack = point->rank == ranks::ADDRESS && (point->type & ISLOCAL) != 0;
  std::printf(" refr(data_pointer) %ld, refr(shape_pointer) %ld\n",
              static_cast<long>(referencecount(onstack ? nullptr : point->block)),
              static_cast<long>(referencecount(point->shape_pointer)));
}

}  // namespace morvik
