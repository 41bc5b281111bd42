// Names as they must be written to be read back. Most are written as they are; those that came from between brackets
// may hold any byte, or look like something else.
#include "text/nametext.h"

#include <cstring>
#include <initializer_list>

#include "spaces/characters.h"
#include "text/numbertext.h"
#include "text/printer.h"

namespace morvik {

namespace printer {

namespace {

// What a name cannot hold after its first byte; after @ it may hold a !.
constexpr char NAME_STOPS[] = "\t\n\r .;\"()|!", ADDRESS_STOPS[] = "\t\n\r .;\"()|";

// Numbers that are words need nothing after them.
constexpr const char *NUMBER_WORDS[] = {"Infinity", "Inf", "inf", "NaN", "nan"};
constexpr const char *FUNCTION_OPENINGS[] = {"NEADIC", "FUNCTION", "NILADIC", "MONADIC", "DYADIC", "TRIADIC"};

// ---- The words of the language.

constexpr bool BOUNDED = true, FREE = false;
constexpr std::size_t MOST_WORDS = 800;  // the compiler reports an index past the end

struct Words {
  const char *spellings[MOST_WORDS];
  std::size_t count;
  bool first[256];  // does one begin with this byte?
};
constexpr void addwords(Words &words, std::initializer_list<const char *> spellings) {
  for (const char *spelling : spellings) {
    words.spellings[words.count++] = spelling;
    words.first[static_cast<unsigned char>(*spelling)] = true;
  }
}

// The keywords that are complete by themselves, or those that a boundary byte must follow.
constexpr Words makekeywords(bool bounded) {
  Words words = {};
#define KEYWORD(kind, boundary, instruction, modifier, mark, hidden, ...) \
  if (boundary == bounded) addwords(words, {__VA_ARGS__});
#include "tables/keywords.def"
#undef KEYWORD
  return words;
}
// The words that no meaning takes the place of. A boundary byte must follow them too.
constexpr Words makereserved() {
  Words words = {};
#define CONSTANT(tag, form, bits, sign, ...) addwords(words, {__VA_ARGS__});
#include "tables/constants.def"
#undef CONSTANT
  for (const char *opening : FUNCTION_OPENINGS) addwords(words, {opening});
  addwords(words, {"END", "FUNCTIONEND"});
  return words;
}
constexpr Words FREE_WORDS = makekeywords(FREE), BOUNDED_WORDS = makekeywords(BOUNDED), RESERVED = makereserved();

// ---- What a text begins with.

bool isdigit(char byte) {
  return byte >= '0' && byte <= '9';
}
bool isletter(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
}
bool isminus(char byte) {
  return byte == '-' || byte == HIGH_MINUS;
}

bool isidentifier(const char *name) {
  if (!isletter(*name)) return false;
  while (isletter(*name) || isdigit(*name)) ++name;
  return *name == 0;
}

// What follows the word, null where the text does not begin with it.
const char *textafter(const char *text, const char *word) {
  for (; *word != 0; ++word, ++text)
    if (*text != *word) return nullptr;
  return text;
}

bool isword(const Words &words, const char *name) {
  for (std::size_t i = 0; i < words.count; ++i)
    if (std::strcmp(name, words.spellings[i]) == 0) return true;
  return false;
}
// Is one of the words found at the beginning, before the name is over?
bool beginswithword(const Words &words, const char *name, bool bounded) {
  if (!words.first[static_cast<unsigned char>(*name)]) return false;
  for (std::size_t i = 0; i < words.count; ++i) {
    const char *rest = textafter(name, words.spellings[i]);
    if (rest && *rest != 0 && !(bounded && (isletter(*rest) || isdigit(*rest)))) return true;
  }
  return false;
}

const char *skipdigits(const char *at) {
  while (isdigit(*at)) ++at;
  return at;
}

// One part of a number without a point, which no name holds; null where there is none.
const char *skippart(const char *at) {
  const bool minus = isminus(*at);
  const char *digits = at + (minus ? 1 : 0), *end = skipdigits(digits);
  if (end == digits) {
    for (const char *word : NUMBER_WORDS)
      if (const char *rest = textafter(digits, word); rest && !(minus && (*word == 'N' || *word == 'n'))) return rest;
    return nullptr;
  }
  if (*end != 'E' && *end != 'e') return end;
  const char *exponent = end + 1;
  if (isminus(*exponent) || *exponent == '+') ++exponent;
  return isdigit(*exponent) ? skipdigits(exponent) : end;
}

// d3p90, #r1i2 and their like.
bool isprefixednumber(const char *name) {
  const char *at = name;
  const bool cartesian = *at == '#', degrees = *at == 'd';
  if (cartesian || degrees) ++at;
  if (*at == 'r') ++at;
  if (at == name || !(at = skippart(at))) return false;
  const char first = degrees ? 'p' : 'i', last = cartesian ? 'o' : 'v';
  return *at >= first && *at <= last && skippart(at + 1);
}

// ARGS3FUNCTION, VARS2ARGS-1FUNCTION and their like.
bool opensfunction(const char *name) {
  const char *at = textafter(name, "ARGS");
  if (!at) at = textafter(name, "VARS");
  if (!at) return false;
  if (isminus(*at)) ++at;
  if (!isdigit(*at)) return false;
  at = skipdigits(at);
  for (const char *opening : FUNCTION_OPENINGS)
    if (textafter(at, opening)) return true;
  return textafter(at, "ARGS") || textafter(at, "VARS");
}

// Does it begin as what has its own rules even after @?
bool beginsunscannably(const char *name) {
  if (std::strchr("\t\n\r .\2", *name)) return true;
  if (std::strchr("_$%", *name) && (isletter(name[1]) || name[1] == NAME_OPENS)) return true;
  return *name == '&' && (isdigit(name[1]) || isminus(name[1]));
}

// Does it begin as something else than a name or a keyword?
bool beginsothertoken(const char *name) {
  if (isdigit(*name) || std::strchr(":;'(@\xBC", *name) || (*name == '"' && name[1] != 0)) return true;
  if (textafter(name, "`0#") || (*name == HIGH_MINUS && skippart(name))) return true;
  for (const char *number : NUMBER_WORDS)
    if (textafter(name, number)) return true;
  return isword(RESERVED, name) || isprefixednumber(name) || opensfunction(name);
}

// Would the scanner take something else than the whole name for a token?
bool isreadotherwise(const char *name) {
  if (std::strpbrk(name + 1, NAME_STOPS) || beginsunscannably(name) || beginsothertoken(name)) return true;
  if (beginswithword(FREE_WORDS, name, FREE)) return true;
  return !isidentifier(name) &&
         (beginswithword(BOUNDED_WORDS, name, BOUNDED) || beginswithword(RESERVED, name, BOUNDED));
}

// A keyword that was bound as a name is written as a keyword; only an address is a name whatever it spells.
bool needsbrackets(const char *name, bool address) {
  if (*name == 0) return false;
  if (address) return std::strpbrk(name + 1, ADDRESS_STOPS) || beginsunscannably(name);
  return isreadotherwise(name) && !isword(FREE_WORDS, name) && !isword(BOUNDED_WORDS, name);
}

}  // namespace

void putname(const char *name, char sigil, bool address, bool source) {
  if (sigil != 0) put(sigil);
  if (!source || !(sigil != 0 ? !isidentifier(name) : needsbrackets(name, address))) return put(name);
  put(NAME_OPENS);
  put(name);
  put(NAME_CLOSES);
}

}  // namespace printer

}  // namespace morvik
