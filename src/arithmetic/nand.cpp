// NAND: 1 less the smaller of two truths.
#include "arithmetic/logic.h"

DYADIC_SCALAR(nand, Logic<complement<conjunction>>)
