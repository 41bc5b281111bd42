// The window's growth and its source. A token of any length is held whole; the window that a long one made is given
// back when the bytes left over fit the first one again.
#include "frontend/window.h"

#include <cerrno>
#include <cstring>

#include "frontend/scanner.h"
#include "spaces/blocks.h"

namespace window {

namespace {

// Two runs, so that the bytes left over seldom have to be moved.
constexpr std::size_t FIRST_CAPACITY = 2 * LONGEST_RUN;
// A text that ends in peace leaves a byte or two that were looked at; more than this belong to a token that failed.
constexpr std::size_t LONGEST_RETURN = 16;

char firstwindow[FIRST_CAPACITY + 1];

int readbyte(std::FILE *stream) {
  for (;;) {
    const int byte = getc_unlocked(stream);
    if (byte != EOF || !ferror_unlocked(stream) || errno != EINTR) [[likely]]
      return byte;
    clearerr_unlocked(stream);
  }
}

// The next byte of the source, EOF from its end on.
inline int takebyte() {
  if (state.ended != Ended::NOT) return EOF;
  int byte;
  if (state.string) {
    byte = static_cast<unsigned char>(*state.string);
    if (byte != 0) ++state.string;
  } else {
    byte = readbyte(state.stream);
  }
  if (byte > 0) [[likely]]
    return byte;
  state.ended = byte == 0 ? Ended::BY_NUL : Ended::BY_END;
  return EOF;
}

// Sets the pending bytes at this place of a window of this capacity.
void movewindow(char *bytes, std::size_t capacity, std::size_t place) {
  const std::size_t pending = state.filled - state.token;
  std::memmove(bytes + place, state.bytes + state.token, pending);
  if (bytes != state.bytes && state.bytes != firstwindow) release(state.bytes);
  state.bytes = bytes;
  state.capacity = capacity;
  state.token = place;
  state.filled = place + pending;
}

// A window of twice the size, with the pending bytes at this place.
void growwindow(std::size_t place) {
  const std::size_t capacity = 2 * state.capacity;
  char *bytes = static_cast<char *>(tryblock(capacity + 1));
  if (!bytes) outofstorage();
  movewindow(bytes, capacity, place);
}

// Room for one byte more behind the pending ones. What is moved is less than what was used since the last time.
void makeroom() {
  if (state.token >= state.capacity / 2)
    movewindow(state.bytes, state.capacity, 0);
  else
    growwindow(0);
}

// Takes bytes of these classes, as many as come, fit and are asked for; from a stream also the first other one.
void takerun(std::uint16_t classes, std::size_t most) {
  if (state.ended != Ended::NOT) return;
  const std::size_t room = state.capacity - state.filled;
  char *place = state.bytes + state.filled;
  char *const end = place + (room < most ? room : most);
  if (state.string) {
    const char *from = state.string;
    while (place < end && is(static_cast<unsigned char>(*from), classes)) *place++ = *from++;
    state.string = from;
  } else {
    std::FILE *const stream = state.stream;
    while (place < end) {
      const int byte = readbyte(stream);
      if (byte <= 0) {
        state.ended = byte == 0 ? Ended::BY_NUL : Ended::BY_END;
        break;
      }
      *place++ = static_cast<char>(byte);
      if (!is(byte, classes)) break;
    }
  }
  state.filled = static_cast<std::size_t>(place - state.bytes);
}

void restoreheld() {
  if (state.holding) state.bytes[state.zero] = state.held;
  state.holding = false;
}

}  // namespace

State state = {firstwindow, FIRST_CAPACITY, 0, 0, nullptr, nullptr, nullptr, Ended::BY_END, false, false, 0, 0};

int fetch() {
  if (state.filled == state.capacity) [[unlikely]]
    makeroom();
  const int byte = takebyte();
  if (byte != EOF) state.bytes[state.filled++] = static_cast<char>(byte);
  return byte;
}

std::size_t pass(std::size_t at, std::uint16_t classes, std::size_t limit) {
  for (;;) {
    const std::size_t there = state.filled - state.token, stop = there < limit ? there : limit;
    const char *bytes = state.bytes + state.token;
    while (at < stop && is(static_cast<unsigned char>(bytes[at]), classes)) ++at;
    if (at < stop || at == limit) return at;
    takerun(classes, limit - at);
    if (state.filled - state.token == at && fetch() == EOF) return at;
  }
}

void skip(std::uint16_t classes) {
  while (is(peek(0), classes)) dropbyte();
}

void begin() {
  restoreheld();
  if (state.bytes != firstwindow && state.filled - state.token <= FIRST_CAPACITY / 2)
    movewindow(firstwindow, FIRST_CAPACITY, 0);
  else if (state.token == state.filled)
    state.token = state.filled = 0;
}

char *take(std::size_t length) {
  char *text = state.bytes + state.token;
  state.token += length;
  state.zero = state.token;
  state.held = state.bytes[state.zero];
  state.bytes[state.zero] = 0;
  state.holding = true;
  return text;
}

}  // namespace window

using window::Ended;
using window::state;

void scanfrom(std::FILE *stream, const char *string) {
  state.token = state.filled;
  window::begin();
  state.namenext = false;
  state.stream = stream;
  state.string = state.beginning = string;
  state.ended = stream || string ? Ended::NOT : Ended::BY_END;
}

const char *scanposition() {
  if (!state.string) return nullptr;
  const std::size_t pending = state.filled - state.token;
  const std::size_t read = static_cast<std::size_t>(state.string - state.beginning);
  return state.string - (pending < read ? pending : read);
}

void scandone() {
  window::begin();
  state.string = scanposition();
  std::size_t pending = state.filled - state.token;
  if (!state.string && state.stream && pending <= window::LONGEST_RETURN) {
    if (state.ended == Ended::BY_NUL) std::ungetc(0, state.stream);
    while (pending > 0) std::ungetc(static_cast<unsigned char>(state.bytes[state.token + --pending]), state.stream);
  }
  state.token = state.filled;
  window::begin();
  state.stream = nullptr;
  state.ended = Ended::BY_END;
}

int input() {
  if (state.token < state.filled) {
    const std::size_t place = state.token++;
    return static_cast<unsigned char>(state.holding && place == state.zero ? state.held : state.bytes[place]);
  }
  const int byte = window::takebyte();
  if (byte == EOF) state.ended = Ended::BY_END;
  return byte;
}

void yyunput(int byte) {
  if (byte <= 0) return;
  window::restoreheld();
  if (state.token == 0) {
    // As much room ahead as there are bytes behind, so that giving back many takes time in proportion.
    const std::size_t room = state.capacity - state.filled;
    if (room < state.capacity / 4)
      window::growwindow(state.capacity / 2);
    else
      window::movewindow(state.bytes, state.capacity, room);
  }
  state.bytes[--state.token] = static_cast<char>(byte);
}

bool isboundary(int byte) {
  return byte > 0 && !window::is(byte, window::NAMEBYTE);
}
