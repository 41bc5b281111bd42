// Names as they must be written to be read back. Most stand as they are; those that came from between brackets may hold
// any byte, or look like something else.
#include <cstring>

#include "diagnostics/printer.h"

namespace printer {

namespace {

constexpr char BRACKETOPEN = 2, BRACKETCLOSE = 3;

// What a name cannot hold after its first byte; after @ it may hold a !.
constexpr char STOPS[] = "\t\n\r .;\"()|!", ADDRESS_STOPS[] = "\t\n\r .;\"()|";

// Words that are no keywords, so that no meaning takes their place.
constexpr const char *RESERVED[] = {
#define CONSTANT(tag, form, bits, sign, ...) __VA_ARGS__,
#include "frontend/constants.def"
#undef CONSTANT
    "NEADIC", "FUNCTION", "NILADIC", "MONADIC", "DYADIC", "TRIADIC", "END", "FUNCTIONEND"};

// They are complete as they stand, whatever follows.
constexpr const char *COMPLETE[] = {"Inf", "inf", "NaN", "nan", "RANDOMISE"};

bool isdigit(char byte) {
  return byte >= '0' && byte <= '9';
}
bool isletter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
}

bool isidentifier(const char *name) {
  if (!isletter(*name)) return false;
  while (isletter(*name) || isdigit(*name)) ++name;
  return *name == 0;
}

bool hasletter(const char *name) {
  for (; *name; ++name)
    if (isletter(*name) || isdigit(*name)) return true;
  return false;
}

bool isreserved(const char *name) {
  for (const char *word : RESERVED)
    if (std::strcmp(name, word) == 0) return true;
  for (const char *word : COMPLETE)
    if (std::strncmp(name, word, std::strlen(word)) == 0) return true;
  return false;
}

const char *passdigits(const char *at) {
  if (*at == '-') ++at;
  while (isdigit(*at)) ++at;
  return at;
}

// d3p90, #r1i2 and their like.
bool isprefixednumber(const char *name) {
  const char *at = name;
  if (*at == '#' || *at == 'd') ++at;
  if (*at == 'r') ++at;
  const char *part = passdigits(at);
  if (at == name || part == at || !isdigit(part[-1])) return false;
  const char *end = passdigits(part + (*part >= 'i' && *part <= 'v'));
  return end > part + 1 && isdigit(end[-1]);
}

bool unscannablestart(const char *name) {
  if (std::strchr("\t\n\r .\2", *name)) return true;
  if (std::strchr("_$%", *name) && isletter(name[1])) return true;
  return *name == '&' && (isdigit(name[1]) || name[1] == '-');
}

// A keyword that was bound as a name is written as a keyword; only an address is a name whatever it spells.
bool unscannable(const char *name, bool address) {
  if (*name == 0) return false;
  if (std::strpbrk(name + 1, address ? ADDRESS_STOPS : STOPS)) return address || hasletter(name);
  if (unscannablestart(name)) return true;
  if (address) return false;
  if (*name == '\xBC' || isdigit(*name) || isreserved(name) || isprefixednumber(name)) return true;
  return name[1] != 0 && std::strchr("+-*/|^v!:;\"'(@", *name) && hasletter(name);
}

}  // namespace

void putname(const char *name, char sigil, bool address, bool source) {
  if (sigil != 0) put(sigil);
  if (!source || !(sigil != 0 ? !isidentifier(name) : unscannable(name, address))) return put(name);
  put(BRACKETOPEN);
  put(name);
  put(BRACKETCLOSE);
}

}  // namespace printer
