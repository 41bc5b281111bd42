// EQUIVALENT: the difference is within #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(equivalent, Comparison<Within>)

}  // namespace morvik
