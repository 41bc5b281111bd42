// INTERVAL against plain loops: counts, ends and steps, characters, and the grids of numbers of several parts.
#include "operators/interval.h"

#include <csignal>
#include <functional>
#include <random>

#include "arithmetic_model.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "operators/progression.h"
#include "spaces/hypercomplex.h"
#include "spaces/making.h"
#include "spaces/sysvars.h"
#include "structure_values.h"

using namespace morvik;

namespace {

using namespace points;
using structured::shapeof;
using Row = std::vector<double>;
using Rows = std::vector<Row>;

constexpr double TOLERANCE = 0x1p-40;

class Interval : public Lifetimes {
 protected:
  Point context[16] = {}, stack[2] = {};
  Point instruction = {};
  std::mt19937 random{7};

  void SetUp() override {
    Lifetimes::SetUp();
    instruction = operation(instructions::INTERVAL, "..");
    set(1, TOLERANCE);
  }
  void TearDown() override {
    clear();
    drop(instruction);
    drop(context[IO_SLOT]);
    drop(context[CT_SLOT]);
    Lifetimes::TearDown();
    stepping = pendingproblem = 0;
  }
  void set(std::int64_t origin, double tolerance) {
    drop(context[IO_SLOT]);
    drop(context[CT_SLOT]);
    makeinteger(context[IO_SLOT], origin);
    makereal(context[CT_SLOT], tolerance, forms::NUMBER);
  }
  void clear() {
    drop(stack[1]);
    stack[1] = {};
    letgo();
  }
  // Runs it on a value, which somebody else holds too every other time. The number of the message, 0 for none.
  int run(const Point &argument) {
    clear();
    stack[1] = argument;
    if (random() % 2 == 0) holdcopy(argument);
    Point *top = stack + 1;
    testing::internal::CaptureStdout();
    int number;
    {
      const arithmetic::Report report;
      const int value = landingof([&] { interval(&top, &instruction, context); });
      number = report.number();
      EXPECT_EQ(value != 0, number != 0);
    }
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(top, stack + 1);
    return number;
  }
  void expectcounts() {
    Recount recount;
    for (const Point *p : {&stack[1], &context[IO_SLOT], &context[CT_SLOT], &instruction}) recount.hold(*p);
    for (const Point &p : held) recount.hold(p);
    ASSERT_EQ(recount.faults(liveblocks() - before), "");
  }
  // A message leaves the operand as it was.
  void expectmessage(int number, const Point &argument) {
    const std::string was = structured::textof(argument);
    EXPECT_EQ(run(argument), number) << was;
    EXPECT_EQ(structured::textof(stack[1]), was);
    expectcounts();
  }
  void expectvector(std::uint32_t count, std::uint32_t kind) {
    const Point &p = stack[1];
    ASSERT_EQ(p.rank, 1);
    ASSERT_EQ(p.elements, count);
    ASSERT_EQ(p.type, ISVECTOR | kind | (count == 1 ? ISONEELEMENT : 0));
    ASSERT_EQ(p.depth, 0);
    ASSERT_EQ(shapeof(p), structured::Extents{count});
    expectcounts();
  }
  void expectwhole(const std::vector<std::int64_t> &expected) {
    expectvector(static_cast<std::uint32_t>(expected.size()), HASINTEGER);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      const Element &e = stack[1].data_pointer[i];
      ASSERT_EQ(e.tag, tags::INTEGER);
      ASSERT_EQ(e.form, forms::NUMBER);
      ASSERT_EQ(e.attributes, 0);
      ASSERT_EQ(e.integer, expected[i]);
    }
  }
  void expectreals(const Row &expected) {
    expectvector(static_cast<std::uint32_t>(expected.size()), HASREAL);
    for (std::size_t i = 0; i < expected.size(); ++i) {
      ASSERT_EQ(stack[1].data_pointer[i].tag, tags::REAL);
      ASSERT_EQ(stack[1].data_pointer[i].real, expected[i]);
    }
  }
  std::int64_t any(std::int64_t from, std::int64_t to) {
    return from + static_cast<std::int64_t>(random() % static_cast<std::uint64_t>(to - from + 1));
  }
  // A whole number as an integer, a real, or a real that is off by less than the tolerance.
  Element about(std::int64_t n) {
    const double off[] = {0, TOLERANCE / 2, -TOLERANCE / 2};
    return random() % 2 == 0 ? whole(n) : real(static_cast<double>(n) + off[random() % 3]);
  }
};

