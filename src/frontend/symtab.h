// Names: chained hash tables of two sizes, and the chain of contexts that is searched from the inside out.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

class Recount;

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

// Do two links stand for the same table? A name that was bound under one is then bound under the other. Asked of a
// popped link too, whose table may be gone.
inline bool sametable(const Context *a, const Context *b) {
  return a->serial == b->serial;
}

extern const std::uint8_t rand8[256];
std::uint8_t smallhash(const char *name);
std::uint16_t largehash(const char *name);

// Fresh tables of count 1, owned by the caller. Message 27. Buckets come into being as names are entered: only the
// functions of this header may walk a table.
Entry *makehashtab();
Entry *makesmallhashtab();
// Lowers the count of a table; the last reference wipes and frees it.
void releasetable(Entry *table);

// The first chain over a table, which stays the caller's: a block of two records; the first is returned. Message 27.
// The block is released plainly, after everything that was pushed on it.
Context *makemeaning(Entry *table);

// Find or enter. The name is a counted string handed over: its reference goes to the entry, or is dropped when the
// entry stood already. `sigil` is remembered by a new entry. Null for an empty name (hashtab). Message 27.
Entry *hashtab(Entry *table, char *name, char sigil = 0);
Entry *smallhashtab(Entry *table, char *name, char sigil = 0);
// The one of the two that the table's kind asks for.
Entry *entername(Entry *table, char *name, char sigil = 0);
// Was the name of a meaning taken away, while Points are bound to it?
bool isforgotten(const Point &meaning);
// Enters the name of such a meaning again. Returns what it means now: the same block, so that all that are bound to it
// find what is set there; or what somebody entered the name for in between. The name is not taken over. Message 27.
Point *reentername(Entry *table, char *name, char sigil, Point *meaning);
// Find only; null if absent or empty. The name is not taken over.
Entry *checkhash(Entry *table, const char *name);
Entry *checksmallhash(Entry *table, const char *name);

// Walks the chain outward from a link. `table`, if not null, receives the table searched last. Null when not found down
// to the stop table, or to the end of the chain.
Entry *getsymandtab(const Context *chain, const char *name, Entry **table, const Entry *stop);
Entry *checkmeaning(const Context *chain, const char *name);
Entry *checksym_until(const Context *chain, const char *name, const Entry *stop);
// The entry in the chain; a name that is absent is entered in the innermost table. The name is handed over. Null for an
// empty name (large tables). Message 27.
Entry *meaning(Context *chain, char *name, Entry **table, char sigil = 0);

// Pushes a table and returns the inner link; the chain raises the table's count for itself. Message 27.
Context *pushtable(Context *chain, Entry *table);
// Pushes a fresh table of this kind. Message 27.
Context *opentable(Context *chain, std::uint16_t kind);
Context *pushsymtabs(Context *chain, Context *other);
// Undoes one push and returns the link to use from now on. A permanent link stays.
Context *popsymtabs(Context *link);

// Hangs the table of a link, still pushed, on the FUNCTIONEND Point of the function that opened it. The name links of
// the body's Points do not keep it: wipelocalnames (spaces/refderef.h) is what ends it. Message 27.
void hanglocalnames(Point &functionend, const Context *chain);
// The table of its own that a function's FUNCTIONEND Point holds, null for none.
Entry *localnames(const Point &functionend);

// The owners that a table and its names are, for a recount; and those that all the records of FUNCTIONEND Points are.
void recounttable(Recount &recount, Entry *table);
void recountlocalnames(Recount &recount);

// Wipes the local names of every function in being: at shutdown, for the functions that keep themselves.
void wipealllocalnames();

// Empties an entry and its bucket from there on, or a table: values are released, a bound Point reads as one without a
// value.
void subwipe(Entry *entry);
void hashwipe(Entry *table);
// Removes one name; the entry stays valid and holds the next link's name, if there was one. The system variables stay.
void forgethash(Entry *entry);

// The rule of access of a name given as text: splits a leading sigil off, if a name follows it. Returns the sigil or 0.
char splitsigil(const char *&name);

// Appends to a vector (whose data block may be null) the names of a table that were entered with this sigil, each as
// a character vector of its written name. Message 27, the vector left whole.
void list_symbols(Point *space, Entry *table, char sigil);
// Writes every definition of the chain, innermost table first, as source text. A safe point between names.
void remember(std::FILE *stream, const Context *chain);

// Binds #IO or #CT, entries of no table, to a Point of quads, which stays the driver's; null unbinds the name. The word
// ahead of the Point (in the unused slot before it) serves as its count.
void bindfixedsym(const char *name, Point *value);
