// The system variables #IO and #CT.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "coprocessor/coprocessor.h"
#include "frontend/contexts.h"
#include "frontend/fixedsyms.h"
#include "frontend/remember.h"
#include "spaces/making.h"
#include "spaces/symbols.h"
#include "spaces/sysvars.h"
#include "unit/names.h"

using namespace morvik;

namespace {

using namespace names;

class Unbound : public Given {};

class Fixed : public Given {
 protected:
  void SetUp() override {
    Given::SetUp();
    table = makehashtab();
    chain = makemeaning(table);
    inner = opentable(chain, SMALL_TABLE);
    makeinteger(variables[IO_SLOT], 1);
    makereal(variables[CT_SLOT], 1e-15, forms::COMPUTED);
    bindfixedsym("#IO", &variables[IO_SLOT]);
    bindfixedsym("#CT", &variables[CT_SLOT]);
  }
  void TearDown() override {
    bindfixedsym("#IO", nullptr);
    bindfixedsym("#CT", nullptr);
    dereferencepoint(&variables[IO_SLOT]);
    dereferencepoint(&variables[CT_SLOT]);
    popsymtabs(inner);
    release(chain);
    releasetable(table);
    Given::TearDown();
  }
  std::string warning(const char *name) {
    testing::internal::CaptureStderr();
    checkhash(table, name);
    return testing::internal::GetCapturedStderr();
  }
  void settolerance(std::int32_t tag) {
    dereferencepoint(&variables[CT_SLOT]);
    makeinteger(variables[CT_SLOT], 0);
    variables[CT_SLOT].data_pointer->tag = tag;
  }
  Point variables[16] = {};
  Entry *table;
  Context *chain, *inner;
};

#ifdef MORVIK_CHECKING
constexpr std::int64_t PINNED = -999999999;
#else
constexpr std::int64_t PINNED = 999999999;
#endif
const std::string WARNING =
    "WARNING/ERROR: The #CT value is not numerically specified, unspecified results can be expected from verbs "
    "depending on the Comparison Tolerance";

TEST_F(Fixed, EveryLookUpMeetsTheSameEntry) {
  Entry *io = hashtab(table, stringdup("#IO"));
  EXPECT_EQ(io->meaning, &variables[IO_SLOT]);
  EXPECT_STREQ(io->name, "#IO");
  EXPECT_EQ(checkhash(table, "#IO"), io);
  EXPECT_EQ(smallhashtab(inner->table, stringdup("#IO")), io);
  EXPECT_EQ(checksmallhash(inner->table, "#IO"), io);
  Entry *searched = nullptr;
  EXPECT_EQ(getsymandtab(inner, "#IO", &searched, nullptr), io);
  EXPECT_EQ(searched, inner->table);
  EXPECT_EQ(meaning(inner, stringdup("#IO"), nullptr), io);
  EXPECT_EQ(checkmeaning(chain, "#CT")->meaning, &variables[CT_SLOT]);
  EXPECT_NE(checkmeaning(chain, "#CT"), io);
  EXPECT_EQ(checkhash(table, "#I"), nullptr);
  EXPECT_EQ(checkhash(table, "#IOX"), nullptr);
  EXPECT_EQ(checkhash(table, "#"), nullptr);
}

TEST_F(Fixed, CountsArePinnedAtEachLookUp) {
  const Entry *io = checkhash(table, "#IO");
  EXPECT_EQ(referencecount(io->meaning), PINNED);
  *refer(io->meaning) = 5;
  checkmeaning(inner, "#IO");
  EXPECT_EQ(referencecount(io->meaning), PINNED);
  for (int i = 0; i < 3; ++i) {
    release(io->name);
    release(io->meaning);
  }
  EXPECT_STREQ(io->name, "#IO");
}

TEST_F(Fixed, AValueThatIsSetIsInForceAtOnce) {
  bind(checkhash(table, "#IO"), 0);
  EXPECT_EQ(variables[IO_SLOT].data_pointer->integer, 0);
}

TEST_F(Fixed, NeitherForgottenNorWipedNorListed) {
  forgethash(checkhash(table, "#IO"));
  hashwipe(table);
  EXPECT_EQ(valueof(checkhash(table, "#IO")), 1);
  char *text = nullptr;
  std::size_t length = 0;
  std::FILE *stream = open_memstream(&text, &length);
  remember(stream, inner);
  std::fclose(stream);
  EXPECT_STREQ(text, ".\n");
  std::free(text);
}

TEST_F(Fixed, ToleranceThatIsNoNumberIsWarnedOfAtEachLookUp) {
  EXPECT_EQ(warning("#CT"), "");
  for (const std::int32_t tag : {tags::INTEGER, tags::REAL, tags::COMPLEX, tags::QUATERNION}) {
    settolerance(tag);
    EXPECT_EQ(warning("#CT"), "") << tag;
  }
  for (const std::int32_t tag : {tags::ASCII, tags::UNICODE}) {
    settolerance(tag);
    EXPECT_EQ(warning("#CT"), WARNING) << tag;
    EXPECT_EQ(warning("#CT"), WARNING) << "again";
    EXPECT_EQ(warning("#IO"), "");
  }
  settolerance(tags::OCTONION);
  variables[CT_SLOT].data_pointer->octonion = static_cast<Octonion *>(newblock(sizeof(Octonion)));
  EXPECT_EQ(warning("#CT"), WARNING);
  dereferencepoint(&variables[CT_SLOT]);
  makeempty(variables[CT_SLOT]);
  EXPECT_EQ(warning("#CT"), WARNING) << "missing";
}

TEST_F(Fixed, AnIntegerToleranceOfManyElementsIsMarked) {
  settolerance(tags::INTEGER);
  checkhash(table, "#CT");
  EXPECT_EQ(variables[CT_SLOT].type, ISSCALAR | HASINTEGER);
  dereferencepoint(&variables[CT_SLOT]);
  Point &vector = variables[CT_SLOT];
  makeempty(vector);
  vector.type = ISVECTOR | HASINTEGER;
  vector.elements = 2;
  vector.shape_pointer->integer = 2;
  vector.data_pointer = newelements(2);
  for (int i = 0; i < 2; ++i) {
    vector.data_pointer[i] = {};
    vector.data_pointer[i].tag = tags::INTEGER;
  }
  checkhash(table, "#CT");
  EXPECT_EQ(vector.type, ISVECTOR | HASINTEGER | COMPLEXED);
}

TEST_F(Unbound, UnboundSystemVariablesAreOrdinaryNames) {
  Entry *table = makehashtab();
  EXPECT_EQ(checkhash(table, "#IO"), nullptr);
  EXPECT_EQ(hashtab(table, stringdup("#IO")), table + 0x516B);
  releasetable(table);
}

}  // namespace
