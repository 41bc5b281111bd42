// Folds. Each goes from the first record of its group to the last, with the rule of the scalar instruction at each
// step.
#include "operators/reduce.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

#include "arithmetic/cores.h"
#include "arithmetic/dyadic.h"
#include "arithmetic/pairs.h"
#include "arithmetic/pairwalk.h"
#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "operators/records.h"
#include "spaces/copies.h"
#include "spaces/instructions.h"
#include "spaces/messages.h"
#include "spaces/parts.h"
#include "spaces/refderef.h"

namespace morvik {

namespace {

// The scalar instruction that a modifier names; null for what does not fold. NAND and NOR are left out.
const Dyadic *coresof(std::uint16_t modifier) {
  if (modifier == instructions::NAND || modifier == instructions::NOR) return nullptr;
  return dyadiccores(modifier);
}

bool isarithmetic(std::uint16_t modifier) {
  return modifier <= instructions::BINOMIAL && modifier != instructions::MINIMUM && modifier != instructions::MAXIMUM;
}

// Along one axis: how many records a group has and how far apart they are, and how many groups there are.
struct Axis {
  std::int32_t number;
  std::size_t extent, stride, groups;
};

Axis axisof(const Point &space, bool last) {
  Axis axis{};
  axis.number = last ? space.rank - 1 : 0;
  axis.extent = static_cast<std::size_t>(space.shape_pointer[axis.number].integer);
  axis.groups = axis.extent == 0 ? 0 : space.elements / axis.extent;
  axis.stride = last ? axis.groups : 1;
  return axis;
}

const Element *groupat(const Point &space, const Axis &axis, std::size_t group) {
  return space.data_pointer + (axis.stride == 1 ? group * axis.extent : group);
}

// What a fold can't begin with. 0, or the message.
std::int32_t checkfold(const Point &space, std::uint16_t modifier) {
  if (!space.data_pointer) return 0;
  if (space.rank == ranks::ADDRESS || space.rank == ranks::LOCAL_ADDRESS) return messages::ADDRESS_FOLDED;
  if (!isspace(space)) return messages::RESTRICTION;
  if (space.rank == 0) return 0;
  if (!coresof(modifier)) return messages::NO_FOLD_OPERAND;
  if (isarithmetic(modifier) && (space.type & (HASASCII | HASUNICODE)) != 0) return messages::CHARACTERS_FOLDED;
  if (modifier != instructions::ADD || (space.type & COMPLEXED) == 0) return 0;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const std::int32_t tag = space.data_pointer[i].tag;
    if (tag == tags::SUBARRAY) return messages::IMPOSSIBLE;
    if (partsof(tag) == 0) return messages::RESTRICTION;
  }
  return 0;
}

// ---- Folds of plain numbers, which need no record between the steps.

// What makes a record plain: its tag, and that it has no name.
constexpr std::uint64_t COMPARED_BITS = heading(-1, 0, attributes::NAMED);
constexpr std::uint64_t PLAIN_INTEGER = heading(tags::INTEGER, 0), PLAIN_REAL = heading(tags::REAL, 0);

bool isplain(const Element &e, std::uint64_t kind) {
  return (headingof(e) & COMPARED_BITS) == kind;
}

// Records of a group that are still to come, up to the next safe point.
struct Stretch {
  const Element *next;
  std::size_t stride, count;
};

// A fold over integers: how far it has come, and whether that is still what the integers' own rule gives.
struct TruthFold {
  bool value;
  bool holds() const { return true; }
};
struct ExtremumFold {
  std::int64_t value;
  bool holds() const { return true; }
};
// Made in doubles, as ADD does it, and a sum of integers as long as it is one.
struct SumFold {
  double value;
  bool beyond = false;
  bool holds() const { return !beyond; }
};

constexpr std::size_t UNROLLED = 8;

// Takes as many integers as are plain, so many together: whether they all were is asked afterwards, and if not, it is
// as if they had not been looked at. `advance(state, integer)` makes one step.
template <typename State, typename Advance, typename Stride>
std::size_t takentogether(const Stretch &s, State &state, Advance advance, Stride stride) {
  const Element *e = s.next;
  std::size_t i = 0;
  for (; s.count - i >= UNROLLED; i += UNROLLED, e += UNROLLED * stride) {
    State further = state;
    std::uint64_t others = 0;
    [&]<std::size_t... k>(std::index_sequence<k...>) {
      ((others |= headingof(e[k * stride]) ^ PLAIN_INTEGER, advance(further, e[k * stride].integer)), ...);
    }
    (std::make_index_sequence<UNROLLED>{});
    if ((others & COMPARED_BITS) != 0 || !further.holds()) break;
    state = further;
  }
  return i;
}

template <typename State, typename Advance>
std::size_t takenintegers(const Stretch &s, State &state, Advance advance) {
  // Neighbours are reached without arithmetic.
  std::size_t i = s.stride == 1 ? takentogether(s, state, advance, std::integral_constant<std::size_t, 1>{})
                                : takentogether(s, state, advance, s.stride);
  for (const Element *e = s.next + i * s.stride; i < s.count && isplain(*e, PLAIN_INTEGER); ++i, e += s.stride) {
    State further = state;
    advance(further, e->integer);
    if (!further.holds()) break;
    state = further;
  }
  return i;
}

// Each continues a fold whose result so far is a plain record, and returns how many records it took.
std::size_t integersum(Element &to, const Stretch &s) {
  SumFold sum = {static_cast<double>(to.integer)};
  const std::size_t count = takenintegers(s, sum, [](SumFold &sofar, std::int64_t next) {
    sofar.value += static_cast<double>(next);
    sofar.beyond |= std::fabs(sofar.value) > INTEGER_BOUND;
  });
  if (count > 0) writerecord(to, saturate(sum.value), forms::NUMBER);
  return count;
}

// The smaller or the larger of integers.
template <bool smaller>
std::size_t integerextremum(Element &to, const Stretch &s) {
  ExtremumFold found = {to.integer};
  const std::size_t count = takenintegers(s, found, [](ExtremumFold &sofar, std::int64_t next) {
    sofar.value = smaller ? std::min(sofar.value, next) : std::max(sofar.value, next);
  });
  if (count > 0) writerecord(to, found.value, forms::NUMBER);
  return count;
}

// Are all of the integers above 0, or is one?
template <bool all>
std::size_t integertruth(Element &to, const Stretch &s) {
  TruthFold found = {to.integer > 0};
  const std::size_t count = takenintegers(s, found, [](TruthFold &sofar, std::int64_t next) {
    sofar.value = all ? sofar.value & (next > 0) : sofar.value | (next > 0);
  });
  if (count > 0) writerecord(to, found.value ? 1 : 0, forms::BOOLEAN);
  return count;
}

// Takes reals as long as they are plain. Returns how many.
template <typename Step>
std::size_t takenreals(const Stretch &s, Step step) {
  const Element *e = s.next;
  std::size_t i = 0;
  for (; i < s.count && isplain(*e, PLAIN_REAL); ++i, e += s.stride) step(e->real);
  return i;
}

std::size_t realsum(Element &to, const Stretch &s) {
  double sum = to.real;
  const std::size_t count = takenreals(s, [&](double x) { sum += x; });
  if (count > 0) writerecord(to, sum);
  return count;
}

// The first of equals, and what is no number outweighs every other.
template <bool smaller>
std::size_t realextremum(Element &to, const Stretch &s) {
  double found = to.real;
  const std::size_t count = takenreals(s, [&](double x) {
    if ((smaller ? x < found : x > found) || std::isnan(x)) found = x;
  });
  if (count > 0) writerecord(to, found);
  return count;
}

// The loops for a fold that begins with a plain integer, or with a plain real; null for none. What they do is what the
// scalar instruction would do record by record.
using PlainFold = std::size_t (*)(Element &to, const Stretch &s);
struct PlainFolds {
  PlainFold integers, reals;
};

PlainFolds plainfolds(std::uint16_t modifier) {
  switch (modifier) {
    case instructions::ADD:
      return {integersum, realsum};
    case instructions::MINIMUM:
      return {integerextremum<true>, realextremum<true>};
    case instructions::MAXIMUM:
      return {integerextremum<false>, realextremum<false>};
    case instructions::AND:
      return {integertruth<true>, nullptr};
    case instructions::OR:
      return {integertruth<false>, nullptr};
    default:
      return {nullptr, nullptr};
  }
}

// Folds the first records of a group so; `to` holds the very first one. Returns how many records are in it then, one
// flop for each step on reals, or 0 after an interrupt.
std::size_t plainfold(const PlainFolds &folds, Element &to, const Element *first, const Axis &axis, Tally &tally) {
  const bool reals = isplain(to, PLAIN_REAL);
  const PlainFold fold = reals ? folds.reals : isplain(to, PLAIN_INTEGER) ? folds.integers : nullptr;
  std::size_t done = 1;
  while (fold && done < axis.extent) {
    if (interrupted != 0) return 0;
    const Stretch s = {first + done * axis.stride, axis.stride, std::min(axis.extent - done, POLL_INTERVAL)};
    const std::size_t count = fold(to, s);
    done += count;
    if (count < s.count) break;
  }
  if (reals) tally.flops += static_cast<double>(done - 1);
  return done;
}

// ---- One group, and all of them.

std::int32_t fold(const Dyadic &d, const PlainFolds &plain, const Element *first, const Axis &axis, Element &to,
                  Tally &tally) {
  const std::size_t done = plainfold(plain, to, first, axis, tally);
  if (done == 0) return INTERRUPTED;
  if (done == axis.extent) return 0;
  Run run{};
  run.left = run.result = &to;
  run.right = first + done * axis.stride;
  run.rightstep = axis.stride;
  run.count = axis.extent - done;
  return work(d, run, tally);
}

// The result so far, in custody; its records are whole at any time.
struct Folded {
  Point point;
  Custody custody;
};

void beginfold(Folded &f, const Point &space, const Axis &axis) {
  f.point = space;
  f.point.rank = space.rank - 1;
  f.point.shape_pointer = nullptr;
  f.point.data_pointer = nullptr;
  f.point.elements = 0;
  f.point.type &= ~(RANK_BITS | ISSTRUCTURE | ISEMPTY | ELEMENT_BITS);  // no kinds: whatever is in there gets released
  f.point.type |= f.point.rank == 0 ? ISSCALAR : f.point.rank == ranks::VECTOR ? ISVECTOR : ISARRAY;
  takecustody(f.custody, releasepoint, &f.point);
  if (f.point.rank > 0) {
    const Element *kept = space.shape_pointer + (axis.number == 0 ? 1 : 0);
    f.point.shape_pointer = copyelements(kept, static_cast<std::size_t>(f.point.rank));
  } else {
    f.point.depth = 0;
  }
  f.point.data_pointer = newelements(axis.groups);
  if (f.point.rank == 0) setfiller(*f.point.data_pointer);
}

void setkinds(Point &point) {
  std::uint32_t kinds = 0;
  for (std::uint32_t i = 0; i < point.elements; ++i) kinds |= records::recordbits(point.data_pointer[i]);
  kinds &= ~ISSTRUCTURE;
  point.type = (point.type & ~(ELEMENT_BITS | COMPLEXED | STRUCTURED | NAME_BEARING | ISLOCAL)) | kinds;
  if (point.elements > 1) point.type |= complexed(kinds);
  if (point.elements == 1 && point.rank > 0) point.type |= ISONEELEMENT;
}

// The copy that a fold starts from has no name any more.
void unname(Element &e) {
  if (!isnamed(e) || e.tag == tags::HANDLE) return;
  e.attributes = static_cast<std::uint16_t>(e.attributes & ~attributes::NAMED);
  e.name = nullptr;
}

void foldspace(Point **stackpointer, const Point *instruction, Point *context, bool last) {
  const Point &space = **stackpointer;
  if (const std::int32_t message = checkfold(space, instruction->modifier); message != 0)
    failwith(message, stackpointer, instruction);
  if (space.rank == 0 || !space.data_pointer) return;
  const Dyadic &d = *coresof(instruction->modifier);
  const Axis axis = axisof(space, last);
  const PlainFolds plain = plainfolds(instruction->modifier);
  Tally tally;
  tally.tolerance = tolerancein(context);
  tally.stopped = isinterrupted;
  Folded f;
  beginfold(f, space, axis);
  for (std::size_t i = 0; i < axis.groups; ++i) {
    const Element *first = groupat(space, axis, i);
    Element &to = f.point.data_pointer[i];
    copyelement(to, *first);
    if (axis.extent > 1) unname(to);
    f.point.elements = static_cast<std::uint32_t>(i + 1);
    const std::int32_t message = fold(d, plain, first, axis, to, tally);
    if (message != 0) failwith(message, stackpointer, instruction);
    if (i % SLOW_POLL_INTERVAL == 0) safepoint();
  }
  endcustody(f.custody);
  setkinds(f.point);
  countwork(space.elements, tally.flops);
  dereferencepoint(*stackpointer);
  **stackpointer = f.point;
}

}  // namespace

void reduce(Point **stackpointer, const Point *instruction, Point *context) {
  foldspace(stackpointer, instruction, context, false);
}

void reducelastaxis(Point **stackpointer, const Point *instruction, Point *context) {
  foldspace(stackpointer, instruction, context, true);
}

void group(Point **stackpointer, const Point *instruction, Point *) {
  exceptionjump(messages::RESTRICTION, stackpointer, instruction);
}

}  // namespace morvik
