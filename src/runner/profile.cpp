// Where the time of a script goes. The run says before each Point where it is; the time until it says so again belongs
// to that line, and to the function on top of the functions that run.
#include "runner/profile.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

#include "api/banks.h"
#include "api/list.h"
#include "api/places.h"
#include "frontend/buckets.h"
#include "machine/timing.h"

namespace morvik {

namespace {

constexpr std::size_t NONE = SIZE_MAX;
constexpr std::size_t DEEPEST = 100;  // nodes below each other; what recurses deeper counts for the last
constexpr std::size_t MOST_ROWS = 40;

// A function as it was called from another. Node 0 is the script.
struct Node {
  std::size_t caller, function, depth;
  double own;
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

// Rows that are found again by what they are: the places of a list by hash, NONE for a free one, at least twice as many
// as rows.
template <typename Row>
struct Table {
  List<Row> rows;
  List<std::size_t> places;
};

Table<Node> nodes;
Table<Function> functions;
Table<Line> lines;
List<Frame> frames;
std::size_t nextwalk;  // at so many functions
double last;

double now() {
  constexpr double NANOSECOND = 1e-9;
  timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * NANOSECOND;
}

// ---- The rows.

std::size_t mixed(std::uint64_t word) {
  constexpr std::uint64_t ODD = 0x9E3779B97F4A7C15;  // spreads what is alike in its low bits
  const std::uint64_t product = word * ODD;
  return static_cast<std::size_t>(product ^ product >> 32);
}

std::size_t hashof(const Node &node) {
  return mixed(node.caller << 32 ^ node.function);
}
bool issame(const Node &a, const Node &b) {
  return a.caller == b.caller && a.function == b.function;
}
std::size_t hashof(const Function &function) {
  return mixed(function.origin ^ reinterpret_cast<std::uintptr_t>(function.header));
}
bool issame(const Function &a, const Function &b) {
  return a.origin == b.origin && a.header == b.header;
}
std::size_t hashof(const Line &line) {
  return mixed(reinterpret_cast<std::uintptr_t>(line.source) ^ line.number);
}
bool issame(const Line &a, const Line &b) {
  return a.source == b.source && a.number == b.number;
}

template <typename Row>
std::size_t &placeof(const Table<Row> &table, const Row &row) {
  const std::size_t mask = table.places.count - 1;
  std::size_t place = hashof(row) & mask;
  while (table.places[place] != NONE && !issame(table.rows[table.places[place]], row)) place = (place + 1) & mask;
  return table.places.records[place];
}

template <typename Row>
bool growplaces(Table<Row> &table) {
  constexpr std::size_t FIRST_PLACES = 256;
  const std::size_t capacity = std::max(2 * table.places.count, FIRST_PLACES);
  if (!table.places.reserve(capacity - table.places.count)) return false;
  table.places.count = capacity;
  std::fill(table.places.begin(), table.places.end(), NONE);
  for (std::size_t i = 0; i < table.rows.count; ++i) placeof(table, table.rows[i]) = i;
  return true;
}

// The number of the row that is the same; it is the last where it is new. NONE where there is no storage.
template <typename Row>
std::size_t rowof(Table<Row> &table, const Row &row) {
  if (2 * (table.rows.count + 1) > table.places.count && !growplaces(table)) return NONE;
  std::size_t &place = placeof(table, row);
  if (place == NONE && table.rows.append(row)) place = table.rows.count - 1;
  return place;
}

template <typename Row>
void clear(Table<Row> &table) {
  table.rows.clear();
  table.places.clear();
}

// NONE where the place of the line is not known.
std::size_t rowofline(const SourcePlace &place) {
  return place.source ? rowof(lines, {place.source, lineof(place), 0, 0}) : NONE;
}

Function functionfrom(std::uint64_t origin, const Point *header) {
  return {origin, origin == 0 ? header : nullptr, nullptr, {}, 0, 0, 0};
}

// Gives the functions in a table their names where they have none yet.
void namefunctions(Entry *table) {
  TableWalk walk{table};
  while (const Entry *entry = nextentry(walk)) {
    const Point &value = *entry->meaning;
    if (!isfunction(value) || !value.programme) continue;
    const std::size_t row = placeof(functions, functionfrom(value.programme->origin, value.programme));
    if (row != NONE && !functions.rows[row].name) functions.rows[row].name = strdup(entry->name);
  }
}

// A function that was compiled from a source is known by that, another by its header. A large table of names is looked
// through when there are twice as many functions as the last time, and at the end.
std::size_t rowoffunction(const Level &level) {
  const std::size_t known = functions.rows.count;
  const std::size_t row = rowof(functions, functionfrom(originof(level), level.header));
  if (row != known) return row;
  functions.rows[row].place = placeof(level);
  for (const Context *link = level.meaning; link; link = link->previous)
    if (link->table && (link->table->kind == SMALL_TABLE || functions.rows.count >= nextwalk))
      namefunctions(link->table);
  if (functions.rows.count >= nextwalk) nextwalk = 2 * functions.rows.count;
  return row;
}

// The node of a function that another calls. One that calls itself is one.
std::size_t rowofnode(std::size_t caller, std::size_t function) {
  const Node &above = nodes.rows[caller];
  if (above.function == function || above.depth >= DEEPEST || function == NONE) return caller;
  const std::size_t row = rowof(nodes, {caller, function, above.depth + 1, 0});
  return row == NONE ? caller : row;
}

// ---- The run.

void charge() {
  const double time = now();
  if (frames.count > 0) {
    const Frame &frame = frames.last();
    nodes.rows[frame.node].own += time - last;
    if (frame.line != NONE) lines.rows[frame.line].own += time - last;
  }
}

// A text that a function runs counts for the function.
void enter(const Level &level) {
  std::size_t node = frames.count > 0 ? frames.last().node : 0;
  if (level.header) {
    const std::size_t function = rowoffunction(level);
    node = rowofnode(node, function);
    if (function != NONE) ++functions.rows[function].calls;
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
  if (line != NONE && !begins && (line != frame.line || level.current == level.start)) ++lines.rows[line].runs;
  frame.line = line;
  last = now();
}

// ---- The tables.

void sumup() {
  for (std::size_t i = nodes.rows.count; i-- > 1;) {
    const Node &node = nodes.rows[i];
    functions.rows[node.function].own += node.own;
    // A node counts in full for each function above it, once.
    for (std::size_t at = i; at != 0; at = nodes.rows[at].caller) {
      bool again = false;
      for (std::size_t above = nodes.rows[at].caller; above != 0; above = nodes.rows[above].caller)
        again = again || nodes.rows[above].function == nodes.rows[at].function;
      if (!again) functions.rows[nodes.rows[at].function].total += node.own;
    }
  }
}

double alltime() {
  double sum = 0;
  for (const Node &node : nodes.rows) sum += node.own;
  return sum;
}

const char *nameof(const Function &function) {
  return function.name ? function.name : "(no name)";
}

constexpr double MILLI = 1e3, PERCENT = 100;

void writefunctions(double all) {
  std::sort(functions.rows.begin(), functions.rows.end(),
            [](const Function &a, const Function &b) { return a.own > b.own; });
  std::fputs("\n      own ms   share     total ms       calls  function\n", stderr);
  for (std::size_t i = 0; i < std::min(functions.rows.count, MOST_ROWS); ++i) {
    const Function &f = functions.rows[i];
    std::fprintf(stderr, "%12.3f %6.1f%% %12.3f %11ld  %s", f.own * MILLI, all > 0 ? f.own / all * PERCENT : 0,
                 f.total * MILLI, static_cast<long>(f.calls), nameof(f));
    if (f.place.source) std::fprintf(stderr, " (%s:%zu)", f.place.source->name, lineof(f.place));
    std::fputc('\n', stderr);
  }
}

void writelines(double all) {
  std::sort(lines.rows.begin(), lines.rows.end(), [](const Line &a, const Line &b) { return a.own > b.own; });
  std::fputs("\n      own ms   share        runs  line\n", stderr);
  for (std::size_t i = 0; i < std::min(lines.rows.count, MOST_ROWS); ++i) {
    const Line &l = lines.rows[i];
    std::fprintf(stderr, "%12.3f %6.1f%% %11ld  %s:%zu\n", l.own * MILLI, all > 0 ? l.own / all * PERCENT : 0,
                 static_cast<long>(l.runs), l.source->name, l.number);
  }
}

void writestack(const Node &node, const char *script) {
  if (&node != &nodes.rows[0]) {
    writestack(nodes.rows[node.caller], script);
    std::fprintf(stderr, ";%s", nameof(functions.rows[node.function]));
  } else {
    std::fputs(script, stderr);
  }
}

// In microseconds.
void writefolded(const char *script) {
  constexpr double MICRO = 1e6;
  for (const Node &node : nodes.rows) {
    const auto time = std::lround(node.own * MICRO);
    if (time == 0) continue;
    writestack(node, script);
    std::fprintf(stderr, " %ld\n", time);
  }
}

}  // namespace

void beginprofile() {
  if (rowof(nodes, {0, NONE, 0, 0}) == NONE) return;
  nextwalk = 1;
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
  if (functions.rows.count > 0) namefunctions(memory[0]);
  if (form == Profile::FOLDED) {
    writefolded(script);
  } else {
    sumup();
    const double all = alltime();
    std::fprintf(stderr, "\nProfile of %s: %.3f ms, of which %.3f ms in no function\n", script, all * MILLI,
                 nodes.rows[0].own * MILLI);
    writefunctions(all);
    writelines(all);
  }
  for (Function &function : functions.rows) std::free(function.name);
  clear(nodes);
  clear(functions);
  clear(lines);
  frames.clear();
}

}  // namespace morvik