// ---- One number.

TEST_F(Interval, Counts) {
  for (const std::int64_t origin : {1, 0, -3, 1000})
    for (std::int64_t n = -40; n <= 40; ++n) {
      if (n == 0) continue;
      set(origin, TOLERANCE);
      std::vector<std::int64_t> expected;
      for (std::int64_t i = 0; i < (n < 0 ? -n : n); ++i) expected.push_back(n > 0 ? origin + i : -origin - i);
      const Element e = about(n);
      ASSERT_EQ(run(n % 2 == 0 ? scalar(e) : vector({e})), 0);
      expectwhole(expected);
    }
}

TEST_F(Interval, NothingOrZero) {
  for (const Element &zero : {whole(0), real(0), real(-0.0), real(TOLERANCE / 2)}) {
    ASSERT_EQ(run(scalar(zero)), 0);
    EXPECT_EQ(stack[1].type, ISVECTOR | ISEMPTY);
    EXPECT_EQ(stack[1].elements, 0u);
    EXPECT_EQ(stack[1].data_pointer, nullptr);
    EXPECT_EQ(shapeof(stack[1]), structured::Extents{0});
  }
  const std::function<Point()> nothings[] = {empty, [] { return array({}, {3, 0}); }, [] { return text(""); }};
  for (const auto &nothing : nothings) {
    ASSERT_EQ(run(nothing()), 0);
    EXPECT_EQ(stack[1].rank, 0);
    EXPECT_EQ(stack[1].type, ISSCALAR | HASINTEGER);
    EXPECT_EQ(stack[1].data_pointer->integer, 0);
    expectcounts();
  }
}

TEST_F(Interval, AMatrixOfOneToThreeIsRead) {
  ASSERT_EQ(run(numbers({2, 4}, {1, 2})), 0);
  expectwhole({2, 3, 4});
}

// What the tolerance takes for a whole number, and that a wide one may take the next number up.
TEST_F(Interval, Tolerance) {
  expectmessage(153, scalar(real(2 + 3 * TOLERANCE)));
  expectmessage(153, scalar(real(2.5)));
  set(1, 0);
  ASSERT_EQ(run(scalar(real(3))), 0);
  expectwhole({1, 2, 3});
  expectmessage(153, scalar(real(std::nextafter(3.0, 4.0))));
  set(1, 0.25);
  ASSERT_EQ(run(scalar(real(2.25))), 0);
  expectwhole({1, 2});
  ASSERT_EQ(run(scalar(real(2.75))), 0);
  expectwhole({1, 2, 3});
  expectmessage(153, scalar(real(2.5)));
  set(1, 1.5);
  ASSERT_EQ(run(scalar(real(2.25))), 0);
  expectwhole({1, 2, 3});
}

TEST_F(Interval, TheOriginMayBeAnything) {
  drop(context[IO_SLOT]);
  makereal(context[IO_SLOT], 2.75, forms::NUMBER);
  ASSERT_EQ(run(scalar(whole(3))), 0);
  expectwhole({2, 3, 4});
  drop(context[IO_SLOT]);
  context[IO_SLOT] = text("ab");
  ASSERT_EQ(run(scalar(whole(3))), 0);
  expectwhole({1, 2, 3});
  drop(context[IO_SLOT]);
  makeinteger(context[IO_SLOT], INT64_MAX - 1);
  ASSERT_EQ(run(scalar(whole(2))), 0);
  expectwhole({INT64_MAX - 1, INT64_MAX});
  ASSERT_EQ(run(scalar(whole(-2))), 0);
  expectwhole({-INT64_MAX + 1, -INT64_MAX});
}

