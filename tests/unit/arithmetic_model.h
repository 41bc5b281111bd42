// The dyadic scalar instructions written a second time, plainly: values as rows of doubles, one element after the
// other, products by a table of units as a book prints it. And the way from spaces to the model and back.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "arithmetic/scalars.h"
#include "coprocessor/coprocessor.h"
#include "points.h"
#include "recount.h"
#include "spaces/counters.h"

using namespace morvik;

namespace model {

// ---- The table of units: row times column.

inline constexpr const char *UNITS[8] = {
    "+0 +1 +2 +3 +4 +5 +6 +7", "+1 -0 +3 -2 +5 -4 -7 +6", "+2 -3 -0 +1 +6 +7 -4 -5", "+3 +2 -1 -0 +7 -6 +5 -4",
    "+4 -5 -6 -7 -0 +1 +2 +3", "+5 +4 -7 +6 -1 -0 -3 +2", "+6 +7 +4 -5 -2 +3 -0 -1", "+7 -6 +5 +4 -3 -2 +1 -0",
};

struct Unit {
  int index, sign;
};
inline Unit unit(std::size_t row, std::size_t column) {
  const char *entry = UNITS[row] + 3 * column;
  return {entry[1] - '0', entry[0] == '-' ? -1 : 1};
}

using Parts = std::vector<double>;

inline Parts product(const Parts &a, const Parts &b) {
  Parts c(std::max(a.size(), b.size()));
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < b.size(); ++j) {
      const Unit u = unit(i, j);
      if (a[i] != 0 && b[j] != 0) c[static_cast<std::size_t>(u.index)] += u.sign * a[i] * b[j];
    }
  return c;
}
inline double norm(const Parts &a) {
  double sum = 0;
  for (const double x : a) sum += x * x;
  return sum;
}
inline Parts conjugate(Parts a) {
  for (std::size_t i = 1; i < a.size(); ++i) a[i] = -a[i];
  return a;
}

// ---- Values and spaces.

struct Space;
struct Value {
  std::int32_t tag = 0;
  std::uint16_t form = 0, attributes = 0;
  std::int64_t integer = 0;   // also of a character
  Parts parts;                // of a real and above
  std::vector<Space> member;  // one, of a subarray
};
struct Space {
  std::int32_t rank = 0;
  std::uint32_t type = 0;
  std::vector<std::int64_t> shape;
  std::vector<Value> elements;
};

inline Space of(const Point &p);
inline Value of(const Element &e) {
  Value v{e.tag, e.form, e.attributes, 0, {}, {}};
  if (e.tag == tags::ASCII) v.integer = e.ascii;
  if (e.tag == tags::UNICODE) v.integer = e.unicode;
  if (e.tag == tags::INTEGER) v.integer = e.integer;
  if (e.tag == tags::REAL) v.parts = {e.real};
  if (e.tag == tags::COMPLEX) v.parts = {e.complex.re, e.complex.im};
  if (e.tag == tags::QUATERNION) {
    const Quaternion q = quaternion(e);
    v.parts.assign(q.part, q.part + 4);
  }
  if (e.tag == tags::OCTONION) v.parts.assign(e.octonion->part, e.octonion->part + 8);
  if (e.tag == tags::SUBARRAY) v.member = {of(*e.subarray)};
  return v;
}
inline Space of(const Point &p) {
  Space s{p.rank, p.type, {}, {}};
  for (std::int32_t axis = 0; axis < p.rank; ++axis) s.shape.push_back(p.shape_pointer[axis].integer);
  for (std::uint32_t i = 0; p.rank >= 0 && i < p.elements; ++i) s.elements.push_back(of(p.data_pointer[i]));
  return s;
}

inline bool isnumber(const Value &v) {
  return v.tag >= tags::INTEGER && v.tag <= tags::OCTONION;
}
inline Parts parts(const Value &v) {
  return v.tag == tags::INTEGER ? Parts{static_cast<double>(v.integer)} : v.parts;
}

// ---- The four instructions on one pair of elements.

enum class Op { ADD, SUBTRACT, MULTIPLY, DIVIDE };

constexpr double LIMIT = 9.223372036854776e+18;
constexpr std::uint16_t PASSING = 0x3fff;

inline Value integral(double x) {
  const double greatest = 9223372036854775807.0;
  Value v;
  if (std::fabs(x) > LIMIT || std::isnan(x)) return {tags::REAL, forms::COMPUTED, 0, 0, {x}, {}};
  v.tag = tags::INTEGER;
  v.form = forms::NUMBER;
  v.integer = x >= greatest ? std::numeric_limits<std::int64_t>::max() : static_cast<std::int64_t>(x);
  return v;
}

inline Value integers(Op op, double a, double b) {
  if (op == Op::ADD) return integral(a + b);
  if (op == Op::SUBTRACT) return integral(a - b);
  if (op == Op::MULTIPLY) return integral(a * b);
  const double q = a / b;
  if (q >= 0 && q <= LIMIT && q == std::trunc(q)) return integral(q);
  return {tags::REAL, forms::COMPUTED, 0, 0, {q}, {}};
}

