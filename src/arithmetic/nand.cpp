// NAND: 1 less the smaller of two truths.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(nand, Logic<complement<conjunction>>)

}  // namespace morvik
