// Names: chained hash tables of two sizes.
#pragma once

#include <cstdint>
#include <cstdio>

#include "spaces/point.h"
#include "spaces/symbols.h"

namespace morvik {

class Recount;

// Fresh tables of count 1, owned by the caller. Message 27. Buckets come into being as names are entered: only the
// functions of this header may walk a table.
Entry *makehashtab();
Entry *makesmallhashtab();
// Lowers the count of a table; the last reference wipes and frees it.
void releasetable(Entry *table);

// Find or enter. The name is a counted string that is taken over: its reference goes to the entry, or is dropped when
// there was such an entry already. `sigil` is remembered by a new entry. Null for an empty name (hashtab). Message 27.
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

// The owners that a table and its names are, for a recount; and those that all the records of FUNCTIONEND Points are.
void recounttable(Recount &recount, Entry *table);

// Empties an entry and its bucket from there on, or a table: values are released, a bound Point reads as one without a
// value.
void subwipe(Entry *entry);
void hashwipe(Entry *table);
// Removes one name; the entry stays valid and holds the next link's name, if there was one. The system variables stay.
void forgethash(Entry *entry);

}  // namespace morvik
