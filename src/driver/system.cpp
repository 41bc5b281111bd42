// Start and shutdown: limits raised, slots counted, banks made, and all of it given back.
#include "driver/system.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "arithmetic/generator.h"
#include "coprocessor/threads.h"
#include "driver/architecture.h"
#include "driver/options.h"
#include "driver/reports.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/messagetext.h"
#include "failure/signals.h"
#include "frontend/contexts.h"
#include "frontend/fixedsyms.h"
#include "frontend/symtab.h"
#include "machine/level.h"
#include "machine/slicing.h"
#include "machine/timing.h"
#include "spaces/counters.h"
#include "spaces/messages.h"
#include "spaces/processstack.h"
#include "spaces/recount.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"
#include "spaces/sysvars.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

Entry *memory[BANKS];
Context *variables[BANKS];
Point stack[BANKS][STACK_POINTS];
Point *stacktops[BANKS];
Point *sp = stack[0];
double physmem = 16777216.0;
std::uint64_t maxdatamem, maxstackmem;

namespace {

constexpr double MEBIBYTE = 1048576.0;
constexpr double MOST_MEMORY = 9.223372036854776e18;
constexpr std::int64_t PARALLEL_GATE = 1001;  // elements a slot
constexpr std::int64_t MOST_SLOTS = 1 << 20;
constexpr double COMPARISON_TOLERANCE = std::bit_cast<double>(0x3CD203AF9EE75616);

// The system variables of a bank, and their names, which the bank holds whatever the variables are set to. The Points
// beside the two in use are left alone: the count that pins a variable is in the one before it.
struct Bank {
  Point quads[BANK_QUADS];
  char *io, *ct;
};
Bank banks[BANKS];

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

// One named scalar: a value that prints as its name.
void makesystemvariable(Point &point, char *name, const Element &value, std::uint32_t kind) {
  Element *element = newelements(1);
  *element = value;
  element->attributes = attributes::NAMED;
  element->name = name;
  reference(name);
  point = {};
  point.type = ISSCALAR | kind;
  point.elements = 1;
  point.data_pointer = element;
}

void makesystemvariables(Bank &bank) {
  Element value;
  setinteger(value, 1);
  bank.io = stringdup("#IO");
  makesystemvariable(bank.quads[IO_SLOT], bank.io, value, HASINTEGER);
  value.tag = tags::REAL;
  value.form = forms::COMPUTED;
  value.real = COMPARISON_TOLERANCE;
  bank.ct = stringdup("#CT");
  makesystemvariable(bank.quads[CT_SLOT], bank.ct, value, HASREAL);
}

void openbank(std::size_t bank) {
  memory[bank] = makehashtab();
  variables[bank] = makemeaning(memory[bank]);
  makesystemvariables(banks[bank]);
  stacktops[bank] = &stack[bank][STACK_POINTS - 1];
}

void closebank(std::size_t bank, Point *top) {
  for (; top > stack[bank]; --top) dereferencepoint(top);
  const Entry *wiped = nullptr;
  for (const Context *link = variables[bank]; link; link = link->previous) {
    if (link->table && link->table != wiped) hashwipe(link->table);
    wiped = link->table;
  }
  release(variables[bank]);
  release(memory[bank]);
  variables[bank] = nullptr;
  memory[bank] = nullptr;
  dereferencepoint(&banks[bank].quads[IO_SLOT]);
  dereferencepoint(&banks[bank].quads[CT_SLOT]);
  dereference(banks[bank].io);
  dereference(banks[bank].ct);
}

void startpool() {
  const std::uint32_t wanted = processors;
  startcoprocessors(workslice);
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

void openbanks() {
  // The slots' type words are 0 from the start: the stacks are static storage.
  for (std::size_t bank = 0; bank < BANKS; ++bank) openbank(bank);
  quads = banks[0].quads;
  bindfixedsym("#IO", &quads[IO_SLOT]);
  bindfixedsym("#CT", &quads[CT_SLOT]);
  sp = stack[0];
  stacktop = stacktops[0];
}

void closebanks() {
  bindfixedsym("#IO", nullptr);
  bindfixedsym("#CT", nullptr);
  closebank(0, sp);
  closebank(1, stack[1]);
  wipealllocalnames();  // a function that keeps itself in its own table is alive until here
  sp = stack[0];
}

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
  openbanks();
  initinstrlens();
  std::memset(InstructionTiming, 0, sizeof InstructionTiming);
  pendingproblem = 0;
  if (!quiet) exception(messages::HELLO, nullptr, nullptr);
  MIN_PARALLEL = processors * PARALLEL_GATE;
  startpool();
  SEED_PRNGS(0, &prngs_seed, CLOCK_SEED);
  verbs = 0;
}

#ifdef MORVIK_CHECKING
void recountblocks() {
  if (resultinflight) return;  // the pool holds what its result is made of
  rlimit storage;
  if (getrlimit(RLIMIT_DATA, &storage) == 0 && storage.rlim_cur != RLIM_INFINITY) return;  // it may not last to count
  finishreleases();
  Recount recount;
  for (const Point *p = stack[0] + 1; p <= sp; ++p) recount.hold(*p);
  for (std::size_t bank = 0; bank < BANKS; ++bank) {
    recounttable(recount, memory[bank]);
    recount.hold(variables[bank]);
    recount.hold(banks[bank].quads[IO_SLOT]);
    recount.hold(banks[bank].quads[CT_SLOT]);
    recount.hold(banks[bank].io);
    recount.hold(banks[bank].ct);
  }
  recountlocalnames(recount);
  const auto faults = recount.faults(liveblocks());
  if (faults.empty()) return;
  std::fprintf(stderr, "\nRecount: %s\n", faults.c_str());
  std::abort();
}
#endif

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
#ifdef MORVIK_CHECKING
  constexpr int LEAKED = 99;
  if (const std::int64_t blocks = liveblocks(); blocks != 0) {
    std::fprintf(stderr, "live blocks: %ld\n", blocks);
    return LEAKED;
  }
#endif
  return EXIT_SUCCESS;
}

}  // namespace morvik
