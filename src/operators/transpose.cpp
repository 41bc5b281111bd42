// TRANSPOSE: the axes in reverse order.
#include "operators/transpose.h"

#include "failure/custody.h"
#include "operators/records.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"

namespace morvik {

using records::copyshape;
using records::ensurekinds;
using records::rearrange;
using records::unknownkind;

namespace {

constexpr std::int32_t MOST_TRANSPOSED_AXES = 8;

// The old axes as the new order meets them: the slowest is now the fastest.
struct Axes {
  std::size_t count;
  std::size_t extent[MOST_TRANSPOSED_AXES], stride[MOST_TRANSPOSED_AXES];
};

Axes axesof(const Point &space) {
  Axes axes{};
  axes.count = static_cast<std::size_t>(space.rank);
  std::size_t stride = 1;
  for (std::size_t axis = axes.count; axis-- > 0;) {
    axes.extent[axis] = static_cast<std::size_t>(space.shape_pointer[axes.count - 1 - axis].integer);
    axes.stride[axis] = stride;
    stride *= axes.extent[axis];
  }
  return axes;
}

template <typename Out>
void walkaxes(const Axes &axes, const Element *from, Out &out) {
  std::size_t at[MOST_TRANSPOSED_AXES] = {};
  for (;;) {
    out.run(from, static_cast<std::ptrdiff_t>(axes.stride[0]), axes.extent[0]);
    std::size_t axis = 1;
    for (; axis < axes.count; ++axis) {
      from += axes.stride[axis];
      if (++at[axis] < axes.extent[axis]) break;
      from -= axes.stride[axis] * axes.extent[axis];
      at[axis] = 0;
    }
    if (axis == axes.count) return;
  }
}

}  // namespace

int transpose(Point &space) {
  if (!space.data_pointer) return 0;
  if (space.rank == ranks::ADDRESS || space.rank == ranks::LOCAL_ADDRESS) return messages::ADDRESS_TRANSPOSED;
  if (space.rank < 2) return 0;
  if (space.rank > MOST_TRANSPOSED_AXES) return messages::TRANSPOSE_DIMENSIONS;
  ensurekinds(space);
  if (const int fault = unknownkind(space)) return fault;
  Element *shape = copyshape(space.shape_pointer, space.rank);
  std::reverse(shape, shape + space.rank);
  Custody making;
  takecustody(making, releaseblock, shape);
  const Axes axes = axesof(space);
  rearrange(space, [&](auto &out) { walkaxes(axes, space.data_pointer, out); });
  endcustody(making);
  dereference(space.shape_pointer);
  space.shape_pointer = shape;
  return 0;
}

}  // namespace morvik
