// Values made of what a caller has at hand, and names for them.
#pragma once

#include <cstddef>

#include "spaces/point.h"

namespace morvik {

// Gives a zeroed Point the shape and the flags of a space of this rank and these extents (fastest first), and room for
// its `count` records of one kind, which the caller fills and counts in `elements`. The Point is in custody.
// Message 27.
void beginspace(Point &space, std::size_t rank, const std::size_t *extents, std::size_t count, std::uint32_t kind);
// A number of 1, 2, 4 or 8 parts. Message 27.
void setparts(Element &element, const double *part, std::size_t parts);

// A character vector of the bytes, whatever they are. Owned by the caller. Message 27.
Point buildtext(const char *bytes, std::size_t length);
// A vector whose members are these values, which it takes over. Message 27, with the members left alone.
Point buildnested(const Point *members, std::size_t count);
// A vector of texts. Message 27.
Point buildtexts(const char *const *texts, std::size_t count);

// What a plain name of the global table means: the place of its value. Message 27.
Point *entered(const char *name);
// Sets it to a value, which is taken over.
void setvalue(Point *place, const Point &value);

}  // namespace morvik
