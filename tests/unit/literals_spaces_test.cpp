// Strings, vectors and structures in each other, and their shapes.
#include <random>
#include <string>
#include <vector>

#include "frontend/limits.h"
#include "literals.h"

using namespace morvik;

namespace {

// ---- Strings.

TEST_F(Literals, Strings) {
  const Point &p = single("'hello'");
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.type, 0x40100u);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(p.elements, 5u);
  EXPECT_EQ(p.link, nullptr);
  EXPECT_EQ(shape(p), Extents{5});
  EXPECT_EQ(bytes(p), "hello");
  EXPECT_EQ(bytes(single("'it''s'")), "it's");
  EXPECT_EQ(bytes(single("'a\nb\t.;'")), "a\nb\t.;");
}

TEST_F(Literals, StringsOfOneCharacterAreScalars) {
  for (const char *text : {"'a'", "''''"}) {
    const Point &p = single(text);
    EXPECT_EQ(p.rank, 0);
    EXPECT_EQ(p.type, 0x10100u);
    EXPECT_EQ(p.depth, 0);
    EXPECT_EQ(p.shape_pointer, nullptr);
    EXPECT_EQ(p.elements, 1u);
    EXPECT_EQ(p.data_pointer->ascii, text[1]);
  }
}

TEST_F(Literals, TheEmptyString) {
  const Point &p = single("''");
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.type, ISVECTOR | ISEMPTY | HASASCII);
  EXPECT_EQ(p.elements, 0u);
  EXPECT_EQ(p.data_pointer, nullptr);
  EXPECT_EQ(shape(p), Extents{0});
}

TEST_F(Literals, AQuotationMarkInAStringIsEchoed) {
  EXPECT_EQ(bytes(single("'a\"b'")), "ab");
  EXPECT_EQ(out, "\"");
}

TEST_F(Literals, ALongStringIsWhole) {
  std::string text(1000003, 'x');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>('A' + i % 26);
  const Point &p = single("'" + text + "'");
  EXPECT_EQ(p.elements, text.size());
  EXPECT_EQ(bytes(p), text);
}

// ---- Vectors.

TEST_F(Literals, Vectors) {
  const Point &p = single("(1 2 3)");
  EXPECT_EQ(p.rank, 1);
  EXPECT_EQ(p.type, 0x40400u);
  EXPECT_EQ(p.depth, 1);
  EXPECT_EQ(p.elements, 3u);
  EXPECT_EQ(p.link, nullptr);
  EXPECT_EQ(shape(p), Extents{3});
  EXPECT_EQ(integers(p), (Extents{1, 2, 3}));
  EXPECT_EQ(referencecount(p.data_pointer), 1);
  EXPECT_EQ(single("(7)").type, 0x60400u);
}

TEST_F(Literals, TheEmptyVector) {
  const Point &p = single("( )");
  EXPECT_EQ(p.type, ISVECTOR | ISEMPTY | HASINTEGER);
  EXPECT_EQ(p.elements, 0u);
  EXPECT_EQ(p.data_pointer, nullptr);
  EXPECT_EQ(shape(p), Extents{0});
}

TEST_F(Literals, MixedVectors) {
  EXPECT_EQ(single("(1 2.5)").type, ISVECTOR | HASINTEGER | HASREAL | COMPLEXED);
  EXPECT_EQ(single("(1i2 1j2 1l2)").type, ISVECTOR | HASCOMPLEX | HASQUATERNION | HASOCTONION | COMPLEXED);
  EXPECT_EQ(single("(#PI #E)").type, ISVECTOR | HASREAL);
}

TEST_F(Literals, NestedVectors) {
  const Point &p = single("(1 (2 3) 'ab' 'c')");
  EXPECT_EQ(p.type, ISVECTOR | HASINTEGER | STRUCTURED | ISSTRUCTURE);
  EXPECT_EQ(p.elements, 4u);
  EXPECT_EQ(p.depth, 2);
  EXPECT_EQ(p.data_pointer[0].integer, 1);
  ASSERT_EQ(p.data_pointer[1].tag, tags::SUBARRAY);
  const Point &inner = *p.data_pointer[1].subarray;
  EXPECT_EQ(inner.type, 0x40400u);
  EXPECT_EQ(inner.depth, 1);
  EXPECT_EQ(integers(inner), (Extents{2, 3}));
  EXPECT_EQ(bytes(*p.data_pointer[2].subarray), "ab");
  EXPECT_EQ(p.data_pointer[2].subarray->depth, 1);
  EXPECT_EQ(p.data_pointer[3].subarray->rank, 0);
  EXPECT_EQ(single("((1 2))").type, ISVECTOR | ISONEELEMENT | STRUCTURED | ISSTRUCTURE);
}

