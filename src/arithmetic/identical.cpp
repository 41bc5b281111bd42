// IDENTICAL: the same value to the last bit, or both no number.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(identical, Identity<true>)

}  // namespace morvik
