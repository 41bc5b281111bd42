// LOG10: the logarithm to the base 10.
#include "arithmetic/fixedbase.h"

MONADIC_SCALAR(log10, LogarithmOf<Ten>)
