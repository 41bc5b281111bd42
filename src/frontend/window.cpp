// The window's growth and its source. A token of any length is held whole; the window that a long one made is given
// back when the bytes left over fit the first one again.
#include "frontend/window.h"

#include <cerrno>
#include <cstring>

#include "failure/signals.h"
#include "frontend/tokens.h"
#include "spaces/blocks.h"

namespace morvik {

namespace window {

namespace {

// Two runs, so that the bytes left over seldom have to be moved.
constexpr std::size_t FIRST_CAPACITY = 2 * LONGEST_RUN;
// A text that ends in peace leaves a byte or two that were looked at; more than this belong to a token that failed.
constexpr std::size_t LONGEST_RETURN = 16;

char firstwindow[FIRST_CAPACITY + 1];

// The stream has no byte at hand: its end, or a read that a signal broke off.
[[gnu::cold, gnu::noinline]] int readagain(std::FILE *stream) {
  int byte = EOF;
  while (byte == EOF && ferror_unlocked(stream) && errno == EINTR) {
    clearerr_unlocked(stream);
    safepoint();
    byte = getc_unlocked(stream);
  }
  return byte;
}

inline int readbyte(std::FILE *stream) {
  const int byte = getc_unlocked(stream);
  return byte != EOF ? byte : readagain(stream);
}

// The byte if it is one of a text; else EOF, and the source has ended.
inline int ofatext(int byte) {
  if (byte > 0) [[likely]]
    return byte;
  state.ended = byte == 0 ? Ended::BY_NUL : Ended::BY_END;
  return EOF;
}

inline int takefrom(const char *&string) {
  const int byte = static_cast<unsigned char>(*string);
  if (byte != 0) ++string;
  return ofatext(byte);
}
inline int takefrom(std::FILE *stream) {
  return ofatext(readbyte(stream));
}

// The next byte of the source, EOF from its end on.
inline int takebyte() {
  if (state.ended != Ended::NOT) return EOF;
  return state.string ? takefrom(state.string) : takefrom(state.stream);
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

// Takes bytes that belong to the run, as many as come, fit and are asked for, and counts them in `at`; from a stream
// also the first other one. Has it been found?
template <typename Belongs>
inline bool takerun(std::size_t &at, std::size_t most, Belongs belongs) {
  if (state.ended != Ended::NOT) return false;
  const std::size_t room = state.capacity - state.filled;
  char *const first = state.bytes + state.filled, *const end = first + (room < most ? room : most);
  char *place = first;
  bool other = false;
  if (state.string) {
    const char *from = state.string;
    while (place < end && belongs(static_cast<unsigned char>(*from))) *place++ = *from++;
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
      other = !belongs(byte);
      if (other) break;
    }
  }
  const auto taken = static_cast<std::size_t>(place - first);
  state.filled += taken;
  at += taken - (other ? 1 : 0);
  return other;
}

// Each byte that belongs is asked once.
template <typename Belongs>
inline std::size_t passrun(std::size_t at, std::size_t limit, Belongs belongs) {
  for (;;) {
    const std::size_t there = state.filled - state.token, stop = there < limit ? there : limit;
    const char *bytes = state.bytes + state.token;
    while (at < stop && belongs(static_cast<unsigned char>(bytes[at]))) ++at;
    if (at < stop || at == limit) return at;
    if (takerun(at, limit - at, belongs) || at == limit || fetch() == EOF) return at;
  }
}

// Longer numbers go the long way; a double written with all its digits, but without an exponent, seldom is.
constexpr std::ptrdiff_t LONGEST_PLAIN = 40;

// What scanplain does, over the bytes that `next` gives: EOF once the input has ended, and nobody asks again. Returns
// the number's length, 0 for none. What is looked at stands in the window, where scan meets it if it is no plain
// number.
template <typename Next>
inline std::size_t readplain(Decimal &decimal, Next next) {
  char *const text = state.bytes, *place = text;
  int byte = state.token < state.filled ? static_cast<unsigned char>(state.bytes[state.token]) : next();
  while (is(byte, WHITE)) byte = next();
  *place = static_cast<char>(byte);
  const auto advance = [&] {
    byte = next();
    *++place = static_cast<char>(byte);
  };
  std::uint64_t sum = 0;
  const auto digits = [&] {
    const char *const begin = place;
    for (unsigned digit; (digit = static_cast<unsigned>(byte) - '0') <= 9 && place - text < LONGEST_PLAIN; advance())
      sum = 10 * sum + digit;
    return static_cast<int>(place - begin);
  };
  const bool minus = is(byte, MINUS);
  if (minus) advance();
  const int whole = digits();
  const bool point = byte == '.';
  if (point) advance();
  const int decimals = point ? digits() : 0;
  const auto length = static_cast<std::size_t>(place - text);
  const bool plain = whole > 0 && point == (decimals > 0) && is(byte, WHITE);
  if (plain) *place = 0;
  state.token = 0;
  state.filled = plain ? 0 : length + (byte != EOF ? 1 : 0);
  decimal = {sum, static_cast<std::int16_t>(-decimals), minus, whole + decimals <= MOST_DIGITS};
  return plain ? length : 0;
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
  return passrun(at, limit, [classes](int byte) { return is(byte, classes); });
}

std::size_t passdigits(std::size_t at, std::uint64_t &number) {
  std::uint64_t sum = number;
  const std::size_t end = passrun(at, SIZE_MAX, [&sum](int byte) {
    const unsigned digit = static_cast<unsigned>(byte) - '0';
    if (digit > 9) return false;
    sum = 10 * sum + digit;
    return true;
  });
  number = sum;
  return end;
}

int skip(std::uint16_t classes) {
  for (; state.token < state.filled; ++state.token) {
    const int byte = static_cast<unsigned char>(state.bytes[state.token]);
    if (!is(byte, classes)) return byte;
  }
  state.token = 0;
  int byte = takebyte();
  while (is(byte, classes)) byte = takebyte();
  state.filled = byte != EOF ? 1 : 0;
  state.bytes[0] = static_cast<char>(byte);
  return byte;
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

bool scanbegun() {
  return state.filled > state.token;
}

bool scanplain(Token &token) {
  static Decimal decimal;
  window::begin();
  if (state.ended != Ended::NOT || state.filled - state.token > 1) return false;
  const std::size_t length =
      state.string ? window::readplain(decimal, [] { return window::takefrom(state.string); })
                   : window::readplain(decimal, [stream = state.stream] { return window::takefrom(stream); });
  if (length == 0) return false;
  token = {decimal.exponent == 0 ? Rule::INTEGER : Rule::REAL, 0, state.bytes, length, &decimal};
  return true;
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

}  // namespace morvik
