// LOGARITHM: of left, to the base right.
#include "arithmetic/logarithm.h"

#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(logarithm, Logarithm)

}  // namespace morvik
