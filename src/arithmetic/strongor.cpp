// STRONGOR: the sum of two truths, at most 1.
#include "arithmetic/logic.h"

DYADIC_SCALAR(strongor, Logic<strongdisjunction>)
