// The walk of a scalar instruction over records of any kinds. A stretch of one kind goes to its loop. Where the kinds
// change all the time, 64 records at a time are grouped by kind, and each kind has its loop: so branch prediction
// works, in whatever order the kinds come.
#pragma once

#include <cassert>

#include "arithmetic/frame.h"
#include "arithmetic/tags.h"
#include "failure/exception.h"

namespace morvik {

// Where fewer than these were of one kind, records are grouped until 64 in a row are of one again.
inline constexpr std::size_t SHORT_RUN = 8;
// So many go to a loop for more than one kind before the loops of one kind have their chance again.
inline constexpr std::size_t MIXED_AT_A_TIME = 256;
// A run of so many records is larger than the cache of a core.
inline constexpr std::size_t CACHE_RECORDS = std::size_t{1} << 15;

// The first records of a run by kinds, as many as are ready: a loop takes them, and their values do not fail.
template <class Family>
struct Batch {
  std::array<KindMask, Family::KINDS> kindmasks;
  std::size_t found = 0, ready = 0;
};

// The place of the first record that is not ready, or MASK_BITS.
template <std::size_t kinds>
std::size_t firstunready(const KindMask &kindmask, const Loops<kinds> &loops, const Run &run) {
  if (!loops.kernels[kindmask.kind]) return lowestplace(kindmask.places);
  const Check check = loops.checks[kindmask.kind];
  for (PlaceMask rest = check ? kindmask.places : 0; rest != 0; rest &= rest - 1)
    if (const std::size_t i = lowestplace(rest); check(run, i, i + 1) != 0) return i;
  return MASK_BITS;
}

// The kinds are found in the order of their first records, so that one without a loop is the last to be found.
template <class Family>
Batch<Family> groupbykind(const Family &family, const Run &run, std::size_t size, bool ahead) {
  const auto kindmaskat = family.kindmaskof(run, size, ahead);
  Batch<Family> batch;
  batch.ready = size;
  for (PlaceMask rest = firstplacemask(size); rest != 0;) {
    assert(batch.found < Family::KINDS);  // the place that was asked for is in its mask, so that no kind is found twice
    KindMask &kindmask = batch.kindmasks[batch.found++] = kindmaskat(lowestplace(rest));
    kindmask.places &= rest;
    batch.ready = std::min(batch.ready, firstunready(kindmask, family.loops, run));
    rest &= batch.ready == 0 ? 0 : ~kindmask.places & firstplacemask(batch.ready);
  }
  return batch;
}

// After a failure what is not made owns nothing.
template <class Family>
void workbatch(const Family &family, Run &run, const Batch<Family> &batch, Tally &tally) {
  PlaceMask left = 0;
  for (std::size_t k = 0; k < batch.found; ++k) {
    const PlaceMask places = batch.kindmasks[k].places & firstplacemask(batch.ready);
    const bool works = places != 0 && tally.failure == 0;
    left |= works ? family.loops.masked[batch.kindmasks[k].kind](run, places, tally) : places;
  }
  for (; left != 0 && tally.failure == 0; left &= left - 1) {
    const std::size_t i = lowestplace(left);
    family.loops.kernels[family.kindat(run, i)](run, i, i + 1, tally);
  }
  if (run.fresh)
    for (; left != 0; left &= left - 1) setfiller(run.result[lowestplace(left)]);
}

// Works records as long as they are ready and not all of one kind.
template <class Family>
void workbykind(const Family &family, Run &run, std::size_t to, Tally &tally) {
  bool grouping = true;
  while (grouping && run.done < to && tally.failure == 0) {
    Run rest = run;
    rest.left += run.done * run.leftstep;
    rest.right += run.done * run.rightstep;
    rest.result += run.done;
    const std::size_t size = std::min(to - run.done, MASK_BITS);
    const bool ahead = run.count > CACHE_RECORDS && to - run.done >= 2 * MASK_BITS;
    const Batch<Family> batch = groupbykind(family, rest, size, ahead);
    if (batch.ready > 0) workbatch(family, rest, batch, tally);
    run.kinds = rest.kinds;
    run.done += batch.ready;
    grouping = batch.found > 1 && batch.ready == size;
  }
}

// Works all of a run. What a family of instructions tells of one of them:
//   loops                                  by kinds, of which there are KINDS
//   pollinterval                           elements between two safe points
//   inorder(run)                           does each element wait for the one before it? If not, the steps are 0 or 1
//   kindat(run, i)                         the kind of what is there
//   kindmaskof(run, size, ahead)           gives for a place the KindMask of what is there; see Tags
//   continuemixed(run, from, to, tally)    a loop for more than one kind, which may end where it begins
//   workelement(run, i, tally)             works what no loop takes, returns a message number
// Returns a message number, 0 for none, or INTERRUPTED.
template <class Family>
std::int32_t walk(const Family &family, Run &run, Tally &tally) {
  while (run.done < run.count) {
    if (tally.stopped && tally.stopped()) [[unlikely]]
      return INTERRUPTED;
    const std::size_t from = run.done, to = std::min(run.count, from + family.pollinterval),
                      kind = family.kindat(run, from);
    std::int32_t message = 0;
    if (const Kernel kernel = family.loops.kernels[kind]) {
      run.done = kernel(run, from, to, tally);
      if (tally.failure == 0 && run.done - from < SHORT_RUN)
        run.done = family.continuemixed(run, run.done, std::min(to, run.done + MIXED_AT_A_TIME), tally);
      if (tally.failure == 0 && run.done - from < SHORT_RUN && !family.inorder(run)) workbykind(family, run, to, tally);
      message = tally.failure;
    } else {
      message = family.workelement(run, from, tally);
      if (message == 0) ++run.done;
    }
    if (message != 0) return message;
  }
  return 0;
}

}  // namespace morvik
