// How text leaves the printer: one buffer that all levels of a print share, the spelling of numbers in it, and the
// parts that a print is made of. Main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "failure/signals.h"
#include "spaces/point.h"

namespace morvik {

namespace printer {

inline constexpr std::size_t BUFFER_BYTES = 16384;
// The longest element is an octonion: eight components of 24 bytes, their letters and a prefix.
inline constexpr std::size_t ELEMENT_BYTES = 256;
// Significant digits of the two forms.
inline constexpr int DISPLAY_DIGITS = 10, SOURCE_DIGITS = 17;

struct Output {
  std::FILE *stream;
  std::size_t used;
  std::uint32_t unpolled;  // elements since the last safe point
  char bytes[BUFFER_BYTES];
};
extern Output output;

// Opens the buffer on a stream. What a print that a jump cut off left there is dropped.
void beginprint(std::FILE *stream);
// Writes what was put to the stream.
void flushprint();
// A safe point; an interrupt finds all in the stream that was put before it.
void pollprint();
// One safe point every SLOW_POLL_INTERVAL calls.
inline void countelement() {
  if (++output.unpolled >= SLOW_POLL_INTERVAL) pollprint();
}

// Where so many bytes can be written (at most BUFFER_BYTES); endbytes() says where they ended.
inline char *reservebytes(std::size_t bytes) {
  if (BUFFER_BYTES - output.used < bytes) flushprint();
  return output.bytes + output.used;
}
inline void endbytes(const char *end) {
  output.used = static_cast<std::size_t>(end - output.bytes);
}
inline void put(char byte) {
  *reservebytes(1) = byte;
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
