// INTERVAL. The description is read first, whole; the values are written into a new space afterwards.
#include "operators/interval.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "arithmetic/rounding.h"
#include "failure/custody.h"
#include "failure/exception.h"
#include "failure/signals.h"
#include "operators/progression.h"
#include "spaces/convert.h"
#include "spaces/counters.h"
#include "spaces/hypercomplex.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/parts.h"
#include "spaces/point.h"
#include "spaces/refderef.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

namespace morvik {

namespace {

struct Operand {
  Point **stackpointer;
  const Point *instruction;
  const Element *elements;
  std::uint32_t count;
  std::int64_t origin;
  double tolerance;
};

// ---- Whole numbers, within the tolerance.

// A zero keeps the sign of the number.
double tolerantnumber(double x, double t) {
  return roundable(x) ? std::copysign(tolerantwhole(x, t, x), x) : x;
}

// Is the element an integer, within the tolerance? Then this is it.
bool iswhole(const Element &e, double t, std::int64_t &value) {
  if (e.tag == tags::INTEGER) {
    value = e.integer;
    return true;
  }
  const double x = tolerantnumber(e.real, t);
  value = saturate(x);
  return roundable(x) && std::floor(x) == x;
}

// ---- The result.

// A count that a space cannot have is a message.
std::int32_t checkcount(double count) {
  return count <= static_cast<double>(MOST_ELEMENTS) ? 0 : messages::ARRAY_TOO_BIG;
}

void replacetop(Point **stackpointer, const Point &value) {
  dereferencepoint(*stackpointer);
  **stackpointer = value;
  operations += value.elements;
}

// The doubles of all octonions, before any is written: where there is no storage for them, what was made goes as it is.
void makeoctonions(Point &vector, std::uint64_t count) {
  for (std::uint64_t i = 0; i < count; ++i) {
    Element &e = vector.data_pointer[i];
    e = {};
    e.tag = tags::OCTONION;
    e.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
    vector.elements = static_cast<std::uint32_t>(i + 1);
    if (i % POLL_INTERVAL == POLL_INTERVAL - 1) safepoint();
  }
}

// Writes elements `begin` to `end` - 1 as long as nobody says stop. Where did it end?
std::uint64_t writepolled(const Progression &p, Element *result, std::uint64_t begin, std::uint64_t end,
                          bool (*stopped)()) {
  for (; begin < end && !stopped(); begin = std::min(end, begin + POLL_INTERVAL))
    writeinterval(p, result, begin, std::min(end, begin + POLL_INTERVAL));
  return begin;
}

// Gives all but the first slice to the pool, where the gate lets it: how many elements are left to do here.
std::uint64_t postinterval(const Operand &o, const Progression &progression, const Point &made, std::uint64_t count) {
  if (!goesparallel(static_cast<std::int64_t>(count))) return count;
  wait_for_coprocessors(*o.stackpointer, 1);
  auto *parameters = static_cast<Progression *>(newblock(sizeof(Progression)));
  *parameters = progression;
  to_coprocessors = {};
  to_coprocessors.instruction = o.instruction;
  to_coprocessors.operand = *o.stackpointer;
  to_coprocessors.fresh = 1;
  to_coprocessors.count = count;
  to_coprocessors.release = parameters;
  to_coprocessors.result = made.data_pointer;
  if (postcoprocessors()) return slice(static_cast<std::uint32_t>(count), processors, 0).end;
  dereference(to_coprocessors.release);
  return count;
}

// A vector of so many elements in the place of the top, which lives until the join if the pool is at work.
void makevector(const Operand &o, const Progression &progression, std::uint64_t count) {
  Point made{};
  made.rank = ranks::VECTOR;
  made.type = ISVECTOR | kindbit(progression.tag) | (count == 1 ? ISONEELEMENT : 0);
  Custody making;
  takecustody(making, releasepoint, &made);
  made.shape_pointer = newshape(static_cast<std::int64_t>(count));
  made.data_pointer = newelements(count);
  if (ownsparts(progression.tag)) makeoctonions(made, count);
  const std::uint64_t own = postinterval(o, progression, made, count);
  const bool inpool = own < count;
  if (writepolled(progression, made.data_pointer, 0, own, isinterrupted) < own) {
    if (inpool) recallslices();
    takeinterrupt();
  }
  endcustody(making);
  made.elements = static_cast<std::uint32_t>(count);
  if (!inpool) return replacetop(o.stackpointer, made);
  deferoperands(**o.stackpointer);
  **o.stackpointer = made;
  operations += made.elements;
}

Progression startprogression(std::int32_t tag, std::uint16_t form) {
  Progression p{};
  p.tag = tag;
  p.form = form;
  return p;
}

// ---- Integers.

void writewhole(const Operand &o, std::int64_t from, std::int64_t step, std::uint64_t count) {
  Progression p = startprogression(tags::INTEGER, forms::NUMBER);
  p.from = from;
  p.step = step;
  makevector(o, p, count);
}

std::int32_t countedinterval(const Operand &o) {
  std::int64_t n;
  if (!iswhole(o.elements[0], o.tolerance, n)) return messages::INTERVAL_NOT_INTEGER;
  const std::uint64_t count = n < 0 ? 0 - static_cast<std::uint64_t>(n) : static_cast<std::uint64_t>(n);
  if (const std::int32_t message = checkcount(static_cast<double>(count)); message != 0) return message;
  if (count == 0) {
    Point empty;
    makeempty(empty);
    replacetop(o.stackpointer, empty);
    return 0;
  }
  const auto origin = static_cast<std::uint64_t>(o.origin);
  writewhole(o, static_cast<std::int64_t>(n > 0 ? origin : 0 - origin), n > 0 ? 1 : -1, count);
  return 0;
}

std::int32_t integerinterval(const Operand &o, std::int64_t from, std::int64_t to, std::int64_t step) {
  if (step == 0 || (to > from && step < 0) || (to < from && step > 0)) return messages::INTERVAL_INFINITE;
  const std::uint64_t width = to >= from ? static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from)
                                         : static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(to);
  const std::uint64_t stride = step < 0 ? 0 - static_cast<std::uint64_t>(step) : static_cast<std::uint64_t>(step);
  const std::uint64_t steps = width / stride;
  if (const std::int32_t message = checkcount(static_cast<double>(steps) + 1); message != 0) return message;
  writewhole(o, from, step, steps + 1);
  return 0;
}

// ---- Reals.

std::int32_t realinterval(const Operand &o, double from, double to, double step) {
  if (!(step > 0 || step < 0) || (to > from && step < 0) || (to < from && step > 0)) return messages::INTERVAL_INFINITE;
  const double count = std::trunc(std::fabs((to - from) / step)) + 1;
  if (std::isnan(count)) return messages::INTERVAL_INFINITE;
  if (const std::int32_t message = checkcount(count); message != 0) return message;
  Progression p = startprogression(tags::REAL, forms::COMPUTED);
  p.first[0] = from;
  p.steps[0] = std::isinf(step) ? 0 : step;  // which is never made, and has no multiple
  makevector(o, p, static_cast<std::uint64_t>(count));
  return 0;
}

std::int32_t numberinterval(const Operand &o) {
  if (o.count == 1) return countedinterval(o);
  std::int64_t w[3] = {0, 0, 0};
  bool allwhole = true;
  for (std::uint32_t i = 0; i < o.count; ++i) allwhole = iswhole(o.elements[i], o.tolerance, w[i]) && allwhole;
  if (allwhole) return integerinterval(o, w[0], w[1], o.count > 2 ? w[2] : w[0] <= w[1] ? 1 : -1);
  const double from = tolerantnumber(realpart(o.elements[0]), o.tolerance),
               to = tolerantnumber(realpart(o.elements[1]), o.tolerance);
  const double step = o.count > 2 ? tolerantnumber(realpart(o.elements[2]), o.tolerance) : from > to ? -1.0 : 1.0;
  return realinterval(o, from, to, step);
}

// ---- Characters.

std::int32_t characterinterval(const Operand &o) {
  if (o.count > 2) return messages::INTERVAL_CHARACTER_STEP;
  for (std::uint32_t i = 0; i < o.count; ++i)
    if (o.elements[i].tag != tags::ASCII) return messages::INTERVAL_HALF_CHARACTERS;
  const int from = o.count > 1 ? o.elements[0].ascii : 0, to = o.elements[o.count - 1].ascii;
  const int step = from <= to ? 1 : -1;
  Progression p = startprogression(tags::ASCII, 0);
  p.from = from;
  p.step = step;
  const int width = (to - from) * step;
  makevector(o, p, static_cast<std::uint64_t>(width) + 1);
  return 0;
}

// ---- Grids of hypercomplex numbers.

bool ispolar(const Element &e) {
  return (e.form & forms::POLAR) != 0;
}

// From and to, the step if there is one, in the coordinates of the grid.
std::int32_t readgrid(const Operand &o, Progression &g, double *to) {
  const Element &last = o.elements[o.count > 1 ? 1 : 0];
  g = startprogression(last.tag, forms::CARTESIAN);
  g.polar = ispolar(last) || (o.count > 1 && ispolar(o.elements[0]));
  if (g.polar) g.form = forms::POLAR;
  g.attributes = last.attributes & attributes::DEGREES;
  g.first[0] = static_cast<double>(o.origin);
  if (o.count > 1) readparts(o.elements[0], g.first);
  g.parts = readparts(last, to);
  if (o.count > 2) readparts(o.elements[2], g.steps);
  if (g.polar) {
    topolar(g.first, g.parts);
    topolar(to, g.parts);
    if (o.count > 2) topolar(g.steps, g.parts);
  }
  for (int k = 0; k < g.parts; ++k) {
    if (o.count == 1 && !roundable(to[k])) return messages::INTERVAL_NOT_INTEGER;
    g.first[k] = tolerantnumber(g.first[k], o.tolerance);
    to[k] = tolerantnumber(to[k], o.tolerance);
    if (o.count < 3) g.steps[k] = to[k] < g.first[k] ? -1 : 1;
  }
  return 0;
}

// How many values each component takes, and all together.
std::int32_t countgrid(Progression &g, const double *to, std::uint64_t &count) {
  double total = 1;
  for (int k = 0; k < g.parts; ++k) {
    const double width = to[k] - g.first[k];
    double values = 1;
    if (width != 0) {
      values = std::trunc(std::fabs(width / g.steps[k])) + 1;
      if (g.steps[k] == 0 || width * g.steps[k] < 0 || std::isnan(values)) return messages::INTERVAL_INFINITE;
    }
    total *= values;
    if (const std::int32_t message = checkcount(total); message != 0) return message;
    g.counts[k] = static_cast<std::uint64_t>(values);
    if (!std::isfinite(g.steps[k])) g.steps[k] = 0;  // never made, and without a multiple
  }
  count = static_cast<std::uint64_t>(total);
  return 0;
}

std::int32_t gridinterval(const Operand &o) {
  Progression g;
  double to[MOST_PARTS] = {};
  std::uint64_t count;
  if (const std::int32_t message = readgrid(o, g, to); message != 0) return message;
  if (const std::int32_t message = countgrid(g, to, count); message != 0) return message;
  makevector(o, g, count);
  return 0;
}

// ---- What kind of interval?

std::int32_t readinterval(const Operand &o) {
  bool hascharacter = false, hashyper = false, mixed = false;
  for (std::uint32_t i = 0; i < o.count; ++i) {
    const std::int32_t tag = o.elements[i].tag;
    if (tag == tags::SUBARRAY) return messages::INTERVAL_LENGTH;
    if (tag == tags::UNICODE || kindbit(tag) == 0) return messages::INTERVAL_TYPE;
    hascharacter |= tag == tags::ASCII;
    hashyper |= partsof(tag) > 1;
    mixed |= tag != o.elements[0].tag;
  }
  if (hascharacter) return characterinterval(o);
  if (!hashyper) return numberinterval(o);
  return mixed ? messages::INTERVAL_MIXED : gridinterval(o);
}

}  // namespace

