// Numbers are built from components: a sign and digits, or a word. A form that breaks off in the middle falls back to
// the longest one that was complete: in 3i4j the quaternion fails, and the number is 3i4.
#include "frontend/numbers.h"

#include "frontend/window.h"

using namespace window;

namespace {

// Where a component ends, 0 for none.
struct Component {
  std::size_t end;
  bool integral;  // digits, and an exponent without a minus at most
};

constexpr Component NOCOMPONENT = {0, false};

// A point counts only with a digit after it, an exponent likewise.
Component decimals(std::size_t at) {
  std::size_t end = pass(at, DIGIT);
  bool integral = end > at;
  if (peek(end) == '.' && is(peek(end + 1), DIGIT)) {
    end = pass(end + 1, DIGIT);
    integral = false;
  }
  if (end == at) return NOCOMPONENT;
  const int letter = peek(end);
  if (letter != 'E' && letter != 'e') return {end, integral};
  std::size_t exponent = end + 1;
  const int sign = peek(exponent);
  if (sign == '+' || is(sign, MINUS)) ++exponent;
  if (!is(peek(exponent), DIGIT)) return {end, integral};
  return {pass(exponent, DIGIT), integral && !is(sign, MINUS)};
}

Component component(std::size_t at) {
  const bool minus = is(peek(at), MINUS);
  if (minus) ++at;
  switch (peek(at)) {
    case 'I':
      if (!matchbytes(at, "Inf")) return NOCOMPONENT;
      return {matchbytes(at + 3, "inity") ? at + 8 : at + 3, false};
    case 'i':
      return matchbytes(at, "inf") ? Component{at + 3, false} : NOCOMPONENT;
    case 'N':
      return !minus && matchbytes(at, "NaN") ? Component{at + 3, false} : NOCOMPONENT;
    case 'n':
      return !minus && matchbytes(at, "nan") ? Component{at + 3, false} : NOCOMPONENT;
    default:
      return decimals(at);
  }
}

enum Family : std::uint8_t { CARTESIANLETTERS = 1, POLARLETTERS = 2 };

// Sets the families that the prefix leaves open; returns its length.
std::size_t prefix(unsigned &families) {
  families = CARTESIANLETTERS | POLARLETTERS;
  const int first = peek(0);
  if (first == 'r') return 1;
  if (first == '#')
    families = CARTESIANLETTERS;
  else if (first == 'd')
    families = POLARLETTERS;
  else
    return 0;
  return peek(1) == 'r' ? 2 : 1;
}

// The form that has this as its highest letter.
Rule formof(int letter) {
  if (letter == 'i') return Rule::COMPLEX;
  if (letter <= 'k') return Rule::QUATERNION;
  if (letter <= 'o') return Rule::OCTONION;
  if (letter == 'p') return Rule::POLARCOMPLEX;
  return letter <= 'r' ? Rule::POLARQUATERNION : Rule::POLAROCTONION;
}

bool isletterof(int letter, unsigned families) {
  return letter >= 'i' && letter <= 'v' && (families & (letter <= 'o' ? CARTESIANLETTERS : POLARLETTERS)) != 0;
}

}  // namespace

bool matchbytes(std::size_t at, const char *word) {
  for (; *word; ++word, ++at)
    if (peek(at) != static_cast<unsigned char>(*word)) return false;
  return true;
}

std::size_t matchcount(std::size_t at) {
  if (is(peek(at), MINUS)) ++at;
  const std::size_t end = pass(at, DIGIT);
  return end > at ? end : 0;
}

Match matchbinary() {
  if (peek(0) != '0' || peek(1) != '#') return {0, Rule::BINARYNUMBER};
  const std::size_t end = pass(2, BINARYDIGIT);
  return {end > 2 ? end : 0, Rule::BINARYNUMBER};
}

Match matchbinarycharacter() {
  if (!matchbytes(0, "`0#")) return {0, Rule::BINARYCHARACTER};
  const std::size_t end = pass(3, BINARYDIGIT);
  return {end > 3 && peek(end) == '`' ? end + 1 : 0, Rule::BINARYCHARACTER};
}

Match matchnumber() {
  unsigned families;
  const std::size_t begin = prefix(families);
  Component part = component(begin);
  if (part.end == 0) return {0, Rule::REAL};
  // A prefix asks for a letter.
  Match best = {begin == 0 ? part.end : 0, part.integral ? Rule::INTEGER : Rule::REAL};
  for (int last = 'i' - 1;;) {
    const int letter = peek(part.end);
    if (letter <= last || !isletterof(letter, families)) return best;
    part = component(part.end + 1);
    if (part.end == 0) return best;
    best = {part.end, formof(letter)};
    families = letter <= 'o' ? CARTESIANLETTERS : POLARLETTERS;
    last = letter;
  }
}
