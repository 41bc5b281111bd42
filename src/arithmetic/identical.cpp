// IDENTICAL: the same value to the last bit, or both no number.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(identical, Identity<true>)
