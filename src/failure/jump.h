// The one jump, its landings, and what is noted between a failure and its landing.
#pragma once

#include <csetjmp>
#include <cstdint>

#include "failure/custody.h"

namespace morvik {

extern jmp_buf error_jump;           // saved by machine at level 0, and by fill for the time of a compile
extern std::int32_t pendingproblem;  // 1 after message 27 and a user interrupt, until level 0 recovers
extern std::int16_t violations;      // segmentation and bus faults in this run
extern char printing;                // set while a value is being printed
extern char stepping;                // trace and inspect work only while it is set; every message sets it
extern char endprocess;              // ends the prompt loop

// A signal comes as a message too: signal n is SIGNAL_NUMBERS - n.
inline constexpr std::int32_t SIGNAL_NUMBERS = -1000;

// The one jump to error_jump. Where none is armed, as at the start, it ends the process with status 1.
[[noreturn]] void jump(int value);

// Ends the process at once; only what was printed is still written.
[[noreturn]] void endatonce(int status);

// Landings. The frames that a jump drops are gone when it lands: whatever must still be read from them is read, and
// whatever they hold is released, by `jump` itself, before it leaves. So a landing is armed right before each
// setjmp(error_jump) and put back as it was on every path out of the function that armed it.
struct Landing {
  jmp_buf buffer;
  Custody *mark;     // custody that was taken before the landing was armed stays
  void (*unwind)();  // called by jump while the frames still exist; null for nothing to do. A jump inside it goes on
  void (*join)();    // waits for the work that runs beside the caller; null where there is none. See joinahead
};
// Keeps the landing in force in `outer`, and makes ready for a setjmp(error_jump) in the caller's frame. What was begun
// under the outer landing is joined first, as its failure is to land there.
void armlanding(Landing &outer, void (*unwind)(), void (*join)() = nullptr);
// Puts the outer landing back.
void disarmlanding(const Landing &outer);

// Joins what other threads still work at. Nothing is reported and nothing jumps before: what they work at was begun
// earlier, so that where it fails, its message is the one to report, and this does not return.
void joinahead();

}  // namespace morvik
