// LD: the logarithm to the base 2.
#include "arithmetic/fixedbase.h"

namespace morvik {

MONADIC_SCALAR(ld, LogarithmOf<Two>)

}  // namespace morvik