inline Parts combine(Op op, Parts a, Parts b) {
  const std::size_t size = std::max(a.size(), b.size());
  if (op == Op::ADD || op == Op::SUBTRACT) {
    a.resize(size);
    b.resize(size);
    for (std::size_t i = 0; i < size; ++i) a[i] += op == Op::ADD ? b[i] : -b[i];
    return a;
  }
  if (op == Op::MULTIPLY) return product(a, b);
  const bool real = norm(b) == b[0] * b[0];
  Parts q = real ? a : product(a, conjugate(b));
  q.resize(size);
  for (double &x : q) x /= real ? b[0] : norm(b);
  return q;
}

constexpr std::int32_t tagof(std::size_t parts) {
  return parts == 1 ? tags::REAL : parts == 2 ? tags::COMPLEX : parts == 4 ? tags::QUATERNION : tags::OCTONION;
}

struct Outcome {
  int message = 0;
  Value value;
};

struct Result {
  int message = 0;
  Space space;
};
inline Result apply(Op op, const Space &left, const Space &right);

inline Space scalarof(const Value &v) {
  return {0, ISSCALAR | kindbit(v.tag), {}, {v}};
}

inline Outcome apply(Op op, const Value &left, const Value &right) {
  if (left.tag == tags::SUBARRAY || right.tag == tags::SUBARRAY) {
    const Result r = apply(op, left.tag == tags::SUBARRAY ? left.member[0] : scalarof(left),
                           right.tag == tags::SUBARRAY ? right.member[0] : scalarof(right));
    return {r.message, {tags::SUBARRAY, 0, 0, 0, {}, {r.space}}};
  }
  if (op == Op::MULTIPLY && (left.tag == tags::ASCII || right.tag == tags::ASCII)) {
    Value character = left.tag == tags::ASCII ? left : right;
    const Value &times = left.tag == tags::ASCII ? right : left;
    if (times.tag != tags::INTEGER) return {162, {}};
    if (times.integer != 0 && times.integer != 1) return {149, {}};
    if (times.integer == 0) character.integer = ' ';
    character.attributes &= PASSING;
    return {0, character};
  }
  if (!isnumber(left) || !isnumber(right)) return {162, {}};
  if (left.tag == tags::INTEGER && right.tag == tags::INTEGER)
    return {0, integers(op, static_cast<double>(left.integer), static_cast<double>(right.integer))};
  Value v;
  v.parts = combine(op, parts(left), parts(right));
  v.tag = tagof(v.parts.size());
  if (v.tag == tags::REAL) {
    v.form = forms::COMPUTED;
  } else if (v.tag != left.tag && v.tag > tags::COMPLEX) {
    v.form = forms::NUMBER;
  } else if (v.tag != right.tag && v.tag > tags::COMPLEX) {
    v.form = forms::NUMBER;
  } else {
    const Value &shown = left.tag == v.tag ? left : right;
    v.form = shown.form;
    v.attributes = shown.attributes & PASSING;
  }
  return {0, v};
}

// ---- The same on spaces.

inline bool single(const Space &s) {
  return (s.type & SCALAR_LIKE) != 0 && s.elements.size() == 1;
}

inline Result apply(Op op, const Space &left, const Space &right) {
  const std::uint32_t combined = left.type | right.type;
  const std::uint32_t refused = ISADDRESS | HASUNICODE | (op == Op::MULTIPLY ? 0 : HASASCII);
  if (left.rank != right.rank && (combined & SCALAR_LIKE) == 0) return {17, {}};
  if ((combined & refused) != 0) return {17, {}};
  if (!single(left) && !single(right) && left.shape != right.shape) return {17, {}};
  const bool fromright = single(left) && (!single(right) || (left.rank == 0 && right.rank > 0));
  const Space &shaped = fromright ? right : left;
  Space result{shaped.rank, 0, shaped.shape, {}};
  std::uint32_t kinds = 0;
  for (std::size_t i = 0; i < shaped.elements.size(); ++i) {
    const Outcome o = apply(op, left.elements[single(left) ? 0 : i], right.elements[single(right) ? 0 : i]);
    if (o.message != 0) return {o.message, {}};
    result.elements.push_back(o.value);
    kinds |= o.value.tag == tags::SUBARRAY ? STRUCTURED : kindbit(o.value.tag);
  }
  std::uint32_t several = 0;
  for (std::uint32_t bit = HASASCII; bit <= HASOCTONION; bit <<= 1) several += (kinds & bit) != 0 ? 1 : 0;
  result.type = (shaped.type & RANK_BITS) | kinds | (combined & ISPROBABLE);
  if ((kinds & STRUCTURED) != 0) result.type |= combined & ISSTRUCTURE;
  if (several > 1 && result.elements.size() > 1) result.type |= COMPLEXED;
  return {0, result};
}

// ---- Comparison with what the system made.

inline bool near(double a, double b, double tolerance) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b || std::fabs(a - b) <= tolerance * std::max(std::fabs(a), std::fabs(b)) ||
         std::fabs(a - b) <= tolerance;
}

