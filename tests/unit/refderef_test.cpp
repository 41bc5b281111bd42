// Lifetimes: after whatever was done to whole values, every count is the number of owners of its block.
#include "spaces/refderef.h"

#include <gtest/gtest.h>
#include <pthread.h>

#include <bit>
#include <deque>

#include "failure/jump.h"
#include "frontend/contexts.h"
#include "frontend/symtab.h"
#include "recount.h"
#include "spaces/copies.h"
#include "spaces/making.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace {

using namespace points;

Point nested() {
  return vector({enclosed(vector({octonion({1, 2}), whole(3)})), enclosed(text("abc")), octonion({4})});
}

// ---- Spaces.

TEST_F(Lifetimes, NullDoesNothing) {
  referencepoint(nullptr);
  dereferencepoint(nullptr);
}

TEST_F(Lifetimes, APlainSpaceIsTwoBlocks) {
  Point &p = hold(vector({whole(1), real(2)}));
  Point &q = holdcopy(p);
  EXPECT_EQ(referencecount(p.data_pointer), 2);
  EXPECT_EQ(referencecount(p.shape_pointer), 2);
  dereferencepoint(&q);
  EXPECT_EQ(q.data_pointer, nullptr);
  EXPECT_EQ(q.shape_pointer, nullptr);
  EXPECT_EQ(referencecount(p.data_pointer), 1);
  expectexact();
}

TEST_F(Lifetimes, AnEmptyVectorIsItsShape) {
  Point p;
  makeempty(p);
  EXPECT_EQ(liveblocks(), before + 1);
  EXPECT_EQ(p.type, 0x240000u);
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.elements, 0u);
  EXPECT_EQ(p.shape_pointer->integer, 0);
  EXPECT_EQ(referencecount(p.data_pointer), -777);
  referencepoint(&p);
  EXPECT_EQ(referencecount(p.shape_pointer), 2);
  Point other = p;
  dereferencepoint(&other);
  dereferencepoint(&p);
}

