// AND: the smaller of two truths.
#include "arithmetic/logic.h"

DYADIC_SCALAR(And, Logic<conjunction>)
