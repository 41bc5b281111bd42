// The heap's core, and the names under which the process knows it. One list operation on the fast path; no search, no
// merging, no splitting, nothing given back to the system. Nothing here may use what allocates: alarms go around the
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

// Kept: these stay in the data image, and nothing reads them.
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

constexpr std::size_t LARGESTSIZE = (std::size_t{1} << LARGESTBUCKET) - BLOCKHEADER;
constexpr std::size_t LARGESTAREA = static_cast<std::size_t>(std::numeric_limits<std::intptr_t>::max());
constexpr unsigned NEVERSHRUNK = 12;  // blocks up to this bucket stay where they are

// In the header of an aligned payload that stands inside a block: the upper bytes hold the way back to the payload of
// the block.
constexpr std::uint64_t INSIDE = 0xFF;
constexpr unsigned BUCKETBITS = 8;

void say(int stream, const char *text) {
  std::size_t left = std::strlen(text);
  while (left > 0) {
    const ssize_t written = write(stream, text, left);
    if (written <= 0) return;
    text += written;
    left -= static_cast<std::size_t>(written);
  }
}

bool misfits(const void *address) {
  return reinterpret_cast<std::uintptr_t>(address) % BLOCKHEADER != 0;
}

bool isnone(const void *area) {
  return reinterpret_cast<std::intptr_t>(area) == -1;
}

std::uint64_t header(const void *payload) {
  std::uint64_t word;
  std::memcpy(&word, static_cast<const char *>(payload) - BLOCKHEADER, sizeof word);
  return word;
}
void setheader(void *payload, std::uint64_t word) {
  std::memcpy(static_cast<char *>(payload) - BLOCKHEADER, &word, sizeof word);
}
// Only the low byte counts.
unsigned bucket(const void *payload) {
  return static_cast<std::uint8_t>(header(payload));
}

void *next(const void *payload) {
  void *link;
  std::memcpy(&link, payload, sizeof link);
  return link;
}
void setnext(void *payload, void *link) {
  std::memcpy(payload, &link, sizeof link);
}

void *wholepayload(void *payload) {
  const std::uint64_t word = header(payload);
  return (word & 0xFF) == INSIDE ? static_cast<char *>(payload) - (word >> BUCKETBITS) : payload;
}

}  // namespace

unsigned bucketof(std::size_t size) {
  if (size > LARGESTSIZE) [[unlikely]]
    return LARGESTBUCKET + 1;
  return static_cast<unsigned>(std::bit_width((size + BLOCKHEADER - 1) | (std::size_t{1} << (SMALLESTBUCKET - 1))));
}

// Whatever is left of the old area is dropped for good.
bool Heap::newarea(std::size_t block) {
  if (block > LARGESTAREA - PAGE) return false;
  const std::size_t bytes = (block + PAGE - 1) / PAGE * PAGE;
  void *const area = source(static_cast<std::intptr_t>(bytes));
  if (isnone(area)) return false;
  if (misfits(area)) say(STDOUT_FILENO, "BRRRRRmallocSB ");
  char *start = static_cast<char *>(area);
  std::size_t left = bytes;
  // The first area, or the first after somebody else moved the break: the break is moved on, so that all that follow
  // fit.
  const std::size_t off = (BLOCKHEADER - reinterpret_cast<std::uintptr_t>(area)) % PAYLOADALIGNMENT;
  if (off != 0) {
    const void *const more = source(static_cast<std::intptr_t>(off));
    if (isnone(more)) return false;
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
    void *const payload = start + BLOCKHEADER;
    setheader(payload, k);
    setnext(payload, head);
    head = payload;
  }
  return head;
}

// Carves all that is left, to the last whole block.
[[gnu::cold, gnu::noinline]] bool Heap::refill(unsigned k) {
  const std::size_t block = std::size_t{1} << k;
  if (pre_brk_left < block && !newarea(block)) {
    say(STDERR_FILENO, "No more active memory available\n");
    return false;
  }
  const std::size_t count = pre_brk_left >> k;
  buckets[k] = carve(k, pre_brk, count);
  pre_brk += count << k;
  pre_brk_left -= count << k;
  return true;
}

void *Heap::takemany(unsigned k, std::size_t count, char *&uncarved) {
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
    void *const payload = take((std::size_t{1} << k) - BLOCKHEADER);
    if (!payload) break;
    setnext(payload, head);
    head = payload;
  }
  return head;
}

