// NOTIDENTICAL: not the same value.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(notidentical, Identity<false>)

}  // namespace morvik