// The deepest place of the whole literal counts for each of its vectors, even for those that close later.
TEST_F(Literals, DepthCountsTheWholeLiteral) {
  const Point &p = single("(1 ((2)) (3))");
  EXPECT_EQ(p.depth, 3);
  EXPECT_EQ(p.data_pointer[1].subarray->depth, 2);
  EXPECT_EQ(p.data_pointer[2].subarray->depth, 2);
  EXPECT_EQ(single("(1)").depth, 1);
}

TEST_F(Literals, Structures) {
  const Point &p = single("`(1 2)`");
  EXPECT_EQ(p.type, ISSCALAR | HASINTEGER);
  EXPECT_EQ(p.depth, 0);
  EXPECT_EQ(integers(p), (Extents{1, 2}));
  EXPECT_EQ(single("`(7)").type, ISSCALAR | HASINTEGER);
  // What ATOM makes of the vector.
  const Point &atom = single("`((1 2))`");
  EXPECT_EQ(atom.type, 0x110080u);
  EXPECT_EQ(atom.depth, 0);
  EXPECT_EQ(atom.elements, 1u);
  EXPECT_EQ(shape(atom), Extents{1});
}

TEST_F(Literals, AnEmptyStructureIsTheEmptyVector) {
  EXPECT_EQ(single("`( )`").type, ISVECTOR | ISEMPTY | HASINTEGER);
}

TEST_F(Literals, AStructureTakesOneLiteralAndNothingBefore) {
  for (const char *text : {"`(1 (2))` 3 .4", "`((1) (2))` . 'x' .4", "`('a' 'b') .4", "(`(1 (2))`) 5 .4"}) {
    EXPECT_EQ(compile(text), 0) << text;
    EXPECT_TRUE(reported(808)) << text;
    EXPECT_TRUE(isend(programme[0])) << text;
  }
}

TEST_F(Literals, DeeplyNested) {
  const int levels = 1000;
  const Point *p = &single(std::string(levels, '(') + "5" + std::string(levels, ')'));
  for (int i = 1; i < levels; ++i) {
    ASSERT_EQ(p->depth, levels - i + 1);
    ASSERT_EQ(p->elements, 1u);
    p = p->data_pointer->subarray;
  }
  EXPECT_EQ(integers(*p), Extents{5});
}

TEST_F(Literals, NestedAsDeepAsThereAreFrames) {
  const std::size_t most = MOST_FRAMES;  // the outermost takes none, and frame 0 is the text's own
  EXPECT_EQ(compile(std::string(most, '(') + std::string(most, ')') + "."), 2);
  EXPECT_EQ(compile(std::string(most + 1, '(') + ". )" + std::string(most, ')') + "'.' . 7 ."), 0);
  EXPECT_TRUE(reported(807));
  EXPECT_EQ(rest, " 7 .");
}

TEST_F(Literals, ALongVectorIsWhole) {
  std::string text = "(";
  for (int i = 0; i < 100000; ++i) text += std::to_string(i) + "\n";
  const Point &p = single(text + ")");
  ASSERT_EQ(p.elements, 100000u);
  for (int i = 0; i < 100000; ++i) ASSERT_EQ(p.data_pointer[i].integer, i);
  EXPECT_EQ(shape(p), Extents{100000});
}

// Behind another number and before white space a number goes a way of its own.
TEST_F(Literals, AMemberIsWhatTheNumberIsAlone) {
  std::mt19937_64 random(21);
  std::vector<std::string> numbers = {"9007199254740991",
                                      "9007199254740992",
                                      "9007199254740993",
                                      "-9007199254740993",
                                      "9223372036854775807",
                                      "9223372036854775808",
                                      "-9223372036854775808",
                                      "9223372036854777856",
                                      "99999999999999999999",
                                      "0",
                                      "-0",
                                      "-0.0",
                                      "0.1",
                                      "0.30000000000000004",
                                      "5.0",
                                      "\xAF"
                                      "7",
                                      "\xAF"
                                      "7.25",
                                      "\xAF"
                                      "1.2345678901234567890123"};
  for (int i = 0; i < 2000; ++i) {
    std::string number = random() % 2 ? "-" : "";
    for (auto digits = 1 + random() % 25; digits > 0; --digits) number += static_cast<char>('0' + random() % 10);
    if (random() % 2) number += "." + std::to_string(random() >> random() % 64);
    numbers.push_back(number);
  }
  for (const std::string &number : numbers) {
    const Element alone = element(number);
    const Point &p = single("(0 " + number + " " + number + "\n" + number + ")");
    ASSERT_EQ(p.elements, 4u) << number;
    for (std::uint32_t i = 1; i < p.elements; ++i) {
      ASSERT_EQ(p.data_pointer[i].tag, alone.tag) << number;
      EXPECT_EQ(p.data_pointer[i].form, alone.form) << number;
      EXPECT_EQ(p.data_pointer[i].attributes, alone.attributes) << number;
      EXPECT_EQ(p.data_pointer[i].integer, alone.integer) << number << ": to the last bit";
    }
  }
}

