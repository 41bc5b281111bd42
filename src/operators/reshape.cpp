// RESHAPE. All that can fail comes first: the extents are judged, memory is taken, the records are made; only then do
// the operands change.
#include "operators/reshape.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <numeric>
#include <utility>

#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "frontend/vectors.h"
#include "operators/records.h"
#include "spaces/convert.h"
#include "spaces/copies.h"
#include "spaces/messages.h"
#include "spaces/parts.h"
#include "spaces/point.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

using records::becomeempty;
using records::endmaking;
using records::hascountedname;
using records::Making;
using records::recordbits;
using records::releaserecords;
using records::startmaking;

// What a new shape replaces in the flag word. Kept: ISPROBABLE stays, for what was drawn by chance stays so.
constexpr std::uint32_t RESHAPED_BITS = KIND_BITS | HASFILE | RANK_BITS | ISSTRUCTURE | ISEMPTY;
static_assert(RESHAPED_BITS == 0x7F7F00);

constexpr std::uint32_t MOST_AXES = std::numeric_limits<std::int32_t>::max();

constexpr std::size_t PIECE_RECORDS = 256;  // records that are looked at and copied while they are in the cache

// ---- The extents.

// Is this element a whole number? Kept: the other components of a quaternion or an octonion need only sum to 0.
bool wholenumber(const Element &e, std::int64_t &value) {
  if (e.tag == tags::INTEGER) {
    value = e.integer;
    return true;
  }
  double parts[MOST_PARTS];
  const int count = readparts(e, parts);
  if (count == 0 || std::accumulate(parts + 1, parts + count, 0.0) != 0) return false;
  const double first = parts[0];
  if (!(first >= -INTEGER_BOUND && first < INTEGER_BOUND) || std::trunc(first) != first) return false;
  value = static_cast<std::int64_t>(first);
  return true;
}

// What speaks against these records as a shape: a message number, 0 for nothing. The product is that of the extents.
int checkoperand(const Point &shape, std::uint64_t &product) {
  int fault = 0;
  product = 1;
  bool fits = true;
  for (std::uint32_t i = 0; i < shape.elements; ++i) {
    const Element &e = shape.data_pointer[i];
    if (e.tag == tags::ASCII) return messages::SHAPE_CHARACTERS;
    if (e.tag == tags::SUBARRAY) return messages::SHAPE_NESTED;
    std::int64_t extent = 0;
    if (!wholenumber(e, extent) || extent < 0) {
      fault = messages::SHAPE_NOT_INTEGERS;
    } else if (extent == 0) {
      product = 0;
    } else if (product != 0 && fits) {
      fits = static_cast<std::uint64_t>(extent) <= MOST_ELEMENTS / product;
      if (fits) product *= static_cast<std::uint64_t>(extent);
    }
    if (i % POLL_INTERVAL == POLL_INTERVAL - 1) safepoint();
  }
  if (fault != 0) return fault;
  return (product != 0 && !fits) || shape.elements > MOST_AXES ? messages::SHAPE_TOO_BIG : 0;
}

// Can the records serve as a shape as they are?
bool areextents(const Element *records, std::uint32_t count) {
  return std::all_of(records, records + count,
                     [](const Element &e) { return e.tag == tags::INTEGER && !hascountedname(e); });
}

// The records of the shape as integers, in a block of their own.
Element *makeextents(const Point &shape) {
  Element *extents = newelements(shape.elements);
  for (std::uint32_t i = 0; i < shape.elements; ++i) {
    std::int64_t value = 0;
    wholenumber(shape.data_pointer[i], value);
    setinteger(extents[i], value);
  }
  return extents;
}

// ---- The elements.

enum class CopyMethod { WHOLE, ONE_BY_ONE };

// How the flag word says that the records are copied. They have the last word themselves.
CopyMethod promised(const Point &data) {
  return mayown(data) || hascountedname(*data.data_pointer) ? CopyMethod::ONE_BY_ONE : CopyMethod::WHOLE;
}

// The message for a record that can't be copied.
int nobranch(const Point &data) {
  return !ismixed(data) && isplainkind(data.data_pointer->tag) ? messages::IMPOSSIBLE : messages::RESTRICTION;
}

// How the records of a stretch are copied. A message number or 0.
int checkoperand(const Point &data, std::size_t from, std::size_t to, CopyMethod &how) {
  how = promised(data);
  for (std::size_t i = from; i < to; ++i) {
    if (i % POLL_INTERVAL == 0) safepoint();
    if (isplainkind(data.data_pointer[i].tag)) continue;
    if (!isknown(data.data_pointer[i].tag)) return nobranch(data);
    how = CopyMethod::ONE_BY_ONE;
  }
  return 0;
}

