// The heap: blocks of powers of two, carved from areas that the process's break gives, each for the life of the process
// in the list of its size. It takes the place of malloc, free, realloc and calloc for the whole process, but where
// MORVIK_SYSTEM_HEAP leaves these to the system; the core below is in every build, and works over any source of areas,
// so that the tests can drive it.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

namespace morvik {

// Guards the heap of the process; taken after `mp1` where both are held.
extern pthread_mutex_t mp;
// Set while any thread but the main one may touch the heap or a reference word: coprocessors that start, end, or have
// work. They all sleep otherwise, and no lock is taken. Written by the main thread alone, while they sleep.
extern bool coprocessors_running;

// What an area comes from, as sbrk: moves the break up and returns where it was, or (void *)-1.
using AreaSource = void *(*)(std::intptr_t bytes);

// The word ahead of a payload. A block of bucket k is 2 to the power k bytes, this word included. Payloads are 16-byte
// aligned, as the language of the callers expects: blocks therefore begin 8 bytes off.
inline constexpr std::size_t BLOCK_HEADER = 8;
inline constexpr std::size_t PAYLOAD_ALIGNMENT = 16;
inline constexpr std::size_t PAGE_BYTES = 4096;
inline constexpr unsigned BUCKETS = 64, SMALLEST_BUCKET = 4, LARGEST_BUCKET = 63;

struct Heap {
  AreaSource source;
  void *buckets[BUCKETS];    // the first free payload of each size; a free payload begins with the address of the next
  char *pre_brk;             // the next byte of the area that is not carved yet
  std::size_t pre_brk_left;  // how many of them there are

  // A payload of at least so many bytes, also for 0. Null where the source has no more.
  void *allocate(std::size_t size);
  // The same at a multiple of a power of two.
  void *allocatealigned(std::size_t alignment, std::size_t size);
  // A list of at most so many payloads of a bucket, at least one if there is any; or, where none was free, a stretch of
  // memory for all of them that is still to be carved, which any thread may do. Null and null where the source has no
  // more.
  void *allocatemany(unsigned k, std::size_t count, char *&uncarved);
  static void *carve(unsigned k, char *start, std::size_t count);
  // Puts a payload back into the list of its size. Null passes.
  void freepayload(void *payload);
  // What is to be done to make a payload hold so many bytes: `moves` says that a block of that size must take its
  // place. Does the payload belong to a heap at all? Says so on standard output where not.
  static bool resizes(void *payload, std::size_t size, bool &moves);
  // How many bytes the payload holds.
  static std::size_t capacity(void *payload);
  // Gives up the first bytes of a payload, a multiple of the header: what is behind them is the payload from now on.
  // The block stays as large as it is.
  static void *cutfront(void *payload, std::size_t bytes);

 private:
  bool refill(unsigned k);
  void *popfirst(unsigned k);
  void *refillandpop(unsigned k);
  void *popdamaged(unsigned k);
  void freestrange(void *payload);
  bool newarea(std::size_t block);
};

// The bucket of a size; LARGEST_BUCKET + 1 for one that no block can hold.
unsigned bucketof(std::size_t size);

#ifndef MORVIK_SYSTEM_HEAP
// Heap::cutfront on the heap of the process.
void *cutpayload(void *payload, std::size_t bytes);
#endif

// For the start and the end of a process: the heap needs nothing done at either, so nobody has to call them.
void morvik_allocator_init();
void dumpstats();

}  // namespace morvik
