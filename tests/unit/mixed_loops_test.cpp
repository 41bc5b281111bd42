// Records whose kinds change all the time: what the loops over them make, count and refuse is what each record gives
// alone, which goes to the loop of its kind.
#include <limits>
#include <random>
#include <vector>

#include "arithmetic/pairs.h"
#include "arithmetic/pairwalk.h"
#include "points.h"
#include "recount.h"
#include "scalar_tables.h"
#include "spaces/refderef.h"
#include "unit/lists.h"

using namespace morvik;

namespace {

using points::Elements;
using scalars::dyadics;
using scalars::Instruction;
using scalars::monadics;

template <class Cores>
lists::Lines namesof(const std::vector<Instruction<Cores>> &instructions) {
  lists::Lines names;
  for (const auto &instruction : instructions) names.push_back(instruction.name);
  return names;
}

// ---- Operands: kinds that change at every record, or now and then, with values at all the edges.

class Drawing {
 public:
  explicit Drawing(unsigned seed) : random(seed) {}
  std::size_t below(std::size_t limit) { return random() % limit; }

  Elements records(std::size_t count) {
    static constexpr std::size_t numbers[] = {2, 2, 4, KINDS - RARE};
    const std::size_t stay = 1 + below(4) * below(4), kinds = numbers[below(std::size(numbers))],
                      rarely = 20 << below(6);
    Elements made;
    std::size_t kind = 0;
    for (std::size_t i = 0; i < count; ++i) {
      if (below(stay) == 0) kind = below(kinds);
      made.push_back(record(below(rarely) == 0 ? KINDS - 1 - below(RARE) : kind));
    }
    return made;
  }

 private:
  static constexpr std::size_t KINDS = 8, RARE = 3;

  Element record(std::size_t kind) {
    using Limits = std::numeric_limits<std::int64_t>;
    static constexpr std::int64_t wholes[] = {0, 1, -1, 2, 3, 5, 17, 25, 1000, 1LL << 53, Limits::max(), Limits::min()};
    static constexpr double reals[] = {0,   -0.0, 1,     -1,     0.5,  1.0 / 3, -2.5,    2,
                                       7.3, 1e10, 1e308, 0x1p63, 1e-9, NAN,     INFINITY};
    const auto real = [&] { return reals[below(std::size(reals))]; };
    switch (kind) {
      case 0:
        return points::whole(wholes[below(std::size(wholes))]);
      case 1:
        return points::real(real());
      case 2:
        return points::complex(real(), real());
      case 3:
        return points::quaternions(real(), real(), real(), real());
      case 4:
        return points::octonion({real(), real(), real(), real(), real(), real(), real(), real()});
      case 5:
        return points::enclosed(points::vector({record(below(2)), record(below(2))}));
      case 6:
        return points::character('a');
      default:
        return points::record(tags::FILLER, 0);
    }
  }

