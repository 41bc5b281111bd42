// The heap's core, and the names under which the process knows it. One list operation on the fast path; no search, no
// merging, no splitting, nothing given back to the system. Nothing here may use what allocates: alarms bypass the
// streams.
#include "spaces/memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>

namespace morvik {

// Kept: these stay in the data image for whoever looks into a dump of it. Nothing reads them.
[[gnu::used]] std::uint64_t First = 1;
[[gnu::used]] void *newalloc = nullptr;
[[gnu::used]] void *brek = nullptr;
[[gnu::used]] std::uint64_t Allocs_per_bucket[BUCKETS] = {0, 0, 0, 16, 4096, 128, 1048576, 32, 16, 8, 8, 8, 8, 6, 6,
                                                          6, 6,  //
                                                          4, 4, 4, 4,  4,    4,   4,       4,  4,  2, 2, 2, 1, 1, 1};

pthread_mutex_t mp = PTHREAD_ADAPTIVE_MUTEX_INITIALIZER_NP;
bool coprocessors_running = false;

void morvik_allocator_init() {}
void dumpstats() {}

namespace {

constexpr std::size_t LARGEST_PAYLOAD = (std::size_t{1} << LARGEST_BUCKET) - BLOCK_HEADER;
constexpr std::size_t LARGEST_AREA = static_cast<std::size_t>(std::numeric_limits<std::intptr_t>::max());
constexpr unsigned LARGEST_UNSHRUNK = 12;  // blocks up to this bucket stay where they are

// In the header of an aligned payload inside a block: the upper bytes hold the distance to the payload of the block.
constexpr std::uint64_t INSIDE_BLOCK = 0xFF;
constexpr unsigned BUCKET_BITS = 8;

void writetext(int stream, const char *text) {
  std::size_t left = std::strlen(text);
  while (left > 0) {
    const ssize_t written = write(stream, text, left);
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

bool ismisaligned(const void *address) {
  return reinterpret_cast<std::uintptr_t>(address) % BLOCK_HEADER != 0;
}

bool isfailedarea(const void *area) {
  return reinterpret_cast<std::intptr_t>(area) == -1;
}

std::uint64_t headerword(const void *payload) {
  std::uint64_t word;
  std::memcpy(&word, static_cast<const char *>(payload) - BLOCK_HEADER, sizeof word);
  return word;
}
void setheaderword(void *payload, std::uint64_t word) {
  std::memcpy(static_cast<char *>(payload) - BLOCK_HEADER, &word, sizeof word);
}
// Only the low byte counts.
unsigned bucketinheader(const void *payload) {
  return static_cast<std::uint8_t>(headerword(payload));
}

void *nextfree(const void *payload) {
  void *link;
  std::memcpy(&link, payload, sizeof link);
  return link;
}
void setnextfree(void *payload, void *link) {
  std::memcpy(payload, &link, sizeof link);
}

void *wholepayload(void *payload) {
  const std::uint64_t word = headerword(payload);
  return (word & 0xFF) == INSIDE_BLOCK ? static_cast<char *>(payload) - (word >> BUCKET_BITS) : payload;
}

}  // namespace

unsigned bucketof(std::size_t size) {
  if (size > LARGEST_PAYLOAD) [[unlikely]]
    return LARGEST_BUCKET + 1;
  return static_cast<unsigned>(std::bit_width((size + BLOCK_HEADER - 1) | (std::size_t{1} << (SMALLEST_BUCKET - 1))));
}

// Whatever is left of the old area is dropped for good.
bool Heap::newarea(std::size_t block) {
  if (block > LARGEST_AREA - PAGE_BYTES) return false;
  const std::size_t bytes = (block + PAGE_BYTES - 1) / PAGE_BYTES * PAGE_BYTES;
  void *const area = source(static_cast<std::intptr_t>(bytes));
  if (isfailedarea(area)) return false;
  if (ismisaligned(area)) writetext(STDOUT_FILENO, "BRRRRRmallocSB ");
  char *start = static_cast<char *>(area);
  std::size_t left = bytes;
  // The first area, or the first after somebody else moved the break: the break is moved on, so that all that follow
  // fit.
  const std::size_t off = (BLOCK_HEADER - reinterpret_cast<std::uintptr_t>(area)) % PAYLOAD_ALIGNMENT;
  if (off != 0) {
    const void *const more = source(static_cast<std::intptr_t>(off));
    if (isfailedarea(more)) return false;
    start += off;
    if (more != static_cast<char *>(area) + bytes) left -= off;
  }
  pre_brk = start;
  pre_brk_left = left;
  return left >= block;
}

void *Heap::carve(unsigned k, char *start, std::size_t count) {
  void *head = nullptr;
  for (; count > 0; --count, start += std::size_t{1} << k) {
    void *const payload = start + BLOCK_HEADER;
    setheaderword(payload, k);
    setnextfree(payload, head);
    head = payload;
  }
  return head;
}

// Carves all that is left, to the last whole block.
[[gnu::cold, gnu::noinline]] bool Heap::refill(unsigned k) {
  const std::size_t block = std::size_t{1} << k;
  if (pre_brk_left < block && !newarea(block)) {
    writetext(STDERR_FILENO, "No more active memory available\n");
    return false;
  }
  const std::size_t count = pre_brk_left >> k;
  buckets[k] = carve(k, pre_brk, count);
  pre_brk += count << k;
  pre_brk_left -= count << k;
  return true;
}

void *Heap::allocatemany(unsigned k, std::size_t count, char *&uncarved) {
  if (!buckets[k]) {
    const std::size_t bytes = count << k;
    if (pre_brk_left >= bytes || newarea(bytes)) {
      uncarved = pre_brk;
      pre_brk += bytes;
      pre_brk_left -= bytes;
      return nullptr;
    }
  }
  void *head = nullptr;
  while (count-- > 0) {
    if (!buckets[k] && head) break;
    void *const payload = allocate((std::size_t{1} << k) - BLOCK_HEADER);
    if (!payload) break;
    setnextfree(payload, head);
    head = payload;
  }
  return head;
}

// The head of a list was written over, or what it links to was: that leads nowhere. The rest of the list is lost, and
// the heap goes on without it.
[[gnu::cold, gnu::noinline]] void *Heap::popdamaged(unsigned k) {
  void *payload = buckets[k];
  const bool whole = !ismisaligned(payload);
  writetext(STDOUT_FILENO, whole ? "BRRRRRmallocing " : "BRRRRRmalloced ");
  buckets[k] = nullptr;
  return whole ? payload : refillandpop(k);
}

[[gnu::cold, gnu::noinline]] void *Heap::refillandpop(unsigned k) {
  return refill(k) ? popfirst(k) : nullptr;
}

void *Heap::popfirst(unsigned k) {
  void *payload = buckets[k];
  if (ismisaligned(payload)) [[unlikely]]
    return popdamaged(k);
  void *link = nextfree(payload);
  if (ismisaligned(link)) [[unlikely]]
    return popdamaged(k);
  buckets[k] = link;
  __builtin_prefetch(link, 1);  // the next one's turn comes soon, and it may be far away
  return payload;
}

void *Heap::allocate(std::size_t size) {
  const unsigned k = bucketof(size);
  if (k > LARGEST_BUCKET) [[unlikely]]
    return nullptr;
  if (!buckets[k]) [[unlikely]]
    return refillandpop(k);
  return popfirst(k);
}

void *Heap::allocatealigned(std::size_t alignment, std::size_t size) {
  if (alignment <= PAYLOAD_ALIGNMENT) return allocate(size);
  if (alignment > LARGEST_PAYLOAD || size > LARGEST_PAYLOAD - alignment) return nullptr;
  void *payload = allocate(size + alignment);
  if (!payload) return nullptr;
  const std::size_t off = -reinterpret_cast<std::uintptr_t>(payload) & (alignment - 1);
  if (off == 0) return payload;
  void *inside = static_cast<char *>(payload) + off;
  setheaderword(inside, (off << BUCKET_BITS) | INSIDE_BLOCK);
  return inside;
}

// A payload inside a block, or none at all.
[[gnu::cold, gnu::noinline]] void Heap::freestrange(void *payload) {
  if (ismisaligned(payload)) {
    writetext(STDOUT_FILENO, "BRRRRRfree ");
    return;
  }
  void *whole = wholepayload(payload);
  if (whole != payload) freepayload(whole);
}

void Heap::freepayload(void *payload) {
  if (!payload) return;
  if (ismisaligned(payload)) [[unlikely]]
    return freestrange(payload);
  const unsigned k = bucketinheader(payload);
  if (k - SMALLEST_BUCKET > LARGEST_BUCKET - SMALLEST_BUCKET) [[unlikely]]
    return freestrange(payload);
  setnextfree(payload, buckets[k]);
  buckets[k] = payload;
}

std::size_t Heap::capacity(void *payload) {
  void *whole = wholepayload(payload);
  const auto off = static_cast<std::size_t>(static_cast<char *>(payload) - static_cast<char *>(whole));
  return (std::size_t{1} << bucketinheader(whole)) - BLOCK_HEADER - off;
}

void *Heap::cutfront(void *payload, std::size_t bytes) {
  const auto *const whole = static_cast<char *>(wholepayload(payload));
  char *const inside = static_cast<char *>(payload) + bytes;
  setheaderword(inside, static_cast<std::uint64_t>(inside - whole) << BUCKET_BITS | INSIDE_BLOCK);
  return inside;
}

bool Heap::resizes(void *payload, std::size_t size, bool &moves) {
  if (ismisaligned(payload)) {
    writetext(STDOUT_FILENO, "BRRRRRrealloc ");
    return false;
  }
  const unsigned k = bucketinheader(wholepayload(payload));
  if (k < SMALLEST_BUCKET || k > LARGEST_BUCKET) {
    writetext(STDOUT_FILENO, "\nRealloc: SERIOUS ERROR!");
    return false;
  }
  // The larger a block, the less of it may lie idle before it is exchanged.
  const unsigned tolerance = k > 24 ? 1 : 5 - (std::max(k, LARGEST_UNSHRUNK + 1) - (LARGEST_UNSHRUNK + 1)) / 3;
  const std::size_t threshold = k <= LARGEST_UNSHRUNK ? 0 : (std::size_t{1} << k) >> tolerance;
  moves = size > capacity(payload) || (k > LARGEST_UNSHRUNK && size <= threshold);
  return true;
}

}  // namespace morvik

#ifndef MORVIK_SYSTEM_HEAP

namespace morvik {

namespace {

// The system maps memory when it is first touched, which by small pages takes longer than the work on a large space:
// from this size on huge pages are asked for. Where there are none the area is as good.
constexpr std::intptr_t LEAST_HUGE_PAGE_AREA = std::intptr_t{8} << 20;
// Behind each so much stays unused. Blocks are powers of two, so that otherwise all large ones would begin at addresses
// that end alike, and would conflict in the caches and in the memory's banks.
constexpr std::intptr_t AREA_GAP = 10 * PAGE_BYTES;

void *growbreak(std::intptr_t bytes) {
  void *const area = sbrk(bytes);
  const std::size_t inpage = reinterpret_cast<std::uintptr_t>(area) % PAGE_BYTES;
  if (bytes < LEAST_HUGE_PAGE_AREA || isfailedarea(area)) return area;
  madvise(static_cast<char *>(area) - inpage, static_cast<std::size_t>(bytes) + inpage, MADV_HUGEPAGE);
  static_cast<void>(sbrk(AREA_GAP));
  return area;
}

constinit Heap heap{growbreak, {}, nullptr, 0};

// Does a piece of work on the heap under the lock. Apart, so that who needs no lock saves no registers for it.
template <typename Work>
[[gnu::noinline]] auto locked(Work work) {
  pthread_mutex_lock(&mp);
  const auto result = work();
  pthread_mutex_unlock(&mp);
  return result;
}

// The same where there is anybody to lock out.
template <typename Work>
inline auto withheaplock(Work work) {
  if (!coprocessors_running) [[likely]]
    return work();
  return locked(work);
}

// While coprocessors run, every thread takes small blocks in batches, so that it rarely waits for the others.
constexpr unsigned BATCHED_BUCKETS = 9;
constexpr std::size_t BATCH_BLOCKS = 256;
thread_local constinit void *threadlists[BATCHED_BUCKETS] = {};

[[gnu::noinline]] void *allocateshared(std::size_t size) {
  const unsigned k = bucketof(size);
  if (k >= BATCHED_BUCKETS) return withheaplock([size] { return heap.allocate(size); });
  if (!threadlists[k]) {
    char *uncarved = nullptr;
    threadlists[k] = withheaplock([&] { return heap.allocatemany(k, BATCH_BLOCKS, uncarved); });
    // Fresh memory is touched for the first time, and therefore made, outside of the lock.
    if (uncarved) threadlists[k] = Heap::carve(k, uncarved, BATCH_BLOCKS);
  }
  void *const payload = threadlists[k];
  if (payload) threadlists[k] = nextfree(payload);
  return payload;
}

void *allocate(std::size_t size) {
  return coprocessors_running ? allocateshared(size) : heap.allocate(size);
}

void *allocatealigned(std::size_t alignment, std::size_t size) {
  return withheaplock([=] { return heap.allocatealigned(alignment, size); });
}

void freepayload(void *payload) {
  withheaplock([payload] {
    heap.freepayload(payload);
    return 0;
  });
}

void *seterrno(void *payload) {
  if (!payload) [[unlikely]]
    errno = ENOMEM;
  return payload;
}

bool ispower(std::size_t n) {
  return std::has_single_bit(n);
}

}  // namespace

void *cutpayload(void *payload, std::size_t bytes) {
  return Heap::cutfront(payload, bytes);
}

}  // namespace morvik

extern "C" {

[[gnu::flatten]] void *malloc(std::size_t size) noexcept {
  return morvik::seterrno(morvik::allocate(size));
}

[[gnu::flatten]] void free(void *payload) noexcept {
  morvik::freepayload(payload);
}

void *realloc(void *payload, std::size_t size) noexcept {
  if (!payload) return morvik::seterrno(morvik::allocate(size));
  bool moves;
  if (!morvik::Heap::resizes(payload, size, moves)) {
    std::fflush(stdout);
    return nullptr;
  }
  if (!moves) return payload;
  void *moved = morvik::allocate(size);
  if (!moved) return morvik::seterrno(moved);
  std::memcpy(moved, payload, std::min(size, morvik::Heap::capacity(payload)));
  morvik::freepayload(payload);
  return moved;
}

void *calloc(std::size_t count, std::size_t size) noexcept {
  std::size_t bytes;
  if (__builtin_mul_overflow(count, size, &bytes)) return morvik::seterrno(nullptr);
  void *payload = morvik::allocate(bytes);
  return payload ? std::memset(payload, 0, bytes) : morvik::seterrno(payload);
}

// The rest of the family: nothing of the system's may ever reach the `free` above.
void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return morvik::seterrno(morvik::ispower(alignment) ? morvik::allocatealigned(alignment, size) : nullptr);
}
void *memalign(std::size_t alignment, std::size_t size) noexcept {
  return morvik::seterrno(alignment <= morvik::LARGEST_PAYLOAD ? morvik::allocatealigned(std::bit_ceil(alignment), size)
                                                               : nullptr);
}
int posix_memalign(void **payload, std::size_t alignment, std::size_t size) noexcept {
  if (!morvik::ispower(alignment) || alignment % sizeof(void *) != 0) return EINVAL;
  void *made = morvik::allocatealigned(alignment, size);
  if (!made) return ENOMEM;
  *payload = made;
  return 0;
}
void *valloc(std::size_t size) noexcept {
  return morvik::seterrno(morvik::allocatealigned(morvik::PAGE_BYTES, size));
}
void *pvalloc(std::size_t size) noexcept {
  if (size > morvik::LARGEST_PAYLOAD - morvik::PAGE_BYTES) return morvik::seterrno(nullptr);
  return morvik::seterrno(morvik::allocatealigned(
      morvik::PAGE_BYTES, (size + morvik::PAGE_BYTES - 1) / morvik::PAGE_BYTES * morvik::PAGE_BYTES));
}
std::size_t malloc_usable_size(void *payload) noexcept {
  return payload ? morvik::Heap::capacity(payload) : 0;
}

}  // extern "C"

#endif
