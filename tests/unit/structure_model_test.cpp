// The structural instructions against a model of plain vectors, over random shapes, kinds and holders: what comes out,
// that the flag word can be trusted, and who owns what afterwards.
#include <algorithm>
#include <functional>
#include <numeric>

#include "operators/catenate.h"
#include "operators/compress.h"
#include "operators/enclose.h"
#include "operators/enlist.h"
#include "operators/ravel.h"
#include "operators/reverse.h"
#include "operators/slices.h"
#include "operators/transpose.h"
#include "structure_values.h"

using namespace morvik;

namespace {

using namespace structured;

struct Model {
  Extents shape;
  Texts texts;
};

Model modelof(const Point &p) {
  return {shapeof(p), textsof(p)};
}

// What is at each place of a shape comes from where `source` says.
Model remade(const Model &old, const Extents &shape, const std::function<Extents(const Extents &)> &source) {
  std::size_t count = 1;
  for (const std::int64_t extent : shape) count *= static_cast<std::size_t>(extent);
  Model made = {shape, Texts(count)};
  for (std::size_t i = 0; i < count; ++i) made.texts[i] = old.texts[indexof(source(placeof(i, shape)), old.shape)];
  return made;
}

Model reversemodel(const Model &m) {
  return {m.shape, Texts(m.texts.rbegin(), m.texts.rend())};
}

Model mirrormodel(const Model &m) {
  return remade(m, m.shape, [&](Extents place) {
    place[0] = m.shape[0] - 1 - place[0];
    return place;
  });
}

Model transposemodel(const Model &m) {
  return remade(m, Extents(m.shape.rbegin(), m.shape.rend()),
                [](const Extents &place) { return Extents(place.rbegin(), place.rend()); });
}

// The places of one axis that are kept.
Model keptmodel(const Model &m, std::size_t axis, const Extents &places) {
  Extents shape = m.shape;
  shape[axis] = static_cast<std::int64_t>(places.size());
  return remade(m, shape, [&](Extents place) {
    place[axis] = places[static_cast<std::size_t>(place[axis])];
    return place;
  });
}

Model firstmodel(const Model &m) {
  Model kept = keptmodel(m, m.shape.size() - 1, {0});
  kept.shape.pop_back();
  return kept;
}

Model restmodel(const Model &m) {
  Extents places(static_cast<std::size_t>(m.shape.back() - 1));
  std::iota(places.begin(), places.end(), 1);
  return keptmodel(m, m.shape.size() - 1, places);
}

Model catenatemodel(const Model &a, const Model &b) {
  Model joined = {a.shape, a.texts};
  joined.texts.insert(joined.texts.end(), b.texts.begin(), b.texts.end());
  const auto inner = [](Extents shape) {
    shape.pop_back();
    return shape;
  };
  if (a.shape.size() > 1 && a.shape.size() == b.shape.size() && inner(a.shape) == inner(b.shape)) {
    joined.shape.back() += b.shape.back();
  } else if (a.shape.size() > 1 && inner(a.shape) == b.shape) {
    ++joined.shape.back();
  } else if (b.shape.size() > 1 && inner(b.shape) == a.shape) {
    joined.shape = b.shape;
    ++joined.shape.back();
  } else {
    joined.shape = {static_cast<std::int64_t>(joined.texts.size())};
  }
  return joined;
}

void leavesof(const Point &p, Texts &leaves) {
  for (std::uint32_t i = 0; i < p.elements && p.data_pointer; ++i) {
    const Element &e = p.data_pointer[i];
    if (e.tag == tags::SUBARRAY)
      leavesof(*e.subarray, leaves);
    else
      leaves.push_back(textof(e));
  }
}

class Structure : public Lifetimes, public testing::WithParamInterface<unsigned> {
 protected:
  std::mt19937 random{GetParam()};
  Point instruction = operation(instructions::REPLICATE, "REPLICATE");

