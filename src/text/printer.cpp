// The printer's buffer, and its spelling of numbers: that of printf, byte for byte, at a fraction of its cost.
#include "text/printer.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "failure/signals.h"

namespace morvik {

namespace printer {

Output output;

namespace {

constexpr int INDENT = 3;  // blanks a level
constexpr std::size_t LONGEST_NUMBER = 32;
// Below it a whole double has no more digits than %.10lg shows, and an integer spells it.
constexpr double PLAIN_WHOLE = 1e10;

}  // namespace

void beginprint(std::FILE *stream) {
  output.stream = stream;
  output.used = 0;
  output.unpolled = 0;
}

void flushprint() {
  if (output.used == 0) return;
  std::fwrite(output.bytes, 1, output.used, output.stream);
  output.used = 0;
}

void pollprint() {
  output.unpolled = 0;
  if (interrupted == 0) return;
  flushprint();
  safepoint();
}

void put(const char *text, std::size_t length) {
  while (length > 0) {
    if (output.used == BUFFER_BYTES) flushprint();
    const std::size_t part = std::min(length, BUFFER_BYTES - output.used);
    std::memcpy(output.bytes + output.used, text, part);
    output.used += part;
    text += part;
    length -= part;
  }
}

void put(const char *text) {
  put(text, std::strlen(text));
}

void indentation(int indent) {
  for (int i = 0; i < indent * INDENT; ++i) put(' ');
}

char *spell(char *at, std::int64_t value) {
  return std::to_chars(at, at + LONGEST_NUMBER, value).ptr;
}

char *spell(char *at, double value, int digits) {
  if (std::fabs(value) < PLAIN_WHOLE && value == std::trunc(value) && (value != 0 || !std::signbit(value)))
    return spell(at, static_cast<std::int64_t>(value));
  if (std::isnan(value)) return std::copy_n("nan", 3, at);  // its sign is an accident of the processor
  return std::to_chars(at, at + LONGEST_NUMBER, value, std::chars_format::general, digits).ptr;
}

}  // namespace printer

}  // namespace morvik
