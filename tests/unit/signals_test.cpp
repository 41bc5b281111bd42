// Signals: the interrupt, the faults, and what a process ends with.
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <cerrno>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

#include "failure/custody.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/memory.h"
#include "unit/failures.h"

using namespace morvik;

namespace {

using namespace failures;

class Signals : public Quiet {};

// A fault as the processor finds it: a code above 0 tells it from what a process sends.
void fault(int signal) {
  siginfo_t info{};
  info.si_signo = signal;
  info.si_code = FPE_INTDIV;
  syscall(SYS_rt_tgsigqueueinfo, getpid(), gettid(), signal, &info);
}

TEST_F(Signals, AnInterruptIsOnlyNotedUntilASafePoint) {
  int value = 0;
  const Printed p = printed([&] {
    value = landingof([] {
      runningsignals();
      raise(SIGINT);
      if (interrupted != SIGINT) jump(-77);
      std::fputs("work", stdout);
      safepoint();
    });
  });
  readingsignals();
  EXPECT_EQ(value, -1002);
  EXPECT_EQ(p.out, "work\n** User interrupt. **\n");
  EXPECT_EQ(p.err, "");
  EXPECT_EQ(pendingproblem, 1);
  EXPECT_EQ(interrupted, 0);
}

TEST_F(Signals, AnInterruptOfAPrintBeginsOnANewLine) {
  int value = 0;
  const Printed p = printed([&] {
    value = landingof([] {
      runningsignals();
      printing = 1;
      raise(SIGQUIT);
      safepoint();
    });
  });
  readingsignals();
  EXPECT_EQ(value, -1003);
  EXPECT_EQ(p.out, "\n\n** User interrupt. **\n");
  EXPECT_EQ(printing, 1) << "the landing goes by it";
}

TEST_F(Signals, SignalNumbersReportAndJumpAtOnce) {
  int value = 0;
  Printed p = printed([&] { value = landingof([] { exception(-1002, nullptr, nullptr); }); });
  EXPECT_EQ(value, -1002);
  EXPECT_EQ(p.out, "\n** User interrupt. **\n");
  EXPECT_EQ(pendingproblem, 1);
  pendingproblem = 0;
  const Ended e = child([] {
    std::printf("%d", landingof([] { exception(-1008, nullptr, nullptr); }));
    std::printf(" %d", landingof([] { exception(-1012, nullptr, nullptr); }));
    std::printf(" %d", landingof([] { exception(-1011, nullptr, nullptr); }));
    std::printf(" %d", landingof([] { exception(-1007, nullptr, nullptr); }));
    std::printf(" %d %d", violations, pendingproblem);
  });
  EXPECT_EQ(e.out, "-1008 -1012 -1011 -1007 2 0");
  EXPECT_EQ(e.err,
            "\nFloating point exception.\n\nUNKNOWN SIGNAL CAUGHT\n\nSEGMENTATION VIOLATION\n\nSEGMENTATION "
            "VIOLATION\n");
}

TEST_F(Signals, InterruptsAreIgnoredWhileATextIsRead) {
  runningsignals();
  raise(SIGINT);
  EXPECT_EQ(interrupted, SIGINT);
  readingsignals();
  EXPECT_EQ(interrupted, 0) << "one that was noted too late";
  raise(SIGINT);
  raise(SIGQUIT);
  EXPECT_EQ(interrupted, 0);
}

TEST_F(Signals, AnInterruptBreaksAReadOfARunningProgramme) {
  const Ended e = child([] {
    int ends[2];
    if (pipe(ends) != 0) _exit(1);
    const pid_t parent = getpid();
    runningsignals();
    if (fork() == 0) {
      // Again and again: the first may come ahead of the read.
      for (int i = 0; i < 100; ++i) {
        usleep(10000);
        kill(parent, SIGINT);
      }
      _exit(0);
    }
    char byte;
    errno = 0;
    const ssize_t n = read(ends[0], &byte, 1);
    readingsignals();
    _exit(n == -1 && errno == EINTR ? 5 : 6);
  });
  EXPECT_EQ(exitstatus(e), 5);
}

TEST_F(Signals, ABusSignalEndsTheProcessWhileATextIsRead) {
  if (SANITIZED) GTEST_SKIP() << "faults are the sanitizer's";
  Ended e = child([] {
    initsignals();
    readingsignals();
    raise(SIGBUS);
  });
  EXPECT_TRUE(WIFSIGNALED(e.status));
  EXPECT_EQ(WTERMSIG(e.status), SIGBUS);
  e = child([] {
    initsignals();
    runningsignals();
    std::printf("%d", landingof([] { fault(SIGBUS); }));
    std::printf(" %d", violations);
  });
  EXPECT_EQ(exitstatus(e), 77);
  EXPECT_EQ(e.out, "-1007 1");
}

TEST_F(Signals, ABrokenPipeIsAnOrdinaryFailure) {
  const Ended e = child([] {
    initsignals();
    int ends[2];
    if (pipe(ends) != 0) _exit(1);
    close(ends[0]);
    _exit(write(ends[1], "x", 1) == -1 && errno == EPIPE ? 5 : 6);
  });
  EXPECT_EQ(exitstatus(e), 5);
}

TEST_F(Signals, FaultsLandTwiceAndTheThirdEndsTheProcess) {
  if (SANITIZED) GTEST_SKIP() << "faults are the sanitizer's";
  for (const auto &[signal, status] : {std::pair{SIGSEGV, 13}, std::pair{SIGBUS, 17}}) {
    const Ended e = child([signal = signal] {
      initsignals();
      runningsignals();
      for (int i = 0; i < 4; ++i) std::printf("%d;", landingof([signal] { fault(signal); }));
    });
    EXPECT_EQ(exitstatus(e), status);
    const std::string value = std::to_string(-1000 - signal) + ";";
    EXPECT_EQ(e.out, value + value) << "what was printed goes out";
    const std::string text = "\nSEGMENTATION VIOLATION\n";
    EXPECT_EQ(e.err, text + text + text + "\n--- SERIOUS INTERNAL ERROR ---\n--- PROCESSING STOPPED --- \n");
  }
}

TEST_F(Signals, AFaultThatIsSentWaitsForASafePoint) {
  for (const int signal : {SIGFPE, SIGSEGV, SIGBUS}) {
    if (SANITIZED && signal != SIGFPE) continue;  // the sanitizer's
    const Ended e = child([signal] {
      initsignals();
      runningsignals();
      std::printf("%d;", landingof([signal] {
                    raise(signal);
                    std::printf("%d;", interrupted);
                    safepoint();
                  }));
      std::printf("%d;%d", interrupted, violations);
    });
    const std::string text = std::to_string(signal);
    EXPECT_EQ(e.out, text + ";" + std::to_string(-1000 - signal) + ";0;" + (signal == SIGFPE ? "0" : "1"));
    EXPECT_EQ(e.err, signal == SIGFPE ? "\nFloating point exception.\n" : "\nSEGMENTATION VIOLATION\n");
  }
}

TEST_F(Signals, AFaultThatIsSentCountsForMoreThanAnInterrupt) {
  runningsignals();
  for (const int first : {SIGINT, SIGFPE}) {
    raise(first);
    raise(first == SIGINT ? SIGFPE : SIGINT);
    EXPECT_EQ(interrupted, SIGFPE);
    readingsignals();
    EXPECT_EQ(interrupted, SIGFPE) << "it waits until the reading takes it";
    const Printed p = printed([] { EXPECT_EQ(landingof([] { safepoint(); }), -1008); });
    EXPECT_EQ(interrupted, 0);
  }
}

TEST_F(Signals, WhatIsNotedBreaksEveryWaitUntilItIsTaken) {
  runningsignals();
  raise(SIGINT);
  for (int i = 0; i < 3; ++i) {
    const timespec minute = {60, 0};
    EXPECT_EQ(nanosleep(&minute, nullptr), -1);
    EXPECT_EQ(errno, EINTR);
  }
  readingsignals();
  const timespec blink = {0, 100000000};
  EXPECT_EQ(nanosleep(&blink, nullptr), 0);
}

TEST_F(Signals, WhatComesDuringACompileWaitsForItsEnd) {
  runningsignals();
  for (const int signal : {SIGINT, SIGFPE}) {
    deferinterrupts();
    raise(signal);
    EXPECT_EQ(interrupted, 0);
    admitinterrupts();
    EXPECT_EQ(interrupted, signal);
    const Printed p = printed([] { EXPECT_LT(landingof([] { deferinterrupts(); }), -1000); });
    raise(SIGQUIT);
    EXPECT_EQ(interrupted, SIGQUIT) << "nothing is deferred after the jump";
    readingsignals();
    runningsignals();
  }
  readingsignals();
}

TEST_F(Signals, AFloatingPointSignalIsNoViolation) {
  const Ended e = child([] {
    initsignals();
    runningsignals();
    for (int i = 0; i < 4; ++i) std::printf("%d;", landingof([] { fault(SIGFPE); }));
    std::printf("%d", violations);
  });
  EXPECT_EQ(exitstatus(e), 77);
  EXPECT_EQ(e.out, "-1008;-1008;-1008;-1008;0");
}

volatile bool endless = true;

// So written that no compiler turns it into a loop.
[[gnu::noinline]] int descend(volatile char *above) {
  volatile char frame[1024];
  if (!endless) return above[0];
  frame[0] = static_cast<char>(above[0] + 1);
  frame[1023] = frame[0];
  return descend(frame) + frame[1023];
}

int released = 0;
void countrelease(Custody &) {
  ++released;
}

TEST_F(Signals, TheEndOfTheProcessStackIsAFaultLikeAnother) {
  if (SANITIZED) GTEST_SKIP() << "faults are the sanitizer's";
  const Ended e = child([] {
    const rlimit small = {1 << 20, 1 << 20};
    setrlimit(RLIMIT_STACK, &small);
    initsignals();
    runningsignals();
    for (int i = 0; i < 2; ++i)
      std::printf("%d;", landingof([] {
                    volatile char top = 0;
                    Custody one;
                    takecustody(one, countrelease, nullptr);
                    if (descend(&top) == 1) std::puts("");
                  }));
    std::printf("%d", released);
  });
  EXPECT_EQ(exitstatus(e), 77);
  EXPECT_EQ(e.out, "-1011;-1011;2");
}

TEST_F(Signals, AProcessStackWithoutALimitEndsAllTheSame) {
  if (SANITIZED) GTEST_SKIP() << "faults are the sanitizer's";
  const Ended e = child([] {
    rlimit stack;
    getrlimit(RLIMIT_STACK, &stack);
    stack.rlim_cur = stack.rlim_max;
    setrlimit(RLIMIT_STACK, &stack);
    initsignals();
    rusage before, after;
    getrusage(RUSAGE_SELF, &before);  // what the parent used counts too
    std::printf("%d;", landingof([] {
                  volatile char top = 0;
                  if (descend(&top) == 1) std::puts("");
                }));
    getrusage(RUSAGE_SELF, &after);
    std::printf("%d", after.ru_maxrss - before.ru_maxrss < 400L << 10);  // KiB
  });
  EXPECT_EQ(exitstatus(e), 77);
  EXPECT_EQ(e.out, "-1011;1");
}

TEST_F(Signals, AFaultLeavesNoSignalBlockedAndNoLockHeld) {
  if (SANITIZED) GTEST_SKIP() << "faults are the sanitizer's";
  const Ended e = child([] {
    initsignals();
    runningsignals();
    coprocessors_running = true;
    landingof([] {
      pthread_mutex_lock(&mp1);
      pthread_mutex_lock(&mp);
      fault(SIGSEGV);
    });
    sigset_t blocked;
    sigprocmask(SIG_SETMASK, nullptr, &blocked);
    const bool open = sigismember(&blocked, SIGSEGV) == 0 && sigismember(&blocked, SIGINT) == 0;
    const int second = pthread_mutex_trylock(&mp1), first = pthread_mutex_trylock(&mp);
    pthread_mutex_unlock(&mp);
    std::printf("%d %d %d", open, first, second);
  });
  EXPECT_EQ(e.out, "1 0 0");
}

}  // namespace
