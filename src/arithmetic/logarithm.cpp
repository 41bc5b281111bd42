// LOGARITHM: of left, to the base right.
#include "arithmetic/logarithm.h"

DYADIC_SCALAR(logarithm, Logarithm)
