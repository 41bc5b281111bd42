// An interrupt at some moment, for tests of what it leaves.
#pragma once

#include <sys/time.h>

#include <csignal>

#include "failure/exception.h"
#include "failure/signals.h"

using namespace morvik;

class Alarm {
 public:
  explicit Alarm(int microseconds) {
    std::signal(SIGALRM, [](int) { interrupted = SIGINT; });
    const itimerval soon{{0, 0}, {0, microseconds}};
    setitimer(ITIMER_REAL, &soon, nullptr);
  }
  ~Alarm() {
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    std::signal(SIGALRM, SIG_DFL);
    interrupted = 0;
  }
};
