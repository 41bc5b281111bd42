// What the processor offers.
#include "arithmetic/wide.h"

namespace morvik {

#ifdef __x86_64__
bool wideregisters = __builtin_cpu_supports("avx2") != 0;
bool ternarylogic = __builtin_cpu_supports("avx512vl") != 0;
#else
bool wideregisters = false, ternarylogic = false;
#endif

}  // namespace morvik
