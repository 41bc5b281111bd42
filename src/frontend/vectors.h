// The actions of literals, as Points; their elements are in literals.h. All report 27, and 807 where a Point is
// written.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/tokens.h"
#include "spaces/point.h"

namespace morvik {

// Gives a literal the shape of its bracket, as RESHAPE does, which is above this layer and sets the hook: 0, or 1
// after a report.
extern int (*reshapeliteral)(Point *data, Point *shape, const Point *instruction);

// A number, a named constant or a bit pattern: a scalar Point, or one element more of the literal that is open.
void elementliteral(const Token &token);
// A string or a vector (ISVECTOR), or a structure (ISSCALAR); inside an open literal 808.
void openliteral(std::uint32_t type);
void characters(const char *bytes, std::size_t length);
void closestring();
// `more`: flags for the type word.
void closevector(std::uint32_t more);
// The shape of the literal that is open follows: its extents one by one (1100), then its end, which reports what
// reshape does. Neither jumps: a literal whose bracket is refused stays a vector.
void openshape(bool string);
void extent(char *text, std::size_t length);
void closeshape();

}  // namespace morvik
