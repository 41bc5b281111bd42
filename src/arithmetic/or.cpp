// OR: the larger of two truths.
#include "arithmetic/logic.h"

DYADIC_SCALAR(Or, Logic<disjunction>)
