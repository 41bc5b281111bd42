// Failure: numbered messages, the one recovery point, signals, and the custody of what a jump would leak.
#pragma once

#include <csetjmp>
#include <csignal>
#include <cstdint>

#include "spaces/point.h"

extern jmp_buf error_jump;                // saved by machine at level 0, and by fill for the time of a compile
extern std::int32_t A_Problem;            // 1 after message 27 and a user interrupt, until level 0 recovers
extern std::int16_t violations;           // segmentation and bus faults in this run
extern char PrintOut;                     // set while a value is being printed
extern char stepping;                     // trace and inspect work only while it is set; every message sets it
extern char endprocess;                   // ends the prompt loop
extern thread_local std::int32_t aplerr;  // what the numeric kernels report: a message number, 0 for none

// The text of a message; a number without a row gives the text of 999.
const char *errors(std::uint32_t number);

// Reports a message on standard error, with the dump of the instruction for a positive number other than 27.
// `stackpointer` is the address of the caller's stack top, or null; `instruction` the Point at work, or null.
// Returns, but for 999 and for signals (numbers below -999), which jump.
void exception(std::int32_t number, Point **stackpointer, const Point *instruction);
// exception(number, null, null), then the jump.
[[noreturn]] void exceptionjump(std::int32_t number);
// exception(...), then the jump: how an array or scalar instruction fails.
[[noreturn]] void exceptionjump(std::int32_t number, Point **stackpointer, const Point *instruction);
// The end of work that returned a message number, which may be INTERRUPTED.
inline constexpr std::int32_t INTERRUPTED = -1;
[[noreturn]] void failwork(std::int32_t message, Point **stackpointer, const Point *instruction);
// The one jump to error_jump. Where none is armed, as at the start, it ends the process with status 1.
[[noreturn]] void jump(int value);

// Ends the process where it stands; only what was printed still goes out.
[[noreturn]] void endatonce(int status);

// Landings. The frames that a jump drops are gone when it lands: whatever must still be read from them is read, and
// whatever they hold in hand is released, by `jump` itself, before it leaves. So a landing is armed right before each
// setjmp(error_jump) and put back as it was on every way out of the function that armed it.
struct Custody;
struct Landing {
  jmp_buf buffer;
  Custody *mark;     // custody that was taken before the landing was armed stays
  void (*unwind)();  // called by jump while the frames still stand; null for nothing to do. A jump inside it goes on
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

// Signals. Interrupt and quit, and the fault signals that a process sends, are only noted, and taken at the next safe
// point. From the note on whatever waits is broken off again and again (EINTR), so that each wait comes to one.
extern volatile std::sig_atomic_t interrupted;
inline bool isinterrupted() {
  return interrupted != 0;
}
// Takes the signal that was noted: prints it and jumps. Not for coprocessor threads.
[[noreturn]] void takeinterrupt();
// A safe point: between Points, and at least every 50 ms in long loops, sleeps and reads.
inline void safepoint() {
  if (interrupted != 0) [[unlikely]]
    takeinterrupt();
}
// Once at start, on the main thread: the alternate stack, the faults' handlers, the end of the process stack where no
// limit sets one, SIGPIPE ignored.
void initsignals();
// While a text is read: interrupt and quit are ignored, one that was noted and not taken is dropped, and SIGBUS has its
// default action. A Programme that reads calls safepoint() first.
void readingsignals();
// While a Programme runs: interrupt, quit, bus and floating point signals are handled.
void runningsignals();
// While a Programme that runs compiles a text: interrupt and quit wait, and are noted when they are admitted again.
// Takes one that was noted before.
void deferinterrupts();
void admitinterrupts();
// What the handlers do with a signal that nobody sent: an interrupt is noted, a fault is raised at once.
void signalexception(int signal);
// What a signal does, at once: the report and the jump.
[[noreturn]] void raised(int signal);

// Custody: what a frame holds in hand and a jump would leak. The jump releases all that was taken since its landing was
// armed, the latest first; for a frame that ended in peace that is nothing. A record lives in the frame of its owner,
// which takes and ends it in stack order.
struct Custody {
  void (*release)(Custody &);
  Custody *outer;
  void *held;
};
extern Custody *custody;
// Custody of a Point kept aside (held: Point *), of a Programme (held: its first Point), of a counted block.
void releasepoint(Custody &);
void releaseprogramme(Custody &);
void releaseblock(Custody &);
inline void takecustody(Custody &c, void (*release)(Custody &), void *held) {
  c = {release, custody, held};
  custody = &c;
}
// The owner has the thing back; `c` must be the latest.
inline void endcustody(const Custody &c) {
  custody = c.outer;
}
// Releases everything that was taken later than `mark`. For frames that still stand: jump calls it, a landing finds
// nothing left to do.
void landcustody(Custody *mark);
