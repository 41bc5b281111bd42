// STRONGNOR: 1 less what STRONGOR gives.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(strongnor, Logic<complement<strongdisjunction>>)

}  // namespace morvik
