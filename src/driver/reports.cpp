// What the process says about its own work when it ends.
#include "driver/reports.h"

// The machine fills InstructionTiming; nothing of it is printed yet.
void exitreport() {}
