// Where the time of a script goes. The run says before each Point where it is; the time until it says so again belongs
// to that line, and to the function on top of the functions that run.
#include "runner/profile.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "api/list.h"
#include "api/places.h"
#include "machine/timing.h"
#include "runner/telling.h"

namespace morvik {

namespace {

constexpr std::size_t NONE = SIZE_MAX;
constexpr std::size_t DEEPEST = 100;  // nodes below each other; what recurses deeper counts for the last
constexpr std::size_t MOST_ROWS = 40;

// A function as it was called from another. Node 0 is the script.
struct Node {
  std::size_t caller, function, depth;
  double own;
  std::int64_t calls;
};
struct Function {
  std::uint64_t origin;
  const Point *header;  // of what has no origin
  char *name;
  SourcePlace place;
  double own, total;
  std::int64_t calls;
};
struct Line {
  const Source *source;
  std::size_t number;
  double own;
  std::int64_t runs;
};
// What runs: a level, and the node that it counts for.
struct Frame {
  int level;
  std::size_t node, line;
};

List<Node> nodes;
List<Function> functions;
List<Line> lines;
List<std::size_t> linerows;  // by hash of source and number, NONE for a free place; twice as many as lines
List<Frame> frames;
double last;

double now() {
  constexpr double NANOSECOND = 1e-9;
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * NANOSECOND;
}

// ---- The rows.

std::size_t slotof(const Source *source, std::size_t number) {
  const std::size_t mask = linerows.count - 1;
  std::size_t slot = (reinterpret_cast<std::uintptr_t>(source) / sizeof(Source) * 31 + number) & mask;
  while (linerows[slot] != NONE && (lines[linerows[slot]].source != source || lines[linerows[slot]].number != number))
    slot = (slot + 1) & mask;
  return slot;
}

bool growlinerows() {
  constexpr std::size_t FIRST_ROWS = 256;
  const std::size_t capacity = std::max(2 * linerows.count, FIRST_ROWS);
  if (!linerows.reserve(capacity - linerows.count)) return false;
  linerows.count = capacity;
  std::fill(linerows.begin(), linerows.end(), NONE);
  for (std::size_t i = 0; i < lines.count; ++i) linerows[slotof(lines[i].source, lines[i].number)] = i;
  return true;
}

// The row of a line; NONE where its place is not known or there is no storage.
std::size_t rowofline(const SourcePlace &place) {
  if (!place.source) return NONE;
  if (2 * (lines.count + 1) > linerows.count && !growlinerows()) return NONE;
  const std::size_t number = lineof(place), slot = slotof(place.source, number);
  if (linerows[slot] == NONE && lines.append({place.source, number, 0, 0})) linerows[slot] = lines.count - 1;
  return linerows[slot];
}

bool isfunctionof(const Function &function, const Level &level) {
  const std::uint64_t origin = originof(level);
  return origin != 0 ? function.origin == origin : function.header == level.header;
}

std::size_t functionof(const Level &level) {
  for (std::size_t i = 0; i < functions.count; ++i)
    if (isfunctionof(functions[i], level)) return i;
  const char *name = functionname(level);
  functions.append({originof(level), level.header, strdup(name ? name : "(no name)"), placeof(level), 0, 0, 0});
  return functions.count - 1;
}

// The node of a function that another calls. One that calls itself is one.
std::size_t nodeof(std::size_t caller, std::size_t function) {
  if (nodes[caller].function == function || nodes[caller].depth >= DEEPEST) return caller;
  for (std::size_t i = caller + 1; i < nodes.count; ++i)
    if (nodes[i].caller == caller && nodes[i].function == function) return i;
  nodes.append({caller, function, nodes[caller].depth + 1, 0, 0});
  return nodes.count - 1;
}

// ---- The run.

void charge() {
  const double time = now();
  if (frames.count > 0) {
    const Frame &frame = frames.last();
    nodes[frame.node].own += time - last;
    if (frame.line != NONE) lines[frame.line].own += time - last;
  }
}

// A text that a function runs counts for the function.
void enter(const Level &level) {
  std::size_t node = frames.count > 0 ? frames.last().node : 0;
  if (level.header) {
    node = nodeof(node, functionof(level));
    ++nodes[node].calls;
    ++functions[functionof(level)].calls;
  }
  frames.append({level.level, node, NONE});
}

void follow(const Level &level, bool begins) {
  charge();
  const int kept = begins ? level.level - 1 : level.level;
  while (frames.count > 0 && frames.last().level > kept) --frames.count;
  if (frames.count == 0 || frames.last().level < level.level) enter(level);
  Frame &frame = frames.last();
  const std::size_t line = rowofline(placeof(level));
  if (line != NONE && !begins && (line != frame.line || level.current == level.start)) ++lines[line].runs;
  frame.line = line;
  last = now();
}

// ---- The tables.

void sumup() {
  for (std::size_t i = nodes.count; i-- > 1;) {
    const Node &node = nodes[i];
    functions[node.function].own += node.own;
    // A node counts in full for each function above it, once.
    for (std::size_t at = i; at != 0; at = nodes[at].caller) {
      bool again = false;
      for (std::size_t above = nodes[at].caller; above != 0; above = nodes[above].caller)
        again = again || nodes[above].function == nodes[at].function;
      if (!again) functions[nodes[at].function].total += node.own;
    }
  }
}

double alltime() {
  double sum = 0;
  for (const Node &node : nodes) sum += node.own;
  return sum;
}

constexpr double MILLI = 1e3, PERCENT = 100;

void writefunctions(double all) {
  std::sort(functions.begin(), functions.end(), [](const Function &a, const Function &b) { return a.own > b.own; });
  std::fputs("\n      own ms   share     total ms       calls  function\n", stderr);
  for (std::size_t i = 0; i < std::min(functions.count, MOST_ROWS); ++i) {
    const Function &f = functions[i];
    std::fprintf(stderr, "%12.3f %6.1f%% %12.3f %11ld  %s", f.own * MILLI, all > 0 ? f.own / all * PERCENT : 0,
                 f.total * MILLI, static_cast<long>(f.calls), f.name);
    if (f.place.source) std::fprintf(stderr, " (%s:%zu)", f.place.source->name, lineof(f.place));
    std::fputc('\n', stderr);
  }
}

void writelines(double all) {
  std::sort(lines.begin(), lines.end(), [](const Line &a, const Line &b) { return a.own > b.own; });
  std::fputs("\n      own ms   share        runs  line\n", stderr);
  for (std::size_t i = 0; i < std::min(lines.count, MOST_ROWS); ++i) {
    const Line &l = lines[i];
    std::fprintf(stderr, "%12.3f %6.1f%% %11ld  %s:%zu\n", l.own * MILLI, all > 0 ? l.own / all * PERCENT : 0,
                 static_cast<long>(l.runs), l.source->name, l.number);
  }
}

void writestack(const Node &node, const char *script) {
  if (&node != &nodes[0]) {
    writestack(nodes[node.caller], script);
    std::fprintf(stderr, ";%s", functions[node.function].name);
  } else {
    std::fputs(script, stderr);
  }
}

// In microseconds.
void writefolded(const char *script) {
  constexpr double MICRO = 1e6;
  for (const Node &node : nodes) {
    const auto time = static_cast<long>(node.own * MICRO + 0.5);
    if (time == 0) continue;
    writestack(node, script);
    std::fprintf(stderr, " %ld\n", time);
  }
}

}  // namespace

void beginprofile() {
  if (!nodes.append({0, NONE, 0, 0, 0})) return;
  opstime = 1;
  followrun = follow;
}

void pauseprofile() {
  if (!followrun) return;
  charge();
  frames.count = 0;
}

void endprofile(Profile form, const char *script) {
  if (!followrun) return;
  pauseprofile();
  followrun = nullptr;
  if (form == Profile::FOLDED) {
    writefolded(script);
  } else {
    sumup();
    const double all = alltime();
    std::fprintf(stderr, "\nProfile of %s: %.3f ms, of which %.3f ms in no function\n", script, all * MILLI,
                 nodes[0].own * MILLI);
    writefunctions(all);
    writelines(all);
  }
  for (Function &function : functions) std::free(function.name);
  nodes.clear();
  functions.clear();
  lines.clear();
  linerows.clear();
  frames.clear();
}

}  // namespace morvik
