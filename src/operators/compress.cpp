// COMPRESS and COMPRESSLASTAXIS: what a mask keeps of an axis. REPLICATE: the whole again and again.
#include "operators/compress.h"

#include <utility>

#include "failure/custody.h"
#include "failure/signals.h"
#include "operators/records.h"
#include "operators/reshape.h"
#include "spaces/blocks.h"
#include "spaces/copies.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

namespace morvik {

using records::becomeempty;
using records::copyshape;
using records::ensurekinds;
using records::examinerecords;
using records::keeprecords;
using records::refreshflags;
using records::unknownkind;

namespace {

// The axis at work: elements within one step of it, steps, and how often the whole axis comes.
struct Axis {
  std::int32_t number;
  std::size_t inner, extent, outer;
};

Axis axisof(const Point &data, bool last) {
  Axis axis{last ? data.rank - 1 : 0, 1, 0, 1};
  for (std::int32_t i = 0; i < data.rank; ++i) {
    const auto extent = static_cast<std::size_t>(data.shape_pointer[i].integer);
    if (i == axis.number)
      axis.extent = extent;
    else
      (i < axis.number ? axis.inner : axis.outer) *= extent;
  }
  return axis;
}

// Does the flag word speak of integers alone, and the rank of one axis at most?
bool ismask(const Point &mask) {
  if (!isspace(mask) || !mask.data_pointer || (mask.type & STRUCTURED) != 0) return false;
  return (mask.type & PURITY_BITS) == HASINTEGER && (mask.rank < 2 || mask.elements == 1);
}

// Notes the places that are kept of so many records, the first of which has this number.
void noteplaces(const Element *e, std::uint32_t first, std::uint32_t count, std::uint32_t *places, std::uint32_t &kept,
                std::uint32_t &others) {
  constexpr std::uint32_t UNROLLED = 8;
  std::size_t k = kept;
  std::uint32_t strange = 0;
  const auto note = [&](std::uint32_t at) {
    places[k] = first + at;
    k += e[at].integer > 0 ? 1 : 0;
    strange |= static_cast<std::uint32_t>(e[at].tag ^ tags::INTEGER);
  };
  for (; count >= UNROLLED; count -= UNROLLED, first += UNROLLED, e += UNROLLED)
    [&]<std::uint32_t... ahead>(std::integer_sequence<std::uint32_t, ahead...>) {
      (note(ahead), ...);
    }
  (std::make_integer_sequence<std::uint32_t, UNROLLED>{});
  for (std::uint32_t i = 0; i < count; ++i) note(i);
  kept = static_cast<std::uint32_t>(k);
  others |= strange;
}

// The places of the axis that are kept, and how many. False if the mask holds something else than integers after all.
bool keptplaces(const Point &mask, std::uint32_t *places, std::uint32_t &kept) {
  kept = 0;
  std::uint32_t others = 0;
  for (std::uint32_t i = 0; i < mask.elements;) {
    const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(mask.elements - i, POLL_INTERVAL));
    noteplaces(mask.data_pointer + i, i, count, places, kept, others);
    i += count;
    safepoint();
  }
  return others == 0;
}

template <typename Out>
void walkplaces(const Axis &axis, const std::uint32_t *places, std::uint32_t kept, const Element *from, Out &out) {
  for (std::size_t i = 0; i < axis.outer; ++i, from += axis.extent * axis.inner) {
    if (axis.inner == 1) {
      out.pick(from, places, kept);
      continue;
    }
    for (std::uint32_t k = 0; k < kept; ++k) out.run(from + places[k] * axis.inner, 1, axis.inner);
  }
}

void keepplaces(Point &data, const Axis &axis, const std::uint32_t *places, std::uint32_t kept) {
  const std::size_t count = axis.inner * kept * axis.outer;
  Element *shape = copyshape(data.shape_pointer, data.rank);
  shape[axis.number].integer = kept;
  if (count == 0) return becomeempty(data, data.rank, shape);
  Custody making;
  takecustody(making, releaseblock, shape);
  keeprecords(data, static_cast<std::uint32_t>(count),
              [&](auto &out) { walkplaces(axis, places, kept, data.data_pointer, out); });
  endcustody(making);
  dereference(data.shape_pointer);
  data.shape_pointer = shape;
  data.elements = static_cast<std::uint32_t>(count);
  refreshflags(data);
}

int compressaxis(const Point &mask, Point &data, bool last) {
  if (!isspace(data) || data.rank == 0) return messages::COMPRESS_COUNT;
  const Axis axis = axisof(data, last);
  if (axis.extent != mask.elements) return messages::COMPRESS_COUNT;
  ensurekinds(data);
  if (const int fault = unknownkind(data)) return fault;
  auto *places = static_cast<std::uint32_t *>(newblock(mask.elements * sizeof(std::uint32_t)));
  Custody making;
  takecustody(making, releaseblock, places);
  std::uint32_t kept;
  const bool integers = keptplaces(mask, places, kept);
  if (integers && kept < mask.elements) keepplaces(data, axis, places, kept);
  endcustody(making);
  freeblock(places);
  return integers ? 0 : messages::BAD_COMPRESS_MASK;
}

// The right operand takes the place of the left.
void moveleft(Point &left, Point &right) {
  dereferencepoint(&left);
  left = right;
  right = {};
}

int compressany(Point &mask, Point &data, bool last) {
  ensurekinds(mask);
  if (!ismask(mask)) return messages::BAD_COMPRESS_MASK;
  if (mask.elements == 1) {
    if (mask.data_pointer->tag != tags::INTEGER) return messages::BAD_COMPRESS_MASK;
    if (mask.data_pointer->integer <= 0) becomeempty(data, ranks::VECTOR, newshape(0));
  } else if (const int fault = compressaxis(mask, data, last)) {
    return fault;
  }
  moveleft(mask, data);
  return 0;
}

bool iszero(const Element &e) {
  return (e.tag == tags::INTEGER && e.integer == 0) || (e.tag == tags::REAL && e.real == 0);
}

}  // namespace