  void TearDown() override {
    Lifetimes::TearDown();
    drop(instruction);
  }
  // Holds it, and half of the time for somebody else too.
  void share(const Point &p) {
    if (random() % 2 == 0) return;
    holdcopy(p);
    untouched.emplace_back(held.size() - 1, textof(p));
  }
  void expectresult(const Point &p, const Model &model) {
    ASSERT_EQ(shapeof(p), model.shape);
    ASSERT_EQ(textsof(p), model.texts);
    expecthonest(p);
    expectshared();
  }
  // What somebody else holds is as it was, and every count is right.
  void expectshared() const {
    for (const auto &[index, was] : untouched) ASSERT_EQ(textof(held[index]), was);
    expectexact();
  }
  void letgo() {
    Lifetimes::letgo();
    untouched.clear();
    expectexact();
  }
  Point some(std::size_t least, std::size_t most = 6) {
    return anyspace(random, anyshape(random, least + random() % (most - least + 1)));
  }
  void monadic(int (*run)(Point &), std::size_t leastrank, const std::function<Model(const Model &)> &model) {
    for (int round = 0; round < 60; ++round) {
      const Point data = some(leastrank);
      const Model old = modelof(data);
      share(data);
      Point &p = hold(data);
      ASSERT_EQ(run(p), 0);
      expectresult(p, old.texts.empty() ? old : model(old));
      if (HasFatalFailure()) return;
      letgo();
    }
  }
  // The result is in the left's place.
  void dyadic(int (*run)(Point &, Point &), const Point &left, const Point &right, const Model &model) {
    share(left);
    share(right);
    hold(left);
    hold(right);
    Point &l = held[held.size() - 2], &r = held.back();
    ASSERT_EQ(run(l, r), 0);
    ASSERT_EQ(r.data_pointer, nullptr);
    ASSERT_EQ(r.shape_pointer, nullptr);
    held.pop_back();
    expectresult(held.back(), model);
    if (!HasFatalFailure()) letgo();
  }
  void compressing(int (*run)(Point &, Point &), bool last) {
    for (int round = 0; round < 60; ++round) {
      Extents shape = anyshape(random, 1 + random() % 6);
      const std::size_t axis = last ? shape.size() - 1 : 0;
      shape[axis] = 2 + static_cast<std::int64_t>(random() % 4);
      const Point data = anyspace(random, shape);
      Elements mask;
      Extents places;
      for (std::int64_t i = 0; i < shape[axis]; ++i) {
        mask.push_back(whole(static_cast<std::int64_t>(random() % 4) - 1));
        if (mask.back().integer > 0) places.push_back(i);
      }
      Point m = vector(mask);
      if (random() % 3 == 0) m.type = ISVECTOR | 1;
      dyadic(run, m, data, keptmodel(modelof(data), axis, places));
      if (HasFatalFailure()) return;
    }
  }

