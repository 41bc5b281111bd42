// Numbers, named constants and bit patterns. What the text of each may be is the scanner's affair; here it is known to
// be well-formed, but for what the bounded buffer cuts off a long one.
#include "frontend/literals.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <numbers>

#include "failure/exception.h"
#include "frontend/compiler.h"
#include "frontend/constants.h"
#include "frontend/tokens.h"
#include "spaces/blocks.h"
#include "spaces/characters.h"
#include "spaces/convert.h"
#include "spaces/hypercomplex.h"
#include "spaces/making.h"
#include "spaces/messages.h"
#include "spaces/parts.h"

namespace morvik {

namespace {

constexpr std::size_t NUMBER_BITS = 64, CHARACTER_BITS = 8;
constexpr std::size_t BINARY_PREFIX = 2;  // 0#

Element makeelement(std::int32_t tag, std::uint16_t form) {
  Element element{};
  element.tag = tag;
  element.form = form;
  return element;
}

// The powers of 10 that a double holds exactly.
constexpr double POWERS_OF_TEN[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                    1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr int HIGHEST_POWER = static_cast<int>(std::size(POWERS_OF_TEN)) - 1;
constexpr std::uint64_t EXACT_DIGITS = std::uint64_t{1} << 53;  // integers up to here are doubles

// One operation on two numbers that are exact rounds as it must. All others need the text.
bool readexact(const Decimal &decimal, double &value) {
  if (!decimal.whole || decimal.digits > EXACT_DIGITS) return false;
  if (decimal.exponent < -HIGHEST_POWER || decimal.exponent > HIGHEST_POWER) return false;
  const auto digits = static_cast<double>(decimal.digits);
  value = decimal.exponent < 0 ? digits / POWERS_OF_TEN[-decimal.exponent] : digits * POWERS_OF_TEN[decimal.exponent];
  if (decimal.minus) value = -value;
  return true;
}

double readvalue(const Token &token) {
  double value;
  if (readexact(*token.decimal, value)) [[likely]]
    return value;
  const char *after;
  fixsign(token.text, token.length);
  return readdouble(token.text, &after);
}

void setreal(Element &element, double value) {
  element = {};
  element.tag = tags::REAL;
  element.form = forms::NUMBER;
  element.real = value;
}

void readinteger(const Token &token, Element &element) {
  const Decimal &decimal = *token.decimal;
  if (decimal.whole && decimal.exponent == 0 && decimal.digits <= EXACT_DIGITS) [[likely]] {
    const auto digits = static_cast<std::int64_t>(decimal.digits);
    setinteger(element, decimal.minus ? -digits : digits);
    return;
  }
  const double value = readvalue(token);
  if (std::fabs(value) <= INTEGER_BOUND)
    setinteger(element, saturate(value));
  else
    setreal(element, value);
}

// The token as far as the buffer holds it.
char *boundedtoken(const char *text, std::size_t length) {
  const std::size_t kept = std::min(length, TOKEN_BYTES - 1);
  std::memcpy(compiler.q, text, kept);
  compiler.q[kept] = 0;
  return compiler.q;
}

// A number of several parts, each but the first behind its letter; those that are missing are 0.
struct LiteralParts {
  double part[MOST_PARTS];
  unsigned found;  // bit i: part i
};

LiteralParts parseparts(const char *text, const char *letters) {
  LiteralParts parts = {};
  for (std::size_t i = 0;;) {
    parts.part[i] = readdouble(text, &text);
    parts.found |= 1U << i;
    const char *letter = *text != 0 ? std::strchr(letters, *text) : nullptr;
    if (!letter) return parts;
    i = static_cast<std::size_t>(letter - letters) + 1;
    ++text;
  }
}

// The kind that a rule is about. `first` is that of the complex numbers; those of the others follow in the order of the
// tags.
constexpr std::int32_t tagofrule(Rule rule, Rule first) {
  return tags::COMPLEX + static_cast<std::int32_t>(rule) - static_cast<std::int32_t>(first);
}
static_assert(tagofrule(Rule::OCTONION, Rule::COMPLEX) == tags::OCTONION &&
              tagofrule(Rule::POLAR_OCTONION, Rule::POLAR_COMPLEX) == tags::OCTONION);

// Only what the buffer cut off can be missing.
bool isquaternion(const LiteralParts &parts, const char *text) {
  constexpr unsigned I = 1U << 1, J = 1U << 2, K = 1U << 3;
  if ((parts.found & (J | K)) != 0) return true;
  std::fprintf(
      stderr,
      (parts.found & I) == 0 ? "[Trelk] error in QUATERNION text: [%s]\n" : "[lexnum] error in QUATERNION: [%s]\n",
      text);
  return false;
}

Element readcartesian(Rule rule, char *token, std::size_t length) {
  fixsign(token, length);
  const char *text = boundedtoken(token, length);
  Element element = makeelement(tags::FILLER, forms::CARTESIAN);
  if (*text == '#') {
    element.form = forms::NUMBER;
    ++text;
  }
  if (*text == 'r') {
    element.attributes = attributes::PREFIX_R;
    ++text;
  }
  LiteralParts parts = parseparts(text, "ijklmno");
  if (rule == Rule::QUATERNION && !isquaternion(parts, text)) parts = {};
  setnumber(element, tagofrule(rule, Rule::COMPLEX), parts.part);
  return element;
}

void toradians(LiteralParts &parts) {
  for (int i = 1; i < MOST_PARTS; ++i) parts.part[i] = parts.part[i] / HALF_TURN * std::numbers::pi;
}

Element readpolar(Rule rule, char *token, std::size_t length) {
  constexpr unsigned R_ANGLE = 1U << 3;
  fixsign(token, length);
  const char *text = boundedtoken(token, length);
  Element element = makeelement(tags::FILLER, forms::POLAR);
  const bool degrees = *text == 'd';
  if (degrees) {
    element.attributes = attributes::DEGREES;
    ++text;
  }
  const bool prefixed = *text == 'r';
  if (prefixed) {
    element.attributes |= attributes::PREFIX_R;
    ++text;
  }
  LiteralParts parts = parseparts(text, "pqrstuv");
  // Kept: the prefix is taken for the letter of the last angle of a quaternion that has none.
  if (rule == Rule::POLAR_QUATERNION && prefixed && (parts.found & R_ANGLE) == 0) parts.part[3] = parts.part[0];
  if (degrees) toradians(parts);
  const std::int32_t tag = tagofrule(rule, Rule::POLAR_COMPLEX);
  tocartesian(parts.part, partsof(tag));
  setnumber(element, tag, parts.part);
  return element;
}

// The first digits of a bit pattern, so many at most.
std::uint64_t readbits(const char *digits, std::size_t length, std::size_t most) {
  std::uint64_t bits = 0;
  for (std::size_t i = 0; i < std::min(length, most); ++i) bits = bits << 1 | (digits[i] == '1' ? 1 : 0);
  return bits;
}

// The value goes on; the message shows what is left of it.
void warn(std::int32_t number, Element element) {
  Point shown{};
  shown.type = ISSCALAR | kindbit(element.tag);
  shown.elements = 1;
  shown.data_pointer = &element;
  exception(number, &compiler.stackposition, &shown);
}

Element characterelement(std::uint64_t bits) {
  Element element = makeelement(tags::ASCII, forms::BINARY);
  element.ascii = static_cast<std::uint8_t>(bits);
  return element;
}

// Kept: in a vector literal the length is printed, and the element is a number however short it is.
Element readbinary(const char *token, std::size_t length, bool member) {
  const std::size_t written = length - BINARY_PREFIX;
  const char *text = boundedtoken(token, length) + BINARY_PREFIX;
  const char *digits = text + std::strspn(text, "0");
  const std::size_t count = std::strlen(digits);
  const std::uint64_t bits = readbits(digits, count, NUMBER_BITS);
  Element element = characterelement(bits);
  if (member || written > CHARACTER_BITS) {
    element = makeelement(tags::INTEGER, forms::BINARY);
    element.integer = static_cast<std::int64_t>(bits);
  }
  if (count > NUMBER_BITS) warn(messages::LONG_BINARY, element);
  if (member) std::printf("%d\n", static_cast<int>(written));
  return element;
}

Element readbinarycharacter(const char *token, std::size_t length) {
  constexpr std::size_t BACKQUOTES = 2;
  const std::size_t count = length - BINARY_PREFIX - BACKQUOTES;
  const Element element = characterelement(readbits(token + 1 + BINARY_PREFIX, count, CHARACTER_BITS));
  if (count > CHARACTER_BITS) warn(messages::LONG_BINARY_CHARACTER, element);
  return element;
}

Element readconstant(const Constant &constant, const char *text) {
  Element element = makeelement(constant.tag, constant.form);
  element.attributes = attributes::NAMED;
  element.name = elementname(text);
  element.integer = constant.bits;
  if (constant.tag == tags::REAL) {
    std::memcpy(&element.real, &constant.bits, sizeof element.real);
    if (*text == '-') element.real = -element.real;
  }
  return element;
}

}  // namespace

void fixsign(char *text, std::size_t length) {
  std::replace(text, text + length, HIGH_MINUS, '-');
}

double readdouble(const char *text, const char **after) {
  double value = 0;
  const std::from_chars_result result = std::from_chars(text, text + std::strlen(text), value);
  *after = result.ptr;
  if (result.ec == std::errc::result_out_of_range) value = std::strtod(text, nullptr);
  return value;
}

void readelement(const Token &token, bool member, Element &element) {
  switch (token.rule) {
    case Rule::INTEGER:
      readinteger(token, element);
      return;
    case Rule::REAL:
      setreal(element, readvalue(token));
      return;
    case Rule::COMPLEX:
    case Rule::QUATERNION:
    case Rule::OCTONION:
      element = readcartesian(token.rule, token.text, token.length);
      return;
    case Rule::POLAR_COMPLEX:
    case Rule::POLAR_QUATERNION:
    case Rule::POLAR_OCTONION:
      element = readpolar(token.rule, token.text, token.length);
      return;
    case Rule::BINARY_NUMBER:
      element = readbinary(token.text, token.length, member);
      return;
    case Rule::BINARY_CHARACTER:
      element = readbinarycharacter(token.text, token.length);
      return;
    default:
      element = readconstant(Constants[token.row], token.text);
      return;
  }
}

}  // namespace morvik
