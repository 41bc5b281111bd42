// How a level is left: by a failure, by RETURN and its like, or at the end of a run.
#include "machine/leave.h"

#include <cstring>

#include "failure/exception.h"
#include "failure/hearing.h"
#include "failure/jump.h"
#include "frontend/contexts.h"
#include "machine/level.h"
#include "machine/timing.h"
#include "spaces/counters.h"
#include "spaces/loose.h"
#include "spaces/making.h"
#include "spaces/streams.h"
#include "spaces/symbols.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

char echoing = 1;

Next fail(Level &level, int number) {
  exception(number, &level.sp, level.instruction);
  return levelreturn(level);
}

Next levelreturn(Level &level) {
  popcontexts(level);
  if (printing) {
    printing = 0;
    return Next::LEAVE;
  }
  if (endprocess || level.level != 0 || pendingproblem != 1 || !hasvalues(level, 1)) return Next::LEAVE;
  if (conversing) std::fputs("\n-- - Discarding the bad TOS value...\n", outputstream);
  const std::uint32_t kept = level.sp->type & HASASCII;
  pendingproblem = 0;
  droptop(level);
  // The slot counts again only when it is whole: a failed allocation lands here once more, one value lower.
  makeempty(level.sp[1]);
  ++level.sp;
  level.sp->type |= kept;
  return Next::LEAVE;
}

bool isouter(const Context *link, const Context *inner) {
  while (inner && inner != link) inner = inner->previous;
  return inner != nullptr;
}

void unwindcontexts(Level &level) {
  // PREVIOUSCONTEXT may have stepped out of the link that the level entered with; that one is the caller's.
  while (!isouter(level.meaning, level.entry)) level.meaning = popsymtabs(level.meaning);
  level.meaning = level.entry;
  while (level.entryuses >= 0 && level.entry->uses > level.entryuses) popsymtabs(level.entry);
}

namespace {

void reportrun() {
  if (timing || performance || processor_performance) duration = clocktime() - prevtime;
  if (performance || processor_performance) std::fputc('\n', outputstream);
  if (performance && operators > 0)
    std::fprintf(outputstream,
                 "\n-->\tExecuted %.0lf operators, %.0lf operations.\n-->\tPerformance:\t%.2lf Morvik operators/sec,\n"
                 "\t\t\t%.2lf scalar operations/sec.\n",
                 operators, operations, persecond(operators, duration), persecond(operations, duration));
  if (processor_performance)
    std::fprintf(outputstream, "\n-->\tProcessor performance: %lg Morvik operations per Mhz\n",
                 persecond(operators + operations, duration) / static_cast<double>(MHz));
  if (timing) writetime(duration);
}

// The end of a run at level 0: the join, the run reports and the echo.
[[gnu::noinline]] void endofrun(Level &level) {
  joinpool(level.sp);
  reportrun();
  if (!echoing) return;
  if (hasvalues(level, 1))
    dump(outputstream, "\n\n", level.sp);
  else
    std::fputs("\n-", outputstream);
}

}  // namespace

Next reachend(Level &level) {
  popcontexts(level);
  if (level.level == 0) endofrun(level);
  return Next::LEAVE;
}

Next endlevel(Level &level) {
  // Kept: a function of one local that leaves nothing leaves the local, since the top is where the frame begins.
  if (level.ownsframe && level.frame < level.floor && level.sp != level.frame) {
    if (resultinflight >= level.frame) joinpool(level.sp);
    for (Point *local = level.frame; local < level.floor; ++local) dereferencepoint(local);
    const std::ptrdiff_t results = level.sp - level.floor + 1;
    std::memmove(level.frame, level.floor, static_cast<std::size_t>(results) * sizeof(Point));
    level.sp = level.frame + results - 1;
    if (lowestloose != NONE_LOOSE) noteloose(level.frame);
  }
  return reachend(level);
}

}  // namespace morvik
