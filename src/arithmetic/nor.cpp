// NOR: 1 less the larger of two truths.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(nor, Logic<complement<disjunction>>)

}  // namespace morvik
