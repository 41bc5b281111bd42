// What is printed in source form reads back as what it was: values by the thousand, and every word that a function can
// hold.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "frontend/assembly.h"
#include "frontend/keywords.h"
#include "points.h"
#include "spaces/hypercomplex.h"

namespace {

using namespace points;

// ---- The reader.

struct Reader {
  Entry *table = makehashtab();
  Context *chain = makemeaning(table);
  std::vector<Point> programme = std::vector<Point>(PROGRAMME_POINTS);

  Reader() { stepping = 0; }
  ~Reader() {
    release(chain);
    releasetable(table);
  }
  Reader(const Reader &) = delete;
  Reader &operator=(const Reader &) = delete;

  // The Points of a text, without the END. What the scanner echoes is not looked at.
  std::vector<Point> read(const std::string &text) {
    const std::string ended = text + " .";
    const char *position = ended.c_str();
    programme[0] = {};
    testing::internal::CaptureStdout();
    const std::int64_t count = fill(programme.data(), chain, nullptr, nullptr, &position, SKIPPED);
    testing::internal::GetCapturedStdout();
    return {programme.begin(), programme.begin() + (count > 0 ? count - 1 : 0)};
  }
};

// ---- Equality, as far as a text can carry it.

testing::AssertionResult same(const Point &a, const Point &b, double tolerance);

testing::AssertionResult differ(const char *what) {
  return testing::AssertionFailure() << what;
}

bool samereal(double a, double b, double tolerance) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return a == b || std::fabs(a - b) <= tolerance * std::max(std::fabs(a), 1.0);
}

std::vector<double> partsof(const Element &e) {
  switch (e.tag) {
    case tags::REAL:
      return {e.real};
    case tags::COMPLEX:
      return {e.complex.re, e.complex.im};
    case tags::QUATERNION: {
      const Quaternion q = quaternion(e);
      return {q.part, q.part + 4};
    }
    case tags::OCTONION:
      return {e.octonion->part, e.octonion->part + 8};
    default:
      return {};
  }
}

testing::AssertionResult same(const Element &a, const Element &b, double tolerance) {
  if (a.tag != b.tag) return differ("tags") << ' ' << a.tag << ' ' << b.tag;
  if (a.tag == tags::SUBARRAY) return same(*a.subarray, *b.subarray, tolerance);
  if (a.tag == tags::ASCII) return a.ascii == b.ascii ? testing::AssertionSuccess() : differ("characters");
  if (a.form != b.form) return differ("forms") << ' ' << a.form << ' ' << b.form;
  if (a.tag == tags::INTEGER) return a.integer == b.integer ? testing::AssertionSuccess() : differ("integers");
  if (a.tag != tags::REAL && a.attributes != b.attributes) return differ("attributes");
  const std::vector<double> left = partsof(a), right = partsof(b);
  for (std::size_t k = 0; k < left.size(); ++k)
    if (!samereal(left[k], right[k], a.form == forms::POLAR ? tolerance : 0))
      return differ("part ") << k << ": " << left[k] << ' ' << right[k];
  return testing::AssertionSuccess();
}

constexpr std::uint32_t COMPARED = KINDBITS | COMPLEXED | STRUCTURED | RANKBITS;

// The depth that a literal inside another gets counts the deepest place of both; only the outermost is as it was.
testing::AssertionResult same(const Point &a, const Point &b, double tolerance) {
  if (a.elements != b.elements) return differ("elements") << ' ' << a.elements << ' ' << b.elements;
  if (a.elements == 0) return testing::AssertionSuccess();
  if (a.rank != b.rank) return differ("ranks") << ' ' << a.rank << ' ' << b.rank;
  if ((a.type & COMPARED) != (b.type & COMPARED)) return differ("types") << std::hex << ' ' << a.type << ' ' << b.type;
  for (std::int32_t k = 0; k < a.rank; ++k)
    if (a.shape_pointer[k].integer != b.shape_pointer[k].integer) return differ("shapes");
  for (std::uint32_t i = 0; i < a.elements; ++i)
    if (const auto result = same(a.data_pointer[i], b.data_pointer[i], tolerance); !result)
      return differ("element ") << i << ": " << result.message();
  return testing::AssertionSuccess();
}

testing::AssertionResult readsback(Reader &reader, Point &p, double tolerance = 0) {
  const std::string text = print(p, true);
  std::vector<Point> read = reader.read(text);
  testing::AssertionResult result = read.size() == 1 ? same(p, read[0], tolerance) : differ("not one Point");
  if (result && p.elements > 0 && p.depth != read[0].depth)
    result = differ("depths") << ' ' << p.depth << ' ' << read[0].depth;
  for (Point &point : read) drop(point);
  return result << "\n" << text.substr(0, 2000);
}

// ---- Values at random, of what a text carries whole.

struct Maker {
  std::mt19937_64 random;

  std::uint64_t below(std::uint64_t limit) { return random() % limit; }
  bool once(std::uint64_t in) { return below(in) == 0; }

