// GREATER: the left is above the right by more than #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(greater, Comparison<Above>)

}  // namespace morvik
