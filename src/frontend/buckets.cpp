// The walk over the names of a table.
#include "frontend/buckets.h"

#include <bit>

#include "spaces/symbols.h"

namespace morvik {

Entry *next(Walk &walk) {
  Tail &t = tail(walk.table);
  if (walk.link) {
    walk.link = walk.link->next;
    if (walk.link && isnamed(*walk.link)) return walk.link;
    ++walk.bucket;
  }
  const std::size_t end = buckets(walk.table->kind);
  while (walk.bucket < end) {
    const std::size_t group = walk.bucket / GROUP;
    const std::uint64_t begungroups = t.groups[group / BITS] >> (group % BITS);
    if (begungroups == 0) {
      walk.bucket = (group / BITS + 1) * BITS * GROUP;
      continue;
    }
    if ((begungroups & 1) == 0) {
      walk.bucket = (group + static_cast<std::size_t>(std::countr_zero(begungroups))) * GROUP;
      continue;
    }
    Entry *const headentry = walk.table + walk.bucket;
    if (isnamed(*headentry)) return walk.link = headentry;
    ++walk.bucket;
  }
  return nullptr;
}

}  // namespace morvik