inline std::string show(const Space &s);
inline std::string show(const Value &v) {
  std::ostringstream out;
  out.precision(17);
  out << "tag " << v.tag << " form " << v.form << " marks " << v.attributes << " :";
  if (v.tag == tags::INTEGER || v.tag == tags::ASCII || v.tag == tags::UNICODE) out << ' ' << v.integer;
  for (const double x : v.parts) out << ' ' << x;
  if (v.tag == tags::SUBARRAY) out << " {" << show(v.member[0]) << " }";
  return out.str();
}
inline std::string show(const Space &s) {
  std::ostringstream out;
  out << "rank " << s.rank << " type 0x" << std::hex << s.type << std::dec << " [";
  for (const std::int64_t extent : s.shape) out << ' ' << extent;
  out << " ]";
  for (const Value &v : s.elements) out << "\n  " << show(v);
  return out.str();
}

inline bool agree(const Space &a, const Space &b, double tolerance);
inline bool agree(const Value &a, const Value &b, double tolerance) {
  if (a.tag != b.tag || a.form != b.form || a.attributes != b.attributes) return false;
  if (a.integer != b.integer || a.parts.size() != b.parts.size() || a.member.size() != b.member.size()) return false;
  for (std::size_t i = 0; i < a.parts.size(); ++i)
    if (!near(a.parts[i], b.parts[i], tolerance)) return false;
  return a.member.empty() || agree(a.member[0], b.member[0], tolerance);
}
inline bool agree(const Space &a, const Space &b, double tolerance) {
  if (a.rank != b.rank || a.type != b.type || a.shape != b.shape || a.elements.size() != b.elements.size())
    return false;
  for (std::size_t i = 0; i < a.elements.size(); ++i)
    if (!agree(a.elements[i], b.elements[i], tolerance)) return false;
  return true;
}

// Equal to the last bit, NaN of any kind aside.
inline void expectsame(const Space &actual, const Space &expected, const std::string &what = "") {
  EXPECT_TRUE(agree(actual, expected, 0)) << what << "\n" << show(actual) << "\ninstead of\n" << show(expected);
}
inline void expectclose(const Space &actual, const Space &expected, const std::string &what = "") {
  EXPECT_TRUE(agree(actual, expected, 1e-12)) << what << "\n" << show(actual) << "\ninstead of\n" << show(expected);
}

}  // namespace model

// ---- Running an instruction.

namespace arithmetic {

struct Instruction {
  const char *name;
  model::Op op;
  DyadicFunction *plain;
  DyadicSlice *slice;
  std::uint16_t number;
};
inline const Instruction INSTRUCTIONS[] = {
    {"ADD", model::Op::ADD, add, vec_add, instructions::ADD},
    {"SUBTRACT", model::Op::SUBTRACT, subtract, vec_subtract, instructions::SUBTRACT},
    {"MULTIPLY", model::Op::MULTIPLY, multiply, vec_multiply, instructions::MULTIPLY},
    {"DIVIDE", model::Op::DIVIDE, divide, vec_divide, instructions::DIVIDE},
};

// Slot 0 is never used by a value; the two operands are in 1 and 2.
struct Stack {
  Point slots[4] = {};
  Point *top = slots;

  void push(const Point &p) { *++top = p; }
  Point &left() { return slots[1]; }
  Point &right() { return slots[2]; }
  std::ptrdiff_t height() const { return top - slots; }
};

// Standard error goes to a file of its own for the life of this.
class Report {
 public:
  Report() : terminal(dup(STDERR_FILENO)) { dup2(file(), STDERR_FILENO); }
  ~Report() {
    dup2(terminal, STDERR_FILENO);
    close(terminal);
  }
  // The number that it begins with, 0 where nothing was reported.
  int number() const {
    char text[8] = {};
    std::fflush(stderr);
    if (pread(file(), text, sizeof text - 1, 0) <= 0) return 0;
    EXPECT_EQ(ftruncate(file(), 0), 0);
    return std::atoi(text);
  }

 private:
  int terminal;
  static int file() {
    static const int descriptor = memfd_create("report", 0);
    lseek(descriptor, 0, SEEK_SET);
    return descriptor;
  }
};

// Runs the instruction on the two topmost Points. The number of the message that it ended with, 0 for none.
inline int run(DyadicFunction *function, Stack &stack, char nested = 0) {
  const Report report;
  const int value = landingof([&] { function(&stack.top, nullptr, nullptr, nested); });
  const int number = report.number();
  EXPECT_EQ(value != 0, number != 0);
  return number;
}

// The operands given, what comes of them; nothing stays behind.
inline model::Result evaluate(DyadicFunction *function, const Point &left, const Point &right) {
  Stack stack;
  stack.push(left);
  stack.push(right);
  model::Result result;
  result.message = run(function, stack);
  if (result.message == 0) result.space = model::of(stack.left());
  while (stack.height() > 0) dereferencepoint(stack.top--);
  return result;
}

}  // namespace arithmetic
