// STRONGAND: by how much two truths together exceed 1.
#include "arithmetic/dyadic.h"
#include "arithmetic/logic.h"

namespace morvik {

DYADIC_SCALAR(strongand, Logic<strongconjunction>)

}  // namespace morvik