 private:
  std::vector<std::pair<std::size_t, std::string>> untouched;
};

TEST_P(Structure, Reverse) {
  monadic(reverse, 0, reversemodel);
}

TEST_P(Structure, Mirror) {
  monadic(mirror, 1, mirrormodel);
}

TEST_P(Structure, Transpose) {
  monadic(transpose, 2, transposemodel);
}

TEST_P(Structure, Compress) {
  compressing(compress, false);
}

TEST_P(Structure, CompressLastAxis) {
  compressing(compresslastaxis, true);
}

TEST_P(Structure, FirstSlice) {
  monadic(first, 2, firstmodel);
}

TEST_P(Structure, RestOfSeveralSlices) {
  for (int round = 0; round < 60; ++round) {
    Extents shape = anyshape(random, 1 + random() % 6);
    for (std::int64_t &extent : shape) extent = std::max<std::int64_t>(extent, 1);
    shape.back() += 1 + static_cast<std::int64_t>(random() % 2);
    const Point data = anyspace(random, shape);
    const Model old = modelof(data);
    share(data);
    Point &p = hold(data);
    const bool elements = random() % 3 == 0;
    ASSERT_EQ(elements ? restelements(p) : rest(p), 0);
    Model model = restmodel(old);
    if (elements)
      model = {{static_cast<std::int64_t>(old.texts.size()) - 1}, Texts(old.texts.begin() + 1, old.texts.end())};
    expectresult(p, model);
    if (HasFatalFailure()) return;
    letgo();
  }
}

TEST_P(Structure, FirstOfAVector) {
  for (int round = 0; round < 60; ++round) {
    const Point data = anyspace(random, {1 + static_cast<std::int64_t>(random() % 4)});
    const Element e = *data.data_pointer;
    const std::string expected = e.tag == tags::SUBARRAY ? "1(1 [" + textof(e) + "])"
                                 : e.tag < 0             ? textof(std::bit_cast<Point>(e))
                                                         : "0([" + textof(e) + "])";
    share(data);
    Point &p = hold(data);
    ASSERT_EQ(first(p), 0);
    ASSERT_EQ(textof(p), expected);
    expecthonest(p);
    expectexact();
    letgo();
  }
}

TEST_P(Structure, Catenate) {
  for (int round = 0; round < 120; ++round) {
    Extents shape = anyshape(random, random() % 7);
    for (std::int64_t &extent : shape) extent = std::max<std::int64_t>(extent, 1);
    Extents other = shape;
    switch (random() % 4) {
      case 0:
        if (!other.empty()) other.back() += static_cast<std::int64_t>(random() % 3);
        break;
      case 1:
        if (!other.empty()) other.pop_back();
        break;
      case 2:
        other.push_back(static_cast<std::int64_t>(random() % 3) + 1);
        break;
      default:
        other = anyshape(random, random() % 7);
        for (std::int64_t &extent : other) extent = std::max<std::int64_t>(extent, 1);
    }
    const Point left = anyspace(random, shape), right = anyspace(random, other);
    dyadic(catenate, left, right, catenatemodel(modelof(left), modelof(right)));
    if (HasFatalFailure()) return;
  }
}

// A value joined to itself.
TEST_P(Structure, CatenateTwice) {
  for (int round = 0; round < 40; ++round) {
    Extents shape = anyshape(random, random() % 4);
    for (std::int64_t &extent : shape) extent = std::max<std::int64_t>(extent, 1);
    const Point left = anyspace(random, shape);
    Point right = left;
    referencepoint(&right);
    dyadic(catenate, left, right, catenatemodel(modelof(left), modelof(left)));
    if (HasFatalFailure()) return;
  }
}

TEST_P(Structure, Replicate) {
  for (int round = 0; round < 60; ++round) {
    const Point data = some(0, 5);
    const std::int64_t n = 1 + static_cast<std::int64_t>(random() % 4);
    Model model = modelof(data);
    const Texts once = model.texts;
    for (std::int64_t i = 1; i < n; ++i) model.texts.insert(model.texts.end(), once.begin(), once.end());
    model.shape.push_back(n);
    share(data);
    hold(random() % 2 == 0 ? scalar(whole(n)) : vector({real(static_cast<double>(n))}));
    hold(data);
    Point &l = held[held.size() - 2], &r = held.back();
    ASSERT_EQ(replicate(l, r, &instruction), 0);
    held.pop_back();
    const Point &p = held.back();
    ASSERT_EQ(shapeof(p), model.shape);
    ASSERT_EQ(textsof(p), model.texts);
    expectshared();
    if (HasFatalFailure()) return;
    letgo();
  }
}

TEST_P(Structure, Enlist) {
  for (int round = 0; round < 60; ++round) {
    const Point data = some(1);
    Texts leaves;
    leavesof(data, leaves);
    bool structured = false;
    for (std::uint32_t i = 0; i < data.elements; ++i)
      structured |= data.data_pointer[i].tag == tags::SUBARRAY || data.data_pointer[i].tag < 0;
    const Model old = modelof(data);
    share(data);
    Point &p = hold(data);
    ASSERT_EQ(enlist(p), 0);
    expectresult(p, structured ? Model{{static_cast<std::int64_t>(leaves.size())}, leaves} : old);
    if (structured) ASSERT_EQ(p.depth, 1);
    if (HasFatalFailure()) return;
    letgo();
  }
}

// There and back.
TEST_P(Structure, RavelEncloseDisclose) {
  for (int round = 0; round < 60; ++round) {
    const Point data = some(0);
    const std::string was = textof(data);
    const Texts texts = textsof(data);
    share(data);
    Point &p = hold(data);
    const bool atom = random() % 2 == 0;
    enclose(p, atom);
    expectexact();
    if (data.rank > 0 || atom) {
      ASSERT_EQ(p.type, ISSTRUCTURE | STRUCTURED | (atom ? ISSCALAR : ISVECTOR | ISONEELEMENT));
      ASSERT_EQ(shapeof(p), Extents{1});
      if (random() % 2 == 0) holdcopy(p);
    }
    ASSERT_EQ(disclose(p), 0);
    ASSERT_EQ(textof(p), was);
    expectexact();
    ravel(p);
    ASSERT_EQ(shapeof(p), Extents{static_cast<std::int64_t>(texts.size())});
    ASSERT_EQ(textsof(p), texts);
    expectexact();
    letgo();
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Structure, testing::Range(1u, 9u));

}  // namespace
