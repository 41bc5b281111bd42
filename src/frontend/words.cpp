// Keywords: one OPERATOR Point each, or a change of the one before.
#include "frontend/words.h"

#include <algorithm>
#include <cstring>

#include "failure/exception.h"
#include "failure/jump.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/namewords.h"
#include "spaces/blocks.h"
#include "spaces/messages.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

// The names of what ends the process, so that it can end where there is no storage.
FixedName endings[] = {{-1, 0, ""}, {-1, 0, "OFF"}, {-1, 0, "QUIT"}, {-1, 0, "ENDPROCESS"}};

char *nameof(const char *text, std::uint16_t instruction) {
  if (instruction == instructions::ENDPROCESS)
    for (FixedName &ending : endings)
      if (std::strcmp(ending.text, text) == 0) return ending.text;
  return stringdup(text);
}

bool ishidden(const Keyword &row) {
  return row.hidden.kind != Hidden::NOTHING;
}

// The constant ahead of an instruction that prints nothing.
void emithidden(const Hidden &hidden) {
  Point &constant = newpending(ranks::SCALAR, ISSCALAR);
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
  emit();
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
void rewritelast(const Keyword &row, const char *text) {
  Point *last = lastpoint();
  compiler.builtinnext = false;
  if (!last || !isoperator(*last)) {
    const bool outer = row.instruction == instructions::OUTERPRODUCT;
    exception(outer ? messages::NO_OUTER_OPERAND : messages::NO_FOLD_OPERAND, &compiler.stackposition, last);
    return;
  }
  extendname(*last, text);
  last->modifier = last->instruction;
  last->instruction = row.instruction;
}

void decisionkeyword(const Keyword &row, const char *text) {
  const std::uint32_t decision = row.instruction == instructions::IF_YES ? CONDITIONAL | YES : CONDITIONAL;
  Point *last = lastpoint();
  compiler.builtinnext = false;
  if (!last) return;
  if (isfunction(*last)) {
    Point &point = newpending(ranks::OPERATOR, ISFUNCTION | decision);
    point.instruction = row.instruction;
    point.modifier = instructions::BARE;
    point.name = stringdup(text);
    emit();
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

void plainkeyword(const Keyword &row, const char *text) {
  if (hasmeaning(text)) {
    oper(text, row.instruction);
    return;
  }
  compiler.builtinnext = false;
  markheader(row.mark);
  if (ishidden(row)) emithidden(row.hidden);
  emitoperator(text, row.instruction, row.modifier);
}

// Of two Points the second has the empty name, so that the pair prints back as one word.
void keywordpair(const char *text, std::uint16_t first, std::uint16_t second) {
  if (oper(text, first) == 1) emitoperator("", second, instructions::NIHIL);
}

void runkeyword(const Keyword &row, const char *text) {
  if (!hasmeaning(text) && stepping) {
    compiler.builtinnext = false;
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
  compiler.builtinnext = false;
  compiler.breaking = true;
  stepping = 0;
  jump(-1);
}

}  // namespace

bool hasmeaning(const char *text) {
  return !compiler.builtinnext && checkmeaning(compiler.chain, text);
}

void emitoperator(const char *text, std::uint16_t instruction, std::uint16_t modifier) {
  Point &point = newpending(ranks::OPERATOR, ISOPERATOR);
  point.instruction = instruction;
  point.modifier = modifier;
  point.name = nameof(text, instruction);
  emit();
}

int oper(const char *text, std::uint16_t instruction) {
  Compiler &c = compiler;
  const Entry *entry = c.builtinnext ? nullptr : checkmeaning(c.chain, text);
  c.builtinnext = false;
  if (!entry) {
    emitoperator(text, instruction, instructions::NIHIL);
    return 1;
  }
  Point &point = newpending(ranks::VARIABLE, ISVARIABLE | ISOPERATOR);
  point.depth = 1;
  point.modifier = instructions::SGIG;
  bindpending(*entry);
  emit();
  return 0;
}

void keyword(const Keyword &row, const char *text) {
  switch (row.kind) {
    case KeywordKind::PLAIN:
    case KeywordKind::MASK:
      return plainkeyword(row, text);
    case KeywordKind::REWRITE:
      return hasmeaning(text) ? static_cast<void>(oper(text, row.instruction)) : rewritelast(row, text);
    case KeywordKind::DECISION:
      return hasmeaning(text) ? static_cast<void>(oper(text, row.instruction)) : decisionkeyword(row, text);
    case KeywordKind::ROOT:
      return keywordpair(text, instructions::RECIPROCAL, instructions::POWER);
    case KeywordKind::YIELDTO:
      return keywordpair(text, instructions::YIELDTO, instructions::RETURN);
    case KeywordKind::RUN:
      return runkeyword(row, text);
    case KeywordKind::BREAK:
      return breakoff(text);
    case KeywordKind::MASK_FORM:
      // Kept: the modifier does not survive the MASK that follows, so that nothing is noted.
      if (hasmeaning(text)) oper(text, row.instruction);
      compiler.builtinnext = false;
      return;
  }
}

void emitmask() {
  oper("MASK", instructions::MASK);
}

}  // namespace morvik
