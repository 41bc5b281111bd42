// What the sources of the symbol tables share: how a table is laid out and walked.
#pragma once

#include <cstring>

#include "spaces/symbols.h"

namespace morvik {

// A table is a block of bucket heads with a Tail after them. Heads come into being a group at a time, when a name is
// first entered there: a fresh large table touches two pages of its 2 MiB, and what is walked or wiped is what was
// used.
inline constexpr std::size_t GROUP_BUCKETS = 64;  // bucket heads
inline constexpr std::size_t WORD_BITS = 64;

struct Tail {
  std::uint64_t serial;  // no two tables have the same
  std::uint64_t groups[LARGE_BUCKETS / GROUP_BUCKETS /
                       WORD_BITS];  // one bit a group that is in being; a small table has one word
};

inline std::size_t buckets(std::uint16_t kind) {
  return kind == SMALL_TABLE ? SMALL_BUCKETS : LARGE_BUCKETS;
}
inline std::size_t groupwords(std::uint16_t kind) {
  return kind == SMALL_TABLE ? 1 : LARGE_BUCKETS / GROUP_BUCKETS / WORD_BITS;
}
inline Tail &tail(Entry *table) {
  return *reinterpret_cast<Tail *>(table + buckets(table->kind));
}

inline bool isnamed(const Entry &entry) {
  return entry.name != nullptr;
}
inline bool stringcmp(const char *a, const char *b) {
  return std::strcmp(a, b) == 0;
}

// The named entries of a table in bucket order. A bucket may be wiped while the walk is at its head.
struct TableWalk {
  Entry *table;
  std::size_t bucket = 0;
  Entry *link = nullptr;  // null: ahead of the bucket
};
Entry *nextentry(TableWalk &walk);

}  // namespace morvik
