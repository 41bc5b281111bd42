// What the process says about its own work when it ends.
#pragma once

namespace morvik {

// The report of instruction timings, on standard output, as the switches of the command line ask for it.
void exitreport();

extern double starttime;  // the clock at start

}  // namespace morvik