TEST_F(Lifetimes, Scalars) {
  Point p, r;
  makeinteger(p, -12);
  EXPECT_EQ(p.type, 0x10400u);
  EXPECT_EQ(p.rank, 0);
  EXPECT_EQ(p.elements, 1u);
  EXPECT_EQ(p.shape_pointer, nullptr);
  EXPECT_EQ(p.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(p.data_pointer->form, forms::NUMBER);
  EXPECT_EQ(p.data_pointer->integer, -12);
  makereal(r, 2.5, forms::COMPUTED);
  EXPECT_EQ(r.type, 0x10800u);
  EXPECT_EQ(r.data_pointer->form, forms::COMPUTED);
  EXPECT_EQ(r.data_pointer->real, 2.5);
  hold(p);
  hold(r);
  expectexact();
}

TEST_F(Lifetimes, APermanentBlockSurvives) {
  Point p;
  makeinteger(p, 7);
  *refer(p.data_pointer) = -1;
  for (int i = 0; i < 100; ++i) {
    Point copy = p;
    dereferencepoint(&copy);
    referencepoint(&p);
  }
  EXPECT_EQ(referencecount(p.data_pointer), -1);
  EXPECT_EQ(p.data_pointer->integer, 7);
  *refer(p.data_pointer) = 1;
  dereferencepoint(&p);
}

TEST_F(Lifetimes, OnlyTheTopIsRaised) {
  Point &p = hold(nested());
  const Element *inner = p.data_pointer[0].subarray->data_pointer;
  holdcopy(p);
  holdcopy(p);
  expectexact();
  EXPECT_EQ(referencecount(p.data_pointer), 3);
  EXPECT_EQ(referencecount(p.shape_pointer), 3);
  EXPECT_EQ(referencecount(p.data_pointer[0].subarray), 1);
  EXPECT_EQ(referencecount(inner), 1);
  EXPECT_EQ(referencecount(inner[0].octonion), 1);
  EXPECT_EQ(referencecount(p.data_pointer[2].octonion), 1);
  dereferencepoint(&held[1]);
  dereferencepoint(&held[2]);
  EXPECT_EQ(referencecount(p.data_pointer), 1);
  expectexact();
}

// A member lives on with whoever took it out.
TEST_F(Lifetimes, AMemberOutlivesWhatEnclosedIt) {
  Point outer = nested();
  Point &member = holdcopy(*outer.data_pointer[0].subarray);
  EXPECT_EQ(referencecount(member.data_pointer), 2);
  dereferencepoint(&outer);
  EXPECT_EQ(referencecount(member.data_pointer), 1);
  EXPECT_EQ(member.data_pointer[1].integer, 3);
  expectexact();
}

// Many are released as few are: each once, to the last.
TEST_F(Lifetimes, ManyMembers) {
  for (const std::size_t count : {1U, 7U, 8U, 9U, 1999U, 2000U, 2001U, 5000U}) {
    std::vector<Element> members;
    for (std::size_t i = 0; i < count; ++i)
      members.push_back(i % 2 == 0 ? enclosed(nested()) : octonion({1, static_cast<double>(i)}));
    Point outer = vector(members);
    Point &last = holdcopy(*outer.data_pointer[(count - 1) / 2 * 2].subarray);
    dereferencepoint(&outer);
    EXPECT_EQ(referencecount(last.data_pointer), 1) << count;
    expectexact();
    letgo();
    EXPECT_EQ(liveblocks(), before) << count;
  }
}

// The flag word of a scalar is not asked.
TEST_F(Lifetimes, AScalarGoesByItsRecord) {
  for (Point p : {scalar(octonion({1, 2, 3})), scalar(enclosed(nested())), scalar(named(whole(1), "x"))}) {
    p.type = ISSCALAR;
    hold(p);
    holdcopy(p);
  }
  expectexact();
}

TEST_F(Lifetimes, TheNameOfAScalarIsItsRecords) {
  Point &p = hold(scalar(named(real(3.14), "#CT")));
  const char *name = p.data_pointer->name;
  Point &q = holdcopy(p);
  EXPECT_EQ(referencecount(name), 1);
  dereferencepoint(&q);
  EXPECT_EQ(referencecount(name), 1);
  expectexact();
}

// The name word of a quaternion is its first part, whatever its attributes say.
TEST_F(Lifetimes, AQuaternionHasNoName) {
  Element e = quaternions(1, 2, 3, 4);
  e.attributes |= attributes::NAMED;
  Point &p = hold(scalar(e));
  Element copy;
  copyelement(copy, *p.data_pointer);
  EXPECT_EQ(copy.firstpart, 1.0);
  holdcopy(p);
  expectexact();
}

// A collected vector has no kind bits at all.
TEST_F(Lifetimes, AFlagWordWithoutKindsPromisesNothing) {
  Point p = nested();
  p.type = ISVECTOR | 3;
  hold(p);
  holdcopy(p);
  expectexact();
  p = vector({whole(1), whole(2)});
  p.type = ISVECTOR | 1;
  EXPECT_TRUE(mayown(p));
  hold(p);
  holdcopy(p);
  expectexact();
}

TEST_F(Lifetimes, WhatMayOwn) {
  Point p{};
  p.rank = 1;
  for (const std::uint32_t plain : {HASASCII, HASINTEGER, HASREAL | HASCOMPLEX | COMPLEXED, HASQUATERNION}) {
    p.type = ISVECTOR | plain;
    EXPECT_FALSE(mayown(p)) << plain;
    for (const std::uint32_t owner : {STRUCTURED, HASOCTONION, HASFILE, HASFUNCTION}) {
      p.type = ISVECTOR | plain | owner;
      EXPECT_TRUE(mayown(p)) << plain << ' ' << owner;
    }
  }
}

TEST_F(Lifetimes, RecordsOfEveryTag) {
  Point address = variable("x", 0);
  address.rank = ranks::ADDRESS;
  const Elements all = {enclosed(text("in")),
                        character('c'),
                        record(tags::UNICODE, 0),
                        whole(1),
                        real(2),
                        complex(1, 2),
                        quaternions(1, 2, 3, 4),
                        octonion({1}),
                        record(tags::FILLER, 0),
                        std::bit_cast<Element>(function({operation(instructions::ADD, "+")})),
                        std::bit_cast<Element>(address),
                        std::bit_cast<Element>(variable("y", 0)),
                        std::bit_cast<Element>(symbol(ranks::LABEL, ISADDRESS, "%l")),
                        std::bit_cast<Element>(local(ranks::LOCAL_VARIABLE, 0)),
                        std::bit_cast<Element>(local(ranks::LOCAL_ADDRESS, 1))};
  Point p = vector(all);
  p.type |= STRUCTURED;
  hold(p);
  holdcopy(p);
  holdcopy(p);
  expectexact();
  dereferencepoint(&held[1]);
  expectexact();
}

TEST_F(Lifetimes, ArraysOfRecords) {
  Point p = nested();
  referencedataelems(p.data_pointer, p.elements);
  EXPECT_EQ(referencecount(p.data_pointer), 1);
  EXPECT_EQ(referencecount(p.data_pointer[0].subarray), 2);
  EXPECT_EQ(referencecount(p.data_pointer[0].subarray->data_pointer[0].octonion), 1);
  dereferencedataelems(p.data_pointer, p.elements);
  hold(p);
  expectexact();
  referencedataelems(nullptr, 0);
  dereferencedataelems(nullptr, 0);
}

// No depth of a value costs process stack, whatever leads down: the first of two members, the second, a name that is
// bound, a function.
void *dropall(void *values) {
  for (Point &p : *static_cast<std::deque<Point> *>(values)) {
    Point copy = p;
    referencepoint(&copy);
    dereferencepoint(&copy);
    dereferencepoint(&p);
  }
  return nullptr;
}

Point boundto(const Point &value) {
  Point name = variable("n", instructions::SGIG);
  name.target = newpoint();
  *name.target = value;
  return name;
}

TEST_F(Lifetimes, DeepValuesAreDroppedOnASmallStack) {
  constexpr int DEEP = 2000000;
  std::deque<Point> values = {vector({whole(1)}), vector({whole(1)}), boundto(vector({whole(1)})), function({})};
  for (int i = 0; i < DEEP; ++i) {
    values[0] = vector({enclosed(values[0]), whole(2)});
    values[1] = vector({whole(2), enclosed(values[1])});
  }
  for (int i = 0; i < DEEP / 10; ++i) {
    values[2] = boundto(values[2]);
    values[3] = function({values[3], vector({std::bit_cast<Element>(symbol(ranks::LABEL, ISADDRESS, "%l"))})});
  }
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 64 * 1024);
  pthread_t thread;
  ASSERT_EQ(pthread_create(&thread, &attributes, dropall, &values), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
}

// Where the user waits, a long release leaves its rest to the next one.
TEST_F(Lifetimes, ALongReleaseIsPutOff) {
  const auto deep = [] {
    Point p = vector({whole(1)});
    for (int i = 0; i < 20000; ++i) p = vector({enclosed(p)});
    return p;
  };
  Point first = deep(), second = deep();
  const std::int64_t both = liveblocks();
  releasestops = [] { return true; };
  dereferencepoint(&first);
  EXPECT_EQ(first.data_pointer, nullptr);
  const std::int64_t left = liveblocks();
  EXPECT_LT(left, both);
  EXPECT_GT(left, before + (both - before) / 2);
  releasestops = nullptr;
  dereferencepoint(&second);
  EXPECT_EQ(liveblocks(), before);
  second = deep();
  releasestops = [] { return true; };
  dereferencepoint(&second);
  EXPECT_GT(liveblocks(), before);
  finishreleases();
  EXPECT_EQ(liveblocks(), before);
  releasestops = nullptr;
}

// ---- An impossible tag.

TEST_F(Lifetimes, AnImpossibleTagIsReported) {
  for (const std::int32_t tag : {9, 0, 12, -6, -2, -10}) {
    Point p = vector({whole(1), record(tag, 0)});
    p.type |= STRUCTURED;
    referencepoint(&p);  // which looks at no record
    Point second = p;
    dereferencepoint(&second);
    testing::internal::CaptureStderr();
    EXPECT_EQ(landingof([&p] { referencedataelems(p.data_pointer, p.elements); }), -1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "\n991 - an impossible case occured -- something is not as it should be.\n"),
              std::string::npos);
    Point copy = p;
    testing::internal::CaptureStderr();
    EXPECT_EQ(landingof([&copy] { dereferencepoint(&copy); }), -1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("991"), std::string::npos);
    p.data_pointer[1].tag = tags::FILLER;
    *refer(p.shape_pointer) = *refer(p.data_pointer) = 1;
    hold(p);
  }
  stepping = 0;
}

