// The fuzzing harness: any bytes as the text of a session, over the whole pipeline from the scanner to the echo.
// Whatever they say, nothing may crash, hang, leak or report. Every input begins with a fresh machine.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "coprocessor/coprocessor.h"
#include "driver/options.h"
#include "driver/prompt.h"
#include "driver/system.h"
#include "failure/exception.h"
#include "failure/jump.h"
#include "harmless.h"
#include "machine/inspect.h"
#include "spaces/blocks.h"
#include "spaces/work.h"
#include "text/text.h"

using namespace morvik;

namespace {

constexpr std::size_t LONGEST = 4096;

void freshmachine() {
  endprocess = 0;
  pendingproblem = 0;
  violations = 0;
  printing = 0;
  stepping = 0;
  Trace = Step = 0;
  MIN_PARALLEL = 1001;
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
  if (!std::freopen("/dev/null", "r", stdin)) std::abort();
  return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  if (size == 0 || size > LONGEST) return 0;
  beginharmless();
  freshmachine();
  session(data, size);
  closebanks();
  endharmless();
  if (liveblocks() != 0) blocksareleft();
  return 0;
}
}
