// Start and shutdown: limits raised, slots counted, and all of it given back.
#include "driver/system.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/session.h"
#include "coprocessor/threads.h"
#include "driver/architecture.h"
#include "driver/options.h"
#include "driver/reports.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/messagetext.h"
#include "failure/signals.h"
#include "machine/timing.h"
#include "spaces/messages.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"
#include "spaces/work.h"

namespace morvik {

double physmem = 16777216.0;
std::uint64_t maxdatamem, maxstackmem;

namespace {

constexpr double MEBIBYTE = 1048576.0;
constexpr double MOST_MEMORY = 9.223372036854776e18;
constexpr std::int64_t MOST_SLOTS = 1 << 20;

bool memoryfound;

// A standard stream that the process was started without would lend its number to the first file that is opened, and
// what is printed would go into that file.
void holdstreams() {
  int descriptor;
  do descriptor = open("/dev/null", O_RDWR);
  while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

void countslots() {
  if (processors == 0) {
    thrds = 1;
    processors = cpus = 1;
    return;
  }
  const std::int64_t slots = static_cast<std::int64_t>(processors) * thrds + 1;
  if (slots < 1 || slots > MOST_SLOTS) outofstorage();
  processors = cpus = static_cast<std::uint32_t>(slots);
}

std::uint64_t raiselimit(decltype(RLIMIT_DATA) resource) {
  rlimit limit{};
  if (getrlimit(resource, &limit) == 0) {
    if (limit.rlim_cur >= limit.rlim_max) return limit.rlim_cur;
    const rlimit raised{limit.rlim_max, limit.rlim_max};
    if (setrlimit(resource, &raised) == 0) return limit.rlim_max;
  }
  std::fprintf(stderr, "Cannot set limits: %s\n", std::strerror(errno));
  return limit.rlim_cur;
}

void measurememory() {
  const double found = static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  memoryfound = found > 0;
  if (memoryfound) physmem = found;
}

void machineline() {
  if (processors == 1) {
    std::fputs("Single processor", stdout);
    if (processor_performance) std::printf(", Clock: %ld MHz", MHz);
  } else {
    const std::int32_t slots = static_cast<std::int32_t>(processors);
    const std::int32_t installed = (slots - 1) / thrds;
    std::printf("Processors: %d, Threads: %d", installed, slots);
    std::int64_t cumulative;
    if (__builtin_mul_overflow(MHz, std::int64_t{installed}, &cumulative)) cumulative = MHz < 0 ? INT64_MIN : INT64_MAX;
    if (processor_performance) std::printf("\nCumulative clock: %ld MHz", cumulative);
  }
  std::fputs("\n\n", stdout);
  if (memoryfound) std::printf("Available memory: %lg MiB\n", std::min(physmem, MOST_MEMORY) / MEBIBYTE);
  if (processors > 1 || memoryfound) std::putchar('\n');
}

void startpool() {
  const std::uint32_t wanted = processors;
  openpool();
  if (processors < wanted && !quiet) std::printf(", Succeeded to start %d threads.", static_cast<int>(processors));
}

void stoppool() {
  endcoprocessors();
}

void printspent() {
  constexpr std::int64_t SECOND = 1000000, MINUTE = 60 * SECOND, HOUR = 60 * MINUTE;
  const std::int64_t time = std::max<std::int64_t>(0, static_cast<std::int64_t>((clocktime() - starttime) * SECOND));
  std::printf("--- Spent: %.2d:%.2d:%.2d.%.06d ---\n\n", static_cast<int>(time / HOUR),
              static_cast<int>(time % HOUR / MINUTE), static_cast<int>(time % MINUTE / SECOND),
              static_cast<int>(time % SECOND));
}

}  // namespace

void startsystem() {
  holdstreams();
  initsignals();
  if (!quiet) banner();
  countslots();
  maxdatamem = raiselimit(RLIMIT_DATA);
  maxstackmem = raiselimit(RLIMIT_STACK);
  measurestack();
  measurememory();
  if (!quiet) machineline();
  tval = starttime = clocktime();
  openstate();
  if (!quiet) exception(messages::HELLO, nullptr, nullptr);
  startpool();
}

int shutdownsystem() {
  stoppool();
  if (!quiet) {
    exitreport();
    std::printf("\n%s\n", errors(messages::GOODBYE));
  }
  std::putchar('\n');
  releasestops = nullptr;
  finishreleases();
  closebanks();
  freereplies();
  printspent();
  return statusofend(EXIT_SUCCESS);
}

}  // namespace morvik
