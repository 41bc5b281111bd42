// NOTLESS: the left is not below the right by more than #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(notless, Comparison<NotBelow>)
