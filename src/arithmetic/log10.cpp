// LOG10: the logarithm to the base 10.
#include "arithmetic/fixedbase.h"

namespace morvik {

MONADIC_SCALAR(log10, LogarithmOf<Ten>)

}  // namespace morvik