// ---- Ends and steps.

TEST_F(Interval, WholeEnds) {
  for (int round = 0; round < 600; ++round) {
    const std::int64_t from = any(-30, 30), to = round % 9 == 0 ? from : any(-30, 30);
    std::vector<std::int64_t> expected;
    if (round % 3 == 0) {
      const std::int64_t step = from <= to ? 1 : -1;
      for (std::int64_t n = from; n != to + step; n += step) expected.push_back(n);
      ASSERT_EQ(run(vector({about(from), about(to)})), 0);
      expectwhole(expected);
      continue;
    }
    const std::int64_t step = any(-5, 5);
    const bool leads = step != 0 && (from == to || (to > from) == (step > 0));
    const Point argument = vector({about(from), about(to), about(step)});
    if (!leads) {
      expectmessage(158, argument);
      continue;
    }
    for (std::int64_t n = from; step > 0 ? n <= to : n >= to; n += step) expected.push_back(n);
    ASSERT_EQ(run(argument), 0);
    expectwhole(expected);
  }
}

TEST_F(Interval, TheWidestEnds) {
  ASSERT_EQ(run(vector({whole(INT64_MIN), whole(INT64_MAX), whole(INT64_MAX)})), 0);
  expectwhole({INT64_MIN, -1, INT64_MAX - 1});
  ASSERT_EQ(run(vector({whole(INT64_MAX), whole(INT64_MIN), whole(INT64_MIN)})), 0);
  expectwhole({INT64_MAX, -1});
  ASSERT_EQ(run(vector({whole(INT64_MAX), whole(INT64_MAX)})), 0);
  expectwhole({INT64_MAX});
  expectmessage(146, vector({whole(INT64_MIN), whole(INT64_MAX)}));
  expectmessage(146, vector({whole(INT64_MIN), whole(INT64_MAX), whole(2)}));
  expectmessage(146, vector({whole(0), whole(UINT32_MAX)}));
}

// Quarters, so that all sums are exact.
TEST_F(Interval, FractionalEnds) {
  for (int round = 0; round < 600; ++round) {
    const double from = static_cast<double>(any(-40, 40)) / 4, to = static_cast<double>(any(-40, 40)) / 4;
    const bool stepped = round % 2 == 0;
    const double step = stepped ? static_cast<double>(any(-6, 6)) / 4 : from > to ? -1 : 1;
    const auto iswhole = [](double x) { return x == std::floor(x); };
    if (iswhole(from) && iswhole(to) && iswhole(step)) continue;
    Elements elements = {real(from), real(to)};
    if (stepped) elements.push_back(real(step));
    if (step == 0 || (to > from && step < 0) || (to < from && step > 0)) {
      expectmessage(158, vector(elements));
      continue;
    }
    Row expected;
    const int count = static_cast<int>(std::fabs((to - from) / step)) + 1;
    for (int i = 0; i < count; ++i) expected.push_back(from + i * step);
    ASSERT_EQ(run(vector(elements)), 0);
    expectreals(expected);
  }
}

// The ends are tolerant, the number of steps between them is not.
TEST_F(Interval, StepsAreNotCountedTolerantly) {
  ASSERT_EQ(run(vector({real(0), real(0.3), real(0.1)})), 0);
  expectreals({0, 0.1, 0.2});
  ASSERT_EQ(run(vector({whole(1), real(2.5)})), 0);
  expectreals({1, 2});
  ASSERT_EQ(run(vector({real(1 + TOLERANCE / 2), real(2.5)})), 0);
  expectreals({1, 2});
}

