// How two operands of a dyadic scalar instruction fit together, and what the Point of their result is.
#pragma once

#include "arithmetic/pairs.h"

namespace morvik {

struct OperandFit {
  const Point *shaped;  // the operand whose shape the result has
  std::uint32_t count;
  bool leftextends, rightextends;  // extends to the other
};

// An operand of no elements leaves the other as the result, and no core sees it.
inline bool hasnoelements(const Point &p) {
  return isempty(p) || (isspace(p) && p.elements == 0);
}

// A structure of several members counts as a scalar by its flags, and does not extend.
inline bool extends(const Point &p) {
  return isscalarlike(p) && p.elements == 1;
}

inline bool sameshape(const Point &left, const Point &right) {
  if (left.rank != right.rank || left.elements != right.elements) return false;
  if (left.shape_pointer == right.shape_pointer) return true;
  for (std::int32_t axis = left.rank - 1; axis >= 0; --axis)
    if (left.shape_pointer[axis].integer != right.shape_pointer[axis].integer) return false;
  return true;
}

// Of two spaces, of which one may extend to the other. False where they do not fit.
inline bool fitshapes(const Point &left, const Point &right, OperandFit &fit) {
  fit.leftextends = extends(left);
  fit.rightextends = extends(right);
  if (!fit.leftextends && !fit.rightextends && !sameshape(left, right)) return false;
  const bool rightshaped = fit.leftextends && (!fit.rightextends || (left.rank == 0 && right.rank > 0));
  fit.shaped = rightshaped ? &right : &left;
  fit.count = fit.shaped->elements;
  return true;
}

// The same of any two operands: 0, or message 17 or 162.
std::int32_t fitoperands(const Dyadic &d, const Point &left, const Point &right, OperandFit &fit);

// The run over two operands that fit; where its result goes is left open.
inline Run makerun(const Point &left, const Point &right, const OperandFit &fit) {
  Run run{};
  run.left = left.data_pointer;
  run.right = right.data_pointer;
  run.leftstep = fit.leftextends ? 0 : 1;
  run.rightstep = fit.rightextends ? 0 : 1;
  run.resultstep = 1;
  run.count = fit.count;
  return run;
}

// The Point of what a run made, with a reference of its own on the shape.
Point resultpoint(const Point &left, const Point &right, const OperandFit &fit, const Run &run);

}  // namespace morvik
