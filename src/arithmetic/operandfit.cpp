// Conformability and shapes of the dyadic scalar instructions.
#include "arithmetic/operandfit.h"

#include <algorithm>

#include "arithmetic/pairs.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

// What an operand says of itself. The low bits of a space count kinds, if anything, and are no name bits.
std::uint32_t flagsof(const Point &p) {
  return isspace(p) ? p.type & ~(NAME_BEARING | ISLOCAL) : p.type;
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
  if (left.rank != right.rank && (combined & SCALAR_LIKE) == 0) return messages::NOT_CONFORMABLE;
  if ((combined & d.refused) != 0) return messages::NOT_CONFORMABLE;
  if (!isspace(left) || !isspace(right)) return messages::INCOMPATIBLE_TYPES;
  return fitshapes(left, right, fit) ? 0 : messages::NOT_CONFORMABLE;
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
