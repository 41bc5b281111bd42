// NOTGREATER: the left is not above the right by more than #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(notgreater, Comparison<NotAbove>)
