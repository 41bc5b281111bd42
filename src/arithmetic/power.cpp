// POWER: left to the power right.
#include "arithmetic/power.h"

DYADIC_SCALAR(power, Power)
