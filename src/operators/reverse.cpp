// REVERSE and MIRROR: all records, or those of each row, from last to first.
#include "operators/reverse.h"

#include "failure/signals.h"
#include "operators/records.h"

namespace morvik {

using records::CHUNK;
using records::isunique;
using records::knowkinds;
using records::rearrange;
using records::unknownkind;

namespace {

// Turns `count` records round where they stand. Each stays owned once, whenever an interrupt comes.
void turn(Element *row, std::size_t count, std::size_t &left) {
  Element *low = row, *high = row + count;
  while (high - low > 1) {
    const std::size_t piece = std::min(static_cast<std::size_t>(high - low) / 2, left);
    for (std::size_t i = 0; i < piece; ++i) std::swap(*low++, *--high);
    if ((left -= piece) > 0) continue;
    left = CHUNK;
    safepoint();
  }
}

// Reverses rows of so many records.
int reverserows(Point &space, std::uint32_t row) {
  if (const int fault = unknownkind(space)) return fault;
  const std::uint32_t rows = space.elements / row;
  if (isunique(space)) {
    std::size_t left = CHUNK;
    for (std::uint32_t i = 0; i < rows; ++i) turn(space.data_pointer + std::size_t{i} * row, row, left);
    return 0;
  }
  rearrange(space, [&](auto &out) {
    const Element *last = space.data_pointer + row - 1;
    for (std::uint32_t i = 0; i < rows; ++i) out.run(last + std::size_t{i} * row, -1, row);
  });
  return 0;
}

bool isturned(Point &space) {
  if (!isspace(space) || space.rank == 0 || !space.data_pointer) return false;
  knowkinds(space);
  return space.elements > 1;
}

}  // namespace

int reverse(Point &space) {
  return isturned(space) ? reverserows(space, space.elements) : 0;
}

int mirror(Point &space) {
  if (!isturned(space)) return 0;
  const auto row = static_cast<std::uint32_t>(space.shape_pointer[0].integer);
  return row > 1 ? reverserows(space, row) : 0;
}

}  // namespace morvik
