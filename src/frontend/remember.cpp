// Names as text: the lists of VARIABLES and FUNCTIONS, and the definitions that read back as a workspace.
#include "frontend/remember.h"

#include "failure/custody.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "frontend/buckets.h"
#include "frontend/compiler.h"
#include "frontend/limits.h"
#include "spaces/blocks.h"
#include "spaces/characters.h"
#include "spaces/symbols.h"
#include "text/text.h"

namespace morvik {

namespace {

constexpr int TEXT_DEFINITIONS = 257;  // definitions to a text, so that each fits a Programme

bool isletter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}
bool isdigit(char c) {
  return c >= '0' && c <= '9';
}

// Can the name follow a sigil as it is?
bool isidentifier(const char *name) {
  if (!isletter(*name)) return false;
  while (isletter(*name) || isdigit(*name)) ++name;
  return *name == 0;
}

bool islisted(const Entry &entry, char sigil) {
  return entry.sigil == sigil && entry.name[0] != 0;
}

std::size_t countlisted(Entry *table, char sigil) {
  std::size_t n = 0;
  TableWalk walk{table};
  while (const Entry *entry = nextentry(walk)) n += islisted(*entry, sigil);
  return n;
}

// A character vector of the written name.
Point writtenname(char sigil, const char *name) {
  const std::size_t length = std::strlen(name) + 1;
  Point text{};
  text.rank = ranks::VECTOR;
  text.type = ISVECTOR | HASASCII;
  text.depth = 1;
  text.elements = static_cast<std::uint32_t>(length);
  text.shape_pointer = newshape(static_cast<std::int64_t>(length));
  Custody made;
  takecustody(made, releasepoint, &text);
  text.data_pointer = newelements(length);
  endcustody(made);
  for (std::size_t i = 0; i < length; ++i) {
    Element character{};
    character.tag = tags::ASCII;
    character.ascii = static_cast<std::uint8_t>(i == 0 ? sigil : name[i - 1]);
    text.data_pointer[i] = character;
  }
  return text;
}

// The block is large enough for the record.
void appendname(Point &space, Point text) {
  Custody made;
  takecustody(made, releasepoint, &text);
  Point *member = newpoint();
  endcustody(made);
  *member = text;
  Element record{};
  record.tag = tags::SUBARRAY;
  record.subarray = member;
  space.data_pointer[space.elements++] = record;
  space.shape_pointer->integer = space.elements;
  space.depth = 2;
  space.type = (space.type & ~(ISEMPTY | ISONEELEMENT)) | STRUCTURED | (space.elements == 1 ? ISONEELEMENT : 0);
}

// A file, an address of the stack and an element that prints nothing have no text.
bool hastext(const Point &value) {
  if (isend(value)) return false;
  if (value.rank == ranks::ADDRESS) return (value.type & ISLOCAL) == 0;
  if (value.rank != ranks::SCALAR || !value.data_pointer) return true;
  return value.data_pointer->tag != tags::HANDLE && (value.data_pointer->attributes & attributes::SILENT) == 0;
}

// A name that holds the closing byte, or no byte at all, is one that no text can write.
bool iswritable(const Entry &entry) {
  return hastext(*entry.meaning) && entry.name[0] != 0 && !std::strchr(entry.name, NAME_CLOSES);
}

// What a definition takes of what a text may hold.
struct TextNeeds {
  std::size_t points, references;
};

// The references to names that the compiler counts in a function, and in those inside it.
std::size_t references(const Point &value) {
  if (!isfunction(value)) return 0;
  std::size_t found = 0;
  for (const Point *p = value.programme + 1; !isend(*p); ++p) {
    const bool variable = p->rank == ranks::VARIABLE, address = p->rank == ranks::ADDRESS;
    const bool plain = p->modifier == instructions::SGIG, own = p->modifier == instructions::SLIL;
    found += p->rank == ranks::LOCAL_ADDRESS || (variable && !plain && !own) || (address && !own);
    found += references(*p);
  }
  return found;
}

TextNeeds textneeds(const Point &value) {
  const std::size_t word = isfunction(value) && ((value.type | value.programme->type) & ISOPERATOR) != 0 ? 1 : 0;
  return {3 + word, references(value)};
}

// Names with a sigil are written as they are entered. All others are put between NAME_OPENS and NAME_CLOSES, those of
// labels too, since nothing can be SET to what `@%name` makes.
void writename(std::FILE *stream, const Entry &entry) {
  if (entry.sigil == 0)
    std::fprintf(stream, " @%c%s%c SET\n", NAME_OPENS, entry.name, NAME_CLOSES);
  else if (isidentifier(entry.name))
    std::fprintf(stream, " @%c%s SET\n", entry.sigil, entry.name);
  else
    std::fprintf(stream, " @%c%c%s%c SET\n", entry.sigil, NAME_OPENS, entry.name, NAME_CLOSES);
}

// A text ends after TEXT_DEFINITIONS definitions; before that only where the next one would not fit into it any longer.
void remembertable(std::FILE *stream, Entry *table) {
  int definitions = 0;
  TextNeeds taken = {0, 0};
  TableWalk walk{table};
  const auto endtext = [&] {
    std::fputs(".\n", stream);
    definitions = 0;
    taken = {0, 0};
  };
  while (const Entry *entry = nextentry(walk)) {
    safepoint();
    if (!iswritable(*entry)) continue;
    const TextNeeds more = textneeds(*entry->meaning);
    taken = {taken.points + more.points, taken.references + more.references};
    if (definitions > 0 && (taken.points >= PROGRAMME_POINTS || taken.references > MOST_REFERENCES)) {
      endtext();
      taken = more;
    }
    printing = 1;
    disass(stream, "", entry->meaning, 0, 1);
    printing = 0;
    writename(stream, *entry);
    if (++definitions == TEXT_DEFINITIONS) endtext();
  }
}

// A table may be on the chain more than once.
bool wasmet(const Context *chain, const Context *link) {
  while (chain != link && chain->table != link->table) chain = chain->previous;
  return chain != link;
}

}  // namespace

char splitsigil(const char *&name) {
  if ((name[0] != '$' && name[0] != '.' && name[0] != '_') || !isletter(name[1])) return 0;
  return *name++;
}

void list_symbols(Point *space, Entry *table, char sigil) {
  const std::size_t found = countlisted(table, sigil);
  if (found == 0) return;
  space->data_pointer = Reallocate(space->data_pointer, space->elements + found);
  TableWalk walk{table};
  while (const Entry *entry = nextentry(walk))
    if (islisted(*entry, sigil)) appendname(*space, writtenname(sigil, entry->name));
}

void remember(std::FILE *stream, const Context *chain) {
  for (const Context *link = chain; link; link = link->previous)
    if (link->table && !wasmet(chain, link)) remembertable(stream, link->table);
  std::fputs(".\n", stream);
}

}  // namespace morvik
