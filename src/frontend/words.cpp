// Keywords: one OPERATOR Point each, or a change of the one before.
#include "frontend/words.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "failure/exception.h"
#include "failure/jump.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/namewords.h"
#include "spaces/blocks.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

constexpr std::int32_t NO_OUTER_OPERAND = 74, NO_FOLD_OPERAND = 79;

// The names of what ends the process: permanent blocks that stand ready, so that it can end where there is no storage.
struct Ready {
  std::int64_t count, unused;
  char text[16];
};
static_assert(offsetof(Ready, text) == BLOCKPREFIX);
Ready endings[] = {{-1, 0, ""}, {-1, 0, "OFF"}, {-1, 0, "QUIT"}, {-1, 0, "ENDPROCESS"}};

char *nameof(const char *text, std::uint16_t instruction) {
  if (instruction == instructions::ENDPROCESS)
    for (Ready &ending : endings)
      if (std::strcmp(ending.text, text) == 0) return ending.text;
  return stringdup(text);
}

bool ishidden(const Keyword &row) {
  return row.hidden.kind != Hidden::NOTHING;
}

// The constant that stands ahead of an instruction and prints nothing.
void appendhidden(const Hidden &hidden) {
  Point &constant = newhand(ranks::SCALAR, ISSCALAR);
  const bool integer = hidden.kind == Hidden::INTEGER;
  Element *element = newelement(integer ? tags::INTEGER : tags::REAL, forms::NAMED);
  element->attributes = attributes::SILENT;
  if (integer)
    element->integer = static_cast<std::int64_t>(hidden.value);
  else
    element->real = hidden.value;
  constant.type |= kindbit(element->tag);
  constant.elements = 1;
  constant.data_pointer = element;
  append();
}

// Adds a blank and a word to the name of a Point, whatever it shares the name with.
void extendname(Point &point, const char *word) {
  const char *old = point.name ? point.name : "";
  const std::size_t before = std::strlen(old), more = std::strlen(word);
  auto *name = static_cast<char *>(newblock(before + more + sizeof " "));
  char *after = std::copy_n(old, before, name);
  *after++ = ' ';
  std::memcpy(after, word, more + 1);
  release(point.name);
  point.name = name;
}

// The operator form takes the place of the instruction before it, which becomes its modifier.
void rewrite(const Keyword &row, const char *text) {
  Point *last = lastpoint();
  compiler.morvik_op = false;
  if (!last || !isoperator(*last)) {
    const bool outer = row.instruction == instructions::OUTERPRODUCT;
    exception(outer ? NO_OUTER_OPERAND : NO_FOLD_OPERAND, &compiler.stackposition, last);
    return;
  }
  extendname(*last, text);
  last->modifier = last->instruction;
  last->instruction = row.instruction;
}

void conditional(const Keyword &row, const char *text) {
  const std::uint32_t decision = row.instruction == instructions::IF_YES ? CONDITIONAL | YES : CONDITIONAL;
  Point *last = lastpoint();
  compiler.morvik_op = false;
  if (!last) return;
  if (isfunction(*last)) {
    Point &point = newhand(ranks::OPERATOR, ISFUNCTION | decision);
    point.instruction = row.instruction;
    point.modifier = instructions::BARE;
    point.name = stringdup(text);
    append();
    return;
  }
  if (isoperator(*last)) {
    extendname(*last, text);
    last->elements = last->modifier;
    last->modifier = last->instruction;
    last->instruction = row.instruction;
  }
  last->type |= decision;
}

void plain(const Keyword &row, const char *text) {
  if (hasmeaning(text)) {
    oper(text, row.instruction);
    return;
  }
  compiler.morvik_op = false;
  mark(row.mark);
  if (ishidden(row)) appendhidden(row.hidden);
  appendoperator(text, row.instruction, row.modifier);
}

// Of two Points the second has the empty name, so that the pair prints back as one word.
void pair(const char *text, std::uint16_t first, std::uint16_t second) {
  if (oper(text, first) == 1) appendoperator("", second, instructions::NIHIL);
}

void run(const Keyword &row, const char *text) {
  if (!hasmeaning(text) && stepping) {
    compiler.morvik_op = false;
    stepping = 0;
    return;
  }
  oper(text, row.instruction);
}

void breakoff(const char *text) {
  if (hasmeaning(text)) {
    oper(text, instructions::NIHIL);
    return;
  }
  compiler.morvik_op = false;
  compiler.breaking = true;
  stepping = 0;
  jump(-1);
}

}  // namespace

bool hasmeaning(const char *text) {
  return !compiler.morvik_op && checkmeaning(compiler.chain, text);
}

void appendoperator(const char *text, std::uint16_t instruction, std::uint16_t modifier) {
  Point &point = newhand(ranks::OPERATOR, ISOPERATOR);
  point.instruction = instruction;
  point.modifier = modifier;
  point.name = nameof(text, instruction);
  append();
}

int oper(const char *text, std::uint16_t instruction) {
  Compiler &c = compiler;
  const Entry *entry = c.morvik_op ? nullptr : checkmeaning(c.chain, text);
  c.morvik_op = false;
  if (!entry) {
    appendoperator(text, instruction, instructions::NIHIL);
    return 1;
  }
  Point &point = newhand(ranks::VARIABLE, ISVARIABLE | ISOPERATOR);
  point.depth = 1;
  point.modifier = instructions::SGIG;
  bindhand(*entry);
  append();
  return 0;
}

void keyword(const Keyword &row, const char *text) {
  switch (row.kind) {
    case KeywordKind::PLAIN:
    case KeywordKind::MASK:
      return plain(row, text);
    case KeywordKind::REWRITE:
      return hasmeaning(text) ? static_cast<void>(oper(text, row.instruction)) : rewrite(row, text);
    case KeywordKind::DECISION:
      return hasmeaning(text) ? static_cast<void>(oper(text, row.instruction)) : conditional(row, text);
    case KeywordKind::ROOT:
      return pair(text, instructions::RECIPROCAL, instructions::POWER);
    case KeywordKind::YIELDTO:
      return pair(text, instructions::YIELDTO, instructions::RETURN);
    case KeywordKind::RUN:
      return run(row, text);
    case KeywordKind::BREAK:
      return breakoff(text);
    case KeywordKind::MASKFORM:
      // Kept: the modifier does not survive the MASK that follows, so that nothing is noted.
      if (hasmeaning(text)) oper(text, row.instruction);
      compiler.morvik_op = false;
      return;
  }
}

void mask() {
  oper("MASK", instructions::MASK);
}

}  // namespace morvik
