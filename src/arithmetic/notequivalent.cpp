// NOTEQUIVALENT: the difference is not within #CT.
#include "arithmetic/comparison.h"

DYADIC_SCALAR(notequivalent, Comparison<NotWithin>)
