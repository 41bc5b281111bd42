// STRONGAND: by how much two truths together exceed 1.
#include "arithmetic/logic.h"

DYADIC_SCALAR(strongand, Logic<strongconjunction>)