// The head of a list was written over, or what it links to was: that leads nowhere. The rest of the list is lost, and
// the heap goes on without it.
[[gnu::cold, gnu::noinline]] void *Heap::takedamaged(unsigned k) {
  void *payload = buckets[k];
  const bool whole = !misfits(payload);
  say(STDOUT_FILENO, whole ? "BRRRRRmallocing " : "BRRRRRmalloced ");
  buckets[k] = nullptr;
  if (whole) return payload;
  return refill(k) ? takefirst(k) : nullptr;
}

void *Heap::takefirst(unsigned k) {
  void *payload = buckets[k];
  if (misfits(payload)) [[unlikely]]
    return takedamaged(k);
  void *link = next(payload);
  if (misfits(link)) [[unlikely]]
    return takedamaged(k);
  buckets[k] = link;
  return payload;
}

void *Heap::take(std::size_t size) {
  const unsigned k = bucketof(size);
  if (k > LARGESTBUCKET) [[unlikely]]
    return nullptr;
  if (!buckets[k] && !refill(k)) [[unlikely]]
    return nullptr;
  return takefirst(k);
}

void *Heap::takealigned(std::size_t alignment, std::size_t size) {
  if (alignment <= PAYLOADALIGNMENT) return take(size);
  if (alignment > LARGESTSIZE || size > LARGESTSIZE - alignment) return nullptr;
  void *payload = take(size + alignment);
  if (!payload) return nullptr;
  const std::size_t off = -reinterpret_cast<std::uintptr_t>(payload) & (alignment - 1);
  if (off == 0) return payload;
  void *inside = static_cast<char *>(payload) + off;
  setheader(inside, (off << BUCKETBITS) | INSIDE);
  return inside;
}

// A payload that stands inside a block, or none at all.
[[gnu::cold, gnu::noinline]] void Heap::givestrange(void *payload) {
  if (misfits(payload)) {
    say(STDOUT_FILENO, "BRRRRRfree ");
    return;
  }
  void *whole = wholepayload(payload);
  if (whole != payload) give(whole);
}

void Heap::give(void *payload) {
  if (!payload) return;
  if (misfits(payload)) [[unlikely]]
    return givestrange(payload);
  const unsigned k = bucket(payload);
  if (k - SMALLESTBUCKET > LARGESTBUCKET - SMALLESTBUCKET) [[unlikely]]
    return givestrange(payload);
  setnext(payload, buckets[k]);
  buckets[k] = payload;
}

std::size_t Heap::capacity(void *payload) {
  void *whole = wholepayload(payload);
  const auto off = static_cast<std::size_t>(static_cast<char *>(payload) - static_cast<char *>(whole));
  return (std::size_t{1} << bucket(whole)) - BLOCKHEADER - off;
}

bool Heap::resizes(void *payload, std::size_t size, bool &moves) {
  if (misfits(payload)) {
    say(STDOUT_FILENO, "BRRRRRrealloc ");
    return false;
  }
  const unsigned k = bucket(wholepayload(payload));
  if (k < SMALLESTBUCKET || k > LARGESTBUCKET) {
    say(STDOUT_FILENO, "\nRealloc: SERIOUS ERROR!");
    return false;
  }
  // The larger a block, the less of it may lie idle before it is exchanged.
  const unsigned tolerance = k > 24 ? 1 : 5 - (std::max(k, NEVERSHRUNK + 1) - (NEVERSHRUNK + 1)) / 3;
  const std::size_t threshold = k <= NEVERSHRUNK ? 0 : (std::size_t{1} << k) >> tolerance;
  moves = size > capacity(payload) || (k > NEVERSHRUNK && size <= threshold);
  return true;
}

}  // namespace morvik

#ifndef MORVIK_SYSTEM_HEAP

