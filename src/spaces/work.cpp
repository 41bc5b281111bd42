// How work is cut up, and what is in the records of the pool before there is one.
#include "spaces/work.h"

#include <algorithm>

#include "spaces/convert.h"

namespace morvik {

namespace {

constexpr double ROUNDING = 0.25;

// Where slice `index` begins, before it is clipped.
std::int64_t boundary(double count, double parts, double index) {
  const double least = static_cast<double>(MIN_PARALLEL);
  if (parts > 2 && count / parts > least) {
    const std::int64_t share = saturate((count - least) / (parts - 1) + ROUNDING);
    return MIN_PARALLEL - 1 + share * static_cast<std::int64_t>(index - 1);
  }
  return saturate(count / parts + ROUNDING) * static_cast<std::int64_t>(index);
}

}  // namespace

std::uint32_t processors = 1;
std::uint32_t cpus = 1;
std::int32_t thrds = 1;
std::int64_t MIN_PARALLEL = 1001;
Work to_coprocessors;

Point *resultinflight;
std::atomic<bool> slicesstopped;

Slice slice(std::uint32_t count, std::uint32_t parts, std::uint32_t index) {
  const auto clippedbegin = [=](std::uint32_t i) -> std::uint32_t {
    if (i == 0) return 0;
    if (i >= parts) return count;
    const std::int64_t begin = boundary(count, parts, i);
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(begin, std::min<std::int64_t>(1, count), count));
  };
  return {clippedbegin(index), clippedbegin(index + 1)};
}

void deferoperands(const Point &left) {
  from_coprocessor[0].deferred = left;
}

void deferoperands(const Point &left, const Point &right) {
  deferoperands(left);
  from_coprocessor[1].deferred = right;
}

void notedraws(std::uint32_t index, std::uint64_t *state) {
  if (!state) return;
  from_coprocessor[index].state = state;
  from_coprocessor[index].undrawn = *state;
}

Reply mainreply = [] {
  Reply reply{};
  reply.done = 1;
  return reply;
}();

Reply *from_coprocessor = &mainreply;

bool (*postcoprocessors)() = [] { return false; };
void (*recallslices)() = [] {};
void (*wait_for_coprocessors)(Point *&top, int operands) = [](Point *&, int) {};

}  // namespace morvik
