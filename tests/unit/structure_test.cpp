// RAVEL, SHAPE, ENCLOSE, DISCLOSE, FIRST and REST case by case: flag words, depths, messages, and what is never
// touched.
#include "operators/catenate.h"
#include "operators/enclose.h"
#include "operators/ravel.h"
#include "operators/slices.h"
#include "structure_cases.h"

using namespace morvik;

namespace {

using namespace structured;

// ---- RAVEL and SHAPE.

TEST_F(StructureCases, RavelOfAScalarIsAOneElementVector) {
  Point &p = hold(scalar(real(2.5)));
  const Element *block = p.data_pointer;
  ravel(p);
  EXPECT_EQ(p.type, ISVECTOR | ISONEELEMENT | HASREAL);
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(p.data_pointer, block);
  EXPECT_EQ(shapeof(p), Extents{1});
  Point &q = hold(scalar(octonion({1})));
  ravel(q);
  EXPECT_EQ(q.type, ISVECTOR | ISONEELEMENT | HASOCTONION);
  expectexact();
}

TEST_F(StructureCases, RavelTouchesNoRecord) {
  for (const bool shared : {false, true}) {
    Point data = numbers({1, 2, 3, 4, 5, 6}, {3, 2});
    if (shared) holdcopy(data);
    Point &p = hold(data);
    ravel(p);
    EXPECT_EQ(p.data_pointer, data.data_pointer);
    EXPECT_EQ(p.type, ISVECTOR | HASINTEGER);
    EXPECT_EQ(shapeof(p), Extents{6});
    EXPECT_TRUE(!shared || shapeof(held[held.size() - 2]) == (Extents{3, 2}));
    expectexact();
  }
  Point vector = text("abc");
  Point &q = hold(vector);
  ravel(q);
  EXPECT_EQ(std::memcmp(&q, &vector, sizeof q), 0);
}

// Kept: a single element is marked so and not as a vector.
TEST_F(StructureCases, RavelOfAOneElementArray) {
  Point &p = hold(numbers({7}, {1, 1, 1}));
  ravel(p);
  EXPECT_EQ(p.type, ISONEELEMENT | HASINTEGER);
  EXPECT_EQ(p.rank, 1);
  Point nothing = empty();
  Point &q = hold(array({}, {3, 0}));
  ravel(q);
  EXPECT_EQ(q.type, ISVECTOR | ISEMPTY);
  EXPECT_EQ(shapeof(q), Extents{0});
  drop(nothing);
  expectexact();
}

TEST_F(StructureCases, AScalarsNameGoesWithItIntoAVector) {
  Point data = scalar(named(whole(1), "n"));
  holdcopy(data);
  Point &p = hold(data);
  ravel(p);
  EXPECT_STREQ(p.data_pointer->name, "n");
  EXPECT_LT(referencecount(p.data_pointer->name), 0);
  expectexact();
  const Point &q = joined(catenate, scalar(named(whole(1), "n")), scalar(named(real(2), "m")));
  EXPECT_STREQ(q.data_pointer[1].name, "m");
  expectexact();
}

TEST_F(StructureCases, ShapeHandsTheExtentsOver) {
  Point data = numbers({1, 2, 3, 4, 5, 6}, {3, 2});
  const Element *block = data.shape_pointer;
  Point &p = hold(data);
  extents(p);
  EXPECT_EQ(p.data_pointer, block);
  EXPECT_EQ(p.type, 0x40400u);
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(shapeof(p), Extents{2});
  EXPECT_EQ(textsof(p), (Texts{"4:3", "4:2"}));
  Point &q = hold(vector({octonion({1}), enclosed(text("abc"))}));
  extents(q);
  EXPECT_EQ(q.type, 0x60400u);
  EXPECT_EQ(textsof(q), Texts{"4:2"});
  Point &r = hold(array({}, {0, 5}));
  extents(r);
  EXPECT_EQ(textsof(r), (Texts{"4:0", "4:5"}));
  expectexact();
}

TEST_F(StructureCases, AScalarHasNoExtents) {
  for (const Point &data : {scalar(whole(5)), scalar(octonion({5})), function({numbers({1})}, 1), variable("x", 0),
                            operation(instructions::MARK, "MARK"), local(ranks::LOCAL_ADDRESS, 3)}) {
    Point &p = hold(data);
    extents(p);
    expectempty(p, 1, ISEMPTY);
    EXPECT_EQ(p.depth, 1);
    EXPECT_EQ(shapeof(p), Extents{0});
  }
  expectexact();
}

TEST_F(StructureCases, ShapeOfAnAddressIsItsName) {
  for (const std::uint32_t type : {ISADDRESS, ISADDRESS | ISOPERATOR}) {
    Point &p = hold(symbol(ranks::ADDRESS, type, "name"));
    extents(p);
    EXPECT_EQ(p.type, ISVECTOR | HASASCII);
    EXPECT_EQ(p.elements, 4u);
    EXPECT_EQ(shapeof(p), Extents{4});
    EXPECT_EQ(textsof(p), (Texts{"2:n", "2:a", "2:m", "2:e"}));
    Point &q = hold(symbol(ranks::ADDRESS, type, "n"));
    extents(q);
    EXPECT_EQ(q.type, ISVECTOR | ISONEELEMENT | HASASCII);
  }
  // The address of a slot has no name, and its target is none of its own.
  Point slot{};
  slot.rank = ranks::ADDRESS;
  slot.type = ISLOCAL | ISADDRESS;
  slot.elements = 1;
  slot.target = &slot;
  extents(slot);
  expectempty(slot, 1, ISEMPTY);
  drop(slot);
  expectexact();
}

// ---- ENCLOSE and DISCLOSE.

TEST_F(StructureCases, Enclose) {
  Point data = numbers({1, 2});
  data.depth = 3;
  Point &p = hold(data);
  enclose(p, false);
  EXPECT_EQ(p.type, 0x160080u);
  EXPECT_EQ(p.depth, 4);
  EXPECT_EQ(shapeof(p), Extents{1});
  EXPECT_EQ(p.data_pointer->tag, tags::SUBARRAY);
  Point &atom = hold(text("abc"));
  enclose(atom, true);
  EXPECT_EQ(atom.type, 0x110080u);
  EXPECT_EQ(atom.rank, 1);
  EXPECT_EQ(atom.elements, 1u);
  EXPECT_EQ(atom.depth, 1);
  Point &plain = hold(scalar(whole(1)));
  enclose(plain, false);
  EXPECT_EQ(plain.type, ISSCALAR | HASINTEGER);
  enclose(plain, true);
  EXPECT_EQ(plain.type, 0x110080u);
  expectexact();
}

TEST_F(StructureCases, EncloseStopsCountingAtTheLargestDepth) {
  Point &p = hold(numbers({1}));
  p.depth = INT16_MAX;
  enclose(p, false);
  EXPECT_EQ(p.depth, INT16_MAX);
}

TEST_F(StructureCases, SymbolicPointsCanBeEnclosed) {
  for (const Point &data : {function({numbers({1})}, 2), operation(instructions::MARK, "MARK"), variable("x", 0)}) {
    Point &p = hold(data);
    const std::string was = textof(p);
    enclose(p, false);
    EXPECT_EQ(p.depth, 1);
    EXPECT_EQ(disclose(p), 0);
    EXPECT_EQ(textof(p), was);
    EXPECT_EQ(p.rank, data.rank);
  }
  expectexact();
}

TEST_F(StructureCases, Disclose) {
  Point several = vector({whole(1), enclosed(numbers({2}))});
  const std::string was = textof(several);
  Point &p = hold(several);
  EXPECT_EQ(disclose(p), 973);
  EXPECT_EQ(textof(p), was);
  p.type = ISVECTOR | 2;  // collected
  EXPECT_EQ(disclose(p), 973);
  EXPECT_EQ(textof(p), was);
  for (const Point &data : {numbers({1, 2}), scalar(whole(1)), empty(), function({}, 1), vector({octonion({1})})}) {
    Point &q = hold(data);
    const std::string before = textof(q);
    EXPECT_EQ(disclose(q), 0);
    EXPECT_EQ(textof(q), before);
  }
  // A function that is whole in its record.
  Point &f = hold(vector({std::bit_cast<Element>(function({numbers({1})}, 1, 0, "f"))}));
  f.type |= STRUCTURED;
  EXPECT_EQ(disclose(f), 0);
  EXPECT_EQ(f.rank, ranks::FUNCTION);
  expectexact();
}

// However much hangs below, it is neither walked nor counted anew.
TEST_F(StructureCases, DiscloseOfASharedValue) {
  Point &p = hold(vector({octonion({1}), enclosed(text("xy"))}));
  enclose(p, false);
  enclose(p, false);
  holdcopy(p);
  EXPECT_EQ(disclose(p), 0);
  expectexact();
  EXPECT_EQ(disclose(p), 0);
  EXPECT_EQ(p.elements, 2u);
  expectexact();
}

// ---- FIRST and REST.

TEST_F(StructureCases, FirstOfAVectorIsAScalar) {
  const Point &p = made(first, numbers({7, 8}));
  EXPECT_EQ(p.rank, 0);
  EXPECT_EQ(p.type, ISSCALAR | HASINTEGER);
  EXPECT_EQ(p.depth, 0);
  const Point &enclosing = made(first, vector({enclosed(text("ab")), whole(1)}));
  EXPECT_EQ(enclosing.type, ISVECTOR | ISONEELEMENT | STRUCTURED | ISSTRUCTURE);
  EXPECT_EQ(enclosing.depth, 2);
  EXPECT_EQ(shapeof(enclosing), Extents{1});
  EXPECT_EQ(made(first, scalar(whole(3))).type, ISSCALAR | HASINTEGER);
  expectempty(made(first, empty()), 1, EMPTY_VECTOR);
  EXPECT_EQ(made(first, function({}, 1)).rank, ranks::FUNCTION);
  expectexact();
}

TEST_F(StructureCases, FirstElement) {
  const Point &p = made(firstelement, numbers({7, 8, 9, 10}, {2, 2}));
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(shapeof(p), Extents{1});
  EXPECT_EQ(p.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  EXPECT_EQ(textsof(p), Texts{"4:7"});
  Point mixed = vector({octonion({1}), whole(2), enclosed(numbers({1}))});
  holdcopy(mixed);
  const Point &q = made(firstelement, mixed);
  EXPECT_EQ(q.type, ISVECTOR | ISONEELEMENT | HASOCTONION);
  EXPECT_EQ(textof(made(firstelement, array({enclosed(text("ab")), whole(1)}, {1, 2}))), textof(hold(text("ab"))));
  EXPECT_EQ(made(firstelement, scalar(whole(3))).rank, 0);
  expectempty(made(firstelement, empty()), 1, EMPTY_VECTOR);
  expectexact();
}

TEST_F(StructureCases, FirstGathersTheKindsAndTheDepthAgain) {
  Point deep = numbers({1, 2});
  deep.depth = 5;
  const Elements elements = {whole(1), enclosed(deep), real(2), character('a')};
  const Point &p = made(first, array(elements, {2, 2}));
  EXPECT_EQ(p.type, ISVECTOR | HASINTEGER | STRUCTURED | ISSTRUCTURE);
  EXPECT_EQ(p.depth, 6);
  const Point &q = made(first, array({whole(1), whole(2), real(2), character('a')}, {2, 2}));
  EXPECT_EQ(q.type, ISVECTOR | HASINTEGER);
  const Point &r = made(first, array({whole(1), character('a')}, {1, 2}));
  EXPECT_EQ(r.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  expectexact();
}

TEST_F(StructureCases, RestOfOneElementIsEmptyAndNoMore) {
  for (int (*const run)(Point &) : {rest, restelements}) {
    Point one = numbers({7});
    one.word = {1, 2};
    const Point &p = made(run, one);
    expectempty(p, 1, ISEMPTY);
    EXPECT_EQ(p.depth, 0);
    EXPECT_EQ(p.link, nullptr);
    EXPECT_EQ(shapeof(p), Extents{0});
    expectempty(made(run, vector({character('a')})), 1, ISEMPTY | HASASCII);
    expectempty(made(run, scalar(character('a'))), 1, ISEMPTY | HASASCII);
    expectempty(made(run, scalar(octonion({1}))), 1, ISEMPTY);
    expectempty(made(run, empty()), 1, ISEMPTY);
    expectempty(made(run, vector({enclosed(numbers({1}))})), 1, ISEMPTY);
  }
  const Point &p = made(rest, numbers({7}, {1, 1, 1}));
  expectempty(p, 3, ISEMPTY);
  EXPECT_EQ(shapeof(p), (Extents{0, 0, 0}));
  expectempty(made(restelements, numbers({7}, {1, 1, 1})), 1, ISEMPTY);
  const Point &q = made(rest, numbers({1, 2, 3}, {3, 1}));
  expectempty(q, 2, ISEMPTY);
  EXPECT_EQ(shapeof(q), (Extents{3, 0}));
  expectexact();
}

// A shape that somebody else holds stays as it is.
TEST_F(StructureCases, RestLeavesASharedShapeAlone) {
  const Point data = numbers({7});
  const Point &other = holdcopy(data);
  made(rest, data);
  EXPECT_EQ(shapeof(other), Extents{1});
  expectexact();
}

TEST_F(StructureCases, RestFindsTheKindsThatAreLeft) {
  const Point &p = made(rest, vector({character('a'), whole(1), whole(2)}));
  EXPECT_EQ(p.type, ISVECTOR | HASINTEGER);
  const Point &q = made(rest, vector({enclosed(numbers({1})), whole(2)}));
  EXPECT_EQ(q.type, ISVECTOR | ISONEELEMENT | HASINTEGER);
  EXPECT_EQ(q.depth, 1);
  expectexact();
}

TEST_F(StructureCases, RestOfASymbolicPoint) {
  for (int (*const run)(Point &) : {rest, restelements}) {
    Point &p = hold(function({}, 1));
    EXPECT_EQ(run(p), 994);
    EXPECT_EQ(p.rank, ranks::FUNCTION);
  }
}

}  // namespace