// What a stopped slice leaves is whole: an octonion owns its block already, anything else owns nothing.
void vec_interval(std::uint32_t index) noexcept {
  const Work &work = to_coprocessors;
  const auto &progression = *static_cast<const Progression *>(work.release);
  const Slice mine = slice(static_cast<std::uint32_t>(work.count), processors, index);
  std::uint64_t done = writepolled(progression, work.result, mine.begin, mine.end, isstopped);
  if (done == mine.end) return;
  from_coprocessor[index].failure = INTERRUPTED;
  if (ownsparts(progression.tag)) return;
  for (; done < mine.end; ++done) setfiller(work.result[done]);
}

void interval(Point **stackpointer, const Point *instruction, Point *context) {
  const Point &top = **stackpointer;
  if (!isspace(top)) exceptionjump(messages::INTERVAL_TYPE, stackpointer, instruction);
  if (isempty(top) || top.elements == 0) {
    Point zero;
    makeinteger(zero, 0);
    return replacetop(stackpointer, zero);
  }
  std::int32_t message = messages::INTERVAL_LENGTH;
  if (top.elements <= 3 && (top.type & STRUCTURED) == 0)
    message = readinterval(
        {stackpointer, instruction, top.data_pointer, top.elements, indexorigin(context), tolerance(context)});
  if (message != 0) exceptionjump(message, stackpointer, instruction);
}

}  // namespace morvik
