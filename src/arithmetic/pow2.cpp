// POW2: 2 to the power of the number.
#include "arithmetic/fixedbase.h"

namespace morvik {

MONADIC_SCALAR(pow2, PowerOf<Two>)

}  // namespace morvik