TEST_F(Interval, WhatIsNoNumberHasNoEnd) {
  const double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
  expectmessage(153, scalar(real(nan)));
  expectmessage(153, scalar(real(inf)));
  expectmessage(153, scalar(real(1e30)));
  expectmessage(158, vector({real(nan), whole(1)}));
  expectmessage(158, vector({whole(1), real(nan)}));
  expectmessage(158, vector({whole(1), whole(2), real(nan)}));
  expectmessage(146, vector({whole(1), real(inf)}));
  expectmessage(146, vector({whole(1), real(1e300), whole(1)}));
  expectmessage(146, vector({whole(1), real(2.5), real(1e-10)}));
  expectmessage(158, vector({whole(1), real(2.5), real(TOLERANCE / 2)}));
}

// ---- Characters.

TEST_F(Interval, Characters) {
  for (int round = 0; round < 400; ++round) {
    const int from = round < 256 ? 0 : static_cast<int>(random() % 256), to = round % 256;
    const int last = round < 256 ? to : static_cast<int>(random() % 256);
    const Element end = character(static_cast<char>(last));
    ASSERT_EQ(run(round >= 256        ? vector({character(static_cast<char>(from)), end})
                  : random() % 2 == 0 ? scalar(end)
                                      : vector({end})),
              0);
    expectvector(static_cast<std::uint32_t>(std::abs(last - from) + 1), HASASCII);
    for (int i = 0; i <= std::abs(last - from); ++i) {
      ASSERT_EQ(stack[1].data_pointer[i].tag, tags::ASCII);
      ASSERT_EQ(stack[1].data_pointer[i].integer, last >= from ? from + i : from - i);
    }
  }
}

// ---- Grids.

int partsof(std::int32_t tag) {
  return tag == tags::COMPLEX ? 2 : tag == tags::QUATERNION ? 4 : 8;
}

Element hyper(std::int32_t tag, Row parts, std::uint16_t form = forms::CARTESIAN, std::uint16_t marks = 0) {
  parts.resize(8);
  if (tag == tags::COMPLEX) return complex(parts[0], parts[1], form, marks);
  if (tag == tags::QUATERNION) return quaternions(parts[0], parts[1], parts[2], parts[3], form, marks);
  return octonion({parts[0], parts[1], parts[2], parts[3], parts[4], parts[5], parts[6], parts[7]}, form, marks);
}

Row partsin(const Element &e) {
  return model::of(e).parts;
}

// All rows that take one value of each axis, the first axis running fastest.
Rows product(const Rows &axes) {
  Rows rows = {{}};
  for (std::size_t k = axes.size(); k-- > 0;) {
    Rows longer;
    for (const Row &row : rows)
      for (const double value : axes[k]) {
        Row with = {value};
        with.insert(with.end(), row.begin(), row.end());
        longer.push_back(with);
      }
    rows = longer;
  }
  return rows;
}

class Grids : public Interval {
 protected:
  void expectrows(std::int32_t tag, const Rows &rows, std::uint16_t form, double close) {
    expectvector(static_cast<std::uint32_t>(rows.size()), kindbit(tag));
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Element &e = stack[1].data_pointer[i];
      ASSERT_EQ(e.tag, tag);
      ASSERT_EQ(e.form, form);
      const Row parts = partsin(e);
      for (std::size_t k = 0; k < parts.size(); ++k)
        ASSERT_TRUE(model::near(parts[k], rows[i][k], close)) << i << " " << k << ": " << parts[k] << " " << rows[i][k];
    }
  }
};

