// Counted blocks: everything that a Point or an Element points to. The reference word is two words ahead of the
// pointer; a negative count marks a permanent block. The heap below is memory.h; who walks whole values is refderef.h.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "spaces/memory.h"
#include "spaces/point.h"

namespace morvik {

inline constexpr std::size_t BLOCK_PREFIX = 16;

// Guards every reference word while coprocessors run; taken before `mp`, never after it.
extern pthread_mutex_t mp1;

// How often this thread holds it: a walk over many counts takes the lock once.
extern constinit thread_local int referencelocks;
inline void lockreferences() {
  if (coprocessors_running && referencelocks++ == 0) pthread_mutex_lock(&mp1);
}
inline void unlockreferences() {
  if (coprocessors_running && --referencelocks == 0) pthread_mutex_unlock(&mp1);
}
// A jump out of a walk leaves nothing locked.
void dropreferencelocks();

struct ReferenceLock {
  ReferenceLock() { lockreferences(); }
  ~ReferenceLock() { unlockreferences(); }
  ReferenceLock(const ReferenceLock &) = delete;
  ReferenceLock &operator=(const ReferenceLock &) = delete;
};

// Reports a message and jumps. What does so is above this layer, which sets the hook.
extern void (*raisefailure)(std::int32_t message);
[[noreturn]] void failwith(std::int32_t message);
// The same with message 27.
[[noreturn]] void outofstorage();

// The address of a block's reference word, null for null.
inline std::int64_t *refer(void *block) {
  return block ? reinterpret_cast<std::int64_t *>(static_cast<char *>(block) - BLOCK_PREFIX) : nullptr;
}
// The count of a block, -777 for null. It may be asked for without the lock: who finds 1 is the only one who sees the
// block, and all that others did with it before they let go of it has happened.
inline std::int64_t referencecount(const void *block) {
  return block ? __atomic_load_n(refer(const_cast<void *>(block)), __ATOMIC_ACQUIRE) : -777;
}
// Writes a count, under the lock.
inline void setreferencecount(void *block, std::int64_t count) {
  __atomic_store_n(refer(block), count, __ATOMIC_RELEASE);
}

// Asks for the count of a block that is looked at soon and may be far away. Any address will do.
inline void prefetchcount(const void *block) {
  const std::uintptr_t count = reinterpret_cast<std::uintptr_t>(block) - BLOCK_PREFIX;
  __builtin_prefetch(reinterpret_cast<const void *>(count), 1);  // NOLINT(performance-no-int-to-ptr)
}

// A counted block of so many bytes with count 1, owned by the caller, contents undefined. 0 bytes are asked for as 1.
// tryblock gives null where there is no storage; newblock reports message 27 and jumps.
void *tryblock(std::size_t bytes);
void *newblock(std::size_t bytes);
// Frees a block, whatever its count.
void freeblock(void *block);
// How many counted blocks are alive, names of constants aside.
std::int64_t liveblocks();
// Adds what a coprocessor counted for itself, before the coprocessor sleeps.
void flushlivecount();

#ifdef MORVIK_CHECKING
// Lets so many allocations succeed from now on and fails the one after them, once; below 0 fails none. The environment
// variable MORVIK_FAIL_ALLOCATION sets it for the whole process.
void failallocation(std::int64_t successes);
// Aborts with a message unless the block is alive and both its guards are whole. Null passes.
void checkblock(const void *block);
// Aborts with a message where a record in a block was never written.
void checkwritten(const Element &record);
// How many bytes were asked for.
std::size_t blocksize(const void *block);
#else
inline void checkblock(const void *) {}
inline void checkwritten(const Element &) {}
#endif

// A data block of so many records, contents undefined. Message 27. A count of 0 gives null.
Element *newelements(std::size_t count);
// A block of one Point.
Point *newpoint();
// A block of one zeroed Element with this tag and form.
Element *newelement(std::int32_t tag, std::uint16_t form);
// A shape of one axis: one integer record of form 8 that holds the extent.
Element *newshape(std::int64_t extent);
// Changes a block to hold so many records, keeping the first ones, and returns the block to use from now on.
// Null is taken as a request for a new block. Message 27, the old block left whole. The count must be 1.
Element *Reallocate(Element *block, std::size_t count);
// The same for a block and a count that are not null; null where there is no storage.
Element *tryreallocate(Element *block, std::size_t count);
// The same for a block that grows bit by bit: where it must move it gets space to spare, so that each record costs the
// same on the average, however many there are.
Element *trygrow(Element *block, std::size_t count);
// Takes so many records off the front of a block that has others behind them, whose number is given too, and returns
// the block to use from now on. The others stay where they are, as long as what lies idle is not too much beside them;
// so taking one after the other costs the same on the average, however many there are. The count must be 1.
Element *cutrecords(Element *block, std::size_t dropped, std::size_t kept);

// A counted copy of a zero-terminated text, or of the first bytes of one.
char *stringdup(const char *text);
char *stringdup(const char *text, std::size_t length);
// The one permanent name of this text: what the name word of an element with attributes::NAMED holds. Message 27.
char *elementname(const char *text);
// Appends b to a counted string of count 1 and returns the block to use from now on.
char *stringcat(char *a, const char *b);

// Raise or lower the count of a block, which nobody else may do meanwhile; permanent blocks are left alone.
inline void raisecount(void *block) {
  checkblock(block);
  if (const std::int64_t count = referencecount(block); count >= 0) setreferencecount(block, count + 1);
}
inline void lowercount(void *block) {
  checkblock(block);
  const std::int64_t count = referencecount(block);
  if (count < 0) return;
  if (count > 1) return setreferencecount(block, count - 1);
  freeblock(block);
}
// The same while coprocessors run, apart so that the fast path stays short.
void raiselocked(void *block);
void lowerlocked(void *block);

// Raises a count by one; null and permanent blocks are left alone.
inline void reference(void *block) {
  if (!block) return;
  if (coprocessors_running) [[unlikely]]
    return raiselocked(block);
  raisecount(block);
}

// Lowers a count by one and frees the block at 0; null and permanent blocks are left alone.
inline void release(void *block) {
  if (!block) return;
  if (coprocessors_running) [[unlikely]]
    return lowerlocked(block);
  lowercount(block);
}

// The same, and nulls the pointer.
template <typename T>
inline void dereference(T *&block) {
  T *old = block;
  block = nullptr;
  release(old);
}

}  // namespace morvik
