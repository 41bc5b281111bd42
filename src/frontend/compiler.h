// What the actions of the scanner share while a text is compiled: the place where Points are written, the functions and
// literals that are open, and what is in hand.
//
// Ownership: a Point is made in `hand` and moved to `position` when it is whole. What is in hand, in the literals, in
// the bodies and in the Programme belongs to the compiler until fill returns; abandon gives all of it back, so that an
// action may jump wherever these are well-formed.
#pragma once

#include <cstddef>
#include <cstdint>

#include "frontend/assembly.h"
#include "frontend/keywords.h"
#include "frontend/scanner.h"
#include "spaces/instructions.h"
#include "spaces/point.h"

// One open function, or a literal in which another is open. Frame 0 is the text itself.
struct Frame {
  Point *point;          // the FUNCTION Point being opened, in the enclosing block; the outer literal
  Point *pctop;          // that of the enclosing block
  std::int64_t counted;  // funcvars of the enclosing function; records that the outer literal has room for
  Context *chain;        // at the opening
  Point *start;          // of the body; its header stands before it. Null for a literal
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
  Condition condition;  // survives from text to text, as does morvik_op
  bool morvik_op;       // set by :: : the next keyword is the instruction, whatever its spelling means
  Point *position;      // where the next Point goes; there is always room for it
  Point *pctop;         // the end of the present block's room
  Context *chain;
  Point *stackposition;
  int flag;
  bool inspecting;          // stepping was set when the text began
  std::uint16_t pcsp;       // the next free frame
  std::uint16_t varsp;      // references to names so far
  std::int64_t funcvars;    // locals of the function that is open
  std::uint32_t subvector;  // how deep literals are open
  std::uint32_t depth;      // the deepest in the present one
  Point hand;
  Point *literal;    // the innermost that is open: `hand`, or a counted block; null for none
  std::size_t room;  // records that it has room for
  Point extents;     // of the shape bracket that is open
  bool misshapen;    // an extent of it was refused
  Collected operat;  // a name or a comment
  bool bracketed;    // a name between its brackets is being read
  bool breaking;     // BREAK: the jump drops a line only
  bool begun;        // a token of the text was read
  bool dropping;     // the rest of an abandoned text is being read
  bool inputended;   // the text ended with its input
  char q[TOKEN_BYTES];
  Frame returnstack[FRAMES];
};
extern Compiler compiler;

// ---- The Programme (compiler.cpp).

// Moves the Point in hand to the position. Messages 27, 807.
void append();
// Begins a Point in hand; the one before was moved away.
inline Point &newhand(std::int32_t rank, std::uint32_t type) {
  compiler.hand = {};
  compiler.hand.rank = rank;
  compiler.hand.type = type;
  return compiler.hand;
}
// The Point before the position, null at the start of a body.
Point *lastpoint();
// Sets a fact in the header of the open function, if one is open.
void mark(std::uint32_t bit);
// Gives up all that is open or in hand: what is left is the text's own Points.
void dropopen();
// The same, and the Programme.
void abandon();
// Adds bytes to what is being collected. Message 27.
void collect(const char *bytes, std::size_t length);
// The zero-terminated text that was collected; good until the next collect.
char *collected();

// ---- Words (words.cpp).

// Does the spelling stand for a variable here?
bool hasmeaning(const char *text);
// Writes the Point of a keyword: a VARIABLE if the text has a meaning (returns 0), else an OPERATOR (returns 1).
// Messages 27, 807.
int oper(const char *text, std::uint16_t instruction);
// Writes an OPERATOR Point, whatever the text means. Messages 27, 807.
void appendoperator(const char *text, std::uint16_t instruction, std::uint16_t modifier);
// All that one row of keywords.def asks for. BREAK jumps. Messages 27, 74, 79, 807.
void keyword(const Keyword &row, const char *text);
// MASK after WRAP or REFLECT, however it is spelled.
void mask();

// ---- Functions (functions.cpp).

// Opens a function with the text of its opening words. Messages 27, 807.
void openfunction(char *text);
// Closes the innermost function with a FUNCTIONEND Point of this name; complains where none is open. Messages 27, 807.
void closefunction(const char *text);
// Writes the END of the text, after the forced finish of what is open. Messages 27, 807.
void endtext(const char *text);
// Ends the innermost function where it stands, without a FUNCTIONEND Point.
void endfunction();

// ---- Names (names.cpp). `address`: after @. All that write a Point report 27, 807 and 808.

// Gives the Point in hand the name and the value of an entry, and the present context.
void bindhand(const Entry &entry);
void plainname(const char *name, bool address);
// `sigil`: one of _ $ .
void sigilname(char sigil, const char *name, bool address);
// The token that opens the brackets; the name itself is read from the input. An empty name writes nothing.
void bracketname(const char *text, bool address);
// With its %.
void label(const char *name, bool address);
// With its &. Reports 150, 151, 152 and writes nothing then.
void local(char *text, bool address);

// ---- Literals as Points (vectors.cpp); their elements: literals.h. All report 27, and 807 where a Point is written.

// A number, a named constant or a bit pattern: a scalar Point, or one element more of the literal that is open.
void elementliteral(const Token &token);
// A string or a vector (ISVECTOR), or a structure (ISSCALAR); inside an open literal 808.
void openliteral(std::uint32_t type);
void characters(const char *bytes, std::size_t length);
void closestring();
// `more`: flags for the type word.
void closevector(std::uint32_t more);
// The shape of the literal that is open follows: its extents one by one (1100), then its end, which reports what
// reshape does. Neither jumps: a literal whose bracket is refused stays a vector.
void openshape(bool string);
void extent(char *text, std::size_t length);
void closeshape();
// Gives up the literals that are open, but for the Point in hand.
void dropliterals();
