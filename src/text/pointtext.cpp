// Points as text. Without a value: symbolic Points and functions, what the scanner makes the same Points of, and
// a line for people. Spaces: literals that the scanner reads back, and rows for people.
#include "text/pointtext.h"

#include <cmath>
#include <cstring>

#include "failure/jump.h"
#include "spaces/blocks.h"
#include "spaces/convert.h"
#include "spaces/instructions.h"
#include "spaces/parts.h"
#include "spaces/processstack.h"
#include "spaces/refderef.h"
#include "text/keys.h"
#include "text/nametext.h"
#include "text/numbertext.h"
#include "text/printer.h"

namespace morvik {

namespace printer {

namespace {

constexpr char COMMENT_QUOTE = '"';
constexpr std::uint16_t COMMENT = instructions::CONTEXT;  // the modifier of a NOOP that carries a comment

const char *classword(const Point &name) {
  switch (name.modifier) {
    case instructions::SAIG:
      return " . SAIG";
    case instructions::SAIL:
      return " . SAIL";
    case instructions::SLIL:
      return " . LOCAL";
    default:
      return (name.type & ISOPERATOR) != 0 ? " . GLOBAL" : " .";
  }
}

const char *textof(const char *name) {
  return name ? name : "";
}
const char *instructionname(std::uint32_t number) {
  return number < instructions::COUNT ? Instructions[number] : " ???";
}

void putnewline(int indent) {
  put('\n');
  indentation(indent);
}

void putvariable(const Point &p, int indent, bool source) {
  if (source) {
    putnewline(indent);
    if (sigilof(p) != 0) put(' ');
  } else {
    put(classword(p));
    put(" VARIABLE:\t");
  }
  putname(textof(p.name), sigilof(p), false, source);
}

void putaddresstext(const Point &p, bool source) {
  if (source && !p.name) return;  // a place on the stack: no text leads back to it
  if (!source) put(classword(p));
  put(source ? " @" : " ADDRESS:\t");
  putname(textof(p.name), sigilof(p), true, source);
}

void putlabel(const Point &p, int indent, bool source) {
  if (source) putnewline(indent);
  put(source ? " @" : " . LABEL:\t\t");
  put(textof(p.name));
}

// The position counts from 0 in the Point and from 1 in the text.
void putlocal(const Point &p, const char *words) {
  put(words);
  char *at = reservebytes(ELEMENT_BYTES);
  endbytes(spell(at, p.data_pointer ? p.data_pointer->integer + 1 : std::int64_t{0}));
}

void putcomment(const char *text, std::size_t length, bool source) {
  if (!source) {
    put(" . COMMENT:\t\t");
    return put(text, length);
  }
  put(' ');
  put(COMMENT_QUOTE);
  put(text, length);
  put(COMMENT_QUOTE);
}

void putnamed(const char *name, bool source) {
  put(source ? " " : " . OPERATOR:\t\t");
  put(name);
}

// A comment, a label at its place, or NOOP itself.
void putnoop(const Point &p, int indent, bool source) {
  const char *name = textof(p.name);
  if (p.modifier == COMMENT) {
    putcomment(name, std::strlen(name), source);
    if (source) put('\n');
  } else if (!p.data_pointer && *name != '%') {
    putnamed(p.name ? name : Instructions[p.instruction], source);
  } else if (source) {
    put("\n ");
    indentation(indent);
    put(name);
  } else {
    put(" . LOCAL LABEL:\t");
    put(name);
  }
}

// An instruction under a decision: its name has the mark's word at the end. A comment keeps its quotes.
void putconditional(const Point &p, bool source) {
  const char *name = p.name;
  if (p.modifier == instructions::NOOP && p.elements == COMMENT && source && name) {
    const char *mark = std::strrchr(name, ' ');
    if (!mark) mark = name + std::strlen(name);
    putcomment(name, static_cast<std::size_t>(mark - name), true);
    return put(mark);
  }
  if (name || p.modifier == instructions::BARE) return putnamed(name ? name : Instructions[p.instruction], source);
  put(source ? "" : " . OPERATOR:\t\t");
  if (p.elements != 0) {
    put(' ');
    put(instructionname(p.elements));
  }
  put(' ');
  put(instructionname(p.modifier));
}

bool isoperatorform(std::uint16_t instruction) {
  return instruction == instructions::OUTERPRODUCT ||
         (instruction >= instructions::SCAN && instruction <= instructions::REDUCENWISELASTAXIS);
}

void putinstruction(const Point &p, int indent, bool source) {
  const char *name = p.name ? p.name : instructionname(p.instruction);
  switch (p.instruction) {
    case instructions::NOOP:
      return putnoop(p, indent, source);
    case instructions::IF_YES:
    case instructions::IF_NO:
      return putconditional(p, source);
    case instructions::JUMP:
    case instructions::CHECK:
      putnamed(name, source);
      if (source) putnewline(indent);
      return;
    case instructions::PRINT:
      putnamed(name, source);
      if (!source) put('\n');
      return;
    case instructions::FUNCTIONEND:
      // A function that the end of the text closed bears that word; written back it would end the text again.
      return putnamed(source && (*name == '.' || std::strcmp(name, "END") == 0) ? ";" : name, source);
    default:
      return putnamed(!source && isoperatorform(p.instruction) ? instructionname(p.modifier) : name, source);
  }
}

void puthead(const Point &function, int indent) {
  static constexpr const char *WORDS[] = {" NILADIC", " MONADIC", " DYADIC", " TRIADIC"};
  constexpr int WORDED_COUNTS = 4;
  if (function.arguments < 0) {
    if (!function.name) return put(" :");
    put(' ');
    return put(function.name);
  }
  char *at = reservebytes(ELEMENT_BYTES);
  if (function.locals > 0) {
    put(" VARS ");
    at = reservebytes(ELEMENT_BYTES);
    endbytes(spell(at, std::int64_t{function.locals}));
  }
  if (function.arguments < WORDED_COUNTS) {
    put(WORDS[function.arguments]);
  } else {
    put(" ARGS ");
    at = reservebytes(ELEMENT_BYTES);
    endbytes(spell(at, std::int64_t{function.arguments}));
    put(" FUNCTION");
  }
  putnewline(indent + 1);
}

// A literal with )[] is two Points, of which only the second holds the brackets.
const char *closing(const Point &p) {
  const Point *next = &p + 1;
  const bool opened = isspace(p) && (p.type & INOUT) != 0 && isoperator(*next) && !isend(*next);
  return opened && next->instruction == instructions::NOOP && next->name && next->name[0] == ')' ? next->name : nullptr;
}

// A body that was cut off at the end of its text has no FUNCTIONEND: the word is written all the same.
void putbody(Point *programme, int indent) {
  bool ended = false;
  for (Point *p = programme; !isend(*p); ++p) {
    ended = isinstruction(*p, instructions::FUNCTIONEND);
    if (const char *close = closing(*p)) {
      putspace(*p, true, false, close);
      ++p;
      continue;
    }
    putpoint(*p, indent, true, false);
    if (!isoperator(*p) && (p->type & CONDITIONAL) != 0) put((p->type & YES) != 0 ? " ?Y" : " ?N");
    countelement();
  }
  if (!ended) put(" ;");
}

void putfunction(const Point &p, int indent) {
  putnewline(indent);
  puthead(p, indent);
  if (p.programme) putbody(p.programme + 1, indent + 1);
  if ((p.type & ISOPERATOR) != 0) put(" OPERATOR");
  putnewline(indent);
}

void putnothing(int indent, bool source) {
  if (source) indentation(indent);
  put(source ? "#NIL\n" : ".\n");
}

}  // namespace

void putsymbolic(Point &p, int indent, bool source) {
  source |= indent > 0;
  if (isempty(p)) return putnothing(indent, source);
  switch (p.rank) {
    case ranks::LOCAL_VARIABLE:
      return putlocal(p, source ? " &" : " . STACK VARIABLE:\t&");
    case ranks::LOCAL_ADDRESS:
      return putlocal(p, source ? " @&" : " . STACK ADDRESS:\t&");
    case ranks::ADDRESS:
      return putaddresstext(p, source);
    case ranks::OPERATOR:
      return putinstruction(p, indent, source);
    case ranks::FUNCTION:
      return putfunction(p, indent);
    case ranks::VARIABLE:
      return putvariable(p, indent, source);
    case ranks::LABEL:
      return putlabel(p, indent, source);
    case ranks::UNUSED:
      return put(source ? "" : " . Unused name!\n");
    case ranks::INVALID:
      return put(source ? "" : " . Unused symbol!\n");
    default:
      return;
  }
}

void putpoint(Point &p, int indent, bool source, bool inner) {
  if (stackends()) [[unlikely]] {
    flushprint();
    outofstorage();
  }
  if (p.rank < 0)
    putsymbolic(p, indent, source);
  else
    putspace(p, source, inner);
}

}  // namespace printer

namespace printer {

namespace {

constexpr std::uint16_t UNSPELLED = attributes::NAMED | attributes::SILENT;
constexpr int CHARACTER_BITS = 8;

// What the records of a space are, whatever its flags say.
struct Census {
  bool text;   // characters alone
  bool mixed;  // more than one tag
  bool structured;
};

Census takecensus(const Point &space) {
  const Element *records = space.data_pointer;
  Census found = {true, false, false};
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    const std::int32_t tag = records[i].tag;
    found.text &= tag == tags::ASCII;
    found.mixed |= tag != records[0].tag;
    found.structured |= tag == tags::SUBARRAY;
    countelement();
  }
  return found;
}

// Counts the elements out in rows: after each, one line feed for every running product of the extents that divides
// the count.
struct Rows {
  const Element *outer;  // the extents from the second on
  std::int32_t outers;
  std::uint64_t extent, left, complete;
};

Rows countrows(const Point &space) {
  const Element *shape = space.shape_pointer;
  const bool shaped = space.rank > 0 && shape && shape[0].integer > 0;
  const std::uint64_t extent = shaped ? static_cast<std::uint64_t>(shape[0].integer) : space.elements;
  return {shaped ? shape + 1 : nullptr, shaped ? space.rank - 1 : 0, extent, extent, 0};
}

void endrowelement(Rows &rows) {
  if (--rows.left > 0) return;
  rows.left = rows.extent;
  put('\n');
  std::uint64_t complete = ++rows.complete;
  for (std::int32_t axis = 0; axis < rows.outers; ++axis) {
    const auto extent = static_cast<std::uint64_t>(rows.outer[axis].integer);
    if (extent == 0 || complete % extent != 0) return;
    put('\n');
    complete /= extent;
  }
}

void putshapebracket(const Point &space) {
  put('[');
  for (std::int32_t axis = 0; axis < space.rank && space.shape_pointer; ++axis) {
    if (axis > 0) put(' ');
    char *at = reservebytes(ELEMENT_BYTES);
    endbytes(spell(at, space.shape_pointer[axis].integer));
  }
  put(']');
}

void putbinarycharacter(std::uint8_t byte) {
  char *at = reservebytes(ELEMENT_BYTES);
  *at++ = '`';
  *at++ = '0';
  *at++ = '#';
  at = spellbits(at, byte, CHARACTER_BITS);
  *at++ = '`';
  endbytes(at);
}

// Would the reader lose this byte of a string? A double quote is dropped there, a NUL ends the input, and a backquote
// may open what looks like a character in bits.
bool unreadable(const Element *records, std::uint32_t i, std::uint32_t count) {
  const std::uint8_t byte = records[i].ascii;
  if (byte == '`') return i + 2 < count && records[i + 1].ascii == '0' && records[i + 2].ascii == '#';
  return byte == '"' || byte == 0;
}

void putsourcetext(const Point &space) {
  const Element *records = space.data_pointer;
  put(" '", 2);
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    if ((records[i].attributes & attributes::SILENT) != 0) continue;
    if (records[i].form == forms::BINARY || unreadable(records, i, space.elements))
      putbinarycharacter(records[i].ascii);
    else
      put(static_cast<char>(records[i].ascii));  // Kept: a quote is not doubled
    countelement();
  }
  put('\'');
  if (space.rank > 1 || (space.rank == 1 && space.elements == 1)) putshapebracket(space);
}

void putdisplaytext(const Point &space) {
  const Element *records = space.data_pointer;
  Rows rows = countrows(space);
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    if ((records[i].attributes & attributes::SILENT) == 0) put(static_cast<char>(records[i].ascii));
    if (space.rank > 0) endrowelement(rows);
    countelement();
  }
}