namespace morvik {

namespace {

// The system makes memory when it is first touched, which by small pages takes longer than what is done with a large
// space: from this size on it is asked for large ones. Where it has none the area is as good.
constexpr std::intptr_t LARGEAREA = std::intptr_t{8} << 20;
// Each leaves as much unused behind it. Blocks are powers of two, so that otherwise all large ones would begin at
// addresses that end alike, and would be in each other's way in the caches and in the memory's banks.
constexpr std::intptr_t GAP = 10 * PAGE;

void *processarea(std::intptr_t bytes) {
  void *const area = sbrk(bytes);
  const std::size_t inpage = reinterpret_cast<std::uintptr_t>(area) % PAGE;
  if (bytes < LARGEAREA || isnone(area)) return area;
  madvise(static_cast<char *>(area) - inpage, static_cast<std::size_t>(bytes) + inpage, MADV_HUGEPAGE);
  static_cast<void>(sbrk(GAP));
  return area;
}

constinit Heap heap{processarea, {}, nullptr, 0};

// Does a piece of work on the heap, under the lock where there is anybody to lock out.
template <typename Work>
inline auto locked(Work work) {
  const bool shared = coprocessors_running;
  if (shared) [[unlikely]]
    pthread_mutex_lock(&mp);
  const auto result = work();
  if (shared) [[unlikely]]
    pthread_mutex_unlock(&mp);
  return result;
}

// While coprocessors run, every thread takes small blocks a handful at a time, so that it rarely waits for the others.
constexpr unsigned SMALLBUCKETS = 9;
constexpr std::size_t HANDFUL = 256;
thread_local constinit void *handful[SMALLBUCKETS] = {};

[[gnu::noinline]] void *takeshared(std::size_t size) {
  const unsigned k = bucketof(size);
  if (k >= SMALLBUCKETS) return locked([size] { return heap.take(size); });
  if (!handful[k]) {
    char *uncarved = nullptr;
    handful[k] = locked([&] { return heap.takemany(k, HANDFUL, uncarved); });
    // Fresh memory is touched for the first time, and therefore made, outside of the lock.
    if (uncarved) handful[k] = Heap::carve(k, uncarved, HANDFUL);
  }
  void *const payload = handful[k];
  if (payload) handful[k] = next(payload);
  return payload;
}

void *take(std::size_t size) {
  return coprocessors_running ? takeshared(size) : heap.take(size);
}

void *takealigned(std::size_t alignment, std::size_t size) {
  return locked([=] { return heap.takealigned(alignment, size); });
}

void give(void *payload) {
  locked([payload] {
    heap.give(payload);
    return 0;
  });
}

void *reported(void *payload) {
  if (!payload) [[unlikely]]
    errno = ENOMEM;
  return payload;
}

bool ispower(std::size_t n) {
  return std::has_single_bit(n);
}

}  // namespace

}  // namespace morvik

extern "C" {

[[gnu::flatten]] void *malloc(std::size_t size) noexcept {
  return morvik::reported(morvik::take(size));
}

[[gnu::flatten]] void free(void *payload) noexcept {
  morvik::give(payload);
}

void *realloc(void *payload, std::size_t size) noexcept {
  if (!payload) return morvik::reported(morvik::take(size));
  bool moves;
  if (!morvik::Heap::resizes(payload, size, moves)) {
    std::fflush(stdout);
    return nullptr;
  }
  if (!moves) return payload;
  void *moved = morvik::take(size);
  if (!moved) return morvik::reported(moved);
  std::memcpy(moved, payload, std::min(size, morvik::Heap::capacity(payload)));
  morvik::give(payload);
  return moved;
}

void *calloc(std::size_t count, std::size_t size) noexcept {
  std::size_t bytes;
  if (__builtin_mul_overflow(count, size, &bytes)) return morvik::reported(nullptr);
  void *payload = morvik::take(bytes);
  return payload ? std::memset(payload, 0, bytes) : morvik::reported(payload);
}

// The rest of the family: nothing of the system's may ever reach the `free` above.
void *aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return morvik::reported(morvik::ispower(alignment) ? morvik::takealigned(alignment, size) : nullptr);
}
void *memalign(std::size_t alignment, std::size_t size) noexcept {
  return morvik::reported(alignment <= morvik::LARGESTSIZE ? morvik::takealigned(std::bit_ceil(alignment), size)
                                                           : nullptr);
}
int posix_memalign(void **payload, std::size_t alignment, std::size_t size) noexcept {
  if (!morvik::ispower(alignment) || alignment % sizeof(void *) != 0) return EINVAL;
  void *made = morvik::takealigned(alignment, size);
  if (!made) return ENOMEM;
  *payload = made;
  return 0;
}
void *valloc(std::size_t size) noexcept {
  return morvik::reported(morvik::takealigned(morvik::PAGE, size));
}
void *pvalloc(std::size_t size) noexcept {
  if (size > morvik::LARGESTSIZE - morvik::PAGE) return morvik::reported(nullptr);
  return morvik::reported(morvik::takealigned(morvik::PAGE, (size + morvik::PAGE - 1) / morvik::PAGE * morvik::PAGE));
}
std::size_t malloc_usable_size(void *payload) noexcept {
  return payload ? morvik::Heap::capacity(payload) : 0;
}

}  // extern "C"

#endif