  // Never whole: that would come back as an integer.
  double fraction() {
    for (;;) {
      double value;
      const std::uint64_t bits = random();
      std::memcpy(&value, &bits, sizeof value);
      if (once(2)) value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(bits)), -40);
      if (std::isnan(value) || std::isinf(value) || (std::fabs(value) < 1e17 && value != std::trunc(value)))
        return value;
    }
  }
  // Any value that the spelling of the parts of a number carries.
  double part() { return once(3) ? static_cast<double>(static_cast<std::int64_t>(below(100)) - 50) : fraction(); }
  double lastpart() {
    for (;;)
      if (const double value = part(); value != 0) return value;
  }
  double angle() { return static_cast<double>(below(1000000) + 1) / 1000003; }

  std::uint16_t prefixed() { return once(3) ? attributes::PREFIX_R : std::uint16_t{0}; }
  std::uint16_t form() { return once(2) ? forms::CARTESIAN : forms::NUMBER; }

  // Polar components for which every angle comes back: the arc sine takes a component as it stands.
  Element polar(int parts) {
    double angles[8] = {};
    angles[0] = angle();
    for (int k = 1; k < parts; ++k) angles[k] = angle();
    const std::uint16_t more = static_cast<std::uint16_t>(prefixed() | (once(2) ? attributes::DEGREES : 0));
    double out[8] = {};
    if (parts == 2) {
      cartesiancomplex(out, angles);
      return complex(out[0], out[1], forms::POLAR, more);
    }
    cartesianocto(out, angles);
    return octonion({out[0], out[1], out[2], out[3], out[4], out[5], out[6], out[7]}, forms::POLAR, more);
  }

  Element integer() {
    // All integers are read through a double.
    const std::int64_t value = static_cast<std::int64_t>(random()) >> (11 + below(50));
    switch (below(4)) {
      case 0:
        return whole(value & 1, forms::BOOLEAN);
      case 1:
        return whole(static_cast<std::int64_t>(random()) >> below(64), forms::BINARY);
      default:
        return whole(value);
    }
  }

  Element element(std::int32_t tag) {
    switch (tag) {
      case tags::ASCII: {
        const auto byte = static_cast<char>(below(256));
        return character(byte == '\'' ? 'q' : byte, once(8) ? forms::BINARY : std::uint16_t{0});
      }
      case tags::INTEGER:
        return integer();
      case tags::REAL:
        return real(fraction());
      case tags::COMPLEX:
        return once(4) ? polar(2) : complex(part(), lastpart(), form(), prefixed());
      case tags::QUATERNION:
        return quaternions(part(), part(), part(), lastpart(), form(), prefixed());
      default:
        if (once(4)) return polar(8);
        return octonion({part(), part(), part(), part(), part(), part(), part(), lastpart()}, form(), prefixed());
    }
  }

  Point space(int depth) {
    const auto rank = below(5);
    const auto tag = static_cast<std::int32_t>(std::vector{2, 2, 4, 4, 5, 6, 7, 8}[below(8)]);
    if (rank == 0 && (depth == 0 || tag == tags::ASCII)) return scalar(element(tag));
    std::vector<std::int64_t> shape;
    std::size_t count = 1;
    for (std::uint64_t k = 0; k < std::max<std::uint64_t>(rank, 1); ++k) {
      shape.push_back(static_cast<std::int64_t>(below(rank == 1 ? 12 : 4)));
      count *= static_cast<std::size_t>(shape.back());
    }
    if (count == 0) return empty();
    Elements elements;
    const bool mixed = once(3);
    for (std::size_t i = 0; i < count; ++i) {
      if (depth < 4 && once(6))
        elements.push_back(enclosed(space(depth + 1)));
      else
        elements.push_back(element(mixed ? static_cast<std::int32_t>(std::vector{2, 4, 5, 6, 7, 8}[below(6)]) : tag));
    }
    return array(elements, shape);
  }
};

// A scalar that stands alone among others is one of them; only a character has a literal of its own.
bool hasbarescalar(const Point &p) {
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    if (p.data_pointer[i].tag != tags::SUBARRAY) continue;
    const Point &inner = *p.data_pointer[i].subarray;
    if ((inner.rank == 0 && inner.data_pointer->tag != tags::ASCII) || hasbarescalar(inner)) return true;
  }
  return false;
}

TEST(RoundTrip, ValuesAtRandom) {
  Reader reader;
  Maker maker{std::mt19937_64(20240611)};
  int values = 0;
  while (values < 4000) {
    Point p = maker.space(0);
    if (!hasbarescalar(p)) {
      ++values;
      ASSERT_TRUE(readsback(reader, p, 1e-13));
    }
    drop(p);
  }
}

TEST(RoundTrip, ScalarsAtRandom) {
  Reader reader;
  Maker maker{std::mt19937_64(99)};
  for (int i = 0; i < 6000; ++i) {
    Point p = scalar(maker.element(static_cast<std::int32_t>(std::vector{2, 4, 5, 6, 7, 8}[i % 6])));
    ASSERT_TRUE(readsback(reader, p, 1e-13));
    drop(p);
  }
}

