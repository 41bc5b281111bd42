// The recount itself: each fault that it is for is planted in a value, told, and mended.
#include "spaces/recount.h"

#include <gtest/gtest.h>

#include <string>

#include "recount.h"

using namespace morvik;
using namespace points;

namespace {

class Recounts : public Lifetimes {
 protected:
  // What a recount says of the values held; `more` blocks are said to be alive beside those that are.
  std::string told(std::int64_t more = 0) const {
    Recount recount;
    for (const Point &p : held) recount.hold(p);
    return recount.faults(liveblocks() - before + more);
  }
  void expecttold(const std::string &part) const { EXPECT_NE(told().find(part), std::string::npos) << told(); }
};

TEST_F(Recounts, ACountThatIsNotThatOfTheOwners) {
  const Point &v = hold(numbers({1, 2, 3}));
  expectexact();
  reference(v.data_pointer);
  expecttold(": a count of 2 for 1 owners; ");
  release(v.data_pointer);
  expectexact();
}

TEST_F(Recounts, BlocksThatNobodyHolds) {
  hold(numbers({1, 2, 3}));
  EXPECT_EQ(told(1), "3 blocks alive, 2 reached");
  EXPECT_EQ(told(-1), "1 blocks alive, 2 reached");
  expectexact();
}

TEST_F(Recounts, ExtentsThatDoNotMakeTheElements) {
  Point &v = hold(numbers({1, 2, 3, 4, 5, 6}, {3, 2}));
  const std::string said = ": its extents do not make its elements; ";
  for (const std::int64_t extent : {std::int64_t{4}, std::int64_t{0}, std::int64_t{UINT32_MAX}, INT64_MAX}) {
    v.shape_pointer[0].integer = extent;
    expecttold(said);
  }
  v.shape_pointer[0].integer = 3;
  expectexact();
  Element *const shape = v.shape_pointer;
  v.shape_pointer = nullptr;
  expecttold(said);
  v.shape_pointer = shape;
  expectexact();
}

TEST_F(Recounts, OwnersWhoDisagreeAboutTheElements) {
  const Point &v = hold(numbers({1, 2, 3}));
  Point &other = holdcopy(v);
  expectexact();
  other.elements = 2;
  expecttold(": its owners say different numbers of elements; ");
  other.elements = 3;
  expectexact();
}

TEST_F(Recounts, ARecordThatOwnsWhatTheFlagsDeny) {
  Point &v = hold(vector({enclosed(numbers({1, 2}))}));
  expectexact();
  const std::uint32_t type = v.type;
  v.type = ISVECTOR | ISONEELEMENT | HASINTEGER;
  expecttold(", flags 0x");
  expecttold(": a record owns what the flags deny; ");
  v.type = type;
  expectexact();
}

#ifdef MORVIK_CHECKING
// A block knows its size in this build alone.
TEST_F(Recounts, MoreElementsThanThereIsRoomFor) {
  Point &v = hold(numbers({1, 2, 3}));
  v.elements = 1000;
  v.shape_pointer->integer = 1000;
  expecttold(": more elements than it has room for; ");
  v.elements = 3;
  v.shape_pointer->integer = 3;
  expectexact();
}
#endif

}  // namespace
