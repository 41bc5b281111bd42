// Functions printed and read again: every word that a body can hold makes the same Point.
#include <gtest/gtest.h>

#include <string>

#include "frontend/keywords.h"
#include "reading.h"

using namespace morvik;

namespace {

using namespace points;

testing::AssertionResult samefunction(const Point &a, const Point &b);

// But for the flags that a binding adds and the places that it is bound to.
testing::AssertionResult samepoint(const Point &a, const Point &b) {
  if (a.rank != b.rank) return differ("ranks") << ' ' << a.rank << ' ' << b.rank;
  const bool nil = isspace(a) && isempty(a);  // () and '' come back as #NIL
  if (a.type != b.type && !nil) return differ("types") << std::hex << ' ' << a.type << ' ' << b.type;
  if (isspace(a)) return same(a, b, 1e-13);
  if ((a.name == nullptr) != (b.name == nullptr) || (a.name && std::strcmp(a.name, b.name) != 0))
    return differ("names") << ' ' << (a.name ? a.name : "-") << ' ' << (b.name ? b.name : "-");
  if (isfunction(a)) return samefunction(a, b);
  if (a.depth != b.depth || a.modifier != b.modifier || a.elements != b.elements) return differ("fields");
  if ((a.block == nullptr) != (b.block == nullptr)) return differ("bindings");
  if (a.rank <= ranks::LOCAL_ADDRESS && a.data_pointer->integer != b.data_pointer->integer) return differ("positions");
  return testing::AssertionSuccess();
}

testing::AssertionResult samefunction(const Point &a, const Point &b) {
  if (a.arguments != b.arguments || a.locals != b.locals || a.elements != b.elements) return differ("signatures");
  const Point *p = a.programme + 1, *q = b.programme + 1;
  for (; !isend(*p) && !isend(*q); ++p, ++q)
    if (const auto result = samepoint(*p, *q); !result)
      return differ("Point ") << p - a.programme << ": " << result.message();
  return isend(*p) == isend(*q) ? testing::AssertionSuccess() : differ("lengths");
}

// The function of a text, printed and read again: the same body, and the same text from then on.
void expectreadsback(Reader &reader, const std::string &text) {
  SCOPED_TRACE(text);
  std::vector<Point> first = reader.read(text);
  ASSERT_GE(first.size(), 1u);
  ASSERT_TRUE(isfunction(first[0]));
  const std::string printed = print(first[0], true);
  SCOPED_TRACE(printed);
  std::vector<Point> second = reader.read(printed);
  EXPECT_EQ(second.size(), 1u);
  if (second.size() == 1 && isfunction(second[0])) {
    // The word that opened it may be another one for the same: names of heads are not compared.
    EXPECT_TRUE(samefunction(first[0], second[0]));
    EXPECT_EQ(print(second[0], true), printed);
  } else {
    ADD_FAILURE() << "no function";
  }
  for (Point &p : first) drop(p);
  for (Point &p : second) drop(p);
}

TEST(RoundTripFunctions, EveryKeyword) {
  Reader reader;
  int words = 0;
  for (const Keyword &row : Keywords)
    for (const char *spelling : row.spellings) {
      if (row.kind == KeywordKind::BREAK) continue;  // drops the line that it is in
      const std::string more = row.kind == KeywordKind::MASK_FORM ? " MASK" : "";
      expectreadsback(reader, std::string(": 1 + ") + spelling + more + " (3 4) ;");
      ++words;
    }
  EXPECT_GT(words, 500);
}

TEST(RoundTripFunctions, EveryHead) {
  Reader reader;
  for (const char *head :
       {":", "NEADIC", "FUNCTION", "NILADIC", "MONADIC", "DYADIC", "TRIADIC", "ARGS 4 FUNCTION", "ARGS 2 FUNCTION",
        "ARGS 300 FUNCTION", "VARS 3 NILADIC", "VARS 1 MONADIC", "VARS 7 DYADIC", "VARS 2 TRIADIC",
        "ARGS 5 VARS 3 FUNCTION", "VARS 3 ARGS 5 FUNCTION", "ARGS 0 FUNCTION", "VARS 65535 MONADIC"})
    expectreadsback(reader, std::string(head) + " 1 2 + ;");
}

TEST(RoundTripFunctions, NamesOfEveryScope) {
  Reader reader;
  expectreadsback(reader, ": x _x $x .x @x @_x @$x @.x a+b @a+b @vector x/y #IO @#CT f! ;");
  expectreadsback(reader, ": \2two words\3 @\2a.b;c\3 _\2x y\3 $\2x y\3 .\2x y\3 @_\2x y\3 @.\2x y\3 ;");
  expectreadsback(reader, ": \2vector\3 \2-x\3 \0021st\3 \2info\3 \2a!b\3 @a!b @! @+ r2d2 d2p #x #rate RATE ;");
  expectreadsback(reader,
                  ": \2T\3 \2END\3 \2#PI\3 \2MONADIC\3 \2d3p90\3 \2#r1i2\3 \2r2j-3\3 \2RANDOMISED\3 \2nano\3 ;");
  expectreadsback(reader,
                  ": \2%x\3 \2&1\3 \2_x\3 \2$x\3 \2.x\3 @\2%x\3 @\2_x\3 @\2.\3 \2\xBC\3 @T @END @d3p90 @\xBCx ;");
}

bool iskeyword(const std::string &name) {
  for (const Keyword &row : Keywords)
    for (const char *spelling : row.spellings)
      if (name == spelling) return true;
  return false;
}

// Whatever a name begins with, or goes on with, it comes back as the same name.
TEST(RoundTripFunctions, NamesLikeOtherThings) {
  Reader reader;
  const std::vector<std::string> beginnings = {
      "+",    "-",    "**",  "!",    "!~",  "!~^", "v",       "~",    ",",         ",[",    "<",     "<>",   "#",
      "##",   "?",    "\\",  "/..",  ":",   "::",  ";",       "'",    "(",         "@",     "\"",    "\xBC", "\xB0",
      "\xB9", "\xAF", "`",   "`0#1", "&",   "_",   "$",       "%",    ".",         "..",    "SIN",   "T",    "#PI",
      "-#PI", "END",  "DUP", "eX",   "Inf", "NaN", "MONADIC", "VARS", "VARS2",     "ARGS3", "r1",    "d2p",  "#r3i4",
      "rInf", "r1E5", "0#1", "1",    "x",   "\2",  "[",       "]",    "RANDOMISE", "\xC5%", "\xCCo", "^B"};
  const std::vector<std::string> endings = {"",
                                            "x",
                                            "-x",
                                            "+",
                                            "-",
                                            "!",
                                            "i2",
                                            "iInf",
                                            "E5i2",
                                            "1",
                                            "p3",
                                            "]x",
                                            "[]",
                                            " ",
                                            ".",
                                            "MONADIC",
                                            "FUNCTION",
                                            "\xB9z",
                                            "^",
                                            "3p4",
                                            "`",
                                            "\xAF"
                                            "3",
                                            "%x",
                                            "v2",
                                            "=",
                                            ")",
                                            "0"};
  int names = 0;
  for (const std::string &beginning : beginnings)
    for (const std::string &ending : endings) {
      const std::string name = beginning + ending;
      if (iskeyword(name) || name == "\"") continue;  // is written as what it spells
      expectreadsback(reader, ": 1 \2" + name + "\3 @\2" + name + "\3 _\2" + name + "\3 2 ;");
      ++names;
    }
  EXPECT_GT(names, 1500);
}

// Brackets stand where the text would be read as something else, and only there.
TEST(RoundTripFunctions, NamesThatBeginAsNumbersAndHeads) {
  Reader reader;
  const auto isbracketed = [&reader](const std::string &name) {
    expectreadsback(reader, ": \2" + name + "\3 @\2" + name + "\3 ;");
    std::vector<Point> points = reader.read(": \2" + name + "\3 ;");
    const std::string printed = print(points[0], true);
    for (Point &p : points) drop(p);
    EXPECT_NE(printed.find(name), std::string::npos);
    return printed.find("\2" + name + "\3") != std::string::npos;
  };
  for (const char *name : {"r-Infi2", "#-Info2", "rnani2", "dInfp1", "r1e5i2", "r1E-5i2", "r1E+5i2", "r1E\xAF\x35i2",
                           "ARGS3VARS2", "VARS3ARGS2", "ARGS-1FUNCTION", "_\2x", "$\2x", "%\2x"})
    EXPECT_TRUE(isbracketed(name)) << name;
  for (const char *name :
       {"r-NaNi2", "r-nani2", "rInfx", "r1Exi2", "r1E+xi2", "r1x", "ARGS3x", "VARSx", "_", "$", "x_\2"})
    EXPECT_FALSE(isbracketed(name)) << name;
}

// A word that was given a meaning is written as the word.
TEST(RoundTripFunctions, WordsThatAreNames) {
  Reader reader;
  for (const std::string word : {"**", "+", "<=", "SIN", "MAX"})
    expectreadsback(reader, ": @" + word + " " + word + " ;");
}

TEST(RoundTripFunctions, LabelsLocalsAndComments) {
  Reader reader;
  expectreadsback(reader, ": %here 1 \"a note, with . and ;\" @%here JUMP @%there \xC5% %there ;");
  expectreadsback(reader, "VARS 3 DYADIC &1 &2 + @&3 SET \"done\" &3 ;");
  expectreadsback(reader, ": \"two\nlines\" \"\" \" ?Y \" ;");
}

TEST(RoundTripFunctions, Decisions) {
  Reader reader;
  expectreadsback(reader, ": CHECK 1 ?Y 2 ?N x ?Y _x ?N @x ?Y + ?Y + // ?N SUM ?Y SIN ?N : 1 ; ?Y (1 2) ?N 'a' ?Y ;");
  expectreadsback(reader, "VARS 1 MONADIC CHECK &1 ?Y @&1 ?N @%l ?Y %l ?Y \"so be it\" ?Y ROOT ?Y CHECK ?N ;");
}

TEST(RoundTripFunctions, LiteralsOfEveryKind) {
  Reader reader;
  expectreadsback(reader, ": #NIL () '' 'a' 'abc' ('abc' 'd') (1 (2 (3))) `(1 2) (1 2 3 4)[2 2] 'abcd'[2 2] ;");
  expectreadsback(reader, ": T F #TRUE #PI -#PI #SIN (#PI T) 0#1 0#101010101 `0#1010` 'a`0#1010`b' ;");
  expectreadsback(reader, ": 1i2 #1i2 #r1i2 r1i2 1j2 1i2j3k4 1o2 dr3p90 3p0 (1 2)[] ()[] ;");
  expectreadsback(reader, ": 1.5 -2.5 1e300 1E3 Inf -Inf NaN ;");
}

TEST(RoundTripFunctions, Nested) {
  Reader reader;
  expectreadsback(reader, ": : 1 MONADIC x ; ; DYADIC $y : .z ; ; ; OPERATOR");
  std::string text = "x";
  for (int i = 0; i < 200; ++i) text = "MONADIC 1 " + text + " ;";
  expectreadsback(reader, text);
}

TEST(RoundTripFunctions, CutOffAtTheEndOfTheText) {
  Reader reader;
  testing::internal::CaptureStderr();
  std::vector<Point> first = reader.read(": 1 : 2 +");
  testing::internal::GetCapturedStderr();
  ASSERT_EQ(first.size(), 1u);
  const std::string printed = print(first[0], true);
  EXPECT_EQ(printed, "\n : 1\n    : 2 + ;\n    ;\n");
  for (Point &p : first) drop(p);
}

}  // namespace
