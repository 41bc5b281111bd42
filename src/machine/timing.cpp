// The clock, the switches of the reports, and the timing hook.
#include <sys/time.h>

#include "machine/inspect.h"

char timing, performance, processor_performance, flops, just_summary, terse_ops, opstime;
std::int64_t MHz;
double verbs, tval, prevtime, duration;

double clocktime() {
  timeval now;
  gettimeofday(&now, nullptr);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) / 1000000.0;
}

void beginstamp(Level &level) {
  level.stamp = tval;
  level.operated = operations;
}

void charge(Level &level) {
  const double time = clocktime() - level.stamp;
  const double done = operations - level.operated;
  Timing &row = InstructionTiming[level.instruction->instruction];
  row.time += time;
  row.squares += time * time;
  row.operations += done > 0 ? done : 1;
  row.flops += flopos;
  tval = clocktime();
}
