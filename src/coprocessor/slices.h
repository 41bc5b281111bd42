// How the elements of an instruction are shared out over the threads of the pool.
#pragma once

#include <cstdint>

// Half open: first to behind the last.
struct Slice {
  std::uint32_t begin, end;
};

// Slice `index` of `parts`. The slices tile `count` elements; one may be empty. While the shares are small they are
// equal; once each exceeds MIN_PARALLEL the first slice, the main thread's, stays that small and the others share the
// rest. A share is rounded up where its fraction is 0.75 or more, and the last slice takes what is over.
Slice slice(std::uint32_t count, std::uint32_t parts, std::uint32_t index);

// The first and the last element of a slice that is not empty.
inline std::uint32_t LOWER(std::uint32_t count, std::uint32_t parts, std::uint32_t index) {
  return slice(count, parts, index).begin;
}
inline std::uint32_t UPPER(std::uint32_t count, std::uint32_t parts, std::uint32_t index) {
  return slice(count, parts, index).end - 1;
}
