// The fuzzing harness: any bytes as the text of a session, over the whole pipeline from the scanner to the echo, with a
// pool of threads. The first byte holds the options of the run. Whatever the input says, nothing may crash, hang, leak
// or report. Every input begins with a fresh machine.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "coprocessor/threads.h"
#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "harmless.h"
#include "machine/inspect.h"
#include "machine/slicing.h"
#include "machine/timing.h"
#include "spaces/blocks.h"
#include "spaces/work.h"
#include "text/text.h"

using namespace morvik;

namespace {

constexpr std::size_t LONGEST = 4096;
constexpr std::uint32_t SLOTS = 3;
constexpr std::int64_t USUAL_GATE = 3003;

// The bits of the first byte.
enum Options : std::uint8_t { SHARING = 1, TIMING = 2, REPORTING = 4, TRACING = 8, KNOWN = 15 };

void setoptions(std::uint8_t options) {
  processors = cpus;
  MIN_PARALLEL = options & SHARING ? SLOTS : USUAL_GATE;
  opstime = flops = options & TIMING ? 1 : 0;
  timing = performance = options & REPORTING ? 1 : 0;
  Trace = options & TRACING ? 1 : 0;
}

void freshmachine() {
  endprocess = 0;
  pendingproblem = 0;
  violations = 0;
  printing = 0;
  stepping = 0;
  Step = 0;
  openbanks();
}

void look(const Point &top) {
#ifdef PLANTED_BUG
  // One past the end of a character vector.
  if (top.rank == ranks::VECTOR && istext(top) && top.elements > 1)
    std::printf("%d", static_cast<volatile Element *>(top.data_pointer)[top.elements].tag);
#else
  static_cast<void>(top);
#endif
}

void session(const std::uint8_t *data, std::size_t size) {
  std::FILE *text = fmemopen(const_cast<std::uint8_t *>(data), size, "r");
  if (!text) std::abort();
  while (!endprocess && !timeisup()) {
    onetext(text);
    if (sp > stack[0]) look(*sp);
  }
  std::fclose(text);
}

// Its name in the trace is what says so: the streams are closed.
[[noreturn, gnu::noinline]] void blocksareleft() {
  std::abort();
}

}  // namespace

extern "C" {

// Too much storage is asked for easily, and must be refused without a fault. Deep recursion ends at the bound of time.
const char *__asan_default_options() {
  return "allocator_may_return_null=1:max_allocation_size_mb=32:detect_stack_use_after_return=0:quarantine_size_mb=32";
}

int LLVMFuzzerInitialize(int *, char ***) {
  quiet = 1;
  harmless();
  initinstrlens();
  processors = SLOTS;
  startcoprocessors(workslice);
  if (!std::freopen("/dev/null", "r", stdin)) std::abort();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size < 2 || size > LONGEST) return 0;
  beginharmless();
  freshmachine();
  setoptions(data[0] & KNOWN);
  session(data + 1, size - 1);
  closebanks();
  endharmless();
  if (liveblocks() != 0) blocksareleft();
  return 0;
}
}
