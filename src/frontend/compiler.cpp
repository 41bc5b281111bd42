// Where Points go: the Programme of the caller, whose size is fixed, and the bodies of functions, which grow as they
// fill up to the limit.
#include "frontend/compiler.h"

#include <algorithm>
#include <cstring>

#include "failure/exception.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/contexts.h"
#include "frontend/limits.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"

namespace morvik {

Compiler compiler;
const Listener *listener;

namespace {

#ifdef MORVIK_CHECKING
constexpr std::size_t FIRST_CAPACITY = 4;
#else
constexpr std::size_t FIRST_CAPACITY = 1040;
#endif

// The header of the innermost function; there is one.
Point *header() {
  return compiler.frames[compiler.nextframe - 1].start - 1;
}

// Gives the innermost body twice the capacity, and tells everyone who points to it.
void growbody() {
  Compiler &c = compiler;
  if (c.nextframe == 1) exceptionjump(messages::PROGRAMME_FULL);
  Frame &frame = c.frames[c.nextframe - 1];
  const auto capacity = static_cast<std::size_t>(c.blockend - frame.start);
  if (capacity >= BODY_POINTS) exceptionjump(messages::PROGRAMME_FULL);
  const std::size_t more = std::min(2 * capacity, BODY_POINTS);
  auto *block = reinterpret_cast<Point *>(Reallocate(reinterpret_cast<Element *>(header()), more + 1));
  block->programme = block;
  frame.point->programme = block;
  frame.start = block + 1;
  c.position = frame.start + capacity;
  c.blockend = frame.start + more;
}

void dropfunction() {
  Compiler &c = compiler;
  const Frame &frame = c.frames[c.nextframe - 1];
  while (c.position > frame.start) dereferencepoint(--c.position);
  freeblock(header());
  if (c.chain != frame.chain) popsymtabs(c.chain);
  --c.nextframe;
  c.position = frame.point;
  c.blockend = frame.blockend;
  c.openlocals = frame.counted;
  c.chain = frame.chain;
  release(frame.point->name);
}

}  // namespace

namespace {

// What seldom has to follow.
[[gnu::noinline]] void endemit() {
  if (listener) listener->hearpoint();
  if (compiler.position == compiler.blockend) growbody();
}

}  // namespace

void emit() {
  Compiler &c = compiler;
  *c.position++ = c.pending;
  c.pending = {};
  if (c.position == c.blockend || listener) [[unlikely]]
    endemit();
}

Point *lastpoint() {
  Compiler &c = compiler;
  return c.position > c.frames[c.nextframe - 1].start ? c.position - 1 : nullptr;
}

void markheader(std::uint32_t bit) {
  if (compiler.nextframe > 1) header()->type |= bit;
}

void dropopen() {
  Compiler &c = compiler;
  dropliterals();
  dereferencepoint(&c.pending);
  c.pending = {};
  while (c.nextframe > 1) dropfunction();
  dereference(c.collecting.bytes);
  c.collecting = {};
}

void abandontext() {
  Compiler &c = compiler;
  dropopen();
  Point *const programme = c.frames[0].start;
  while (c.position > programme) dereferencepoint(--c.position);
  *programme = {};
}

// No message: the interrupt speaks for itself as soon as it is admitted.
void giveupforinterrupt() {
  if (isinterruptdeferred()) [[unlikely]]
    jump(-1);
}

void collectbytes(const char *bytes, std::size_t length) {
  Collected &text = compiler.collecting;
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
  collectbytes("", 1);
  compiler.collecting.length = 0;
  return compiler.collecting.bytes;
}

void closenested() {
  Compiler &c = compiler;
  const Frame &frame = c.frames[--c.nextframe];
  c.literal = frame.point;
  c.capacity = static_cast<std::size_t>(frame.counted);
}

void dropliterals() {
  Compiler &c = compiler;
  dereferencepoint(&c.extents);
  c.extents = {};
  while (c.literal && c.literal != &c.pending) {
    Point *block = c.literal;
    closenested();
    dereferencepoint(block);
    freeblock(block);
  }
  c.literal = nullptr;
}

}  // namespace morvik
