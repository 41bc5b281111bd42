// STRONGOR: the sum of two truths, at most 1.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(strongor, Logic<strongdisjunction>)

}  // namespace morvik
