// Where the stack of a thread ends.
#include "spaces/processstack.h"

#include <pthread.h>

#include <algorithm>

namespace morvik {

constinit thread_local std::uintptr_t stackfloor = 0;

namespace {

// Of a small stack, of which KEPT_FREE would be too much: a share, but as much as a report and who is told of it need,
// unless that is more than half.
constexpr std::size_t SHARE = 8;
constexpr std::size_t REPORT = 64 << 10;

std::size_t keptfree(std::size_t size) {
  return std::min({std::size_t{KEPT_FREE}, std::max(size / SHARE, REPORT), size / 2});
}

}  // namespace

void measurestack() {
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void *lowest = nullptr;
  std::size_t size = 0;
  if (pthread_attr_getstack(&attributes, &lowest, &size) == 0)
    stackfloor = reinterpret_cast<std::uintptr_t>(lowest) + keptfree(size);
  pthread_attr_destroy(&attributes);
}

}  // namespace morvik
