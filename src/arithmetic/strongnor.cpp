// STRONGNOR: 1 less what STRONGOR gives.
#include "arithmetic/logic.h"

DYADIC_SCALAR(strongnor, Logic<complement<strongdisjunction>>)
