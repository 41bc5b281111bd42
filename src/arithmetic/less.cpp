// LESS: the left is below the right by more than #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(less, Comparison<Below>)
