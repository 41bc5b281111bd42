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
// A text that ends without a failure leaves a byte or two that were looked at; more than this belong to a token that
// failed.
constexpr std::size_t LONGEST_RETURN = 16;

char firstwindow[FIRST_CAPACITY + 1];

// The stream gave no byte: its end, or a read that a signal broke off.
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
inline int textbyte(int byte) {
  if (byte > 0) [[likely]]
    return byte;
  windowstate.ended = byte == 0 ? SourceEnd::BY_NUL : SourceEnd::BY_END;
  return EOF;
}

inline int takefrom(const char *&string) {
  const int byte = static_cast<unsigned char>(*string);
  if (byte != 0) ++string;
  return textbyte(byte);
}
inline int takefrom(std::FILE *stream) {
  return textbyte(readbyte(stream));
}

// The next byte of the source, EOF from its end on.
inline int takebyte() {
  if (windowstate.ended != SourceEnd::NOT) return EOF;
  return windowstate.string ? takefrom(windowstate.string) : takefrom(windowstate.stream);
}

// Sets the pending bytes at this place of a window of this capacity.
void movewindow(char *bytes, std::size_t capacity, std::size_t place) {
  const std::size_t pending = windowstate.filled - windowstate.token;
  std::memmove(bytes + place, windowstate.bytes + windowstate.token, pending);
  if (bytes != windowstate.bytes && windowstate.bytes != firstwindow) release(windowstate.bytes);
  windowstate.bytes = bytes;
  windowstate.capacity = capacity;
  windowstate.token = place;
  windowstate.filled = place + pending;
}

// A window of twice the size, with the pending bytes at this place.
void growwindow(std::size_t place) {
  const std::size_t capacity = 2 * windowstate.capacity;
  char *bytes = static_cast<char *>(tryblock(capacity + 1));
  if (!bytes) outofstorage();
  movewindow(bytes, capacity, place);
}

// Makes place for one byte more behind the pending ones. What is moved is less than what was used since the last time.
void growwindowifneeded() {
  if (windowstate.token >= windowstate.capacity / 2)
    movewindow(windowstate.bytes, windowstate.capacity, 0);
  else
    growwindow(0);
}

// Takes bytes that belong to the run, as many as come, fit and are asked for, and counts them in `at`; from a stream
// also the first other one. Has it been found?
template <typename Belongs>
inline bool takerun(std::size_t &at, std::size_t most, Belongs belongs) {
  if (windowstate.ended != SourceEnd::NOT) return false;
  const std::size_t unfilled = windowstate.capacity - windowstate.filled;
  char *const first = windowstate.bytes + windowstate.filled, *const end = first + (unfilled < most ? unfilled : most);
  char *place = first;
  bool other = false;
  if (windowstate.string) {
    const char *from = windowstate.string;
    while (place < end && belongs(static_cast<unsigned char>(*from))) *place++ = *from++;
    windowstate.string = from;
  } else {
    std::FILE *const stream = windowstate.stream;
    while (place < end) {
      const int byte = readbyte(stream);
      if (byte <= 0) {
        windowstate.ended = byte == 0 ? SourceEnd::BY_NUL : SourceEnd::BY_END;
        break;
      }
      *place++ = static_cast<char>(byte);
      other = !belongs(byte);
      if (other) break;
    }
  }
  const auto taken = static_cast<std::size_t>(place - first);
  windowstate.filled += taken;
  at += taken - (other ? 1 : 0);
  return other;
}

// Each byte that belongs is asked once.
template <typename Belongs>
inline std::size_t passrun(std::size_t at, std::size_t limit, Belongs belongs) {
  for (;;) {
    const std::size_t there = windowstate.filled - windowstate.token, stop = there < limit ? there : limit;
    const char *bytes = windowstate.bytes + windowstate.token;
    while (at < stop && belongs(static_cast<unsigned char>(bytes[at]))) ++at;
    if (at < stop || at == limit) return at;
    if (takerun(at, limit - at, belongs) || at == limit || fetchbyte() == EOF) return at;
  }
}

// Longer numbers take the slow path; a double written with all its digits, but without an exponent, seldom is.
constexpr std::ptrdiff_t LONGEST_PLAIN = 40;

// What scanplain does, over the bytes that `next` gives: EOF once the input has ended, and nobody asks again. Returns
// the number's length, 0 for none. What is looked at stays in the window, where scan meets it if it is no plain number.
template <typename Next>
inline std::size_t readplain(Decimal &decimal, Next next) {
  char *const text = windowstate.bytes, *place = text;
  int byte = windowstate.token < windowstate.filled ? static_cast<unsigned char>(windowstate.bytes[windowstate.token])
                                                    : next();
  while (isinclass(byte, WHITE)) byte = next();
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
  const bool minus = isinclass(byte, MINUS);
  if (minus) advance();
  const int whole = digits();
  const bool point = byte == '.';
  if (point) advance();
  const int decimals = point ? digits() : 0;
  const auto length = static_cast<std::size_t>(place - text);
  const bool plain = whole > 0 && point == (decimals > 0) && isinclass(byte, WHITE);
  if (plain) *place = 0;
  windowstate.token = 0;
  windowstate.filled = plain ? 0 : length + (byte != EOF ? 1 : 0);
  decimal = {sum, static_cast<std::int16_t>(-decimals), minus, whole + decimals <= MOST_DIGITS};
  return plain ? length : 0;
}