TEST_F(Grids, Cartesian) {
  for (const std::int32_t tag : {tags::COMPLEX, tags::QUATERNION, tags::OCTONION})
    for (int round = 0; round < 120; ++round) {
      const int given = 1 + round % 3;
      const std::int64_t origin = any(-1, 1);
      set(origin, TOLERANCE);
      Row from(8), to(8), step(8);
      Rows axes;
      for (int k = 0; k < partsof(tag); ++k) {
        const auto at = static_cast<std::size_t>(k);
        const std::int64_t wide = tag == tags::OCTONION ? 1 : 3;
        from[at] = given == 1 ? (k == 0 ? static_cast<double>(origin) : 0) : static_cast<double>(any(-wide, wide)) / 2;
        to[at] = static_cast<double>(any(-wide, wide)) / 2;
        step[at] = to[at] < from[at] ? -1 : 1;
        if (given == 3) step[at] *= static_cast<double>(1 + random() % 3) / 4;
        Row axis;
        // Quarters: every value is exact.
        for (double x = from[at]; step[at] > 0 ? x <= to[at] : x >= to[at]; x += step[at]) axis.push_back(x);
        axes.push_back(axis);
      }
      Elements elements;
      if (given > 1) elements.push_back(hyper(tag, from));
      elements.push_back(hyper(tag, to));
      if (given > 2) elements.push_back(hyper(tag, step));
      ASSERT_EQ(run(vector(elements)), 0);
      expectrows(tag, product(axes), forms::CARTESIAN, 0);
      if (HasFatalFailure()) return;
    }
}

// A modulus and angles as parts, and back, by the conversions that numbers are written and read with.
Row turned(std::int32_t tag, Row parts) {
  parts.resize(8);
  if (tag == tags::COMPLEX) cartesiancomplex(parts.data(), parts.data());
  if (tag == tags::QUATERNION) cartesianquat(parts.data(), parts.data());
  if (tag == tags::OCTONION) cartesianocto(parts.data(), parts.data());
  return parts;
}

Row polar(std::int32_t tag, Row parts) {
  parts.resize(8);
  if (tag == tags::COMPLEX) polarcomplex(parts.data(), parts.data());
  if (tag == tags::QUATERNION) polarquat(parts.data(), parts.data());
  if (tag == tags::OCTONION) polarocto(parts.data(), parts.data());
  for (double &x : parts)
    if (std::fabs(x - std::nearbyint(x)) < TOLERANCE) x = std::nearbyint(x);
  return parts;
}

// Moduli and angles between those of the two ends, one of which may be cartesian: the grid is polar all the same.
TEST_F(Grids, Polar) {
  for (const std::int32_t tag : {tags::COMPLEX, tags::QUATERNION, tags::OCTONION})
    for (int round = 0; round < 100; ++round) {
      const auto part = [&] { return static_cast<double>(random() % 2000) / 1000 - 1; };
      Row from, to;
      const double wide = tag == tags::COMPLEX ? 3 : 1;  // a third part past 1 has no angle in a quaternion
      for (int k = 0; k < partsof(tag); ++k) {
        from.push_back(wide * part());
        to.push_back(round % 5 == 0 && k > 0 ? 0 : wide * part());
      }
      const int cartesian = static_cast<int>(random() % 3);
      const Elements ends = {hyper(tag, from, cartesian == 1 ? forms::CARTESIAN : forms::POLAR),
                             hyper(tag, to, cartesian == 2 ? forms::CARTESIAN : forms::POLAR)};
      const Row first = polar(tag, from), last = polar(tag, to);
      Rows axes;
      for (std::size_t k = 0; k < static_cast<std::size_t>(partsof(tag)); ++k) {
        axes.emplace_back();
        const double step = last[k] < first[k] ? -1 : 1;
        for (double i = 0; i <= std::fabs(last[k] - first[k]); ++i) axes.back().push_back(first[k] + i * step);
      }
      Rows rows = product(axes);
      for (Row &row : rows) row = turned(tag, row);
      ASSERT_EQ(run(vector(ends)), 0) << tag;
      expectrows(tag, rows, forms::POLAR, 1e-9);
      if (HasFatalFailure()) return;
    }
}

