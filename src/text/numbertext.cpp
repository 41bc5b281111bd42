// Numbers as text: integers, truths and bits, reals, and the hypercomplex numbers in their two coordinate systems.
#include "text/numbertext.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <numbers>

#include "spaces/hypercomplex.h"
#include "spaces/parts.h"
#include "text/printer.h"

namespace morvik {

namespace printer {

namespace {

// So that a form-4 integer is not read back as a character, which has up to eight.
constexpr int FEWEST_BITS = 9;

struct PrintedParts {
  double part[MOST_PARTS];
  int count;
};

// The highest part that is written: zeros after it are dropped.
int lastpart(const PrintedParts &parts, bool polar) {
  const int fewest = polar ? 1 : 0;  // Kept: 1i0 is 1, but a polar number shows its first angle
  int last = parts.count - 1;
  while (last > fewest && parts.part[last] == 0) --last;
  return last;
}

// Do the written angles lead back to the components? Those of a quaternion do so only at length 1, what is next to
// nothing beside 1 has none, and dropped zeros make a number of another kind, whose angles mean something else.
bool roundtrips(const PrintedParts &polar, const PrintedParts &cartesian) {
  constexpr double ROUNDING = 1e-12;
  double back[MOST_PARTS] = {};
  std::copy_n(polar.part, polar.count, back);
  tocartesian(back, partsof(tagholding(lastpart(polar, true) + 1)));
  for (int k = 0; k < cartesian.count; ++k)
    if (!(std::fabs(back[k] - cartesian.part[k]) <= ROUNDING * polar.part[0])) return false;
  return true;
}

void todegrees(PrintedParts &parts) {
  for (int k = 1; k < parts.count; ++k) parts.part[k] = parts.part[k] / std::numbers::pi * HALF_TURN;
}

// The parts as they are to be written: are they polar ones? A text that is to be read back shows the components where
// the angles would lead elsewhere.
bool aspolar(PrintedParts &parts, const Element &e, bool source) {
  if (e.form != forms::POLAR) return false;
  PrintedParts polar = parts;
  topolar(polar.part, polar.count);
  if (source && !roundtrips(polar, parts)) return false;
  if ((e.attributes & attributes::DEGREES) != 0) todegrees(polar);
  parts = polar;
  return true;
}

// A part of a number that is to be read back. printf's own words hold letters that the reader takes for those between
// the parts.
char *spellpart(char *at, double value, bool source) {
  if (!source) return spell(at, value, DISPLAY_DIGITS);
  if (std::isfinite(value)) return spell(at, value, SOURCE_DIGITS);
  const char *text = std::isnan(value) ? "NaN" : value < 0 ? "-Inf" : "Inf";
  return std::copy(text, text + std::strlen(text), at);
}

void puthypercomplex(const Element &e, bool source) {
  PrintedParts parts;
  parts.count = readparts(e, parts.part);
  const bool polar = aspolar(parts, e, source);
  const int last = lastpart(parts, polar);
  char *at = reservebytes(ELEMENT_BYTES);
  *at++ = ' ';
  if (last == 0) return endbytes(spell(at, parts.part[0], source ? SOURCE_DIGITS : DISPLAY_DIGITS));
  if (polar && (e.attributes & attributes::DEGREES) != 0) *at++ = 'd';
  if (!polar && source && e.form == forms::NUMBER) *at++ = '#';
  if ((e.attributes & attributes::PREFIX_R) != 0) *at++ = 'r';
  const char *letters = polar ? "pqrstuv" : "ijklmno";
  at = spellpart(at, parts.part[0], source);
  for (int k = 1; k <= last; ++k) {
    *at++ = letters[k - 1];
    at = spellpart(at, parts.part[k], source);
  }
  endbytes(at);
}

void putinteger(const Element &e) {
  char *at = reservebytes(ELEMENT_BYTES);
  *at++ = ' ';
  if (e.form == forms::BOOLEAN) {
    *at++ = e.integer != 0 ? 'T' : 'F';
  } else if (e.form == forms::BINARY) {
    *at++ = '0';
    *at++ = '#';
    at = spellbits(at, static_cast<std::uint64_t>(e.integer), FEWEST_BITS);
  } else {
    at = spell(at, e.integer);
  }
  endbytes(at);
}

void putreal(double value, bool source) {
  char *at = reservebytes(ELEMENT_BYTES);
  *at++ = ' ';
  endbytes(spell(at, value, source ? SOURCE_DIGITS : DISPLAY_DIGITS));
}

}  // namespace

char *spellbits(char *at, std::uint64_t value, int digits) {
  for (int bit = std::max(digits, static_cast<int>(std::bit_width(value))); bit-- > 0;)
    *at++ = (value >> bit & 1) != 0 ? '1' : '0';
  return at;
}

void putnumber(const Element &element, bool source) {
  if (element.tag == tags::INTEGER)
    putinteger(element);
  else if (element.tag == tags::REAL)
    putreal(element.real, source);
  else
    puthypercomplex(element, source);
}

}  // namespace printer

}  // namespace morvik
