// Private copies of what others may hold too.
#pragma once

#include <cstddef>

#include "spaces/point.h"

namespace morvik {

// A private copy of a FUNCTION Point's Programme block, header included; what the Points hold is raised.
// The FUNCTION keeps its own block. Message 27.
Point *copyfun(const Point *function);

// A private copy of records that somebody else may hold too: octonions in fresh blocks, one more reference on the
// rest. Owned by the caller. Message 27.
Element *copyelements(const Element *records, std::size_t count);
// One record copied so: `to` owns what it holds.
void copyelement(Element &to, const Element &from);

// Makes the data block of a Point one that nobody else sees. Nothing happens where it is so already. Message 27, the
// Point left whole.
void makeprivate(Point &point);

}  // namespace morvik
