// EQUIVALENT: the difference is within #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(equivalent, Comparison<Within>)
