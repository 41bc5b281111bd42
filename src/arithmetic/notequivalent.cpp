// NOTEQUIVALENT: the difference is not within #CT.
#include "arithmetic/comparison.h"
#include "arithmetic/dyadic.h"

namespace morvik {

DYADIC_SCALAR(notequivalent, Comparison<NotWithin>)

}  // namespace morvik
