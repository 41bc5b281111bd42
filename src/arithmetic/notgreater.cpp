// NOTGREATER: the left is not above the right by more than #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(notgreater, Comparison<NotAbove>)

}  // namespace morvik
