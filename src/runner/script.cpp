// The run of a script: its libraries, then its own texts, one after the other.
#include "runner/script.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/building.h"
#include "api/places.h"
#include "api/running.h"
#include "api/session.h"
#include "failure/signals.h"
#include "files/files.h"
#include "machine/leave.h"
#include "runner/checker.h"
#include "runner/libraries.h"
#include "runner/profile.h"
#include "runner/scriptfile.h"
#include "runner/telling.h"

namespace morvik {

namespace {

constexpr rlim_t DEEPEST_STACK = rlim_t{256} << 20;

List<Source> sources;    // that were run; what they hold is asked for until the end
List<char *> libraries;  // by their names, in the order in which they were asked for
List<char *> paths;      // of their files, by which messages name them
bool outputclosed;

// A stream that the process was started without would lend its number to the first file that is opened. What is written
// to a closed output is not to vanish without a word.
void holdstreams() {
  outputclosed = fcntl(STDOUT_FILENO, F_GETFD) < 0;
  int descriptor;
  do descriptor = open(fcntl(STDIN_FILENO, F_GETFD) >= 0 && outputclosed ? "/dev/full" : "/dev/null", O_RDWR);
  while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO);
  if (descriptor >= 0) close(descriptor);
}

void raisestack() {
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  const rlim_t wanted = std::min(limit.rlim_max, DEEPEST_STACK);
  if (limit.rlim_cur != RLIM_INFINITY && limit.rlim_cur >= wanted) return;
  limit.rlim_cur = wanted;
  setrlimit(RLIMIT_STACK, &limit);
}

// ---- The texts.

bool goeson;  // after a message

bool isover() {
  pauseprofile();
  return isinterruptheard() || (isfailed() && !goeson) || std::ferror(stdout);
}

// What is open at the end of the file is a mistake.
void tellopenings() {
  for (std::size_t i = 0; i < openings(); ++i) {
    const Opening open = opening(i);
    char text[96];
    std::snprintf(text, sizeof text, "the file ends inside %s opened at line %zu", open.what, lineof(open.place));
    tellat(open.place, text);
  }
}

// ---- The files.

bool opentexts(const char *path);

bool isnamed(const List<char *> &names, const char *name, std::size_t length) {
  return std::any_of(names.begin(), names.end(), [name, length](const char *other) {
    return std::strncmp(name, other, length) == 0 && other[length] == 0;
  });
}

// Reads a library that was not asked for before, what it needs ahead of it.
bool openlibrary(const char *name, std::size_t length) {
  if (isnamed(libraries, name, length)) return true;
  char *const own = strndup(name, length);
  if (!own || !libraries.append(own)) {
    std::free(own);
    return refusefile("libraries", NO_STORAGE);
  }
  List<char> path;
  const bool found = findlibrary(path, own);
  if (found && paths.append(path.records)) return opentexts(path.records);
  path.clear();
  return found && refusefile(own, NO_STORAGE);
}

// The libraries that a text says it needs.
bool openneeds(const Source &source) {
  const char *names = findneeds(source.read);
  while (const std::size_t length = names ? findneed(names) : 0) {
    if (!openlibrary(names, length)) return refusefile(source.name, "it needs a library that is not there");
    names += length;
  }
  return true;
}

bool opentexts(const char *path) {
  Source source;
  if (!readscript(source, path)) return false;
  const bool needed = openneeds(source);
  if (needed && sources.append(source)) return true;
  if (needed) refusefile(source.name, NO_STORAGE);
  dropscript(source);
  return false;
}

// Reads everything before anything runs, so that a missing file is reported at once. A library that is asked for twice
// is loaded once.
bool openall(const Choices &choices) {
  for (const char *name : choices.libraries)
    if (!openlibrary(name, std::strlen(name))) return false;
  return opentexts(choices.file);
}

void bindarguments(void *argument) {
  const auto *choices = static_cast<const Choices *>(argument);
  Point *const place = entered("ARGUMENTS");
  setvalue(place, buildtexts(choices->words, choices->wordcount));
}

void runall(const Choices &choices) {
  if (!completes(bindarguments, const_cast<Choices *>(&choices))) return;
  if (choices.profile != Profile::NONE) beginprofile();
  for (Source &source : sources)
    if (!runtexts(source, isover)) tellopenings();
  endprofile(choices.profile, sources.last().name);
}

void checkall() {
  begincheck();
  for (Source &source : sources) {
    checktexts(source, &source != &sources.last());
    tellopenings();
  }
  endcheck();
}

// Was all of the output written?
bool endoutput() {
  const bool written = std::fflush(stdout) == 0 && !std::ferror(stdout);
  if (!written) refusefile("standard output", outputclosed ? "closed" : std::strerror(errno));
  return written;
}

int statusofrun() {
  const bool written = endoutput();
  if (isinterruptheard()) return STATUS_INTERRUPTED;
  if (isfailed()) return STATUS_FAILED;
  return written ? STATUS_DONE : STATUS_UNUSABLE;
}

int closeall() {
  const int status = statusofrun();
  dropinterrupt();
  endsession();
  forgetplaces();
  for (Source &source : sources) dropscript(source);
  sources.clear();
  for (List<char *> *names : {&libraries, &paths}) {
    for (char *name : *names) std::free(name);
    names->clear();
  }
  return statusofend(status);
}

}  // namespace

int runscript(const Choices &choices) {
  holdstreams();
  if (!openall(choices)) return STATUS_UNUSABLE;
  raisestack();
  goeson = choices.keepgoing;
  begintelling(goeson || choices.check);
  echoing = choices.echo ? 1 : 0;
  constraindirectories = choices.unconstrained ? 0 : 1;
  if (choices.confined && !confinefiles()) {
    refusefile(".", std::strerror(errno));
    return STATUS_UNUSABLE;
  }
  if (!startsession(choices.processors + 1)) return STATUS_UNUSABLE;
  runningsignals();
  choices.check ? checkall() : runall(choices);
  return closeall();
}

}  // namespace morvik
