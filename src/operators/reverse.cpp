// REVERSE and MIRROR: all records, or those of each row, from last to first.
#include "operators/reverse.h"

#include "failure/signals.h"
#include "operators/records.h"

namespace morvik {

using records::ensurekinds;
using records::isunique;
using records::rearrange;
using records::unknownkind;

namespace {

// Reverses `count` records in place. Each stays owned once, whenever an interrupt comes.
void reverserow(Element *row, std::size_t count, std::size_t &left) {
  Element *low = row, *high = row + count;
  while (high - low > 1) {
    const std::size_t piece = std::min(static_cast<std::size_t>(high - low) / 2, left);
    for (std::size_t i = 0; i < piece; ++i) std::swap(*low++, *--high);
    if ((left -= piece) > 0) continue;
    left = POLL_INTERVAL;
    safepoint();
  }
}

// Reverses rows of so many records.
int reverserows(Point &space, std::uint32_t row) {
  if (const int fault = unknownkind(space)) return fault;
  const std::uint32_t rows = space.elements / row;
  if (isunique(space)) {
    std::size_t left = POLL_INTERVAL;
    for (std::uint32_t i = 0; i < rows; ++i) reverserow(space.data_pointer + std::size_t{i} * row, row, left);
    return 0;
  }
  rearrange(space, [&](auto &out) {
    const Element *last = space.data_pointer + row - 1;
    for (std::uint32_t i = 0; i < rows; ++i) out.run(last + std::size_t{i} * row, -1, row);
  });
  return 0;
}

bool isreversible(Point &space) {
  if (!isspace(space) || space.rank == 0 || !space.data_pointer) return false;
  ensurekinds(space);
  return space.elements > 1;
}

}  // namespace

int reverse(Point &space) {
  return isreversible(space) ? reverserows(space, space.elements) : 0;
}

int mirror(Point &space) {
  if (!isreversible(space)) return 0;
  const auto row = static_cast<std::uint32_t>(space.shape_pointer[0].integer);
  return row > 1 ? reverserows(space, row) : 0;
}

}  // namespace morvik
