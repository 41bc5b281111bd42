// Recounts every reference word from those who hold values, by the tags of the records alone, and compares.
#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <deque>
#include <map>
#include <set>
#include <string>

#include "failures.h"
#include "points.h"

using failures::landingof;

class Recount {
 public:
  // What this Point and everything below it hold.
  void add(const Point &point) {
    if (point.rank >= ranks::INVALID - 1 || point.rank <= ranks::END) return addspace(point);
    count(point.name);
    count(point.link);
    if (point.rank == ranks::ADDRESS && (point.type & ISLOCAL) != 0) return;
    count(point.block);
    if (point.rank == ranks::FUNCTION && point.programme && programmes.insert(point.programme).second) addbody(point);
  }

  // Says what is wrong, or nothing.
  std::string faults(std::int64_t before) const {
    std::string text;
    for (const auto &[block, expected] : counts)
      if (refr(block) >= 0 && refr(block) != expected)
        text += "a count of " + std::to_string(refr(block)) + " where " + std::to_string(expected) + " lead; ";
    const auto alive = liveblocks() - before;
    if (alive != static_cast<std::int64_t>(counts.size()))
      text += std::to_string(alive) + " blocks alive, " + std::to_string(counts.size()) + " reached";
    return text;
  }

 private:
  std::map<const void *, std::int64_t> counts;
  std::set<const void *> programmes;

  void count(const void *block) {
    if (block && refr(block) >= 0) ++counts[block];
  }
  void addspace(const Point &point) {
    count(point.shape_pointer);
    count(point.data_pointer);
    if (!point.data_pointer) return;
    for (std::uint32_t i = 0; i < point.elements; ++i) addrecord(point.data_pointer[i], point.rank == 0);
  }
  void addrecord(const Element &e, bool scalar) {
    if (e.tag < 0) return add(std::bit_cast<Point>(e));
    if (scalar && e.tag >= tags::ASCII && e.tag < tags::QUATERNION && (e.attributes & attributes::NAMED) != 0)
      count(e.name);
    if (e.tag == tags::OCTONION) count(e.octonion);
    if (e.tag == tags::SUBARRAY) {
      count(e.subarray);
      add(*e.subarray);
    }
    if (e.tag != tags::HANDLE) return;
    count(e.name);
    count(e.file.reserved);
    count(e.file.descriptor);
    if (e.file.descriptor) add(*e.file.descriptor);
  }
  void addbody(const Point &function) {
    count(function.programme->link);
    const Point *p = function.programme + 1;
    for (; p->type != 0; ++p) add(*p);
    count(p->name);
    count(p->link);
  }
};

// Values that a test holds. After each step the counts can be recounted; at the end nothing may be left.
class Lifetimes : public testing::Test {
 protected:
  void SetUp() override { before = liveblocks(); }
  void TearDown() override {
    letgo();
    EXPECT_EQ(liveblocks(), before);
  }
  void expectexact() const {
    Recount recount;
    for (const Point &p : held) recount.add(p);
    ASSERT_EQ(recount.faults(before), "");
  }
  // Holds a Point from now on.
  Point &hold(const Point &p) {
    held.push_back(p);
    return held.back();
  }
  // Gives all of them back.
  void letgo() {
    for (Point &p : held) dereferencepoint(&p);
    held.clear();
  }
  Point &holdcopy(const Point &p) {
    Point copy = p;
    referencepoint(&copy);
    return hold(copy);
  }

  std::int64_t before = 0;
  std::deque<Point> held;  // what hold gives stays in place
};

#ifdef MORVIK_CHECKING
// Does the work again and again, each time with one more allocation granted, until it has enough: how many that were.
// `prepare` makes ready for it; `check` looks at what it left, and whether it failed.
template <typename Prepare, typename Work, typename Check>
int withoutstorage(Prepare prepare, Work work, Check check) {
  constexpr int MOST = 100;
  for (int granted = 0; granted < MOST; ++granted) {
    prepare();
    testing::internal::CaptureStderr();
    failallocation(granted);
    const bool failed = landingof(work) != 0;
    failallocation(-1);
    testing::internal::GetCapturedStderr();
    check(failed);
    A_Problem = 0;
    if (!failed || testing::Test::HasFatalFailure()) return granted;
  }
  ADD_FAILURE() << "it never had enough";
  return MOST;
}
#endif
