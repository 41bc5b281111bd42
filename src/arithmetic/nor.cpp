// NOR: 1 less the larger of two truths.
#include "arithmetic/logic.h"

DYADIC_SCALAR(nor, Logic<complement<disjunction>>)
