// The functions of morvik.h: each sees to it that it is called at its time, and calls what may fail under a landing.
#include "api/morvik.h"

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <iterator>

#include "api/banks.h"
#include "api/building.h"
#include "api/list.h"
#include "api/places.h"
#include "api/running.h"
#include "api/session.h"
#include "failure/custody.h"
#include "failure/hearing.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "files/files.h"
#include "frontend/symtab.h"
#include "machine/leave.h"
#include "spaces/blocks.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"
#include "spaces/streams.h"
#include "text/written.h"

namespace morvik {

namespace {

static_assert(sizeof(morvik_record) == sizeof(Element) && offsetof(morvik_record, form) == offsetof(Element, form) &&
              offsetof(morvik_record, head) == offsetof(Element, name) &&
              offsetof(morvik_record, value) == offsetof(Element, integer));
static_assert(MORVIK_RECORD_NESTED == tags::SUBARRAY && MORVIK_RECORD_CHARACTER == tags::ASCII &&
              MORVIK_RECORD_INTEGER == tags::INTEGER && MORVIK_RECORD_OCTONION == tags::OCTONION);

constexpr unsigned MOST_PROCESSORS = 1 << 16;
constexpr std::size_t OCTONION_PARTS = 8;

std::atomic<bool> opened, working;
morvik_options options;
std::uint64_t moment = 1;  // a number for the time between two changes of values
bool messageheard, interruptheard, stopped;

List<Source *> kept;  // those that functions were compiled from, which their places point to

// ---- What the session says and reads.

ssize_t giveoutput(void *, const char *bytes, std::size_t length) {
  options.output(options.data, bytes, length);
  return static_cast<ssize_t>(length);
}

ssize_t takeinput(void *, char *bytes, std::size_t most) {
  const std::size_t taken = options.input(options.data, bytes, most);
  return static_cast<ssize_t>(taken < most ? taken : most);
}

void closestreams() {
  if (outputstream != stdout) std::fclose(outputstream);
  if (inputstream != stdin) std::fclose(inputstream);
  outputstream = stdout;
  inputstream = stdin;
}

bool openstreams() {
  if (options.output) outputstream = fopencookie(nullptr, "w", {nullptr, giveoutput, nullptr, nullptr});
  if (!outputstream) outputstream = stdout;
  if (options.input) inputstream = fopencookie(nullptr, "r", {takeinput, nullptr, nullptr, nullptr});
  if (!inputstream) inputstream = stdin;
  return (outputstream != stdout) == (options.output != nullptr) &&
         (inputstream != stdin) == (options.input != nullptr);
}

SourcePlace placenow() {
  if (iscompiling()) return placeoftoken();
  return running ? placeof(*running) : SourcePlace{};
}

void tell(const morvik_message &message) {
  if (options.message) return options.message(options.data, &message);
  if (message.source)
    std::fprintf(stderr, "%s:%zu: %s\n", message.source, message.line, message.text);
  else
    std::fprintf(stderr, "%s\n", message.text);
}

// Outside of a run the status says it all. The first message stops a run the way an interrupt does.
void hear(const Report &report) {
  if (!running && !iscompiling()) return;
  if (report.number == SIGNAL_NUMBERS - SIGINT) {
    interruptheard = interruptheard || !stopped;
    return;
  }
  messageheard = true;
  const SourcePlace place = placenow();
  tell({report.number, report.text, place.source ? place.source->name : nullptr, lineof(place), columnof(place)});
  if (!options.stop_at_message || stopped) return;
  stopped = true;
  noteinterrupt();
}

bool isover() {
  return interruptheard || stopped;
}

// ---- A call.

// Is enough left of the caller's stack for what a call does before it asks itself?
bool hasstack() {
  constexpr std::uintptr_t LEAST = 16 << 10;
  if (stackfloor == 0) measurestack();
  return reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) >= stackfloor + LEAST;
}

// Does the work, which returns a status, under a landing: whatever fails in it comes back as a lack of storage.
template <typename Work>
morvik_status protect(Work work) {
  struct Task {
    Work &work;
    morvik_status status;
  } task{work, MORVIK_NO_STORAGE};
  if (!hasstack()) return MORVIK_NO_STORAGE;
  completes([](void *t) { static_cast<Task *>(t)->status = static_cast<Task *>(t)->work(); }, &task);
  pendingproblem = 0;
  return task.status;
}

template <typename Work>
morvik_status call(Work work) {
  if (!opened) return MORVIK_NOT_OPEN;
  if (working.exchange(true)) return MORVIK_BUSY;
  const morvik_status status = opened ? protect(work) : MORVIK_NOT_OPEN;
  working = false;
  return status;
}

// The same for a call that writes. To a pipe that nobody reads any more a write fails; the signal that would end the
// process is kept off meanwhile and dropped, unless it was there before.
template <typename Work>
morvik_status callwriting(Work work) {
  sigset_t pipe, before, pending;
  sigemptyset(&pipe);
  sigaddset(&pipe, SIGPIPE);
  sigpending(&pending);
  pthread_sigmask(SIG_BLOCK, &pipe, &before);
  const morvik_status status = call(work);
  constexpr timespec NOW{};
  if (!sigismember(&pending, SIGPIPE))
    while (sigtimedwait(&pipe, nullptr, &NOW) < 0 && errno == EINTR) continue;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return status;
}

// The same for a call that changes the stack or a name.
template <typename Work>
morvik_status change(Work work) {
  return call([&work] {
    ++moment;
    return work();
  });
}

// ---- Texts.

void dropsource(Source *source) {
  std::free(const_cast<char *>(source->bytes));
  std::free(const_cast<char *>(source->name));
  closesource(*source);
  std::free(source);
}

// Takes the text over and runs it; it is kept as long as functions were compiled from it.
morvik_status runsource(Source *source) {
  const std::size_t bodies = placedbodies();
  messageheard = interruptheard = stopped = false;
  dropinterrupt();
  const bool whole = runtexts(*source, isover);
  dropinterrupt();
  std::fflush(outputstream);
  const bool ended = endprocess;
  endprocess = 0;
  if (placedbodies() == bodies || !kept.append(source)) dropsource(source);
  if (interruptheard) return MORVIK_INTERRUPTED;
  if (ended) return MORVIK_ENDED;
  if (!whole) return MORVIK_UNFINISHED;
  return messageheard ? MORVIK_MESSAGE : MORVIK_OK;
}

// A copy of the text: the end of the text ends no word, that of a line does.
char *endedcopy(const char *bytes, std::size_t length) {
  auto *copy = static_cast<char *>(std::malloc(length + 2));
  if (!copy) return nullptr;
  if (length > 0) std::memcpy(copy, bytes, length);
  copy[length] = '\n';
  copy[length + 1] = 0;
  return copy;
}

morvik_status runbytes(const char *bytes, std::size_t length, const char *name) {
  auto *source = static_cast<Source *>(std::malloc(sizeof(Source)));
  char *const called = strdup(name ? name : "text"), *const copy = endedcopy(bytes, length);
  if (source && called && copy && kept.reserve(1) && opensource(*source, called, copy, length + 1))
    return runsource(source);
  std::free(copy);
  std::free(called);
  std::free(source);
  return MORVIK_NO_STORAGE;
}

void dropkept() {
  for (Source *source : kept) dropsource(source);
  kept.clear();
}

// ---- Values.

unsigned kindof(const Element &e) {
  switch (e.tag) {
    case tags::SUBARRAY:
      return MORVIK_NESTED;
    case tags::ASCII:
      return MORVIK_CHARACTERS;
    case tags::INTEGER:
      return MORVIK_INTEGERS;
    case tags::REAL:
      return MORVIK_REALS;
    case tags::COMPLEX:
      return MORVIK_COMPLEX;
    case tags::QUATERNION:
      return MORVIK_QUATERNIONS;
    case tags::OCTONION:
      return MORVIK_OCTONIONS;
    case tags::HANDLE:
      return MORVIK_FILES;
    default:
      return MORVIK_OTHER;
  }
}

// Flag words may say too little or too much: the records say what they are.
morvik_value view(const Point &point) {
  morvik_value value{&point, moment, 0, 0, MORVIK_FUNCTION};
  if (!isspace(point)) return value;
  value.rank = point.rank;
  value.size = point.elements;
  value.kinds = 0;
  for (std::size_t i = 0; i < value.size; ++i) value.kinds |= kindof(point.data_pointer[i]);
  return value;
}

const Point &pointof(const morvik_value &value) {
  return *static_cast<const Point *>(value.point);
}

// Does the work on the Point of a value that was looked at.
template <typename Work>
morvik_status withpoint(const morvik_value *value, Work work) {
  if (!value) return MORVIK_BAD_ARGUMENT;
  return call([value, &work]() -> morvik_status {
    if (!value->point || value->moment != moment) return MORVIK_STALE;
    return work(pointof(*value));
  });
}

// Copies records by `copy`, which says whether it could.
template <typename Copy>
morvik_status copyrecords(const morvik_value *value, std::size_t first, std::size_t count, const void *to, Copy copy) {
  if (!to && count > 0) return MORVIK_BAD_ARGUMENT;
  return withpoint(value, [&](const Point &point) -> morvik_status {
    const std::size_t size = isspace(point) ? point.elements : 0;
    if (first > size || count > size - first) return MORVIK_NO_VALUE;
    for (std::size_t i = 0; i < count; ++i)
      if (!copy(point.data_pointer[first + i], i)) return MORVIK_WRONG_KIND;
    return MORVIK_OK;
  });
}

// The parts of a number, those that it lacks being 0. How many does it have? 0 for what is no number.
std::size_t partsof(const Element &e, double *part) {
  std::fill_n(part, OCTONION_PARTS, 0.0);
  switch (e.tag) {
    case tags::INTEGER:
      part[0] = static_cast<double>(e.integer);
      return 1;
    case tags::REAL:
      part[0] = e.real;
      return 1;
    case tags::COMPLEX:
      part[0] = e.complex.re;
      part[1] = e.complex.im;
      return 2;
    case tags::QUATERNION:
      part[0] = e.firstpart;
      std::copy_n(e.otherparts, 3, part + 1);
      return 4;
    case tags::OCTONION:
      std::copy_n(e.octonion->part, OCTONION_PARTS, part);
      return OCTONION_PARTS;
    default:
      return 0;
  }
}

bool isparts(std::size_t parts) {
  return parts == 1 || parts == 2 || parts == 4 || parts == OCTONION_PARTS;
}

// How many records a shape holds; MORVIK_BAD_ARGUMENT for what is no shape.
morvik_status countrecords(std::size_t rank, const std::size_t *extents, std::size_t &count) {
  count = 1;
  if (rank > MORVIK_MOST_AXES || (rank > 0 && !extents)) return MORVIK_BAD_ARGUMENT;
  for (std::size_t axis = 0; axis < rank; ++axis)
    if (extents[axis] > MOST_ELEMENTS) return MORVIK_BAD_ARGUMENT;
  for (std::size_t axis = 0; axis < rank; ++axis)
    if (extents[axis] == 0) count = 0;
  for (std::size_t axis = 0; axis < rank && count > 0; ++axis) {
    count *= extents[axis];
    if (count > MOST_ELEMENTS) return MORVIK_BAD_ARGUMENT;
  }
  return MORVIK_OK;
}

// Pushes a space whose records `fill` makes.
template <typename Fill>
morvik_status pushspace(std::size_t rank, const std::size_t *extents, const void *from, std::uint32_t kind, Fill fill) {
  std::size_t count;
  const morvik_status fault = countrecords(rank, extents, count);
  if (fault != MORVIK_OK || (!from && count > 0)) return MORVIK_BAD_ARGUMENT;
  return change([&]() -> morvik_status {
    if (sp >= stacktops[0]) return MORVIK_STACK_FULL;
    Point space{};
    Custody made;
    takecustody(made, releasepoint, &space);
    beginspace(space, rank, extents, count, kind);
    for (std::size_t i = 0; i < count; ++i) {
      fill(space.data_pointer[i], i);
      ++space.elements;
    }
    endcustody(made);
    *++sp = space;
    return MORVIK_OK;
  });
}

morvik_status writetext(const Point &point, int form, char **text, std::size_t *length) {
  WrittenText written;
  Point copy = point;
  if (!writepoint(written, &copy, form)) return MORVIK_NO_STORAGE;
  endcustody(written.custody);
  *text = written.bytes;
  if (length) *length = written.length;
  return MORVIK_OK;
}

void setoptions(const morvik_options *given) {
  options = MORVIK_OPTIONS;
  if (given) std::memcpy(&options, given, given->size < sizeof options ? given->size : sizeof options);
}

bool isusable(const morvik_options *given) {
  return !given || (given->size >= offsetof(morvik_options, processors) + sizeof given->processors &&
                    given->processors <= MOST_PROCESSORS);
}

morvik_status opensession() {
  foreignsignals = true;
  conversing = 0;
  echoing = options.echo != 0 ? 1 : 0;
  constraindirectories = options.unconstrained == 0 ? 1 : 0;
  hearreport = hear;
  if (openstreams()) {
    if (startsession(options.processors + 1)) return MORVIK_OK;
    endsession();
  }
  closestreams();
  return MORVIK_NO_STORAGE;
}

}  // namespace

