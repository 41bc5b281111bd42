// Short texts that are compared and looked up, not read: the names on the stack, and the keys of results.
#include "text/keys.h"

#include <cmath>
#include <cstring>

#include "failure/custody.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/parts.h"
#include "spaces/processstack.h"

namespace morvik {

namespace {

constexpr char FIRST_DIGIT = '@';
constexpr int DIGIT_BITS = 4;
constexpr std::uint64_t DIGIT_MASK = 15;
constexpr int MANTISSA_BITS = 53;
constexpr std::int64_t NOT_FINITE = 2000;  // an exponent that no finite double has
constexpr int LONGEST_NUMBER = 40;

int digits(char *buffer, std::uint64_t value) {
  int length = 0;
  do {
    buffer[length++] = static_cast<char>(FIRST_DIGIT + (value & DIGIT_MASK));
    value >>= DIGIT_BITS;
  } while (value != 0);
  return length;
}

// Exponent and mantissa, with the sign before the mantissa.
int realtox(char *buffer, std::int64_t exponent, std::uint64_t mantissa, bool negative) {
  int length = itox(buffer, exponent);
  buffer[length++] = ':';
  if (negative) buffer[length++] = '-';
  return length + digits(buffer + length, mantissa);
}

// A counted string that grows by doubling, in custody while it does.
struct Builder {
  char *text;
  std::size_t length, capacity;  // without the terminating zero
  std::uint32_t unpolled;
  Custody kept;
};

void growbuilder(Builder &b, std::size_t bytes) {
  constexpr std::size_t FIRST_CAPACITY = 64;
  std::size_t capacity = b.capacity * 2 > FIRST_CAPACITY ? b.capacity * 2 : FIRST_CAPACITY;
  while (capacity < b.length + bytes) capacity *= 2;
  char *wider = static_cast<char *>(newblock(capacity + 1));
  std::memcpy(wider, b.text, b.length + 1);
  b.kept.held = wider;
  release(b.text);
  b.text = wider;
  b.capacity = capacity;
}

// Where so many bytes can be written, and the zero after them.
char *reservein(Builder &b, std::size_t bytes) {
  if (b.capacity - b.length < bytes) growbuilder(b, bytes);
  return b.text + b.length;
}
void extendby(Builder &b, std::size_t bytes) {
  b.length += bytes;
  b.text[b.length] = 0;
}
void appendtext(Builder &b, const char *text, std::size_t length) {
  std::memcpy(reservein(b, length), text, length);
  extendby(b, length);
}
void appendtext(Builder &b, const char *text) {
  appendtext(b, text, std::strlen(text));
}
void appendtext(Builder &b, char byte) {
  appendtext(b, &byte, 1);
}
void appendtext(Builder &b, std::int64_t value) {
  extendby(b, static_cast<std::size_t>(itox(reservein(b, LONGEST_NUMBER), value)));
}
void appendtext(Builder &b, double value) {
  extendby(b, static_cast<std::size_t>(rtox(reservein(b, LONGEST_NUMBER), value)));
}

void addpoint(Builder &b, const Point &point);

// The sigil and the name, with its length before it: a name may hold any byte.
void addname(Builder &b, const Point &point) {
  const char *name = point.name ? point.name : "";
  if (point.modifier >= instructions::SGIG && point.modifier <= instructions::SLIL)
    appendtext(b, std::int64_t{point.modifier - instructions::SGIG});
  appendtext(b, '&');
  appendtext(b, static_cast<std::int64_t>(std::strlen(name)));
  appendtext(b, ':');
  appendtext(b, name);
}

void addkey(Builder &b, std::uint32_t number) {
  if (number < instructions::COUNT)
    appendtext(b, Addressnames[number], sizeof Addressnames[0]);
  else
    appendtext(b, static_cast<std::int64_t>(number));
}

bool isoperatorform(std::uint16_t number) {
  return number == instructions::OUTERPRODUCT || number == instructions::MASK ||
         (number >= instructions::SCAN && number <= instructions::REDUCENWISELASTAXIS);
}

void addoperator(Builder &b, const Point &p) {
  const bool decided = p.instruction == instructions::IF_YES || p.instruction == instructions::IF_NO;
  if (decided && p.modifier != instructions::BARE) {
    if (p.elements != 0) addkey(b, p.elements);
    addkey(b, p.modifier);
    appendtext(b, '?');
  } else if (isoperatorform(p.instruction) && p.modifier != 0) {
    addkey(b, p.modifier);
  }
  addkey(b, p.instruction);
  if (decided || isoperatorform(p.instruction) || p.modifier == 0) return;
  appendtext(b, '.');  // a mode of the instruction
  addkey(b, p.modifier);
}

void addlocal(Builder &b, const Point &p, const char *words) {
  appendtext(b, words);
  appendtext(b, p.data_pointer ? p.data_pointer->integer : std::int64_t{-1});
}

void addfunction(Builder &b, const Point &p) {
  appendtext(b, ':');
  appendtext(b, std::int64_t{p.arguments});
  appendtext(b, ',');
  appendtext(b, std::int64_t{p.locals});
  if ((p.type & ISOPERATOR) != 0) appendtext(b, '!');
  appendtext(b, ' ');
  if (p.programme)
    for (const Point *q = p.programme + 1; !isend(*q); ++q) {
      addpoint(b, *q);
      if ((q->type & CONDITIONAL) != 0 && !isoperator(*q)) appendtext(b, (q->type & YES) != 0 ? "?Y" : "?N");
    }
  appendtext(b, ';');
}

void addsymbolic(Builder &b, const Point &p) {
  switch (p.rank) {
    case ranks::OPERATOR:
      addoperator(b, p);
      break;
    case ranks::FUNCTION:
      addfunction(b, p);
      break;
    case ranks::VARIABLE:
      appendtext(b, " VARIABLE:\t");
      addname(b, p);
      break;
    case ranks::LOCAL_VARIABLE:
      addlocal(b, p, " STACK VARIABLE:\t&");
      break;
    case ranks::LOCAL_ADDRESS:
      addlocal(b, p, " ADDRESS:\t&");
      break;
    case ranks::ADDRESS:
      appendtext(b, '@');
      addname(b, p);
      if ((p.type & ISLOCAL) != 0) appendtext(b, static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(p.block)));
      break;
    default:
      appendtext(b, '%');
      appendtext(b, std::int64_t{p.rank});
      addname(b, p);
  }
}

// How a value was written tells values apart only where an instruction asks for it.
void addform(Builder &b, const Element &e) {
  if (e.form != forms::BOOLEAN && e.form != forms::BINARY && e.form != forms::POLAR) return;
  appendtext(b, '~');
  appendtext(b, std::int64_t{e.form});
}

void addparts(Builder &b, const Element &e) {
  constexpr char LETTERS[] = "rcqo";  // of the kinds, from REAL on
  double part[MOST_PARTS];
  const int count = readparts(e, part);
  appendtext(b, LETTERS[e.tag - tags::REAL]);
  for (int k = 0; k < count; ++k) {
    if (k > 0) appendtext(b, ',');
    appendtext(b, part[k]);
  }
}

[[gnu::noinline]] void addpointrecord(Builder &b, const Element &e) {
  Point copy;
  std::memcpy(&copy, &e, sizeof copy);
  addsymbolic(b, copy);
}

// A number, a character, a file.
[[gnu::noinline]] void addsimple(Builder &b, const Element &e) {
  switch (e.tag) {
    case tags::ASCII:
      appendtext(b, '\'');
      appendtext(b, std::int64_t{e.ascii});
      break;
    case tags::UNICODE:
      appendtext(b, '"');
      appendtext(b, std::int64_t{e.unicode});
      break;
    case tags::INTEGER:
      appendtext(b, 'i');
      appendtext(b, e.integer);
      break;
    case tags::HANDLE:
      appendtext(b, 'f');
      appendtext(b, static_cast<std::int64_t>(reinterpret_cast<std::intptr_t>(handlestream(e))));
      break;
    default:
      if (partsof(e.tag) == 0) return appendtext(b, '_');
      addparts(b, e);
  }
  addform(b, e);
}

void addelement(Builder &b, const Element &e) {
  if (e.tag == tags::SUBARRAY)
    addpoint(b, *e.subarray);
  else if (e.tag < 0)
    addpointrecord(b, e);
  else
    addsimple(b, e);
}

void addspace(Builder &b, const Point &space) {
  appendtext(b, '[');
  for (std::int32_t axis = 0; axis < space.rank && space.shape_pointer; ++axis) {
    appendtext(b, space.shape_pointer[axis].integer);
    appendtext(b, ',');
  }
  appendtext(b, ']');
  const std::uint32_t elements = space.data_pointer && !isempty(space) ? space.elements : 0;
  for (std::uint32_t i = 0; i < elements; ++i) {
    addelement(b, space.data_pointer[i]);
    appendtext(b, ' ');
    if (++b.unpolled % SLOW_POLL_INTERVAL == 0) safepoint();
  }
}

void addpoint(Builder &b, const Point &point) {
  if (stackends()) outofstorage();
  if (point.rank < 0)
    addsymbolic(b, point);
  else
    addspace(b, point);
  appendtext(b, ' ');
}

char *textofspace(const Point &space) {
  const std::uint32_t count = space.data_pointer && !isempty(space) ? space.elements : 0;
  char *text = static_cast<char *>(newblock(count + std::size_t{1}));
  std::size_t length = 0;
  for (std::uint32_t i = 0; i < count; ++i)
    if (space.data_pointer[i].tag == tags::ASCII) text[length++] = static_cast<char>(space.data_pointer[i].ascii);
  text[length] = 0;
  return text;
}

}  // namespace

