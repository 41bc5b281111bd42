// The printer's doors, and the small texts beside it.
#include "text/text.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "failure/exception.h"
#include "failure/jump.h"
#include "spaces/instructions.h"
#include "text/pointtext.h"
#include "text/printer.h"

namespace morvik {

std::uint8_t Instructionlengths[instructions::COUNT];

void disass(std::FILE *stream, const char *prefix, Point *point, int indent, int source) {
  printer::begin(stream);
  printer::put(prefix);
  printer::point(*point, indent, source != 0, false);
  printer::flush();
  if (point->rank < 0) std::fflush(stream);
}

void dump(std::FILE *stream, const char *prefix, Point *point) {
  PrintOut = 1;
  disass(stream, prefix, point, 0, 0);
  PrintOut = 0;
}

void dumpstack(std::FILE *stream, Point *bottom, Point *top) {
  for (Point *point = bottom; point <= top; ++point) {
    PrintOut = 1;
    disass(stream, "", point, 0, 1);
    PrintOut = 0;
    std::fputc('\n', stream);
  }
  std::fputs(".\n", stream);
}

void initinstrlens() {
  constexpr int NAMES = 269;  // the last row has no name
  for (int i = 0; i < NAMES; ++i) Instructionlengths[i] = static_cast<std::uint8_t>(std::strlen(Instructions[i]) + 1);
}

void writetime(double seconds) {
  constexpr long MICROSECONDS = 1000000, MILLI = 1000, MINUTE = 60;
  constexpr double LONGEST = 9e18;
  const double given = std::isnan(seconds) ? 0 : seconds * static_cast<double>(MICROSECONDS);
  const long total = std::lround(std::clamp(given, 0.0, LONGEST)), whole = total / MICROSECONDS;
  std::printf("\tät = %.2ld.%.2ld %.3ldmS %.3lduS\n", whole / MINUTE, whole % MINUTE, total / MILLI % MILLI,
              total % MILLI);
}

namespace {

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = (dumppoint = dump, true);

}  // namespace

}  // namespace morvik
