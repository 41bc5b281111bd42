// Folds. Each goes from the first record of its group to the last, with the rule of the scalar instruction at each
// step.
#include "operators/reduce.h"

#include <algorithm>
#include <cmath>

#include "arithmetic/cores.h"
#include "diagnostics/exception.h"
#include "spaces/instructions.h"
#include "spaces/refderef.h"

namespace {

constexpr std::int32_t CHARACTERS = 75, MISSING = 79, ADDRESSED = 145, IMPOSSIBLE = 991, UNFOLDED = 994;

// The scalar instruction that a modifier names; null for what does not fold. NAND and NOR are left out.
const Dyadic *coresof(std::uint16_t modifier) {
  if (modifier == instructions::NAND || modifier == instructions::NOR) return nullptr;
  return dyadiccores(modifier);
}

bool isarithmetic(std::uint16_t modifier) {
  return modifier <= instructions::BINOMIAL && modifier != instructions::MINIMUM && modifier != instructions::MAXIMUM;
}

// Along one axis: how many records a group has and how far they stand apart, and how many groups there are.
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
std::int32_t refused(const Point &space, std::uint16_t modifier) {
  if (!space.data_pointer) return 0;
  if (space.rank == ranks::ADDRESS || space.rank == ranks::LOCALADDRESS) return ADDRESSED;
  if (!isspace(space)) return UNFOLDED;
  if (space.rank == 0) return 0;
  if (!coresof(modifier)) return MISSING;
  if (isarithmetic(modifier) && (space.type & (HASASCII | HASUNICODE)) != 0) return CHARACTERS;
  if (modifier != instructions::ADD || (space.type & COMPLEXED) == 0) return 0;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const std::int32_t tag = space.data_pointer[i].tag;
    if (tag == tags::SUBARRAY) return IMPOSSIBLE;
    if (tag < tags::INTEGER || tag > tags::OCTONION) return UNFOLDED;
  }
  return 0;
}

// ---- Sums of plain numbers, which need no record between the steps.

// What makes a record plain: its tag, and that it has no name.
constexpr std::uint64_t PLAIN = heading(-1, 0, attributes::NAMED);

// Sums the first records of a group as long as they are plain integers or reals of one kind. The rule of each step is
// ADD's: a sum of integers that passes their bound is real from there on. Returns how many records were taken.
std::size_t plainsum(const Element *e, const Axis &axis, Element &to, Tally &tally) {
  const std::uint64_t kind = headingof(*e) & PLAIN;
  const bool integer = kind == heading(tags::INTEGER, 0);
  if (!integer && kind != heading(tags::REAL, 0)) return 1;
  double sum = integer ? static_cast<double>(e->integer) : e->real;
  std::size_t i = 1;
  for (e += axis.stride; i < axis.extent && (headingof(*e) & PLAIN) == kind; ++i, e += axis.stride) {
    sum += integer ? static_cast<double>(e->integer) : e->real;
    if (integer && std::fabs(sum) > INTEGERBOUND) break;
  }
  if (i == 1 || (integer && std::fabs(sum) > INTEGERBOUND)) return 1;
  if (integer)
    write(to, saturate(sum), forms::NUMBER);
  else
    write(to, sum);
  tally.flops += integer ? 0 : static_cast<double>(i - 1);
  return i;
}

// ---- One group, and all of them.

std::int32_t fold(const Dyadic &d, const Element *first, const Axis &axis, Element &to, bool sums, Tally &tally) {
  std::size_t taken = sums ? plainsum(first, axis, to, tally) : 1;
  if (taken == axis.extent) return 0;
  Run run{};
  run.left = run.result = &to;
  run.right = first + taken * axis.stride;
  run.rightstep = axis.stride;
  run.count = axis.extent - taken;
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
  f.point.type &= ~(RANKBITS | ISSTRUCTURE | ISEMPTY | HASFILE);
  f.point.type |= f.point.rank == 0 ? ISSCALAR : f.point.rank == ranks::VECTOR ? ISVECTOR : ISARRAY;
  takecustody(f.custody, releasepoint, &f.point);
  if (f.point.rank > 0) {
    const Element *kept = space.shape_pointer + (axis.number == 0 ? 1 : 0);
    f.point.shape_pointer = copyelements(kept, static_cast<std::size_t>(f.point.rank));
  } else {
    f.point.depth = 0;
  }
  f.point.data_pointer = newelements(axis.groups);
}

void setkinds(Point &point) {
  std::uint32_t kinds = 0;
  for (std::uint32_t i = 0; i < point.elements; ++i) {
    const std::int32_t tag = point.data_pointer[i].tag;
    kinds |= tag == tags::SUBARRAY || tag < 0 ? STRUCTURED : kindbit(tag);
  }
  point.type = (point.type & ~(ELEMENTBITS | COMPLEXED | STRUCTURED | NAMEBEARING | ISLOCAL)) | kinds;
  if (point.elements > 1) point.type |= complexed(kinds);
  if (point.elements == 1 && point.rank > 0) point.type |= ISONEELEMENT;
}

// The copy that a fold starts from has no name any more.
void unname(Element &e) {
  if ((e.attributes & attributes::NAMED) == 0 || e.tag == tags::HANDLE) return;
  e.attributes = static_cast<std::uint16_t>(e.attributes & ~attributes::NAMED);
  e.name = nullptr;
}

[[noreturn]] void failfold(std::int32_t message, Point **stackpointer, const Point *instruction) {
  if (message == INTERRUPTED) takeinterrupt();
  exceptionjump(message, stackpointer, instruction);
}

void foldspace(Point **stackpointer, const Point *instruction, Point *context, bool last) {
  const Point &space = **stackpointer;
  if (const std::int32_t message = refused(space, instruction->modifier); message != 0)
    failfold(message, stackpointer, instruction);
  if (space.rank == 0 || !space.data_pointer) return;
  const Dyadic &d = *coresof(instruction->modifier);
  const Axis axis = axisof(space, last);
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
    const std::int32_t message = fold(d, first, axis, to, instruction->modifier == instructions::ADD, tally);
    if (message != 0) failfold(message, stackpointer, instruction);
    if ((i & 0xFFF) == 0) safepoint();
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
  exceptionjump(UNFOLDED, stackpointer, instruction);
}
