// REVERSE, MIRROR, TRANSPOSE, CATENATE, COMPRESS, REPLICATE and ENLIST case by case: flag words, depths, messages, and
// what is never touched.
#include "operators/catenate.h"
#include "operators/compress.h"
#include "operators/enclose.h"
#include "operators/enlist.h"
#include "operators/ravel.h"
#include "operators/reverse.h"
#include "operators/slices.h"
#include "operators/transpose.h"
#include "spaces/making.h"
#include "structure_cases.h"

using namespace morvik;

namespace {

using namespace structured;

// ---- REVERSE, MIRROR, TRANSPOSE.

TEST_F(StructureCases, WhatCannotBeTurnedStays) {
  for (int (*const run)(Point &) : {reverse, mirror, transpose, enlist})
    for (const Point &data : {scalar(whole(1)), scalar(octonion({1})), empty(), array({}, {2, 0}), numbers({5}),
                              function({numbers({1})}, 1), operation(instructions::MARK, "MARK")}) {
      Point &p = hold(data);
      const std::string was = textof(p);
      EXPECT_EQ(run(p), 0);
      EXPECT_EQ(textof(p), was);
      EXPECT_EQ(p.type, data.type);
    }
  expectexact();
}

TEST_F(StructureCases, AddressesAreNotRead) {
  Point bound{};
  makeinteger(bound, 5);
  for (const std::int32_t rank : {ranks::ADDRESS, ranks::LOCAL_ADDRESS}) {
    Point address{};
    address.rank = rank;
    address.type = ISADDRESS;
    address.elements = 70000;
    EXPECT_EQ(transpose(address), 0);  // without a value
    address.target = &bound;
    EXPECT_EQ(transpose(address), 159);
    EXPECT_EQ(reverse(address), 0);
    EXPECT_EQ(mirror(address), 0);
    EXPECT_EQ(enlist(address), 0);
    EXPECT_EQ(first(address), 0);
    EXPECT_EQ(firstelement(address), 0);
    EXPECT_EQ(disclose(address), 0);
    ravel(address);
    EXPECT_EQ(address.rank, rank);
    EXPECT_EQ(address.target, &bound);
  }
  hold(bound);
}

TEST_F(StructureCases, TransposeOfUpToEightAxes) {
  Elements elements;
  for (int i = 0; i < 256; ++i) elements.push_back(whole(i));
  const Point &p = made(transpose, array(elements, Extents(8, 2)));
  for (std::uint32_t i = 0; i < 256; ++i) {
    std::uint32_t turned = 0;
    for (std::uint32_t bit = 0; bit < 8; ++bit) turned |= ((i >> bit) & 1) << (7 - bit);
    EXPECT_EQ(p.data_pointer[i].integer, turned);
  }
  Point &q = hold(array({whole(1), whole(2)}, {1, 1, 1, 1, 1, 1, 1, 1, 2}));
  EXPECT_EQ(transpose(q), 970);
  EXPECT_EQ(shapeof(q).back(), 2);
  Point &r = hold(array({}, {1, 1, 1, 1, 1, 1, 1, 1, 0}));
  EXPECT_EQ(transpose(r), 0);
  expectexact();
}

// A block that nobody else sees is turned where it is.
TEST_F(StructureCases, TurnedInPlace) {
  for (int (*const run)(Point &) : {reverse, mirror}) {
    Point data = vector({octonion({1}), enclosed(text("ab")), whole(3)});
    const Element *block = data.data_pointer;
    const Octonion *octonion = block->octonion;
    const Point &p = made(run, data);
    EXPECT_EQ(p.data_pointer, block);
    EXPECT_EQ(block[2].octonion, octonion);
    expectexact();
  }
}

// ---- CATENATE.

TEST_F(StructureCases, NothingCatenated) {
  EXPECT_EQ(textof(joined(catenate, empty(), numbers({1, 2}, {2, 1}))), textof(hold(numbers({1, 2}, {2, 1}))));
  EXPECT_EQ(textof(joined(catenate, numbers({1, 2}, {2, 1}), empty())), textof(hold(numbers({1, 2}, {2, 1}))));
  EXPECT_EQ(joined(catenate, empty(), scalar(whole(1))).rank, 0);
  EXPECT_EQ(joined(catenate, function({}, 1), empty()).rank, ranks::FUNCTION);
  EXPECT_EQ(joined(catenate, empty(), function({}, 1)).rank, ranks::FUNCTION);
  expectempty(joined(catenate, array({}, {3, 0}), empty()), 1, EMPTY_VECTOR);
  expectexact();
}

TEST_F(StructureCases, CatenateFindsTheKinds) {
  EXPECT_EQ(joined(catenate, scalar(whole(1)), scalar(whole(2))).type, ISVECTOR | HASINTEGER);
  EXPECT_EQ(joined(catenate, numbers({1}), text("ab")).type, ISVECTOR | HASINTEGER | HASASCII | COMPLEXED);
  Point collected = numbers({1, 2});
  collected.type = ISVECTOR | 1;
  EXPECT_EQ(joined(catenate, collected, scalar(real(2.5))).type, ISVECTOR | HASINTEGER | HASREAL | COMPLEXED);
  const Point &p = joined(catenate, vector({enclosed(numbers({1}))}), scalar(octonion({1})));
  EXPECT_EQ(p.type, ISVECTOR | STRUCTURED | ISSTRUCTURE | HASOCTONION);
  EXPECT_EQ(p.depth, 2);
  EXPECT_EQ(joined(catenate, scalar(whole(1)), scalar(whole(2))).depth, 1);
  expectexact();
}

TEST_F(StructureCases, AnAtomIsOneMember) {
  Point atom = text("abc");
  enclose(atom, true);
  const Point &p = joined(catenate, atom, scalar(whole(5)));
  EXPECT_EQ(p.type, ISVECTOR | STRUCTURED | ISSTRUCTURE | HASINTEGER);
  EXPECT_EQ(p.elements, 2u);
  EXPECT_EQ(p.depth, 2);
  EXPECT_EQ(p.data_pointer->tag, tags::SUBARRAY);
  expectexact();
}

TEST_F(StructureCases, SymbolicPointsAreWholeInTheirRecords) {
  for (const bool left : {false, true})
    for (const bool shared : {false, true}) {
      Point f = function({numbers({1})}, 1, 0, "f"), data = vector({octonion({1}), whole(2)});
      if (shared) holdcopy(f), holdcopy(data);
      const Point &p = left ? joined(catenate, f, data) : joined(catenate, data, f);
      EXPECT_EQ(p.elements, 3u);
      EXPECT_EQ(p.data_pointer[left ? 0 : 2].tag, ranks::FUNCTION);
      EXPECT_NE(p.type & STRUCTURED, 0u);
      expectexact();
    }
  EXPECT_EQ(textsof(joined(catenate, variable("x", 0), function({}, 1, 0, "f"))), (Texts{"-4:x", "-5:f"}));
  expectfault(994, catenate, operation(instructions::MARK, "MARK"), numbers({1}));
  expectfault(994, catenate, numbers({1}), operation(instructions::MARK, "MARK"));
}

// ---- COMPRESS.

TEST_F(StructureCases, AMaskOfOneElementKeepsAllOrNothing) {
  for (int (*const run)(Point &, Point &) : {compress, compresslastaxis}) {
    const Point data = numbers({1, 2, 3, 4}, {2, 2});
    EXPECT_EQ(textof(joined(run, scalar(whole(2)), data)), textof(data));
    for (const std::int64_t no : {std::int64_t{0}, std::int64_t{-1}}) {
      expectempty(joined(run, scalar(whole(no)), numbers({1, 2, 3, 4}, {2, 2})), 1, EMPTY_VECTOR);
      expectempty(joined(run, numbers({no}), scalar(whole(4))), 1, EMPTY_VECTOR);
      expectempty(joined(run, numbers({no}, {1, 1}), function({}, 1)), 1, EMPTY_VECTOR);
    }
    EXPECT_EQ(joined(run, numbers({1}), scalar(whole(4))).rank, 0);
    EXPECT_EQ(joined(run, numbers({1}), function({}, 1)).rank, ranks::FUNCTION);
    expectempty(joined(run, scalar(whole(1)), empty()), 1, EMPTY_VECTOR);
  }
  expectexact();
}

TEST_F(StructureCases, WhatIsNoMask) {
  for (int (*const run)(Point &, Point &) : {compress, compresslastaxis}) {
    expectfault(4, run, vector({real(1), real(0)}), numbers({1, 2}));
    expectfault(4, run, vector({whole(1), real(0)}), numbers({1, 2}));
    expectfault(4, run, text("ab"), numbers({1, 2}));
    expectfault(4, run, scalar(real(1)), numbers({1, 2}));
    expectfault(4, run, vector({whole(1), enclosed(numbers({1}))}), numbers({1, 2}));
    expectfault(4, run, empty(), numbers({1, 2}));
    expectfault(4, run, function({}, 1), numbers({1, 2}));
    expectfault(4, run, operation(instructions::MARK, "MARK"), numbers({1, 2}));
    expectfault(4, run, numbers({1, 0, 1, 0}, {2, 2}), numbers({1, 2}));
    Point lies = vector({whole(1), real(2)});
    lies.type = ISVECTOR | HASINTEGER;
    expectfault(4, run, lies, numbers({1, 2}));
  }
}

TEST_F(StructureCases, AMaskOfAnotherLength) {
  for (int (*const run)(Point &, Point &) : {compress, compresslastaxis}) {
    expectfault(31, run, numbers({1, 0}), numbers({1, 2, 3}));
    expectfault(31, run, numbers({1, 0}), scalar(whole(1)));
    expectfault(31, run, numbers({1, 0}), empty());
    expectfault(31, run, numbers({1, 0}), function({}, 1));
  }
  expectfault(31, compress, numbers({1, 0}), numbers({1, 2, 3, 4, 5, 6}, {3, 2}));
  expectfault(31, compresslastaxis, numbers({1, 0, 1}), numbers({1, 2, 3, 4, 5, 6}, {3, 2}));
}

TEST_F(StructureCases, TheTwoAxes) {
  const Point matrix = numbers({1, 2, 3, 4, 5, 6}, {3, 2});
  holdcopy(matrix);
  const Point &p = joined(compress, numbers({1, 0, 1}), matrix);
  EXPECT_EQ(shapeof(p), (Extents{2, 2}));
  EXPECT_EQ(textsof(p), (Texts{"4:1", "4:3", "4:4", "4:6"}));
  const Point &q = joined(compresslastaxis, numbers({0, 1}), numbers({1, 2, 3, 4, 5, 6}, {3, 2}));
  EXPECT_EQ(shapeof(q), (Extents{3, 1}));
  EXPECT_EQ(textsof(q), (Texts{"4:4", "4:5", "4:6"}));
  const Point &r = joined(compress, numbers({0, 0, 0}), numbers({1, 2, 3, 4, 5, 6}, {3, 2}));
  expectempty(r, 2, ISARRAY | ISEMPTY);
  EXPECT_EQ(shapeof(r), (Extents{0, 2}));
  const Point &s = joined(compress, numbers({1, 0, 1}), array({}, {3, 0}));
  expectempty(s, 2, ISARRAY | ISEMPTY);
  EXPECT_EQ(shapeof(s), (Extents{2, 0}));
  const Point &t = joined(compress, numbers({0, 1}), vector({character('a'), whole(1)}));
  EXPECT_EQ(t.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  expectempty(joined(compress, numbers({0, 0}), text("ab")), 1, EMPTY_VECTOR);
  expectexact();
}

// ---- REPLICATE.

TEST_F(StructureCases, ReplicateAddsAnAxis) {
  EXPECT_EQ(replicated(scalar(whole(3)), scalar(whole(7))), 0);
  EXPECT_EQ(shapeof(held.back()), Extents{3});
  EXPECT_EQ(replicated(scalar(whole(2)), numbers({1, 2, 3})), 0);
  EXPECT_EQ(shapeof(held.back()), (Extents{3, 2}));
  EXPECT_EQ(held.back().type, ISARRAY | HASINTEGER);
  EXPECT_EQ(replicated(scalar(whole(1)), numbers({1, 2, 3})), 0);
  EXPECT_EQ(shapeof(held.back()), (Extents{3, 1}));
  EXPECT_EQ(replicated(vector({real(2)}), text("ab")), 0);
  EXPECT_EQ(shapeof(held.back()), (Extents{2, 2}));
  // Kept: the first of several counts.
  EXPECT_EQ(replicated(numbers({2, 9}), numbers({1, 2, 3})), 0);
  EXPECT_EQ(shapeof(held.back()), (Extents{3, 2}));
  EXPECT_EQ(replicated(scalar(whole(2)), empty()), 0);
  expectempty(held.back(), 2, ISARRAY | ISEMPTY);
  EXPECT_EQ(shapeof(held.back()), (Extents{0, 2}));
  expectexact();
}

TEST_F(StructureCases, ReplicateByNothing) {
  for (Point (*const count)() :
       {+[] { return scalar(whole(0)); }, +[] { return scalar(real(0)); }, +[] { return numbers({0}); }})
    for (Point (*const data)() : {+[] {
                                    return numbers({1, 2, 3}, {3, 1});
                                  },
                                  +[] { return scalar(octonion({1})); }, +[] { return function({}, 1); }}) {
      EXPECT_EQ(replicated(count(), data()), 0);
      expectempty(held.back(), 1, EMPTY_VECTOR);
      expectexact();
    }
}

TEST_F(StructureCases, WhatIsNoCount) {
  for (const Point &count :
       {text("ab"), vector({real(1), real(2)}), empty(), function({}, 1), operation(instructions::MARK, "MARK")}) {
    EXPECT_EQ(replicated(count, numbers({1, 2})), 994);
    EXPECT_EQ(said, "");
  }
  expectexact();
  const auto reported = [&](int number, const Point &count, const Point &data) {
    EXPECT_EQ(replicated(count, data), ALREADY_REPORTED);
    EXPECT_EQ(said.find("\n" + std::to_string(number) + " - "), 0u) << said;
    EXPECT_NE(said.find("REPLICATE"), std::string::npos);
    EXPECT_EQ(textsof(held.back()), textsof(data));
  };
  reported(113, scalar(real(2.5)), numbers({1, 2}));
  reported(113, scalar(whole(-1)), numbers({1, 2}));
  reported(1102, scalar(character('a')), numbers({1, 2}));
  reported(1101, vector({enclosed(numbers({1}))}), numbers({1, 2}));
  reported(1100, scalar(whole(std::int64_t{1} << 31)), numbers({1, 2}));
  reported(1100, scalar(whole(INT64_MAX)), scalar(whole(2)));
  reported(994, scalar(whole(2)), symbol(ranks::ADDRESS, ISADDRESS, "name"));
  expectexact();
}

// ---- ENLIST.

TEST_F(StructureCases, EnlistGathersTheLeaves) {
  const Point &p = made(enlist, vector({whole(1), enclosed(vector({enclosed(text("ab")), real(2.5)})), whole(3)}));
  EXPECT_EQ(p.type, ISVECTOR | HASINTEGER | HASASCII | HASREAL | COMPLEXED);
  EXPECT_EQ(textsof(p), (Texts{"4:1", "2:a", "2:b", textof(real(2.5)), "4:3"}));
  EXPECT_EQ(p.depth, 1);
  const Point &one = made(enlist, vector({enclosed(vector({enclosed(numbers({7}))}))}));
  EXPECT_EQ(one.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  expectempty(made(enlist, vector({enclosed(empty()), enclosed(vector({enclosed(empty())}))})), 1, EMPTY_VECTOR);
  const Point &q =
      made(enlist, vector({enclosed(function({numbers({1})}, 1, 0, "f")), enclosed(scalar(octonion({1})))}));
  EXPECT_EQ(textsof(q).front(), "-5:f");
  EXPECT_TRUE(mayown(q));
  expectexact();
}

TEST_F(StructureCases, EnlistOfAPlainSpaceDoesNothing) {
  for (const Point &data : {numbers({1, 2}, {1, 2}), scalar(whole(1)), empty(), vector({octonion({1}), whole(1)})}) {
    Point &p = hold(data);
    EXPECT_EQ(enlist(p), 0);
    EXPECT_EQ(std::memcmp(&p, &data, sizeof p), 0);
  }
  Point &p = hold(vector({enclosed(operation(instructions::MARK, "MARK"))}));
  EXPECT_EQ(enlist(p), 994);
  expectexact();
}

// Deeper than the process stack would bear.
TEST_F(StructureCases, EnlistOfADeepValue) {
  Point deep = numbers({1});
  constexpr int LEVELS = 100000;
  for (int i = 0; i < LEVELS; ++i) {
    Point level = vector({whole(i), enclosed(deep)});
    level.depth = 2;
    deep = level;
  }
  const Point &p = made(enlist, deep);
  EXPECT_EQ(p.elements, LEVELS + 1u);
  EXPECT_EQ(p.data_pointer[LEVELS].integer, 1);
  EXPECT_EQ(p.data_pointer[0].integer, LEVELS - 1);
  expectexact();
}

TEST_F(StructureCases, AnUnknownTag) {
  for (int (*const run)(Point &) : {reverse, mirror, transpose, first, firstelement, rest, restelements, enlist}) {
    Point data = array({enclosed(numbers({1})), record(9, 0)}, {2, 1});
    Point &p = hold(data);
    EXPECT_EQ(run(p), 994);
    EXPECT_EQ(p.data_pointer, data.data_pointer);
    p.data_pointer[1].tag = tags::FILLER;
  }
}

}  // namespace