// Under a flag word that promises plain records nothing is looked at.
TEST_F(Lifetimes, APlainSpaceIsNotWalked) {
  Point p = vector({whole(1), record(9, 0)});
  hold(p);
  EXPECT_EQ(landingof([&p] { referencepoint(&p); }), 0);
  held.push_back(p);
  expectexact();
}

// ---- Symbolic Points.

TEST_F(Lifetimes, ANameHoldsItsBinding) {
  Point *bound = newpoint();
  *bound = {};
  bound->rank = ranks::ADDRESS;
  Point p = variable("x", instructions::SGIG);
  p.target = bound;
  hold(p);
  holdcopy(p);
  EXPECT_EQ(referencecount(bound), 2);
  EXPECT_EQ(referencecount(p.name), 2);
  expectexact();
}

// What is in a binding that no table knows any longer goes with it.
TEST_F(Lifetimes, TheLastNameReleasesWhatIsBound) {
  Point *bound = newpoint();
  *bound = nested();
  Point p = variable("x", instructions::SGIG);
  p.target = bound;
  dereferencepoint(&p);
}

TEST_F(Lifetimes, TheAddressOfALocalOwnsNothing) {
  Point slot = vector({whole(1)});
  Point p{};
  p.rank = ranks::ADDRESS;
  p.type = ISLOCAL | ISADDRESS;
  p.elements = 1;
  p.target = &slot;
  for (int i = 0; i < 3; ++i) referencepoint(&p);
  for (int i = 0; i < 3; ++i) {
    Point copy = p;
    dereferencepoint(&copy);
  }
  Point collected = vector({std::bit_cast<Element>(p)});
  collected.type = ISVECTOR | 1;
  holdcopy(hold(collected));
  EXPECT_EQ(referencecount(slot.data_pointer), 1);
  hold(slot);
  expectexact();
}

