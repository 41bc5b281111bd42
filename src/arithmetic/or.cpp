// OR: the larger of two truths.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(Or, Logic<disjunction>)

}  // namespace morvik
