// NOTIDENTICAL: not the same value.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(notidentical, Identity<false>)