  std::mt19937 random;
};

bool same(double a, double b) {
  return std::isnan(a) ? std::isnan(b) : std::memcmp(&a, &b, sizeof a) == 0;
}
bool same(const Element &a, const Element &b) {
  if (headingof(a) != headingof(b)) return false;
  switch (a.tag) {
    case tags::REAL:
      return same(a.real, b.real);
    case tags::COMPLEX:
      return same(a.complex.re, b.complex.re) && same(a.complex.im, b.complex.im);
    case tags::QUATERNION: {
      const Quaternion p = quaternion(a), q = quaternion(b);
      return std::equal(p.part, p.part + 4, q.part, [](double x, double y) { return same(x, y); });
    }
    case tags::OCTONION:
      return std::equal(a.octonion->part, a.octonion->part + 8, b.octonion->part,
                        [](double x, double y) { return same(x, y); });
    case tags::SUBARRAY:
      return std::equal(a.subarray->data_pointer, a.subarray->data_pointer + a.subarray->elements,
                        b.subarray->data_pointer, b.subarray->data_pointer + b.subarray->elements,
                        [](const Element &x, const Element &y) { return same(x, y); });
    default:
      return a.integer == b.integer;
  }
}

// ---- All at once against one by one.

struct Worked {
  Elements result;
  std::size_t done = 0;
  std::int32_t message = 0;
  std::uint32_t kinds = 0;
  double flops = 0, operations = 0;
};
void drop(Elements &records, std::size_t count) {
  dereferencedataelems(records.data(), count);
}

template <class Cores>
Worked worked(const Cores &cores, const Run &whole, std::size_t atonce) {
  Worked w{Elements(whole.count), 0, 0, 0, 0, 0};
  std::uint64_t state = 1;
  for (std::size_t from = 0; from < whole.count && w.message == 0; from += atonce) {
    Run run = whole;
    run.left += from * run.leftstep;
    if (run.right) run.right += from * run.rightstep;
    run.result = w.result.data() + from;
    run.count = std::min(atonce, whole.count - from);
    Tally tally;
    tally.state = &state;
    tally.tolerance = 1e-10;
    w.message = work(cores, run, tally);
    w.done += run.done;
    w.kinds |= run.kinds;
    w.operations += tally.operations;
    w.flops += w.message == 0 ? tally.flops : 0;
  }
  return w;
}

template <class Cores>
void expectalike(const Instruction<Cores> &instruction, const Run &run) {
  Worked together = worked(*instruction.cores, run, run.count), alone = worked(*instruction.cores, run, 1);
  EXPECT_EQ(together.message, alone.message) << instruction.name;
  if (alone.message == 0) {
    EXPECT_EQ(together.kinds, alone.kinds) << instruction.name;
    EXPECT_EQ(together.flops, alone.flops) << instruction.name;
    EXPECT_EQ(together.operations, alone.operations) << instruction.name;
    for (std::size_t i = 0; i < run.count; ++i)
      EXPECT_TRUE(same(together.result[i], alone.result[i]))
          << instruction.name << " at " << i << ": " << run.left[i * run.leftstep].tag << " gave "
          << together.result[i].real << " and alone " << alone.result[i].real;
  }
  drop(together.result, together.done);
  drop(alone.result, alone.done);
}

// More than are sorted together, and no multiple of it.
constexpr std::size_t COUNT = 150;
constexpr unsigned ROUNDS = 120;

class MixedLoops : public Lifetimes {};

TEST_F(MixedLoops, TwoOperands) {
  lists::expectlist("dyadic_cores", namesof(dyadics()));
  for (const auto &instruction : dyadics())
    for (unsigned round = 0; round < ROUNDS; ++round) {
      Drawing drawing(round);
      Elements left = drawing.records(COUNT), right = drawing.records(COUNT);
      ::Run run{left.data(), right.data(), nullptr, 1, 1, 1, COUNT, true};
      if (round % 3 == 1) run.leftstep = 0;
      if (round % 3 == 2) run.rightstep = 0;
      expectalike(instruction, run);
      drop(left, COUNT);
      drop(right, COUNT);
    }
}

TEST_F(MixedLoops, OneOperand) {
  lists::expectlist("monadic_cores", namesof(monadics()));
  for (const auto &instruction : monadics())
    for (unsigned round = 0; round < ROUNDS; ++round) {
      Elements operand = Drawing(round).records(COUNT);
      expectalike(instruction, ::Run{operand.data(), nullptr, nullptr, 1, 0, 1, COUNT, true});
      drop(operand, COUNT);
    }
}

// So many that what comes next is asked for from memory.
TEST_F(MixedLoops, MoreThanACacheHolds) {
  constexpr std::size_t many = 40'003;
  Elements records;
  for (std::size_t i = 0; i < many; ++i)
    records.push_back(i * i % 7 < 3 ? points::complex(static_cast<double>(i), 1) : points::whole(static_cast<int>(i)));
  const auto *add = dyadiccores(instructions::ADD);
  expectalike(Instruction<Dyadic>{"ADD", add}, ::Run{records.data(), records.data(), nullptr, 1, 1, 1, many, true});
  const Instruction<Monadic> first = monadics()[0];
  expectalike(first, ::Run{records.data(), nullptr, nullptr, 1, 0, 1, many, true});
}

#ifdef MORVIK_CHECKING

// Whichever allocation fails, what was made of a batch is given back.
TEST_F(MixedLoops, OutOfStorage) {
  const auto tried = [&](auto &&once) {
    for (std::int64_t successes = 0;; ++successes) {
      const std::int64_t live = liveblocks();
      Elements result(COUNT);
      failallocation(successes);
      ::Run run = once(result);
      failallocation(-1);
      drop(result, run.done);
      ASSERT_EQ(liveblocks(), live) << "after " << successes;
      if (run.done == COUNT && run.count == 0) break;
    }
  };
  Elements records;
  for (std::size_t i = 0; i < COUNT; ++i)
    records.push_back(i % 3 == 0 ? points::octonion({1, 2, 3, 4, 5, 6, 7, 8}) : points::real(static_cast<double>(i)));
  const auto after = [](const auto &cores, ::Run run) {
    Tally tally;
    const std::int32_t message = work(cores, run, tally);
    EXPECT_TRUE(message == 0 || message == 27) << message;
    if (message == 0) run.count = 0;
    return run;
  };
  for (const auto &instruction : {dyadiccores(instructions::ADD), dyadiccores(instructions::MULTIPLY)})
    tried([&](Elements &result) {
      return after(*instruction, ::Run{records.data(), &records[1], result.data(), 1, 0, 1, COUNT, true});
    });
  tried([&](Elements &result) {
    return after(*monadics()[0].cores, ::Run{records.data(), nullptr, result.data(), 1, 0, 1, COUNT, true});
  });
  drop(records, COUNT);
}

#endif

// As a fold works: each result is the next left operand.
TEST_F(MixedLoops, Folds) {
  for (const auto &instruction : dyadics())
    for (unsigned round = 0; round < ROUNDS; ++round) {
      Elements records = Drawing(round).records(COUNT);
      Element together = records[0], alone = records[0];
      referencedataelems(&together, 1);
      referencedataelems(&alone, 1);
      std::int32_t message = 0;
      Tally tally, sum;
      for (std::size_t i = 1; i < COUNT && message == 0; ++i) {
        ::Run step{&alone, &records[i], &alone, 0, 0, 0, 1, false};
        message = work(*instruction.cores, step, sum);
      }
      ::Run run{&together, &records[1], &together, 0, 1, 0, COUNT - 1, false};
      EXPECT_EQ(work(*instruction.cores, run, tally), message) << instruction.name;
      if (message == 0) {
        EXPECT_TRUE(same(together, alone)) << instruction.name;
        EXPECT_EQ(tally.flops, sum.flops) << instruction.name;
      }
      dereferencedataelems(&together, 1);
      dereferencedataelems(&alone, 1);
      drop(records, COUNT);
    }
}

}  // namespace
