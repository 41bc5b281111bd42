// Signals: the user's interrupt and what another process sends, which are only noted and taken at a safe point, and the
// faults of the process itself, which jump at once from a stack of their own.
#include "failure/signals.h"

#include <sys/mman.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "failure/hearing.h"
#include "failure/jump.h"
#include "spaces/blocks.h"
#include "spaces/memory.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"

namespace morvik {

volatile std::sig_atomic_t interrupted;
bool foreignsignals;

namespace {

constexpr int ENDURED_VIOLATIONS = 2;
constexpr int NEVER_STORED = 2;  // Kept: pendingproblem is asked for a value that nothing stores
constexpr suseconds_t BEAT_US = 20000;

// Sanitizers report a fault themselves, and better.
#ifdef MORVIK_SYSTEM_HEAP
constexpr bool FAULTS_ARE_OURS = false;
#else
constexpr bool FAULTS_ARE_OURS = true;
#endif

// Enough for the deepest release that a jump may have to do there.
constexpr std::size_t FAULT_STACK = std::size_t{256} * 1024;
alignas(64) char faultstack[FAULT_STACK];

// Where the limit of the process stack is lifted, a recursion without end would take all of the memory before it is
// found. The guard is larger than any frame, so that none reaches past it.
constexpr std::uintptr_t DEEPEST_STACK = std::uintptr_t{256} << 20, STACK_GUARD = std::uintptr_t{4} << 20;

// What is noted while a text at hand is compiled waits in `deferred` until that is done.
volatile std::sig_atomic_t deferring, deferred;

// The text of a fault bypasses the streams: one of them may be what was at work.
void writefaulttext(const char *text) {
  std::size_t left = std::strlen(text);
  while (left > 0) {
    const ssize_t written = write(STDERR_FILENO, text, left);
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

// A timer that breaks whatever waits, since what was noted may have come right before the wait began.
void beat(int) {}

void setbeat(suseconds_t microseconds) {
  const itimerval interval = {{0, microseconds}, {0, microseconds}};
  setitimer(ITIMER_REAL, &interval, nullptr);
}

void startbeat() {
  struct sigaction action {};
  action.sa_handler = beat;
  sigaction(SIGALRM, &action, nullptr);
  setbeat(BEAT_US);
}

bool isinterrupt(int signal) {
  return signal == SIGINT || signal == SIGQUIT;
}

// A fault counts for more than an interrupt, which another key brings again.
void note(int signal) {
  volatile std::sig_atomic_t &place = deferring ? deferred : interrupted;
  if (place == 0 || isinterrupt(place)) place = signal;
  if (!deferring && !foreignsignals) startbeat();
}

// What is noted meanwhile keeps its timer.
void forget() {
  interrupted = 0;
  if (foreignsignals) return;
  setbeat(0);
  if (interrupted != 0) startbeat();
}

[[noreturn]] void jumpoutofrun(int signal) {
  if (printing) std::fputc('\n', outputstream);
  if (conversing) std::fputs("\n** User interrupt. **\n", outputstream);
  std::fflush(outputstream);
  if (hearreport) hearreport({SIGNAL_NUMBERS - signal, "interrupted", nullptr, nullptr});
  pendingproblem = 1;
  jump(SIGNAL_NUMBERS - signal);
}

void reportviolation(int signal) {
  writefaulttext("\nSEGMENTATION VIOLATION\n");
  if (++violations <= ENDURED_VIOLATIONS) return;
  writefaulttext("\n--- SERIOUS INTERNAL ERROR ---\n--- PROCESSING STOPPED --- \n");
  endatonce((SIGNAL_NUMBERS - signal) & 0xFF);
}

// A lock of the faulting thread stays usable for whoever comes after the jump.
void unlockifmine(pthread_mutex_t &mutex) {
#ifdef __GLIBC__
  if (mutex.__data.__owner == gettid()) pthread_mutex_unlock(&mutex);
#else
  static_cast<void>(mutex);
#endif
}

[[noreturn]] void reportfault(int signal) {
  unlockifmine(mp);
  unlockifmine(mp1);
  referencelocks = 0;
  joinahead();
  if (pendingproblem == NEVER_STORED) writefaulttext("\nA Problem Occured ... \n");
  switch (signal) {
    case SIGFPE:
      writefaulttext("\nFloating point exception.\n");
      break;
    case SIGBUS:
    case SIGSEGV:
      reportviolation(signal);
      break;
    default:
      writefaulttext("\nUNKNOWN SIGNAL CAUGHT\n");
      break;
  }
  if (hearreport) hearreport({SIGNAL_NUMBERS - signal, "stopped by a fault", nullptr, nullptr});
  jump(SIGNAL_NUMBERS - signal);
}

// The processor and the kernel name a cause above 0; what a process sends, this one included, has none.
bool issent(const siginfo_t &info) {
  return info.si_code <= 0;
}

void handlesignal(int signal, siginfo_t *info, void *) {
  issent(*info) ? note(signal) : signalexception(signal);
}

// A write to a closed pipe, or past the limit of a file, fails like any other. A handler, since what is set to be
// ignored stays so in an editor that EDIT starts.
void ignoresignal(int) {}

// Where nobody talks with the system, what is typed is for the programme alone, and there is no prompt to come back to.
[[noreturn]] void endinterrupted(int signal) {
  constexpr int SIGNALLED = 128;  // the status that shells give for a signal
  _exit(SIGNALLED + signal);
}

void sethandler(int signal, void (*handler)(int), int flags) {
  struct sigaction action {};
  action.sa_handler = handler;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

void handlenoting(int signal, int flags) {
  struct sigaction action {};
  action.sa_sigaction = handlesignal;
  action.sa_flags = SA_SIGINFO | flags;
  sigaction(signal, &action, nullptr);
}

// The jump leaves the handler for good and restores no mask, so none may be set.
void setfaulthandler(int signal) {
  handlenoting(signal, SA_ONSTACK | SA_NODEFER);
}

void mapstackguard() {
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  const std::uintptr_t top = (here - DEEPEST_STACK) & ~(STACK_GUARD - 1);
  // Nothing points there yet: only the number of the signal tells the place.
  auto *const stackguard = reinterpret_cast<void *>(top - STACK_GUARD);  // NOLINT(performance-no-int-to-ptr)
  constexpr int FLAGS = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED_NOREPLACE;
  // Where something is mapped already, that is the guard.
  if (mmap(stackguard, STACK_GUARD, PROT_NONE, FLAGS, -1, 0) == MAP_FAILED) return;
}

}  // namespace

void takesignal(int signal) {
  if (isinterrupt(signal)) jumpoutofrun(signal);
  reportfault(signal);
}

void signalexception(int signal) {
  if (!isinterrupt(signal)) reportfault(signal);
  note(signal);
}

// As long as it is noted, the slices in flight stop for it.
void takeinterrupt() {
  joinahead();
  const int signal = interrupted;
  forget();
  takesignal(signal);
}

void initsignals() {
  releasestops = isinterrupted;
  if (foreignsignals) return;
  sethandler(SIGPIPE, ignoresignal, SA_RESTART);
  sethandler(SIGXFSZ, ignoresignal, SA_RESTART);
  if (!FAULTS_ARE_OURS) return;
  stack_t stack{};
  stack.ss_sp = faultstack;
  stack.ss_size = sizeof faultstack;
  sigaltstack(&stack, nullptr);
  setfaulthandler(SIGSEGV);
  mapstackguard();
}

void noteinterrupt() {
  note(SIGINT);
}

void dropinterrupt() {
  if (isinterrupt(interrupted)) forget();
}

void readingsignals() {
  if (foreignsignals) return;
  void (*const meanwhile)(int) = conversing ? SIG_IGN : endinterrupted;
  sethandler(SIGINT, meanwhile, 0);
  sethandler(SIGQUIT, meanwhile, 0);
  if (FAULTS_ARE_OURS) sethandler(SIGBUS, SIG_DFL, 0);
  dropinterrupt();
}

// No restart: a sleep or a read that an interrupt breaks comes back to a safe point.
void runningsignals() {
  if (foreignsignals) return;
  handlenoting(SIGINT, 0);
  handlenoting(SIGQUIT, 0);
  if (FAULTS_ARE_OURS) setfaulthandler(SIGBUS);
  setfaulthandler(SIGFPE);
}

// One that was noted is taken here: a safe point further in would end the compile alone, and the run would go on.
void deferinterrupts() {
  deferring = 1;
  if (interrupted == 0) return;
  deferring = 0;
  takeinterrupt();
}

bool isinterruptdeferred() {
  return deferred != 0;
}

void admitinterrupts() {
  deferring = 0;
  if (deferred == 0) return;
  const int signal = deferred;
  deferred = 0;
  note(signal);
}

}  // namespace morvik
