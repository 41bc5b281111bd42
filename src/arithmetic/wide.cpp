// What the processor offers.
#include "arithmetic/wide.h"

namespace morvik {

namespace {

bool findwideregisters() {
#ifdef __x86_64__
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx2") != 0;
#else
  return false;
#endif
}

}  // namespace

bool wideregisters = findwideregisters();

}  // namespace morvik
