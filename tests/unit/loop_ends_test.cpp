// Each loop of each scalar instruction by itself: over whatever steps, and into whatever records, it makes what one
// pair after the other makes, ends at the first that is not for it, and ends whole where storage does.
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "arithmetic/pairs.h"
#include "points.h"
#include "recount.h"
#include "scalar_tables.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

using namespace morvik;

namespace {

using points::Elements;
using scalars::dyadics;
using scalars::monadics;
using scalars::same;

// ---- Records.

constexpr std::size_t COUNT = 6;

Element recordof(std::int32_t tag, std::size_t i) {
  const double x = static_cast<double>(i) + 1;
  switch (tag) {
    case tags::ASCII:
      return points::character(static_cast<char>('a' + i));
    case tags::UNICODE: {
      Element e = points::record(tags::UNICODE, 0);
      e.unicode = static_cast<std::uint16_t>(0x2200 + i);
      return e;
    }
    case tags::INTEGER:
      return points::whole(static_cast<std::int64_t>(i % 2));
    case tags::REAL:
      return points::real(i % 3 == 0 ? x : x / 4);
    case tags::COMPLEX:
      return points::complex(x, 2 - x);
    case tags::QUATERNION:
      return points::quaternions(x, 1, -x, 0.5);
    case tags::OCTONION:
      return points::octonion({x, 1, -2, x, 1, 3, -x, 0.5});
    default:
      return points::record(tags::FILLER, 0);
  }
}

Elements recordsof(std::int32_t tag, std::size_t count) {
  Elements records;
  for (std::size_t i = 0; i < count; ++i) records.push_back(recordof(tag, i));
  return records;
}

void drop(Elements &records) {
  dereferencedataelems(records.data(), records.size());
}
Elements copied(const Elements &records) {
  Elements copy = records;
  referencedataelems(copy.data(), copy.size());
  return copy;
}

Tally freshtally(std::uint64_t &state) {
  state = 1;
  Tally tally;
  tally.state = &state;
  tally.tolerance = 1e-10;
  return tally;
}

// ---- What a loop must come to: one record after the other, each by itself.

struct Expected {
  Elements results;  // up to where it ends
  std::int32_t failure = 0;
};

// `at(i)` is the run of the record i alone, without a result; `ischecked(run)` the message that its value gives.
template <class At, class Check, class Kernel>
Expected onebyone(std::size_t count, At at, Check checked, Kernel kernel) {
  Expected expected;
  for (std::size_t i = 0; i < count && expected.failure == 0; ++i) {
    Run one = at(i);
    Element result{};
    one.result = &result;
    one.fresh = true;
    std::uint64_t state;
    Tally tally = freshtally(state);
    expected.failure = checked(one);
    if (expected.failure != 0 || kernel(one, 0, 1, tally) == 0) {
      if (expected.failure == 0) expected.failure = tally.failure;
      break;
    }
    expected.results.push_back(result);
  }
  return expected;
}

// Where the two are not the same, a message.
std::string differing(const Expected &expected, const Elements &results, std::size_t done, std::int32_t failure) {
  if (done != expected.results.size())
    return "ended at " + std::to_string(done) + ", not " + std::to_string(expected.results.size());
  if (failure != expected.failure)
    return "gave " + std::to_string(failure) + ", not " + std::to_string(expected.failure);
  for (std::size_t i = 0; i < done; ++i)
    if (!same(results[i], expected.results[i])) return "differs at " + std::to_string(i);
  return "";
}

class LoopEnds : public Lifetimes {};

// ---- Two operands.

// What is combined, how far from one record to the next, and where a record of another kind stands.
struct Operands {
  std::int32_t left, right;
  std::size_t leftstep, rightstep;
  int stranger;  // -1 for the left operand, 1 for the right one, 0 for none
};
constexpr std::size_t STRANGER = 4;

struct Pairs {
  explicit Pairs(const Operands &o)
      : left(recordsof(o.left, COUNT * std::max<std::size_t>(o.leftstep, 1))),
        right(recordsof(o.right, COUNT * std::max<std::size_t>(o.rightstep, 1))) {
    if (o.stranger < 0) place(left, o.leftstep);
    if (o.stranger > 0) place(right, o.rightstep);
    run.left = left.data();
    run.right = right.data();
    run.leftstep = o.leftstep;
    run.rightstep = o.rightstep;
    run.resultstep = 1;
    run.count = COUNT;
    run.fresh = true;
  }
  ~Pairs() {
    drop(left);
    drop(right);
  }
  Pairs(const Pairs &) = delete;
  Pairs &operator=(const Pairs &) = delete;

