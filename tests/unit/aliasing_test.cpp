// A value that somebody else sees too never changes under an instruction: each that writes in place, on a pushed copy,
// on what only shares members with it, and on a member that was taken out. And the result is that of a value which
// nobody else sees.
#include <gtest/gtest.h>

#include "applying.h"
#include "frontend/contexts.h"
#include "spaces/copies.h"
#include "spaces/symbols.h"

using namespace morvik;

namespace {

using namespace applying;

// Values whose members are of every kind that an instruction writes over: small integers for ENASCII, characters, whole
// reals and short vectors for ENCAPSULATE, octonions for all that reuse their blocks.
const std::vector<Point (*)()> VALUES = {
    [] {
      return vector({enclosed(numbers({65, 66})), enclosed(numbers({67, 68, 69}))});
    },
    [] {
      return vector({enclosed(vector({enclosed(numbers({65, 66})), whole(70)})), whole(71)});
    },
    [] {
      return vector({enclosed(vector({real(2)})), enclosed(text("ab"))});
    },
    [] {
      return vector({octonion({1, 2, 3}), octonion({4, 5})});
    },
    [] {
      return vector({enclosed(vector({octonion({1, 2}), octonion({3})})), octonion({4, 5})});
    },
    [] { return vector({enclosed(vector({enclosed(vector({octonion({7})}))}))}); },
    [] {
      return vector({enclosed(scalar(whole(65))), enclosed(numbers({1, 2, 3, 4}, {2, 2}))});
    },
    [] {
      return array({enclosed(numbers({65, 66})), whole(1), real(2), enclosed(text("xy"))}, {2, 2});
    },
    [] {
      return scalar(octonion({1, 2, 3, 4}));
    },
    [] { return vector({enclosed(numbers({66}))}); },
    [] {
      return numbers({65, 66, 67, 68}, {2, 2});
    },
};

// How an instruction comes by its operand. What is held is never the stack's alone.
Point itself(const Point &held) {
  referencepoint(&held);
  return held;
}
Point withthesamemembers(const Point &held) {
  Point copy = itself(held);
  makeprivate(copy);
  return copy;
}
Point enclosedanew(const Point &held) {
  return vector({enclosed(itself(held)), whole(1)});
}
Point enclosedandshared(const Point &held) {
  return vector({enclosed(withthesamemembers(held))});
}
Point firstmember(const Point &held) {
  const Element &first = *held.data_pointer;
  return itself(first.tag == tags::SUBARRAY ? *first.subarray : held);
}
using Way = Point (*)(const Point &held);
const std::vector<Way> WAYS = {itself, withthesamemembers, enclosedanew, enclosedandshared, firstmember};

// The same value in blocks of its own, all the way down.
Point deepcopy(const Point &value) {
  Point copy = value;
  copy.shape_pointer = copyelements(value.shape_pointer, static_cast<std::size_t>(value.rank));
  copy.data_pointer = copyelements(value.data_pointer, value.elements);
  for (std::uint32_t i = 0; i < copy.elements; ++i) {
    Element &e = copy.data_pointer[i];
    if (e.tag != tags::SUBARRAY) continue;
    const Point member = deepcopy(*e.subarray);
    release(e.subarray);
    e.subarray = newpoint();
    *e.subarray = member;
  }
  return copy;
}

class Aliasing : public Applying {
 protected:
  // What the instruction leaves of the stack, which it gives back.
  std::string outcome(const std::vector<Point> &operands, std::uint16_t instruction, std::uint16_t modifier) {
    for (const Point &p : operands) *++sp = p;
    std::string text = std::to_string(perform(instruction, modifier)) + ":";
    while (sp > stack[0]) {
      text += isspace(*sp) ? textof(*sp, true) + ";" : std::to_string(sp->rank) + ";";
      dereferencepoint(sp--);
    }
    return text;
  }

  // On shared operands and on others that nobody else sees.
  void compare(const std::vector<Point> &held, Way way, std::uint16_t instruction, std::uint16_t modifier) {
    std::vector<std::string> before;
    std::vector<Point> shared, own;
    for (const Point &p : held) {
      before.push_back(textof(p, true));
      shared.push_back(way(p));
      own.push_back(deepcopy(shared.back()));
    }
    const std::string expected = outcome(own, instruction, modifier);
    EXPECT_EQ(outcome(shared, instruction, modifier), expected);
    Recount recount;
    for (std::size_t i = 0; i < held.size(); ++i) {
      EXPECT_EQ(textof(held[i], true), before[i]);
      recount.hold(held[i]);
    }
    EXPECT_EQ(recount.faults(recount.reached()), "");
  }

