// NOTLESS: the left is not below the right by more than #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(notless, Comparison<NotBelow>)

}  // namespace morvik
