// Counted blocks: the prefix with the reference word, and the small blocks that everybody asks for. The checking build
// puts guards around each block, poisons what is fresh or freed, and keeps freed blocks in quarantine for a while to
// see whether somebody still writes to them.
#include "spaces/blocks.h"

#include <malloc.h>

#include <atomic>
#include <cassert>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "spaces/messages.h"

namespace morvik {

namespace {

[[noreturn]] void failunheard(std::int32_t) {
  std::abort();
}

}  // namespace

void (*raisefailure)(std::int32_t message) = failunheard;

void failwith(std::int32_t message) {
  raisefailure(message);
  std::abort();
}

void outofstorage() {
  failwith(messages::OUT_OF_STORAGE);
}

pthread_mutex_t mp1 = PTHREAD_ADAPTIVE_MUTEX_INITIALIZER_NP;
constinit thread_local int referencelocks = 0;

void dropreferencelocks() {
  if (referencelocks > 0) pthread_mutex_unlock(&mp1);
  referencelocks = 0;
}

void raiselocked(void *block) {
  const ReferenceLock lock;
  raisecount(block);
}
void lowerlocked(void *block) {
  const ReferenceLock lock;
  lowercount(block);
}

namespace {

// A number that all threads write to would cost more than the rest of an allocation: while coprocessors run, each
// counts for itself.
std::atomic<std::int64_t> livecount{0};
thread_local std::int64_t ownlivecount;

void countlive(std::int64_t change) {
  if (coprocessors_running)
    ownlivecount += change;
  else
    livecount.store(livecount.load(std::memory_order_relaxed) + change, std::memory_order_relaxed);
}

constexpr std::int64_t PERMANENT = -1;
constexpr std::size_t LARGEST_BLOCK = static_cast<std::size_t>(std::numeric_limits<std::int64_t>::max());

#ifdef MORVIK_CHECKING
// One guard is ahead of the prefix, the other behind the payload; the prefix's second word holds the payload's size.
constexpr std::size_t GUARD = 16, HEAD = GUARD + BLOCK_PREFIX, OVERHEAD = HEAD + GUARD;
constexpr int GUARD_BYTE = 0xA5, FRESH_BYTE = 0xCB, FREED_BYTE = 0xDD;
constexpr std::uint64_t DEAD_WORD = 0xDDDDDDDDDDDDDDDD;
#else
constexpr std::size_t OVERHEAD = BLOCK_PREFIX;
#endif

constexpr bool fitssize(std::size_t bytes) {
  return bytes <= LARGEST_BLOCK - OVERHEAD;
}

}  // namespace

std::int64_t liveblocks() {
  return livecount.load(std::memory_order_relaxed) + ownlivecount;
}

void flushlivecount() {
  livecount.fetch_add(ownlivecount, std::memory_order_relaxed);
  ownlivecount = 0;
}

#ifdef MORVIK_CHECKING

namespace {

constexpr std::int64_t NEVER_FAILS = -1, NOT_READ = -2;
std::atomic<std::int64_t> countdown{NOT_READ};

bool mustfail() {
  if (countdown == NOT_READ) {
    const char *set = std::getenv("MORVIK_FAIL_ALLOCATION");
    countdown = set ? std::strtoll(set, nullptr, 10) : NEVER_FAILS;
  }
  return countdown >= 0 && countdown.fetch_sub(1) == 0;
}

[[noreturn]] void blockfault(const char *what, const void *block) {
  std::fprintf(stderr, "\nCounted block %p: %s.\n", block, what);
  std::abort();
}

std::uint64_t sizeword(const void *block) {
  std::uint64_t size;
  std::memcpy(&size, static_cast<const char *>(block) - sizeof size, sizeof size);
  return size;
}

bool isfilled(const char *from, int byte, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (static_cast<unsigned char>(from[i]) != byte) return false;
  return true;
}

// The quarantine: the last blocks freed, the oldest first to leave.
constexpr std::size_t QUARANTINED_BLOCKS = 256, LARGEST_QUARANTINED = 65536;
struct Quarantined {
  char *start;
  std::size_t size;
};
Quarantined quarantine[QUARANTINED_BLOCKS];
std::size_t nextquarantined = 0;
pthread_mutex_t quarantinelock = PTHREAD_MUTEX_INITIALIZER;

void quarantineblock(char *start, std::size_t size) {
  pthread_mutex_lock(&quarantinelock);
  const Quarantined oldest = quarantine[nextquarantined];
  quarantine[nextquarantined] = {start, size};
  nextquarantined = (nextquarantined + 1) % QUARANTINED_BLOCKS;
  pthread_mutex_unlock(&quarantinelock);
  if (!oldest.start) return;
  if (!isfilled(oldest.start, FREED_BYTE, oldest.size + OVERHEAD))
    blockfault("written to after it was freed", oldest.start + HEAD);
  std::free(oldest.start);
}

}  // namespace

void failallocation(std::int64_t successes) {
  countdown = successes < 0 ? NEVER_FAILS : successes;
}

std::size_t blocksize(const void *block) {
  return sizeword(block);
}

// A permanent block may be any memory with a prefix.
void checkblock(const void *block) {
  if (!block) return;
  const std::int64_t count = referencecount(block);
  if (static_cast<std::uint64_t>(count) == DEAD_WORD) blockfault("used or freed after it was freed", block);
  if (count < 0) return;
  const char *payload = static_cast<const char *>(block);
  if (!isfilled(payload - HEAD, GUARD_BYTE, GUARD))
    blockfault("guard ahead of it overwritten, or no block at all", block);
  if (!isfilled(payload + sizeword(block), GUARD_BYTE, GUARD)) blockfault("written to past its end", block);
}

void checkwritten(const Element &record) {
  const auto *const bytes = reinterpret_cast<const char *>(&record);
  if (isfilled(bytes, FRESH_BYTE, offsetof(Element, name))) blockfault("a record in it was never written", bytes);
}

void *tryblock(std::size_t bytes) {
  if (bytes == 0) bytes = 1;
  if (!fitssize(bytes) || mustfail()) return nullptr;
  char *start = static_cast<char *>(std::malloc(bytes + OVERHEAD));
  if (!start) return nullptr;
  char *payload = start + HEAD;
  const std::uint64_t size = bytes;
  std::memset(start, GUARD_BYTE, GUARD);
  std::memcpy(payload - sizeof size, &size, sizeof size);
  std::memset(payload, FRESH_BYTE, bytes);
  std::memset(payload + bytes, GUARD_BYTE, GUARD);
  *refer(payload) = 1;
  countlive(1);
  return payload;
}

void freeblock(void *block) {
  if (!block) return;
  checkblock(block);
  const std::size_t size = blocksize(block);
  char *start = static_cast<char *>(block) - HEAD;
  std::memset(start, FREED_BYTE, size + OVERHEAD);
  countlive(-1);
  if (size <= LARGEST_QUARANTINED)
    quarantineblock(start, size);
  else
    std::free(start);
}

namespace {

// Always moves, so that whoever keeps the old address is found out.
void *resizeblock(void *block, std::size_t bytes) {
  void *moved = tryblock(bytes);
  if (!moved) return nullptr;
  const std::size_t old = blocksize(block);
  std::memcpy(moved, block, old < bytes ? old : bytes);
  freeblock(block);
  return moved;
}

}  // namespace

#else

void *tryblock(std::size_t bytes) {
  if (bytes == 0) bytes = 1;
  if (!fitssize(bytes)) return nullptr;
  char *start = static_cast<char *>(std::malloc(bytes + OVERHEAD));
  if (!start) return nullptr;
  void *block = start + BLOCK_PREFIX;
  *refer(block) = 1;
  countlive(1);
  return block;
}

void freeblock(void *block) {
  if (!block) return;
  countlive(-1);
  std::free(refer(block));
}

namespace {

// The heap's powers of two make growth by small steps cheap: most calls return at once.
void *resizeblock(void *block, std::size_t bytes) {
  if (!fitssize(bytes)) return nullptr;
  char *start = static_cast<char *>(std::realloc(static_cast<void *>(refer(block)), bytes + OVERHEAD));
  return start ? start + BLOCK_PREFIX : nullptr;
}

}  // namespace

#endif

void *newblock(std::size_t bytes) {
  void *block = tryblock(bytes);
  if (!block) [[unlikely]]
    outofstorage();
  return block;
}

Element *newelements(std::size_t count) {
  if (count == 0) return nullptr;
  if (count > LARGEST_BLOCK / sizeof(Element)) outofstorage();
  return static_cast<Element *>(newblock(count * sizeof(Element)));
}

Point *newpoint() {
  return static_cast<Point *>(newblock(sizeof(Point)));
}

Element *newelement(std::int32_t tag, std::uint16_t form) {
  Element *element = newelements(1);
  *element = Element{};
  element->tag = tag;
  element->form = form;
  return element;
}

Element *newshape(std::int64_t extent) {
  Element *shape = newelement(tags::INTEGER, forms::NUMBER);
  shape->integer = extent;
  return shape;
}

Element *tryreallocate(Element *block, std::size_t count) {
  assert(referencecount(block) == 1);
  return count > LARGEST_BLOCK / sizeof(Element) ? nullptr
                                                 : static_cast<Element *>(resizeblock(block, count * sizeof(Element)));
}

Element *trygrow(Element *block, std::size_t count) {
#ifdef MORVIK_CHECKING
  return tryreallocate(block, count);
#else
  constexpr std::size_t SPARE_SHARE = 4;
  if (count <= (malloc_usable_size(refer(block)) - BLOCK_PREFIX) / sizeof(Element)) return block;
  return tryreallocate(block, count + count / SPARE_SHARE);
#endif
}

Element *cutrecords(Element *block, std::size_t dropped, std::size_t kept) {
  assert(referencecount(block) == 1);
#if defined(MORVIK_SYSTEM_HEAP) || defined(MORVIK_CHECKING)
  std::memmove(block, block + dropped, kept * sizeof(Element));
#else
  char *const start = static_cast<char *>(cutpayload(refer(block), dropped * sizeof(Element)));
  block = reinterpret_cast<Element *>(start + BLOCK_PREFIX);
  *refer(block) = 1;
  constexpr std::size_t RECORDS_BETWEEN_LOOKS = 16;
  if (kept / RECORDS_BETWEEN_LOOKS == (kept + dropped) / RECORDS_BETWEEN_LOOKS) return block;
#endif
  Element *const less = tryreallocate(block, kept);
  return less ? less : block;  // one that can't be shortened serves as well
}

Element *Reallocate(Element *block, std::size_t count) {
  if (!block) return newelements(count);
  if (count == 0) {
    assert(referencecount(block) == 1);
    freeblock(block);
    return nullptr;
  }
  Element *resized = tryreallocate(block, count);
  if (!resized) outofstorage();
  return resized;
}

char *stringdup(const char *text, std::size_t length) {
  char *copy = static_cast<char *>(newblock(length + 1));
  std::memcpy(copy, text, length);
  copy[length] = '\0';
  return copy;
}

char *stringdup(const char *text) {
  return stringdup(text, std::strlen(text));
}

char *stringcat(char *a, const char *b) {
  assert(referencecount(a) == 1);
  const std::size_t before = std::strlen(a), more = std::strlen(b);
  char *joined = static_cast<char *>(resizeblock(a, before + more + 1));
  if (!joined) outofstorage();
  std::memcpy(joined + before, b, more + 1);
  return joined;
}

namespace {

struct Interned {
  Interned *next;
  char *name;
};
Interned *interned = nullptr;

}  // namespace

// There are as many as the language has named constants, so that a list will do. The latest one comes first.
char *elementname(const char *text) {
  for (Interned **link = &interned; *link; link = &(*link)->next) {
    Interned *found = *link;
    if (std::strcmp(found->name, text) != 0) continue;
    *link = found->next;
    found->next = interned;
    interned = found;
    return found->name;
  }
  char *name = stringdup(text);
  auto *made = static_cast<Interned *>(tryblock(sizeof(Interned)));
  if (!made) {
    freeblock(name);
    outofstorage();
  }
  *refer(name) = *refer(made) = PERMANENT;
  countlive(-2);
  *made = {interned, name};
  interned = made;
  return name;
}

}  // namespace morvik