TEST(RoundTrip, PolarQuaternionsKeepTheirForm) {
  Reader reader;
  Maker maker{std::mt19937_64(4)};
  for (int i = 0; i < 500; ++i) {
    // Of length 1 and without a last component, the arc sine of the third is its angle.
    const double in[4] = {1, maker.angle() * 3, maker.angle(), 0};
    double out[4];
    cartesianquat(out, in);
    Point p = scalar(quaternions(out[0], out[1], out[2], out[3], forms::POLAR));
    ASSERT_TRUE(readsback(reader, p, 1e-13));
    drop(p);
  }
}

// Components, once read, are cartesian.
TEST(RoundTrip, PolarNumbersKeepTheirValueWhereTheAnglesDoNot) {
  Reader reader;
  const Elements elements = {quaternions(1, 2, 3, 4, forms::POLAR, attributes::DEGREES),
                             quaternions(0.25, 0.5, 0.125, 0.375, forms::POLAR), complex(1e-20, 1e-20, forms::POLAR),
                             octonion({3, 1, 2}, forms::POLAR)};
  for (const Element &e : elements) {
    Point p = scalar(e);
    std::vector<Point> read = reader.read(print(p, true));
    ASSERT_EQ(read.size(), 1u);
    std::vector<double> parts = partsof(*read[0].data_pointer);
    parts.resize(partsof(e).size());  // zeros at the end were dropped
    EXPECT_EQ(parts, partsof(e));
    EXPECT_EQ(read[0].data_pointer->form, forms::CARTESIAN);
    drop(read[0]);
    drop(p);
  }
}

TEST(RoundTrip, NotANumberMarksAShorterTruth) {
  Reader reader;
  const double none = std::numeric_limits<double>::quiet_NaN(), infinite = std::numeric_limits<double>::infinity();
  const Elements elements = {quaternions(0.5, 0.25, 0.25, none),
                             complex(none, none),
                             complex(infinite, -infinite),
                             complex(-infinite, none),
                             octonion({1, 0, 0, 0, 1, none, none, none}),
                             octonion({infinite, none, infinite, none, infinite, none, -infinite, none}),
                             octonion({none, -infinite, 0, 0, 0, 0, 0, -none}),
                             real(none),
                             real(-none),
                             real(infinite)};
  for (const Element &e : elements) {
    Point p = scalar(e);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

TEST(RoundTrip, EveryByteInAString) {
  Reader reader;
  for (const std::size_t length : {2u, 3u, 7u}) {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
      if (byte != '\'') bytes += std::string(length, static_cast<char>(byte));
    Point p = text(bytes);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

TEST(RoundTrip, WhatLooksLikeACharacterInBits) {
  Reader reader;
  for (const char *bytes : {"`0#1`", "``0#1`", "`0#`", "`0#2`", "a`0#101`b", "`0", "0#1`", "`0#111111111111`"}) {
    Point p = text(bytes);
    EXPECT_TRUE(readsback(reader, p));
    drop(p);
  }
}

// ---- The oddities that are kept.

Point readone(Reader &reader, const std::string &text) {
  std::vector<Point> read = reader.read(text);
  EXPECT_EQ(read.size(), 1u) << text;
  return read.at(0);
}

TEST(RoundTripOddities, AWholeRealComesBackAsAnInteger) {
  Reader reader;
  Point p = readone(reader, source(vector({real(1.5), real(2)})));
  EXPECT_EQ(p.data_pointer[0].tag, tags::REAL);
  EXPECT_EQ(p.data_pointer[1].tag, tags::INTEGER);
  drop(p);
}

TEST(RoundTripOddities, DroppedZeroPartsLowerTheType) {
  Reader reader;
  Point p = readone(reader, source(scalar(quaternions(1, 2, 0, 0))));
  EXPECT_EQ(p.data_pointer->tag, tags::COMPLEX);
  drop(p);
  p = readone(reader, source(scalar(complex(1, 0))));
  EXPECT_EQ(p.data_pointer->tag, tags::INTEGER);
  drop(p);
}

TEST(RoundTripOddities, AnEmptySpaceComesBackAsNil) {
  Reader reader;
  Point characters = text("");
  Point p = readone(reader, source(characters));
  EXPECT_EQ(p.elements, 0u);
  EXPECT_EQ(p.type & HASASCII, 0u);
  drop(p);
}

// ---- Functions.

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
  if (a.rank <= ranks::LOCALADDRESS && a.data_pointer->integer != b.data_pointer->integer) return differ("positions");
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
      if (row.kind == KeywordKind::BREAK) continue;  // drops the line that it stands in
      const std::string more = row.kind == KeywordKind::MASKFORM ? " MASK" : "";
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
  expectreadsback(reader, ": \2vector\3 \2-x\3 \0021st\3 \2info\3 \2a!b\3 @a!b @! @+ ;");
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
