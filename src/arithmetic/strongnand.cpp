// STRONGNAND: 1 less what STRONGAND gives.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(strongnand, Logic<complement<strongconjunction>>)

}  // namespace morvik
