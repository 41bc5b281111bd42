// How text leaves the printer: one buffer that all levels of a print share, the spelling of numbers in it, and the
// parts that a print is made of. Main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "spaces/point.h"

namespace morvik {

namespace printer {

inline constexpr std::size_t BUFFER_BYTES = 16384;
// The longest element is an octonion: eight components of 24 bytes, their letters and a prefix.
inline constexpr std::size_t ELEMENT_BYTES = 256;
// Significant digits of the two forms.
inline constexpr int DISPLAY_DIGITS = 10, SOURCE_DIGITS = 17;
// Elements between two safe points.
inline constexpr std::uint32_t POLL_ELEMENTS = 4096;

struct Output {
  std::FILE *stream;
  std::size_t used;
  std::uint32_t unpolled;  // elements since the last safe point
  char bytes[BUFFER_BYTES];
};
extern Output output;

// Opens the buffer on a stream. What a print that a jump cut off left there is dropped.
void begin(std::FILE *stream);
// Hands to the stream what was put.
void flush();
// A safe point; an interrupt finds all in the stream that was put before it.
void poll();
// One safe point every POLL_ELEMENTS calls.
inline void countelement() {
  if (++output.unpolled >= POLL_ELEMENTS) poll();
}

// Where so many bytes can be written (at most BUFFER_BYTES); filled() says where they ended.
inline char *room(std::size_t bytes) {
  if (BUFFER_BYTES - output.used < bytes) flush();
  return output.bytes + output.used;
}
inline void filled(const char *end) {
  output.used = static_cast<std::size_t>(end - output.bytes);
}
inline void put(char byte) {
  *room(1) = byte;
  ++output.used;
}
void put(const char *text, std::size_t length);
void put(const char *text);  // zero-terminated
void indentation(int indent);

// Spelled as printf spells %ld and %.*lg, without the zero; at most 24 bytes. Return the end.
char *spell(char *at, std::int64_t value);
char *spell(char *at, double value, int digits);

}  // namespace printer

}  // namespace morvik
