// LD: the logarithm to the base 2.
#include "arithmetic/fixedbase.h"

MONADIC_SCALAR(ld, LogarithmOf<Two>)
