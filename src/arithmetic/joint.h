// How two operands of a dyadic scalar instruction fit together, and what the Point of their result is.
#pragma once

#include "arithmetic/pairs.h"

namespace morvik {

struct Joint {
  const Point *shaped;  // the operand whose shape the result has
  std::uint32_t count;
  bool leftsingle, rightsingle;  // extends to the other
};

// An operand of no elements gives way to the other, and reaches nothing below.
inline bool isvoid(const Point &p) {
  return isempty(p) || (isspace(p) && p.elements == 0);
}

// 0, or message 17 or 162.
std::int32_t conform(const Dyadic &d, const Point &left, const Point &right, Joint &joint);

// The run over two operands that fit; where its result goes is left open.
Run runover(const Point &left, const Point &right, const Joint &joint);

// The Point of what a run made, with a reference of its own on the shape.
Point resultof(const Point &left, const Point &right, const Joint &joint, const Run &run);

}  // namespace morvik
