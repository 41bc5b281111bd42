// The two records, their flag words, and the tables that go with them.
#include "spaces/point.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "api/building.h"
#include "spaces/blocks.h"
#include "spaces/counters.h"
#include "spaces/loose.h"
#include "spaces/refderef.h"

using namespace morvik;

namespace {

TEST(Points, RanksByRankPlusTen) {
  EXPECT_STREQ(Ranks[ranks::END + 10], "END");
  EXPECT_STREQ(Ranks[ranks::LOCAL_VARIABLE + 10], "LOCAL VARIABLE");
  EXPECT_STREQ(Ranks[ranks::LOCAL_ADDRESS + 10], "LOCAL ADDRESS");
  EXPECT_STREQ(Ranks[ranks::ADDRESS + 10], "ADDRESS");
  EXPECT_STREQ(Ranks[ranks::OPERATOR + 10], "OPERATOR");
  EXPECT_STREQ(Ranks[ranks::FUNCTION + 10], "FUNCTION");
  EXPECT_STREQ(Ranks[ranks::VARIABLE + 10], "VARIABLE");
  EXPECT_STREQ(Ranks[ranks::LABEL + 10], "LABEL");
  EXPECT_STREQ(Ranks[ranks::UNUSED + 10], "UNUSED");
  EXPECT_STREQ(Ranks[ranks::INVALID + 10], "INVALID");
  EXPECT_STREQ(Ranks[ranks::SCALAR + 10], "SCALAR");
  EXPECT_STREQ(Ranks[ranks::VECTOR + 10], "ARRAY");
  EXPECT_EQ(sizeof Ranks, 12u * 32);
  EXPECT_EQ(ranks::END, -10);
  EXPECT_EQ(ranks::VECTOR, 1);
}

TEST(Points, EveryFlagIsOneBitOfItsOwn) {
  const std::vector<std::pair<const char *, std::uint32_t>> flags = {
#define FLAG(name, value) {#name, name},
#include "tables/flags.def"
#undef FLAG
  };
  std::uint32_t all = 0;
  for (const auto &[name, bit] : flags) {
    EXPECT_EQ(bit & (bit - 1), 0u) << name;
    EXPECT_EQ(all & bit, 0u) << name;
    EXPECT_GT(bit, all) << name;  // from the lowest up
    all |= bit;
  }
  EXPECT_EQ(all, ~0x0C000000u);  // all but the two bits without a name
}

// The usual flag words, as the reports show them.
TEST(Points, FlagWords) {
  EXPECT_EQ(ISSCALAR | HASINTEGER, 0x10400u);
  EXPECT_EQ(ISSCALAR | HASREAL, 0x10800u);
  EXPECT_EQ(ISSCALAR | HASFILE, 0x410000u);
  EXPECT_EQ(ISVECTOR | HASINTEGER, 0x40400u);
  EXPECT_EQ(ISVECTOR | ISONEELEMENT | HASASCII, 0x60100u);
  EXPECT_EQ(EMPTY_VECTOR, 0x240000u);
  EXPECT_EQ(OWNING_BITS, 16512u);
  EXPECT_EQ(PURITY_BITS, 0x407F00u);
  EXPECT_EQ(ISVARIABLE | ISOPERATOR, 0x11u);
  EXPECT_EQ(ISADDRESS | ISOPERATOR, 20u);
}

TEST(Points, KindsByTag) {
  EXPECT_EQ(kindbit(tags::SUBARRAY), 0u);
  EXPECT_EQ(kindbit(tags::ASCII), HASASCII);
  EXPECT_EQ(kindbit(tags::UNICODE), HASUNICODE);
  EXPECT_EQ(kindbit(tags::INTEGER), HASINTEGER);
  EXPECT_EQ(kindbit(tags::REAL), HASREAL);
  EXPECT_EQ(kindbit(tags::COMPLEX), HASCOMPLEX);
  EXPECT_EQ(kindbit(tags::QUATERNION), HASQUATERNION);
  EXPECT_EQ(kindbit(tags::OCTONION), HASOCTONION);
  for (const std::int32_t tag : {9, 10, 11, 0, -5}) EXPECT_EQ(kindbit(tag), 0u) << tag;
}

TEST(Points, ComplexedByTwoOfTheSevenKinds) {
  EXPECT_EQ(complexed(0), 0u);
  EXPECT_EQ(complexed(HASREAL | ISVECTOR), 0u);
  EXPECT_EQ(complexed(HASREAL | HASFUNCTION | STRUCTURED | HASFILE), 0u);
  EXPECT_EQ(complexed(HASASCII | HASOCTONION), COMPLEXED);
  EXPECT_EQ(complexed(HASINTEGER | HASREAL | HASCOMPLEX), COMPLEXED);
}

TEST(Points, Questions) {
  Point p{};
  EXPECT_TRUE(isend(p));
  EXPECT_TRUE(isspace(p));
  p.elements = 3;
  p.rank = 2;
  EXPECT_TRUE(isend(p));  // whatever else is set
  p.type = ISVECTOR | HASASCII;
  EXPECT_FALSE(isend(p));
  EXPECT_TRUE(istext(p));
  p.type |= COMPLEXED;
  EXPECT_FALSE(istext(p));
  p.type = ISVECTOR | HASASCII | STRUCTURED;
  EXPECT_FALSE(istext(p));
  p.type = HASASCII;
  p.rank = ranks::ADDRESS;
  EXPECT_FALSE(istext(p));
  EXPECT_FALSE(isspace(p));
  p.rank = ranks::FUNCTION;
  EXPECT_TRUE(isfunction(p));
  EXPECT_FALSE(isoperator(p));
  p.rank = ranks::OPERATOR;
  EXPECT_TRUE(isoperator(p));
  p.type = ISEMPTY;
  EXPECT_TRUE(isempty(p));
  EXPECT_FALSE(isscalarlike(p));
  p.type = ISSCALAR;
  EXPECT_TRUE(isscalarlike(p));
  p.type = ISVECTOR | ISONEELEMENT;
  EXPECT_TRUE(isscalarlike(p));
}

// A quaternion begins in the name word.
TEST(Points, QuaternionsFillTheRecord) {
  Element e{};
  setquaternion(e, {{1.5, 2.5, 3.5, 4.5}});
  double parts[4];
  std::memcpy(parts, reinterpret_cast<const char *>(&e) + 8, sizeof parts);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(parts[i], 1.5 + i);
    EXPECT_EQ(quaternion(e).part[i], 1.5 + i);
  }
}

