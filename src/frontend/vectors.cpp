// Literals as Points: scalars, strings, vectors and structures in each other, and the shapes that brackets give them.
#include "frontend/vectors.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "failure/exception.h"
#include "failure/signals.h"
#include "frontend/compiler.h"
#include "frontend/constants.h"
#include "frontend/limits.h"
#include "frontend/literals.h"
#include "frontend/tokens.h"
#include "frontend/window.h"
#include "spaces/blocks.h"
#include "spaces/convert.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/point.h"
#include "spaces/refderef.h"

namespace morvik {

int (*reshapeliteral)(Point *data, Point *shape, const Point *instruction);

namespace {

#ifdef MORVIK_CHECKING
constexpr std::size_t FIRST_CAPACITY = 1;
#else
constexpr std::size_t FIRST_CAPACITY = 8;
#endif

[[gnu::noinline]] void growspace(Point &space, std::size_t &capacity, std::size_t needed) {
  if (needed > MOST_ELEMENTS) outofstorage();
  const std::size_t larger = std::min(std::max({FIRST_CAPACITY, 2 * capacity, needed}), MOST_ELEMENTS);
  space.data_pointer = Reallocate(space.data_pointer, larger);
  capacity = larger;
}

// Makes the capacity that of so many records more. The block is cut to size when the literal is closed.
inline void reserverecords(Point &space, std::size_t &capacity, std::size_t more) {
  const std::size_t needed = space.elements + more;
  if (needed > capacity) growspace(space, capacity, needed);
}

// Within the capacity.
void putrecord(Point &space, const Element &element) {
  space.type |= kindbit(element.tag);
  space.data_pointer[space.elements++] = element;
}

// Cuts the block to size and says how many elements there are.
void closespace(Point &space, std::size_t capacity) {
  if (space.elements > 0 && space.elements < capacity)
    space.data_pointer = Reallocate(space.data_pointer, space.elements);
  if (!space.shape_pointer) space.shape_pointer = newshape(0);
  space.shape_pointer->integer = space.elements;
}

// Begins a literal inside the one at work.
void opennested() {
  Compiler &c = compiler;
  Point &parent = *c.literal;
  if ((parent.type & ISVECTOR) == 0 && parent.type != ISSCALAR)
    exceptionjump(messages::TOO_MANY_NAMES, &c.stackposition, nullptr);
  if (c.nextframe >= MOST_FRAMES) exceptionjump(messages::PROGRAMME_FULL);
  Point *block = newpoint();
  *block = {};
  parent.type |= STRUCTURED | ISSTRUCTURE;
  c.frames[c.nextframe++] = {c.literal, c.blockend, static_cast<std::int64_t>(c.capacity), c.chain, nullptr};
  c.literal = block;
}

// The literal in work is whole: it becomes a member of the one around it, or a Point of the Programme.
void endliteral() {
  Compiler &c = compiler;
  if (c.literal == &c.pending) {
    c.literal = nullptr;
    emit();
    return;
  }
  Frame &frame = c.frames[c.nextframe - 1];
  auto capacity = static_cast<std::size_t>(frame.counted);
  reserverecords(*frame.point, capacity, 1);
  frame.counted = static_cast<std::int64_t>(capacity);
  Element member{};
  member.tag = tags::SUBARRAY;
  member.subarray = c.literal;
  closenested();
  putrecord(*c.literal, member);
}

// How deep a vector literal of this level nests. Kept: the deepest place of the whole literal counts for each.
std::int16_t nesting(std::uint32_t level) {
  return static_cast<std::int16_t>(std::min<std::uint32_t>(compiler.depth - level + 1, INT16_MAX));
}

void closevectorspace(Point &space, std::uint32_t level) {
  closespace(space, compiler.capacity);
  const bool structure = (space.type & ISVECTOR) == 0;
  if (space.elements == 0)
    space.type = (space.type & ~ISSCALAR) | ISVECTOR | ISEMPTY | HASINTEGER;
  else if (space.elements == 1 && !structure)
    space.type |= ISONEELEMENT;
  space.type |= complexed(space.type);
  space.depth = structure ? std::int16_t{0} : nesting(level);
}

void closestringspace(Point &space) {
  closespace(space, compiler.capacity);
  space.type |= HASASCII;
  if (space.elements == 0) space.type |= ISEMPTY;
  if (space.elements == 1) space.type |= ISONEELEMENT;
}

// One record more of the literal in work, whatever the token spells.
inline void addmember(const Token &token) {
  Compiler &c = compiler;
  Point &space = *c.literal;
  reserverecords(space, c.capacity, 1);
  Element &record = space.data_pointer[space.elements];
  readelement(token, c.condition == Condition::VECTOR, record);
  space.type |= kindbit(record.tag);
  ++space.elements;
}

}  // namespace

// A number seldom comes alone, and most are plain: those that follow are taken without the detour over the rules.
void elementliteral(const Token &token) {
  Compiler &c = compiler;
  if (c.literal) {
    addmember(token);
    if (token.rule == Rule::INTEGER || token.rule == Rule::REAL)
      for (Token next; scanplain(next);) {
        addmember(next);
        if (c.literal->elements % POLL_INTERVAL == 0) giveupforinterrupt();
      }
    return;
  }
  if (token.rule == Rule::CONSTANT && Constants[token.row].tag == 0) {
    makeempty(c.pending);
  } else {
    Point &scalar = newpending(ranks::SCALAR, ISSCALAR);
    scalar.data_pointer = newelement(tags::FILLER, forms::NUMBER);
    readelement(token, false, *scalar.data_pointer);
    scalar.elements = 1;
    scalar.type |= kindbit(scalar.data_pointer->tag);
  }
  emit();
}

void openliteral(std::uint32_t type) {
  Compiler &c = compiler;
  if (c.literal)
    opennested();
  else
    c.literal = &c.pending;
  c.capacity = 0;
  *c.literal = {};
  c.literal->rank = ranks::VECTOR;
  c.literal->type = type;
  c.literal->depth = 1;
}

void characters(const char *bytes, std::size_t length) {
  Compiler &c = compiler;
  reserverecords(*c.literal, c.capacity, length);
  Element *record = c.literal->data_pointer + c.literal->elements;
  for (const char *const end = bytes + length; bytes < end; ++bytes, ++record) {
    *record = {};
    record->tag = tags::ASCII;
    record->ascii = static_cast<std::uint8_t>(*bytes);
  }
  c.literal->elements += static_cast<std::uint32_t>(length);
}

void closestring() {
  Point &space = *compiler.literal;
  closestringspace(space);
  if (space.elements == 1) {
    dereference(space.shape_pointer);
    space.rank = ranks::SCALAR;
    space.depth = 0;
    space.type = ISSCALAR | HASASCII;
  }
  endliteral();
}

void closevector(std::uint32_t more) {
  closevectorspace(*compiler.literal, compiler.literallevel + 1);
  compiler.literal->type |= more;
  endliteral();
}

void openshape(bool string) {
  Compiler &c = compiler;
  if (string)
    closestringspace(*c.literal);
  else
    closevectorspace(*c.literal, c.literallevel);
  c.extents = {};
  c.extents.rank = ranks::VECTOR;
  c.extents.type = ISVECTOR;
  c.extents.depth = 1;
  c.misshapen = false;
  c.capacity = 0;
}

void extent(char *text, std::size_t length) {
  Compiler &c = compiler;
  fixsign(text, length);
  const char *after;
  const double value = readdouble(text, &after);
  if (!(std::fabs(value) <= INTEGER_BOUND)) {
    c.misshapen = true;
    return exception(messages::SHAPE_TOO_BIG, &c.stackposition, nullptr);
  }
  reserverecords(c.extents, c.capacity, 1);
  Element record;
  setinteger(record, saturate(value));
  putrecord(c.extents, record);
}

// A literal whose bracket is refused stays the vector that it is, and the text goes on.
void closeshape() {
  Compiler &c = compiler;
  closespace(c.extents, c.capacity);
  if (c.extents.elements == 0) c.extents.type |= ISEMPTY;
  if (c.extents.elements == 1) c.extents.type |= ISONEELEMENT;
  if (c.misshapen || reshapeliteral(c.literal, &c.extents, nullptr) != 0) dereferencepoint(&c.extents);
  c.extents = {};
  endliteral();
}

}  // namespace morvik
