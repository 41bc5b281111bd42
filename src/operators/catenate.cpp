// CATENATE: the records of two values in one block. What can fail comes first; from then on the operands are released
// without a safe point in between.
#include "operators/catenate.h"

#include <bit>

#include "failure/custody.h"
#include "failure/signals.h"
#include "operators/records.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/point.h"
#include "spaces/refderef.h"

namespace morvik {

using records::copyrecords;
using records::copyshape;
using records::endmaking;
using records::ensurekinds;
using records::examinerecords;
using records::hascountedname;
using records::isunique;
using records::makecopies;
using records::Making;
using records::owns;
using records::recordbits;
using records::releaserecords;
using records::startmaking;
using records::unknownkind;

namespace {

// How the records of an operand are transferred to the new block.
enum class Transfer {
  PLAIN,   // copied, as they own nothing
  MOVED,   // copied, and their block freed: nobody else sees them
  COPIED,  // one by one, as somebody else holds them too
};

struct Side {
  Point point;     // the operand
  Element symbol;  // a symbolic Point as the one record that it is stored in
  const Element *records;
  std::uint32_t count;
  std::uint32_t bits;
  std::int16_t depth;
  Transfer transfer;
};

// A symbolic Point is stored whole in a record, unless it is an operator.
int makesymbol(Side &part) {
  part.symbol = std::bit_cast<Element>(part.point);
  part.records = &part.symbol;
  part.count = 1;
  part.bits = recordbits(part.symbol);
  part.transfer = Transfer::MOVED;
  return part.bits == 0 ? messages::RESTRICTION : 0;
}

int makepart(Side &part, const Point &operand) {
  part.point = operand;
  part.depth = 0;
  if (!isspace(operand)) return makesymbol(part);
  if (const int fault = unknownkind(operand)) return fault;
  part.records = operand.data_pointer;
  part.count = operand.elements;
  part.bits = operand.rank == 0 ? recordbits(*part.records) : operand.type;
  if (operand.rank > 0) part.depth = operand.depth;
  if ((part.bits & STRUCTURED) != 0) part.depth = std::max(part.depth, examinerecords(part.records, part.count).depth);
  const bool moves = isunique(operand) && !(operand.rank == 0 && hascountedname(*part.records));
  part.transfer = !owns(operand) ? Transfer::PLAIN : moves ? Transfer::MOVED : Transfer::COPIED;
  return 0;
}

// ---- The shape of the result.

bool sameextents(const Point &a, const Point &b, std::int32_t axes) {
  return std::equal(a.shape_pointer, a.shape_pointer + axes, b.shape_pointer,
                    [](const Element &x, const Element &y) { return x.integer == y.integer; });
}

// Is `low` shaped as a slice of `high` is?
bool isslice(const Point &low, const Point &high) {
  return low.rank >= 1 && low.rank == high.rank - 1 && sameextents(low, high, low.rank);
}

// The shape along which both join; a vector of all records where none does.
Element *joinedshape(const Point &left, const Point &right, std::uint32_t total, std::int32_t &rank) {
  const bool join = left.rank == right.rank && left.rank > 1 && sameextents(left, right, left.rank - 1);
  rank = std::max(left.rank, right.rank);
  if (rank < 2 || !(join || isslice(left, right) || isslice(right, left))) {
    rank = ranks::VECTOR;
    return newshape(total);
  }
  const Point &high = left.rank == rank ? left : right;
  Element *shape = copyshape(high.shape_pointer, rank);
  shape[rank - 1].integer += join ? right.shape_pointer[rank - 1].integer : 1;
  return shape;
}

// ---- The records.

// Puts one operand's records to their place, as far as that can fail or be interrupted.
void putcopies(Making &m, const Side &part) {
  if (part.transfer == Transfer::COPIED) return makecopies(m, part.records, 1, part.count);
  Element *to = m.made.data_pointer + m.made.elements;
  if (part.transfer == Transfer::PLAIN) {
    copyrecords(to, part.records, part.count, true);
  } else {
    std::for_each(to, to + part.count, setfiller);
  }
  m.made.elements += part.count;
}

void putmoved(Element *to, const Side &part) {
  if (part.transfer == Transfer::MOVED) copyrecords(to, part.records, part.count, false);
}

// Both in a new block.
Element *joined(const Side &left, const Side &right) {
  Making m;
  startmaking(m, std::size_t{left.count} + right.count);
  putcopies(m, left);
  putcopies(m, right);
  Element *made = endmaking(m);
  putmoved(made, left);
  putmoved(made + left.count, right);
  return made;
}

Element *grown(Element *block, std::size_t count) {
  Element *const larger = trygrow(block, count);
  if (!larger) outofstorage();
  return larger;
}

// The right behind the left, in the left's own block.
Element *appended(Point &left, const Side &right) {
  const std::size_t total = std::size_t{left.elements} + right.count;
  if (right.transfer != Transfer::COPIED) {
    left.data_pointer = grown(left.data_pointer, total);
    copyrecords(left.data_pointer + left.elements, right.records, right.count, right.transfer == Transfer::PLAIN);
    return left.data_pointer;
  }
  Making m;
  startmaking(m, right.count);
  makecopies(m, right.records, 1, right.count);
  left.data_pointer = grown(left.data_pointer, total);
  Element *copies = endmaking(m);
  copyrecords(left.data_pointer + left.elements, copies, right.count, false);
  freeblock(copies);
  return left.data_pointer;
}

// Releases what an operand still holds once its records are in the result.
void releaseoperand(Side &part) {
  if (!isspace(part.point)) return;
  release(part.point.shape_pointer);
  if (part.transfer == Transfer::COPIED)
    releaserecords(part.point);
  else
    release(part.point.data_pointer);
}

// Does the left's own block grow, rather than both go into a new one? It does for a short right, so that what is
// appended bit by bit costs no more than that. A block that grows much is copied with all its capacity.
bool growsinplace(const Point &left, const Side &l, const Side &r) {
  constexpr std::uint32_t SHORT_SHARE = 4;
  if (!isspace(left) || !isunique(left) || l.transfer == Transfer::COPIED) return false;
  return l.transfer == Transfer::MOVED || r.count <= l.count / SHORT_SHARE;
}

// The flag word of what has the records of both.
std::uint32_t joinedtype(std::uint32_t left, std::uint32_t right, std::int32_t rank) {
  const std::uint32_t kinds = (left | right) & (ELEMENT_BITS | STRUCTURED | ISSTRUCTURE);
  return kinds | complexed(kinds) | ((left | right) & ISPROBABLE) | (rank > 1 ? ISARRAY : ISVECTOR);
}

void join(Point &left, Point &right, Side &l, Side &r, std::uint32_t total) {
  Point result{};
  result.shape_pointer = joinedshape(left, right, total, result.rank);
  Custody making;
  takecustody(making, releaseblock, result.shape_pointer);
  const bool grows = growsinplace(left, l, r);
  result.data_pointer = grows ? appended(left, r) : joined(l, r);
  endcustody(making);
  if (grows) l.point.data_pointer = nullptr;
  releaseoperand(l);
  releaseoperand(r);
  result.type = joinedtype(l.bits | (left.type & ISPROBABLE), r.bits | (right.type & ISPROBABLE), result.rank);
  result.depth = std::max({l.depth, r.depth, std::int16_t{1}});
  result.elements = total;
  left = result;
  right = {};
}

bool isnothing(const Point &point) {
  return isspace(point) && (isempty(point) || !point.data_pointer);
}

}  // namespace

int catenate(Point &left, Point &right) {
  if (isnothing(left)) {
    dereferencepoint(&left);
    left = right;
    right = {};
    return 0;
  }
  if (isnothing(right)) {
    dereferencepoint(&right);
    return 0;
  }
  ensurekinds(left);
  ensurekinds(right);
  Side l, r;
  if (const int fault = makepart(l, left)) return fault;
  if (const int fault = makepart(r, right)) return fault;
  const std::uint64_t total = std::uint64_t{l.count} + r.count;
  if (total > MOST_ELEMENTS) outofstorage();
  join(left, right, l, r, static_cast<std::uint32_t>(total));
  return 0;
}

bool appendrecords(Point &vector, const Element *records, std::uint32_t count, std::uint32_t type, std::int16_t depth) {
  const std::uint64_t total = std::uint64_t{vector.elements} + count;
  if (total > MOST_ELEMENTS) return false;
  Element *shape = vector.shape_pointer;
  if (referencecount(shape) != 1) shape = static_cast<Element *>(tryblock(sizeof(Element)));
  Element *const data = shape ? trygrow(vector.data_pointer, total) : nullptr;
  if (!data) {
    if (shape != vector.shape_pointer) freeblock(shape);
    return false;
  }
  std::memcpy(data + vector.elements, records, count * sizeof(Element));
  setinteger(*shape, static_cast<std::int64_t>(total));
  if (shape != vector.shape_pointer) release(vector.shape_pointer);
  vector.shape_pointer = shape;
  vector.data_pointer = data;
  vector.type = joinedtype(vector.type, type, ranks::VECTOR);
  vector.depth = std::max({vector.depth, depth, std::int16_t{1}});
  vector.elements = static_cast<std::uint32_t>(total);
  vector.link = nullptr;
  return true;
}

namespace {

// Can a record that others hold too be copied without storage?
bool issharedeasily(const Element &e) {
  return e.tag == tags::SUBARRAY || isplainrecord(e);
}

}  // namespace

bool appendvalue(Point &vector, Point &value) {
  if (!isspace(value) || value.rank > ranks::VECTOR || isnothing(value) || value.elements >= POLL_INTERVAL)
    return false;
  ensurekinds(value);
  Side part;
  if (makepart(part, value) != 0) return false;
  const Element *const end = part.records + part.count;
  const bool copied = part.transfer == Transfer::COPIED;
  if (copied && !std::all_of(part.records, end, issharedeasily)) return false;
  if (!appendrecords(vector, part.records, part.count, part.bits | (value.type & ISPROBABLE), part.depth)) return false;
  if (copied) referencedataelems(vector.data_pointer + vector.elements - part.count, part.count);
  releaseoperand(part);
  value = {};
  return true;
}

bool joinplain(Point &joined, const PlainRecords &left, const PlainRecords &right) {
  const std::uint32_t total = left.count + right.count;
  auto *const shape = static_cast<Element *>(tryblock(sizeof(Element)));
  auto *const data = shape ? static_cast<Element *>(tryblock(total * sizeof(Element))) : nullptr;
  if (!data) {
    freeblock(shape);
    return false;
  }
  std::copy_n(left.records, left.count, data);
  std::copy_n(right.records, right.count, data + left.count);
  setinteger(*shape, total);
  joined = {};
  joined.rank = ranks::VECTOR;
  joined.type = joinedtype(left.type, right.type, ranks::VECTOR);
  joined.depth = std::max({left.depth, right.depth, std::int16_t{1}});
  joined.elements = total;
  joined.shape_pointer = shape;
  joined.data_pointer = data;
  return true;
}

}  // namespace morvik
