// POW10: 10 to the power of the number.
#include "arithmetic/fixedbase.h"

namespace morvik {

MONADIC_SCALAR(pow10, PowerOf<Ten>)

}  // namespace morvik
