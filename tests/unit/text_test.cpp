// The printer: every kind of value in both forms, to the byte, and what printing leaves in the records.
#include "text/text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "failure/exception.h"
#include "failure/jump.h"
#include "points.h"
#include "spaces/making.h"
#include "text/printer.h"

using namespace morvik;

namespace {

using namespace points;

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NOTANUMBER = std::numeric_limits<double>::quiet_NaN();

// ---- Numbers.

// But for the sign of a NaN, which we never write.
void expectasprintf(double value) {
  for (const int digits : {10, 17}) {
    char ours[64], theirs[64];
    *printer::spell(ours, value, digits) = 0;
    std::snprintf(theirs, sizeof theirs, "%.*lg", digits, std::isnan(value) ? std::fabs(value) : value);
    ASSERT_STREQ(ours, theirs);
  }
}

TEST(TextNumbers, SpelledLikePrintf) {
  std::mt19937_64 random(7);
  for (int i = 0; i < 200000; ++i) {
    const std::uint64_t bits = random();
    double value;
    std::memcpy(&value, &bits, sizeof value);
    if (i % 3 == 0) value = static_cast<double>(static_cast<std::int64_t>(bits)) / static_cast<double>(1 << (i % 30));
    if (i % 7 == 0) value = static_cast<double>(static_cast<std::int64_t>(bits >> (i % 60)));
    ASSERT_NO_FATAL_FAILURE(expectasprintf(value));
  }
}

TEST(TextNumbers, SpelledLikePrintfAtTheEdges) {
  for (const double value : {0.0,
                             -0.0,
                             1e10,
                             9999999999.0,
                             1e17,
                             123456789012345678.0,
                             0.0001,
                             0.00001,
                             1e-5,
                             5e-324,
                             1.7976931348623157e308,
                             2.2250738585072014e-308,
                             9.9999999999e9,
                             INFINITE,
                             -INFINITE,
                             NOTANUMBER,
                             -NOTANUMBER,
                             0x1p63,
                             -0x1p63,
                             4503599627370496.5})
    expectasprintf(value);
}

TEST(TextNumbers, Integers) {
  EXPECT_EQ(display(scalar(whole(3))), " 3");
  EXPECT_EQ(source(scalar(whole(-12))), " -12");
  EXPECT_EQ(source(scalar(whole(INT64_MIN))), " -9223372036854775808");
  EXPECT_EQ(display(scalar(whole(INT64_MAX))), " 9223372036854775807");
}

TEST(TextNumbers, RealsInBothPrecisions) {
  EXPECT_EQ(display(scalar(real(1.5))), " 1.5");
  EXPECT_EQ(source(scalar(real(1.5))), " 1.5");
  EXPECT_EQ(display(scalar(real(3.141592653589793))), " 3.141592654");
  EXPECT_EQ(source(scalar(real(3.141592653589793))), " 3.1415926535897931");
  EXPECT_EQ(source(scalar(real(1e30))), " 1e+30");
  EXPECT_EQ(display(scalar(real(INFINITE))), " inf");
  EXPECT_EQ(source(scalar(real(-INFINITE))), " -inf");
}

TEST(TextNumbers, ANaNHasNoSign) {
  EXPECT_EQ(source(scalar(real(-NOTANUMBER))), " nan");
  EXPECT_EQ(display(scalar(real(-NOTANUMBER))), " nan");
  EXPECT_EQ(display(scalar(quaternions(1, -NOTANUMBER, 0, NOTANUMBER))), " 1inanj0knan");
  EXPECT_EQ(source(scalar(quaternions(1, -NOTANUMBER, 0, NOTANUMBER))), " 1iNaNj0kNaN");
}

TEST(TextNumbers, WordsInsideANumberHoldNoLetterOfItsParts) {
  EXPECT_EQ(source(scalar(complex(INFINITE, -INFINITE))), " Infi-Inf");
  EXPECT_EQ(display(scalar(complex(INFINITE, -INFINITE))), " infi-inf");
}

TEST(TextNumbers, Truths) {
  EXPECT_EQ(display(scalar(whole(1, forms::BOOLEAN))), " T");
  EXPECT_EQ(source(scalar(whole(0, forms::BOOLEAN))), " F");
}

TEST(TextNumbers, BitsAreNeverSoFewThatTheyReadAsACharacter) {
  EXPECT_EQ(display(scalar(whole(5, forms::BINARY))), " 0#000000101");
  EXPECT_EQ(source(scalar(whole(0, forms::BINARY))), " 0#000000000");
  EXPECT_EQ(source(scalar(whole(1023, forms::BINARY))), " 0#1111111111");
  EXPECT_EQ(source(scalar(whole(-1, forms::BINARY))), " 0#" + std::string(64, '1'));
}

TEST(TextNumbers, NamesAndHiddenConstants) {
  EXPECT_EQ(display(scalar(named(real(3.141592653589793), "#PI"))), " #PI");
  EXPECT_EQ(source(scalar(named(real(-3.141592653589793), "-#PI"))), " -#PI");
  EXPECT_EQ(source(scalar(named(whole(-2, forms::NAMED), "#ACOS"))), " #ACOS");
  Element hidden = whole(1, forms::NAMED);
  hidden.attributes = attributes::SILENT;
  EXPECT_EQ(source(scalar(hidden)), "");
  EXPECT_EQ(display(scalar(hidden)), "");
}

TEST(TextNumbers, TrailingZeroPartsAreDropped) {
  EXPECT_EQ(display(scalar(complex(3, 4))), " 3i4");
  EXPECT_EQ(display(scalar(complex(1, 0))), " 1");
  EXPECT_EQ(source(scalar(complex(-0.5, -2.25))), " -0.5i-2.25");
  EXPECT_EQ(source(scalar(quaternions(1, 2, 3, 4))), " 1i2j3k4");
  EXPECT_EQ(source(scalar(quaternions(1, 2, 3, 0))), " 1i2j3");
  EXPECT_EQ(source(scalar(quaternions(1, 0, 3, 0))), " 1i0j3");
  EXPECT_EQ(source(scalar(quaternions(1, 0, 0, 0))), " 1");
  EXPECT_EQ(source(scalar(octonion({1, 2, 3, 4, 5, 6, 7, 8}))), " 1i2j3k4l5m6n7o8");
  EXPECT_EQ(source(scalar(octonion({1, 0, 0, 0, 5}))), " 1i0j0k0l5");
  EXPECT_EQ(source(scalar(octonion({0, 0, 0, 0, 0, 0, 0, -1}))), " 0i0j0k0l0m0n0o-1");
}

TEST(TextNumbers, PrefixesOfCartesianNumbers) {
  EXPECT_EQ(source(scalar(complex(1, 2, forms::NUMBER))), " #1i2");
  EXPECT_EQ(display(scalar(complex(1, 2, forms::NUMBER))), " 1i2");
  EXPECT_EQ(source(scalar(complex(1, 2, forms::NUMBER, attributes::PREFIX_R))), " #r1i2");
  EXPECT_EQ(source(scalar(complex(1, 2, forms::CARTESIAN, attributes::PREFIX_R))), " r1i2");
  EXPECT_EQ(display(scalar(complex(1, 2, forms::CARTESIAN, attributes::PREFIX_R))), " r1i2");
}

TEST(TextNumbers, NoPrefixBeforeWhatIsOnlyAReal) {
  EXPECT_EQ(source(scalar(complex(1, 0, forms::NUMBER, attributes::PREFIX_R))), " 1");
  EXPECT_EQ(source(scalar(octonion({2}, forms::NUMBER))), " 2");
}

TEST(TextNumbers, PolarNumbersShowTheirFirstAngle) {
  EXPECT_EQ(display(scalar(complex(3, 0, forms::POLAR))), " 3p0");
  EXPECT_EQ(source(scalar(complex(0, 2, forms::POLAR))), " 2p1.5707963267948966");
  EXPECT_EQ(display(scalar(complex(0, 2, forms::POLAR, attributes::DEGREES))), " d2p90");
  EXPECT_EQ(display(scalar(complex(-2, 0, forms::POLAR, attributes::DEGREES | attributes::PREFIX_R))), " dr2p180");
  EXPECT_EQ(source(scalar(complex(0, 2, forms::POLAR, attributes::PREFIX_R))), " r2p1.5707963267948966");
}

TEST(TextNumbers, PolarLettersOfTheHigherNumbers) {
  // The third angle of a quaternion is the arc sine of its last component.
  EXPECT_EQ(display(scalar(quaternions(0, 1, 0, 0, forms::POLAR))), " 1p1.570796327");
  EXPECT_EQ(display(scalar(quaternions(0, 0, 1, 0, forms::POLAR))), " 1p0q1.570796327");
  EXPECT_EQ(display(scalar(quaternions(0, 0, 0, 1, forms::POLAR, attributes::DEGREES))), " d1p0q0r90");
  // Hyperspherical: each angle is a right one until the component that is not 0.
  EXPECT_EQ(display(scalar(octonion({0, 0, 0, 0, 2}, forms::POLAR, attributes::DEGREES))), " d2p90q90r90s90");
  EXPECT_EQ(display(scalar(octonion({0, 0, 0, 0, 0, 0, 0, 2}, forms::POLAR, attributes::DEGREES))),
            " d2p90q90r90s90t90u90v90");
}

// ---- Spaces.

TEST(TextSpaces, Vectors) {
  EXPECT_EQ(display(numbers({1, 2, 3})), " 1 2 3\n");
  EXPECT_EQ(source(numbers({1, 2, 3})), " ( 1 2 3 )");
  EXPECT_EQ(source(numbers({5})), " ( 5 )");
  EXPECT_EQ(display(numbers({5})), " 5\n");
}

TEST(TextSpaces, RowsEndAtEachRunningProduct) {
  EXPECT_EQ(display(numbers({1, 2, 3, 4, 5, 6}, {3, 2})), " 1 2 3\n 4 5 6\n\n");
  EXPECT_EQ(source(numbers({1, 2, 3, 4, 5, 6}, {3, 2})), " ( 1 2 3 4 5 6 )[3 2]");
  EXPECT_EQ(display(numbers({1, 2, 3, 4, 5, 6, 7, 8}, {2, 2, 2})), " 1 2\n 3 4\n\n 5 6\n 7 8\n\n\n");
  EXPECT_EQ(display(numbers({1, 2, 3}, {1, 3})), " 1\n 2\n 3\n\n");
  EXPECT_EQ(display(numbers({1, 2, 3}, {3, 1})), " 1 2 3\n\n");
  EXPECT_EQ(display(numbers({7}, {1, 1, 1})), " 7\n\n\n");
  EXPECT_EQ(source(numbers({7}, {1, 1, 1})), " ( 7 )[1 1 1]");
}

TEST(TextSpaces, Characters) {
  EXPECT_EQ(display(text("hello")), "hello\n");
  EXPECT_EQ(source(text("hello")), " 'hello'");
  EXPECT_EQ(display(scalar(character('a'))), "a");
  EXPECT_EQ(source(scalar(character('a'))), " 'a'");
  EXPECT_EQ(source(text("a")), " 'a'[1]");
  EXPECT_EQ(display(text("a")), "a\n");
}

TEST(TextSpaces, CharacterMatrix) {
  Elements elements;
  for (const char byte : std::string("abcdef")) elements.push_back(character(byte));
  EXPECT_EQ(source(array(elements, {3, 2})), " 'abcdef'[3 2]");
  EXPECT_EQ(display(array(elements, {3, 2})), "abc\ndef\n\n");
}

TEST(TextSpaces, AQuoteIsNotDoubled) {
  EXPECT_EQ(source(text("it's")), " 'it's'");
}

TEST(TextSpaces, BytesThatAStringLosesAreWrittenInBits) {
  EXPECT_EQ(source(text("a\"b")), " 'a`0#00100010`b'");
  EXPECT_EQ(source(text(std::string("a\0b", 3))), " 'a`0#00000000`b'");
  EXPECT_EQ(display(text(std::string("a\0b\"", 4))), std::string("a\0b\"\n", 5));
  EXPECT_EQ(source(text("`0#1`")), " '`0#01100000`0#1`'");
  EXPECT_EQ(source(text("a`b`")), " 'a`b`'");
}

TEST(TextSpaces, CharactersOfForm4) {
  EXPECT_EQ(source(scalar(character('a', forms::BINARY))), " '`0#01100001`'");
  EXPECT_EQ(display(scalar(character('a', forms::BINARY))), "a");
  EXPECT_EQ(source(vector({character('a', forms::BINARY), character('b')})), " '`0#01100001`b'");
}

TEST(TextSpaces, CharactersAmongOthers) {
  EXPECT_EQ(display(vector({whole(1), character('a'), whole(2)})), " 1a 2\n");
  EXPECT_EQ(source(vector({whole(1), character('a'), whole(2)})), " ( 1 `0#01100001` 2 )");
}

TEST(TextSpaces, Unicode) {
  Element e = record(tags::UNICODE, 0);
  e.unicode = 0x3BB;
  EXPECT_EQ(display(scalar(e)), "3BB");
}

TEST(TextSpaces, UnknownTagsAndFillers) {
  Element e = record(9, 0);
  Point p = scalar(e);
  EXPECT_EQ(print(p, false), " ???");
  p.data_pointer->tag = tags::FILLER;
  EXPECT_EQ(print(p, true), "");
  drop(p);
}

TEST(TextSpaces, NestedSpaces) {
  EXPECT_EQ(display(vector({whole(1), enclosed(numbers({2, 3}))})), " 1 2 3\n\n");
  EXPECT_EQ(source(vector({whole(1), enclosed(numbers({2, 3}))})), " ( 1 ( 2 3 ) )");
  EXPECT_EQ(source(vector({enclosed(text("abc")), enclosed(scalar(character('d')))})), " ( 'abc' 'd' )");
  EXPECT_EQ(display(vector({enclosed(text("abc")), enclosed(text("de"))})), "abc\nde\n\n");
  EXPECT_EQ(source(array({enclosed(numbers({1, 2, 3, 4}, {2, 2})), whole(1), whole(2), whole(3)}, {2, 2})),
            " ( ( 1 2 3 4 )[2 2] 1 2 3 )[2 2]");
}

TEST(TextSpaces, ScalarStructures) {
  Point p = vector({enclosed(numbers({1, 2}))});
  p.type = ISSTRUCTURE | ISSCALAR | STRUCTURED;
  EXPECT_EQ(print(p, true), " `( ( 1 2 ) )`");
  EXPECT_EQ(print(p, false), " 1 2\n\n");
  drop(p);
}

TEST(TextSpaces, EmptySpaces) {
  printing = 1;
  EXPECT_EQ(source(empty()), " #NIL");
  EXPECT_EQ(printing, 0);
  EXPECT_EQ(display(empty()), " .");
  Point shapeofscalar = empty();
  shapeofscalar.type = ISEMPTY;
  EXPECT_EQ(source(shapeofscalar), " #NIL");
}

TEST(TextSpaces, EmptySpacesInALiteral) {
  Point characters = empty();
  characters.type |= HASASCII;
  EXPECT_EQ(source(vector({enclosed(empty()), enclosed(characters), whole(1)})), " ( () '' 1 )");
  EXPECT_EQ(display(vector({whole(1), enclosed(empty())})), " 1 .\n");
}

TEST(TextSpaces, FilesShowTheirNameToPeopleOnly) {
  Element e{};
  makehandle(e, stringdup("notes.txt"), nullptr, empty());
  e.form = forms::BINARY;
  e.attributes = attributes::NAMED;
  Point p = scalar(e);
  EXPECT_EQ(print(p, false), " notes.txt");
  EXPECT_EQ(print(p, true), "");
  drop(p);
}

TEST(TextSpaces, FlagsThatClaimTooMuchOrTooLittle) {
  Point collected = vector({character('a'), character('b')});
  collected.type = ISVECTOR | 1;  // as COLLECT leaves it
  EXPECT_EQ(print(collected, true), " 'ab'");
  collected.data_pointer[1] = whole(3);
  EXPECT_EQ(print(collected, true), " ( `0#01100001` 3 )");
  drop(collected);
}

TEST(TextSpaces, AThousandDeepAndMore) {
  constexpr int DEPTH = 5000;
  Point p = numbers({1});
  for (int i = 0; i < DEPTH; ++i) p = vector({enclosed(p)});
  const std::string text = print(p, true);
  EXPECT_EQ(text.size(), 2 * (DEPTH + 1) + 2 + 2 * (DEPTH + 1u));
  EXPECT_EQ(print(p, false), " 1" + std::string(DEPTH + 1, '\n'));
  drop(p);
}

TEST(TextSpaces, MoreThanTheBufferHolds) {
  Elements elements;
  std::string expected = " (";
  for (int i = 0; i < 100000; ++i) {
    elements.push_back(whole(i));
    expected += " " + std::to_string(i);
  }
  EXPECT_EQ(source(vector(elements)), expected + " )");
  const std::string characters(printer::BUFFER_BYTES * 3 + 17, 'x');
  EXPECT_EQ(source(text(characters)), " '" + characters + "'");
}

// ---- What printing changes.

TEST(TextRetagging, AWholeRealScalarBecomesAnInteger) {
  Point p = scalar(real(12345678901.0));
  EXPECT_EQ(print(p, false), " 12345678901");
  EXPECT_EQ(p.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(p.data_pointer->integer, 12345678901);
  EXPECT_EQ(p.type, ISSCALAR | HASINTEGER);
  drop(p);
}

TEST(TextRetagging, SoDoAllHoldersOfTheBlock) {
  Point p = scalar(real(-2)), other = p;
  referencepoint(&other);
  print(p, true);
  EXPECT_EQ(other.data_pointer->tag, tags::INTEGER);
  EXPECT_EQ(other.data_pointer->integer, -2);
  drop(p);
  drop(other);
}

TEST(TextRetagging, NotWhatDoesNotFitOrHasANameOrIsHidden) {
  for (const double value : {9.223372036854775808e18, -9.223372036854775808e18, INFINITE, NOTANUMBER, 0.5}) {
    Point p = scalar(real(value));
    print(p, true);
    EXPECT_EQ(p.data_pointer->tag, tags::REAL);
    EXPECT_EQ(p.type, ISSCALAR | HASREAL);
    drop(p);
  }
  Point p = scalar(named(real(2), "#TWO"));
  EXPECT_EQ(print(p, true), " #TWO");
  EXPECT_EQ(p.data_pointer->tag, tags::REAL);
  drop(p);
}

TEST(TextRetagging, AUniformVectorKeepsItsReals) {
  Point p = vector({real(1.5), real(2), real(12345678901.0)});
  EXPECT_EQ(print(p, false), " 1.5 2 1.23456789e+10\n");
  EXPECT_EQ(p.data_pointer[1].tag, tags::REAL);
  EXPECT_EQ(p.type, ISVECTOR | HASREAL);
  drop(p);
}

TEST(TextRetagging, AMixedVectorDoesNot) {
  Point p = vector({character('a'), real(1.5), real(12345678901.0), complex(2, 0), complex(2.5, 0),
                    complex(3, 0, forms::POLAR), complex(1, 1)});
  EXPECT_EQ(print(p, false), "a 1.5 12345678901 2 2.5 3p0 1i1\n");
  EXPECT_EQ(p.data_pointer[1].tag, tags::REAL);
  EXPECT_EQ(p.data_pointer[2].tag, tags::INTEGER);
  EXPECT_EQ(p.data_pointer[3].tag, tags::INTEGER);
  EXPECT_EQ(p.data_pointer[3].integer, 2);
  EXPECT_EQ(p.data_pointer[4].tag, tags::REAL);
  EXPECT_EQ(p.data_pointer[4].real, 2.5);
  EXPECT_EQ(p.data_pointer[5].tag, tags::COMPLEX);
  EXPECT_EQ(p.data_pointer[6].tag, tags::COMPLEX);
  EXPECT_EQ(p.type, ISVECTOR | COMPLEXED | HASASCII | HASREAL | HASINTEGER | HASCOMPLEX);
  drop(p);
}

TEST(TextRetagging, NorDoesAStructuredOne) {
  Point p = vector({real(4), enclosed(numbers({1, 2}))});
  EXPECT_EQ(print(p, true), " ( 4 ( 1 2 ) )");
  EXPECT_EQ(p.data_pointer[0].tag, tags::INTEGER);
  EXPECT_EQ(p.type, ISVECTOR | HASREAL | HASINTEGER | STRUCTURED | ISSTRUCTURE);
  drop(p);
}

TEST(TextRetagging, ComplexedIsCountedAnew) {
  Point p = vector({whole(1), real(1.5)});
  p.type &= ~COMPLEXED;
  print(p, false);
  EXPECT_NE(p.type & COMPLEXED, 0u);
  drop(p);
  Point one = vector({real(1.5)});
  one.type |= HASINTEGER;
  print(one, false);
  EXPECT_EQ(one.type & COMPLEXED, 0u);
  drop(one);
}

TEST(TextRetagging, AWordWithoutKindsGainsNone) {
  Point p = vector({real(4), enclosed(numbers({1, 2}))});
  p.type = ISVECTOR | 2;  // as COLLECT leaves it: who releases it must walk the records
  print(p, true);
  EXPECT_EQ(p.type & ELEMENT_BITS, 0u);
  drop(p);
}

}  // namespace