int itox(char *buffer, std::int64_t value) {
  const auto magnitude = static_cast<std::uint64_t>(value);
  if (value >= 0) return digits(buffer, magnitude);
  *buffer = '-';
  return 1 + digits(buffer + 1, 0 - magnitude);
}

int rtox(char *buffer, double value) {
  if (value == 0) return realtox(buffer, 0, 0, false);
  if (std::isnan(value)) return realtox(buffer, NOT_FINITE, 1, false);
  if (std::isinf(value)) return realtox(buffer, NOT_FINITE, 0, value < 0);
  int exponent;
  const double fraction = std::frexp(std::fabs(value), &exponent);
  const auto mantissa = static_cast<std::uint64_t>(std::ldexp(fraction, MANTISSA_BITS));
  return realtox(buffer, exponent - MANTISSA_BITS, mantissa, value < 0);
}

char sigilof(const Point &name) {
  static constexpr char SIGILS[] = {'_', '$', '.'};
  const bool scoped = name.modifier >= instructions::SAIG && name.modifier <= instructions::SLIL;
  return scoped ? SIGILS[name.modifier - instructions::SAIG] : '\0';
}

char *TOAddr(const Point *point) {
  if (istext(*point) || isempty(*point)) return textofspace(*point);
  if (point->rank != ranks::ADDRESS || !point->name) return stringdup("");
  const char sigil = sigilof(*point);
  const std::size_t length = std::strlen(point->name);
  char *text = static_cast<char *>(newblock(length + 3)), *at = text;
  *at++ = '@';
  if (sigil != 0) *at++ = sigil;
  std::memcpy(at, point->name, length + 1);
  return text;
}

char *TOAddr1(char *text, const Point *point) {
  Builder b{};
  b.text = text ? text : stringdup("");
  b.length = b.capacity = std::strlen(b.text);
  takecustody(b.kept, releaseblock, b.text);
  addpoint(b, *point);
  endcustody(b.kept);
  return b.text;
}

}  // namespace morvik
