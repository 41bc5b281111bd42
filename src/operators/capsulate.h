// ENCAPSULATE and DECAPSULATE, ENASCII and DEASCII: how a value is carried, without a change of what it says.
#pragma once

#include "spaces/point.h"

namespace morvik {

// Each works on a Point in place, which nobody else sees afterwards. Message 27, the Point left whole.

// Folds a vector of two to eight integers and reals into one hypercomplex scalar; the enclosed spaces of a structure
// each for itself. Reports the warnings 1003 and 1004 and leaves what it cannot fold.
void encapsulate(Point *point, Point **stackpointer, const Point *instruction);
// Opens numbers into their components: a scalar into a vector, any other space into one row for each element.
void decapsulate(Point *point);
// Makes characters of whole numbers from 0 to 255, within the tolerance.
void enascii(Point *point, double tolerance);
// Makes integers of characters.
void deascii(Point *point);

}  // namespace morvik
