// Names: each rule of access enters or looks up what it must while the text is compiled, and leaves the rest to the
// run.
#include "frontend/namewords.h"

#include <cstdlib>
#include <cstring>

#include "failure/exception.h"
#include "frontend/compiler.h"
#include "frontend/contexts.h"
#include "frontend/literals.h"
#include "frontend/symtab.h"
#include "frontend/window.h"
#include "spaces/blocks.h"
#include "spaces/making.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

constexpr std::int32_t BAD_LOCAL = 150, NO_LOCALS = 151, FEWER_LOCALS = 152, TOO_MANY_NAMES = 808;
constexpr char OPENS_NAME = 2, CLOSES_NAME = 3;

bool infunction() {
  return compiler.pcsp > 1;
}

// Counts a reference to a name inside a function. Kept: nothing needs the count, but it has an end.
void countreference() {
  if (!infunction()) return;
  if (compiler.varsp == MOST_REFERENCES) exceptionjump(TOO_MANY_NAMES);
  ++compiler.varsp;
}

// A function gets a table of its own with the first name that asks for one.
void openowntable() {
  Compiler &c = compiler;
  if (infunction() && c.chain == c.returnstack[c.pcsp - 1].chain) c.chain = opentable(c.chain, SMALL_TABLE);
}

Entry *entercurrent(const char *name, char sigil) {
  openowntable();
  const Context *chain = compiler.chain;
  return entername(chain->table ? chain->table : chain->root->table, stringdup(name), sigil);
}

Point &namehand(bool address, std::uint32_t more, std::uint16_t scope) {
  Point &point = newhand(address ? ranks::ADDRESS : ranks::VARIABLE, (address ? ISADDRESS : ISVARIABLE) | more);
  point.modifier = scope;
  return point;
}

void holdname(char *name) {
  Point &point = compiler.hand;
  reference(name);
  point.name = name;
  point.elements = static_cast<std::uint32_t>(std::strlen(name));
}

void linkhand() {
  reference(compiler.chain);
  compiler.hand.context = compiler.chain;
}

// For a name that is bound when it is met.
void unboundhand(const char *name) {
  compiler.hand.name = stringdup(name);
  compiler.hand.elements = static_cast<std::uint32_t>(std::strlen(name));
  linkhand();
}

void createdglobally(const char *name, bool address) {
  const bool unknown = infunction() && !checkmeaning(compiler.chain, name);
  countreference();
  if (unknown) mark(GLOBAL);
  namehand(address, 0, instructions::SAIG);
  unboundhand(name);
  append();
}

void createdlocally(const char *name, bool address) {
  const Entry *entry = infunction() ? checkmeaning(compiler.chain, name) : nullptr;
  countreference();
  if (!entry && infunction()) {
    openowntable();
    mark(GLOBAL);
  }
  namehand(address, 0, instructions::SAIL);
  if (entry)
    bindhand(*entry);
  else
    unboundhand(name);
  append();
}

void ownname(const char *name, bool address) {
  const Entry *entry = entercurrent(name, '.');
  if (!entry) return;
  namehand(address, 0, instructions::SLIL);
  bindhand(*entry);
  append();
}

}  // namespace

void bindhand(const Entry &entry) {
  holdname(entry.name);
  linkhand();
  reference(entry.meaning);
  compiler.hand.target = entry.meaning;
}

void plainname(const char *name, bool address) {
  const Entry *entry = entername(compiler.chain->root->table, stringdup(name));
  if (!entry) return;
  if (address) countreference();
  mark(GLOBAL);
  namehand(address, ISOPERATOR, instructions::SGIG);
  bindhand(*entry);
  append();
}

void sigilname(char sigil, const char *name, bool address) {
  switch (sigil) {
    case '_':
      return createdglobally(name, address);
    case '$':
      return createdlocally(name, address);
    default:
      return ownname(name, address);
  }
}

void bracketname(const char *text, bool address) {
  Compiler &c = compiler;
  const char sigil = text[0] == OPENS_NAME ? char{0} : text[0];
  c.operat.length = 0;
  c.bracketed = true;
  for (int byte = input(); byte != EOF && byte != CLOSES_NAME; byte = input()) {
    const char next = static_cast<char>(byte);
    collect(&next, 1);
  }
  c.bracketed = false;
  const char *name = collected();
  if (*name == 0) return;
  if (sigil == 0)
    plainname(name, address);
  else
    sigilname(sigil, name, address);
}

void label(const char *name, bool address) {
  Compiler &c = compiler;
  const Entry *entry = entercurrent(name, 0);
  if (!entry) return;
  if (address) {
    newhand(ranks::LABEL, ISADDRESS).depth = 1;
  } else {
    Point value;
    makeinteger(value, c.position - c.returnstack[c.pcsp - 1].start + 2);
    dereferencepoint(entry->meaning);
    *entry->meaning = value;
    newhand(ranks::OPERATOR, ISOPERATOR).instruction = instructions::NOOP;
  }
  holdname(entry->name);
  reference(entry->meaning);
  c.hand.target = entry->meaning;
  append();
}

void local(char *text, bool address) {
  Compiler &c = compiler;
  fixsign(text, std::strlen(text));
  const std::int64_t number = std::strtol(text + 1, nullptr, 10);
  const int fault = c.funcvars < 1 ? NO_LOCALS : number < 1 ? BAD_LOCAL : number > c.funcvars ? FEWER_LOCALS : 0;
  if (fault != 0) {
    exception(fault, &c.stackposition, nullptr);
    return;
  }
  if (address) countreference();
  const std::int32_t rank = address ? ranks::LOCALADDRESS : ranks::LOCALVARIABLE;
  Point &point = newhand(rank, (address ? ISADDRESS : ISVARIABLE) | ISLOCAL);
  point.elements = 1;
  point.name = stringdup(text);
  point.data_pointer = newelement(tags::INTEGER, forms::NUMBER);
  point.data_pointer->integer = number - 1;
  append();
}

}  // namespace morvik
