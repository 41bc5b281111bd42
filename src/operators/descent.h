// The levels of a value that a walk has open, innermost last. They are in a counted block, so that no depth of a value
// can exhaust the process stack, and that a jump gives it back.
#pragma once

#include <cstring>

#include "failure/custody.h"
#include "spaces/blocks.h"

namespace morvik {

template <typename Frame>
struct Descent {
  Frame *open;
  std::size_t depth, capacity;
  Custody custody;
};

template <typename Frame>
void begindescent(Descent<Frame> &d) {
  d.open = nullptr;
  d.depth = d.capacity = 0;
  takecustody(d.custody, releaseblock, nullptr);
}

template <typename Frame>
void enddescent(Descent<Frame> &d) {
  endcustody(d.custody);
  release(d.open);
}

template <typename Frame>
inline Frame &innermost(Descent<Frame> &d) {
  return d.open[d.depth - 1];
}

// Opens a level. Message 27.
template <typename Frame>
void descend(Descent<Frame> &d, const Frame &frame) {
  constexpr std::size_t FIRST_CAPACITY = 16;
  if (d.depth == d.capacity) {
    const std::size_t capacity = d.capacity == 0 ? FIRST_CAPACITY : 2 * d.capacity;
    auto *larger = static_cast<Frame *>(newblock(capacity * sizeof(Frame)));
    if (d.depth > 0) std::memcpy(larger, d.open, d.depth * sizeof(Frame));
    release(d.open);
    d.open = larger;
    d.custody.held = larger;
    d.capacity = capacity;
  }
  d.open[d.depth++] = frame;
}

}  // namespace morvik