// Repeats the first `period` records until there are `count`. What is there already is copied in ever larger pieces.
void repeatwhole(Element *records, std::size_t period, std::size_t count) {
  for (std::size_t have = period; have < count;) {
    const std::size_t from = have % period;
    const std::size_t piece = std::min({have - from, count - have, POLL_INTERVAL});
    std::memcpy(records + have, records + from, piece * sizeof(Element));
    safepoint();
    have += piece;
  }
}

// Adds a piece of records to those made. `how` turns where one of them needs it. A message number or 0.
int addpiece(Point &made, const Point &data, std::size_t from, std::size_t count, CopyMethod &how) {
  const Element *records = data.data_pointer + from;
  safepoint();
  if (how == CopyMethod::WHOLE &&
      std::all_of(records, records + count, [](const Element &e) { return isplainkind(e.tag); })) {
    std::memcpy(made.data_pointer + made.elements, records, count * sizeof(Element));
    made.elements += static_cast<std::uint32_t>(count);
    return 0;
  }
  how = CopyMethod::ONE_BY_ONE;
  for (std::size_t i = 0; i < count; ++i, ++made.elements) {
    if (!isknown(records[i].tag)) return nobranch(data);
    copyelement(made.data_pointer[made.elements], records[i]);
  }
  return 0;
}

// Adds all pieces, once, and then what is there already, again and again.
int addpieces(Point &made, const Point &data, std::size_t count) {
  CopyMethod how = promised(data);
  const std::size_t have = std::min<std::size_t>(data.elements, count);
  for (std::size_t i = 0; i < have; i += PIECE_RECORDS)
    if (const int fault = addpiece(made, data, i, std::min(PIECE_RECORDS, have - i), how)) return fault;
  if (how == CopyMethod::WHOLE) {
    repeatwhole(made.data_pointer, have, count);
    made.elements = static_cast<std::uint32_t>(count);
    return 0;
  }
  while (made.elements < count) {
    copyelement(made.data_pointer[made.elements], made.data_pointer[made.elements - have]);
    if (++made.elements % PIECE_RECORDS == 0) safepoint();  // which finds the last copy counted
  }
  return 0;
}

// Makes `count` records of its own, by going through those of `data` again and again. A message number or 0.
int repeatelements(const Point &data, std::size_t count, Element *&records) {
  Making m;
  startmaking(m, count);
  const int fault = addpieces(m.made, data, count);
  records = endmaking(m);
  if (fault != 0) dereferencepoint(&m.made);
  return fault;
}

// Cuts a block that nobody else sees. A message number or 0.
int shortenblock(Point &data, std::uint32_t count) {
  CopyMethod how;
  if (const int fault = checkoperand(data, count, data.elements, how)) return fault;
  if (how == CopyMethod::ONE_BY_ONE) dereferencedataelems(data.data_pointer + count, data.elements - count);
  // A block that can't be cut serves as well.
  if (Element *shorter = tryreallocate(data.data_pointer, count)) data.data_pointer = shorter;
  return 0;
}

// Makes `data` hold `count` records, more, fewer or as many as now. `elements` stays with the caller. A message number
// or 0.
int resizespace(Point &data, std::uint32_t count) {
  if (referencecount(data.data_pointer) == 1 && !hascountedname(*data.data_pointer)) {
    if (count < data.elements) return shortenblock(data, count);
    CopyMethod how;
    if (const int fault = checkoperand(data, 0, data.elements, how)) return fault;
    if (how == CopyMethod::WHOLE) {
      data.data_pointer = Reallocate(data.data_pointer, count);
      repeatwhole(data.data_pointer, data.elements, count);
      return 0;
    }
  }
  Element *records;
  if (const int fault = repeatelements(data, count, records)) return fault;
  releaserecords(data);
  data.data_pointer = records;
  return 0;
}

// ---- The whole.

// A scalar's record speaks for itself; that of a vector needs the flag word to say what it owns.
void becomeshaped(Point &data, std::int32_t rank, std::uint32_t product) {
  if (data.rank == ranks::SCALAR) data.type |= recordbits(*data.data_pointer) & (OWNING_BITS | HASFILE);
  if (data.depth == 0) data.depth = 1;
  data.rank = rank;
  data.type = (data.type & ~RESHAPED_BITS) | (data.type & (KIND_BITS | HASFILE)) | (rank > 1 ? ISARRAY : ISVECTOR) |
              (product == 1 ? ISONEELEMENT : 0);
  data.elements = product;
  data.word = {0, static_cast<std::int32_t>(product - 1)};
}

