// Names: where each kind goes, and labels and locals.
#include <string>

#include "assembly.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/symtab.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace {

TEST_F(Assembly, PlainNames) {
  ASSERT_EQ(compile("x @x a+b ."), 4);
  const Entry *x = entry("x");
  ASSERT_NE(x, nullptr);
  const Point &p = programme[0];
  EXPECT_EQ(p.rank, ranks::VARIABLE);
  EXPECT_EQ(p.type, ISVARIABLE | ISOPERATOR);
  EXPECT_EQ(p.modifier, instructions::SGIG);
  EXPECT_EQ(p.elements, 1u);
  EXPECT_EQ(p.name, x->name);
  EXPECT_EQ(p.target, x->meaning);
  EXPECT_EQ(p.context, chain);
  const Point &address = programme[1];
  EXPECT_EQ(address.rank, ranks::ADDRESS);
  EXPECT_EQ(address.type, ISADDRESS | ISOPERATOR);
  EXPECT_EQ(address.modifier, instructions::SGIG);
  EXPECT_EQ(address.target, x->meaning);
  EXPECT_EQ(referencecount(x->meaning), 3);
  EXPECT_EQ(referencecount(x->name), 3);
  EXPECT_EQ(programme[2].elements, 3u);
  EXPECT_EQ(x->sigil, 0);
}

TEST_F(Assembly, NamesBetweenBrackets) {
  ASSERT_EQ(compile("\2a . b\n\3 @\2\"\3 _\2x y\3 @$\2z;\3 .\2 \3 ."), 6);
  EXPECT_STREQ(programme[0].name, "a . b\n");
  EXPECT_EQ(programme[1].rank, ranks::ADDRESS);
  EXPECT_STREQ(programme[1].name, "\"");
  EXPECT_EQ(programme[2].modifier, instructions::SAIG);
  EXPECT_STREQ(programme[2].name, "x y");
  EXPECT_EQ(programme[3].modifier, instructions::SAIL);
  EXPECT_STREQ(programme[3].name, "z;");
  EXPECT_EQ(programme[4].modifier, instructions::SLIL);
  EXPECT_STREQ(programme[4].name, " ");
  EXPECT_EQ(compile("1 \2\3 2 ."), 3);
}

TEST_F(Assembly, AMegabyteOfAName) {
  const std::string name(1000003, 'n');
  ASSERT_EQ(compile("@" + name + " \2" + name + "\3 ."), 3);
  EXPECT_EQ(programme[0].elements, name.size());
  EXPECT_EQ(programme[0].name, programme[1].name);
  EXPECT_EQ(programme[0].name, name);
}

TEST_F(Assembly, SigilsOutsideFunctions) {
  bind("known", 1);
  ASSERT_EQ(compile("_known $known .known @_known @$known @.known _x $x .y ."), 10);
  const int scopes[] = {instructions::SAIG, instructions::SAIL, instructions::SLIL};
  for (int i = 0; i < 9; ++i) {
    const Point &p = programme[i];
    const bool address = i >= 3 && i < 6;
    EXPECT_EQ(p.rank, address ? ranks::ADDRESS : ranks::VARIABLE) << i;
    EXPECT_EQ(p.type, address ? ISADDRESS : ISVARIABLE) << i;
    EXPECT_EQ(p.modifier, scopes[i % 3]) << i;
    EXPECT_EQ(p.context, chain) << i;
    EXPECT_STREQ(p.name, i < 6 ? "known" : i < 8 ? "x" : "y");
    // Only a dot looks anything up.
    EXPECT_EQ(p.target, i % 3 == 2 ? entry(p.name)->meaning : nullptr) << i;
  }
  EXPECT_EQ(entry("x"), nullptr);
  EXPECT_EQ(entry("y")->sigil, '.');
}

TEST_F(Assembly, DotNamesInAFunctionOpenATableOfItsOwn) {
  const Point &f = function(": x .x @.x y ;");
  EXPECT_NE(entry("x"), nullptr);
  const Point &end = body(f, 4);
  Entry *own = localnames(end);
  ASSERT_NE(own, nullptr);
  EXPECT_EQ(own->kind, SMALL_TABLE);
  const Entry *local = checksmallhash(own, "x");
  ASSERT_NE(local, nullptr);
  EXPECT_EQ(body(f, 1).target, local->meaning);
  EXPECT_EQ(body(f, 2).target, local->meaning);
  EXPECT_EQ(body(f, 0).target, entry("x")->meaning);
  // A plain name goes to the root table from anywhere.
  EXPECT_EQ(body(f, 3).target, entry("y")->meaning);
  EXPECT_EQ(body(f, 0).context, chain);
  EXPECT_NE(body(f, 1).context, chain);
  EXPECT_EQ(chain->next, nullptr);
}

TEST_F(Assembly, AFunctionWithoutLocalNamesHasNoTable) {
  EXPECT_EQ(localnames(body(function(": x _y 1 ;"), 3)), nullptr);
}

TEST_F(Assembly, InnerFunctionsHaveTheirOwnTable) {
  const Point &f = function(": .a : .b $a ; .c ;");
  Entry *outer = localnames(body(f, 3)), *inner = localnames(body(body(f, 1), 2));
  ASSERT_NE(outer, nullptr);
  ASSERT_NE(inner, nullptr);
  EXPECT_NE(checksmallhash(outer, "c"), nullptr);
  EXPECT_EQ(checksmallhash(outer, "b"), nullptr);
  EXPECT_NE(checksmallhash(inner, "b"), nullptr);
  // $a is found along the chain.
  EXPECT_EQ(body(body(f, 1), 1).target, checksmallhash(outer, "a")->meaning);
}

