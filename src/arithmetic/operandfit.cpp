// Conformability and shapes of the dyadic scalar instructions.
#include "arithmetic/operandfit.h"

#include <algorithm>

#include "arithmetic/pairs.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

// A structure of several members counts as a scalar by its flags, and does not extend.
bool extends(const Point &p) {
  return isscalarlike(p) && p.elements == 1;
}

// What an operand says of itself. The low bits of a space count kinds, if anything, and are no name bits.
std::uint32_t flagsof(const Point &p) {
  return isspace(p) ? p.type & ~(NAME_BEARING | ISLOCAL) : p.type;
}

bool sameshape(const Point &left, const Point &right) {
  if (left.elements != right.elements) return false;
  for (std::int32_t axis = left.rank - 1; axis >= 0; --axis)
    if (left.shape_pointer[axis].integer != right.shape_pointer[axis].integer) return false;
  return true;
}

// The flag word of a result of which these kinds were found.
std::uint32_t resulttype(const Point &left, const Point &right, const OperandFit &fit, std::uint32_t kinds) {
  const std::uint32_t either = left.type | right.type;
  std::uint32_t type = (fit.shaped->type & ~(COMPLEXED | ISEMPTY | ELEMENT_BITS)) | kinds | (either & ISPROBABLE);
  if ((kinds & STRUCTURED) != 0) type |= either & ISSTRUCTURE;
  if (fit.count == 0) type |= ISEMPTY;
  return fit.count > 1 ? type | complexed(kinds) : type;
}

}  // namespace

std::int32_t fitoperands(const Dyadic &d, const Point &left, const Point &right, OperandFit &fit) {
  const std::uint32_t combined = flagsof(left) | flagsof(right);
  const bool samerank = left.rank == right.rank;
  if (!samerank && (combined & SCALAR_LIKE) == 0) return messages::NOT_CONFORMABLE;
  if ((combined & d.refused) != 0) return messages::NOT_CONFORMABLE;
  if (!isspace(left) || !isspace(right)) return messages::INCOMPATIBLE_TYPES;
  fit.leftextends = extends(left);
  fit.rightextends = extends(right);
  if (!fit.leftextends && !fit.rightextends && !(samerank && sameshape(left, right))) return messages::NOT_CONFORMABLE;
  const bool rightshaped = fit.leftextends && (!fit.rightextends || (left.rank == 0 && right.rank > 0));
  fit.shaped = rightshaped ? &right : &left;
  fit.count = fit.shaped->elements;
  return 0;
}

Run makerun(const Point &left, const Point &right, const OperandFit &fit) {
  Run run{};
  run.left = left.data_pointer;
  run.right = right.data_pointer;
  run.leftstep = fit.leftextends ? 0 : 1;
  run.rightstep = fit.rightextends ? 0 : 1;
  run.resultstep = 1;
  run.count = fit.count;
  return run;
}

Point resultpoint(const Point &left, const Point &right, const OperandFit &fit, const Run &run) {
  Point result = *fit.shaped;
  reference(result.shape_pointer);
  result.type = resulttype(left, right, fit, run.kinds);
  result.depth = std::max(left.depth, right.depth);
  result.data_pointer = run.result;
  return result;
}

}  // namespace morvik
