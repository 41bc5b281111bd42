// Values made from nothing: scalars, the empty vector, FILE elements.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

namespace morvik {

// Makes a Point the integer scalar of this value (form 8), in a fresh block. Nothing is released. Message 27.
void makeinteger(Point &point, std::int64_t value);
void makereal(Point &point, double value, std::uint16_t form);
// Gives a record the number of this tag, REAL or above, with these components, in a fresh block where the kind owns
// them. The rest of the record stays. Message 27, the record left whole.
void setnumber(Element &element, std::int32_t tag, const double *parts);
// Makes a Point the empty vector, whose shape is one extent of 0. Nothing is released. Message 27.
void makeempty(Point &point);

// FILE elements. Copies of one share a cell that holds the stream, so that it is closed once, by whoever comes first.
// The counted name and the references of the descriptor are handed over. Message 27, nothing taken.
void makehandle(Element &element, char *name, std::FILE *stream, const Point &descriptor);
// The open stream, null once it was closed.
std::FILE *handlestream(const Element &element);
// Notes a new stream, or null after closing.
void sethandlestream(Element &element, std::FILE *stream);

}  // namespace morvik