void restoreheld() {
  if (windowstate.holding) windowstate.bytes[windowstate.zero] = windowstate.held;
  windowstate.holding = false;
}

}  // namespace

WindowState windowstate = {firstwindow, FIRST_CAPACITY,    0,     0,     nullptr, nullptr,
                           nullptr,     SourceEnd::BY_END, false, false, 0,       0};

int fetchbyte() {
  if (windowstate.filled == windowstate.capacity) [[unlikely]]
    growwindowifneeded();
  const int byte = takebyte();
  if (byte != EOF) windowstate.bytes[windowstate.filled++] = static_cast<char>(byte);
  return byte;
}

std::size_t passbytes(std::size_t at, std::uint16_t classes, std::size_t limit) {
  return passrun(at, limit, [classes](int byte) { return isinclass(byte, classes); });
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

int skipbytes(std::uint16_t classes) {
  for (; windowstate.token < windowstate.filled; ++windowstate.token) {
    const int byte = static_cast<unsigned char>(windowstate.bytes[windowstate.token]);
    if (!isinclass(byte, classes)) return byte;
  }
  windowstate.token = 0;
  int byte = takebyte();
  while (isinclass(byte, classes)) byte = takebyte();
  windowstate.filled = byte != EOF ? 1 : 0;
  windowstate.bytes[0] = static_cast<char>(byte);
  return byte;
}

void begintoken() {
  restoreheld();
  if (windowstate.bytes != firstwindow && windowstate.filled - windowstate.token <= FIRST_CAPACITY / 2)
    movewindow(firstwindow, FIRST_CAPACITY, 0);
  else if (windowstate.token == windowstate.filled)
    windowstate.token = windowstate.filled = 0;
}

char *endtoken(std::size_t length) {
  char *text = windowstate.bytes + windowstate.token;
  windowstate.token += length;
  windowstate.zero = windowstate.token;
  windowstate.held = windowstate.bytes[windowstate.zero];
  windowstate.bytes[windowstate.zero] = 0;
  windowstate.holding = true;
  return text;
}

}  // namespace window

using window::SourceEnd;
using window::windowstate;

void scanfrom(std::FILE *stream, const char *string) {
  windowstate.token = windowstate.filled;
  window::begintoken();
  windowstate.namenext = false;
  windowstate.stream = stream;
  windowstate.string = windowstate.beginning = string;
  windowstate.ended = stream || string ? SourceEnd::NOT : SourceEnd::BY_END;
}

const char *scanposition() {
  if (!windowstate.string) return nullptr;
  const std::size_t pending = windowstate.filled - windowstate.token;
  const std::size_t read = static_cast<std::size_t>(windowstate.string - windowstate.beginning);
  return windowstate.string - (pending < read ? pending : read);
}

bool scanbegun() {
  return windowstate.filled > windowstate.token;
}

bool scanplain(Token &token) {
  static Decimal decimal;
  window::begintoken();
  if (windowstate.ended != SourceEnd::NOT || windowstate.filled - windowstate.token > 1) return false;
  const std::size_t length =
      windowstate.string
          ? window::readplain(decimal, [] { return window::takefrom(windowstate.string); })
          : window::readplain(decimal, [stream = windowstate.stream] { return window::takefrom(stream); });
  if (length == 0) return false;
  token = {decimal.exponent == 0 ? Rule::INTEGER : Rule::REAL, 0, windowstate.bytes, length, &decimal};
  return true;
}

void scandone() {
  window::begintoken();
  windowstate.string = scanposition();
  std::size_t pending = windowstate.filled - windowstate.token;
  if (!windowstate.string && windowstate.stream && pending <= window::LONGEST_RETURN) {
    if (windowstate.ended == SourceEnd::BY_NUL) std::ungetc(0, windowstate.stream);
    while (pending > 0)
      std::ungetc(static_cast<unsigned char>(windowstate.bytes[windowstate.token + --pending]), windowstate.stream);
  }
  windowstate.token = windowstate.filled;
  window::begintoken();
  windowstate.stream = nullptr;
  windowstate.ended = SourceEnd::BY_END;
}

int input() {
  if (windowstate.token < windowstate.filled) {
    const std::size_t place = windowstate.token++;
    return static_cast<unsigned char>(windowstate.holding && place == windowstate.zero ? windowstate.held
                                                                                       : windowstate.bytes[place]);
  }
  const int byte = window::takebyte();
  if (byte == EOF) windowstate.ended = SourceEnd::BY_END;
  return byte;
}

void yyunput(int byte) {
  if (byte <= 0) return;
  window::restoreheld();
  if (windowstate.token == 0) {
    // As much free ahead as there are bytes behind, so that giving back many takes time in proportion.
    const std::size_t unfilled = windowstate.capacity - windowstate.filled;
    if (unfilled < windowstate.capacity / 4)
      window::growwindow(windowstate.capacity / 2);
    else
      window::movewindow(windowstate.bytes, windowstate.capacity, unfilled);
  }
  windowstate.bytes[--windowstate.token] = static_cast<char>(byte);
}

bool isboundary(int byte) {
  return byte > 0 && !window::isinclass(byte, window::NAME_BYTE);
}

}  // namespace morvik
