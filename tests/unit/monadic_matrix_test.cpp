// Every monadic scalar instruction over every kind of element and every shape: kinds of the results or the message,
// shape, flags, reuse of blocks, and that who shares an operand sees nothing of it.
#include <cctype>

#include "monadics.h"

namespace {

using namespace points;
using monadics::Bank;
using monadics::Member;

constexpr std::int32_t KINDS[] = {tags::ASCII,   tags::UNICODE,    tags::INTEGER, tags::REAL,
                                  tags::COMPLEX, tags::QUATERNION, tags::OCTONION};

// By instruction, in the order of KINDS: a letter for what comes out (i t r c q o: integer, truth, real and so on; a u:
// character), or x for message 994, ! for 164, # for 811. Of the integer 2, the real 1.5 and others that are no truth.
struct Row {
  const char *name, *results;
};
constexpr Row ROWS[] = {
    {"CONJUGATE", "xxircqo"},   {"NEGATIVE", "!!ircqo"},  {"SIGNUM", "xxircqo"},    {"DIRECTION", "xxircqo"},
    {"RECIPROCAL", "xxrrcqo"},  {"MAGNITUDE", "xxirrrr"}, {"BINARY", "auircqo"},    {"NUMBER", "##ircqo"},
    {"POLAR", "xxircqo"},       {"DEG", "xxrrcqo"},       {"RAD", "xxrrcqo"},       {"CARTESIAN", "xxircqo"},
    {"FLOOR", "xxiicqo"},       {"CEILING", "xxiicqo"},   {"TRUNCATE", "xxiicqo"},  {"EXPONENTIAL", "xxrrcqo"},
    {"NATURALLOG", "xxrrcqo"},  {"PITIMES", "xxrrcqo"},   {"FACTORIAL", "xxircqo"}, {"NOT", "!!trcqo"},
    {"BOOLEAN", "!!ttcqo"},     {"LOGICAL", "!!trcqo"},   {"PROBABLY", "!!ttcqo"},  {"CONTRADICTION", "!!rrrrr"},
    {"ISBOOLEAN", "ttttttt"},   {"ISLOGICAL", "!!ttttt"}, {"ISBINARY", "ttttttt"},  {"ISNUMBER", "ttttttt"},
    {"ISCARTESIAN", "ttttttt"}, {"ISPOLAR", "ttttttt"},   {"ROLL", "xxirxxx"},      {"RANDOM", "xxrrcqo"},
    {"POW2", "xxrrcqo"},        {"POWE", "xxrrcqo"},      {"POW10", "xxrrcqo"},     {"LD", "xxrrcxx"},
    {"LOG10", "xxrrcxx"},
};

const char *rowof(const std::string &name) {
  for (const Row &row : ROWS)
    if (name == row.name) return row.results;
  return nullptr;
}

Element make(std::int32_t tag) {
  switch (tag) {
    case tags::ASCII:
      return character('a');
    case tags::UNICODE: {
      Element e = record(tags::UNICODE, 0);
      e.unicode = 0x3C0;
      return e;
    }
    case tags::INTEGER:
      return whole(2);
    case tags::REAL:
      return real(1.5);
    case tags::COMPLEX:
      return complex(2.5, -1.25);
    case tags::QUATERNION:
      return quaternions(2.5, -1.25, 0.5, 3);
    default:
      return octonion({2.5, -1.25, 0.5, 3, 1, 2, -3, 0.125});
  }
}

int messageof(char letter) {
  return letter == 'x' ? 994 : letter == '!' ? 164 : letter == '#' ? 811 : 0;
}
std::int32_t tagof(char letter) {
  switch (letter) {
    case 'a':
      return tags::ASCII;
    case 'u':
      return tags::UNICODE;
    case 'i':
    case 't':
      return tags::INTEGER;
    case 'r':
      return tags::REAL;
    case 'c':
      return tags::COMPLEX;
    case 'q':
      return tags::QUATERNION;
    default:
      return tags::OCTONION;
  }
}

bool sameparts(const Element &a, const Element &b) {
  if (a.tag != b.tag || a.form != b.form || a.attributes != b.attributes) return false;
  switch (a.tag) {
    case tags::COMPLEX:
      return std::memcmp(&a.complex, &b.complex, sizeof a.complex) == 0;
    case tags::QUATERNION:
      return std::memcmp(&a.name, &b.name, 4 * sizeof(double)) == 0;
    case tags::OCTONION:
      return std::memcmp(a.octonion, b.octonion, sizeof(Octonion)) == 0;
    default:
      return a.integer == b.integer;
  }
}

using MonadicMatrix = Lifetimes;

// The table of this test names every instruction of the family.
TEST_F(MonadicMatrix, NamesEveryInstruction) {
  for (const Member &m : monadics::members()) {
    EXPECT_NE(rowof(m.name), nullptr) << m.name;
  }
  EXPECT_EQ(monadics::members().size(), std::size(ROWS));
}

enum class Shape { SCALAR, ONE, VECTOR, ARRAY };

Point shaped(Shape shape, std::int32_t tag) {
  switch (shape) {
    case Shape::SCALAR:
      return scalar(make(tag));
    case Shape::ONE:
      return vector({make(tag)});
    case Shape::VECTOR:
      return vector({make(tag), make(tag), make(tag)});
    default:
      return array({make(tag), make(tag), make(tag), make(tag), make(tag), make(tag)}, {3, 2});
  }
}

void expectresult(const Point &p, const Point &operand, char letter, bool shared) {
  ASSERT_EQ(p.rank, operand.rank);
  ASSERT_EQ(p.elements, operand.elements);
  EXPECT_EQ(p.shape_pointer, operand.shape_pointer);
  if (p.rank > 0) EXPECT_EQ(referencecount(p.shape_pointer), shared ? 2 : 1);
  EXPECT_EQ(p.depth, operand.depth);
  EXPECT_EQ(p.type & ~ISPROBABLE, (operand.type & RANK_BITS) | kindbit(tagof(letter)));
  for (std::uint32_t i = 0; i < p.elements; ++i) {
    EXPECT_EQ(p.data_pointer[i].tag, tagof(letter));
    if (letter == 't') {
      EXPECT_EQ(p.data_pointer[i].form, forms::BOOLEAN);
      EXPECT_TRUE(p.data_pointer[i].integer == 0 || p.data_pointer[i].integer == 1);
    }
    EXPECT_EQ(p.data_pointer[i].attributes & (attributes::NAMED | attributes::SILENT), 0);
  }
}

// A fresh operand is written over, a shared one is not; a failure leaves both.
void check(const Member &m, Shape shape, std::int32_t tag, char letter, bool shared) {
  SCOPED_TRACE(std::string(m.name) + " tag " + std::to_string(tag) + " shape " +
               std::to_string(static_cast<int>(shape)) + (shared ? " shared" : ""));
  Bank bank(0, 1);
  Point operand = shaped(shape, tag), p = operand;
  Point twin = shaped(shape, tag);
  if (shared) referencepoint(&p);
  ASSERT_EQ(monadics::attempt(m, p, bank), messageof(letter));
  if (messageof(letter) != 0) {
    EXPECT_EQ(std::memcmp(&p, &operand, sizeof p), 0);
  } else {
    expectresult(p, operand, letter, shared);
    // FACTORIAL may find out late that it fails, and never writes over its operand.
    EXPECT_EQ(p.data_pointer == operand.data_pointer,
              !shared && (std::strcmp(m.name, "FACTORIAL") != 0 || (shape == Shape::SCALAR && tag < tags::COMPLEX)));
  }
  if (shared || messageof(letter) != 0)
    for (std::uint32_t i = 0; i < operand.elements; ++i)
      EXPECT_TRUE(sameparts(operand.data_pointer[i], twin.data_pointer[i]));
  drop(twin);
  drop(p);
  if (shared) drop(operand);
}

TEST_F(MonadicMatrix, KindsByShapes) {
  for (const Member &m : monadics::members()) {
    const char *row = rowof(m.name);
    for (std::size_t k = 0; k < std::size(KINDS); ++k)
      for (const Shape shape : {Shape::SCALAR, Shape::ONE, Shape::VECTOR, Shape::ARRAY})
        for (const bool shared : {false, true}) check(m, shape, KINDS[k], row[k], shared);
  }
}

// Mixed: each element as it comes alone, and the first failure counts.
TEST_F(MonadicMatrix, MixedElements) {
  for (const Member &m : monadics::members()) {
    const char *row = rowof(m.name);
    for (std::size_t k = 0; k < std::size(KINDS); ++k)
      for (const bool shared : {false, true}) {
        SCOPED_TRACE(std::string(m.name) + " with tag " + std::to_string(KINDS[k]));
        Bank bank(0, 1);
        Point p = vector({whole(2), real(1.5), make(KINDS[k]), whole(2)}), other = p;
        if (shared) referencepoint(&p);
        ASSERT_EQ(monadics::attempt(m, p, bank), messageof(row[k]));
        if (messageof(row[k]) == 0) {
          EXPECT_EQ(p.data_pointer[0].tag, tagof(row[2]));
          EXPECT_EQ(p.data_pointer[1].tag, tagof(row[3]));
          EXPECT_EQ(p.data_pointer[2].tag, tagof(row[k]));
          const std::uint32_t kinds = kindbit(tagof(row[2])) | kindbit(tagof(row[3])) | kindbit(tagof(row[k]));
          EXPECT_EQ(p.type & ~ISPROBABLE, ISVECTOR | kinds | complexed(kinds));
        } else {
          EXPECT_EQ(p.data_pointer, other.data_pointer);
          EXPECT_EQ(p.data_pointer[0].integer, 2);
          EXPECT_EQ(p.data_pointer[1].real, 1.5);
        }
        if (shared) {
          EXPECT_EQ(other.data_pointer[0].integer, 2);
          EXPECT_EQ(other.data_pointer[1].real, 1.5);
          drop(other);
        }
        drop(p);
      }
  }
}

// Members, and members of members, ten levels deep, fail or are worked as they would be alone.
TEST_F(MonadicMatrix, EnclosedElements) {
  constexpr int LEVELS = 10;
  for (const Member &m : monadics::members()) {
    const char *row = rowof(m.name);
    for (std::size_t k = 0; k < std::size(KINDS); ++k)
      for (const bool shared : {false, true}) {
        SCOPED_TRACE(std::string(m.name) + " with tag " + std::to_string(KINDS[k]));
        Bank bank(0, 1);
        Point p = vector({make(KINDS[k]), make(KINDS[k])});
        for (int level = 0; level < LEVELS; ++level) p = vector({whole(2), enclosed(p), real(1.5)});
        Point other = p;
        if (shared) referencepoint(&p);
        const std::string text = print(p, true);
        ASSERT_EQ(monadics::attempt(m, p, bank), messageof(row[k]));
        if (messageof(row[k]) != 0) {
          EXPECT_EQ(print(p, true), text);
        } else {
          EXPECT_EQ(p.depth, other.depth);
          EXPECT_NE(p.type & STRUCTURED, 0U);
          const Point *inner = &p;
          for (int level = 0; level < LEVELS; ++level) {
            ASSERT_EQ(inner->data_pointer[1].tag, tags::SUBARRAY);
            EXPECT_EQ(inner->data_pointer[0].tag, tagof(row[2]));
            inner = inner->data_pointer[1].subarray;
          }
          EXPECT_EQ(inner->data_pointer[1].tag, tagof(row[k]));
          EXPECT_EQ(inner->type & ~ISPROBABLE, ISVECTOR | kindbit(tagof(row[k])));
        }
        if (shared) EXPECT_EQ(print(other, true), text);
        drop(p);
        if (shared) drop(other);
      }
  }
}

// What no core takes anywhere, and what is no space.
TEST_F(MonadicMatrix, OtherElementsAreRefused) {
  for (const Member &m : monadics::members()) {
    Bank bank(0, 1);
    for (Point p : {vector({whole(1), record(tags::FILLER, 0)}), function({}), variable("x", 0)}) {
      const Point was = p;
      EXPECT_EQ(monadics::attempt(m, p, bank), 994) << m.name;
      EXPECT_EQ(std::memcmp(&p, &was, sizeof p), 0) << m.name;
      drop(p);
    }
  }
}

TEST_F(MonadicMatrix, EmptyOperandsStay) {
  for (const Member &m : monadics::members()) {
    Bank bank(0, 1);
    for (Point p : {empty(), text(""), array({}, {0, 3})}) {
      const Point was = p;
      EXPECT_EQ(monadics::attempt(m, p, bank), 0) << m.name;
      EXPECT_EQ(std::memcmp(&p, &was, sizeof p), 0) << m.name;
      drop(p);
    }
  }
}

// A flag word that promises what the records do not keep costs nothing but time, as long as a core takes them.
TEST_F(MonadicMatrix, StaleFlags) {
  Bank bank(0, 1);
  Point p = vector({whole(2), octonion({1, 2}), enclosed(numbers({3, 4})), real(0.5), complex(1, 2)});
  p.type = ISVECTOR | HASINTEGER;
  ASSERT_EQ(monadics::attempt(monadics::member("NEGATIVE"), p, bank), 0);
  EXPECT_EQ(p.type, ISVECTOR | STRUCTURED | HASINTEGER | HASREAL | HASCOMPLEX | HASOCTONION | COMPLEXED);
  EXPECT_EQ(source(p), " ( -2 -1i-2 ( -3 -4 ) -0.5 -1i-2 )");
}

// Octonions whose blocks somebody else holds are not written over, though the records may be.
TEST_F(MonadicMatrix, SharedOctonions) {
  Bank bank(0, 1);
  const Element mine = octonion({1, 2});
  reference(mine.octonion);
  Point p = vector({mine, octonion({3})});
  ASSERT_EQ(monadics::attempt(monadics::member("NEGATIVE"), p, bank), 0);
  EXPECT_EQ(mine.octonion->part[0], 1);
  EXPECT_EQ(p.data_pointer[0].octonion->part[1], -2);
  EXPECT_EQ(referencecount(mine.octonion), 1);
  release(mine.octonion);
  drop(p);
}

// The counted name of a scalar counts its holders; it goes with the value.
TEST_F(MonadicMatrix, NamesGo) {
  for (const Member &m : monadics::members()) {
    Bank bank(0, 1);
    Point p = scalar(named(whole(1), "one"));
    ASSERT_EQ(monadics::attempt(m, p, bank), 0) << m.name;
    EXPECT_EQ(p.data_pointer->attributes, 0) << m.name;
    drop(p);
  }
}

TEST_F(MonadicMatrix, CountsElements) {
  Bank bank(0, 1);
  Point p = vector({whole(1), enclosed(numbers({1, 2, 3})), whole(2)});
  operations = 0;
  ASSERT_EQ(monadics::attempt(monadics::member("NEGATIVE"), p, bank), 0);
  EXPECT_EQ(operations, 6);
  drop(p);
  p = scalar(real(0.5));
  ASSERT_EQ(monadics::attempt(monadics::member("NEGATIVE"), p, bank), 0);
  EXPECT_EQ(operations, 7);
  EXPECT_GE(flopos, 1);
  drop(p);
}

}  // namespace
