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
#include "spaces/characters.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/refderef.h"
#include "spaces/symbols.h"

namespace morvik {

namespace {

bool infunction() {
  return compiler.nextframe > 1;
}

// Counts a reference to a name inside a function. Kept: nothing needs the count, but it has an end.
void countreference() {
  if (!infunction()) return;
  if (compiler.namereferences == MOST_REFERENCES) exceptionjump(messages::TOO_MANY_NAMES);
  ++compiler.namereferences;
}

// A function gets a table of its own with the first name that asks for one.
void openowntable() {
  Compiler &c = compiler;
  if (infunction() && c.chain == c.frames[c.nextframe - 1].chain) c.chain = opentable(c.chain, SMALL_TABLE);
}

Entry *entercurrent(const char *name, char sigil) {
  openowntable();
  const Context *chain = compiler.chain;
  return entername(chain->table ? chain->table : chain->root->table, stringdup(name), sigil);
}

Point &pendingname(bool address, std::uint32_t more, std::uint16_t scope) {
  Point &point = newpending(address ? ranks::ADDRESS : ranks::VARIABLE, (address ? ISADDRESS : ISVARIABLE) | more);
  point.modifier = scope;
  return point;
}

void setpendingname(char *name) {
  Point &point = compiler.pending;
  reference(name);
  point.name = name;
  point.elements = static_cast<std::uint32_t>(std::strlen(name));
}

void linkpending() {
  reference(compiler.chain);
  compiler.pending.context = compiler.chain;
}

// For a name that is bound when it is met.
void pendingunbound(const char *name) {
  compiler.pending.name = stringdup(name);
  compiler.pending.elements = static_cast<std::uint32_t>(std::strlen(name));
  linkpending();
}

void emitglobalname(const char *name, bool address) {
  const bool unknown = infunction() && !checkmeaning(compiler.chain, name);
  countreference();
  if (unknown) markheader(GLOBAL);
  pendingname(address, 0, instructions::SAIG);
  pendingunbound(name);
  emit();
}

void emitlocalname(const char *name, bool address) {
  const Entry *entry = infunction() ? checkmeaning(compiler.chain, name) : nullptr;
  countreference();
  if (!entry && infunction()) {
    openowntable();
    markheader(GLOBAL);
  }
  pendingname(address, 0, instructions::SAIL);
  if (entry)
    bindpending(*entry);
  else
    pendingunbound(name);
  emit();
}

void emitownname(const char *name, bool address) {
  const Entry *entry = entercurrent(name, '.');
  if (!entry) return;
  pendingname(address, 0, instructions::SLIL);
  bindpending(*entry);
  emit();
}

}  // namespace

void bindpending(const Entry &entry) {
  setpendingname(entry.name);
  linkpending();
  reference(entry.meaning);
  compiler.pending.target = entry.meaning;
}

void plainname(const char *name, bool address) {
  const Entry *entry = entername(compiler.chain->root->table, stringdup(name));
  if (!entry) return;
  if (address) countreference();
  markheader(GLOBAL);
  pendingname(address, ISOPERATOR, instructions::SGIG);
  bindpending(*entry);
  emit();
}

void sigilname(char sigil, const char *name, bool address) {
  switch (sigil) {
    case '_':
      return emitglobalname(name, address);
    case '$':
      return emitlocalname(name, address);
    default:
      return emitownname(name, address);
  }
}

void bracketname(const char *text, bool address) {
  Compiler &c = compiler;
  const char sigil = text[0] == NAME_OPENS ? char{0} : text[0];
  c.collecting.length = 0;
  c.bracketed = true;
  for (int byte = input(); byte != EOF && byte != NAME_CLOSES; byte = input()) {
    const char next = static_cast<char>(byte);
    collectbytes(&next, 1);
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
    newpending(ranks::LABEL, ISADDRESS).depth = 1;
  } else {
    Point value;
    makeinteger(value, c.position - c.frames[c.nextframe - 1].start + 2);
    dereferencepoint(entry->meaning);
    *entry->meaning = value;
    newpending(ranks::OPERATOR, ISOPERATOR).instruction = instructions::NOOP;
  }
  setpendingname(entry->name);
  reference(entry->meaning);
  c.pending.target = entry->meaning;
  emit();
}

void local(char *text, bool address) {
  Compiler &c = compiler;
  fixsign(text, std::strlen(text));
  const std::int64_t number = std::strtol(text + 1, nullptr, 10);
  const int fault = c.openlocals < 1        ? messages::NO_LOCALS
                    : number < 1            ? messages::BAD_LOCAL
                    : number > c.openlocals ? messages::FEWER_LOCALS
                                            : 0;
  if (fault != 0) {
    exception(fault, &c.stackposition, nullptr);
    return;
  }
  if (address) countreference();
  const std::int32_t rank = address ? ranks::LOCAL_ADDRESS : ranks::LOCAL_VARIABLE;
  Point &point = newpending(rank, (address ? ISADDRESS : ISVARIABLE) | ISLOCAL);
  point.elements = 1;
  point.name = stringdup(text);
  point.data_pointer = newelement(tags::INTEGER, forms::NUMBER);
  point.data_pointer->integer = number - 1;
  emit();
}

}  // namespace morvik