TEST_F(Lifetimes, TheLinkIsCountedWithOrWithoutData) {
  Point p = variable("x", instructions::SAIG);
  p.link = newblock(sizeof(Context));
  hold(p);
  holdcopy(p);
  EXPECT_EQ(referencecount(p.link), 2);
  expectexact();
  Point &q = held[1];
  dereferencepoint(&q);
  EXPECT_EQ(q.link, nullptr);
  EXPECT_EQ(q.name, nullptr);
}

// ---- Functions.

TEST_F(Lifetimes, AFunctionRaisesItsProgrammeAlone) {
  Point &f = hold(function({scalar(octonion({1, 2})), nested(), function({vector({whole(1)})}, 1)}, 2));
  const Point *body = f.programme + 1;
  holdcopy(f);
  EXPECT_EQ(referencecount(f.programme), 2);
  EXPECT_EQ(referencecount(body[0].data_pointer), 1);
  expectexact();
  dereferencepoint(&held[1]);
  EXPECT_EQ(referencecount(f.programme), 1);
  expectexact();
  referencefun(&f);
  EXPECT_EQ(referencecount(f.programme), 2);
  Point g = f;
  dereferencefun(&g);
  EXPECT_EQ(g.programme, nullptr);
  EXPECT_EQ(referencecount(f.programme), 1);
  Point pushed = body[1];  // a literal that runs goes on living after its function
  referencepoint(&pushed);
  dereferencepoint(&f);
  EXPECT_EQ(referencecount(pushed.data_pointer), 1);
  hold(pushed);
  expectexact();
}

