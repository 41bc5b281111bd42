// A run of the system in this process: its start and end, and one text at a time.
#include "api/session.h"

#include <csetjmp>
#include <cstring>

#include "api/banks.h"
#include "arithmetic/generator.h"
#include "coprocessor/threads.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/assembly.h"
#include "frontend/limits.h"
#include "machine/calls.h"
#include "machine/machine.h"
#include "machine/slicing.h"
#include "machine/timing.h"
#include "spaces/blocks.h"
#include "spaces/counters.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

namespace {

constexpr std::int64_t PARALLEL_GATE = 1001;  // elements a slot

Point programme[PROGRAMME_POINTS];

void opensession(void *) {
  tval = clocktime();
  openstate();
  violations = 0;
  endprocess = stepping = printing = 0;
  openpool();
}

void closesession(void *) {
  releasestops = nullptr;
  finishreleases();
  closebanks();
}

}  // namespace

bool completes(void (*work)(void *argument), void *argument) {
  Landing outer;
  armlanding(outer, nullptr);
  const bool returned = setjmp(error_jump) == 0;
  if (returned) work(argument);
  disarmlanding(outer);
  return returned;
}

void openstate() {
  openbanks();
  initinstrlens();
  std::memset(InstructionTiming, 0, sizeof InstructionTiming);
  pendingproblem = 0;
}

void openpool() {
  MIN_PARALLEL = processors * PARALLEL_GATE;
  startcoprocessors(workslice);
  SEED_PRNGS(0, &prngs_seed, CLOCK_SEED);
  verbs = 0;
}

bool startsession(std::uint32_t slots) {
  initsignals();
  measurestack();
  reservestack = askforstack;
  processors = cpus = slots;
  return completes(opensession, nullptr);
}

void endsession() {
  endcoprocessors();
  completes(closesession, nullptr);
  freereplies();
}

int statusofend(int status) {
#ifdef MORVIK_CHECKING
  constexpr int LEAKED = 99;
  if (const std::int64_t blocks = liveblocks(); blocks != 0) {
    std::fprintf(stderr, "live blocks: %ld\n", blocks);
    return LEAKED;
  }
#endif
  return status;
}

std::int64_t compilenext(std::FILE *stream, const char **string) {
  return fill(programme, variables[0], sp, stream, string, SKIPPED);
}

void runcompiled() {
  operations = 0;
  operators = 0;
  stacktop = stacktops[0];
  Point *const floor = &stack[0][1];
  sp = machine(programme, variables[0], floor, floor, sp, &memory[0], 0, 0);
  cleanup(programme);
  std::fflush(outputstream);
  verbs += operators;
}

const Point *compiled() {
  return programme;
}

void dropcompiled() {
  cleanup(programme);
}

void dropinputend(std::int64_t points) {
  if (points < 2 || !inputended()) return;
  Point &last = programme[points - 2];
  dereferencepoint(&last);
  last = {};
}

}  // namespace morvik
