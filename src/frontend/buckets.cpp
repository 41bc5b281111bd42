// The walk over the names of a table.
#include "frontend/buckets.h"

#include <bit>

#include "spaces/symbols.h"

namespace morvik {

Entry *nextentry(TableWalk &walk) {
  Tail &t = tail(walk.table);
  if (walk.link) {
    walk.link = walk.link->next;
    if (walk.link && isnamed(*walk.link)) return walk.link;
    ++walk.bucket;
  }
  const std::size_t end = buckets(walk.table->kind);
  while (walk.bucket < end) {
    const std::size_t group = walk.bucket / GROUP_BUCKETS;
    const std::uint64_t groupsahead = t.groups[group / WORD_BITS] >> (group % WORD_BITS);
    if (groupsahead == 0) {
      walk.bucket = (group / WORD_BITS + 1) * WORD_BITS * GROUP_BUCKETS;
      continue;
    }
    if ((groupsahead & 1) == 0) {
      walk.bucket = (group + static_cast<std::size_t>(std::countr_zero(groupsahead))) * GROUP_BUCKETS;
      continue;
    }
    Entry *const firstentry = walk.table + walk.bucket;
    if (isnamed(*firstentry)) return walk.link = firstentry;
    ++walk.bucket;
  }
  return nullptr;
}

}  // namespace morvik