  template <typename Numbers>
  void matrix(const Numbers &instructions, std::initializer_list<std::uint16_t> modifiers, std::size_t operands) {
    for (const auto instruction : instructions)
      for (const std::uint16_t modifier : modifiers)
        for (std::size_t value = 0; value < VALUES.size(); ++value)
          for (std::size_t way = 0; way < WAYS.size(); ++way) {
            SCOPED_TRACE(std::string(Instructions[instruction]) + " " + std::to_string(modifier) + ", value " +
                         std::to_string(value) + ", way " + std::to_string(way));
            std::vector<Point> held = {VALUES[value]()};
            if (operands > 1) held.push_back(itself(held[0]));
            compare(held, WAYS[way], static_cast<std::uint16_t>(instruction), modifier);
            for (Point &p : held) drop(p);
            if (HasFailure()) return;
          }
  }
};

std::vector<std::uint16_t> between(std::uint16_t first, std::uint16_t last) {
  std::vector<std::uint16_t> all;
  for (std::uint16_t number = first; number <= last; ++number) all.push_back(number);
  return all;
}

constexpr std::uint16_t NONE = 0, ATOM = 14;

TEST_F(Aliasing, Scalars) {
  matrix(between(instructions::CONJUGATE, instructions::LOGICAL), {NONE}, 1);
  matrix(between(instructions::CONTRADICTION, instructions::ISPOLAR), {NONE}, 1);
  matrix(between(instructions::POW2, instructions::LOG10), {NONE}, 1);
  matrix(between(instructions::ADD, instructions::NOTEQUIVALENT), {NONE}, 2);
}

// But for those that print: a whole real that was printed is an integer, for everybody.
TEST_F(Aliasing, Spaces) {
  matrix(between(instructions::ENASCII, instructions::GROUP), {NONE, ATOM, instructions::FIRST, instructions::REDUCE},
         1);
  matrix(between(instructions::MIRROR, instructions::DEPTH), {NONE}, 1);
  matrix(between(instructions::REDUCE, instructions::REDUCELASTAXIS),
         {instructions::ADD, instructions::MULTIPLY, instructions::MAXIMUM}, 1);
  matrix(std::vector<std::uint16_t>{instructions::RESHAPE, instructions::CATENATE, instructions::MATCH,
                                    instructions::COMPRESS, instructions::COMPRESSLASTAXIS, instructions::REPLICATE},
         {NONE, instructions::EXACT}, 2);
}

// Below a shape or a mask the other operand is the one that is written over.
TEST_F(Aliasing, Shaped) {
  const std::vector<Point> controls = {numbers({1}), numbers({2, 2}), numbers({5}), numbers({1, 0}), empty()};
  for (const std::uint16_t instruction : {instructions::RESHAPE, instructions::COMPRESS, instructions::REPLICATE})
    for (const Point &control : controls)
      for (const auto value : VALUES)
        for (const Way way : WAYS) {
          SCOPED_TRACE(Instructions[instruction]);
          const Point held = value();
          const std::string before = textof(held, true);
          Point shared = way(held), own = deepcopy(shared);
          const auto both = [&](const Point &data) {
            return instruction == instructions::RESHAPE ? std::vector<Point>{data, itself(control)}
                                                        : std::vector<Point>{itself(control), data};
          };
          const std::string expected = outcome(both(own), instruction, NONE);
          EXPECT_EQ(outcome(both(shared), instruction, NONE), expected);
          EXPECT_EQ(textof(held, true), before);
          Point last = held;
          drop(last);
        }
  for (Point control : controls) drop(control);
}

// Through a name, as programmes share their values: whatever a text does to `a`, `a` is what it was.
TEST_F(Aliasing, Names) {
  const char *const texts[] = {
      "a ENASCII",
      "a FIRST ENASCII",
      "a FIRST DEASCII",
      "a ENCAPSULATE",
      "a DISCLOSE ENCAPSULATE",
      "a REST ENASCII",
      "a : ENASCII ; EACH",
      "a : NEGATIVE ; EACH",
      "a a CATENATE ENASCII",
      "a a +",
      "a ENCLOSE DISCLOSE -",
      "a ENCLOSE FIRSTONE ENASCII FIRSTONE DEASCII",
      "a 3 RESHAPE ENASCII",
      "a REVERSE ENASCII",
      "a a COLLECT ENASCII FIRST ENASCII",
      "a @b SET b ENASCII @b SET b FIRST ENASCII @b SET",
      "a FIRST @b SET b ENASCII",
      ": a ENASCII ; EXECUTE",
      "a ENLIST NEGATIVE",
  };
  for (const char *value : {"((65 66) (67 68))", "((65 66))", "(1i2j3k4l5m6n7o8 (65 1i2j3k4l5m6n7o8))",
                            "(((2.0) 'ab') (1 2))", "((1 2)[2 2] (3 4))"})
    for (const char *text : texts) {
      SCOPED_TRACE(std::string(value) + " " + text);
      ASSERT_EQ(run(std::string(value) + " @a SET"), 0);
      const Entry *entry = checkmeaning(variables[0], "a");
      ASSERT_NE(entry, nullptr);
      const std::string before = textof(*entry->meaning, true);
      run(text);
      EXPECT_EQ(textof(*checkmeaning(variables[0], "a")->meaning, true), before);
      while (sp > stack[0]) dereferencepoint(sp--);
    }
}

// A literal is the Programme's, which runs again.
TEST_F(Aliasing, Literals) {
  ASSERT_EQ(run(": ((65 66) (67 68)) ENASCII ; @f SET f EXECUTE"), 0);
  ASSERT_EQ(run("CLEAR f EXECUTE"), 0);
  const std::string first = textof(*sp, true);
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(run("CLEAR f EXECUTE"), 0);
    EXPECT_EQ(textof(*sp, true), first);
  }
}

}  // namespace
