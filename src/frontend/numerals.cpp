// Numbers are built from components: a sign and digits, or a word. A form that breaks off in the middle falls back to
// the longest one that was complete: in 3i4j the quaternion fails, and the number is 3i4.
#include "frontend/numerals.h"

#include "frontend/tokens.h"
#include "frontend/window.h"

namespace morvik {

using window::begintoken;
using window::BINARY_DIGIT;
using window::DIGIT;
using window::isinclass;
using window::MINUS;
using window::passbytes;
using window::passdigits;
using window::peekbyte;

namespace {

// Where a component ends, 0 for none.
struct Component {
  std::size_t end;
  bool integral;  // digits, and an exponent without a minus at most
};

constexpr Component NO_COMPONENT = {0, false};

constexpr std::size_t MOST_EXPONENT_DIGITS = 3;

// The exponent from its letter on. No digits: no exponent.
Component exponent(std::size_t at, bool integral, Decimal &decimal) {
  std::size_t begin = at + 1;
  const int sign = peekbyte(begin);
  if (sign == '+' || isinclass(sign, MINUS)) ++begin;
  if (!isinclass(peekbyte(begin), DIGIT)) return {at, integral};
  std::uint64_t power = 0;
  const std::size_t end = passdigits(begin, power);
  if (end - begin > MOST_EXPONENT_DIGITS)
    decimal.whole = false;
  else
    decimal.exponent = static_cast<std::int16_t>(isinclass(sign, MINUS) ? decimal.exponent - static_cast<int>(power)
                                                                        : decimal.exponent + static_cast<int>(power));
  return {end, integral && !isinclass(sign, MINUS)};
}

// A point counts only with a digit after it, an exponent likewise.
Component decimals(std::size_t at, Decimal &decimal) {
  decimal.digits = 0;
  std::size_t end = passdigits(at, decimal.digits), digits = end - at, decimals = 0;
  bool integral = digits > 0;
  if (peekbyte(end) == '.' && isinclass(peekbyte(end + 1), DIGIT)) {
    const std::size_t begin = end + 1;
    end = passdigits(begin, decimal.digits);
    decimals = end - begin;
    integral = false;
  }
  if (end == at) return NO_COMPONENT;
  decimal.whole = digits + decimals <= MOST_DIGITS;
  decimal.exponent = decimal.whole ? static_cast<std::int16_t>(-static_cast<int>(decimals)) : std::int16_t{0};
  const int letter = peekbyte(end);
  return letter == 'E' || letter == 'e' ? exponent(end, integral, decimal) : Component{end, integral};
}

Component component(std::size_t at, Decimal &decimal) {
  decimal.whole = false;
  decimal.minus = isinclass(peekbyte(at), MINUS);
  if (decimal.minus) ++at;
  switch (peekbyte(at)) {
    case 'I':
      if (!matchbytes(at, "Inf")) return NO_COMPONENT;
      return {matchbytes(at + 3, "inity") ? at + 8 : at + 3, false};
    case 'i':
      return matchbytes(at, "inf") ? Component{at + 3, false} : NO_COMPONENT;
    case 'N':
      return !decimal.minus && matchbytes(at, "NaN") ? Component{at + 3, false} : NO_COMPONENT;
    case 'n':
      return !decimal.minus && matchbytes(at, "nan") ? Component{at + 3, false} : NO_COMPONENT;
    default:
      return decimals(at, decimal);
  }
}

enum Family : std::uint8_t { CARTESIAN_LETTERS = 1, POLAR_LETTERS = 2 };

// Sets the families that the prefix leaves open; returns its length.
std::size_t prefix(unsigned &families) {
  families = CARTESIAN_LETTERS | POLAR_LETTERS;
  const int first = peekbyte(0);
  if (first == 'r') return 1;
  if (first == '#')
    families = CARTESIAN_LETTERS;
  else if (first == 'd')
    families = POLAR_LETTERS;
  else
    return 0;
  return peekbyte(1) == 'r' ? 2 : 1;
}

// The form that has this as its highest letter.
Rule formof(int letter) {
  if (letter == 'i') return Rule::COMPLEX;
  if (letter <= 'k') return Rule::QUATERNION;
  if (letter <= 'o') return Rule::OCTONION;
  if (letter == 'p') return Rule::POLAR_COMPLEX;
  return letter <= 'r' ? Rule::POLAR_QUATERNION : Rule::POLAR_OCTONION;
}

bool isletterof(int letter, unsigned families) {
  return letter >= 'i' && letter <= 'v' && (families & (letter <= 'o' ? CARTESIAN_LETTERS : POLAR_LETTERS)) != 0;
}

}  // namespace

bool matchbytes(std::size_t at, const char *word) {
  for (; *word; ++word, ++at)
    if (peekbyte(at) != static_cast<unsigned char>(*word)) return false;
  return true;
}

std::size_t matchcount(std::size_t at) {
  if (isinclass(peekbyte(at), MINUS)) ++at;
  const std::size_t end = passbytes(at, DIGIT);
  return end > at ? end : 0;
}

Match matchbinary() {
  if (peekbyte(0) != '0' || peekbyte(1) != '#') return {0, Rule::BINARY_NUMBER};
  const std::size_t end = passbytes(2, BINARY_DIGIT);
  return {end > 2 ? end : 0, Rule::BINARY_NUMBER};
}

Match matchbinarycharacter() {
  if (!matchbytes(0, "`0#")) return {0, Rule::BINARY_CHARACTER};
  const std::size_t end = passbytes(3, BINARY_DIGIT);
  return {end > 3 && peekbyte(end) == '`' ? end + 1 : 0, Rule::BINARY_CHARACTER};
}

Match matchnumber(Decimal &decimal) {
  unsigned families;
  const std::size_t begin = prefix(families);
  Component part = component(begin, decimal);
  if (part.end == 0) return {0, Rule::REAL};
  // A prefix asks for a letter.
  Match best = {begin == 0 ? part.end : 0, part.integral ? Rule::INTEGER : Rule::REAL};
  for (int last = 'i' - 1;;) {
    const int letter = peekbyte(part.end);
    if (letter <= last || !isletterof(letter, families)) return best;
    Decimal other;
    part = component(part.end + 1, other);
    if (part.end == 0) return best;
    best = {part.end, formof(letter)};
    families = letter <= 'o' ? CARTESIAN_LETTERS : POLAR_LETTERS;
    last = letter;
  }
}

}  // namespace morvik
