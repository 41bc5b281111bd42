// Where the stack of a thread ends.
#include "spaces/processstack.h"

#include <pthread.h>

#include <algorithm>

namespace morvik {

constinit thread_local std::uintptr_t stackfloor = 0;

namespace {

constexpr std::size_t SHARE = 8;  // of a small stack, of which that much would be too much

}  // namespace

void measurestack() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void *lowest = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &lowest, &size) == 0)
    stackfloor = reinterpret_cast<std::uintptr_t>(lowest) + std::min<std::uintptr_t>(KEPT_FREE, size / SHARE);
  pthread_attr_destroy(&attributes);
}

}  // namespace morvik
