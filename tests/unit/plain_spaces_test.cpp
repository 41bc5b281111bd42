// The short way of plain spaces through the frames: it makes what the frames make of the same operands when they may
// not take it, whatever the number of elements, the shapes, who holds the operands, and what the flag words hide.
#include <limits>
#include <string>
#include <vector>

#include "arithmetic/dyadic.h"
#include "dyadic_operands.h"
#include "scalar_tables.h"
#include "spaces/messages.h"

namespace {

using namespace arithmetic;
using scalars::same;

// Around the lengths at which loops look for their end, and what fits one bit each into a word.
constexpr std::size_t COUNTS[] = {1, 2, 3, 4, 5, 7, 8, 9, 63, 64, 65, 100};
constexpr int PLAIN[] = {ASCII, UNICODE, INTEGER, REAL, COMPLEX, QUATERNION};

struct Member {
  const char *name;
  DyadicFunction *work;
  const Dyadic *cores;
};
constexpr Member MEMBERS[] = {{"ADD", add, &addcores},
                              {"SUBTRACT", subtract, &subtractcores},
                              {"MULTIPLY", multiply, &multiplycores},
                              {"DIVIDE", divide, &dividecores},
                              {"MINIMUM", minimum, &minimumcores},
                              {"RESIDUE", residue, &residuecores},
                              {"MAXIMUM", maximum, &maximumcores},
                              {"LESS", less, &lesscores},
                              {"EQUIVALENT", equivalent, &equivalentcores},
                              {"AND", And, &Andcores},
                              {"IDENTICAL", identical, &identicalcores}};

// What an instruction leaves: its value, and what it counted.
struct Left {
  int message;
  Point value;
  double operations, flops, total;
};

class PlainSpaces : public Dyadics {
 protected:
  // Runs it over copies of two values, each held by somebody else too or not.
  Left run(DyadicFunction *work, const Point &left, bool leftshared, const Point &right, bool rightshared,
           bool nested) {
    Stack stack;
    push(stack, leftshared ? sharedcopy(left) : owncopy(left), false);
    push(stack, rightshared ? sharedcopy(right) : owncopy(right), false);
    const double operationsbefore = operations, totalbefore = from_coprocessor[0].total_flops;
    Left made{};
    made.message = arithmetic::run(work, stack, nested ? 1 : 0);
    made.operations = operations - operationsbefore;
    made.total = from_coprocessor[0].total_flops - totalbefore;
    made.flops = flopos;
    made.value = *stack.top;
    if (made.message != 0) clear(stack);
    return made;
  }
  static Point sharedcopy(Point p) {
    referencepoint(&p);
    return p;
  }
  // Blocks of its own.
  static Point owncopy(const Point &p) {
    Point copy = p;
    copy.data_pointer = newelements(p.elements);
    std::copy_n(p.data_pointer, p.elements, copy.data_pointer);
    if (p.shape_pointer) {
      const auto axes = static_cast<std::size_t>(p.rank);
      copy.shape_pointer = newelements(axes);
      std::copy_n(p.shape_pointer, axes, copy.shape_pointer);
    }
    return copy;
  }
  // The same value and the same counts, by both ways; the operands that others hold are as they were.
  void expectsame(const Member &member, const Point &left, const Point &right, const std::string &what) {
    for (const bool leftshared : {false, true})
      for (const bool rightshared : {false, true}) {
        SCOPED_TRACE(std::string(member.name) + " of " + what + (leftshared ? ", left shared" : "") +
                     (rightshared ? ", right shared" : ""));
        const std::vector<Element> wasleft(left.data_pointer, left.data_pointer + left.elements);
        const std::vector<Element> wasright(right.data_pointer, right.data_pointer + right.elements);
        Left quick = run(member.work, left, leftshared, right, rightshared, false);
        Left thorough = run(member.work, left, true, right, true, true);
        ASSERT_EQ(quick.message, thorough.message);
        for (std::size_t i = 0; i < wasleft.size(); ++i) ASSERT_TRUE(same(left.data_pointer[i], wasleft[i])) << i;
        for (std::size_t i = 0; i < wasright.size(); ++i) ASSERT_TRUE(same(right.data_pointer[i], wasright[i])) << i;
        if (quick.message != 0) continue;
        EXPECT_EQ(quick.operations, thorough.operations);
        EXPECT_EQ(quick.flops, thorough.flops);
        EXPECT_EQ(quick.total, thorough.total);
        expectequal(quick.value, thorough.value);
        dereferencepoint(&quick.value);
        dereferencepoint(&thorough.value);
      }
  }
  static void expectequal(const Point &a, const Point &b) {
    EXPECT_EQ(a.rank, b.rank);
    EXPECT_EQ(a.type, b.type);
    EXPECT_EQ(a.depth, b.depth);
    ASSERT_EQ(a.elements, b.elements);
    for (std::int32_t axis = 0; axis < a.rank; ++axis)
      EXPECT_EQ(a.shape_pointer[axis].integer, b.shape_pointer[axis].integer);
    for (std::uint32_t i = 0; i < a.elements; ++i) EXPECT_TRUE(same(a.data_pointer[i], b.data_pointer[i])) << i;
  }
};

TEST_F(PlainSpaces, EveryPairOfKindsAndEveryLength) {
  for (const Member &member : MEMBERS)
    for (const int leftkind : PLAIN)
      for (const int rightkind : PLAIN)
        for (const std::size_t count : COUNTS) {
          const std::vector<std::int64_t> shape = {static_cast<std::int64_t>(count)};
          Point vector = operand(leftkind, shape), other = operand(rightkind, shape, 3), lone = operand(rightkind, {});
          Point one = operand(rightkind, {1});
          const std::string what =
              std::to_string(leftkind) + ", " + std::to_string(rightkind) + ", " + std::to_string(count) + " elements";
          expectsame(member, vector, other, what);
          expectsame(member, vector, lone, what + " and a scalar");
          expectsame(member, lone, vector, what + " after a scalar");
          expectsame(member, vector, one, what + " and one element");
          expectsame(member, one, vector, what + " after one element");
          for (Point *p : {&vector, &other, &lone, &one}) points::drop(*p);
        }
}

TEST_F(PlainSpaces, ShapesFitOrAreRefused) {
  for (const auto &leftshape : SHAPES)
    for (const auto &rightshape : SHAPES) {
      Point left = operand(REAL, leftshape), right = operand(REAL, rightshape, 2);
      expectsame(MEMBERS[0], left, right, "shapes");
      points::drop(left);
      points::drop(right);
    }
  Point left = operand(REAL, {3, 2}), right = operand(REAL, {2, 3});
  EXPECT_EQ(run(add, left, true, right, true, false).message, messages::NOT_CONFORMABLE);
  points::drop(left);
  points::drop(right);
}

TEST_F(PlainSpaces, ASumTooLargeInTheMiddleIsAReal) {
  constexpr std::int64_t GREATEST = std::numeric_limits<std::int64_t>::max();
  for (const std::size_t place : {0, 3, 4, 6, 8}) {
    Elements records(9, points::whole(1));
    records[place] = points::whole(GREATEST);
    Point left = points::vector(records), right = points::vector(records);
    expectsame(MEMBERS[0], left, right, "a large sum at " + std::to_string(place));
    Left made = run(add, left, true, right, true, false);
    EXPECT_EQ(made.value.type, ISVECTOR | HASINTEGER | HASREAL | COMPLEXED);
    EXPECT_EQ(made.value.data_pointer[place].tag, tags::REAL);
    EXPECT_EQ(made.value.data_pointer[place].real, 0x1p64);
    EXPECT_EQ(made.value.data_pointer[place == 0 ? 1 : 0].integer, 2);
    dereferencepoint(&made.value);
    points::drop(left);
    points::drop(right);
  }
}

// Two complex numbers in polar form take 2 flops, all others 6, wherever they stand among others.
TEST_F(PlainSpaces, PolarPairsAmongOthers) {
  constexpr std::size_t COUNT = 9;
  for (std::size_t place = 0; place < COUNT; ++place)
    for (const bool leftpolar : {false, true})
      for (const bool rightpolar : {false, true})
        for (const bool others : {false, true}) {
          Point left = operand(COMPLEX, {COUNT}), right = operand(COMPLEX, {COUNT}, 3);
          for (std::size_t i = 0; i < COUNT; ++i) {
            left.data_pointer[i].form = (i == place ? leftpolar : others) ? forms::POLAR : forms::CARTESIAN;
            right.data_pointer[i].form = (i == place ? rightpolar : others) ? forms::POLAR : forms::CARTESIAN;
          }
          const std::size_t polar = (leftpolar && rightpolar ? 1 : 0) + (others ? COUNT - 1 : 0);
          expectsame(MEMBERS[2], left, right, "a polar pair at " + std::to_string(place));
          Left made = run(multiply, left, true, right, true, false);
          EXPECT_EQ(made.flops, 1 + 6 * COUNT - 4 * polar);
          dereferencepoint(&made.value);
          points::drop(left);
          points::drop(right);
        }
}

// A complex result looks like the left operand, of which it has neither the name nor the silence, wherever that stands
// among others that look alike.
TEST_F(PlainSpaces, FormsAndMarksAmongOthers) {
  constexpr std::size_t COUNT = 9;
  for (std::size_t place = 0; place < COUNT; ++place)
    for (const std::uint16_t form : {forms::CARTESIAN, forms::NUMBER, forms::POLAR})
      for (const std::uint16_t marks : {std::uint16_t{0}, attributes::SILENT})
        for (const std::uint16_t others : {std::uint16_t{0}, attributes::SILENT}) {
          Elements lefts(COUNT, points::complex(1, 2)), rights(COUNT, points::complex(3, 0));
          for (std::size_t i = 0; i < COUNT; ++i) {
            lefts[i].form = i == place ? form : forms::CARTESIAN;
            lefts[i].attributes = i == place ? marks : others;
            rights[i].form = forms::NUMBER;
          }
          Point left = points::vector(lefts), right = points::vector(rights);
          Left made = run(add, left, true, right, true, false);
          for (std::size_t i = 0; i < COUNT; ++i) {
            const Element &e = made.value.data_pointer[i];
            EXPECT_EQ(e.tag, tags::COMPLEX);
            EXPECT_EQ(e.form, lefts[i].form) << place << " " << i;
            EXPECT_EQ(e.attributes, 0) << place << " " << i;
            EXPECT_EQ(e.name, nullptr);
            EXPECT_EQ(e.complex.re, 4);
            EXPECT_EQ(e.complex.im, 2);
          }
          dereferencepoint(&made.value);
          points::drop(left);
          points::drop(right);
        }
}

// Products that are no numbers are made again from their parts, in a group too.
TEST_F(PlainSpaces, InfiniteProductsAmongOthers) {
  constexpr double INFINITE = std::numeric_limits<double>::infinity();
  for (std::size_t place = 0; place < 9; ++place) {
    Elements lefts(9, points::complex(1, 2)), rights(9, points::complex(3, 0));
    lefts[place] = points::complex(INFINITE, 0);
    rights[place] = points::complex(0, 5);
    Point left = points::vector(lefts), right = points::vector(rights);
    expectsame(MEMBERS[2], left, right, "an infinite product at " + std::to_string(place));
    Left made = run(multiply, left, true, right, true, false);
    for (std::size_t i = 0; i < 9; ++i) {
      EXPECT_EQ(made.value.data_pointer[i].complex.re, i == place ? INFINITE : 3) << place << " " << i;
      EXPECT_EQ(made.value.data_pointer[i].complex.im, i == place ? INFINITE : 6) << place << " " << i;
    }
    dereferencepoint(&made.value);
    points::drop(left);
    points::drop(right);
  }
}

// A flag word that is not exact: a record of another kind at any place, which may even be refused.
TEST_F(PlainSpaces, RecordsThatTheFlagWordHides) {
  for (const int hidden : {INTEGER, COMPLEX, ASCII, NESTED})
    for (std::size_t place = 0; place < 9; ++place)
      for (const bool atleft : {true, false}) {
        Point odd = operand(REAL, {9}), plain = operand(REAL, {9}, 4);
        odd.data_pointer[place] = element(hidden, place);
        Left quick = run(add, atleft ? odd : plain, true, atleft ? plain : odd, true, false);
        Left thorough = run(add, atleft ? odd : plain, true, atleft ? plain : odd, true, true);
        ASSERT_EQ(quick.message, thorough.message) << hidden << " at " << place;
        EXPECT_EQ(quick.message, hidden == ASCII ? messages::INCOMPATIBLE_TYPES : 0);
        if (quick.message == 0) {
          EXPECT_EQ(quick.value.type, thorough.value.type);
          EXPECT_EQ(points::source(quick.value), points::source(thorough.value));
        }
        odd.type |= STRUCTURED;  // so that what it encloses goes too
        points::drop(odd);
        points::drop(plain);
      }
}

// The one real result among complex ones is told too, though the loop begins anew at such a record behind it.
TEST_F(PlainSpaces, ResultsOfTwoKindsBeforeAHiddenRecord) {
  for (std::size_t place = 0; place < 9; ++place)
    for (std::size_t other = 0; other < place; ++other) {
      Elements bases(9, points::real(-2)), exponents(9, points::real(0.5));
      bases[other] = points::real(4);
      Point left = points::vector(bases), right = points::vector(exponents);
      left.data_pointer[place] = points::whole(-3);
      Left made = run(power, left, true, right, true, false);
      ASSERT_EQ(made.message, 0);
      EXPECT_EQ(made.value.type & ELEMENT_BITS, static_cast<std::uint32_t>(HASREAL | HASCOMPLEX)) << other << place;
      for (Point *p : {&left, &right, &made.value}) points::drop(*p);
    }
}

// The same where all of one operand are of another kind than its flag word says, so that they look alike.
TEST_F(PlainSpaces, AFlagWordThatIsWrongOfAll) {
  constexpr std::size_t COUNT = 8;  // two groups and nothing more
  for (const int promised : {REAL, COMPLEX})
    for (const int hidden : {INTEGER, REAL, COMPLEX, QUATERNION})
      for (const bool atleft : {true, false}) {
        Point odd = operand(promised, {COUNT}), plain = operand(promised, {COUNT}, 4);
        for (std::size_t place = 0; place < COUNT; ++place) odd.data_pointer[place] = element(hidden, 2 * place);
        for (const Member &member : {MEMBERS[0], MEMBERS[2]}) {
          Left quick = run(member.work, atleft ? odd : plain, true, atleft ? plain : odd, true, false);
          ASSERT_EQ(quick.message, 0);
          for (std::uint32_t i = 0; i < COUNT; ++i) {
            Point left = points::scalar((atleft ? odd : plain).data_pointer[i]);
            Point right = points::scalar((atleft ? plain : odd).data_pointer[i]);
            Left lone = run(member.work, left, true, right, true, false);
            EXPECT_TRUE(same(quick.value.data_pointer[i], lone.value.data_pointer[0])) << member.name << " " << i;
            for (Point *p : {&left, &right, &lone.value}) points::drop(*p);
          }
          points::drop(quick.value);
        }
        points::drop(odd);
        points::drop(plain);
      }
}

// What a name holds is read where it is: it is as it was, and so are its counts once the result is gone. The left one
// of two may be the stack's own, and is written over then.
TEST_F(PlainSpaces, BorrowedOperands) {
  int worked = 0;
  const auto borrow = [&](const Member &member, const Point &left, const Point &right, bool leftowned,
                          unsigned borrowed) {
    const std::vector<Element> wasright(right.data_pointer, right.data_pointer + right.elements);
    const std::int64_t before[] = {referencecount(left.data_pointer), referencecount(left.shape_pointer),
                                   referencecount(right.data_pointer), referencecount(right.shape_pointer)};
    const std::int64_t alive = liveblocks();
    Left thorough = run(member.work, left, true, right, true, true);
    Stack stack;
    push(stack, borrowed == 2 ? left : leftowned ? owncopy(left) : sharedcopy(left), false);
    push(stack, right, false);
    const double operationsbefore = operations;
    const bool done = workplain(*member.cores, &stack.top, nullptr, nullptr, borrowed);
    if (done) {
      ASSERT_EQ(stack.height(), 1);
      EXPECT_EQ(operations - operationsbefore, thorough.operations);
      EXPECT_EQ(flopos, thorough.flops);
      expectequal(*stack.top, thorough.value);
    } else {
      ASSERT_EQ(stack.height(), 2);
      --stack.top;  // the borrowed ones are not the stack's
      if (borrowed == 2) --stack.top;
    }
    clear(stack);
    if (thorough.message == 0) dereferencepoint(&thorough.value);
    for (std::size_t i = 0; i < wasright.size(); ++i) ASSERT_TRUE(same(right.data_pointer[i], wasright[i])) << i;
    const std::int64_t after[] = {referencecount(left.data_pointer), referencecount(left.shape_pointer),
                                  referencecount(right.data_pointer), referencecount(right.shape_pointer)};
    for (int i = 0; i < 4; ++i) EXPECT_EQ(after[i], before[i]) << i;
    EXPECT_EQ(liveblocks(), alive);
    worked += done ? 1 : 0;
  };
  for (const Member &member : MEMBERS)
    for (const int leftkind : PLAIN)
      for (const int rightkind : PLAIN)
        for (const std::int64_t count : {1, 4, 9}) {
          Point vector = operand(leftkind, {count}), other = operand(rightkind, {count}, 3);
          Point lone = operand(rightkind, {}), table = operand(rightkind, {2, 3});
          const Point *const rights[] = {&other, &lone, &table, &vector};
          for (const Point *right : rights)
            for (const unsigned borrowed : {1U, 2U})
              for (const bool leftowned : {false, true}) {
                SCOPED_TRACE(std::string(member.name) + " " + std::to_string(leftkind) + " " +
                             std::to_string(rightkind) + " " + std::to_string(borrowed));
                borrow(member, vector, *right, leftowned, borrowed);
                borrow(member, *right, vector, leftowned, borrowed);
              }
          for (Point *p : {&vector, &other, &lone, &table}) points::drop(*p);
        }
  EXPECT_GT(worked, 2000);
}

#ifdef MORVIK_CHECKING

// Where there is no storage for the result, what was borrowed is the stack's own when the failure lands, with its
// counts.
TEST_F(PlainSpaces, NoStorageBesideBorrowedOperands) {
  for (const unsigned borrowed : {0U, 1U, 2U}) {
    Point left = operand(REAL, {9}), right = operand(REAL, {9}, 4);
    const std::int64_t alive = liveblocks();
    Stack stack;
    push(stack, borrowed == 2 ? left : sharedcopy(left), false);
    push(stack, borrowed >= 1 ? right : sharedcopy(right), false);
    const Report report;
    failallocation(0);
    const int landing = landingof([&] { workplain(addcores, &stack.top, nullptr, nullptr, borrowed); });
    failallocation(-1);
    pendingproblem = 0;
    EXPECT_NE(landing, 0);
    EXPECT_EQ(report.number(), messages::OUT_OF_STORAGE);
    ASSERT_EQ(stack.height(), 2);
    EXPECT_EQ(liveblocks(), alive);
    EXPECT_EQ(referencecount(left.data_pointer), 2);
    EXPECT_EQ(referencecount(right.data_pointer), 2);
    clear(stack);
    EXPECT_EQ(referencecount(left.data_pointer), 1);
    EXPECT_EQ(referencecount(right.data_pointer), 1);
    points::drop(left);
    points::drop(right);
  }
}

#endif

// Over the left operand, nothing that the loop has left is lost where it ended.
TEST_F(PlainSpaces, AnotherKindAheadOfTheEndOverAnOperand) {
  for (std::size_t place = 0; place < 9; ++place) {
    Point left = operand(REAL, {9}), right = operand(REAL, {9}, 4);
    left.data_pointer[place] = points::whole(5);
    Left quick = run(add, left, false, right, true, false), thorough = run(add, left, true, right, true, true);
    ASSERT_EQ(quick.message, 0);
    for (std::uint32_t i = 0; i < 9; ++i)
      EXPECT_TRUE(same(quick.value.data_pointer[i], thorough.value.data_pointer[i])) << place << " " << i;
    dereferencepoint(&quick.value);
    dereferencepoint(&thorough.value);
    points::drop(left);
    points::drop(right);
  }
}

// The same where the right operand is borrowed: it gets its counts, as the frame goes on, and has them back after it.
TEST_F(PlainSpaces, AnotherKindAheadOfTheEndBesideABorrowedOperand) {
  for (std::size_t place = 0; place < 9; ++place) {
    Point left = operand(REAL, {9}), right = operand(REAL, {9}, 4);
    left.data_pointer[place] = points::whole(5);
    Left thorough = run(add, left, true, right, true, true);
    Stack stack;
    push(stack, owncopy(left), false);
    push(stack, right, false);
    const bool done = workplain(addcores, &stack.top, nullptr, nullptr, 1);
    EXPECT_EQ(done, place > 0);
    if (done)
      for (std::uint32_t i = 0; i < 9; ++i)
        EXPECT_TRUE(same(stack.top->data_pointer[i], thorough.value.data_pointer[i])) << place << " " << i;
    else
      --stack.top;
    EXPECT_EQ(stack.height(), 1);
    clear(stack);
    EXPECT_EQ(referencecount(right.data_pointer), 1);
    EXPECT_EQ(referencecount(right.shape_pointer), 1);
    dereferencepoint(&thorough.value);
    points::drop(left);
    points::drop(right);
  }
}

// The name of a scalar may be counted, and goes with its last holder.
TEST_F(PlainSpaces, ANamedScalarIsGivenUpWithItsName) {
  for (const bool atleft : {true, false}) {
    const Point vector = operand(REAL, {9}), lone = points::scalar(points::named(points::real(3), "three"));
    const double first = vector.data_pointer[0].real;
    Stack stack;
    push(stack, atleft ? lone : vector, false);
    push(stack, atleft ? vector : lone, false);
    ASSERT_EQ(arithmetic::run(add, stack), 0);
    EXPECT_EQ(stack.left().data_pointer[0].real, first + 3);
    clear(stack);
  }
}

// Characters go the short way too, where an instruction takes them.
TEST_F(PlainSpaces, OneOperand) {
  for (const int kind : PLAIN)
    for (const std::size_t count : COUNTS)
      for (const bool shared : {false, true}) {
        MonadicFunction *const work = kind == ASCII || kind == UNICODE ? binary : negative;
        Point vector = operand(kind, {static_cast<std::int64_t>(count)});
        Point quick = shared ? sharedcopy(vector) : owncopy(vector), thorough = sharedcopy(vector);
        const Element *const block = quick.data_pointer;
        work(&quick, nullptr, nullptr, 0);
        work(&thorough, nullptr, nullptr, 1);
        EXPECT_EQ(quick.data_pointer == block, !shared);
        expectequal(quick, thorough);
        EXPECT_TRUE(same(vector.data_pointer[0], element(kind, 1)));
        dereferencepoint(&quick);
        dereferencepoint(&thorough);
        points::drop(vector);
      }
}

#ifdef MORVIK_CHECKING
TEST_F(PlainSpaces, WithoutStorageTheOperandsAreWhole) {
  Point left = operand(REAL, {9}), right = operand(REAL, {9}, 4);
  Stack stack;
  push(stack, left, true);
  push(stack, right, true);
  failallocation(0);
  EXPECT_EQ(arithmetic::run(add, stack), messages::OUT_OF_STORAGE);
  failallocation(-1);
  ASSERT_EQ(stack.height(), 2);
  EXPECT_TRUE(same(stack.slots[1].data_pointer[8], element(REAL, 9)));
  EXPECT_TRUE(same(stack.slots[2].data_pointer[8], element(REAL, 12)));
  const auto negated = [](Point **top, const Point *, Point *, char) { negative(*top, nullptr, nullptr, 0); };
  failallocation(0);
  EXPECT_EQ(arithmetic::run(negated, stack), messages::OUT_OF_STORAGE);
  failallocation(-1);
  EXPECT_TRUE(same(stack.slots[2].data_pointer[8], element(REAL, 12)));
  clear(stack);
  drop();
}
#endif

}  // namespace
