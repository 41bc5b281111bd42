// A look at a script without a run: the bytes and words as the scanner reads them, then the Points that they became.
#include "runner/checker.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "api/list.h"
#include "api/places.h"
#include "api/session.h"
#include "failure/jump.h"
#include "frontend/keywords.h"
#include "frontend/window.h"
#include "runner/telling.h"
#include "spaces/instructions.h"
#include "spaces/point.h"

namespace morvik {

namespace {

bool silent;  // in a library only the names count

void warn(const SourcePlace &place, const char *format, const char *what, const char *more = "") {
  if (silent || !place.source) return;
  char text[512];
  std::snprintf(text, sizeof text, format, what, more);
  tellat(place, text);
}

// ---- Words that mean nothing.

enum class Worth { WORKS, MISSING, IDLE };

constexpr Worth Worths[instructions::COUNT] = {
#undef MONADIC
#undef DRAWING
#undef DYADIC
#undef SPACE
#undef HANDLER
#undef NOTIMPLEMENTED
#undef RESTRICTED
#undef NOTHING
#define MONADIC(f) Worth::WORKS
#define DRAWING(f) Worth::WORKS
#define DYADIC(f) Worth::WORKS
#define SPACE(f) Worth::WORKS
#define HANDLER(f) Worth::WORKS
#define NOTIMPLEMENTED Worth::MISSING
#define RESTRICTED Worth::MISSING
#define NOTHING Worth::IDLE
#define INSTRUCTION(number, name, argumentclass, key, handler, effect, meaning) handler,
#include "tables/instructions.def"
};

bool isdecision(std::uint16_t instruction) {
  return instruction == instructions::IF_YES || instruction == instructions::IF_NO;
}

// The instruction of a Point, whatever decides it.
std::uint16_t instructionof(const Point &point) {
  return isdecision(point.instruction) && point.modifier != instructions::BARE ? point.modifier : point.instruction;
}

void checkworth(const Point &point, const SourcePlace &place) {
  const std::uint16_t number = instructionof(point);
  if (number >= instructions::COUNT || number == instructions::NOOP || !point.name || *point.name == 0) return;
  if (Worths[number] == Worth::MISSING) warn(place, "%s is reserved and not implemented", point.name);
  if (Worths[number] == Worth::IDLE) warn(place, "%s does nothing", point.name);
}

// ---- Names.

struct Name {
  char *text;
  SourcePlace place;
  std::size_t number;  // in the order of the text
};
List<Name> namesset, namesread;
bool namescomefromelsewhere;  // of a file or a text that is read by the programme

// Where one cannot be noted for want of storage, nothing is said of any.
void note(List<Name> &names, const char *name, const SourcePlace &place) {
  char *const text = strdup(name);
  if (text && names.append({text, place, names.count})) return;
  std::free(text);
  namescomefromelsewhere = true;
}

void noteset(const char *name) {
  note(namesset, name, {});
}

void noteread(const char *name, const SourcePlace &place) {
  if (!silent && *name != '#') note(namesread, name, place);
}

bool isbefore(const Name &a, const Name &b) {
  const int order = std::strcmp(a.text, b.text);
  return order < 0 || (order == 0 && a.number < b.number);
}

bool isset(const Name &name) {
  const auto before = [](const Name &a, const Name &b) { return std::strcmp(a.text, b.text) < 0; };
  return std::binary_search(namesset.begin(), namesset.end(), name, before);
}

// Warns of each name once, where it is read first.
void checknames() {
  if (namescomefromelsewhere) return;
  std::sort(namesset.begin(), namesset.end(), isbefore);
  std::sort(namesread.begin(), namesread.end(), isbefore);
  List<Name> unset;
  for (const Name &name : namesread)
    if (!(&name > namesread.begin() && std::strcmp(name.text, (&name)[-1].text) == 0) && !isset(name))
      unset.append(name);
  std::sort(unset.begin(), unset.end(), [](const Name &a, const Name &b) { return a.number < b.number; });
  for (const Name &name : unset) warn(name.place, "nothing here sets %s", name.text);
  unset.clear();
}

void clearnames() {
  for (List<Name> *names : {&namesset, &namesread}) {
    for (const Name &name : *names) std::free(name.text);
    names->clear();
  }
}

bool bringsnames(std::uint16_t instruction) {
  switch (instruction) {
    case instructions::READ:
    case instructions::LOAD:
    case instructions::EXECUTE:
    case instructions::AT:
    case instructions::INPUT:
      return true;
    default:
      return false;
  }
}

void notename(const Point &point, const SourcePlace &place) {
  if (!point.name) return;
  if (point.rank == ranks::VARIABLE) noteread(point.name, place);
  if (point.rank == ranks::ADDRESS) noteset(point.name);
}

// ---- Programmes.

bool ismarked(const Point &point) {
  return (point.type & CONDITIONAL) != 0;
}
bool ischeck(const Point &point) {
  return isoperator(point) && instructionof(point) == instructions::CHECK;
}
const char *spelled(const Point &point) {
  if (isfunction(point)) return "the function";
  return !isspace(point) && point.name ? point.name : "the value";
}

// What a marked Point decides: itself; a function has its mark in a Point of its own.
const Point *decidedby(const Point *mark) {
  const bool bare = isoperator(*mark) && isdecision(mark->instruction) && mark->modifier == instructions::BARE;
  return bare ? mark - 1 : mark;
}

// A mark decides the one word before it: what is marked after a CHECK comes right behind it.
void checkmarks(const Point *points, std::uint64_t origin) {
  const Point *check = nullptr;  // with no mark behind it yet
  for (const Point *p = points; !isend(*p); ++p) {
    const SourcePlace place = placein(origin, static_cast<std::size_t>(p - points));
    if (ischeck(*p)) {
      if (ismarked(*p)) warn(place, "the mark decides %s itself: a mark follows what it decides", "CHECK");
      check = p;
    } else if (check && ismarked(*p)) {
      if (decidedby(p) > check + 1)
        warn(place, "the mark decides %s alone: what stands between it and CHECK runs in any case",
             spelled(*decidedby(p)));
      check = nullptr;
    }
  }
}

// A body that begins with names for its arguments names no more of them than it takes.
void checkarguments(const Point &function, const Point *body, std::uint64_t origin) {
  if (function.arguments < 0) return;
  int named = 0;
  const Point *p = body;
  const auto setsname = [](const Point *at) {
    return at->rank == ranks::ADDRESS && isoperator(at[1]) && at[1].instruction == instructions::SET;
  };
  for (; !isend(*p) && !isend(p[1]) && setsname(p); p += 2) ++named;
  if (named <= function.arguments) return;
  char counts[64];
  std::snprintf(counts, sizeof counts, "%d arguments and takes %d", named, function.arguments);
  warn(placein(origin, static_cast<std::size_t>(2 * function.arguments)), "the function names %s", counts);
}

void checkpoints(const Point *points, std::uint64_t origin);

void checkpoint(const Point &point, const SourcePlace &place) {
  if (isoperator(point)) {
    checkworth(point, place);
    namescomefromelsewhere = namescomefromelsewhere || bringsnames(instructionof(point));
  }
  notename(point, place);
  if (!isfunction(point) || !point.programme) return;
  const std::uint64_t origin = point.programme->origin;
  checkarguments(point, point.programme + 1, origin);
  checkpoints(point.programme + 1, origin);
}

void checkpoints(const Point *points, std::uint64_t origin) {
  for (const Point *p = points; !isend(*p); ++p) checkpoint(*p, placein(origin, static_cast<std::size_t>(p - points)));
  checkmarks(points, origin);
}

// ---- Bytes and tokens.

constexpr unsigned char COMMENT_BYTE = 0xBC;

// White space and what was looked over are ahead of the token; so are bytes that no rule matched.
void checkbytes(const Token &token, const SourcePlace &place) {
  const char *const bytes = place.source->bytes + place.offset;
  for (std::size_t i = 0; i < token.length; ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < 0x80) continue;
    const bool followson = byte < 0xC0 && place.offset + i > 0 && static_cast<unsigned char>(bytes[i - 1]) >= 0xC2;
    if (followson) return;  // reported already
    char text[8];
    std::snprintf(text, sizeof text, "%02X", byte);
    warn({place.source, place.offset + i}, "a byte %s stands outside of a quote: it is a word or part of a name here",
         text);
    return;
  }
}

void checksymbol(const Token &token, const SourcePlace &place) {
  const Keyword &row = Keywords[token.row];
  const char *after = place.source->bytes + place.offset + token.length;
  const auto lastbyte = static_cast<unsigned char>(token.text[token.length - 1]);
  if (row.bounded || !window::isinclass(lastbyte, window::NAME_BYTE)) return;
  const std::size_t rest = std::strspn(after, "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_");
  if (rest == 0) return;
  char reading[256];
  std::snprintf(reading, sizeof reading, "%s%.*s reads as %s %.*s", token.text,
                static_cast<int>(std::min<std::size_t>(rest, 80)), after, token.text,
                static_cast<int>(std::min<std::size_t>(rest, 80)), after);
  warn(place, "%s: it begins with a word that needs nothing behind it", reading);
}

void checktoken(const Token &token, Condition was, SourcePlace place) {
  const bool iscomment = was == Condition::COMMENT;
  if (iscomment && token.rule == Rule::CLOSE_COMMENT && static_cast<unsigned char>(token.text[0]) == COMMENT_BYTE)
    warn(place, "a byte %s ends this comment", "BC");
  if (iscomment || was == Condition::QUOTED) return;
  if (token.rule == Rule::OPEN_COMMENT && static_cast<unsigned char>(token.text[0]) == COMMENT_BYTE)
    warn(place, "a byte %s begins a comment", "BC");
  else
    checkbytes(token, place);
  if (token.rule == Rule::KEYWORD && was == Condition::INITIAL) checksymbol(token, place);
}

}  // namespace

void checktexts(Source &source, bool library) {
  silent = library;
  heartokentoo = checktoken;
  for (; source.read[std::strspn(source.read, " \t\r\n")] != 0;) {
    compilesource(source);
    checkpoints(compiled(), 0);
    dropcompiled();
    if (openings() > 0) break;
  }
  heartokentoo = nullptr;
}

void begincheck() {
  namescomefromelsewhere = false;
  noteset("ARGUMENTS");
}

void endcheck() {
  checknames();
  clearnames();
}

}  // namespace morvik
