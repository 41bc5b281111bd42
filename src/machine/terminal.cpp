// The instructions that talk to the person at the terminal: values in and out, the clock, and waiting.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <ctime>

#include "failure/exception.h"
#include "failure/signals.h"
#include "files/persist.h"
#include "frontend/limits.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "machine/texts.h"
#include "machine/timing.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/streams.h"
#include "spaces/work.h"
#include "text/text.h"

namespace morvik {

namespace {

constexpr std::int64_t SECONDS_A_DAY = 86400, NANOSECONDS = 1000000000;
constexpr double EPOCH_DAY = 2440587.5;  // the Julian day at which the host's clock begins
constexpr std::int64_t SLEEP_SLICE_NS = 50000000;
constexpr std::int64_t LONGEST_SLEEP = 1000000000;  // seconds; nobody will see the end of it
constexpr std::size_t LINE_BYTES = 4096;            // bytes between two safe points

// ---- Reading the standard input byte by byte.

// The next byte of the standard input, EOF at its end.
int readbyte() {
  for (;;) {
    errno = 0;
    const int byte = std::getc(inputstream);
    if (byte != EOF || std::feof(inputstream) || errno != EINTR) return byte;
    std::clearerr(inputstream);
    safepoint();
  }
}

// A line without its line feed.
Point readline() {
  Characters line;
  begincharacters(line, 0);
  char bytes[LINE_BYTES];
  std::size_t count = 0;
  for (int byte = readbyte(); byte != EOF && byte != '\n'; byte = readbyte()) {
    bytes[count++] = static_cast<char>(byte);
    if (count < LINE_BYTES) continue;
    safepoint();
    appendcharacters(line, bytes, count);
    count = 0;
  }
  appendcharacters(line, bytes, count);
  return endcharacters(line);
}

// ---- Sleeping.

std::int64_t monotonic() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * NANOSECONDS + now.tv_nsec;
}

// In slices, so that no interrupt waits longer than one, even one that came right before a slice began.
void sleepfor(std::int64_t nanoseconds) {
  const std::int64_t end = monotonic() + nanoseconds;
  for (std::int64_t left = nanoseconds; left > 0; left = end - monotonic()) {
    const timespec slice = {0, std::min(left, SLEEP_SLICE_NS)};
    nanosleep(&slice, nullptr);
    safepoint();
  }
}

// How long a value asks to sleep, in nanoseconds; below 0 for a negative one.
std::int64_t sleeptime(const Element &element) {
  if (element.tag == tags::INTEGER)
    return element.integer < 0 ? -1 : std::min(element.integer, LONGEST_SLEEP) * NANOSECONDS;
  if (element.real < 0) return -1;
  const double seconds = std::min(element.real, static_cast<double>(LONGEST_SLEEP));
  return static_cast<std::int64_t>(seconds * static_cast<double>(NANOSECONDS));
}

// Can the value say how long? All others pass.
bool istime(const Point &value) {
  if (!isspace(value) || !isscalarlike(value) || (value.type & (HASINTEGER | HASREAL)) == 0) return false;
  const Element &element = value.data_pointer[0];
  return element.tag == tags::INTEGER || (element.tag == tags::REAL && !std::isnan(element.real));
}

// ---- Writing.

// The modifier says whether a line feed follows; an empty value is no more than that.
void writevalueontop(Level &level) {
  const bool line = level.instruction->modifier == instructions::PRINT;
  if (!isempty(*level.sp) || !line) dump(outputstream, "", level.sp);
  if (line) std::fputc('\n', outputstream);
}

}  // namespace

Next doinput(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  std::fflush(outputstream);
  safepoint();
  Point *const base = level.sp;
  Text text;
  opentext(text);
  compiletext(level, text, inputstream, nullptr, ENDS_TEXT);
  runtext(level, text, base + 1, base + 1);
  closetext(text);
  const std::ptrdiff_t results = level.sp - base;
  if (results == 0) {
    Point empty;
    makeempty(empty);
    pushowned(level, empty);
  } else if (results > 1) {
    joinpool(level.sp);
    const Point last = *level.sp--;
    while (level.sp > base) droptop(level);
    pushowned(level, last);
    exception(messages::INPUT_LEFT_MORE, &level.sp, level.instruction);
  }
  return Next::FETCH;
}

Next doquotedin(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  std::fflush(outputstream);
  pushowned(level, readline());
  return Next::FETCH;
}

Next dotime(Level &level) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  tval = clocktime();
  Point day;
  makereal(day, tval / static_cast<double>(SECONDS_A_DAY) + EPOCH_DAY, forms::JULIAN);
  pushowned(level, day);
  return Next::FETCH;
}

Next dooutput(Level &level) {
  writevalueontop(level);
  return Next::FETCH;
}

Next doprint(Level &level) {
  writevalueontop(level);
  droptop(level);
  return Next::FETCH;
}

Next dosleep(Level &level) {
  if (!istime(*level.sp)) return Next::FETCH;
  const std::int64_t nanoseconds = sleeptime(level.sp->data_pointer[0]);
  if (nanoseconds < 0) return fail(level, messages::NEGATIVE_SLEEP);
  std::fflush(outputstream);
  sleepfor(nanoseconds);
  droptop(level);
  return Next::FETCH;
}

Next dowait(Level &) {
  std::fflush(outputstream);
  std::fputs("\nWaiting... press ENTER to continue: ", errorstream);
  std::fflush(errorstream);
  readbyte();
  return Next::FETCH;
}

}  // namespace morvik
