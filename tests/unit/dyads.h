// Dyadic scalar instructions against plain models: what a model is asked is two values; shapes, flags, nesting and
// messages are predicted here. A test names its instruction and its model, and has every pattern of operands tried.
#pragma once

#include <unistd.h>

#include <functional>

#include "arithmetic/dyadic.h"
#include "dyads_values.h"
#include "failure/jump.h"
#include "failures.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"

using namespace morvik;

namespace dyads {

// ---- What an instruction is held to.

struct Outcome {
  std::int32_t message = 0;
  Value value{};
};
using Model = std::function<Outcome(const Value &, const Value &)>;

struct Instruction {
  const char *name;
  DyadicFunction *plain;
  DyadicSlice *slice;
  std::uint32_t refused = 0;  // flags of operands that give message 17
};
#define DYAD(f) \
  { #f, f, vec_##f }
#define NUMERIC_DYAD(f) \
  { #f, f, vec_##f, ISADDRESS | HASASCII | HASUNICODE }

inline bool single(const Point &p) {
  return isscalarlike(p) && p.elements == 1;
}
inline const Point &shaped(const Point &left, const Point &right) {
  const bool isright = single(left) && (!single(right) || (left.rank == 0 && right.rank > 0));
  return isright ? right : left;
}
// A simple element as a scalar that borrows the record.
inline Point boxed(const Element &e) {
  if (e.tag == tags::SUBARRAY) return *e.subarray;
  Point p{};
  p.type = ISSCALAR | kindbit(e.tag);
  p.elements = 1;
  p.data_pointer = const_cast<Element *>(&e);
  return p;
}
inline const Element &at(const Point &p, std::uint32_t i) {
  return p.data_pointer[single(p) ? 0 : i];
}

// The first message that two operands give; 0 for none.
inline std::int32_t predicted(std::uint32_t refused, const Model &model, const Point &left, const Point &right) {
  if (isempty(left) || isempty(right)) return 0;
  if (((left.type | right.type) & refused) != 0) return 17;
  if (!single(left) && !single(right)) {
    if (left.rank != right.rank) return 17;
    for (std::int32_t k = 0; k < left.rank; ++k)
      if (left.shape_pointer[k].integer != right.shape_pointer[k].integer) return 17;
  }
  for (std::uint32_t i = 0; i < shaped(left, right).elements; ++i) {
    const Element &l = at(left, i), &r = at(right, i);
    const bool nested = l.tag == tags::SUBARRAY || r.tag == tags::SUBARRAY;
    const std::int32_t message =
        nested ? predicted(refused, model, boxed(l), boxed(r)) : model(valuein(l), valuein(r)).message;
    if (message != 0) return message;
  }
  return 0;
}

// Are two spaces the same in everything that shows?
inline void expectequal(const Point &a, const Point &b) {
  ASSERT_EQ(a.rank, b.rank);
  ASSERT_EQ(a.elements, b.elements);
  EXPECT_EQ(a.type, b.type) << std::hex << a.type << " " << b.type;
  for (std::int32_t k = 0; k < a.rank; ++k) EXPECT_EQ(a.shape_pointer[k].integer, b.shape_pointer[k].integer);
  for (std::uint32_t i = 0; i < a.elements; ++i) {
    const Element &x = a.data_pointer[i], &y = b.data_pointer[i];
    ASSERT_EQ(x.tag, y.tag);
    if (x.tag == tags::SUBARRAY)
      expectequal(*x.subarray, *y.subarray);
    else
      EXPECT_TRUE(same(valuein(x), valuein(y))) << valuein(x) << " " << valuein(y);
  }
}

// Is `result` what the model makes of two operands that give no message?
inline void expectresult(const Model &model, const Point &result, const Point &left, const Point &right) {
  if (isempty(right)) return expectequal(result, left);
  if (isempty(left)) return expectequal(result, right);
  const Point &shape = shaped(left, right);
  ASSERT_EQ(result.rank, shape.rank);
  ASSERT_EQ(result.elements, shape.elements);
  for (std::int32_t k = 0; k < shape.rank; ++k)
    EXPECT_EQ(result.shape_pointer[k].integer, shape.shape_pointer[k].integer);
  std::uint32_t kinds = 0;
  for (std::uint32_t i = 0; i < shape.elements; ++i) {
    const Element &l = at(left, i), &r = at(right, i), &made = result.data_pointer[i];
    if (l.tag == tags::SUBARRAY || r.tag == tags::SUBARRAY) {
      ASSERT_EQ(made.tag, tags::SUBARRAY);
      expectresult(model, *made.subarray, boxed(l), boxed(r));
      kinds |= STRUCTURED | ISSTRUCTURE;
    } else {
      const Value expected = model(valuein(l), valuein(r)).value;
      EXPECT_TRUE(same(valuein(made), expected))
          << valuein(l) << " with " << valuein(r) << " gave " << valuein(made) << ", not " << expected;
      kinds |= kindbit(expected.tag);
    }
  }
  const std::uint32_t probable = (left.type | right.type) & ISPROBABLE;
  const std::uint32_t type = (shape.type & RANK_BITS) | kinds | probable | (result.elements > 1 ? complexed(kinds) : 0);
  EXPECT_EQ(result.type, type) << std::hex << result.type << " " << type;
}

// ---- Operands.

struct Operand {
  Values values;
  std::vector<std::int64_t> shape;
  bool nested = false;  // the first value is a vector of itself twice
};

inline Point make(const Operand &o) {
  std::size_t size = 1;
  for (const std::int64_t extent : o.shape) size *= static_cast<std::size_t>(extent);
  points::Elements elements;
  for (std::size_t i = 0; i < size; ++i) elements.push_back(elementof(o.values[i % o.values.size()]));
  if (o.nested && size > 0) {
    const Element first = elements[0];
    elements[0] = points::enclosed(points::vector({first, elementof(o.values[0])}));
  }
  return o.shape.empty() ? points::scalar(elements[0]) : points::array(elements, o.shape);
}

// Reads message numbers off standard error for as long as it lives.
class Messages {
 public:
  Messages() : kept(dup(STDERR_FILENO)), file(std::tmpfile()) { dup2(fileno(file), STDERR_FILENO); }
  ~Messages() {
    dup2(kept, STDERR_FILENO);
    close(kept);
    std::fclose(file);
  }
  Messages(const Messages &) = delete;
  Messages &operator=(const Messages &) = delete;

  // The number of the report since the last look; 0 for none.
  std::int32_t taken() {
    char bytes[16] = {};
    const ssize_t length = pread(fileno(file), bytes, sizeof bytes - 1, 0);
    EXPECT_EQ(ftruncate(fileno(file), 0), 0);
    lseek(STDERR_FILENO, 0, SEEK_SET);
    return length > 0 ? std::atoi(bytes) : 0;
  }

 private:
  int kept;
  std::FILE *file;
};

// ---- Trials.

class Dyads : public failures::Quiet {
 protected:
  void SetUp() override {
    failures::Quiet::SetUp();
    blocks = liveblocks();
    plus = points::operation(instructions::ADD, "+");
    settolerance(1e-15);
  }
  void TearDown() override {
    points::drop(plus);
    points::drop(system[CT_SLOT]);
    EXPECT_EQ(liveblocks(), blocks);
    EXPECT_EQ(messages.taken(), 0) << "a report without a jump";
    failures::Quiet::TearDown();
  }

  void settolerance(double c) {
    if (system[CT_SLOT].type != 0) points::drop(system[CT_SLOT]);
    system[CT_SLOT] = points::scalar(points::real(c));
  }

  // Runs an instruction on what is in stack[0] and stack[1]. The message number; 0 leaves the result in stack[0].
  std::int32_t run(const Instruction &i, Point *stack, char nested = 0) {
    Point *top = stack + 1;
    const int jumped = failures::landingof([&] { i.plain(&top, &plus, system, nested); });
    const std::int32_t message = jumped != 0 ? messages.taken() : 0;
    EXPECT_EQ(jumped != 0, message != 0);
    EXPECT_EQ(top, stack + (jumped != 0 ? 1 : 0));
    stepping = 0;
    return message;
  }

  // The result of two values as scalars.
  Outcome outcome(const Instruction &i, const Value &left, const Value &right) {
    Point stack[2] = {make({{left}, {}}), make({{right}, {}})};
    Outcome o;
    o.message = run(i, stack);
    if (o.message == 0)
      o.value = valuein(*stack[0].data_pointer);
    else
      points::drop(stack[1]);
    points::drop(stack[0]);
    return o;
  }

  enum class Held { ALONE, BYANOTHER };

  // One trial: result or message, operands whole where they must be.
  void trial(const Instruction &i, const Model &model, const Operand &left, const Operand &right, Held held,
             std::uint32_t probable = 0) {
    Point l = make(left), r = make(right);
    Point stack[2] = {make(left), make(right)};
    l.type |= probable;
    stack[0].type |= probable;
    Point keptleft = stack[0], keptright = stack[1];
    if (held == Held::BYANOTHER) {
      referencepoint(&keptleft);
      referencepoint(&keptright);
    }
    const std::int32_t expected = predicted(i.refused, model, l, r), message = run(i, stack);
    EXPECT_EQ(message, expected);
    if (message == 0 && expected == 0) expectresult(model, stack[0], l, r);
    if (message != 0 || held == Held::BYANOTHER) {
      expectequal(keptleft, l);
      expectequal(keptright, r);
    }
    if (message != 0) points::drop(stack[1]);
    points::drop(stack[0]);
    if (held == Held::BYANOTHER) {
      points::drop(keptleft);
      points::drop(keptright);
    }
    points::drop(l);
    points::drop(r);
    if (HasFailure()) FAIL() << i.name << describe(left) << " and" << describe(right);
  }

  static std::string describe(const Operand &o) {
    std::ostringstream text;
    text << (o.nested ? " nested" : "") << " [";
    for (const std::int64_t extent : o.shape) text << ' ' << extent;
    text << " ]";
    for (const Value &v : o.values) text << ' ' << v;
    return text.str();
  }

  // Every pair of values as scalars, and each against all of the others as a vector of mixed kinds.
  void everypair(const Instruction &i, const Model &model, const Values &samples) {
    for (const Value &left : samples)
      for (const Value &right : samples) {
        trial(i, model, {{left}, {}}, {{right}, {}}, Held::ALONE);
        ASSERT_FALSE(HasFailure());
      }
  }

  // Every pair of kinds, alone and mixed, in every pair of shapes, owned and shared.
  void everyshape(const Instruction &i, const Model &model, const Values &samples) {
    const std::vector<std::vector<std::int64_t>> shapes = {{}, {1}, {1, 1}, {3}, {2}, {2, 3}, {3, 2}, {0}};
    std::vector<Operand> operands;
    Values numbers;
    for (std::int32_t tag = tags::ASCII; tag <= tags::OCTONION; ++tag) {
      Values alike;
      for (const Value &v : samples)
        if (v.tag == tag && alike.size() < 3) alike.push_back(v);
      operands.push_back({alike, {}});
      if (tag >= tags::INTEGER) numbers.push_back(alike[0]);
      if (tag == tags::INTEGER || tag == tags::OCTONION) operands.push_back({alike, {}, true});
    }
    operands.push_back({numbers, {}});
    operands.push_back({{numbers[4], numbers[0], letter('a')}, {}});
    for (const Operand &a : operands)
      for (const Operand &b : operands)
        for (const auto &leftshape : shapes)
          for (const auto &rightshape : shapes)
            for (const Held held : {Held::ALONE, Held::BYANOTHER}) {
              Operand left = a, right = b;
              left.shape = leftshape;
              right.shape = rightshape;
              trial(i, model, left, right, held, leftshape.size() == 1 ? ISPROBABLE : 0);
              ASSERT_FALSE(HasFailure());
            }
  }

  // The twin over hand-made slices, against the model.
  void everyslice(const Instruction &i, const Model &model, const Values &samples);

  Point system[16] = {};
  Point plus = {};
  std::int64_t blocks = 0;
  Messages messages;
};

// A work record as the frame makes it, for three threads.
inline void Dyads::everyslice(const Instruction &i, const Model &model, const Values &samples) {
  constexpr std::uint32_t THREADS = 3, COUNT = 11;
  const std::uint32_t keptprocessors = processors;
  Reply *const keptreplies = from_coprocessor, replies[THREADS] = {};
  processors = THREADS;
  from_coprocessor = replies;
  Values numbers;
  std::copy_if(samples.begin(), samples.end(), std::back_inserter(numbers), isnumber);
  for (const Value &lone : numbers)
    for (const bool swapped : {false, true})
      for (const bool extends : {false, true}) {
        Point many = make({numbers, {COUNT}}), other = make({{lone}, {COUNT}}), one = make({{lone}, {}});
        Point &first = extends ? one : swapped ? many : other, &second = extends || !swapped ? many : other;
        Point result = make({{integer(0)}, {COUNT}});
        to_coprocessors = {};
        to_coprocessors.fresh = 1;
        to_coprocessors.swapped = swapped;
        to_coprocessors.combined = first.type | second.type;
        to_coprocessors.tolerance = system[CT_SLOT].data_pointer->real;
        to_coprocessors.count = COUNT;
        to_coprocessors.first = first.data_pointer;
        to_coprocessors.second = second.data_pointer;
        to_coprocessors.result = result.data_pointer;
        result.type = ISVECTOR;
        for (std::uint32_t index = 0; index < THREADS; ++index) {
          EXPECT_EQ(i.slice(nullptr, nullptr, system, index), 0);
          EXPECT_EQ(replies[index].failure, 0);
          result.type |= static_cast<std::uint32_t>(replies[index].flags);
        }
        result.type |= complexed(result.type);
        expectresult(model, result, swapped ? second : first, swapped ? first : second);
        for (Point *p : {&many, &other, &one, &result}) points::drop(*p);
        EXPECT_FALSE(HasFailure()) << i.name << " " << lone << swapped << extends;
      }
  to_coprocessors = {};
  processors = keptprocessors;
  from_coprocessor = keptreplies;
}

}  // namespace dyads
