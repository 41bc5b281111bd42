// What the quick loop does to short vectors of plain records says the same as the instructions do: the flag word, the
// depth, the shape and the records.
#include <gtest/gtest.h>

#include <cstring>

#include "operators/catenate.h"
#include "operators/reshape.h"
#include "operators/slices.h"
#include "points.h"

using namespace morvik;

namespace {

using namespace points;

Point drawn(Point p) {
  p.type |= ISPROBABLE;
  return p;
}

const std::vector<Point (*)()> VECTORS = {
    [] { return text("abc"); },
    [] { return text("x"); },
    [] {
      return numbers({1, 2});
    },
    [] {
      return drawn(numbers({7, 0, 1}));
    },
    [] { return vector({real(1.5)}); },
    [] {
      return vector({real(2), real(-0.5), real(4)});
    },
    [] {
      return vector({whole(1), real(2.5), character('z')});
    },
    [] {
      return vector({complex(1, 2), whole(3)});
    },
    [] {
      return vector({quaternions(1, 2, 3, 4), complex(5, 6)});
    },
};

// Drops both.
void expectsame(Point got, Point wanted) {
  EXPECT_EQ(got.type, wanted.type);
  EXPECT_EQ(got.rank, wanted.rank);
  EXPECT_EQ(got.depth, wanted.depth);
  ASSERT_EQ(got.elements, wanted.elements);
  EXPECT_EQ(got.link, wanted.link);
  ASSERT_EQ(got.shape_pointer != nullptr, wanted.shape_pointer != nullptr);
  if (got.shape_pointer)
    EXPECT_EQ(
        std::memcmp(got.shape_pointer, wanted.shape_pointer, static_cast<std::size_t>(got.rank) * sizeof(Element)), 0);
  EXPECT_EQ(std::memcmp(got.data_pointer, wanted.data_pointer, got.elements * sizeof(Element)), 0);
  drop(got);
  drop(wanted);
}

class ShortVectors : public testing::Test {
 protected:
  void SetUp() override { before = liveblocks(); }
  void TearDown() override { EXPECT_EQ(liveblocks(), before); }
  std::int64_t before = 0;
};

PlainRecords recordsof(const Point &vector) {
  return {vector.data_pointer, vector.elements, vector.type, vector.depth};
}

TEST_F(ShortVectors, AreJoinedAsByCatenate) {
  for (const auto left : VECTORS) {
    for (const auto right : VECTORS) {
      Point a = left(), b = right(), joined, wanted = left(), other = right();
      ASSERT_EQ(catenate(wanted, other), 0);
      ASSERT_TRUE(joinplain(joined, recordsof(a), recordsof(b)));
      drop(a);
      drop(b);
      expectsame(joined, wanted);
    }
  }
}

TEST_F(ShortVectors, AreResizedAsByReshape) {
  for (const auto make : VECTORS) {
    for (const std::int64_t extent : {1, 2, 3, 4, 7, 256}) {
      Point shape = scalar(whole(extent)), wanted = make(), own = make(), shared = make(), holder = shared;
      ASSERT_EQ(reshape(&wanted, &shape, nullptr), 0);
      referencepoint(&holder);
      referencepoint(&wanted);
      ASSERT_TRUE(reshapeshort(own, whole(extent)));
      ASSERT_TRUE(reshapeshort(shared, whole(extent)));
      expectsame(own, wanted);
      expectsame(shared, wanted);
      expectsame(holder, make());
    }
  }
}

TEST_F(ShortVectors, StayAsTheyAreWhereReshapeIsToLook) {
  for (const std::int64_t extent : {0, -1, 257}) {
    Point vector = text("abc");
    EXPECT_FALSE(reshapeshort(vector, whole(extent)));
    expectsame(vector, text("abc"));
  }
  for (Point other :
       {scalar(whole(7)), numbers({1, 2, 3, 4}, {2, 2}), empty(), vector({enclosed(numbers({1, 2})), whole(3)}),
        vector({octonion({1, 2}), whole(3)}), array(Elements(257, whole(1)), {257})}) {
    EXPECT_FALSE(reshapeshort(other, whole(2)));
    drop(other);
  }
}

TEST_F(ShortVectors, GiveTheirFirstAsByFirst) {
  for (const auto make : VECTORS) {
    Point vector = make(), taken, wanted = make();
    ASSERT_EQ(first(wanted), 0);
    ASSERT_TRUE(makescalar(taken, *vector.data_pointer));
    drop(vector);
    expectsame(taken, wanted);
  }
}

TEST_F(ShortVectors, LoseTheirFirstAsByRest) {
  for (const auto make : VECTORS) {
    Point vector = make(), wanted = make();
    if (vector.elements > 1) {
      const Flags flags = restflags(vector, false);
      ASSERT_EQ(rest(wanted), 0);
      EXPECT_EQ(flags.type, wanted.type);
      EXPECT_EQ(flags.depth, wanted.depth);
    }
    drop(vector);
    drop(wanted);
  }
}

}  // namespace
