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

// 0, or message 17 or 162.
std::int32_t fitoperands(const Dyadic &d, const Point &left, const Point &right, OperandFit &fit);

// The run over two operands that fit; where its result goes is left open.
Run makerun(const Point &left, const Point &right, const OperandFit &fit);

// The Point of what a run made, with a reference of its own on the shape.
Point resultpoint(const Point &left, const Point &right, const OperandFit &fit, const Run &run);

}  // namespace morvik
