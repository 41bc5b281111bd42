// Every scalar instruction over single numbers: as a call on the stack, whoever else sees the operands, with leave to
// write over them and without it, it makes what its loop makes, and so does its twin for loose scalars. What the exact
// comparisons tell apart, and the functions of numbers whose higher components are 0.
#include <vector>

#include "arithmetic/scalars.h"
#include "points.h"
#include "recount.h"
#include "scalar_tables.h"
#include "spaces/loose.h"
#include "spaces/refderef.h"

using namespace morvik;

namespace {

using points::Elements;
using scalars::same;

// What a loop makes of one record or of two.
struct Made {
  Element result{};
  std::uint32_t kinds = 0;
  std::int32_t message = 0;
  double flops = 0;
};
template <class Cores>
Made madeof(const Cores &cores, const Element &left, const Element &right, std::uint64_t *state) {
  Made made;
  Run run{&left, &right, &made.result, 0, 0, 0, 1, true};
  Tally tally;
  tally.state = state;
  made.message = work(cores, run, tally);
  made.kinds = run.kinds;
  made.flops = tally.flops;
  return made;
}

const Elements &numbers() {
  static const Elements made = {points::whole(0),  points::whole(1),    points::whole(-3),   points::whole(7),
                                points::real(0),   points::real(-2.5),  points::real(0.25),  points::real(1),
                                points::real(1e9), points::real(1e300), points::real(-1e300)};
  return made;
}

// Is a scalar what the loop made, in a block of its own?
std::string differing(const Point &point, const Made &made) {
  if (point.type != (ISSCALAR | made.kinds)) return "has other flags; ";
  if (referencecount(point.data_pointer) != 1) return "shares its block; ";
  return same(*point.data_pointer, made.result) ? "" : "has another value; ";
}

class ScalarEdges : public Lifetimes {
 protected:
  void SetUp() override {
    Lifetimes::SetUp();
    pendingproblem = 0;
  }
  // Calls, and tells the difference. What else sees the operands must see what it saw.
  template <class Call>
  std::string called(const Made &made, Point *&top, Point &result, Call call) {
    Point *const before = top;
    testing::internal::CaptureStderr();
    const bool failed = landingof(call) != 0;
    testing::internal::GetCapturedStderr();
    pendingproblem = 0;
    std::string told = failed == (made.message != 0) ? "" : "fails where its loop does not, or the other way round; ";
    if (failed && top != before) told += "lost an operand; ";
    if (!failed && told.empty()) told = differing(result, made);
    return told;
  }
  std::string letgotold(const Elements &seen) {
    std::string told;
    for (std::size_t i = 0; i < held.size(); ++i)
      if (!same(*held[i].data_pointer, seen[i])) told += "wrote to what another sees; ";
    letgo();
    return told;
  }
};

// ---- One operand.

template <class Call>
void withonenumber(const char *name, const Monadic &m, Call call) {
  for (const Element &e : numbers())
    for (const bool shared : {false, true})
      for (const char nested : {0, 1}) {
        std::uint64_t state = 1;
        const std::string told = call(madeof(m, e, e, &state), e, shared, nested);
        EXPECT_EQ(told, "") << name << " of tag " << e.tag << ", " << e.real << (shared ? ", shared" : "")
                            << (nested != 0 ? ", nested" : "");
      }
}

TEST_F(ScalarEdges, OneOperandOnTheStack) {
  const auto tried = [&](const Element &e, const Made &made, bool shared, auto call) {
    Point slot = points::scalar(e), *top = &slot;
    if (shared) holdcopy(slot);
    const std::string told = called(made, top, slot, [&] { call(&slot); });
    dereferencepoint(&slot);
    return told + letgotold({e});
  };
#define MONADIC(f)                                                                                    \
  withonenumber(name, f##monadic, [&](const Made &made, const Element &e, bool shared, char nested) { \
    return tried(e, made, shared, [nested](Point *slot) { f(slot, nullptr, nullptr, nested); });      \
  });
#define DRAWING(f)                                                                                               \
  withonenumber(name, f##monadic, [&](const Made &made, const Element &e, bool shared, char nested) {            \
    std::uint64_t state = 1;                                                                                     \
    return tried(e, made, shared, [&state, nested](Point *slot) { f(slot, nullptr, nullptr, nested, &state); }); \
  });
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&]([[maybe_unused]] const char *name) { handler; }(#word);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
}

// ---- Two operands.

