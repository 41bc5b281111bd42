// STRONGNAND: 1 less what STRONGAND gives.
#include "arithmetic/logic.h"

DYADIC_SCALAR(strongnand, Logic<complement<strongconjunction>>)
