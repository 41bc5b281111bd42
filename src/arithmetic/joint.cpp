// Conformability and shapes of the dyadic scalar instructions.
#include "arithmetic/joint.h"

#include <algorithm>

#include "arithmetic/pairs.h"

namespace morvik {

namespace {

// A structure of several members counts as a scalar by its flags, and does not extend.
bool issingle(const Point &p) {
  return isscalarlike(p) && p.elements == 1;
}

// What an operand says of itself. The low bits of a space count kinds, if anything, and are no name bits.
std::uint32_t flagsof(const Point &p) {
  return isspace(p) ? p.type & ~(NAMEBEARING | ISLOCAL) : p.type;
}

bool sameshape(const Point &left, const Point &right) {
  if (left.elements != right.elements) return false;
  for (std::int32_t axis = left.rank - 1; axis >= 0; --axis)
    if (left.shape_pointer[axis].integer != right.shape_pointer[axis].integer) return false;
  return true;
}

// The flag word of a result of which these kinds were found.
std::uint32_t resulttype(const Point &left, const Point &right, const Joint &joint, std::uint32_t kinds) {
  const std::uint32_t either = left.type | right.type;
  std::uint32_t type = (joint.shaped->type & ~(COMPLEXED | ISEMPTY | ELEMENTBITS)) | kinds | (either & ISPROBABLE);
  if ((kinds & STRUCTURED) != 0) type |= either & ISSTRUCTURE;
  if (joint.count == 0) type |= ISEMPTY;
  return joint.count > 1 ? type | complexed(kinds) : type;
}

}  // namespace

std::int32_t conform(const Dyadic &d, const Point &left, const Point &right, Joint &joint) {
  const std::uint32_t combined = flagsof(left) | flagsof(right);
  const bool samerank = left.rank == right.rank;
  if (!samerank && (combined & SCALARLIKE) == 0) return NOTCONFORMABLE;
  if ((combined & d.refused) != 0) return NOTCONFORMABLE;
  if (!isspace(left) || !isspace(right)) return INCOMPATIBLE;
  joint.leftsingle = issingle(left);
  joint.rightsingle = issingle(right);
  if (!joint.leftsingle && !joint.rightsingle && !(samerank && sameshape(left, right))) return NOTCONFORMABLE;
  const bool rightshaped = joint.leftsingle && (!joint.rightsingle || (left.rank == 0 && right.rank > 0));
  joint.shaped = rightshaped ? &right : &left;
  joint.count = joint.shaped->elements;
  return 0;
}

Run runover(const Point &left, const Point &right, const Joint &joint) {
  Run run{};
  run.left = left.data_pointer;
  run.right = right.data_pointer;
  run.leftstep = joint.leftsingle ? 0 : 1;
  run.rightstep = joint.rightsingle ? 0 : 1;
  run.resultstep = 1;
  run.count = joint.count;
  return run;
}

Point resultof(const Point &left, const Point &right, const Joint &joint, const Run &run) {
  Point result = *joint.shaped;
  reference(result.shape_pointer);
  result.type = resulttype(left, right, joint, run.kinds);
  result.depth = std::max(left.depth, right.depth);
  result.data_pointer = run.result;
  return result;
}

}  // namespace morvik