  Run at(std::size_t i) const {
    Run one = run;
    one.left += i * run.leftstep;
    one.right += i * run.rightstep;
    one.count = 1;
    return one;
  }

  Elements left, right;
  Run run{};

 private:
  static void place(Elements &records, std::size_t step) {
    Element &e = records[step * STRANGER];
    dereferencedataelems(&e, 1);
    e = points::record(tags::FILLER, 0);
  }
};

Expected expectedof(const Dyadic &d, std::size_t kind, const Pairs &pairs) {
  const auto checked = [&](const Run &one) { return d.checks[kind] ? d.checks[kind](one, 0, 1) : 0; };
  return onebyone(
      COUNT, [&](std::size_t i) { return pairs.at(i); }, checked, d.kernels[kind]);
}

// What a stranger, or a value that fails, leaves: the places from it on.
PlaceMask placesfrom(std::size_t done) {
  constexpr PlaceMask all = (PlaceMask{1} << COUNT) - 1;
  return all & ~((PlaceMask{1} << done) - 1);
}

std::string triedfresh(const Dyadic &d, std::size_t kind, const Operands &o) {
  Pairs pairs(o);
  Expected expected = expectedof(d, kind, pairs);
  std::string told;
  for (const bool masked : {false, true}) {
    Elements results(COUNT);
    Run run = pairs.run;
    run.result = results.data();
    std::uint64_t state;
    Tally tally = freshtally(state);
    std::size_t done;
    if (masked) {
      const PlaceMask rest = d.masked[kind](run, placesfrom(0), tally);
      done = rest == 0 ? COUNT : lowestplace(rest);
      if (rest != placesfrom(done)) told += "left other places; ";
    } else {
      done = d.kernels[kind](run, 0, COUNT, tally);
    }
    told += differing(expected, results, done, tally.failure);
    results.resize(done);
    drop(results);
  }
  drop(expected.results);
  return told;
}

// Over the operand that has records enough, which somebody else sees too, or nobody.
std::string triedover(const Dyadic &d, std::size_t kind, const Operands &o, bool shared) {
  Pairs pairs(o);
  Expected expected = expectedof(d, kind, pairs);
  Elements &over = o.leftstep == 1 ? pairs.left : pairs.right;
  const Elements before = copied(over);
  Elements seen = shared ? before : Elements{};
  Elements last(over.begin() + static_cast<std::ptrdiff_t>(expected.results.size()), over.end());
  referencedataelems(last.data(), last.size());
  if (!shared) dereferencedataelems(const_cast<Element *>(before.data()), before.size());

  Run run = pairs.run;
  run.result = over.data();
  run.fresh = false;
  std::uint64_t state;
  Tally tally = freshtally(state);
  const std::size_t done = d.kernels[kind](run, 0, COUNT, tally);
  std::string told = differing(expected, over, done, tally.failure);
  for (std::size_t i = 0; told.empty() && i < last.size(); ++i)
    if (!same(over[done + i], last[i])) told = "wrote to what it did not take";
  drop(last);
  drop(seen);
  drop(expected.results);
  return told;
}

template <class Try>
void withallpairs(Try tried) {
  for (const auto &instruction : dyadics())
    for (std::size_t l = 0; l < LOOP_TAGS; ++l)
      for (std::size_t r = 0; r < LOOP_TAGS; ++r) {
        const std::size_t kind = kindof(tagof(l), tagof(r));
        if (!instruction.cores->kernels[kind]) continue;
        const std::string told = tried(*instruction.cores, kind, tagof(l), tagof(r));
        EXPECT_EQ(told, "") << instruction.name << " of tags " << tagof(l) << " and " << tagof(r);
      }
}

constexpr std::size_t STEPS[][2] = {{1, 1}, {1, 0}, {0, 1}, {2, 1}, {1, 2}};

TEST_F(LoopEnds, TwoOperandsIntoNewRecords) {
  withallpairs([](const Dyadic &d, std::size_t kind, std::int32_t left, std::int32_t right) {
    std::string told;
    for (const auto &step : STEPS)
      for (const int stranger : {0, -1, 1}) told += triedfresh(d, kind, {left, right, step[0], step[1], stranger});
    return told;
  });
}

TEST_F(LoopEnds, TwoOperandsOverOneOfThem) {
  withallpairs([](const Dyadic &d, std::size_t kind, std::int32_t left, std::int32_t right) {
    std::string told;
    for (const auto &step : {STEPS[0], STEPS[1], STEPS[2]})
      for (const int stranger : {0, -1, 1})
        for (const bool shared : {false, true})
          told += triedover(d, kind, {left, right, step[0], step[1], stranger}, shared);
    return told;
  });
}

// ---- One operand.

template <class Try>
void withallkinds(Try tried) {
  for (const auto &instruction : monadics())
    for (std::size_t kind = 0; kind < LOOP_TAGS; ++kind)
      if (instruction.cores->kernels[kind]) {
        const std::string told = tried(*instruction.cores, kind);
        EXPECT_EQ(told, "") << instruction.name << " of tag " << tagof(kind);
      }
}

Run runover(Elements &records, Elements &results, bool fresh) {
  return {records.data(), nullptr, fresh ? results.data() : records.data(), 1, 0, 1, records.size(), fresh};
}

std::string triedone(const Monadic &m, std::size_t kind, bool stranger, bool over) {
  if (over && m.failslate) return "";
  Elements records = recordsof(tagof(kind), stranger ? STRANGER : COUNT), results(COUNT);
  if (stranger) records.push_back(points::record(tags::FILLER, 0));
  std::uint64_t state, onestate = 1;
  const auto checked = [&](const Run &one) { return m.checks[kind] ? m.checks[kind](one, 0, 1) : 0; };
  const auto kernel = [&](Run &one, std::size_t from, std::size_t to, Tally &tally) {
    tally.state = &onestate;  // which goes on from one to the next
    return m.kernels[kind](one, from, to, tally);
  };
  Expected expected = onebyone(
      records.size(), [&](std::size_t i) { return Run{&records[i], nullptr, nullptr, 1, 0, 1, 1, true}; }, checked,
      kernel);
  Run run = runover(records, results, !over);
  Tally tally = freshtally(state);
  const std::size_t done = m.kernels[kind](run, 0, records.size(), tally);
  const std::string told = differing(expected, over ? records : results, done, tally.failure);
  results.resize(over ? 0 : done);
  drop(results);
  drop(records);
  drop(expected.results);
  return told;
}

TEST_F(LoopEnds, OneOperand) {
  withallkinds([](const Monadic &m, std::size_t kind) {
    std::string told;
    for (const bool stranger : {false, true})
      for (const bool over : {false, true}) told += triedone(m, kind, stranger, over);
    return told;
  });
}

// By places: what waits for those before it is left, and done later, as the walk does.
TEST_F(LoopEnds, OneOperandByPlaces) {
  withallkinds([](const Monadic &m, std::size_t kind) -> std::string {
    if (m.inorder) return "";
    Elements records = recordsof(tagof(kind), COUNT), results(COUNT);
    ::Run run = runover(records, results, true);
    std::uint64_t state;
    Tally tally = freshtally(state);
    const PlaceMask rest = m.masked[kind](run, placesfrom(0), tally);
    std::string told;
    for (std::size_t i = 0; i < COUNT; ++i) {
      if ((rest >> i & 1) != 0) {
        results[i] = points::record(tags::FILLER, 0);
        continue;
      }
      Element result{};
      ::Run one{&records[i], nullptr, &result, 1, 0, 1, 1, true};
      Tally alone = freshtally(state);
      if (m.kernels[kind](one, 0, 1, alone) != 1 || !same(result, results[i])) told += "differs; ";
      dereferencedataelems(&result, 1);
    }
    drop(results);
    drop(records);
    return told;
  });
}

// ---- Without storage. The blocks of octonions are taken away, all but some.

#if defined(MORVIK_CHECKING) || !defined(MORVIK_SYSTEM_HEAP)

#ifdef MORVIK_CHECKING

// An allocation fails on demand.
class Shortage {
 public:
  explicit Shortage(std::size_t granted) { failallocation(static_cast<std::int64_t>(granted)); }
  ~Shortage() { failallocation(-1); }
  Shortage(const Shortage &) = delete;
  Shortage &operator=(const Shortage &) = delete;
};

#else

class Shortage {
 public:
  explicit Shortage(std::size_t granted) : errors(dup(STDERR_FILENO)) {
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
    getrlimit(RLIMIT_DATA, &limit);
    const rlimit none{0, limit.rlim_max};
    setrlimit(RLIMIT_DATA, &none);
    constexpr std::size_t size = BLOCK_PREFIX + sizeof(Octonion);
    while (void *const payload = std::malloc(size)) taken = link(payload, taken);
    for (; granted > 0 && taken; --granted) giveback();
  }
  ~Shortage() {
    while (taken) giveback();
    setrlimit(RLIMIT_DATA, &limit);
    dup2(errors, STDERR_FILENO);
    close(errors);
  }
  Shortage(const Shortage &) = delete;
  Shortage &operator=(const Shortage &) = delete;

