// GREATER: the left is above the right by more than #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(greater, Comparison<Above>)
