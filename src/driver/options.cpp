// The command line, read from the last argument back. One scan over single letters: a dash stays in force over the
// letters and arguments that follow until an option is taken, and `u`, `v` and `i` act without one.
#include "driver/options.h"

#include <unistd.h>
#include <cstdio>
#include <cstdlib>

#include "driver/architecture.h"
#include "files/files.h"
#include "machine/timing.h"
#include "spaces/work.h"

namespace morvik {

char quiet;
std::int32_t argsc;
char **argsv;

namespace {

constexpr int ARGC_MASK = 0xFF;
constexpr int DECIMAL = 10;

// How far the scan has come: the next letter, and whether a dash is in force.
struct Scan {
  const char *next;
  bool dashed;
};

constexpr const char *USAGE[] = {
    "Where:",
    "\t-h \tThis usage message",
    "\t-v \tPrint version information.",
    "\t-vv \tPrint version and other (possibly) interesting information.\n",
    "\t-q \tQuiet, non-interactive mode:",
    "\t\tno copyright notice, or any other text,",
    "\t\texcept error messages.\n",
    "\t-u \tUnconstrain the access to files in directories of higher",
    "\t\thierarchical position. Any file the user has permissions",
    "\t\tto read/write/append to will be accepted.\n",
    "\t-c<number of processors>",
    "\t-c \tfor automatic selection of <number of processors>",
    "\t\tUse SMP with <number of processors>.",
    "\t-th<threads per processor>",
    "\t\tSpecify number of threads per processor (SMP only)",
    // Kept: the default is 1.
    "\t\tThe default is 4.\n",
    "\t-t \tPrint process timing information.",
    "\t-p \tPrint performance information.",
    "\t-pp<processor speed in MHz>",
    "\t\tPrint processor performance information.",
    "\t-i \tPrint summary of instruction timings when exiting\n\t\t(if not quiet).",
    ("\t-if \tPrint full summary of instruction timings,\n\t\tincluding floating point performance, when exiting\n"
     "\t\t(if not quiet)."),
    "\t-it \tPrint terse operations/S per instruction,\n\t\twhen exiting (if not quiet).",
    "\t-is \tPrint just the summary of average operation timings\n\t\twhen exiting (if not quiet).",
};

[[noreturn]] void usage() {
  std::printf("Usage: %s -h -v -vv -q -u -c<arg> -c -th<arg> -t -p -pp<arg> -i{f,t,s} \n", argsv[0] ? argsv[0] : "");
  for (const char *line : USAGE) std::puts(line);
  std::exit(EXIT_SUCCESS);
}

[[noreturn]] void version(bool everything) {
  banner();
  std::printf("\n Compiled on: %s\n\n\n", system_architecture());
  if (everything) internals();
  std::exit(EXIT_SUCCESS);
}

[[noreturn]] void unrecognised(char letter) {
  std::printf("Unrecognised option: -%c\n\n", letter);
  usage();
}

// The number at the scan, which goes on after it; 0 where there is none.
std::int64_t number(Scan &scan) {
  char *end;
  const std::int64_t value = std::strtol(scan.next, &end, DECIMAL);
  scan.next = end;
  return value;
}

std::int64_t needednumber(Scan &scan, const char *complaint) {
  const std::int64_t value = number(scan);
  if (value != 0) return value;
  std::puts(complaint);
  std::exit(EXIT_FAILURE);
}

void performanceoption(Scan &scan) {
  if (*scan.next == '\0') {
    performance = 1;
  } else if (*scan.next == 'p') {
    ++scan.next;
    MHz = needednumber(scan, "Processor speed must be given for -pp option");
    processor_performance = 1;
  } else {
    unrecognised(*scan.next);
  }
  scan.dashed = false;
}

void timeoption(Scan &scan) {
  if (*scan.next == '\0') {
    timing = 1;
  } else if (*scan.next == 'h') {
    ++scan.next;
    thrds = static_cast<std::int32_t>(needednumber(scan, "The number of threads must be given for -th option"));
  } else {
    unrecognised(*scan.next);
  }
  scan.dashed = false;
}

// Kept: an automatic count leaves the dash in force.
void processoroption(Scan &scan) {
  processors = static_cast<std::uint32_t>(number(scan));
  scan.dashed = processors == 0;
  if (processors != 0) return;
  const std::int64_t configured = sysconf(_SC_NPROCESSORS_CONF);
  processors = configured > 0 ? static_cast<std::uint32_t>(configured) : 1;
}

void instructionoption(Scan &scan) {
  opstime = 1;
  if (!scan.dashed) return;
  scan.dashed = false;
  switch (*scan.next) {
    case '\0':
      return;
    case 'f':
      flops = 1;
      break;
    case 's':
      just_summary = 1;
      break;
    case 't':
      flops = terse_ops = 1;
      break;
    default:
      unrecognised(*scan.next);
  }
  ++scan.next;
}

void unconstrain(Scan &scan) {
  constraindirectories = 0;
  scan.dashed = false;
}

void readletter(Scan &scan) {
  switch (*scan.next++) {
    case '-':
      scan.dashed = true;
      return;
    case 'h':
      if (scan.dashed) usage();
      return;
    case 'p':
      if (scan.dashed) performanceoption(scan);
      return;
    case 't':
      if (scan.dashed) timeoption(scan);
      return;
    case 'c':
      if (scan.dashed)
        processoroption(scan);
      else
        cpus = processors;
      return;
    case 'i':
      instructionoption(scan);
      return;
    case 'q':
      if (scan.dashed) quiet = 1;
      scan.dashed = false;
      return;
    case 'v':
      if (scan.dashed) version(*scan.next == 'v');
      unconstrain(scan);
      return;
    case 'u':
      unconstrain(scan);
      return;
    default:
      return;
  }
}

}  // namespace

void readoptions(int argc, char **argv) {
  argsc = argc & ARGC_MASK;
  argsv = argv;
  processors = cpus = 0;  // not asked for
  thrds = 1;
  Scan scan{nullptr, false};
  for (int argument = argsc - 1; argument >= 1; --argument)
    for (scan.next = argv[argument]; *scan.next != '\0';) readletter(scan);
}

}  // namespace morvik
