// The handlers of encapsulation and of MATCH.
#include <algorithm>

#include "arithmetic/frame.h"
#include "machine/level.h"
#include "operators/capsulate.h"
#include "operators/match.h"
#include "spaces/making.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

void countelements(const Level &level) {
  if (isspace(*level.sp)) operations += level.sp->elements;
}

std::int32_t rankof(const Point &p) {
  return std::max(p.rank, 0);
}

// Axes of the same extent in both, from the fastest on.
std::uint64_t sameaxes(const Point &left, const Point &right) {
  std::uint64_t same = 0;
  for (std::int32_t axis = 0; axis < std::min(rankof(left), rankof(right)); ++axis)
    same += left.shape_pointer[axis].integer == right.shape_pointer[axis].integer ? 1 : 0;
  return same;
}

bool sameform(const Point &left, const Point &right) {
  return left.elements == right.elements && left.depth == right.depth && left.rank == right.rank &&
         sameaxes(left, right) == static_cast<std::uint64_t>(rankof(left));
}

void replacetwo(Level &level, const Point &result) {
  droptop(level);
  droptop(level);
  pushowned(level, result);
}

Next matchexactly(Level &level) {
  const Point &left = level.sp[-1], &right = level.sp[0];
  const std::uint32_t elements = std::max(left.elements, right.elements);
  from_coprocessor[0].flops = 1;
  Point result;
  makeinteger(result, sameform(left, right) ? exactmatch(left, right) : 0);
  countwork(elements, from_coprocessor[0].flops);
  replacetwo(level, result);
  return Next::FETCH;
}

}  // namespace

Next doencapsulate(Level &level) {
  countelements(level);
  encapsulate(level.sp, &level.sp, level.instruction);
  return Next::FETCH;
}

Next dodecapsulate(Level &level) {
  decapsulate(level.sp);
  countelements(level);
  return Next::FETCH;
}

Next doenascii(Level &level) {
  enascii(level.sp, tolerance(quads));
  countelements(level);
  return Next::FETCH;
}

Next dodeascii(Level &level) {
  deascii(level.sp);
  countelements(level);
  return Next::FETCH;
}

Next domatch(Level &level) {
  if (level.instruction->modifier == instructions::EXACT) return matchexactly(level);
  const Point &left = level.sp[-1], &right = level.sp[0];
  from_coprocessor[0].flops = 1;
  Similarity s = match(left, right);
  s.score += (left.depth == right.depth ? 1U : 0U) + (left.rank == right.rank ? 1U : 0U) + sameaxes(left, right);
  countwork(static_cast<double>(s.weight) / 2, from_coprocessor[0].flops);
  const auto possible = static_cast<double>(s.weight) + std::max(rankof(left), rankof(right)) + 2;
  Point result;
  makereal(result, static_cast<double>(s.score) / possible, forms::COMPUTED);
  replacetwo(level, result);
  return Next::FETCH;
}

}  // namespace morvik
