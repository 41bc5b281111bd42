// Messages of a script. Without --keep-going the first one ends the run the way an interrupt does: at the next safe
// point, whatever is at work.
#include "runner/telling.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "api/banks.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/buckets.h"
#include "machine/level.h"
#include "spaces/characters.h"
#include "spaces/messages.h"

namespace morvik {

namespace {

bool goeson, failed, interruptheard, stopped;

constexpr std::size_t WIDEST_LINE = 160;
constexpr std::size_t MOST_CALLERS = 12;

bool shows(unsigned char byte) {
  return byte >= ' ' && byte != 0x7F;
}
bool followson(unsigned char byte) {  // in a character of several bytes
  return (byte & 0xC0) == 0x80;
}

// The line of a place, and a caret under the byte. Of a long line, what is around the byte.
void showline(const SourcePlace &place) {
  const Source &source = *place.source;
  const std::size_t line = lineof(place), column = columnof(place);
  const char *begin = source.bytes + source.linestarts[line - 1];
  const char *end = line < source.lines ? source.bytes + source.linestarts[line] : source.bytes + source.length;
  while (end > begin && (end[-1] == '\n' || end[-1] == '\r')) --end;
  const char *const at = begin + column;
  if (column > WIDEST_LINE / 2) begin = at - WIDEST_LINE / 2;
  end = std::min(end, begin + WIDEST_LINE);
  std::fputs("    ", stderr);
  for (const char *byte = begin; byte < end; ++byte)
    std::fputc(*byte == '\t' || shows(static_cast<unsigned char>(*byte)) ? *byte : '?', stderr);
  std::fputs("\n    ", stderr);
  for (const char *byte = begin; byte < at; ++byte)
    if (!followson(static_cast<unsigned char>(*byte))) std::fputc(*byte == '\t' ? '\t' : ' ', stderr);
  std::fputs("^\n", stderr);
}

// The message number: does the file that the top names belong to it?
bool isaboutfile(std::int32_t number) {
  switch (number) {
    case messages::CANNOT_READ:
    case messages::CANNOT_WRITE:
    case messages::CANNOT_OPEN:
    case messages::CANNOT_SAVE:
    case messages::CANNOT_DUMP:
    case messages::CANNOT_REMEMBER:
    case messages::DIRECTORY_REFUSED:
      return true;
    default:
      return false;
  }
}

void showfilename(const Point &name) {
  std::fputs(" (", stderr);
  for (std::size_t i = 0; i < std::min<std::size_t>(name.elements, WIDEST_LINE); ++i) {
    const std::uint8_t byte = name.data_pointer[i].ascii;
    std::fputc(shows(byte) ? byte : '?', stderr);
  }
  std::fputc(')', stderr);
}

// ---- The functions that run.

bool holdsbody(const Entry &entry, const Level &level) {
  const Point &value = *entry.meaning;
  if (!isfunction(value) || !value.programme) return false;
  const std::uint64_t origin = originof(level);
  return value.programme == level.header || (origin != 0 && value.programme->origin == origin);
}

// A name that means the function which a level runs; null where it has none any more.
const char *functionname(const Level &level) {
  for (const Context *link = level.meaning; link; link = link->previous) {
    if (!link->table) continue;
    TableWalk walk{link->table};
    while (const Entry *entry = nextentry(walk))
      if (holdsbody(*entry, level)) return entry->name;
  }
  return nullptr;
}

void showcaller(const Level &level, const SourcePlace &told) {
  const char *name = functionname(level);
  const SourcePlace place = placeof(level);
  std::fprintf(stderr, "  in %s", name ? name : "a function without a name");
  if (!place.source)
    std::fputc('\n', stderr);
  else if (place.source == told.source)
    std::fprintf(stderr, ", line %zu\n", lineof(place));
  else
    std::fprintf(stderr, ", %s:%zu\n", place.source->name, lineof(place));
}

// The innermost first. Of a deep recursion, its ends.
void showcallers(const SourcePlace &told) {
  std::size_t functions = 0, shown = 0;
  for (const Level *level = running; level; level = level->caller) functions += level->header ? 1 : 0;
  for (const Level *level = running; level; level = level->caller) {
    if (!level->header) continue;
    ++shown;
    const bool skipped = functions > MOST_CALLERS && shown > MOST_CALLERS / 2 && shown + MOST_CALLERS / 2 <= functions;
    if (!skipped) showcaller(*level, told);
    if (skipped && shown == MOST_CALLERS / 2 + 1) std::fprintf(stderr, "  ... %zu more\n", functions - MOST_CALLERS);
  }
  const Level *outermost = running;
  while (outermost && outermost->caller) outermost = outermost->caller;
  if (functions == 0 || !outermost) return;
  const SourcePlace place = placeof(*outermost);
  if (place.source) std::fprintf(stderr, "  in %s, line %zu\n", place.source->name, lineof(place));
}

SourcePlace placenow() {
  if (iscompiling()) return placeoftoken();
  return running ? placeof(*running) : SourcePlace{};
}

void tell(const SourcePlace &place, const Report &report) {
  std::fflush(stdout);
  if (place.source)
    std::fprintf(stderr, "%s:%zu: %s", place.source->name, lineof(place), report.text);
  else
    std::fprintf(stderr, "%s: %s", program_invocation_short_name, report.text);
  if (isaboutfile(report.number) && report.top && istext(*report.top)) showfilename(*report.top);
  std::fputc('\n', stderr);
  if (place.source) showline(place);
  if (!iscompiling()) showcallers(place);
  std::fflush(stderr);
}

void hear(const Report &report) {
  const bool interrupt = report.number == SIGNAL_NUMBERS - SIGINT || report.number == SIGNAL_NUMBERS - SIGQUIT;
  if (interrupt && stopped) return;  // our own
  tell(placenow(), report);
  interruptheard = interruptheard || interrupt;
  failed = true;
  if (interrupt || goeson || stopped) return;
  stopped = true;
  noteinterrupt();
}

}  // namespace

void begintelling(bool keepgoing) {
  goeson = keepgoing;
  hearreport = hear;
  conversing = 0;
}

bool isfailed() {
  return failed;
}
bool isinterruptheard() {
  return interruptheard;
}

void tellat(const SourcePlace &place, const char *text) {
  failed = true;
  std::fflush(stdout);
  std::fprintf(stderr, "%s:%zu: %s\n", place.source->name, lineof(place), text);
  showline(place);
}

}  // namespace morvik
