// MASK against plain loops: which neighbours are taken, how they are weighted, and what becomes of the results.
#include "applying.h"

namespace {

using namespace applying;
using model::Space;
using model::Value;

enum Beyond { NOTHING, WRAPPED, REFLECTED };
constexpr std::uint16_t MODIFIERS[] = {0, instructions::WRAP, instructions::REFLECT};

// The index of a neighbour along one dimension, below 0 for none.
std::int64_t inside(std::int64_t c, std::int64_t extent, std::size_t dimension, Beyond beyond) {
  if (beyond == WRAPPED && c < 0)
    c += extent;
  else if (beyond == WRAPPED && c >= extent)
    c -= dimension == 0 ? extent : extent - 1;
  else if (beyond == REFLECTED && c < 0)
    c = -c;
  else if (beyond == REFLECTED && c >= extent)
    c = 2 * extent - c - 2;
  return c >= 0 && c < extent ? c : -1;
}

Value zero(std::int32_t tag) {
  Value v{tag, forms::NUMBER, 0, 0, {}, {}};
  if (tag > tags::INTEGER) v.parts = model::Parts(std::size_t{1} << (tag - tags::REAL));
  return v;
}

// Weight times datum at each place of the mask, around one place of the data.
std::vector<Value> neighbourhood(const Space &data, const Space &mask, const Extents &place, Beyond beyond) {
  std::vector<Value> around;
  for (std::size_t j = 0; j < mask.elements.size(); ++j) {
    // The offsets count in threes, whatever the extents of the mask are.
    std::size_t digits = j;
    Extents at;
    bool exists = true;
    for (std::size_t d = 0; d < place.size(); ++d) {
      at.push_back(inside(place[d] + static_cast<std::int64_t>(digits % 3) - 1, data.shape[d], d, beyond));
      exists = exists && at.back() >= 0;
      digits /= 3;
    }
    const Value &weight = mask.elements[j];
    const bool weightless = weight.integer == 0 && model::norm(weight.parts) == 0;
    if (!exists) {
      around.push_back(zero(tags::INTEGER));
    } else if (weightless) {
      around.push_back(zero(weight.tag));
    } else {
      const Value &datum = data.elements[place.empty() ? 0 : structured::indexof(at, data.shape)];
      around.push_back(model::apply(model::Op::MULTIPLY, weight, datum).value);
    }
  }
  return around;
}

class Mask : public Applying {
 protected:
  Element anynumber(int kind) {
    const int n = static_cast<int>(random() % 5) - 1;
    switch (kind) {
      case 0:
        return whole(n);
      case 1:
        return real(n / 2.0);
      case 2:
        return complex(n, n / 4.0, forms::NUMBER);
      case 3:
        return quaternions(n, 2.0 * n, 0, n, forms::NUMBER);
      default:
        return octonion({1.0 * n, 0, -1.0 * n}, forms::NUMBER);
    }
  }
  // One kind, or all of them.
  Point anynumbers(const Extents &shape) {
    const int kind = static_cast<int>(random() % 8);
    std::size_t count = 1;
    for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
    const auto next = [&] { return anynumber(kind < 5 ? kind : static_cast<int>(random() % 5)); };
    if (shape.empty()) return scalar(next());
    Elements elements;
    for (std::size_t i = 0; i < count; ++i) elements.push_back(next());
    return array(elements, shape);
  }
};

TEST_F(Mask, Neighbourhoods) {
  for (int round = 0; round < 500; ++round) {
    const std::size_t rank = random() % 4;
    Extents shape, wide;
    for (std::size_t d = 0; d < rank; ++d) {
      shape.push_back(1 + static_cast<std::int64_t>(random() % 4));
      wide.push_back(1 + 2 * static_cast<std::int64_t>(random() % 3));
    }
    const Point data = anynumbers(shape), mask = anynumbers(wide);
    const Space d = model::of(data), m = model::of(mask);
    const auto beyond = static_cast<Beyond>(random() % 3);
    push(data);
    push(mask);
    ASSERT_EQ(run("MONADIC ;"), 0);
    ASSERT_EQ(perform(instructions::MASK, MODIFIERS[beyond]), 0);
    ASSERT_EQ(sp, stack[0] + 1);
    ASSERT_EQ(shapeof(*sp), shape);
    const Space made = model::of(*sp);
    for (std::size_t i = 0; i < made.elements.size(); ++i) {
      const std::vector<Value> expected = neighbourhood(d, m, structured::placeof(i, shape), beyond);
      const Value &v = made.elements[i];
      ASSERT_EQ(v.tag == tags::SUBARRAY, rank > 0);
      if (rank > 0) ASSERT_EQ(v.member[0].shape, wide);
      const std::vector<Value> around = rank > 0 ? v.member[0].elements : std::vector<Value>{v};
      ASSERT_EQ(around.size(), expected.size());
      for (std::size_t j = 0; j < around.size(); ++j)
        ASSERT_TRUE(around[j].tag == expected[j].tag && around[j].integer == expected[j].integer &&
                    around[j].parts == expected[j].parts)
            << "rank " << rank << " at " << i << "," << j << ": " << model::show(around[j]) << " instead of "
            << model::show(expected[j]);
      if (rank > 0) structured::expecthonest(*sp->data_pointer[i].subarray);
    }
    if (rank > 0) structured::expecthonest(*sp);
    reachable();
    clear();
    if (HasFailure()) return;
  }
}

// Kept: the words before MASK leave nothing behind.
TEST_F(Mask, WrapAndReflectAreOnlyRead) {
  for (const char *text : {"MONADIC ; MASK", "MONADIC ; WRAP MASK", "MONADIC ; REFLECT STENCIL"}) {
    push(numbers({1, 2}));
    push(numbers({1, 1, 1}));
    ASSERT_EQ(run(text), 0);
    EXPECT_EQ(textof(*sp), "1(2 [1:1(3 [4:0][4:1][4:2])][1:1(3 [4:1][4:2][4:0])])");
    clear();
  }
}

// The function is given the neighbourhood, and its results are stored as those of EACH.
TEST_F(Mask, Results) {
  for (const Function &f : FUNCTIONS) {
    if (!f.gives) continue;
    push(numbers({1, 2, 3, 4}, {2, 2}));
    push(numbers({1, 1, 1}, {3, 1}));
    ASSERT_EQ(run(std::string(f.source) + " MASK"), 0);
    const std::string gives = f.gives, each = f.rank > 0 ? "1:" + gives : gives.substr(3, gives.size() - 5);
    EXPECT_EQ(textof(*sp), "2(2 2 [" + each + "][" + each + "][" + each + "][" + each + "])");
    structured::expecthonest(*sp);
    clear();
  }
}

// A weight of zero, and a place outside, never touch the data: what they would fail with does not matter.
TEST_F(Mask, WithoutWeight) {
  for (const Element &zero : {whole(0), real(0), real(-0.0), complex(0, 0), quaternions(0, 0, 0, 0)}) {
    push(vector({character('a'), enclosed(numbers({1, 2})), character('b')}));
    push(vector({zero}));
    ASSERT_EQ(run("MONADIC FIRST ; MASK"), 0);
    for (std::uint32_t i = 0; i < 3; ++i) EXPECT_TRUE(sp->data_pointer[i].tag == (i == 0 ? 4 : zero.tag));
    clear();
  }
  push(vector({character('a'), whole(1)}));
  push(vector({octonion({})}));
  ASSERT_EQ(run("MONADIC FIRST ; MASK"), 0);
  EXPECT_EQ(sp->data_pointer[1].tag, tags::OCTONION);
}

TEST_F(Mask, FailingWeights) {
  const auto expect = [&](int message, const Point &data, const Point &mask) {
    push(data);
    push(mask);
    EXPECT_EQ(run("MONADIC ; MASK"), message);
    reachable();
    clear();
  };
  expect(149, text("abc"), numbers({1, 2, 1}));
  expect(162, text("abc"), vector({real(1), real(1), real(1)}));
  expect(0, text("abc"), numbers({1, 1, 1}));
  expect(162, text("abc"), vector({character('a')}));
}

// The block that its neighbourhood is made in still holds a record that enclosed something.
TEST_F(Mask, AScalarThatFailsReleasesNothingElse) {
  Element member = enclosed(numbers({1, 2}));
  std::vector<Element *> used;
  for (int i = 0; i < 64; ++i) {
    used.push_back(newelements(1));
    *used.back() = member;
  }
  std::for_each(used.begin(), used.end(), freeblock);
  push(scalar(character('x')));
  push(scalar(whole(5)));
  EXPECT_EQ(run("MONADIC ; MASK"), 149);
  EXPECT_EQ(referencecount(member.subarray), 1);
  dereferencedataelems(&member, 1);
  reachable();
  clear();
}

TEST_F(Mask, Refusals) {
  const auto expect = [&](int message, const Point &data, const Point &mask, const char *function) {
    push(data);
    push(mask);
    EXPECT_EQ(run(std::string(function) + " MASK"), message) << function;
    EXPECT_EQ(sp, stack[0] + 3);
    reachable();
    clear();
  };
  expect(986, numbers({1}), numbers({1}), "5");
  expect(987, numbers({1}), numbers({1}), "DYADIC + ;");
  expect(987, numbers({1}), numbers({1}), ": 1 ;");
  expect(985, numbers({1}), numbers({1}, {1, 1}), "MONADIC ;");
  expect(985, numbers({1}), scalar(whole(1)), "MONADIC ;");
  expect(985, function({numbers({1})}, 1, 0, "f"), numbers({1}), "MONADIC ;");
  expect(984, numbers({1, 2}), numbers({1, 2}), "MONADIC ;");
  expect(984, numbers({1, 2}, {1, 2}), numbers({1, 2}, {1, 2}), "MONADIC ;");
  expect(984, numbers({1, 2}), empty(), "MONADIC ;");
}

TEST_F(Mask, NothingToMask) {
  push(array({}, {0, 3}));
  push(numbers({1}, {1, 1}));
  ASSERT_EQ(run("MONADIC ; MASK"), 0);
  EXPECT_EQ(shapeof(*sp), (Extents{0, 3}));
  EXPECT_EQ(sp->elements, 0u);
  reachable();
}

TEST_F(Mask, FailingAtAnyPlace) {
  std::int64_t idle = 0;
  for (const char *failing : {"'a' 1 +", "nobody", "1 OPEN"})
    for (int at = 0; at <= 6; ++at) {
      push(vector({whole(1), octonion({2}), real(3.5), whole(4), complex(5, 1), whole(6)}));
      push(vector({octonion({1}), whole(2), real(3.5)}));
      const std::string text = "0 @n SET VARS 1 MONADIC n " + std::to_string(at) + " == CHECK : " + failing +
                               " ; ?Y DISCARD n 1 + @n SET ; MASK";
      EXPECT_EQ(run(text) != 0, at < 6) << text;
      reachable();
      clear();
      ASSERT_EQ(run("WIPE"), 0);
      if (idle == 0) idle = liveblocks();
      EXPECT_EQ(liveblocks(), idle) << text;
    }
}

}  // namespace
