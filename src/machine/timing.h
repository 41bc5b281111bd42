// The clock, and the switches of the reports.
#pragma once

#include <cstdint>

// What the command line asks for.
extern char timing, performance, processor_performance, flops, just_summary, terse_ops, opstime;
extern std::int64_t MHz;

// In seconds.
extern double tval;      // the clock at the last reading
extern double prevtime;  // the clock at the start of the run
extern double duration;  // the time of the last run
double clocktime();      // the clock now

extern double verbs;  // the sum of `operators` over all inputs