// What is seen of the library.
#pragma GCC visibility push(default)
extern "C" {

const char *morvik_status_text(morvik_status status) {
  constexpr const char *TEXTS[] = {"done",
                                   "a message came",
                                   "interrupted",
                                   "the programme asked for its end",
                                   "the text ends inside something that is open",
                                   "there is a session in this process already",
                                   "no session is open",
                                   "another call is at work",
                                   "an argument that cannot be",
                                   "out of storage",
                                   "the value stack is full",
                                   "there is no such value",
                                   "a record is of another kind",
                                   "the value was looked at before something changed"};
  static_assert(std::size(TEXTS) == MORVIK_STALE + 1);
  return status >= MORVIK_OK && status <= MORVIK_STALE ? TEXTS[status] : "no status";
}

const char *morvik_version(void) {
  return MORVIK_VERSION;
}

morvik_status morvik_open(const morvik_options *given) {
  if (opened) return MORVIK_OPEN_ALREADY;
  if (!isusable(given)) return MORVIK_BAD_ARGUMENT;
  if (working.exchange(true)) return MORVIK_BUSY;
  morvik_status status = MORVIK_OPEN_ALREADY;
  if (!opened) {
    setoptions(given);
    status = opensession();
    opened = status == MORVIK_OK;
  }
  working = false;
  return status;
}

morvik_status morvik_close(void) {
  return callwriting([] {
    std::fflush(outputstream);
    dropinterrupt();
    endsession();
    forgetplaces();
    dropkept();
    closestreams();
    ++moment;
    opened = false;
    return MORVIK_OK;
  });
}

morvik_status morvik_run(const char *text, size_t length, const char *name) {
  if ((!text && length > 0) || (length > 0 && std::memchr(text, 0, length)) || length > SSIZE_MAX)
    return MORVIK_BAD_ARGUMENT;
  return callwriting([=] {
    ++moment;
    return runbytes(text, length, name);
  });
}

void morvik_interrupt(void) {
  noteinterrupt();
}

morvik_status morvik_height(size_t *height) {
  if (!height) return MORVIK_BAD_ARGUMENT;
  return call([=] {
    *height = static_cast<std::size_t>(sp - stack[0]);
    return MORVIK_OK;
  });
}

morvik_status morvik_look(size_t depth, morvik_value *value) {
  if (!value) return MORVIK_BAD_ARGUMENT;
  return call([=] {
    if (depth >= static_cast<std::size_t>(sp - stack[0])) return MORVIK_NO_VALUE;
    *value = view(*(sp - depth));
    return MORVIK_OK;
  });
}

morvik_status morvik_extents(const morvik_value *value, size_t *extents) {
  if (!extents) return MORVIK_BAD_ARGUMENT;
  return withpoint(value, [=](const Point &point) {
    for (std::int32_t axis = 0; axis < point.rank; ++axis)
      extents[axis] = static_cast<std::size_t>(point.shape_pointer[axis].integer);
    return MORVIK_OK;
  });
}

morvik_status morvik_records(const morvik_value *value, const morvik_record **records) {
  if (!records) return MORVIK_BAD_ARGUMENT;
  return withpoint(value, [=](const Point &point) {
    *records = isspace(point) ? reinterpret_cast<const morvik_record *>(point.data_pointer) : nullptr;
    return MORVIK_OK;
  });
}

morvik_status morvik_integers(const morvik_value *value, size_t first, size_t count, int64_t *integers) {
  return copyrecords(value, first, count, integers, [=](const Element &e, std::size_t i) {
    integers[i] = e.integer;
    return e.tag == tags::INTEGER;
  });
}

morvik_status morvik_doubles(const morvik_value *value, size_t first, size_t count, double *doubles) {
  return morvik_parts(value, 1, first, count, doubles);
}

morvik_status morvik_bytes(const morvik_value *value, size_t first, size_t count, char *bytes) {
  return copyrecords(value, first, count, bytes, [=](const Element &e, std::size_t i) {
    bytes[i] = static_cast<char>(e.ascii);
    return e.tag == tags::ASCII;
  });
}

morvik_status morvik_parts(const morvik_value *value, size_t parts, size_t first, size_t count, double *doubles) {
  if (!isparts(parts)) return MORVIK_BAD_ARGUMENT;
  return copyrecords(value, first, count, doubles, [=](const Element &e, std::size_t i) {
    double part[OCTONION_PARTS];
    const std::size_t found = partsof(e, part);
    std::copy_n(part, parts, doubles + i * parts);
    return found > 0 && found <= parts;
  });
}

morvik_status morvik_member(const morvik_value *value, size_t record, morvik_value *member) {
  if (!member) return MORVIK_BAD_ARGUMENT;
  return withpoint(value, [=](const Point &point) {
    if (!isspace(point) || record >= point.elements) return MORVIK_NO_VALUE;
    const Element &e = point.data_pointer[record];
    if (e.tag != tags::SUBARRAY) return MORVIK_WRONG_KIND;
    *member = view(*e.subarray);
    return MORVIK_OK;
  });
}

morvik_status morvik_text(const morvik_value *value, int form, char **text, size_t *length) {
  if (!text || (form != MORVIK_DISPLAY && form != MORVIK_SOURCE)) return MORVIK_BAD_ARGUMENT;
  return withpoint(value, [=](const Point &point) { return writetext(point, form, text, length); });
}

void morvik_free(char *text) {
  std::free(text);
}

morvik_status morvik_push_integers(const int64_t *integers, size_t rank, const size_t *extents) {
  return pushspace(rank, extents, integers, HASINTEGER, [=](Element &e, std::size_t i) {
    e = {};
    e.tag = tags::INTEGER;
    e.form = forms::NUMBER;
    e.integer = integers[i];
  });
}

morvik_status morvik_push_parts(size_t parts, const double *doubles, size_t rank, const size_t *extents) {
  if (!isparts(parts)) return MORVIK_BAD_ARGUMENT;
  const std::uint32_t kind = parts == 1 ? HASREAL : parts == 2 ? HASCOMPLEX : parts == 4 ? HASQUATERNION : HASOCTONION;
  return pushspace(rank, extents, doubles, kind,
                   [=](Element &e, std::size_t i) { setparts(e, doubles + i * parts, parts); });
}

morvik_status morvik_push_bytes(const char *bytes, size_t rank, const size_t *extents) {
  return pushspace(rank, extents, bytes, HASASCII, [=](Element &e, std::size_t i) {
    e = {};
    e.tag = tags::ASCII;
    e.ascii = static_cast<std::uint8_t>(bytes[i]);
  });
}

morvik_status morvik_push_nested(size_t members) {
  return change([=] {
    if (members > static_cast<std::size_t>(sp - stack[0])) return MORVIK_NO_VALUE;
    if (members == 0 && sp >= stacktops[0]) return MORVIK_STACK_FULL;
    const Point vector = buildnested(sp - members + 1, members);
    sp -= members;
    *++sp = vector;
    return MORVIK_OK;
  });
}

morvik_status morvik_push_value(const morvik_value *value) {
  return withpoint(value, [](const Point &point) {
    if (sp >= stacktops[0]) return MORVIK_STACK_FULL;
    const Point copy = point;
    referencepoint(&copy);
    *++sp = copy;
    ++moment;
    return MORVIK_OK;
  });
}

morvik_status morvik_drop(size_t count) {
  return change([=] {
    if (count > static_cast<std::size_t>(sp - stack[0])) return MORVIK_NO_VALUE;
    for (std::size_t i = 0; i < count; ++i) dereferencepoint(sp--);
    return MORVIK_OK;
  });
}

morvik_status morvik_set(const char *name) {
  if (!name || *name == 0) return MORVIK_BAD_ARGUMENT;
  return change([=] {
    if (sp == stack[0]) return MORVIK_NO_VALUE;
    Point *const place = entered(name);
    setvalue(place, *sp--);
    return MORVIK_OK;
  });
}

morvik_status morvik_get(const char *name) {
  if (!name || *name == 0) return MORVIK_BAD_ARGUMENT;
  return change([=] {
    const Entry *entry = checkhash(memory[0], name);
    if (!entry || isend(*entry->meaning)) return MORVIK_NO_VALUE;
    if (sp >= stacktops[0]) return MORVIK_STACK_FULL;
    referencepoint(entry->meaning);
    *++sp = *entry->meaning;
    return MORVIK_OK;
  });
}

}  // extern "C"
#pragma GCC visibility pop

}  // namespace morvik