TEST_F(Grids, PolarSteps) {
  Rows rows;
  for (const double angle : {0.25, 0.55, 0.85, 1.15})
    for (const double modulus : {1, 3, 5}) rows.push_back(turned(tags::COMPLEX, {modulus, angle}));
  for (const std::uint16_t form : {forms::POLAR, forms::CARTESIAN}) {
    ASSERT_EQ(run(vector({hyper(tags::COMPLEX, turned(tags::COMPLEX, {1, 0.25}), forms::POLAR),
                          hyper(tags::COMPLEX, turned(tags::COMPLEX, {6, 1.2}), form),
                          hyper(tags::COMPLEX, turned(tags::COMPLEX, {2, 0.3}), form)})),
              0);
    expectrows(tags::COMPLEX, rows, forms::POLAR, 1e-9);
  }
}

TEST_F(Grids, DegreesAreThoseOfTheEnd) {
  ASSERT_EQ(run(vector({complex(1, 0, forms::POLAR), complex(0, 2, forms::POLAR, attributes::DEGREES)})), 0);
  for (std::uint32_t i = 0; i < stack[1].elements; ++i)
    EXPECT_EQ(stack[1].data_pointer[i].attributes, attributes::DEGREES);
}

// A component whose ends are equal is one value, whatever its step; any other needs a step that leads there.
TEST_F(Grids, StepsByComponent) {
  ASSERT_EQ(run(vector({complex(0, 5), complex(2, 5), complex(1, 0)})), 0);
  expectrows(tags::COMPLEX, {{0, 5}, {1, 5}, {2, 5}}, forms::CARTESIAN, 0);
  expectmessage(158, vector({complex(0, 0), complex(2, 1), complex(1, 0)}));
  expectmessage(158, vector({complex(0, 0), complex(2, 1), complex(1, -1)}));
  expectmessage(158, vector({complex(0, 0), complex(NAN, 1)}));
  expectmessage(158, vector({octonion({0}), octonion({1, 1}), octonion({1, -1})}));
}

TEST_F(Grids, Messages) {
  expectmessage(146, vector({complex(0, 0), complex(1e6, 1e6)}));
  expectmessage(146, vector({quaternions(0, 0, 0, 0), quaternions(999, 999, 999, 999)}));
  expectmessage(146, scalar(complex(5e9, 0)));
  expectmessage(153, scalar(complex(1e300, 1)));
  expectmessage(153, scalar(quaternions(1, 1, 1, -1e300)));
  expectmessage(153, scalar(octonion({1, 2, 3, 4, 5, 6, 7, NAN})));
  expectmessage(157, vector({complex(0, 0), whole(1)}));
  expectmessage(157, vector({real(0), quaternions(1, 1, 1, 1)}));
  expectmessage(157, vector({complex(0, 0), octonion({1})}));
  expectmessage(157, vector({complex(0, 0), complex(1, 1), real(1)}));
}

TEST_F(Interval, Messages) {
  expectmessage(142, scalar(record(tags::FILLER, 0)));
  Element wide = record(tags::UNICODE, 0);
  wide.unicode = 0x3b1;
  expectmessage(142, scalar(wide));
  expectmessage(142, function({numbers({1})}, 1, 0, "f"));
  expectmessage(142, variable("x", 0));
  expectmessage(154, numbers({1, 2, 3, 4}));
  expectmessage(154, text("abcd"));
  expectmessage(154, vector({whole(1), enclosed(numbers({2, 3}))}));
  expectmessage(154, vector({enclosed(scalar(whole(1)))}));
  expectmessage(155, text("abc"));
  expectmessage(155, vector({character('a'), whole(1), whole(2)}));
  expectmessage(156, vector({character('a'), whole(2)}));
  expectmessage(156, vector({real(2), character('a')}));
  expectmessage(156, vector({character('a'), complex(1, 1)}));
}

// A flag word that COLLECT left says nothing: the records do.
TEST_F(Interval, Collected) {
  Point collected = vector({whole(2), real(4)});
  collected.type = ISVECTOR | 2;
  ASSERT_EQ(run(collected), 0);
  expectwhole({2, 3, 4});
  collected = vector({character('a'), whole(4)});
  collected.type = ISVECTOR | 2;
  expectmessage(156, collected);
  collected = vector({whole(1), enclosed(numbers({2}))});
  collected.type = ISVECTOR | 2;
  expectmessage(154, collected);
}

