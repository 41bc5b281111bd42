// INTERVAL. The description is read first, whole; the values are written into a new space afterwards.
#include "operators/interval.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "coprocessor/sysvars.h"
#include "diagnostics/exception.h"
#include "spaces/convert.h"
#include "spaces/counters.h"
#include "spaces/hypercomplex.h"
#include "spaces/refderef.h"

namespace {

constexpr std::int32_t UNAVAILABLE = 142, TOOBIG = 146, NOTWHOLE = 153, BADCOUNT = 154, STEPPEDCHARACTERS = 155,
                       HALFCHARACTERS = 156, MIXED = 157, INFINITE = 158;
constexpr std::uint32_t STRETCH = 65536;  // elements between two safe points
constexpr int PARTS = 8;

struct Operand {
  const Element *elements;
  std::uint32_t count;
  std::int64_t origin;
  double tolerance;
};

// ---- Whole numbers, within the tolerance.

double tolerant(double x, double t) {
  if (!(std::fabs(x) < INTEGERBOUND)) return x;
  if (std::floor(x) == std::ceil(x - t)) return std::floor(x);
  if (std::ceil(x) == std::floor(x + t)) return std::ceil(x);
  return x;
}

// Is the element an integer, within the tolerance? Then this is it.
bool whole(const Element &e, double t, std::int64_t &value) {
  if (e.tag == tags::INTEGER) {
    value = e.integer;
    return true;
  }
  const double x = tolerant(e.real, t);
  value = saturate(x);
  return std::fabs(x) < INTEGERBOUND && std::floor(x) == x;
}

double real(const Element &e) {
  return e.tag == tags::INTEGER ? static_cast<double>(e.integer) : e.real;
}

// ---- The result.

// A vector of so many elements, in custody until it is ended.
struct Made {
  Point point;
  Custody custody;
};

void beginvector(Made &made, std::uint64_t count, std::uint32_t kind) {
  made.point = {};
  made.point.rank = ranks::VECTOR;
  made.point.type = ISVECTOR | kind | (count == 1 ? ISONEELEMENT : 0);
  takecustody(made.custody, releasepoint, &made.point);
  made.point.shape_pointer = newshape(static_cast<std::int64_t>(count));
  made.point.data_pointer = newelements(count);
}

void replacetop(Point **stackpointer, const Point &value) {
  dereferencepoint(*stackpointer);
  **stackpointer = value;
  operations += value.elements;
}

// Writes elements 0 to count - 1 by `write(element, index)`; those that are written belong to the vector.
template <typename Write>
void fill(Made &made, std::uint64_t count, Write write) {
  for (std::uint64_t i = 0; i < count;) {
    const std::uint64_t end = std::min<std::uint64_t>(count, i + STRETCH);
    for (; i < end; ++i) write(made.point.data_pointer[i], i);
    made.point.elements = std::max(made.point.elements, static_cast<std::uint32_t>(end));
    safepoint();
  }
  endcustody(made.custody);
}

// A count that a space cannot have is a message.
std::int32_t checkcount(double count) {
  return count <= static_cast<double>(std::numeric_limits<std::uint32_t>::max()) ? 0 : TOOBIG;
}

// ---- Integers.

struct Integers {
  std::int64_t from, step;
  std::uint64_t count;
};

void writeintegers(Point **stackpointer, const Integers &run) {
  Made made;
  beginvector(made, run.count, HASINTEGER);
  fill(made, run.count, [&run](Element &e, std::uint64_t i) {
    e = {};
    e.tag = tags::INTEGER;
    e.form = forms::NUMBER;
    e.integer =
        static_cast<std::int64_t>(static_cast<std::uint64_t>(run.from) + i * static_cast<std::uint64_t>(run.step));
  });
  replacetop(stackpointer, made.point);
}

std::int32_t counted(Point **stackpointer, const Operand &o) {
  std::int64_t n;
  if (!whole(o.elements[0], o.tolerance, n)) return NOTWHOLE;
  const std::uint64_t count = n < 0 ? 0 - static_cast<std::uint64_t>(n) : static_cast<std::uint64_t>(n);
  if (const std::int32_t message = checkcount(static_cast<double>(count)); message != 0) return message;
  if (count == 0) {
    Point empty;
    makeempty(empty);
    replacetop(stackpointer, empty);
    return 0;
  }
  const auto origin = static_cast<std::uint64_t>(o.origin);
  writeintegers(stackpointer, {static_cast<std::int64_t>(n > 0 ? origin : 0 - origin), n > 0 ? 1 : -1, count});
  return 0;
}

std::int32_t integers(Point **stackpointer, std::int64_t from, std::int64_t to, std::int64_t step) {
  if (step == 0 || (to > from && step < 0) || (to < from && step > 0)) return INFINITE;
  const std::uint64_t width = to >= from ? static_cast<std::uint64_t>(to) - static_cast<std::uint64_t>(from)
                                         : static_cast<std::uint64_t>(from) - static_cast<std::uint64_t>(to);
  const std::uint64_t stride = step < 0 ? 0 - static_cast<std::uint64_t>(step) : static_cast<std::uint64_t>(step);
  const std::uint64_t steps = width / stride;
  if (const std::int32_t message = checkcount(static_cast<double>(steps) + 1); message != 0) return message;
  writeintegers(stackpointer, {from, step, steps + 1});
  return 0;
}

// ---- Reals.

std::int32_t reals(Point **stackpointer, double from, double to, double step) {
  if (!(step > 0 || step < 0) || (to > from && step < 0) || (to < from && step > 0)) return INFINITE;
  const double count = std::trunc(std::fabs((to - from) / step)) + 1;
  if (std::isnan(count)) return INFINITE;
  if (const std::int32_t message = checkcount(count); message != 0) return message;
  Made made;
  beginvector(made, static_cast<std::uint64_t>(count), HASREAL);
  fill(made, static_cast<std::uint64_t>(count), [from, step](Element &e, std::uint64_t i) {
    e = {};
    e.tag = tags::REAL;
    e.form = forms::COMPUTED;
    e.real = from + static_cast<double>(i) * step;
  });
  replacetop(stackpointer, made.point);
  return 0;
}

std::int32_t numbers(Point **stackpointer, const Operand &o) {
  if (o.count == 1) return counted(stackpointer, o);
  std::int64_t w[3] = {0, 0, 0};
  bool allwhole = true;
  for (std::uint32_t i = 0; i < o.count; ++i) allwhole = whole(o.elements[i], o.tolerance, w[i]) && allwhole;
  if (allwhole) return integers(stackpointer, w[0], w[1], o.count > 2 ? w[2] : w[0] <= w[1] ? 1 : -1);
  const double from = tolerant(real(o.elements[0]), o.tolerance), to = tolerant(real(o.elements[1]), o.tolerance);
  const double step = o.count > 2 ? tolerant(real(o.elements[2]), o.tolerance) : from > to ? -1.0 : 1.0;
  return reals(stackpointer, from, to, step);
}

// ---- Characters.

std::int32_t characters(Point **stackpointer, const Operand &o) {
  if (o.count > 2) return STEPPEDCHARACTERS;
  for (std::uint32_t i = 0; i < o.count; ++i)
    if (o.elements[i].tag != tags::ASCII) return HALFCHARACTERS;
  const int from = o.count > 1 ? o.elements[0].ascii : 0, to = o.elements[o.count - 1].ascii;
  const int step = from <= to ? 1 : -1;
  const std::uint64_t count = static_cast<std::uint64_t>((to - from) * step) + 1;
  Made made;
  beginvector(made, count, HASASCII);
  fill(made, count, [from, step](Element &e, std::uint64_t i) {
    e = {};
    e.tag = tags::ASCII;
    e.ascii = static_cast<std::uint8_t>(from + static_cast<int>(i) * step);
  });
  replacetop(stackpointer, made.point);
  return 0;
}

// ---- Grids of hypercomplex numbers.

struct Grid {
  std::int32_t tag;
  int parts;
  bool polar;
  std::uint16_t marks;
  double from[PARTS], to[PARTS], step[PARTS];
  std::uint64_t counts[PARTS];
  std::uint64_t total;
};

int partsof(std::int32_t tag) {
  return tag == tags::COMPLEX ? 2 : tag == tags::QUATERNION ? 4 : 8;
}

void readparts(const Element &e, double *parts) {
  switch (e.tag) {
    case tags::COMPLEX:
      parts[0] = e.complex.re;
      parts[1] = e.complex.im;
      break;
    case tags::QUATERNION:
      std::copy_n(quaternion(e).part, 4, parts);
      break;
    default:
      std::copy_n(e.octonion->part, PARTS, parts);
  }
}

void turnpolar(std::int32_t tag, double *parts) {
  switch (tag) {
    case tags::COMPLEX:
      return polarcomplex(parts, parts);
    case tags::QUATERNION:
      return polarquat(parts, parts);
    default:
      return polarocto(parts, parts);
  }
}

void turncartesian(std::int32_t tag, double *parts) {
  switch (tag) {
    case tags::COMPLEX:
      return cartesiancomplex(parts, parts);
    case tags::QUATERNION:
      return cartesianquat(parts, parts);
    default:
      return cartesianocto(parts, parts);
  }
}

bool ispolar(const Element &e) {
  return (e.form & forms::POLAR) != 0;
}

// From and to, the step if there is one, in the coordinates of the grid.
std::int32_t readgrid(const Operand &o, Grid &g) {
  const Element &last = o.elements[o.count > 1 ? 1 : 0];
  g.tag = last.tag;
  g.parts = partsof(g.tag);
  g.polar = ispolar(last) || (o.count > 1 && ispolar(o.elements[0]));
  g.marks = last.attributes & attributes::DEGREES;
  std::fill_n(g.from, PARTS, 0.0);
  g.from[0] = static_cast<double>(o.origin);
  if (o.count > 1) readparts(o.elements[0], g.from);
  readparts(last, g.to);
  if (o.count > 2) readparts(o.elements[2], g.step);
  if (g.polar) {
    turnpolar(g.tag, g.from);
    turnpolar(g.tag, g.to);
    if (o.count > 2) turnpolar(g.tag, g.step);
  }
  for (int k = 0; k < g.parts; ++k) {
    if (o.count == 1 && !(std::fabs(g.to[k]) < INTEGERBOUND)) return NOTWHOLE;
    g.from[k] = tolerant(g.from[k], o.tolerance);
    g.to[k] = tolerant(g.to[k], o.tolerance);
    if (o.count < 3) g.step[k] = g.to[k] < g.from[k] ? -1 : 1;
  }
  return 0;
}

// How many values each component takes, and all together.
std::int32_t countgrid(Grid &g) {
  double total = 1;
  for (int k = 0; k < g.parts; ++k) {
    const double width = g.to[k] - g.from[k];
    double count = 1;
    if (width != 0) {
      count = std::trunc(std::fabs(width / g.step[k])) + 1;
      if (g.step[k] == 0 || width * g.step[k] < 0 || std::isnan(count)) return INFINITE;
    }
    total *= count;
    if (const std::int32_t message = checkcount(total); message != 0) return message;
    g.counts[k] = static_cast<std::uint64_t>(count);
  }
  g.total = static_cast<std::uint64_t>(total);
  return 0;
}

void writepoint(const Grid &g, Element &e, std::uint64_t index) {
  double parts[PARTS] = {};
  for (int k = 0; k < g.parts; ++k) {
    parts[k] = g.from[k] + static_cast<double>(index % g.counts[k]) * g.step[k];
    index /= g.counts[k];
  }
  if (g.polar) turncartesian(g.tag, parts);
  Octonion *block = e.octonion;
  e = {};
  e.tag = g.tag;
  e.form = g.polar ? forms::POLAR : forms::CARTESIAN;
  e.attributes = g.marks;
  if (g.tag == tags::COMPLEX) {
    e.complex = {parts[0], parts[1]};
  } else if (g.tag == tags::QUATERNION) {
    setquaternion(e, {{parts[0], parts[1], parts[2], parts[3]}});
  } else {
    e.octonion = block;
    std::copy_n(parts, PARTS, block->part);
  }
}

std::int32_t grid(Point **stackpointer, const Operand &o) {
  Grid g;
  if (const std::int32_t message = readgrid(o, g); message != 0) return message;
  if (const std::int32_t message = countgrid(g); message != 0) return message;
  Made made;
  beginvector(made, g.total, kindbit(g.tag));
  // The doubles of an octonion come first: where there is no storage for them, what was made goes as it is.
  if (g.tag == tags::OCTONION)
    for (std::uint64_t i = 0; i < g.total; ++i) {
      Element &e = made.point.data_pointer[i];
      e = {};
      e.tag = tags::OCTONION;
      e.octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
      made.point.elements = static_cast<std::uint32_t>(i + 1);
    }
  fill(made, g.total, [&g](Element &e, std::uint64_t i) { writepoint(g, e, i); });
  replacetop(stackpointer, made.point);
  return 0;
}

// ---- What kind of interval?

std::int32_t describe(Point **stackpointer, const Operand &o) {
  bool hascharacter = false, hashyper = false, mixed = false;
  for (std::uint32_t i = 0; i < o.count; ++i) {
    const std::int32_t tag = o.elements[i].tag;
    if (tag == tags::SUBARRAY) return BADCOUNT;
    if (tag == tags::UNICODE || kindbit(tag) == 0) return UNAVAILABLE;
    hascharacter |= tag == tags::ASCII;
    hashyper |= tag >= tags::COMPLEX;
    mixed |= tag != o.elements[0].tag;
  }
  if (hascharacter) return characters(stackpointer, o);
  if (!hashyper) return numbers(stackpointer, o);
  return mixed ? MIXED : grid(stackpointer, o);
}

}  // namespace

void interval(Point **stackpointer, const Point *instruction, Point *context) {
  const Point &top = **stackpointer;
  if (!isspace(top)) exceptionjump(UNAVAILABLE, stackpointer, instruction);
  if (isempty(top) || top.elements == 0) {
    Point zero;
    makeinteger(zero, 0);
    return replacetop(stackpointer, zero);
  }
  std::int32_t message = BADCOUNT;
  if (top.elements <= 3 && (top.type & STRUCTURED) == 0)
    message = describe(stackpointer, {top.data_pointer, top.elements, indexorigin(context), tolerance(context)});
  if (message != 0) exceptionjump(message, stackpointer, instruction);
}
