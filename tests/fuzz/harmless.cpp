// What keeps a fuzzed programme from doing harm.
#include "harmless.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "failure/exception.h"
#include "failure/signals.h"

using namespace morvik;

namespace {

constexpr suseconds_t PATIENCE_US = 40000;  // processor time of an input, and between interrupts after that
constexpr suseconds_t TICK_US = 2000;
// The address sanitizer forgets what was on the stack that a jump leaves, but not where that is more than 64 MiB.
constexpr std::intptr_t DEEPEST = std::intptr_t{32} << 20;
constexpr rlim_t GREATEST_FILE = 1 << 20;

thread_local bool fuzzing;  // in an input: the engine's own threads sleep as they wish
volatile std::sig_atomic_t late, ticks;
std::intptr_t stackbase;
int scratch = -1, home = -1;

inline std::intptr_t stacktop() {
  return reinterpret_cast<std::intptr_t>(__builtin_frame_address(0));
}

void tick(int) {
  ticks = ticks + 1;
  if (ticks < PATIENCE_US / TICK_US && stackbase - stacktop() < DEEPEST) return;
  ticks = 0;
  late = 1;
  interrupted = SIGINT;
}

void settimer(suseconds_t microseconds) {
  const timeval time{0, microseconds};
  const itimerval timer{time, time};
  setitimer(ITIMER_PROF, &timer, nullptr);
}

void removeleft() {
  DIR *directory = fdopendir(dup(scratch));
  if (!directory) return;
  rewinddir(directory);
  while (const dirent *entry = readdir(directory))
    if (entry->d_name[0] != '.' || (entry->d_name[1] != '\0' && entry->d_name[1] != '.'))
      unlinkat(scratch, entry->d_name, 0);
  closedir(directory);
}

}  // namespace

void harmless() {
  const char *temporary = std::getenv("TMPDIR");
  char name[PATH_MAX];
  std::snprintf(name, sizeof name, "%s/morvik-fuzz-XXXXXX", temporary ? temporary : "/tmp");
  home = open(".", O_RDONLY | O_DIRECTORY);
  if (!mkdtemp(name)) std::abort();
  scratch = open(name, O_RDONLY | O_DIRECTORY);
  const rlimit files{GREATEST_FILE, RLIM_INFINITY};
  setrlimit(RLIMIT_FSIZE, &files);
  struct sigaction action {};
  action.sa_handler = SIG_IGN;
  sigaction(SIGXFSZ, &action, nullptr);
  action.sa_handler = tick;
  sigaction(SIGPROF, &action, nullptr);
}

void beginharmless() {
  stackbase = stacktop();
  if (fchdir(scratch) != 0) std::abort();
  late = 0;
  fuzzing = true;
  ticks = 0;
  settimer(TICK_US);
}

void endharmless() {
  settimer(0);
  fuzzing = false;
  removeleft();
  if (fchdir(home) != 0) std::abort();
}

bool timeisup() {
  return late != 0;
}

// The host. These take the place of the library's in this binary.
extern "C" {

// The engine's own merge runs itself this way.
int system(const char *command) {
  if (fuzzing) return 0;
  const pid_t shell = fork();
  if (shell == 0) {
    execl("/bin/sh", "sh", "-c", command, nullptr);
    _exit(127);
  }
  int status = -1;
  while (shell > 0 && waitpid(shell, &status, 0) < 0 && errno == EINTR) {
  }
  return status;
}

int nanosleep(const timespec *asked, timespec *left) {
  if (fuzzing) return 0;
  return static_cast<int>(syscall(SYS_nanosleep, asked, left));
}

unsigned sleep(unsigned seconds) {
  timespec left{static_cast<time_t>(seconds), 0};
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
  return 0;
}
}
