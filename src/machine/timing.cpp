// The clock, the switches of the reports, and the timing hook.
#include "machine/timing.h"

#include <sys/time.h>

#include <algorithm>
#include <limits>

#include "spaces/counters.h"
#include "spaces/instructions.h"

namespace morvik {

char timing, performance, processor_performance, flops, just_summary, terse_ops, opstime;
std::int64_t MHz;
double verbs, tval, prevtime, duration, totaltime;

namespace {

double timeofday() {
  constexpr double MICROSECOND = 1e-06;
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) * MICROSECOND;
}

// Comments, labels and the switches of tracing are charged to no row.
bool isfree(std::uint16_t number) {
  switch (number) {
    case instructions::NOOP:
    case instructions::TRACE:
    case instructions::STEP:
    case instructions::RUN:
      return true;
    default:
      return false;
  }
}

// Of these the loop hears nothing more: they leave their level.
bool isleaving(std::uint16_t number) {
  return number == instructions::FUNCTIONEND || number == instructions::RETURN;
}

}  // namespace

double (*clocktime)() = timeofday;
void (*followrun)(const Level &level, bool begins);

double persecond(double count, double seconds) {
  if (count == 0) return 0;
  return seconds > 0 ? count / seconds : std::numeric_limits<double>::infinity();
}

// The clock is read here, and not where the last instruction ended, so that neither the fetch nor a trace line nor a
// person at the Inspect prompt is charged.
void stampstart(Level &level) {
  const std::uint16_t number = level.instruction->instruction;
  if (isfree(number) || isleaving(number)) return;
  if (!level.stamped || level.current != level.start) tval = clocktime();
  level.stamped = false;
  level.stamp = tval;
  level.operated = operations;
}

// Nested runs moved the stamp on by what they took, so that a clock that was set back in one of them does no harm here.
void chargetime(Level &level) {
  if (isfree(level.instruction->instruction)) return;
  tval = clocktime();
  const double time = std::max(tval - level.stamp, 0.0);
  const double done = operations - level.operated;
  Timing &row = InstructionTiming[level.instruction->instruction];
  row.time += time;
  row.squares += time * time;
  row.operations += done > 0 ? done : 1;
  row.flops += flopos;
}

}  // namespace morvik
