// AND: the smaller of two truths.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(And, Logic<conjunction>)

}  // namespace morvik