TEST(Points, OneRowAnInstruction) {
  EXPECT_EQ(sizeof InstructionTiming / sizeof InstructionTiming[0], 270u);
}

// What is left on the stack where a jump lands is whole, the slot at the top as well.
TEST(Loose, WhatIsKeptIsWhole) {
  const std::int64_t alive = liveblocks();
  for (const int lowest : {1, 2}) {
    Point stack[3] = {};
    for (int i = 1; i <= 2; ++i) putloose(stack[i], LOOSE_INTEGER, forms::NUMBER, 7);
    if (lowest == 2) stack[1] = {};
    noteloose(stack + lowest);
    EXPECT_EQ(keepwhole(stack + 2), stack + 2);
    for (int i = lowest; i <= 2; ++i) {
      ASSERT_FALSE(isloose(stack[i])) << i;
      EXPECT_EQ(stack[i].data_pointer->integer, 7);
      dereferencepoint(stack + i);
    }
  }
  EXPECT_EQ(liveblocks(), alive);
}

// A value that a caller sets anew releases the old one.
TEST(Building, AValueThatIsSetReleasesTheOldOne) {
  const std::int64_t alive = liveblocks();
  Point place = buildtext("old", 3);
  const std::int64_t one = liveblocks() - alive;
  setvalue(&place, buildtext("new", 3));
  EXPECT_EQ(liveblocks(), alive + one);
  EXPECT_EQ(place.data_pointer[0].ascii, 'n');
  dereferencepoint(&place);
  EXPECT_EQ(liveblocks(), alive);
}

// A record that a loose scalar gets is written over whatever it held.
TEST(Loose, ARecordIsWrittenWhole) {
  Point slot;
  putloose(slot, LOOSE_INTEGER, forms::BOOLEAN, 1);
  Element record;
  std::memset(static_cast<void *>(&record), 0xFF, sizeof record);
  setrecord(record, slot);
  EXPECT_EQ(record.tag, tags::INTEGER);
  EXPECT_EQ(record.form, forms::BOOLEAN);
  EXPECT_EQ(record.attributes, 0);
  EXPECT_EQ(record.name, nullptr);
  EXPECT_EQ(record.integer, 1);
}

}  // namespace
