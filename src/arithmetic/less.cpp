// LESS: the left is below the right by more than #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(less, Comparison<Below>)

}  // namespace morvik