enum class Seen { BY_NOBODY, LEFT, RIGHT, BOTH, SAME_BLOCK, SAME_BLOCK_AND_ELSEWHERE };

TEST_F(ScalarEdges, TwoOperandsOnTheStack) {
  const auto tried = [&](DyadicFunction *function, const Dyadic &d, const Element &a, const Element &b, Seen seen,
                         char nested) {
    Elements others;
    Point slots[2] = {points::scalar(a), {}}, *top = slots + 1;
    const bool sameblock = seen >= Seen::SAME_BLOCK;
    if (sameblock) {
      slots[1] = slots[0];
      referencepoint(&slots[1]);
    } else {
      slots[1] = points::scalar(b);
    }
    if (seen == Seen::LEFT || seen == Seen::BOTH || seen == Seen::SAME_BLOCK_AND_ELSEWHERE) {
      holdcopy(slots[0]);
      others.push_back(a);
    }
    if (seen == Seen::RIGHT || seen == Seen::BOTH) {
      holdcopy(slots[1]);
      others.push_back(b);
    }
    slots[1].depth = 3;
    const Made made = madeof(d, a, sameblock ? a : b, nullptr);
    std::string told = called(made, top, slots[0], [&] { function(&top, nullptr, nullptr, nested); });
    if (made.message == 0 && top != slots) told += "left the stack otherwise; ";
    if (made.message == 0 && slots[0].depth != 3) told += "is not as deep as the deeper one; ";
    while (top >= slots) dereferencepoint(top--);
    return told + letgotold(others);
  };
  const auto all = [&](const char *name, DyadicFunction *function, const Dyadic &d) {
    for (const Element &a : numbers())
      for (const Element &b : numbers())
        for (int seen = 0; seen <= static_cast<int>(Seen::SAME_BLOCK_AND_ELSEWHERE); ++seen)
          for (const char nested : {0, 1})
            EXPECT_EQ(tried(function, d, a, b, static_cast<Seen>(seen), nested), "")
                << name << " of tags " << a.tag << " and " << b.tag << ", seen " << seen << ", nested " << int{nested};
  };
#define MONADIC(f)
#define DRAWING(f)
#undef DYADIC
#define DYADIC(f) all(name, f, *dyadiccores(of))
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&]([[maybe_unused]] const char *name, [[maybe_unused]] std::uint16_t of) { handler; }(#word, number);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
#undef DYADIC
#define DYADIC(f)
}

// ---- Loose ones: the same, or nothing is done.

Point looseof(const Element &e) {
  Point p;
  putloose(p, e.tag == tags::INTEGER ? LOOSE_INTEGER : LOOSE_REAL, e.form, static_cast<std::uint64_t>(e.integer));
  return p;
}

std::string loosediffering(const Point &loose, std::uint64_t done, const Element &operand, const Made &made) {
  const Point before = looseof(operand);
  if (done == 0) return std::memcmp(&loose, &before, sizeof loose) == 0 ? "" : "wrote what it did not do; ";
  if (made.message != 0) return "did what its loop refuses; ";
  if (loose.type != (LOOSE | ISSCALAR | made.kinds)) return "has other flags; ";
  return looseform(loose) == made.result.form && looseinteger(loose) == made.result.integer ? ""
                                                                                            : "has another value; ";
}

TEST_F(ScalarEdges, OneLooseOperand) {
  const auto all = [](const char *name, const Monadic &m, LooseMonadic *function) {
    for (const Element &e : numbers()) {
      Point loose = looseof(e);
      const std::uint64_t done = function(loose);
      Made made = madeof(m, e, e, nullptr);
      EXPECT_EQ(loosediffering(loose, done, e, made), "") << name << " of tag " << e.tag << ", " << e.real;
      if (done != 0) EXPECT_EQ(static_cast<double>(done), 1 + made.flops) << name << " of " << e.real;
    }
  };
#define MONADIC(f) all(name, f##monadic, loose_##f);
#define DRAWING(f)
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&]([[maybe_unused]] const char *name) { handler; }(#word);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
}

