// The chain of contexts. Who owns what:
//  - A link that is pushed holds one reference on its table, and the chain holds one on the link. popsymtabs gives both
//    up. Names bound under a link hold references on the link too, but these keep only the record: a popped link has no
//    table and no neighbours, and only its serial still tells which table it led to. So a function that is kept in a
//    table, and whose names were bound there, does not keep the table.
//  - The permanent records of makemeaning hold nothing: their table belongs to the bank.
//  - A FUNCTIONEND Point whose function opened a table holds a record of its own, shared with its copies alone, and the
//    record holds one reference on the table. When the last of them goes, so does the table, unless a call that still
//    runs has it pushed. The names of the body go by the records above and never delay this.
//  - The last reference on a table wipes it. The one cycle left is a function that keeps itself in its own table; the
//    records of FUNCTIONEND Points are therefore linked, previous and next, and the shutdown wipes what is left of
//    them.
#include "frontend/contexts.h"

#include "failure/custody.h"
#include "frontend/buckets.h"
#include "frontend/symtab.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

constexpr std::int64_t PERMANENT = -1;

Context *localtables;  // the latest record that a FUNCTIONEND Point holds

void settable(Context &link, Entry *table) {
  link.table = table;
  link.serial = tail(table).serial;
}

void unlinktable(Context &own) {
  if (own.next) own.next->previous = own.previous;
  if (own.previous)
    own.previous->next = own.next;
  else
    localtables = own.next;
}

void releaselocaltable(Context *own) {
  if (referencecount(own) == 1) {
    unlinktable(*own);
    Entry *const table = own->table;
    own->table = nullptr;
    releasetable(table);
  }
  release(own);
}

}  // namespace

Context *makemeaning(Entry *table) {
  auto *chain = static_cast<Context *>(newblock(2 * sizeof(Context)));
  chain[0] = {table, PERMANENT, &chain[1], &chain[0], &chain[0], 0};
  chain[1] = {table, PERMANENT, nullptr, &chain[0], &chain[1], 0};
  settable(chain[0], table);
  settable(chain[1], table);
  return chain;
}

Entry *checksym_until(const Context *chain, const char *name, const Entry *stop) {
  return getsymandtab(chain, name, nullptr, stop);
}

Entry *checkmeaning(const Context *chain, const char *name) {
  return checksym_until(chain, name, chain->root->table);
}

Entry *meaning(Context *chain, char *name, Entry **table, char sigil) {
  if (Entry *entry = getsymandtab(chain, name, table, chain->root->table)) {
    release(name);
    return entry;
  }
  if (!chain->table) {
    reference(chain->root->table);
    settable(*chain, chain->root->table);
  }
  if (table) *table = chain->table;
  return entername(chain->table, name, sigil);
}

Context *pushtable(Context *chain, Entry *table) {
  if (chain->table == table) return pushsymtabs(chain, chain);
  auto *link = static_cast<Context *>(newblock(sizeof(Context)));
  *link = {table, 0, chain, nullptr, chain->root, 0};
  settable(*link, table);
  reference(table);
  chain->next = link;
  return link;
}

Context *opentable(Context *chain, std::uint16_t kind) {
  Entry *table = kind == SMALL_TABLE ? makesmallhashtab() : makehashtab();
  Custody made;
  takecustody(made, releaseblock, table);
  Context *link = pushtable(chain, table);
  endcustody(made);
  release(table);
  return link;
}

Context *pushsymtabs(Context *chain, Context *other) {
  if (chain != other) chain->next = other;
  if (other->uses >= 0) ++other->uses;
  return other;
}

Context *popsymtabs(Context *link) {
  if (link->uses < 0) return link;
  if (link->uses > 0) {
    --link->uses;
    return link;
  }
  Context *const outer = link->previous;
  Entry *const table = link->table;
  link->table = nullptr;
  link->previous = link->next = nullptr;
  if (outer && outer->next == link) outer->next = nullptr;
  releasetable(table);
  release(link);
  return outer;
}

void attachlocalnames(Point &functionend, const Context *chain) {
  auto *own = static_cast<Context *>(newblock(sizeof(Context)));
  *own = {chain->table, PERMANENT, nullptr, localtables, chain->root, chain->serial};
  reference(chain->table);
  if (localtables) localtables->previous = own;
  localtables = own;
  functionend.link = own;
}

Entry *localnames(const Point &functionend) {
  return functionend.link ? static_cast<const Context *>(functionend.link)->table : nullptr;
}

namespace {

// wipelocalnames of refderef.h.
void releaselocalnames(Point &functionend) {
  auto *own = static_cast<Context *>(functionend.link);
  functionend.link = nullptr;
  if (own) releaselocaltable(own);
}

// Set before main, so that no start of a programme or of a test can forget it.
[[maybe_unused]] const bool hooked = (wipelocalnames = releaselocalnames, true);

}  // namespace

void recountlocalnames(Recount &recount) {
  for (const Context *own = localtables; own; own = own->next) recounttable(recount, own->table);
}

void wipealllocalnames() {
  // A wipe may end other functions, but not the one whose record is held.
  for (Context *own = localtables; own;) {
    reference(own);
    hashwipe(own->table);
    Context *const next = own->next;
    releaselocaltable(own);
    own = next;
  }
}

}  // namespace morvik
