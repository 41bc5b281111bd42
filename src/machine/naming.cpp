// Names at run time: looking them up, binding them, and the contexts that they live in.
#include "machine/naming.h"

#include <cstring>

#include "frontend/contexts.h"
#include "frontend/remember.h"
#include "frontend/symtab.h"
#include "machine/calls.h"
#include "machine/exactflags.h"
#include "machine/leave.h"
#include "machine/level.h"
#include "spaces/instructions.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/symbols.h"
#include "text/keys.h"

namespace morvik {

namespace {

bool isaddress(const Point &point) {
  return point.rank == ranks::ADDRESS;
}
bool islocaladdress(const Point &point) {
  return isaddress(point) && (point.type & ISLOCAL) != 0;
}

void markheader(Level &level, std::uint32_t bit) {
  if (level.header) level.header->type |= bit;
}

// Binds a name Point to an entry, and notes in which context.
void bindname(Level &level, Point &name, const Entry &entry) {
  reference(entry.meaning);
  dereferencebinding(name.target);
  name.target = entry.meaning;
  reference(level.meaning);
  dereference(name.context);
  name.context = level.meaning;
}

// The rule of access of a name that is given as text.
std::uint16_t scopeof(char sigil) {
  switch (sigil) {
    case '_':
      return instructions::SAIG;
    case '$':
      return instructions::SAIL;
    case '.':
      return instructions::SLIL;
    default:
      return instructions::SGIG;
  }
}

// A missing name is made where its rule says: in the current table or in the global one.
void makename(Level &level, Point &name, std::uint32_t bit) {
  const bool global = name.modifier == instructions::SAIG;
  if (!global && name.modifier != instructions::SAIL) return;
  reference(name.name);
  bindname(level, name, *entername(global ? *level.memory : level.meaning->table, name.name, sigilof(name)));
  if (global) markheader(level, bit);
}

// Looks a name up again where its rule asks for it: what it is bound to, null for nothing.
Point *rebind(Level &level, Point &name) {
  if (name.modifier == instructions::SGIG) return name.target;
  if (name.target && name.context && sametable(name.context, level.meaning)) return name.target;
  if (const Entry *entry = checkmeaning(level.meaning, name.name))
    bindname(level, name, *entry);
  else
    dereferencebinding(name.target);
  return name.target;
}

// The entry that an address is bound to; null where it has none, or where it was forgotten since.
Entry *boundentry(Level &level, Point &address) {
  if (!address.name) return nullptr;
  const Point *const target = rebind(level, address);
  for (const Context *link = level.meaning; link; link = link->previous) {
    Entry *entry = checksym_until(link, address.name, link->table);
    if (entry && entry->meaning == target) return entry;
  }
  return nullptr;
}

// The entry that the text on top names, along the chain; null if there is none.
Entry *spelledentry(const Level &level) {
  char *text = TOAddr(level.sp);
  const char *name = text;
  splitsigil(name);
  Entry *entry = checkmeaning(level.meaning, name);
  release(text);
  return entry;
}

// The entry that the top means: that of an address, or that of a text. An address is never read as a text: a byte
// of its name may look like a sigil.
Entry *namedentry(Level &level) {
  return isaddress(*level.sp) ? boundentry(level, *level.sp) : spelledentry(level);
}

// Finds or makes the entry of a name, which is handed over: one that is missing comes into the table that its rule of
// access says. Null for an empty name.
Entry *enternamed(Level &level, char *name, char sigil) {
  if (sigil == '_' && !checkmeaning(level.meaning, name)) return entername(*level.memory, name, sigil);
  Entry *table;
  return meaning(level.meaning, name, &table, sigil);
}

// Replaces the top by a value, or by the empty vector where there is none.
void replacetop(Level &level, const Point *value) {
  Point copy;
  if (value && !isend(*value)) {
    copy = *value;
    referencepoint(&copy);
  } else {
    makeempty(copy);
  }
  dereferencepoint(level.sp);
  *level.sp = copy;
}

// Where the value for the ADDRESS on top goes; null for nowhere: a local, or a name of a table that is gone. A name
// that was taken away since it was bound is entered again. Message 27, with the stack as it is.
Point *destination(Level &level) {
  Point &address = *level.sp;
  if (islocaladdress(address)) return nullptr;
  if (!address.target || !isforgotten(*address.target)) return address.target;
  const bool global = address.modifier == instructions::SGIG || address.modifier == instructions::SAIG;
  if (!global && !(address.context && level.meaning->table && sametable(address.context, level.meaning)))
    return nullptr;
  return reentername(global ? *level.memory : level.meaning->table, address.name, sigilof(address), address.target);
}

// The old value goes last: its release may wipe the very name.
void replace(Point &bound, const Point &value) {
  forgetexact(bound);
  Point old = bound;
  bound = value;
  dereferencepoint(&old);
}

}  // namespace

Point *resolve(Level &level, Point &name) {
  if (!rebind(level, name) && isaddress(name)) makename(level, name, GLOBALCHANGE);
  return name.target;
}

namespace {

// The top becomes the address of an entry.
void putaddress(Level &level, const Entry &entry, std::uint16_t rule) {
  Point address{};
  address.rank = ranks::ADDRESS;
  address.type = ISADDRESS;
  address.depth = 1;
  address.modifier = rule;
  address.name = entry.name;
  address.elements = static_cast<std::uint32_t>(std::strlen(entry.name));
  address.context = level.meaning;
  address.target = entry.meaning;
  reference(address.name);
  reference(address.context);
  reference(address.target);
  dereferencepoint(level.sp);
  *level.sp = address;
}

// Of an address, the address of its entry, which is made again where it was forgotten.
Next readdress(Level &level) {
  Point &top = *level.sp;
  if (!top.name) return fail(level, messages::NO_MEANING);
  const Entry *entry = boundentry(level, top);
  if (!entry) {
    const bool global = top.modifier == instructions::SGIG || top.modifier == instructions::SAIG;
    reference(top.name);
    entry = entername(global ? *level.memory : level.meaning->table, top.name, sigilof(top));
  }
  putaddress(level, *entry, top.modifier);
  return Next::FETCH;
}

}  // namespace

Next doat(Level &level) {
  if (isaddress(*level.sp)) return readdress(level);
  char *text = TOAddr(level.sp);
  const char *bare = text;
  const char sigil = splitsigil(bare);
  if (*bare == 0) {
    release(text);
    return fail(level, messages::NO_MEANING);
  }
  std::memmove(text, bare, std::strlen(bare) + 1);
  putaddress(level, *enternamed(level, text, sigil), scopeof(sigil));
  return Next::FETCH;
}

Next doget(Level &level) {
  Point &top = *level.sp;
  if (!isaddress(top)) {
    const Entry *entry = namedentry(level);
    replacetop(level, entry ? entry->meaning : nullptr);
    return Next::FETCH;
  }
  const Point *value = nullptr;
  if (!islocaladdress(top)) {
    value = resolve(level, top);
    if (top.modifier == instructions::SAIG) markheader(level, GLOBAL);
  }
  replacetop(level, value);
  return Next::FETCH;
}

Next dodo(Level &level) {
  const Entry *entry = namedentry(level);
  const Point *value = entry ? entry->meaning : nullptr;
  replacetop(level, value);
  return value && !isend(*value) ? executetop(level) : Next::FETCH;
}

Next doassign(Level &level) {
  if (!isaddress(*level.sp)) return fail(level, messages::ASSIGN_NON_VARIABLE);
  if (Point *const bound = destination(level)) {
    Point value = level.sp[-1];
    referencepoint(&value);
    replace(*bound, value);
  }
  droptop(level);
  return Next::FETCH;
}

Next doset(Level &level) {
  if (!isaddress(*level.sp)) return fail(level, messages::ASSIGN_NON_VARIABLE);
  Point *const bound = destination(level);
  Point address = *level.sp--;
  if (bound) {
    replace(*bound, *level.sp--);
  } else {
    droptop(level);
  }
  dereferencepoint(&address);
  return Next::FETCH;
}

Next doforget(Level &level) {
  if (Entry *entry = namedentry(level)) forgethash(entry);
  droptop(level);
  return Next::FETCH;
}

namespace {

Next pushlist(Level &level, char sigil) {
  if (stackfull(level)) return fail(level, messages::STACK_FULL);
  Point names;
  makeempty(names);
  pushowned(level, names);
  list_symbols(level.sp, level.meaning->table, sigil);
  return Next::FETCH;
}

Next entercontext(Level &level, Context *inner) {
  level.meaning = inner;
  return Next::FETCH;
}

// One table back. What the level entered with belongs to its caller: it is stepped over, not popped.
Next leavecontext(Level &level) {
  if (level.meaning->table == *level.memory || !level.meaning->previous) return Next::FETCH;
  if (isouter(level.meaning, level.entry))
    level.meaning = level.meaning->previous;
  else
    level.meaning = popsymtabs(level.meaning);
  return Next::FETCH;
}

}  // namespace

Next dovariables(Level &level) {
  return pushlist(level, '_');
}
Next dofunctions(Level &level) {
  return pushlist(level, '.');
}

Next docontext(Level &level) {
  switch (level.instruction->modifier) {
    case instructions::SMALL:
      return entercontext(level, opentable(level.meaning, SMALL_TABLE));
    case instructions::LARGE:
      return entercontext(level, opentable(level.meaning, LARGE_TABLE));
    case instructions::BASIC:
      return entercontext(level, pushtable(level.meaning, *level.memory));
    case instructions::PREVIOUS:
      return leavecontext(level);
    default:
      return hasvalues(level, 1) ? Next::FETCH : fail(level, messages::TOO_FEW_ARGUMENTS);
  }
}

}  // namespace morvik
