// What the actions of the scanner share while a text is compiled: the place where Points are written, the functions and
// literals that are open, and the pending Point.
//
// Ownership: a Point is made in `pending` and moved to `position` when it is whole. What is pending, in the literals,
// in the bodies and in the Programme belongs to the compiler until fill returns; abandontext gives all of it back, so
// that an action may jump wherever these are well-formed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/limits.h"
#include "frontend/tokens.h"
#include "spaces/instructions.h"
#include "spaces/point.h"
#include "spaces/symbols.h"

namespace morvik {

// One open function, or a literal in which another is open. Frame 0 is the text itself.
struct Frame {
  Point *point;          // the FUNCTION Point being opened, in the enclosing block; the outer literal
  Point *blockend;       // that of the enclosing block
  std::int64_t counted;  // openlocals of the enclosing function; the capacity of the outer literal
  Context *chain;        // at the opening
  Point *start;          // of the body; its header comes before it. Null for a literal
};

// Bytes that are being collected, zero-terminated once they are whole.
struct Collected {
  char *bytes;  // null, or a counted block
  std::size_t length, capacity;
};

// References to names that the functions of one text may hold, apart from names that are bound as they are compiled.
inline constexpr std::uint16_t MOST_REFERENCES = 512;
inline constexpr std::size_t TOKEN_BYTES = 256;

struct Compiler {
  Condition condition;  // survives from text to text, as does builtinnext
  bool builtinnext;     // set by :: : the next keyword is the instruction, whatever its spelling means
  Point *position;      // where the next Point goes; there is always storage for it
  Point *blockend;      // the end of the present block
  Context *chain;
  Point *stackposition;
  int flag;
  bool inspecting;               // stepping was set when the text began
  std::uint16_t nextframe;       // the next free frame
  std::uint16_t namereferences;  // references to names so far
  std::int64_t openlocals;       // locals of the function that is open
  std::uint32_t literallevel;    // how deep literals are open
  std::uint32_t depth;           // the deepest in the present one
  Point pending;
  Point *literal;        // the innermost that is open: `pending`, or a counted block; null for none
  std::size_t capacity;  // its capacity in records
  Point extents;         // of the shape bracket that is open
  bool misshapen;        // an extent of it was refused
  Collected collecting;  // a name or a comment
  bool bracketed;        // a name between its brackets is being read
  bool breaking;         // BREAK: the jump drops a line only
  bool begun;            // a token of the text was read
  bool dropping;         // the rest of an abandoned text is being read
  bool inputended;       // the text ended with its input
  char q[TOKEN_BYTES];
  Frame frames[MOST_FRAMES];
};
extern Compiler compiler;

// Called with what is compiled; null, as at the start, for nobody. It may not jump.
struct Listener {
  void (*heartoken)(const Token &token, Condition was);  // before its action
  void (*hearpoint)();                                   // the one before the position is whole
  void (*hearbody)(Point &header);                       // of a function that is whole: takes an origin
};
extern const Listener *listener;

// Moves the pending Point to the position. Messages 27, 807.
void emit();
// Begins a pending Point; the one before was moved away.
inline Point &newpending(std::int32_t rank, std::uint32_t type) {
  compiler.pending = {};
  compiler.pending.rank = rank;
  compiler.pending.type = type;
  return compiler.pending;
}
// The Point before the position, null at the start of a body.
Point *lastpoint();
// Sets a fact in the header of the open function, if one is open.
void markheader(std::uint32_t bit);
// The literal around the one in work is in work again.
void closenested();
// Releases all that is open or pending: what is left is the text's own Points.
void dropopen();
// The same, and the Programme.
void abandontext();
// Leaves the text by the jump where an interrupt waits till it is compiled: what runs is not to go on with it. Between
// two tokens, and in long rows of them.
void giveupforinterrupt();
// Adds bytes to what is being collected. Message 27.
void collectbytes(const char *bytes, std::size_t length);
// The zero-terminated text that was collected; good until the next collect.
char *collected();

// Releases the literals that are open, but for the pending Point.
void dropliterals();

}  // namespace morvik