TEST_F(Assembly, SigilsInFunctions) {
  bind("known", 1);
  const Point &f = function(": _known $known @_known @$known ;");
  EXPECT_EQ(f.type, ISFUNCTION);
  EXPECT_EQ(body(f, 0).target, nullptr);
  EXPECT_EQ(body(f, 1).target, entry("known")->meaning);
  EXPECT_EQ(body(f, 2).target, nullptr);
  EXPECT_EQ(localnames(body(f, 4)), nullptr);
  const Point &global = function(": _new ;");
  EXPECT_EQ(global.type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(localnames(body(global, 1)), nullptr);
  const Point &local = function(": @$new ;");
  EXPECT_EQ(local.type, ISFUNCTION | GLOBAL);
  ASSERT_NE(localnames(body(local, 1)), nullptr);
  EXPECT_EQ(checksmallhash(localnames(body(local, 1)), "new"), nullptr);
  EXPECT_EQ(function(": x ;").type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(function(": @x ;").type, ISFUNCTION | GLOBAL);
  EXPECT_EQ(function(": .x ;").type, ISFUNCTION);
  EXPECT_EQ(function(": 1 @y SET ;").type, ISFUNCTION | GLOBAL | GLOBALCHANGE);
}

TEST_F(Assembly, TooManyNames) {
  for (const char *word : {"_x ", "$x ", "@x ", "@_x ", "@$x "}) {
    function(": " + repeated(word, 512) + ";");
    expectabandoned(": " + repeated(word, 513) + "; .", 808);
  }
  function("VARS 1 NILADIC " + repeated("@&1 ", 512) + ";");
  expectabandoned("VARS 1 NILADIC " + repeated("@&1 ", 513) + "; .", 808);
  // It counts by the text, and outside a function not at all.
  expectabandoned(": " + repeated("_x ", 512) + "; : _x ; .", 808);
  EXPECT_EQ(compile(repeated("_x @x ", 400) + "."), 801);
  function(": " + repeated("x .x &1 ", 600) + ";");
}

TEST_F(Assembly, Labels) {
  const Point &f = function(": 1 @%b %a 2 %b @%a ;");
  Entry *own = localnames(body(f, 6));
  ASSERT_NE(own, nullptr);
  const Entry *a = checksmallhash(own, "%a"), *b = checksmallhash(own, "%b");
  ASSERT_NE(a, nullptr);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(a->sigil, 0);
  // The number, counted from 1, of the Point after the label.
  EXPECT_EQ(a->meaning->type, 0x10400u);
  EXPECT_EQ(a->meaning->data_pointer->integer, 4);
  EXPECT_EQ(b->meaning->data_pointer->integer, 6);
  const Point &label = body(f, 1);
  EXPECT_EQ(label.rank, ranks::LABEL);
  EXPECT_EQ(label.type, ISADDRESS);
  EXPECT_EQ(label.depth, 1);
  EXPECT_STREQ(label.name, "%b");
  EXPECT_EQ(label.target, b->meaning);
  EXPECT_EQ(label.link, nullptr);
  const Point &place = body(f, 2);
  EXPECT_EQ(place.rank, ranks::OPERATOR);
  EXPECT_EQ(place.instruction, instructions::NOOP);
  EXPECT_EQ(place.modifier, 0);
  EXPECT_STREQ(place.name, "%a");
  EXPECT_EQ(place.elements, 2u);
  EXPECT_EQ(place.link, nullptr);
  EXPECT_EQ(place.target, a->meaning);
}

TEST_F(Assembly, ALabelCanMove) {
  EXPECT_EQ(compile("%a 1 %a ."), 4);
  EXPECT_EQ(entry("%a")->meaning->data_pointer->integer, 4);
  EXPECT_EQ(entry("a"), nullptr);
}

TEST_F(Assembly, Locals) {
  const Point &f = function("VARS 3 MONADIC &1 @&3 ;");
  const Point &variable = body(f, 0), &address = body(f, 1);
  EXPECT_EQ(variable.rank, ranks::LOCAL_VARIABLE);
  EXPECT_EQ(variable.type, ISVARIABLE | ISLOCAL);
  EXPECT_EQ(variable.elements, 1u);
  EXPECT_EQ(variable.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(variable.data_pointer->integer, 0);
  EXPECT_EQ(address.rank, ranks::LOCAL_ADDRESS);
  EXPECT_EQ(address.type, ISADDRESS | ISLOCAL);
  EXPECT_EQ(address.data_pointer->integer, 2);
}

TEST_F(Assembly, LocalsThatAreNone) {
  struct {
    const char *text;
    int number;
  } const cases[] = {{"&1 @&1 .", 151},
                     {"&0 .", 151},
                     {"MONADIC &1 ; .", 151},
                     {"VARS 2 MONADIC &0 ; .", 150},
                     {"VARS 2 MONADIC @&-1 ; .", 150},
                     {"VARS 2 MONADIC &3 ; .", 152},
                     {"VARS 2 MONADIC &99999999999999999999 ; .", 152}};
  for (const auto &c : cases) {
    EXPECT_NE(compile(c.text), 0) << c.text;
    EXPECT_TRUE(reported(c.number)) << c.text;
  }
  EXPECT_EQ(compile("1 &1 2 ."), 3);
}

}  // namespace
