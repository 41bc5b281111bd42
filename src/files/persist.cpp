// The text forms on disk: what every writing and reading instruction shares.
#include "files/persist.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>

#include "failure/custody.h"
#include "failure/jump.h"
#include "failure/signals.h"
#include "spaces/blocks.h"
#include "spaces/making.h"
#include "spaces/point.h"
#include "text/text.h"

namespace morvik {

namespace {

constexpr std::size_t FEWEST_RECORDS = 16;
constexpr std::size_t READ_BYTES = 16384;  // bytes between two safe points
constexpr int SAFEPOINT_MS = 50;

void releasecharacters(Custody &c) {
  release(static_cast<Characters *>(c.held)->records);
}

void reservecharacters(Characters &characters, std::size_t capacity) {
  if (capacity > MOST_ELEMENTS) outofstorage();
  characters.records = Reallocate(characters.records, capacity);
  characters.capacity = capacity;
}

// What the file says that it holds; not binding, since it may grow, and devices say nothing.
std::size_t expectedsize(int descriptor) {
  struct stat status {};
  if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) return 0;
  return static_cast<std::size_t>(status.st_size);
}

// Waits for bytes, or for the end of the file, with safe points meanwhile.
void awaitbytes(int descriptor) {
  pollfd waited{descriptor, POLLIN, 0};
  for (;;) {
    safepoint();
    const int ready = poll(&waited, 1, SAFEPOINT_MS);
    if (ready > 0 || (ready < 0 && errno != EINTR)) return;
  }
}

}  // namespace

void writevalue(std::FILE *stream, Point *value, Form form) {
  printing = 1;
  disass(stream, "", value, 0, form == Form::SOURCE);
  printing = 0;
}

void begincharacters(Characters &characters, std::size_t expected) {
  characters.records = nullptr;
  characters.count = characters.capacity = 0;
  takecustody(characters.custody, releasecharacters, &characters);
  if (expected > 0) reservecharacters(characters, expected);
}

void appendcharacters(Characters &characters, const char *bytes, std::size_t count) {
  const std::size_t needed = characters.count + count;
  if (needed > characters.capacity)
    reservecharacters(characters, std::max({needed, std::min(2 * characters.capacity, MOST_ELEMENTS), FEWEST_RECORDS}));
  Element *record = characters.records + characters.count;
  for (std::size_t i = 0; i < count; ++i, ++record) {
    *record = {};
    record->tag = tags::ASCII;
    record->ascii = static_cast<std::uint8_t>(bytes[i]);
  }
  characters.count = needed;
}

Point endcharacters(Characters &characters) {
  if (characters.count > 0 && characters.count < characters.capacity) reservecharacters(characters, characters.count);
  Point space{};
  if (characters.count == 0) {
    makeempty(space);
    space.type = EMPTY_VECTOR | HASASCII;
    space.depth = 1;
  } else if (characters.count == 1) {
    space.type = ISSCALAR | HASASCII;
  } else {
    space.shape_pointer = newshape(static_cast<std::int64_t>(characters.count));
    space.rank = ranks::VECTOR;
    space.type = ISVECTOR | HASASCII;
    space.depth = 1;
  }
  endcustody(characters.custody);
  space.elements = static_cast<std::uint32_t>(characters.count);
  if (characters.count > 0)
    space.data_pointer = characters.records;
  else
    release(characters.records);
  return space;
}

Point readcharacters(std::FILE *stream) {
  const int descriptor = fileno(stream);
  Characters characters;
  begincharacters(characters, expectedsize(descriptor));
  char bytes[READ_BYTES];
  for (;;) {
    awaitbytes(descriptor);
    const ssize_t count = read(descriptor, bytes, sizeof bytes);
    if (count > 0) appendcharacters(characters, bytes, static_cast<std::size_t>(count));
    if (count == 0 || (count < 0 && errno != EINTR)) return endcharacters(characters);
  }
}

}  // namespace morvik
