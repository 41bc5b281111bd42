// Lifetimes of values: raising and lowering the counts of what a Point holds, the copy of a function, and the release
// of a Programme.
//
// Who owns what:
// - The count of a block is the number of its owners, which hold a pointer to it: Points, and records of blocks that
//   are alive. A Point owns its shape and its data, and no more: the data block owns what its records own, and gives
//   it up when it dies itself. So raising a value costs the same whatever it holds.
// - A count of 1 says that the block has one owner, not that nobody else sees it: others may see the owner. Only he
//   who holds a Point, and finds a count of 1 at every block from there down, may write to the last of them. A Point
//   never moves out of an enclosing block: it is copied and raised, and the enclosing value is given up.
// - A record of tag SUBARRAY owns the block of the enclosed Point, which owns what that Point does; OCTONION its eight
//   doubles, HANDLE its name, its cell and its descriptor, a symbolic Point (negative tag) what it would own on the
//   stack.
// - Whoever is the last to hold a data block tells by his Point what is in it: how many records, and by mayown whether
//   the records of a space of rank 1 or more own anything. So all Points that hold a block say the same of it.
//   Whoever changes a flag word keeps its promise: kind bits without STRUCTURED, HASOCTONION, HASFILE and HASFUNCTION
//   say that no record owns a block. A word without any kind bit (COLLECT) promises nothing. The one record of a scalar
//   is always looked at: whoever makes a scalar writes it before anything can fail.
// - Names of elements (attributes::NAMED) are permanent, made by elementname, so that records can be copied freely. The
//   counted name of a scalar is tolerated: its record owns it.
// - A Programme block owns the Points in it; FUNCTION Points raise the block alone. Its header owns nothing but its
//   link, and what its data word points to where that is not the header itself; the END its name and link.
// - A symbolic Point owns its name, its link and its data block. The target of an ADDRESS with ISLOCAL is a slot of the
//   stack and not counted.
#pragma once

#include <cstdio>

#include "spaces/blocks.h"
#include "spaces/point.h"

namespace morvik {

// On the main thread: does the user wait? Then what is left of a long release goes with the next one. Null: no.
using Question = bool (*)();
extern constinit thread_local Question releasestops;
// Releases what was left.
void finishreleases();

// Must the records of a space of rank 1 or more be walked?
inline bool mayown(const Point &space) {
  return (space.type & (OWNING_BITS | HASFILE | HASFUNCTION)) != 0 || (space.type & ELEMENT_BITS) == 0;
}

// Is a record of this tag a symbolic Point, stored whole? No operator is.
inline bool iswholepoint(std::int32_t tag) {
  return tag >= ranks::LOCAL_VARIABLE && tag <= ranks::LABEL && tag != ranks::OPERATOR;
}
// Is there such a kind of record?
inline bool isknown(std::int32_t tag) {
  return (tag >= tags::SUBARRAY && tag <= tags::OCTONION) || tag == tags::FILLER || tag == tags::HANDLE ||
         iswholepoint(tag);
}
// A number or character in its record: it owns nothing, but perhaps a name.
inline bool isplainkind(std::int32_t tag) {
  return tag >= tags::ASCII && tag <= tags::QUATERNION;
}
// The same without a name: the record owns nothing, whoever holds it.
inline bool isplainrecord(const Element &e) {
  return isplainkind(e.tag) && (e.attributes & attributes::NAMED) == 0;
}
// Copies such a record, as far as its kind reaches.
inline void copyplain(Element &to, const Element &from) {
  copy16(&to, &from);
  to.otherparts[0] = from.otherparts[0];
  if (from.tag <= tags::REAL) return;
  to.otherparts[1] = from.otherparts[1];
  to.otherparts[2] = from.otherparts[2];
}

// A scalar of such a record, which is what most Points are: one count, and nothing below.
inline bool ownsoneblock(const Point &point) {
  return point.rank == ranks::SCALAR && point.data_pointer && isplainrecord(*point.data_pointer) &&
         !point.shape_pointer;
}

// Does the name word of a record hold a name?
inline bool isnamed(const Element &e) {
  return (e.attributes & attributes::NAMED) != 0 && e.tag >= tags::ASCII && e.tag != tags::QUATERNION;
}

// Raises what a symbolic Point holds.
void referencesymbolic(const Point &point);
// Raise the blocks that a Point holds. Null does nothing.
inline void referencepoint(const Point *point) {
  if (!point) return;
  if (!isspace(*point)) [[unlikely]]
    return referencesymbolic(*point);
  reference(point->shape_pointer);
  reference(point->data_pointer);
}
// Lower them, releasing what falls to 0 and what goes with it, at no cost of process stack; null the pointers of the
// Point. Message 991 on an unknown tag.
void dereferencepoint(Point *point);
// A jump out of a release, which the next one ends, and out of what holds the lock of the counts.
void dropwalks();

// Lowers the binding of a name, and nulls the pointer. The last reference releases the value that is bound there too.
void dereferencebinding(Point *&target);

// The same of what element records own.
void referencedataelems(Element *records, std::size_t count);
void dereferencedataelems(Element *records, std::size_t count);
// Raises what one record owns, whatever its tag.
void referencerecord(const Element &record);

// The same over a FUNCTION Point's Programme.
void referencefun(Point *function);
void dereferencefun(Point *function);

// Release the Points of a Programme up to its END, which is where it begins afterwards.
void cleanup(Point *programme);

// Releases the local names attached to a FUNCTIONEND Point and nulls its link; the last reference wipes them. For the
// lowering of that Point, in place of the plain release of its link. Who hangs names there sets the hook.
extern void (*wipelocalnames)(Point &functionend);

}  // namespace morvik
