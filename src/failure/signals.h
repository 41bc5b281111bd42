// Signals: interrupts, which are noted and taken at a safe point, and faults.
#pragma once

#include <csignal>

namespace morvik {

// Signals. Interrupt and quit, and the fault signals that a process sends, are only noted, and taken at the next safe
// point. From the note on whatever waits is broken off again and again (EINTR), so that each wait comes to one.
extern volatile std::sig_atomic_t interrupted;
inline bool isinterrupted() {
  return interrupted != 0;
}
// Takes the signal that was noted: prints it and jumps. Not for coprocessor threads.
[[noreturn]] void takeinterrupt();
// Elements between two safe points: in a loop that does little for each, and in one that does much.
inline constexpr std::size_t POLL_INTERVAL = 65536, SLOW_POLL_INTERVAL = 4096;
// A safe point: between Points, and at least every 50 ms in long loops, sleeps and reads.
inline void safepoint() {
  if (interrupted != 0) [[unlikely]]
    takeinterrupt();
}

// The signals of the process are its owner's: no handler is set here, and what interrupts is noted by noteinterrupt
// alone, which any thread and any handler may call. Set before anything else here is called, or never.
extern bool foreignsignals;
void noteinterrupt();
// Drops an interrupt that was noted and not taken.
void dropinterrupt();

// Once at start, on the main thread: the alternate stack, the faults' handlers, the end of the process stack where no
// limit sets one, SIGPIPE ignored.
void initsignals();
// While a text is read: interrupt and quit are ignored, or end the process where nobody talks with the system; one that
// was noted and not taken is dropped, and SIGBUS has its default action. A Programme that reads calls safepoint()
// first.
void readingsignals();
// While a Programme runs: interrupt, quit, bus and floating point signals are handled.
void runningsignals();
// While a Programme that runs compiles a text: interrupt and quit wait, and are noted when they are admitted again.
// Takes one that was noted before.
void deferinterrupts();
void admitinterrupts();
// Does one wait until the text is compiled? Then the text is not needed any more.
bool isinterruptdeferred();
// What the handlers do with a signal that nobody sent: an interrupt is noted, a fault is raised at once.
void signalexception(int signal);
// What a signal does, at once: the report and the jump.
[[noreturn]] void takesignal(int signal);

}  // namespace morvik
