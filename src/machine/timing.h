// The clock, what is measured with it, and the switches of the reports.
#pragma once

#include <cstdint>

#include "machine/level.h"

namespace morvik {

// What the command line asks for.
extern char timing, performance, processor_performance, flops, just_summary, terse_ops, opstime;
extern std::int64_t MHz;

// In seconds.
extern double tval;            // the clock at the last reading
extern double prevtime;        // the clock at the start of the run
extern double duration;        // the time of the last run
extern double totaltime;       // the time of all runs together, for the reports
extern double (*clocktime)();  // reads the clock, which may be set back at any time; a test puts its own in this place

extern double verbs;  // the sum of `operators` over all inputs

// How often a second; 0 for what was never done, whatever the time, and infinity for what took no time.
double persecond(double count, double seconds);

// Called with the place of a run while the timing hook is on: before each Point, and when a level begins. May be null.
extern void (*followrun)(const Level &level, bool begins);

// The timing hook: the start of an instruction, and the charge to its row afterwards.
void stampstart(Level &level);
void chargetime(Level &level);

}  // namespace morvik
