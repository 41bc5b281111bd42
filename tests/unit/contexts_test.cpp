// The chain of contexts, and who owns what on it.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "failure/jump.h"
#include "frontend/contexts.h"
#include "frontend/remember.h"
#include "spaces/copies.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/symbols.h"
#include "unit/names.h"

using namespace morvik;

namespace {

using namespace names;

class Contexts : public Given {};

TEST_F(Contexts, TheFirstChain) {
  Entry *table = makehashtab();
  Context *chain = makemeaning(table);
  EXPECT_EQ(referencecount(chain), 1);
  EXPECT_EQ(referencecount(table), 1);
  EXPECT_EQ(chain->table, table);
  EXPECT_EQ(chain->uses, -1);
  EXPECT_EQ(chain->next, chain);
  EXPECT_EQ(chain->root, chain);
  const Context *second = chain + 1;
  EXPECT_EQ(chain->previous, second);
  EXPECT_EQ(second->table, table);
  EXPECT_EQ(second->uses, -1);
  EXPECT_EQ(second->previous, nullptr);
  EXPECT_EQ(second->root, second);
  EXPECT_EQ(popsymtabs(chain), chain) << "permanent";
  release(chain);
  releasetable(table);
}

TEST_F(Contexts, PushedLinksPointInAndOut) {
  Chain c;
  EXPECT_EQ(c.inner->previous, c.middle);
  EXPECT_EQ(c.middle->previous, c.base);
  EXPECT_EQ(c.middle->next, c.inner);
  EXPECT_EQ(c.inner->root, c.base);
  EXPECT_EQ(c.inner->uses, 0);
  EXPECT_EQ(c.middle->table->kind, SMALL_TABLE);
  EXPECT_EQ(c.inner->table->kind, LARGE_TABLE);
  EXPECT_EQ(referencecount(c.inner->table), 1) << "the chain's alone";
  c.end();
}

TEST_F(Contexts, LookingUpGoesFromTheInsideOut) {
  Chain c;
  set(c.global, "x", 1);
  set(c.global, "g", 10);
  set(c.middle->table, "x", 2);
  set(c.middle->table, "m", 20);
  set(c.inner->table, "x", 3);
  Entry *table = nullptr;
  EXPECT_EQ(valueof(getsymandtab(c.inner, "x", &table, nullptr)), 3);
  EXPECT_EQ(table, c.inner->table);
  EXPECT_EQ(valueof(getsymandtab(c.inner, "m", &table, nullptr)), 20);
  EXPECT_EQ(table, c.middle->table);
  EXPECT_EQ(valueof(getsymandtab(c.inner, "g", &table, nullptr)), 10);
  EXPECT_EQ(table, c.global);
  EXPECT_EQ(getsymandtab(c.inner, "absent", &table, nullptr), nullptr);
  EXPECT_EQ(table, c.global) << "searched last";
  EXPECT_EQ(valueof(checkmeaning(c.middle, "x")), 2);
  EXPECT_EQ(valueof(checkmeaning(c.base, "x")), 1);
  EXPECT_EQ(checkmeaning(c.middle, "absent"), nullptr);
  EXPECT_EQ(checkmeaning(c.inner, ""), nullptr);
  c.end();
}

TEST_F(Contexts, TheStopTableIsTheLastOneSearched) {
  Chain c;
  set(c.global, "g", 1);
  set(c.middle->table, "m", 2);
  Entry *table = nullptr;
  EXPECT_EQ(getsymandtab(c.inner, "g", &table, c.middle->table), nullptr);
  EXPECT_EQ(table, c.middle->table);
  EXPECT_EQ(checksym_until(c.inner, "g", c.inner->table), nullptr);
  EXPECT_EQ(valueof(checksym_until(c.inner, "m", c.middle->table)), 2);
  // With the global table pushed again nothing beyond it is met.
  Context *basic = pushtable(c.inner, c.global);
  EXPECT_EQ(checkmeaning(basic, "m"), nullptr);
  EXPECT_EQ(valueof(checkmeaning(basic, "g")), 1);
  EXPECT_EQ(popsymtabs(basic), c.inner);
  c.end();
}

TEST_F(Contexts, MeaningEntersInTheInnermostTable) {
  Chain c;
  set(c.global, "g", 1);
  Entry *table = nullptr;
  EXPECT_EQ(valueof(meaning(c.inner, stringdup("g"), &table)), 1);
  EXPECT_EQ(table, c.global);
  EXPECT_EQ(checkhash(c.inner->table, "g"), nullptr);
  const Entry *fresh = meaning(c.inner, stringdup("fresh"), &table, '$');
  EXPECT_EQ(table, c.inner->table);
  EXPECT_EQ(fresh, checkhash(c.inner->table, "fresh"));
  EXPECT_EQ(fresh->sigil, '$');
  fresh = meaning(c.middle, stringdup("deep"), nullptr);
  EXPECT_EQ(fresh, checksmallhash(c.middle->table, "deep"));
  EXPECT_EQ(meaning(c.inner, stringdup(""), nullptr), nullptr);
  c.end();
}

TEST_F(Contexts, ALinkWithoutATableIsPassedOverAndTakesTheRoots) {
  Chain c;
  set(c.middle->table, "m", 7);
  Context bare = {nullptr, 0, c.inner, nullptr, c.base, 0};
  Entry *table = nullptr;
  EXPECT_EQ(valueof(getsymandtab(&bare, "m", &table, nullptr)), 7);
  Entry *made = meaning(&bare, stringdup("made"), &table);
  EXPECT_EQ(table, c.global);
  EXPECT_EQ(made, checkhash(c.global, "made"));
  EXPECT_EQ(bare.table, c.global);
  EXPECT_TRUE(sametable(&bare, c.base));
  EXPECT_EQ(referencecount(c.global), 2);
  releasetable(bare.table);
  c.end();
}

TEST_F(Contexts, PushingTheSameTableOnlyCounts) {
  Chain c;
  EXPECT_EQ(pushtable(c.inner, c.inner->table), c.inner);
  EXPECT_EQ(c.inner->uses, 1);
  EXPECT_EQ(referencecount(c.inner->table), 1);
  EXPECT_EQ(popsymtabs(c.inner), c.inner);
  EXPECT_EQ(c.inner->uses, 0);
  EXPECT_EQ(pushtable(c.base, c.global), c.base);
  EXPECT_EQ(c.base->uses, -1) << "permanent";
  EXPECT_EQ(referencecount(c.global), 1);
  c.end();
}

TEST_F(Contexts, PushingAChainOnAnother) {
  Chain c;
  EXPECT_EQ(pushsymtabs(c.middle, c.inner), c.inner);
  EXPECT_EQ(c.inner->uses, 1);
  EXPECT_EQ(c.middle->next, c.inner);
  EXPECT_EQ(pushsymtabs(c.inner, c.base), c.base);
  EXPECT_EQ(c.inner->next, c.base);
  EXPECT_EQ(c.base->uses, -1);
  EXPECT_EQ(popsymtabs(c.inner), c.inner);
  c.end();
}

TEST_F(Contexts, TheLastPopWipesTheTable) {
  Chain c;
  set(c.inner->table, "x", 1);
  Point *bound = checkhash(c.inner->table, "x")->meaning;
  reference(bound);
  Context *link = c.inner;
  reference(link);  // as a name bound under it does
  Entry *table = c.inner->table;
  reference(table);
  EXPECT_EQ(popsymtabs(link), c.middle);
  EXPECT_EQ(c.middle->next, nullptr);
  EXPECT_EQ(referencecount(table), 1);
  EXPECT_NE(bound->type, 0u) << "somebody still has the table";
  releasetable(table);
  EXPECT_EQ(bound->type, 0u);
  EXPECT_EQ(link->table, nullptr);
  EXPECT_EQ(link->previous, nullptr);
  release(bound);
  release(link);
  c.inner = opentable(c.middle, LARGE_TABLE);
  c.end();
}

// The next table may well get the same address.
TEST_F(Contexts, APoppedLinkIsNotTakenForANewTable) {
  Chain c;
  Context *old = opentable(c.inner, SMALL_TABLE);
  reference(old);
  EXPECT_EQ(popsymtabs(old), c.inner);
  Context *fresh = opentable(c.inner, SMALL_TABLE);
  EXPECT_FALSE(sametable(old, fresh));
  EXPECT_NE(old->table, fresh->table);
  EXPECT_TRUE(sametable(c.base, c.base + 1));
  Context *again = opentable(fresh, SMALL_TABLE);
  Context *twice = pushtable(again, fresh->table);
  EXPECT_TRUE(sametable(fresh, twice));
  EXPECT_EQ(popsymtabs(twice), again);
  EXPECT_EQ(popsymtabs(again), fresh);
  EXPECT_TRUE(sametable(fresh, twice = fresh));
  EXPECT_EQ(popsymtabs(fresh), c.inner);
  release(old);
  c.end();
}

// A function whose body is `count` name Points bound to x under a link, and a FUNCTIONEND.
Point makefunction(Context *link, Entry *x, std::size_t count) {
  auto *body = static_cast<Point *>(newblock((count + 3) * sizeof(Point)));
  Point function{};
  function.rank = ranks::FUNCTION;
  function.type = ISFUNCTION;
  function.elements = static_cast<std::uint32_t>(count + 2);
  function.programme = body;
  body[0] = function;
  body[0].elements = static_cast<std::uint32_t>(count + 1);
  for (std::size_t i = 1; i <= count; ++i) {
    body[i] = {};
    body[i].rank = ranks::VARIABLE;
    body[i].type = ISVARIABLE;
    body[i].modifier = instructions::SLIL;
    body[i].name = x->name;
    body[i].context = link;
    body[i].target = x->meaning;
    reference(body[i].name);
    reference(body[i].context);
    reference(body[i].target);
  }
  body[count + 1] = {};
  body[count + 1].rank = ranks::OPERATOR;
  body[count + 1].type = ISOPERATOR;
  body[count + 1].instruction = instructions::FUNCTIONEND;
  body[count + 2] = {};
  return function;
}

Point &functionend(const Point &function) {
  return function.programme[function.elements - 1];
}

// What the closing of a function does: the table that it opened goes to its FUNCTIONEND.
Point compiled(Context *outer, std::int64_t value, Context **opened = nullptr) {
  Context *link = opentable(outer, SMALL_TABLE);
  set(link->table, "x", value, '.');
  Point function = makefunction(link, checksmallhash(link->table, "x"), 2);
  attachlocalnames(functionend(function), link);
  if (opened) reference(*opened = link);
  EXPECT_EQ(popsymtabs(link), outer);
  return function;
}

TEST_F(Contexts, LocalNamesLiveAsLongAsTheFunction) {
  Chain c;
  Point function = compiled(c.inner, 5);
  Entry *table = localnames(functionend(function));
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(referencecount(table), 1);
  // A call, and another: what the names hold stays, and the body's names stay bound.
  for (int calls = 0; calls < 2; ++calls) {
    Context *link = pushtable(c.middle, table);
    EXPECT_EQ(valueof(checkmeaning(link, "x")), 5);
    EXPECT_TRUE(sametable(function.programme[1].context, link));
    EXPECT_EQ(popsymtabs(link), c.middle);
  }
  dereferencepoint(&function);
  c.end();
}

TEST_F(Contexts, ACopyOfAFunctionSharesItsLocalNames) {
  Chain c;
  Point function = compiled(c.inner, 5);
  Point copy = function;
  copy.programme = copyfun(&function);
  Entry *table = localnames(functionend(copy));
  EXPECT_EQ(table, localnames(functionend(function)));
  dereferencepoint(&function);
  EXPECT_EQ(valueof(checksmallhash(table, "x")), 5);
  dereferencepoint(&copy);
  c.end();
}

TEST_F(Contexts, AFunctionReleasedWhileItRunsKeepsItsNamesUntilThePop) {
  Chain c;
  Point function = compiled(c.inner, 5);
  Entry *table = localnames(functionend(function));
  Context *link = pushtable(c.inner, table);
  dereferencepoint(&function);
  EXPECT_EQ(valueof(checkmeaning(link, "x")), 5);
  EXPECT_EQ(popsymtabs(link), c.inner);
  c.end();
}

// The inner function is kept in a local name of the outer one and was bound, at compile time and in a call, under links
// of the outer one's table: nothing of this may keep the two alive.
TEST_F(Contexts, AnInnerFunctionDoesNotKeepItsOuterOneAlive) {
  Chain c;
  Context *compiletime = nullptr;
  Point outer = compiled(c.inner, 5, &compiletime);
  Entry *table = localnames(functionend(outer));
  Entry *x = checksmallhash(table, "x");
  Point inner = makefunction(compiletime, x, 3);
  release(compiletime);
  Entry *g = smallhashtab(table, stringdup("g"), '.');
  *g->meaning = inner;
  Context *call = pushtable(c.inner, table);
  Point &name = inner.programme[1];
  release(name.context);
  name.context = call;
  reference(call);
  EXPECT_EQ(popsymtabs(call), c.inner);
  dereferencepoint(&outer);
  c.end();
}

TEST_F(Contexts, FunctionsThatKeepThemselvesEndAtShutdown) {
  Chain c;
  Point functions[3] = {compiled(c.inner, 1), compiled(c.inner, 2), compiled(c.inner, 3)};
  // The first keeps itself, the other two keep each other.
  for (const auto &[keeper, kept] : {std::pair{0, 0}, std::pair{1, 2}, std::pair{2, 1}}) {
    Entry *entry = smallhashtab(localnames(functionend(functions[keeper])), stringdup("kept"), '.');
    *entry->meaning = functions[kept];
    referencepoint(entry->meaning);
  }
  for (Point &function : functions) dereferencepoint(&function);
  EXPECT_GT(liveblocks(), blocks + 20) << "they are still there";
  wipealllocalnames();
  Point alive = compiled(c.inner, 4);
  wipealllocalnames();
  EXPECT_EQ(checksmallhash(localnames(functionend(alive)), "x"), nullptr);
  dereferencepoint(&alive);
  c.end();
}

TEST_F(Contexts, AFunctionWithoutATableOfItsOwn) {
  Chain c;
  set(c.global, "x", 1);
  Point function = makefunction(c.base, checkhash(c.global, "x"), 1);
  EXPECT_EQ(localnames(functionend(function)), nullptr);
  dereferencepoint(&function);
  EXPECT_NE(checkhash(c.global, "x"), nullptr);
  c.end();
}

#ifdef MORVIK_CHECKING
// Lets each allocation of the body fail in turn until it passes; whatever happens, the teardown must find all given
// back.
template <typename Body>
void failinturn(Body body, int least) {
  int failures = 0;
  for (;; ++failures) {
    Landing outer;
    armlanding(outer, nullptr);
    failallocation(failures);
    const volatile int value = setjmp(error_jump);
    if (value == 0) body();
    disarmlanding(outer);
    failallocation(-1);
    pendingproblem = 0;
    if (value == 0) break;
  }
  EXPECT_GE(failures, least);
}

TEST_F(Contexts, EachAllocationMayFail) {
  Chain c;
  set(c.global, "one", 1, '_');
  set(c.global, "two", 2, '_');
  testing::internal::CaptureStderr();
  failinturn([&] { hashtab(c.global, stringdup("new"), '_'); }, 3);
  failinturn([&] { smallhashtab(c.middle->table, stringdup("new")); }, 3);
  failinturn([&] { popsymtabs(opentable(c.inner, SMALL_TABLE)); }, 2);
  failinturn([&] { release(makemeaning(c.global)); }, 1);
  Point end{};
  failinturn([&] { attachlocalnames(end, c.inner); }, 1);
  wipelocalnames(end);
  Point list;
  makeempty(list);
  failinturn(
      [&] {
        dereferencepoint(&list);
        makeempty(list);
        list_symbols(&list, c.global, '_');
      },
      11);
  EXPECT_EQ(list.elements, 3u);
  dereferencepoint(&list);
  EXPECT_NE(testing::internal::GetCapturedStderr(), "");
  c.end();
}
#endif

}  // namespace
