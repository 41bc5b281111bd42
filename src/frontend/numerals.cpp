// Numbers are built from components: a sign and digits, or a word. A form that breaks off in the middle falls back to
// the longest one that was complete: in 3i4j the quaternion fails, and the number is 3i4.
#include "frontend/numerals.h"

#include "frontend/tokens.h"
#include "frontend/window.h"

namespace morvik {

using window::begin;
using window::BINARYDIGIT;
using window::DIGIT;
using window::is;
using window::MINUS;
using window::pass;
using window::passdigits;
using window::peek;

namespace {

// Where a component ends, 0 for none.
struct Component {
  std::size_t end;
  bool integral;  // digits, and an exponent without a minus at most
};

constexpr Component NOCOMPONENT = {0, false};

constexpr std::size_t MOST_EXPONENT_DIGITS = 3;

// The exponent from its letter on. No digits: no exponent.
Component exponent(std::size_t at, bool integral, Decimal &decimal) {
  std::size_t begin = at + 1;
  const int sign = peek(begin);
  if (sign == '+' || is(sign, MINUS)) ++begin;
  if (!is(peek(begin), DIGIT)) return {at, integral};
  std::uint64_t power = 0;
  const std::size_t end = passdigits(begin, power);
  if (end - begin > MOST_EXPONENT_DIGITS)
    decimal.whole = false;
  else
    decimal.exponent = static_cast<std::int16_t>(is(sign, MINUS) ? decimal.exponent - static_cast<int>(power)
                                                                 : decimal.exponent + static_cast<int>(power));
  return {end, integral && !is(sign, MINUS)};
}

// A point counts only with a digit after it, an exponent likewise.
Component decimals(std::size_t at, Decimal &decimal) {
  decimal.digits = 0;
  std::size_t end = passdigits(at, decimal.digits), digits = end - at, decimals = 0;
  bool integral = digits > 0;
  if (peek(end) == '.' && is(peek(end + 1), DIGIT)) {
    const std::size_t begin = end + 1;
    end = passdigits(begin, decimal.digits);
    decimals = end - begin;
    integral = false;
  }
  if (end == at) return NOCOMPONENT;
  decimal.whole = digits + decimals <= MOST_DIGITS;
  decimal.exponent = decimal.whole ? static_cast<std::int16_t>(-static_cast<int>(decimals)) : std::int16_t{0};
  const int letter = peek(end);
  return letter == 'E' || letter == 'e' ? exponent(end, integral, decimal) : Component{end, integral};
}

Component component(std::size_t at, Decimal &decimal) {
  decimal.whole = false;
  decimal.minus = is(peek(at), MINUS);
  if (decimal.minus) ++at;
  switch (peek(at)) {
    case 'I':
      if (!matchbytes(at, "Inf")) return NOCOMPONENT;
      return {matchbytes(at + 3, "inity") ? at + 8 : at + 3, false};
    case 'i':
      return matchbytes(at, "inf") ? Component{at + 3, false} : NOCOMPONENT;
    case 'N':
      return !decimal.minus && matchbytes(at, "NaN") ? Component{at + 3, false} : NOCOMPONENT;
    case 'n':
      return !decimal.minus && matchbytes(at, "nan") ? Component{at + 3, false} : NOCOMPONENT;
    default:
      return decimals(at, decimal);
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

Match matchnumber(Decimal &decimal) {
  unsigned families;
  const std::size_t begin = prefix(families);
  Component part = component(begin, decimal);
  if (part.end == 0) return {0, Rule::REAL};
  // A prefix asks for a letter.
  Match best = {begin == 0 ? part.end : 0, part.integral ? Rule::INTEGER : Rule::REAL};
  for (int last = 'i' - 1;;) {
    const int letter = peek(part.end);
    if (letter <= last || !isletterof(letter, families)) return best;
    Decimal other;
    part = component(part.end + 1, other);
    if (part.end == 0) return best;
    best = {part.end, formof(letter)};
    families = letter <= 'o' ? CARTESIANLETTERS : POLARLETTERS;
    last = letter;
  }
}

}  // namespace morvik