 private:
  static void *link(void *payload, void *next) {
    std::memcpy(payload, &next, sizeof next);
    return payload;
  }
  void giveback() {
    void *const payload = taken;
    std::memcpy(&taken, payload, sizeof taken);
    std::free(payload);
  }

  int errors;
  rlimit limit{};
  void *taken = nullptr;
};

#endif

struct Ended {
  std::size_t done;
  std::int32_t failure;
};

// Lets the block of each result fail in turn. `work(run, tally)` tells where it ended.
template <class Work>
std::string triedwithout(const Run &whole, Work work) {
  const std::int64_t live = liveblocks();
  std::uint64_t state;
  Elements results(COUNT);
  Run run = whole;
  run.result = results.data();
  Tally tally = freshtally(state);
  const std::size_t most = work(run, tally);
  const std::int64_t blocks = liveblocks() - live;
  results.resize(most);
  drop(results);
  if (blocks == 0) return "";
  std::string told = static_cast<std::size_t>(blocks) == most ? "" : "not each has a block; ";
  for (std::size_t granted = 0; granted < most; ++granted) {
    results.assign(COUNT, Element{});
    run = whole;
    run.result = results.data();
    tally = freshtally(state);
    Ended ended{};
    {
      const Shortage shortage(granted);
      ended.done = work(run, tally);
      ended.failure = tally.failure;
    }
    results.resize(std::min(ended.done, COUNT));
    drop(results);
    if (ended.done != granted) told += "ended at " + std::to_string(ended.done) + " with " + std::to_string(granted);
    if (ended.failure != messages::OUT_OF_STORAGE) told += "gave " + std::to_string(ended.failure);
    if (liveblocks() != live) told += "lost a block";
  }
  return told;
}

TEST_F(LoopEnds, TwoOperandsWithoutStorage) {
  withallpairs([](const Dyadic &d, std::size_t kind, std::int32_t left, std::int32_t right) {
    std::string told;
    for (const auto &step : STEPS) {
      const Pairs pairs({left, right, step[0], step[1], 0});
      told += triedwithout(pairs.run, [&](::Run &run, Tally &tally) { return d.kernels[kind](run, 0, COUNT, tally); });
      told += triedwithout(pairs.run, [&](::Run &run, Tally &tally) {
        const PlaceMask rest = d.masked[kind](run, placesfrom(0), tally);
        return rest == 0 ? COUNT : lowestplace(rest);
      });
    }
    return told;
  });
}

TEST_F(LoopEnds, OneOperandWithoutStorage) {
  withallkinds([](const Monadic &m, std::size_t kind) {
    Elements records = recordsof(tagof(kind), COUNT), none;
    const ::Run whole = runover(records, none, true);
    std::string told =
        triedwithout(whole, [&](::Run &run, Tally &tally) { return m.kernels[kind](run, 0, COUNT, tally); });
    told += triedwithout(whole, [&](::Run &run, Tally &tally) {
      const PlaceMask rest = m.masked[kind](run, placesfrom(0), tally);
      return rest == 0 ? COUNT : lowestplace(rest);
    });
    drop(records);
    return told;
  });
}

#endif

}  // namespace