TEST_F(ScalarEdges, TwoLooseOperands) {
  const auto all = [](const char *name, const Dyadic &d) {
    for (const Element &a : numbers())
      for (const Element &b : numbers()) {
        Point loose = looseof(a);
        const std::uint64_t done = d.loose(loose, looseof(b).type, b.integer);
        const Made made = madeof(d, a, b, nullptr);
        EXPECT_EQ(loosediffering(loose, done, a, made), "") << name << " of " << a.real << " and " << b.real;
        if (done != 0)
          EXPECT_EQ(static_cast<double>(done), 1 + made.flops) << name << " of " << a.real << " and " << b.real;
      }
  };
#define MONADIC(f)
#define DRAWING(f)
#undef DYADIC
#define DYADIC(f) all(name, f##cores)
#define INSTRUCTION(number, word, argumentclass, key, handler, effect, meaning) \
  [&]([[maybe_unused]] const char *name) { handler; }(#word);
#include "tables/instructions.def"
#undef INSTRUCTION
#undef MONADIC
#undef DRAWING
#undef DYADIC
#define DYADIC(f)
}

// ---- What the exact comparisons tell apart: any component of any two kinds.

Element numberof(std::int32_t tag, const double (&part)[OCTONION_PARTS]) {
  switch (tag) {
    case tags::INTEGER:
      return points::whole(static_cast<std::int64_t>(part[0]));
    case tags::REAL:
      return points::real(part[0]);
    case tags::COMPLEX:
      return points::complex(part[0], part[1]);
    case tags::QUATERNION:
      return points::quaternions(part[0], part[1], part[2], part[3]);
    default:
      return points::octonion({part[0], part[1], part[2], part[3], part[4], part[5], part[6], part[7]});
  }
}
int componentsof(std::int32_t tag) {
  return tag == tags::INTEGER ? 1 : partsof(tag);
}

TEST_F(ScalarEdges, IdentityLooksAtEveryComponent) {
  constexpr std::int32_t kinds[] = {tags::INTEGER, tags::REAL, tags::COMPLEX, tags::QUATERNION, tags::OCTONION};
  const auto answer = [](std::uint16_t instruction, const Element &a, const Element &b) {
    const Made made = madeof(*dyadiccores(instruction), a, b, nullptr);
    EXPECT_EQ(made.message, 0);
    return made.result.integer;
  };
  for (const std::int32_t left : kinds)
    for (const std::int32_t right : kinds) {
      const int shared = std::min(componentsof(left), componentsof(right));
      // Beyond what both have stands 0, but in one place, which is none for -1.
      for (int other = -1; other < std::max(componentsof(left), componentsof(right)); ++other) {
        double a[OCTONION_PARTS] = {}, b[OCTONION_PARTS] = {};
        for (int i = 0; i < shared; ++i) a[i] = b[i] = i + 2;
        if (other >= 0) (other < componentsof(right) ? b : a)[other] += 1;
        Element l = numberof(left, a), r = numberof(right, b);
        EXPECT_EQ(answer(instructions::IDENTICAL, l, r), other < 0) << left << " " << right << " at " << other;
        EXPECT_EQ(answer(instructions::NOTIDENTICAL, l, r), other >= 0) << left << " " << right << " at " << other;
        dereferencedataelems(&l, 1);
        dereferencedataelems(&r, 1);
      }
    }
}

// ---- Functions of a number a + bi whatever kind it has: the same two components, and 0 in all others.

TEST_F(ScalarEdges, FunctionsOfNumbersWithoutHigherComponents) {
  struct Function {
    const char *name;
    const Monadic &cores;
  };
  const Function functions[] = {{"exponential", exponentialmonadic}, {"naturallog", naturallogmonadic}};
  for (const auto &[name, cores] : functions)
    for (const double a : {-2.0, 0.0, 0.5, 3.0})
      for (const double b : {0.0, 1.5, -1.5}) {
        if (a == 0 && b == 0) continue;
        const Made low = madeof(cores, points::complex(a, b), {}, nullptr);
        ASSERT_EQ(low.message, 0) << name << " of " << a << " " << b;
        const std::vector<double> expected = points::partsof(low.result);
        for (const std::int32_t tag : {tags::QUATERNION, tags::OCTONION}) {
          Element operand = numberof(tag, {a, b, 0, 0, 0, 0, 0, 0});
          Made high = madeof(cores, operand, {}, nullptr);
          ASSERT_EQ(high.message, 0);
          const std::vector<double> parts = points::partsof(high.result);
          ASSERT_EQ(parts.size(), static_cast<std::size_t>(partsof(tag)));
          for (std::size_t i = 0; i < parts.size(); ++i)
            EXPECT_DOUBLE_EQ(parts[i], i < expected.size() ? expected[i] : 0)
                << name << " of " << a << " " << b << " of tag " << tag << " at " << i;
          dereferencedataelems(&operand, 1);
          dereferencedataelems(&high.result, 1);
        }
      }
}

}  // namespace
