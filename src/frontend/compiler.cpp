// Where Points go: the Programme of the caller, whose room is fixed, and the bodies of functions, which grow as they
// fill up to the limit.
#include "frontend/compiler.h"

#include <algorithm>
#include <cstring>

#include "failure/exception.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "spaces/blocks.h"
#include "spaces/refderef.h"

namespace morvik {

Compiler compiler;

namespace {

constexpr std::int32_t FULL = 807;

#ifdef MORVIK_CHECKING
constexpr std::size_t FIRST_CAPACITY = 4;
#else
constexpr std::size_t FIRST_CAPACITY = 1040;
#endif

// The header of the innermost function; there is one.
Point *header() {
  return compiler.returnstack[compiler.pcsp - 1].start - 1;
}

// Gives the innermost body twice the room, and tells everyone who points to it.
void growbody() {
  Compiler &c = compiler;
  if (c.pcsp == 1) exceptionjump(FULL);
  Frame &frame = c.returnstack[c.pcsp - 1];
  const auto room = static_cast<std::size_t>(c.pctop - frame.start);
  if (room >= BODY_POINTS) exceptionjump(FULL);
  const std::size_t more = std::min(2 * room, BODY_POINTS);
  auto *block = reinterpret_cast<Point *>(Reallocate(reinterpret_cast<Element *>(header()), more + 1));
  block->programme = block;
  frame.point->programme = block;
  frame.start = block + 1;
  c.position = frame.start + room;
  c.pctop = frame.start + more;
}

void dropfunction() {
  Compiler &c = compiler;
  const Frame &frame = c.returnstack[c.pcsp - 1];
  while (c.position > frame.start) dereferencepoint(--c.position);
  freeblock(header());
  if (c.chain != frame.chain) popsymtabs(c.chain);
  --c.pcsp;
  c.position = frame.point;
  c.pctop = frame.pctop;
  c.funcvars = frame.counted;
  c.chain = frame.chain;
  release(frame.point->name);
}

}  // namespace

void append() {
  Compiler &c = compiler;
  *c.position++ = c.hand;
  c.hand = {};
  if (c.position == c.pctop) growbody();
}

Point *lastpoint() {
  Compiler &c = compiler;
  return c.position > c.returnstack[c.pcsp - 1].start ? c.position - 1 : nullptr;
}

void mark(std::uint32_t bit) {
  if (compiler.pcsp > 1) header()->type |= bit;
}

void dropopen() {
  Compiler &c = compiler;
  dropliterals();
  dereferencepoint(&c.hand);
  c.hand = {};
  while (c.pcsp > 1) dropfunction();
  dereference(c.operat.bytes);
  c.operat = {};
}

void abandon() {
  Compiler &c = compiler;
  dropopen();
  Point *const programme = c.returnstack[0].start;
  while (c.position > programme) dereferencepoint(--c.position);
  *programme = {};
}

void collect(const char *bytes, std::size_t length) {
  Collected &text = compiler.operat;
  if (text.length + length + 1 > text.capacity) {
    const std::size_t capacity = std::max({FIRST_CAPACITY, 2 * text.capacity, text.length + length + 1});
    auto *larger = static_cast<char *>(newblock(capacity));
    if (text.length > 0) std::memcpy(larger, text.bytes, text.length);
    release(text.bytes);
    text.bytes = larger;
    text.capacity = capacity;
  }
  std::memcpy(text.bytes + text.length, bytes, length);
  text.length += length;
}

char *collected() {
  collect("", 1);
  compiler.operat.length = 0;
  return compiler.operat.bytes;
}

void unnest() {
  Compiler &c = compiler;
  const Frame &frame = c.returnstack[--c.pcsp];
  c.literal = frame.point;
  c.room = static_cast<std::size_t>(frame.counted);
}

void dropliterals() {
  Compiler &c = compiler;
  dereferencepoint(&c.extents);
  c.extents = {};
  while (c.literal && c.literal != &c.hand) {
    Point *block = c.literal;
    unnest();
    dereferencepoint(block);
    freeblock(block);
  }
  c.literal = nullptr;
}

}  // namespace morvik