// An empty shape changes nothing: the value becomes one that nobody else sees, and is marked so.
void keepshape(Point &data, Point &shape) {
  if (isspace(data) && data.data_pointer) {
    makeprivate(data);
    data.type |= INOUT;
  }
  dereferencepoint(&shape);
}

// Gives `data` the extents, in which a null means the records of the shape as they are.
void takeshape(Point &data, Point &shape, Element *extents, std::uint32_t product) {
  const auto rank = static_cast<std::int32_t>(shape.elements);
  if (!extents) std::swap(extents, shape.data_pointer);
  if (product == 0) {
    becomeempty(data, rank, extents);
  } else {
    dereference(data.shape_pointer);
    data.shape_pointer = extents;
    becomeshaped(data, rank, product);
  }
  dereferencepoint(&shape);
}

// The instruction but for the report: a message number, with both operands left whole, or 0.
int tryreshape(Point &data, Point &shape) {
  if (shape.rank > ranks::VECTOR) return messages::SHAPE_RANK;
  if (isempty(shape)) {
    keepshape(data, shape);
    return 0;
  }
  if (!isspace(shape) || !shape.data_pointer) return messages::SHAPE_NOT_INTEGERS;
  if ((shape.type & STRUCTURED) != 0) return messages::SHAPE_NESTED;
  std::uint64_t product;
  if (const int fault = checkoperand(shape, product)) return fault;
  if (product != 0 && data.elements == 0) return messages::RESHAPE_NOTHING;
  if (product != 0 && !isspace(data)) return messages::RESTRICTION;
  if (product != 0 && !data.data_pointer) return messages::RESHAPE_NOTHING;
  const auto count = static_cast<std::uint32_t>(product);
  Element *extents = areextents(shape.data_pointer, shape.elements) ? nullptr : makeextents(shape);
  Custody making;
  takecustody(making, releaseblock, extents);
  const bool stays = count == 0 || (count == data.elements && !(data.rank == 0 && hascountedname(*data.data_pointer)));
  const int fault = stays ? 0 : resizespace(data, count);
  endcustody(making);
  if (fault != 0)
    release(extents);
  else
    takeshape(data, shape, extents, count);
  return fault;
}

}  // namespace

int reshape(Point *data, Point *shape, const Point *instruction) {
  const int fault = tryreshape(*data, *shape);
  if (fault != 0) exception(fault, &shape, instruction);
  return fault != 0 ? 1 : 0;
}

namespace {

// So few records are done before an interrupt would be looked for.
constexpr std::uint32_t MOST_SHORT = PIECE_RECORDS;

// Own so many of the first records of a vector nothing, whoever looks at them?
bool areplain(const Point &vector, std::uint32_t count) {
  return !mayown(vector) && !hascountedname(*vector.data_pointer) &&
         std::all_of(vector.data_pointer, vector.data_pointer + count,
                     [](const Element &e) { return isplainkind(e.tag); });
}

// Makes the records of a vector so many, by repeating those that it has. False, with nothing done: no storage.
bool resizeshort(Point &vector, std::uint32_t count) {
  const std::uint32_t have = std::min(count, vector.elements);
  Element *const old = vector.data_pointer, *records = old;
  if (referencecount(old) == 1) {
    records = tryreallocate(old, count);
    if (!records) return false;
  } else {
    records = static_cast<Element *>(tryblock(count * sizeof(Element)));
    if (!records) return false;
    std::copy_n(old, have, records);
    release(old);
  }
  for (std::uint32_t i = have; i < count; ++i) records[i] = records[i - have];
  vector.data_pointer = records;
  return true;
}

}  // namespace

bool reshapeshort(Point &vector, const Element &extent) {
  if (vector.rank != ranks::VECTOR || !vector.data_pointer || vector.elements == 0 || extent.integer < 1 ||
      extent.integer > MOST_SHORT)
    return false;
  const auto count = static_cast<std::uint32_t>(extent.integer);
  const bool cuts = count < vector.elements && referencecount(vector.data_pointer) > 1;
  const std::uint32_t looked = cuts ? count : vector.elements;
  if (looked > MOST_SHORT || !areplain(vector, looked)) return false;
  auto *const shape = static_cast<Element *>(tryblock(sizeof(Element)));
  if (!shape) return false;
  if (count != vector.elements && !resizeshort(vector, count)) {
    freeblock(shape);
    return false;
  }
  *shape = extent;
  dereference(vector.shape_pointer);
  vector.shape_pointer = shape;
  becomeshaped(vector, ranks::VECTOR, count);
  return true;
}

namespace {

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = (reshapeliteral = reshape, true);

}  // namespace

}  // namespace morvik