// A whole real becomes an integer, and a complex number without an imaginary part what its real part is.
bool lowerkind(Element &e, bool complexes) {
  if ((e.attributes & UNSPELLED) != 0) return false;
  const bool complex = complexes && e.tag == tags::COMPLEX && e.form != forms::POLAR && e.complex.im == 0;
  if (complex) {
    const double re = e.complex.re;
    e.tag = tags::REAL;
    e.form = forms::NUMBER;
    e.attributes &= static_cast<std::uint16_t>(~attributes::PREFIX_R);
    e.real = re;
  }
  if (e.tag != tags::REAL || !isinteger(e.real)) return complex;
  const auto whole = static_cast<std::int64_t>(e.real);
  e.tag = tags::INTEGER;
  e.integer = whole;
  return true;
}

// A symbolic Point stored whole in a record.
[[gnu::noinline]] void putpointrecord(const Element &e, bool source) {
  Point copy;
  std::memcpy(&copy, &e, sizeof copy);
  putpoint(copy, 0, source, true);
}

[[gnu::noinline]] void putunicode(std::uint16_t character) {
  char text[8];
  put(text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%X", static_cast<unsigned>(character))));
}

// Is a name written in place of the value, or nothing at all? Written here, if so.
bool putname(const Element &e) {
  if ((e.attributes & attributes::SILENT) != 0) return true;
  if (!isnamed(e) || !e.name) return false;
  put(' ');
  put(e.name);
  return true;
}

void putelement(const Element &e, bool source) {
  if (e.tag >= tags::ASCII && (e.attributes & UNSPELLED) != 0 && e.tag != tags::HANDLE && putname(e)) return;
  if (partsof(e.tag) > 0) return putnumber(e, source);
  switch (e.tag) {
    case tags::SUBARRAY:
      return putpoint(*e.subarray, 0, source, true);
    case tags::ASCII:
      if (!source) return put(static_cast<char>(e.ascii));
      put(' ');
      return putbinarycharacter(e.ascii);  // in quotes it would be a space of its own
    case tags::UNICODE:
      return putunicode(e.unicode);
    case tags::FILLER:
      return;
    case tags::HANDLE:  // an open file has no text that could be read back
      if (!source) putname(e);
      return;
    default:
      if (e.tag < 0 && e.tag >= ranks::LOCAL_VARIABLE) return putpointrecord(e, source);
      return put(" ???");
  }
}

// Prints a record as what it is rewritten to. Returns the kind that is new to its space, 0 for none.
[[gnu::noinline]] std::uint32_t putlowered(Element &e, bool source, bool complexes) {
  Element copy = e;
  const bool changed = lowerkind(copy, complexes);
  putelement(copy, source);
  if (!changed) return 0;
  e = copy;
  return kindbit(e.tag);
}

void putscalar(Point &space, bool source) {
  Element &e = *space.data_pointer;
  if (e.tag != tags::REAL) return putelement(e, source);
  if (const std::uint32_t kind = putlowered(e, source, false)) space.type = (space.type & ~HASREAL) | kind;
}

// The flags are counted anew: what they claim beyond the records stays, and a word without any kind stays without.
void recount(Point &space, std::uint32_t kinds, std::uint32_t gained) {
  if ((space.type & ELEMENT_BITS) != 0) space.type |= gained;
  if (space.elements > 1) space.type |= complexed(kinds);
}

void putmembers(Point &space, const Census &found, bool source) {
  const bool lowering = found.mixed || found.structured || ismixed(space);
  Rows rows = countrows(space);
  std::uint32_t kinds = 0, gained = 0;
  for (std::uint32_t i = 0; i < space.elements; ++i) {
    Element &e = space.data_pointer[i];
    if (lowering && (e.tag == tags::REAL || e.tag == tags::COMPLEX))
      gained |= putlowered(e, source, true);
    else
      putelement(e, source);
    kinds |= kindbit(e.tag);
    if (!source && space.rank > 0) endrowelement(rows);
    countelement();
  }
  recount(space, kinds, gained);
}

// In a literal #NIL is no word: its brackets or quotes are written.
void putempty(const Point &space, bool source, bool inner, const char *close) {
  if (!source)
    put(" .");
  else if (close)
    put(" (");
  else if (inner)
    put((space.type & HASASCII) != 0 ? " ''" : " ()");
  else
    put(" #NIL");
  if (source && close) put(close);
  printing = 0;
}

}  // namespace

void putspace(Point &space, bool source, bool inner, const char *close) {
  if (isempty(space) || !space.data_pointer || space.elements == 0) return putempty(space, source, inner, close);
  const Census found = takecensus(space);
  const bool nests = found.structured || (space.type & STRUCTURED) != 0;
  const bool scalarstructure = (space.type & ISSCALAR) != 0 && (nests || space.rank > 0);
  if (found.text && !close && !scalarstructure) return source ? putsourcetext(space) : putdisplaytext(space);
  if (space.rank == 0 && !scalarstructure) return putscalar(space, source);
  if (source) put(scalarstructure ? " `(" : " (");
  putmembers(space, found, source);
  if (!source) return;
  put(' ');
  put(close ? close : scalarstructure ? ")`" : ")");
  if (space.rank > 1) putshapebracket(space);
}

}  // namespace printer

}  // namespace morvik