TEST_F(Lifetimes, TheLastReferenceToAProgrammeReleasesItAtOnce) {
  const std::int64_t alive = liveblocks();
  Point f = function({scalar(octonion({1, 2})), nested(), function({vector({whole(1)})}, 1)}, 2);
  EXPECT_GT(liveblocks(), alive);
  dereferencefun(&f);
  EXPECT_EQ(liveblocks(), alive);
}

TEST_F(Lifetimes, AFunctionInASpace) {
  Point f = function({vector({whole(1)})}, 0);
  Point p = vector({std::bit_cast<Element>(f), whole(2)});
  p.type |= HASFUNCTION;
  hold(p);
  holdcopy(p);
  EXPECT_EQ(referencecount(p.data_pointer), 2);
  EXPECT_EQ(referencecount(f.programme), 1);
  expectexact();
}

TEST_F(Lifetimes, ACopiedFunctionIsItsOwn) {
  Point f = function({nested(), scalar(octonion({3})), function({text("ab")})}, 1, 2, ":");
  Point *end = f.programme + f.elements;
  end->name = stringdup("the text of the function");
  f.programme->link = newblock(100);  // what was left off when it last yielded
  Point g = f;
  g.programme = copyfun(&f);
  reference(g.name);
  EXPECT_EQ(g.programme->programme, g.programme);
  EXPECT_EQ(g.programme->arguments, 1);
  EXPECT_EQ(g.programme->locals, 2);
  EXPECT_EQ(g.programme->link, nullptr);
  EXPECT_EQ(g.programme[g.elements].name, nullptr);
  EXPECT_EQ(g.programme[g.elements].type, 0u);
  for (std::uint32_t i = 1; i < f.elements; ++i) {
    EXPECT_EQ(g.programme[i].rank, f.programme[i].rank);
    EXPECT_EQ(g.programme[i].data_pointer, f.programme[i].data_pointer);
  }
  hold(f);
  hold(g);
  expectexact();
  dereferencepoint(&held[0]);
  expectexact();
}

// Its names live as long as the last body that was compiled with them.
TEST_F(Lifetimes, LocalNamesGoWithTheLastBody) {
  Entry *table = makesmallhashtab();
  Point f = function({vector({whole(1)})});
  Context *chain = makemeaning(table);
  Point &functionend = f.programme[f.elements - 1];
  ASSERT_EQ(functionend.instruction, instructions::FUNCTIONEND);
  attachlocalnames(functionend, chain);
  *smallhashtab(table, stringdup("x"))->meaning = nested();
  release(table);
  *refer(chain) = 1;
  release(chain);
  Point g = f;
  g.programme = copyfun(&f);
  dereferencepoint(&f);
  Entry *entry = checksmallhash(localnames(g.programme[g.elements - 1]), "x");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->meaning->elements, 3u);
  dereferencepoint(&g);
}

TEST_F(Lifetimes, CleanupEndsWhereItBegins) {
  Point programme[4] = {nested(), operation(instructions::ADD, "+"), function({text("xyz")}), {}};
  cleanup(programme);
  EXPECT_EQ(programme[0].type, 0u);
  EXPECT_EQ(liveblocks(), before);
  cleanup(programme);
}

