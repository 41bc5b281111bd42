// Symbolic Points and functions as text: what the scanner makes the same Points of, and a line for people.
#include <cstring>

#include "diagnostics/printer.h"
#include "diagnostics/processstack.h"
#include "diagnostics/text.h"
#include "spaces/blocks.h"
#include "spaces/instructions.h"

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

void newline(int indent) {
  put('\n');
  indentation(indent);
}

void variable(const Point &p, int indent, bool source) {
  if (source) {
    newline(indent);
    if (sigilof(p) != 0) put(' ');
  } else {
    put(classword(p));
    put(" VARIABLE:\t");
  }
  putname(textof(p.name), sigilof(p), false, source);
}

void address(const Point &p, bool source) {
  if (source && !p.name) return;  // a place on the stack: no text leads back to it
  if (!source) put(classword(p));
  put(source ? " @" : " ADDRESS:\t");
  putname(textof(p.name), sigilof(p), true, source);
}

void label(const Point &p, int indent, bool source) {
  if (source) newline(indent);
  put(source ? " @" : " . LABEL:\t\t");
  put(textof(p.name));
}

// The position counts from 0 in the Point and from 1 in the text.
void local(const Point &p, const char *words) {
  put(words);
  char *at = room(ELEMENT_BYTES);
  filled(spell(at, p.data_pointer ? p.data_pointer->integer + 1 : std::int64_t{0}));
}

void comment(const char *text, std::size_t length, bool source) {
  if (!source) {
    put(" . COMMENT:\t\t");
    return put(text, length);
  }
  put(' ');
  put(COMMENT_QUOTE);
  put(text, length);
  put(COMMENT_QUOTE);
}

void named(const char *name, bool source) {
  put(source ? " " : " . OPERATOR:\t\t");
  put(name);
}

// A comment, a label where it stands, or NOOP itself.
void noop(const Point &p, int indent, bool source) {
  const char *name = textof(p.name);
  if (p.modifier == COMMENT) {
    comment(name, std::strlen(name), source);
    if (source) put('\n');
  } else if (!p.data_pointer && *name != '%') {
    named(p.name ? name : Instructions[p.instruction], source);
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
void conditional(const Point &p, bool source) {
  const char *name = p.name;
  if (p.modifier == instructions::NOOP && p.elements == COMMENT && source && name) {
    const char *mark = std::strrchr(name, ' ');
    if (!mark) mark = name + std::strlen(name);
    comment(name, static_cast<std::size_t>(mark - name), true);
    return put(mark);
  }
  if (name || p.modifier == instructions::BARE) return named(name ? name : Instructions[p.instruction], source);
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

void instruction(const Point &p, int indent, bool source) {
  const char *name = p.name ? p.name : instructionname(p.instruction);
  switch (p.instruction) {
    case instructions::NOOP:
      return noop(p, indent, source);
    case instructions::IF_YES:
    case instructions::IF_NO:
      return conditional(p, source);
    case instructions::JUMP:
    case instructions::CHECK:
      named(name, source);
      if (source) newline(indent);
      return;
    case instructions::PRINT:
      named(name, source);
      if (!source) put('\n');
      return;
    case instructions::FUNCTIONEND:
      // A function that the end of the text closed bears that word; written back it would end the text again.
      return named(source && (*name == '.' || std::strcmp(name, "END") == 0) ? ";" : name, source);
    default:
      return named(!source && isoperatorform(p.instruction) ? instructionname(p.modifier) : name, source);
  }
}

void head(const Point &function, int indent) {
  static constexpr const char *WORDS[] = {" NILADIC", " MONADIC", " DYADIC", " TRIADIC"};
  constexpr int WORDED = 4;
  if (function.arguments < 0) {
    if (!function.name) return put(" :");
    put(' ');
    return put(function.name);
  }
  char *at = room(ELEMENT_BYTES);
  if (function.locals > 0) {
    put(" VARS ");
    at = room(ELEMENT_BYTES);
    filled(spell(at, std::int64_t{function.locals}));
  }
  if (function.arguments < WORDED) {
    put(WORDS[function.arguments]);
  } else {
    put(" ARGS ");
    at = room(ELEMENT_BYTES);
    filled(spell(at, std::int64_t{function.arguments}));
    put(" FUNCTION");
  }
  newline(indent + 1);
}

// A literal with )[] is two Points, of which only the second holds the brackets.
const char *closing(const Point &p) {
  const Point *next = &p + 1;
  const bool opened = isspace(p) && (p.type & INOUT) != 0 && isoperator(*next) && !isend(*next);
  return opened && next->instruction == instructions::NOOP && next->name && next->name[0] == ')' ? next->name : nullptr;
}

// A body that was cut off at the end of its text has no FUNCTIONEND: the word is written all the same.
void body(Point *programme, int indent) {
  bool ended = false;
  for (Point *p = programme; !isend(*p); ++p) {
    ended = isoperator(*p) && p->instruction == instructions::FUNCTIONEND;
    if (const char *close = closing(*p)) {
      space(*p, true, false, close);
      ++p;
      continue;
    }
    point(*p, indent, true, false);
    if (!isoperator(*p) && (p->type & CONDITIONAL) != 0) put((p->type & YES) != 0 ? " ?Y" : " ?N");
    countelement();
  }
  if (!ended) put(" ;");
}

void function(const Point &p, int indent) {
  newline(indent);
  head(p, indent);
  if (p.programme) body(p.programme + 1, indent + 1);
  if ((p.type & ISOPERATOR) != 0) put(" OPERATOR");
  newline(indent);
}

void nothing(int indent, bool source) {
  if (source) indentation(indent);
  put(source ? "#NIL\n" : ".\n");
}

}  // namespace

void symbolic(Point &p, int indent, bool source) {
  source |= indent > 0;
  if (isempty(p)) return nothing(indent, source);
  switch (p.rank) {
    case ranks::LOCALVARIABLE:
      return local(p, source ? " &" : " . STACK VARIABLE:\t&");
    case ranks::LOCALADDRESS:
      return local(p, source ? " @&" : " . STACK ADDRESS:\t&");
    case ranks::ADDRESS:
      return address(p, source);
    case ranks::OPERATOR:
      return instruction(p, indent, source);
    case ranks::FUNCTION:
      return function(p, indent);
    case ranks::VARIABLE:
      return variable(p, indent, source);
    case ranks::LABEL:
      return label(p, indent, source);
    case ranks::UNUSED:
      return put(source ? "" : " . Unused name!\n");
    case ranks::INVALID:
      return put(source ? "" : " . Unused symbol!\n");
    default:
      return;
  }
}

void point(Point &p, int indent, bool source, bool inner) {
  if (stackends()) [[unlikely]] {
    flush();
    outofstorage();
  }
  if (p.rank < 0)
    symbolic(p, indent, source);
  else
    space(p, source, inner);
}

}  // namespace printer