int compress(Point &mask, Point &data) {
  return compressany(mask, data, false);
}

int compresslastaxis(Point &mask, Point &data) {
  return compressany(mask, data, true);
}

int replicate(Point &count, Point &data, const Point *instruction) {
  ensurekinds(count);
  if (!isspace(count) || !count.data_pointer || (count.type & (SCALAR_LIKE | HASINTEGER)) == 0)
    return messages::RESTRICTION;
  if (iszero(*count.data_pointer)) {
    becomeempty(data, ranks::VECTOR, newshape(0));
    moveleft(count, data);
    return 0;
  }
  const std::int32_t axes = std::max(data.rank, 0);
  Point shape{};
  shape.rank = ranks::VECTOR;
  shape.type = ISVECTOR;
  shape.depth = 1;
  Custody making;
  takecustody(making, releasepoint, &shape);
  shape.data_pointer = axes > 0 ? copyshape(data.shape_pointer, axes, 1) : copyshape(nullptr, 0, 1);
  shape.elements = static_cast<std::uint32_t>(axes);
  // Kept: of several counts the first is taken.
  if (count.data_pointer->tag == tags::INTEGER)
    shape.data_pointer[axes].integer = count.data_pointer->integer;
  else
    copyelement(shape.data_pointer[axes], *count.data_pointer);
  ++shape.elements;
  shape.shape_pointer = newshape(shape.elements);
  shape.type |= examinerecords(shape.data_pointer, shape.elements).bits;
  const int fault = reshape(&data, &shape, instruction);
  endcustody(making);
  if (fault != 0) {
    dereferencepoint(&shape);
    return ALREADY_REPORTED;
  }
  moveleft(count, data);
  return 0;
}

}  // namespace morvik