// ---- Private copies.

TEST_F(Lifetimes, CopiedElements) {
  Point p = nested();
  Element *copy = copyelements(p.data_pointer, p.elements);
  EXPECT_EQ(referencecount(copy), 1);
  EXPECT_NE(copy[2].octonion, p.data_pointer[2].octonion);
  EXPECT_EQ(copy[2].octonion->part[0], 4);
  EXPECT_EQ(referencecount(copy[2].octonion), 1);
  EXPECT_EQ(copy[0].subarray, p.data_pointer[0].subarray);
  EXPECT_EQ(referencecount(copy[0].subarray), 2);
  Point q = p;
  q.data_pointer = copy;
  reference(q.shape_pointer);
  hold(p);
  hold(q);
  expectexact();
  EXPECT_EQ(copyelements(nullptr, 0), nullptr);
}

TEST_F(Lifetimes, ANameGoesAlongAsAPermanentOne) {
  Point &p = hold(scalar(named(whole(1), "#IO")));
  Element copy;
  copyelement(copy, *p.data_pointer);
  EXPECT_STREQ(copy.name, "#IO");
  EXPECT_NE(copy.name, p.data_pointer->name);
  EXPECT_EQ(copy.name, elementname("#IO"));
  Element *copies = copyelements(p.data_pointer, 1);
  EXPECT_EQ(copies->name, copy.name);
  release(copies);
  expectexact();
}

TEST_F(Lifetimes, MakePrivate) {
  Point &p = hold(nested());
  const Element *block = p.data_pointer;
  makeprivate(p);
  EXPECT_EQ(p.data_pointer, block);
  Point &q = holdcopy(p);
  makeprivate(q);
  EXPECT_NE(q.data_pointer, block);
  EXPECT_EQ(referencecount(q.data_pointer), 1);
  EXPECT_EQ(referencecount(p.data_pointer), 1);
  EXPECT_EQ(referencecount(q.data_pointer[2].octonion), 1);
  EXPECT_EQ(referencecount(q.data_pointer[1].subarray), 2);
  EXPECT_EQ(q.shape_pointer, p.shape_pointer);
  expectexact();
  Point &none = hold(empty());
  makeprivate(none);
  EXPECT_EQ(none.data_pointer, nullptr);
}

#ifdef MORVIK_CHECKING
// Whichever allocation fails, what is copied stays as it was, and nothing is left over.
TEST_F(Lifetimes, ACopyThatFailsLeavesEverythingWhole) {
  hold(vector({octonion({1}), octonion({2}), enclosed(text("abc")), octonion({3})}));
  holdcopy(held[0]);
  hold(function({nested()}));
  Point *const space = &held[1], *const fun = &held[2];
  Point made{};
  Point *const result = &made;
  const auto walk = [&](auto body) {
    return withoutstorage([] {}, body,
                          [&](bool failed) {
                            if (failed) expectexact();
                          });
  };
  EXPECT_EQ(walk([=] {
              result->data_pointer = newelements(1);
              result->elements = 0;
              release(result->data_pointer);
            }),
            1);
  EXPECT_EQ(walk([=] {
              result->rank = 1;
              result->type = space->type;
              result->data_pointer = copyelements(space->data_pointer, space->elements);
            }),
            4);  // the block, and three octonions
  result->elements = space->elements;
  made.shape_pointer = newshape(space->elements);
  hold(made);
  expectexact();
  EXPECT_EQ(walk([=] { makeprivate(*space); }), 4);
  expectexact();
  made = held[2];
  EXPECT_EQ(walk([=] { result->programme = copyfun(fun); }), 1);
  reference(made.name);
  hold(made);
  expectexact();
  pendingproblem = 0;
  stepping = 0;
}
#endif

}  // namespace
