// Symbol tables: entering, finding and removing names.
#include "frontend/symtab.h"

#include <bit>

#include "frontend/buckets.h"
#include "frontend/fixedsyms.h"
#include "frontend/hashes.h"
#include "spaces/recount.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

std::uint64_t tablesmade;  // that were ever made

void cleargroup(Entry *group, std::uint16_t kind) {
  std::memset(static_cast<void *>(group), 0, GROUP_BUCKETS * sizeof(Entry));
  if (kind == LARGE_TABLE) return;
  for (std::size_t i = 0; i < GROUP_BUCKETS; ++i) group[i].kind = kind;
}

Entry *maketable(std::uint16_t kind) {
  const std::size_t words = groupwords(kind);
  auto *table = static_cast<Entry *>(
      newblock(buckets(kind) * sizeof(Entry) + offsetof(Tail, groups) + words * sizeof(std::uint64_t)));
  cleargroup(table, kind);
  Tail &t = tail(table);
  t.serial = ++tablesmade;
  std::memset(t.groups, 0, words * sizeof(std::uint64_t));
  t.groups[0] = 1;
  return table;
}

std::size_t hash(std::uint16_t kind, const char *name) {
  return kind == SMALL_TABLE ? smallhash(name) : largehash(name);
}

bool hasgroup(Entry *table, std::size_t bucket) {
  const std::size_t group = bucket / GROUP_BUCKETS;
  return (tail(table).groups[group / WORD_BITS] >> (group % WORD_BITS) & 1) != 0;
}

// A bucket head to be written to.
Entry *buckethead(Entry *table, std::size_t bucket) {
  if (!hasgroup(table, bucket)) {
    const std::size_t group = bucket / GROUP_BUCKETS;
    cleargroup(table + group * GROUP_BUCKETS, table->kind);
    tail(table).groups[group / WORD_BITS] |= std::uint64_t{1} << (group % WORD_BITS);
  }
  return table + bucket;
}

// The entry of the name, or the empty tail of the bucket.
Entry *searchbucket(Entry *entry, const char *name) {
  while (isnamed(*entry) && !stringcmp(entry->name, name)) entry = entry->next;
  return entry;
}

// What an entry holds as long as its name has no value.
void unbind(Point &meaning) {
  meaning = {};
  meaning.rank = ranks::ADDRESS;
}

// Names the tail of a bucket, which gets a new tail.
void filltail(Entry &entry, char *name, char sigil) {
  auto *meaning = static_cast<Point *>(tryblock(sizeof(Point)));
  auto *last = static_cast<Entry *>(tryblock(sizeof(Entry)));
  if (!meaning || !last) {
    if (meaning) freeblock(meaning);
    if (last) freeblock(last);
    release(name);
    outofstorage();
  }
  unbind(*meaning);
  *last = {};
  last->kind = entry.kind;
  entry.name = name;
  entry.meaning = meaning;
  entry.next = last;
  entry.sigil = sigil;
}

Entry *enterentry(Entry *table, char *name, char sigil) {
  Entry *entry = fixedsym(name);
  if (!entry) entry = searchbucket(buckethead(table, hash(table->kind, name)), name);
  if (isnamed(*entry))
    release(name);
  else
    filltail(*entry, name, sigil);
  return entry;
}

Entry *findentry(Entry *table, std::size_t bucket, const char *name) {
  if (!hasgroup(table, bucket)) return nullptr;
  Entry *entry = searchbucket(table + bucket, name);
  return isnamed(*entry) ? entry : nullptr;
}
Entry *checkname(Entry *table, const char *name) {
  return *name != 0 ? findentry(table, hash(table->kind, name), name) : nullptr;
}

// What is left of a meaning whose name was taken away says so in its modifier.
constexpr std::uint16_t FORGOTTEN = 1;

// The first name leaves a bucket, or what is left of one from this entry on. A Point that was bound to it keeps the
// block of the meaning, and finds no value there; nor does anybody put one in, so that no value can keep the block
// which it is in alive. The bucket is whole before anything is released, since a release may come back to this
// table.
void removefirst(Entry &entry) {
  char *const name = entry.name;
  Point *const meaning = entry.meaning;
  Entry *const link = entry.next;
  Point value = *meaning;
  unbind(*meaning);
  meaning->modifier = FORGOTTEN;
  entry = *link;
  freeblock(link);
  dereferencepoint(&value);
  release(meaning);
  release(name);
}

}  // namespace

Entry *makehashtab() {
  return maketable(LARGE_TABLE);
}
Entry *makesmallhashtab() {
  return maketable(SMALL_TABLE);
}

void releasetable(Entry *table) {
  if (table && referencecount(table) == 1) hashwipe(table);
  release(table);
}

Entry *hashtab(Entry *table, char *name, char sigil) {
  if (*name != 0) return enterentry(table, name, sigil);
  release(name);
  return nullptr;
}

Entry *smallhashtab(Entry *table, char *name, char sigil) {
  return enterentry(table, name, sigil);
}

Entry *entername(Entry *table, char *name, char sigil) {
  return table->kind == SMALL_TABLE ? smallhashtab(table, name, sigil) : hashtab(table, name, sigil);
}

Point *reentername(Entry *table, char *name, char sigil, Point *meaning) {
  const bool stood = checkname(table, name) != nullptr;
  reference(name);
  Entry *const entry = entername(table, name, sigil);
  if (stood || !entry) return entry ? entry->meaning : nullptr;
  release(entry->meaning);
  entry->meaning = meaning;
  reference(meaning);
  unbind(*meaning);
  return meaning;
}

Entry *checkhash(Entry *table, const char *name) {
  if (*name == 0) return nullptr;
  if (Entry *fixed = fixedsym(name)) return fixed;
  return findentry(table, largehash(name), name);
}

Entry *checksmallhash(Entry *table, const char *name) {
  if (*name == 0) return nullptr;
  if (Entry *fixed = fixedsym(name)) return fixed;
  return findentry(table, smallhash(name), name);
}

Entry *getsymandtab(const Context *chain, const char *name, Entry **table, const Entry *stop) {
  constexpr std::size_t NOT_HASHED = LARGE_BUCKETS;
  std::size_t small = NOT_HASHED, large = NOT_HASHED;
  Entry *const fixed = fixedsym(name);
  if (table) *table = nullptr;
  for (; chain; chain = chain->previous) {
    if (!chain->table) continue;
    if (table) *table = chain->table;
    if (fixed) return fixed;
    std::size_t &bucket = chain->table->kind == SMALL_TABLE ? small : large;
    if (bucket == NOT_HASHED) bucket = hash(chain->table->kind, name);
    Entry *entry = *name != 0 ? findentry(chain->table, bucket, name) : nullptr;
    if (entry || chain->table == stop) return entry;
  }
  return nullptr;
}

void subwipe(Entry *entry) {
  while (isnamed(*entry)) removefirst(*entry);
}

void hashwipe(Entry *table) {
  TableWalk walk{table};
  while (Entry *entry = nextentry(walk)) subwipe(entry);
}

bool isforgotten(const Point &meaning) {
  return isend(meaning) && meaning.modifier == FORGOTTEN;
}

void recounttable(Recount &recount, Entry *table) {
  if (!recount.hold(table)) return;
  TableWalk walk{table};
  while (const Entry *entry = nextentry(walk)) {
    recount.hold(entry->name);
    recount.holdbox(entry->meaning);
    recount.hold(entry->next);
  }
}

void forgethash(Entry *entry) {
  if (isnamed(*entry) && !isfixed(entry)) removefirst(*entry);
}

}  // namespace morvik
