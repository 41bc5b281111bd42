// MASK: a function applied to the weighted neighbourhood of every element of a space.
#include <algorithm>

#include "arithmetic/cores.h"
#include "arithmetic/frame.h"
#include "arithmetic/pairwalk.h"
#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "machine/gather.h"
#include "machine/inspect.h"
#include "machine/leave.h"
#include "machine/timing.h"
#include "operators/neighbours.h"
#include "spaces/copies.h"
#include "spaces/counters.h"
#include "spaces/messages.h"
#include "spaces/parts.h"

namespace morvik {

namespace {

constexpr std::uint32_t KEPT_FLAGS = 0xFFBF80BF;  // what a result keeps of the data's flags: no kinds, no COMPLEXED

// One dimension of the walk.
struct Dimension {
  std::int64_t extent;    // of the data
  std::int64_t stride;    // of the data: elements from one to the next along this dimension
  std::int64_t reach;     // Kept: 1 whatever the mask's extent, so that a wider mask repeats the offsets -1, 0, 1
  std::int64_t offset;    // of the present neighbour
  std::int64_t position;  // of the present element, counted from 0
};

// A coordinate as the modifier takes it; outside of the data, where it still is, there is nothing.
std::int64_t inside(std::int64_t c, const Dimension &dimension, bool first, std::uint16_t modifier) {
  if (modifier == instructions::WRAP) {
    if (c < 0) return c + dimension.extent;
    // Kept: past the end of the higher dimensions the step back is one short.
    if (c >= dimension.extent) return c - (first ? dimension.extent : dimension.extent - 1);
  } else if (modifier == instructions::REFLECT) {
    if (c < 0) return -c;
    if (c >= dimension.extent) return 2 * dimension.extent - c - 2;
  }
  return c;
}

// The index of the present neighbour, below 0 for none.
std::int64_t neighbour(const Dimension *dimensions, std::int32_t rank, std::uint16_t modifier) {
  std::int64_t index = 0;
  for (std::int32_t d = 0; d < rank; ++d) {
    const std::int64_t c = inside(dimensions[d].position + dimensions[d].offset, dimensions[d], d == 0, modifier);
    if (c < 0 || c >= dimensions[d].extent) return -1;
    index += c * dimensions[d].stride;
  }
  return index;
}

void nextoffset(Dimension *dimensions, std::int32_t rank) {
  for (std::int32_t d = 0; d < rank; ++d) {
    if (++dimensions[d].offset <= dimensions[d].reach) return;
    dimensions[d].offset = -dimensions[d].reach;
  }
}

void nextposition(Dimension *dimensions, std::int32_t rank) {
  for (std::int32_t d = 0; d < rank; ++d) {
    if (++dimensions[d].position < dimensions[d].extent) return;
    dimensions[d].position = 0;
  }
}

Dimension *makedimensions(const Point &data, const Point &weights) {
  const auto rank = static_cast<std::size_t>(data.rank);
  auto *dimensions = static_cast<Dimension *>(newblock((rank > 0 ? rank : 1) * sizeof(Dimension)));
  std::uint64_t stride = 1;  // of an empty space it may be beyond all bounds
  for (std::size_t d = 0; d < rank; ++d) {
    const std::int64_t extent = data.shape_pointer[d].integer;
    const std::int64_t reach = weights.shape_pointer[d].integer % 2;
    dimensions[d] = {extent, static_cast<std::int64_t>(stride), reach, -reach, 0};
    stride *= static_cast<std::uint64_t>(extent);
  }
  return dimensions;
}

bool iszero(const Element &e) {
  if (realpart(e) != 0) return false;
  double parts[MOST_PARTS];
  const int count = readparts(e, parts);
  return count > 0 && std::all_of(parts, parts + count, [](double part) { return part == 0; });
}

// The zero of a weight's kind, or of an integer where there is no weight to go by.
void writezero(const Element *weight, Element &to) {
  if (weight && partsof(weight->tag) > 1) return copyelement(to, *weight);
  to = {};
  to.tag = weight ? weight->tag : tags::INTEGER;
  to.form = forms::NUMBER;
}

// One element of a neighbourhood: weight times datum. A weight of zero, and a place outside, never touch the data.
std::int32_t weigh(const Element &weight, const Element *datum, Element &to, std::uint32_t &kinds, Tally &tally) {
  if (!datum || iszero(weight)) {
    writezero(datum ? &weight : nullptr, to);
    kinds |= kindbit(to.tag);
    return 0;
  }
  Run run{};
  run.left = &weight;
  run.right = datum;
  run.result = &to;
  run.count = 1;
  run.leftstep = run.rightstep = run.resultstep = 1;
  run.fresh = true;
  const std::int32_t message = work(multiplycores, run, tally);
  kinds |= run.kinds;
  return message;
}

// Pushes the neighbourhood of the present position.
void pushneighbourhood(Level &level, const Gathering &g, Dimension *dimensions, Tally &tally) {
  const Point &weights = g.weights;
  Point around = weights;
  around.type = (weights.type & RANK_BITS) | STRUCTURED;
  around.data_pointer = newelements(weights.elements);
  around.elements = 0;
  if (around.rank == ranks::SCALAR) setfiller(*around.data_pointer);  // half a scalar is released by its record
  reference(around.shape_pointer);
  pushowned(level, around);
  std::uint32_t kinds = 0;
  for (std::uint32_t j = 0; j < weights.elements; ++j) {
    const std::int64_t index = neighbour(dimensions, g.data.rank, level.instruction->modifier);
    const Element *datum = index < 0 ? nullptr : g.data.data_pointer + index;
    const std::int32_t message = weigh(weights.data_pointer[j], datum, around.data_pointer[j], kinds, tally);
    if (message != 0) {
      droptop(level);  // half a neighbourhood, which has not the elements that its shape says
      if (message == INTERRUPTED) pushempty(level);  // an interrupt takes what is on top
      failwith(message, &level.sp, level.instruction);
    }
    level.sp->elements = j + 1;
    nextoffset(dimensions, g.data.rank);
  }
  level.sp->type = (weights.type & RANK_BITS) | kinds | complexed(kinds);
}

// The Points of a body that adds up a neighbourhood and does no more, as `RAVEL SUM` does, and `SUM` where it is a
// vector; 0 for any other body.
std::uint32_t pointsofsum(const Point *body, std::int32_t rank) {
  const Point *p = body;
  if (isinstruction(*p, instructions::RAVEL))
    ++p;
  else if (rank != ranks::VECTOR)
    return 0;
  if (!isinstruction(*p, instructions::REDUCE) || p->modifier != instructions::ADD) return 0;
  ++p;
  if (isinstruction(*p, instructions::FUNCTIONEND)) ++p;
  return isend(*p) ? static_cast<std::uint32_t>(p - body) : 0;
}

// Makes all sums at once where the function does nothing else, no more than the quick loop may run it, and counts what
// the calls would have.
bool sumspace(const Level &inner, Gathering &g) {
  if (g.data.elements == 0 || g.function.locals != 0 || inner.names || opstime || (stepping && (Trace || Step)))
    return false;
  const std::uint32_t points = pointsofsum(inner.start, g.data.rank);
  NeighbourSums found;
  if (points == 0 || inner.caller->instruction->modifier != 0 || !decoded(inner, true) ||
      !sumneighbourhoods(g.data, g.weights, g.result.data_pointer, found))
    return false;
  const double called = g.data.elements, placed = called * g.weights.elements;
  g.result.elements = g.data.elements;
  g.kinds = found.kinds;
  operators += called * points;
  operations += placed;
  countwork(placed, found.sumflops);
  countwork(called, found.productflops);
  return true;
}

void callforeach(Level &inner, Gathering &g) {
  Level &level = *inner.caller;
  Dimension *dimensions = makedimensions(g.data, g.weights);
  Custody walked;
  takecustody(walked, releaseblock, dimensions);
  Tally tally;
  tally.stopped = isinterrupted;
  for (std::uint32_t i = 0; i < g.data.elements; ++i) {
    pushneighbourhood(level, g, dimensions, tally);
    callforelement(inner, g);
    operations += g.weights.elements;
    for (std::int32_t d = 0; d < g.data.rank; ++d) dimensions[d].offset = -dimensions[d].reach;
    nextposition(dimensions, g.data.rank);
  }
  countwork(g.data.elements, tally.flops);
  endcustody(walked);
  freeblock(dimensions);
}

Next maskspace(Level &level) {
  Gathering g;
  begingathering(level, g, 3);
  Level inner = gatheringlevel(level, g);
  if (!sumspace(inner, g)) callforeach(inner, g);
  endgathering(level, g, KEPT_FLAGS);
  return Next::FETCH;
}

bool hasoddextents(const Point &weights) {
  for (std::int32_t d = 0; d < weights.rank; ++d)
    if (weights.shape_pointer[d].integer % 2 == 0) return false;
  return true;
}

}  // namespace

Next domask(Level &level) {
  const Point &function = level.sp[0], &weights = level.sp[-1], &data = level.sp[-2];
  if (!isfunction(function)) return fail(level, messages::MASK_NO_FUNCTION);
  if (function.arguments != 1) return fail(level, messages::MASK_NOT_MONADIC);
  if (!isspace(weights) || weights.rank != data.rank) return fail(level, messages::MASK_RANK);
  if (!hasoddextents(weights)) return fail(level, messages::MASK_EVEN);
  return maskspace(level);
}

}  // namespace morvik
