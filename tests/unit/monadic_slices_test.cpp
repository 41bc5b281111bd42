// The twins of the monadic scalar instructions on slices made by hand: together they write what the plain function
// writes, and their replies hold what was found.
#include <vector>

#include "monadics.h"
#include "spaces/hypercomplex.h"
#include "spaces/work.h"

using namespace morvik;

namespace {

using namespace points;
using monadics::Member;

constexpr std::uint32_t THREADS = 3;
constexpr int COUNT = 47;

class MonadicSlices : public Lifetimes {
 protected:
  void SetUp() override {
    Lifetimes::SetUp();
    processorsbefore = processors;
    repliesbefore = from_coprocessor;
    processors = THREADS;
    for (Reply &r : replies) r = {};
    from_coprocessor = replies;
  }
  void TearDown() override {
    processors = processorsbefore;
    from_coprocessor = repliesbefore;
    to_coprocessors = {};
    Lifetimes::TearDown();
  }

  // Works all slices from `from` to `to`, one after the other with one stream of draws.
  void work(const Member &m, Point &p, Element *to, bool fresh, std::uint64_t seed) {
    to_coprocessors = {};
    to_coprocessors.operand = &p;
    to_coprocessors.fresh = fresh;
    to_coprocessors.combined = p.type;
    to_coprocessors.count = p.elements;
    to_coprocessors.second = p.data_pointer;
    to_coprocessors.result = to;
    to_coprocessors.origin = 1;
    std::uint64_t state = seed;
    for (std::uint32_t i = 0; i < THREADS; ++i) failures[i] = monadics::runslice(m, p, i, &state);
  }
  std::uint32_t flags() const { return replies[0].flags | replies[1].flags | replies[2].flags; }

  Reply replies[THREADS];
  std::int32_t failures[THREADS];
  std::uint32_t processorsbefore = 1;
  Reply *repliesbefore = nullptr;
};

Elements plain(std::int32_t tag) {
  Elements elements;
  for (int i = 0; i < COUNT; ++i) {
    const double x = 1.25 + i * 0.75;
    switch (tag) {
      case tags::INTEGER:
        elements.push_back(whole(i + 1));
        break;
      case tags::REAL:
        elements.push_back(real(x));
        break;
      case tags::COMPLEX:
        elements.push_back(complex(x, 0.5 - i));
        break;
      case tags::QUATERNION:
        elements.push_back(quaternions(x, 0.5 - i, i, 0.25));
        break;
      case tags::OCTONION:
        elements.push_back(octonion({x, 0.5 - i, 1.0 * i, 0.25, 1, 2, 3, 0.125}));
        break;
      default:
        if (i % 5 == 0)
          elements.push_back(enclosed(numbers({1, i + 1})));
        else if (i % 5 == 1)
          elements.push_back(octonion({x, 2}));
        else
          elements.push_back(i % 5 == 2 ? real(x) : whole(i + 1));
    }
  }
  return elements;
}

TEST_F(MonadicSlices, AgreeWithThePlainFunction) {
  constexpr std::int32_t MIXED = 0;
  for (const Member &m : monadics::members())
    for (const std::int32_t tag : {tags::INTEGER, tags::REAL, tags::COMPLEX, tags::QUATERNION, tags::OCTONION, MIXED})
      for (const bool fresh : {false, true}) {
        const std::string name = m.name;
        if (name == "ROLL" && tag != tags::INTEGER && tag != tags::REAL) continue;
        if ((name == "LD" || name == "LOG10") && (tag > tags::COMPLEX || tag == MIXED)) continue;
        SCOPED_TRACE(std::string(m.name) + " tag " + std::to_string(tag) + (fresh ? " fresh" : ""));
        if (!fresh && tag == MIXED) continue;  // owning records are never written over
        Point expected = monadics::result(m.name, vector(plain(tag)));
        const std::uint32_t kinds = expected.type;
        const std::string text = source(expected);

        Point p = vector(plain(tag));
        Element *to = fresh ? newelements(p.elements) : p.data_pointer;
        work(m, p, to, fresh, monadics::SEED);
        for (const std::int32_t failure : failures) EXPECT_EQ(failure, 0);
        EXPECT_EQ(flags(), kinds & (KIND_BITS | STRUCTURED | COMPLEXED | ISPROBABLE));
        Point made = p;
        made.data_pointer = to;
        made.type = ISVECTOR | flags();
        if (fresh) reference(made.shape_pointer);
        if (fresh) drop(p);
        EXPECT_EQ(source(made), text);
      }
}

// A slice that fails gives back what it made; the others are done.
TEST_F(MonadicSlices, FailureStaysInItsSlice) {
  Elements elements = plain(tags::OCTONION);
  const Slice middle = slice(COUNT, THREADS, 1);
  dereferencedataelems(&elements[middle.end - 1], 1);
  elements[middle.end - 1] = record(tags::FILLER, 0);
  Point p = vector(elements);
  Element *to = newelements(COUNT);
  work(monadics::member("NEGATIVE"), p, to, true, monadics::SEED);
  EXPECT_EQ(failures[0], 0);
  EXPECT_EQ(failures[1], 994);
  EXPECT_EQ(failures[2], 0);
  EXPECT_EQ(replies[1].failure, 994);
  EXPECT_EQ(replies[0].flags, HASOCTONION);
  EXPECT_EQ(replies[1].flags, 0U);
  EXPECT_EQ(replies[2].flags, HASOCTONION);
  EXPECT_EQ(to[COUNT - 1].octonion->part[0], -p.data_pointer[COUNT - 1].octonion->part[0]);
  dereferencedataelems(to, middle.begin);
  dereferencedataelems(to + middle.end, COUNT - middle.end);
  freeblock(to);
  drop(p);
}

// The tolerance and the first index are those that the instruction began with.
TEST_F(MonadicSlices, WhatTheInstructionBeganWith) {
  Point p = vector({real(2.9999999), real(1.5), real(0.25)});
  Element *to = newelements(3);
  to_coprocessors = {};
  to_coprocessors.fresh = 1;
  to_coprocessors.count = 3;
  to_coprocessors.second = p.data_pointer;
  to_coprocessors.result = to;
  to_coprocessors.tolerance = 1e-6;
  to_coprocessors.origin = 100;
  std::uint64_t state = monadics::SEED;
  for (std::uint32_t i = 0; i < THREADS; ++i) monadics::runslice(monadics::member("FLOOR"), p, i, &state);
  EXPECT_EQ(to[0].integer, 3);
  EXPECT_EQ(to[1].integer, 1);
  EXPECT_EQ(to[2].integer, 0);
  for (int i = 0; i < 3; ++i) p.data_pointer[i] = whole(1);
  for (std::uint32_t i = 0; i < THREADS; ++i) monadics::runslice(monadics::member("ROLL"), p, i, &state);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(to[i].integer, 100);
  freeblock(to);
  drop(p);
}

// More threads than elements: somebody has nothing to do.
TEST_F(MonadicSlices, EmptySlices) {
  Point p = numbers({5});
  work(monadics::member("NEGATIVE"), p, p.data_pointer, false, monadics::SEED);
  EXPECT_EQ(p.data_pointer->integer, -5);
  EXPECT_EQ(flags(), HASINTEGER);
  drop(p);
}

}  // namespace
