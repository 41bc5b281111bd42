// The text forms on disk: values written as source or as plain text, and bytes read back as characters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "failure/custody.h"
#include "spaces/point.h"

namespace morvik {

// How a value is written: as people read it, or as the scanner reads it back.
enum class Form : std::uint8_t { PLAIN, SOURCE };

// Writes a value with nothing before or after it, printing being set meanwhile. Printing may retag the value.
void writevalue(std::FILE *stream, Point *value, Form form);

// A character space that is being read, in custody until it is ended.
struct Characters {
  Custody custody;
  Element *records;
  std::size_t count, capacity;
};
// Ready for so many characters, and for more. Message 27.
void begincharacters(Characters &characters, std::size_t expected);
// Appends some bytes. Message 27, also where they are more than a space can count.
void appendcharacters(Characters &characters, const char *bytes, std::size_t count);
// The space: a scalar of one character, a vector of more, the empty vector of none. Owned by the caller. Message 27.
Point endcharacters(Characters &characters);

// All the bytes of a file that was just opened, as such a space. Takes an interrupt meanwhile, by a jump. Message 27.
Point readcharacters(std::FILE *stream);

}  // namespace morvik
