// The walk of a scalar instruction over records of any kinds. A stretch of one kind goes to its loop. Where the kinds
// change all the time, records are sorted by kind, 64 together, and then each kind has its loop: so the processor
// foresees its decisions, in whatever order the kinds come.
#pragma once

#include "arithmetic/frame.h"
#include "arithmetic/tags.h"
#include "failure/exception.h"

namespace morvik {

// Where fewer than these were of one kind, records are sorted until 64 together are of one again.
inline constexpr std::size_t TOGETHER = 8;
// So many go to a loop for more than one kind before the loops of one kind have their chance again.
inline constexpr std::size_t ATATIME = 256;
// A run of so many records is larger than the cache of a core.
inline constexpr std::size_t LARGE = std::size_t{1} << 15;

// The first records of a run by kinds, as many as are ready: a loop takes them, and their values do not fail.
template <class Family>
struct Batch {
  std::array<Sort, Family::KINDS> sorts;
  std::size_t found = 0, ready = 0;
};

// The place of the first record that is not ready, or SORTED.
template <std::size_t kinds>
std::size_t readyof(const Sort &sort, const Loops<kinds> &loops, const Run &run) {
  if (!loops.kernels[sort.kind]) return firstof(sort.places);
  const Check check = loops.checks[sort.kind];
  for (Places rest = check ? sort.places : 0; rest != 0; rest &= rest - 1)
    if (const std::size_t i = firstof(rest); check(run, i, i + 1) != 0) return i;
  return SORTED;
}

// The kinds are found in the order of their first records, so that one without a loop is the last to be found.
template <class Family>
Batch<Family> sorted(const Family &family, const Run &run, std::size_t size, bool ahead) {
  const auto sortof = family.sorter(run, size, ahead);
  Batch<Family> batch;
  batch.ready = size;
  for (Places rest = firstplaces(size); rest != 0;) {
    Sort &sort = batch.sorts[batch.found++] = sortof(firstof(rest));
    sort.places &= rest;
    batch.ready = std::min(batch.ready, readyof(sort, family.loops, run));
    rest &= batch.ready == 0 ? 0 : ~sort.places & firstplaces(batch.ready);
  }
  return batch;
}

// After a failure what is not made owns nothing.
template <class Family>
void workbatch(const Family &family, Run &run, const Batch<Family> &batch, Tally &tally) {
  Places left = 0;
  for (std::size_t k = 0; k < batch.found; ++k) {
    const Places places = batch.sorts[k].places & firstplaces(batch.ready);
    const bool works = places != 0 && tally.failure == 0;
    left |= works ? family.loops.picked[batch.sorts[k].kind](run, places, tally) : places;
  }
  for (; left != 0 && tally.failure == 0; left &= left - 1) {
    const std::size_t i = firstof(left);
    family.loops.kernels[family.kindat(run, i)](run, i, i + 1, tally);
  }
  if (run.fresh)
    for (; left != 0; left &= left - 1) leaveunmade(run.result[firstof(left)]);
}

// Works records as long as they are ready and not all of one kind.
template <class Family>
void worksorted(const Family &family, Run &run, std::size_t to, Tally &tally) {
  bool sorting = true;
  while (sorting && run.done < to && tally.failure == 0) {
    Run rest = run;
    rest.left += run.done * run.leftstep;
    rest.right += run.done * run.rightstep;
    rest.result += run.done;
    const std::size_t size = std::min(to - run.done, SORTED);
    const bool ahead = run.count > LARGE && to - run.done >= 2 * SORTED;
    const Batch<Family> batch = sorted(family, rest, size, ahead);
    if (batch.ready > 0) workbatch(family, rest, batch, tally);
    run.kinds = rest.kinds;
    run.done += batch.ready;
    sorting = batch.found > 1 && batch.ready == size;
  }
}

// Works all of a run. What a family of instructions tells of one of them:
//   loops                         by kinds, of which there are KINDS
//   stretch                       elements between two looks at an interrupt
//   inorder(run)                  does each element wait for the one before it? If not, the steps are 0 or 1
//   kindat(run, i)                the kind of what stands there
//   sorter(run, size, ahead)      gives for a place the Sort of what stands there; see Tags
//   goon(run, from, to, tally)    a loop for more than one kind, which may end where it begins
//   single(run, i, tally)         works what no loop takes, returns a message number
// Returns a message number, 0 for none, or INTERRUPTED.
template <class Family>
std::int32_t walk(const Family &family, Run &run, Tally &tally) {
  while (run.done < run.count) {
    if (tally.stopped && tally.stopped()) [[unlikely]]
      return INTERRUPTED;
    const std::size_t from = run.done, to = std::min(run.count, from + family.stretch), kind = family.kindat(run, from);
    std::int32_t message = 0;
    if (const Kernel kernel = family.loops.kernels[kind]) {
      run.done = kernel(run, from, to, tally);
      if (tally.failure == 0 && run.done - from < TOGETHER)
        run.done = family.goon(run, run.done, std::min(to, run.done + ATATIME), tally);
      if (tally.failure == 0 && run.done - from < TOGETHER && !family.inorder(run)) worksorted(family, run, to, tally);
      message = tally.failure;
    } else {
      message = family.single(run, from, tally);
      if (message == 0) ++run.done;
    }
    if (message != 0) return message;
  }
  return 0;
}

}  // namespace morvik
