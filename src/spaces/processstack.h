// How much of a thread's own stack is left. What goes down into a value by calling itself asks before each step, and
// reports message 27 while there is still room to do so: nothing then is half done that an end of storage would not
// leave so too. What can do its work with a list of its own needs none of this.
#pragma once

#include <cstdint>

namespace morvik {

// The address below which a thread must not go down further; 0 where it was not measured.
extern constinit thread_local std::uintptr_t stackfloor;
// What a step and its failure need, the report and the release included; and the kernel keeps a gap between a stack
// that grows and what was mapped below it.
inline constexpr std::uintptr_t KEPT_FREE = std::uintptr_t{3} << 20;

// A frame further down than that is on no thread's own stack, but on the one that faults are handled on.
inline bool stackends() {
  return stackfloor - reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - 1 < KEPT_FREE;
}

// Finds the end of the calling thread's stack. On the main thread after its limit was set.
void measurestack();

}  // namespace morvik