// ---- Shapes.

TEST_F(Literals, ShapeBrackets) {
  for (const char *text : {"(1 2 3 4 5 6)[3 2]", "(1 2 3 4 5 6)\t[3 2]", "(1 2 3 4 5 6)`[3\n2 ]"}) {
    const Point &p = single(text);
    EXPECT_EQ(p.rank, 2) << text;
    EXPECT_EQ(p.type, ISARRAY | HASINTEGER) << text;
    EXPECT_EQ(shape(p), (Extents{3, 2})) << text;
    EXPECT_EQ(integers(p), (Extents{1, 2, 3, 4, 5, 6})) << text;
  }
  EXPECT_EQ(integers(single("(1 2)[5]")), (Extents{1, 2, 1, 2, 1}));
  EXPECT_EQ(integers(single("(1 2 3)[2]")), (Extents{1, 2}));
}

TEST_F(Literals, ShapedStrings) {
  const Point &p = single("'abcdef'[3 2]");
  EXPECT_EQ(p.type, ISARRAY | HASASCII);
  EXPECT_EQ(shape(p), (Extents{3, 2}));
  EXPECT_EQ(bytes(p), "abcdef");
  const Point &one = single("'a'\t[1]");
  EXPECT_EQ(one.rank, 1);
  EXPECT_EQ(one.type, 0x60100u);
  EXPECT_EQ(shape(one), Extents{1});
}

TEST_F(Literals, ShapesInsideVectors) {
  const Point &p = single("(9 (1 2 3 4)[2 2] 'ab'[1])");
  ASSERT_EQ(p.elements, 3u);
  EXPECT_EQ(shape(*p.data_pointer[1].subarray), (Extents{2, 2}));
  EXPECT_EQ(bytes(*p.data_pointer[2].subarray), "a");
  EXPECT_EQ(out, " ");
}

TEST_F(Literals, ABlankInANestedShapeIsEchoed) {
  const Point &p = single("((1 2 3 4)[2\n2])");
  EXPECT_EQ(out, "\n");
  EXPECT_EQ(shape(*p.data_pointer[0].subarray), (Extents{2, 2}));
}

TEST_F(Literals, AShapeOfNothing) {
  const Point &p = single("(1 2)[0]");
  EXPECT_EQ(p.elements, 0u);
  EXPECT_NE(p.type & ISEMPTY, 0u);
  EXPECT_EQ(p.data_pointer, nullptr);
}

TEST_F(Literals, BadShapesLeaveAVectorAndTheTextGoesOn) {
  struct {
    const char *text;
    int number;
  } const cases[] = {{"(1)[1000000000 1000000000] 2 . 3 .", 1100},  {"(1)[99999999999999999999] 2 . 3 .", 1100},
                     {"'ab'[-99999999999999999999] 2 . 3 .", 1100}, {"(1)[-1] 2 . 3 .", 113},
                     {"((1)[4294967296]) 2 . 3 .", 1100},           {"()[2] 2 . 3 .", 11}};
  for (const auto &c : cases) {
    EXPECT_EQ(compile(c.text), 3) << c.text;
    EXPECT_TRUE(reported(c.number)) << c.text << err;
    EXPECT_EQ(programme[0].rank, 1) << c.text;
    EXPECT_EQ(programme[1].data_pointer->integer, 2) << c.text;
    EXPECT_EQ(rest, " 3 .") << c.text;
  }
}

TEST_F(Literals, BracketsWithoutExtents) {
  EXPECT_EQ(compile("(1 2)[] ."), 3);
  EXPECT_EQ(programme[0].type, ISVECTOR | HASINTEGER | INOUT);
  EXPECT_EQ(integers(programme[0]), (Extents{1, 2}));
  EXPECT_EQ(programme[1].instruction, instructions::NOOP);
  EXPECT_STREQ(programme[1].name, ")[]");
  const Point &p = single("((1 2)[] 3)");
  EXPECT_EQ(p.data_pointer[0].subarray->type, ISVECTOR | HASINTEGER | INOUT);
  EXPECT_EQ(p.elements, 2u);
}

}  // namespace