// ---- Stretches.

TEST_F(Interval, AnyCutGivesTheSame) {
  Progression p{};
  const auto start = [&](std::int32_t tag, int parts, bool polar) {
    p = {};
    p.tag = tag;
    p.form = polar ? forms::POLAR : forms::CARTESIAN;
    p.from = -4;
    p.step = 3;
    p.parts = parts;
    p.polar = polar;
    for (int k = 0; k < parts; ++k) {
      p.first[k] = k == 0 ? 1 : 0.1 * k;
      p.steps[k] = 0.3;
      p.counts[k] = static_cast<std::uint64_t>(2 + k % 2);
    }
  };
  const auto make = [](std::int32_t tag, std::size_t count) {
    Elements made;
    for (std::size_t i = 0; i < count; ++i) made.push_back(tag == tags::OCTONION ? octonion({}) : Element{});
    return made;
  };
  for (const bool polar : {false, true})
    for (const auto &[tag, parts] : std::vector<std::pair<std::int32_t, int>>{{tags::INTEGER, 0},
                                                                              {tags::ASCII, 0},
                                                                              {tags::REAL, 1},
                                                                              {tags::COMPLEX, 2},
                                                                              {tags::QUATERNION, 4},
                                                                              {tags::OCTONION, 8}}) {
      start(tag, parts, polar);
      constexpr std::size_t COUNT = 300;
      Elements at_once = make(tag, COUNT), cut = make(tag, COUNT);
      writeinterval(p, at_once.data(), 0, COUNT);
      std::size_t from = 0;
      while (from < COUNT) {
        const std::size_t to = std::min<std::size_t>(COUNT, from + random() % 40);
        writeinterval(p, cut.data(), from, to);
        from = to;
      }
      for (std::size_t i = 0; i < COUNT; ++i) {
        ASSERT_TRUE(model::agree(model::of(cut[i]), model::of(at_once[i]), 0)) << tag << " at " << i;
        if (tag == tags::OCTONION) release(cut[i].octonion), release(at_once[i].octonion);
      }
    }
}

TEST_F(Interval, Large) {
  ASSERT_EQ(run(vector({whole(10), whole(10 + 2 * 299999), whole(2)})), 0);
  expectvector(300000, HASINTEGER);
  for (std::uint32_t i = 0; i < 300000; ++i)
    if (stack[1].data_pointer[i].integer != 10 + 2 * std::int64_t{i}) FAIL() << i;
}

// ---- Breaks.

TEST_F(Interval, Interrupted) {
  for (const bool octonions : {false, true}) {
    clear();
    stack[1] = octonions ? vector({octonion({}), octonion({9, 9, 9, 9, 9})}) : scalar(whole(200000));
    Point *top = stack + 1;
    interrupted = SIGINT;
    testing::internal::CaptureStdout();
    EXPECT_EQ(landingof([&] { interval(&top, &instruction, context); }), -1002);
    testing::internal::GetCapturedStdout();
    interrupted = 0;
    expectcounts();
  }
}

#ifdef MORVIK_CHECKING
TEST_F(Interval, WithoutStorage) {
  for (int kind = 0; kind < 3; ++kind) {
    std::string was;
    Point *top = stack + 1;
    withoutstorage(
        [&] {
          clear();
          stack[1] = kind == 0   ? scalar(whole(5))
                     : kind == 1 ? text("ad")
                                 : vector({octonion({0}), octonion({1, 1, 1})});
          was = structured::textof(stack[1]);
        },
        [&] { interval(&top, &instruction, context); },
        [&](bool failed) {
          expectcounts();
          if (failed) EXPECT_EQ(structured::textof(stack[1]), was);
        });
  }
}
#endif

}  // namespace
