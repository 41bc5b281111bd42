// The records that names are kept in: an entry of a table, and a link of the chain of contexts. What is done with them
// is in frontend.
#pragma once

#include <cstddef>
#include <cstdint>

#include "spaces/blocks.h"
#include "spaces/point.h"

namespace morvik {

// A name that needs no storage of the heap: a permanent counted string.
struct FixedName {
  std::int64_t count;  // -1
  std::int64_t unused;
  char text[16];
};
static_assert(offsetof(FixedName, text) == BLOCK_PREFIX);

// A bucket head or one link of a bucket. Every bucket ends in an empty entry.
struct Entry {
  char *name;          // counted, without its sigil (a label keeps its %); null in an empty entry
  Point *meaning;      // counted block of one Point: the value; type 0 while the name has none
  Entry *next;         // counted, null at the tail
  std::uint16_t kind;  // LARGE_TABLE or SMALL_TABLE
  char sigil;          // with which the name was entered: '_', '$', '.' or 0
};
static_assert(sizeof(Entry) == 32);

inline constexpr std::uint16_t LARGE_TABLE = 0, SMALL_TABLE = 4;
inline constexpr std::size_t LARGE_BUCKETS = 65536, SMALL_BUCKETS = 256;

// One link of a chain; counted, but for the two records of makemeaning, which share a block. Who owns what is told at
// the head of contexts.cpp.
struct Context {
  Entry *table;          // null until first use, and once the link was popped
  std::int64_t uses;     // how often the link was pushed, less one; negative: permanent
  Context *previous;     // the outer link, null at the end
  Context *next;         // the inner link
  Context *root;         // the outermost link
  std::uint64_t serial;  // of the table; stays when the link was popped
};

// Do two links lead to the same table? A name that was bound under one is then bound under the other. Asked of a
// popped link too, whose table may be gone.
inline bool sametable(const Context *a, const Context *b) {
  return a->serial == b->serial;
}

}  // namespace morvik
