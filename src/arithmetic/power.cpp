// POWER: left to the power right.
#include "arithmetic/power.h"

#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(power, Power)

}  // namespace morvik
