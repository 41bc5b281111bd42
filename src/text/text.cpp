// What others call of the printer, and the small texts beside it.
#include "text/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "failure/exception.h"
#include "failure/jump.h"
#include "spaces/instructions.h"
#include "spaces/streams.h"
#include "text/pointtext.h"
#include "text/printer.h"

namespace morvik {

std::uint8_t Instructionlengths[instructions::COUNT];

void disass(std::FILE *stream, const char *prefix, Point *point, int indent, int source) {
  printer::beginprint(stream);
  printer::put(prefix);
  printer::putpoint(*point, indent, source != 0, false);
  printer::flushprint();
  if (point->rank < 0) std::fflush(stream);
}

void dump(std::FILE *stream, const char *prefix, Point *point) {
  printing = 1;
  disass(stream, prefix, point, 0, 0);
  printing = 0;
}

void dumpstack(std::FILE *stream, Point *bottom, Point *top) {
  for (Point *point = bottom; point <= top; ++point) {
    printing = 1;
    disass(stream, "", point, 0, 1);
    printing = 0;
    std::fputc('\n', stream);
  }
  std::fputs(".\n", stream);
}

void initinstrlens() {
  for (int i = 0; i < instructions::NAMELESS; ++i)
    Instructionlengths[i] = static_cast<std::uint8_t>(std::strlen(Instructions[i]) + 1);
}

void writetime(double seconds) {
  constexpr long MICROSECONDS = 1000000, MILLI = 1000, MINUTE = 60;
  constexpr double LONGEST = 9e18;
  const double given = std::isnan(seconds) ? 0 : seconds * static_cast<double>(MICROSECONDS);
  const long total = std::lround(std::clamp(given, 0.0, LONGEST)), whole = total / MICROSECONDS;
  std::fprintf(outputstream, "\tät = %.2ld.%.2ld %.3ldmS %.3lduS\n", whole / MINUTE, whole % MINUTE,
               total / MILLI % MILLI, total % MILLI);
}

namespace {

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = (dumppoint = dump, true);

}  // namespace

}  // namespace morvik
